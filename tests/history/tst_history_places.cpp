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
    void theTopFoldersStay();
    void theTopFoldersKeepTheirNames();
    void anIconWhoseFileIsGoneIsTold();
    void whatWentAlongToADesktopComesBackFromIt();
    void whatElementsStillOpenStays();
    void whatIsOlderGoesBackToWhereItStood();
    void whatIsOlderAndHasNoWayBackStays();
    void whatIsOlderLeavesALeafAgain();
    void whatWentAlongOnceGoesAgainWithoutAQuestion();
    void whatWentAlongWithSeveralGoesAgainWithOne();
    void whatWentAlongSeveralLevelsDeepGoesAgain();
    void aFormIntoWhichOthersPutFilesSinceDoesNotGoAgain();
    void whatComesBackIsNotLeftNowhere();
    void anUploadThatComesBackKeepsItsForm();
    void anIconThatGoesBackToAnotherNameIsTold();
    void anActionThatStaysAsAWholeIsNotTakenBack();
    void whatStandsInWhatStaysStays();
    void thereIsNoTopWhereNothingCanStand();
    void aChosenPlaceThatDoesNotFitIsNamed();
    void aFolderOnAnotherDesktopIsNotCalledDeleted();
    void aLinkToADeletedResourceIsNotTheWholeElement();

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

/// Without one of them no editor loads the tree.
void TestHistoryPlaces::theTopFoldersStay() {
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("t1", {{"type_", 1}, {"caption", "модули"}})
                .insert("t2", {{"type_", 1}, {"caption", "модули"}, {"ParentKey", "t1"}})
                .insert("t4", {{"type_", 4}, {"caption", "icons"}})
                .send(*m_anna));
    Inverse done;
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(told(done), QString("Не удалено: папка ресурсов «модули»: без неё дерево ресурсов не "
                                 "загружается"));
    QCOMPARE(snapshot().filter("MenuResourceFolder|").size(), 1);
}

void TestHistoryPlaces::theTopFoldersKeepTheirNames() {
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("t1", {{"type_", 1}, {"caption", "Старое"}})
                .insert("t2", {{"type_", 2}, {"caption", "функции"}})
                .send(*m_anna));
    ORVO_OK(Batch("MenuResourceFolder").update("t1", {{"caption", "модули"}}).send(*m_anna));
    const QStringList before = snapshot();
    Inverse done;
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QVERIFY(!done.written);
    QCOMPARE(told(done),
             QString("Оставлено как есть: папка ресурсов «модули», поле «Название»: без "
                     "неё дерево ресурсов не загружается"));
    QCOMPARE(snapshot(), before);

    // Neither is it done again that somebody has taken back.
    ORVO_OK(Batch("MenuResourceFolder")
                .update("t2", {{"caption", "Прочее"}, {"ParentKey", "t1"}})
                .send(*m_anna));
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(snapshot(), before);
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QVERIFY(!done.written);
    QCOMPARE(snapshot(), before);
}

void TestHistoryPlaces::anIconWhoseFileIsGoneIsTold() {
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("i", {{"type_", 4}, {"caption", "icons"}})
                .send(*m_anna));
    for (const char* name : {"a.png", "b.png", "c.png"})
        ORVO_OK(Batch("MenuResource")
                    .insert(name, {{"type_", 4}, {"name_", name}, {"MenuResourceFolderKey", "i"}})
                    .send(*m_anna));
    ORVO_OK(Batch("Menu")
                .update("b", {{"ico", "a.png"}})
                .update("c", {{"ico", "b.png"}})
                .send(*m_anna));
    ORVO_OK(Batch("Menu").remove("c").update("b", {{"ico", "c.png"}}).send(*m_anna));
    const int64_t hers = last(*m_anna);
    ORVO_OK(Batch("MenuResource").remove("b.png").send(*m_boris));
    ORVO_OK(Batch("MenuResource").update("a.png", {{"name_", "z.png"}}).send(*m_boris));
    const int64_t his = last(*m_boris);
    Inverse done;
    ORVO_OK(planInverse(*m_anna, {hers, his}, {}, &done));
    QCOMPARE(remarks(done).size(), 1); // a.png comes back as well
    ORVO_OK(undo(*m_anna, {hers}, {}, &done));
    QVERIFY(done.written && !done.asks());
    isTold(done, "(^|\n)Возвращено без картинки: элемент меню «В»: файла значка «b.png» больше нет "
                 "\\(boris, [^)]*\\)");
    QCOMPARE(fieldOf("c", "ico"), QString("b.png"));
    QCOMPARE(fieldOf("b", "ico"), QString("c.png"));
    QVERIFY(told(done).contains("Оставлено как есть: элемент меню «Б», поле «Значок»: файла "
                                "«a.png» больше нет (boris, "));
}

