// The change log: complete, in commit order, and announced.
#include "LogReplay.h"
#include "StoreTest.h"

#include "platform/store/Maintenance.h"

#include <QElapsedTimer>

#include <poll.h>

using namespace orvo::store;
using namespace orvo::store::test;

class TestLog : public StoreTest {
    Q_OBJECT
public:
    using StoreTest::StoreTest;

private slots:
    void rowDatedAheadKeepsNothingFromBeingPruned();
    void newRowsStayWhateverTheirDates();
    void idsAreNotGivenByHand();
    void insertLogsAllFieldsUpdateTheChangedOnesDeleteTheOldOnes();
    void anUpdateThatChangesNothingIsLoggedAllTheSame();
    void whatWasStoredIsLogged();
    void datesAreLoggedToTheLastBit();
    void timeIsUtcSeconds();
    void changesByHandAreLogged();
    void changeOfAKeyByHandIsADeletionAndAnInsert();
    void everyWriterHasItsLogin();
    void refusedCallLeavesNoEventAndNoLogin();
    void readingGoesOnFromTheCursorInPortions();
    void emptyStoreHasAPosition();
    void prunedLogIsNoticed();
    void idsAreNotUsedAgainAfterPruning();
    void cursorPastTheEndIsNoticed();
    void cursorOfAnotherLogIsNoticed();
    void provedCursorOutlivesPruningUpToIt();
    void endOfAnEmptiedLogIsProvedByThePruning();
    void followersOfADesktopReadWhatConcernsIt();
    void aPlaceReachedByAFollowerOfADesktopIsProved();
    void aFollowerOfADesktopIsWoken();
    void aWriteKnowsWhatItLeftInTheLog();
    void whatBecameOfAWriteCanBeAsked();
    void logOfSeveralProcessesIsReadInCommitOrderWithoutGaps();
    void everyCommitWakes();
    void aReadDoesNotWake();
    void changedTellsOfOwnAndOtherCommits();
    void logCarriedOutGivesTheTables();
};

namespace {

bool readable(const Store& store, int milliseconds) {
    pollfd wait = {store.wakeFd(), POLLIN, 0};
    return ::poll(&wait, 1, milliseconds) == 1;
}

} // namespace

void TestLog::insertLogsAllFieldsUpdateTheChangedOnesDeleteTheOldOnes() {
    ORVO_OK(Batch("MenuFolder")
                .insert("k", {{"caption", "Стол \"1\"\\\n"}, {"isFolder", false}})
                .send(*m_store));
    ORVO_OK(Batch("MenuFolder")
                .update("k", {{"caption", "Стол"}, {"isFolder", true}, {"order_", QVariant()}})
                .send(*m_store));
    ORVO_OK(Batch("MenuFolder").remove("k").send(*m_store));
    QCOMPARE(log(*m_store),
             QString(R"(601 MenuFolder k tester {"KeyLink":"k","ParentKey":null,)"
                     R"("caption":"Стол \"1\"\\\n","order_":null,"isFolder":false} {})"
                     "\n"
                     R"(602 MenuFolder k tester {"caption":"Стол","isFolder":true} )"
                     R"({"caption":"Стол \"1\"\\\n","isFolder":false})"
                     "\n"
                     R"(603 MenuFolder k tester {} {"KeyLink":"k","ParentKey":null,)"
                     R"("caption":"Стол","order_":null,"isFolder":true})"));
}

void TestLog::anUpdateThatChangesNothingIsLoggedAllTheSame() {
    ORVO_OK(Batch("MenuFileExt").insert("k", {{"fileExt", "ui"}}).send(*m_store));
    const int64_t before = position();
    ORVO_OK(Batch("MenuFileExt").update("k", {{"fileExt", "ui"}}).update("k").send(*m_store));
    QCOMPARE(log(*m_store, before),
             QString("602 MenuFileExt k tester {} {}\n602 MenuFileExt k tester {} {}"));
}

void TestLog::whatWasStoredIsLogged() {
    const int64_t before = position();
    ORVO_OK(Batch("MenuFolder").insert("k", {{"ParentKey", ""}, {"caption", ""}}).send(*m_store));
    ORVO_OK(Batch("MenuFolder").update("k", {{"ParentKey", "AbC"}}).send(*m_store));
    ORVO_OK(Batch("MenuFolder").update("k", {{"ParentKey", "aBc"}}).send(*m_store));
    ORVO_OK(Batch("MenuFolder").update("k", {{"ParentKey", ""}}).send(*m_store));
    QCOMPARE(log(*m_store, before),
             QString(R"(601 MenuFolder k tester {"KeyLink":"k","ParentKey":null,"caption":"",)"
                     R"("order_":null,"isFolder":null} {})"
                     "\n"
                     R"(602 MenuFolder k tester {"ParentKey":"AbC"} {"ParentKey":null})"
                     "\n"
                     R"(602 MenuFolder k tester {"ParentKey":"aBc"} {"ParentKey":"AbC"})"
                     "\n"
                     R"(602 MenuFolder k tester {"ParentKey":null} {"ParentKey":"aBc"})"));
}

