// bench_followers [FOLLOWERS] [SECONDS]: what many operators cost one PostgreSQL server. 500
// followers by default, for 20 seconds each time, at 10 changes a second.
//
// A follower is what the client reads the change log with (platform/client/LogFollower.h): a thread
// and a connection of its own. All of them run in this one process, so their processor time is
// that of the reading alone, without windows.
//
//  - apart: each follows a desktop of its own; a change concerns one of them. Nobody is to be given
//    a change of another desktop.
//  - together: all follow one desktop; each change goes to all of them.
//  - idle: nothing changes.
//
// The delay of a change is from before it is written until the last follower whom it concerns has
// it. Budget: 250 ms for the 99th of a hundred. The exit code is 1 if it is missed.
#include "bench/Budget.h"
#include "bench/desk/Site.h"
#include "platform/client/LogFollower.h"
#include "platform/store/PostgresApi.h"
#include "platform/store/Store.h"
#include "tests/store/PostgresCluster.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <sys/resource.h>
#include <vector>

using namespace orvo;
using bench::must;
using store::test::PostgresCluster;

namespace {

constexpr int perSecond = 10;
constexpr double budget = 250; // ms

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

double ownSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Of the server and all its sessions.
struct Server {
    double cpu = 0;    ///< seconds
    double memory = 0; ///< MiB, the proportional share
};

Server serverUse(const PostgresCluster& cluster) {
    QFile file(cluster.data() + "/postmaster.pid");
    must(file.open(QIODevice::ReadOnly), "no postmaster.pid");
    const QByteArray master = file.readLine().trimmed();
    Server use;
    for (const QString& entry : QDir("/proc").entryList(QDir::Dirs)) {
        QFile stat("/proc/" + entry + "/stat");
        if (entry.toInt() <= 0 || !stat.open(QIODevice::ReadOnly))
            continue;
        const QByteArray line = stat.readAll();
        const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
        if (fields.size() < 15 || (fields[1] != master && entry.toUtf8() != master))
            continue;
        QFile time("/proc/" + entry + "/schedstat"); // `stat` counts in steps of 10 ms
        if (time.open(QIODevice::ReadOnly))
            use.cpu += time.readAll().split(' ').first().toDouble() / 1e9;
        QFile memory("/proc/" + entry + "/smaps_rollup");
        if (memory.open(QIODevice::ReadOnly))
            for (const QByteArray& one : memory.readAll().split('\n'))
                if (one.startsWith("Pss:"))
                    use.memory += one.mid(4).trimmed().split(' ').first().toDouble() / 1024;
    }
    return use;
}

class Site {
public:
    Site(const PostgresCluster& cluster, int followers, int seconds)
        : m_cluster(cluster)
        , m_url(cluster.url("site"))
        , m_followers(followers)
        , m_seconds(seconds) {
        bench::SiteSize size;
        size.desktops = followers + 1;
        size.resources = 20000;
        bench::makePostgresSite(m_url, size);
        m_writer = open();
        must(m_connection.open(parsed()).ok(), "no second connection");
    }

