// PostgresWake.h: the connection over which the server announces that the log has grown.
#ifndef ORVO_PLATFORM_STORE_POSTGRESWAKE_H
#define ORVO_PLATFORM_STORE_POSTGRESWAKE_H

#include "platform/store/PostgresApi.h"

#include <chrono>

namespace orvo::store::postgres {

/// One descriptor as long as the store is open: connections come and go behind it.
///
///  1. m_socket is watched by m_fd and belongs to m_connection, or is -1; after each call it is -1
///     exactly if the connection is not usable. (The number of a closed socket may be given to
///     another file at once, which must not be watched in its place.)
class Listener {
public:
    Listener();
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// Readable after an announcement, and when the connection breaks; -1 if the system gives none.
    int fd() const { return m_fd; }
    /// Takes the waiting announcements.
    void take();
    /// Whether the connection stands. What was committed before it did was not announced.
    bool listening() const { return m_connection.usable(); }
    /// Connects again if that is needed, at growing intervals only.
    void revive(const Url& url);

private:
    void drop();

    const int m_fd;
    int m_socket = -1; ///< watched by m_fd
    Connection m_connection;
    std::chrono::steady_clock::time_point m_next{};
    std::chrono::milliseconds m_pause{0};
};

} // namespace orvo::store::postgres

#endif
