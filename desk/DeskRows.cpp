#include "desk/DeskRows.h"

#include "desk/Columns.h"
#include "frame/FolderWalk.h"
#include "frame/Records.h"
#include "frame/ViewRows.h"
#include "frame/Vocabulary.h"

#include <algorithm>
#include <cassert>

namespace orvo::desk {

namespace {

/// A folder whose rows are to be made; no row: the top.
struct Folder {
    TabRec* row = nullptr;
    QString key;
};

} // namespace

void DeskRows::fillBelow(DeskModel::Batch& rows, const QString& topKey, TabRec* top) {
    walkFolders(
        Folder{top, topKey}, [](const Folder& folder) { return folder.key; },
        [&](const Folder& folder) {
            std::vector<Folder> folders;
            for (const QString& key : m_records.children(folder.key)) {
                const QVector<QVariant> values = m_records.values(m_records.element(key));
                TabRec* row = rows.add(values, folder.row);
                if (values[DeskColumn::Kind].toInt() == Kind::None)
                    folders.push_back({row, key});
            }
            return folders;
        });
}

void DeskRows::fill() {
    m_model.removeRows(0, m_model.rowCount());
    auto rows = m_model.newRows();
    fillBelow(rows, QString(), nullptr);
    m_model.insertFilledRows(0, std::move(rows));
}

void DeskRows::insert(const QModelIndex& parent, int position, const QString& key) {
    auto rows = m_model.newRows(parent);
    const QVector<QVariant> values = m_records.values(m_records.element(key));
    TabRec* row = rows.add(values);
    if (values[DeskColumn::Kind].toInt() == Kind::None)
        fillBelow(rows, key, row);
    m_model.insertFilledRows(std::clamp(position, 0, m_model.rowCount(parent)), std::move(rows),
                             parent);
}

void DeskRows::setValues(const QModelIndex& row, const QVector<QVariant>& values) {
    for (int column = 0; column < values.size(); ++column)
        if (DeskModel::value(row, column) != values[column])
            m_model.setData(row.siblingAtColumn(column), values[column]);
}

void DeskRows::refresh(const QString& key) {
    const QModelIndex row = m_model.findIndexByKey(key);
    const MDRData* record = m_records.element(key);
    if (!row.isValid() || !record)
        return;
    const QVector<QVariant> values = m_records.values(record);
    const bool wasFolder = DeskModel::isFolder(row);
    setValues(row, values);
    const bool isFolder = values[DeskColumn::Kind].toInt() == Kind::None;
    if (isFolder == wasFolder)
        return;
    if (!isFolder) {
        m_model.removeRows(0, m_model.rowCount(row), row);
        return;
    }
    for (const QString& child : m_records.children(key))
        if (!m_model.findIndexByKey(child).isValid())
            insert(row, m_model.rowCount(row), child);
}

void DeskRows::follow(const QString& key) {
    const QPersistentModelIndex row = m_model.findIndexByKey(key);
    const MDRData* record = m_records.element(key);
    const QString parentKey = record ? m_records.parentOf(record) : QString();
    QModelIndex parent;
    bool shown = record != nullptr;
    if (shown && !parentKey.isEmpty()) {
        parent = m_model.findIndexByKey(parentKey);
        shown = parent.isValid() && DeskModel::isFolder(parent);
        for (QModelIndex up = parent; shown && up.isValid(); up = up.parent())
            shown = up != row; // a circle
    }
    if (!shown) {
        if (row.isValid())
            m_model.removeRows(row.row(), 1, row.parent());
        return;
    }
    const int position = m_records.position(record);
    if (row.isValid() && row.parent() == parent && row.row() == position) {
        refresh(key);
        return;
    }
    const QPersistentModelIndex place = parent;
    if (row.isValid())
        m_model.removeRows(row.row(), 1, row.parent());
    insert(place, position, key);
    assert(m_model.findIndexByKey(key).parent() == place);
}

} // namespace orvo::desk
