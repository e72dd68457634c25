#include "menu/ElementOrder.h"

#include "editor/EditorWindow.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"
#include "menu/ElementEdit.h"
#include "menu/OpenMenu.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <vector>

namespace orvo::menu {
namespace {

int orderAt(const QModelIndex& row) {
    return row.siblingAtColumn(MenuColumn::Order).data().toInt();
}

/// The key that elements below a row have in `parent`; empty, written as NULL, below the root row.
QString parentKeyOf(const MenuTreeModel& model, const QModelIndex& row) {
    const QString key = model.getItemKeyLink(row);
    return key == QLatin1String(menuRootKey) ? QString() : key;
}

} // namespace

ElementOrder::ElementOrder(const editor::EditorWindow& window, const OpenMenu& menu,
                           ElementEdit& edit, const QString& current, QString& focusKey)
    : m_window(window)
    , m_menu(menu)
    , m_edit(edit)
    , m_current(current)
    , m_focusKey(focusKey) {}

bool ElementOrder::mayMoveIn() const {
    const QModelIndex row = m_menu.recordRow(m_current);
    return m_window.m_app->m_mayWrite && row.isValid() && row.row() > 0 &&
           m_menu.tree().itemIsFolder(row.siblingAtRow(row.row() - 1));
}

bool ElementOrder::mayMoveOut() const {
    const QModelIndex row = m_menu.recordRow(m_current);
    return m_window.m_app->m_mayWrite && row.isValid() && row.parent().parent().isValid();
}

void ElementOrder::moveIn() {
    const QModelIndex row = m_menu.recordRow(m_current);
    drop(row.siblingAtRow(row.row() - 1), {m_current}, -1);
}

void ElementOrder::moveOut() {
    const QModelIndex folder = m_menu.recordRow(m_current).parent();
    drop(folder.parent(), {m_current}, folder.row() + 1);
}

void ElementOrder::swapWithNeighbour(int step) {
    if (!m_menu.hasTree())
        return;
    const QModelIndex row = m_menu.tree().findIndexByKey(m_current);
    if (!row.isValid())
        return;
    ScratchTable out(*m_window.m_app->m_session, table::Menu);
    if (!out.fetch())
        return;
    const QModelIndex neighbour = m_menu.tree().index(row.row() + step, 0, row.parent());
    if (neighbour.isValid() && orderAt(neighbour) == orderAt(row)) {
        renumber(row, row.row() + step, out);
        m_focusKey = m_current;
        out.send();
        return;
    }
    addOrder(out, m_current, orderAt(neighbour));
    addOrder(out, m_menu.tree().getItemKeyLink(neighbour), orderAt(row));
    m_focusKey = m_current;
    out.send();
}

void ElementOrder::renumber(const QModelIndex& moved, int place, ScratchTable& out) {
    assert(moved.model() == &m_menu.tree());
    assert(place >= 0 && place < m_menu.tree().rowCount(moved.parent()));
    std::vector<QModelIndex> rows;
    for (int row = 0; row < m_menu.tree().rowCount(moved.parent()); ++row)
        rows.push_back(m_menu.tree().index(row, 0, moved.parent()));
    const QModelIndex row = rows[static_cast<size_t>(moved.row())];
    rows.erase(rows.begin() + moved.row());
    rows.insert(rows.begin() + place, row);
    // From the lowest order there is, so that the siblings keep their range.
    int order = std::numeric_limits<int>::max();
    for (const QModelIndex& sibling : rows)
        order = std::min(order, orderAt(sibling));
    for (const QModelIndex& sibling : rows) {
        const bool isNew = sibling.siblingAtColumn(MenuColumn::IsNew).data().toBool();
        if (orderAt(sibling) != order && !isNew)
            addOrder(out, m_menu.tree().getItemKeyLink(sibling), order);
        assert(nextOrderAfter(order) >= order);
        order = nextOrderAfter(order);
    }
}

RowWriter ElementOrder::addOrder(ScratchTable& out, const QString& key, int order) {
    m_edit.sendsPlace(key, order);
    RowWriter row = out.add(MDX_UPDATE);
    row.text(field::KeyLink, key).integer(field::order_, order);
    return row;
}

void ElementOrder::addPlace(ScratchTable& out, const QString& key, int order,
                            const QString& parent) {
    addOrder(out, key, order).textOrNull(field::parent, parent);
    m_edit.sendsPlace(key, order, parent);
}

void ElementOrder::drop(const QModelIndex& target, const QStringList& keys, int place) {
    ScratchTable moved(*m_window.m_app->m_session, table::Menu);
    ScratchTable shifted(*m_window.m_app->m_session, table::Menu);
    if (!moved.fetch() || !shifted.fetch())
        return;
    if (place == -1 && m_menu.tree().itemIsFolder(target)) {
        dropIntoFolder(target, keys, moved);
    } else if (keys.size() == 1) {
        const bool between = place != -1;
        const QModelIndex destination = between ? target : target.parent();
        const int position = between ? std::max(place - 1, 0) : target.row();
        const QModelIndex source = m_menu.tree().findIndexByKey(keys.first());
        if (source.isValid() && source.parent() == destination)
            dropAmongSiblings(source, position, moved);
        else if (source.isValid())
            dropBehindRow(source, destination, position, moved, shifted);
    }
    // The siblings make room first.
    shifted.send();
    moved.send();
}

void ElementOrder::dropIntoFolder(const QModelIndex& folder, const QStringList& keys,
                                  ScratchTable& moved) {
    int order = m_menu.nextOrder(folder);
    const QString parentKey = parentKeyOf(m_menu.tree(), folder);
    for (const QString& dragged : keys) {
        const QString key = m_menu.tree().getItemKeyLink(m_menu.tree().findIndexByKey(dragged));
        addPlace(moved, key, order, parentKey);
        m_focusKey = key;
        order = nextOrderAfter(order);
    }
}

void ElementOrder::dropAmongSiblings(const QModelIndex& source, int position, ScratchTable& moved) {
    const QString key = m_menu.tree().getItemKeyLink(source);
    const QModelIndex parent = source.parent();
    const auto rowAt = [&](int row) { return m_menu.tree().index(row, 0, parent); };
    // Every row between the old place and the new one takes over the order of its neighbour.
    const auto handOn = [&](int row, int from) {
        addOrder(moved, m_menu.tree().getItemKeyLink(rowAt(row)), orderAt(rowAt(from)));
    };
    const int target = position > source.row() ? position : position + 1;
    if (position <= source.row() && target >= source.row())
        return;
    bool equal = false;
    for (int row = std::min(target, source.row()); row < std::max(target, source.row()); ++row)
        equal = equal || orderAt(rowAt(row)) == orderAt(rowAt(row + 1));
    if (equal) {
        // Handing equal orders on would move nothing.
        renumber(source, target, moved);
        m_focusKey = key;
        return;
    }
    for (int row = target; row > source.row(); --row)
        handOn(row, row - 1);
    for (int row = target; row < source.row(); ++row)
        handOn(row, row + 1);
    addOrder(moved, key, orderAt(rowAt(target)));
    m_focusKey = key;
}

void ElementOrder::dropBehindRow(const QModelIndex& source, const QModelIndex& destination,
                                 int position, ScratchTable& moved, ScratchTable& shifted) {
    const QString key = m_menu.tree().getItemKeyLink(source);
    const int order = nextOrderAfter(orderAt(m_menu.tree().index(position, 0, destination)));
    for (int row = position + 1; row < m_menu.tree().rowCount(destination); ++row) {
        const QModelIndex sibling = m_menu.tree().index(row, 0, destination);
        addOrder(shifted, m_menu.tree().getItemKeyLink(sibling), nextOrderAfter(orderAt(sibling)));
    }
    addPlace(moved, key, order, parentKeyOf(m_menu.tree(), destination));
    m_focusKey = key;
}

} // namespace orvo::menu
