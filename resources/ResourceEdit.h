// ResourceEdit.h: the one open edit of the resource editor: of which record and which row, what was
// typed into it, and which saves have not come back yet.
#ifndef ORVO_RESOURCES_RESOURCEEDIT_H
#define ORVO_RESOURCES_RESOURCEEDIT_H

#include "editor/TypedValues.h"

#include <QMap>
#include <QPersistentModelIndex>
#include <QString>
#include <QVariant>

#include <cstdint>
#include <vector>

class QAbstractItemModel;

namespace orvo {
class Notification;
}

namespace orvo::editor {
class RecordFields;
}

namespace orvo::resources {

/// The transitions are its operations; nothing else writes what it holds.
///
/// Invariants:
/// 1. Without an edit (Idle) there are neither typed values nor a row.
/// 2. An edit has a key. It is that of its row; while the row is away (removed by another client)
///    the edit is lost and can only end.
/// 3. newRow() is valid in NewRow only.
/// 4. The words (object, caption) are what was typed into the edited row, or what a new row began
///    with: what was typed into another row is never checked for this one.
class ResourceEdit {
public:
    enum State : uint32_t {
        Idle = 0,
        NewRow = 1,  ///< of a row that was never saved
        EditRow = 2, ///< of a row whose values were changed in the passport
    };

    /// A row that was just made; `object` and `caption` are what it begins with.
    void beginNew(const QModelIndex& row, const QString& key, const QString& object,
                  const QString& caption);
    /// The first change of a row.
    void begin(const QModelIndex& row, const QString& key);
    /// A value was typed into the edited row, which gets it.
    void change(QAbstractItemModel& model, int column, const QVariant& value);
    /// The edit is on its way to the store and ends; its echo is expected.
    void saved();
    /// The edit ends without a save.
    void end();

    /// A value that was typed and that the change of somebody else has replaced.
    struct Replaced {
        int column;
        QVariant typed;
    };
    /// A change of a record has entered the local table and the row of that key. Typed values that
    /// it does not bring, or that it brings as the echo of an own save, go back into the row; the
    /// others are given up and named. `record` is what the record has become.
    std::vector<Replaced> merge(QAbstractItemModel& model, const QModelIndex& row,
                                const Notification& change, const MDRData* record,
                                const editor::RecordFields& fields);
    /// A record was deleted: no echo of it will come.
    void forget(const QString& key);

    bool isOpen() const { return m_state != Idle; }
    bool isOf(const QString& key) const;
    /// Whether the row is gone that the open edit is about.
    bool isLost() const { return isOpen() && !row().isValid(); }
    /// The edited row; invalid without an edit and if it is lost.
    QModelIndex row() const { return m_state == NewRow ? m_newRow : m_row; }
    /// The row has been made anew in another place.
    void follow(const QModelIndex& row);
    bool isTyped(int column) const { return m_typed.contains(column); }
    /// Keys whose saves have not come back, so that the local table does not have them yet.
    std::vector<QString> expected() const;

    // What the window shows as its members.
    const uint32_t& state() const { return m_state; }
    const QString& key() const { return m_key; }
    const QPersistentModelIndex& newRow() const { return m_newRow; }
    const QString& object() const { return m_object; }
    const QString& caption() const { return m_caption; }

private:
    using Values = QMap<int, QVariant>;
    struct Sent {
        QString key;
        Values values;
    };

    void check() const;
    /// Whether the change is what an own save wrote, which is then no longer expected.
    bool takeEcho(const Notification& change, const MDRData* record,
                  const editor::RecordFields& fields);

    uint32_t m_state = Idle;
    QString m_key;
    QPersistentModelIndex m_row;    ///< in EditRow
    QPersistentModelIndex m_newRow; ///< in NewRow
    editor::TypedValues m_typed;
    QString m_object; ///< of the last edit, as typed
    QString m_caption;
    std::vector<Sent> m_sent; ///< in order
};

} // namespace orvo::resources

#endif
