#include "Peers.h"

#include <cstdio>
#include <cstdlib>

namespace bench {

Sqlite::Sqlite(const std::vector<Row>& rows) {
    sqlite3* database = nullptr;
    if (sqlite3_open(":memory:", &database) != SQLITE_OK)
        std::abort();
    m_database.reset(database);
    run("CREATE TABLE t(KeyLink TEXT, type_ INTEGER, folder TEXT, name TEXT, parameters TEXT)");
    m_insert = prepare("INSERT INTO t VALUES(?,?,?,?,?)");
    run("BEGIN");
    for (const Row& row : rows)
        insert(row);
    run("COMMIT");
}

void Sqlite::run(const char* sql) {
    char* error = nullptr;
    if (sqlite3_exec(m_database.get(), sql, nullptr, nullptr, &error) != SQLITE_OK) {
        std::fprintf(stderr, "%s: %s\n", sql, error);
        std::abort();
    }
}

Sqlite::Statement Sqlite::prepare(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(m_database.get(), sql, -1, &statement, nullptr) != SQLITE_OK)
        std::abort();
    return Statement(statement);
}

void Sqlite::createIndexes() {
    run("CREATE INDEX i0 ON t(KeyLink)");
    run("CREATE INDEX i1 ON t(type_, folder, name)");
    run("CREATE INDEX i2 ON t(type_, name)");
    run("CREATE INDEX i3 ON t(folder)");
    m_seek = prepare("SELECT rowid FROM t WHERE KeyLink = ?");
    m_erase = prepare("DELETE FROM t WHERE KeyLink = ?");
}

void Sqlite::dropIndexes() {
    m_seek.reset();
    m_erase.reset();
    run("DROP INDEX i0; DROP INDEX i1; DROP INDEX i2; DROP INDEX i3");
}

void Sqlite::bind(sqlite3_stmt* statement, int at, const std::string& text) {
    sqlite3_bind_text(statement, at, text.data(), int(text.size()), SQLITE_STATIC);
}

int64_t Sqlite::seek(const std::string& key) {
    bind(m_seek.get(), 1, key);
    const int64_t row =
        sqlite3_step(m_seek.get()) == SQLITE_ROW ? sqlite3_column_int64(m_seek.get(), 0) : -1;
    sqlite3_reset(m_seek.get());
    return row;
}

void Sqlite::insert(const Row& row) {
    bind(m_insert.get(), 1, row.key);
    sqlite3_bind_int(m_insert.get(), 2, row.type);
    bind(m_insert.get(), 3, row.folder);
    bind(m_insert.get(), 4, row.name);
    bind(m_insert.get(), 5, row.parameters);
    sqlite3_step(m_insert.get());
    sqlite3_reset(m_insert.get());
}

void Sqlite::erase(const std::string& key) {
    bind(m_erase.get(), 1, key);
    sqlite3_step(m_erase.get());
    sqlite3_reset(m_erase.get());
}

} // namespace bench
