// Actions are taken back without the work of others.
#include "HistoryTest.h"

using namespace orvo::store;
using namespace orvo::history;
using namespace orvo::history::test;

class TestHistoryUndo : public HistoryTest {
    Q_OBJECT
public:
    using HistoryTest::HistoryTest;

private slots:
    void init() {
        HistoryTest::init();
        plantElements();
    }
    void fieldsGetTheirValuesBack();
    void fieldsThatOthersChangedSinceStay();
    void whatOthersTakeBackLaterComesOutRight();
    void undoOfAnUndoIsRedo();
    void undoOutlivesTheProgram();
    void anUndoneActionIsNotUndoneTwice();
    void thatNothingIsLeftIsExplained();
    void aDeletedBranchComesBackWhole();
    void aBranchWithoutItsParentAsksForAPlace();
    void anElementWhoseResourceIsGoneStaysAway();
    void anElementKeepsItsResourceIfTheOldOneIsGone();
    void anInsertAsksIfOthersHaveBuiltOnIt();
    void anIconThatOthersHaveGivenAsksBeforeItGoes();
    void anInsertGoesIfNobodyHasBuiltOnIt();
    void aChangeOfWhatOthersDeletedIsReported();
    void severalActionsGoInOneTransaction();
    void ofOnesOwnLaterChangesTheNewestStays();
    void aPlanThatIsOutOfDateIsMadeAgain();
    void whatAnotherTakesBackMeanwhileOutdatesThePlan();
    void whatCameMeanwhileBelowIsNotLost();
    void aFolderThatCameInsideIsNoPlace();
    void aChosenPlaceHasToBeThere();
    void changesByHandAreTakenBack();
    void textsThatRecordsCannotHoldComeBackAsTheyWere();
    void anUploadIsTakenBack();
    void bytesComeBack();
    void anEmptyFileComesBack();
    void theTimeOfAFileAloneComesBack();
    void bytesOfOthersStay();
    void aFormIntoWhichOthersPutFilesAsksBeforeItGoes();
    void aFormThatStaysKeepsItsBytes();
    void aFolderOfFormsComesBackWithItsBytes();
    void bytesThatAreGoneAreReported();
    void damagedBytesAreReported();
    void aForgottenActionIsNamed();
    void anActionWithoutItsBeginningIsNamed();
    void whatIsGoneWithItsMakingIsNotCalledDeleted();
    void actionsOfAnOldStoreAreTakenBack();
    void whoDidItAgainHasNotBuiltOnIt();
};

void TestHistoryUndo::fieldsGetTheirValuesBack() {
    const QStringList before = snapshot();
    ORVO_OK(Batch("Menu")
                .update("a", {{"caption", "Я"}, {"order_", 5}, {"oneCopy", true}})
                .update("A", {{"caption", "Ю"}, {"params", ""}})
                .send(*m_anna));
    Inverse plan;
    ORVO_OK(planInverse(*m_anna, {last(*m_anna)}, {}, &plan));
    QCOMPARE(plan.count, size_t(1));
    LoggedRecords source(*m_anna);
    QCOMPARE(describe(plan.preview.front(), source).what,
             QString("Переименован элемент меню «А»: было «Ю»"));
    QVERIFY(snapshot() != before);
    Inverse done;
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(remarks(done), QStringList());
    QCOMPARE(snapshot(), before);
    QCOMPARE(words(last(*m_anna)), QString("Отменено переименование: элемент меню «Ю», снова «А»"));
}

void TestHistoryUndo::fieldsThatOthersChangedSinceStay() {
    ORVO_OK(Batch("Menu").update("a", {{"caption", "Анна"}, {"params", "анна"}}).send(*m_anna));
    const int64_t annas = last(*m_anna);
    ORVO_OK(Batch("Menu").update("a", {{"caption", "Борис"}, {"ico", "b.png"}}).send(*m_boris));
    Inverse done;
    ORVO_OK(undo(*m_anna, {annas}, {}, &done));
    QVERIFY(done.written);
    QVERIFY2(QRegularExpression("^Оставлено как есть: элемент меню «Борис», поле «Название»: с тех "
                                "пор изменено \\(boris, .*\\)$")
                 .match(remarks(done).join('\n'))
                 .hasMatch(),
             qPrintable(remarks(done).join('\n')));
    QVERIFY(snapshot().contains(R"(Menu|"a"||"d"|"Борис"||"b.png"||||)"));
}

void TestHistoryUndo::whatOthersTakeBackLaterComesOutRight() {
    const QStringList before = snapshot();
    ORVO_OK(Batch("Menu").update("a", {{"caption", "1"}, {"params", "1"}}).send(*m_anna));
    const int64_t annas = last(*m_anna);
    const int64_t boriss = rename(*m_boris, "a", "2");
    Inverse done;
    ORVO_OK(undo(*m_anna, {annas}, {}, &done));
    QCOMPARE(caption("a"), QString("2"));
    ORVO_OK(undo(*m_boris, {boriss}, {}, &done));
    QCOMPARE(snapshot(), before);
}

