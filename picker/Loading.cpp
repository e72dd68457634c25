// Filling the picker's tree from its copies of the tables: one seek for the sub-folders and one for
// the resources of each folder, siblings in the order of the keys.
#include "picker/PopObjectList.h"

#include "frame/FolderWalk.h"
#include "frame/Records.h"
#include "frame/Vocabulary.h"

#include <vector>

using orvo::KeyValues;

namespace {

QVector<QVariant> rowValues(const QString& name, const QVariant& caption, const QString& key,
                            bool isFolder) {
    return {name, caption, QVariant(), QVariant(), key, isFolder, QVariant()};
}

/// Calls `each` for the records of that kind whose link field, field 2 of key 1, holds `key`; a
/// null key stands for the top.
template <class Each>
void walkChildren(const CMDArray& table, const char* link, int type, const QString& key,
                  Each&& each) {
    KeyValues values;
    values.integer(type);
    if (key.isNull())
        values.null();
    else
        values.text(key);
    orvo::walkGroup(table, 1, values, [&](const MDRData* record) {
        if (orvo::integerOf(record, orvo::field::type_) != type ||
            !orvo::holdsText(record, link, key))
            return false;
        each(record);
        return true;
    });
}

QModelIndex parentRow(const PopTreeModel& model, const QString& key) {
    return key.isNull() ? QModelIndex() : model.findIndexByKey(key);
}

} // namespace

void CPopObjectList::loadFoldersOf(int type, const QString& key) {
    orvo::walkFolders(
        key, [](const QString& folder) { return folder; },
        [&](const QString& folder) {
            std::vector<QString> below;
            const QModelIndex parent = parentRow(*treeModel, folder);
            auto rows = treeModel->newRows(parent);
            walkChildren(folderTable, orvo::field::ParentKey, type, folder,
                         [&](const MDRData* record) {
                             below.push_back(orvo::textOf(record, orvo::field::KeyLink));
                             rows.add(rowValues(orvo::textOf(record, orvo::field::caption),
                                                QVariant(), below.back(), true));
                         });
            treeModel->insertFilledRows(treeModel->rowCount(parent), std::move(rows), parent);
            // The resources of the folder asked for are the caller's to load.
            if (folder != key)
                loadItemsOf(type, folder, type != KindFile);
            return below;
        });
}

void CPopObjectList::loadItemsOf(int type, const QString& key, bool withCaption) {
    const QModelIndex parent = parentRow(*treeModel, key);
    auto rows = treeModel->newRows(parent);
    walkChildren(resourceTable, orvo::field::MenuResourceFolderKey, type, key,
                 [&](const MDRData* record) {
                     rows.add(rowValues(orvo::textOf(record, orvo::field::name_),
                                        withCaption ? orvo::textOf(record, orvo::field::caption)
                                                    : QVariant(),
                                        orvo::textOf(record, orvo::field::KeyLink), false));
                 });
    treeModel->insertFilledRows(treeModel->rowCount(parent), std::move(rows), parent);
}
