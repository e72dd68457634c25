#include "platform/client/WidgetRoles.h"

#include "frame/OrvoClient.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QToolBar>

namespace orvo::client {

namespace {

/// Asked for each class of a widget, from its own up to QWidget.
QAccessibleInterface* makeInterface(const QString& className, QObject* object) {
    auto* widget = qobject_cast<QWidget*>(object);
    if (!widget)
        return nullptr;
    if (className == QLatin1String(CPopMessageBox::staticMetaObject.className()))
        return new QAccessibleWidget(widget, QAccessible::AlertMessage); // the caller owns it
    if (className == QLatin1String(CPopTemplate::staticMetaObject.className()))
        return new QAccessibleWidget(widget, QAccessible::Dialog);
    // Otherwise it is read by its title, which is a name of the program's.
    if (className == QLatin1String(QToolBar::staticMetaObject.className()) &&
        !widget->accessibleName().isEmpty())
        return new QAccessibleWidget(widget, QAccessible::ToolBar, widget->accessibleName());
    return nullptr;
}

} // namespace

void tellWidgetRoles() {
    static const bool done = (QAccessible::installFactory(&makeInterface), true);
    Q_UNUSED(done)
}

void tellAlert(QWidget& box) {
    QAccessibleEvent event(&box, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

} // namespace orvo::client
