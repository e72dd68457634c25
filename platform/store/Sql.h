// Sql.h: names, texts and tables as SQL takes them, alike in every database (with standard strings,
// in which a backslash has no meaning).
#ifndef ORVO_PLATFORM_STORE_SQL_H
#define ORVO_PLATFORM_STORE_SQL_H

#include "platform/store/Schema.h"

#include <string>
#include <string_view>
#include <vector>

namespace orvo::store {

/// "name" as SQL takes it.
std::string identifier(std::string_view name);
/// 'text' as SQL takes it.
std::string literal(std::string_view text);
/// "field", "field" of these fields, or of all of them.
std::string fieldList(const TableDef& table, const std::vector<int>& fields);
std::string fieldList(const TableDef& table);
/// Names the table in a message.
std::string inTable(const TableDef& table);

} // namespace orvo::store

#endif
