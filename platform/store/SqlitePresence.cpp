#include "platform/store/SqlitePresence.h"

#include "frame/StdText.h"
#include "platform/store/Kinds.h"
#include "platform/store/Names.h"
#include "platform/store/SqliteStore.h"
#include "platform/store/StoreCore.h"

#include <cassert>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <sys/inotify.h>
#include <unistd.h>

namespace orvo::store::sqlite {

namespace {

constexpr int lookMs = 2000; ///< behind the watch, which some file systems do not serve
/// The system tells of the end of a client a moment before it takes the lock off.
constexpr int firstRelookMs = 1;
constexpr int lastRelookMs = 128;
constexpr char unfinished[] = ".new-"; ///< before the name of a file that is being made
constexpr time_t unfinishedSeconds = 60;
constexpr size_t nameLength = 32;

bool isEntryName(std::string_view name) {
    return name.size() == nameLength &&
           name.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

struct flock wholeFile() {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

bool isLocked(int fd) {
    struct flock lock = wholeFile();
    return ::fcntl(fd, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

/// What a regular file holds, up to that size; empty if it is larger or cannot be read.
std::string contents(int fd) {
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) || info.st_size <= 0 ||
        info.st_size > static_cast<off_t>(longestPresenceEntry))
        return {};
    std::string bytes(static_cast<size_t>(info.st_size), '\0');
    return ::pread(fd, bytes.data(), bytes.size(), 0) == info.st_size ? bytes : std::string();
}

/// Whoever may read the store may make and remove files in the folder, his own ones only.
mode_t folderMode(const struct stat& store) {
    mode_t mode = S_IRWXU;
    if ((store.st_mode & S_IRGRP) != 0)
        mode |= S_IRWXG | S_ISVTX;
    if ((store.st_mode & S_IROTH) != 0)
        mode |= S_IRWXO | S_ISVTX;
    return mode;
}

} // namespace

void Descriptor::close() {
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
}

std::unique_ptr<Presence> openPresence(const std::string& url, const std::string& login,
                                       Status* status) {
    Location location;
    *status = parseUrl(url, &location);
    if (!status->ok())
        return nullptr;
    std::error_code error;
    const auto real = std::filesystem::canonical(location.file, error);
    return std::make_unique<SqlitePresence>(error ? location.file : real.string(), login);
}

SqlitePresence::SqlitePresence(std::string path, const std::string& login)
    : m_path(std::move(path))
    , m_folderPath(m_path + "-presence")
    , m_name(newKey())
    , m_watch(inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
    , m_own(ownPresence(login)) {}

SqlitePresence::~SqlitePresence() {
    if (m_folder.isOpen() && isOwnInPlace())
        ::unlinkat(m_folder.get(), m_name.c_str(), 0);
    m_file.close();
    if (m_folder.isOpen() && isFolderInPlace())
        ::rmdir(m_folderPath.c_str()); // not while others are in it
}

void SqlitePresence::announce(std::vector<OpenEdit> edits) {
    if (edits.size() > mostOpenEdits)
        edits.resize(mostOpenEdits);
    m_changed = m_changed || edits != m_own.edits;
    m_own.edits = std::move(edits);
}

int SqlitePresence::nextLookMs() const {
    return m_relookMs > 0 ? m_relookMs : lookMs;
}

Status SqlitePresence::failed(const std::string& what) const {
    return {Failed, std::string(what) + ' ' + shown(m_folderPath) + ": " + std::strerror(errno)};
}

bool SqlitePresence::isFolderInPlace() const {
    struct stat open {
    }, there{};
    return ::fstat(m_folder.get(), &open) == 0 && ::lstat(m_folderPath.c_str(), &there) == 0 &&
           open.st_dev == there.st_dev && open.st_ino == there.st_ino;
}

Status SqlitePresence::openFolder() {
    // A store that is gone is not followed by a new folder at its place.
    if (::stat(m_path.c_str(), &m_store) != 0)
        return {ConnectionBroken, StdText::tr("Нет файла базы ") + shown(m_path)};
    if (m_folder.isOpen() && isFolderInPlace())
        return {};
    m_file.close();
    if (::mkdir(m_folderPath.c_str(), S_IRWXU) == 0) {
        // Of the store's group, as far as that can be given.
        if (::chown(m_folderPath.c_str(), static_cast<uid_t>(-1), m_store.st_gid) != 0)
            errno = 0;
        if (::chmod(m_folderPath.c_str(), folderMode(m_store)) != 0)
            return failed(StdText::tr("Каталог"));
    } else if (errno != EEXIST) {
        return failed(StdText::tr("Каталог"));
    }
    m_folder =
        Descriptor(::open(m_folderPath.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!m_folder.isOpen())
        return failed(StdText::tr("Каталог"));
    if (m_watch.isOpen())
        inotify_add_watch(m_watch.get(), m_folderPath.c_str(),
                          IN_CLOSE_WRITE | IN_MOVED_TO | IN_DELETE | IN_ONLYDIR | IN_DONT_FOLLOW);
    return {};
}

bool SqlitePresence::isOwnInPlace() const {
    struct stat open {
    }, there{};
    return m_file.isOpen() && ::fstat(m_file.get(), &open) == 0 &&
           ::fstatat(m_folder.get(), m_name.c_str(), &there, AT_SYMLINK_NOFOLLOW) == 0 &&
           open.st_dev == there.st_dev && open.st_ino == there.st_ino;
}

Status SqlitePresence::publish() {
    const std::string passing = unfinished + m_name;
    ::unlinkat(m_folder.get(), passing.c_str(), 0);
    Descriptor file(::openat(m_folder.get(), passing.c_str(),
                             O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    struct flock lock = wholeFile();
    const std::string text = presenceText(m_own);
    const auto made = [&] {
        return file.isOpen() && ::fcntl(file.get(), F_OFD_SETLK, &lock) == 0 &&
               ::fchmod(file.get(), (m_store.st_mode & 0444) | 0600) == 0 &&
               ::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
               ::renameat(m_folder.get(), passing.c_str(), m_folder.get(), m_name.c_str()) == 0;
    };
    if (!made()) {
        const Status status = failed(StdText::tr("Файл в каталоге"));
        ::unlinkat(m_folder.get(), passing.c_str(), 0);
        return status;
    }
    m_file = std::move(file);
    m_changed = false;
    return {};
}

bool SqlitePresence::read(const std::string& name, PresenceEntry* entry) const {
    const Descriptor file(
        ::openat(m_folder.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file.isOpen())
        return false;
    if (isLocked(file.get()))
        return parsePresence(contents(file.get()), entry);
    struct stat info {};
    // One that is being made may not be locked yet.
    if (isEntryName(name) ||
        (::fstat(file.get(), &info) == 0 && info.st_mtime + unfinishedSeconds < ::time(nullptr)))
        ::unlinkat(m_folder.get(), name.c_str(), 0);
    return false;
}

bool SqlitePresence::takeWake() const {
    alignas(inotify_event) char buffer[4096];
    bool any = false;
    while (m_watch.isOpen() && ::read(m_watch.get(), buffer, sizeof buffer) > 0)
        any = true;
    return any;
}

Status SqlitePresence::look(std::vector<PresenceEntry>* others) {
    others->clear();
    return guarded([&]() -> Status {
        if (takeWake())
            m_relookMs = firstRelookMs;
        else
            m_relookMs = m_relookMs * 2 <= lastRelookMs ? m_relookMs * 2 : 0;
        Status status = openFolder();
        if (!status.ok())
            return status;
        // Whoever may not be in the folder can still see who is.
        const Status own = m_changed || !isOwnInPlace() ? publish() : Status();
        assert(!own.ok() || (m_file.isOpen() && !m_changed));
        struct CloseFolder {
            void operator()(DIR* folder) const { ::closedir(folder); }
        };
        const std::unique_ptr<DIR, CloseFolder> folder(
            ::fdopendir(::openat(m_folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
        if (!folder)
            return failed(StdText::tr("Каталог"));
        while (const dirent* file = ::readdir(folder.get())) {
            const std::string name = file->d_name;
            const bool isNew = name.starts_with(unfinished);
            if (name == m_name || !isEntryName(isNew ? name.substr(std::strlen(unfinished)) : name))
                continue;
            PresenceEntry entry;
            if (read(name, &entry) && !isNew && others->size() < mostPresent)
                others->push_back(std::move(entry));
        }
        sortPresence(others);
        return own;
    });
}

} // namespace orvo::store::sqlite
