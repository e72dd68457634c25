// ElementMoves.h: rows of the open menu go to another folder with what lies below them. A row moves
// as a copy: the view leaves the old one for a sibling, or forgets a current row below it; here a
// current row that goes along stays current.
//
// Invariants; 1 is asserted in debug builds:
// 1. isMoving() is true while a row moves, and at no other time: what becomes current then was
//    chosen by nobody.
// 2. A row moves within the tree of the open menu, and no record changes.
#ifndef ORVO_MENU_ELEMENTMOVES_H
#define ORVO_MENU_ELEMENTMOVES_H

#include <QModelIndex>
#include <QString>

#include <cstdint>

class QTreeView;

namespace orvo::menu {

class OpenMenu;

class ElementMoves {
public:
    /// Outlives it.
    explicit ElementMoves(OpenMenu& menu) : m_menu(menu) {}

    bool isMoving() const { return m_isMoving; }
    /// Moves a row of the view to that position below `target`.
    void move(QTreeView& view, const QModelIndex& row, int32_t position, const QModelIndex& target);
    /// The elements that the table has in a folder whose row is new: those that waited for it
    /// elsewhere come to it, and those that had no row get one.
    void gather(QTreeView& view, const QString& folder);

private:
    OpenMenu& m_menu;
    bool m_isMoving = false;
};

} // namespace orvo::menu

#endif
