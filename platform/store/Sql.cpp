#include "platform/store/Sql.h"

#include "frame/Vocabulary.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <charconv>
#include <numeric>
#include <set>

namespace orvo::store {

namespace {

std::string quoted(std::string_view text, char quote) {
    std::string out(1, quote);
    for (const char c : text) {
        if (c == quote)
            out += quote;
        out += c;
    }
    return out + quote;
}

std::string number(double value) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

} // namespace

std::string identifier(std::string_view name) {
    return quoted(name, '"');
}
std::string literal(std::string_view text) {
    return quoted(text, '\'');
}

std::string fieldList(const TableDef& table, const std::vector<int>& fields) {
    std::string list;
    for (const int field : fields)
        list +=
            (list.empty() ? "" : ", ") + identifier(table.fields[static_cast<size_t>(field)].name);
    return list;
}

std::string fieldList(const TableDef& table) {
    std::vector<int> all(table.fields.size());
    std::iota(all.begin(), all.end(), 0);
    return fieldList(table, all);
}

std::string writeStatement(const TableDef& table, const Write& write, const WriteSyntax& syntax) {
    if (write.flag == MDX_DELETE)
        return "DELETE FROM " + syntax.table + " WHERE " + syntax.whereKey;
    const std::string key = identifier(table.fields[0].name);
    std::vector<std::string> columns;
    for (const auto& [number, value] : write.values)
        columns.push_back(identifier(table.fields[static_cast<size_t>(number)].name));
    if (syntax.extra != nullptr)
        columns.push_back(identifier(syntax.extra));
    const auto parameter = [&](size_t number) { return syntax.parameter + std::to_string(number); };
    if (write.flag == MDX_INSERT) {
        std::string names = key;
        for (const std::string& column : columns)
            names += ", " + column;
        std::string rows;
        for (size_t number = 1; number <= syntax.rows * (columns.size() + 1);) {
            rows += (rows.empty() ? "(" : ", (") + parameter(number++);
            for (size_t i = 0; i < columns.size(); ++i)
                rows += ", " + parameter(number++);
            rows += ')';
        }
        return "INSERT INTO " + syntax.table + " (" + names + ") VALUES " + rows;
    }
    // Without fields too there is an update, for the sake of its echo.
    std::string set = columns.empty() ? key + " = " + key : "";
    for (size_t i = 0; i < columns.size(); ++i)
        set += (i == 0 ? "" : ", ") + columns[i] + " = " + parameter(i + 2);
    return "UPDATE " + syntax.table + " SET " + set + " WHERE " + syntax.whereKey;
}

namespace {

/// The log is in the order of its times, but for what a clock was set back. So the index over the
/// times tells where to begin, and the rest goes by the ids: however long the log is, no more is
/// read than is asked for. The "+" keeps that index from being taken for the whole range.
constexpr double setBack = 3600;

std::string since(double time, const std::string& log) {
    return "\"id\" >= coalesce((SELECT \"id\" FROM " + log +
           " WHERE \"time\" >= " + number(time - setBack) +
           " ORDER BY \"time\", \"id\" LIMIT 1), 9223372036854775807) AND +\"time\" >= " +
           number(time);
}

std::string until(double time, const std::string& log) {
    return "\"id\" <= coalesce((SELECT \"id\" FROM " + log + " WHERE \"time\" < " +
           number(time + setBack) +
           " ORDER BY \"time\" DESC, \"id\" DESC LIMIT 1), 0) AND +\"time\" < " + number(time);
}

} // namespace

std::string changesWhere(const ChangeQuery& query, const std::string& log) {
    std::string where;
    const auto also = [&](const std::string& condition) {
        where += (where.empty() ? " WHERE " : " AND ") + condition;
    };
    const bool narrower = !query.key.empty() || query.login || query.group > 0 || query.id;
    if (!query.table.empty())
        also((narrower ? std::string(anyTable) : "\"tableName\"") + " = " + literal(query.table));
    if (!query.key.empty())
        also("lower(\"key\") = " + literal(foldedKey(query.key)));
    if (query.login)
        also("\"login\" = " + literal(*query.login));
    if (query.since)
        also(since(*query.since, log));
    if (query.until)
        also(until(*query.until, log));
    if (query.below > 0)
        also("\"id\" < " + std::to_string(query.below));
    if (query.id)
        also("\"id\" = " + std::to_string(*query.id));
    if (query.above > 0)
        also("\"id\" > " + std::to_string(query.above));
    if (query.group > 0)
        also("\"group\" = " + std::to_string(query.group));
    if (query.undoing)
        also("\"undoes\" <> ''");
    if (!query.call.empty())
        also("\"call\" = " + literal(query.call));
    return where + " ORDER BY \"id\"" + (query.oldestFirst ? "" : " DESC") + " LIMIT " +
           std::to_string(query.limit);
}

std::string countStatement(int64_t group, const std::string& log, const std::string& position) {
    // A quotation mark inside of a value has a backslash before it: this finds names alone.
    const auto has = [&](const char* field) {
        return position + "(\"after\", '\"" + field + "\":') > 0";
    };
    std::set<std::string> fields;
    for (const TableDef& table : tables())
        for (const ParentField& parent : parentFields(table))
            fields.insert(parent.field);
    std::string places;
    for (const std::string& field : fields)
        places += (places.empty() ? "" : " OR ") + has(field.c_str());
    return "SELECT \"tableName\", \"code\", CASE WHEN \"code\" <> " +
           std::to_string(OrvoEventUpdate) + " THEN 0 WHEN " + places + " THEN 1 WHEN " +
           has(field::order_) + " AND " + position +
           "(\"after\", ',') = 0 THEN 2 ELSE 0 END AS \"part\", count(*), min(\"id\"), "
           "max(\"id\") FROM " +
           log + " WHERE \"group\" = " + std::to_string(group) + " GROUP BY 1, 2, 3 ORDER BY 5";
}

} // namespace orvo::store