void TestHistoryPlaces::whatWentAlongToADesktopComesBackFromIt() {
    ORVO_OK(Batch("MenuFolder").insert("d2", {{"caption", "Стол 2"}}).send(*m_anna));
    ORVO_OK(Batch("Menu")
                .insert("t", {{"caption", "Там"}, {"FolderKey", "d2"}})
                .insert("u", {{"caption", "У"}, {"FolderKey", "d2"}, {"parent", "t"}})
                .send(*m_anna));
    const QStringList before = snapshot();
    ORVO_OK(Batch("Menu").insert("u2", {{"caption", "У"}, {"FolderKey", "d"}}).send(*m_anna));
    const int64_t cut = last(*m_anna);
    m_anna->joinGroup(cut);
    ORVO_OK(Batch("Menu").remove("u").send(*m_anna));
    m_anna->joinGroup(0);
    ORVO_OK(Batch("Menu").update("b", {{"parent", "u2"}}).send(*m_boris));
    const int64_t move = last(*m_boris);
    Inverse done;
    ORVO_OK(undo(*m_anna, {cut}, {}, &done));
    QCOMPARE(fieldOf("c", "FolderKey"), QString("d2"));
    ORVO_OK(undo(*m_boris, {move}, {}, &done));
    QCOMPARE(told(done), QString());
    QCOMPARE(snapshot(), before);
}

void TestHistoryPlaces::whatElementsStillOpenStays() {
    ORVO_OK(Batch("MenuResource").insert("r", {{"type_", 1}, {"name_", "r"}}).send(*m_anna));
    const int64_t made = last(*m_anna);
    ORVO_OK(Batch("Menu").update("c", {{"MenuResourceKey", "R"}}).send(*m_boris));
    QStringList before = snapshot();
    Choices choices;
    choices.othersWorkToo = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {made}, choices, &done));
    QVERIFY(!done.written);
    isTold(done, "^Не удалено: [^\n]* «r»: на это ссылается элемент меню «В»$");
    QCOMPARE(snapshot(), before);

    ORVO_OK(Batch("MenuResourceFolder").insert("g", {{"type_", 1}}).send(*m_anna));
    const int64_t folder = last(*m_anna);
    for (const char* key : {"m2", "n2"})
        ORVO_OK(Batch("MenuResource")
                    .insert(key, {{"type_", 1}, {"name_", key}, {"MenuResourceFolderKey", "g"}})
                    .send(*m_boris));
    ORVO_OK(Batch("Menu").update("a", {{"MenuResourceKey", "n2"}}).send(*m_anna));
    ORVO_OK(undo(*m_anna, {folder}, choices, &done));
    isTold(done, "^Не удалено: [^\n]* «n2»: на это ссылается элемент меню «А»$");
    QVERIFY(!done.written); // the other one stays with the folder

    // Elements that go as well need nothing.
    ORVO_OK(Batch("Menu").update("c", {{"MenuResourceKey", ""}}).send(*m_boris));
    ORVO_OK(Batch("MenuFolder").insert("d2", {{"caption", "Стол 2"}}).send(*m_anna));
    const int64_t desktop = last(*m_anna);
    ORVO_OK(
        Batch("Menu").insert("e", {{"FolderKey", "d2"}, {"MenuResourceKey", "r"}}).send(*m_boris));
    ORVO_OK(undo(*m_anna, {made, desktop}, choices, &done));
    QCOMPARE(told(done), QString());
    QCOMPARE(snapshot().filter("\"r\"") + snapshot().filter("\"d2\""), QStringList());
}