void TestLog::datesAreLoggedToTheLastBit() {
    for (const double date : {1700000000.1234567, 0.1, -1e300, 0.0, 5.0, 1e-300}) {
        const int64_t before = position();
        ORVO_OK(Batch("MenuResource").insert("k", {{"dateTimeEdit", date}}).send(*m_store));
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(before, 10, &changes));
        const QString after = QString::fromStdString(changes.at(0).after);
        const QString number = after.section("\"dateTimeEdit\":", 1).chopped(1);
        QCOMPARE(number.toDouble(), date);
        QVERIFY(number.toDouble() == date); // QCOMPARE would let the last bits go
        ORVO_OK(Batch("MenuResource").remove("k").send(*m_store));
    }
}

void TestLog::timeIsUtcSeconds() {
    const double before = double(QDateTime::currentMSecsSinceEpoch()) / 1000;
    ORVO_OK(Batch("MenuFileExt").insert("k").send(*m_store));
    const double after = double(QDateTime::currentMSecsSinceEpoch()) / 1000;
    std::vector<Change> changes;
    ORVO_OK(m_store->readLog(0, 10, &changes));
    QVERIFY(changes.at(0).time > before - 0.01 && changes.at(0).time < after + 0.01);
}

void TestLog::changesByHandAreLogged() {
    QVERIFY(m_kind.byHand(
        "INSERT INTO \"MenuFileExt\" (\"KeyLink\", \"fileExt\") VALUES ('k', 'a');"
        "UPDATE \"MenuFileExt\" SET \"fileExt\" = 'b'; DELETE FROM \"MenuFileExt\";"));
    QCOMPARE(log(*m_store),
             QString("601 MenuFileExt k %1 {\"KeyLink\":\"k\",\"fileExt\":\"a\"} {}\n"
                     "602 MenuFileExt k %1 {\"fileExt\":\"b\"} {\"fileExt\":\"a\"}\n"
                     "603 MenuFileExt k %1 {} {\"KeyLink\":\"k\",\"fileExt\":\"b\"}")
                 .arg(QString(m_kind.handLogin())));
}

void TestLog::changeOfAKeyByHandIsADeletionAndAnInsert() {
    ORVO_OK(Batch("MenuFileExt").insert("k", {{"fileExt", "a"}}).insert("l").send(*m_store));
    const int64_t before = position();
    QVERIFY(m_kind.byHand("UPDATE \"MenuFileExt\" SET \"KeyLink\" = 'n', \"fileExt\" = 'b' "
                          "WHERE \"KeyLink\" = 'k';"));
    QVERIFY(m_kind.byHand("UPDATE \"MenuFileExt\" SET \"KeyLink\" = 'N' WHERE \"KeyLink\" = 'n';"));
    QVERIFY(
        !m_kind.byHand("UPDATE \"MenuFileExt\" SET \"KeyLink\" = 'L' WHERE \"fileExt\" = 'b';"));
    QCOMPARE(log(*m_store, before),
             QString("603 MenuFileExt k %1 {} {\"KeyLink\":\"k\",\"fileExt\":\"a\"}\n"
                     "601 MenuFileExt n %1 {\"KeyLink\":\"n\",\"fileExt\":\"b\"} {}\n"
                     "603 MenuFileExt n %1 {} {\"KeyLink\":\"n\",\"fileExt\":\"b\"}\n"
                     "601 MenuFileExt N %1 {\"KeyLink\":\"N\",\"fileExt\":\"b\"} {}")
                 .arg(QString(m_kind.handLogin())));
}

void TestLog::everyWriterHasItsLogin() {
    const auto second = another("второй");
    QVERIFY(second);
    ORVO_OK(Batch("MenuFileExt").insert("a").send(*m_store));
    ORVO_OK(Batch("MenuFileExt").insert("b").send(*second));
    ORVO_OK(Batch("MenuFileExt").insert("c").send(*m_store));
    std::vector<Change> changes;
    ORVO_OK(m_store->readLog(0, 10, &changes));
    QCOMPARE(changes.at(0).login, std::string("tester"));
    QCOMPARE(changes.at(1).login, std::string("второй"));
    QCOMPARE(changes.at(2).login, std::string("tester"));
}

