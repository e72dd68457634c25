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

struct Bench : Host {
    ModuleRegistry registry;
    Module* module = new Module(&app); // owned by the registry
    std::unique_ptr<NotificationPump> pump;
    Bench() {
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
        Bench bench;
        QVERIFY(bench.write("MenuFolder", 1,
                            {{"KeyLink", "k"}, {"caption", "Стол"}, {"ParentKey", ""}}));
        QCOMPARE(bench.module->messages.size(), size_t(0)); // not inside the call
        QTRY_COMPARE(bench.module->messages.size(), size_t(1));
        const Message& m = bench.module->messages[0];
        QCOMPARE(m.code, 601);
        QCOMPARE(m.table, QString("MenuFolder"));
        QCOMPARE(m.key, QString("k"));
        QCOMPARE(m.source, QString("NCI:MenuFolder,engineer"));
        QCOMPARE(m.marked.size(), size_t(5));
        QCOMPARE(m.marked.at("caption").toString(), QString("Стол"));
        QVERIFY(!m.marked.at("ParentKey").isValid()); // stored as NULL
        QTRY_VERIFY(bench.pump->isIdle());
    }

    void anUpdateMarksOnlyWhatChangedAndADeletionNothing() {
        Bench bench;
        bench.insert("k");
        bench.write("Menu", 2, {{"KeyLink", "k"}, {"caption", "новое"}});
        bench.write("Menu", 2, {{"KeyLink", "k"}, {"caption", "новое"}});
        bench.write("Menu", 4, {{"KeyLink", "k"}});
        QTRY_COMPARE(bench.module->messages.size(), size_t(4));
        QCOMPARE(bench.module->messages[1].code, 602);
        QCOMPARE(bench.module->messages[1].marked.size(), size_t(1));
        QCOMPARE(bench.module->messages[2].code,
                 602); // no value changed: the echo comes all the same
        QCOMPARE(bench.module->messages[2].marked.size(), size_t(0));
        QCOMPARE(bench.module->messages[3].code, 603);
        QCOMPARE(bench.module->messages[3].rawLength, 0u);
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
        Bench bench;
        Host other;
        auto store = bench.connectAgain("petrov");
        CMDArray array;
        store::makeStructure(*store::findTable("Menu"), array.array);
        array.KeyAdd("KeyLink", MDX_KEY_UNIQUE);
        addRecord(array, 1, {{"KeyLink", "k"}});
        QVERIFY(store->update("Menu", array.array).ok());
        QTRY_COMPARE(bench.module->messages.size(), size_t(1));
        QCOMPARE(bench.module->messages[0].source, QString("NCI:Menu,petrov"));
    }

    void aChangeByHandArrivesAtOnce() {
        Bench bench;
        QTest::qWait(50);
        // The log has the moment of the change, so that a slow start of the program does not count.
        double written = 0;
        double arrived = 0;
        connect(bench.pump.get(), &NotificationPump::changed, this,
                [&](const store::Change& change) { written = change.time; });
        bench.module->onMessage = [&](const Message&) {
            arrived = DateTime_To_MdxTime(QDateTime::currentDateTime());
        };
        QVERIFY(
            bench.byHand("insert into \"Menu\"(\"KeyLink\", \"caption\") values('hand', 'рукой')"));
        QTRY_COMPARE(bench.module->messages.size(), size_t(1));
        QCOMPARE(bench.module->messages[0].key, QString("hand"));
        QCOMPARE(bench.module->messages[0].source, "NCI:Menu," + bench.handLogin());
        QCOMPARE(bench.module->messages[0].marked.at("caption").toString(), QString("рукой"));
        qInfo("written by hand to module told: %.0f ms", (arrived - written) * 1000);
        QVERIFY2(arrived - written < 0.5, "only the slow poll found it");
    }

    void nothingComesInsideALoopOfASlot() {
        Bench bench;
        inMainLoop([&] {
            bench.insert("k");
            nestedLoop(200);
            QCOMPARE(bench.module->messages.size(), size_t(0));
            QVERIFY(!bench.pump->isIdle());
        });
        inMainLoop([] {}); // back in the bare loop
        QTRY_COMPARE(bench.module->messages.size(), size_t(1));
    }

    void theBareLoopDelivers() {
        Bench bench;
        bench.insert("k");
        QEventLoop loop; // level 1, as QApplication::exec
        bench.module->onMessage = [&](const Message&) { loop.quit(); };
        QTimer::singleShot(5000, &loop, &QEventLoop::quit);
        loop.exec();
        QCOMPARE(bench.module->messages.size(), size_t(1));
    }

    void nothingComesWhileAModalDialogIsUp() {
        Bench bench;
        QDialog dialog;
        dialog.setModal(true);
        dialog.show();
        bench.insert("k");
        QTest::qWait(150);
        QCOMPARE(bench.module->messages.size(), size_t(0));
        dialog.close();
        QTRY_COMPARE(bench.module->messages.size(), size_t(1));
    }

    void nothingComesWhileAMenuIsOpen() {
        Bench bench;
        QMenu menu;
        menu.addAction("a");
        menu.popup(QPoint(10, 10));
        QVERIFY(QTest::qWaitForWindowExposed(&menu));
        bench.insert("k");
        QTest::qWait(150);
        QCOMPARE(bench.module->messages.size(), size_t(0));
        menu.close();
        QTRY_COMPARE(bench.module->messages.size(), size_t(1));
    }

