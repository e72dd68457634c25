// The tree of desktops. Its order is not computed here: it comes from the keys of `MenuFolder`.
#include "ui_OrvoMenu.h"

#include "menu/OrvoMenu.h"

#include "frame/FolderWalk.h"
#include "frame/Records.h"
#include "frame/Siblings.h"
#include "frame/ViewRows.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"

#include <QItemSelectionModel>

using orvo::KeyValues;
using orvo::setRow;
using orvo::menu::DesckColumn;
using orvo::menu::desckRootKey;
using orvo::menu::desktopClass;
using orvo::menu::folderClass;

namespace {

bool standsAtTop(const MDRData* record) {
    return orvo::isEmptyText(record, orvo::field::ParentKey);
}

QString keyOf(const TabRec* row) {
    return row->data(DesckColumn::KeyLink).toString();
}

} // namespace

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
    orvo::walkAll(m_tabFolder, 1, [&](const MDRData* record) {
        if (!standsAtTop(record))
            return true;
        TabRec* row = rows.add();
        row->setData(DesckColumn::Name, orvo::textOf(record, orvo::field::caption));
        row->setData(DesckColumn::Order, orvo::textOf(record, orvo::field::order_));
        row->setData(DesckColumn::KeyLink, orvo::textOf(record, orvo::field::KeyLink));
        row->setData(DesckColumn::IsFolder, orvo::flagOf(record, orvo::field::isFolder));
        if (orvo::flagOf(record, orvo::field::isFolder))
            addDesckFolder(rows, row);
        return true;
    });
    model.insertFilledRows(0, std::move(rows), root);

    QTreeView* view = m_ui->tvDesck;
    view->expand(root);
    view->setCurrentIndex(root);
    view->selectionModel()->select(root, QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

std::vector<TabRec*> OrvoMenu::addDesckRows(DesckTreeModel::Batch& rows, TabRec* parent,
                                            const QString& parentKey, bool folders) const {
    const QString order = QString::fromLatin1(folders ? folderClass : desktopClass);
    std::vector<TabRec*> added;
    orvo::walkGroup(
        m_tabFolder, 2, KeyValues().text(order).text(parentKey).text(QString()),
        [&](const MDRData* record) {
            if (!orvo::holdsText(record, orvo::field::ParentKey, parentKey) ||
                !orvo::holdsText(record, orvo::field::order_, order))
                return false;
            TabRec* row = rows.add(parent);
            row->setData(DesckColumn::KeyLink, orvo::textOf(record, orvo::field::KeyLink));
            row->setData(DesckColumn::Name, orvo::textOf(record, orvo::field::caption));
            row->setData(DesckColumn::ParentKey, orvo::textOf(record, orvo::field::ParentKey));
            row->setData(DesckColumn::IsFolder, folders);
            row->setData(DesckColumn::IsNew, false);
            added.push_back(row);
            return true;
        });
    return added;
}

void OrvoMenu::addDesckFolder(DesckTreeModel::Batch& rows, TabRec* folder) const {
    orvo::walkFolders(folder, keyOf, [&](TabRec* row) {
        const QString key = keyOf(row);
        std::vector<TabRec*> folders = addDesckRows(rows, row, key, true);
        addDesckRows(rows, row, key, false);
        return folders;
    });
}

void OrvoMenu::loadDesckFolder(const QModelIndex& parent) {
    auto rows = m_desckModel->newRows(parent);
    for (TabRec* folder : addDesckRows(rows, nullptr, m_desckModel->getItemKeyLink(parent), true))
        addDesckFolder(rows, folder);
    m_desckModel->insertFilledRows(m_desckModel->rowCount(parent), std::move(rows), parent);
}

void OrvoMenu::loadDesckItems(const QModelIndex& parent) {
    auto rows = m_desckModel->newRows(parent);
    addDesckRows(rows, nullptr, m_desckModel->getItemKeyLink(parent), false);
    m_desckModel->insertFilledRows(m_desckModel->rowCount(parent), std::move(rows), parent);
}

int32_t OrvoMenu::getDesckElementPosition(const QString& key, const QString& parentKey) const {
    return desckPosition(key, parentKey, parentKey.isEmpty());
}

int32_t OrvoMenu::desckPosition(const QString& key, const QString& parentKey,
                                bool atTopLevel) const {
    const MDRData* own = orvo::seekKey(m_tabFolder, key);
    const auto exact = [own](std::initializer_list<const char*> fields) {
        KeyValues values;
        for (const char* field : fields)
            orvo::addField(values, own, field);
        return values;
    };
    if (!atTopLevel)
        return orvo::siblingPosition(
            m_tabFolder, 3, KeyValues().text(parentKey), key, own,
            exact({orvo::field::ParentKey, orvo::field::order_, orvo::field::caption}),
            [&](const MDRData* record) {
                return orvo::holdsText(record, orvo::field::ParentKey, parentKey);
            });
    // The top level is not a group of key 1, which mixes it with all others.
    int32_t count = -1;
    orvo::walkAll(m_tabFolder, 1, [&](const MDRData* record) {
        if (!standsAtTop(record))
            return true;
        ++count;
        return !orvo::holdsText(record, orvo::field::KeyLink, key);
    });
    return count;
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
    const int32_t position = desckPosition(key, parentKey, m_desckModel->getItemLevel(parent) == 0);
    if (position == -1 || !m_desckModel->insertRows(position, 1, parent))
        return;
    setRow(*m_desckModel, m_desckModel->index(position, 0, parent), m_desckFields.values(record));
    m_ui->tvDesck->setCurrentIndex(m_desckModel->findIndexByKey(m_currentDesckKey));
}
