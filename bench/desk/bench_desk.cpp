// bench_desk [--small] [--postgres] [--store URL]: what the start of an operator's desktop costs.
//
//  - start: from the start of the process until the rows of the menu have their places in a window
//    that is shown, median of five after one that fills the caches. Budget: 1 s.
//  - memory: the proportional share (Pss) of the process ten seconds later, when its icons are
//    copied, above that of an empty Qt window. Budget: 60 MiB.
//
// The store has 1,000 desktops and 1,000,000 resources (with --small 100 and 10,000), is made by
// SQL and goes with the program, unless --store names one that is there. The client is the one
// beside this program. With DISPLAY set it shows real windows. The exit code is 1 if a budget is
// missed.
#include "bench/Budget.h"
#include "bench/Timing.h"
#include "bench/desk/Site.h"
#include "tests/store/PostgresCluster.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QMainWindow>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>

#include <cstdio>

using namespace orvo;
using bench::median;
using store::test::PostgresCluster;

namespace {

constexpr double startBudget = 1000; // ms
constexpr double memoryBudget = 60;  // MiB

/// Of a process, in MiB.
double pss(qint64 process) {
    QFile file(QStringLiteral("/proc/%1/smaps_rollup").arg(process));
    if (file.open(QIODevice::ReadOnly))
        for (const QByteArray& line : file.readAll().split('\n'))
            if (line.startsWith("Pss:"))
                return line.mid(4).trimmed().split(' ').first().toDouble() / 1024;
    bench::must(false, "the memory of a process cannot be read"); // nothing would keep any budget
    return 0;
}

struct Client {
    QProcess process;
    QLocalSocket socket;
    double startMs = 0;

    Client(const QString& url, const QString& directory) {
        const QString name = directory + "/inspect.sock";
        QElapsedTimer timer;
        timer.start();
        // What it remembers of its user's windows is not this user's.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_CONFIG_HOME", directory + "/config");
        process.setProcessEnvironment(environment);
        process.setStandardErrorFile(directory + "/client.err", QIODevice::Append);
        process.start(QCoreApplication::applicationDirPath() + "/orvo-client",
                      {"--store", url, "--login", "operator", "--work-dir", directory + "/work",
                       "--inspect", name, "--desktop", bench::siteDesktop});
        while (socket.state() != QLocalSocket::ConnectedState && timer.elapsed() < 30000) {
            socket.connectToServer(name);
            if (!socket.waitForConnected(50))
                QThread::msleep(2);
        }
        while (timer.elapsed() < 30000 && !showsRows())
            QThread::msleep(2);
        startMs = static_cast<double>(timer.nsecsElapsed()) / 1e6;
        if (!showsRows()) {
            QFile errors(directory + "/client.err");
            bench::must(false, "the client shows no menu: " + (errors.open(QIODevice::ReadOnly)
                                                                   ? errors.readAll().toStdString()
                                                                   : std::string()));
        }
    }
    ~Client() {
        socket.abort();
        process.terminate();
        process.waitForFinished();
    }
    QJsonObject ask(const char* question) {
        socket.write(QByteArray(question) + '\n');
        QByteArray line;
        while (!line.endsWith('\n') && (socket.bytesAvailable() > 0 || socket.waitForReadyRead()))
            line += socket.readLine();
        return QJsonDocument::fromJson(line).object();
    }
    /// Only rows on the screen have places.
    bool showsRows() {
        const QJsonArray rows = ask("tree deskTree")["rows"].toArray();
        return rows.size() >= 20 && !rows[0].toObject()["rects"].toArray().isEmpty();
    }
};

/// What an empty window of the same libraries holds.
double emptyWindow() {
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), {"--empty-window"});
    bench::must(process.waitForStarted(), "the empty window does not start");
    QThread::sleep(3);
    const double size = pss(process.processId());
    process.terminate();
    process.waitForFinished();
    return size;
}

void measure(const char* what, const QString& url) {
    QTemporaryDir directory;
    std::vector<double> starts;
    double memory = 0;
    for (int i = 0; i < 6; ++i) {
        Client client(url, directory.path());
        if (i > 0)
            starts.push_back(client.startMs);
        if (i < 5)
            continue;
        QThread::sleep(10);
        memory = pss(client.process.processId());
    }
    const double above = memory - emptyWindow();
    std::printf("%s: start %.0f ms", what, median(starts));
    bench::judge(median(starts), bench::Bound::AtMost, startBudget, " ms");
    std::printf("%s: memory %.1f MiB above an empty window", what, above);
    bench::judge(above, bench::Bound::AtMost, memoryBudget, " MiB");
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.contains("--empty-window")) {
        QMainWindow window;
        window.resize(1366, 900);
        window.show();
        return QApplication::exec();
    }
    if (const int at = arguments.indexOf("--store"); at > 0) {
        measure("store", arguments.value(at + 1));
        return bench::exitCode();
    }
    bench::SiteSize size;
    if (arguments.contains("--small"))
        size.desktops = 100, size.resources = 10000;
    if (!arguments.contains("--postgres")) {
        QTemporaryDir directory;
        const std::string path = directory.filePath("site.db").toStdString();
        bench::makeSqliteSite(path, size);
        measure("SQLite", QString::fromStdString(path));
    }
    const auto cluster = PostgresCluster::start();
    bench::must(cluster != nullptr, "no PostgreSQL server");
    const std::string url = cluster->url("site");
    bench::makePostgresSite(url, size);
    measure("PostgreSQL", QString::fromStdString(url));
    return bench::exitCode();
}
