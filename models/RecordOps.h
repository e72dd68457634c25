// RecordOps.h: what TabRec and PaspRec do alike, written once. A record names this struct as its
// friend and forwards to it; so the records stay plain classes without a base.
//
// Nothing here recurses: the depth of a tree costs memory on the heap, not the stack.
#ifndef ORVO_MODELS_RECORDOPS_H
#define ORVO_MODELS_RECORDOPS_H

#include "models/RowValues.h"

#include <QList>
#include <QVariant>
#include <QVector>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace orvo {

template <class Record>
struct RecordOps {
    static Record* child(const Record& record, int number) {
        return number >= 0 && number < record.m_childItems.size() ? record.m_childItems.at(number)
                                                                  : nullptr;
    }

    static QVariant data(const Record& record, int column) {
        return column >= 0 && column < record.m_itemData.size() ? record.m_itemData.at(column)
                                                                : QVariant();
    }

    /// The record of a table that the values are read from; null if they are the row's own.
    static const MDRData* tableRecord(const Record& record) { return record.m_itemData.record(); }
    static RowValues& values(Record& record) { return record.m_itemData; }

    static bool setData(Record& record, int column, const QVariant& value) {
        if (column < 0 || column >= record.m_itemData.size())
            return false;
        record.m_itemData.own()[column] = value;
        record.m_keyNoted = false; // the key may have changed
        return true;
    }

    /// Position among the parent's children, -1 if it has no parent or is not listed. Each record
    /// keeps the row it was last seen at; a hint that is off by a little is mended alone, one that
    /// is off by much mends those of all siblings, so that walking over many rows stays cheap.
    static int childNumber(const Record& record) {
        const Record* parent = record.m_parentItem;
        if (!parent)
            return -1;
        const QList<Record*>& siblings = parent->m_childItems;
        const auto isAt = [&](int row) {
            return row >= 0 && row < siblings.size() && siblings.at(row) == &record;
        };
        constexpr int near = 32;
        for (int step = 0; step <= near; ++step) {
            for (const int row : {record.m_rowHint - step, record.m_rowHint + step}) {
                if (isAt(row))
                    return record.m_rowHint = row;
            }
        }
        for (int row = 0; row < siblings.size(); ++row)
            siblings.at(row)->m_rowHint = row;
        return isAt(record.m_rowHint) ? record.m_rowHint : -1;
    }

    static bool canInsert(int position, int size) { return position >= 0 && position <= size; }

    static bool canRemove(int position, int count, int size) {
        return position >= 0 && std::int64_t(position) + count <= size;
    }

    /// Puts new children, which nobody owns yet, at a position that is in range.
    static void attach(Record& record, int position, const QList<Record*>& rows) {
        QList<Record*>& list = record.m_childItems;
        const int oldSize = list.size();
        if (oldSize == 0) {
            list = rows;
        } else {
            list.reserve(oldSize + rows.size());
            list += rows;
            std::rotate(list.begin() + position, list.begin() + oldSize, list.end());
        }
        for (int i = 0; i < rows.size(); ++i) {
            rows.at(i)->m_parentItem = &record;
            rows.at(i)->m_rowHint = position + i;
        }
    }

    static bool insertChildren(Record& record, int position, int count, int columns) {
        if (!canInsert(position, record.m_childItems.size()))
            return false;
        if (count < 1)
            return true;
        QList<Record*> rows;
        rows.reserve(count);
        const QVector<QVariant> empty(std::max(columns, 0));
        for (int i = 0; i < count; ++i)
            rows.append(new Record(empty, &record));
        attach(record, position, rows);
        return true;
    }

    static bool removeChildren(Record& record, int position, int count) {
        QList<Record*>& list = record.m_childItems;
        if (!canRemove(position, count, list.size()))
            return false;
        if (count < 1)
            return true;
        const QList<Record*> removed = list.mid(position, count);
        list.erase(list.begin() + position, list.begin() + position + count);
        for (Record* row : removed)
            drop(record, row);
        return true;
    }

    static bool insertColumns(Record& record, int position, int columns) {
        return changeColumns(record, [=](QVector<QVariant>& values) {
            if (!canInsert(position, values.size()))
                return false;
            values.insert(position, std::max(columns, 0), QVariant());
            return true;
        });
    }

    static bool removeColumns(Record& record, int position, int columns) {
        return changeColumns(record, [=](QVector<QVariant>& values) {
            if (!canRemove(position, columns, values.size()))
                return false;
            if (columns > 0)
                values.remove(position, columns);
            return true;
        });
    }

    /// Deletes all children with their subtrees.
    static void dropChildren(Record& root) {
        if (root.m_childItems.isEmpty())
            return;
        std::vector<Record*> path{&root};
        while (!path.empty()) {
            Record* record = path.back();
            if (record->m_childItems.isEmpty()) {
                path.pop_back();
                if (record != &root)
                    delete record;
                continue;
            }
            Record* row = record->m_childItems.takeLast();
            if (keptByAnother(*record, row))
                continue;
            if (row->m_childItems.isEmpty())
                delete row;
            else
                path.push_back(row);
        }
    }

    /// Calls visit(record) for every record of the subtrees of `rows`.
    template <class Visit>
    static void forEach(const QList<Record*>& rows, Visit visit) {
        std::vector<Record*> pending(rows.begin(), rows.end());
        while (!pending.empty()) {
            Record* record = pending.back();
            pending.pop_back();
            visit(record);
            pending.insert(pending.end(), record->m_childItems.begin(), record->m_childItems.end());
        }
    }

private:
    /// A record that a second one lists as well lives until the last of them lets it go.
    static bool keptByAnother(const Record& lister, Record* row) {
        if constexpr (requires { row->m_rare; }) {
            if (row->m_rare && row->m_rare->furtherLists > 0) {
                --row->m_rare->furtherLists;
                if (row->m_parentItem == &lister)
                    row->m_parentItem = nullptr;
                return true;
            }
        }
        return false;
    }

    static void drop(const Record& lister, Record* row) {
        if (!keptByAnother(lister, row))
            delete row;
    }

    /// A record that refuses keeps its children from being asked.
    template <class Change>
    static bool changeColumns(Record& root, Change change) {
        if (!change(root.m_itemData.own()))
            return false;
        std::vector<Record*> pending(root.m_childItems.begin(), root.m_childItems.end());
        while (!pending.empty()) {
            Record* record = pending.back();
            pending.pop_back();
            if (change(record->m_itemData.own()))
                pending.insert(pending.end(), record->m_childItems.begin(),
                               record->m_childItems.end());
        }
        return true;
    }
};

} // namespace orvo

#endif
