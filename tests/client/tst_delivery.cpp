// When notifications come, and when they must not.
#include "platform/client/NotificationPump.h"
#include "tests/client/HostFixture.h"

#include <QDialog>
#include <QElapsedTimer>
#include <QMenu>
#include <QtTest>

#include <algorithm>
#include <ctime>

using namespace orvo;
using namespace orvo::test;
using client::ModuleRegistry;
using client::NotificationPump;

namespace {

struct Fixture : Host {
    ModuleRegistry registry;
    Module* module = new Module(&app); // owned by the registry
    std::unique_ptr<NotificationPump> pump;
    Fixture() {
        registry.add(module, "Menu");
        registry.start(module);
        pump = std::make_unique<NotificationPump>(*session, registry, connectAgain());
        pump->start();
    }
    bool insert(const std::string& key) {
        return write("Menu", 1, {{"KeyLink", key}, {"caption", "x"}});
    }
};

/// Processor time of this thread: what others do on the machine meanwhile does not count.
double processorMs() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

/// Runs the application's own loop (level 1), calls `inside` from it, and returns when that is
/// done.
void inMainLoop(const std::function<void()>& inside) {
    QEventLoop loop;
    QTimer::singleShot(0, &loop, [&] {
        inside();
        loop.quit();
    });
    loop.exec();
}

/// A loop inside a slot, as a modal dialog or a drag runs one.
void nestedLoop(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

class TestDelivery : public QObject {
    Q_OBJECT
private slots:
    void theOwnEchoArrivesWithAllFieldsOfAnInsert() {
        Fixture fixture;
        QVERIFY(fixture.write("MenuFolder", 1,
                              {{"KeyLink", "k"}, {"caption", "Стол"}, {"ParentKey", ""}}));
        QCOMPARE(fixture.module->messages.size(), size_t(0)); // not inside the call
        QTRY_COMPARE(fixture.module->messages.size(), size_t(1));
        const Message& m = fixture.module->messages[0];
        QCOMPARE(m.code, 601);
        QCOMPARE(m.table, QString("MenuFolder"));
        QCOMPARE(m.key, QString("k"));
        QCOMPARE(m.source, QString("NCI:MenuFolder,engineer"));
        QCOMPARE(m.marked.size(), size_t(5));
        QCOMPARE(m.marked.at("caption").toString(), QString("Стол"));
        QVERIFY(!m.marked.at("ParentKey").isValid()); // stored as NULL
        QTRY_VERIFY(fixture.pump->isIdle());
    }

    void anUpdateMarksOnlyWhatChangedAndADeletionNothing() {
        Fixture fixture;
        fixture.insert("k");
        fixture.write("Menu", 2, {{"KeyLink", "k"}, {"caption", "новое"}});
        fixture.write("Menu", 2, {{"KeyLink", "k"}, {"caption", "новое"}});
        fixture.write("Menu", 4, {{"KeyLink", "k"}});
        QTRY_COMPARE(fixture.module->messages.size(), size_t(4));
        QCOMPARE(fixture.module->messages[1].code, 602);
        QCOMPARE(fixture.module->messages[1].marked.size(), size_t(1));
        QCOMPARE(fixture.module->messages[2].code,
                 602); // no value changed: the echo comes all the same
        QCOMPARE(fixture.module->messages[2].marked.size(), size_t(0));
        QCOMPARE(fixture.module->messages[3].code, 603);
        QCOMPARE(fixture.module->messages[3].rawLength, 0u);
    }

    void changesBetweenSessionAndStartAreNotLost() {
        Host host;
        host.write("Menu", 1, {{"KeyLink", "early"}});
        ModuleRegistry registry;
        auto* module = new Module(&host.app);
        registry.add(module, "Menu");
        registry.start(module);
        NotificationPump pump(*host.session, registry, host.connectAgain());
        pump.start();
        QTRY_COMPARE(module->keys(), QStringList("early"));
    }

    void aChangeOfAnotherConnectionArrives() {
        Fixture fixture;
        Host other;
        auto store = fixture.connectAgain("petrov");
        CMDArray array;
        store::makeStructure(*store::findTable("Menu"), array.array);
        array.KeyAdd("KeyLink", MDX_KEY_UNIQUE);
        addRecord(array, 1, {{"KeyLink", "k"}});
        QVERIFY(store->update("Menu", array.array).ok());
        QTRY_COMPARE(fixture.module->messages.size(), size_t(1));
        QCOMPARE(fixture.module->messages[0].source, QString("NCI:Menu,petrov"));
    }

    void aChangeByHandArrivesAtOnce() {
        Fixture fixture;
        QTRY_VERIFY(fixture.pump->isIdle());
        // The log has the moment of the change, so that a slow start of the program does not count.
        double written = 0;
        double arrived = 0;
        connect(fixture.pump.get(), &NotificationPump::changed, this,
                [&](const store::Change& change) { written = change.time; });
        fixture.module->onMessage = [&](const Message&) {
            arrived = DateTime_To_MdxTime(QDateTime::currentDateTime());
        };
        QVERIFY(fixture.byHand(
            "insert into \"Menu\"(\"KeyLink\", \"caption\") values('hand', 'рукой')"));
        QTRY_COMPARE(fixture.module->messages.size(), size_t(1));
        QCOMPARE(fixture.module->messages[0].key, QString("hand"));
        QCOMPARE(fixture.module->messages[0].source, "NCI:Menu," + fixture.handLogin());
        QCOMPARE(fixture.module->messages[0].marked.at("caption").toString(), QString("рукой"));
        qInfo("written by hand to module told: %.0f ms", (arrived - written) * 1000);
        QVERIFY2(arrived - written < 0.5, "only the slow poll found it");
    }

    void nothingComesInsideALoopOfASlot() {
        Fixture fixture;
        inMainLoop([&] {
            fixture.insert("k");
            nestedLoop(200);
            QCOMPARE(fixture.module->messages.size(), size_t(0));
            QVERIFY(!fixture.pump->isIdle());
        });
        inMainLoop([] {}); // back in the bare loop
        QTRY_COMPARE(fixture.module->messages.size(), size_t(1));
    }

    void theBareLoopDelivers() {
        Fixture fixture;
        fixture.insert("k");
        QEventLoop loop; // level 1, as QApplication::exec
        fixture.module->onMessage = [&](const Message&) { loop.quit(); };
        QTimer::singleShot(5000, &loop, &QEventLoop::quit);
        loop.exec();
        QCOMPARE(fixture.module->messages.size(), size_t(1));
    }

    void nothingComesWhileAModalDialogIsUp() {
        Fixture fixture;
        QDialog dialog;
        dialog.setModal(true);
        dialog.show();
        fixture.insert("k");
        QTest::qWait(150);
        QCOMPARE(fixture.module->messages.size(), size_t(0));
        dialog.close();
        QTRY_COMPARE(fixture.module->messages.size(), size_t(1));
    }

    void nothingComesWhileAMenuIsOpen() {
        Fixture fixture;
        QMenu menu;
        menu.addAction("a");
        menu.popup(QPoint(10, 10));
        QVERIFY(QTest::qWaitForWindowExposed(&menu));
        fixture.insert("k");
        QTest::qWait(150);
        QCOMPARE(fixture.module->messages.size(), size_t(0));
        menu.close();
        QTRY_COMPARE(fixture.module->messages.size(), size_t(1));
    }

    void nothingComesWhileACallIsRunning() {
        Fixture fixture;
        fixture.insert("k");
        int inside = -1;
        // A failed call ends in this signal, still inside the call: even if its receiver turned the
        // loop, nothing would come.
        QObject::connect(&client::sessionEvents(*fixture.session), &client::SessionEvents::failed,
                         this, [&] {
                             QElapsedTimer clock;
                             clock.start();
                             while (clock.elapsed() < 100)
                                 QCoreApplication::processEvents();
                             inside = int(fixture.module->messages.size());
                         });
        fixture.session->SqlUpdate("Nowhere", nullptr, true, nullptr);
        QCOMPARE(inside, 0);
        QTRY_COMPARE(fixture.module->messages.size(), size_t(1));
    }

    void aModuleWhoseStartFailedGetsNone() {
        Fixture fixture;
        auto* failed = new Module(&fixture.app);
        failed->startResult = false;
        fixture.registry.add(failed, "Resources");
        fixture.registry.start(failed);
        auto* loaded = new Module(&fixture.app);
        fixture.registry.add(loaded, "Resources");
        fixture.insert("k");
        QTRY_COMPARE(fixture.module->messages.size(), size_t(1));
        QCOMPARE(failed->messages.size(), size_t(0));
        QCOMPARE(failed->messagesWaiting(), 0);
        QCOMPARE(loaded->messages.size(), size_t(0));
    }

    void everyRunningModuleGetsEveryChange() {
        Fixture fixture;
        auto* second = new Module(&fixture.app);
        fixture.registry.add(second, "Resources");
        fixture.registry.start(second);
        for (int i = 0; i < 500; ++i)
            fixture.insert("k" + std::to_string(i));
        QTRY_COMPARE(second->messages.size(), size_t(500));
        QCOMPARE(fixture.module->keys(), second->keys());
        for (int i = 0; i < 500; ++i)
            QCOMPARE(second->messages[size_t(i)].key, QStringLiteral("k%1").arg(i));
    }

    void modulesMayGoWhileNotificationsWait() {
        Fixture fixture;
        auto* second = new Module(&fixture.app);
        fixture.registry.add(second, "Resources");
        fixture.registry.start(second);
        for (int i = 0; i < 300; ++i)
            fixture.insert("k" + std::to_string(i));
        // The first module takes the second down in the middle of it all.
        bool gone = false;
        fixture.module->onMessage = [&](const Message& m) {
            if (m.key == "k100" && !gone) {
                gone = true;
                delete second;
            }
        };
        QTRY_COMPARE(fixture.module->messages.size(), size_t(300));
        QVERIFY(gone);
        fixture.insert("last");
        fixture.registry.stop(fixture.module); // with one in the log
        QTRY_VERIFY(fixture.pump->isIdle());
    }

    void aBurstOfTenThousandLeavesTheWindowAnswering() {
        Fixture fixture;
        constexpr int count = 10000;
        QVERIFY(fixture.byHand(QStringLiteral(
            "with recursive n(i) as (select 1 union all select i + 1 from n where i < 10000) "
            "insert into \"Menu\"(\"KeyLink\", \"caption\", \"order_\") select 'k' || i, 'элемент "
            "' || i, i from "
            "n")));
        // What a module does with one takes its time too.
        fixture.module->onMessage = [](const Message&) {
            QElapsedTimer work;
            work.start();
            while (work.nsecsElapsed() < 20000) {
            }
        };
        QTimer beat;
        QElapsedTimer total;
        double lastWork = processorMs();
        double longest = 0;
        int beats = 0;
        connect(&beat, &QTimer::timeout, this, [&] {
            const double work = processorMs();
            longest = std::max(longest, work - lastWork);
            lastWork = work;
            ++beats;
        });
        total.start();
        beat.start(1);
        QTRY_COMPARE_WITH_TIMEOUT(int(fixture.module->messages.size()), count, 60000);
        qInfo("%d notifications in %lld ms, %d beats, at most %.0f ms of work between two", count,
              total.elapsed(), beats, longest);
        QCOMPARE(fixture.module->messages.back().key, QString("k10000"));
        QVERIFY2(longest < 100, qPrintable(QString::number(longest)));
        QVERIFY(beats > 20);
    }

    void changesOfContentReachTheHostAndTheModules() {
        Fixture fixture;
        QStringList tables;
        connect(
            fixture.pump.get(), &NotificationPump::changed, this,
            [&](const store::Change& change) { tables << QString::fromStdString(change.table); });
        fixture.write("MenuResourceFolder", 1,
                      {{"KeyLink", "f"}, {"type_", "4"}, {"caption", "icons"}});
        CToolFilePut put(fixture.module);
        put.AddFile("icons", "a.png", "abc", 3, 1);
        put.Perform(false);
        QTRY_VERIFY(tables.contains("MenuResourceFile"));
        QTRY_COMPARE(int(fixture.module->messages.size()), int(tables.size()));
        QVERIFY(fixture.failures.isEmpty());
    }

    void aPrunedLogIsToldAndTheRestartGoesOn() {
        Fixture fixture;
        QSignalSpy lost(fixture.pump.get(), &NotificationPump::logLost);
        fixture.insert("seen");
        QTRY_COMPARE(fixture.module->messages.size(), size_t(1));
        // Written and pruned before anyone can have read it.
        QVERIFY(fixture.byHand("begin; insert into \"Menu\"(\"KeyLink\") values('missed'); "
                               "delete from \"NciEvent\"; commit"));
        QTRY_COMPARE(lost.count(), 1);
        fixture.insert("while resting");
        QTest::qWait(100);
        QCOMPARE(lost.count(), 1);
        QVERIFY(fixture.pump->isIdle());
        QVERIFY(fixture.pump->restart());
        fixture.insert("after");
        QTRY_COMPARE(fixture.module->keys(), QStringList({"seen", "after"}));
    }

    void aModuleMayWriteInsideItsNotification() {
        Fixture fixture;
        fixture.module->onMessage = [&](const Message& m) {
            if (m.key == "first")
                fixture.insert("second");
        };
        fixture.insert("first");
        QTRY_COMPARE(fixture.module->keys(), QStringList({"first", "second"}));
    }

    void aLoopInsideANotificationDoesNotReenter() {
        Fixture fixture;
        int depth = 0;
        int deepest = 0;
        fixture.module->onMessage = [&](const Message&) {
            deepest = qMax(deepest, ++depth);
            nestedLoop(40);
            --depth;
        };
        fixture.insert("a");
        fixture.insert("b");
        QTRY_COMPARE(fixture.module->messages.size(), size_t(2));
        QCOMPARE(deepest, 1);
    }
};

QTEST_MAIN(TestDelivery)
#include "tst_delivery.moc"
