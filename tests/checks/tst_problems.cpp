// Findings follow every change, and cures put right what they are about, and nothing else.
#include "tests/store/StoreTest.h"

#include "checks/Cures.h"
#include "checks/Fields.h"
#include "checks/Problems.h"
#include "frame/Vocabulary.h"

#include <QRandomGenerator>

using namespace orvo;
using namespace orvo::store;
using namespace orvo::store::test;
using namespace orvo::checks;

namespace {

QStringList textOf(const Problems& problems) {
    QStringList lines;
    for (const Finding& finding : problems.all())
        lines << QString("%1 %2 %3 %4")
                     .arg(finding.table->name)
                     .arg(QString::fromStdString(finding.key))
                     .arg(identifierOf(finding.problem))
                     .arg(QString::fromStdString(finding.value));
    return lines;
}

/// A catalogue that follows the store, and the problems in it.
struct Watch {
    Catalogue records;
    Problems problems{records};
    int64_t seen = 0;

    explicit Watch(Store& store) : m_store(dynamic_cast<MaintainedStore&>(store)) {
        records.addListener(&problems);
        if (!store.logPosition(&seen).ok() || !records.load(store).ok())
            qFatal("no records");
    }
    QStringList look() {
        std::vector<Change> changes;
        if (!m_store.readLog(seen, 100000, &changes).ok())
            qFatal("no log");
        for (const Change& change : changes) {
            records.apply(change);
            seen = change.id;
        }
        problems.settle();
        if (const char* broken = problems.check())
            return {broken};
        return textOf(problems).filter(QRegularExpression("^(?!.*no-top-folder)"));
    }
    /// Cures the only finding there is that has a cure.
    Status cure() {
        for (const Finding& finding : problems.all())
            if (const auto cure = cureOf(problems, finding))
                return m_store.writeAll({cure->writes}, seen, {});
        return {Refused, "nothing to cure"};
    }

private:
    MaintainedStore& m_store;
};

} // namespace

class TestProblems : public StoreTest {
    Q_OBJECT
public:
    using StoreTest::StoreTest;

private slots:
    void aFindingComesAndGoesWithItsCause();
    void whatNamesARecordIsLookedAtWithIt();
    void aCircleIsToldOnceAndGoesWhenItIsBroken();
    void whatTheOrderOfAFolderHidesIsCounted();
    void anElementInACircleOrBelowNothingIsOnItsDesktop();
    void theFirstOfTwoNamesakesHasTheRight();
    void anIconIsMissedWhenItsFileGoes();
    void theIconOfAResourceIsMissedToo();
    void aResourceWithoutANameMakesNoIconMissed();
    void manyInOnePlaceOfTheOrderAreFollowed();
    void contentsAreFollowed();
    void aCureOutdatedByAnotherWriteIsRefused();
    void distinctOrdersKeepTheSequence();
    void whatComesToTheTopHasAPlaceOfItsOwn();
    void randomChangesLeaveWhatAFreshLookGives_data();
    void randomChangesLeaveWhatAFreshLookGives();

private:
    void fill();
};

void TestProblems::fill() {
    ORVO_OK(Batch("MenuFolder")
                .insert("D", {{"caption", "Стол"}, {"order_", "2000"}, {"isFolder", false}})
                .send(*m_store));
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("F", {{"caption", "модули"}, {"type_", 1}})
                .insert("I", {{"caption", "icons"}, {"type_", 4}})
                .send(*m_store));
    ORVO_OK(Batch("MenuResource")
                .insert("R", {{"name_", "Trends"}, {"type_", 1}, {"MenuResourceFolderKey", "F"}})
                .insert("A", {{"name_", "a.png"}, {"type_", 4}, {"MenuResourceFolderKey", "I"}})
                .send(*m_store));
    ORVO_OK(Batch("Menu")
                .insert("P", {{"caption", "Папка"}, {"FolderKey", "D"}, {"order_", 0}})
                .insert("E", {{"caption", "Насос"},
                              {"FolderKey", "D"},
                              {"parent", "P"},
                              {"MenuResourceKey", "R"},
                              {"ico", "a.png"},
                              {"order_", 0}})
                .send(*m_store));
}

void TestProblems::aFindingComesAndGoesWithItsCause() {
    fill();
    Watch watch(*m_store);
    QCOMPARE(watch.look(), QStringList());
    ORVO_OK(Batch("Menu").update("E", {{"caption", ""}}).send(*m_store));
    QCOMPARE(watch.look(), QStringList("Menu E no-caption "));
    QCOMPARE(watch.problems.takeChanged().size(), size_t(2)); // the tops that are missing, too
    ORVO_OK(Batch("Menu").update("E", {{"caption", "Помпа"}}).send(*m_store));
    QCOMPARE(watch.look(), QStringList());
    const Problems::Changed changed = watch.problems.takeChanged();
    QCOMPARE(changed.size(), size_t(1));
    QVERIFY(changed.begin()->second.empty());
    ORVO_OK(Batch("Menu").update("E", {{"params", "x"}}).send(*m_store));
    watch.look();
    QVERIFY(watch.problems.takeChanged().empty());
}

