// Programs that are killed at any moment of their work on a store, and a server that is. What was
// called saved is there, what was not is there wholly or not at all, and the store is sound.
// ORVO_TRIAL_ROUNDS is the number of kills in each case.
#include "TrialStore.h"
#include "WritingPlan.h"

#include "tests/store/PostgresCluster.h"

#include <QElapsedTimer>

#include <random>

using namespace orvo;
using namespace orvo::test;

class TestTrialKills : public TrialStore {
    Q_OBJECT
public:
    using TrialStore::TrialStore;
private slots:
    void init() { TrialStore::init(); }

    void killedClientLosesNothingThatWasSaved() {
        PlannedWriter writer(m_kind.url(), seed(), desktop());
        const int wanted = rounds(3);
        for (int round = 0; round < wanted; ++round) {
            QVERIFY(writer.start());
            QVERIFY2(writer.killAfter(50 + below(1000)), qPrintable(writer.words()));
            QVERIFY(isQuiet());
            const auto store = open();
            QVERIFY(store);
            const QString missing = writer.difference(*store);
            QVERIFY2(missing.isEmpty(), qPrintable(missing));
            const QString found = fault();
            QVERIFY2(found.isEmpty(), qPrintable(found));
        }
        qInfo("%d kills, %d writes said to be saved and %d more: all there", wanted,
              writer.steps() - writer.unsaid(), writer.unsaid());
    }

    void killedServerLosesNothingThatWasSaved() {
        if (!isPostgres())
            QSKIP("a file has no server");
        const auto cluster = store::test::PostgresCluster::start();
        QVERIFY(cluster);
        const std::string url = cluster->url("orvo");
        for (const char* verb : {"init", "demo"})
            ORVO_DONE(m_admin->plain({"--store", QString::fromStdString(url), verb}));
        store::Status status;
        const auto opened = [&] { return store::openMaintained(url, {"looker", false}, &status); };
        PlannedWriter writer(url, seed(), desktopOf(*opened()));
        const int wanted = rounds(3);
        for (int round = 0; round < wanted; ++round) {
            QVERIFY(writer.start());
            QTest::qWait(50 + below(1000));
            QVERIFY(cluster->restart());
            writer.killAfter(below(200));
            const auto store = opened();
            QVERIFY2(store, status.text.c_str());
            const QString missing = writer.difference(*store);
            QVERIFY2(missing.isEmpty(), qPrintable(missing));
            QCOMPARE(store::test::replayDifferences(*store), QStringList());
            std::vector<std::string> damages;
            status = store->integrity(&damages);
            QVERIFY2(status.ok(), status.text.c_str());
            QCOMPARE(damages, std::vector<std::string>());
        }
        qInfo("%d kills of the server, %d writes said to be saved and %d more: all there", wanted,
              writer.steps() - writer.unsaid(), writer.unsaid());
    }

    void killedImportIsWholeOrNothing() {
        const QString one = m_admin->path("one.json"), other = m_admin->path("other.json");
        ORVO_DONE(run({"export", one}));
        ORVO_DONE(run({"ext", "add", ".other"}));
        ORVO_DONE(run({"export", other}));
        killInTurn(
            {{"import", "--replace", one}, {"import", "--replace", other}},
            [this] { return content(); }, Log::GoesOn);
    }

    void killedRestoreIsWholeOrNothing() {
        const QString one = m_admin->path("one"), other = m_admin->path("other");
        ORVO_DONE(run({"backup", one}));
        ORVO_DONE(run({"ext", "add", ".other"}));
        ORVO_DONE(run({"backup", other}));
        killInTurn(
            {{"restore", "--replace", one}, {"restore", "--replace", other}},
            [this] { return content(); }, Log::IsOfBackup);
    }

    void killedPutOfFilesIsWholeOrNothing() {
        const QStringList names{"a.bin", "b.bin", "c.bin", "d.bin"};
        killInTurn(
            {QStringList{"put", "file"} + filesToPut("x", names, 'x'),
             QStringList{"put", "file"} + filesToPut("y", names, 'y')},
            [&] {
                return stored({"get", "file"}, names);
            },
            Log::GoesOn);
    }

