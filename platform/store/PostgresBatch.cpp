// Many records of a PostgreSQL store at once: the triggers cost a call for each statement, so one
// statement inserts or deletes a hundred of them.
#include "platform/store/PostgresStore.h"

#include "platform/store/Names.h"
#include "platform/store/PostgresSchema.h"
#include "platform/store/Sql.h"

#include <algorithm>

namespace orvo::store::postgres {

namespace {

constexpr size_t batchSize = 100;

using Iterator = std::vector<Write>::const_iterator;

bool holdsText(const Write& write) {
    return isKey(write.key) &&
           std::all_of(write.values.begin(), write.values.end(), [](const auto& value) {
               const auto* text = std::get_if<std::string>(&value.second);
               return text == nullptr || isText(*text);
           });
}

/// Whether one statement can apply the next batchSize writes.
bool beginsBatch(Iterator first, Iterator end) {
    if (static_cast<size_t>(end - first) < batchSize || first->flag == MDX_UPDATE)
        return false;
    return std::all_of(first, first + batchSize, [&](const Write& write) {
        return write.flag == first->flag && holdsText(write) &&
               std::equal(write.values.begin(), write.values.end(), first->values.begin(),
                          first->values.end(),
                          [](const auto& a, const auto& b) { return a.first == b.first; });
    });
}

} // namespace

Status PostgresStore::sendBatch(const TableDef& table, Iterator first) {
    const std::string what = inTable(table);
    const Iterator end = first + batchSize;
    Parameters parameters;
    if (first->flag == MDX_DELETE) {
        std::string keys;
        for (Iterator write = first; write != end; ++write)
            keys += (keys.empty() ? "" : "\n") + foldedKey(write->key);
        return send("DELETE FROM " + qualified(table.name) +
                        " WHERE lower(\"KeyLink\") = ANY (string_to_array($1, E'\\n'))",
                    parameters.text(keys), what, true);
    }
    for (Iterator write = first; write != end; ++write) {
        parameters.text(write->key);
        for (const auto& [number, value] : write->values)
            parameters.field(table.fields[static_cast<size_t>(number)].type, value);
    }
    WriteSyntax syntax;
    syntax.table = qualified(table.name);
    syntax.parameter = '$';
    syntax.rows = batchSize;
    return send(writeStatement(table, *first, syntax), parameters, what, true);
}

Status PostgresStore::applyAll(const TableDef& table, const std::vector<Write>& writes) {
    if (writes.size() < batchSize)
        return StoreCore::applyAll(table, writes);
    Status status = drainPipeline(); // what failed before is none of these
    if (status.ok())
        status = send("SAVEPOINT batches", {}, inTable(table), true);
    for (auto write = writes.begin(); write != writes.end() && status.ok();) {
        const bool batch = beginsBatch(write, writes.end());
        status = batch ? sendBatch(table, write) : apply(table, *write);
        write += batch ? batchSize : 1;
    }
    if (status.ok())
        status = send("RELEASE SAVEPOINT batches", {}, inTable(table), true);
    const Status done = drainPipeline();
    if (status.ok())
        status = done;
    if (status.ok() || status.code == Timeout || !m_connection.usable())
        return status;
    // One by one they tell which of them cannot be.
    if (!succeeded(m_connection.execute("ROLLBACK TO SAVEPOINT batches").get()))
        return status;
    m_failure = {};
    const Status told = StoreCore::applyAll(table, writes);
    const Status ended = drainPipeline();
    return !told.ok() ? told : !ended.ok() ? ended : status;
}

} // namespace orvo::store::postgres
