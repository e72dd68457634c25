#include "platform/store/SqliteDamage.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"
#include "platform/store/Sql.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <memory>

namespace orvo::store::sqlite {

namespace {

/// Ends what the connection is doing when the time is over.
class TimeLimit {
public:
    TimeLimit(sqlite3* connection, int64_t milliseconds)
        : m_connection(connection)
        , m_end(std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds)) {
        constexpr int steps = 10000; // of SQLite's machine between two looks at the clock
        if (milliseconds > 0)
            sqlite3_progress_handler(m_connection, steps, &TimeLimit::isOver, this);
    }
    ~TimeLimit() { sqlite3_progress_handler(m_connection, 0, nullptr, nullptr); }
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;

private:
    static int isOver(void* self) {
        return std::chrono::steady_clock::now() >= static_cast<TimeLimit*>(self)->m_end ? 1 : 0;
    }
    sqlite3* const m_connection;
    const std::chrono::steady_clock::time_point m_end;
};

struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Query = std::unique_ptr<sqlite3_stmt, Finalize>;

Query query(sqlite3* connection, const std::string& sql) {
    sqlite3_stmt* raw = nullptr;
    sqlite3_prepare_v2(connection, sql.c_str(), -1, &raw, nullptr);
    return Query(raw);
}

std::string text(const Query& row, int column) {
    const auto* data = static_cast<const char*>(sqlite3_column_blob(row.get(), column));
    const int size = sqlite3_column_bytes(row.get(), column);
    return data != nullptr ? std::string(data, static_cast<size_t>(size)) : std::string();
}

/// Runs a form of integrity_check and adds its lines, at most `limit` of them (0: all). The result
/// code of the last step.
int check(sqlite3* connection, const std::string& argument, size_t limit,
          std::vector<std::string>* found) {
    const Query rows = query(connection, "PRAGMA integrity_check" + argument);
    int step = sqlite3_extended_errcode(connection);
    while (rows && (step = sqlite3_step(rows.get())) == SQLITE_ROW) {
        // One row may tell of several damages, a line each.
        const std::string lines = validUtf8(text(rows, 0));
        for (size_t at = 0; at <= lines.size();) {
            const size_t end = std::min(lines.find('\n', at), lines.size());
            const std::string line = lines.substr(at, end - at);
            at = end + 1;
            const bool tells = !line.empty() && line != "ok" && !line.starts_with("*** in ");
            if (tells && (limit == 0 || found->size() < limit))
                found->push_back(line);
        }
    }
    return step;
}

/// Puts the name of the table before the lines that know a page by its number only: the check of
/// one table alone tells which are its own.
void addTables(sqlite3* connection, std::vector<std::string>* damages) {
    std::vector<std::string> tables;
    {
        const Query rows =
            query(connection, "SELECT name FROM sqlite_schema WHERE type = 'table' ORDER BY name");
        while (rows && sqlite3_step(rows.get()) == SQLITE_ROW)
            tables.push_back(text(rows, 0));
    }
    std::map<std::string, std::string> owners;
    for (const std::string& table : tables) {
        std::vector<std::string> own;
        check(connection, "(" + literal(table) + ")", 0, &own);
        for (const std::string& line : own)
            owners.emplace(line, table);
    }
    for (std::string& damage : *damages)
        if (const auto owner = owners.find(damage); owner != owners.end())
            damage = StdText::tr("таблица ") + validUtf8(owner->second) + ": " + damage;
}

/// What integrity_check could not begin with: the head of the file or its list of tables.
std::string damagedHead(sqlite3* connection, const std::string& message) {
    sqlite3_file* file = nullptr;
    unsigned char head[100] = {};
    sqlite3_int64 size = 0;
    if (sqlite3_file_control(connection, "main", SQLITE_FCNTL_FILE_POINTER, &file) == SQLITE_OK &&
        file != nullptr && file->pMethods != nullptr &&
        file->pMethods->xRead(file, head, sizeof head, 0) == SQLITE_OK &&
        file->pMethods->xFileSize(file, &size) == SQLITE_OK) {
        const int64_t pageSize = int64_t(head[16]) << 8 | head[17];
        const int64_t pages = int64_t(head[28]) << 24 | head[29] << 16 | head[30] << 8 | head[31];
        if (pageSize > 1 && pages * pageSize > size)
            return StdText::tr("файл обрезан: страниц ") + std::to_string(size / pageSize) +
                   StdText::tr(" из ") + std::to_string(pages);
    }
    return StdText::tr("заголовок файла или оглавление базы не читается (") + message + ")";
}

} // namespace

bool isDamageCode(int code) {
    return (code & 0xFF) == SQLITE_CORRUPT || (code & 0xFF) == SQLITE_NOTADB;
}

std::optional<std::vector<std::string>> findDamages(sqlite3* connection, int limit,
                                                    int64_t milliseconds) {
    const TimeLimit time(connection, milliseconds);
    std::vector<std::string> found;
    const int ended = check(connection, limit > 0 ? "(" + std::to_string(limit) + ")" : "",
                            static_cast<size_t>(limit), &found);
    // A damaged file stays as it is: its log may be all that can still be saved.
    if (ended != SQLITE_DONE || !found.empty())
        sqlite3_db_config(connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    if (ended != SQLITE_DONE && !isDamageCode(ended))
        return {};
    const std::string message = validUtf8(sqlite3_errmsg(connection));
    if (!found.empty())
        addTables(connection, &found);
    else if (ended != SQLITE_DONE) // too damaged to be checked to the end
        found.push_back(damagedHead(connection, message));
    return found;
}

} // namespace orvo::store::sqlite