void TestLog::refusedCallLeavesNoEventAndNoLogin() {
    ORVO_OK(Batch("MenuFileExt").insert("a").send(*m_store));
    const int64_t before = position();
    ORVO_FAILS(Batch("MenuFileExt").insert("b").insert("a").send(*m_store), Refused);
    QCOMPARE(position(), before);
    QVERIFY(m_kind.byHand("INSERT INTO \"MenuFileExt\" (\"KeyLink\") VALUES ('c');"));
    QVERIFY(log(*m_store, before).startsWith("601 MenuFileExt c " + m_kind.handLogin() + " {"));
}

void TestLog::readingGoesOnFromTheCursorInPortions() {
    for (const char* key : {"a", "b", "c", "d", "e"})
        ORVO_OK(Batch("MenuFileExt").insert(key).send(*m_store));
    std::vector<Change> changes;
    std::string keys;
    int64_t cursor = 0;
    for (int portion = 0; portion < 3; ++portion) {
        ORVO_OK(m_store->readLog(cursor, 2, &changes));
        for (const Change& change : changes) {
            QVERIFY(change.id > cursor);
            cursor = change.id;
            keys += change.key;
        }
    }
    QCOMPARE(keys, std::string("abcde"));
    QCOMPARE(cursor, position());
    ORVO_OK(m_store->readLog(cursor, 2, &changes));
    QVERIFY(changes.empty());
    ORVO_OK(m_store->readLog(0, 0, &changes));
    QVERIFY(changes.empty());
}

void TestLog::emptyStoreHasAPosition() {
    QCOMPARE(position(), int64_t(0));
    QCOMPARE(log(*m_store), QString());
}

void TestLog::prunedLogIsNoticed() {
    for (const char* key : {"a", "b", "c", "d"})
        ORVO_OK(Batch("MenuFileExt").insert(key).send(*m_store));
    const int64_t last = position();
    ORVO_OK(m_store->pruneLog(last - 2));
    std::vector<Change> changes;
    ORVO_FAILS(m_store->readLog(last - 3, 10, &changes), LogPruned);
    ORVO_FAILS(m_store->readLog(0, 10, &changes), LogPruned);
    QVERIFY(changes.empty());
    ORVO_OK(m_store->readLog(last - 2, 10, &changes));
    QCOMPARE(changes.size(), size_t(2));
    QCOMPARE(changes[0].key, std::string("c"));
    QCOMPARE(position(), last);
    // By hand too.
    QVERIFY(m_kind.byHand(
        "DELETE FROM \"NciEvent\" WHERE \"id\" = " + QByteArray::number(qint64(last - 1)) + ";"));
    ORVO_FAILS(m_store->readLog(last - 2, 10, &changes), LogPruned);
    ORVO_OK(m_store->readLog(last - 1, 10, &changes));
    QCOMPARE(changes.size(), size_t(1));
}

void TestLog::idsAreNotUsedAgainAfterPruning() {
    ORVO_OK(Batch("MenuFileExt").insert("a").insert("b").send(*m_store));
    const int64_t last = position();
    ORVO_OK(m_store->pruneLog(last + 1000)); // more than there is
    QCOMPARE(position(), last);
    std::vector<Change> changes;
    ORVO_OK(m_store->readLog(last, 10, &changes));
    ORVO_OK(Batch("MenuFileExt").insert("c").send(*m_store));
    ORVO_OK(m_store->readLog(last, 10, &changes));
    QCOMPARE(changes.size(), size_t(1));
    QVERIFY(changes[0].id > last);
}

void TestLog::cursorPastTheEndIsNoticed() {
    ORVO_OK(Batch("MenuFileExt").insert("a").send(*m_store));
    std::vector<Change> changes;
    ORVO_FAILS(m_store->readLog(position() + 1, 10, &changes), LogPruned);
}

/// As after a fail-over to a server that lacked the last changes: their ids are there, and more of
/// them, but they tell of other things.
void TestLog::cursorOfAnotherLogIsNoticed() {
    for (const char* key : {"a", "b", "c"})
        ORVO_OK(Batch("MenuFileExt").insert(key).send(*m_store));
    std::vector<Change> changes;
    ORVO_OK(m_store->readLog(0, 100, &changes));
    const LogCursor read(changes.back());
    LogCursor end;
    ORVO_OK(m_store->logEnd(&end));
    QCOMPARE(end.id, read.id);
    QCOMPARE(end.proof, read.proof);
    ORVO_OK(m_store->readLog(read, 10, &changes));
    QVERIFY(changes.empty());
    ORVO_OK(Batch("MenuFileExt").insert("d").send(*m_store));
    ORVO_OK(m_store->readLog(read, 10, &changes));
    QCOMPARE(changes.size(), size_t(1));
    const LogCursor next(changes.back());
    QVERIFY(m_kind.byHand("UPDATE \"NciEvent\" SET \"key\" = 'other' WHERE \"id\" = " +
                          QByteArray::number(qint64(read.id)) + ";"));
    ORVO_FAILS(m_store->readLog(read, 10, &changes), LogReplaced);
    ORVO_OK(m_store->readLog(next, 10, &changes));
    ORVO_FAILS(m_store->readLog({next.id + 1, next.proof}, 10, &changes), LogReplaced);
}