    void run(const char* what, bool together, bool changes) {
        Server quiet = serverUse(m_cluster);
        std::vector<std::unique_ptr<client::LogFollower>> all;
        std::map<std::string, int> awaited; // by caption: how many do not have it yet
        std::map<std::string, qint64> done;
        QElapsedTimer clock;
        clock.start();
        int foreign = 0;
        store::LogCursor end;
        must(m_writer->logEnd(&end).ok(), "no end of the log");
        for (int i = 0; i < m_followers; ++i) {
            const std::string desktop = "desk" + std::to_string(together ? 1 : i + 2);
            const std::string prefix = "element" + std::to_string(together ? 1 : i + 2) + "_";
            all.push_back(std::make_unique<client::LogFollower>(open()));
            client::LogFollower* one = all.back().get();
            QObject::connect(one, &client::LogFollower::arrived, [&, one, prefix] {
                for (const store::Change& change : one->take().changes) {
                    if (!change.key.starts_with(prefix))
                        ++foreign;
                    if (--awaited[change.after] == 0)
                        done[change.after] = clock.nsecsElapsed();
                }
            });
            one->wantOnly(QString::fromStdString(desktop));
            one->begin(end);
        }
        wait(3000, clock); // until all have their connections and statements
        const Server before = serverUse(m_cluster);
        const double ownBefore = ownSeconds();
        std::map<std::string, qint64> begun;
        const qint64 from = clock.elapsed();
        const int count = changes ? m_seconds * perSecond : 0;
        for (int i = 0; i < count; ++i) {
            wait(from + i * 1000 / perSecond - clock.elapsed(), clock);
            const std::string caption = what + std::to_string(i);
            const std::string after = "{\"caption\":\"" + caption + "\"}";
            awaited[after] = together ? m_followers : 1;
            begun[after] = clock.nsecsElapsed();
            const int desktop = together ? 1 : i * 7 % m_followers + 2;
            write("element" + std::to_string(desktop) + "_" + (together ? "3" : "1"), caption);
        }
        wait(from + m_seconds * 1000 - clock.elapsed(), clock);
        for (int i = 0; i < 100 && done.size() < begun.size(); ++i)
            wait(100, clock);
        const double time = static_cast<double>(clock.elapsed() - from) / 1000;
        const Server after = serverUse(m_cluster);
        const double server = after.cpu - before.cpu;
        const double own = ownSeconds() - ownBefore;
        std::vector<double> delays;
        for (const auto& [caption, at] : begun)
            delays.push_back(
                done.count(caption) == 0 ? 1e9 : static_cast<double>(done[caption] - at) / 1e6);
        std::sort(delays.begin(), delays.end());
        std::printf("%s, %d followers: server %.1f %% and followers %.1f %% of one processor", what,
                    m_followers, server / time * 100, own / time * 100);
        if (!delays.empty())
            std::printf(", %.1f ms and %.1f ms a change; delay median %.0f ms; changes of other "
                        "desktops given: %d",
                        server / count * 1000, own / count * 1000, delays[delays.size() / 2],
                        foreign);
        std::printf(
            "; %d sessions, server memory %.1f MiB more than without (%.2f MiB a session)\n",
            m_followers, after.memory - quiet.memory, (after.memory - quiet.memory) / m_followers);
        if (!delays.empty()) {
            const double late = delays[delays.size() * 99 / 100];
            std::printf("%s: delay p99 %.0f ms", what, late);
            bench::judge(late, bench::Bound::AtMost, budget, " ms");
        }
        std::fflush(stdout);
        bench::isMissed() = bench::isMissed() || foreign != 0;
    }

private:
    store::postgres::Url parsed() const {
        store::postgres::Url url;
        must(url.parse(m_url).ok(), m_url);
        return url;
    }
    std::unique_ptr<store::Store> open() const {
        store::Status status;
        auto opened = store::open(m_url, {}, &status);
        must(opened != nullptr, status.text);
        return opened;
    }
    void write(const std::string& key, const std::string& caption) {
        const auto result = m_connection.query(
            "UPDATE public.\"Menu\" SET \"caption\" = $2 WHERE lower(\"KeyLink\") = $1",
            store::postgres::Parameters().text(key).text(caption));
        must(store::postgres::succeeded(result.get()), "not written");
    }
    /// Takes what comes meanwhile.
    static void wait(qint64 milliseconds, const QElapsedTimer& clock) {
        const qint64 until = clock.elapsed() + milliseconds;
        do {
            QCoreApplication::processEvents();
            QThread::usleep(500);
        } while (clock.elapsed() < until);
    }

    const PostgresCluster& m_cluster;
    const std::string m_url;
    const int m_followers, m_seconds;
    std::unique_ptr<store::Store> m_writer;
    store::postgres::Connection m_connection;
};

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    const auto number = [&](int at, int otherwise) {
        const int value = QString(argc > at ? argv[at] : "").toInt();
        return value > 0 ? value : otherwise;
    };
    const int followers = number(1, 500);
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);
    const auto cluster = PostgresCluster::start();
    must(cluster != nullptr, "no PostgreSQL server");
    must(cluster->shell("postgres", "ALTER SYSTEM SET max_connections = " +
                                        QByteArray::number(followers * 2 + 50)) &&
             cluster->restart("fast"),
         "the server takes no more connections");
    Site site(*cluster, followers, number(2, 20));
    site.run("apart", false, true);
    site.run("together", true, true);
    site.run("idle", false, false);
    return bench::exitCode();
}
