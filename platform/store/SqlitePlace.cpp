#include "platform/store/SqlitePlace.h"

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

std::optional<Place::File> Place::fileAt(const std::string& path, Stamp* stamp) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0)
        return {};
    if (stamp != nullptr)
        *stamp = {info.st_size, info.st_mtim.tv_sec, info.st_mtim.tv_nsec};
    return File{info.st_dev, info.st_ino};
}

Place::Place(std::string path, std::function<std::string()> identity)
    : m_path(std::move(path))
    , m_identityWithLog(std::move(identity))
    , m_file(fileAt(m_path))
    , m_log(fileAt(m_path + "-wal"))
    , m_index(fileAt(m_path + "-shm")) {
    Connection file;
    m_isOurs = file.open(immutableUri(m_path).c_str(), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI) ==
                   SQLITE_OK &&
               isOurs(file).value_or(false);
}

std::optional<bool> Place::isOurs(Connection& file) {
    int64_t mark = 0;
    const int read = file.integer("PRAGMA application_id", &mark);
    if ((read & 0xFF) == SQLITE_NOTADB)
        return false;
    return read == SQLITE_OK ? std::optional(mark == applicationId) : std::nullopt;
}

/// Of a file that has been written to: by a checkpoint, which only ever brings later changes into
/// it, or by somebody who does not know that it is in use.
bool Place::isOverwritten() {
    Connection file;
    int64_t newest = 0;
    if (file.open(immutableUri(m_path).c_str(), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI) !=
        SQLITE_OK)
        return false;
    if (const std::optional<bool> ours = isOurs(file)) {
        if (!*ours)
            return m_isOurs;
        m_isOurs = true;
    }
    // In the midst of a checkpoint there may be nothing to be read.
    if (file.integer("SELECT seq FROM sqlite_sequence WHERE name = 'NciEvent'", &newest) !=
        SQLITE_OK)
        return false;
    // A restored backup comes through the log like everything else, with a new identity.
    std::string identity;
    if (Statement ask = file.prepare("SELECT \"identity\" FROM \"NciStore\"");
        ask && ask.step() == SQLITE_ROW)
        identity = ask.text(0);
    const bool another = !m_identity.empty() && !identity.empty() && identity != m_identity &&
                         identity != m_identityWithLog();
    const bool earlier = newest < m_newest;
    m_newest = std::max(m_newest, newest);
    if (!identity.empty())
        m_identity = identity;
    return earlier || another;
}

Place::State Place::look() {
    if (m_last == JournalGone || m_last == Overwritten)
        return m_last;
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
    if (m_last == There && stamp != m_stamp && isOverwritten())
        m_last = Overwritten;
    m_stamp = stamp;
    return m_last;
}

const char* Place::words(State state) {
    switch (state) {
    case There:
        return "на месте";
    case Gone:
        return "файл базы удалён или перемещён";
    case Replaced:
        return "на месте файла базы теперь другой файл";
    case JournalGone:
        return "журнал базы (-wal или -shm) удалён или заменён; закройте все программы, которые "
               "открыли хранилище, и откройте его снова";
    case Overwritten:
        return "файл базы переписан мимо программы; закройте все программы, которые его открыли, "
               "и восстановите хранилище из копии";
    }
    return "";
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