void TestHistoryUndo::undoOfAnUndoIsRedo() {
    const QStringList before = snapshot();
    const int64_t first = rename(*m_anna, "a", "1");
    const QStringList after = snapshot();
    Inverse done;
    ORVO_OK(undo(*m_anna, {first}, {}, &done));
    const int64_t undone = last(*m_anna);
    ORVO_OK(undo(*m_anna, {undone}, {}, &done));
    QCOMPARE(snapshot(), after);
    const int64_t redone = last(*m_anna);
    QVERIFY2(words(redone).startsWith("Повтор: "), qPrintable(words(redone)));
    ORVO_OK(undo(*m_anna, {redone}, {}, &done));
    QVERIFY2(words(last(*m_anna)).startsWith("Отменено "), qPrintable(words(last(*m_anna))));
    QCOMPARE(snapshot(), before);
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QCOMPARE(snapshot(), after);
    ORVO_OK(undo(*m_anna, {first}, {}, &done));
    QCOMPARE(snapshot(), before);
}

void TestHistoryUndo::undoOutlivesTheProgram() {
    const int64_t first = rename(*m_anna, "a", "1");
    Inverse done;
    ORVO_OK(undo(*m_anna, {first}, {}, &done));
    const int64_t undone = last(*m_anna);
    m_anna = login("anna");
    Group group;
    ORVO_OK(readGroup(*m_anna, undone, &group));
    QCOMPARE(group.undoes, std::vector<int64_t>{first});
    ORVO_OK(undo(*m_anna, {undone}, {}, &done));
    QCOMPARE(caption("a"), QString("1"));
}

void TestHistoryUndo::anUndoneActionIsNotUndoneTwice() {
    const int64_t first = rename(*m_anna, "a", "1");
    Inverse done;
    ORVO_OK(undo(*m_anna, {first}, {}, &done));
    ORVO_OK(undo(*m_anna, {first}, {}, &done));
    QVERIFY(!done.written);
    QVERIFY2(
        QRegularExpression(QString("^Действие %1 уже отменено \\(anna, \\S+ \\S+\\)$").arg(first))
            .match(remarks(done).join('\n'))
            .hasMatch(),
        qPrintable(remarks(done).join('\n')));
}

void TestHistoryUndo::thatNothingIsLeftIsExplained() {
    const auto reason = [&](int64_t group) {
        Inverse done;
        const Status status = undo(*m_anna, {group}, {}, &done);
        return status.ok() && !done.written ? remarks(done).join('\n') : QString("written");
    };
    ORVO_OK(Batch("Menu").insert("n", {{"caption", "Новая"}}).send(*m_anna));
    const int64_t made = last(*m_anna);
    ORVO_OK(Batch("Menu").remove("n").send(*m_boris));
    QVERIFY2(reason(made).startsWith("Уже удалено: элемент меню «Новая» (boris, "),
             qPrintable(reason(made)));
    const int64_t same = rename(*m_anna, "a", "А");
    QCOMPARE(reason(same), QString("Действие %1 ничего не изменило").arg(same));
    const int64_t renamed = rename(*m_anna, "a", "1");
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"caption\" = 'А' WHERE \"KeyLink\" = 'a';"));
    QVERIFY2(reason(renamed).contains("с тех пор изменено"), qPrintable(reason(renamed)));
}

void TestHistoryUndo::aDeletedBranchComesBackWhole() {
    const QStringList before = snapshot();
    ORVO_OK(Batch("Menu").remove("c").remove("b").remove("A").send(*m_anna));
    Inverse done;
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QCOMPARE(done.count, size_t(3));
    QCOMPARE(snapshot(), before);
}

void TestHistoryUndo::aBranchWithoutItsParentAsksForAPlace() {
    ORVO_OK(Batch("Menu").remove("c").remove("b").send(*m_anna));
    const int64_t annas = last(*m_anna);
    ORVO_OK(Batch("Menu").remove("a").send(*m_boris));
    const int64_t boriss = last(*m_boris);
    const QStringList before = snapshot();
    Inverse done;
    ORVO_OK(undo(*m_anna, {annas}, {}, &done));
    QVERIFY(!done.written && done.asks());
    QCOMPARE(remarks(done).size(), 1);
    QVERIFY2(remarks(done).front().startsWith("Не возвращено: элемент меню «Б»: нет места, удалена "
                                              "запись «А» (папка меню; boris, "),
             qPrintable(remarks(done).front()));
    QCOMPARE(done.remarks.front().missing, std::string("a"));
    QCOMPARE(snapshot(), before);
    Choices choices;
    choices.places["a"] = "";
    ORVO_OK(undo(*m_anna, {annas}, choices, &done));
    QVERIFY(done.written);
    QVERIFY(snapshot().contains(R"(Menu|"b"||"d"|"Б"||||||)"));
    QVERIFY(snapshot().contains(R"(Menu|"c"|"b"|"d"|"В"||||||)"));
    // Its own parent is back: now it asks nothing.
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    ORVO_OK(undo(*m_boris, {boriss}, {}, &done));
    ORVO_OK(undo(*m_anna, {annas}, {}, &done));
    QVERIFY(done.written);
    QVERIFY(snapshot().contains(R"(Menu|"b"|"a"|"d"|"Б"||||||)"));
}

