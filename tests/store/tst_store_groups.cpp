// The change log knows what was one action, who did it where, and what it took back.
#include "StoreTest.h"

#include "platform/store/Maintenance.h"
#include "platform/store/WritePlan.h"

#include <QSysInfo>

#include <algorithm>
#include <climits>

using namespace orvo::store;
using namespace orvo::store::test;

class TestGroups : public StoreTest {
    Q_OBJECT
public:
    using StoreTest::StoreTest;

private slots:
    void aCallIsAGroup() {
        ORVO_OK(Batch("MenuFileExt").insert("a").insert("b").update("a").send(*m_store));
        ORVO_OK(Batch("MenuFileExt").remove("a").send(*m_store));
        ORVO_OK(Batch("MenuFileExt").insert("c").insert("d").send(*m_store));
        QCOMPARE(groups(), QString("111233"));
        QCOMPARE(changes().front().group, changes().front().id);
        QCOMPARE(changes().back().group, m_store->lastWritten().first);
    }

    void callsJoinAGroupOfTheirLogin() {
        ORVO_OK(Batch("MenuFileExt").insert("a").send(*m_store));
        m_store->joinGroup(m_store->lastWritten().first);
        const auto other = another("other");
        ORVO_OK(Batch("MenuFileExt").insert("x").send(*other));
        ORVO_OK(Batch("Menu").insert("b").insert("c").send(*m_store));
        ORVO_OK(Batch("MenuFileExt").remove("a").send(*m_store));
        m_store->joinGroup(0);
        ORVO_OK(Batch("MenuFileExt").insert("d").send(*m_store));
        QCOMPARE(groups(), QString("121113"));
    }

    void aGroupOfAnotherLoginIsNotJoined() {
        const auto other = another("other");
        ORVO_OK(Batch("MenuFileExt").insert("x").insert("y").send(*other));
        for (const int64_t group : {other->lastWritten().first, other->lastWritten().last.id,
                                    int64_t(777), int64_t(-1), INT64_MAX}) {
            const int64_t before = position();
            m_store->joinGroup(group);
            ORVO_OK(Batch("MenuFileExt").update("x").update("y").send(*m_store));
            QCOMPARE(groups(before), QString("11"));
            QCOMPARE(changes(before).front().group, changes(before).front().id);
        }
    }

    void aGroupThatWasPrunedIsNotJoined() {
        ORVO_OK(Batch("MenuFileExt").insert("a").send(*m_store));
        m_store->joinGroup(m_store->lastWritten().first);
        ORVO_OK(m_store->pruneLog(position()));
        const int64_t last = position();
        ORVO_OK(Batch("MenuFileExt").insert("b").send(*m_store));
        QCOMPARE(changes(last).front().group, changes(last).front().id);
    }

    void contentsBelongToTheGroupOfTheirResource() {
        ORVO_OK(Batch("MenuResourceFolder").insert("forms", {{"type_", 3}}).send(*m_store));
        const int64_t before = position();
        ORVO_OK(m_store->formPut("", {{"", "a.ui", "bytes", {}}, {"", "a.png", "more", {}}}));
        ORVO_OK(m_store->formDelete({"a.ui"}));
        const QString all = groups(before);
        QVERIFY2(QRegularExpression("^1{3,}2{3,}$").match(all).hasMatch(), qPrintable(all));
    }

    void aStatementByHandIsAGroup() {
        QVERIFY(m_kind.byHand(
            "INSERT INTO \"MenuFileExt\" VALUES ('a', '1'), ('b', '2'), ('c', '3');"));
        QVERIFY(m_kind.byHand("DELETE FROM \"MenuFileExt\";"));
        QCOMPARE(groups(), QString("111222"));
    }

    void aTransactionByHandIsAGroup() {
        if (isSqlite())
            QSKIP("no transaction is known to SQLite's triggers");
        QVERIFY(m_kind.byHand("INSERT INTO \"MenuFileExt\" VALUES ('a', '1');"
                              "BEGIN; INSERT INTO \"MenuFileExt\" VALUES ('b', '1');"
                              "UPDATE \"MenuFileExt\" SET \"fileExt\" = '2';"
                              "INSERT INTO \"Menu\" (\"KeyLink\") VALUES ('m'); COMMIT;"
                              "INSERT INTO \"MenuFileExt\" VALUES ('c', '1');"));
        QCOMPARE(groups(), QString("122223"));
    }

