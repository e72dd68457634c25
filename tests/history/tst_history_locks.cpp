// Who has taken a form into work is no edit, and what he holds is left alone.
#include "HistoryTest.h"

#include "history/Steps.h"

using namespace orvo::store;
using namespace orvo::history;
using namespace orvo::history::test;

class TestHistoryLocks : public HistoryTest {
    Q_OBJECT
public:
    using HistoryTest::HistoryTest;

private slots:
    void init() {
        HistoryTest::init();
        ORVO_OK(Batch("Users")
                    .insert("ua", {{"login_", "anna"}})
                    .insert("ub", {{"login_", "Boris"}}) // logins have no case
                    .send(*m_anna));
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("forms", {{"type_", 3}, {"caption", "Формы"}})
                    .send(*m_anna));
        ORVO_OK(m_anna->formPut("", {{"", "a_", "first", 1.0}}));
        m_form = key();
        QVERIFY(!m_form.isEmpty());
    }
    void takingALockIsNotTakenBack();
    void aLockThatIsNoLongerHeldStaysOff();
    void aFormComesBackFree();
    void aFormThatAnotherHoldsIsLeftAlone_data();
    void aFormThatAnotherHoldsIsLeftAlone();
    void theFieldsOfAFormThatAnotherHoldsGoBack();
    void theOwnLockDoesNotHinder();
    void theLockOfAUserWhoIsGoneDoesNotHinder();
    void aFolderWithAFormThatAnotherHoldsStays();
    void soItDoesIfTheLockIsTakenBackToo();
    void nobodysWorkTakesAFormAlongThatAnotherHolds();
    void aLockThatIsTakenMeanwhileOutdatesThePlan();
    void aUserWhoGoesHoldsNoForm();
    void aLockIsNoStepOfUndo();
    void whatChangedNothingIsNoStepOfUndo();

private:
    /// Of the only form.
    QString key() const {
        const QStringList forms = snapshot().filter(QRegularExpression("^MenuResource\\|"));
        return forms.size() == 1 ? forms.front().split('"').at(1) : QString();
    }
    QString form() const {
        return snapshot().filter(QRegularExpression("^MenuResource(File)?\\|")).join('\n');
    }
    Status lock(Store& store, const char* user) const {
        return Batch("MenuResource")
            .update(m_form.toUtf8(), {{"UsersKey", user}, {"dateTimeEdit", 1700000000.0}})
            .send(store);
    }
    Status change(Store& store, Batch::Fields values) const {
        return Batch("MenuResource").update(m_form.toUtf8(), values).send(store);
    }

    QString m_form;
};

