// The reader of the change log when its store fails: when it asks again, what it tells, and that
// nothing is lost or comes twice.
#include "platform/client/NotificationPump.h"
#include "platform/store/StoreUrl.h"
#include "platform/store/WaitPolicy.h"
#include "tests/client/HostFixture.h"
#include "tests/menu/WriteWatch.h"

#include <QElapsedTimer>
#include <QMenu>
#include <QSignalSpy>
#include <QtTest>

#include <atomic>
#include <cmath>
#include <mutex>

using namespace orvo;
using namespace orvo::test;
using client::LogFollower;
using client::ModuleRegistry;
using client::NotificationPump;

namespace {

/// What the test does to a store that another thread reads from.
struct Weather {
    std::atomic<bool> down = false;   ///< the log cannot be read
    std::atomic<bool> frozen = false; ///< nor is there an answer
    std::atomic<bool> stuck = false;  ///< a call is waiting

    void noteAttempt() {
        const std::lock_guard lock(mutex);
        m_attempts.push_back(clock.elapsed());
    }
    std::vector<qint64> attempts() {
        const std::lock_guard lock(mutex);
        return m_attempts;
    }
    Weather() { clock.start(); }

private:
    std::mutex mutex;
    QElapsedTimer clock;
    std::vector<qint64> m_attempts; ///< while down
};

class WeatheredStore : public WriteWatch {
public:
    WeatheredStore(std::unique_ptr<store::Store> store, Weather& weather)
        : WriteWatch(std::move(store))
        , m_weather(weather) {}

    store::Status readLog(const store::LogCursor& cursor, int limit,
                          std::vector<store::Change>* changes) override {
        m_weather.stuck = m_weather.frozen.load();
        while (m_weather.frozen) {
            if (!store::keepWaiting())
                return {store::Timeout, "given up"};
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        m_weather.stuck = false;
        if (!m_weather.down)
            return WriteWatch::readLog(cursor, limit, changes);
        m_weather.noteAttempt();
        return {store::ConnectionBroken, "the cable is cut"};
    }
    bool changed() override { return m_weather.down || WriteWatch::changed(); }

private:
    Weather& m_weather;
};

struct Bench : Host {
    Weather weather;
    ModuleRegistry registry;
    Module* module = new Module(&app); // owned by the registry
    std::unique_ptr<NotificationPump> pump;
    QStringList turns;

    Bench() {
        registry.add(module, "Menu");
        registry.start(module);
        pump = std::make_unique<NotificationPump>(
            *session, registry, std::make_unique<WeatheredStore>(connectAgain(), weather));
        QObject::connect(pump.get(), &NotificationPump::connectionChanged, pump.get(),
                         [this](bool up, const QString& text) {
                             turns << (up ? QStringLiteral("up") : "down: " + text);
                         });
        pump->start();
    }
    bool insert(const std::string& key) {
        return write("Menu", 1, {{"KeyLink", key}, {"caption", "x"}});
    }
};

} // namespace

class TestFollower : public QObject {
    Q_OBJECT
private slots:
    void aLostStoreIsAskedAgainEachTimeTwiceAsLate() {
        Bench bench;
        QTRY_VERIFY(bench.pump->isIdle());
        bench.weather.down = true;
        bench.insert("a");
        QTRY_VERIFY_WITH_TIMEOUT(bench.weather.attempts().size() >= 5, 20000);
        const std::vector<qint64> times = bench.weather.attempts();
        int expected = LogFollower::firstBackOffMs;
        for (size_t i = 1; i < 5; ++i, expected *= 2) {
            const qint64 pause = times[i] - times[i - 1];
            QVERIFY2(pause >= expected - 2 && pause < expected * 3 / 2 + 500,
                     qPrintable(QString("pause %1: %2 ms").arg(i).arg(pause)));
        }
        QCOMPARE(bench.turns, QStringList("down: the cable is cut")); // told once
        QVERIFY(!bench.pump->isIdle());
    }

    void whatHappenedMeanwhileArrivesOnceAndTheModulesAreToldBefore() {
        Bench bench;
        bench.insert("before");
        QTRY_COMPARE(bench.module->keys(), QStringList("before"));
        for (int round = 1; round <= 3; ++round) {
            bench.module->messages.clear();
            bench.turns.clear();
            bench.weather.down = true;
            bench.insert("a" + std::to_string(round));
            QTRY_COMPARE(bench.turns.size(), 1);
            bench.insert("b" + std::to_string(round));
            int toldBefore = -1;
            bench.module->onMessage = [&](const Message&) {
                if (toldBefore < 0)
                    toldBefore = bench.module->reconnects;
            };
            bench.weather.down = false;
            QTRY_COMPARE(bench.module->messages.size(), size_t(2));
            QCOMPARE(bench.module->keys(),
                     QStringList({QString("a%1").arg(round), QString("b%1").arg(round)}));
            QCOMPARE(bench.turns, QStringList({"down: the cable is cut", "up"}));
            QCOMPARE(bench.module->reconnects, round);
            QCOMPARE(toldBefore, round);
            // The next loss begins with short pauses again.
            QTRY_VERIFY(bench.pump->isIdle());
        }
    }

    void modulesHearOfTheReconnectionFromTheBareLoopOnly() {
        Bench bench;
        bench.weather.down = true;
        bench.insert("a");
        QTRY_COMPARE(bench.turns.size(), 1);
        QMenu menu;
        menu.addAction("a");
        menu.popup(QPoint(10, 10));
        bench.weather.down = false;
        QTRY_COMPARE(bench.turns.size(), 2); // the window shows it at once
        QTest::qWait(100);
        QCOMPARE(bench.module->reconnects, 0);
        QCOMPARE(bench.module->messages.size(), size_t(0));
        menu.close();
        QTRY_COMPARE(bench.module->reconnects, 1);
        QTRY_COMPARE(bench.module->keys(), QStringList("a"));
    }

