// Copies of an SQLite store, page by page. A backup is a store itself, complete in one file.
#include "platform/store/Names.h"
#include "platform/store/SqliteSchema.h"
#include "platform/store/SqliteStore.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <sys/stat.h>
#include <thread>

namespace orvo::store::sqlite {

namespace {

/// Pages between two looks at the progress: 4 MiB.
constexpr int stepPages = 1024;

struct FinishBackup {
    void operator()(sqlite3_backup* backup) const { sqlite3_backup_finish(backup); }
};

/// Copies one database over another. A copy that is not finished leaves the target as it was.
Status copyPages(const Connection& from, const Connection& into, const char* what,
                 const Progress& progress) {
    using Clock = std::chrono::steady_clock;
    std::unique_ptr<sqlite3_backup, FinishBackup> backup(
        sqlite3_backup_init(into.get(), "main", from.get(), "main"));
    if (!backup)
        return into.failure(what);
    auto patience = Clock::now() + std::chrono::milliseconds(busyMilliseconds);
    int step = SQLITE_OK;
    while (step != SQLITE_DONE) {
        step = sqlite3_backup_step(backup.get(), stepPages);
        const auto all = static_cast<uint64_t>(sqlite3_backup_pagecount(backup.get()));
        const auto left = static_cast<uint64_t>(sqlite3_backup_remaining(backup.get()));
        // Another program's transaction is waited for, the same time as by any write.
        const bool busy = (step & 0xFF) == SQLITE_BUSY || (step & 0xFF) == SQLITE_LOCKED;
        if (busy && Clock::now() < patience)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        else if (step != SQLITE_OK && step != SQLITE_DONE)
            break;
        else
            patience = Clock::now() + std::chrono::milliseconds(busyMilliseconds);
        if (step != SQLITE_DONE && progress && !progress((all - left) * 4096, all * 4096))
            return {Stopped, std::string(what) + ": прервано"};
    }
    const int finished = sqlite3_backup_finish(backup.release());
    if (step == SQLITE_DONE && finished == SQLITE_OK)
        return {};
    return into.failure(what);
}

/// What every version of a store has: without it nothing could read or write the store.
Status checkTables(const Connection& backup, const std::string& what) {
    const auto selects = [&](const std::string& columns, const char* table) {
        return bool(backup.prepare("SELECT " + columns + " FROM " + identifier(table)));
    };
    bool whole = selects(fieldList(contentTable()) + ", \"data\"", contentTable().name);
    for (const TableDef& table : tables())
        whole = whole && selects(fieldList(table), table.name);
    whole = whole &&
            selects("\"id\", \"code\", \"tableName\", \"key\", \"login\", \"time\", \"after\", "
                    "\"before\"",
                    "NciEvent") &&
            selects("\"login\"", "NciWriter") && selects("\"id\"", "NciPruned") &&
            selects("\"tableName\", \"key\", \"before\"", "NciReplaced");
    return whole ? Status() : backup.failure(what + " неполная");
}

/// Opens a backup for reading, if it is one. Nothing is made beside it.
Status openBackup(const std::string& file, Connection* connection) {
    const std::string what = "Резервная копия " + shown(file);
    struct stat info {};
    if (::stat((file + "-wal").c_str(), &info) == 0 && info.st_size > 0)
        return {Refused, what + ": рядом лежит журнал " + shown(file + "-wal") +
                             "; это хранилище в работе, а не копия"};
    if (connection->open(immutableUri(file).c_str(), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI) !=
        SQLITE_OK)
        return connection->failure(what);
    int64_t mark = 0;
    int64_t version = 0;
    const int read = connection->integer("PRAGMA application_id", &mark);
    if (read != SQLITE_OK && (read & 0xFF) != SQLITE_NOTADB)
        return connection->failure(what);
    if (read != SQLITE_OK || mark != applicationId)
        return {NotAStore, what + ": это не копия хранилища SQLite"};
    if (connection->integer("PRAGMA user_version", &version) != SQLITE_OK)
        return connection->failure(what);
    if (version < 1 || version > static_cast<int64_t>(migrations().size()))
        return {NewerStore, what + " сделана более новой версией программы (версия " +
                                std::to_string(version) + ", известна " +
                                std::to_string(migrations().size()) + ")"};
    Statement check = connection->prepare("PRAGMA quick_check(1)");
    if (!check || check.step() != SQLITE_ROW)
        return connection->failure(what);
    if (check.text(0) != "ok")
        return {Failed, what + " повреждена: " + shown(check.text(0))};
    return checkTables(*connection, what);
}

bool sameFile(const std::string& a, const std::string& b) {
    struct stat one {};
    struct stat other {};
    return ::stat(a.c_str(), &one) == 0 && ::stat(b.c_str(), &other) == 0 &&
           one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

} // namespace

bool SqliteStore::livesIn(const std::string& file) const {
    const std::filesystem::path place(file);
    const std::filesystem::path above = place.has_parent_path() ? place.parent_path() : ".";
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
        const std::filesystem::path own(m_path + suffix);
        // By name too: what is not there yet would be taken for the store's when it is.
        if (sameFile(file, own) ||
            (place.filename() == own.filename() && sameFile(above, own.parent_path())))
            return true;
    }
    return false;
}

Status SqliteStore::backup(const std::string& file, const Progress& progress) {
    return guarded([&]() -> Status {
        const char what[] = "Резервная копия";
        if (livesIn(file))
            return {Refused, "Резервная копия: это сам файл хранилища"};
        Connection target;
        if (target.open(file.c_str(), SQLITE_OPEN_READWRITE) != SQLITE_OK)
            return target.failure(what);
        // One snapshot held all the time: otherwise every commit of another program would make the
        // copy begin anew.
        Status status = inRead([&]() -> Status {
            int64_t newest = 0;
            const Status read = logPosition(&newest);
            return read.ok() ? copyPages(m_connection, target, what, progress) : read;
        });
        // Complete in itself, also on a medium that cannot be written to.
        if (status.ok() && target.execute("PRAGMA journal_mode = DELETE") != SQLITE_OK)
            status = target.failure(what);
        return status;
    });
}

Status SqliteStore::restore(const std::string& file, const Progress& progress) {
    return guarded([&]() -> Status {
        const char what[] = "Восстановление";
        if (livesIn(file))
            return {Refused, "Восстановление: это сам файл хранилища"};
        Connection source;
        int64_t position = 0;
        Status status = openBackup(file, &source);
        if (status.ok())
            status = logPosition(&position);
        // One transaction; the file stays the same, so whoever has it open sees the new content.
        if (status.ok())
            status = copyPages(source, m_connection, what, progress);
        if (!status.ok())
            return status;
        m_grown = true;
        status = migrate(m_connection);
        return status.ok() ? startNewLog(position) : status;
    });
}

} // namespace orvo::store::sqlite
