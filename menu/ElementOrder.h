// ElementOrder.h: the places of menu elements among their siblings: the move buttons and keys, and
// drops.
//
// Invariants; 3 is asserted in debug builds:
// 1. Nothing moves here: update records go out, and the rows move when their notifications arrive.
// 2. An order that goes out has been told to the open edit, which writes the same if it is saved
//    before the notification comes back.
// 3. Siblings with equal orders are told apart together, by rows of the tree as it is: the lowest
//    order stays, and none gets a lower one than the row before it.
// 4. Siblings that make room go out before what moves.
#ifndef ORVO_MENU_ELEMENTORDER_H
#define ORVO_MENU_ELEMENTORDER_H

#include <QModelIndex>
#include <QString>
#include <QStringList>

namespace orvo {
class RowWriter;
class ScratchTable;
} // namespace orvo

namespace orvo::editor {
class EditorWindow;
}

namespace orvo::menu {

class ElementEdit;
class OpenMenu;

class ElementOrder {
public:
    /// All of these outlive it. `current` is the key of the current row of tvMenu; what is moved is
    /// to become current when it comes back, and its key goes to `focusKey`.
    ElementOrder(const editor::EditorWindow& window, const OpenMenu& menu, ElementEdit& edit,
                 const QString& current, QString& focusKey);

    /// Whether the current element has a folder above it, or stands in one. Both need a tree.
    bool mayMoveIn() const;
    bool mayMoveOut() const;
    /// Into the folder that stands above the current element, and out of the one it is in: as
    /// mayMoveIn() and mayMoveOut() permit it.
    void moveIn();
    void moveOut();
    /// Changes places with the sibling before (-1) or behind (1). Nothing without a current row.
    void swapWithNeighbour(int step);
    /// Elements of these keys were dropped: at `place` among the rows below `target`, or, with -1,
    /// on `target` itself. Only one element can be dropped elsewhere than on a folder.
    void drop(const QModelIndex& target, const QStringList& keys, int place);

private:
    /// Adds orders that differ for a row and its siblings, as if the row stood at that place.
    void renumber(const QModelIndex& moved, int place, ScratchTable& out);
    RowWriter addOrder(ScratchTable& out, const QString& key, int order);
    /// The same with another parent, empty for the top of the menu.
    void addPlace(ScratchTable& out, const QString& key, int order, const QString& parent);
    void dropIntoFolder(const QModelIndex& folder, const QStringList& keys, ScratchTable& moved);
    void dropAmongSiblings(const QModelIndex& source, int position, ScratchTable& moved);
    void dropBehindRow(const QModelIndex& source, const QModelIndex& destination, int position,
                       ScratchTable& moved, ScratchTable& shifted);

    const editor::EditorWindow& m_window;
    const OpenMenu& m_menu;
    ElementEdit& m_edit;
    const QString& m_current;
    QString& m_focusKey;
};

} // namespace orvo::menu

#endif