void TestProblems::whatNamesARecordIsLookedAtWithIt() {
    fill();
    Watch watch(*m_store);
    ORVO_OK(Batch("MenuResource").remove("R").send(*m_store));
    QCOMPARE(watch.look(), QStringList("Menu E no-resource R"));
    ORVO_OK(Batch("MenuFolder").remove("D").send(*m_store));
    QCOMPARE(watch.look(),
             (QStringList{"Menu E no-desktop D", "Menu E no-resource R", "Menu P no-desktop D"}));
    ORVO_OK(Batch("MenuFolder")
                .insert("d", {{"caption", "Ц"}, {"order_", "1000"}, {"isFolder", true}})
                .send(*m_store));
    QCOMPARE(watch.look(), (QStringList{"Menu E desktop-is-folder d", "Menu E no-resource R",
                                        "Menu P desktop-is-folder d"}));
    ORVO_OK(
        Batch("MenuFolder").update("d", {{"order_", "2000"}, {"isFolder", false}}).send(*m_store));
    QCOMPARE(watch.look(), (QStringList{"Menu E desktop-spelling D", "Menu E no-resource R",
                                        "Menu P desktop-spelling D"}));
}

void TestProblems::aCircleIsToldOnceAndGoesWhenItIsBroken() {
    fill();
    QVERIFY(m_kind.byHand("INSERT INTO \"MenuFolder\" VALUES ('a', 'c', 'А', '1000', '1'), "
                          "('b', 'a', 'Б', '1000', '1'), ('c', 'b', 'В', '1000', '1'), "
                          "('x', 'c', 'Ж', '1000', '1')"));
    Watch watch(*m_store);
    QCOMPARE(watch.look(), QStringList("MenuFolder a circle 3"));
    QCOMPARE(wordsOf(watch.records, watch.problems.namesakes(), watch.problems.all()[0]),
             QString("круг: стоит внутри самой себя; записей в круге: 3; вместе с этим не видно "
                     "записей: 3"));
    ORVO_OK(Batch("MenuFolder").update("b", {{"ParentKey", ""}}).send(*m_store));
    QCOMPARE(watch.look(), QStringList());
    QVERIFY(m_kind.byHand("UPDATE \"MenuFolder\" SET \"ParentKey\" = 'x' WHERE \"KeyLink\" = 'b'"));
    QCOMPARE(watch.look(), QStringList("MenuFolder b circle 3"));
    ORVO_OK(Batch("MenuFolder").remove("x").send(*m_store));
    QCOMPARE(watch.look(), QStringList("MenuFolder b no-parent x"));
}

void TestProblems::whatTheOrderOfAFolderHidesIsCounted() {
    fill();
    QVERIFY(m_kind.byHand("INSERT INTO \"MenuFolder\" VALUES ('a', NULL, 'А', '5', '1'), "
                          "('b', 'a', 'Б', '2000', '1'), ('c', 'b', 'В', '2000', '0')"));
    Watch watch(*m_store);
    QCOMPARE(watch.look(), (QStringList{"MenuFolder a order-class-unknown \"5\"",
                                        "MenuFolder b order-class-of-other \"2000\""}));
    QStringList words;
    for (const Finding& finding : watch.problems.all())
        if (finding.table == findTable("MenuFolder"))
            words << wordsOf(watch.records, watch.problems.namesakes(), finding).section(": ", 1);
    // At the top a folder is shown with all that is in it.
    QCOMPARE(words, (QStringList{"\"5\"", "\"2000\"; вместе с этим не видно записей: 1"}));
}

void TestProblems::anElementInACircleOrBelowNothingIsOnItsDesktop() {
    fill();
    Watch watch(*m_store);
    const auto pathOfElement = [&] {
        watch.look();
        return pathOf(watch.records, watch.records.find(*findTable("Menu"), "E"));
    };
    QCOMPARE(pathOfElement(), QString("Стол / Папка"));
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET parent = 'E' WHERE \"KeyLink\" = 'P'"));
    QCOMPARE(pathOfElement(), QString("Стол / Папка"));
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET parent = 'E' WHERE \"KeyLink\" = 'E'"));
    QCOMPARE(pathOfElement(), QString("Стол"));
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET parent = 'gone' WHERE \"KeyLink\" = 'E'"));
    QCOMPARE(pathOfElement(), QString("Стол"));
}

