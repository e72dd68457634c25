// TreeModelCore.h: the tree-model core below all five models.
//
// A class template without Q_OBJECT, so that at the meta-object level each model derives straight
// from QAbstractItemModel. It keeps one invisible root record whose values are the header texts,
// and the address of a row's record in the internal pointer of each index.
//
// All changes of rows go through insertFilledRows and removeRows, the only places that announce
// rows; a change that is not possible changes nothing and announces nothing. All changes of key
// values go through store, so that the index of keys behind findIndexByKey is always right.
#ifndef ORVO_MODELS_TREEMODELCORE_H
#define ORVO_MODELS_TREEMODELCORE_H

#include "frame/OrvoMdx.h"
#include "frame/Text.h"
#include "frame/Values.h"
#include "models/KeyIndex.h"
#include "models/RecordOps.h"
#include "models/RowBatch.h"

#include <QAbstractItemModel>
#include <QStringList>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace orvo {

/// The role that answers each model's key column.
enum TreeModelRole { KeyRole = Qt::AccessibleDescriptionRole };
static_assert(KeyRole == 12, "the key role of the system");

/// What a screen reader calls a column. Titles in Latin letters name fields, of columns that no
/// tree shows; they are offered all the same. In English a title cannot be told from them.
inline QString spokenTitle(const QString& title) {
    const bool isField = std::any_of(title.begin(), title.end(), [](QChar letter) {
        return letter.unicode() < 128 && letter.isLetter();
    });
    return isField && textLocale().language() != QLocale::English ? Text::tr("Служебный столбец")
                                                                  : title;
}

/// Record is TabRec or PaspRec. Lives on the GUI thread.
///
/// Whenever control is outside the model, in slots of its signals too, all of this holds; check()
/// looks at it. (While rows are announced as about to change, it holds for the state before.)
///
///  1. Every row is listed once, by its parent, whose level is one less. The root has the level -1
///     and no parent.
///  2. Every row has as many values as the header.
///  3. The index of keys holds every row with a key, under that key, and nothing else.
///  4. A row whose values are read from a record of a table has a key, and the record is there, as
///     it was when the row was made: keepValues finds the row by the one and sees to the other.
template <class Record>
class TreeModelCore : public QAbstractItemModel {
public:
    using Batch = RowBatch<Record>;

    ~TreeModelCore() override = default;

    /// The record of a valid index, else the root record. Read-only: values change by setData.
    const Record* getItem(const QModelIndex& index) const { return item(index); }

    /// Invalid below an index of a column other than 0, and where there is no such row; the column
    /// is not looked at.
    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override {
        if (parent.isValid() && parent.column() != 0)
            return {};
        Record* child = item(parent)->child(row);
        return child ? createIndex(row, column, child) : QModelIndex();
    }
    QModelIndex parent(const QModelIndex& index) const override {
        return index.isValid() ? indexOf(item(index)->parent()) : QModelIndex();
    }
    using QObject::parent;

    int rowCount(const QModelIndex& parent = {}) const override {
        return item(parent)->childCount();
    }
    /// Of the header; the argument is ignored.
    int columnCount(const QModelIndex& = {}) const override { return m_root->columnCount(); }

    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override {
        if (orientation != Qt::Horizontal ||
            (role != Qt::DisplayRole && role != Qt::AccessibleTextRole))
            return {};
        const QVariant title = m_root->data(section);
        return role == Qt::DisplayRole ? title : QVariant(spokenTitle(title.toString()));
    }
    bool setHeaderData(int section, Qt::Orientation orientation, const QVariant& value,
                       int role = Qt::EditRole) override {
        if (orientation != Qt::Horizontal || role != Qt::EditRole ||
            !m_root->setData(section, value))
            return false;
        emit headerDataChanged(Qt::Horizontal, section, section);
        return true;
    }

    Qt::ItemFlags flags(const QModelIndex& index) const override {
        return index.isValid() ? QAbstractItemModel::flags(index) | m_flags
                               : Qt::ItemFlags(Qt::NoItemFlags);
    }

    /// Roles 0, 1 and 2 write the column's value; any other role above them is refused.
    bool setData(const QModelIndex& index, const QVariant& value,
                 int role = Qt::EditRole) override {
        if (!index.isValid() || role > Qt::EditRole || !store(item(index), index.column(), value))
            return false;
        emit dataChanged(index, index);
        return true;
    }

