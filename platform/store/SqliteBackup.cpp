// Copies of an SQLite store, page by page. A backup is a store itself, complete in one file.
#include "frame/StdText.h"
#include "frame/Vocabulary.h"
#include "platform/store/Checksum.h"
#include "platform/store/Names.h"
#include "platform/store/SqliteDamage.h"
#include "platform/store/SqliteSchema.h"
#include "platform/store/SqliteStore.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <limits>
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
Status copyPages(const Connection& from, const Connection& into, const std::string& what,
                 const Progress& progress) {
    using Clock = std::chrono::steady_clock;
    std::unique_ptr<sqlite3_backup, FinishBackup> backup(
        sqlite3_backup_init(into.get(), "main", from.get(), "main"));
    if (!backup)
        return into.failure(what);
    auto deadline = Clock::now() + std::chrono::milliseconds(busyMilliseconds);
    int step = SQLITE_OK;
    while (step != SQLITE_DONE) {
        step = sqlite3_backup_step(backup.get(), stepPages);
        const auto all = static_cast<uint64_t>(sqlite3_backup_pagecount(backup.get()));
        const auto left = static_cast<uint64_t>(sqlite3_backup_remaining(backup.get()));
        // Another program's transaction is waited for, the same time as by any write.
        const bool busy = (step & 0xFF) == SQLITE_BUSY || (step & 0xFF) == SQLITE_LOCKED;
        if (busy && Clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        else if (step != SQLITE_OK && step != SQLITE_DONE)
            break;
        else
            deadline = Clock::now() + std::chrono::milliseconds(busyMilliseconds);
        if (step != SQLITE_DONE && progress && !progress((all - left) * 4096, all * 4096))
            return {Stopped, std::string(what) + StdText::tr(": прервано")};
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
    return whole ? Status() : backup.failure(what + StdText::tr(" неполная"));
}

/// Opens a backup for reading, if it is one. Nothing is made beside it.
Status openBackup(const std::string& file, const std::string& what, Connection* connection) {
    struct stat info {};
    if (::stat((file + "-wal").c_str(), &info) == 0 && info.st_size > 0)
        return {Refused, what + StdText::tr(": рядом лежит журнал ") + shown(file + "-wal") +
                             StdText::tr("; это хранилище в работе, а не копия")};
    if (connection->open(immutableUri(file).c_str(), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI) !=
        SQLITE_OK)
        return connection->failure(what);
    int64_t mark = 0;
    int64_t version = 0;
    const int read = connection->integer("PRAGMA application_id", &mark);
    if (read != SQLITE_OK && (read & 0xFF) != SQLITE_NOTADB)
        return connection->failure(what);
    if (read != SQLITE_OK || mark != applicationId)
        return {NotAStore, what + StdText::tr(": это не копия хранилища SQLite")};
    if (connection->integer("PRAGMA user_version", &version) != SQLITE_OK)
        return connection->failure(what);
    if (version < 1 || version > static_cast<int64_t>(migrations().size()))
        return {NewerStore, what + StdText::tr(" сделана более новой версией программы (версия ") +
                                std::to_string(version) + StdText::tr(", известна ") +
                                std::to_string(migrations().size()) + ")"};
    return {};
}

Status checkDefinitions(const Connection& backup, const std::string& what) {
    std::vector<std::string> lines;
    const Status status = differingDefinitions(backup, &lines);
    if (!status.ok() || lines.empty())
        return status;
    return {Refused, what + StdText::tr(" изменена: ") + lines.front()};
}

/// What the editors cannot bring about: stored content without its resource, a log without order.
Status checkRows(const Connection& backup, const std::string& what) {
    const struct {
        std::string words, count; ///< of the rows that must not be
    } rules[] = {
        {StdText::tr("содержимое файла без его ресурса"),
         "SELECT count(*) FROM \"MenuResourceFile\" AS f WHERE NOT EXISTS (SELECT 1 FROM "
         "\"MenuResource\" AS r WHERE r.\"KeyLink\" = f.\"MenuResourceKey\")"},
        {StdText::tr("невозможная строка журнала изменений"),
         "SELECT count(*) FROM \"NciEvent\" WHERE \"id\" < 1 OR \"code\" NOT IN (" +
             std::to_string(OrvoEventInsert) + ", " + std::to_string(OrvoEventUpdate) + ", " +
             std::to_string(OrvoEventDelete) + ")"},
        {StdText::tr("счётчик журнала изменений отстаёт от журнала"),
         "SELECT coalesce((SELECT max(\"id\") FROM \"NciEvent\"), 0) > coalesce((SELECT max(seq) "
         "FROM sqlite_sequence WHERE name = 'NciEvent'), 0)"},
        {StdText::tr("не одна строка в таблице NciPruned"),
         "SELECT count(*) <> 1 FROM \"NciPruned\""},
        {StdText::tr("не одна строка в таблице NciWriter"),
         "SELECT count(*) <> 1 FROM \"NciWriter\""},
    };
    for (const auto& rule : rules) {
        int64_t count = 0;
        if (backup.integer(rule.count.c_str(), &count) != SQLITE_OK)
            return backup.failure(what);
        if (count != 0)
            return {Refused, what + StdText::tr(" изменена: ") + rule.words};
    }
    return {};
}

/// Refuses what is damaged. What no checksum vouches for is looked at more closely: the editors,
/// and whoever writes by hand, may have left in a store what nobody would put into a backup.
Status checkContent(const Connection& backup, const std::string& what, bool vouchedFor) {
    const auto damages = findDamages(backup.get(), 1);
    if (!damages)
        return backup.failure(what);
    if (!damages->empty())
        return {Failed, what + StdText::tr(" повреждена: ") + shown(damages->front())};
    Status status = checkTables(backup, what);
    if (status.ok() && !vouchedFor)
        status = checkDefinitions(backup, what);
    if (status.ok() && !vouchedFor)
        status = checkRows(backup, what);
    return status;
}

/// Refuses stored bytes that are not those of the checksum beside them. Of the newest version.
Status checkBytes(const Connection& backup, const std::string& what) {
    int64_t count = 0;
    if (addStepFunctions(backup) != SQLITE_OK ||
        backup.integer("SELECT count(*) FROM \"MenuResourceFileSum\" JOIN \"MenuResourceFile\" "
                       "USING (\"KeyLink\") WHERE orvo_sha256(\"data\") <> \"sha256\"",
                       &count) != SQLITE_OK)
        return backup.failure(what);
    if (count != 0)
        return {
            Refused,
            what + StdText::tr(" изменена: содержимое файла не сходится с его контрольной суммой")};
    return {};
}

/// Makes all readers of the log find their cursors pruned, those of up to `position` too, and those
/// of the changes that are made until the copy has taken the store's place.
Status startNewLog(const Connection& copy, int64_t position) {
    constexpr int64_t meanwhile = 1000000;
    int64_t newest = 0;
    const std::string what = logName();
    if (copy.integer("SELECT max(coalesce((SELECT max(\"id\") FROM \"NciEvent\"), 0), "
                     "coalesce((SELECT \"id\" FROM \"NciPruned\"), 0))",
                     &newest) != SQLITE_OK)
        return copy.failure(what);
    int64_t stores = 0;
    if (copy.integer("SELECT count(*) FROM \"NciStore\"", &stores) != SQLITE_OK)
        return copy.failure(what);
    if (stores != 1)
        return {Refused,
                StdText::tr("Резервная копия изменена: не одна строка в таблице NciStore")};
    if (newest > std::numeric_limits<int64_t>::max() / 2)
        return {Refused,
                std::string(what) + StdText::tr(" в копии испорчен: невозможный номер изменения")};
    const std::string next = std::to_string(std::max(position, newest) + meanwhile);
    return copy.execute(std::string(newIdentity) + "UPDATE \"NciPruned\" SET \"id\" = " + next +
                        "; DELETE FROM sqlite_sequence WHERE name = 'NciEvent'; INSERT INTO "
                        "sqlite_sequence (name, seq) VALUES ('NciEvent', " +
                        next + ")") == SQLITE_OK
               ? Status()
               : copy.failure(what);
}

/// The progress of one of several parts of the work, as a progress of the whole.
Progress part(const Progress& progress, uint64_t number, uint64_t parts) {
    if (!progress)
        return {};
    return [&progress, number, parts](uint64_t done, uint64_t all) {
        return progress(number * all + done, parts * all);
    };
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
        const std::string what = StdText::tr("Резервная копия");
        if (livesIn(file))
            return {Refused, StdText::tr("Резервная копия: это сам файл хранилища")};
        Connection target;
        if (target.open(file.c_str(), SQLITE_OPEN_READWRITE) != SQLITE_OK)
            return target.failure(what);
        // One snapshot held all the time: otherwise every commit of another program would make the
        // copy begin again.
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
        const std::string what = StdText::tr("Восстановление");
        const std::string backup = StdText::tr("Резервная копия ") + shown(file);
        if (livesIn(file))
            return {Refused, StdText::tr("Восстановление: это сам файл хранилища")};
        Connection source;
        Status status = openBackup(file, backup, &source);
        const bool vouchedFor = hasChecksum(file);
        if (status.ok())
            status = verifyChecksum(file, part(progress, 0, 3));
        // Checked, updated and given its place in the log in a temporary file: then one transaction
        // puts all of it into the store, or nothing. What is checked is what is put there. That
        // file has no name, and goes with the connection.
        Connection copy;
        if (status.ok() &&
            (copy.open("", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) != SQLITE_OK ||
             copy.execute("PRAGMA journal_mode = OFF") != SQLITE_OK))
            status = copy.failure(what);
        if (status.ok())
            status = copyPages(source, copy, what, part(progress, 1, 3));
        if (status.ok())
            status = checkContent(copy, backup, vouchedFor);
        if (status.ok())
            status = migrate(copy);
        if (status.ok()) // of the newest version too: a backup has what the store had
            status = sqlite::remakeTriggers(copy);
        if (status.ok() && !vouchedFor)
            status = checkBytes(copy, backup);
        int64_t position = 0;
        if (status.ok())
            status = logPosition(&position);
        if (status.ok())
            status = startNewLog(copy, position);
        // The store's file stays the same, so whoever has it open sees the new content.
        if (status.ok())
            status = copyPages(copy, m_connection, what, part(progress, 2, 3));
        if (status.ok())
            m_grown = true;
        return status;
    });
}

} // namespace orvo::store::sqlite
