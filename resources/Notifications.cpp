// What a notification does: the table first, which settles the order, then the row. Own writes come
// back here like anybody else's, and only here do they take effect.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "frame/Notification.h"
#include "frame/Records.h"
#include "frame/ViewRows.h"
#include "resources/Columns.h"

#include <QTreeView>

using orvo::resources::ResColumn;

namespace {

bool isCurrent(const QTreeView* view, const QModelIndex& row) {
    return view->currentIndex().siblingAtColumn(0) == row;
}

QString folderKeyOf(const QModelIndex& row) {
    return row.siblingAtColumn(ResColumn::FolderKey).data().toString();
}

/// Whether a record bears the key of a fixed row. It gets no row here, and does nothing to that
/// one, with which everything below it would go.
bool isFixedKey(const QString& key) {
    using namespace orvo::resources;
    for (const char* fixed : {menuRootKey, fileRootKey, orphansKey})
        if (orvo::sameText(key, QString::fromLatin1(fixed)))
            return true;
    return false;
}

QModelIndex rowOfRecord(const ResTreeModel& model, const QString& key) {
    return isFixedKey(key) ? QModelIndex() : model.findIndexByKey(key);
}

} // namespace

void OrvoResources::showRow(const QModelIndex& row) {
    if (m_quiet)
        m_quiet->scrollTo(m_ui->tvRes, row);
    else
        m_ui->tvRes->scrollTo(row);
}

template <class Move>
void OrvoResources::moveFolder(Move move) {
    // A folder moves as a copy: indexes of rows below the one that goes are lost, and a view
    // forgets a current row there without a word.
    QTreeView* view = m_ui->tvRes;
    const QString newKey = m_resModel->getItemKeyLink(m_newItemIndex);
    const QString currentKey = m_resModel->getItemKeyLink(view->currentIndex());
    move();
    if (!newKey.isEmpty())
        m_newItemIndex = m_resModel->findIndexByKey(newKey);
    if (currentKey.isEmpty() || view->currentIndex().isValid())
        return;
    m_following = true;
    view->setCurrentIndex(m_resModel->findIndexByKey(currentKey));
    m_following = false;
}

bool OrvoResources::MessageData(MDXCliParam* prm) {
    // A module whose start failed has neither tables nor a tree to keep in step.
    if (!m_resModel)
        return true;
    const orvo::Notification change(prm);
    if (!change.isTableEvent())
        return true;
    const bool folder = change.isFor("MenuResourceFolder");
    const bool resource = change.isFor("MenuResource");
    switch (change.action()) {
    case OrvoEventUpdate:
        if (folder)
            folderUpdated(change);
        else if (resource)
            resourceUpdated(change);
        break;
    case OrvoEventDelete:
        if (folder || resource)
            orvo::removeRecord(change, folder ? m_tabResFolder : m_tabResource, m_ui->tvRes,
                               rowOfRecord(*m_resModel, change.key()));
        break;
    case OrvoEventInsert:
        // What is stored of a form or a file is asked for when its row becomes current: the table
        // `MenuResourceFile` has nothing to follow.
        if (folder)
            folderInserted(change);
        else if (resource)
            resourceInserted(change);
        break;
    default:
        break;
    }
    return true;
}

void OrvoResources::selectAgain(const QString& key) {
    const QPersistentModelIndex row(m_resModel->findIndexByKey(key));
    if (!row.isValid())
        return;
    orvo::makeCurrentAnew(m_ui->tvRes, row);
    showRow(row);
}

