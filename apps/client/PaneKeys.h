// PaneKeys.h: what the keys do in every pane of the client's window: the context menu of its list,
// Ctrl+F to the field by which that is searched and Esc back, and Ctrl+S saves the open edit of the
// editor on show.
#ifndef ORVO_APPS_CLIENT_PANEKEYS_H
#define ORVO_APPS_CLIENT_PANEKEYS_H

#include <functional>

class QWidget;

namespace orvo::app {

/// What the keys of a command (frame/Keys.h) do while the focus is in the pane, besides that.
void onPaneKey(QWidget& pane, const char* command, const std::function<void()>& run);

/// To be called once, when the pane has its lists and its field, and the list as focus proxy. What
/// it makes is the pane's. A field that is hidden then is hidden again when it is left.
void addPaneKeys(QWidget& pane);

} // namespace orvo::app

#endif