void TestLog::followersOfADesktopReadWhatConcernsIt() {
    ORVO_OK(Batch("MenuFolder").insert("D\\\"1").insert("d2").send(*m_store));
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("ic", {{"type_", 4}, {"caption", "icons"}})
                .insert("in", {{"type_", 4}, {"caption", "кнопки"}, {"ParentKey", "ic"}})
                .send(*m_store));
    ORVO_OK(Batch("MenuResource")
                .insert("R1", {{"type_", 1}})
                .insert("r2", {{"type_", 1}})
                .send(*m_store));
    ORVO_OK(m_store->filePut({{"", "plan.txt", "1", {}}, {"", "other.txt", "1", {}}}));
    ORVO_OK(m_store->filePut({{"icons/кнопки", "a.png", "1", {}}}));
    CMDArray plan;
    ORVO_OK(m_store->fetchWhere("MenuResource", "name_", "plan.txt", plan.array));
    const QString file = dump(plan.array, {"KeyLink"});
    ORVO_OK(Batch("Menu")
                .insert("e1", {{"FolderKey", "D\\\"1"}, {"MenuResourceKey", "r1"}})
                .insert("e2", {{"FolderKey", "D\\\"1"}, {"MenuResourceKey", file}})
                .insert("x1", {{"FolderKey", "d2"}, {"MenuResourceKey", "r2"}})
                .send(*m_store));
    LogCursor cursor;
    ORVO_OK(m_store->logEnd(&cursor));

    const auto own = [this](Batch& batch) { ORVO_OK(batch.send(*m_store)); };
    own(Batch("Menu").update("x1", {{"caption", "foreign"}}));
    own(Batch("Menu").update("E1", {{"caption", "own"}}));
    own(Batch("MenuResource").update("r2", {{"name_", "foreign"}}));
    own(Batch("MenuResource").update("r1", {{"name_", "own"}}));
    own(Batch("MenuFolder").update("d2", {{"caption", "foreign"}}));
    own(Batch("MenuFolder").update("d\\\"1", {{"caption", "own"}}));
    own(Batch("Menu").insert("x2", {{"FolderKey", "d2"}}));
    own(Batch("Menu").insert("e3", {{"FolderKey", "D\\\"1"}}));
    own(Batch("Menu").update("x1", {{"FolderKey", "D\\\"1"}})); // comes
    own(Batch("Menu").update("x1", {{"FolderKey", "d2"}}));     // and goes
    own(Batch("Menu").remove("x2"));
    own(Batch("Menu").remove("e3"));
    own(Batch("MenuFileExt").insert("ext")); // of all
    ORVO_OK(m_store->filePut({{"", "other.txt", "22", {}}}));
    ORVO_OK(m_store->filePut({{"", "plan.txt", "22", {}}}));
    ORVO_OK(m_store->filePut({{"icons/кнопки", "a.png", "22", {}}}));
    ORVO_OK(m_store->filePut({{"icons/кнопки", "b.png", "1", {}}}));
    own(Batch("Menu").update("x1", {{"caption", "foreign"}}));

    QStringList read;
    bool more = true;
    while (more) {
        std::vector<Change> changes;
        ORVO_OK(m_store->readDesktopLog("d\\\"1", 3, &cursor, &changes, &more));
        for (const Change& change : changes)
            read << QString("%1 %2")
                        .arg(change.code)
                        .arg(QString::fromStdString(
                            change.table +
                            (change.table == "MenuResourceFile" ||
                                     (change.table == "MenuResource" && change.code == 601)
                                 ? std::string()
                                 : " " + change.key)));
    }
    QCOMPARE(cursor.id, position());
    const QStringList wanted{"602 Menu e1",          "602 MenuResource R1", "602 MenuFolder D\\\"1",
                             "601 Menu e3",          "602 Menu x1",         "602 Menu x1",
                             "603 Menu e3",          "601 MenuFileExt ext", "602 MenuResourceFile",
                             "602 MenuResourceFile", "601 MenuResource",    "601 MenuResourceFile"};
    if (m_kind.name() == "postgresql")
        QCOMPARE(read, wanted); // hundreds follow a server
    for (const QString& line : wanted)
        QVERIFY2(read.contains(line), qPrintable(line + " of\n" + read.join('\n')));
    std::vector<Change> changes;
    ORVO_OK(m_store->readDesktopLog("d\\\"1", 3, &cursor, &changes, &more));
    QVERIFY(changes.empty() && !more);
}

