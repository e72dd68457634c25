#include "PostgresProxy.h"

#include <QDir>
#include <QTemporaryDir>

#include <array>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace orvo::store::test {

namespace {

sockaddr_un address(const QString& directory) {
    sockaddr_un out{};
    out.sun_family = AF_UNIX;
    const QByteArray path = QFile::encodeName(directory + "/.s.PGSQL.5432");
    std::memcpy(out.sun_path, path.constData(), size_t(path.size()));
    return out;
}

const sockaddr* generic(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

QString newDirectory() {
    QTemporaryDir directory(QDir::tempPath() + "/orvo-proxy-XXXXXX");
    directory.setAutoRemove(false);
    return directory.path();
}

} // namespace

PostgresProxy::PostgresProxy(const QString& server)
    : m_server(server)
    , m_directory(newDirectory()) {
    m_listen = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_un own = address(m_directory);
    if (::bind(m_listen, generic(own), sizeof own) != 0 || ::listen(m_listen, 16) != 0)
        qFatal("no socket for the proxy");
    m_thread = std::thread([this] { run(); });
}

PostgresProxy::~PostgresProxy() {
    m_stop = true;
    m_thread.join();
    for (Pair& pair : m_pairs)
        end(pair);
    ::close(m_listen);
    QDir(m_directory).removeRecursively();
}

void PostgresProxy::end(Pair& pair) {
    for (int* fd : {&pair.client, &pair.server}) {
        if (*fd >= 0)
            ::close(*fd);
        *fd = -1;
    }
}

void PostgresProxy::accept() {
    Pair pair;
    pair.client = ::accept4(m_listen, nullptr, nullptr, SOCK_CLOEXEC);
    if (pair.client < 0)
        return;
    if (m_open) {
        pair.server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const sockaddr_un there = address(m_server);
        if (::connect(pair.server, generic(there), sizeof there) == 0) {
            m_pairs.push_back(pair);
            return;
        }
    }
    end(pair);
}

bool PostgresProxy::carry(int from, int to) {
    std::array<char, 65536> bytes;
    const ssize_t got = ::recv(from, bytes.data(), bytes.size(), 0);
    for (ssize_t sent = 0; sent < got;) {
        const ssize_t now = ::send(to, bytes.data() + sent, size_t(got - sent), MSG_NOSIGNAL);
        if (now <= 0)
            return false;
        sent += now;
    }
    return got > 0;
}

void PostgresProxy::run() {
    while (!m_stop) {
        std::vector<pollfd> waits = {{m_listen, POLLIN, 0}};
        for (const Pair& pair : m_pairs) {
            waits.push_back({pair.client, POLLIN, 0}); // a negative number is passed over
            waits.push_back({pair.server, POLLIN, 0});
        }
        if (::poll(waits.data(), waits.size(), 20) <= 0)
            continue;
        for (size_t i = 0; i < m_pairs.size(); ++i) {
            Pair& pair = m_pairs[i];
            if (waits[1 + 2 * i].revents != 0) {
                const Mode mode = m_mode.exchange(Pass);
                if (mode == LoseRequest || !carry(pair.client, pair.server)) {
                    end(pair);
                } else if (mode == HalfOpen) {
                    ::close(pair.client);
                    pair.client = -1;
                    continue;
                }
                pair.answersLost = mode == LoseAnswers;
            }
            if (waits[2 + 2 * i].revents != 0 && pair.server >= 0) {
                if (pair.client < 0) { // nobody to tell
                    std::array<char, 4096> bytes;
                    if (::recv(pair.server, bytes.data(), bytes.size(), 0) <= 0)
                        end(pair);
                } else if (pair.answersLost || !carry(pair.server, pair.client)) {
                    end(pair);
                }
            }
        }
        if (waits[0].revents != 0)
            accept();
    }
}

} // namespace orvo::store::test