void TestHistoryUndo::anElementWhoseResourceIsGoneStaysAway() {
    const auto plant = [&](const char* element, const char* resource) {
        return Batch("Menu")
            .insert(element,
                    {{"caption", element}, {"FolderKey", "d"}, {"MenuResourceKey", resource}})
            .send(*m_anna);
    };
    for (const char* key : {"m", "n"})
        ORVO_OK(Batch("MenuResource").insert(key, {{"type_", 1}, {"name_", key}}).send(*m_anna));
    ORVO_OK(plant("x", "M"));
    ORVO_OK(plant("y", "n"));
    ORVO_OK(Batch("Menu").remove("x").remove("y").send(*m_anna));
    const int64_t deletion = last(*m_anna);
    ORVO_OK(Batch("MenuResource").remove("m").send(*m_boris));
    const int64_t his = last(*m_boris);
    const QStringList before = snapshot();
    Inverse done;
    ORVO_OK(undo(*m_anna, {deletion}, {}, &done));
    QVERIFY(!done.written && done.asks());
    QVERIFY2(QRegularExpression("^Не возвращено: элемент меню «x»: ресурс «m» удалён \\(boris, "
                                "[^)]*\\)$")
                 .match(remarks(done).join('\n'))
                 .hasMatch(),
             qPrintable(remarks(done).join('\n')));
    QCOMPARE(snapshot(), before);
    ORVO_OK(planInverse(*m_anna, {deletion, his}, {}, &done)); // together they come back
    QCOMPARE(remarks(done), QStringList());
    Choices choices;
    choices.partly = true;
    ORVO_OK(undo(*m_anna, {deletion}, choices, &done));
    QVERIFY(done.written);
    QCOMPARE(caption("y"), QString("y"));
    QCOMPARE(caption("x"), QString());
    // What has opened nothing before is no reason to ask.
    ORVO_OK(plant("z", "m"));
    ORVO_OK(Batch("Menu").remove("z").send(*m_anna));
    const int64_t opensNothing = last(*m_anna);
    rename(*m_boris, "a", "1");
    ORVO_OK(undo(*m_anna, {opensNothing}, {}, &done));
    QCOMPARE(remarks(done), QStringList());
    QCOMPARE(caption("z"), QString("z"));
}

