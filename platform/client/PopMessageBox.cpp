#include "frame/OrvoClient.h"

#include "frame/Text.h"
#include "platform/client/PopOverlay.h"
#include "platform/client/WidgetRoles.h"

#include <QAction>
#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

using orvo::client::PopOverlay;
using orvo::client::PopScroll;
using orvo::client::PopText;

namespace {

/// The sign beside the text, drawn so that it is sharp at every scale.
class Sign : public QWidget {
public:
    using QWidget::QWidget;
    void setIcon(TMessageBoxIcon icon) {
        m_icon = icon;
        setVisible(icon == MessageBoxIconError || icon == MessageBoxIconQuestion);
        update();
    }
    QSize sizeHint() const override { return {44, 44}; }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(rect().center() + QPointF(0.5, 0.5));
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_icon == MessageBoxIconError ? QColor(0xc9, 0x37, 0x2c)
                                                       : QColor(0x2f, 0x6f, 0xb5));
        painter.drawEllipse(QPointF(0, 0), 21, 21);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(Qt::white, 4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        if (m_icon == MessageBoxIconError) {
            painter.drawLine(QPointF(-7, -7), QPointF(7, 7));
            painter.drawLine(QPointF(7, -7), QPointF(-7, 7));
            return;
        }
        QPainterPath hook;
        hook.moveTo(-6.5, -6);
        hook.cubicTo(-6.5, -14.5, 7, -14, 7, -5.5);
        hook.cubicTo(7, -0.5, 0, -0.5, 0, 5);
        painter.drawPath(hook);
        painter.drawPoint(QPointF(0, 11.5));
    }

private:
    TMessageBoxIcon m_icon = MessageBoxIconNone;
};

bool isInput(QEvent::Type type) {
    switch (type) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::Shortcut:
    case QEvent::InputMethod:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
    case QEvent::TabletPress:
    case QEvent::TouchBegin:
    case QEvent::NativeGesture:
    case QEvent::FocusIn:
        return true;
    default:
        return false;
    }
}

/// Whether that is input for something that a box on `window` covers: a widget in there, or an
/// action shown in there.
bool isCovered(QObject* target, QWidget* window, QEvent* event) {
    if (!window || !isInput(event->type()))
        return false;
    const auto covers = [window](const QWidget* one) {
        return one && (one == window || window->isAncestorOf(one));
    };
    if (const auto* widget = qobject_cast<QWidget*>(target))
        return covers(widget);
    if (event->type() != QEvent::Shortcut)
        return false;
    if (const auto* action = qobject_cast<QAction*>(target)) {
        const QList<QWidget*> holders = action->associatedWidgets();
        return std::any_of(holders.begin(), holders.end(), covers);
    }
    return covers(qobject_cast<QWidget*>(target->parent()));
}

QPushButton* makeButton(QWidget* parent, const QString& text, bool accent) {
    auto* button = new QPushButton(text, parent);
    button->setAutoDefault(false);
    button->setMinimumSize(96, 32);
    button->setStyleSheet(
        accent
            ? QStringLiteral("QPushButton{background:#2f6fb5;color:white;border:1px solid #2a63a2;"
                             "border-radius:6px;padding:4px 18px}"
                             "QPushButton:hover{background:#3a7dc6}"
                             "QPushButton:pressed{background:#275d98}"
                             "QPushButton:focus{border:2px solid #12365c}")
            : QStringLiteral("QPushButton{background:#f3f5f7;color:#1f2933;border:1px solid "
                             "#c3cad2;border-radius:6px;padding:4px 18px}"
                             "QPushButton:hover{background:#e8ecf0}"
                             "QPushButton:pressed{background:#dbe1e7}"
                             "QPushButton:focus{border:2px solid #2f6fb5}"));
    return button;
}

} // namespace

struct CPopMessageBox::Private {
    PopOverlay* overlay; // this and what follows: children of the box
    Sign* sign;
    PopText* title;
    PopText* text;
    PopScroll* scroll; ///< the words are in it
    QVBoxLayout* words;
    QString said;              ///< the text, whole
    QPointer<PopText> details; ///< made when there are any
    QPushButton* yes;
    QPushButton* no;
    QPushButton* ok;
    QByteArray slot; ///< connected to `clicked` now
    QPointer<QWidget> focusBefore;
    QPointer<PopText> notes; ///< made when there are any, at the end
    QStringList noted;       ///< their lines
    QString table;           ///< of the subject
    QStringList keys;
    QStringList below;

