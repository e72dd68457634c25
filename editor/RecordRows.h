// RecordRows.h: what the rows of an editor's tree show of the records behind them.
#ifndef ORVO_EDITOR_RECORDROWS_H
#define ORVO_EDITOR_RECORDROWS_H

#include "editor/RecordFields.h"
#include "models/RowValues.h"

#include <utility>
#include <vector>

namespace orvo::editor {

/// The fields of a record in the columns of their list, in further columns what is alike in all
/// rows, and nothing in the others. The list outlives this and does not change.
class RecordRows final : public RowSource {
public:
    RecordRows(const RecordFields& fields, int columns,
               std::initializer_list<std::pair<int, QVariant>> alike);

    int columnCount() const override { return m_alike.size(); }
    QVariant value(const MDRData* record, int column) const override;
    /// All of them, by column.
    QVector<QVariant> values(const MDRData* record) const;

private:
    std::vector<const RecordField*> m_fields; ///< by column; null: none
    QVector<QVariant> m_alike;                ///< by column
};

} // namespace orvo::editor

#endif
