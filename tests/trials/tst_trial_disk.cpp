// A full disk under a store, on either database: it is told in words, nothing is half there, what
// was called saved stays, and everything goes on when there is room again. ORVO_TRIAL_ROUNDS is the
// number of disks in each case.
#include "TrialStore.h"
#include "WritingPlan.h"

#include "tests/store/Batch.h"
#include "tests/store/LogReplay.h"
#include "tests/store/PostgresCluster.h"
#include "tests/store/SqliteFiles.h"

#include <QDir>
#include <QElapsedTimer>
#include <QStorageInfo>
#include <QThread>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <random>

using namespace orvo;
using namespace orvo::test;
using store::test::SmallDisk;

namespace {

/// What the user is told of it.
/// In our words or the system's.
bool tellsOfFullDisk(const QString& words) {
    return words.contains("не осталось места") || words.contains(std::strerror(ENOSPC));
}

QByteArray mebibytes(double count) {
    return "size=" + QByteArray::number(qint64(count * 1024)) + "k";
}

} // namespace

class TestTrialDisk : public QObject {
    Q_OBJECT
private slots:
    void init() { m_admin = std::make_unique<AdminRun>(); }

    void sqliteStoreKeepsWhatWasSaved() {
        int saved = 0, refusals = 0;
        const int wanted = rounds(2);
        for (int round = 0; round < wanted; ++round) {
            const QString place = m_admin->path(QString("disk%1").arg(round));
            QDir().mkpath(place);
            SmallDisk disk(place, mebibytes(4 + below(300) / 10.0));
            if (!disk.mounted())
                QSKIP("needs the right to mount a file system");
            const QString file = place + "/orvo.db";
            const auto admin = [&](const QStringList& words) {
                return m_admin->plain(QStringList{"--store", file} + words);
            };
            QCOMPARE(admin({"init"}).code, 0);
            QCOMPARE(admin({"demo"}).code, 0);
            store::Status status;
            const std::string url = "sqlite://" + file.toStdString();
            // A second client, which has it open all the time.
            auto other = store::openMaintained(url, {"other", false}, &status);
            QVERIFY2(other, status.text.c_str());
            PlannedWriter writer(url, seed() + unsigned(round), desktopOf(*other));
            QVERIFY(writer.start());
            const bool killed = writer.killAfter(600000);
            const QString words = writer.words();
            const QString what =
                QString("disk %1, after %2 steps: ").arg(round).arg(writer.steps());
            QVERIFY2(!killed && tellsOfFullDisk(words), qPrintable(what + words));
            for (int i = 0; i < 5; ++i) {
                status = store::test::Batch("MenuFileExt")
                             .insert(qPrintable(QString("f%1").arg(i)),
                                     {{"fileExt", QString(100000, 'x')}})
                             .send(*other);
                refusals += status.ok() ? 0 : 1;
                QVERIFY2(status.ok() || tellsOfFullDisk(QString::fromStdString(status.text)),
                         qPrintable(what + status.text.c_str()));
            }
            const AdminResult checked = admin({"check"});
            QVERIFY2(!checked.out.contains("база данных: ") && !checked.err.contains("повреждён") &&
                         (checked.code <= 1 || tellsOfFullDisk(checked.err)),
                     qPrintable(what + checked.out + checked.err));
            // Room again: those who have it open go on.
            QVERIFY(disk.resize(mebibytes(200)));
            status = store::test::Batch("MenuFileExt").insert("later").send(*other);
            QVERIFY2(status.ok(), qPrintable(what + status.text.c_str()));
            QString found = fault(url, writer);
            QVERIFY2(found.isEmpty(), qPrintable(what + found));
            QVERIFY(writer.start());
            QVERIFY2(writer.killAfter(500), qPrintable(what + writer.words()));
            found = fault(url, writer);
            QVERIFY2(found.isEmpty(), qPrintable(what + found));
            saved += writer.steps();
        }
        qInfo(
            "%d full disks; %d writes said to be saved, all there; %d refusals to a second client",
            wanted, saved, refusals);
    }

