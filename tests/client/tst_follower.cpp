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
struct FaultInjection {
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
    FaultInjection() { clock.start(); }

private:
    std::mutex mutex;
    QElapsedTimer clock;
    std::vector<qint64> m_attempts; ///< while down
};

class FaultyStore : public WriteWatch {
public:
    FaultyStore(std::unique_ptr<store::Store> store, FaultInjection& faults)
        : WriteWatch(std::move(store))
        , m_faults(faults) {}

    store::Status readLog(const store::LogCursor& cursor, int limit,
                          std::vector<store::Change>* changes) override {
        m_faults.stuck = m_faults.frozen.load();
        while (m_faults.frozen) {
            if (!store::keepWaiting())
                return {store::Timeout, "given up"};
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        m_faults.stuck = false;
        if (!m_faults.down)
            return WriteWatch::readLog(cursor, limit, changes);
        m_faults.noteAttempt();
        return {store::ConnectionBroken, "the cable is cut"};
    }
    bool changed() override { return m_faults.down || WriteWatch::changed(); }

private:
    FaultInjection& m_faults;
};

struct Fixture : Host {
    FaultInjection faults;
    ModuleRegistry registry;
    Module* module = new Module(&app); // owned by the registry
    std::unique_ptr<NotificationPump> pump;
    QStringList turns;

    Fixture() {
        registry.add(module, "Menu");
        registry.start(module);
        pump = std::make_unique<NotificationPump>(
            *session, registry, std::make_unique<FaultyStore>(connectAgain(), faults));
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
        Fixture fixture;
        QTRY_VERIFY(fixture.pump->isIdle());
        fixture.faults.down = true;
        fixture.insert("a");
        QTRY_VERIFY_WITH_TIMEOUT(fixture.faults.attempts().size() >= 5, 20000);
        const std::vector<qint64> times = fixture.faults.attempts();
        int expected = LogFollower::firstBackOffMs;
        for (size_t i = 1; i < 5; ++i, expected *= 2) {
            const qint64 pause = times[i] - times[i - 1];
            QVERIFY2(pause >= expected - 2 && pause < expected * 3 / 2 + 500,
                     qPrintable(QString("pause %1: %2 ms").arg(i).arg(pause)));
        }
        QCOMPARE(fixture.turns, QStringList("down: the cable is cut")); // told once
        QVERIFY(!fixture.pump->isIdle());
    }

    void whatHappenedMeanwhileArrivesOnceAndTheModulesAreToldBefore() {
        Fixture fixture;
        fixture.insert("before");
        QTRY_COMPARE(fixture.module->keys(), QStringList("before"));
        for (int round = 1; round <= 3; ++round) {
            fixture.module->messages.clear();
            fixture.turns.clear();
            fixture.faults.down = true;
            fixture.insert("a" + std::to_string(round));
            QTRY_COMPARE(fixture.turns.size(), 1);
            fixture.insert("b" + std::to_string(round));
            int toldBefore = -1;
            fixture.module->onMessage = [&](const Message&) {
                if (toldBefore < 0)
                    toldBefore = fixture.module->reconnects;
            };
            fixture.faults.down = false;
            QTRY_COMPARE(fixture.module->messages.size(), size_t(2));
            QCOMPARE(fixture.module->keys(),
                     QStringList({QString("a%1").arg(round), QString("b%1").arg(round)}));
            QCOMPARE(fixture.turns, QStringList({"down: the cable is cut", "up"}));
            QCOMPARE(fixture.module->reconnects, round);
            QCOMPARE(toldBefore, round);
            // The next loss begins with short pauses again.
            QTRY_VERIFY(fixture.pump->isIdle());
        }
    }

    void modulesHearOfTheReconnectionFromTheBareLoopOnly() {
        Fixture fixture;
        fixture.faults.down = true;
        fixture.insert("a");
        QTRY_COMPARE(fixture.turns.size(), 1);
        QMenu menu;
        menu.addAction("a");
        menu.popup(QPoint(10, 10));
        fixture.faults.down = false;
        QTRY_COMPARE(fixture.turns.size(), 2); // the window shows it at once
        QTest::qWait(100);
        QCOMPARE(fixture.module->reconnects, 0);
        QCOMPARE(fixture.module->messages.size(), size_t(0));
        menu.close();
        QTRY_COMPARE(fixture.module->reconnects, 1);
        QTRY_COMPARE(fixture.module->keys(), QStringList("a"));
    }

    void aModuleThatDoesNotRunHearsNothing() {
        Fixture fixture;
        auto* failed = new Module(&fixture.app);
        failed->startResult = false;
        fixture.registry.add(failed, "Resources");
        fixture.registry.start(failed);
        fixture.faults.down = true;
        fixture.insert("a");
        QTRY_COMPARE(fixture.turns.size(), 1);
        fixture.faults.down = false;
        QTRY_COMPARE(fixture.module->reconnects, 1);
        QCOMPARE(failed->reconnects, 0);
    }

