#include "apps/client/MirrorDirectory.h"

#include "platform/store/Store.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace orvo::app {

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

bool writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<size_t>(written));
    }
    return true;
}

timespec toTimespec(double time) {
    const double whole = std::floor(time);
    return {static_cast<time_t>(whole), static_cast<long>((time - whole) * 1e9)};
}

} // namespace

Descriptor::~Descriptor() {
    if (m_fd >= 0)
        ::close(m_fd);
}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    std::swap(m_fd, other.m_fd);
    return *this;
}

int Descriptor::release() {
    return std::exchange(m_fd, -1);
}

bool MirrorDirectory::open(const std::string& path) {
    if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
        return false;
    m_root = Descriptor(::open(path.c_str(), folderFlags));
    return m_root.valid();
}

void MirrorDirectory::forgetFolder() {
    m_folder = Descriptor();
    m_folderPath.clear();
}

/// Opens the folder of the file, step by step from the root.
Descriptor MirrorDirectory::folder(const PathParts& path, bool make) {
    errno = EINVAL;
    if (path.empty() || !store::isPlainFileName(path.back()))
        return Descriptor();
    const PathParts folders(path.begin(), path.end() - 1);
    const auto again = [](const Descriptor& open) {
        return Descriptor(::fcntl(open.get(), F_DUPFD_CLOEXEC, 0));
    };
    if (m_folder.valid() && folders == m_folderPath)
        return again(m_folder);
    for (const std::string& part : folders)
        if (!store::isPlainFileName(part))
            return Descriptor();
    Descriptor at = again(m_root);
    for (const std::string& part : folders) {
        if (!at.valid())
            return at;
        if (make && ::mkdirat(at.get(), part.c_str(), 0700) != 0 && errno != EEXIST)
            return Descriptor();
        at = Descriptor(::openat(at.get(), part.c_str(), folderFlags));
    }
    if (at.valid()) {
        m_folder = again(at);
        m_folderPath = folders;
    }
    return at;
}

std::optional<MirrorDirectory::Info> MirrorDirectory::info(const PathParts& path) {
    const Descriptor at = folder(path, false);
    struct stat found {};
    if (!at.valid() || ::fstatat(at.get(), path.back().c_str(), &found, AT_SYMLINK_NOFOLLOW) != 0 ||
        !S_ISREG(found.st_mode))
        return {};
    return Info{static_cast<uint64_t>(found.st_size),
                static_cast<double>(found.st_mtim.tv_sec) +
                    static_cast<double>(found.st_mtim.tv_nsec) / 1e9};
}

bool MirrorDirectory::write(const PathParts& path, std::string_view bytes, double time) {
    Descriptor at = folder(path, true);
    if (!at.valid())
        return false;
    char part[40];
    std::snprintf(part, sizeof part, ".orvo-%08x-%08x", static_cast<unsigned>(::getpid()),
                  std::random_device()());
    constexpr int newFile = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    Descriptor file(::openat(at.get(), part, newFile, 0600));
    if (!file.valid() && errno == ENOENT) { // the folder was removed meanwhile
        forgetFolder();
        at = folder(path, true);
        file = Descriptor(at.valid() ? ::openat(at.get(), part, newFile, 0600) : -1);
    }
    if (!file.valid())
        return false;
    const timespec times[2] = {toTimespec(time), toTimespec(time)};
    const bool ok = writeAll(file.get(), bytes) && ::futimens(file.get(), times) == 0 &&
                    ::renameat(at.get(), part, at.get(), path.back().c_str()) == 0;
    if (!ok) {
        const int reason = errno;
        ::unlinkat(at.get(), part, 0);
        errno = reason;
    }
    return ok;
}

bool MirrorDirectory::remove(const PathParts& path) {
    Descriptor at = folder(path, false);
    if (!at.valid() || ::unlinkat(at.get(), path.back().c_str(), 0) != 0)
        return false;
    forgetFolder(); // it may go as well
    PathParts above = path;
    while (above.size() > 1) {
        above.pop_back();
        at = folder(above, false);
        if (!at.valid() || ::unlinkat(at.get(), above.back().c_str(), AT_REMOVEDIR) != 0)
            break; // not empty: something else lives there
    }
    return true;
}

} // namespace orvo::app