    bool isQuestion() const { return !yes->isHidden(); }
    void setQuestion(bool on) {
        yes->setVisible(on);
        no->setVisible(on);
        ok->setVisible(!on);
    }
    /// At once, so that no half of it is painted in between.
    void layOut(PopText* added) const {
        if (added)
            added->show();
        words->activate();
        scroll->updateGeometry();
        overlay->column()->activate();
        overlay->layout()->activate();
    }
    QPushButton* defaultButton() const { return isQuestion() ? yes : ok; }
};

CPopMessageBox::CPopMessageBox(QWidget* parent) : QWidget(parent), d(std::make_unique<Private>()) {
    orvo::client::tellWidgetRoles();
    hide(); // a child of a visible window would appear with it
    d->overlay = new PopOverlay(this);
    QWidget* panel = d->overlay->column()->parentWidget();
    d->scroll = new PopScroll(panel);
    d->title = new PopText(d->scroll->widget(), 1.15, true);
    d->sign = new Sign(panel);
    d->sign->setFixedSize(d->sign->sizeHint());
    d->text = new PopText(d->scroll->widget(), 1.0, false);
    d->yes = makeButton(panel, orvo::Text::tr("Да"), true);
    d->no = makeButton(panel, orvo::Text::tr("Нет"), false);
    d->ok = makeButton(panel, orvo::Text::tr("ОК"), true);

    auto* body = new QHBoxLayout;
    body->setSpacing(18);
    body->addWidget(d->sign, 0, Qt::AlignTop);
    d->words = d->scroll->column();
    d->words->setSpacing(8);
    d->words->addWidget(d->title);
    d->words->addWidget(d->text);
    d->words->addStretch();
    body->addWidget(d->scroll);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(10);
    buttons->addStretch();
    d->overlay->column()->addLayout(body);
    d->overlay->column()->addSpacing(10);
    d->overlay->column()->addLayout(buttons);
    for (QPushButton* button : {d->yes, d->no, d->ok}) {
        buttons->addWidget(button);
        button->installEventFilter(this);
        connect(button, &QPushButton::clicked, this, [this, button] {
            // Without a slot nobody else would close the box.
            if (d->slot.isEmpty())
                hide();
            emit clicked(button);
        });
    }
    installEventFilter(this);
    setMessage({}, {}, MessageBoxIconNone, MessageBoxTypeOk, nullptr);
}

CPopMessageBox::~CPopMessageBox() = default;

void CPopMessageBox::setMessage(QString title, QString text, TMessageBoxIcon icon,
                                TMessageBoxType type, const char* slot) {
    const bool question = type == MessageBoxTypeYesNo;
    d->title->setPlain(title);
    d->title->setHidden(title.isEmpty());
    d->text->setPlain(text);
    setAccessibleName(title.isEmpty() ? text : title);
    d->said = text;
    setAccessibleDescription(text);
    delete d->details;
    delete d->notes;
    d->noted.clear();
    d->table.clear();
    d->keys.clear();
    d->below.clear();
    d->sign->setIcon(icon);
    d->setQuestion(question);

    connectSlot(slot);
    // A box refilled while it stands takes the keyboard for its new buttons.
    if (isVisible())
        d->defaultButton()->setFocus(Qt::OtherFocusReason);
}

/// The one slot that hears of clicks; null: none.
void CPopMessageBox::connectSlot(const char* slot) {
    if (!d->slot.isEmpty() && parent())
        disconnect(this, SIGNAL(clicked(QAbstractButton*)), parent(), d->slot.constData());
    d->slot.clear();
    if (slot && *slot && parent() &&
        connect(this, SIGNAL(clicked(QAbstractButton*)), parent(), slot))
        d->slot = slot;
}

void CPopMessageBox::setDetails(const QString& details) {
    delete d->details;
    setAccessibleDescription(d->said);
    if (details.isEmpty())
        return d->layOut(nullptr);
    d->details = new PopText(d->text->parentWidget(), 1.0, false);
    d->details->setPlain(details);
    setAccessibleDescription(d->said + QLatin1Char('\n') + details);
    d->words->insertWidget(d->words->indexOf(d->text) + 1, d->details);
    d->layOut(d->details);
}

