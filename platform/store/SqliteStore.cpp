#include "platform/store/SqliteStore.h"

#include "frame/StdText.h"
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
                return m_connection.failure(StdText::tr("Хранилище ") + shown(m_path) + ", " +
                                            inTable(*table));
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
    return {ConnectionBroken,
            StdText::tr("Хранилище ") + shown(m_path) + ": " + Place::words(state)};
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
            return {CannotConnect, StdText::tr("Нет файла базы ") + shown(m_path)};
        // All connections of this process share the index that is gone: another one would join
        // them. What the removed log holds is brought into the file while that harms nobody.
        if (state == Place::JournalGone && m_place->hasNoOtherLog())
            m_connection.execute("PRAGMA wal_checkpoint(FULL)");
        if (state != Place::Replaced)
            return status;
        if (const int error = m_place->putLogAside(); error != 0)
            return {CannotConnect, StdText::tr("Журнал прежней базы ") + shown(m_path + "-wal") +
                                       StdText::tr(" не переименован (") + std::strerror(error) +
                                       ")"};
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
        const std::string what = StdText::tr("Хранилище");
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
    return step == SQLITE_DONE ? Status() : m_connection.failure(StdText::tr("Чтение"));
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
            return m_connection.failure(logName());
        const ResetAfter reset(*statement);
        if (statement->step() != SQLITE_ROW)
            return m_connection.failure(logName());
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
                done = m_connection.failure(logName());
            if (!done.ok())
                return done;
            Statement* statement =
                cached(std::string("SELECT ") + changeColumns +
                       " FROM \"NciEvent\" WHERE \"id\" >= ?1 ORDER BY \"id\" LIMIT ?2");
            if (statement == nullptr)
                return m_connection.failure(logName());
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
                return m_connection.failure(logName());
            const ResetAfter reset(*statement);
            statement->bind(1, id);
            return statement->step() == SQLITE_DONE ? Status() : m_connection.failure(logName());
        });
    });
}

Status SqliteStore::integrity(std::vector<std::string>* damages) {
    return guarded([&]() -> Status {
        auto found = findDamages(m_connection.get(), 0);
        if (!found)
            return m_connection.failure(StdText::tr("Проверка базы"));
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