    void killedPutOfAFormIsWholeOrNothing() {
        const QStringList names{"trial.ui", "trial.ui.1", "trial.ui.2"};
        killInTurn(
            {QStringList{"put", "form"} + filesToPut("x", names, 'x'),
             QStringList{"put", "form"} + filesToPut("y", names, 'y')},
            [&] {
                return stored({"get", "form"}, names);
            },
            Log::GoesOn);
    }

private:
    std::mt19937 m_random{seed()};
    int below(int most) { return int(m_random() % unsigned(std::max(1, most))); }

    /// What a command can leave: how the store looks before or after it.
    using Look = std::function<QByteArray()>;
    /// Runs two commands in turn, each to its end once, then again and again until it is killed.
    void killInTurn(const QStringList (&commands)[2], const Look& look, Log log) {
        QByteArray after[2];
        int time = 0;
        for (const int turn : {0, 1}) {
            QElapsedTimer clock;
            clock.start();
            const auto process = start(commands[turn]);
            QVERIFY(process->waitForFinished(100000));
            QVERIFY2(process->exitCode() == 0, process->readAllStandardError());
            time = std::max(time, int(clock.elapsed()));
            after[turn] = look();
            QVERIFY(!after[turn].isEmpty());
        }
        QVERIFY(after[0] != after[1]);
        int now = 1, done = 0, killed = 0, taken = 0;
        const int wanted = rounds(3);
        for (; killed < wanted && done < 20 * wanted; ++done) {
            const int turn = 1 - now;
            const auto process = start(commands[turn]);
            const int code = killAfter(*process, below(time + time / 10));
            const QString what =
                QString("%1 %2, code %3: ").arg(commands[turn].first()).arg(done).arg(code);
            QVERIFY2(code == -1 || code == 0, qPrintable(what + process->readAllStandardError()));
            QVERIFY(isQuiet());
            const QByteArray present = look();
            QVERIFY2(present == after[turn] || (code == -1 && present == after[now]),
                     qPrintable(what + "neither as before nor as after it"));
            const QString found = fault(log);
            QVERIFY2(found.isEmpty(), qPrintable(what + found));
            killed += code == -1 ? 1 : 0;
            taken += code == -1 && present == after[turn] ? 1 : 0;
            now = present == after[turn] ? turn : now;
        }
        QCOMPARE(killed, wanted);
        qInfo("%d kills, %d of them after the commit; %d runs to the end; one takes %d ms", killed,
              taken, done - killed, time);
    }

    /// Makes files of that letter; their paths.
    QStringList filesToPut(const QString& directory, const QStringList& names, char letter) const {
        QStringList paths;
        for (const QString& name : names)
            paths << m_admin->write(directory + '/' + name,
                                    QByteArray(700000 + 100000 * paths.size(), letter));
        return paths;
    }

    /// The files as `get` gives them, in short.
    QByteArray stored(const QStringList& words, const QStringList& names) {
        const QString directory = QFileInfo(m_admin->write("out/mark", {})).path();
        for (const QString& name : names)
            QFile::remove(directory + '/' + name);
        const QStringList asked = words.last() == "file" ? names : QStringList(names.first());
        for (const QString& name : asked)
            if (run(words + QStringList{name, directory}).code != 0)
                return {};
        QByteArray all;
        for (const QString& name : names) {
            const QByteArray bytes = AdminRun::read(directory + '/' + name);
            const char letter = bytes.isEmpty() ? ' ' : bytes.at(0);
            const bool whole = bytes == QByteArray(bytes.size(), letter);
            all += letter + QByteArray::number(bytes.size()) + (whole ? " " : " mixed ");
        }
        return all;
    }
};

int main(int argc, char** argv) {
    int result = 0;
    if (isPlannedWriter(argc, argv, &result))
        return result;
    return runOnAllKinds<TestTrialKills>(argc, argv);
}

#include "tst_trial_kills.moc"
