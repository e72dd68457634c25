// Transactions, and the writing of records and contents.
#include "platform/store/SqliteStore.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"
#include "platform/store/WaitPolicy.h"

#include <cassert>
#include <cstring>

namespace orvo::store::sqlite {

Status SqliteStore::inRead(const Work& work) {
    const InvariantScope<SqliteStore> invariants(*this);
    Transaction transaction(m_connection, Transaction::Read);
    if (transaction.begun() != SQLITE_OK)
        return m_connection.failure(StdText::tr("Чтение"));
    return work();
}

Status SqliteStore::setWriter() {
    // A new group has the number that its first change will have.
    Statement* statement = cached(
        "UPDATE \"NciWriter\" SET \"login\" = ?1, \"client\" = ?2, \"place\" = ?3, \"group\" = "
        "coalesce((SELECT \"id\" FROM \"NciEvent\" WHERE \"id\" = ?4 AND \"group\" = ?4 AND "
        "\"login\" = ?1), 1 + max(coalesce((SELECT max(\"id\") FROM \"NciEvent\"), 0), "
        "coalesce((SELECT seq FROM sqlite_sequence WHERE name = 'NciEvent'), 0)))");
    if (statement == nullptr)
        return m_connection.failure(StdText::tr("Запись"));
    const ResetAfter reset(*statement);
    const std::string writer = login();
    statement->bind(1, std::string_view(writer));
    statement->bind(2, std::string_view(origin().client));
    statement->bind(3, std::string_view(origin().place));
    statement->bind(4, origin().group);
    return statement->step() == SQLITE_DONE ? Status()
                                            : m_connection.failure(StdText::tr("Запись"));
}

Status SqliteStore::clearWriter() {
    Statement* statement = cached("UPDATE \"NciWriter\" SET \"login\" = '', \"client\" = '', "
                                  "\"place\" = '', \"group\" = NULL");
    if (statement == nullptr)
        return m_connection.failure(StdText::tr("Запись"));
    const ResetAfter reset(*statement);
    return statement->step() == SQLITE_DONE ? Status()
                                            : m_connection.failure(StdText::tr("Запись"));
}

Status SqliteStore::noteUndone(int64_t before) {
    if (origin().undoes.empty())
        return {};
    Statement* statement = cached("UPDATE \"NciEvent\" SET \"undoes\" = ?1 WHERE \"id\" > ?2 AND "
                                  "\"id\" = \"group\"");
    if (statement == nullptr)
        return m_connection.failure(StdText::tr("Запись"));
    const ResetAfter reset(*statement);
    const std::string list = listText(origin().undoes);
    statement->bind(1, std::string_view(list));
    statement->bind(2, before);
    return statement->step() == SQLITE_DONE ? Status()
                                            : m_connection.failure(StdText::tr("Запись"));
}

/// Within one transaction the log grows by its own changes only, without gaps.
Status SqliteStore::lastChange(int64_t before, Written* written) {
    int64_t newest = 0;
    Status status = logPosition(&newest);
    if (!status.ok() || newest <= before)
        return status;
    Statement* statement =
        cached(std::string("SELECT ") + changeColumns + " FROM \"NciEvent\" WHERE \"id\" = ?1");
    if (statement == nullptr)
        return m_connection.failure(logName());
    const ResetAfter reset(*statement);
    statement->bind(1, newest);
    std::vector<Change> last;
    status = readChanges(*statement, &last);
    if (status.ok() && !last.empty()) {
        written->first = before + 1;
        written->last = LogCursor(last.front());
    }
    return status;
}

Status SqliteStore::inWrite(const Work& work) {
    const InvariantScope<SqliteStore> invariants(*this);
    Status status = present();
    if (!status.ok())
        return status;
    Transaction transaction(m_connection, Transaction::Write);
    if (transaction.begun() != SQLITE_OK)
        return m_connection.failure(StdText::tr("Запись"));
    m_written = {};
    struct CloseContent { // however the work ends
        Blob& content;
        ~CloseContent() { content.reset(); }
    } const closeContent{m_content};
    int64_t before = 0;
    status = logPosition(&before);
    if (status.ok())
        status = setWriter();
    if (status.ok())
        status = work();
    if (status.ok())
        status = clearWriter();
    if (status.ok())
        status = noteUndone(before);
    // Also when it failed: pages of a file that was laid over this one read as damage.
    if (Status place = present(); !place.ok())
        status = std::move(place);
    if (!status.ok())
        return status;
    Written written;
    written.since = before;
    if (status = lastChange(before, &written); !status.ok())
        return status;
    if (transaction.commit() != SQLITE_OK)
        return m_connection.failure(StdText::tr("Запись"));
    m_place->look(); // the commit may have carried the log over
    m_written = std::move(written);
    m_grown = true;
    return {};
}

Statement* SqliteStore::writing(const TableDef& table, const Write& write, bool bytes,
                                size_t rows) {
    uint64_t fields = bytes ? 1 : 0; // bit 0 stands for KeyLink, which is always there
    for (const auto& [number, value] : write.values)
        fields |= uint64_t(1) << number;
    Statement& statement = m_writes[{&table, write.flag, fields, rows}];
    if (statement)
        return &statement;

    WriteSyntax syntax;
    syntax.table = identifier(table.name);
    syntax.whereKey = identifier(table.fields[0].name) + " = ?1";
    if (bytes)
        syntax.extra = "data";
    syntax.rows = rows;
    statement = m_connection.prepare(writeStatement(table, write, syntax));
    return statement ? &statement : nullptr;
}

Status SqliteStore::run(const TableDef& table, const Write& write, std::optional<uint64_t> room) {
    Statement* statement = writing(table, write, room.has_value());
    if (statement == nullptr)
        return m_connection.failure(placeOf(table, write));
    const ResetAfter reset(*statement);
    statement->bind(1, std::string_view(write.key));
    int parameter = 2;
    for (const auto& [number, value] : write.values)
        statement->bind(parameter++, value);
    if (room)
        statement->bindRoom(parameter, *room);
    return statement->step() == SQLITE_DONE ? Status()
                                            : m_connection.failure(placeOf(table, write));
}

Status SqliteStore::apply(const TableDef& table, const Write& write) {
    return run(table, write, {});
}

Status SqliteStore::insertBatch(const TableDef& table, std::vector<Write>::const_iterator first,
                                size_t rows) {
    Statement* statement = writing(table, *first, false, rows);
    if (statement == nullptr)
        return m_connection.failure(inTable(table));
    const ResetAfter reset(*statement);
    int parameter = 1;
    for (auto write = first; write != first + static_cast<std::ptrdiff_t>(rows); ++write) {
        statement->bind(parameter++, std::string_view(write->key));
        for (const auto& [number, value] : write->values)
            statement->bind(parameter++, value);
    }
    return statement->step() == SQLITE_DONE ? Status() : m_connection.failure(inTable(table));
}

/// Before a statement with triggers changes a page SQLite puts it aside, to take the statement back
/// should it fail. Records that are next to each other share their pages.
Status SqliteStore::applyAll(const TableDef& table, const std::vector<Write>& writes) {
    constexpr size_t batch = recordsBetweenAsking;
    for (auto write = writes.begin(); write != writes.end();) {
        if ((write - writes.begin()) % recordsBetweenAsking == 0 && !keepWriting())
            return {Timeout, StdText::tr("Запись прервана, ничего не записано")};
        const auto alike = [&](const Write& other) {
            return other.flag == MDX_INSERT &&
                   std::equal(other.values.begin(), other.values.end(), write->values.begin(),
                              write->values.end(),
                              [](const auto& a, const auto& b) { return a.first == b.first; });
        };
        const auto left = static_cast<size_t>(writes.end() - write);
        if (left < batch || !std::all_of(write, write + batch, alike)) {
            if (Status status = apply(table, *write++); !status.ok())
                return status;
            continue;
        }
        Status status = insertBatch(table, write, batch);
        // One by one they tell which of them cannot be.
        if (status.code == Refused && sqlite3_get_autocommit(m_connection.get()) == 0)
            for (auto one = write; one != write + batch; ++one)
                if (const Status told = apply(table, *one); !told.ok())
                    return told;
        if (!status.ok())
            return status;
        write += batch;
    }
    return {};
}

Status SqliteStore::applyContent(const Write& write, std::string_view bytes) {
    // Into room made for it: a bound value would be copied whole into the row.
    Status status = beginContent(write, bytes.size());
    if (status.ok() && !bytes.empty())
        status = contentPiece(bytes);
    const Status ended = endContent();
    return status.ok() ? ended : status;
}

Status SqliteStore::contentBytes(const std::string& key, std::string* bytes) {
    // Straight into its place: a column read would hold the whole of it once more.
    Blob blob;
    const Status status = openContent(key, false, &blob);
    if (!status.ok())
        return status;
    const int size = sqlite3_blob_bytes(blob.get());
    bytes->resize(static_cast<size_t>(size));
    if (size > 0 && sqlite3_blob_read(blob.get(), bytes->data(), size, 0) != SQLITE_OK)
        return m_connection.failure(contentName());
    return {};
}

} // namespace orvo::store::sqlite
