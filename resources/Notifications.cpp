// What a notification does: the table first, which settles the order, then the row. Own writes come
// back here like anybody else's, and only here do they take effect.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "frame/Notification.h"
#include "frame/ViewRows.h"
#include "resources/Columns.h"
#include "resources/Fields.h"

#include <QTreeView>

using orvo::resources::ResColumn;

namespace {

bool isCurrent(const QTreeView* view, const QModelIndex& row) {
    return view->currentIndex().siblingAtColumn(0) == row;
}

QString folderKeyOf(const QModelIndex& row) {
    return orvo::resources::textAt(row, ResColumn::FolderKey);
}

/// The row of a record. One that bears the key of a fixed row gets none here, and does nothing to
/// that row, with which everything below it would go.
QModelIndex rowOfRecord(const ResTreeModel& model, const QString& key) {
    return orvo::resources::isFixedKey(key) ? QModelIndex() : model.findIndexByKey(key);
}

} // namespace

template <class Move>
void OrvoResources::moveRow(Move move, MoveKind kind) {
    // A row moves as a copy of it and of all below it. Its old self goes, and with it indexes, the
    // current row and the selection.
    QTreeView* view = m_ui->tvRes;
    QItemSelectionModel* selection = view->selectionModel();
    const QModelIndex current = view->currentIndex();
    const QString currentKey = m_resModel->getItemKeyLink(current);
    const bool selected =
        current.isValid() && selection->isRowSelected(current.row(), current.parent());
    const bool editHasRow = m_edit.row().isValid();
    // Leaving the row would save what is being typed, here or elsewhere, before its time.
    const bool keepsCurrent = kind == AmongSiblings || m_edit.isOpen();
    m_following = keepsCurrent;
    move();
    if (editHasRow && m_edit.isLost())
        m_edit.follow(m_resModel->findIndexByKey(m_editKey));
    m_following = true;
    const QModelIndex now = view->currentIndex();
    const bool lost =
        kind == WithSubtree && !m_edit.isOpen()
            ? !now.isValid()
            : keepsCurrent && !orvo::sameText(m_resModel->getItemKeyLink(now), currentKey);
    if (!currentKey.isEmpty() && lost)
        selection->setCurrentIndex(m_resModel->findIndexByKey(currentKey),
                                   selected
                                       ? QItemSelectionModel::Select | QItemSelectionModel::Rows
                                       : QItemSelectionModel::NoUpdate);
    m_following = false;
}

void OrvoResources::mergeEdit(const orvo::Notification& change, const MDRData* record,
                              const QModelIndex& row) {
    const auto replaced =
        m_edit.merge(*m_resModel, row, change, record, orvo::resources::fieldsOf(row));
    if (!replaced.empty())
        tellReplaced(m_names.describe(row), orvo::resources::fieldsOf(row), replaced);
}

void OrvoResources::followTables() {
    const auto to = [this](void (OrvoResources::*apply)(const orvo::Notification&)) {
        return [this, apply](const orvo::Notification& change) {
            m_focusCame = m_focusCame || orvo::sameText(change.key(), m_focusKey);
            (this->*apply)(change);
        };
    };
    // What is stored of a form or a file is asked for when its row becomes current: the table
    // `MenuResourceFile` has nothing to follow.
    follow({{orvo::table::MenuResourceFolder, to(&OrvoResources::folderInserted),
             to(&OrvoResources::folderUpdated), to(&OrvoResources::folderDeleted)},
            {orvo::table::MenuResource, to(&OrvoResources::resourceInserted),
             to(&OrvoResources::resourceUpdated), to(&OrvoResources::resourceDeleted)}},
           {m_ui->tvRes, m_ui->tvProp});
}

void OrvoResources::folderDeleted(const orvo::Notification& change) {
    m_edit.forget(change.key());
    m_rows.keepFolders(change);
    orvo::removeRecord(change, m_tabResFolder, m_ui->tvRes, rowOfRecord(*m_resModel, change.key()));
}

void OrvoResources::resourceDeleted(const orvo::Notification& change) {
    m_edit.forget(change.key());
    m_rows.keepItems(change);
    orvo::removeRecord(change, m_tabResource, m_ui->tvRes, rowOfRecord(*m_resModel, change.key()));
}

