// What stored forms and files are found by in an SQLite store.
#include "frame/StdText.h"
#include "platform/store/Names.h"
#include "platform/store/Sql.h"
#include "platform/store/SqliteSchema.h"
#include "platform/store/SqliteStore.h"

namespace orvo::store::sqlite {

namespace {

/// Keys, which are printable ASCII, as a JSON array.
std::string jsonList(const std::vector<std::string>& keys) {
    std::string list = "[";
    for (const std::string& key : keys) {
        list += list.size() == 1 ? "\"" : ",\"";
        for (const char c : key) {
            if (c == '"' || c == '\\')
                list += '\\';
            list += c;
        }
        list += '"';
    }
    return list + "]";
}

} // namespace

Status SqliteStore::selectStored(int type, std::string_view folded,
                                 const std::optional<Value>& folder, const EachRow& each) {
    // The first condition is the index's own.
    static const std::string anywhere =
        std::string("SELECT \"KeyLink\", \"MenuResourceFolderKey\", \"name_\" FROM "
                    "\"MenuResource\" WHERE ") +
        storedRows + " AND \"type_\" = ?1 AND " + foldedNameExpression() + " = ?2";
    static const std::string inFolder = anywhere + " AND \"MenuResourceFolderKey\" IS ?3";
    constexpr size_t columns = 3;
    Statement* statement = cached(folder ? inFolder : anywhere);
    if (statement == nullptr)
        return m_connection.failure(StdText::tr("Поиск ") + shown(folded));
    statement->bind(1, int64_t(type));
    statement->bind(2, folded);
    if (folder)
        statement->bind(3, *folder);
    return rows(*statement, columns, each);
}

Status SqliteStore::changedSince(const TableDef& table, int64_t since, int64_t* newest,
                                 bool* changed) {
    Statement* statement =
        cached("SELECT max(coalesce((SELECT max(\"id\") FROM \"NciEvent\"), 0), pruned), "
               "pruned > ?1 OR EXISTS (SELECT 1 FROM \"NciEvent\" WHERE \"id\" > ?1 AND "
               "\"tableName\" = ?2) FROM (SELECT coalesce((SELECT \"id\" FROM \"NciPruned\"), 0) "
               "AS pruned)");
    if (statement == nullptr)
        return m_connection.failure(logName());
    const ResetAfter reset(*statement);
    statement->bind(1, since);
    statement->bind(2, std::string_view(table.name));
    if (statement->step() != SQLITE_ROW)
        return m_connection.failure(logName());
    *newest = statement->integer(0);
    // A lower newest id: `since` was taken before the store was recreated or restored.
    *changed = statement->integer(1) != 0 || *newest < since;
    return {};
}

Status SqliteStore::selectKeys(const TableDef& table, const std::vector<int>& fields,
                               const std::vector<std::string>& keys,
                               const std::function<void(const Row& row)>& each) {
    Statement* statement =
        cached("SELECT " + fieldList(table, fields) + " FROM " + identifier(table.name) +
               " WHERE \"KeyLink\" IN (SELECT \"value\" FROM json_each(?1))");
    if (statement == nullptr)
        return m_connection.failure(inTable(table));
    const std::string list = jsonList(keys);
    statement->bind(1, std::string_view(list));
    return rows(*statement, fields.size(), each);
}

Status SqliteStore::selectNaming(const TableDef& table, int field,
                                 const std::vector<std::string>& keys, const EachRow& each) {
    // The field's own collation decides, as its index does.
    const std::string link = identifier(table.fields[static_cast<size_t>(field)].name);
    Statement* statement =
        cached("SELECT \"KeyLink\", " + link + " FROM " + identifier(table.name) + " WHERE " +
               link + " IN (SELECT \"value\" FROM json_each(?1))");
    if (statement == nullptr)
        return m_connection.failure(inTable(table));
    const std::string list = jsonList(keys);
    statement->bind(1, std::string_view(list));
    return rows(*statement, 2, each);
}

Status SqliteStore::changesOf(const TableDef& table, const std::vector<std::string>& keys,
                              int64_t since, std::vector<Change>* changes) {
    Statement* statement =
        cached(std::string("SELECT ") + changeColumns +
               " FROM \"NciEvent\" WHERE \"id\" > ?1 AND " + anyTable +
               " = ?2 AND lower(\"key\") IN (SELECT \"value\" FROM json_each(?3)) ORDER BY \"id\"");
    if (statement == nullptr)
        return m_connection.failure(logName());
    const ResetAfter reset(*statement);
    const std::string list = jsonList(keys);
    statement->bind(1, since);
    statement->bind(2, std::string_view(table.name));
    statement->bind(3, std::string_view(list));
    return readChanges(*statement, changes);
}

} // namespace orvo::store::sqlite