void TestLog::aPlaceReachedByAFollowerOfADesktopIsProved() {
    ORVO_OK(Batch("MenuFolder").insert("d1").insert("d2").send(*m_store));
    LogCursor cursor;
    ORVO_OK(m_store->logEnd(&cursor));
    std::vector<Change> changes;
    bool more = false;
    const auto readOn = [&] { return m_store->readDesktopLog("d1", 10, &cursor, &changes, &more); };
    ORVO_OK(Batch("MenuFolder").update("d2", {{"caption", "a"}}).send(*m_store));
    ORVO_OK(readOn());
    const LogCursor reached = cursor;
    QCOMPARE(reached.id, position());
    ORVO_OK(m_store->readLog(reached, 10, &changes)); // for one who goes on with everything
    QVERIFY(changes.empty());
    ORVO_OK(Batch("MenuFolder").update("d1", {{"caption", "b"}}).send(*m_store));
    ORVO_OK(readOn());
    QCOMPARE(changes.size(), size_t(1));
    QCOMPARE(changes[0].after, std::string("{\"caption\":\"b\"}"));
    QVERIFY(m_kind.byHand("UPDATE \"NciEvent\" SET \"key\" = 'other' WHERE \"id\" >= " +
                          QByteArray::number(qint64(reached.id)) + ";"));
    ORVO_FAILS(readOn(), LogReplaced);
    cursor = reached;
    ORVO_FAILS(readOn(), LogReplaced);
    ORVO_OK(m_store->pruneLog(position()));
    ORVO_FAILS(readOn(), LogPruned);
}

void TestLog::aFollowerOfADesktopIsWoken() {
    ORVO_OK(Batch("MenuFolder").insert("d1").send(*m_store));
    const auto writer = another("petrov");
    LogCursor cursor;
    ORVO_OK(m_store->logEnd(&cursor));
    if (m_store->wakeFd() < 0)
        QSKIP("no descriptor");
    std::vector<Change> changes;
    bool more = true;
    for (int round = 0; round < 3; ++round) {
        const bool all = round == 1; // another module runs meanwhile
        more = true;
        while (more) {
            more = false;
            ORVO_OK(all ? m_store->readLog(cursor, 10, &changes)
                        : m_store->readDesktopLog("d1", 10, &cursor, &changes, &more));
        }
        while (readable(*m_store, 300))
            m_store->takeWake();
        ORVO_OK(
            Batch("MenuFolder").update("d1", {{"caption", QString::number(round)}}).send(*writer));
        QVERIFY(readable(*m_store, 5000));
        m_store->takeWake();
    }
}

void TestLog::provedCursorOutlivesPruningUpToIt() {
    ORVO_OK(Batch("MenuFileExt").insert("a").insert("b").send(*m_store));
    LogCursor end;
    ORVO_OK(m_store->logEnd(&end));
    ORVO_OK(m_store->pruneLog(end.id));
    ORVO_OK(Batch("MenuFileExt").insert("c").send(*m_store));
    std::vector<Change> changes;
    ORVO_OK(m_store->readLog(end, 10, &changes));
    QCOMPARE(changes.size(), size_t(1));
    ORVO_OK(m_store->pruneLog(position()));
    ORVO_FAILS(m_store->readLog(end, 10, &changes), LogPruned);
}

void TestLog::endOfAnEmptiedLogIsProvedByThePruning() {
    ORVO_OK(Batch("MenuFileExt").insert("a").insert("b").send(*m_store));
    ORVO_OK(m_store->pruneLog(position()));
    LogCursor end;
    ORVO_OK(m_store->logEnd(&end));
    std::vector<Change> changes;
    ORVO_OK(m_store->readLog(end, 3, &changes));
    QVERIFY(changes.empty());
    for (const char* key : {"c", "d", "e", "f", "g"})
        ORVO_OK(Batch("MenuFileExt").insert(key).send(*m_store));
    ORVO_OK(m_store->readLog(end, 3, &changes));
    QCOMPARE(changes.size(), size_t(3));
    QCOMPARE(changes.front().id, end.id + 1);
    QVERIFY(m_store->changed()); // there is more
    // As on a server that was not pruned before it became the first.
    QVERIFY(m_kind.byHand("UPDATE \"NciPruned\" SET \"id\" = 0;"));
    ORVO_FAILS(m_store->readLog(end, 3, &changes), LogReplaced);
    LogCursor cursor = end;
    bool more = false;
    ORVO_FAILS(m_store->readDesktopLog("d", 3, &cursor, &changes, &more), LogReplaced);
    QVERIFY(m_kind.byHand(
        "UPDATE \"NciPruned\" SET \"id\" = " + QByteArray::number(qint64(end.id + 1)) + ";"));
    ORVO_FAILS(m_store->readLog(end, 3, &changes), LogPruned);
}

