#include "platform/store/PostgresWake.h"

#include "platform/store/PostgresSchema.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <poll.h>
#include <sys/epoll.h>
#include <unistd.h>
#include <utility>

namespace orvo::store::postgres {

namespace {

struct FreeNotification {
    void operator()(PGnotify* notification) const { PQfreemem(notification); }
};

} // namespace

Listener::Listener() : m_fd(epoll_create1(EPOLL_CLOEXEC)) {}

Listener::~Listener() {
    drop();
    if (m_fd >= 0)
        ::close(m_fd);
}

void Listener::drop() {
    if (m_socket >= 0)
        epoll_ctl(m_fd, EPOLL_CTL_DEL, m_socket, nullptr);
    m_socket = -1;
    m_connection.close();
}

bool Listener::takeFrom(Connection& connection) {
    bool any = false;
    while (connection.usable()) {
        const std::unique_ptr<PGnotify, FreeNotification> one{PQnotifies(connection.get())};
        if (!one)
            break;
        any = true;
    }
    return any;
}

void Listener::join(Connection& connection) {
    const int process = PQbackendPID(connection.get());
    if (process == 0 || process == m_joined || process == m_refused || m_fd < 0)
        return;
    m_joined = m_refused = 0;
    drop();
    if (!succeeded(connection.execute(std::string("LISTEN ") + wakeChannel).get())) {
        m_refused = process;
        return;
    }
    epoll_event event{};
    event.events = EPOLLIN;
    const int socket = PQsocket(connection.get());
    // The number may be that of one that was watched before and has been closed since.
    if (epoll_ctl(m_fd, EPOLL_CTL_ADD, socket, &event) == 0 ||
        epoll_ctl(m_fd, EPOLL_CTL_MOD, socket, &event) == 0)
        m_joined = process;
}

void Listener::leave(Connection& connection) {
    m_refused = 0;
    if (std::exchange(m_joined, 0) == 0 || !connection.usable())
        return;
    epoll_ctl(m_fd, EPOLL_CTL_DEL, PQsocket(connection.get()), nullptr);
    connection.execute("UNLISTEN *");
    takeFrom(connection);
}

void Listener::take() {
    // Before alive() closes a broken connection, its socket has to leave the watch: the number may
    // be given to another file at once.
    while (m_connection.usable()) {
        pollfd wait = {m_socket, POLLIN, 0};
        if (::poll(&wait, 1, 0) != 1)
            break;
        if (PQconsumeInput(m_connection.get()) == 0)
            break;
        while (
            const std::unique_ptr<PGnotify, FreeNotification> one{PQnotifies(m_connection.get())})
            continue;
    }
    if (!m_connection.usable())
        drop();
    assert((m_socket < 0) == !m_connection.usable());
}

void Listener::revive(const Url& url) {
    take();
    const auto now = std::chrono::steady_clock::now();
    if (listening() || isJoined() || m_fd < 0 || now < m_next)
        return;
    drop();
    const auto listen = [&]() -> bool {
        if (!m_connection.open(url).ok() ||
            !succeeded(m_connection.execute(std::string("LISTEN ") + wakeChannel).get()))
            return false;
        m_socket = PQsocket(m_connection.get());
        epoll_event event{};
        event.events = EPOLLIN;
        return epoll_ctl(m_fd, EPOLL_CTL_ADD, m_socket, &event) == 0;
    };
    if (listen()) {
        m_pause = {};
        m_next = {};
        return;
    }
    drop();
    using std::chrono::milliseconds;
    m_pause = std::clamp(m_pause * 2, milliseconds(250), milliseconds(15000));
    m_next = std::chrono::steady_clock::now() + m_pause;
}

} // namespace orvo::store::postgres
