// Everything is taken back to a place of the history: of a row, a branch, a person.
#include "HistoryTest.h"

#include "history/BackTo.h"

using namespace orvo::store;
using namespace orvo::history;
using namespace orvo::history::test;

class TestHistoryBack : public HistoryTest {
    Q_OBJECT
public:
    using HistoryTest::HistoryTest;

private slots:
    void init() {
        HistoryTest::init();
        plantElements();
    }
    void aRowGoesBackToAPlace();
    void aRowThatWasCutGoesBackToAPlaceBefore();
    void aBranchGoesBackToAPlace();
    void whatChangedNothingOfARowIsNoPartOfIt();
    void aLargeActionThatChangedNothingIsNotTold();
    void aPersonsLastHourGoesBack();
    void ofAnActionOnlyWhatTheScopeHoldsGoesBack();
    void aPlaceThatTheLogHasForgottenIsTold();

private:
    QString captions() const {
        return orvo::store::test::dump(*m_anna, "Menu", {"caption"}).replace('\n', ' ');
    }
    /// Takes back all in that scope down to the group, as one action.
    void goBack(const Filter& scope, int64_t group) {
        Selection selection;
        ORVO_OK(collectBackTo(*m_anna, scope, group, &selection));
        const int64_t before = last(*m_anna);
        Inverse done;
        ORVO_OK(undo(*m_anna, selection, {}, &done));
        QCOMPARE(remarks(done).filter(QRegularExpression("^(?!Из действий, которые)")),
                 QStringList());
        QCOMPARE(done.written, !selection.groups.empty());
        QVERIFY(selection.groups.empty() || last(*m_anna) > before);
    }
};

void TestHistoryBack::aRowGoesBackToAPlace() {
    rename(*m_anna, "a", "А0");
    const int64_t place = rename(*m_boris, "a", "А1");
    rename(*m_anna, "b", "Б1");
    rename(*m_anna, "a", "А2");
    Filter row;
    row.table = "Menu";
    row.key = "A";
    goBack(row, place);
    QCOMPARE(captions(), QString("А0 Б1 В"));
}

void TestHistoryBack::aRowThatWasCutGoesBackToAPlaceBefore() {
    const QStringList before = snapshot();
    const int64_t place = rename(*m_anna, "c", "В1");
    rename(*m_boris, "a", "А1");
    const QStringList after = snapshot();
    const auto cut = [&](const char* from, const char* to) {
        ORVO_OK(Batch("Menu")
                    .insert("twin", {{"caption", "Т"}, {"FolderKey", "d"}})
                    .insert(to, {{"caption", caption(from)}, {"FolderKey", "d"}})
                    .send(*m_boris));
        m_boris->joinGroup(last(*m_boris));
        ORVO_OK(Batch("Menu").remove(from).remove("twin").send(*m_boris));
        m_boris->joinGroup(0);
    };
    cut("c", "c2");
    cut("c2", "c3");
    rename(*m_anna, "c3", "В3");
    Filter row;
    row.table = "Menu";
    row.key = "C3";
    const auto told = [&](Reader& reader, size_t most) {
        std::vector<Group> groups;
        while (!reader.atEnd() && groups.size() < most)
            if (!reader.next(most - groups.size(), &groups).ok())
                break;
        return groups;
    };
    Reader reader(*m_anna, row);
    const std::vector<Group> groups = told(reader, 100);
    QCOMPARE(groups.size(), size_t(5)); // its name, two cuts, its name, its making
    QCOMPARE(groups[3].id, place);
    for (const char* former : {"c", "c2"}) { // however it was called
        Filter then = row;
        then.key = former;
        Reader all(*m_anna, then);
        const std::vector<Group> same = told(all, 100);
        QCOMPARE(same.size(), groups.size());
        for (size_t i = 0; i < groups.size(); ++i)
            QCOMPARE(same[i].id, groups[i].id);
        then.above = groups[1].newest; // what came since is the new one's
        Reader newer(*m_anna, then);
        QCOMPARE(told(newer, 100).size(), size_t(1));
    }
    Filter hers = row;
    hers.login = "anna";
    Reader ofHer(*m_anna, hers);
    QCOMPARE(told(ofHer, 100).size(), size_t(3));
    Reader rest(*m_anna, row); // what is known is not read again
    rest.skip({groups[0].id, groups[1].id, groups[2].id}, groups[2].id);
    QCOMPARE(told(rest, 100).size(), size_t(2));
    goBack(row, place);
    QCOMPARE(caption("c"), QString("В"));
    QCOMPARE(caption("c2") + caption("c3"), QString());
    QCOMPARE(caption("a"), QString("А1"));
    QCOMPARE(snapshot().size(), before.size());
}

void TestHistoryBack::aBranchGoesBackToAPlace() {
    ORVO_OK(Batch("Menu").insert("x", {{"caption", "Х"}, {"FolderKey", "d"}}).send(*m_anna));
    const QString before = captions();
    const int64_t place = rename(*m_boris, "c", "В1");
    rename(*m_anna, "x", "Х1");
    rename(*m_anna, "a", "А1");
    ORVO_OK(Batch("Menu").remove("c").send(*m_boris)); // was in the branch then
    ORVO_OK(Batch("Menu").insert("e", {{"parent", "b"}, {"FolderKey", "d"}}).send(*m_anna));
    Filter branch;
    branch.branch = Branch{findTable("Menu"), "a"};
    goBack(branch, place);
    QCOMPARE(captions(), QString(before).replace("Х", "Х1"));
}