void TestHistoryPlaces::whatIsOlderGoesBackToWhereItStood() {
    ORVO_OK(Batch("MenuFolder").insert("d2", {{"caption", "Стол 2"}}).send(*m_anna));
    const QStringList before = snapshot();
    ORVO_OK(Batch("Menu").insert("x", {{"caption", "Икс"}, {"FolderKey", "d2"}}).send(*m_anna));
    const int64_t made = last(*m_anna);
    ORVO_OK(Batch("Menu")
                .update("b", {{"FolderKey", "d2"}, {"parent", "X"}})
                .update("c", {{"FolderKey", "d2"}})
                .insert("o", {{"caption", "Чужая"}, {"parent", "x"}, {"FolderKey", "d2"}})
                .send(*m_boris));
    Choices choices;
    choices.othersWorkToo = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {made}, choices, &done));
    QVERIFY(done.written);
    isTold(done, "^Не удалено, а возвращено туда, где было: элемент меню «Б» "
                 "\\(boris, [^)]*\\)$");
    QCOMPARE(snapshot(), before);

    // So does what was moved there by a cut, which is another record by now.
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    ORVO_OK(Batch("Menu")
                .update("b", {{"FolderKey", "d"}, {"parent", "a"}})
                .update("c", {{"FolderKey", "d"}})
                .send(*m_boris));
    ORVO_OK(Batch("Menu")
                .insert("c2", {{"caption", "В"}, {"parent", "x"}, {"FolderKey", "d2"}})
                .send(*m_boris));
    m_boris->joinGroup(last(*m_boris));
    ORVO_OK(Batch("Menu").remove("c").send(*m_boris));
    m_boris->joinGroup(0);
    ORVO_OK(undo(*m_anna, {made}, choices, &done));
    QCOMPARE(fieldOf("c2", "parent") + fieldOf("c2", "FolderKey"), QString("bd"));
}

void TestHistoryPlaces::whatIsOlderAndHasNoWayBackStays() {
    ORVO_OK(Batch("Menu").insert("x", {{"caption", "Икс"}, {"FolderKey", "d"}}).send(*m_anna));
    const int64_t made = last(*m_anna);
    ORVO_OK(Batch("Menu").update("c", {{"parent", "x"}}).send(*m_boris));
    ORVO_OK(Batch("Menu").remove("b").send(*m_boris));
    const QStringList before = snapshot();
    Choices choices;
    choices.othersWorkToo = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {made}, choices, &done));
    QVERIFY(!done.written);
    isTold(done, "^Оставлено как есть: элемент меню «Икс»: внутри стоит элемент меню «В», "
                 "прежнего места больше нет$");
    QCOMPARE(snapshot(), before);
}

void TestHistoryPlaces::whatIsOlderLeavesALeafAgain() {
    ORVO_OK(
        Batch("Menu").insert("l", {{"FolderKey", "d"}, {"MenuResourceKey", "m"}}).send(*m_anna));
    const QStringList before = snapshot();
    ORVO_OK(Batch("Menu").update("l", {{"MenuResourceKey", ""}}).send(*m_anna));
    const int64_t emptied = last(*m_anna);
    ORVO_OK(Batch("Menu").update("b", {{"parent", "l"}}).send(*m_boris));
    Choices choices;
    choices.othersWorkToo = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {emptied}, choices, &done));
    isTold(done, "^Не удалено, а возвращено туда, где было: элемент меню «Б» ");
    QCOMPARE(snapshot(), before);
}

