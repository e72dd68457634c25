// SqlitePresence.h: presence beside a store in a file.
//
// Each client has a file in the folder "<store>-presence", named at random and held under a lock of
// the system, which ends with the process, however that ends. A file without a lock is that of a
// dead client: it counts for nothing and is removed by whoever may. The folder goes with the last
// client. Who may read the store may take part: folder and files follow the rights of its file.
#ifndef ORVO_PLATFORM_STORE_SQLITEPRESENCE_H
#define ORVO_PLATFORM_STORE_SQLITEPRESENCE_H

#include "platform/store/Presence.h"

#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <utility>

namespace orvo::store::sqlite {

/// See Kinds.h.
std::unique_ptr<Presence> openPresence(const std::string& url, const std::string& login,
                                       Status* status);

/// A descriptor that is closed with its owner.
class Descriptor {
public:
    explicit Descriptor(int fd = -1) : m_fd(fd) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    int get() const { return m_fd; }
    bool isOpen() const { return m_fd >= 0; }
    void close();

private:
    int m_fd;
};

/// Invariants; 1 is asserted in debug builds:
/// 1. A look that went well leaves what is announced in a file that is open, and so locked.
/// 2. A file under its final name is locked as long as its client lives: it is locked before it is
///    renamed.
/// 3. What is announced changes by renaming only, so that nobody reads half.
class SqlitePresence final : public Presence {
public:
    /// Of the store in the file at that path, which has no links.
    SqlitePresence(std::string path, const std::string& login);
    ~SqlitePresence() override;

    void announce(std::vector<OpenEdit> edits) override;
    Status look(std::vector<PresenceEntry>* others) override;
    int wakeFd() const override { return m_watch.get(); }
    int nextLookMs() const override;

private:
    /// Makes the folder, if it is missing, and opens and watches it.
    Status openFolder();
    bool isFolderInPlace() const;
    /// Puts the own file, as it is to be now, in its place.
    Status publish();
    bool isOwnInPlace() const;
    /// Reads a file of the folder; false if nobody alive holds it.
    bool read(const std::string& name, PresenceEntry* entry) const;
    /// Takes the waiting events of the watch.
    bool takeWake() const;
    Status failed(const std::string& what) const;

    const std::string m_path; ///< of the store
    const std::string m_folderPath;
    const std::string m_name; ///< of the own file
    Descriptor m_watch;
    Descriptor m_folder;
    Descriptor m_file;        ///< the own one, locked; none: nothing is announced
    struct stat m_store = {}; ///< whose rights are followed
    PresenceEntry m_own;
    bool m_changed = true;
    int m_relookMs = 0; ///< 0: at leisure
};

} // namespace orvo::store::sqlite

#endif
