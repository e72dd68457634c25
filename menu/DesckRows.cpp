#include "menu/DesckRows.h"

#include "frame/FolderWalk.h"
#include "frame/Records.h"
#include "frame/Siblings.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"

#include <initializer_list>

namespace orvo::menu {
namespace {

bool standsAtTop(const MDRData* record) {
    return isEmptyText(record, field::ParentKey);
}

QString keyOf(const TabRec* row) {
    return row->data(DesckColumn::KeyLink).toString();
}

} // namespace

QModelIndex desckRow(const DesckTreeModel& model, const QString& key) {
    return sameText(key, QString::fromLatin1(desckRootKey)) ? QModelIndex()
                                                            : model.findIndexByKey(key);
}

void addAllDescks(const CMDArray& table, DesckTreeModel::Batch& rows) {
    walkAll(table, 1, [&](const MDRData* record) {
        if (!standsAtTop(record))
            return true;
        TabRec* row = rows.add();
        row->setData(DesckColumn::Name, textOf(record, field::caption));
        row->setData(DesckColumn::Order, textOf(record, field::order_));
        row->setData(DesckColumn::KeyLink, textOf(record, field::KeyLink));
        row->setData(DesckColumn::IsFolder, flagOf(record, field::isFolder));
        if (flagOf(record, field::isFolder))
            addDescksBelow(table, rows, row);
        return true;
    });
}

std::vector<TabRec*> addDescks(const CMDArray& table, DesckTreeModel::Batch& rows, TabRec* parent,
                               const QString& parentKey, bool folders) {
    const QString order = QString::fromLatin1(folders ? folderClass : desktopClass);
    std::vector<TabRec*> added;
    walkGroup(table, 2, KeyValues().text(order).text(parentKey).text(QString()),
              [&](const MDRData* record) {
                  if (!holdsText(record, field::ParentKey, parentKey) ||
                      !holdsText(record, field::order_, order))
                      return false;
                  TabRec* row = rows.add(parent);
                  row->setData(DesckColumn::KeyLink, textOf(record, field::KeyLink));
                  row->setData(DesckColumn::Name, textOf(record, field::caption));
                  row->setData(DesckColumn::ParentKey, textOf(record, field::ParentKey));
                  row->setData(DesckColumn::IsFolder, folders);
                  row->setData(DesckColumn::IsNew, false);
                  added.push_back(row);
                  return true;
              });
    return added;
}

void addDescksBelow(const CMDArray& table, DesckTreeModel::Batch& rows, TabRec* folder) {
    walkFolders(folder, keyOf, [&](TabRec* row) {
        const QString key = keyOf(row);
        std::vector<TabRec*> folders = addDescks(table, rows, row, key, true);
        addDescks(table, rows, row, key, false);
        return folders;
    });
}

int32_t desckPosition(const CMDArray& table, const QString& key, const QString& parentKey,
                      bool atTopLevel) {
    const MDRData* own = seekKey(table, key);
    const auto exact = [own](std::initializer_list<const char*> fields) {
        KeyValues values;
        for (const char* name : fields)
            addField(values, own, name);
        return values;
    };
    if (!atTopLevel)
        return siblingPosition(
            table, 3, KeyValues().text(parentKey), key, own,
            exact({field::ParentKey, field::order_, field::caption}),
            [&](const MDRData* record) { return holdsText(record, field::ParentKey, parentKey); });
    // The top level is not a group of key 1, which mixes it with all others.
    int32_t count = -1;
    walkAll(table, 1, [&](const MDRData* record) {
        if (!standsAtTop(record))
            return true;
        ++count;
        return !holdsText(record, field::KeyLink, key);
    });
    return count;
}

} // namespace orvo::menu
