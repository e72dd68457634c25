#include "platform/store/SqliteStore.h"

#include "platform/mdx/MdxBuild.h"
#include "platform/store/Names.h"
#include "platform/store/SqliteDamage.h"
#include "platform/store/SqliteSchema.h"
#include "platform/store/WaitPolicy.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <limits>

namespace orvo::store::sqlite {

namespace {

std::string selectAll(const TableDef& table) {
    return "SELECT " + fieldList(table) + " FROM " + identifier(table.name);
}

/// The present row as a record. The columns have their types by the table's definition; should a
/// value have another one after all, SQLite's own conversion keeps it readable.
///
/// Values are read through sqlite3_column_value, at one checked call a value instead of three. That
/// is safe on a connection without mutexes, which ours is; and as blobs, which does not copy to add
/// a terminator.
void writeRecord(const TableDef& table, sqlite3_stmt* row, mdx::RecordWriter& writer) {
    writer.begin();
    int i = 0;
    for (const FieldDef& field : table.fields) {
        sqlite3_value* value = sqlite3_column_value(row, i);
        if (sqlite3_value_type(value) == SQLITE_NULL) {
            ++i;
            continue;
        }
        switch (field.type) {
        case MDX_BOOLEAN:
            writer.boolean(i, sqlite3_value_int64(value) != 0);
            break;
        case MDX_INTEGER:
            writer.integer(i, static_cast<int32_t>(std::clamp<int64_t>(
                                  sqlite3_value_int64(value), std::numeric_limits<int32_t>::min(),
                                  std::numeric_limits<int32_t>::max())));
            break;
        case MDX_DATE:
            writer.date(i, sqlite3_value_double(value));
            break;
        default: {
            const auto* text = static_cast<const char*>(sqlite3_value_blob(value));
            const auto length = static_cast<size_t>(sqlite3_value_bytes(value));
            writer.textUtf8(i, text != nullptr ? text : "", length);
        }
        }
        ++i;
    }
    writer.end();
}

} // namespace

SqliteStore::SqliteStore(Connection connection, const std::string& path, const OpenOptions& options)
    : StoreCore(options.login, options)
    , m_path(path)
    , m_connection(std::move(connection))
    , m_mayWrite(sqlite3_db_readonly(m_connection.get(), "main") != 1)
    , m_watch(path + "-wal") {}

Status SqliteStore::start() {
    return guarded([&]() -> Status {
        std::vector<const TableDef*> known = {&contentTable()};
        for (const TableDef& table : tables())
            known.push_back(&table);
        for (const TableDef* table : known) {
            if (cached(selectAll(*table)) == nullptr)
                return m_connection.failure("Хранилище " + shown(m_path) + ", " + inTable(*table));
        }
        int64_t position = 0;
        const Status status = logPosition(&position);
        if (status.ok())
            m_place.emplace(m_path, m_connection);
        return status;
    });
}

SqliteStore::~SqliteStore() {
    if (!present().ok())
        letGo();
}

void SqliteStore::checkInvariants() const {
#ifndef NDEBUG
    sqlite3* connection = m_connection.get();
    assert(connection != nullptr && m_place);
    assert(sqlite3_get_autocommit(connection) != 0);
    for (sqlite3_stmt* statement = sqlite3_next_stmt(connection, nullptr); statement != nullptr;
         statement = sqlite3_next_stmt(connection, statement))
        assert(sqlite3_stmt_busy(statement) == 0);
    assert(!m_content);
    for (const auto& [text, statement] : m_statements)
        assert(sqlite3_db_handle(statement.get()) == connection);
    for (const auto& [shape, statement] : m_writes)
        assert(!statement || sqlite3_db_handle(statement.get()) == connection);
    assert(!m_written.unknown);
    assert(m_written.first == 0 ||
           (m_written.first == m_written.since + 1 && m_written.last.id >= m_written.first));
#endif
}

Status SqliteStore::present() {
    const Place::State state = m_place ? m_place->look() : Place::There;
    if (state == Place::There)
        return {};
    return {ConnectionBroken, "Хранилище " + shown(m_path) + ": " + Place::words(state)};
}

void SqliteStore::letGo() {
    // A log that only this connection has left is carried over by closing, as always.
    const bool own = m_place->look() == Place::JournalGone;
    if (!own || !m_place->hasNoOtherLog())
        sqlite3_db_config(m_connection.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

Status SqliteStore::reopen() {
    return guarded([&]() -> Status {
        Status status = present();
        if (status.ok())
            return status;
        const Place::State state = m_place->look();
        if (state == Place::Gone)
            return {CannotConnect, "Нет файла базы " + shown(m_path)};
        // All connections of this process share the index that is gone: another one would join
        // them. What the removed log holds is brought into the file while that harms nobody.
        if (state == Place::JournalGone && m_place->hasNoOtherLog())
            m_connection.execute("PRAGMA wal_checkpoint(FULL)");
        if (state != Place::Replaced)
            return status;
        if (const int error = m_place->putLogAside(); error != 0)
            return {CannotConnect, "Журнал прежней базы " + shown(m_path + "-wal") +
                                       " не переименован (" + std::strerror(error) + ")"};
        Connection fresh;
        status = connectTo(m_path, !m_mayWrite, &fresh);
        if (!status.ok())
            return status;
        letGo();
        m_content.reset();
        m_statements.clear();
        m_writes.clear();
        m_connection = std::move(fresh);
        forgetWhatWasRead();
        m_grown = true;
        return start();
    });
}

Statement* SqliteStore::cached(const std::string& sql) {
    const auto found = m_statements.find(sql);
    if (found != m_statements.end())
        return &found->second;
    Statement statement = m_connection.prepare(sql);
    if (!statement)
        return nullptr;
    return &m_statements.emplace(sql, std::move(statement)).first->second;
}

Status SqliteStore::identity(std::string* identity) {
    return guarded([&]() -> Status {
        const char what[] = "Хранилище";
        Statement* statement = cached("SELECT \"identity\" FROM \"NciStore\"");
        if (statement == nullptr)
            return m_connection.failure(what);
        const ResetAfter reset(*statement);
        if (statement->step() != SQLITE_ROW)
            return m_connection.failure(what);
        *identity = statement->text(0);
        return {};
    });
}

// Tables -----------------------------------------------------------------------------------------

Status SqliteStore::fetchRows(const TableDef& table, Statement& statement, MDArray* into) {
    const ResetAfter reset(statement);
    return records(table, into, [&](mdx::RecordWriter& writer) {
        int step = SQLITE_DONE;
        while ((step = statement.step()) == SQLITE_ROW)
            writeRecord(table, statement.get(), writer);
        return step == SQLITE_DONE ? Status() : m_connection.failure(inTable(table));
    });
}

Status SqliteStore::fetchAll(const TableDef& table, MDArray* into) {
    Statement* statement = cached(selectAll(table));
    if (statement == nullptr)
        return m_connection.failure(inTable(table));
    const Status status = fetchRows(table, *statement, into);
    // The pages of a large table have pushed out all others, and are not read again.
    constexpr uint32_t large = 50000;
    if (mdx::postedCount(into) > large)
        sqlite3_db_release_memory(m_connection.get());
    return status;
}

Status SqliteStore::fetchMatching(const TableDef& table, const FieldDef& field, TextMatch match,
                                  std::string_view value, MDArray* into) {
    // The first comparison finds by the index, the second is exact where that is not.
    const std::string where = identifier(field.name);
    std::string sql = selectAll(table) + " WHERE " + where + " = ?1";
    if (match == TextMatch::Exact)
        sql += " AND " + where + " COLLATE BINARY = ?1";
    Statement* statement = cached(sql);
    if (statement == nullptr)
        return m_connection.failure(inTable(table));
    statement->bind(1, value);
    return fetchRows(table, *statement, into);
}

Status SqliteStore::rows(Statement& statement, size_t columns, const EachRow& each) {
    const ResetAfter reset(statement);
    Row row(columns);
    int step = SQLITE_DONE;
    while ((step = statement.step()) == SQLITE_ROW) {
        for (size_t i = 0; i < columns; ++i)
            row[i] = statement.value(static_cast<int>(i));
        each(row);
    }
    return step == SQLITE_DONE ? Status() : m_connection.failure("Чтение");
}

Status SqliteStore::select(const TableDef& table, const std::vector<int>& fields,
                           const EachRow& each) {
    Statement* statement =
        cached("SELECT " + fieldList(table, fields) + " FROM " + identifier(table.name));
    if (statement == nullptr)
        return m_connection.failure(inTable(table));
    return rows(*statement, fields.size(), each);
}

Status SqliteStore::selectWhere(const TableDef& table, const std::vector<int>& fields, int where,
                                const Value& value, const EachRow& each) {
    Statement* statement =
        cached("SELECT " + fieldList(table, fields) + " FROM " + identifier(table.name) +
               " WHERE " + identifier(table.fields[static_cast<size_t>(where)].name) + " IS ?1");
    if (statement == nullptr)
        return m_connection.failure(inTable(table));
    statement->bind(1, value);
    return rows(*statement, fields.size(), each);
}

// Writing ----------------------------------------------------------------------------------------

Status SqliteStore::inRead(const Work& work) {
    const InvariantScope<SqliteStore> invariants(*this);
    Transaction transaction(m_connection, Transaction::Read);
    if (transaction.begun() != SQLITE_OK)
        return m_connection.failure("Чтение");
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
        return m_connection.failure("Запись");
    const ResetAfter reset(*statement);
    const std::string writer = login();
    statement->bind(1, std::string_view(writer));
    statement->bind(2, std::string_view(origin().client));
    statement->bind(3, std::string_view(origin().place));
    statement->bind(4, origin().group);
    return statement->step() == SQLITE_DONE ? Status() : m_connection.failure("Запись");
}

Status SqliteStore::clearWriter() {
    Statement* statement = cached("UPDATE \"NciWriter\" SET \"login\" = '', \"client\" = '', "
                                  "\"place\" = '', \"group\" = NULL");
    if (statement == nullptr)
        return m_connection.failure("Запись");
    const ResetAfter reset(*statement);
    return statement->step() == SQLITE_DONE ? Status() : m_connection.failure("Запись");
}

Status SqliteStore::noteUndone(int64_t before) {
    if (origin().undoes.empty())
        return {};
    Statement* statement = cached("UPDATE \"NciEvent\" SET \"undoes\" = ?1 WHERE \"id\" > ?2 AND "
                                  "\"id\" = \"group\"");
    if (statement == nullptr)
        return m_connection.failure("Запись");
    const ResetAfter reset(*statement);
    const std::string list = listText(origin().undoes);
    statement->bind(1, std::string_view(list));
    statement->bind(2, before);
    return statement->step() == SQLITE_DONE ? Status() : m_connection.failure("Запись");
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
        return m_connection.failure(logName);
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
        return m_connection.failure("Запись");
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
        return m_connection.failure("Запись");
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
            return {Timeout, "Запись прервана, ничего не записано"};
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
        return m_connection.failure(contentName);
    return {};
}

// Change log -------------------------------------------------------------------------------------

int64_t SqliteStore::dataVersion() {
    Statement* statement = cached("PRAGMA data_version");
    if (statement == nullptr)
        return -1;
    const ResetAfter reset(*statement);
    return statement->step() == SQLITE_ROW ? statement->integer(0) : -1;
}

bool SqliteStore::changed() {
    bool result = true;
    const Status looked = guarded([&]() -> Status {
        const int64_t version = dataVersion();
        result = m_grown || version < 0 || version != m_seenVersion || !present().ok();
        m_seenVersion = version;
        m_grown = false;
        return {};
    });
    return result || !looked.ok(); // an error is the reader's to meet
}

Status SqliteStore::logPosition(int64_t* id) {
    return guarded([&]() -> Status {
        Statement* statement = cached("SELECT max(coalesce((SELECT max(\"id\") FROM \"NciEvent\"), "
                                      "0), coalesce((SELECT \"id\" FROM \"NciPruned\"), 0))");
        if (statement == nullptr)
            return m_connection.failure(logName);
        const ResetAfter reset(*statement);
        if (statement->step() != SQLITE_ROW)
            return m_connection.failure(logName);
        *id = statement->integer(0);
        return {};
    });
}

Status SqliteStore::readLog(const LogCursor& cursor, int limit, std::vector<Change>* changes) {
    return guarded([&]() -> Status {
        std::vector<Change> result;
        if (Status lost = present(); !lost.ok())
            return lost;
        // Before the rows: what comes in between shows as a change once more, and is not lost.
        const int64_t version = dataVersion();
        const Status status = inRead([&]() -> Status {
            int64_t newest = 0;
            int64_t pruned = 0;
            Status done = logPosition(&newest);
            if (done.ok() &&
                m_connection.integer("SELECT \"id\" FROM \"NciPruned\"", &pruned) != SQLITE_OK)
                done = m_connection.failure(logName);
            if (!done.ok())
                return done;
            Statement* statement =
                cached(std::string("SELECT ") + changeColumns +
                       " FROM \"NciEvent\" WHERE \"id\" >= ?1 ORDER BY \"id\" LIMIT ?2");
            if (statement == nullptr)
                return m_connection.failure(logName);
            const ResetAfter reset(*statement);
            const bool proved = !cursor.proof.empty(); // by the cursor's own change
            statement->bind(1, proved ? cursor.id : cursor.id + 1);
            statement->bind(2, int64_t(std::max(limit, 0)) + (proved ? 1 : 0));
            done = readChanges(*statement, &result);
            return done.ok() ? checkCursor(cursor, pruned, newest, &result) : done;
        });
        if (!status.ok())
            return status;
        if (limit >= 0 && result.size() > static_cast<size_t>(limit))
            result.pop_back(); // room for the cursor's own change, which is pruned
        m_seenVersion = version;
        m_grown = limit <= 0 || result.size() == static_cast<size_t>(limit);
        changes->swap(result);
        return {};
    });
}

Status SqliteStore::pruneLog(int64_t id) {
    return guarded([&] {
        return inWrite([&]() -> Status {
            Statement* statement = cached("DELETE FROM \"NciEvent\" WHERE \"id\" <= ?1");
            if (statement == nullptr)
                return m_connection.failure(logName);
            const ResetAfter reset(*statement);
            statement->bind(1, id);
            return statement->step() == SQLITE_DONE ? Status() : m_connection.failure(logName);
        });
    });
}

Status SqliteStore::integrity(std::vector<std::string>* damages) {
    return guarded([&]() -> Status {
        auto found = findDamages(m_connection.get(), 0);
        if (!found)
            return m_connection.failure("Проверка базы");
        Status status;
        if (found->empty()) { // what is damaged may not be readable
            status = differingDefinitions(m_connection, &*found);
            if (status.ok())
                status = checkContents(&*found);
            if (status.ok())
                status = checkVersions(&*found);
        }
        if (status.ok())
            damages->swap(*found);
        return status;
    });
}

} // namespace orvo::store::sqlite
