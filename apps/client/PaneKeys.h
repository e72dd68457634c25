// PaneKeys.h: what the keys do in every pane of the client's window: the context menu of its list,
// Ctrl+F to the field by which that is searched, and Ctrl+S saves the open edit of the editor on
// show.
#ifndef ORVO_APPS_CLIENT_PANEKEYS_H
#define ORVO_APPS_CLIENT_PANEKEYS_H

#include <functional>

class QWidget;

namespace orvo::app {

/// What the keys of a command (frame/Keys.h) do while the focus is in the pane, besides that.
void onPaneKey(QWidget& pane, const char* command, const std::function<void()>& run);

/// To be called once, when the pane has its lists and its field. What it makes is the pane's.
void addPaneKeys(QWidget& pane);

} // namespace orvo::app

#endif