/// Whoever takes his own undo back has answered already, unless others have built on it since.
void TestHistoryPlaces::whatWentAlongOnceGoesAgainWithoutAQuestion() {
    ORVO_OK(Batch("Menu").insert("o", {{"caption", "Новая"}, {"parent", "a"}}).send(*m_anna));
    const int64_t making = last(*m_anna);
    ORVO_OK(Batch("Menu").update("o", {{"params", "его"}}).send(*m_boris));
    ORVO_OK(Batch("Menu").insert("p", {{"caption", "Чужая"}, {"parent", "o"}}).send(*m_boris));
    Choices choices;
    choices.othersWorkToo = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {making}, choices, &done));
    const QStringList without = snapshot();
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QCOMPARE(told(done), QString());
    QCOMPARE(snapshot(), without);
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    ORVO_OK(undo(*m_anna, {making}, {}, &done)); // as Ctrl+Z asks for it
    QCOMPARE(told(done), QString());
    QCOMPARE(snapshot(), without);
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    const int64_t back = last(*m_anna);
    ORVO_OK(planInverse(*m_boris, {making}, {}, &done)); // nobody has asked him
    QVERIFY(done.asks());
    ORVO_OK(undo(*m_anna, {back}, {}, &done));
    ORVO_OK(undo(*m_boris, {last(*m_anna)}, {}, &done)); // he wants his work
    ORVO_OK(planInverse(*m_anna, {making}, {}, &done));
    QVERIFY(done.asks());
    ORVO_OK(Batch("Menu").update("p", {{"params", "снова"}}).send(*m_boris));
    ORVO_OK(undo(*m_anna, {back}, {}, &done));
    QVERIFY(!done.written && done.asks());
    isTold(done, "\nНе удалено: элемент меню «Новая»: на этом построено другое \\(boris, [^)]*\\)");
}

void TestHistoryPlaces::whatWentAlongWithSeveralGoesAgainWithOne() {
    ORVO_OK(Batch("Menu").insert("o", {{"caption", "Новая"}, {"parent", "a"}}).send(*m_anna));
    const int64_t making = last(*m_anna);
    ORVO_OK(Batch("Menu").insert("p", {{"caption", "Чужая"}, {"parent", "o"}}).send(*m_boris));
    const int64_t other = rename(*m_anna, "c", "Другая");
    rename(*m_boris, "b", "Его");
    const QStringList with = snapshot();
    Choices choices;
    choices.othersWorkToo = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {making, other}, choices, &done));
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QCOMPARE(snapshot(), with);
    rename(*m_boris, "c", "Снова его"); // has nothing to do with the one
    ORVO_OK(undo(*m_anna, {making}, {}, &done));
    QCOMPARE(told(done), QString());
    QVERIFY(done.written);
    QCOMPARE(done.count, size_t(2));
    QVERIFY(snapshot().filter("Чужая").isEmpty());
    QCOMPARE(caption("c"), QString("Снова его"));

    // What was taken back beside it did not go along, and nobody was asked about it.
    for (const bool inside : {true, false}) {
        const char* const key = inside ? "q" : "r";
        ORVO_OK(Batch("Menu").insert(key, {{"caption", "Ещё"}, {"parent", "a"}}).send(*m_anna));
        const int64_t again = last(*m_anna);
        ORVO_OK(inside ? Batch("Menu").insert("s", {{"parent", key}}).send(*m_boris)
                       : Batch("Menu").update(key, {{"params", "его"}}).send(*m_boris));
        const QStringList built = snapshot();
        ORVO_OK(undo(*m_anna, {again, last(*m_boris)}, {}, &done));
        QVERIFY(done.written);
        ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
        QCOMPARE(snapshot(), built);
        ORVO_OK(undo(*m_anna, {again}, {}, &done));
        QVERIFY2(!done.written && done.asks(), qPrintable(told(done)));
        QCOMPARE(snapshot(), built);
    }
}

void TestHistoryPlaces::whatWentAlongSeveralLevelsDeepGoesAgain() {
    ORVO_OK(Batch("MenuFolder").insert("f", {{"caption", "Папка"}}).send(*m_anna));
    const int64_t making = last(*m_anna);
    ORVO_OK(Batch("MenuFolder")
                .insert("t", {{"caption", "Его"}, {"parent", "f"}, {"order_", "1"}})
                .send(*m_boris));
    ORVO_OK(Batch("Menu").insert("x", {{"FolderKey", "t"}}).send(*m_boris));
    ORVO_OK(Batch("Menu").insert("y", {{"FolderKey", "t"}, {"parent", "x"}}).send(*m_boris));
    Choices choices;
    choices.othersWorkToo = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {making}, choices, &done));
    const QStringList without = snapshot();
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    const QStringList with = snapshot();
    QVERIFY(with != without);
    for (int i = 0; i < 2; ++i) {
        ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
        QCOMPARE(told(done), QString());
        QCOMPARE(snapshot(), without);
        ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
        QCOMPARE(snapshot(), with);
    }
}