void TestHistoryLocks::takingALockIsNotTakenBack() {
    ORVO_OK(lock(*m_anna, "ua"));
    const int64_t taken = last(*m_anna);
    const QStringList locked = snapshot();
    Inverse done;
    ORVO_OK(undo(*m_anna, {taken}, {}, &done));
    QVERIFY(!done.written);
    QCOMPARE(remarks(done),
             QStringList{"Оставлено как есть: форма «a_»: занятость отменой не меняется"});
    QCOMPARE(snapshot(), locked);
    ORVO_OK(change(*m_anna, {{"caption", "Новая"}}));
    ORVO_OK(undo(*m_anna, {taken, last(*m_anna)}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(remarks(done), QStringList());
    QCOMPARE(snapshot(), locked);
    Group group;
    ORVO_OK(readGroup(*m_anna, last(*m_anna), &group));
    QCOMPARE(group.undoes.size(), size_t(1)); // not the lock
}

void TestHistoryLocks::aLockThatIsNoLongerHeldStaysOff() {
    ORVO_OK(lock(*m_anna, "ua"));
    ORVO_OK(change(*m_anna, {{"caption", "Новая"}, {"UsersKey", ""}, {"dateTimeEdit", {}}}));
    const int64_t saved = last(*m_anna);
    QVERIFY(form().contains(R"("Новая"||||)"));
    Inverse done;
    ORVO_OK(undo(*m_anna, {saved}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(remarks(done), QStringList());
    QVERIFY2(form().contains(R"("a_"|3|"a_"||||)"), qPrintable(form()));
}

void TestHistoryLocks::aFormComesBackFree() {
    const QString free = form();
    ORVO_OK(lock(*m_boris, "ub"));
    ORVO_OK(m_anna->formDelete({"a_"}));
    Inverse done;
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(form(), free);
}

void TestHistoryLocks::aFormThatAnotherHoldsIsLeftAlone_data() {
    QTest::addColumn<QString>("what");
    for (const char* what : {"its bytes", "a file more", "all of it"})
        QTest::newRow(what) << what;
}

void TestHistoryLocks::aFormThatAnotherHoldsIsLeftAlone() {
    QFETCH(QString, what);
    if (what == "its bytes")
        ORVO_OK(m_anna->formPut("", {{"", "a_", "second", 2.0}}));
    else if (what == "a file more")
        ORVO_OK(m_anna->formPut("", {{"", "a_", "first", 1.0}, {"", "a_.png", "more", 2.0}}));
    const int64_t action = last(*m_anna); // "all of it": that of init
    ORVO_OK(lock(*m_boris, "UB"));        // nor have links
    const QStringList before = snapshot();
    Inverse done;
    ORVO_OK(undo(*m_anna, {action}, {}, &done));
    QVERIFY(!done.written);
    QCOMPARE(remarks(done).size(), 1);
    const QString left =
        what == "all of it" ? "форма «a_»: занята" : "содержимое формы «a_»: она занята";
    QVERIFY2(
        remarks(done).front().startsWith("Оставлено как есть: " + left + " (Boris, 14.11.2023 "),
        qPrintable(remarks(done).front()));
    QCOMPARE(snapshot(), before);
    // Once it is free, it goes back.
    ORVO_OK(Batch("MenuResource").update(m_form.toUtf8(), {{"UsersKey", ""}}).send(*m_boris));
    ORVO_OK(undo(*m_anna, {action}, {}, &done));
    QCOMPARE(remarks(done), QStringList());
    QVERIFY(done.written);
}

/// As in an editor: a lock is about the contents.
void TestHistoryLocks::theFieldsOfAFormThatAnotherHoldsGoBack() {
    const QString before = form();
    ORVO_OK(change(*m_anna, {{"params", "x=1"}}));
    const int64_t action = last(*m_anna);
    ORVO_OK(lock(*m_boris, "ub"));
    Inverse done;
    ORVO_OK(undo(*m_anna, {action}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(remarks(done), QStringList());
    QVERIFY(form().contains("\"ub\""));
    ORVO_OK(lock(*m_boris, ""));
    ORVO_OK(change(*m_boris, {{"dateTimeEdit", {}}}));
    QCOMPARE(form(), before);
}

void TestHistoryLocks::theOwnLockDoesNotHinder() {
    ORVO_OK(m_boris->formPut("", {{"", "a_", "second", 2.0}}));
    const int64_t upload = last(*m_boris);
    ORVO_OK(lock(*m_boris, "ub"));
    Inverse done;
    ORVO_OK(undo(*m_boris, {upload}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(remarks(done), QStringList());
    QVERIFY(form().contains("first"));
    QVERIFY(form().contains("\"ub\""));
}

void TestHistoryLocks::theLockOfAUserWhoIsGoneDoesNotHinder() {
    ORVO_OK(m_anna->formPut("", {{"", "a_", "second", 2.0}}));
    const int64_t upload = last(*m_anna);
    ORVO_OK(lock(*m_boris, "nobody"));
    Inverse done;
    ORVO_OK(undo(*m_anna, {upload}, {}, &done));
    QVERIFY(done.written);
}

void TestHistoryLocks::aFolderWithAFormThatAnotherHoldsStays() {
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("f", {{"type_", 3}, {"caption", "Новые"}, {"ParentKey", "forms"}})
                .send(*m_anna));
    const int64_t folder = last(*m_anna);
    ORVO_OK(m_anna->formPut("Новые", {{"", "b_", "its", 2.0}}));
    const int64_t upload = last(*m_anna);
    const QStringList forms = snapshot().filter("\"b_\"");
    m_form = forms.front().split('"').at(1);
    ORVO_OK(lock(*m_boris, "ub"));
    const QStringList before = snapshot();
    Inverse done;
    ORVO_OK(undo(*m_anna, {folder, upload}, {}, &done));
    QVERIFY(!done.written);
    QCOMPARE(remarks(done).size(), 1);
    QVERIFY(remarks(done).front().contains("форма «b_»: занята (Boris"));
    QCOMPARE(snapshot(), before);
}

void TestHistoryLocks::soItDoesIfTheLockIsTakenBackToo() {
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("f", {{"type_", 3}, {"caption", "Новые"}, {"ParentKey", "forms"}})
                .send(*m_anna));
    const int64_t folder = last(*m_anna);
    ORVO_OK(m_anna->formPut("Новые", {{"", "b_", "its", 2.0}}));
    const int64_t upload = last(*m_anna);
    m_form = snapshot().filter("\"b_\"").front().split('"').at(1);
    ORVO_OK(lock(*m_boris, "ub"));
    const QStringList before = snapshot();
    Choices choices;
    choices.partly = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {folder, upload, last(*m_boris)}, choices, &done));
    QVERIFY(remarks(done).join('\n').contains("форма «b_»: занята (Boris"));
    QCOMPARE(snapshot(), before);
}

void TestHistoryLocks::nobodysWorkTakesAFormAlongThatAnotherHolds() {
    const auto folder = [&](const char* key, const char* parent) {
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert(key, {{"type_", 3}, {"caption", key}, {"ParentKey", parent}})
                    .send(*m_anna));
    };
    folder("f", "forms");
    const int64_t made = last(*m_anna);
    folder("g", "f");
    ORVO_OK(m_anna->formPut("f", {{"", "b_", "its", 2.0}}));
    ORVO_OK(m_anna->formPut("f/g", {{"", "c_", "its", 2.0}}));
    m_form = snapshot().filter("\"c_\"").front().split('"').at(1);
    ORVO_OK(lock(*m_boris, "ub"));
    const QStringList before = snapshot();
    Choices choices;
    choices.othersWorkToo = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {made}, choices, &done));
    QVERIFY(!done.written);
    QCOMPARE(remarks(done).size(), 1);
    QVERIFY2(remarks(done).front().startsWith("Оставлено как есть: форма «c_»: занята (Boris, "),
             qPrintable(remarks(done).front()));
    QCOMPARE(snapshot(), before); // what stands in the same folder stays with it
}

void TestHistoryLocks::aLockThatIsTakenMeanwhileOutdatesThePlan() {
    for (const bool more : {false, true}) {
        std::vector<FileToPut> files = {{"", "a_", "second", 2.0}};
        if (more)
            files.push_back({"", "a_.png", "more", 2.0});
        ORVO_OK(m_anna->formPut("", files));
        Inverse plan;
        ORVO_OK(planInverse(*m_anna, {last(*m_anna)}, {}, &plan));
        QVERIFY(plan.count > 0);
        ORVO_OK(lock(*m_boris, "ub"));
        const QStringList before = snapshot();
        const Status status = writeInverse(*m_anna, &plan);
        QCOMPARE(status.code, int(Outdated));
        const QString text = QString::fromStdString(status.text);
        QVERIFY2(text.startsWith("форма «a_»: тем временем изменено (boris, "), qPrintable(text));
        QCOMPARE(snapshot(), before);
        ORVO_OK(Batch("MenuResource").update(m_form.toUtf8(), {{"UsersKey", ""}}).send(*m_boris));
    }
}

void TestHistoryLocks::aUserWhoGoesHoldsNoForm() {
    const bool stays = m_anna->givesRights(); // with them, and with what he holds
    const QString free = form();
    for (const char* user : {"u1", "u2"}) {
        ORVO_OK(Batch("Users").insert(user, {{"login_", user}}).send(*m_anna));
        std::vector<int64_t> actions = {last(*m_anna)};
        ORVO_OK(lock(*m_boris, user));
        if (strcmp(user, "u2") == 0) // the newest ones of the log, all of them
            actions.push_back(last(*m_boris));
        Inverse done;
        ORVO_OK(undo(*m_anna, actions, {}, &done));
        QCOMPARE(done.written, !stays);
        QCOMPARE(form() == free, !stays);
        if (!stays && actions.size() == 1)
            QCOMPARE(words(last(*m_anna)), QString("Отменено создание: пользователь «u1»"));
        ORVO_OK(lock(*m_boris, ""));
        ORVO_OK(Batch("MenuResource")
                    .update(m_form.toUtf8(), {{"UsersKey", {}}, {"dateTimeEdit", {}}})
                    .send(*m_boris));
        QCOMPARE(form(), free);
    }
}

void TestHistoryLocks::aLockIsNoStepOfUndo() {
    ORVO_OK(change(*m_anna, {{"caption", "Новая"}}));
    const int64_t renamed = last(*m_anna);
    ORVO_OK(lock(*m_anna, "ua"));
    Steps steps;
    ORVO_OK(readSteps(*m_anna, {"anna", "test"}, {}, &steps));
    QCOMPARE(steps.undo.group, renamed);
    Inverse done;
    ORVO_OK(undo(*m_anna, {renamed}, {}, &done));
    const int64_t undone = last(*m_anna);
    ORVO_OK(lock(*m_anna, ""));
    ORVO_OK(readSteps(*m_anna, {"anna", "test"}, {}, &steps));
    QCOMPARE(steps.redo.group, undone);
}

void TestHistoryLocks::whatChangedNothingIsNoStepOfUndo() {
    ORVO_OK(change(*m_anna, {{"caption", "Новая"}}));
    const int64_t renamed = last(*m_anna);
    ORVO_OK(change(*m_anna, {{"caption", "Новая"}}));
    QVERIFY(last(*m_anna) > renamed);
    Steps steps;
    ORVO_OK(readSteps(*m_anna, {"anna", "test"}, {}, &steps));
    QCOMPARE(steps.undo.group, renamed);
    Inverse done;
    ORVO_OK(undo(*m_anna, {renamed}, {}, &done));
    const int64_t undone = last(*m_anna);
    ORVO_OK(change(*m_anna, {{"caption", "a_"}}));
    QVERIFY(last(*m_anna) > undone);
    ORVO_OK(readSteps(*m_anna, {"anna", "test"}, {}, &steps));
    QCOMPARE(steps.redo.group, undone);
    // An upload of the same size and time changes no field either, but bytes.
    ORVO_OK(m_anna->formPut("", {{"", "a_", "other", 1.0}}));
    ORVO_OK(readSteps(*m_anna, {"anna", "test"}, {}, &steps));
    QCOMPARE(steps.undo.group, last(*m_anna));
}

int main(int argc, char** argv) {
    return orvo::store::test::runOnAllKinds<TestHistoryLocks>(argc, argv);
}

#include "tst_history_locks.moc"
