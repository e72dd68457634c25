// RecordFields.h: the columns of an editor's tree, each with the field of the record behind it. An
// editor goes by one such list when it makes a row, fills it, shows its passport, saves, copies,
// pastes and merges: a new field is one more entry, and no operation can forget it.
//
// The list says what holds for every operation alike. What an operation decides itself, such as the
// parent that a paste gives, stands with that operation.
#ifndef ORVO_EDITOR_RECORDFIELDS_H
#define ORVO_EDITOR_RECORDFIELDS_H

#include "frame/Records.h"
#include "models/PropModel.h"

#include <QModelIndex>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace orvo {
class RowWriter;
}

namespace orvo::editor {

enum class FieldType { Text, Integer, Flag };

/// Rows of a tree, by what stands behind them.
enum Rows : uint8_t { NoRows = 0, ItemRows = 1, FolderRows = 2, AllRows = ItemRows | FolderRows };

/// How a field enters the copy of a record.
enum class Copied {
    Never, ///< identity and links: the copy has its own
    Place, ///< with a whole branch as it is; a row chosen for the copy is given another
    Value, ///< as it is
};

/// The row of a passport that shows a column.
struct PassportCell {
    const char* row = nullptr;     ///< name of the row, without regard to case; null: not shown
    const char* caption = nullptr; ///< translated in the context of the editor's class
    MyEditorType editor = MyEditorLine;
    bool readOnly = false;
    int position = 0; ///< among the rows of the passport, ascending
    Rows on = AllRows;
};

/// One column of a tree.
struct RecordField {
    int column;
    const char* title;          ///< of the column
    const char* name = nullptr; ///< in the table; null: no field of this record stands behind it
    FieldType type = FieldType::Text;
    Rows saved = NoRows;
    Copied copied = Copied::Never;
    Rows copiedOn = AllRows;
    PassportCell passport = {};

    /// Whether the engineer changes it in the passport.
    bool isEditable() const { return name && passport.row && !passport.readOnly; }
    /// The value as the tree shows it; NULL reads as the empty value of the type.
    QVariant read(const MDRData* record) const;
    /// Sets the field of a record to a value of the tree; empty text stays empty text.
    void write(RowWriter& record, const QVariant& value) const;
};

/// The columns of one tree, in the order in which the fields of the record are named.
class RecordFields {
public:
    RecordFields(std::initializer_list<RecordField> fields) : m_fields(fields) {}

    auto begin() const { return m_fields.begin(); }
    auto end() const { return m_fields.end(); }

    int columnCount() const; ///< one more than the highest column
    /// The titles by column; a column without an entry has an empty one.
    QStringList titles() const;
    /// The names of the fields of the record.
    QStringList names() const;
    /// The column that a passport row shows and changes; -1 for rows that only show.
    int editedColumn(const QString& passportRow) const;
    /// The fields of a record by column; invalid where no field stands behind one.
    QVector<QVariant> values(const MDRData* record) const;
    /// Sets the fields that are saved on such rows as a row shows them.
    void write(RowWriter& record, const QModelIndex& row, Rows kind) const;
    /// The entries with a passport row on such rows, in the order of the passport.
    std::vector<const RecordField*> passport(Rows on) const;

    /// One more field, in a column of its own.
    void add(const RecordField& field);

private:
    std::vector<RecordField> m_fields;
};

} // namespace orvo::editor

#endif
