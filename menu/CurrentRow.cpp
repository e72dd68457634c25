// What a move of the current row or of the selection does. A move away from an unsaved row saves
// it: the editor never asks whether changes are to be dropped.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "menu/Columns.h"

#include <QItemSelectionModel>
#include <QTreeView>

#include <algorithm>

using orvo::menu::DesckColumn;
using orvo::menu::MenuColumn;

namespace {

bool isNewRow(const QModelIndex& row, int column) {
    return row.sibling(row.row(), column).data().toBool();
}

/// The rows of a selection by their indexes of column 0, in the selection's order.
QModelIndexList rowsOf(const QItemSelection& selection) {
    QModelIndexList rows;
    QModelIndex lastParent;
    for (const QModelIndex& index : selection.indexes()) {
        const QModelIndex parent = index.parent();
        if (!rows.isEmpty() && rows.last().row() == index.row() && lastParent == parent)
            continue;
        rows.append(index.sibling(index.row(), 0));
        lastParent = parent;
    }
    return rows;
}

void deselectStrangers(QItemSelectionModel* selection, const QModelIndexList& rows,
                       const QModelIndex& parent) {
    for (const QModelIndex& row : rows)
        if (row.parent() != parent)
            selection->select(row, QItemSelectionModel::Deselect | QItemSelectionModel::Rows);
}

} // namespace

void OrvoMenu::on_tvDesck_currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    if (m_skipDesckChange) {
        m_skipDesckChange = false;
        return;
    }
    m_currentDesckKey = m_desckModel->getItemKeyLink(current);
    switch (m_editMode) {
    case NoEdit:
        break;
    case NewDesck:
        setDesckActionsDisabled();
        if (isNewRow(current, DesckColumn::IsNew))
            m_editDesckIndex = current;
        else
            on_save_pressed();
        return;
    case RenameDesck:
        m_editDesckIndex = previous;
        on_save_pressed();
        return;
    case EditElement:
        on_save_pressed();
        break;
    default:
        return;
    }
    clearMenuModel();
    setDesckActionsEnabled(current);
    if (!m_desckModel->isItemFolder(current))
        loadMenuTree(m_currentDesckKey);
}

void OrvoMenu::on_tvMenu_currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    m_currentMenuKey = m_menuModel->getItemKeyLink(current);
    m_propModel->clearRows();
    switch (m_editMode) {
    case NoEdit:
        showMenuPassport(current);
        setMenuActionsEnabled(current);
        break;
    case NewElement:
        setDesckActionsDisabled();
        setMenuActionsDisabled();
        if (isNewRow(current, MenuColumn::IsNew)) {
            m_editMenuIndex = current;
            showMenuPassport(current);
        } else {
            on_save_pressed();
        }
        break;
    case EditElement:
        m_editMenuIndex = previous;
        on_save_pressed();
        break;
    default:
        break;
    }
}

void OrvoMenu::on_tvDesck_clicked(const QModelIndex& index) {
    if (m_editMode == NoEdit)
        setDesckActionsEnabled(index.sibling(index.row(), 0));
}

void OrvoMenu::on_tvMenu_clicked(const QModelIndex& index) {
    if (m_editMode == NoEdit)
        setMenuActionsEnabled(index.sibling(index.row(), 0));
}

void OrvoMenu::on_tvMenu_selectionChanged(const QItemSelection& selected, const QItemSelection&) {
    if (selected.isEmpty())
        return;
    QItemSelectionModel* selection = m_ui->tvMenu->selectionModel();
    if (selection->selectedRows().size() == 1)
        return;
    const QModelIndexList rows = rowsOf(selected);
    if (rows.isEmpty())
        return;
    deselectStrangers(selection, rows, rows.first().parent());
    const QModelIndexList remaining = selection->selectedRows();
    if (remaining.isEmpty())
        return;
    const QModelIndex parent = remaining.first().parent();
    deselectStrangers(selection, rows, parent);
    // What was selected before is not in the list; it must not stand beside rows of another parent.
    deselectStrangers(selection, remaining, parent);
}
