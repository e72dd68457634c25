// Sql.h: names, texts and tables as SQL takes them, alike in every database (with standard strings,
// in which a backslash has no meaning).
#ifndef ORVO_PLATFORM_STORE_SQL_H
#define ORVO_PLATFORM_STORE_SQL_H

#include "platform/store/StoreBackend.h"

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

/// What differs between databases in a statement that writes a record.
struct WriteSyntax {
    std::string table;           ///< its name
    std::string whereKey;        ///< condition by which parameter 1 finds the record
    char parameter = '?';        ///< in front of a parameter's number
    const char* extra = nullptr; ///< a column more, whose value is the last parameter
    size_t rows = 1;             ///< so many are inserted, each with parameters of its own
};
/// The statement for a write of this shape: parameter 1 is the key, then come its values.
std::string writeStatement(const TableDef& table, const Write& write, const WriteSyntax& syntax);

/// The columns of the log as Change holds them, in its order.
inline constexpr char changeColumns[] =
    "\"id\", \"code\", \"tableName\", \"key\", \"login\", \"time\", \"after\", \"before\", "
    "\"group\", \"client\", \"place\", \"undoes\"";
constexpr int changeColumnCount = 12;
/// The table of a change, where something else finds it: nearly all changes may be of one table,
/// and a database that has not looked at the log yet would not know that.
inline constexpr char anyTable[] = "(\"tableName\" || '')";
/// The columns of "NciVersion" as KeptVersion holds them, in its order.
inline constexpr char versionColumns[] =
    "\"id\", \"event\", \"login\", \"time\", \"KeyLink\", \"MenuResourceKey\", \"name_\", "
    "\"fileTime\", \"size\", \"sha256\"";
/// What follows its name in a statement that selects these versions.
std::string versionsWhere(const VersionQuery& query);
/// What follows `log`, the name of the log, in a statement that selects these changes.
std::string changesWhere(const ChangeQuery& query, const std::string& log);
/// The statement that counts the changes of a group: a row for each ChangeCount, its columns in the
/// order of the members. `position` is the function that finds a text in another one.
std::string countStatement(int64_t group, const std::string& log, const std::string& position);

} // namespace orvo::store

#endif
