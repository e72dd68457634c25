// What stored forms and files are found by in a PostgreSQL store.
#include "frame/Vocabulary.h"
#include "platform/store/Names.h"
#include "platform/store/PostgresSchema.h"
#include "platform/store/PostgresStore.h"
#include "platform/store/Sql.h"

namespace orvo::store::postgres {

namespace {

/// Keys, which are printable ASCII, a line each.
std::string lines(const std::vector<std::string>& keys) {
    std::string list;
    for (const std::string& key : keys)
        list += (list.empty() ? "" : "\n") + key;
    return list;
}

} // namespace

Status PostgresStore::selectStored(int type, std::string_view folded,
                                   const std::optional<Value>& folder, const EachRow& each) {
    static const TableDef& table = *findTable(table::MenuResource);
    static const std::vector<int> fields = {0, table.find(field::MenuResourceFolderKey),
                                            table.find(field::name_)};
    std::string wanted(folded);
    if (folder) {
        const auto* key = std::get_if<std::string>(&*folder);
        wanted = (key != nullptr ? foldedKey(*key) : std::string()) + "/" + wanted;
    }
    if (!isText(wanted))
        return {};
    // The type stands in the statement: by it the planner knows that the index serves.
    return rows(table, fields,
                "SELECT " + fieldList(table, fields) + " FROM " + qualified(table.name) +
                    " WHERE \"type_\" = " + std::to_string(type) + " AND (" +
                    (folder ? foldedPlaceExpression() : foldedNameExpression()) + ") = $1",
                Parameters().text(wanted), each);
}

Status PostgresStore::changedSince(const TableDef& table, int64_t since, int64_t* newest,
                                   bool* changed) {
    const Status status = drainPipeline(); // what was sent before has to show
    if (!status.ok())
        return status;
    const Result result = m_connection.query(
        "SELECT greatest(coalesce((SELECT max(\"id\") FROM public.\"NciEvent\"), 0), pruned), "
        "pruned > $1 OR EXISTS (SELECT FROM public.\"NciEvent\" WHERE \"id\" > $1 AND "
        "\"tableName\" = $2) FROM (SELECT coalesce((SELECT \"id\" FROM public.\"NciPruned\"), 0) "
        "AS pruned) AS ends",
        Parameters().integer(since).text(table.name));
    if (!succeeded(result.get()))
        return m_connection.failure(logName(), result.get());
    *newest = integerAt(result.get(), 0, 0);
    // A lower newest id: `since` was taken before the store was recreated or restored.
    *changed = booleanAt(result.get(), 0, 1) || *newest < since;
    return {};
}

Status PostgresStore::selectKeys(const TableDef& table, const std::vector<int>& fields,
                                 const std::vector<std::string>& keys,
                                 const std::function<void(const Row& row)>& each) {
    const std::string list = lines(keys);
    return rows(table, fields,
                "SELECT " + fieldList(table, fields) + " FROM " + qualified(table.name) +
                    " WHERE lower(\"KeyLink\") = ANY (string_to_array($1, E'\\n'))",
                Parameters().text(list), each);
}

Status PostgresStore::selectNaming(const TableDef& table, int field,
                                   const std::vector<std::string>& keys, const EachRow& each) {
    const FieldDef& def = table.fields[static_cast<size_t>(field)];
    const std::string value =
        isKeyOrLink(table, def) ? foldedEquals(table, def, "wanted") : exactlyEquals(def, "wanted");
    const std::string list = lines(keys);
    return rows(table, {0, field},
                "SELECT \"KeyLink\", " + identifier(def.name) +
                    " FROM unnest(string_to_array($1, E'\\n') COLLATE \"C\") AS "
                    "wanted JOIN " +
                    qualified(table.name) + " ON " + value,
                Parameters().text(list), each);
}

Status PostgresStore::changesOf(const TableDef& table, const std::vector<std::string>& keys,
                                int64_t since, std::vector<Change>* changes) {
    const Status status = drainPipeline(); // what was sent before has to show
    if (!status.ok())
        return status;
    const std::string list = lines(keys);
    const Result result = m_connection.query(
        std::string("SELECT ") + changeColumns +
            " FROM public.\"NciEvent\" WHERE \"id\" > $1 AND " + anyTable +
            " = $2 AND lower(\"key\") = ANY (string_to_array($3, E'\\n')) ORDER BY \"id\"",
        Parameters().integer(since).text(table.name).text(list));
    if (!succeeded(result.get()))
        return m_connection.failure(logName(), result.get());
    *changes = changesIn(result.get(), 0);
    return {};
}

} // namespace orvo::store::postgres