    void commandsOnSqliteAreWholeOrRefused() {
        const AdminRun source;
        QVERIFY(source.init());
        QCOMPARE(source.run({"demo"}).code, 0);
        QCOMPARE(source.run({"ext", "add", ".other"}).code, 0);
        const QString json = source.path("all.json"), copy = source.path("copy");
        QCOMPARE(source.run({"export", json}).code, 0);
        source.write("big", QByteArray(3000000, 'b'));
        QCOMPARE(source.run({"put", "file", source.path("big")}).code, 0);
        QCOMPARE(source.run({"backup", copy}).code, 0);
        const int wanted = 5 * rounds(2);
        int refused = 0;
        for (int round = 0; round < wanted; ++round) {
            const QString place = m_admin->path(QString("disk%1").arg(round));
            QDir().mkpath(place);
            SmallDisk disk(place, mebibytes(20));
            if (!disk.mounted())
                QSKIP("needs the right to mount a file system");
            const QString file = place + "/orvo.db", url = file;
            const auto admin = [&](const QStringList& words) {
                return m_admin->plain(QStringList{"--store", url} + words);
            };
            QCOMPARE(admin({"init"}).code, 0);
            QCOMPARE(admin({"demo"}).code, 0);
            const QStringList all[] = {{"put", "file", source.path("big")},
                                       {"import", "--replace", json},
                                       {"restore", "--replace", copy},
                                       {"backup", place + "/backup"},
                                       {"export", place + "/export"}};
            const QStringList command = all[round % 5];
            const QString before = admin({"export", "-"}).out;
            qint64 used = 0;
            for (const QFileInfo& entry : QDir(place).entryInfoList(QDir::Files))
                used += (entry.size() + 4095) / 4096 * 4096;
            // Some room, but not enough.
            QVERIFY(disk.resize(mebibytes(double(used) / 1048576 + below(100) / 100.0)));
            const QStringList files = QDir(place).entryList(QDir::Files);
            const AdminResult result = admin(command);
            const QString what =
                QString("%1, %2: %3")
                    .arg(round)
                    .arg(command.join(' '), QString::number(result.code) + result.err);
            QVERIFY2(result.code == 0 || (result.code == 2 && (result.err.contains("места") ||
                                                               tellsOfFullDisk(result.err))),
                     qPrintable(what));
            QVERIFY(disk.resize(mebibytes(100)));
            if (result.code != 0) {
                ++refused;
                const QString found = faultOf(file, false);
                QVERIFY2(found.isEmpty(), qPrintable(what + "; refused: " + found));
                QVERIFY2(admin({"export", "-"}).out == before, qPrintable(what + "was changed"));
                QStringList left = QDir(place).entryList(QDir::Files);
                for (const char* name : {"orvo.db-wal", "orvo.db-shm"})
                    left.removeAll(name);
                for (const QString& name : files)
                    left.removeAll(name);
                QVERIFY2(left.isEmpty(), qPrintable(what + "; left over: " + left.join(' ')));
                const AdminResult again = admin(command);
                QVERIFY2(again.code == 0, qPrintable(what + "; with room: " + again.err));
            }
            QVERIFY2(admin({"check"}).code <= 1, qPrintable(what));
            QVERIFY2(!admin({"check"}).out.contains("база данных: "), qPrintable(what));
            const QString found = faultOf(file, command.first() == "restore");
            QVERIFY2(found.isEmpty(), qPrintable(what + "; afterwards: " + found));
        }
        qInfo("%d commands on disks with too little room, %d refused, nothing half done", wanted,
              refused);
    }

