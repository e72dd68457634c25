// ContextMenus.h: the context menus of a window as the keyboard opens them.
#ifndef ORVO_TESTS_CLIENT_CONTEXTMENUS_H
#define ORVO_TESTS_CLIENT_CONTEXTMENUS_H

#include <QApplication>
#include <QMenu>
#include <QTimer>
#include <QWidget>
#include <QtTest>

#include <functional>

namespace orvo::test {

/// Opens the context menu of a list's current row by its key, in the list or in a field that walks
/// in it, and hands it over. False if none opens.
inline bool openContextMenu(QWidget& view, const std::function<void(QMenu&)>& look) {
    view.window()->activateWindow();
    view.setFocus(Qt::ShortcutFocusReason);
    if (!QTest::qWaitFor([&] { return view.hasFocus(); }))
        return false;
    bool opened = false;
    // A menu runs a loop of its own, in which this is called.
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &view, [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu || opened)
            return;
        opened = true;
        look(*menu);
        menu->close();
    });
    poll.start(0);
    QTest::keyClick(&view, Qt::Key_F10, Qt::ShiftModifier);
    return QTest::qWaitFor([&] { return opened; });
}

/// What it offers, those of its submenus included.
inline QList<QAction*> entriesOf(const QMenu& menu) {
    QList<QAction*> entries;
    for (QAction* action : menu.actions())
        if (action->menu())
            entries << entriesOf(*action->menu());
        else if (!action->isSeparator())
            entries << action;
    return entries;
}

/// Chooses the entry that begins with that text. False if there is none that is on.
inline bool chooseInContextMenu(QWidget& view, const QString& text) {
    bool chosen = false;
    return openContextMenu(view,
                           [&](QMenu& menu) {
                               for (QAction* action : entriesOf(menu))
                                   if (!chosen && action->isEnabled() &&
                                       action->text().startsWith(text)) {
                                       chosen = true;
                                       action->trigger();
                                   }
                           }) &&
           chosen;
}

} // namespace orvo::test

#endif