void TestHistoryUndo::anElementKeepsItsResourceIfTheOldOneIsGone() {
    for (const char* key : {"m", "n"})
        ORVO_OK(Batch("MenuResource").insert(key, {{"type_", 1}, {"name_", key}}).send(*m_anna));
    ORVO_OK(Batch("Menu").update("c", {{"MenuResourceKey", "m"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").update("c", {{"MenuResourceKey", "n"}, {"caption", "1"}}).send(*m_anna));
    const int64_t chosen = last(*m_anna);
    ORVO_OK(Batch("MenuResource").remove("m").send(*m_boris));
    Choices choices;
    choices.partly = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {chosen}, choices, &done));
    QVERIFY(done.written && done.asks());
    QCOMPARE(fieldOf("c", "MenuResourceKey"), QString("n"));
    QCOMPARE(caption("c"), QString("В"));
}

void TestHistoryUndo::anInsertAsksIfOthersHaveBuiltOnIt() {
    const QStringList before = snapshot();
    ORVO_OK(Batch("Menu").insert("n", {{"caption", "Новая"}, {"parent", "c"}}).send(*m_anna));
    const int64_t annas = last(*m_anna);
    ORVO_OK(Batch("Menu").insert("o", {{"caption", "Чужая"}, {"parent", "N"}}).send(*m_boris));
    Inverse done;
    ORVO_OK(undo(*m_anna, {annas}, {}, &done));
    QVERIFY(!done.written && done.asks());
    QVERIFY2(remarks(done).join('\n').startsWith(
                 "Не удалено: элемент меню «Новая»: на этом построено другое (boris, "),
             qPrintable(remarks(done).join('\n')));
    Choices choices;
    choices.othersWorkToo = true;
    ORVO_OK(undo(*m_anna, {annas}, choices, &done));
    QCOMPARE(snapshot(), before);
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QVERIFY(snapshot().contains(R"(Menu|"o"|"N"||"Чужая"||||||)"));
}

void TestHistoryUndo::anIconThatOthersHaveGivenAsksBeforeItGoes() {
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("i", {{"type_", 4}, {"caption", "icons"}})
                .send(*m_anna));
    ORVO_OK(Batch("Menu").update("b", {{"ico", "nova.png"}}).send(*m_boris)); // waits for it
    ORVO_OK(Batch("MenuResource")
                .insert("n", {{"type_", 4}, {"name_", "nova.png"}, {"MenuResourceFolderKey", "i"}})
                .send(*m_anna));
    const int64_t annas = last(*m_anna);
    Inverse done;
    rename(*m_boris, "b", "другое");
    ORVO_OK(planInverse(*m_anna, {annas}, {}, &done));
    QCOMPARE(remarks(done), QStringList());
    ORVO_OK(Batch("Menu").update("c", {{"ico", "nova.png"}}).send(*m_boris));
    const QStringList before = snapshot();
    ORVO_OK(undo(*m_anna, {annas}, {}, &done));
    QVERIFY(!done.written && done.asks());
    QVERIFY2(remarks(done).join('\n').startsWith(
                 "Не удалено: файл «nova.png»: на это ссылается элемент меню «В» (boris, "),
             qPrintable(remarks(done).join('\n')));
    QVERIFY(!done.remarks.front().asksForOthers());
    Choices choices;
    choices.othersWorkToo = true;
    ORVO_OK(undo(*m_anna, {annas}, choices, &done));
    QVERIFY(!done.written);
    QCOMPARE(remarks(done), QStringList("Не удалено: файл «nova.png»: на это ссылается элемент "
                                        "меню «В»"));
    QCOMPARE(snapshot(), before);
}

void TestHistoryUndo::anInsertGoesIfNobodyHasBuiltOnIt() {
    const QStringList before = snapshot();
    ORVO_OK(Batch("MenuFolder").insert("f", {{"caption", "Папка"}}).send(*m_anna));
    const int64_t folder = last(*m_anna);
    ORVO_OK(Batch("Menu").insert("n", {{"FolderKey", "f"}}).send(*m_anna));
    const int64_t element = last(*m_anna);
    rename(*m_boris, "a", "другое");
    Inverse done;
    ORVO_OK(undo(*m_anna, {element, folder}, {}, &done));
    QVERIFY(done.written);
    ORVO_OK(undo(*m_boris, {last(*m_boris)}, {}, &done));
    QCOMPARE(snapshot(), before);
}

void TestHistoryUndo::aChangeOfWhatOthersDeletedIsReported() {
    const int64_t annas = rename(*m_anna, "c", "1");
    ORVO_OK(Batch("Menu").remove("c").send(*m_boris));
    Inverse done;
    ORVO_OK(undo(*m_anna, {annas}, {}, &done));
    QVERIFY(!done.written);
    QVERIFY2(remarks(done).join('\n').startsWith(
                 "Не возвращено: элемент меню «1»: с тех пор удалено (boris"),
             qPrintable(remarks(done).join('\n')));
}

void TestHistoryUndo::severalActionsGoInOneTransaction() {
    const QStringList before = snapshot();
    std::vector<int64_t> groups;
    groups.push_back(rename(*m_anna, "a", "1"));
    ORVO_OK(Batch("Menu").insert("n", {{"parent", "a"}}).send(*m_anna));
    groups.push_back(last(*m_anna));
    ORVO_OK(Batch("Menu").remove("n").remove("c").send(*m_anna));
    groups.push_back(last(*m_anna));
    groups.push_back(rename(*m_anna, "a", "2"));
    Inverse done;
    ORVO_OK(undo(*m_anna, groups, {}, &done));
    QCOMPARE(snapshot(), before);
    Group group;
    ORVO_OK(readGroup(*m_anna, last(*m_anna), &group));
    QCOMPARE(group.undoes, groups);
    QCOMPARE(group.changes.back().id, m_anna->lastWritten().last.id);
}

void TestHistoryUndo::ofOnesOwnLaterChangesTheNewestStays() {
    const int64_t first = rename(*m_anna, "a", "1");
    const int64_t second = rename(*m_anna, "a", "2");
    Inverse done;
    ORVO_OK(undo(*m_anna, {first}, {}, &done));
    QVERIFY(!done.written);
    QCOMPARE(caption("a"), QString("2"));
    ORVO_OK(undo(*m_anna, {second}, {}, &done));
    QCOMPARE(caption("a"), QString("1"));
    ORVO_OK(undo(*m_anna, {first}, {}, &done));
    QCOMPARE(caption("a"), QString("А"));
}

void TestHistoryUndo::aPlanThatIsOutOfDateIsMadeAgain() {
    const int64_t first = rename(*m_anna, "a", "1");
    Inverse plan;
    ORVO_OK(planInverse(*m_anna, {first}, {}, &plan));
    rename(*m_boris, "a", "2");
    ORVO_FAILS(m_anna->writeAll(plan.parts, plan.seen, plan.undoes), Outdated);
    QCOMPARE(caption("a"), QString("2"));
}

/// Else both actions would be taken back, and the record would keep what one of them had written.
void TestHistoryUndo::whatAnotherTakesBackMeanwhileOutdatesThePlan() {
    const QString begin = caption("a");
    Batch both("Menu");
    both.update("a", {{"caption", "1"}}).update("c", {{"caption", "1"}});
    ORVO_OK(both.send(*m_boris));
    const int64_t ofBoris = last(*m_boris);
    const int64_t ofAnna = rename(*m_anna, "a", "2");
    Inverse plan, done;
    ORVO_OK(planInverse(*m_anna, {ofAnna}, {}, &plan));
    ORVO_OK(undo(*m_boris, {ofBoris}, {}, &done));
    QCOMPARE(caption("a"), QString("2"));
    ORVO_FAILS(m_anna->writeAll(plan.parts, plan.seen, plan.undoes), Outdated);
    ORVO_OK(undo(*m_anna, {ofAnna}, {}, &done));
    QCOMPARE(caption("a"), begin);
}

/// Somebody else is quicker than the plan.
void TestHistoryUndo::whatCameMeanwhileBelowIsNotLost() {
    ORVO_OK(Batch("Menu").insert("n", {{"caption", "Новая"}}).send(*m_anna));
    Inverse plan;
    ORVO_OK(planInverse(*m_anna, {last(*m_anna)}, {}, &plan));
    ORVO_OK(Batch("Menu").insert("o", {{"parent", "n"}}).send(*m_boris));
    QStringList before = snapshot();
    ORVO_FAILS(m_anna->writeAll(plan.parts, plan.seen, plan.undoes), Outdated);
    QCOMPARE(snapshot(), before);

    ORVO_OK(Batch("Menu").remove("c").send(*m_anna));
    ORVO_OK(planInverse(*m_anna, {last(*m_anna)}, {}, &plan));
    ORVO_OK(Batch("Menu").remove("b").send(*m_boris));
    before = snapshot();
    ORVO_FAILS(m_anna->writeAll(plan.parts, plan.seen, plan.undoes), Outdated);
    QCOMPARE(snapshot(), before);
}

void TestHistoryUndo::aFolderThatCameInsideIsNoPlace() {
    const QStringList before = snapshot();
    ORVO_OK(Batch("Menu").update("b", {{"parent", ""}, {"params", "1"}}).send(*m_anna));
    const int64_t hers = last(*m_anna);
    ORVO_OK(Batch("Menu").update("a", {{"parent", "c"}}).send(*m_boris));
    const int64_t his = last(*m_boris);
    const QStringList moved = snapshot();
    Inverse done;
    ORVO_OK(undo(*m_anna, {hers}, {}, &done));
    QVERIFY(!done.written && done.asks());
    QCOMPARE(remarks(done),
             QStringList{"Не возвращено: элемент меню «Б»: нет места, «А» стоит теперь внутри"});
    QCOMPARE(snapshot(), moved);
    Choices choices;
    choices.places["a"] = "c"; // is inside as well
    ORVO_OK(planInverse(*m_anna, {hers}, choices, &done));
    QVERIFY(done.asks());
    choices.places["a"] = "";
    ORVO_OK(planInverse(*m_anna, {hers}, choices, &done));
    QVERIFY(!done.asks());
    Inverse both;
    ORVO_OK(planInverse(*m_anna, {hers, his}, {}, &both));
    QVERIFY(!both.asks());
    ORVO_OK(undo(*m_boris, {his}, {}, &done));
    ORVO_OK(undo(*m_anna, {hers}, {}, &done));
    QCOMPARE(snapshot(), before);
}

void TestHistoryUndo::aChosenPlaceHasToBeThere() {
    ORVO_OK(Batch("Menu").remove("c").remove("b").send(*m_anna));
    const int64_t hers = last(*m_anna);
    ORVO_OK(Batch("Menu").remove("a").send(*m_boris));
    const QStringList before = snapshot();
    for (const char* place : {"nowhere", "d", "b"}) { // of another table; itself
        Choices choices;
        choices.places["a"] = place;
        Inverse done;
        ORVO_OK(undo(*m_anna, {hers}, choices, &done));
        QVERIFY2(!done.written && done.asks(), place);
        QCOMPARE(snapshot(), before);
    }
}

void TestHistoryUndo::changesByHandAreTakenBack() {
    const QStringList before = snapshot();
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"caption\" = 'x';"));
    std::vector<Change> newest;
    ORVO_OK(m_anna->history({}, 1, &newest));
    Inverse done;
    ORVO_OK(undo(*m_anna, {newest.front().group}, {}, &done));
    QCOMPARE(done.count, size_t(3));
    QCOMPARE(snapshot(), before);
    QVERIFY(m_kind.byHand("DELETE FROM \"Menu\" WHERE \"KeyLink\" = 'c';"
                          "UPDATE \"Menu\" SET \"KeyLink\" = 'z' WHERE \"KeyLink\" = 'b';"));
    std::vector<int64_t> groups;
    ORVO_OK(m_anna->history({}, 3, &newest));
    for (const Change& change : newest)
        if (groups.empty() || groups.back() != change.group)
            groups.push_back(change.group);
    ORVO_OK(undo(*m_anna, groups, {}, &done));
    QCOMPARE(snapshot(), before);
}

