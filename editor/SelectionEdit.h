// SelectionEdit.h: several rows are selected and one passport is shown: which of its values they
// have in common, and which records an open edit is written to beside its own.
//
// What is typed into a field that all of them may share goes into every row that was selected when
// the edit began; a field that tells records apart, such as a name, stays the current row's.
//
// Invariants; 1 is asserted in debug builds:
// 1. Others are known only of the edit that began last, and only if its row was among the selected
//    ones.
// 2. What is written to the others are fields that were typed, and no other.
#ifndef ORVO_EDITOR_SELECTIONEDIT_H
#define ORVO_EDITOR_SELECTIONEDIT_H

#include "editor/RecordFields.h"

#include <QModelIndex>
#include <QSet>
#include <QString>
#include <QStringList>

#include <utility>
#include <vector>

namespace orvo {
class ScratchTable;
}

namespace orvo::editor {

/// The records of the selected rows.
struct SelectedRecords {
    struct One {
        QString key;
        Rows kind;
        QModelIndex row;
    };
    const char* table = nullptr;
    const RecordFields* fields = nullptr;
    QString current; ///< key of the row that the passport shows
    std::vector<One> rows = {};

    /// Whether there are several, and the current row is one of them.
    bool areSeveral() const;
};

class SelectionEdit {
public:
    /// Passport rows that are of one record only.
    explicit SelectionEdit(QStringList singular = {}) : m_singular(std::move(singular)) {}

    /// The field that a passport row edits; null if it is not written by itself.
    static const RecordField* editedField(const RecordFields& fields, const QString& passportRow);

    /// A value is typed; `begins`: the first one of an edit.
    void type(const SelectedRecords& selected, const QString& passportRow, bool begins);
    /// The edit of that record is saved: adds the others that take its typed values, those of
    /// `row`, and forgets them.
    void write(ScratchTable& out, const QString& key, const QModelIndex& row);
    /// The passport rows whose values differ; not those that are typed just now.
    QSet<QString> mixed(const SelectedRecords& selected, bool isEditing) const;

private:
    const QStringList m_singular;
    QString m_key;                                ///< of the record that is edited
    std::vector<std::pair<QString, Rows>> m_also; ///< the others
    std::vector<const RecordField*> m_typed;
};

} // namespace orvo::editor

#endif