void TestHistoryPlaces::aFormIntoWhichOthersPutFilesSinceDoesNotGoAgain() {
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("forms", {{"type_", 3}, {"caption", "Формы"}})
                .send(*m_boris));
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("p", {{"type_", 3}, {"caption", "П"}, {"ParentKey", "forms"}})
                .send(*m_anna));
    const int64_t making = last(*m_anna);
    ORVO_OK(m_boris->formPut("П", {{"П", "x_", "first", {}}}));
    Choices choices;
    choices.othersWorkToo = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {making}, choices, &done));
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    const int64_t back = last(*m_anna);
    ORVO_OK(planInverse(*m_anna, {back}, {}, &done));
    QVERIFY(!done.asks());
    const std::vector<std::vector<FileToPut>> uploads = {
        {{"П", "x_", "second", {}}},
        {{"П", "x_", "first", {}}, {"П", "x_.js", "added", {}}},
    };
    for (const std::vector<FileToPut>& files : uploads) {
        ORVO_OK(m_boris->formPut("П", files));
        const QStringList before = snapshot();
        ORVO_OK(undo(*m_anna, {back}, {}, &done));
        QVERIFY2(!done.written && done.asks(), qPrintable(told(done)));
        isTold(done, "Не удалено: папка ресурсов «П»: на этом построено другое \\(boris, [^)]*\\)");
        QCOMPARE(snapshot(), before);
        ORVO_OK(undo(*m_boris, {last(*m_boris)}, {}, &done));
    }
    ORVO_OK(Batch("Users").insert("ub", {{"login_", "boris"}}).send(*m_anna));
    const QByteArray form = snapshot().filter("MenuResource|").first().split('"').at(1).toUtf8();
    ORVO_OK(Batch("MenuResource")
                .update(form, {{"UsersKey", "ub"}, {"dateTimeEdit", 1700000000.0}})
                .send(*m_boris));
    const QStringList held = snapshot();
    ORVO_OK(undo(*m_anna, {back}, {}, &done));
    QVERIFY2(!done.written && done.asks(), qPrintable(told(done)));
    QCOMPARE(snapshot(), held);
    ORVO_OK(m_boris->formPut("П", {{"П", "y_", "first", {}}})); // which stays with the one held
    const QStringList both = snapshot();
    ORVO_OK(undo(*m_anna, {making}, choices, &done));
    QVERIFY2(!done.written, qPrintable(told(done)));
    QCOMPARE(snapshot(), both);
}

/// Two actions of which the one takes away what the other, done again, stands in or names.
void TestHistoryPlaces::whatComesBackIsNotLeftNowhere() {
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("i", {{"type_", 4}, {"caption", "icons"}})
                .send(*m_anna));
    const Batch::Fields icon = {
        {"type_", 4}, {"name_", "nova.png"}, {"MenuResourceFolderKey", "i"}};
    struct Case {
        const char* table;
        const char* key;
        Batch::Fields made;
        const char* below;
        Batch::Fields on;
    };
    const Case cases[] = {
        {"Menu", "p", {{"FolderKey", "d"}}, "k", {{"FolderKey", "d"}, {"parent", "p"}}},
        {"MenuResource",
         "r",
         {{"type_", 1}, {"name_", "r"}},
         "k2",
         {{"FolderKey", "d"}, {"MenuResourceKey", "R"}}},
        {"MenuResource", "f", icon, "k3", {{"FolderKey", "d"}, {"ico", "nova.png"}}},
    };
    for (const Case& one : cases) {
        ORVO_OK(Batch(one.table).insert(one.key, one.made).send(*m_anna));
        const int64_t hers = last(*m_anna);
        ORVO_OK(Batch("Menu").insert(one.below, one.on).send(*m_boris));
        const QStringList whole = snapshot();
        Inverse done;
        ORVO_OK(undo(*m_boris, {last(*m_boris)}, {}, &done));
        const int64_t his = last(*m_boris);
        const QStringList before = snapshot();
        ORVO_OK(undo(*m_boris, {hers, his}, {}, &done));
        QVERIFY2(!done.written && done.asks(), qPrintable(told(done)));
        isTold(done, "^Не удалено: ");
        QCOMPARE(snapshot(), before);
        Choices choices;
        choices.partly = true;
        ORVO_OK(undo(*m_boris, {hers, his}, choices, &done));
        QCOMPARE(snapshot(), whole);
    }
}