void TestLog::aWriteKnowsWhatItLeftInTheLog() {
    const int64_t before = position();
    ORVO_OK(Batch("MenuFileExt").insert("a").insert("b").insert("c").send(*m_store));
    LogCursor end;
    ORVO_OK(m_store->logEnd(&end));
    QCOMPARE(m_store->lastWritten().first, before + 1);
    QCOMPARE(m_store->lastWritten().last.id, before + 3);
    QCOMPARE(m_store->lastWritten().last.proof, end.proof);
    QVERIFY(!Batch("MenuFileExt").insert("a").send(*m_store).ok());
    QCOMPARE(m_store->lastWritten().first, int64_t(0));
    ORVO_OK(Batch("MenuFileExt").remove("none").send(*m_store));
    QCOMPARE(m_store->lastWritten().first, int64_t(0));
}

void TestLog::whatBecameOfAWriteCanBeAsked() {
    ORVO_OK(Batch("MenuFileExt").insert("a").send(*m_store));
    const Written first = m_store->lastWritten();
    ORVO_OK(Batch("MenuFileExt").insert("b").send(*m_store));
    const Written second = m_store->lastWritten();
    const auto reader = another("reader");
    Outcome outcome = Outcome::Unknown;
    ORVO_OK(reader->outcomeOf(first, &outcome));
    QVERIFY(outcome == Outcome::Saved);
    QVERIFY(m_kind.byHand("UPDATE \"NciEvent\" SET \"time\" = \"time\" + 1 WHERE \"id\" = " +
                          QByteArray::number(qint64(second.last.id)) + ";"));
    ORVO_OK(reader->outcomeOf(second, &outcome));
    QVERIFY(outcome == Outcome::NotSaved);
    Written beyond = second;
    beyond.last.id += 10;
    ORVO_OK(reader->outcomeOf(beyond, &outcome));
    QVERIFY(outcome == Outcome::NotSaved);
    ORVO_OK(m_store->pruneLog(first.last.id));
    ORVO_OK(reader->outcomeOf(first, &outcome));
    QVERIFY(outcome == Outcome::Unknown);
    if (!first.call.empty()) { // asked by name, when the answer to the commit was lost
        Written lost;
        lost.since = first.last.id;
        lost.call = second.call;
        ORVO_OK(reader->outcomeOf(lost, &outcome));
        QVERIFY(outcome == Outcome::Saved);
        lost.call = first.call;
        ORVO_OK(reader->outcomeOf(lost, &outcome));
        QVERIFY(outcome == Outcome::NotSaved);
        lost.since = 0;
        ORVO_OK(reader->outcomeOf(lost, &outcome));
        QVERIFY(outcome == Outcome::Unknown);
    }
}

void TestLog::logOfSeveralProcessesIsReadInCommitOrderWithoutGaps() {
    const QList<QByteArray> writers = {"w1", "w2", "w3"};
    constexpr int count = 60;
    for (const QByteArray& name : writers)
        ORVO_OK(Batch("Menu").insert(name.constData()).send(*m_store));
    ORVO_OK(Batch("Menu").insert("common").send(*m_store));
    int64_t cursor = position();
    const int64_t first = cursor;
    std::vector<std::unique_ptr<QProcess>> processes;
    for (const QByteArray& name : writers) {
        processes.push_back(startWriter(m_kind.url(), name.constData(), "common", count));
        QVERIFY(processes.back()->waitForStarted());
    }
    // Read while they write, small portions at a time, and write along.
    QHash<QByteArray, int> seen;
    QByteArray lastCaption;
    int own = 0;
    QElapsedTimer clock;
    clock.start();
    const int total = (int(writers.size()) + 1) * count;
    for (int read = 0; read < total && clock.elapsed() < 60000;) {
        if (own < count) {
            ORVO_OK(Batch("Menu")
                        .update("common", {{"caption", QString("tester %1").arg(own++)}})
                        .send(*m_store));
        }
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(cursor, 3, &changes));
        for (const Change& change : changes) {
            QCOMPARE(change.id, cursor + 1);
            cursor = change.id;
            ++read;
            const QByteArray login = QByteArray::fromStdString(change.login);
            const QByteArray caption = login + " " + QByteArray::number(seen[login]++);
            QCOMPARE(QByteArray::fromStdString(change.after),
                     QByteArray("{\"caption\":\"" + caption + "\"}"));
            // The log is one line of commits: each value before is the one left by the last.
            if (!lastCaption.isEmpty())
                QCOMPARE(QByteArray::fromStdString(change.before),
                         QByteArray("{\"caption\":\"" + lastCaption + "\"}"));
            lastCaption = caption;
        }
    }
    for (const auto& process : processes) {
        QVERIFY(process->waitForFinished());
        QCOMPARE(process->exitCode(), 0);
    }
    QCOMPARE(cursor, first + total);
    for (const QByteArray& name : writers)
        QCOMPARE(seen[name], count);
    QCOMPARE(dump(*m_store, "Menu", {"KeyLink", "caption"}).section("\n", 0, 0),
             "common|" + QString(lastCaption));
}

