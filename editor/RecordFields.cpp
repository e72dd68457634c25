#include "editor/RecordFields.h"

#include "frame/ScratchTable.h"
#include "frame/Text.h"

#include <algorithm>

namespace orvo::editor {

QVariant RecordField::read(const MDRData* record) const {
    switch (type) {
    case FieldType::Integer:
        return integerOf(record, name);
    case FieldType::Flag:
        return flagOf(record, name);
    default:
        return textOf(record, name);
    }
}

void RecordField::write(RowWriter& record, const QVariant& value) const {
    switch (type) {
    case FieldType::Integer:
        record.integer(name, value.toInt());
        break;
    case FieldType::Flag:
        record.flag(name, value.toBool());
        break;
    default:
        record.text(name, value.toString());
    }
}

int RecordFields::columnCount() const {
    int count = 0;
    for (const RecordField& field : m_fields)
        count = std::max(count, field.column + 1);
    return count;
}

QStringList RecordFields::titles() const {
    QVector<QString> titles(columnCount());
    for (const RecordField& field : m_fields)
        titles[field.column] = Text::tr(field.title);
    return titles.toList();
}

QStringList RecordFields::names() const {
    QStringList names;
    for (const RecordField& field : m_fields)
        if (field.name)
            names << QString::fromLatin1(field.name);
    return names;
}

int RecordFields::editedColumn(const QString& passportRow) const {
    for (const RecordField& field : m_fields)
        if (field.isEditable() && sameText(passportRow, QString::fromLatin1(field.passport.row)))
            return field.column;
    return -1;
}

QVector<QVariant> RecordFields::values(const MDRData* record) const {
    QVector<QVariant> values(columnCount());
    for (const RecordField& field : m_fields)
        if (field.name)
            values[field.column] = field.read(record);
    return values;
}

void RecordFields::write(RowWriter& record, const QModelIndex& row, Rows kind) const {
    for (const RecordField& field : m_fields)
        if ((field.saved & kind) != 0)
            field.write(record, row.siblingAtColumn(field.column).data());
}

std::vector<const RecordField*> RecordFields::passport(Rows on) const {
    std::vector<const RecordField*> shown;
    for (const RecordField& field : m_fields)
        if (field.passport.row && (field.passport.on & on) != 0)
            shown.push_back(&field);
    std::stable_sort(shown.begin(), shown.end(), [](const RecordField* a, const RecordField* b) {
        return a->passport.position < b->passport.position;
    });
    return shown;
}

void RecordFields::add(const RecordField& field) {
    Q_ASSERT(std::none_of(begin(), end(),
                          [&](const RecordField& other) { return other.column == field.column; }));
    m_fields.push_back(field);
}

} // namespace orvo::editor