void TestHistoryUndo::textsThatRecordsCannotHoldComeBackAsTheyWere() {
    QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"caption\" = '漢\"\\字', \"order_\" = -7;"
                          "UPDATE \"MenuFolder\" SET \"order_\" = '';"));
    const QStringList before = snapshot();
    ORVO_OK(Batch("Menu").update("a", {{"caption", "1"}}).remove("c").send(*m_anna));
    Inverse done;
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QCOMPARE(snapshot(), before);
}

void TestHistoryUndo::anUploadIsTakenBack() {
    ORVO_OK(Batch("MenuResourceFolder").insert("forms", {{"type_", 3}}).send(*m_anna));
    const QStringList before = snapshot();
    ORVO_OK(m_anna->formPut("", {{"", "a.ui", "bytes", {}}, {"", "a.png", "more", 5.5}}));
    Inverse done;
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QCOMPARE(remarks(done), QStringList());
    QCOMPARE(snapshot(), before);
}

/// Uploads, replaced and deleted, back and forth.
void TestHistoryUndo::bytesComeBack() {
    ORVO_OK(Batch("MenuResourceFolder").insert("forms", {{"type_", 3}}).send(*m_anna));
    QList<QStringList> states = {snapshot()};
    std::vector<int64_t> groups;
    const auto done = [&](const Status& status) {
        groups.push_back(last(*m_anna));
        states << snapshot();
        return status;
    };
    ORVO_OK(done(m_anna->formPut("", {{"", "a.ui", "one", 5.5}, {"", "a.png", "picture", {}}})));
    ORVO_OK(done(m_anna->formPut("", {{"", "a.ui", "two, longer", {}}})));
    ORVO_OK(done(m_anna->formPut("", {{"", "a.ui", "six, longer", {}}}))); // of the same size
    ORVO_OK(done(m_anna->formDelete({"a.ui"})));
    Inverse inverse;
    std::vector<int64_t> undone;
    for (int i = int(groups.size()) - 1; i >= 0; --i) {
        ORVO_OK(undo(*m_anna, {groups[size_t(i)]}, {}, &inverse));
        QCOMPARE(remarks(inverse), QStringList());
        QCOMPARE(snapshot(), states[i]);
        undone.push_back(last(*m_anna));
    }
    for (int i = 0; i < int(groups.size()); ++i) { // and again
        ORVO_OK(undo(*m_anna, {undone.back()}, {}, &inverse));
        QCOMPARE(remarks(inverse), QStringList());
        QCOMPARE(snapshot(), states[i + 1]);
        undone.pop_back();
    }
    ORVO_OK(undo(*m_anna, {groups[1], groups[2], groups[3]}, {}, &inverse)); // together
    QCOMPARE(remarks(inverse), QStringList());
    QCOMPARE(snapshot(), states[1]);
    std::vector<std::string> damages;
    ORVO_OK(m_anna->integrity(&damages));
    QCOMPARE(damages, std::vector<std::string>());
}