void TestLog::everyCommitWakes() {
    const auto second = another("second");
    QVERIFY(second);
    QVERIFY(m_store->wakeFd() >= 0);
    const auto drain = [&] {
        m_store->takeWake();
        std::vector<Change> changes;
        const Status read = m_store->readLog(0, 1000, &changes);
        return read.ok() ? changes.size() : 0;
    };
    drain();
    ORVO_OK(Batch("MenuFileExt").insert("own").send(*m_store));
    QVERIFY2(readable(*m_store, 2000), "own commit");
    QCOMPARE(drain(), size_t(1));
    ORVO_OK(Batch("MenuFileExt").insert("other").send(*second));
    QVERIFY2(readable(*m_store, 2000), "another object's commit");
    QCOMPARE(drain(), size_t(2));
    QVERIFY(m_kind.byHand("INSERT INTO \"MenuFileExt\" (\"KeyLink\") VALUES ('hand');"));
    QVERIFY2(readable(*m_store, 2000), "commit by hand");
    QCOMPARE(drain(), size_t(3));
    for (int i = 0; i < 100; ++i) { // and every single one
        ORVO_OK(Batch("MenuFileExt").update("own").send(*second));
        QVERIFY(readable(*m_store, 2000));
        QCOMPARE(drain(), size_t(4 + i));
    }
}

void TestLog::aReadDoesNotWake() {
    const auto second = another("second");
    QVERIFY(second);
    m_store->takeWake();
    QVERIFY(!readable(*m_store, 0));
    dump(*second, "Menu");
    dump(*m_store, "Menu");
    position();
    QVERIFY(!readable(*m_store, 50));
}

void TestLog::changedTellsOfOwnAndOtherCommits() {
    const auto second = another("second");
    QVERIFY(second);
    m_store->changed();
    QVERIFY(!m_store->changed());
    ORVO_OK(Batch("MenuFileExt").insert("a").send(*m_store));
    QVERIFY(m_store->changed());
    QVERIFY(!m_store->changed());
    ORVO_OK(Batch("MenuFileExt").insert("b").send(*second));
    QVERIFY(m_store->changed());
    QVERIFY(!m_store->changed());
    QVERIFY(m_kind.byHand("DELETE FROM \"MenuFileExt\" WHERE \"KeyLink\" = 'a';"));
    std::vector<Change> changes;
    ORVO_OK(m_store->readLog(0, 100, &changes));
    QCOMPARE(changes.size(), size_t(3));
    QVERIFY(!m_store->changed());
    // A portion that may not be the last leaves something to come for.
    ORVO_OK(m_store->readLog(0, 3, &changes));
    QVERIFY(m_store->changed());
}

void TestLog::rowDatedAheadKeepsNothingFromBeingPruned() {
    for (const char* key : {"a", "b", "c", "d"})
        ORVO_OK(Batch("MenuFileExt").insert(key).send(*m_store));
    const int64_t last = position();
    const QByteArray ahead = QByteArray::number(qint64(last - 2));
    QVERIFY(m_kind.byHand(
        "UPDATE \"NciEvent\" SET \"time\" = \"time\" - 100 * 86400.0;"
        "UPDATE \"NciEvent\" SET \"time\" = \"time\" + 465 * 86400.0 WHERE \"id\" = " +
        ahead + ";"));
    ORVO_OK(Batch("MenuFileExt").insert("e").send(*m_store));
    Status status;
    const auto store = openMaintained(m_kind.url(), {"tester", false}, &status);
    QVERIFY2(store, status.text.c_str());
    const double monthAgo = QDateTime::currentSecsSinceEpoch() - 30 * 86400.0;
    int64_t id = 0;
    int64_t count = 0;
    ORVO_OK(store->logBefore(monthAgo, &id, &count));
    QCOMPARE(id, last);
    QCOMPARE(count, last);
}

void TestLog::newRowsStayWhateverTheirDates() {
    for (const char* key : {"a", "b", "c"})
        ORVO_OK(Batch("MenuFileExt").insert(key).send(*m_store));
    const int64_t last = position();
    Status status;
    const auto store = openMaintained(m_kind.url(), {"tester", false}, &status);
    QVERIFY2(store, status.text.c_str());
    const double monthAgo = QDateTime::currentSecsSinceEpoch() - 30 * 86400.0;
    int64_t id = 0;
    int64_t count = 0;
    // The newest dated back does not take those before it along, nor do those dated ahead go.
    QVERIFY(m_kind.byHand("UPDATE \"NciEvent\" SET \"time\" = 0 WHERE \"id\" = " +
                          QByteArray::number(qint64(last)) + ";"));
    ORVO_OK(store->logBefore(monthAgo, &id, &count));
    QCOMPARE(count, int64_t(0));
    QVERIFY(m_kind.byHand("UPDATE \"NciEvent\" SET \"time\" = 99999999999;"));
    ORVO_OK(store->logBefore(monthAgo, &id, &count));
    QCOMPARE(count, int64_t(0));
}