    void serverKeepsWhatWasSaved() {
        // Where the server's own user gets to.
        const QTemporaryDir directory;
        const QString place = directory.path();
        SmallDisk disk(place, mebibytes(1200));
        if (!disk.mounted())
            QSKIP("needs the right to mount a file system");
        const QByteArray usual = qgetenv("TMPDIR");
        qputenv("TMPDIR", place.toUtf8());
        const auto cluster = store::test::PostgresCluster::start();
        if (usual.isNull())
            qunsetenv("TMPDIR");
        else
            qputenv("TMPDIR", usual);
        QVERIFY(cluster);
        const std::string url = cluster->url("orvo");
        const auto admin = [&](const QStringList& words) {
            return m_admin->plain(QStringList{"--store", QString::fromStdString(url)} + words);
        };
        QCOMPARE(admin({"init"}).code, 0);
        QCOMPARE(admin({"demo"}).code, 0);
        store::Status status;
        auto other = store::openMaintained(url, {"other", false}, &status);
        QVERIFY2(other, status.text.c_str());
        PlannedWriter writer(url, seed(), desktopOf(*other));
        const int wanted = rounds(2);
        int told = 0, fallen = 0;
        for (int round = 0; round < wanted; ++round) {
            // All but a little of the room is taken.
            const QString ballast = place + "/ballast";
            QFile file(ballast);
            QVERIFY(file.open(QIODevice::WriteOnly));
            const qint64 room = QStorageInfo(place).bytesAvailable() - below(40 << 20);
            QVERIFY(room > 0 && ::posix_fallocate(file.handle(), 0, room) == 0);
            QVERIFY(writer.start());
            const bool killed = writer.killAfter(600000);
            const QString words = writer.words();
            const QString what =
                QString("disk %1, after %2 steps: ").arg(round).arg(writer.steps());
            QVERIFY2(!killed, qPrintable(what + "no end of the room"));
            // A server that cannot write its own log goes down, and the connection with it.
            const bool lost = !tellsOfFullDisk(words);
            QVERIFY2(!words.isEmpty() &&
                         (!lost || words.contains("соединен", Qt::CaseInsensitive) ||
                          words.contains("Связь") || words.contains("сервер")),
                     qPrintable(what + words));
            (lost ? fallen : told) += 1;
            QVERIFY(QFile::remove(ballast));
            file.close();
            QByteArray answer;
            QElapsedTimer clock;
            clock.start();
            while (!cluster->shell("orvo", "SELECT 1", &answer) && clock.elapsed() < 60000) {
                if (answer.contains("No such file") || answer.contains("refused"))
                    cluster->run("pg_ctl", {"start", "-s", "-w", "-D", cluster->data(), "-l",
                                            cluster->data() + "/server.log"});
                QThread::msleep(100);
            }
            QString found = fault(url, writer);
            QVERIFY2(found.isEmpty(), qPrintable(what + found));
            // Whoever was connected goes on, at the second try at the latest.
            status = store::test::Batch("MenuFileExt")
                         .insert(qPrintable(QString("a%1").arg(round)))
                         .send(*other);
            if (!status.ok())
                status = store::test::Batch("MenuFileExt")
                             .insert(qPrintable(QString("b%1").arg(round)))
                             .send(*other);
            QVERIFY2(status.ok(), qPrintable(what + status.text.c_str()));
            QVERIFY(writer.start());
            QVERIFY2(writer.killAfter(500), qPrintable(what + writer.words()));
            found = fault(url, writer);
            QVERIFY2(found.isEmpty(), qPrintable(what + found));
        }
        qInfo("%d times no room for the server: %d writes refused in words, %d times it went down; "
              "%d writes said to be saved, all there",
              wanted, told, fallen, writer.steps());
    }

private:
    int below(int most) { return int(m_random() % unsigned(std::max(1, most))); }
    /// What is wrong with a store that has room; empty if nothing is.
    static QString fault(const std::string& url, PlannedWriter& writer) {
        store::Status status;
        const auto store = store::openMaintained(url, {"looker", false}, &status);
        if (!store)
            return QString::fromStdString(status.text);
        const QString missing = writer.difference(*store);
        if (!missing.isEmpty())
            return missing;
        std::vector<std::string> damages;
        status = store->integrity(&damages);
        if (!status.ok() || !damages.empty())
            return QString::fromStdString(status.ok() ? damages.front() : status.text);
        return store::test::replayDifferences(*store).join("; ");
    }

    /// The same of what a command has left in a file; restored, it has the log of a backup.
    static QString faultOf(const QString& file, bool restored) {
        store::Status status;
        const auto store =
            store::openMaintained("sqlite://" + file.toStdString(), {"looker", false}, &status);
        if (!store)
            return QString::fromStdString(status.text);
        const QStringList differences = restored ? store::test::historyDifferences(*store)
                                                 : store::test::replayDifferences(*store);
        if (!differences.isEmpty())
            return "log and tables: " + differences.join("; ");
        const QString sound = store::test::shell(file, "PRAGMA integrity_check");
        return sound == "ok" ? QString() : "integrity_check: " + sound;
    }

    std::mt19937 m_random{seed()};
    std::unique_ptr<AdminRun> m_admin;
};

int main(int argc, char** argv) {
    int result = 0;
    if (isPlannedWriter(argc, argv, &result))
        return result;
    QCoreApplication application(argc, argv);
    TestTrialDisk test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_trial_disk.moc"