void TestHistoryBack::whatChangedNothingOfARowIsNoPartOfIt() {
    const int64_t place = rename(*m_anna, "a", "А1");
    ORVO_OK(Batch("Menu")
                .update("a", {{"caption", "А1"}})
                .update("b", {{"caption", "Б1"}})
                .send(*m_boris));
    Filter row;
    row.table = "Menu";
    row.key = "a";
    Selection selection;
    ORVO_OK(collectBackTo(*m_anna, row, place, &selection));
    QCOMPARE(selection.groups, std::vector<int64_t>{place});
    goBack(row, place);
    QCOMPARE(captions(), QString("А Б1 В"));
    Group group;
    ORVO_OK(readGroup(*m_anna, last(*m_anna), &group));
    QCOMPARE(group.undoes, std::vector<int64_t>{place});
}

void TestHistoryBack::aLargeActionThatChangedNothingIsNotTold() {
    constexpr int count = Group::mostChanges + 10;
    const auto write = [&](bool isNew, const QString& ofLast) {
        Batch batch("Menu");
        for (int i = 0; i < count; ++i) {
            const QByteArray key = "k" + QByteArray::number(i);
            const QString text = i + 1 < count ? QString("Э") : ofLast;
            if (isNew)
                batch.insert(key.constData(), {{"caption", text}, {"FolderKey", "d"}});
            else
                batch.update(key.constData(), {{"caption", text}});
        }
        return batch.send(*m_anna);
    };
    const auto told = [&] {
        Reader reader(*m_anna, {});
        std::vector<Group> groups;
        Status status;
        while (status.ok() && groups.empty() && !reader.atEnd()) // a call looks for so long only
            status = reader.next(1, &groups);
        return status.ok() && !groups.empty() ? groups.front().id : 0;
    };
    ORVO_OK(write(true, "Э"));
    const int64_t made = last(*m_anna);
    ORVO_OK(write(false, "Э"));
    QVERIFY(last(*m_anna) > made);
    QCOMPARE(told(), made);
    ORVO_OK(write(false, "Я"));
    QCOMPARE(told(), last(*m_anna));
}

void TestHistoryBack::aPersonsLastHourGoesBack() {
    rename(*m_boris, "a", "А0");
    QVERIFY(m_kind.byHand("UPDATE \"NciEvent\" SET \"time\" = \"time\" - 4000;"));
    const int64_t place = rename(*m_boris, "a", "А1");
    rename(*m_anna, "b", "Б1");
    rename(*m_boris, "c", "В1");
    std::vector<Change> newest;
    ORVO_OK(m_anna->history({}, 1, &newest));
    Filter person;
    person.login = m_boris->login();
    person.since = newest.front().time - 3600;
    // Only what the filter lets pass goes back, whatever place is chosen.
    goBack(person, 1);
    QCOMPARE(captions(), QString("А0 Б1 В"));
    goBack(person, place);
    QCOMPARE(captions(), QString("А0 Б1 В"));
}

void TestHistoryBack::ofAnActionOnlyWhatTheScopeHoldsGoesBack() {
    ORVO_OK(Batch("Menu")
                .update("a", {{"caption", "А1"}})
                .update("b", {{"caption", "Б1"}})
                .insert("n", {{"caption", "Н"}, {"parent", "c"}})
                .send(*m_anna));
    const int64_t place = last(*m_anna);
    rename(*m_boris, "c", "В1");
    Filter row;
    row.table = "Menu";
    row.key = "A";
    goBack(row, place);
    QCOMPARE(captions(), QString("А Б1 В1 Н"));
    Filter branch;
    branch.branch = Branch{findTable("Menu"), "c"};
    goBack(branch, place);
    QCOMPARE(captions(), QString("А Б1 В"));
    // The action itself still stands, so its rest can be taken back.
    Inverse done;
    ORVO_OK(undo(*m_anna, {place}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(captions(), QString("А Б В"));
}

void TestHistoryBack::aPlaceThatTheLogHasForgottenIsTold() {
    const int64_t place = rename(*m_anna, "a", "А1");
    rename(*m_boris, "a", "А2");
    rename(*m_anna, "b", "Б1");
    ORVO_OK(m_anna->pruneLog(place));
    Filter row;
    row.table = "Menu";
    row.key = "a";
    Selection selection;
    ORVO_OK(collectBackTo(*m_anna, row, place, &selection));
    Inverse plan;
    ORVO_OK(planInverse(*m_anna, selection, {}, &plan));
    QCOMPARE(remarks(plan).filter("уже не помнит"),
             QStringList{QString("Действие %1 журнал уже не помнит").arg(place)});
}

int main(int argc, char** argv) {
    return orvo::store::test::runOnAllKinds<TestHistoryBack>(argc, argv);
}

#include "tst_history_back.moc"