void TestProblems::theFirstOfTwoNamesakesHasTheRight() {
    fill();
    Watch watch(*m_store);
    ORVO_OK(Batch("MenuResource")
                .insert("Q", {{"name_", "TRENDS"}, {"type_", 1}, {"MenuResourceFolderKey", "F"}})
                .send(*m_store));
    QCOMPARE(watch.look(), QStringList("MenuResource R name-twice Trends"));
    ORVO_OK(Batch("MenuResource")
                .insert("S", {{"name_", "trends"}, {"type_", 1}, {"MenuResourceFolderKey", "F"}})
                .remove("Q")
                .send(*m_store));
    QCOMPARE(watch.look(), QStringList("MenuResource S name-twice trends"));
    ORVO_OK(Batch("MenuResource").update("S", {{"name_", "Other"}}).send(*m_store));
    QCOMPARE(watch.look(), QStringList());
}

void TestProblems::anIconIsMissedWhenItsFileGoes() {
    fill();
    Watch watch(*m_store);
    ORVO_OK(Batch("MenuResource").update("A", {{"MenuResourceFolderKey", ""}}).send(*m_store));
    QCOMPARE(watch.look(), QStringList("Menu E no-icon a.png"));
    ORVO_OK(Batch("MenuResource").update("A", {{"MenuResourceFolderKey", "I"}}).send(*m_store));
    QCOMPARE(watch.look(), QStringList());
    ORVO_OK(Batch("MenuResourceFolder").update("I", {{"caption", "знаки"}}).send(*m_store));
    QCOMPARE(watch.look(), QStringList("Menu E no-icon a.png"));
    ORVO_OK(watch.cure());
    QCOMPARE(watch.look(), QStringList());
}

void TestProblems::aResourceWithoutANameMakesNoIconMissed() {
    fill();
    Watch watch(*m_store);
    ORVO_OK(Batch("MenuResource").update("R", {{"name_", ""}}).send(*m_store));
    watch.look();
    ORVO_OK(Batch("MenuResource").update("S", {{"caption", "S1"}}).send(*m_store));
    QCOMPARE(watch.look().filter("no-icon"), QStringList());
}

void TestProblems::theIconOfAResourceIsMissedToo() {
    fill();
    Watch watch(*m_store);
    ORVO_OK(Batch("MenuResource").update("R", {{"ico", "a.png"}}).send(*m_store));
    QCOMPARE(watch.look(), QStringList());
    ORVO_OK(Batch("MenuResource").remove("A").send(*m_store));
    QCOMPARE(watch.look(), (QStringList{"Menu E no-icon a.png", "MenuResource R no-icon a.png"}));
    for (int i = 0; i < 2; ++i) {
        ORVO_OK(watch.cure());
        watch.look();
    }
    QCOMPARE(watch.look(), QStringList());
}

void TestProblems::manyInOnePlaceOfTheOrderAreFollowed() {
    fill();
    Watch watch(*m_store);
    constexpr int all = 40;
    const auto key = [](int number) { return QByteArray::number(100 + number); };
    QRandomGenerator random(1);
    std::map<QByteArray, int> orders;
    for (int act = 0; act < 300; ++act) {
        // Filled, emptied, and filled again, so that they become many and few.
        const bool fills = act / 60 % 2 == 0;
        const QByteArray one = key(random.bounded(all));
        Batch batch("Menu");
        const int order = random.bounded(8) == 0 ? act : 7;
        if (orders.count(one) && (!fills || random.bounded(4) == 0)) {
            batch.remove(one.constData());
            orders.erase(one);
        } else {
            batch.add(orders.count(one) ? MDX_UPDATE : MDX_INSERT, one, {});
            batch.set("caption", QString(one));
            batch.set("FolderKey", "D");
            batch.set("order_", order);
            orders[one] = order;
        }
        ORVO_OK(batch.send(*m_store));
        QStringList expected;
        std::map<int, QByteArray> owners;
        for (const auto& [element, place] : orders)
            if (!owners.emplace(place, element).second)
                expected << QString("Menu %1 same-order %2").arg(QString(element)).arg(place);
        QCOMPARE(watch.look(), expected);
    }
}

void TestProblems::contentsAreFollowed() {
    fill();
    Watch watch(*m_store);
    watch.problems.setContents({{"icons", "A.png"}});
    QCOMPARE(watch.look(), QStringList());
    watch.problems.contentChanged("a", false);
    QCOMPARE(watch.look(), QStringList("MenuResource A no-content a.png"));
    watch.problems.contentChanged("A", true);
    QCOMPARE(watch.look(), QStringList());
}

