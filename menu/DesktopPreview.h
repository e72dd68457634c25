// DesktopPreview.h: what the host's preview of a desktop follows: the current desktop, and the open
// edit of an element.
//
// Invariants; 1 and 2 are asserted in debug builds:
// 1. The host is told nothing before it was asked for a preview or has said that it shows one; from
//    then on it is told of every change, whether it still shows one or not.
// 2. What it follows is connected once, and is there then.
// 3. Changes that come together are told in one call, from the bare event loop.
#ifndef ORVO_MENU_DESKTOPPREVIEW_H
#define ORVO_MENU_DESKTOPPREVIEW_H

#include "models/models.h"

#include <QCoreApplication>
#include <QString>
#include <QTimer>

#include <memory>

namespace orvo::editor {
class EditorWindow;
}

namespace orvo::menu {

class ElementEdit;
class OpenMenu;

class DesktopPreview {
    Q_DECLARE_TR_FUNCTIONS(OrvoMenu)
public:
    /// All of these outlive it; `desktops` may still be null, `current` is the key of the current
    /// row of tvDesck.
    DesktopPreview(editor::EditorWindow& window, const OpenMenu& menu, const ElementEdit& edit,
                   const std::unique_ptr<DesckTreeModel>& desktops, const QString& current);

    /// Has the host show the current desktop beside the editor as operators get it. Says in a box
    /// why it is not done.
    void show();
    /// The host shows a preview. Nothing before the window has started.
    void follow();

private:
    void tell() const;

    editor::EditorWindow& m_window;
    const OpenMenu& m_menu;
    const ElementEdit& m_edit;
    const std::unique_ptr<DesckTreeModel>& m_desktops;
    const QString& m_current;
    bool m_isFollowing = false;
    QTimer m_changed; ///< what it follows has changed, and perhaps changes more
};

} // namespace orvo::menu

#endif
