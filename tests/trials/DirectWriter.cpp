#include "DirectWriter.h"

#include "platform/store/Sql.h"
#include "platform/store/SqliteApi.h"
#include "platform/store/StoreUrl.h"

#include <QtGlobal>

#include <algorithm>
#include <chrono>
#include <libpq-fe.h>
#include <thread>

namespace orvo::test {

namespace {

using Result = DirectSession::Result;

std::string joined(const std::vector<std::string>& parts, const char* between = ", ") {
    std::string all;
    for (const std::string& part : parts)
        all += (all.empty() ? "" : between) + part;
    return all;
}

std::string quotedNames(const std::vector<std::string>& names) {
    std::vector<std::string> quoted;
    for (const std::string& name : names)
        quoted.push_back(store::identifier(name));
    return joined(quoted);
}

class PostgresSession : public DirectSession {
public:
    explicit PostgresSession(const std::string& url) : m_connection(PQconnectdb(url.c_str())) {}
    bool isOpen() const { return PQstatus(m_connection.get()) == CONNECTION_OK; }
    bool isPostgres() const override { return true; }

    Result run(const std::string& sql) override {
        const std::unique_ptr<PGresult, Clear> result(PQexec(m_connection.get(), sql.c_str()));
        return judge(result.get(), sql);
    }

    Result load(const std::vector<std::string>& columns,
                const std::vector<std::vector<std::string>>& rows) override {
        const std::string sql = "COPY \"Menu\" (" + quotedNames(columns) + ") FROM STDIN";
        const std::unique_ptr<PGresult, Clear> begun(PQexec(m_connection.get(), sql.c_str()));
        if (PQresultStatus(begun.get()) != PGRES_COPY_IN)
            return judge(begun.get(), sql);
        for (const auto& row : rows) {
            std::string line;
            for (std::string value : row) {
                value.erase(std::remove(value.begin(), value.end(), '\''), value.end());
                line += (line.empty() ? "" : "\t") + (value == "NULL" ? "\\N" : value);
            }
            line += '\n';
            PQputCopyData(m_connection.get(), line.data(), static_cast<int>(line.size()));
        }
        PQputCopyEnd(m_connection.get(), nullptr);
        Result all = Done;
        while (PGresult* raw = PQgetResult(m_connection.get())) {
            const std::unique_ptr<PGresult, Clear> result(raw);
            all = std::max(all, judge(raw, sql));
        }
        return all;
    }

    std::string merge(const std::vector<std::string>& columns,
                      const std::vector<std::string>& row) const override {
        std::vector<std::string> given;
        for (const std::string& column : columns)
            given.push_back("given." + store::identifier(column));
        return "MERGE INTO \"Menu\" AS m USING (VALUES (" + joined(row) + ")) AS given (" +
               quotedNames(columns) +
               ") ON m.\"KeyLink\" = given.\"KeyLink\" WHEN MATCHED THEN UPDATE SET \"order_\" = "
               "m.\"order_\" + 1 WHEN NOT MATCHED THEN INSERT (" +
               quotedNames(columns) + ") VALUES (" + joined(given) + ")";
    }

private:
    struct Clear {
        void operator()(PGresult* result) const { PQclear(result); }
    };
    struct Finish {
        void operator()(PGconn* connection) const { PQfinish(connection); }
    };
    Result judge(const PGresult* result, const std::string& sql) const {
        const ExecStatusType status = PQresultStatus(result);
        if (status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK)
            return Done;
        const char* field = PQresultErrorField(result, PG_DIAG_SQLSTATE);
        const std::string_view state = field != nullptr ? field : "";
        if (state == "55P03" || state.starts_with("40"))
            return Busy;
        qWarning("%s: %s", sql.c_str(), PQerrorMessage(m_connection.get()));
        return Failed;
    }
    std::unique_ptr<PGconn, Finish> m_connection;
};

class SqliteSession : public DirectSession {
public:
    explicit SqliteSession(const std::string& file)
        : m_opened(m_connection.open(file.c_str(), SQLITE_OPEN_READWRITE)) {
        sqlite3_busy_timeout(m_connection.get(), 5000);
    }
    bool isOpen() const { return m_opened == SQLITE_OK; }
    bool isPostgres() const override { return false; }

    Result run(const std::string& sql) override {
        const int code = m_connection.execute(sql) & 0xFF;
        if (code == SQLITE_OK)
            return Done;
        if (code == SQLITE_BUSY || code == SQLITE_LOCKED)
            return Busy;
        qWarning("%s: %s", sql.c_str(), sqlite3_errmsg(m_connection.get()));
        return Failed;
    }

    Result load(const std::vector<std::string>& columns,
                const std::vector<std::vector<std::string>>& rows) override {
        std::vector<std::string> values;
        for (const auto& row : rows)
            values.push_back("(" + joined(row) + ")");
        return run("INSERT OR REPLACE INTO \"Menu\" (" + quotedNames(columns) + ") VALUES " +
                   joined(values));
    }