void TestHistoryUndo::anEmptyFileComesBack() {
    ORVO_OK(m_anna->filePut({{"", "a", "", 1.0}}));
    QList<QStringList> states = {snapshot()};
    std::vector<int64_t> groups;
    for (const char* bytes : {"some", "", "more", ""}) {
        ORVO_OK(m_anna->filePut({{"", "a", bytes, 2.0}}));
        groups.push_back(last(*m_anna));
        states << snapshot();
    }
    std::vector<KeptVersion> versions;
    ORVO_OK(m_anna->versions({}, &versions));
    QCOMPARE(versions.size(), groups.size());
    QCOMPARE(versions.back().fileTime.value_or(0), 1.0);
    for (size_t i = groups.size(); i-- > 0;) {
        Inverse done;
        ORVO_OK(undo(*m_anna, {groups[i]}, {}, &done));
        QCOMPARE(remarks(done), QStringList());
        QCOMPARE(snapshot(), states[int(i)]);
    }
    std::vector<std::string> damages;
    ORVO_OK(m_anna->integrity(&damages));
    QCOMPARE(damages, std::vector<std::string>());
    QVERIFY(m_kind.byHand(
        m_kind.name() == "sqlite"
            ? "UPDATE \"MenuResourceFile\" SET \"data\" = CAST('by hand' AS BLOB), \"size\" = 7;"
            : "BEGIN; INSERT INTO \"MenuResourceFileData\" SELECT \"KeyLink\", 0, 'by hand' FROM "
              "\"MenuResourceFile\"; UPDATE \"MenuResourceFile\" SET \"size\" = 7; COMMIT;"));
    std::vector<Change> newest;
    ORVO_OK(m_anna->history({}, 1, &newest));
    Inverse done;
    ORVO_OK(undo(*m_anna, {newest.front().group}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(remarks(done), QStringList());
    QCOMPARE(snapshot(), states.front());
}

void TestHistoryUndo::theTimeOfAFileAloneComesBack() {
    ORVO_OK(m_anna->filePut({{"", "a", "some", 1.0}}));
    const QStringList before = snapshot();
    Inverse done;
    for (const bool byHand : {true, false}) {
        if (byHand)
            QVERIFY(m_kind.byHand("UPDATE \"MenuResourceFile\" SET \"time\" = 5;"));
        else
            ORVO_OK(m_anna->filePut({{"", "a", "some", 5.0}}));
        std::vector<Change> newest;
        ORVO_OK(m_anna->history({}, 1, &newest));
        ORVO_OK(undo(*m_boris, {newest.front().group}, {}, &done));
        QCOMPARE(remarks(done), QStringList());
        QVERIFY(done.written);
        QCOMPARE(snapshot(), before);
    }
    // Where versions are forgotten, nobody knows whether bytes went with it.
    ORVO_OK(m_anna->filePut({{"", "a", "same", 5.0}}));
    const int64_t upload = last(*m_anna);
    PrunedVersions pruned;
    ORVO_OK(m_anna->pruneVersions(0, 0, false, &pruned));
    const QStringList after = snapshot();
    ORVO_OK(undo(*m_anna, {upload}, {}, &done));
    QVERIFY(!done.written);
    QVERIFY(remarks(done).join('\n').endsWith("прежнее содержимое не хранится"));
    QCOMPARE(snapshot(), after);
}

void TestHistoryUndo::bytesOfOthersStay() {
    ORVO_OK(Batch("MenuResourceFolder").insert("forms", {{"type_", 3}}).send(*m_anna));
    ORVO_OK(m_boris->formPut("", {{"", "a.ui", "first", {}}}));
    const QStringList before = snapshot();
    ORVO_OK(m_anna->formPut("", {{"", "a.ui", "anna's", {}}}));
    const int64_t hers = last(*m_anna);
    ORVO_OK(m_boris->formPut("", {{"", "a.ui", "boris' own", {}}}));
    const int64_t his = last(*m_boris);
    const QStringList after = snapshot();
    Inverse done;
    ORVO_OK(undo(*m_anna, {hers}, {}, &done));
    QCOMPARE(snapshot(), after);
    QVERIFY(!remarks(done).isEmpty());
    ORVO_OK(undo(*m_boris, {his}, {}, &done));
    QVERIFY(snapshot().filter("anna's").size() == 1);
    ORVO_OK(undo(*m_anna, {hers}, {}, &done));
    QCOMPARE(snapshot(), before);
}

void TestHistoryUndo::aFormIntoWhichOthersPutFilesAsksBeforeItGoes() {
    ORVO_OK(Batch("MenuResourceFolder").insert("forms", {{"type_", 3}}).send(*m_anna));
    const QStringList before = snapshot();
    ORVO_OK(m_anna->formPut("", {{"", "a_", "anna's", {}}}));
    const int64_t hers = last(*m_anna);
    const QStringList made = snapshot();
    const std::vector<std::vector<FileToPut>> uploads = {
        {{"", "a_", "boris'", {}}},                              // replaced
        {{"", "a_", "anna's", {}}, {"", "a.png", "boris'", {}}}, // and added
    };
    for (const std::vector<FileToPut>& files : uploads) {
        ORVO_OK(m_boris->formPut("", files));
        const int64_t his = last(*m_boris);
        Inverse done;
        ORVO_OK(undo(*m_anna, {hers}, {}, &done));
        QVERIFY(!done.written);
        QVERIFY(done.asks());
        QCOMPARE(done.remarks.front().login, std::string("boris"));
        ORVO_OK(undo(*m_boris, {his}, {}, &done));
        QCOMPARE(snapshot(), made);
    }
    Inverse done;
    ORVO_OK(undo(*m_anna, {hers}, {}, &done));
    QCOMPARE(snapshot(), before);
}

void TestHistoryUndo::aFormThatStaysKeepsItsBytes() {
    ORVO_OK(Batch("MenuResourceFolder").insert("forms", {{"type_", 3}}).send(*m_anna));
    ORVO_OK(m_anna->formPut("", {{"", "a_", "anna's", {}}}));
    const int64_t hers = last(*m_anna);
    ORVO_OK(m_boris->formPut("", {{"", "a_", "anna's", {}}, {"", "a.png", "boris'", {}}}));
    const QStringList before = snapshot();
    Choices choices;
    choices.partly = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {hers}, choices, &done));
    QCOMPARE(snapshot(), before);
}