void TestHistoryPlaces::anUploadThatComesBackKeepsItsForm() {
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("forms", {{"type_", 3}, {"caption", "Формы"}})
                .send(*m_anna));
    const std::vector<std::vector<FileToPut>> uploads = {
        {{"", "a_", "boris'", {}}},                              // replaced
        {{"", "a_", "anna's", {}}, {"", "a.png", "boris'", {}}}, // and added
    };
    for (const std::vector<FileToPut>& files : uploads) {
        ORVO_OK(m_anna->formPut("", {{"", "a_", "anna's", {}}}));
        const int64_t hers = last(*m_anna);
        ORVO_OK(m_boris->formPut("", files));
        const QStringList whole = snapshot();
        Inverse done;
        ORVO_OK(undo(*m_boris, {last(*m_boris)}, {}, &done));
        const int64_t his = last(*m_boris);
        const QStringList before = snapshot();
        Choices choices;
        choices.othersWorkToo = true;
        for (const Choices& given : {Choices(), choices}) {
            ORVO_OK(undo(*m_anna, {hers, his}, given, &done));
            QVERIFY2(!done.written && done.asks(), qPrintable(told(done)));
            isTold(done, "^Не удалено: форма «a_»: на этом построено другое \\(boris, [^)]*\\)$");
            QCOMPARE(snapshot(), before);
        }
        choices.partly = true;
        ORVO_OK(undo(*m_anna, {hers, his}, choices, &done));
        QCOMPARE(snapshot(), whole);
        ORVO_OK(m_anna->formDelete({"a_"}));
    }
}

void TestHistoryPlaces::anIconThatGoesBackToAnotherNameIsTold() {
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("i", {{"type_", 4}, {"caption", "icons"}})
                .send(*m_anna));
    ORVO_OK(Batch("MenuResource")
                .insert("f", {{"type_", 4}, {"name_", "a.png"}, {"MenuResourceFolderKey", "i"}})
                .send(*m_anna));
    ORVO_OK(Batch("MenuResource").update("f", {{"name_", "b.png"}}).send(*m_anna));
    const int64_t renaming = last(*m_anna);
    ORVO_OK(Batch("Menu").insert("k", {{"FolderKey", "d"}, {"ico", "b.png"}}).send(*m_boris));
    Inverse done;
    ORVO_OK(undo(*m_boris, {last(*m_boris)}, {}, &done));
    ORVO_OK(undo(*m_anna, {renaming, last(*m_boris)}, {}, &done));
    QVERIFY(done.written);
    isTold(done, "^Возвращено без картинки: [^\n]*: файла значка «b.png» больше нет");
}

