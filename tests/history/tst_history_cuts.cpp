// A cut, which writes anew what it takes away, is taken back beside the work of others.
#include "HistoryTest.h"

using namespace orvo::store;
using namespace orvo::history;
using namespace orvo::history::test;

class TestHistoryCuts : public HistoryTest {
    Q_OBJECT
public:
    using HistoryTest::HistoryTest;

private slots:
    void init() {
        HistoryTest::init();
        plantElements();
    }
    void aCutGoesBackAsAWholeWithWhatOthersChanged();
    void aCutThatAnotherCutOnStays();
    void aCutWhoseElementAnotherDeletedStays();
    void aCutIsKnownHoweverItsHalvesWereChanged();

private:
    /// Cuts an element and pastes it; the id of the group.
    int64_t cut(Store& store, const char* from, const char* to, const char* parent) const {
        Batch pasted("Menu");
        pasted.insert(to, {{"caption", fieldOf(from, "caption")},
                           {"params", fieldOf(from, "params")},
                           {"FolderKey", "d"},
                           {"parent", parent}});
        Status status = pasted.send(store);
        const int64_t group = last(store);
        store.joinGroup(group);
        if (status.ok())
            status = Batch("Menu").remove(from).send(store);
        store.joinGroup(0);
        if (!status.ok())
            qWarning("%s", status.text.c_str());
        return group;
    }
};

void TestHistoryCuts::aCutGoesBackAsAWholeWithWhatOthersChanged() {
    ORVO_OK(Batch("Menu")
                .update("c", {{"params", "p"}})
                .insert("e", {{"caption", "Г"}, {"parent", "b"}})
                .send(*m_anna));
    const QStringList before = snapshot();
    ORVO_OK(Batch("Menu")
                .insert("c2", {{"caption", "В"}, {"params", "p"}, {"parent", "a"}})
                .insert("e2", {{"caption", "Г"}, {"parent", "a"}})
                .send(*m_anna));
    const int64_t cut = last(*m_anna);
    m_anna->joinGroup(cut);
    ORVO_OK(Batch("Menu").remove("c").remove("e").send(*m_anna));
    m_anna->joinGroup(0);
    rename(*m_boris, "c2", "Борисова");
    const QStringList after = snapshot();
    Inverse done;
    Choices partly;
    partly.partly = true;
    ORVO_OK(undo(*m_anna, {cut}, partly, &done)); // no second one comes to be
    QVERIFY(!done.written && done.asks());
    QVERIFY2(remarks(done).join('\n').contains("«Борисова»: на этом построено другое (boris, "),
             qPrintable(remarks(done).join('\n')));
    QCOMPARE(snapshot(), after);
    Choices choices;
    choices.othersWorkToo = true;
    ORVO_OK(undo(*m_anna, {cut}, choices, &done));
    QVERIFY(done.written);
    QCOMPARE(snapshot(), QStringList(before).replaceInStrings("В", "Борисова"));
    rename(*m_boris, "c", "Б3");
    const int64_t undone = last(*m_anna);
    ORVO_OK(undo(*m_anna, {undone}, {}, &done)); // again
    QVERIFY(!done.written);
    ORVO_OK(undo(*m_anna, {undone}, choices, &done));
    QCOMPARE(snapshot(), QStringList(after).replaceInStrings("Борисова", "Б3"));
}

void TestHistoryCuts::aCutThatAnotherCutOnStays() {
    rename(*m_boris, "c", "Б");
    const int64_t renamed = last(*m_boris);
    const int64_t annas = cut(*m_anna, "c", "c2", "a");
    Inverse done;
    ORVO_OK(undo(*m_boris, {renamed}, {}, &done)); // it is another record by now
    QVERIFY(!done.written);
    QVERIFY2(remarks(done).join('\n').contains("«Б»: с тех пор перемещено (anna, "),
             qPrintable(remarks(done).join('\n')));
    const int64_t boriss = cut(*m_boris, "c2", "c3", "");
    const QStringList after = snapshot();
    ORVO_OK(undo(*m_anna, {annas}, {}, &done)); // there would be two of it
    QVERIFY(!done.written);
    QVERIFY2(remarks(done).join('\n').contains("«Б»: с тех пор перемещено (boris, "),
             qPrintable(remarks(done).join('\n')));
    QCOMPARE(snapshot(), after);
    ORVO_OK(undo(*m_boris, {boriss}, {}, &done));
    ORVO_OK(undo(*m_anna, {annas}, {}, &done));
    QVERIFY(done.written);
    ORVO_OK(undo(*m_boris, {renamed}, {}, &done));
    QVERIFY(done.written);
}

void TestHistoryCuts::aCutWhoseElementAnotherDeletedStays() {
    const QStringList before = snapshot();
    const int64_t annas = cut(*m_anna, "c", "c2", "a");
    ORVO_OK(Batch("Menu").remove("c2").send(*m_boris));
    const int64_t deleted = last(*m_boris);
    const QStringList without = snapshot();
    Inverse done;
    ORVO_OK(undo(*m_anna, {annas}, {}, &done));
    QVERIFY(!done.written);
    QVERIFY2(remarks(done).join('\n').contains("«В»: с тех пор удалено (boris, "),
             qPrintable(remarks(done).join('\n')));
    QCOMPARE(snapshot(), without);
    ORVO_OK(undo(*m_boris, {deleted}, {}, &done));
    ORVO_OK(undo(*m_anna, {annas}, {}, &done));
    QCOMPARE(snapshot(), before);
    // The same when it is done again.
    const int64_t undone = last(*m_anna);
    ORVO_OK(Batch("Menu").remove("c").send(*m_boris));
    const QStringList gone = snapshot();
    ORVO_OK(undo(*m_anna, {undone}, {}, &done));
    QVERIFY(!done.written);
    QVERIFY2(remarks(done).join('\n').contains("«В»: с тех пор удалено (boris, "),
             qPrintable(remarks(done).join('\n')));
    QCOMPARE(snapshot(), gone);
}

void TestHistoryCuts::aCutIsKnownHoweverItsHalvesWereChanged() {
    const QStringList before = snapshot();
    rename(*m_anna, "c", "А");
    const int64_t renamed = last(*m_anna);
    const int64_t annas = cut(*m_anna, "c", "c2", "a");
    ORVO_OK(Batch("Menu").update("c2", {{"params", "б"}}).send(*m_boris));
    const QStringList after = snapshot();
    Choices choices;
    choices.partly = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {renamed, annas}, choices, &done)); // no second one comes to be
    QVERIFY(!done.written);
    QCOMPARE(snapshot(), after);
    choices.othersWorkToo = true;
    ORVO_OK(undo(*m_anna, {renamed, annas}, choices, &done));
    QVERIFY(done.written);
    QCOMPARE(fieldOf("c", "caption"), QString("В"));
    QCOMPARE(fieldOf("c", "params"), QString("б"));
    QCOMPARE(snapshot().size(), before.size());
}

int main(int argc, char** argv) {
    return orvo::store::test::runOnAllKinds<TestHistoryCuts>(argc, argv);
}

#include "tst_history_cuts.moc"
