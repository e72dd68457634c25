#include "platform/client/PopOverlay.h"

#include <QApplication>
#include <QEvent>
#include <QGridLayout>
#include <QPainter>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace orvo::client {

PopPanel::PopPanel(QWidget* parent) : QWidget(parent) {}

bool PopPanel::focusNextPrevChild(bool next) {
    QList<QWidget*> stops;
    for (QWidget* child : findChildren<QWidget*>())
        if (child->isVisible() && child->isEnabled() && (child->focusPolicy() & Qt::TabFocus))
            stops << child;
    if (stops.isEmpty())
        return false;
    const int at = stops.indexOf(QApplication::focusWidget());
    const int count = stops.size();
    stops[(at + (next ? 1 : count - 1) + (at < 0 && !next ? 1 : 0)) % count]->setFocus(
        next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

PopOverlay::PopOverlay(QWidget* owner)
    : QWidget(owner)
    , m_owner(owner)
    , m_panel(new PopPanel(this))
    , m_column(new QVBoxLayout(m_panel)) {
    owner->setAttribute(Qt::WA_NoMousePropagation);
    owner->setContextMenuPolicy(Qt::PreventContextMenu);
    setContextMenuPolicy(Qt::PreventContextMenu);
    auto* fill = new QVBoxLayout(owner);
    fill->setContentsMargins(0, 0, 0, 0);
    fill->addWidget(this);
    auto* centre = new QGridLayout(this);
    centre->addWidget(m_panel, 0, 0, Qt::AlignCenter);
    m_column->setContentsMargins(28, 24, 28, 22);
    m_column->setSpacing(10);
    m_panel->installEventFilter(this);
    if (owner->parentWidget())
        owner->parentWidget()->installEventFilter(this);
}

PopOverlay::~PopOverlay() = default;

void PopOverlay::cover() {
    if (QWidget* window = m_owner->parentWidget()) {
        m_owner->setGeometry(window->rect());
        m_palettes.cover(*window);
    }
    m_owner->raise();
}

void PopOverlay::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (m_owner->isHidden()) // not only with its tab
        m_palettes.uncover();
}

bool PopOverlay::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_owner->parentWidget() && event->type() == QEvent::Resize &&
        m_owner->isVisible())
        cover();
    // Its shadow lies outside of it.
    if (watched == m_panel && (event->type() == QEvent::Resize || event->type() == QEvent::Move))
        update();
    return false;
}

void PopOverlay::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(18, 24, 33, 90));
    painter.setRenderHint(QPainter::Antialiasing);
    constexpr double radius = 10;
    const QRectF panel = m_panel->geometry();
    painter.setPen(Qt::NoPen);
    for (int spread = 14; spread > 0; --spread) { // a soft shadow, a little below the panel
        painter.setBrush(QColor(0, 0, 0, 4));
        painter.drawRoundedRect(panel.adjusted(-spread, 4 - spread, spread, 4 + spread),
                                radius + spread, radius + spread);
    }
    painter.setPen(QPen(palette().color(QPalette::Mid), 1));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(panel.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}

PopScroll::PopScroll(QWidget* parent) : QScrollArea(parent) {
    auto* inside = new QWidget(this);
    m_column = new QVBoxLayout(inside);
    m_column->setContentsMargins(0, 0, 0, 0);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus); // the buttons have it
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidgetResizable(true);
    setWidget(inside);
    inside->setAutoFillBackground(false); // the sheet has painted the panel
    viewport()->setAutoFillBackground(false);
    inside->installEventFilter(this);
}

QSize PopScroll::sizeHint() const {
    const QSize inside = widget()->sizeHint();
    return {inside.width() + verticalScrollBar()->sizeHint().width(), inside.height()};
}

QSize PopScroll::minimumSizeHint() const {
    constexpr int lowest = 60;
    return {sizeHint().width(), std::min(sizeHint().height(), lowest)};
}

bool PopScroll::eventFilter(QObject* watched, QEvent* event) {
    if (watched == widget() && event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QScrollArea::eventFilter(watched, event);
}

bool PopScroll::takeKey(int key) {
    QScrollBar* bar = verticalScrollBar();
    switch (key) {
    case Qt::Key_PageUp:
        bar->triggerAction(QScrollBar::SliderPageStepSub);
        return true;
    case Qt::Key_PageDown:
        bar->triggerAction(QScrollBar::SliderPageStepAdd);
        return true;
    case Qt::Key_Home:
        bar->triggerAction(QScrollBar::SliderToMinimum);
        return true;
    case Qt::Key_End:
        bar->triggerAction(QScrollBar::SliderToMaximum);
        return true;
    default:
        return false;
    }
}

PopText::PopText(QWidget* parent, double scale, bool bold) : QLabel(parent) {
    QFont font = this->font();
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * scale);
    font.setBold(bold);
    setFont(font);
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
}

void PopText::setPlain(const QString& text) {
    constexpr int narrowest = 240;
    constexpr int widest = 440;
    constexpr int longestWord = 36; // beyond it a word may break
    constexpr int longest = 4000;   // letters; more would be laid out beyond any screen
    const QString shown = text.size() > longest ? text.left(longest) + QChar(0x2026) : text;
    QString breakable;
    int run = 0;
    for (const QChar c : shown) {
        run = c.isSpace() ? 0 : run + 1;
        breakable += c;
        if (run >= longestWord && !c.isHighSurrogate()) {
            breakable += QChar(0x200B);
            run = 0;
        }
    }
    int width = 0;
    for (const QString& line : shown.split(QLatin1Char('\n')))
        width = std::max(width, fontMetrics().horizontalAdvance(line) + 4);
    setFixedWidth(std::clamp(width, narrowest, widest));
    setText(breakable);
}

} // namespace orvo::client
