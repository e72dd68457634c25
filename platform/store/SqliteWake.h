// SqliteWake.h: notices that some process has written to the write-ahead log.
#ifndef ORVO_PLATFORM_STORE_SQLITEWAKE_H
#define ORVO_PLATFORM_STORE_SQLITEWAKE_H

#include <string>

namespace orvo::store::sqlite {

/// A watch on the "-wal" file, and on its directory for the case that the file is made again. The
/// system may drop events, so whoever waits looks at the log from time to time all the same. For
/// one thread at a time.
class WalWatch {
public:
    explicit WalWatch(const std::string& walPath);
    ~WalWatch();
    WalWatch(const WalWatch&) = delete;
    WalWatch& operator=(const WalWatch&) = delete;

    /// Readable after a write; -1 if the system gives no watch.
    int fd() const { return m_fd; }
    /// Takes the waiting events.
    void take();

private:
    void watchFile();

    const std::string m_path;
    const std::string m_name; ///< without its directory
    int m_fd;                 ///< of inotify; owned
    int m_file = -1;          ///< number of the watch on the file; -1: there is no file
};

} // namespace orvo::store::sqlite

#endif
