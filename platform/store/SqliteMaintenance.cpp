// An SQLite store's whole content on its way out and in, and questions to its log.
#include "frame/StdText.h"
#include "frame/Vocabulary.h"
#include "platform/store/Names.h"
#include "platform/store/SqliteSchema.h"
#include "platform/store/SqliteStore.h"

#include <algorithm>

namespace orvo::store::sqlite {

Status SqliteStore::measure(Amount* amount) {
    std::string records;
    for (const TableDef& table : tables())
        records +=
            (records.empty() ? "SELECT (SELECT count(*) FROM " : " + (SELECT count(*) FROM ") +
            identifier(table.name) + ")";
    Statement* statement =
        cached(records + ", (SELECT count(*) FROM \"MenuResourceFile\"), "
                         "(SELECT coalesce(sum(\"size\"), 0) FROM \"MenuResourceFile\")");
    if (statement == nullptr)
        return m_connection.failure(StdText::tr("Чтение"));
    const ResetAfter reset(*statement);
    if (statement->step() != SQLITE_ROW)
        return m_connection.failure(StdText::tr("Чтение"));
    amount->records = static_cast<uint64_t>(statement->integer(0));
    amount->contents = static_cast<uint64_t>(statement->integer(1));
    amount->bytes = static_cast<uint64_t>(statement->integer(2));
    return {};
}

Status SqliteStore::selectInOrder(const TableDef& table,
                                  const std::function<Status(const Row& row)>& each) {
    Statement* statement = cached("SELECT " + fieldList(table) + " FROM " + identifier(table.name) +
                                  " ORDER BY \"KeyLink\"");
    if (statement == nullptr)
        return m_connection.failure(inTable(table));
    const ResetAfter reset(*statement);
    Row row(table.fields.size());
    int step = SQLITE_DONE;
    while ((step = statement->step()) == SQLITE_ROW) {
        for (size_t i = 0; i < row.size(); ++i)
            row[i] = statement->value(static_cast<int>(i));
        const Status status = each(row);
        if (!status.ok())
            return status;
    }
    return step == SQLITE_DONE ? Status() : m_connection.failure(inTable(table));
}

Status SqliteStore::openContent(const std::string& key, bool write, Blob* blob) {
    Statement* find = cached("SELECT rowid FROM \"MenuResourceFile\" WHERE \"KeyLink\" = ?1");
    if (find == nullptr)
        return m_connection.failure(contentName());
    const ResetAfter reset(*find);
    find->bind(1, std::string_view(key));
    if (find->step() != SQLITE_ROW)
        return m_connection.failure(contentName());
    sqlite3_blob* raw = nullptr;
    const int opened = sqlite3_blob_open(m_connection.get(), "main", table::MenuResourceFile,
                                         "data", find->integer(0), write ? 1 : 0, &raw);
    blob->reset(raw);
    return opened == SQLITE_OK ? Status() : m_connection.failure(contentName());
}

Status SqliteStore::contentPieces(const std::string& key, const EachPiece& each) {
    Blob blob;
    const Status status = openContent(key, false, &blob);
    return status.ok() ? blobPieces(blob, each) : status;
}

Status SqliteStore::blobPieces(const Blob& blob, const EachPiece& each) {
    constexpr int pieceSize = 1 << 20; // so much of a stored file is in memory at once
    const int size = sqlite3_blob_bytes(blob.get());
    std::string piece;
    Status status;
    for (int at = 0; status.ok() && at < size; at += pieceSize) {
        piece.resize(static_cast<size_t>(std::min(pieceSize, size - at)));
        if (sqlite3_blob_read(blob.get(), piece.data(), static_cast<int>(piece.size()), at) !=
            SQLITE_OK)
            return m_connection.failure(contentName());
        status = each(piece);
    }
    return status;
}

Status SqliteStore::checkContents(std::vector<std::string>* damages) {
    return inRead([&]() -> Status {
        Statement* sums = cached("SELECT \"KeyLink\", coalesce(\"sha256\", '') FROM "
                                 "\"MenuResourceFile\" LEFT JOIN \"MenuResourceFileSum\" USING "
                                 "(\"KeyLink\") ORDER BY 1");
        if (sums == nullptr)
            return m_connection.failure(contentName());
        const ResetAfter reset(*sums);
        ContentFaults faults;
        int step = SQLITE_DONE;
        while ((step = sums->step()) == SQLITE_ROW) {
            const std::string key(sums->text(0));
            if (sums->text(1).empty()) {
                faults.emplace_back(ContentFault::NoChecksum, key);
                continue;
            }
            Checksum sum;
            const Status status = contentPieces(key, [&](std::string_view piece) -> Status {
                sum.add(piece);
                return {};
            });
            if (!status.ok())
                return status;
            if (sum.text() != sums->text(1))
                faults.emplace_back(ContentFault::OtherBytes, key);
        }
        if (step != SQLITE_DONE)
            return m_connection.failure(contentName());
        tellFaults(faults, damages);
        return {};
    });
}

Status SqliteStore::clearAll() {
    m_content.reset();
    std::string sql = "DELETE FROM \"MenuResourceFile\";";
    for (auto table = tables().rbegin(); table != tables().rend(); ++table)
        sql += "DELETE FROM " + identifier(table->name) + ";";
    return m_connection.execute(sql) == SQLITE_OK ? Status()
                                                  : m_connection.failure(StdText::tr("Запись"));
}

Status SqliteStore::beginContent(const Write& write, uint64_t size) {
    // Room first, the bytes into it after: no value has to be in memory as a whole.
    const Status status = run(contentTable(), write, size);
    m_contentKey = write.key;
    m_contentSum.reset();
    m_contentAt = 0;
    if (!status.ok() || size == 0)
        return status;
    return openContent(write.key, true, &m_content);
}

Status SqliteStore::contentPiece(std::string_view piece) {
    if (!m_content || sqlite3_blob_write(m_content.get(), piece.data(),
                                         static_cast<int>(piece.size()), m_contentAt) != SQLITE_OK)
        return m_connection.failure(contentName());
    m_contentAt += static_cast<int>(piece.size());
    m_contentSum.add(piece);
    return {};
}

Status SqliteStore::endContent() {
    // Closed by hand: this is where a late error shows.
    sqlite3_blob* blob = m_content.release();
    if (sqlite3_blob_close(blob) != SQLITE_OK)
        return m_connection.failure(contentName());
    // For the row that there is: an update of a missing key has written nothing.
    Statement* statement =
        cached("INSERT OR REPLACE INTO \"MenuResourceFileSum\" SELECT \"KeyLink\", "
               "?2 FROM \"MenuResourceFile\" WHERE \"KeyLink\" = ?1");
    if (statement == nullptr)
        return m_connection.failure(contentName());
    const ResetAfter reset(*statement);
    const std::string sum = m_contentSum.text();
    statement->bind(1, std::string_view(m_contentKey));
    statement->bind(2, std::string_view(sum));
    return statement->step() == SQLITE_DONE ? Status() : m_connection.failure(contentName());
}

Status SqliteStore::readChanges(Statement& statement, std::vector<Change>* changes) {
    const auto text = [&](int column) { return validUtf8(std::string(statement.text(column))); };
    int step = SQLITE_DONE;
    while ((step = statement.step()) == SQLITE_ROW) {
        Change change;
        change.id = statement.integer(0);
        change.code = static_cast<int>(statement.integer(1));
        change.table = text(2);
        change.key = text(3);
        change.login = text(4);
        change.time = statement.real(5);
        change.after = text(6);
        change.before = text(7);
        change.group = statement.integer(8);
        change.client = text(9);
        change.place = text(10);
        change.undoes = groupsIn(statement.text(11));
        changes->push_back(std::move(change));
    }
    return step == SQLITE_DONE ? Status() : m_connection.failure(logName());
}

Status SqliteStore::selectChanges(const ChangeQuery& query, std::vector<Change>* changes) {
    Statement statement =
        m_connection.prepare(std::string("SELECT ") + changeColumns + " FROM \"NciEvent\"" +
                             changesWhere(query, "\"NciEvent\""));
    return statement ? readChanges(statement, changes) : m_connection.failure(logName());
}

Status SqliteStore::countChanges(int64_t group, std::vector<ChangeCount>* counts) {
    return guarded([&]() -> Status {
        Statement statement = m_connection.prepare(countStatement(group, "\"NciEvent\"", "instr"));
        if (!statement)
            return m_connection.failure(logName());
        std::vector<ChangeCount> found;
        int step = SQLITE_DONE;
        while ((step = statement.step()) == SQLITE_ROW)
            found.push_back({validUtf8(std::string(statement.text(0))),
                             static_cast<int>(statement.integer(1)),
                             static_cast<ChangeCount::Part>(statement.integer(2)),
                             statement.integer(3), statement.integer(4), statement.integer(5)});
        if (step != SQLITE_DONE)
            return m_connection.failure(logName());
        counts->swap(found);
        return {};
    });
}

Status SqliteStore::logBefore(double time, int64_t* id, int64_t* count) {
    return guarded([&]() -> Status {
        Statement* statement =
            cached("SELECT coalesce(max(\"id\"), 0), count(*) FROM \"NciEvent\" WHERE \"id\" <= "
                   "(SELECT max(\"id\") FROM \"NciEvent\" WHERE \"time\" < ?1 AND \"id\" < "
                   "coalesce((SELECT min(\"id\") FROM \"NciEvent\" WHERE \"time\" >= ?1 AND "
                   "\"time\" <= (julianday('now') - 2440587.5) * 86400.0), "
                   "9223372036854775807))");
        if (statement == nullptr)
            return m_connection.failure(logName());
        const ResetAfter reset(*statement);
        statement->bind(1, Value(time));
        if (statement->step() != SQLITE_ROW)
            return m_connection.failure(logName());
        *id = statement->integer(0);
        *count = statement->integer(1);
        return {};
    });
}

} // namespace orvo::store::sqlite
