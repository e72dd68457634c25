#include "frame/OrvoClient.h"

#include "platform/client/PopOverlay.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

using orvo::client::PopOverlay;
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
    QVBoxLayout* words;
    QPointer<PopText> details; ///< made when there are any
    QPushButton* yes;
    QPushButton* no;
    QPushButton* ok;
    QByteArray slot; ///< connected to `clicked` now
    QPointer<QWidget> focusBefore;

    bool isQuestion() const { return !yes->isHidden(); }
};

CPopMessageBox::CPopMessageBox(QWidget* parent) : QWidget(parent), d(std::make_unique<Private>()) {
    hide(); // a child of a visible window would appear with it
    d->overlay = new PopOverlay(this);
    QWidget* panel = d->overlay->column()->parentWidget();
    d->title = new PopText(panel, 1.15, true);
    d->sign = new Sign(panel);
    d->sign->setFixedSize(d->sign->sizeHint());
    d->text = new PopText(panel, 1.0, false);
    d->yes = makeButton(panel, QStringLiteral("Да"), true);
    d->no = makeButton(panel, QStringLiteral("Нет"), false);
    d->ok = makeButton(panel, QStringLiteral("ОК"), true);

    auto* body = new QHBoxLayout;
    body->setSpacing(18);
    body->addWidget(d->sign, 0, Qt::AlignTop);
    d->words = new QVBoxLayout;
    d->words->setSpacing(8);
    d->words->addWidget(d->title);
    d->words->addWidget(d->text);
    d->words->addStretch();
    body->addLayout(d->words);
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
    delete d->details;
    d->sign->setIcon(icon);
    d->yes->setVisible(question);
    d->no->setVisible(question);
    d->ok->setVisible(!question);

    if (!d->slot.isEmpty() && parent())
        disconnect(this, SIGNAL(clicked(QAbstractButton*)), parent(), d->slot.constData());
    d->slot.clear();
    if (slot && *slot && parent() &&
        connect(this, SIGNAL(clicked(QAbstractButton*)), parent(), slot))
        d->slot = slot;
    // A box refilled while it stands takes the keyboard for its new buttons.
    if (isVisible())
        (question ? d->yes : d->ok)->setFocus(Qt::OtherFocusReason);
}

void CPopMessageBox::setDetails(const QString& details) {
    delete d->details;
    if (details.isEmpty())
        return;
    d->details = new PopText(d->text->parentWidget(), 1.0, false);
    d->details->setPlain(details);
    d->words->insertWidget(d->words->indexOf(d->text) + 1, d->details);
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

void CPopMessageBox::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (event->spontaneous())
        return;
    d->overlay->cover();
    QWidget* before = QApplication::focusWidget();
    if (before && parentWidget() && parentWidget()->isAncestorOf(before) && !isAncestorOf(before))
        d->focusBefore = before;
    (d->isQuestion() ? d->yes : d->ok)->setFocus(Qt::OtherFocusReason);
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
        break; // nothing under the box hears a key
    }
    event->accept();
}

bool CPopMessageBox::eventFilter(QObject* watched, QEvent* event) {
    // No shortcut of an action fires behind the box.
    if (event->type() == QEvent::ShortcutOverride) {
        event->accept();
        return true;
    }
    if (watched == this && event->type() == QEvent::Hide && !event->spontaneous()) {
        if (d->focusBefore && parentWidget() && parentWidget()->isVisible())
            d->focusBefore->setFocus(Qt::OtherFocusReason);
        d->focusBefore.clear();
    }
    return QWidget::eventFilter(watched, event);
}
