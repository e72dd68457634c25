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
    void whatOthersPutIntoACutBranchGoesBackWithIt();
    void whatOthersPutThereFollowsToAnotherDesktop();
    void whatHoldsThePlaceOfACutKeepsIt();
    void aCutWithoutAPlaceStays();
    void whatGoesBackIntoACutBranchFindsIt();

private:
    /// Cuts "b" with "c" below it and pastes them as "b2" and "c2"; the id of the group.
    int64_t cutBranch(Store& store, const char* desktop, const char* parent) const {
        Status status = Batch("Menu")
                            .insert("b2", {{"caption", fieldOf("b", "caption")},
                                           {"FolderKey", desktop},
                                           {"parent", parent}})
                            .insert("c2", {{"caption", fieldOf("c", "caption")},
                                           {"FolderKey", desktop},
                                           {"parent", "b2"}})
                            .send(store);
        const int64_t group = last(store);
        store.joinGroup(group);
        if (status.ok())
            status = Batch("Menu").remove("b").remove("c").send(store);
        store.joinGroup(0);
        if (!status.ok())
            qWarning("%s", status.text.c_str());
        return group;
    }
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
    QVERIFY2(remarks(done).join('\n').contains(
                 "«Борисова» и всё, что перемещено вместе с ним: с тех пор изменено (boris, "),
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

void TestHistoryCuts::whatOthersPutIntoACutBranchGoesBackWithIt() {
    ORVO_OK(Batch("Menu").insert("m", {{"caption", "М"}, {"FolderKey", "d"}}).send(*m_boris));
    const QStringList before = snapshot();
    const int64_t annas = cutBranch(*m_anna, "d", "");
    ORVO_OK(Batch("Menu")
                .insert("e", {{"caption", "Работа"}, {"FolderKey", "d"}, {"parent", "B2"}})
                .insert("e1", {{"caption", "В ней"}, {"FolderKey", "d"}, {"parent", "e"}})
                .send(*m_boris));
    const int64_t made = last(*m_boris);
    ORVO_OK(Batch("Menu").update("m", {{"parent", "c2"}}).send(*m_boris));
    const int64_t moved = last(*m_boris);
    Inverse done;
    ORVO_OK(undo(*m_anna, {annas}, {}, &done));
    QVERIFY2(done.written, qPrintable(remarks(done).join('\n')));
    QCOMPARE(remarks(done), QStringList());
    QCOMPARE(fieldOf("b", "parent"), QString("a"));
    QCOMPARE(fieldOf("e", "parent"), QString("b"));
    QCOMPARE(fieldOf("e1", "parent"), QString("e"));
    QCOMPARE(fieldOf("m", "parent"), QString("c"));
    QCOMPARE(caption("b2"), QString());
    QStringList preview;
    LoggedRecords source(*m_anna);
    for (const Change& change : done.preview)
        preview << describe(change, source).what;
    QVERIFY2(preview.contains("Перемещён элемент меню «Работа» из «Стол / Б» в «Стол / А / Б»"),
             qPrintable(preview.join('\n')));
    const QString told = words(last(*m_anna));
    QVERIFY2(told.startsWith("Отменено перемещение: элемент меню «Б» из «А» на верхний уровень "
                             "вместе с тем, что внутри: «"),
             qPrintable(told));
    QVERIFY2(told.contains("«Работа»") && told.contains("«М»"), qPrintable(told));
    // Again, and back once more.
    ORVO_OK(Batch("Menu").insert("g", {{"caption", "Г"}, {"parent", "b"}}).send(*m_boris));
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QVERIFY2(done.written, qPrintable(remarks(done).join('\n')));
    QCOMPARE(fieldOf("e", "parent").toLower(), QString("b2"));
    QCOMPARE(fieldOf("m", "parent"), QString("c2"));
    QCOMPARE(fieldOf("g", "parent"), QString("b2"));
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QVERIFY2(done.written, qPrintable(remarks(done).join('\n')));
    QCOMPARE(fieldOf("e", "parent"), QString("b"));
    QCOMPARE(fieldOf("m", "parent"), QString("c"));
    QCOMPARE(fieldOf("g", "parent"), QString("b"));
    ORVO_OK(Batch("Menu").remove("g").send(*m_boris));
    ORVO_OK(undo(*m_boris, {moved, made}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(snapshot(), before);
}

void TestHistoryCuts::whatOthersPutThereFollowsToAnotherDesktop() {
    ORVO_OK(Batch("MenuFolder").insert("d2", {{"caption", "Другой"}}).send(*m_anna));
    const int64_t annas = cutBranch(*m_anna, "d2", "");
    ORVO_OK(Batch("Menu")
                .insert("e", {{"caption", "Работа"}, {"FolderKey", "D2"}, {"parent", "b2"}})
                .insert("e1", {{"caption", "В ней"}, {"FolderKey", "d2"}, {"parent", "e"}})
                .insert("e2", {{"caption", "Ниже"}, {"FolderKey", "d2"}, {"parent", "e1"}})
                .send(*m_boris));
    Inverse done;
    ORVO_OK(undo(*m_anna, {annas}, {}, &done));
    QVERIFY2(done.written, qPrintable(remarks(done).join('\n')));
    QCOMPARE(fieldOf("e", "parent"), QString("b"));
    for (const char* key : {"b", "e", "e1", "e2"})
        QCOMPARE(fieldOf(key, "FolderKey"), QString("d"));
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    for (const char* key : {"b2", "e", "e1", "e2"})
        QCOMPARE(fieldOf(key, "FolderKey").toLower(), QString("d2"));
    // A desktop that was cut itself.
    ORVO_OK(Batch("MenuFolder").insert("f", {{"caption", "П"}, {"isFolder", true}}).send(*m_anna));
    ORVO_OK(Batch("MenuFolder")
                .insert("d3", {{"caption", "Пустой"}, {"ParentKey", "f"}})
                .send(*m_anna));
    ORVO_OK(Batch("MenuFolder").insert("d4", {{"caption", "Пустой"}}).send(*m_anna));
    const int64_t desktop = last(*m_anna);
    m_anna->joinGroup(desktop);
    ORVO_OK(Batch("MenuFolder").remove("d3").send(*m_anna));
    m_anna->joinGroup(0);
    ORVO_OK(Batch("Menu").insert("h", {{"caption", "Н"}, {"FolderKey", "d4"}}).send(*m_boris));
    ORVO_OK(undo(*m_anna, {desktop}, {}, &done));
    QVERIFY2(done.written, qPrintable(remarks(done).join('\n')));
    QCOMPARE(fieldOf("h", "FolderKey"), QString("d3"));
}

void TestHistoryCuts::whatHoldsThePlaceOfACutKeepsIt() {
    const int64_t annas = cutBranch(*m_anna, "d", "");
    ORVO_OK(Batch("Menu").update("a", {{"parent", "b2"}}).send(*m_boris));
    const QStringList after = snapshot();
    Inverse done;
    for (const bool others : {false, true}) {
        Choices choices;
        choices.othersWorkToo = others;
        ORVO_OK(undo(*m_anna, {annas}, choices, &done)); // each would stand below the other
        QVERIFY(!done.written && done.asks());
        QCOMPARE(snapshot(), after);
    }
}

void TestHistoryCuts::aCutWithoutAPlaceStays() {
    const int64_t annas = cutBranch(*m_anna, "d", "");
    ORVO_OK(Batch("Menu").insert("e", {{"caption", "Е"}, {"parent", "b2"}}).send(*m_boris));
    ORVO_OK(Batch("Menu").remove("a").send(*m_boris));
    const QStringList after = snapshot();
    Inverse done;
    Choices partly;
    partly.partly = true;
    ORVO_OK(undo(*m_anna, {annas}, partly, &done)); // or it would be gone altogether
    QVERIFY(!done.written);
    QVERIFY2(remarks(done).join('\n').contains("«Б»: нет места"),
             qPrintable(remarks(done).join('\n')));
    QCOMPARE(snapshot(), after);
    Choices top;
    top.places["a"] = "";
    ORVO_OK(undo(*m_anna, {annas}, top, &done));
    QVERIFY(done.written);
    QCOMPARE(fieldOf("e", "parent"), QString("b"));
}

void TestHistoryCuts::whatGoesBackIntoACutBranchFindsIt() {
    ORVO_OK(Batch("Menu").update("c", {{"parent", "a"}}).send(*m_boris));
    const int64_t moved = last(*m_boris);
    const int64_t annas = cut(*m_anna, "b", "b2", "");
    Inverse done;
    ORVO_OK(undo(*m_boris, {moved}, {}, &done));
    QVERIFY2(done.written, qPrintable(remarks(done).join('\n')));
    QCOMPARE(fieldOf("c", "parent"), QString("b2"));
    ORVO_OK(undo(*m_anna, {annas}, {}, &done));
    QVERIFY2(done.written, qPrintable(remarks(done).join('\n')));
    QCOMPARE(fieldOf("c", "parent"), QString("b"));
}

int main(int argc, char** argv) {
    return orvo::store::test::runOnAllKinds<TestHistoryCuts>(argc, argv);
}

#include "tst_history_cuts.moc"