    void nothingComesWhileACallIsRunning() {
        Bench bench;
        bench.insert("k");
        int inside = -1;
        // A failed call ends in this signal, still inside the call: even if its receiver turned the
        // loop, nothing would come.
        QObject::connect(&client::sessionEvents(*bench.session), &client::SessionEvents::failed,
                         this, [&] {
                             QElapsedTimer clock;
                             clock.start();
                             while (clock.elapsed() < 100)
                                 QCoreApplication::processEvents();
                             inside = int(bench.module->messages.size());
                         });
        bench.session->SqlUpdate("Nowhere", nullptr, true, nullptr);
        QCOMPARE(inside, 0);
        QTRY_COMPARE(bench.module->messages.size(), size_t(1));
    }

    void aModuleWhoseStartFailedGetsNone() {
        Bench bench;
        auto* failed = new Module(&bench.app);
        failed->startResult = false;
        bench.registry.add(failed, "Resources");
        bench.registry.start(failed);
        auto* loaded = new Module(&bench.app);
        bench.registry.add(loaded, "Resources");
        bench.insert("k");
        QTRY_COMPARE(bench.module->messages.size(), size_t(1));
        QCOMPARE(failed->messages.size(), size_t(0));
        QCOMPARE(failed->messagesWaiting(), 0);
        QCOMPARE(loaded->messages.size(), size_t(0));
    }

    void everyRunningModuleGetsEveryChange() {
        Bench bench;
        auto* second = new Module(&bench.app);
        bench.registry.add(second, "Resources");
        bench.registry.start(second);
        for (int i = 0; i < 500; ++i)
            bench.insert("k" + std::to_string(i));
        QTRY_COMPARE(second->messages.size(), size_t(500));
        QCOMPARE(bench.module->keys(), second->keys());
        for (int i = 0; i < 500; ++i)
            QCOMPARE(second->messages[size_t(i)].key, QStringLiteral("k%1").arg(i));
    }

    void modulesMayGoWhileNotificationsWait() {
        Bench bench;
        auto* second = new Module(&bench.app);
        bench.registry.add(second, "Resources");
        bench.registry.start(second);
        for (int i = 0; i < 300; ++i)
            bench.insert("k" + std::to_string(i));
        // The first module takes the second down in the middle of it all.
        bool gone = false;
        bench.module->onMessage = [&](const Message& m) {
            if (m.key == "k100" && !gone) {
                gone = true;
                delete second;
            }
        };
        QTRY_COMPARE(bench.module->messages.size(), size_t(300));
        QVERIFY(gone);
        bench.insert("last");
        bench.registry.stop(bench.module); // with one in the log
        QTRY_VERIFY(bench.pump->isIdle());
    }

    void aBurstOfTenThousandLeavesTheWindowAnswering() {
        Bench bench;
        constexpr int count = 10000;
        QVERIFY(bench.byHand(QStringLiteral(
            "with recursive n(i) as (select 1 union all select i + 1 from n where i < 10000) "
            "insert into \"Menu\"(\"KeyLink\", \"caption\", \"order_\") select 'k' || i, 'элемент "
            "' || i, i from "
            "n")));
        // What a module does with one takes its time too.
        bench.module->onMessage = [](const Message&) {
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
        QTRY_COMPARE_WITH_TIMEOUT(int(bench.module->messages.size()), count, 60000);
        qInfo("%d notifications in %lld ms, %d beats, at most %.0f ms of work between two", count,
              total.elapsed(), beats, longest);
        QCOMPARE(bench.module->messages.back().key, QString("k10000"));
        QVERIFY2(longest < 100, qPrintable(QString::number(longest)));
        QVERIFY(beats > 20);
    }

    void changesOfContentReachTheHostAndTheModules() {
        Bench bench;
        QStringList tables;
        connect(
            bench.pump.get(), &NotificationPump::changed, this,
            [&](const store::Change& change) { tables << QString::fromStdString(change.table); });
        bench.write("MenuResourceFolder", 1,
                    {{"KeyLink", "f"}, {"type_", "4"}, {"caption", "icons"}});
        CToolFilePut put(bench.module);
        put.AddFile("icons", "a.png", "abc", 3, 1);
        put.Perform(false);
        QTRY_VERIFY(tables.contains("MenuResourceFile"));
        QTRY_COMPARE(int(bench.module->messages.size()), int(tables.size()));
        QVERIFY(bench.failures.isEmpty());
    }

    void aPrunedLogIsToldAndTheRestartGoesOn() {
        Bench bench;
        QSignalSpy lost(bench.pump.get(), &NotificationPump::logLost);
        bench.insert("seen");
        QTRY_COMPARE(bench.module->messages.size(), size_t(1));
        // Written and pruned before anyone can have read it.
        QVERIFY(bench.byHand("begin; insert into \"Menu\"(\"KeyLink\") values('missed'); "
                             "delete from \"NciEvent\"; commit"));
        QTRY_COMPARE(lost.count(), 1);
        bench.insert("while resting");
        QTest::qWait(100);
        QCOMPARE(lost.count(), 1);
        QVERIFY(bench.pump->isIdle());
        QVERIFY(bench.pump->restart());
        bench.insert("after");
        QTRY_COMPARE(bench.module->keys(), QStringList({"seen", "after"}));
    }

    void aModuleMayWriteInsideItsNotification() {
        Bench bench;
        bench.module->onMessage = [&](const Message& m) {
            if (m.key == "first")
                bench.insert("second");
        };
        bench.insert("first");
        QTRY_COMPARE(bench.module->keys(), QStringList({"first", "second"}));
    }

    void aLoopInsideANotificationDoesNotReenter() {
        Bench bench;
        int depth = 0;
        int deepest = 0;
        bench.module->onMessage = [&](const Message&) {
            deepest = qMax(deepest, ++depth);
            nestedLoop(40);
            --depth;
        };
        bench.insert("a");
        bench.insert("b");
        QTRY_COMPARE(bench.module->messages.size(), size_t(2));
        QCOMPARE(deepest, 1);
    }
};

QTEST_MAIN(TestDelivery)
#include "tst_delivery.moc"
