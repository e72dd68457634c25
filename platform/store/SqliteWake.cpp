#include "platform/store/SqliteWake.h"

#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>

namespace orvo::store::sqlite {

WalWatch::WalWatch(const std::string& walPath)
    : m_path(walPath)
    , m_name(walPath.substr(walPath.rfind('/') + 1))
    , m_fd(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    if (m_fd < 0)
        return;
    const std::string directory = m_path.substr(0, m_path.size() - m_name.size());
    inotify_add_watch(m_fd, directory.c_str(), IN_CREATE | IN_MOVED_TO | IN_ONLYDIR);
    watchFile();
}

WalWatch::~WalWatch() {
    if (m_fd >= 0)
        ::close(m_fd);
}

void WalWatch::watchFile() {
    m_file = inotify_add_watch(m_fd, m_path.c_str(), IN_MODIFY);
}

void WalWatch::take() {
    if (m_fd < 0)
        return;
    alignas(inotify_event) char buffer[4096];
    bool made = false;
    for (;;) {
        const ssize_t length = ::read(m_fd, buffer, sizeof buffer);
        if (length <= 0)
            break;
        for (ssize_t at = 0; at < length;) {
            inotify_event event;
            std::memcpy(&event, buffer + at, sizeof event);
            const char* name = buffer + at + sizeof event;
            if ((event.mask & (IN_CREATE | IN_MOVED_TO)) != 0 && event.len > 0 && m_name == name)
                made = true;
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
    if (!made)
        return;
    if (m_file >= 0)
        inotify_rm_watch(m_fd, m_file); // the one of a file that is gone
    watchFile();
}

} // namespace orvo::store::sqlite
