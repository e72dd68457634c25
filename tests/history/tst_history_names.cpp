// What comes back does not share a name that must be the only one in its place.
#include "HistoryTest.h"

using namespace orvo::store;
using namespace orvo::history;
using namespace orvo::history::test;

class TestHistoryNames : public HistoryTest {
    Q_OBJECT
public:
    using HistoryTest::HistoryTest;

private slots:
    void init() {
        HistoryTest::init();
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("forms", {{"type_", 3}, {"caption", "Формы"}})
                    .insert("plans", {{"type_", 4}, {"caption", "Планы"}})
                    .send(*m_anna));
    }
    void aFormWhoseNameIsTakenStaysAway();
    void whoTookANameMeanwhileIsNamed();
    void itComesBackUnderAFreeName();
    void aNameThatWasGivenUpIsNotTakenFromAnother();
    void aFolderWhoseNameIsTakenStaysAwayWithItsFiles();
    void aFileIsNamedBeforeItsExtension();
    void sameNamesInOtherPlacesDoNotMatter();
    void ofTwoOfOneNameTheLaterComesBack();
    void aNameThatIsFreedByTheSamePlanIsFree();
    void aNameThatIsTakenMeanwhileOutdatesThePlan();
    void aFormGetsNoTwoFilesOfOneName();
    void ofTwoFilesOfOneNameInAFormTheLaterComesBack();
    void noTwoUsersShareALoginAfterAnUndo();
    void noFileExtensionComesBackTwice();

private:
    /// anna's form "a_" is deleted, and boris has put one of his own there.
    int64_t replaceForm() {
        if (!m_anna->formPut("", {{"", "a_", "anna's", {}}}).ok() ||
            !m_anna->formDelete({"a_"}).ok())
            return -1;
        const int64_t deletion = last(*m_anna);
        return m_boris->formPut("", {{"", "a_", "boris'", {}}}).ok() ? deletion : -1;
    }
    /// "table name place" of the records, sorted.
    QStringList names() const {
        QStringList found;
        for (const QString& line : snapshot()) {
            QStringList parts = line.split('|');
            if (parts.first() == "MenuResource")
                found << parts[3].remove('"');
            if (parts.first() == "MenuResourceFolder")
                found << parts[4].remove('"') + '/';
        }
        found.sort();
        return found;
    }
    bool onlyRemark(const Inverse& inverse, const char* pattern) const {
        const QString text = remarks(inverse).join('\n');
        const bool found = QRegularExpression(QString("^%1$").arg(pattern)).match(text).hasMatch();
        if (!found)
            qWarning("%s", qPrintable(text));
        return found;
    }
};

void TestHistoryNames::aFormWhoseNameIsTakenStaysAway() {
    const int64_t deletion = replaceForm();
    const QStringList before = snapshot();
    Inverse done;
    ORVO_OK(undo(*m_anna, {deletion}, {}, &done));
    QVERIFY(!done.written && done.asks());
    QVERIFY(onlyRemark(done, "Не возвращено: форма «a_»: имя «a_» уже занято \\(boris, [^)]*\\)"));
    QCOMPARE(snapshot(), before);
    Choices partly;
    partly.partly = true;
    ORVO_OK(undo(*m_anna, {deletion}, partly, &done));
    QCOMPARE(snapshot(), before);
}

void TestHistoryNames::whoTookANameMeanwhileIsNamed() {
    ORVO_OK(m_anna->filePut({{"Планы", "aaa.txt", "anna's", 1.0}}));
    ORVO_OK(m_anna->fileDelete({{"Планы", "aaa.txt"}}));
    Inverse plan;
    ORVO_OK(planInverse(*m_anna, {last(*m_anna)}, {}, &plan));
    QVERIFY(plan.count > 0);
    ORVO_OK(m_boris->filePut({{"Планы", "aaa.txt", "boris's", 1.0}}));
    const Status status = writeInverse(*m_anna, &plan);
    QCOMPARE(status.code, int(Outdated));
    const QString text = QString::fromStdString(status.text);
    QVERIFY2(text.startsWith("файл «aaa.txt»: имя тем временем занято (boris, "), qPrintable(text));
}