    /// Rows of invalid values. False, and nothing announced, for an impossible position; true at
    /// once for less than one row.
    bool insertRows(int position, int rows, const QModelIndex& parent = {}) override {
        Batch batch = newRows(parent);
        if (!Ops::canInsert(position, rowCount(parent)))
            return false;
        for (int i = 0; i < rows; ++i)
            batch.add();
        return insertFilledRows(position, std::move(batch), parent);
    }
    /// Rows with all below them. False, and nothing announced, if they are not all there.
    bool removeRows(int position, int rows, const QModelIndex& parent = {}) override {
        Record* record = item(parent);
        if (!Ops::canRemove(position, rows, record->childCount()))
            return false;
        if (rows < 1)
            return true;
        beginRemoveRows(firstColumn(parent), position, position + rows - 1);
        if (record == m_root.get() && rows == record->childCount()) {
            m_keys.clear();
        } else {
            QList<Record*> removed;
            for (int i = 0; i < rows; ++i)
                removed.append(record->child(position + i));
            Ops::forEach(removed, [this](Record* row) { forgetKey(row); });
        }
        record->removeChildren(position, rows);
        endRemoveRows();
        return true;
    }
    bool insertColumns(int position, int columns, const QModelIndex& parent = {}) override {
        if (!Ops::canInsert(position, columnCount()))
            return false;
        if (columns < 1)
            return true;
        beginInsertColumns(firstColumn(parent), position, position + columns - 1);
        m_root->insertColumns(position, columns);
        indexAllKeys();
        endInsertColumns();
        return true;
    }
    /// Without any column left the rows go too.
    bool removeColumns(int position, int columns, const QModelIndex& parent = {}) override {
        if (!Ops::canRemove(position, columns, columnCount()))
            return false;
        if (columns < 1)
            return true;
        beginRemoveColumns(firstColumn(parent), position, position + columns - 1);
        m_root->removeColumns(position, columns);
        indexAllKeys();
        endRemoveColumns();
        if (columnCount() == 0)
            removeRows(0, rowCount());
        return true;
    }
    /// False. The models that move rows override it; the others have moveSiblingItem and moveItem.
    /// Nothing is announced either: a move that begins and never ends would leave every persistent
    /// index and every view of the model behind.
    bool moveRows(const QModelIndex&, int, int, const QModelIndex&, int) override { return false; }

    /// Loading in bulk: an empty batch for rows below `parent`, to be filled and handed to
    /// insertFilledRows. Rows below those rows go into the same batch.
    Batch newRows(const QModelIndex& parent = {}) const {
        return Batch(columnCount(), m_keyColumn, item(parent)->level());
    }
    /// Takes the batch in at `position` below `parent` with one announcement, which comes when all
    /// values are in place. False, and the batch as it was, if the position is impossible or the
    /// batch was made for another level or other columns.
    bool insertFilledRows(int position, Batch&& batch, const QModelIndex& parent = {}) {
        Record* record = item(parent);
        if (!Ops::canInsert(position, record->childCount()) ||
            batch.parentLevel() != record->level() || batch.columnCount() != columnCount())
            return false;
        if (batch.isEmpty())
            return true;
        beginInsertRows(firstColumn(parent), position, position + batch.topCount() - 1);
        enter(*record, position, batch);
        endInsertRows();
        return true;
    }

    /// The row of that key: the first in display order, without regard to case, as a recursive
    /// match on the key role would find it, at a cost that does not grow with the tree. Invalid for
    /// an empty key.
    QModelIndex findIndexByKey(const QString& key) const {
        if (key.isEmpty())
            return {};
        const Record* first = nullptr;
        m_keys.forEachCandidate(key, [&](void* entry) {
            const auto* row = static_cast<const Record*>(entry);
            if (hasKey(*row, key) && (!first || comesBefore(*row, *first)))
                first = row;
        });
        return indexOf(first);
    }

    /// Gives all rows that read their values through `source` from the record these values as their
    /// own. To be called before the record is changed or deleted; null is no record's row.
    void keepValues(const RowSource& source, const MDRData* record) {
        if (!record)
            return;
        const QString key = source.value(record, m_keyColumn).toString();
        m_keys.forEachCandidate(key, [&](void* entry) {
            auto* row = static_cast<Record*>(entry);
            if (Ops::tableRecord(*row) == record)
                Ops::values(*row).own();
        });
    }
    /// Has the row read its values through `source` from the record if it shows just these;
    /// otherwise it keeps its own. Nothing that it shows changes.
    void shareValues(const QModelIndex& index, const RowSource& source, const MDRData* record) {
        if (!index.isValid() || !record || source.columnCount() != columnCount())
            return;
        Record* row = item(index);
        for (int column = 0; column < columnCount(); ++column) {
            if (!isSame(row->data(column), source.value(record, column)))
                return;
        }
        if (!row->data(m_keyColumn).toString().isEmpty()) // 4
            Ops::values(*row) = RowValues(source, record);
    }

