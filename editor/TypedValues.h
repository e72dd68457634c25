// TypedValues.h: what the engineer has typed into the row of a record and not saved yet, and how it
// meets changes of that record which arrive meanwhile: a field that somebody else has changed takes
// their value, every other one keeps what was typed.
//
// Invariants; 2 is asserted in debug builds:
// 1. A column is kept with the value that was typed last and with its base, the value that the row
//    showed before the first of them.
// 2. merge() removes a column if, and only if, the change has for its field a value other than the
//    base: the echo of one's own save does not take back what was typed after it.
#ifndef ORVO_EDITOR_TYPEDVALUES_H
#define ORVO_EDITOR_TYPEDVALUES_H

#include <QMap>
#include <QVariant>

#include <vector>

class QAbstractItemModel;
class QModelIndex;
struct MDRData;

namespace orvo {
class Notification;
}

namespace orvo::editor {

class RecordFields;

/// A value that was typed and that the change of somebody else has replaced.
struct Replaced {
    int column;
    QVariant typed;
};

class TypedValues {
public:
    /// The engineer typed a value where the row shows `shown`.
    void type(int column, const QVariant& value, const QVariant& shown);
    /// A change of the record has entered the local table: `record` is what it has become there.
    /// Gives what is removed.
    std::vector<Replaced> merge(const Notification& change, const MDRData* record,
                                const RecordFields& fields);
    /// Writes the typed values into a row, which a change may have written again.
    void show(QAbstractItemModel& model, const QModelIndex& row) const;
    void clear() { m_typed.clear(); }

    bool isEmpty() const { return m_typed.isEmpty(); }
    bool contains(int column) const { return m_typed.contains(column); }
    /// The typed value, or an invalid one.
    QVariant value(int column) const { return m_typed.value(column).value; }

private:
    struct Typed {
        QVariant value;
        QVariant base;
    };
    QMap<int, Typed> m_typed;
};

} // namespace orvo::editor

#endif
