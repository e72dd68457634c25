#include "apps/client/ElidedLabel.h"

#include <QPainter>
#include <QStyle>

namespace orvo::app {

ElidedLabel::ElidedLabel(const QString& text, Qt::TextElideMode mode, QWidget* parent)
    : QLabel(text, parent)
    , m_mode(mode) {
    setTextFormat(Qt::PlainText);
    setContentsMargins(4, 2, 10, 2);
}

void ElidedLabel::setRoom(int width) {
    if (width == m_room)
        return;
    m_room = width;
    updateGeometry();
}

QSize ElidedLabel::sizeHint() const {
    const QSize whole = QLabel::sizeHint();
    return m_room < 0 ? whole : QSize(m_room, whole.height());
}

QSize ElidedLabel::minimumSizeHint() const {
    return {1, QLabel::minimumSizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent* event) {
    if (!isCut()) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    const QRect room = contentsRect();
    const auto flags = QStyle::visualAlignment(layoutDirection(), alignment());
    style()->drawItemText(&painter, room, int(flags) | Qt::TextSingleLine, palette(), isEnabled(),
                          fontMetrics().elidedText(text(), m_mode, room.width()), foregroundRole());
}

} // namespace orvo::app
