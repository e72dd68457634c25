// Kept versions of contents: putting one back loses nothing, and the history of a form or file
// tells of each of them.
#include "HistoryTest.h"

#include "history/BackTo.h"
#include "history/ReturnVersion.h"

#include <algorithm>

using namespace orvo::store;
using namespace orvo::history;
using namespace orvo::history::test;

class TestHistoryVersions : public HistoryTest {
    Q_OBJECT
public:
    using HistoryTest::HistoryTest;

private slots:
    void init() {
        HistoryTest::init();
        ORVO_OK(Batch("Users")
                    .insert("ua", {{"login_", "anna"}})
                    .insert("ub", {{"login_", "boris"}})
                    .send(*m_anna));
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("forms", {{"type_", 3}, {"caption", "Формы"}})
                    .insert("files", {{"type_", 4}, {"caption", "Документы"}})
                    .send(*m_anna));
        ORVO_OK(m_anna->formPut("", {{"", "a_", "first", 1.0}}));
        ORVO_OK(m_anna->formPut("", {{"", "a_", "second", 2.0}}));
    }
    void aVersionComesBackAsOneAction();
    void bytesThatAreThereAlreadyAreNotWrittenAgain();
    void aVersionComesBackIntoTheFileOfItsName();
    void damagedBytesAreNotPutBack();
    void aFormThatAnotherHoldsIsLeftAlone();
    void whatWasReplacedMeanwhileStays();
    void theHistoryOfAFormTellsOfItsContents();
    void contentsThatAreGoneAreStillTold();
    void theContentOfARenamedFileHasItsName();
    void aFormGoesBackToAPlaceWithItsContents();
    void theHistoryOfAFolderTellsOfContents();
    void aContentIsToldWithItsFolder();

private:
    QString contents() const { return snapshot().filter("MenuResourceFile|").join('\n'); }
    /// The newest one that is kept.
    KeptVersion version() const {
        std::vector<KeptVersion> versions;
        const Status status = m_anna->versions({}, &versions);
        return status.ok() && !versions.empty() ? versions.front() : KeptVersion();
    }
    int64_t position() const {
        int64_t seen = 0;
        return m_anna->logPosition(&seen).ok() ? seen : 0;
    }
    /// The lines of what the filter lets pass, the newest first.
    QStringList history(const Filter& filter) const {
        QStringList lines;
        Reader reader(*m_anna, filter);
        std::vector<Group> groups;
        while (!reader.atEnd())
            if (const Status status = reader.next(1, &groups); !status.ok())
                return {QString::fromStdString(status.text)};
        LoggedRecords source(*m_anna);
        for (const Group& group : groups)
            lines << describe(group, source).what;
        return lines;
    }
    static Filter row(const QString& key) {
        Filter filter;
        filter.table = "MenuResource";
        filter.key = key.toStdString();
        return filter;
    }
    QString form() const { return QString::fromStdString(version().resource); }
};

void TestHistoryVersions::aVersionComesBackAsOneAction() {
    QVERIFY(contents().contains("second"));
    ORVO_OK(returnVersion(*m_anna, version().id, position(), {}));
    QVERIFY(contents().contains("first"));
    Inverse done;
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QVERIFY(contents().contains("second"));
}

/// A form that another holds is not named, either, if nothing would be done to it.
void TestHistoryVersions::bytesThatAreThereAlreadyAreNotWrittenAgain() {
    const QStringList before = snapshot();
    ORVO_OK(m_anna->replaceAll([&](Receiver& into) { return m_boris->writeOut(into); }));
    std::vector<Group> groups;
    ORVO_OK(Reader(*m_anna, {}).next(1, &groups));
    const auto kept = [&] {
        std::vector<KeptVersion> versions;
        return m_anna->versions({}, &versions).ok() ? versions.size() : 0;
    };
    const size_t count = kept();
    Inverse done;
    ORVO_OK(undo(*m_anna, {groups.front().id}, {}, &done));
    QCOMPARE(done.count, size_t(0));
    QCOMPARE(kept(), count);
    QCOMPARE(snapshot(), before);
}

