// The place of an element among its siblings: the move buttons and drops. Nothing moves here:
// update records go out, and the rows move when their notifications arrive.
#include "menu/OrvoMenu.h"

#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"

#include <algorithm>
#include <limits>

using orvo::ScratchTable;
using orvo::menu::MenuColumn;
using orvo::menu::menuRootKey;
using orvo::menu::nextOrderAfter;

namespace {

int orderAt(const QModelIndex& row) {
    return row.siblingAtColumn(MenuColumn::Order).data().toInt();
}

} // namespace

void OrvoMenu::on_actMoveUp_triggered() {
    swapWithNeighbour(-1);
}

void OrvoMenu::on_actMoveDown_triggered() {
    swapWithNeighbour(1);
}

bool OrvoMenu::mayMoveIn() const {
    const QModelIndex row = recordRow(m_currentMenuKey);
    return m_app->m_mayWrite && row.isValid() && row.row() > 0 &&
           m_menuModel->itemIsFolder(row.siblingAtRow(row.row() - 1));
}

bool OrvoMenu::mayMoveOut() const {
    const QModelIndex row = recordRow(m_currentMenuKey);
    return m_app->m_mayWrite && row.isValid() && row.parent().parent().isValid();
}

void OrvoMenu::moveIntoFolder() {
    const QModelIndex row = recordRow(m_currentMenuKey);
    on_menu_dragdrop(row.siblingAtRow(row.row() - 1), {m_currentMenuKey}, -1);
}

void OrvoMenu::moveOutOfFolder() {
    const QModelIndex folder = recordRow(m_currentMenuKey).parent();
    on_menu_dragdrop(folder.parent(), {m_currentMenuKey}, folder.row() + 1);
}

void OrvoMenu::swapWithNeighbour(int step) {
    if (!m_menuModel)
        return;
    const QModelIndex row = m_menuModel->findIndexByKey(m_currentMenuKey);
    if (!row.isValid())
        return;
    ScratchTable out(*m_app->m_session, orvo::table::Menu);
    if (!out.fetch())
        return;
    const QModelIndex neighbour = m_menuModel->index(row.row() + step, 0, row.parent());
    if (neighbour.isValid() && orderAt(neighbour) == orderAt(row)) {
        renumber(row, row.row() + step, out);
        m_focusKey = m_currentMenuKey;
        out.send();
        return;
    }
    addOrder(out, m_currentMenuKey, orderAt(neighbour));
    addOrder(out, m_menuModel->getItemKeyLink(neighbour), orderAt(row));
    m_focusKey = m_currentMenuKey;
    out.send();
}

void OrvoMenu::renumber(const QModelIndex& moved, int place, ScratchTable& out) {
    std::vector<QModelIndex> rows;
    for (int row = 0; row < m_menuModel->rowCount(moved.parent()); ++row)
        rows.push_back(m_menuModel->index(row, 0, moved.parent()));
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
            addOrder(out, m_menuModel->getItemKeyLink(sibling), order);
        order = nextOrderAfter(order);
    }
}

orvo::RowWriter OrvoMenu::addOrder(ScratchTable& out, const QString& key, int order) {
    m_elementEdit.sendsPlace(key, order);
    orvo::RowWriter row = out.add(MDX_UPDATE);
    row.text(orvo::field::KeyLink, key).integer(orvo::field::order_, order);
    return row;
}

void OrvoMenu::addPlace(ScratchTable& out, const QString& key, int order, const QString& parent) {
    addOrder(out, key, order).textOrNull(orvo::field::parent, parent);
    m_elementEdit.sendsPlace(key, order, parent);
}

void OrvoMenu::on_menu_dragdrop(const QModelIndex& destindex, QStringList srcList, int option) {
    ScratchTable moved(*m_app->m_session, orvo::table::Menu);
    ScratchTable shifted(*m_app->m_session, orvo::table::Menu);
    if (!moved.fetch() || !shifted.fetch())
        return;
    if (option == -1 && m_menuModel->itemIsFolder(destindex)) {
        dropIntoFolder(destindex, srcList, moved);
    } else if (srcList.size() == 1) {
        const bool between = option != -1;
        const QModelIndex destination = between ? destindex : destindex.parent();
        const int position = between ? std::max(option - 1, 0) : destindex.row();
        const QModelIndex source = m_menuModel->findIndexByKey(srcList.first());
        if (source.isValid() && source.parent() == destination)
            dropAmongSiblings(source, position, moved);
        else if (source.isValid())
            dropBehindRow(source, destination, position, moved, shifted);
    }
    // The siblings make room first.
    shifted.send();
    moved.send();
}

namespace {

/// The key that elements below a row have in `parent`; empty, written as NULL, below the root row.
QString parentKeyOf(const MenuTreeModel& model, const QModelIndex& row) {
    const QString key = model.getItemKeyLink(row);
    return key == QLatin1String(menuRootKey) ? QString() : key;
}

} // namespace

void OrvoMenu::dropIntoFolder(const QModelIndex& folder, const QStringList& keys,
                              ScratchTable& moved) {
    const int children = m_menuModel->rowCount(folder);
    int order =
        children == 0 ? 0 : nextOrderAfter(orderAt(m_menuModel->index(children - 1, 0, folder)));
    const QString parentKey = parentKeyOf(*m_menuModel, folder);
    for (const QString& dragged : keys) {
        const QString key = m_menuModel->getItemKeyLink(m_menuModel->findIndexByKey(dragged));
        addPlace(moved, key, order, parentKey);
        m_focusKey = key;
        order = nextOrderAfter(order);
    }
}

void OrvoMenu::dropAmongSiblings(const QModelIndex& source, int position, ScratchTable& moved) {
    const QString key = m_menuModel->getItemKeyLink(source);
    const QModelIndex parent = source.parent();
    const auto rowAt = [&](int row) { return m_menuModel->index(row, 0, parent); };
    // Every row between the old place and the new one takes over the order of its neighbour.
    const auto handOn = [&](int row, int from) {
        addOrder(moved, m_menuModel->getItemKeyLink(rowAt(row)), orderAt(rowAt(from)));
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

void OrvoMenu::dropBehindRow(const QModelIndex& source, const QModelIndex& destination,
                             int position, ScratchTable& moved, ScratchTable& shifted) {
    const QString key = m_menuModel->getItemKeyLink(source);
    const int order = nextOrderAfter(orderAt(m_menuModel->index(position, 0, destination)));
    for (int row = position + 1; row < m_menuModel->rowCount(destination); ++row) {
        const QModelIndex sibling = m_menuModel->index(row, 0, destination);
        addOrder(shifted, m_menuModel->getItemKeyLink(sibling), nextOrderAfter(orderAt(sibling)));
    }
    addPlace(moved, key, order, parentKeyOf(*m_menuModel, destination));
    m_focusKey = key;
}