    void aModuleThatDoesNotRunHearsNothing() {
        Bench bench;
        auto* failed = new Module(&bench.app);
        failed->startResult = false;
        bench.registry.add(failed, "Resources");
        bench.registry.start(failed);
        bench.weather.down = true;
        bench.insert("a");
        QTRY_COMPARE(bench.turns.size(), 1);
        bench.weather.down = false;
        QTRY_COMPARE(bench.module->reconnects, 1);
        QCOMPARE(failed->reconnects, 0);
    }

    void aFrozenStoreHoldsUpNeitherTheWindowNorItsEnd() {
        Bench bench;
        QTRY_VERIFY(bench.pump->isIdle());
        bench.weather.frozen = true;
        bench.insert("a");
        QTRY_VERIFY(bench.weather.stuck);
        QElapsedTimer sinceBeat;
        qint64 longest = 0;
        QTimer beat;
        connect(&beat, &QTimer::timeout, this,
                [&] { longest = qMax(longest, sinceBeat.restart()); });
        sinceBeat.start();
        beat.start(1);
        QTest::qWait(500);
        QVERIFY2(longest < 250, qPrintable(QString::number(longest)));
        QElapsedTimer end;
        end.start();
        bench.pump.reset();
        QVERIFY2(end.elapsed() < 1000, qPrintable(QString::number(end.elapsed())));
    }

    void aLogPrunedDuringAnOutageIsToldAfterWhatWasRead() {
        Bench bench;
        QSignalSpy lost(bench.pump.get(), &NotificationPump::logLost);
        bench.insert("seen");
        QTRY_COMPARE(bench.module->keys(), QStringList("seen"));
        bench.weather.down = true;
        bench.insert("missed");
        QTRY_COMPARE(bench.turns.size(), 1);
        QVERIFY(bench.byHand("delete from \"NciEvent\""));
        bench.weather.down = false;
        QTRY_COMPARE(lost.count(), 1);
        QCOMPARE(bench.turns.size(), 2);
        QCOMPARE(bench.module->keys(), QStringList("seen"));
        QCOMPARE(bench.module->reconnects, 1);
        QVERIFY(bench.pump->restart());
        bench.insert("after");
        QTRY_COMPARE(bench.module->keys(), QStringList({"seen", "after"}));
        QCOMPARE(lost.count(), 1);
    }

    void aRestartDuringAnOutageGoesOnWhenItIsOver() {
        Bench bench;
        QSignalSpy lost(bench.pump.get(), &NotificationPump::logLost);
        QVERIFY(bench.byHand("begin; insert into \"Menu\"(\"KeyLink\") values('missed'); "
                             "delete from \"NciEvent\"; commit"));
        QTRY_COMPARE(lost.count(), 1);
        bench.weather.down = true;
        bench.pump->restart(); // the session itself still reaches the store
        bench.insert("a");
        QTRY_COMPARE(bench.turns.size(), 1);
        QVERIFY(!bench.pump->isIdle());
        bench.weather.down = false;
        QTRY_COMPARE(bench.module->keys(), QStringList("a"));
    }

    void aStoreThatIsRemovedOrReplacedIsToldAndOpenedAnewOnRequest() {
        Bench bench;
        store::StoreUrl url;
        QVERIFY(url.parse(bench.url).ok());
        if (url.file().empty())
            QSKIP("a server's store has no file to be removed");
        const QString file = QString::fromStdString(url.file());
        bench.insert("before");
        QTRY_COMPARE(bench.module->keys(), QStringList("before"));
        QVERIFY(QFile::rename(file, file + ".away"));
        QTRY_COMPARE(bench.turns.size(), 1); // nobody has written: the slow look finds it
        QVERIFY2(bench.turns[0].contains("удалён или перемещён"), qPrintable(bench.turns[0]));
        QVERIFY(!bench.insert("lost"));
        QCOMPARE(bench.failures.size(), 1);
        QVERIFY2(bench.failures[0].contains("удалён или перемещён"), qPrintable(bench.failures[0]));
        QVERIFY(!bench.pump->restart()); // nothing is there yet

        const std::string other = url.file() + ".other";
        store::Status status;
        QVERIFY(store::open(other, {"maker", true}, &status));
        QVERIFY(QFile::rename(QString::fromStdString(other), file));
        QVERIFY(!bench.insert("lost too")); // it may be another store: nobody has asked for it
        QVERIFY(bench.pump->restart());
        QTRY_COMPARE(bench.turns.size(), 2);
        QCOMPARE(bench.turns[1], QString("up"));
        QVERIFY(bench.insert("after"));
        QTRY_COMPARE(bench.module->keys(), QStringList({"before", "after"}));
    }

    void veryMuchThatWaitsStaysInTheLog() {
        Bench bench;
        QMenu menu;
        menu.addAction("a");
        menu.popup(QPoint(10, 10));
        QVERIFY(bench.byHand(
            "with recursive n(i) as (select 1 union all select i + 1 from n where "
            "i < 20000) insert into \"Menu\"(\"KeyLink\", \"order_\") select 'k' || i, i "
            "from n"));
        QTest::qWait(300);
        QCOMPARE(bench.module->messages.size(), size_t(0));
        menu.close();
        QTRY_COMPARE_WITH_TIMEOUT(bench.module->messages.size(), size_t(20000), 60000);
        for (int i = 0; i < 20000; ++i)
            QCOMPARE(bench.module->messages[size_t(i)].key, QString("k%1").arg(i + 1));
        QTRY_VERIFY(bench.pump->isIdle());
    }
};

QTEST_MAIN(TestFollower)
#include "tst_follower.moc"