void TestHistoryVersions::aVersionComesBackIntoTheFileOfItsName() {
    ORVO_OK(m_anna->formPut("", {{"", "a_", "form", {}}, {"", "b.png", "old", {}}}));
    Inverse done;
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    VersionQuery query;
    std::vector<KeptVersion> versions;
    ORVO_OK(m_anna->versions(query, &versions));
    const auto old = std::find_if(versions.begin(), versions.end(),
                                  [](const KeptVersion& one) { return one.name == "b.png"; });
    QVERIFY(old != versions.end());
    ORVO_OK(m_boris->formPut("", {{"", "a_", "form", {}}, {"", "b.png", "new", {}}}));
    ORVO_OK(returnVersion(*m_anna, old->id, position(), {}));
    const QStringList pictures = snapshot().filter("b.png");
    QCOMPARE(pictures.size(), 1);
    QVERIFY2(pictures.first().endsWith("old"), qPrintable(pictures.first()));
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QVERIFY(snapshot().filter("b.png").join('\n').endsWith("new"));
}

void TestHistoryVersions::damagedBytesAreNotPutBack() {
    const int64_t id = version().id;
    QVERIFY(m_kind.byHand(m_kind.name() == "sqlite"
                              ? "UPDATE \"NciVersion\" SET \"data\" = x'4141414141';"
                              : "UPDATE \"NciVersionData\" SET \"data\" = 'AAAAA';"));
    const QStringList before = snapshot();
    const int64_t seen = position();
    const Status status = returnVersion(*m_anna, id, seen, {});
    QCOMPARE(status.code, int(Failed));
    QCOMPARE(QString::fromStdString(status.text),
             QString("Не возвращено: содержимое файла «a_»: прежнее содержимое повреждено или "
                     "изменено мимо программы"));
    QCOMPARE(snapshot(), before);
    QCOMPARE(position(), seen);
}

void TestHistoryVersions::aFormThatAnotherHoldsIsLeftAlone() {
    ORVO_OK(Batch("MenuResource")
                .update(form().toUtf8(), {{"UsersKey", "ub"}, {"dateTimeEdit", 1700000000.0}})
                .send(*m_boris));
    const QStringList before = snapshot();
    const int64_t seen = position();
    const Status status = returnVersion(*m_anna, version().id, seen, {{"boris", "Борисов Б."}});
    QCOMPARE(status.code, int(Refused));
    const QString text = QString::fromStdString(status.text);
    QVERIFY2(text.startsWith(
                 "Оставлено как есть: содержимое формы «a_»: она занята (Борисов Б., 14.11.2023 "),
             qPrintable(text));
    QCOMPARE(snapshot(), before);
    QCOMPARE(position(), seen);
    ORVO_OK(returnVersion(*m_boris, version().id, position(), {})); // the lock is his own
    QVERIFY(contents().contains("first"));
}

void TestHistoryVersions::whatWasReplacedMeanwhileStays() {
    const int64_t id = version().id;
    const int64_t seen = position();
    ORVO_OK(m_boris->formPut("", {{"", "a_", "boris' own", 3.0}}));
    const QStringList before = snapshot();
    const Status status = returnVersion(*m_anna, id, seen, {{"boris", "Борисов Б."}});
    QCOMPARE(status.code, int(Outdated));
    const QString text = QString::fromStdString(status.text);
    QVERIFY2(text.startsWith("Не возвращено: содержимое файла «a_»: тем временем изменено "
                             "(Борисов Б., "),
             qPrintable(text));
    QCOMPARE(snapshot(), before);
    ORVO_OK(returnVersion(*m_anna, id, position(), {})); // looked at anew
    QVERIFY(contents().contains("first"));
}

void TestHistoryVersions::theHistoryOfAFormTellsOfItsContents() {
    ORVO_OK(m_boris->formPut("", {{"", "a_", "third", 3.0}, {"", "a_.png", "more", 3.0}}));
    ORVO_OK(m_anna->formPut("", {{"", "other_", "its own", 3.0}}));
    Filter filter = row(form().toUpper());
    const QStringList told = history(filter);
    QCOMPARE(told.size(), 3);
    QVERIFY2(told[0].contains("содержимое файла «a_"), qPrintable(told[0]));
    QCOMPARE(told.mid(1), (QStringList{"Изменено содержимое файла «a_»", "Создана форма «a_»"}));
    filter.table.clear(); // as the command asks for it
    QCOMPARE(history(filter), told);
    filter.login = "boris";
    QCOMPARE(history(filter), told.mid(0, 1));
    filter = row(form());
    filter.above = last(*m_boris) - 1; // what is made while it is shown
    QCOMPARE(history(filter), told.mid(0, 1));
    std::vector<Change> changes;
    Reader single(*m_anna, row(form()));
    while (!single.atEnd())
        ORVO_OK(single.nextChanges(1, &changes));
    QCOMPARE(changes.size(), size_t(5)); // the form's, and those of two files
    QVERIFY(std::is_sorted(changes.begin(), changes.end(),
                           [](const Change& a, const Change& b) { return a.id > b.id; }));
}

