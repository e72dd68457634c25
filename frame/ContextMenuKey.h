// ContextMenuKey.h: the context menu of a list by key, the same in every list of both editors and
// of the client.
//
// The platform's own key event comes where the mouse is, or not at all (Shift+F10); here the menu
// is that of the current row.
#ifndef ORVO_FRAME_CONTEXTMENUKEY_H
#define ORVO_FRAME_CONTEXTMENUKEY_H

#include "frame/Keys.h"

#include <QAbstractItemView>
#include <QContextMenuEvent>

namespace orvo {

/// Asks a view with a menu of its own (Qt::CustomContextMenu) for that of its current row, as a
/// click on the row does.
inline void openContextMenu(QAbstractItemView& view) {
    const QModelIndex current = view.currentIndex();
    QPoint at = view.viewport()->rect().center();
    if (current.isValid()) {
        view.scrollTo(current);
        const QRect row = view.visualRect(current) & view.viewport()->rect();
        at = row.isValid() ? row.center() : at;
    }
    emit view.customContextMenuRequested(at);
}

/// Whether that event of the view, or of a field that walks in it, asks for its context menu.
inline bool asksForContextMenu(const QEvent& event) {
    switch (event.type()) {
    case QEvent::ContextMenu:
        return static_cast<const QContextMenuEvent&>(event).reason() == QContextMenuEvent::Keyboard;
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
        return keys::matches(static_cast<const QKeyEvent&>(event),
                             *keys::command(QLatin1String(keys::contextMenu)));
    default:
        return false;
    }
}

/// Opens the menu of a view by the keys for it. A child of the view.
class ContextMenuKey : public QObject {
public:
    explicit ContextMenuKey(QAbstractItemView* view) : QObject(view), m_view(*view) {
        view->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (m_view.contextMenuPolicy() != Qt::CustomContextMenu || !asksForContextMenu(*event))
            return false;
        event->accept();
        if (event->type() != QEvent::ShortcutOverride)
            openContextMenu(m_view);
        return true;
    }

private:
    QAbstractItemView& m_view;
};

} // namespace orvo

#endif
