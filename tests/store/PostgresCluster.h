// PostgresCluster.h: a PostgreSQL server of the test's own, on a Unix socket in a temporary
// directory. It goes, with its directory, when the object does or the process ends in any way.
#ifndef ORVO_TESTS_STORE_POSTGRESCLUSTER_H
#define ORVO_TESTS_STORE_POSTGRESCLUSTER_H

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdio>
#include <memory>
#include <string>

namespace orvo::store::test {

class PostgresCluster {
public:
    /// Null, with a warning, if no server comes up. Local users are trusted, but for the login
    /// "needs_password". "postgres" is the superuser.
    static std::unique_ptr<PostgresCluster> start();
    /// One for the whole process: that of the CTest run, if ORVO_PG_CLUSTER names the file that
    /// tells where it is, else its own. Nobody stops or freezes it. Null as with start.
    static PostgresCluster* shared();
    ~PostgresCluster();

    /// The URL of a database; `user` with a password, if need be.
    std::string url(const std::string& database, const std::string& user = "postgres") const;
    QString directory() const { return m_directory; }
    QString data() const { return m_data; }

    /// Runs one of the server's programs as the cluster's user; its words in `output`.
    bool run(const QString& program, const QStringList& arguments,
             QByteArray* output = nullptr) const;
    /// Gives a text to the server's shell, which stops at the first error.
    bool shell(const QString& database, const QByteArray& sql, QByteArray* output = nullptr,
               const QString& user = "postgres", const QString& port = "5432") const;
    /// pg_ctl restart, by default without any warning to those connected.
    bool restart(const char* mode = "immediate") const;
    /// Ends every session on the server but the one that asks, and waits until they are gone.
    bool terminateAll() const;

    enum class Shipping { Synchronous, Asynchronous };
    /// Starts a standby at port 5433 of the same directory; if it is synchronous, a commit is
    /// reported from then on when the standby has it too.
    bool startStandby(Shipping shipping = Shipping::Synchronous) const;
    /// Waits until the standby has everything, and lets it get nothing more.
    bool stopShipping() const;
    /// The URL with both servers.
    std::string urlOfBoth(const std::string& database) const;
    /// Stops the first server at once and lets the standby take over. The first stays down.
    bool failOver() const;

    /// Stops every process of the server where it stands, and lets them go on. A frozen server is
    /// let go on before it is taken down.
    bool freeze() const { return signalAll("STOP"); }
    bool thaw() const { return signalAll("CONT"); }

private:
    PostgresCluster() = default;
    bool readReady();
    bool signalAll(const char* name) const;
    struct Close {
        void operator()(FILE* pipe) const { pclose(pipe); }
    };
    QString m_directory, m_programs, m_data;
    QStringList m_as; ///< put before a command
    std::unique_ptr<FILE, Close> m_pipe;
};

} // namespace orvo::store::test

#endif
