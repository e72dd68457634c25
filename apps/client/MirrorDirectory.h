// MirrorDirectory.h: a directory that is written to without ever leaving it.
#ifndef ORVO_APPS_CLIENT_MIRRORDIRECTORY_H
#define ORVO_APPS_CLIENT_MIRRORDIRECTORY_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::app {

/// A file descriptor that closes itself.
class Descriptor {
public:
    explicit Descriptor(int fd = -1) : m_fd(fd) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept : m_fd(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    int get() const { return m_fd; }
    bool valid() const { return m_fd >= 0; }
    int release();

private:
    int m_fd;
};

/// The parts of a relative path: folders, then the file's name.
using PathParts = std::vector<std::string>;

/// Access below one directory by plain names. No part may be a path, and no symbolic link is
/// followed below the directory, so that whatever stands in the store or was planted on the disk,
/// nothing outside is read, written or removed.
class MirrorDirectory {
public:
    /// Makes the directory if need be and opens it. False with errno set.
    bool open(const std::string& path);

    struct Info {
        uint64_t size;
        double time; ///< of the last change, seconds since 1970-01-01 UTC
    };
    /// Size and time of a regular file; none if it is missing or something else.
    std::optional<Info> info(const PathParts& path);
    /// Writes the file under another name first and puts it in place at once, making the folders.
    /// False with errno set (ELOOP, ENOTDIR: a link or a file where a folder should be).
    bool write(const PathParts& path, std::string_view bytes, double time);
    /// Removes the file and the folders above it that are empty then.
    bool remove(const PathParts& path);
    /// The folder of the last file is kept open for the next one. Forgotten, it is looked for
    /// again: somebody may have moved it since.
    void forgetFolder();

private:
    Descriptor folder(const PathParts& path, bool make);
    Descriptor m_root;
    Descriptor m_folder; ///< of the file before
    PathParts m_folderPath;
};

} // namespace orvo::app

#endif
