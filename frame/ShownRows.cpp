#if __has_include(<private/qtreeview_p.h>)
#include "frame/ShownRows.h"

#include <QHash>

#include <algorithm>

namespace orvo {

void ShownChanges::note(const QModelIndex& parent) {
    if (!parent.isValid())
        m_top = true;
    else if (m_parents.size() < most)
        m_parents.insert(parent);
    else
        m_tooMuch = true;
}

void ShownChanges::noteRemoval(const QAbstractItemModel& model, const QModelIndex& parent,
                               int first, int last) {
    note(parent);
    if (last - first + 1 + m_removed.size() > most * 10) {
        m_tooMuch = true;
        return;
    }
    for (int row = first; row <= last; ++row)
        m_removed.insert(model.index(row, 0, parent).internalId());
}

ShownRows::ShownRows(const QTreeView& view, Items& items)
    : m_view(view)
    , m_model(*view.model())
    , m_items(items) {}

bool ShownRows::apply(const ShownChanges& changes) {
    m_removed = &changes.m_removed;
    m_pieces.clear();
    if (!find(places(changes), -1, m_view.rootIndex()))
        return false;
    splice();
    return true;
}

ShownRows::Node ShownRows::places(const ShownChanges& changes) const {
    Node top;
    top.changed = changes.m_top;
    for (const QPersistentModelIndex& parent : changes.m_parents) {
        // One that is gone was removed below another parent, which is noted as well.
        std::vector<int> rows;
        QModelIndex up = parent;
        for (; up.isValid() && up != m_view.rootIndex(); up = up.parent())
            rows.push_back(up.row());
        if (!parent.isValid() || up != m_view.rootIndex())
            continue;
        Node* node = &top;
        for (auto row = rows.rbegin(); row != rows.rend(); ++row)
            node = &node->rows[*row];
        node->changed = true;
    }
    return top;
}

/// Behind the last row below that place; -1 is the root.
int ShownRows::childrenEnd(int place) const {
    return place < 0 ? m_items.size() : place + 1 + static_cast<int>(m_items.at(place).total);
}

/// Looks for changed parents below a row whose own rows are the same as before.
bool ShownRows::find(const Node& node, int place, const QModelIndex& index) {
    if (node.changed) {
        replace(place, index, node);
        return true;
    }
    const int end = childrenEnd(place);
    int row = 0;
    int at = place + 1;
    for (const auto& [wanted, child] : node.rows) {
        for (; row < wanted && at < end; ++row)
            at = childrenEnd(at);
        const QModelIndex there = m_model.index(wanted, 0, index);
        if (at >= end || m_items.at(at).index != there)
            return false;
        const bool isShown = m_items.at(at).expanded || m_view.isExpanded(there);
        if (!isShown)
            m_items[at].hasChildren = m_model.hasChildren(there);
        else if (!find(child, at, there))
            return false;
    }
    return true;
}

void ShownRows::replace(int place, const QModelIndex& index, const Node& node) {
    Piece piece{place + 1, childrenEnd(place), {}};
    const bool isOpen = place < 0 || m_view.isExpanded(index);
    if (isOpen)
        fill(piece, index, place, -1, &node);
    if (place >= 0) {
        m_items[place].expanded = isOpen;
        m_items[place].hasChildren = isOpen ? !piece.rows.isEmpty() : m_model.hasChildren(index);
    }
    m_pieces.push_back(std::move(piece));
}

/// The rows below `parent`. Of those that are open, and were already at `oldPlace` (-2: it was
/// not there), all below is taken over if nothing changed there.
void ShownRows::fill(Piece& piece, const QModelIndex& parent, int oldPlace, int parentPlace,
                     const Node* node) const {
    QHash<quintptr, int> before;
    if (oldPlace == -1 || (oldPlace >= 0 && m_items.at(oldPlace).expanded)) {
        const int end = childrenEnd(oldPlace);
        for (int at = oldPlace + 1; at < end; at = childrenEnd(at))
            if (m_items.at(at).expanded && !m_removed->contains(m_items.at(at).index.internalId()))
                before.insert(m_items.at(at).index.internalId(), at);
    }
    const int count = m_model.hasChildren(parent) ? m_model.rowCount(parent) : 0;
    const uint level = parentPlace >= 0  ? piece.rows.at(parentPlace).level + 1u
                       : piece.first > 0 ? m_items.at(piece.first - 1).level + 1u
                                         : 0u;
    for (int row = 0; row < count; ++row) {
        QTreeViewItem item;
        item.index = m_model.index(row, 0, parent);
        item.parentItem = parentPlace;
        item.level = level & 0xffffu;
        item.hasMoreSiblings = row + 1 < count;
        item.expanded = m_view.isExpanded(item.index);
        if (!item.expanded) {
            item.hasChildren = m_model.hasChildren(item.index);
            piece.rows.append(item);
            continue;
        }
        const int place = piece.rows.size();
        piece.rows.append(item);
        const int old = before.value(item.index.internalId(), -2);
        const Node* below = nullptr;
        if (node) {
            const auto found = node->rows.find(row);
            below = found == node->rows.end() ? nullptr : &found->second;
        }
        if (old >= 0 && !below)
            copyBelow(piece, old, place);
        else
            fill(piece, item.index, old, place, below);
        const int total = piece.rows.size() - place - 1;
        piece.rows[place].total = static_cast<uint>(total) & 0xfffffffu;
        piece.rows[place].hasChildren = total > 0;
    }
}

void ShownRows::copyBelow(Piece& piece, int oldPlace, int newPlace) const {
    for (int at = oldPlace + 1; at < childrenEnd(oldPlace); ++at) {
        QTreeViewItem item = m_items.at(at);
        item.parentItem += newPlace - oldPlace;
        piece.rows.append(item);
    }
}

/// The rows above the pieces have as many rows below them as they will.
void ShownRows::countPieces() {
    for (const Piece& piece : m_pieces)
        for (int up = piece.first - 1; up >= 0; up = m_items.at(up).parentItem) {
            const int total = static_cast<int>(m_items.at(up).total) + piece.more();
            m_items[up].total = static_cast<uint>(total) & 0xfffffffu;
        }
}

/// Puts the pieces into the list, and moves what is between them.
void ShownRows::splice() {
    struct Kept {
        int first;
        int end;
        int shift;
    };
    countPieces();
    std::vector<Kept> kept;
    int shift = 0;
    int at = 0;
    for (const Piece& piece : m_pieces) {
        Q_ASSERT(at <= piece.first && piece.first <= piece.end);
        kept.push_back({at, piece.first, shift});
        shift += piece.more();
        at = piece.end;
    }
    const int before = m_items.size();
    kept.push_back({at, before, shift});
    const int size = before + shift;
    if (shift > 0)
        m_items.resize(size);
    QTreeViewItem* const items = m_items.data();
    // What moves to the front never reaches what moves to the back, nor the other way round.
    for (const Kept& run : kept)
        if (run.shift < 0)
            std::move(items + run.first, items + run.end, items + run.first + run.shift);
    for (auto run = kept.rbegin(); run != kept.rend(); ++run)
        if (run->shift > 0)
            std::move_backward(items + run->first, items + run->end, items + run->end + run->shift);
    if (shift < 0)
        m_items.resize(size);

    const auto shiftAt = [&](int place) {
        const auto after =
            std::upper_bound(kept.begin(), kept.end(), place,
                             [](int wanted, const Kept& run) { return wanted < run.first; });
        return std::prev(after)->shift;
    };
    bool isAnyMoved = false;
    for (size_t i = 0; i < kept.size(); ++i) {
        const Kept& run = kept[i];
        isAnyMoved = isAnyMoved || run.shift != 0;
        // Siblings follow each other: the parent is mostly that of the row before.
        int parent = -1;
        int moved = -1;
        for (int place = run.first; isAnyMoved && place < run.end; ++place) {
            int& up = m_items.data()[place + run.shift].parentItem;
            if (up != parent) {
                parent = up;
                moved = parent < 0 ? parent : parent + shiftAt(parent);
            }
            up = moved;
        }
        if (i < m_pieces.size())
            putPiece(m_pieces[i], m_pieces[i].first + run.shift);
    }
}

void ShownRows::putPiece(const Piece& piece, int begin) {
    const auto first = m_items.begin() + begin;
    std::copy(piece.rows.begin(), piece.rows.end(), first);
    std::for_each(first, first + piece.rows.size(), [&](QTreeViewItem& item) {
        item.parentItem = item.parentItem < 0 ? begin - 1 : item.parentItem + begin;
    });
}

} // namespace orvo

#endif
