// Two engineers at work on one store of each kind, thousands of acts in random order, and a foreign
// hand. Questions, pickers and cells stand open while others write; writes are refused; clients are
// left and come back. Nothing that was typed is ever missing, and in the end the trees are those of
// editors opened then.
//
// What may differ between an editor that has followed and a new one:
// tests/menu/MenuPart.h and tests/resources/ResPart.h. The seed and the number of
// steps: tests/menu/RandomRun.h; ORVO_STORE_KIND sets the store.
#include "tests/resources/EachStore.h"
#include "tests/resources/WorkingActs.h"

using namespace orvo::test;

using Client = WorkingActs::Client;

namespace {

/// A run over an empty store.
class WorkingRun : public RandomRun<Client> {
public:
    using RandomRun::RandomRun;

    QString over(TestStore& store, EngineersKind& faults) {
        ResRandomActs::fill(store, *this);
        MenuRandomActs::fill(store, "rtrend");
        faults.admitEngineers();
        mostAtOnce = 3;
        cancelPercent = 60;
        quietPercent = 3;
        reopenPercent = 0; // an engineer who leaves is asked
        open(store);
        TypedTexts typed(store);
        const auto anyResources = [&]() -> ResPart& { return anyClient().part<ResPart>(); };
        ResRandomActs resources(*this, store, anyResources);
        MenuRandomActs menus(
            *this, store, [&]() -> MenuPart& { return anyClient().part<MenuPart>(); },
            [&] { return oneOf(anyResources().records("MenuResource").keys()); });
        WorkingActs acts({*this, store, faults, typed, menus, resources,
                          [&]() -> Client& { return anyClient(); }});
        eachClient([&](Client& client) { acts.follow(client); });
        settle = [&](Client& client) { acts.settle(client); };
        QString found = work(
            [&] {
                if (chance(50))
                    menus.foreignAct();
                else
                    resources.foreignAct();
            },
            [&](Client& client) {
                acts.ownAct(client);
                client.wrong = acts.fault();
            });
        if (found.isEmpty())
            found = end(acts, typed);
        for (const auto& [what, times] : acts.figures())
            qInfo("%s: %d", qPrintable(what), times);
        qInfo("%d texts typed: %d stored, %d dropped, %d typed over, %d not taken, %d told of, %d "
              "pending",
              typed.typed(), typed.stored, typed.dropped, typed.overtyped, typed.notTaken,
              typed.told, typed.pending());
        eachClient([](Client& client) { client.typed = nullptr; });
        settle = nullptr;
        return found;
    }

private:
    QString end(WorkingActs& acts, TypedTexts& typed) {
        cancelPercent = 100;
        for (int round = 0; round < 2; ++round) { // writes of one are heard by the other
            eachClient([&](Client& client) { acts.finish(client); });
            QString found = quietPoint();
            if (found.isEmpty() && round > 0) {
                eachClient(
                    [](Client& client) { client.each([](auto& part) { part.expectStored(); }); });
                found = quietPoint();
            }
            if (!found.isEmpty())
                return "at the end: " + found;
        }
        QString found;
        eachClient([&](Client& client) {
            if (found.isEmpty())
                found = client.lost();
            if (found.isEmpty() && !client.unwritten().isEmpty())
                found = client.unwritten().summary();
        });
        if (found.isEmpty() && typed.pending() > 0)
            found = QString("%1 texts are neither here nor there").arg(typed.pending());
        return found;
    }
};

} // namespace

class TestWorkingRandom : public QObject {
    Q_OBJECT
    EachStore m_stores;

private slots:
    void nothingTypedIsMissingAndTreesShowWhatIsStored_data() { m_stores.addRows(); }
    void nothingTypedIsMissingAndTreesShowWhatIsStored() {
        auto kind = std::make_unique<EngineersKind>(m_stores.taken());
        if (!kind->renew())
            qFatal("no store");
        EngineersKind& faults = *kind;
        TestStore store(std::move(kind));
        WorkingRun run;
        const QString found = run.over(store, faults);
        waitForFades();
        tellHistory(store);
        QVERIFY2(found.isEmpty(), qPrintable(found));
        QVERIFY(run.comparedEnough());
    }
};

QTEST_MAIN(TestWorkingRandom)
#include "tst_working_random.moc"
