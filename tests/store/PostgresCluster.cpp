#include "PostgresCluster.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <chrono>
#include <thread>

namespace orvo::store::test {

std::unique_ptr<PostgresCluster> PostgresCluster::start() {
    std::unique_ptr<PostgresCluster> cluster(new PostgresCluster);
    QTemporaryDir directory(QDir::tempPath() + "/orvo-pg-XXXXXX");
    directory.setAutoRemove(false); // the keeper does that
    cluster->m_directory = directory.path();
    // In a session of its own, so that it outlives whoever is killed together with this process;
    // and through a pipe that no other child holds open.
    const QString script = QFile::decodeName(qgetenv("ORVO_SOURCE_DIR")) + "/scripts/pg-cluster";
    const QString command =
        QString("exec setsid -f '%1' '%2' >/dev/null").arg(script, directory.path());
    cluster->m_pipe.reset(popen(QFile::encodeName(command).constData(), "we"));
    QElapsedTimer clock;
    clock.start();
    const QFile ready(directory.filePath("ready"));
    QFile failed(directory.filePath("failed"));
    while (!ready.exists() && !failed.exists() && clock.elapsed() < 90000)
        QThread::msleep(20);
    if (!cluster->readReady()) {
        failed.open(QIODevice::ReadOnly);
        qWarning("No PostgreSQL: %s", failed.readAll().constData());
        return nullptr;
    }
    return cluster;
}

bool PostgresCluster::readReady() {
    QFile ready(m_directory + "/ready");
    if (!ready.open(QIODevice::ReadOnly))
        return false;
    const QList<QByteArray> lines = ready.readAll().split('\n');
    m_programs = QFile::decodeName(lines.value(0));
    m_data = QFile::decodeName(lines.value(1));
    m_as = QString(lines.value(2)).split(' ', Qt::SkipEmptyParts);
    return true;
}

PostgresCluster* PostgresCluster::shared() {
    static const std::unique_ptr<PostgresCluster> cluster = [] {
        QFile where(QFile::decodeName(qgetenv("ORVO_PG_CLUSTER")));
        std::unique_ptr<PostgresCluster> running(new PostgresCluster);
        if (where.open(QIODevice::ReadOnly))
            running->m_directory = QFile::decodeName(where.readAll().trimmed());
        return running->readReady() ? std::move(running) : start();
    }();
    return cluster.get();
}

PostgresCluster::~PostgresCluster() {
    if (!m_pipe)
        return; // another's
    thaw();
    m_pipe.reset();
    QElapsedTimer clock;
    clock.start();
    while (QDir(m_directory).exists() && clock.elapsed() < 20000)
        QThread::msleep(10);
}

std::string PostgresCluster::url(const std::string& database, const std::string& user) const {
    return "postgresql://" + user + "@/" + database + "?host=" + m_directory.toStdString();
}

bool PostgresCluster::run(const QString& program, const QStringList& arguments,
                          QByteArray* output) const {
    QStringList command = m_as;
    command << m_programs + "/" + program << arguments;
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    // A server started here must not hold the pipe open.
    if (output == nullptr)
        process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardInputFile(QProcess::nullDevice());
    process.setWorkingDirectory(m_directory);
    const QString name = command.takeFirst();
    process.start(name, command);
    const bool finished = process.waitForFinished(120000);
    if (output != nullptr)
        *output = process.readAll();
    return finished && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

bool PostgresCluster::shell(const QString& database, const QByteArray& sql, QByteArray* output,
                            const QString& user, const QString& port) const {
    QProcess shell;
    shell.setProcessChannelMode(QProcess::MergedChannels);
    shell.start(m_programs + "/psql",
                {"-X", "-q", "-A", "-t", "-v", "ON_ERROR_STOP=1", "-h", m_directory, "-p", port,
                 "-U", user, "-d", database, "-f", "-"});
    shell.write("SET client_encoding = 'UTF8';\n" + sql + "\n");
    shell.closeWriteChannel();
    const bool finished = shell.waitForFinished(60000);
    if (output != nullptr)
        *output = shell.readAll().trimmed();
    return finished && shell.exitStatus() == QProcess::NormalExit && shell.exitCode() == 0;
}

bool PostgresCluster::terminateAll() const {
    return shell("postgres",
                 "SELECT pg_terminate_backend(pid, 10000) FROM pg_stat_activity WHERE pid <> "
                 "pg_backend_pid() AND backend_type = 'client backend';");
}

bool PostgresCluster::startStandby(Shipping shipping) const {
    const QString standby = m_directory + "/standby";
    QByteArray words;
    if (!run("pg_basebackup",
             {"-h", m_directory, "-U", "postgres", "-D", standby, "-R", "-X", "stream", "-c",
              "fast", "--no-sync"},
             &words)) {
        qWarning("%s", words.constData());
        return false;
    }
    return run("pg_ctl", {"start", "-s", "-w", "-D", standby, "-o", "-p 5433", "-l",
                          standby + "/server.log"}) &&
           (shipping == Shipping::Asynchronous ||
            shell("postgres",
                  "ALTER SYSTEM SET synchronous_standby_names = '*'; SELECT pg_reload_conf();"));
}

bool PostgresCluster::stopShipping() const {
    constexpr int tries = 300;
    QByteArray end, state;
    if (!shell("postgres", "SELECT 'at ' || pg_current_wal_flush_lsn()", &end))
        return false;
    const auto onStandby = [&](const QByteArray& sql, QByteArray* output) {
        return shell("postgres", sql, output, "postgres", "5433");
    };
    const QByteArray lsn = end.mid(end.indexOf("at ") + 3).trimmed().split('\n').first().trimmed();
    for (int i = 0; i < tries; ++i) {
        onStandby("SELECT CASE WHEN pg_last_wal_replay_lsn() >= '" + lsn +
                      "'::pg_lsn THEN 'there' END",
                  &state);
        if (state.contains("there"))
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    if (!state.contains("there") || !onStandby("ALTER SYSTEM SET primary_conninfo = ''", nullptr) ||
        !onStandby("SELECT pg_reload_conf()", nullptr))
        return false;
    for (int i = 0; i < tries; ++i) {
        if (onStandby("SELECT 'receivers ' || count(*) FROM pg_stat_wal_receiver", &state) &&
            state.contains("receivers 0"))
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

std::string PostgresCluster::urlOfBoth(const std::string& database) const {
    const std::string directory = m_directory.toStdString();
    return "postgresql://postgres@/" + database + "?host=" + directory + "," + directory +
           "&port=5432,5433&target_session_attrs=read-write";
}

bool PostgresCluster::failOver() const {
    return run("pg_ctl", {"stop", "-s", "-m", "immediate", "-D", m_data}) &&
           run("pg_ctl", {"promote", "-s", "-w", "-D", m_directory + "/standby"}) &&
           shell("postgres",
                 "ALTER SYSTEM SET synchronous_standby_names = ''; SELECT pg_reload_conf();",
                 nullptr, "postgres", "5433");
}

bool PostgresCluster::signalAll(const char* name) const {
    QFile file(m_data + "/postmaster.pid");
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QString postmaster = file.readLine().trimmed();
    // The postmaster first, so that it makes no more; its own processes are its children.
    return !postmaster.isEmpty() && QProcess::execute("kill", {"-s", name, postmaster}) == 0 &&
           QProcess::execute("pkill", {"--signal", name, "-P", postmaster}) == 0;
}

bool PostgresCluster::restart(const char* mode) const {
    return run("pg_ctl",
               {"restart", "-s", "-w", "-m", mode, "-D", m_data, "-l", m_data + "/server.log"});
}

} // namespace orvo::store::test