void TestHistoryNames::itComesBackUnderAFreeName() {
    const int64_t deletion = replaceForm();
    ORVO_OK(Batch("MenuResource")
                .insert("x", {{"type_", 3}, {"name_", "A_ (2)"}}) // whatever the case
                .send(*m_boris));
    Choices choices;
    choices.otherNames = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {deletion}, choices, &done));
    QVERIFY(done.written);
    QCOMPARE(remarks(done), QStringList());
    QStringList told;
    for (const Change& change : done.preview)
        told << freeNameWords(done, change);
    told.removeAll({});
    QCOMPARE(told, QStringList(" под именем «a_ (3)»"));
    QCOMPARE(names(), QStringList({"A_ (2)", "a_", "a_ (3)", "Планы/", "Формы/"}));
    QCOMPARE(snapshot().filter("anna's").size(), 1);
    const QString form = snapshot().filter("a_ (3)").join('\n'); // its caption too
    QVERIFY2(form.count("a_ (3)") == 2 && !form.contains("\"a_\""), qPrintable(form));
    // And goes again as it came.
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QCOMPARE(names(), QStringList({"A_ (2)", "a_", "Планы/", "Формы/"}));
}

void TestHistoryNames::aNameThatWasGivenUpIsNotTakenFromAnother() {
    ORVO_OK(Batch("MenuResource")
                .insert("m", {{"type_", 1}, {"name_", "Насос"}, {"params", "1"}})
                .send(*m_anna));
    ORVO_OK(Batch("MenuResource").update("m", {{"name_", "Котёл"}, {"params", "2"}}).send(*m_anna));
    const int64_t renamed = last(*m_anna);
    ORVO_OK(Batch("MenuResource").insert("n", {{"type_", 1}, {"name_", "НАСОС"}}).send(*m_boris));
    Inverse done;
    ORVO_OK(undo(*m_anna, {renamed}, {}, &done));
    QVERIFY(!done.written && done.asks());
    QVERIFY(onlyRemark(done, "Оставлено как есть: модуль «Котёл»: имя «Насос» уже занято "
                             "\\(boris, [^)]*\\)"));
    Choices choices;
    choices.partly = true;
    ORVO_OK(undo(*m_anna, {renamed}, choices, &done));
    QVERIFY(done.written);
    QVERIFY(snapshot().contains(R"(MenuResource|"m"||"Котёл"|1||"1"|||)"));
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    choices.otherNames = true;
    ORVO_OK(undo(*m_anna, {renamed}, choices, &done));
    QVERIFY(snapshot().contains(R"~(MenuResource|"m"||"Насос (2)"|1||"1"|||)~"));
}

void TestHistoryNames::aFolderWhoseNameIsTakenStaysAwayWithItsFiles() {
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("old", {{"type_", 4}, {"caption", "2024"}, {"ParentKey", "plans"}})
                .send(*m_anna));
    ORVO_OK(m_anna->filePut({{"Планы/2024", "a.png", "anna's", 1.0}}));
    ORVO_OK(m_anna->fileDelete({{"Планы/2024", "a.png"}}));
    const int64_t file = last(*m_anna);
    ORVO_OK(Batch("MenuResourceFolder").remove("old").send(*m_anna));
    const int64_t folder = last(*m_anna);
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("new", {{"type_", 4}, {"caption", "2024"}, {"ParentKey", "PLANS"}})
                .send(*m_boris));
    const QStringList before = snapshot();
    Choices choices;
    choices.partly = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {file, folder}, choices, &done));
    QVERIFY(!done.written);
    QVERIFY(onlyRemark(
        done, "Не возвращено: папка ресурсов «2024»: имя «2024» уже занято \\(boris, [^)]*\\)"));
    QCOMPARE(snapshot(), before);
    Choices renamed;
    renamed.otherNames = true;
    ORVO_OK(planInverse(*m_anna, {file, folder}, renamed, &done));
    QCOMPARE(remarks(done), QStringList());
    choices.places["old"] = "new"; // or its files go into the other one
    ORVO_OK(undo(*m_anna, {file, folder}, choices, &done));
    QVERIFY(done.written);
    QCOMPARE(names(), QStringList({"2024/", "a.png", "Планы/", "Формы/"}));
}

