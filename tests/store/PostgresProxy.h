// PostgresProxy.h: stands between a store and its server, and breaks connections where it hurts.
#ifndef ORVO_TESTS_STORE_POSTGRESPROXY_H
#define ORVO_TESTS_STORE_POSTGRESPROXY_H

#include <QString>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace orvo::store::test {

class PostgresProxy {
public:
    enum Mode {
        Pass,        ///< carries bytes both ways
        LoseAnswers, ///< the next request reaches the server; its answer is lost with the
                     ///< connection
        LoseRequest, ///< the next request is lost with the connection
        HalfOpen, ///< as LoseAnswers, at once, and the server is not told that the client is gone
    };
    /// A socket in a directory of its own that leads to the server's socket in `server`.
    explicit PostgresProxy(const QString& server);
    ~PostgresProxy();

    /// The directory of the socket, for a URL.
    std::string directory() const { return m_directory.toStdString(); }
    /// What happens to the next request on any connection; then bytes pass again.
    void next(Mode mode) { m_mode = mode; }
    /// Whether connections are taken.
    void setOpen(bool open) { m_open = open; }
    /// Whether what next() asked for has happened.
    bool happened() const { return m_mode == Pass; }

private:
    struct Pair {
        int client = -1, server = -1;
        bool answersLost = false; ///< the server's next bytes end both
    };
    void run();
    void accept();
    static bool carry(int from, int to);
    static void end(Pair& pair);

    const QString m_server, m_directory;
    int m_listen = -1;
    std::vector<Pair> m_pairs;
    std::atomic<Mode> m_mode = Pass;
    std::atomic<bool> m_open = true, m_stop = false;
    std::thread m_thread;
};

} // namespace orvo::store::test

#endif