void OrvoResources::folderUpdated(const orvo::Notification& change) {
    MDRData* record = orvo::editAndMerge(change.event(), &m_tabResFolder);
    const QString key = change.key();
    const QModelIndex row = rowOfRecord(*m_resModel, key);
    if (!record || !row.isValid())
        return;
    const bool again = isCurrent(m_ui->tvRes, row);
    const QString newParent = orvo::textOf(record, "ParentKey");
    const bool stays = orvo::sameText(newParent, folderKeyOf(row));
    const QModelIndex parent = row.parent();
    const int number = row.row();
    loadResFolderRow(parent, number, record);
    const int32_t position = getResFolderPosition(key, newParent, orvo::integerOf(record, "type_"));
    if (!stays) {
        // Without a parent key the folder becomes a top row.
        if (position != -1)
            moveFolder([&] {
                m_resModel->moveItem(number, position, parent,
                                     m_resModel->findIndexByKey(newParent));
            });
        return;
    }
    if (position != -1)
        moveFolder([&] { m_resModel->moveSiblingItem(number, position, parent); });
    if (again)
        selectAgain(key);
}

void OrvoResources::resourceUpdated(const orvo::Notification& change) {
    MDRData* record = orvo::editAndMerge(change.event(), &m_tabResource);
    const QString key = change.key();
    const QModelIndex row = rowOfRecord(*m_resModel, key);
    if (!record || !row.isValid())
        return;
    const bool again = isCurrent(m_ui->tvRes, row);
    const QString newFolder = orvo::textOf(record, "MenuResourceFolderKey");
    const bool stays = orvo::sameText(newFolder, folderKeyOf(row));
    const QModelIndex parent = row.parent();
    const int number = row.row();
    loadResItemRow(parent, number, record);
    const int count = getFolderCount(newFolder);
    const int32_t position = getResItemPosition(key, newFolder, orvo::integerOf(record, "type_"));
    if (!stays) {
        if (position != -1)
            m_resModel->moveItem(number, count + position, parent, folderRow(newFolder));
        return;
    }
    if (position != -1)
        m_resModel->moveSiblingItem(number, count + position, parent);
    if (again)
        selectAgain(key);
}

void OrvoResources::folderInserted(const orvo::Notification& change) {
    MDRData* record = orvo::createAndMerge(change.event(), &m_tabResFolder);
    const QString key = change.key();
    const QModelIndex row = rowOfRecord(*m_resModel, key);
    // Somebody else's folder shows at the next start only.
    if (!record || !row.isValid())
        return;
    const bool again = isCurrent(m_ui->tvRes, row);
    const QModelIndex parent = row.parent();
    const int number = row.row();
    loadResFolderRow(parent, number, record);
    const int32_t position = getResFolderPosition(key, orvo::textOf(record, "ParentKey"),
                                                  orvo::integerOf(record, "type_"));
    if (position != -1)
        moveFolder([&] { m_resModel->moveSiblingItem(number, position, parent); });
    if (again)
        selectAgain(key);
}

void OrvoResources::resourceInserted(const orvo::Notification& change) {
    MDRData* record = orvo::createAndMerge(change.event(), &m_tabResource);
    const QString key = change.key();
    if (!record || isFixedKey(key))
        return;
    const QString folderKey = orvo::textOf(record, "MenuResourceFolderKey");
    const int count = getFolderCount(folderKey);
    const int32_t position = getResItemPosition(key, folderKey, orvo::integerOf(record, "type_"));
    const QModelIndex row = rowOfRecord(*m_resModel, key);
    if (row.isValid()) {
        const bool again = isCurrent(m_ui->tvRes, row);
        const QModelIndex parent = row.parent();
        const int number = row.row();
        loadResItemRow(parent, number, record);
        if (position != -1)
            m_resModel->moveSiblingItem(number, count + position, parent);
        if (again)
            selectAgain(key);
        return;
    }
    // Somebody else's resource. At the top of the file area it shows at the next start only: the
    // empty key names no row here.
    const QModelIndex target = m_resModel->findIndexByKey(folderKey);
    const int newRow = count + position;
    if (position == -1 || !target.isValid())
        return;
    auto rows = m_resModel->newRows(target);
    rows.add(itemValues(record));
    if (m_resModel->insertFilledRows(newRow, std::move(rows), target))
        showRow(m_resModel->index(newRow, 0, target));
}