    std::string merge(const std::vector<std::string>& columns,
                      const std::vector<std::string>& row) const override {
        return "INSERT INTO \"Menu\" (" + quotedNames(columns) + ") VALUES (" + joined(row) +
               ") ON CONFLICT (\"KeyLink\") DO UPDATE SET \"order_\" = \"order_\" + 1";
    }

private:
    store::sqlite::Connection m_connection;
    const int m_opened;
};

} // namespace

std::unique_ptr<DirectSession> DirectSession::open(const std::string& url) {
    store::StoreUrl address;
    if (address.parse(url).ok() && !address.file().empty()) {
        auto session = std::make_unique<SqliteSession>(address.file());
        return session->isOpen() ? std::move(session) : nullptr;
    }
    auto session = std::make_unique<PostgresSession>(url);
    if (!session->isOpen() || session->run("SET search_path = public") != Done)
        return nullptr;
    return session;
}

DirectWriter::DirectWriter(const std::string& url, int writer, int writers, Way way)
    : m_session(DirectSession::open(url))
    , m_writer(writer)
    , m_writers(writers)
    , m_way(way)
    , m_random(unsigned(writer + 1)) {}

bool DirectWriter::write(int count) {
    constexpr int patience = 300;
    int failures = 0;
    for (int first = 0; m_session && first < count;) {
        const int end = std::min(count, first + 1 + int(below(9)));
        DirectSession::Result result = run(m_session->isPostgres() ? "BEGIN" : "BEGIN IMMEDIATE");
        const bool begun = result == DirectSession::Done;
        if (begun)
            result = transaction(first, end);
        // Given up now and then for no reason: its numbers are drawn, and not used.
        const bool keep = below(10) != 0;
        if (result == DirectSession::Done && keep && run("COMMIT") == DirectSession::Done) {
            first = end;
            continue;
        }
        if (begun)
            run("ROLLBACK");
        if (result == DirectSession::Failed || ++failures > patience + count)
            return false;
    }
    return m_session != nullptr;
}

const std::vector<std::string>& DirectWriter::columns() {
    static const std::vector<std::string> names = {"KeyLink", "order_", "caption", "parent"};
    return names;
}

DirectWriter::Row DirectWriter::row(int number) {
    // Below one of another writer, if that is there already: it came before then.
    const int other = int(below(unsigned(m_writers)));
    const std::string above =
        "w" + std::to_string(other) + "-" + std::to_string(std::max(0, number - int(below(20))));
    const bool literal = m_way == Load; // COPY takes values only
    return {"'w" + std::to_string(m_writer) + "-" + std::to_string(number) + "'",
            std::to_string(number), "'" + std::to_string(m_writer) + "'",
            literal ? "NULL"
                    : "(SELECT \"KeyLink\" FROM \"Menu\" WHERE \"KeyLink\" = '" + above + "')"};
}

DirectSession::Result DirectWriter::transaction(int first, int end) {
    DirectSession::Result result = DirectSession::Done;
    if (m_way == Definitions && below(20) == 0)
        result = definitions();
    if (result == DirectSession::Done)
        result = records(first, end);
    if (result == DirectSession::Done)
        result = run(m_way == Merge
                         ? m_session->merge(columns(), {"'counter'", "0", "NULL", "NULL"})
                         : "UPDATE \"Menu\" SET \"order_\" = \"order_\" + 1 WHERE \"KeyLink\" "
                           "= 'counter'");
    if (below(4) == 0)
        std::this_thread::sleep_for(std::chrono::microseconds(below(2000)));
    return result;
}

DirectSession::Result DirectWriter::records(int first, int end) {
    const auto insert = [this](const Row& values) {
        return "INSERT INTO \"Menu\" (" + quotedNames(columns()) + ") VALUES (" + joined(values) +
               ")";
    };
    DirectSession::Result result = DirectSession::Done;
    if (m_way == Load) {
        std::vector<Row> rows;
        for (int i = first; i < end; ++i)
            rows.push_back(row(i));
        return m_session->load(columns(), rows);
    }
    if (m_way == Truncation) {
        // Either is to be in the log record by record.
        const std::string key = "x" + std::to_string(m_writer) + "-" + std::to_string(++m_extra);
        result = run(below(5) != 0 ? "INSERT INTO \"MenuFileExt\" VALUES ('" + key + "', 'x')"
                     : m_session->isPostgres() ? "TRUNCATE \"MenuFileExt\""
                                               : "DELETE FROM \"MenuFileExt\"");
    }
    for (int i = first; i < end && result == DirectSession::Done; ++i) {
        const Row values = row(i);
        if (m_way == Savepoints) {
            // What is taken back again must be in no log.
            result = run("SAVEPOINT one; " + insert(values) +
                         "; UPDATE \"Menu\" SET \"order_\" = -1 WHERE \"KeyLink\" = 'counter'; "
                         "SAVEPOINT two; DELETE FROM \"Menu\" WHERE \"KeyLink\" = " +
                         values[0] + "; ROLLBACK TO one; RELEASE one; SAVEPOINT three; " +
                         insert(values) + "; RELEASE three");
            continue;
        }
        result = run(m_way == Merge ? m_session->merge(columns(), values) : insert(values));
    }
    return result;
}

DirectSession::Result DirectWriter::definitions() {
    const std::string name = store::identifier("trial" + std::to_string(m_writer));
    const std::string other = store::identifier("of trial" + std::to_string(m_writer));
    return run("CREATE INDEX " + name + " ON \"Menu\" (\"caption\"); CREATE TABLE " + other +
               " (a TEXT); INSERT INTO " + other + " VALUES ('x'); ALTER TABLE " + other +
               " ADD COLUMN b TEXT; DROP TABLE " + other + "; DROP INDEX " + name);
}

} // namespace orvo::test