void TestProblems::aCureOutdatedByAnotherWriteIsRefused() {
    fill();
    ORVO_OK(Batch("Menu").update("E", {{"ico", "gone.png"}}).send(*m_store));
    Watch watch(*m_store);
    ORVO_OK(Batch("Menu").update("E", {{"ico", "a.png"}}).send(*m_store)); // someone was quicker
    QCOMPARE(watch.cure().code, int(Outdated));
    QCOMPARE(watch.look(), QStringList());
    CMDArray rows;
    ORVO_OK(m_store->fetchWhere("Menu", "ico", "a.png", rows.array));
    QCOMPARE(rows.array->recordCount, 1U);
}

void TestProblems::whatComesToTheTopHasAPlaceOfItsOwn() {
    fill();
    ORVO_OK(Batch("Menu").update("E", {{"parent", "gone"}, {"order_", 0}}).send(*m_store));
    Watch watch(*m_store);
    QCOMPARE(watch.look(), QStringList("Menu E no-parent gone"));
    ORVO_OK(watch.cure());
    QCOMPARE(watch.look(), QStringList());
}

void TestProblems::distinctOrdersKeepTheSequence() {
    fill();
    Batch batch("Menu");
    for (const auto& [key, order] :
         {std::pair("K1", 5), {"K2", 5}, {"K3", 6}, {"K4", 5}, {"K5", 9}})
        batch.insert(key, {{"caption", key}, {"FolderKey", "D"}, {"order_", order}});
    ORVO_OK(batch.send(*m_store));
    Watch watch(*m_store);
    QCOMPARE(watch.look(), (QStringList{"Menu K2 same-order 5", "Menu K4 same-order 5"}));
    ORVO_OK(watch.cure());
    QCOMPARE(watch.look(), QStringList());
    std::map<int, QString> sequence;
    for (const char* key : {"P", "K1", "K2", "K3", "K4", "K5"})
        sequence[watch.records.find("Menu", key).integer("order_")] += key;
    QStringList keys;
    for (const auto& [order, key] : sequence)
        keys << key;
    QCOMPARE(keys, (QStringList{"P", "K1", "K2", "K4", "K3", "K5"}));
    QCOMPARE(watch.records.find("Menu", "K5").integer("order_"), 9); // in nobody's way
}

void TestProblems::randomChangesLeaveWhatAFreshLookGives_data() {
    QTest::addColumn<int>("seed");
    for (int seed = 1; seed <= 4; ++seed)
        QTest::newRow(qPrintable(QString("seed %1").arg(seed))) << seed;
}

void TestProblems::randomChangesLeaveWhatAFreshLookGives() {
    QFETCH(int, seed);
    QRandomGenerator random(static_cast<quint32>(seed));
    const auto key = [&] { return QString("k%1").arg(random.bounded(10)); };
    const auto value = [&](const FieldDef& def) -> QVariant {
        const QByteArray name = def.name;
        if (random.bounded(6) == 0)
            return {};
        if (name == field::order_ && def.type == MDX_TEXT)
            return QStringList{"1000", "2000", "3000"}[random.bounded(3)];
        if (def.link || name == field::FolderKey)
            return random.bounded(8) == 0 ? QString("FileResources") : key();
        if (def.type == MDX_TEXT)
            return QStringList{"icons", "модули", "a", "A", "б"}[random.bounded(5)];
        if (def.type == MDX_BOOLEAN)
            return random.bounded(2) == 1;
        if (def.type == MDX_DATE)
            return 1.5;
        return random.bounded(0, 6);
    };
    Watch watch(*m_store);
    size_t most = 0;
    for (int act = 0; act < 400; ++act) {
        const TableDef& table = tables()[random.bounded(quint32(tables().size()))];
        const QByteArray name = key().toLatin1();
        Batch batch(table.name);
        const int what = random.bounded(4);
        batch.add(what == 0 ? MDX_DELETE : what == 1 ? MDX_UPDATE : MDX_INSERT, name, {});
        for (const FieldDef& def : table.fields)
            if (what != 0 && &def != &table.fields.front() && random.bounded(3) != 0)
                batch.set(def.name, value(def));
        const Status status = batch.send(*m_store); // many are refused
        Q_UNUSED(status);
        if (random.bounded(3) != 0)
            continue;
        const QStringList followed = watch.look();
        Catalogue records;
        ORVO_OK(records.load(*m_store));
        Problems fresh(records);
        fresh.lookAtAll();
        QCOMPARE(textOf(watch.problems).join('\n'), textOf(fresh).join('\n'));
        QCOMPARE(watch.problems.errors(), fresh.errors());
        QCOMPARE(watch.problems.warnings(), fresh.warnings());
        most = std::max(most, size_t(followed.size()));
    }
    QVERIFY(most > 10);
}

int main(int argc, char** argv) {
    return runOnAllKinds<TestProblems>(argc, argv);
}

#include "tst_problems.moc"
