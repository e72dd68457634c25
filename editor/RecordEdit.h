// RecordEdit.h: the edit of one record: of a new one, whose row is a placeholder in a tree, or of
// the values of an existing one. It owns what is edited and what was typed; the window tells it
// what the engineer and the server do. An editor derives from it what its own subject adds.
//
// Invariants, asserted in debug builds:
// 1. Idle, there are no typed values and no row.
// 2. An open edit has a key, that of the record. It keeps it while the row is away, which another
//    client may have removed or recreated in another place.
#ifndef ORVO_EDITOR_RECORDEDIT_H
#define ORVO_EDITOR_RECORDEDIT_H

#include "editor/TypedValues.h"

#include <QPersistentModelIndex>
#include <QSet>
#include <QString>

#include <cstdint>

namespace orvo::editor {

class RecordEdit {
public:
    enum State : uint32_t {
        Idle = 0,
        NewRow = 1,  ///< of a row that was never saved
        EditRow = 2, ///< of a row whose values were changed
    };

    /// Of this object, as long as it lives.
    const uint32_t& state() const { return m_state; }
    bool isOpen() const { return m_state != Idle; }
    bool isNew() const { return m_state == NewRow; }
    /// Whether it is the edit of that record.
    bool isOf(const QString& key) const;
    /// The key of the record.
    const QString& key() const { return m_key; }
    /// The row it began on; invalid once that is gone.
    const QPersistentModelIndex& index() const { return m_row; }
    /// Whether the row of that key was new and has been sent: until its record comes back it looks
    /// like a placeholder.
    bool wasSent(const QString& key) const { return m_sent.contains(key.toCaseFolded()); }
    bool isTyped(int column) const { return m_typed.contains(column); }

    // Transitions. begin: from no edit; the others but end() need an open one.

    /// A placeholder has been put into the tree.
    void beginNew(const QModelIndex& placeholder, const QString& key);
    /// The first change of an existing record's row.
    void begin(const QModelIndex& row, const QString& key);
    /// Another placeholder has become current and is saved in place of the first.
    void takePlaceholder(const QModelIndex& placeholder, const QString& key);
    /// The row has been recreated in another place.
    void follow(const QModelIndex& row);
    /// The engineer typed a value, which the row gets.
    void change(QAbstractItemModel& model, int column, const QVariant& value);
    /// A change of a record has entered the table, and the row has been written again: what was
    /// typed and is not overtaken goes back into it. Nothing for any other record. Gives what was
    /// overtaken.
    std::vector<Replaced> merge(QAbstractItemModel& model, const QModelIndex& row,
                                const Notification& change, const MDRData* record,
                                const RecordFields& fields);
    /// The record is on its way to the server.
    void markSent();
    /// Ends it; nothing is written. The key stays that of the last edit. Also when none is open.
    void end();

protected:
    void check() const;
    void forgetKey() { m_key.clear(); }
    TypedValues& typed() { return m_typed; }
    const TypedValues& typed() const { return m_typed; }

private:
    uint32_t m_state = Idle;
    QString m_key;
    QPersistentModelIndex m_row;
    TypedValues m_typed;
    QSet<QString> m_sent; ///< keys of new rows that were saved
};

} // namespace orvo::editor

#endif