void TestHistoryNames::aFileIsNamedBeforeItsExtension() {
    ORVO_OK(m_anna->filePut({{"Планы", "a.b.png", "anna's", 1.0}}));
    ORVO_OK(m_anna->fileDelete({{"Планы", "a.b.png"}}));
    const int64_t deletion = last(*m_anna);
    ORVO_OK(m_boris->filePut({{"Планы", "a.b.png", "boris'", 1.0}}));
    Choices choices;
    choices.otherNames = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {deletion}, choices, &done));
    QVERIFY(names().contains("a.b (2).png"));
}

void TestHistoryNames::sameNamesInOtherPlacesDoNotMatter() {
    ORVO_OK(m_anna->filePut({{"Планы", "a.png", "anna's", 1.0}}));
    const QStringList before = names();
    ORVO_OK(m_anna->fileDelete({{"Планы", "a.png"}}));
    const int64_t deletion = last(*m_anna);
    ORVO_OK(m_boris->filePut({{"", "a.png", "in another folder", 1.0}}));
    ORVO_OK(m_boris->filePut({{"Планы", "A.png", "in capitals", 1.0}}));
    ORVO_OK(Batch("MenuResource").insert("m", {{"type_", 1}, {"name_", "a.png"}}).send(*m_boris));
    Inverse done;
    ORVO_OK(undo(*m_anna, {deletion}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(remarks(done), QStringList());
    QCOMPARE(names().size(), before.size() + 3);
}

void TestHistoryNames::ofTwoOfOneNameTheLaterComesBack() {
    std::vector<int64_t> deletions;
    for (const char* bytes : {"first", "second"}) {
        ORVO_OK(m_anna->formPut("", {{"", "a_", bytes, {}}}));
        ORVO_OK(m_anna->formDelete({"a_"}));
        deletions.push_back(last(*m_anna));
    }
    ORVO_OK(Batch("MenuResourceFolder").update("plans", {{"caption", "x"}}).send(*m_boris));
    Choices choices;
    choices.partly = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, deletions, choices, &done));
    QVERIFY(done.written);
    QCOMPARE(names().count("a_"), 1);
    QCOMPARE(snapshot().filter("second").size(), 1);
    QCOMPARE(done.remarks.size(), size_t(1));
    QVERIFY(done.remarks.front().why == Remark::NameTaken);
}

