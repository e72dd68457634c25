// Thousands of changes in random order, by two clients and a foreign hand on one store of each
// kind. In each client both editors are open over one session: resources that are made, renamed,
// moved and deleted in one meet the menu elements that are made of them in the other.
//
// What may differ between an editor that has followed them and a new one:
// tests/menu/MenuPart.h and tests/resources/ResPart.h. The seed and the number of
// steps: tests/menu/RandomRun.h; ORVO_STORE_KIND sets the store.
#include "tests/menu/MenuRandomActs.h"
#include "tests/resources/EachStore.h"
#include "tests/resources/ResRandomActs.h"

#include <QRegularExpression>

using namespace orvo::test;

using BothEditors = RandomClient<MenuPart, ResPart>;

namespace {

/// A run over a store that is still empty.
class BothRun : public RandomRun<BothEditors> {
public:
    using RandomRun::RandomRun;

    /// The first difference, or a deletion that must not be; empty if all went well.
    QString over(TestStore& store) {
        ResRandomActs::fill(store, *this);
        MenuRandomActs::fill(store, "rtrend");
        mostAtOnce = 3;
        cancelPercent = 60;
        open(store);
        const auto anyResources = [&]() -> ResPart& { return anyClient().part<ResPart>(); };
        ResRandomActs resources(*this, store, anyResources);
        MenuRandomActs menus(
            *this, store, [&]() -> MenuPart& { return anyClient().part<MenuPart>(); },
            [&] {
                // One that is gone, too: the other client may not yet have heard of its end.
                return oneOf(anyResources().records("MenuResource").keys());
            });
        QString deleted;
        const QString found = work(
            [&] {
                if (chance(50))
                    menus.foreignAct();
                else
                    resources.foreignAct();
            },
            [&](BothEditors& client) {
                if (chance(15))
                    menus.pick(client.part<MenuPart>());
                else if (chance(8))
                    resources.removeResource(client.part<ResPart>(),
                                             oneOf(client.part<MenuPart>().usedResources()));
                else if (chance(50))
                    menus.ownAct(client.part<MenuPart>());
                else
                    resources.ownAct(client.part<ResPart>());
                if (deleted.isEmpty())
                    deleted = deletedInUse(store, client.host());
            });
        m_toldOfMenus = resources.toldOfMenus;
        return found.isEmpty() ? deleted : found;
    }

    int comparedCommands() { return sum(&MenuPart::comparedCommands); }
    int agedCommands() { return sum(&MenuPart::agedCommands); }
    /// How often a deletion met a menu that refers to the resource.
    int toldOfMenus() const { return m_toldOfMenus; }

private:
    int sum(int MenuPart::*figure) {
        int all = 0;
        eachClient([&](BothEditors& client) { all += client.part<MenuPart>().*figure; });
        return all;
    }
    /// Whether the last deletion of that key took a module or function; false if nothing did.
    static bool tookModule(TestStore& store, const QString& key) {
        const QStringList deletions = changeLines(store).filter(" 603 MenuResource " + key + ' ');
        return !deletions.isEmpty() &&
               !deletions.last().contains(QRegularExpression(QStringLiteral("\"type_\":[34]\\b")));
    }
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
                // Forms and files go though menus refer to them; of two with one name by their
                // keys.
                if (!tookModule(store, key))
                    continue;
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

    int m_toldOfMenus = 0;
};

} // namespace

class TestBothRandom : public QObject {
    Q_OBJECT
    EachStore m_stores;

private slots:
    void bothEditorsShowWhatIsStoredAfterAnyChanges_data() { m_stores.addRows(); }
    void bothEditorsShowWhatIsStoredAfterAnyChanges() {
        TestStore store(m_stores.renewed());
        BothRun run;
        const QString found = run.over(store);
        waitForFades();
        tellHistory(store);
        QVERIFY2(found.isEmpty(), qPrintable(found));
        QVERIFY(run.comparedEnough());
        qInfo("%d elements compared with their resource, %d of them with one changed since",
              run.comparedCommands(), run.agedCommands());
        QVERIFY(run.comparedCommands() > 0);
        qInfo("%d deletions met a menu that refers to the resource", run.toldOfMenus());
    }

    void aSeedRepeatsARun() {
        QStringList histories[2];
        for (QStringList& history : histories) {
            TestStore store;
            BothRun run(7);
            run.steps = 150;
            const QString found = run.over(store);
            QVERIFY2(found.isEmpty(), qPrintable(found));
            history = changeLines(store);
        }
        waitForFades();
        QVERIFY(histories[0].size() > 50);
        QCOMPARE(histories[0], histories[1]);
    }
};

QTEST_MAIN(TestBothRandom)
#include "tst_both_random.moc"