    void aTransactionWithARolledBackPartIsAGroup() {
        if (isSqlite())
            QSKIP("no transaction is known to SQLite's triggers");
        QVERIFY(
            m_kind.byHand("BEGIN; INSERT INTO \"MenuFileExt\" VALUES ('a', '1'); SAVEPOINT s;"
                          "INSERT INTO \"MenuFileExt\" VALUES ('b', '1'); ROLLBACK TO s;"
                          "SAVEPOINT t; INSERT INTO \"MenuFileExt\" VALUES ('c', '1'); RELEASE t;"
                          "INSERT INTO \"MenuFileExt\" VALUES ('d', '1'); COMMIT;"));
        QCOMPARE(groups(), QString("111"));
    }

    /// As long as nobody has analysed it the log is short, for all that the planner knows.
    void aLongTransactionDoesNotReadTheLogForEachRow() {
        if (isSqlite())
            QSKIP("it is about the server's planner");
        QVERIFY(m_kind.byHand("INSERT INTO \"MenuFileExt\" SELECT 'k' || i, 'x' FROM "
                              "generate_series(1, 2000) i;"));
        QByteArray read;
        QVERIFY(m_kind.byHand(
            "SELECT seq_tup_read FROM pg_stat_user_tables WHERE relname = 'NciEvent';", &read));
        QVERIFY2(read.trimmed().toLongLong() < 20000, read.constData());
        QCOMPARE(groups(), QString(1000, '1')); // the first page
    }

    void aLoginCannotClaimAnothersGroup() {
        if (isSqlite())
            QSKIP("whoever writes by hand has no login there");
        ORVO_OK(Batch("MenuFileExt").insert("x").send(*m_store));
        const QByteArray theirs = QByteArray::number(qint64(m_store->lastWritten().first));
        for (const QByteArray& text : {theirs, QByteArray("0"), QByteArray("''"),
                                       QByteArray("'1e3'"), QByteArray("'99999999999999999999'")})
            QVERIFY(
                m_kind.byHand("SET orvo.action = " + text +
                              "; SET orvo.undoes = 'x,1'; UPDATE \"MenuFileExt\" SET \"fileExt\" = "
                              "'1';"));
        QCOMPARE(groups(), QString("123456"));
        for (const Change& change : changes())
            QVERIFY(change.undoes.empty());
    }

    void writerIsKnownByProgramAndMachine() {
        const auto program = maintained({"tester", false, "orvo-test"});
        ORVO_OK(Batch("MenuFileExt").insert("a").send(*program));
        QCOMPARE(changes().front().client, std::string("orvo-test"));
        QCOMPARE(changes().front().place, QSysInfo::machineHostName().left(64).toStdString());
        QVERIFY(m_kind.byHand("UPDATE \"MenuFileExt\" SET \"fileExt\" = 'b';"));
        QVERIFY(changes().back().client != "orvo-test");
        QCOMPARE(changes().back().place, std::string());
    }

    void programByHandIsKnownToTheServer() {
        QVERIFY(m_kind.byHand("INSERT INTO \"MenuFileExt\" VALUES ('a', '1');"));
        QCOMPARE(changes().front().client, std::string(isSqlite() ? "" : "psql"));
    }

    void longNamesAreCut() {
        const std::string longName = QString(100, QChar(0x0436)).toStdString();
        ORVO_OK(
            Batch("MenuFileExt").insert("a").send(*maintained({"tester", false, longName + "\n"})));
        QCOMPARE(changes().front().client, longName.substr(0, 64));
        ORVO_OK(Batch("MenuFileExt").insert("b").send(*maintained({"tester", false, "a\tb\xff"})));
        QCOMPARE(changes().back().client, std::string("a b?"));
    }

    void writesToSeveralTablesAreOneGroup() {
        const auto store = maintained();
        const TableDef& folders = *findTable("MenuFolder");
        const TableDef& elements = *findTable("Menu");
        const std::string text = "Стол \xE2\x82\xBF"; // a letter that records do not hold
        ORVO_OK(store->writeAll(
            {{&folders, {write(MDX_INSERT, "f", {{folders.find("caption"), Value(text)}})}},
             {&elements, {write(MDX_INSERT, "m", {{elements.find("FolderKey"), Value("f")}})}},
             {&folders, {write(MDX_UPDATE, "F", {{folders.find("isFolder"), Value(int64_t(0))}})}}},
            position(), {3, 14}));
        QCOMPARE(groups(), QString("111"));
        const std::vector<Change> made = changes();
        QCOMPARE(made.at(0).undoes, (std::vector<int64_t>{3, 14}));
        QVERIFY(made.at(1).undoes.empty() && made.at(2).undoes.empty());
        std::map<std::string, std::vector<Value>> values;
        ORVO_OK(store->storedValues(folders, {"F", "none", "ключ"}, &values));
        QCOMPARE(values.size(), size_t(1));
        QVERIFY(values["f"][size_t(folders.find("caption"))] == Value(text));
        // A group of its own, whatever was joined before.
        store->joinGroup(made.front().group);
        ORVO_OK(store->writeAll({{&elements, {write(MDX_INSERT, "o")}}}, position(), {15}));
        QCOMPARE(changes().back().group, changes().back().id);
        QCOMPARE(changes().back().undoes, std::vector<int64_t>{15});
        ORVO_OK(Batch("MenuFileExt").insert("b").send(*store));
        QCOMPARE(changes().back().group, made.front().group);
        store->joinGroup(0);
        // What comes next undoes nothing.
        ORVO_OK(Batch("MenuFileExt").insert("a").send(*store));
        QVERIFY(changes().back().undoes.empty());
        std::vector<Change> undoing;
        LogQuery query;
        query.undoing = true;
        ORVO_OK(store->history(query, 10, &undoing));
        QCOMPARE(undoing.size(), size_t(2));
    }

