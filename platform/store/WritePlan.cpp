#include "platform/store/WritePlan.h"

#include "frame/StdText.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orvo::store {

namespace {

std::string textOfVar(const MDRVar& var) {
    return mdx::toUtf8(std::string_view(var.value.text.pointer, var.value.text.length));
}

/// A record's value as the field of the table holds it; false if it does not fit.
bool convert(const MDRVar& var, const FieldDef& field, Value* into) {
    *into = std::monostate();
    if (var.null != 0 || var.type == MDX_NONE)
        return true;
    if (var.type == MDX_TEXT) {
        if (field.type != MDX_TEXT)
            return false;
        // "No link" has one form in the database, so that siblings sort together.
        if (!field.link || var.value.text.length != 0)
            *into = textOfVar(var);
        return true;
    }
    double number = 0;
    if (var.type == MDX_BOOLEAN)
        number = var.value.boolean != 0 ? 1 : 0;
    else if (var.type == MDX_INTEGER)
        number = var.value.integer;
    else if (var.type == MDX_DATE)
        number = var.value.date;
    else
        return false;
    if (!std::isfinite(number))
        return false;
    switch (field.type) {
    case MDX_BOOLEAN:
        *into = int64_t(number != 0 ? 1 : 0);
        return true;
    case MDX_INTEGER:
        if (number < std::numeric_limits<int32_t>::min() ||
            number > std::numeric_limits<int32_t>::max())
            return false;
        *into = static_cast<int64_t>(number);
        return true;
    case MDX_DATE:
        *into = number;
        return true;
    default:
        return false;
    }
}

Status refused(std::string text) {
    return {Refused, std::move(text)};
}

} // namespace

const std::string& textOf(const Value& value) {
    static const std::string none;
    const auto* text = std::get_if<std::string>(&value);
    return text != nullptr ? *text : none;
}

WritePlan::WritePlan(const TableDef& table, const MDArray* records)
    : m_table(table)
    , m_records(records) {
    for (int i = 0; i < records->fieldCount; ++i) {
        const MDRField field = MDRFldByNum(records, i);
        const int number = table.find(mdx::fieldName(field));
        if (number == 0)
            m_key = field;
        else
            m_columns.push_back({field, number});
    }
    std::sort(m_columns.begin(), m_columns.end(),
              [](const Column& a, const Column& b) { return a.number < b.number; });
}

uint32_t WritePlan::count() const {
    return mdx::postedCount(m_records);
}

Status WritePlan::write(uint32_t entry, Write* into) const {
    const MDRData* record = mdx::postedRecord(m_records, entry);
    const auto where = [&] { return StdText::tr("Таблица ") + shown(m_table.name); };
    *into = {};

    MDRVar var{};
    if (m_key != nullptr && MDRGetVal(m_key, record, &var) == MDX_OK && var.type == MDX_TEXT &&
        var.null == 0)
        into->key = textOfVar(var);
    into->flag = static_cast<int>(mdx::recordFlags(record));
    // No record has the empty key: there is none to change, as with any other key that is missing.
    if (into->key.empty() && (into->flag == MDX_UPDATE || into->flag == MDX_DELETE))
        return {};
    if (into->key.empty())
        return refused(where() + StdText::tr(": запись без ключа KeyLink"));

    const auto whose = [&] { return where() + StdText::tr(", запись ") + shown(into->key); };
    if (into->flag != MDX_INSERT && into->flag != MDX_UPDATE && into->flag != MDX_DELETE)
        return refused(whose() + StdText::tr(": недопустимый признак операции ") +
                       std::to_string(into->flag));
    if (into->flag == MDX_INSERT && !isKey(into->key))
        return refused(whose() + StdText::tr(": в ключе допустимы только печатные знаки ASCII"));
    if (into->flag == MDX_DELETE)
        return {};

    for (const Column& column : m_columns) {
        uint8_t user = 0;
        if (MDRIsUser(column.field, record, &user) != MDX_OK || user == 0)
            continue;
        if (column.number < 0)
            return refused(whose() + StdText::tr(": в таблице нет поля ") +
                           shown(mdx::fieldName(column.field)));
        const FieldDef& field = m_table.fields[static_cast<size_t>(column.number)];
        Value value;
        if (MDRGetVal(column.field, record, &var) != MDX_OK || !convert(var, field, &value))
            return refused(whose() + StdText::tr(": значение не подходит полю ") +
                           shown(field.name));
        into->values.emplace_back(column.number, std::move(value));
    }
    return {};
}

} // namespace orvo::store