int CPopMessageBox::ButtonRole(QAbstractButton* button) const {
    if (button && button == d->yes)
        return QMessageBox::YesRole;
    if (button && button == d->no)
        return QMessageBox::NoRole;
    if (button && button == d->ok)
        return QMessageBox::AcceptRole;
    return QMessageBox::InvalidRole;
}

bool CPopMessageBox::isQuestion() const {
    return d->isQuestion();
}

void CPopMessageBox::setSubject(const QString& table, const QStringList& keys,
                                const QStringList& below) {
    d->table = table;
    d->keys = keys;
    d->below = below;
}

bool CPopMessageBox::isAbout() const {
    return !isHidden() && d->isQuestion() && !d->keys.isEmpty();
}

QString CPopMessageBox::subjectTable() const {
    return d->table;
}

QStringList CPopMessageBox::subjectKeys() const {
    return d->keys;
}

QStringList CPopMessageBox::subjectBelow() const {
    return d->below;
}

void CPopMessageBox::addNote(const QString& line) {
    constexpr int mostLines = 4;
    d->noted << line;
    QStringList lines = d->noted.mid(std::max<int>(0, d->noted.size() - mostLines));
    if (d->noted.size() > mostLines)
        lines.prepend(orvo::Text::tr("… и ещё %1").arg(d->noted.size() - mostLines));
    if (!d->notes) {
        d->notes = new PopText(d->text->parentWidget(), 1.0, true);
        d->words->insertWidget(d->words->count() - 1, d->notes); // above the stretch
    }
    d->notes->setPlain(lines.join(QLatin1Char('\n')));
    d->layOut(d->notes);
    if (isVisible())
        orvo::client::tellAlert(*this);
}

void CPopMessageBox::withdraw(const QString& line) {
    addNote(line);
    connectSlot(nullptr);
    d->keys.clear();
    d->below.clear();
    d->sign->setIcon(MessageBoxIconError);
    d->setQuestion(false);
    if (isVisible())
        d->ok->setFocus(Qt::OtherFocusReason);
}

void CPopMessageBox::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (event->spontaneous())
        return;
    d->overlay->cover();
    orvo::client::tellAlert(*this);
    // Of its own window, if another has the keyboard; in a pane beside the module as well.
    QWidget* before = window()->focusWidget();
    if (before && before != this && !isAncestorOf(before))
        d->focusBefore = before;
    d->defaultButton()->setFocus(Qt::OtherFocusReason);
    qApp->removeEventFilter(this);
    qApp->installEventFilter(this);
}

void CPopMessageBox::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (isHidden()) // not only with its tab
        qApp->removeEventFilter(this);
}

void CPopMessageBox::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (d->isQuestion())
            (d->no->hasFocus() ? d->no : d->yes)->click();
        else
            d->ok->click();
        break;
    case Qt::Key_Escape:
        (d->isQuestion() ? d->no : d->ok)->click();
        break;
    default:
        d->scroll->takeKey(event->key());
        break; // nothing under the box hears a key
    }
    event->accept();
}

bool CPopMessageBox::eventFilter(QObject* watched, QEvent* event) {
    const auto* widget = qobject_cast<QWidget*>(watched);
    const bool own = widget && (widget == this || isAncestorOf(widget));
    // No shortcut of an action fires behind the box.
    if (own && event->type() == QEvent::ShortcutOverride) {
        event->accept();
        return true;
    }
    if (watched == this && event->type() == QEvent::Hide && !event->spontaneous()) {
        if (d->focusBefore && parentWidget() && parentWidget()->isVisible())
            d->focusBefore->setFocus(Qt::OtherFocusReason);
        d->focusBefore.clear();
    }
    if (!own && !isHidden() && isCovered(watched, parentWidget(), event)) {
        if (event->type() != QEvent::FocusIn)
            return true;
        // Once the focus has settled there: another tab was left for this one.
        QPointer<QWidget> button(d->defaultButton());
        QTimer::singleShot(0, this, [this, button] {
            if (button && button->isVisible() && !isAncestorOf(QApplication::focusWidget()))
                button->setFocus(Qt::OtherFocusReason);
        });
    }
    return QWidget::eventFilter(watched, event);
}
