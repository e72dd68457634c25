#include "platform/store/Sql.h"

#include "platform/store/Names.h"

#include <numeric>

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

std::string inTable(const TableDef& table) {
    return "Таблица " + shown(table.name);
}

} // namespace orvo::store