    void aFrozenStoreHoldsUpNeitherTheWindowNorItsEnd() {
        Fixture fixture;
        QTRY_VERIFY(fixture.pump->isIdle());
        fixture.faults.frozen = true;
        fixture.insert("a");
        QTRY_VERIFY(fixture.faults.stuck);
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
        fixture.pump.reset();
        QVERIFY2(end.elapsed() < 1000, qPrintable(QString::number(end.elapsed())));
    }

    void aLogPrunedDuringAnOutageIsToldAfterWhatWasRead() {
        Fixture fixture;
        QSignalSpy lost(fixture.pump.get(), &NotificationPump::logLost);
        fixture.insert("seen");
        QTRY_COMPARE(fixture.module->keys(), QStringList("seen"));
        fixture.faults.down = true;
        fixture.insert("missed");
        QTRY_COMPARE(fixture.turns.size(), 1);
        QVERIFY(fixture.byHand("delete from \"NciEvent\""));
        fixture.faults.down = false;
        QTRY_COMPARE(lost.count(), 1);
        QCOMPARE(fixture.turns.size(), 2);
        QCOMPARE(fixture.module->keys(), QStringList("seen"));
        QCOMPARE(fixture.module->reconnects, 1);
        QVERIFY(fixture.pump->restart());
        fixture.insert("after");
        QTRY_COMPARE(fixture.module->keys(), QStringList({"seen", "after"}));
        QCOMPARE(lost.count(), 1);
    }

    void aRestartDuringAnOutageGoesOnWhenItIsOver() {
        Fixture fixture;
        QSignalSpy lost(fixture.pump.get(), &NotificationPump::logLost);
        QVERIFY(fixture.byHand("begin; insert into \"Menu\"(\"KeyLink\") values('missed'); "
                               "delete from \"NciEvent\"; commit"));
        QTRY_COMPARE(lost.count(), 1);
        fixture.faults.down = true;
        fixture.pump->restart(); // the session itself still reaches the store
        fixture.insert("a");
        QTRY_COMPARE(fixture.turns.size(), 1);
        QVERIFY(!fixture.pump->isIdle());
        fixture.faults.down = false;
        QTRY_COMPARE(fixture.module->keys(), QStringList("a"));
    }

    void aStoreThatIsRemovedOrReplacedIsToldAndOpenedAgainOnRequest() {
        Fixture fixture;
        store::StoreUrl url;
        QVERIFY(url.parse(fixture.url).ok());
        if (url.file().empty())
            QSKIP("a server's store has no file to be removed");
        const QString file = QString::fromStdString(url.file());
        fixture.insert("before");
        QTRY_COMPARE(fixture.module->keys(), QStringList("before"));
        QVERIFY(QFile::rename(file, file + ".away"));
        QTRY_COMPARE(fixture.turns.size(), 1); // nobody has written: the slow look finds it
        QVERIFY2(fixture.turns[0].contains("удалён или перемещён"), qPrintable(fixture.turns[0]));
        QVERIFY(!fixture.insert("lost"));
        QCOMPARE(fixture.failures.size(), 1);
        QVERIFY2(fixture.failures[0].contains("удалён или перемещён"),
                 qPrintable(fixture.failures[0]));
        QVERIFY(!fixture.pump->restart()); // nothing is there yet

        const std::string other = url.file() + ".other";
        store::Status status;
        QVERIFY(store::open(other, {"maker", true}, &status));
        QVERIFY(QFile::rename(QString::fromStdString(other), file));
        QVERIFY(!fixture.insert("lost too")); // it may be another store: nobody has asked for it
        QVERIFY(fixture.pump->restart());
        QTRY_COMPARE(fixture.turns.size(), 2);
        QCOMPARE(fixture.turns[1], QString("up"));
        QVERIFY(fixture.insert("after"));
        QTRY_COMPARE(fixture.module->keys(), QStringList({"before", "after"}));
    }

    void veryMuchThatWaitsStaysInTheLog() {
        Fixture fixture;
        QMenu menu;
        menu.addAction("a");
        menu.popup(QPoint(10, 10));
        QVERIFY(fixture.byHand(
            "with recursive n(i) as (select 1 union all select i + 1 from n where "
            "i < 20000) insert into \"Menu\"(\"KeyLink\", \"order_\") select 'k' || i, i "
            "from n"));
        QTest::qWait(300);
        QCOMPARE(fixture.module->messages.size(), size_t(0));
        menu.close();
        QTRY_COMPARE_WITH_TIMEOUT(fixture.module->messages.size(), size_t(20000), 60000);
        for (int i = 0; i < 20000; ++i)
            QCOMPARE(fixture.module->messages[size_t(i)].key, QString("k%1").arg(i + 1));
        QTRY_VERIFY(fixture.pump->isIdle());
    }
};

QTEST_MAIN(TestFollower)
#include "tst_follower.moc"
