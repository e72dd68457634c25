// ResourceEdit.h: the one open edit of the resource editor: of which record and which row, what was
// typed into it, and which saves have not come back yet.
#ifndef ORVO_RESOURCES_RESOURCEEDIT_H
#define ORVO_RESOURCES_RESOURCEEDIT_H

#include "editor/RecordEdit.h"

#include <QMap>
#include <QPersistentModelIndex>
#include <QString>
#include <QVariant>

#include <vector>

namespace orvo::resources {

/// Invariants, beside those of RecordEdit and asserted in debug builds:
/// 1. The row is the one of its key; while it is away (removed by another client) the edit is lost
///    and can only end.
/// 2. newRow() is the row of a new record, and otherwise invalid.
/// 3. The words (object, caption) are what was typed into the edited row, or what a new row began
///    with: what was typed into another row is never checked for this one.
class ResourceEdit : public editor::RecordEdit {
public:
    /// A row that was just made; `object` and `caption` are what it begins with.
    void beginNew(const QModelIndex& row, const QString& key, const QString& object,
                  const QString& caption);
    void begin(const QModelIndex& row, const QString& key);
    void change(QAbstractItemModel& model, int column, const QVariant& value);
    /// The edit is on its way to the store and ends; its echo is expected.
    void saved();
    void end();
    void follow(const QModelIndex& row);

    /// A change of a record has entered the local table and the row of that key. Typed values that
    /// it does not bring, or that it brings as the echo of an own save, go back into the row; the
    /// others are given up and named. `record` is what the record has become.
    std::vector<editor::Replaced> merge(QAbstractItemModel& model, const QModelIndex& row,
                                        const Notification& change, const MDRData* record,
                                        const editor::RecordFields& fields);
    /// A record was deleted: no echo of it will come.
    void forget(const QString& key);

    /// Whether the row is gone that the open edit is about.
    bool isLost() const { return isOpen() && !row().isValid(); }
    /// The edited row; invalid without an edit and if it is lost.
    QModelIndex row() const { return index(); }
    /// Keys whose saves have not come back, so that the local table does not have them yet.
    std::vector<QString> expected() const;

    // What the window shows as its members.
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

    QPersistentModelIndex m_newRow;
    QString m_object; ///< of the last edit, as typed
    QString m_caption;
    std::vector<Sent> m_expected; ///< in order
};

} // namespace orvo::resources

#endif