void TestHistoryPlaces::anActionThatStaysAsAWholeIsNotTakenBack() {
    ORVO_OK(Batch("Menu").insert("p", {{"FolderKey", "d"}, {"caption", "П"}}).send(*m_anna));
    const int64_t making = last(*m_anna);
    ORVO_OK(Batch("Menu").insert("k", {{"FolderKey", "d"}, {"parent", "p"}}).send(*m_boris));
    const int64_t renaming = rename(*m_anna, "c", "Г");
    Choices choices;
    choices.partly = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {making, renaming}, choices, &done));
    QVERIFY(done.written);
    QCOMPARE(done.undoes, std::vector<int64_t>{renaming});
    ORVO_OK(Batch("Menu").remove("k").send(*m_boris));
    ORVO_OK(undo(*m_anna, {making}, {}, &done));
    QVERIFY2(done.written, qPrintable(told(done)));
    QCOMPARE(snapshot().filter("\"p\"").size(), 0);

    // Nor one whose former place is gone.
    ORVO_OK(Batch("Menu").update("b", {{"parent", ""}}).send(*m_anna));
    const int64_t moving = last(*m_anna);
    const int64_t again = rename(*m_anna, "c", "Д");
    ORVO_OK(Batch("Menu").remove("a").send(*m_boris));
    ORVO_OK(undo(*m_anna, {moving, again}, choices, &done));
    QCOMPARE(done.undoes, std::vector<int64_t>{again});
    ORVO_OK(undo(*m_boris, {last(*m_boris)}, {}, &done));
    ORVO_OK(undo(*m_anna, {moving}, {}, &done));
    QVERIFY2(done.written, qPrintable(told(done)));
    QCOMPARE(fieldOf("b", "parent"), QString("a"));
}

/// The work of others that would go with it stays with what it stands in.
void TestHistoryPlaces::whatStandsInWhatStaysStays() {
    ORVO_OK(Batch("Menu").insert("p", {{"FolderKey", "d"}, {"caption", "П"}}).send(*m_anna));
    const int64_t making = last(*m_anna);
    ORVO_OK(Batch("Menu").insert("k", {{"FolderKey", "d"}, {"parent", "p"}}).send(*m_boris));
    ORVO_OK(Batch("Menu").insert("l", {{"FolderKey", "d"}, {"parent", "p"}}).send(*m_boris));
    Choices choices;
    choices.othersWorkToo = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {making}, choices, &done));
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    const int64_t back = last(*m_anna);
    ORVO_OK(Batch("Menu").update("l", {{"params", "1"}}).send(*m_boris));
    ORVO_OK(undo(*m_boris, {last(*m_boris)}, {}, &done)); // has it in hand all the same
    const QStringList before = snapshot();
    ORVO_OK(planInverse(*m_anna, {back}, {}, &done));
    QVERIFY2(done.asks() && done.count == 0, qPrintable(told(done)));

    // Nor does another's go if what comes back keeps that.
    ORVO_OK(Batch("Menu").insert("q", {{"FolderKey", "d"}}).send(*m_anna));
    const int64_t other = last(*m_anna);
    ORVO_OK(Batch("Menu")
                .insert("r", {{"FolderKey", "d"}, {"parent", "q"}})
                .insert("i", {{"FolderKey", "d"}, {"parent", "r"}})
                .send(*m_boris));
    ORVO_OK(Batch("Menu").insert("m", {{"FolderKey", "d"}, {"parent", "q"}}).send(*m_boris));
    const QStringList whole = snapshot();
    ORVO_OK(undo(*m_boris, {last(*m_boris)}, {}, &done));
    choices.partly = true;
    ORVO_OK(undo(*m_boris, {other, last(*m_boris)}, choices, &done));
    QCOMPARE(snapshot(), whole);
}

void TestHistoryPlaces::thereIsNoTopWhereNothingCanStand() {
    const auto restoreAtTop = [&](int64_t action, const char* above, Inverse* done) {
        Choices choices;
        choices.places[above] = "";
        ORVO_OK(undo(*m_anna, {action}, choices, done));
    };
    Inverse done;
    for (const int type : {3, 4}) {
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("f", {{"type_", type}, {"caption", "Папка"}})
                    .send(*m_anna));
        ORVO_OK(Batch("MenuResource")
                    .insert("x", {{"type_", type}, {"name_", "x"}, {"MenuResourceFolderKey", "f"}})
                    .send(*m_anna));
        ORVO_OK(Batch("MenuResource").remove("x").send(*m_anna));
        const int64_t deletion = last(*m_anna);
        ORVO_OK(Batch("MenuResourceFolder").remove("f").send(*m_boris));
        restoreAtTop(deletion, "f", &done);
        QCOMPARE(done.written, type == 4); // files alone stand outside of folders
        QCOMPARE(done.asks(), type != 4);
    }
    ORVO_OK(Batch("Menu").remove("c").remove("b").remove("a").send(*m_anna));
    const int64_t deletion = last(*m_anna);
    ORVO_OK(Batch("MenuFolder").remove("d").send(*m_boris));
    const QStringList before = snapshot();
    restoreAtTop(deletion, "d", &done);
    QVERIFY(!done.written && done.asks());
    isTold(done, "«А»: нет места, удалена запись «Стол»");
    QCOMPARE(snapshot(), before);
}