void TestHistoryNames::aNameThatIsFreedByTheSamePlanIsFree() {
    const int64_t deletion = replaceForm();
    const int64_t his = last(*m_boris);
    ORVO_OK(Batch("MenuResourceFolder").update("plans", {{"caption", "x"}}).send(*m_boris));
    Inverse done;
    ORVO_OK(undo(*m_anna, {deletion, his}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(remarks(done), QStringList());
    QCOMPARE(names().count("a_"), 1);
    QCOMPARE(snapshot().filter("anna's").size(), 1);
}

void TestHistoryNames::aNameThatIsTakenMeanwhileOutdatesThePlan() {
    ORVO_OK(m_anna->formPut("", {{"", "a_", "anna's", {}}}));
    ORVO_OK(m_anna->formDelete({"a_"}));
    const int64_t deletion = last(*m_anna);
    Inverse plan;
    ORVO_OK(planInverse(*m_anna, {deletion}, {}, &plan));
    QVERIFY(!plan.asks());
    ORVO_OK(m_boris->formPut("", {{"", "a_", "boris'", {}}}));
    const QStringList before = snapshot();
    ORVO_FAILS(writeInverse(*m_anna, &plan), Outdated);
    QCOMPARE(snapshot(), before);
}

void TestHistoryNames::aFormGetsNoTwoFilesOfOneName() {
    ORVO_OK(m_anna->formPut("", {{"", "a_", "form", {}}}));
    ORVO_OK(m_anna->formPut("", {{"", "a_", "form", {}}, {"", "b.png", "anna's", {}}}));
    Inverse done;
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    const int64_t removal = last(*m_anna);
    ORVO_OK(m_boris->formPut("", {{"", "a_", "form", {}}, {"", "b.png", "boris'", {}}}));
    const QStringList before = snapshot();
    ORVO_OK(undo(*m_anna, {removal}, {}, &done));
    QVERIFY(!done.written && done.asks());
    QVERIFY(onlyRemark(done, "Не возвращено: содержимое файла «b\\.png»: имя «b\\.png» уже занято "
                             "\\(boris, [^)]*\\)"));
    Choices choices; // under another name it would be another file
    choices.otherNames = choices.partly = true;
    ORVO_OK(undo(*m_anna, {removal}, choices, &done));
    QCOMPARE(snapshot(), before);
}

void TestHistoryNames::ofTwoFilesOfOneNameInAFormTheLaterComesBack() {
    std::vector<int64_t> removals;
    ORVO_OK(m_anna->formPut("", {{"", "a_", "form", {}}}));
    Inverse done;
    for (const char* bytes : {"first", "second"}) {
        ORVO_OK(m_anna->formPut("", {{"", "a_", "form", {}}, {"", "b.png", bytes, {}}}));
        ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
        removals.push_back(last(*m_anna));
    }
    ORVO_OK(Batch("MenuResourceFolder").update("plans", {{"caption", "x"}}).send(*m_boris));
    Choices choices;
    choices.partly = true;
    ORVO_OK(undo(*m_anna, removals, choices, &done));
    QVERIFY(done.written);
    QCOMPARE(snapshot().filter("b.png").size(), 1);
    QCOMPARE(snapshot().filter("second").size(), 1);
}

void TestHistoryNames::noTwoUsersShareALoginAfterAnUndo() {
    ORVO_OK(Batch("Users").insert("u1", {{"login_", "kuz"}}).send(*m_anna));
    ORVO_OK(Batch("Users").remove("u1").send(*m_anna));
    const int64_t removal = last(*m_anna);
    ORVO_OK(Batch("Users").insert("u2", {{"login_", "KUZ"}}).send(*m_boris));
    const QStringList before = snapshot();
    Choices choices; // a login is not to be made up
    choices.otherNames = choices.partly = true;
    Inverse done;
    ORVO_OK(undo(*m_anna, {removal}, choices, &done));
    QVERIFY(remarks(done).join('\n').contains(
        QRegularExpression("Не возвращено: пользователь «kuz»: имя «kuz» уже занято \\(boris, ")));
    QCOMPARE(snapshot(), before);
}

void TestHistoryNames::noFileExtensionComesBackTwice() {
    ORVO_OK(Batch("MenuFileExt").insert("e1", {{"fileExt", ".ui"}}).send(*m_anna));
    ORVO_OK(Batch("MenuFileExt").remove("e1").send(*m_anna));
    const int64_t removal = last(*m_anna);
    ORVO_OK(Batch("MenuFileExt").insert("e2", {{"fileExt", ".ui"}}).send(*m_boris));
    const QStringList before = snapshot();
    Inverse done;
    ORVO_OK(undo(*m_anna, {removal}, {}, &done));
    QVERIFY(done.asks());
    QCOMPARE(snapshot(), before);
}

int main(int argc, char** argv) {
    return orvo::store::test::runOnAllKinds<TestHistoryNames>(argc, argv);
}

#include "tst_history_names.moc"
