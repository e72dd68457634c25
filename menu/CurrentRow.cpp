// What a move of the current row or of the selection does. A move away from an unsaved row saves
// it: the editor never asks whether changes are to be dropped.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "menu/Columns.h"
#include "models/SimilarRows.h"

#include <QItemSelectionModel>
#include <QTreeView>

using namespace orvo::menu;

namespace {

bool isNewRow(const QModelIndex& row, int column) {
    return row.sibling(row.row(), column).data().toBool();
}

} // namespace

void OrvoMenu::on_tvDesck_currentChanged(const QModelIndex& current, const QModelIndex&) {
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
        if (isNewRow(current, DesckColumn::IsNew) && !m_desckEdit.wasSent(m_currentDesckKey))
            m_desckEdit.takePlaceholder(current, m_currentDesckKey);
        else
            finishEdit();
        return;
    case RenameDesck:
        finishEdit();
        return;
    case EditElement:
        finishEdit();
        break;
    default:
        return;
    }
    clearMenuModel();
    setDesckActionsEnabled(current);
    if (!m_desckModel->isItemFolder(current))
        loadMenuTree(m_currentDesckKey);
    else
        m_openMenu.forgetDesck();
}

void OrvoMenu::on_tvMenu_currentChanged(const QModelIndex& current, const QModelIndex&) {
    m_currentMenuKey = m_menuModel->getItemKeyLink(current);
    m_newElements.noteCurrent();
    m_propModel->clearRows();
    // An edit of a row that moves is no edit that the engineer leaves.
    switch (m_moves.isMoving() && m_editMode == EditElement ? int32_t(NoEdit) : m_editMode) {
    case NoEdit:
        showMenuPassport(current);
        setMenuActionsEnabled(current);
        break;
    case NewElement:
        setDesckActionsDisabled();
        setMenuActionsDisabled();
        if (isNewRow(current, MenuColumn::IsNew) && !m_elementEdit.wasSent(m_currentMenuKey)) {
            m_elementEdit.takePlaceholder(current, m_currentMenuKey);
            showMenuPassport(current);
        } else {
            finishEdit();
        }
        break;
    case EditElement:
        finishEdit();
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
    QItemSelectionModel* selection = m_ui->tvMenu->selectionModel();
    orvo::restrictSelectionToSimilarRows(
        *selection, selected,
        [](const QModelIndex& a, const QModelIndex& b) { return a.parent() == b.parent(); });
    // A clicked row that may not stand beside the others does not stay current either: what is
    // typed, pasted and deleted concerns a row that is highlighted.
    const QModelIndex current = selection->currentIndex();
    const QModelIndexList rows = selection->selectedRows();
    if (selected.contains(current) && !selection->isSelected(current) && !rows.isEmpty())
        selection->setCurrentIndex(rows.last(), QItemSelectionModel::NoUpdate);
}