void TestLog::idsAreNotGivenByHand() {
    ORVO_OK(Batch("MenuFileExt").insert("a").insert("b").send(*m_store));
    const int64_t before = position();
    const auto refused = [this](const QByteArray& sql) {
        QByteArray words;
        const bool done = m_kind.byHand(sql, &words);
        return done ? sql + " is taken" : words;
    };
    const bool isSqlite = m_kind.name() == "sqlite";
    const QByteArray rest =
        QByteArray("\"code\", \"tableName\", \"key\", \"login\", \"time\", \"after\", \"before\", "
                   "\"group\"") +
        (isSqlite ? "" : ", \"call\"");
    const QByteArray values =
        QByteArray("601, 'Menu', 'k', 'x', 0, '{}', '{}', 1") + (isSqlite ? "" : ", ''");
    const QByteArray own = QByteArray::number(qint64(before));
    for (const QByteArray& id :
         {QByteArray("1000000"), QByteArray("9223372036854775807"), QByteArray("-5"), own}) {
        const QByteArray row =
            "INTO \"NciEvent\" (\"id\", " + rest + ") VALUES (" + id + ", " + values + ");";
        const QByteArray words = refused("INSERT " + row);
        QVERIFY2(words.contains("gives its ids itself") ||
                     (id == own && words.contains("UNIQUE constraint failed: NciEvent.id")),
                 words);
        if (isSqlite)
            QVERIFY2(refused("REPLACE " + row).contains("gives its ids itself"),
                     refused("REPLACE " + row));
    }
    QVERIFY(refused("UPDATE \"NciEvent\" SET \"id\" = 1000000 WHERE \"id\" = " + own + ";")
                .contains("gives its ids itself"));
    QCOMPARE(position(), before);
    ORVO_OK(Batch("MenuFileExt").insert("c").send(*m_store));
    QVERIFY(m_kind.byHand("INSERT INTO \"MenuFileExt\" VALUES ('d', 'x'), ('e', 'x');"
                          "UPDATE \"MenuFileExt\" SET \"fileExt\" = 'y';"));
    std::vector<Change> changes;
    ORVO_OK(m_store->readLog(before, 100, &changes));
    QCOMPARE(changes.size(), size_t(8));
    // An emptied log goes on from where it was.
    ORVO_OK(m_store->pruneLog(changes.back().id));
    ORVO_OK(Batch("MenuFileExt").remove("c").send(*m_store));
    QCOMPARE(position(), changes.back().id + 1);
}

void TestLog::logCarriedOutGivesTheTables() {
    ORVO_OK(Batch("MenuFolder")
                .insert("Folder", {{"caption", "Стол"}, {"isFolder", true}})
                .insert("gone")
                .send(*m_store));
    ORVO_OK(Batch("MenuFolder")
                .update("fOLDER", {{"caption", "Другой"}})
                .remove("gone")
                .send(*m_store));
    ORVO_OK(
        Batch("MenuResourceFolder").insert("f", {{"type_", 4}, {"caption", "c"}}).send(*m_store));
    ORVO_OK(m_store->filePut({{"c", "x", "bytes", 1.1e9 + 1.0 / 3}}));
    ORVO_OK(m_store->filePut({{"c", "x", "other bytes", {}}}));
    QVERIFY(m_kind.byHand("UPDATE \"MenuFolder\" SET \"KeyLink\" = 'rekeyed';"
                          "INSERT INTO \"MenuFileExt\" VALUES ('k', 'a'), ('n', NULL);"
                          "DELETE FROM \"MenuFileExt\" WHERE \"KeyLink\" = 'k';"));
    QCOMPARE(replayDifferences(m_kind.url()), QStringList());
    // And a table that says something else is named.
    const bool lite = m_kind.name() == "sqlite";
    QVERIFY(m_kind.byHand(lite ? "DROP TRIGGER \"MenuFileExt.updated\";"
                               : "ALTER TABLE \"MenuFileExt\" DISABLE TRIGGER ALL;"));
    QVERIFY(m_kind.byHand("UPDATE \"MenuFileExt\" SET \"fileExt\" = 'b';"));
    QCOMPARE(
        replayDifferences(m_kind.url()),
        QStringList("MenuFileExt has KeyLink=\"n\" fileExt=\"b\", not KeyLink=\"n\" fileExt=NULL"));
}

int main(int argc, char** argv) {
    return runOnAllKinds<TestLog>(argc, argv);
}

#include "tst_store_log.moc"
