// Thousands of changes in random order, by two clients and a foreign hand on one store of each
// kind. In each client both editors are open over one session: resources that are made, renamed,
// moved and deleted in one meet the menu elements that are made of them in the other.
//
// What may differ between an editor that has followed them and a new one:
// tests/menu/MenuRandomActs.h and tests/resources/ResRandomActs.h. The seed and the number of
// steps: tests/menu/RandomRun.h; ORVO_STORE_KIND sets the store.
#include "tests/menu/MenuRandomActs.h"
#include "tests/resources/EachStore.h"
#include "tests/resources/ResRandomActs.h"

using namespace orvo::test;

using BothEditors = RandomClient<MenuPart, ResPart>;

class TestBothRandom : public QObject {
    Q_OBJECT
    EachStore m_stores;

private slots:
    void bothEditorsShowWhatIsStoredAfterAnyChanges_data() { m_stores.addRows(); }
    void bothEditorsShowWhatIsStoredAfterAnyChanges() {
        TestStore store(m_stores.renewed());
        RandomRun<BothEditors> run;
        ResRandomActs::fill(store, run);
        MenuRandomActs::fill(store, "rtrend");
        run.mostAtOnce = 3;
        run.cancelPercent = 60;
        run.open(store);
        const auto anyResources = [&]() -> ResPart& { return run.anyClient().part<ResPart>(); };
        ResRandomActs resources(run, store, anyResources);
        MenuRandomActs menus(
            run, store, [&]() -> MenuPart& { return run.anyClient().part<MenuPart>(); },
            [&] {
                // One that is gone, too: the other client may not yet have heard of its end.
                return run.oneOf(anyResources().records("MenuResource").keys());
            });
        QString deleted;
        const QString found = run.work(
            [&] {
                if (run.chance(50))
                    menus.foreignAct();
                else
                    resources.foreignAct();
            },
            [&](BothEditors& client) {
                if (run.chance(15))
                    menus.pick(client.part<MenuPart>());
                else if (run.chance(8))
                    resources.removeResource(client.part<ResPart>(),
                                             run.oneOf(client.part<MenuPart>().usedResources()));
                else if (run.chance(50))
                    menus.ownAct(client.part<MenuPart>());
                else
                    resources.ownAct(client.part<ResPart>());
                if (deleted.isEmpty())
                    deleted = deletedInUse(store, client.host());
            });
        // The buttons in the search line fade, and Qt frees a fade only at its end.
        QTest::qWait(300);
        QVERIFY2(found.isEmpty(), qPrintable(found));
        QVERIFY2(deleted.isEmpty(), qPrintable(deleted));
        QVERIFY(run.comparedEnough());
        int commands = 0;
        int aged = 0;
        run.eachClient([&](BothEditors& client) {
            commands += client.part<MenuPart>().comparedCommands;
            aged += client.part<MenuPart>().agedCommands;
        });
        qInfo("%d elements compared with their resource, %d of them with one changed since",
              commands, aged);
        QVERIFY(commands > 0);
        qInfo("%d deletions met a menu that refers to the resource", resources.toldOfMenus);
    }

private:
    /// A module or function that an editor has just deleted though a menu refers to it; empty if
    /// there is none. Forgets the writes.
    static QString deletedInUse(TestStore& store, TestHost& host) {
        const QVector<WriteCall> calls = std::exchange(host.writes().calls, {});
        for (const WriteCall& call : calls) {
            if (call.table != "MenuResource")
                continue;
            for (const QString& record : call.records) {
                if (!record.startsWith('-'))
                    continue;
                const QString key = record.section(' ', 0, 0).mid(1);
                CMDArray elements;
                if (!store.connect()
                         ->fetchLinked("Menu", "MenuResourceKey", key.toStdString(), elements.array)
                         .ok())
                    qFatal("no look-up");
                if (orvo::recordCount(elements) > 0)
                    return "deleted though in menus: " + key;
            }
        }
        return {};
    }
};

QTEST_MAIN(TestBothRandom)
#include "tst_both_random.moc"
