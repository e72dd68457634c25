// Many records of a PostgreSQL store at once: the triggers cost a call for each statement, so one
// statement inserts or deletes many of them.
#include "platform/store/PostgresStore.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"
#include "platform/store/PostgresSchema.h"
#include "platform/store/Sql.h"
#include "platform/store/WaitPolicy.h"

#include <algorithm>

namespace orvo::store::postgres {

namespace {

/// So many deletions, at least so many inserts.
constexpr size_t batchSize = 100;
/// More inserts are no faster; their arrays are copied.
constexpr size_t mostInserts = 2000;
constexpr size_t mostInsertBytes = 1 << 20;

using Iterator = std::vector<Write>::const_iterator;

bool holdsText(const Write& write) {
    return isKey(write.key) &&
           std::all_of(write.values.begin(), write.values.end(), [](const auto& value) {
               const auto* text = std::get_if<std::string>(&value.second);
               return text == nullptr || isText(*text);
           });
}

size_t bytesIn(const Write& write) {
    size_t bytes = write.key.size();
    for (const auto& [number, value] : write.values)
        bytes += textOf(value).size();
    return bytes;
}

/// How many of the next writes one statement can apply; 0: it is not worth it.
size_t batchAt(Iterator first, Iterator end) {
    if (first->flag == MDX_UPDATE)
        return 0;
    const size_t most = first->flag == MDX_INSERT ? mostInserts : batchSize;
    size_t count = 0;
    size_t bytes = 0;
    for (Iterator write = first; write != end && count < most && bytes < mostInsertBytes; ++write) {
        if (write->flag != first->flag || !holdsText(*write) ||
            !std::equal(write->values.begin(), write->values.end(), first->values.begin(),
                        first->values.end(),
                        [](const auto& a, const auto& b) { return a.first == b.first; }))
            break;
        bytes += bytesIn(*write);
        ++count;
    }
    return count < batchSize ? 0 : count;
}

} // namespace

/// A column of the records as an array: the statement is the same for any number of them.
Status PostgresStore::sendInserts(const TableDef& table, Iterator first, size_t count) {
    std::vector<Value> keys;
    std::vector<const Value*> column;
    keys.reserve(count);
    column.reserve(count);
    for (Iterator write = first; write != first + static_cast<std::ptrdiff_t>(count); ++write)
        keys.emplace_back(write->key);
    for (const Value& key : keys)
        column.push_back(&key);
    Parameters parameters;
    parameters.fields(MDX_TEXT, column);
    std::vector<int> fields{0};
    std::string arrays = "$1";
    for (size_t i = 0; i < first->values.size(); ++i) {
        const bool isNull =
            std::all_of(first, first + static_cast<std::ptrdiff_t>(count), [&](const Write& write) {
                return std::holds_alternative<std::monostate>(write.values[i].second);
            });
        if (isNull) // as it is without being named
            continue;
        fields.push_back(first->values[i].first);
        arrays += ", $" + std::to_string(fields.size());
        for (size_t row = 0; row < count; ++row)
            column[row] = &first[static_cast<std::ptrdiff_t>(row)].values[i].second;
        parameters.fields(table.fields[static_cast<size_t>(fields.back())].type, column);
    }
    Status sent = send("INSERT INTO " + qualified(table.name) + " (" + fieldList(table, fields) +
                           ") SELECT * FROM unnest(" + arrays + ")",
                       parameters, inTable(table), true);
    // Megabytes that lie here would be moved to the front with each piece that the server takes,
    // while it waits for the next one.
    if (sent.ok() && !m_connection.flush())
        return m_failure = m_connection.failure(inTable(table), nullptr);
    return sent;
}

Status PostgresStore::sendBatch(const TableDef& table, Iterator first, size_t count) {
    if (first->flag == MDX_INSERT)
        return sendInserts(table, first, count);
    std::string keys;
    for (Iterator write = first; write != first + static_cast<std::ptrdiff_t>(count); ++write)
        keys += (keys.empty() ? "" : "\n") + foldedKey(write->key);
    return send("DELETE FROM " + qualified(table.name) +
                    " WHERE lower(\"KeyLink\") = ANY (string_to_array($1, E'\\n'))",
                Parameters().text(keys), inTable(table), true);
}

Status PostgresStore::applyAll(const TableDef& table, const std::vector<Write>& writes) {
    if (writes.size() < batchSize)
        return StoreCore::applyAll(table, writes);
    Status status = drainPipeline(); // what failed before is none of these
    if (status.ok())
        status = send("SAVEPOINT batches", {}, inTable(table), true);
    auto asked = writes.begin();
    for (auto write = writes.begin(); write != writes.end() && status.ok();) {
        if (write - asked >= recordsBetweenAsking) {
            asked = write;
            if (!keepWriting()) {
                status = {Timeout, StdText::tr("Запись прервана, ничего не записано")};
                break;
            }
        }
        const size_t batch = batchAt(write, writes.end());
        status = batch > 0 ? sendBatch(table, write, batch) : apply(table, *write);
        write += static_cast<std::ptrdiff_t>(std::max<size_t>(batch, 1));
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
