#include "platform/store/SqlitePlace.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"
#include "platform/store/SqliteApi.h"
#include "platform/store/SqliteSchema.h"
#include "platform/store/SqliteStore.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace orvo::store::sqlite {

namespace {

constexpr char newestNumber[] = "SELECT seq FROM sqlite_sequence WHERE name = 'NciEvent'";

/// None if there is none to be read.
std::string identityIn(const Connection& connection) {
    Statement ask = connection.prepare("SELECT \"identity\" FROM \"NciStore\"");
    return ask && ask.step() == SQLITE_ROW ? std::string(ask.text(0)) : std::string();
}

} // namespace

std::optional<Place::File> Place::fileAt(const std::string& path, Stamp* stamp) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0)
        return {};
    if (stamp != nullptr)
        *stamp = {info.st_size, info.st_mtim.tv_sec, info.st_mtim.tv_nsec};
    return File{info.st_dev, info.st_ino};
}

Place::Place(std::string path, const Connection& connection)
    : m_path(std::move(path))
    , m_connection(connection)
    , m_file(fileAt(m_path))
    , m_log(fileAt(m_path + "-wal"))
    , m_index(fileAt(m_path + "-shm")) {
    look();
}

std::optional<bool> Place::isOurs(Connection& file) {
    int64_t mark = 0;
    const int read = file.integer("PRAGMA application_id", &mark);
    if ((read & 0xFF) == SQLITE_NOTADB)
        return false;
    return read == SQLITE_OK ? std::optional(mark == applicationId) : std::nullopt;
}

// Through SQLite's own handle: to open and close its files by hand would drop the locks of this
// process. Where things are in the index is part of SQLite's documented format.
std::optional<Place::Carried> Place::carriedAtRest() const {
    if (!m_index) // no log is in use, and asking would make its index
        return {};
    constexpr int regionSize = 32768;
    constexpr size_t saltsAt = 32 / 4, doneAt = 96 / 4, begunAt = 128 / 4;
    sqlite3_file* file = m_connection.file();
    if (file == nullptr || file->pMethods->iVersion < 2)
        return {};
    void volatile* region = nullptr;
    file->pMethods->xShmMap(file, 0, regionSize, 0, &region); // mapped already, by what was read
    if (region == nullptr)
        return {};
    const auto* words = static_cast<const volatile uint32_t*>(region);
    const Carried carried{{words[saltsAt], words[saltsAt + 1]}, words[doneAt], words[begunAt]};
    return carried.done == carried.begun ? std::optional(carried) : std::nullopt;
}

/// Of a file that has been written to: by a checkpoint, which only ever brings later changes into
/// it, or by somebody who does not know that it is in use.
bool Place::isOverwritten(const std::optional<Carried>& rest, const Stamp& stamp) {
    Content content;
    content.size = stamp.size;
    sqlite3_file* own = m_connection.file();
    const int head = own == nullptr ? SQLITE_IOERR
                                    : own->pMethods->xRead(own, content.header.data(),
                                                           int(content.header.size()), 0);
    Connection file;
    if (file.open(immutableUri(m_path).c_str(), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI) !=
        SQLITE_OK)
        return false;
    const std::optional<bool> ours = isOurs(file);
    // In the midst of a checkpoint there may be nothing to be read.
    int64_t newest = 0;
    const int read = file.integer(newestNumber, &newest);
    if (read == SQLITE_OK)
        content.newest = newest;
    const auto failed = [](int result) {
        const int kind = result & 0xFF;
        return result != SQLITE_IOERR_SHORT_READ &&
               (kind == SQLITE_IOERR || kind == SQLITE_NOMEM || kind == SQLITE_CANTOPEN);
    };
    // Nobody can tell now; and what has come to its place meanwhile, the next look tells.
    if (failed(head) || failed(read) || fileAt(m_path) != m_file) {
        m_known.reset();
        return false;
    }

    const bool atRest = rest && carriedAtRest() == rest;
    const bool altered =
        atRest && m_known && m_known->carried == *rest && m_known->content != content;
    m_known = atRest ? std::optional(Known{*rest, content}) : std::nullopt;
    if (altered || (ours && !*ours))
        return altered || m_isOurs;
    m_isOurs = m_isOurs || ours.has_value();
    if (!content.newest)
        return false;
    // A restored backup comes through the log like everything else, with a new identity.
    const std::string identity = identityIn(file);
    const bool another = !m_identity.empty() && !identity.empty() && identity != m_identity &&
                         identity != identityIn(m_connection);
    const bool earlier = newest < m_newest;
    // What is in the file came out of the log, whose numbers never fall.
    int64_t newestWithLog = 0;
    const bool later =
        m_connection.integer(newestNumber, &newestWithLog) == SQLITE_OK && newest > newestWithLog;
    m_newest = std::max(m_newest, newest);
    if (!identity.empty())
        m_identity = identity;
    return earlier || later || another;
}

Place::State Place::look() {
    if (m_last == JournalGone || m_last == Overwritten)
        return m_last;
    const std::optional<Carried> rest = carriedAtRest();
    Stamp stamp;
    const auto file = fileAt(m_path, &stamp);
    if (!file)
        m_last = Gone;
    else if (file != m_file)
        m_last = Replaced;
    else if (fileAt(m_path + "-wal") != m_log || fileAt(m_path + "-shm") != m_index)
        m_last = JournalGone;
    else
        m_last = There;
    const bool mayDiffer = stamp != m_stamp || (rest && (!m_known || m_known->carried != *rest));
    if (m_last == There && mayDiffer && isOverwritten(rest, stamp))
        m_last = Overwritten;
    m_stamp = stamp;
    return m_last;
}

std::string Place::words(State state) {
    switch (state) {
    case There:
        return StdText::tr("на месте");
    case Gone:
        return StdText::tr("файл базы удалён или перемещён");
    case Replaced:
        return StdText::tr("на месте файла базы теперь другой файл");
    case JournalGone:
        return StdText::tr(
            "журнал базы (-wal или -shm) удалён или заменён; закройте все программы, которые "
            "открыли хранилище, и откройте его снова");
    case Overwritten:
        return StdText::tr(
            "файл базы переписан мимо программы; закройте все программы, которые его открыли, "
            "и восстановите хранилище из копии");
    }
    return {};
}

bool Place::hasNoOtherLog() const {
    const auto log = fileAt(m_path + "-wal"), index = fileAt(m_path + "-shm");
    return (!log || log == m_log) && (!index || index == m_index);
}

int Place::putLogAside() const {
    if (!m_log || fileAt(m_path + "-wal") != m_log)
        return 0;
    // The index goes with the log: it tells nothing without it.
    if (m_index && fileAt(m_path + "-shm") == m_index && ::unlink((m_path + "-shm").c_str()) != 0)
        return errno;
    const std::string aside = m_path + "-wal.old-" + newKey();
    return std::rename((m_path + "-wal").c_str(), aside.c_str()) == 0 ? 0 : errno;
}

} // namespace orvo::store::sqlite
