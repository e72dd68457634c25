#include "platform/store/PostgresWake.h"

#include "platform/store/PostgresSchema.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <poll.h>
#include <sys/epoll.h>
#include <unistd.h>

namespace orvo::store::postgres {

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

void Listener::take() {
    struct Free {
        void operator()(PGnotify* notification) const { PQfreemem(notification); }
    };
    // Before alive() closes a broken connection, its socket has to leave the watch: the number may
    // be given to another file at once.
    while (m_connection.usable()) {
        pollfd wait = {m_socket, POLLIN, 0};
        if (::poll(&wait, 1, 0) != 1)
            break;
        if (PQconsumeInput(m_connection.get()) == 0)
            break;
        while (const std::unique_ptr<PGnotify, Free> one{PQnotifies(m_connection.get())})
            continue;
    }
    if (!m_connection.usable())
        drop();
    assert((m_socket < 0) == !m_connection.usable());
}

void Listener::revive(const Url& url) {
    take();
    const auto now = std::chrono::steady_clock::now();
    if (listening() || m_fd < 0 || now < m_next)
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
