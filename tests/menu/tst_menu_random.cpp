// Thousands of changes in random order, by two menu editors and a foreign hand on one store. What
// may differ between an editor that has followed them and a new one: tests/menu/MenuPart.h.
// The seed and the number of steps: tests/menu/RandomRun.h.
#include "tests/menu/MenuRandomActs.h"

using namespace orvo::test;

class TestMenuRandom : public QObject {
    Q_OBJECT
private slots:
    void editorsShowWhatIsStoredAfterAnyChanges() {
        TestStore store;
        addResource(store, "r1", 1, "Trend");
        MenuRandomActs::fill(store, "r1");
        RandomRun<RandomClient<MenuPart>> run;
        run.open(store);
        MenuRandomActs acts(
            run, store, [&]() -> MenuPart& { return run.anyClient().part<MenuPart>(); },
            [] { return QStringLiteral("r1"); });
        const QString found =
            run.work([&] { acts.foreignAct(); },
                     [&](auto& client) { acts.ownAct(client.template part<MenuPart>()); });
        tellHistory(store);
        QVERIFY2(found.isEmpty(), qPrintable(found));
        QVERIFY(run.comparedEnough());
    }
};

QTEST_MAIN(TestMenuRandom)
#include "tst_menu_random.moc"
