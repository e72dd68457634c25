#include "editor/RecordRows.h"

namespace orvo::editor {

RecordRows::RecordRows(const RecordFields& fields, int columns,
                       std::initializer_list<std::pair<int, QVariant>> alike)
    : m_fields(static_cast<size_t>(columns))
    , m_alike(columns) {
    for (const RecordField& field : fields)
        if (field.name)
            m_fields.at(static_cast<size_t>(field.column)) = &field;
    for (const auto& [column, value] : alike)
        m_alike[column] = value;
}

QVariant RecordRows::value(const MDRData* record, int column) const {
    const RecordField* field = m_fields[static_cast<size_t>(column)];
    return field ? field->read(record) : m_alike[column];
}

QVector<QVariant> RecordRows::values(const MDRData* record) const {
    QVector<QVariant> values;
    values.reserve(columnCount());
    for (int column = 0; column < columnCount(); ++column)
        values.append(value(record, column));
    return values;
}

} // namespace orvo::editor
