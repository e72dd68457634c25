// ShownRows.h: the list of the rows that a tree view shows, brought up to date where it changed.
#ifndef ORVO_FRAME_SHOWNROWS_H
#define ORVO_FRAME_SHOWNROWS_H

#include <QModelIndex>
#include <QPersistentModelIndex>
#include <QSet>
#include <QTreeView>
#include <QVector>

#include <private/qtreeview_p.h>

#include <functional>
#include <map>
#include <vector>

namespace orvo {

/// What has changed in a model since a list of its shown rows was made.
class ShownChanges {
public:
    /// With more parents, or ten times as many rows removed, all is laid out rather than followed.
    static constexpr int most = 4000;

    /// Rows below that parent were inserted or removed, or it was opened or closed.
    void note(const QModelIndex& parent);
    /// Rows are about to be removed.
    void noteRemoval(const QAbstractItemModel& model, const QModelIndex& parent, int first,
                     int last);
    bool isTooMuch() const { return m_tooMuch; }
    void clear() { *this = ShownChanges(); }

private:
    friend class ShownRows;

    QSet<QPersistentModelIndex> m_parents;
    QSet<quintptr> m_removed; ///< ids, which rows that are made later may bear again
    bool m_top = false;       ///< whether a parent was the root
    bool m_tooMuch = false;
};

/// The list in the order of the view: each row is followed by those that are shown below it.
class ShownRows {
public:
    using Items = QVector<QTreeViewItem>;

    /// `items` is the list to be brought up to date, of the rows of the view's model.
    ShownRows(const QTreeView& view, Items& items);

    /// False if the list is not of this model, or is not the one before these changes. It is of no
    /// use any more then.
    bool apply(const ShownChanges& changes);

private:
    /// Places in the tree, by rows from the root: where something changed, and what leads there.
    struct Node {
        std::map<int, Node> rows;
        bool changed = false;
    };
    /// The rows below one parent, made anew: in place of [first, end) of the list.
    struct Piece {
        int first;
        int end;
        Items rows; ///< parents are places in this list; -1: the row before `first`

        int more() const { return rows.size() - (end - first); }
    };

    Node places(const ShownChanges& changes) const;
    bool find(const Node& node, int place, const QModelIndex& index);
    void replace(int place, const QModelIndex& index, const Node& node);
    void fill(Piece& piece, const QModelIndex& parent, int oldPlace, int parentPlace,
              const Node* node) const;
    void copyBelow(Piece& piece, int oldPlace, int newPlace) const;
    void countPieces();
    void splice();
    void putPiece(const Piece& piece, int begin);
    int childrenEnd(int place) const;

    const QTreeView& m_view;
    const QAbstractItemModel& m_model;
    Items& m_items;
    const QSet<quintptr>* m_removed = nullptr;
    std::vector<Piece> m_pieces; ///< in the order of the list, none within another
};

} // namespace orvo

#endif