    void refusedWritesToSeveralTablesLeaveNothing() {
        const auto store = maintained();
        ORVO_OK(Batch("MenuFolder").insert("top").insert("gone").send(*store));
        ORVO_OK(Batch("MenuFolder").remove("gone").send(*store));
        const TableDef& folders = *findTable("MenuFolder");
        const TableDef& elements = *findTable("Menu");
        const int64_t before = position();
        const Write element = write(MDX_INSERT, "m");
        ORVO_FAILS(store->writeAll({{&elements, {element}}, {&elements, {element}}}, before, {}),
                   Refused);
        ORVO_FAILS(store->writeAll({{&elements, {element}},
                                    {&folders, {write(MDX_UPDATE, "top", {{1, Value("TOP")}})}}},
                                   before, {}),
                   Refused);
        ORVO_FAILS(store->writeAll({{&elements, {element}},
                                    {&folders, {write(MDX_UPDATE, "top", {{1, Value("gone")}})}}},
                                   before, {}),
                   ParentDeleted);
        QCOMPARE(position(), before);
        ORVO_OK(store->writeAll({}, before, {}));
        QCOMPARE(position(), before);
    }

    void writesToWhatWasChangedSinceAreOutdated() {
        const auto store = maintained();
        ORVO_OK(Batch("MenuFolder").insert("a").insert("b").send(*store));
        const int64_t seen = position();
        const TableDef& folders = *findTable("MenuFolder");
        const std::vector<TableWrites> plan = {
            {&folders, {write(MDX_UPDATE, "A", {{folders.find("caption"), Value("x")}})}}};
        ORVO_OK(Batch("MenuFolder").update("b", {{"caption", "y"}}).send(*m_store));
        ORVO_OK(store->writeAll(plan, seen, {}));
        ORVO_FAILS(store->writeAll(plan, seen, {}), Outdated); // its own write
        ORVO_OK(store->writeAll(plan, position(), {}));
        const int64_t last = position();
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*m_store));
        ORVO_OK(m_store->pruneLog(position()));
        ORVO_FAILS(store->writeAll(plan, last, {}), Outdated);
    }

    void groupsOutliveARestore() {
        const auto store = maintained();
        ORVO_OK(Batch("MenuFileExt").insert("a").insert("b").send(*store));
        QTemporaryFile file;
        QVERIFY(file.open());
        ORVO_OK(store->backup(file.fileName().toStdString(), {}));
        ORVO_OK(store->restore(file.fileName().toStdString(), {}));
        QByteArray text;
        QVERIFY(m_kind.byHand("SELECT \"group\" FROM \"NciEvent\" ORDER BY \"id\";", &text));
        QCOMPARE(text.simplified(), QByteArray("1 1"));
        const int64_t last = position();
        ORVO_OK(Batch("MenuFileExt").insert("c").insert("d").send(*store));
        QCOMPARE(groups(last), QString("11"));
        QCOMPARE(changes(last).front().group, changes(last).front().id);
    }

    void groupsOfAnOldStoreAreItsCalls() {
        m_store.reset();
        QVERIFY(m_kind.renewAsOf(4));
        m_store = another("tester");
        QVERIFY(m_store);
        const std::vector<Change> old = changes();
        QCOMPARE(old.size(), size_t(15));
        for (const Change& change : old) {
            QVERIFY(change.group > 0 && change.group <= change.id);
            QCOMPARE(old.at(size_t(change.group - 1)).login, change.login);
            QCOMPARE(old.at(size_t(change.group - 1)).group, change.group);
        }
        const int64_t last = position();
        ORVO_OK(Batch("MenuFileExt").insert("a1").insert("b1").send(*m_store));
        QCOMPARE(groups(last), QString("11"));
        QVERIFY(changes(last).front().group > last);
    }

    void aGroupOfAnySizeIsReadWhole_data() {
        QTest::addColumn<int>("size");
        for (const int size : {1, 499, 500, 501, 1000, 1234})
            QTest::newRow(qPrintable(QString::number(size))) << size;
    }

    void aGroupOfAnySizeIsReadWhole() {
        QFETCH(int, size);
        ORVO_OK(Batch("MenuFileExt").insert("before").send(*m_store));
        Batch batch("MenuFileExt");
        for (int i = 0; i < size; ++i)
            batch.insert(qPrintable("k" + QString::number(i)), {{"fileExt", i % 2 ? "a" : "б"}});
        ORVO_OK(batch.send(*m_store));
        const int64_t first = m_store->lastWritten().first;
        ORVO_OK(Batch("MenuFileExt").insert("after").send(*m_store));
        const auto store = maintained();
        QVERIFY(store);
        LogQuery query;
        query.group = first;
        std::vector<Change> found;
        for (const bool oldestFirst : {true, false}) {
            query.oldestFirst = oldestFirst;
            ORVO_OK(store->history(query, INT_MAX, &found));
            QCOMPARE(found.size(), size_t(size));
            for (int i = 0; i < size; ++i) {
                const Change& change = found[size_t(oldestFirst ? i : size - 1 - i)];
                QCOMPARE(change.id, first + i);
                QCOMPARE(change.group, first);
                QCOMPARE(change.key, "k" + std::to_string(i));
                QVERIFY(change.after.find(i % 2 ? "\"a\"" : "\"б\"") != std::string::npos);
            }
        }
        ORVO_OK(store->history(query, 700, &found));
        QCOMPARE(found.size(), size_t(std::min(size, 700)));
        ORVO_OK(Batch("MenuFileExt").insert("later").send(*store)); // the connection is idle
    }

    void rowsOfTheLogAreFoundByIndexes_data() {
        QTest::addColumn<QByteArray>("condition");
        QTest::newRow("group") << QByteArray("\"group\" = 5000");
        QTest::newRow("row") << QByteArray("lower(\"key\") = 'k77'");
        QTest::newRow("person") << QByteArray("\"login\" = 'nobody'");
        QTest::newRow("time") << QByteArray("\"time\" < 5 AND \"time\" > 4");
        QTest::newRow("undoing") << QByteArray("\"undoes\" <> ''");
    }

    void rowsOfTheLogAreFoundByIndexes() {
        QFETCH(QByteArray, condition);
        const QByteArray select =
            "SELECT * FROM \"NciEvent\" WHERE " + condition + " ORDER BY \"id\" DESC LIMIT 200;";
        QByteArray plan;
        if (isSqlite()) {
            QVERIFY(m_kind.byHand("EXPLAIN QUERY PLAN " + select, &plan));
            QVERIFY2(plan.contains("INDEX NciEvent."), plan.constData());
            return;
        }
        QVERIFY(m_kind.byHand(
            "SET session_replication_role = replica; INSERT INTO \"NciEvent\" SELECT i, 602, "
            "'Menu', "
            "'k' || i, 'u' || i % 9, 1000 + i, '{}', '{}', '', i, NULL, '', '', '' FROM "
            "generate_series(1, 20000) i; ANALYZE \"NciEvent\"; EXPLAIN " +
                select,
            &plan));
        QVERIFY2(plan.contains("Index") && !plan.contains("NciEvent_pkey"), plan.constData());
        QVERIFY2(!plan.contains("Seq Scan"), plan.constData());
    }

