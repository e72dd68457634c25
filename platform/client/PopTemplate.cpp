#include "frame/OrvoClient.h"

#include "platform/client/WidgetRoles.h"

#include <QGuiApplication>
#include <QScreen>
#include <QShortcut>
#include <QShowEvent>

#include <algorithm>

CPopTemplate::CPopTemplate(QWidget* parent, int32_t /*reserved*/)
    : QWidget(parent, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint) {
    orvo::client::tellWidgetRoles();
    connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, this, &QWidget::hide);
}

CPopTemplate::~CPopTemplate() = default;

void CPopTemplate::moveToCenter() {
    const QWidget* over = parentWidget();
    if (!over)
        return;
    QPoint corner = over->mapToGlobal(over->rect().center()) - rect().center();
    const QScreen* screen = over->window()->screen();
    if (screen) {
        const QRect area = screen->availableGeometry();
        corner.setX(std::max(area.left(), std::min(corner.x(), area.right() - width())));
        corner.setY(std::max(area.top(), std::min(corner.y(), area.bottom() - height())));
    }
    move(corner);
}

void CPopTemplate::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!event->spontaneous())
        moveToCenter();
}

void CPopTemplate::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
}

void CPopTemplate::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
}