void TestHistoryUndo::aFolderOfFormsComesBackWithItsBytes() {
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("files", {{"type_", 4}, {"caption", "plans"}})
                .insert("below", {{"type_", 4}, {"ParentKey", "files"}, {"caption", "old"}})
                .send(*m_anna));
    ORVO_OK(m_anna->filePut({{"plans", "a", "A", 1.0}, {"plans/old", "b", "", {}}}));
    const QStringList before = snapshot();
    QStringList keys;
    for (const QString& line : before.filter(QRegularExpression("^MenuResource\\|")))
        keys << line.split('"').at(1);
    QCOMPARE(keys.size(), 2);
    Batch resources("MenuResource");
    for (const QString& key : keys)
        resources.remove(qPrintable(key));
    ORVO_OK(resources.send(*m_anna));
    const int64_t first = last(*m_anna);
    ORVO_OK(Batch("MenuResourceFolder").remove("below").remove("files").send(*m_anna));
    Inverse done;
    ORVO_OK(undo(*m_anna, {first, last(*m_anna)}, {}, &done));
    QCOMPARE(remarks(done), QStringList());
    QCOMPARE(snapshot(), before);
}

void TestHistoryUndo::bytesThatAreGoneAreReported() {
    ORVO_OK(Batch("MenuResourceFolder").insert("forms", {{"type_", 3}}).send(*m_anna));
    ORVO_OK(m_anna->formPut("", {{"", "a.ui", "bytes", {}}}));
    ORVO_OK(m_anna->formDelete({"a.ui"}));
    const int64_t deletion = last(*m_anna);
    PrunedVersions pruned;
    ORVO_OK(m_anna->pruneVersions(0, 0, false, &pruned));
    QCOMPARE(pruned.count, int64_t(1));
    Inverse done;
    ORVO_OK(undo(*m_anna, {deletion}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(remarks(done).size(), 1);
    QVERIFY(remarks(done).front().endsWith("«a.ui»: прежнее содержимое не хранится"));
    ORVO_OK(m_anna->formPut("", {{"", "a.ui", "newer", {}}}));
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
}

void TestHistoryUndo::damagedBytesAreReported() {
    ORVO_OK(Batch("MenuResourceFolder").insert("forms", {{"type_", 3}}).send(*m_anna));
    ORVO_OK(m_anna->formPut("", {{"", "a.ui", "bytes", {}}}));
    ORVO_OK(m_anna->formPut("", {{"", "a.ui", "other", {}}}));
    QVERIFY(m_kind.byHand(m_kind.name() == "sqlite"
                              ? "UPDATE \"NciVersion\" SET \"data\" = x'4141414141';"
                              : "UPDATE \"NciVersionData\" SET \"data\" = 'AAAAA';"));
    const QStringList before = snapshot();
    Inverse done;
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QCOMPARE(snapshot(), before);
    QCOMPARE(remarks(done).size(), 1);
    QVERIFY(remarks(done).front().endsWith("«a.ui»: прежнее содержимое повреждено или "
                                           "изменено мимо программы"));
}

void TestHistoryUndo::aForgottenActionIsNamed() {
    const int64_t first = rename(*m_anna, "a", "1");
    ORVO_OK(m_anna->pruneLog(first));
    Inverse done;
    ORVO_OK(undo(*m_anna, {first}, {}, &done));
    QVERIFY(!done.written);
    QCOMPARE(remarks(done), QStringList{QString("Действие %1 журнал уже не помнит").arg(first)});
}

void TestHistoryUndo::anActionWithoutItsBeginningIsNamed() {
    ORVO_OK(Batch("Menu")
                .update("a", {{"caption", "1"}})
                .update("b", {{"caption", "2"}})
                .send(*m_anna));
    const int64_t action = last(*m_anna);
    ORVO_OK(m_anna->pruneLog(action));
    Inverse done;
    ORVO_OK(undo(*m_anna, {action}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(caption("a"), QString("1"));
    QCOMPARE(caption("b"), QString("Б"));
    QCOMPARE(remarks(done),
             QStringList{QString("Действие %1: его начало журнал уже не помнит").arg(action)});
}

void TestHistoryUndo::whatIsGoneWithItsMakingIsNotCalledDeleted() {
    const QStringList before = snapshot();
    ORVO_OK(Batch("Menu").insert("n", {{"caption", "Новая"}}).send(*m_anna));
    const int64_t made = last(*m_anna);
    ORVO_OK(Batch("Menu").update("n", {{"caption", "Другая"}}).send(*m_boris));
    const int64_t renamed = last(*m_boris);
    Choices choices;
    choices.othersWorkToo = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {made}, choices, &done));
    QVERIFY(done.written);
    QCOMPARE(snapshot(), before);
    ORVO_OK(undo(*m_boris, {renamed}, {}, &done));
    QCOMPARE(done.count, size_t(0));
    QVERIFY2(
        remarks(done).join('\n').startsWith("Создание уже отменено: элемент меню «Другая» (anna, "),
        qPrintable(remarks(done).join('\n')));
}

void TestHistoryUndo::actionsOfAnOldStoreAreTakenBack() {
    m_anna.reset();
    m_boris.reset();
    QVERIFY(m_kind.renewAsOf(1));
    m_anna = login("anna");
    QVERIFY(m_anna);
    std::vector<Change> log;
    LogQuery query;
    query.table = "Menu";
    ORVO_OK(m_anna->history(query, 100, &log));
    QVERIFY(!log.empty());
    const auto elements = [&] { return snapshot().filter(QRegularExpression("^Menu\\|")).size(); };
    QVERIFY(elements() > 0);
    std::vector<int64_t> groups;
    for (const Change& change : log)
        if (std::find(groups.begin(), groups.end(), change.group) == groups.end())
            groups.push_back(change.group);
    Inverse done;
    ORVO_OK(undo(*m_anna, groups, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(elements(), 0);
}

void TestHistoryUndo::whoDidItAgainHasNotBuiltOnIt() {
    ORVO_OK(Batch("Menu").insert("n", {{"caption", "Новая"}, {"parent", "c"}}).send(*m_anna));
    const int64_t annas = last(*m_anna);
    ORVO_OK(Batch("Menu").insert("o", {{"caption", "Чужая"}, {"parent", "n"}}).send(*m_boris));
    Choices choices;
    choices.othersWorkToo = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {annas}, choices, &done));
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    ORVO_OK(undo(*m_boris, {annas}, {}, &done)); // who was not asked yet
    QVERIFY2(remarks(done).join('\n').contains("на этом построено другое (boris, "),
             qPrintable(remarks(done).join('\n')));
}

int main(int argc, char** argv) {
    return orvo::store::test::runOnAllKinds<TestHistoryUndo>(argc, argv);
}

#include "tst_history_undo.moc"