    /// The first invariant that does not hold; null if all do. For tests: it looks at every row.
    const char* check() const {
        size_t keyed = 0;
        std::vector<const Record*> pending{m_root.get()};
        if (m_root->parent() || m_root->level() != -1)
            return "tree 1: the root";
        while (!pending.empty()) {
            const Record* parent = pending.back();
            pending.pop_back();
            for (int i = 0; i < parent->childCount(); ++i) {
                const Record* row = parent->child(i);
                if (row->parent() != parent || row->level() != parent->level() + 1 ||
                    row->childNumber() != i)
                    return "tree 1: a row and its parent";
                if (row->columnCount() != m_root->columnCount())
                    return "tree 2: values of a row";
                const QString key = row->data(m_keyColumn).toString();
                bool found = key.isEmpty();
                keyed += found ? 0 : 1;
                if (!found)
                    m_keys.forEachCandidate(key,
                                            [&](void* entry) { found = found || entry == row; });
                if (!found)
                    return "tree 3: a row that its key does not find";
                const MDRData* read = Ops::tableRecord(*row);
                if (read && (key.isEmpty() || !read->owner))
                    return "tree 4: a row that reads from a record that is gone";
                pending.push_back(row);
            }
        }
        if (keyed != m_keys.count())
            return "tree 3: a key of a row that is gone";
        return m_keys.check();
    }

    /// What screen readers are told of a row behind the text of its first cell; empty: nothing.
    using SpokenNote = std::function<QString(const QModelIndex& row)>;
    void setSpokenNote(SpokenNote note) { m_spokenNote = std::move(note); }

protected:
    /// A cell as it is spoken, if that is not its text alone.
    QVariant spoken(const QModelIndex& index) const {
        const QString note = m_spokenNote && index.column() == 0 ? m_spokenNote(index) : QString();
        return note.isEmpty() ? QVariant()
                              : QVariant(index.data().toString() + QStringLiteral(", ") + note);
    }

    using Ops = RecordOps<Record>;

    /// `keyColumn` is what the key role answers; `flags` are those beyond the base class's.
    TreeModelCore(const QStringList& headers, int keyColumn, Qt::ItemFlags flags)
        : m_root(std::make_unique<Record>(values(headers)))
        , m_keyColumn(keyColumn)
        , m_flags(flags) {}

    Record* item(const QModelIndex& index) const {
        Q_ASSERT(!index.isValid() || index.model() == this);
        void* record = index.isValid() ? index.internalPointer() : nullptr;
        return record ? static_cast<Record*>(record) : m_root.get();
    }
    /// Column 0 of a record's row; invalid for null and for the root.
    QModelIndex indexOf(const Record* record) const {
        return record && record != m_root.get()
                   ? createIndex(record->childNumber(), 0, const_cast<Record*>(record))
                   : QModelIndex();
    }
    /// Rows hang below column 0, whatever column of the parent the caller pointed at.
    static QModelIndex firstColumn(const QModelIndex& index) {
        return index.isValid() ? index.sibling(index.row(), 0) : index;
    }
    /// Writes a value, announcing nothing. False outside the columns.
    bool store(Record* record, int column, const QVariant& value) {
        if (column != m_keyColumn)
            return record->setData(column, value);
        forgetKey(record);
        const bool stored = record->setData(column, value);
        rememberKey(record);
        return stored;
    }
    void setItemExpandedFlag(const QModelIndex& index, bool expanded) {
        if (index.isValid())
            item(index)->setExpanded(expanded);
    }
    int keyColumn() const { return m_keyColumn; }
    QString itemKey(const QModelIndex& index) const { return itemText(index, m_keyColumn); }
    /// A null string for an invalid index.
    QString itemText(const QModelIndex& index, int column) const {
        return index.isValid() ? item(index)->data(column).toString() : QString();
    }
    int itemLevel(const QModelIndex& index) const {
        return index.isValid() ? item(index)->level() : -1;
    }

    // Moving rows: a copy of the values is put at the new place, then the old row is removed. The
    // copy is new: not expanded, and without the file list.