void OrvoResources::selectAgain(const QString& key) {
    const QPersistentModelIndex row(m_resModel->findIndexByKey(key));
    if (!row.isValid())
        return;
    // Leaving the row would save what is being typed, here or elsewhere, before its time.
    if (m_edit.isOpen())
        refreshPassport(row, orvo::resources::fieldsOf(row));
    else
        orvo::reselectRow(m_ui->tvRes, row);
    showRow(m_ui->tvRes, row);
}

void OrvoResources::folderUpdated(const orvo::Notification& change) {
    m_rows.keepFolders(change);
    MDRData* record = orvo::editAndMerge(change.event(), &m_tabResFolder);
    const QString key = change.key();
    const QModelIndex row = rowOfRecord(*m_resModel, key);
    if (!record || !row.isValid())
        return;
    const bool again = isCurrent(m_ui->tvRes, row);
    const QString newParent = orvo::textOf(record, orvo::field::ParentKey);
    const bool stays = orvo::sameText(newParent, folderKeyOf(row));
    const QModelIndex parent = row.parent();
    const int number = row.row();
    loadResFolderRow(parent, number, record);
    mergeEdit(change, record, row);
    const int32_t position =
        getResFolderPosition(key, newParent, orvo::integerOf(record, orvo::field::type_));
    if (!stays) {
        // Without a parent key the folder becomes a top row.
        if (position != -1)
            moveRow(
                [&] {
                    m_resModel->moveItem(number, position, parent,
                                         m_resModel->findIndexByKey(newParent));
                },
                WithSubtree);
        return;
    }
    if (position != -1)
        moveRow([&] { m_resModel->moveSiblingItem(number, position, parent); }, AmongSiblings);
    if (again)
        selectAgain(key);
}

void OrvoResources::resourceUpdated(const orvo::Notification& change) {
    m_rows.keepItems(change);
    MDRData* record = orvo::editAndMerge(change.event(), &m_tabResource);
    const QString key = change.key();
    const QModelIndex row = rowOfRecord(*m_resModel, key);
    if (!record || !row.isValid())
        return;
    const bool again = isCurrent(m_ui->tvRes, row);
    const QString newFolder = orvo::textOf(record, orvo::field::MenuResourceFolderKey);
    const bool stays = orvo::sameText(newFolder, folderKeyOf(row));
    const QModelIndex parent = row.parent();
    const int number = row.row();
    loadResItemRow(parent, number, record);
    mergeEdit(change, record, row);
    const int count = getFolderCount(newFolder);
    const int32_t position =
        getResItemPosition(key, newFolder, orvo::integerOf(record, orvo::field::type_));
    if (!stays) {
        if (position != -1)
            moveRow(
                [&] {
                    m_resModel->moveItem(number, count + position, parent,
                                         m_rows.folderRow(newFolder));
                },
                ToAnotherParent);
        return;
    }
    if (position != -1)
        moveRow([&] { m_resModel->moveSiblingItem(number, count + position, parent); },
                AmongSiblings);
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
    mergeEdit(change, record, row);
    const int32_t position = getResFolderPosition(key, orvo::textOf(record, orvo::field::ParentKey),
                                                  orvo::integerOf(record, orvo::field::type_));
    if (position != -1)
        moveRow([&] { m_resModel->moveSiblingItem(number, position, parent); }, AmongSiblings);
    if (again)
        selectAgain(key);
}

void OrvoResources::resourceInserted(const orvo::Notification& change) {
    MDRData* record = orvo::createAndMerge(change.event(), &m_tabResource);
    const QString key = change.key();
    if (!record || orvo::resources::isFixedKey(key))
        return;
    const QString folderKey = orvo::textOf(record, orvo::field::MenuResourceFolderKey);
    const int count = getFolderCount(folderKey);
    const int32_t position =
        getResItemPosition(key, folderKey, orvo::integerOf(record, orvo::field::type_));
    const QModelIndex row = rowOfRecord(*m_resModel, key);
    if (row.isValid()) {
        const bool again = isCurrent(m_ui->tvRes, row);
        const QModelIndex parent = row.parent();
        const int number = row.row();
        loadResItemRow(parent, number, record);
        mergeEdit(change, record, row);
        if (position != -1)
            moveRow([&] { m_resModel->moveSiblingItem(number, count + position, parent); },
                    AmongSiblings);
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
    if (m_rows.insertItem(record, newRow, target) && mayMoveCurrent())
        showRow(m_ui->tvRes, m_resModel->index(newRow, 0, target));
}
