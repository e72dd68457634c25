// The tree of desktops, as the window shows it.
#include "ui_OrvoMenu.h"

#include "menu/OrvoMenu.h"

#include "frame/Records.h"
#include "frame/ViewRows.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"
#include "menu/DesckRows.h"

#include <QItemSelectionModel>

using orvo::setRow;
using orvo::menu::DesckColumn;
using orvo::menu::desckRootKey;

void OrvoMenu::loadDesckTreeUpper() {
    DesckTreeModel& model = *m_desckModel;
    if (!model.insertRows(0, 1, QModelIndex()))
        return;
    const QModelIndex root = model.index(0, 0, QModelIndex());
    setRow(model, root,
           {{DesckColumn::Name, tr("Список рабочих столов")},
            {DesckColumn::KeyLink, QString::fromLatin1(desckRootKey)},
            {DesckColumn::IsFolder, true},
            {DesckColumn::IsNew, false}});

    auto rows = model.newRows(root);
    orvo::menu::addAllDescks(m_tabFolder, rows);
    model.insertFilledRows(0, std::move(rows), root);

    QTreeView* view = m_ui->tvDesck;
    view->expand(root);
    view->setCurrentIndex(root);
    view->selectionModel()->select(root, QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

void OrvoMenu::loadDesckFolder(const QModelIndex& parent) {
    auto rows = m_desckModel->newRows(parent);
    const QString key = m_desckModel->getItemKeyLink(parent);
    for (TabRec* folder : orvo::menu::addDescks(m_tabFolder, rows, nullptr, key, true))
        orvo::menu::addDescksBelow(m_tabFolder, rows, folder);
    m_desckModel->insertFilledRows(m_desckModel->rowCount(parent), std::move(rows), parent);
}

void OrvoMenu::loadDesckItems(const QModelIndex& parent) {
    auto rows = m_desckModel->newRows(parent);
    orvo::menu::addDescks(m_tabFolder, rows, nullptr, m_desckModel->getItemKeyLink(parent), false);
    m_desckModel->insertFilledRows(m_desckModel->rowCount(parent), std::move(rows), parent);
}

int32_t OrvoMenu::getDesckElementPosition(const QString& key, const QString& parentKey) const {
    return orvo::menu::desckPosition(m_tabFolder, key, parentKey, parentKey.isEmpty());
}

void OrvoMenu::updateNewDesckNode(MDRData* record, int32_t position, const QModelIndex& row) {
    const QModelIndex parent = row.parent();
    const bool expanded = m_ui->tvDesck->isExpanded(row);
    setRow(*m_desckModel, row, m_desckFields.values(record));
    setRow(*m_desckModel, row, {{DesckColumn::IsNew, false}});
    if (position == row.row() || !m_desckModel->moveSiblingItem(row.row(), position, parent))
        return;
    // Only the row itself has moved.
    const QModelIndex folder = m_desckModel->index(position, 0, parent);
    if (!m_desckModel->isItemFolder(folder) || m_desckModel->hasChildren(folder))
        return;
    loadDesckFolder(folder);
    loadDesckItems(folder);
    m_ui->tvDesck->setExpanded(folder, expanded);
}

void OrvoMenu::insertElementToDesckTree(MDRData* record) {
    const QString key = orvo::textOf(record, orvo::field::KeyLink);
    const QString parentKey = orvo::textOf(record, orvo::field::ParentKey);
    const QModelIndex parent = m_desckModel->findIndexByKey(
        parentKey.isEmpty() ? QString::fromLatin1(desckRootKey) : parentKey);
    if (!parent.isValid())
        return;
    const int32_t position = orvo::menu::desckPosition(m_tabFolder, key, parentKey,
                                                       m_desckModel->getItemLevel(parent) == 0);
    if (position == -1 || !m_desckModel->insertRows(position, 1, parent))
        return;
    setRow(*m_desckModel, m_desckModel->index(position, 0, parent), m_desckFields.values(record));
    m_ui->tvDesck->setCurrentIndex(m_desckModel->findIndexByKey(m_currentDesckKey));
}
