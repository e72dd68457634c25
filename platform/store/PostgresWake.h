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
///  2. While a connection is joined there is none of its own.
class Listener {
public:
    Listener();
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// Readable after an announcement, and when the connection breaks; -1 if the system gives none.
    int fd() const { return m_fd; }
    /// Takes the waiting announcements of its own connection.
    void take();
    /// Has the announcements come over a connection that does other work, too: one session less on
    /// the server, and one process less that each announcement wakes. Whoever owns it takes them by
    /// takeFrom after each answer that it waits for: they come along, and the descriptor is silent
    /// about them. A standby announces nothing.
    void join(Connection& connection);
    /// Back to a connection of its own, which revive makes.
    void leave(Connection& connection);
    bool isJoined() const { return m_joined != 0 || m_refused != 0; }
    /// Takes the announcements that have come over a joined connection; whether there were any.
    static bool takeFrom(Connection& connection);
    /// Whether the connection stands. What was committed before it did was not announced.
    bool listening() const { return m_connection.usable(); }
    /// Connects again if that is needed, at growing intervals only.
    void revive(const Url& url);

private:
    void drop();

    const int m_fd;
    int m_socket = -1; ///< watched by m_fd
    Connection m_connection;
    int m_joined = 0;  ///< the server's process behind the connection that is joined; 0: none is
    int m_refused = 0; ///< the one behind a connection over which nothing is announced
    std::chrono::steady_clock::time_point m_next{};
    std::chrono::milliseconds m_pause{0};
};

} // namespace orvo::store::postgres

#endif
