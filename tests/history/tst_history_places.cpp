// What is taken back comes to a place that can hold it, and takes no place away.
#include "HistoryTest.h"

using namespace orvo::store;
using namespace orvo::history;
using namespace orvo::history::test;

class TestHistoryPlaces : public HistoryTest {
    Q_OBJECT
public:
    using HistoryTest::HistoryTest;

private slots:
    void init() {
        HistoryTest::init();
        plantElements();
        for (const char* key : {"m", "n"})
            ORVO_OK(
                Batch("MenuResource").insert(key, {{"type_", 1}, {"name_", key}}).send(*m_anna));
    }
    void whatOpensSomethingByNowHoldsNothing();
    void whatIsOnAnotherDesktopByNowHoldsNothing();
    void whatHeldNothingBeforeIsNoReasonToAsk();
    void whatOthersPutIntoKeepsTheElementAFolder();
    void whatWaitedForAFolderKeepsIt();

private:
    QString told(const Inverse& inverse) const { return remarks(inverse).join('\n'); }
    void isTold(const Inverse& inverse, const char* pattern) const {
        QVERIFY2(QRegularExpression(pattern).match(told(inverse)).hasMatch(),
                 qPrintable(told(inverse)));
    }
};

void TestHistoryPlaces::whatOpensSomethingByNowHoldsNothing() {
    ORVO_OK(Batch("Menu").remove("c").remove("b").send(*m_anna));
    const int64_t deletion = last(*m_anna);
    ORVO_OK(Batch("Menu").update("a", {{"MenuResourceKey", "m"}}).send(*m_boris));
    const int64_t his = last(*m_boris);
    const QStringList before = snapshot();
    Inverse done;
    ORVO_OK(undo(*m_anna, {deletion}, {}, &done));
    QVERIFY(!done.written && done.asks());
    isTold(done, "^Не возвращено: элемент меню «Б»: нет места, «А» больше не папка меню "
                 "\\(boris, [^)]*\\)$");
    QCOMPARE(snapshot(), before);
    ORVO_OK(planInverse(*m_anna, {deletion, his}, {}, &done)); // together they come back
    QCOMPARE(told(done), QString());
    Choices choices;
    choices.places["a"] = "";
    ORVO_OK(undo(*m_anna, {deletion}, choices, &done));
    QVERIFY(done.written);
    QCOMPARE(fieldOf("b", "parent"), QString());
    QCOMPARE(fieldOf("c", "parent"), QString("b"));

    // Neither does a move go back there, nor is it a place to choose.
    ORVO_OK(Batch("Menu")
                .insert("e", {{"caption", "Е"}, {"FolderKey", "d"}})
                .insert("f", {{"caption", "Ж"}, {"FolderKey", "d"}, {"parent", "e"}})
                .send(*m_anna));
    ORVO_OK(Batch("Menu").update("f", {{"parent", ""}}).send(*m_anna));
    const int64_t move = last(*m_anna);
    ORVO_OK(Batch("Menu").update("e", {{"MenuResourceKey", "n"}}).send(*m_boris));
    choices.places["e"] = "a";
    ORVO_OK(undo(*m_anna, {move}, choices, &done));
    QVERIFY(!done.written);
    isTold(done, "«Е» больше не папка меню");
    QCOMPARE(fieldOf("f", "parent"), QString());
}

void TestHistoryPlaces::whatIsOnAnotherDesktopByNowHoldsNothing() {
    ORVO_OK(Batch("MenuFolder").insert("d2", {{"caption", "Стол 2"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").remove("c").send(*m_anna));
    const int64_t deletion = last(*m_anna);
    ORVO_OK(Batch("Menu").update("b", {{"FolderKey", "d2"}, {"parent", ""}}).send(*m_boris));
    Inverse done;
    ORVO_OK(undo(*m_anna, {deletion}, {}, &done));
    QVERIFY(!done.written && done.asks());
    isTold(done, "^Не возвращено: элемент меню «В»: нет места, «Б» теперь на другом рабочем столе "
                 "\\(boris, [^)]*\\)$");
    Choices choices;
    choices.places["b"] = "a";
    ORVO_OK(undo(*m_anna, {deletion}, choices, &done));
    QVERIFY(done.written);
    QCOMPARE(fieldOf("c", "parent"), QString("a"));
}

void TestHistoryPlaces::whatHeldNothingBeforeIsNoReasonToAsk() {
    ORVO_OK(Batch("Menu").update("b", {{"MenuResourceKey", "m"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").remove("c").send(*m_anna));
    const int64_t deletion = last(*m_anna);
    rename(*m_boris, "b", "1");
    Inverse done;
    ORVO_OK(undo(*m_anna, {deletion}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(told(done), QString());
}

void TestHistoryPlaces::whatOthersPutIntoKeepsTheElementAFolder() {
    ORVO_OK(Batch("Menu").update("c", {{"MenuResourceKey", "m"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").update("c", {{"MenuResourceKey", ""}, {"caption", "1"}}).send(*m_anna));
    const int64_t emptied = last(*m_anna);
    ORVO_OK(Batch("Menu")
                .insert("o", {{"caption", "Чужая"}, {"parent", "C"}, {"FolderKey", "d"}})
                .insert("p", {{"caption", "Ещё"}, {"parent", "o"}, {"FolderKey", "d"}})
                .send(*m_boris));
    const QStringList before = snapshot();
    Inverse done;
    ORVO_OK(undo(*m_anna, {emptied}, {}, &done));
    QVERIFY(!done.written && done.asks());
    isTold(done, "^Оставлено как есть: элемент меню «1», поле «Ресурс»: внутри стоит другое "
                 "\\(boris, [^)]*\\)$");
    QCOMPARE(snapshot(), before);
    Choices choices;
    choices.partly = true;
    ORVO_OK(undo(*m_anna, {emptied}, choices, &done));
    QVERIFY(done.written);
    QCOMPARE(caption("c"), QString("В"));
    QCOMPARE(fieldOf("c", "MenuResourceKey"), QString());
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    choices.othersWorkToo = true;
    ORVO_OK(undo(*m_anna, {emptied}, choices, &done));
    QCOMPARE(fieldOf("c", "MenuResourceKey"), QString("m"));
    QCOMPARE(caption("o") + caption("p"), QString());
}

/// It may have been written before its folder was.
void TestHistoryPlaces::whatWaitedForAFolderKeepsIt() {
    ORVO_OK(Batch("Menu")
                .insert("x", {{"caption", "Икс"}, {"parent", "N"}, {"FolderKey", "d"}})
                .send(*m_anna));
    ORVO_OK(Batch("Menu").insert("n", {{"caption", "Новая"}, {"FolderKey", "d"}}).send(*m_anna));
    const int64_t made = last(*m_anna);
    const QStringList before = snapshot();
    Inverse done;
    ORVO_OK(undo(*m_anna, {made}, {}, &done));
    QVERIFY(!done.written && done.asks());
    isTold(done, "^Не удалено: элемент меню «Новая»: на этом построено другое \\(anna, [^)]*\\)$");
    QCOMPARE(snapshot(), before);
}

int main(int argc, char** argv) {
    return orvo::store::test::runOnAllKinds<TestHistoryPlaces>(argc, argv);
}

#include "tst_history_places.moc"
