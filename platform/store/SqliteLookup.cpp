// What stored forms and files are found by in an SQLite store.
#include "platform/store/Names.h"
#include "platform/store/SqliteSchema.h"
#include "platform/store/SqliteStore.h"

namespace orvo::store::sqlite {

Status SqliteStore::selectStored(int type, std::string_view folded,
                                 const std::optional<Value>& folder,
                                 const std::function<void(const Row& row)>& each) {
    // The first condition is the index's own.
    static const std::string anywhere =
        std::string("SELECT \"KeyLink\", \"MenuResourceFolderKey\", \"name_\" FROM "
                    "\"MenuResource\" WHERE ") +
        storedRows + " AND \"type_\" = ?1 AND " + foldedNameExpression() + " = ?2";
    static const std::string inFolder = anywhere + " AND \"MenuResourceFolderKey\" IS ?3";
    constexpr size_t columns = 3;
    Statement* statement = cached(folder ? inFolder : anywhere);
    if (statement == nullptr)
        return m_connection.failure("Поиск " + shown(folded));
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
    const char what[] = "Журнал изменений";
    if (statement == nullptr)
        return m_connection.failure(what);
    const ResetAfter reset(*statement);
    statement->bind(1, since);
    statement->bind(2, std::string_view(table.name));
    if (statement->step() != SQLITE_ROW)
        return m_connection.failure(what);
    *newest = statement->integer(0);
    // A newest id below is one of another life of this file.
    *changed = statement->integer(1) != 0 || *newest < since;
    return {};
}

} // namespace orvo::store::sqlite
