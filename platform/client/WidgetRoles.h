// WidgetRoles.h: what screen readers are told that widgets are.
#ifndef ORVO_PLATFORM_CLIENT_WIDGETROLES_H
#define ORVO_PLATFORM_CLIENT_WIDGETROLES_H

class QWidget;

namespace orvo::client {

/// From now on boxes are alerts, other pop-ups are dialogs, and a tool bar is read by its
/// accessible name. Any number of calls.
void tellWidgetRoles();

/// A box came up, or says something else now: that is read at once.
void tellAlert(QWidget& box);

} // namespace orvo::client

#endif