void TestHistoryPlaces::aChosenPlaceThatDoesNotFitIsNamed() {
    ORVO_OK(Batch("MenuFolder")
                .insert("d2", {{"caption", "Стол 2"}})
                .insert("g", {{"caption", "Папка"}, {"isFolder", true}})
                .send(*m_anna));
    ORVO_OK(Batch("Menu")
                .insert("e", {{"caption", "Лист"}, {"FolderKey", "d"}, {"MenuResourceKey", "m"}})
                .insert("far", {{"caption", "Там"}, {"FolderKey", "d2"}})
                .send(*m_anna));
    ORVO_OK(Batch("Menu").remove("c").remove("b").send(*m_anna));
    const int64_t deletion = last(*m_anna);
    ORVO_OK(Batch("Menu").remove("a").send(*m_boris));
    const auto isRefused = [&](int64_t action, const char* above, const char* chosen,
                               const char* why) {
        Choices choices;
        choices.places[above] = chosen;
        Inverse done;
        ORVO_OK(undo(*m_anna, {action}, choices, &done));
        QVERIFY(!done.written && done.asks());
        isTold(done, why);
    };
    isRefused(deletion, "a", "e",
              "«Б»: нет места, удалена запись «А» .*; выбранное место не годится: «Лист» не папка "
              "меню$");
    isRefused(deletion, "a", "far", "выбранное место не годится: «Там» на другом рабочем столе$");
    isRefused(deletion, "a", "d", "выбранное место не годится: записи «d» нет \\(папка меню\\)$");
    ORVO_OK(Batch("Menu").remove("e").send(*m_anna));
    const int64_t leaf = last(*m_anna);
    ORVO_OK(Batch("MenuFolder").remove("d").send(*m_boris));
    isRefused(leaf, "d", "g", "выбранное место не годится: «Папка» не рабочий стол$");
    isRefused(leaf, "d", "", "выбранное место не годится: верхний уровень$");
}

void TestHistoryPlaces::aFolderOnAnotherDesktopIsNotCalledDeleted() {
    ORVO_OK(Batch("MenuFolder").insert("d2", {{"caption", "Стол 2"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").remove("c").send(*m_anna));
    const int64_t deletion = last(*m_anna);
    ORVO_OK(Batch("Menu").insert("b2", {{"caption", "Б"}, {"FolderKey", "d2"}}).send(*m_boris));
    m_boris->joinGroup(last(*m_boris));
    ORVO_OK(Batch("Menu").remove("b").send(*m_boris));
    m_boris->joinGroup(0);
    Inverse done;
    ORVO_OK(undo(*m_anna, {deletion}, {}, &done));
    QVERIFY(!done.written && done.asks());
    isTold(done, "^Не возвращено: элемент меню «В»: нет места, «Б» теперь на другом рабочем столе "
                 "\\(boris, [^)]*\\)$");
}

void TestHistoryPlaces::aLinkToADeletedResourceIsNotTheWholeElement() {
    ORVO_OK(Batch("Menu").update("c", {{"MenuResourceKey", "m"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").update("c", {{"MenuResourceKey", "n"}, {"caption", "1"}}).send(*m_anna));
    const int64_t changed = last(*m_anna);
    ORVO_OK(Batch("MenuResource").remove("m").send(*m_boris));
    Choices choices;
    choices.partly = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {changed}, choices, &done));
    QCOMPARE(caption("c"), QString("В"));
    isTold(done, "^Оставлено как есть: элемент меню «[1В]», поле «Ресурс»: ресурс «m» удалён "
                 "\\(boris, [^)]*\\)$");
}

int main(int argc, char** argv) {
    return orvo::store::test::runOnAllKinds<TestHistoryPlaces>(argc, argv);
}

#include "tst_history_places.moc"