    /// Moves a row among its siblings, with or without the rows below it. False if one of the rows
    /// is not there; true without doing anything if they are the same.
    bool moveSibling(int from, int to, const QModelIndex& parent, bool withChildren) {
        const int count = rowCount(parent);
        if (from < 0 || from >= count || to < 0 || to >= count)
            return false;
        if (from == to)
            return true;
        const bool down = from < to;
        Batch copy = newRows(parent);
        copy.addCopy(*item(parent)->child(from), withChildren);
        return insertFilledRows(down ? to + 1 : to, std::move(copy), parent) &&
               removeRows(down ? from : from + 1, 1, parent);
    }
    /// Moves a row with all below it to another parent. Within one parent it is a move among
    /// siblings. False, and nothing changed, if the row or the place is not there, or if the place
    /// is the row itself or below it, where the row would go down with its old self.
    bool moveToParent(int from, int to, const QModelIndex& fromParent,
                      const QModelIndex& toParent) {
        const Record* source = item(fromParent);
        const Record* target = item(toParent);
        if (from < 0 || from >= source->childCount() || to < 0 || to > target->childCount())
            return false;
        if (source == target)
            return moveSibling(from, to, fromParent, true);
        const Record* moved = source->child(from);
        if (isBelow(target, moved))
            return false;
        Batch copy = newRows(toParent);
        copy.addCopy(*moved, true);
        if (!insertFilledRows(to, std::move(copy), toParent))
            return false;
        // The insertion may have moved the source parent's row.
        return removeRows(from, 1, indexOf(source));
    }
    /// Puts copies of all rows below `source`, with their subtrees, before those of `destination`.
    void copyChildren(const QModelIndex& source, const QModelIndex& destination) {
        Batch copies = newRows(destination);
        copies.addCopiesOfChildren(*item(source));
        insertFilledRows(0, std::move(copies), destination);
    }
    /// Moves the values of rows to another parent; the rows below them are lost. False within one
    /// parent, for rows or a place that are not there, and for a place below the rows.
    bool moveValues(const QModelIndex& sourceParent, int sourceRow, int count,
                    const QModelIndex& destinationParent, int destinationChild) {
        Record* source = item(sourceParent);
        Record* target = item(destinationParent);
        if (source == target || count < 1 || sourceRow < 0 ||
            !Ops::canRemove(sourceRow, count, source->childCount()) ||
            !Ops::canInsert(destinationChild, target->childCount()))
            return false;
        for (int row = sourceRow; row < sourceRow + count; ++row) {
            if (isBelow(target, source->child(row)))
                return false;
        }
        // The rows that do not come along leave first, announced, while the indexes to them hold.
        for (int row = sourceRow; row < sourceRow + count; ++row) {
            const QModelIndex moving = indexOf(source->child(row));
            removeRows(0, rowCount(moving), moving);
        }
        if (!beginMoveRows(firstColumn(sourceParent), sourceRow, sourceRow + count - 1,
                           firstColumn(destinationParent), destinationChild))
            return false;
        Batch copies = newRows(destinationParent);
        for (int row = sourceRow; row < sourceRow + count; ++row)
            copies.addCopy(*source->child(row), false);
        for (int row = sourceRow; row < sourceRow + count; ++row)
            forgetKey(source->child(row));
        enter(*target, destinationChild, copies);
        const bool removed = source->removeChildren(sourceRow, count);
        endMoveRows();
        return removed;
    }

private:
    static QVector<QVariant> values(const QStringList& headers) {
        QVector<QVariant> list;
        list.reserve(headers.size());
        for (const QString& header : headers)
            list.append(header);
        return list;
    }
    void enter(Record& parent, int position, Batch& batch) {
        Q_ASSERT(batch.columnCount() == columnCount());  // 2
        Q_ASSERT(batch.parentLevel() == parent.level()); // 1
        std::vector<KeyIndex::Entry> keys;
        Ops::attach(parent, position, batch.release(keys));
        m_keys.insertAll(keys);
    }
    KeyIndex::Entry keyEntry(Record* row) const {
        return KeyIndex::entry(row, row->data(m_keyColumn));
    }
    bool hasKey(const Record& row, const QString& key) const {
        const QString own = row.data(m_keyColumn).toString();
        // The same letters are the usual case, and far quicker seen.
        return own == key || own.compare(key, Qt::CaseInsensitive) == 0;
    }
    void rememberKey(Record* row) { m_keys.insert(keyEntry(row)); }
    void forgetKey(Record* row) { m_keys.remove(keyEntry(row)); }
    void indexAllKeys() {
        m_keys.clear();
        QList<Record*> top;
        for (int row = 0; row < m_root->childCount(); ++row)
            top.append(m_root->child(row));
        Ops::forEach(top, [this](Record* row) { rememberKey(row); });
    }
    /// Whether the record is `ancestor` or stands below it.
    static bool isBelow(const Record* record, const Record* ancestor) {
        while (record && record != ancestor)
            record = record->parent();
        return record != nullptr;
    }
    /// Rows from the root down to the record.
    static std::vector<int> rowPath(const Record& record) {
        std::vector<int> path;
        for (const Record* r = &record; r->parent(); r = r->parent())
            path.push_back(r->childNumber());
        std::reverse(path.begin(), path.end());
        return path;
    }
    static bool comesBefore(const Record& a, const Record& b) { return rowPath(a) < rowPath(b); }

    std::unique_ptr<Record> m_root;
    KeyIndex m_keys;
    const int m_keyColumn;
    const Qt::ItemFlags m_flags;
    SpokenNote m_spokenNote; ///< may be null
};

} // namespace orvo

#endif