private:
    bool isSqlite() const { return m_kind.name() == "sqlite"; }
    std::vector<Change> changes(int64_t since = 0) const {
        std::vector<Change> found;
        const Status status = m_store->readLog(since, 1000, &found);
        if (!status.ok())
            qWarning("%s", status.text.c_str());
        return found;
    }
    /// The groups of the changes after an id, counted from 1 in the order of the log.
    QString groups(int64_t since = 0) const {
        QString text;
        std::vector<int64_t> seen;
        for (const Change& change : changes(since)) {
            auto found = std::find(seen.begin(), seen.end(), change.group);
            if (found == seen.end())
                found = seen.insert(seen.end(), change.group);
            text += QString::number(found - seen.begin() + 1);
        }
        return text;
    }
    std::unique_ptr<MaintainedStore> maintained(const OpenOptions& options = {"tester"}) const {
        Status status;
        auto store = openMaintained(m_kind.url(), options, &status);
        if (!store)
            qWarning("%s", status.text.c_str());
        return store;
    }
    static Write write(int flag, const char* key, std::vector<std::pair<int, Value>> values = {}) {
        return {flag, key, std::move(values)};
    }
};

int main(int argc, char** argv) {
    return runOnAllKinds<TestGroups>(argc, argv);
}

#include "tst_store_groups.moc"
