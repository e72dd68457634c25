// Thousands of changes in random order, by two resource editors and a foreign hand on one store of
// each kind. What may differ between an editor that has followed them and a new one:
// tests/resources/ResPart.h. The seed and the number of steps: tests/menu/RandomRun.h;
// ORVO_STORE_KIND sets the store.
#include "tests/resources/EachStore.h"
#include "tests/resources/ResRandomActs.h"

using namespace orvo::test;

class TestResRandom : public QObject {
    Q_OBJECT
    EachStore m_stores;

private slots:
    void editorsShowWhatIsStoredAfterAnyChanges_data() { m_stores.addRows(); }
    void editorsShowWhatIsStoredAfterAnyChanges() {
        TestStore store(m_stores.renewed());
        RandomRun<RandomClient<ResPart>> run;
        ResRandomActs::fill(store, run);
        run.mostAtOnce = 3;
        run.cancelPercent = 60;
        run.reopenPercent = 25;
        run.open(store);
        ResRandomActs acts(run, store,
                           [&]() -> ResPart& { return run.anyClient().part<ResPart>(); });
        const QString found =
            run.work([&] { acts.foreignAct(); },
                     [&](auto& client) { acts.ownAct(client.template part<ResPart>()); });
        waitForFades();
        tellHistory(store);
        QVERIFY2(found.isEmpty(), qPrintable(found));
        QVERIFY(run.comparedEnough());
    }
};

QTEST_MAIN(TestResRandom)
#include "tst_res_random.moc"
