// RowBatch.h: rows on their way into a model.
#ifndef ORVO_MODELS_ROWBATCH_H
#define ORVO_MODELS_ROWBATCH_H

#include "models/KeyIndex.h"
#include "models/RecordOps.h"

#include <memory>
#include <utility>
#include <vector>

namespace orvo {

/// A run of sibling rows, subtrees included, that are filled before they enter a model: the model
/// then announces the run once, and no view sees an empty row. Made by TreeModelCore::newRows,
/// taken in by TreeModelCore::insertFilledRows; deletes the rows that were not.
///
///     auto rows = model.newRows(parent);
///     TabRec* folder = rows.add();
///     folder->setData(0, caption);
///     rows.add(folder)->setData(0, captionBelow);
///     model.insertFilledRows(model.rowCount(parent), std::move(rows), parent);
///
///  1. m_rows has one entry for each row below m_root.
///  2. A row whose key is noted has the hash of it in its entry. That of the last row is not, and
///     that of a row whose values were set afterwards is not any more; release notes them.
///  3. Each row has the columns of the batch and a level one more than its parent's.
template <class Record>
class RowBatch {
public:
    /// Rows of `columns` columns whose parent will be a record of that level, for a model with that
    /// key column.
    RowBatch(int columns, int keyColumn, int parentLevel)
        : m_root(std::make_unique<Record>(QVector<QVariant>()))
        , m_columns(columns)
        , m_keyColumn(keyColumn) {
        m_root->m_level = parentLevel;
    }

    /// A new last row below `parent`, a row of this batch, or at the top of the run; its values are
    /// invalid. The batch owns it.
    Record* add(Record* parent = nullptr) { return add(QVector<QVariant>(m_columns), parent); }
    /// The same, with its values: the fastest way. Missing ones become invalid, surplus ones are
    /// dropped.
    Record* add(QVector<QVariant> values, Record* parent = nullptr) {
        if (values.size() != m_columns)
            values.resize(m_columns);
        return add(RowValues(values), parent);
    }
    /// The same, with the values that `source`, which has the columns of the batch, reads from a
    /// record. From then on the model's keepValues has to be called before the record changes.
    Record* add(const RowSource& source, const MDRData* record, Record* parent = nullptr) {
        Q_ASSERT(source.columnCount() == m_columns);
        return add(RowValues(source, record), parent);
    }
    /// A copy of the values of `source`, a record of the model that the batch is for, and if wanted
    /// of all below it. Nothing else of them is copied: not whether they are expanded, nor their
    /// file lists.
    Record* addCopy(const Record& source, bool withChildren, Record* parent = nullptr) {
        Record* copy = add(source.m_itemData, parent);
        if (withChildren)
            addCopiesOfChildren(source, copy);
        return copy;
    }
    /// Copies of all rows below `source`, which itself stays out.
    void addCopiesOfChildren(const Record& source, Record* parent = nullptr) {
        std::vector<std::pair<const Record*, Record*>> pending;
        const auto addAll = [&](const Record& from, Record* under) {
            for (const Record* child : from.m_childItems) {
                Record* copy = add(child->m_itemData, under);
                if (!child->m_childItems.isEmpty())
                    pending.emplace_back(child, copy);
            }
        };
        addAll(source, parent);
        while (!pending.empty()) {
            const auto [from, under] = pending.back();
            pending.pop_back();
            addAll(*from, under);
        }
    }

    bool isEmpty() const { return topCount() == 0; }
    /// Rows of the run, and all rows with those below them.
    int topCount() const { return m_root->m_childItems.size(); }
    int count() const { return static_cast<int>(m_rows.size()); }
    int columnCount() const { return m_columns; }
    int parentLevel() const { return m_root->m_level; }

    /// Hands the run over to the caller, who owns the rows from then on; `keys` receives the keys
    /// of all rows, for the index of the model.
    QList<Record*> release(std::vector<KeyIndex::Entry>& keys) {
        for (KeyIndex::Entry& row : m_rows) {
            noteKey(row);
            Q_ASSERT(static_cast<Record*>(row.row)->m_keyNoted);                     // 2
            Q_ASSERT(static_cast<Record*>(row.row)->m_itemData.size() == m_columns); // 3
        }
        keys = std::move(m_rows);
        m_rows.clear();
        QList<Record*> rows;
        rows.swap(m_root->m_childItems);
        return rows;
    }

private:
    Record* add(const RowValues& values, Record* parent) {
        if (!m_rows.empty())
            noteKey(m_rows.back());
        Record* under = parent ? parent : m_root.get();
        m_rows.emplace_back();
        auto* row = new Record(values, under);
        m_rows.back().row = row;
        row->m_rowHint = under->m_childItems.size();
        under->m_childItems.append(row);
        return row;
    }
    /// A row's key is noted when the next row comes, while the row is still near at hand; a value
    /// set later undoes that.
    void noteKey(KeyIndex::Entry& entry) const {
        auto* row = static_cast<Record*>(entry.row);
        if (row->m_keyNoted)
            return;
        entry = KeyIndex::entry(row, RecordOps<Record>::data(*row, m_keyColumn));
        if (entry.hash == 0) // the model could not find it again when the record changes
            row->m_itemData.own();
        row->m_keyNoted = true;
    }

    std::unique_ptr<Record> m_root;
    std::vector<KeyIndex::Entry> m_rows; ///< in the order they came; owned by their parents
    int m_columns;
    int m_keyColumn;
};

} // namespace orvo

#endif