/// Neither stored nor kept as versions: only the log knows them.
void TestHistoryVersions::contentsThatAreGoneAreStillTold() {
    const QString key = form();
    ORVO_OK(m_anna->formDelete({"a_"}));
    PrunedVersions pruned;
    ORVO_OK(m_anna->pruneVersions(0, 0, false, &pruned));
    QVERIFY(pruned.count > 0);
    QCOMPARE(history(row(key)), (QStringList{"Удалена форма «a_»", "Изменено содержимое файла «a_»",
                                             "Создана форма «a_»"}));
}

void TestHistoryVersions::theContentOfARenamedFileHasItsName() {
    ORVO_OK(m_anna->filePut({{"", "r.txt", "first", 1.0}}));
    const QString key =
        snapshot().filter("MenuResource|").filter("\"r.txt\"").front().split('"')[1];
    ORVO_OK(Batch("MenuResource").update(key.toUtf8(), {{"name_", "r2.txt"}}).send(*m_anna));
    ORVO_OK(m_anna->filePut({{"", "r2.txt", "second", 2.0}}));
    QCOMPARE(words(last(*m_anna)), QString("Изменено содержимое файла «r2.txt»"));
    Inverse plan;
    ORVO_OK(planInverse(*m_anna, {last(*m_anna)}, {}, &plan));
    LoggedRecords source(*m_anna);
    QStringList told;
    for (const Change& change : plan.preview)
        told << describe(change, source).what;
    QVERIFY2(told.contains("Изменено содержимое файла «r2.txt»"), qPrintable(told.join('\n')));
}

void TestHistoryVersions::aFormGoesBackToAPlaceWithItsContents() {
    const int64_t second = last(*m_anna);
    ORVO_OK(m_boris->formPut("", {{"", "a_", "third", 3.0}}));
    const int64_t third = last(*m_boris);
    ORVO_OK(m_anna->formPut("", {{"", "other_", "its own", 3.0}}));
    Selection selection;
    ORVO_OK(collectBackTo(*m_anna, row(form()), second, &selection));
    QCOMPARE(selection.groups, (std::vector<int64_t>{second, third}));
    Inverse done;
    ORVO_OK(undo(*m_anna, selection, {}, &done));
    QVERIFY(contents().contains("first"));
    QVERIFY(contents().contains("its own"));
}

void TestHistoryVersions::theHistoryOfAFolderTellsOfContents() {
    ORVO_OK(m_anna->filePut({{"Документы", "план.txt", "1", 1.0}}));
    Filter filter;
    filter.branch = Branch{findTable("MenuResourceFolder"), "forms"};
    QCOMPARE(history(filter).value(0), QString("Изменено содержимое файла «a_»"));
    QCOMPARE(history(filter).size(), 3);
    BranchMembers members(*filter.branch);
    ORVO_OK(members.update(*m_anna));
    ORVO_OK(m_anna->formPut("", {{"", "new_", "new", 3.0}}));
    ORVO_OK(members.update(*m_anna)); // follows the log
    QCOMPARE(members.lookUps(), 1);
    QCOMPARE(members.records()->size(), size_t(5));
    ORVO_OK(m_anna->formDelete({"a_"}));
    QCOMPARE(history(filter), (QStringList{"Удалена форма «a_»", "Создана форма «new_»",
                                           "Изменено содержимое файла «a_»", "Создана форма «a_»",
                                           "Созданы 2 папки ресурсов: «Формы», «Документы»"}));
}

void TestHistoryVersions::aContentIsToldWithItsFolder() {
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("new", {{"type_", 3}, {"caption", "Новые"}, {"ParentKey", "forms"}})
                .send(*m_anna));
    ORVO_OK(m_anna->formPut("Новые", {{"", "b_", "first", 1.0}}));
    ORVO_OK(m_anna->formPut("Новые", {{"", "b_", "second", 1.0}}));
    Group group;
    ORVO_OK(readGroup(*m_anna, last(*m_anna), &group));
    LoggedRecords source(*m_anna);
    QCOMPARE(describe(group, source).place, QString("Формы / Новые"));
    QCOMPARE(placeOf(group.changes.front(), source), QString("Формы / Новые"));
}

int main(int argc, char** argv) {
    return orvo::store::test::runOnAllKinds<TestHistoryVersions>(argc, argv);
}

#include "tst_history_versions.moc"
