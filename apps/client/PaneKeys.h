// PaneKeys.h: what the keys do in every pane of the client's window: the context menu of its list,
// Ctrl+F to the field by which that is searched, and Ctrl+S saves the open edit of the editor on
// show.
#ifndef ORVO_APPS_CLIENT_PANEKEYS_H
#define ORVO_APPS_CLIENT_PANEKEYS_H

class QWidget;

namespace orvo::app {

/// To be called once, when the pane has its lists and its field. What it makes is the pane's.
void addPaneKeys(QWidget& pane);

} // namespace orvo::app

#endif
