// Tables, triggers and migrations of the SQLite store.
#include "Batch.h"

#include "platform/store/SqliteSchema.h"
#include "platform/store/SqliteStore.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace orvo::store;
using namespace orvo::store::test;

class TestSqliteSchema : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_directory = std::make_unique<QTemporaryDir>();
        Status status;
        QVERIFY2(orvo::store::open(path().toStdString(), {"maker", true}, &status),
                 status.text.c_str());
    }

    void fieldsAreThoseOfTheDictionary() {
        QCOMPARE(shell("SELECT name || ' ' || type FROM pragma_table_info('MenuResource')"),
                 QString("KeyLink TEXT\nMenuResourceFolderKey TEXT\nname_ TEXT\ntype_ INTEGER\n"
                         "caption TEXT\nparams TEXT\nico TEXT\nUsersKey TEXT\ndateTimeEdit REAL"));
        QCOMPARE(shell("SELECT group_concat(name, ' ') FROM (SELECT name FROM pragma_table_list "
                       "WHERE strict ORDER BY name)"),
                 QString("Menu MenuFileExt MenuFolder MenuResource MenuResourceFile "
                         "MenuResourceFileSum MenuResourceFolder NciEvent NciPruned NciReplaced "
                         "NciStore NciVersion NciWriter Users"));
        QCOMPARE(shell("SELECT name FROM pragma_table_info('MenuResourceFile') "
                       "ORDER BY cid DESC LIMIT 1"),
                 QString("data"));
        // What is looked up often is found by an index.
        for (const char* where :
             {"\"Menu\" WHERE \"FolderKey\"", "\"Menu\" WHERE \"MenuResourceKey\"",
              "\"MenuResource\" WHERE \"MenuResourceFolderKey\"",
              "\"MenuResource\" WHERE \"name_\" > '' AND \"type_\"",
              "\"MenuFolder\" WHERE \"ParentKey\"", "\"MenuResourceFolder\" WHERE \"ParentKey\"",
              "\"Menu\" WHERE \"KeyLink\"", "\"MenuResourceFile\" WHERE \"MenuResourceKey\""})
            QVERIFY2(shell(QString("EXPLAIN QUERY PLAN SELECT * FROM %1 = 'x'").arg(where))
                         .contains("USING INDEX"),
                     where);
        const QString named =
            QString("EXPLAIN QUERY PLAN SELECT \"name_\" FROM \"MenuResource\" "
                    "WHERE %1 AND \"type_\" = 3 AND %2 = 'x'")
                .arg(sqlite::storedRows, QString::fromStdString(sqlite::foldedNameExpression()));
        QVERIFY2(shell(named).contains("MenuResource.stored (type_=? AND <expr>=?)"),
                 qPrintable(shell(named)));
        QVERIFY(shell(named + " AND \"MenuResourceFolderKey\" IS NULL")
                    .contains(
                        "MenuResource.stored (type_=? AND <expr>=? AND MenuResourceFolderKey=?)"));
    }

    void fileIsMarkedAsAStore() {
        QCOMPARE(shell("PRAGMA application_id"), QString::number(sqlite::applicationId));
        QCOMPARE(shell("PRAGMA user_version"), QString::number(sqlite::migrations().size()));
        QCOMPARE(shell("PRAGMA journal_mode"), QString("wal"));
        QCOMPARE(shell("PRAGMA integrity_check"), QString("ok"));
    }

    void replaceByHandIsLoggedAsAnUpdate() {
        const auto store = reopen();
        QVERIFY(store);
        for (const char* recursive : {"OFF", "ON"}) {
            QCOMPARE(shell("DELETE FROM MenuFileExt; DELETE FROM NciEvent; "
                           "INSERT INTO MenuFileExt VALUES ('k', 'a')"),
                     QString());
            int64_t before = 0;
            QVERIFY(store->logPosition(&before).ok());
            QCOMPARE(shell(QString("PRAGMA recursive_triggers = %1; "
                                   "INSERT OR REPLACE INTO MenuFileExt VALUES ('k', 'b'); "
                                   "REPLACE INTO MenuFileExt VALUES ('n', 'c')")
                               .arg(recursive)),
                     QString());
            const QString replaced =
                qstrcmp(recursive, "OFF") == 0
                    ? QString(R"(602 MenuFileExt k  {"KeyLink":"k","fileExt":"b"} )"
                              R"({"KeyLink":"k","fileExt":"a"})")
                    : QString(R"(603 MenuFileExt k  {} {"KeyLink":"k","fileExt":"a"})"
                              "\n"
                              R"(601 MenuFileExt k  {"KeyLink":"k","fileExt":"b"} {})");
            QCOMPARE(orvo::store::test::log(*store, before),
                     replaced + "\n601 MenuFileExt n  {\"KeyLink\":\"n\",\"fileExt\":\"c\"} {}");
            QCOMPARE(dump(*store, "MenuFileExt"), QString("k|b\nn|c"));
        }
    }

    void noRowIsReplacedWithoutATrace() {
        const auto store = reopen();
        QVERIFY(store);
        QCOMPARE(shell("INSERT INTO MenuFileExt VALUES ('a', '1'), ('b', '2'), ('c', '3')"),
                 QString());
        int64_t before = 0;
        QVERIFY(store->logPosition(&before).ok());
        const QString rows = dump(*store, "MenuFileExt");
        for (const char* sql :
             {"INSERT OR REPLACE INTO MenuFileExt(rowid, KeyLink) VALUES (1, 'new')",
              "INSERT OR REPLACE INTO MenuFileExt(rowid, KeyLink) VALUES (1, 'c')",
              "REPLACE INTO MenuFileExt(rowid, KeyLink) VALUES (9, 'x'), (2, 'y')",
              "INSERT OR REPLACE INTO MenuFileExt(rowid, KeyLink) VALUES ('2', 'new')",
              "INSERT OR REPLACE INTO MenuFileExt(rowid, KeyLink) VALUES (-1, 'new')",
              "UPDATE OR REPLACE MenuFileExt SET rowid = 3 WHERE KeyLink = 'a'",
              "UPDATE OR REPLACE MenuFileExt SET KeyLink = 'b' WHERE KeyLink = 'a'",
              "UPDATE OR REPLACE MenuFileExt SET rowid = 2, KeyLink = 'n' WHERE KeyLink = 'a'"}) {
            QVERIFY2(!shell(sql).isEmpty(), sql);
            QCOMPARE(dump(*store, "MenuFileExt"), rows);
        }
        QCOMPARE(orvo::store::test::log(*store, before), QString());
        // The row itself may be named by its rowid.
        QCOMPARE(
            shell(
                "INSERT OR REPLACE INTO MenuFileExt(rowid, KeyLink, fileExt) VALUES (1, 'A', 'z')"),
            QString());
        QCOMPARE(orvo::store::test::log(*store, before).count("602 MenuFileExt A"), 1);
        QCOMPARE(
            shell("UPDATE MenuFileExt SET rowid = 77 WHERE KeyLink = 'b'; DELETE FROM MenuFileExt"),
            QString());
        QCOMPARE(orvo::store::test::log(*store, before).count("603 MenuFileExt"), 3);
    }

    void ignoredAndMergedInsertsByHandAreLoggedAsTheyAre() {
        const auto store = reopen();
        QVERIFY(store);
        QCOMPARE(
            shell("INSERT INTO MenuFileExt VALUES ('k', 'a');"
                  "INSERT OR IGNORE INTO MenuFileExt VALUES ('K', 'b');"
                  "INSERT INTO MenuFileExt VALUES ('k', 'c') ON CONFLICT DO UPDATE SET fileExt = "
                  "excluded.fileExt;"
                  "DELETE FROM MenuFileExt;"
                  "INSERT INTO MenuFileExt VALUES ('k', 'd')"),
            QString());
        QCOMPARE(orvo::store::test::log(*store),
                 QString("601 MenuFileExt k  {\"KeyLink\":\"k\",\"fileExt\":\"a\"} {}\n"
                         "602 MenuFileExt k  {\"fileExt\":\"c\"} {\"fileExt\":\"a\"}\n"
                         "603 MenuFileExt k  {} {\"KeyLink\":\"k\",\"fileExt\":\"c\"}\n"
                         "601 MenuFileExt k  {\"KeyLink\":\"k\",\"fileExt\":\"d\"} {}"));
    }

    void missingStepsRunInOneTransaction() {
        shell("INSERT INTO MenuFileExt VALUES ('k', 'a')");
        sqlite::Connection connection;
        QCOMPARE(connection.open(path().toUtf8().constData(), SQLITE_OPEN_READWRITE), SQLITE_OK);
        std::vector<std::string> steps = sqlite::migrations();
        const size_t released = steps.size();
        steps.push_back("CREATE TABLE second (a) STRICT"); // no such type: fails
        QVERIFY(!sqlite::migrate(connection, steps, dictionary()).ok());
        steps[released] = "CREATE TABLE second (a TEXT) STRICT; INSERT INTO second VALUES ('x')";
        steps.push_back("ALTER TABLE second ADD COLUMN b TEXT; UPDATE second SET b = a");
        const Status status = sqlite::migrate(connection, steps, dictionary());
        QVERIFY2(status.ok(), status.text.c_str());
        QVERIFY(sqlite::migrate(connection, steps, dictionary()).ok()); // and once only
        QCOMPARE(shell("SELECT a || b FROM second"), QString("x"
                                                             "x"));
        QCOMPARE(shell("PRAGMA user_version"), QString::number(released + 2));
        QCOMPARE(shell("SELECT fileExt FROM MenuFileExt"), QString("a"));
    }

    void failedStepLeavesTheOldVersion() {
        const QString before = shell(".dump");
        sqlite::Connection connection;
        QCOMPARE(connection.open(path().toUtf8().constData(), SQLITE_OPEN_READWRITE), SQLITE_OK);
        std::vector<std::string> steps = sqlite::migrations();
        steps.push_back("DROP TABLE \"Menu\"; CREATE TABLE second (a TEXT)");
        steps.push_back("this is no statement");
        const Status status = sqlite::migrate(connection, steps, dictionary());
        QCOMPARE(status.code, int(Failed));
        QVERIFY(!status.text.empty());
        QCOMPARE(shell(".dump"), before);
        QCOMPARE(shell("PRAGMA user_version"), QString::number(sqlite::migrations().size()));
        QVERIFY(reopen());
    }

    void newerStoreIsRefusedUnchanged() {
        shell("INSERT INTO MenuFileExt VALUES ('k', 'a'); PRAGMA user_version = 1000");
        const QString before = shell(".dump");
        Status status;
        QVERIFY(!reopen(&status));
        QCOMPARE(status.code, int(NewerStore));
        QVERIFY(status.text.find("1000") != std::string::npos);
        QCOMPARE(shell(".dump"), before);
        QCOMPARE(shell("PRAGMA user_version"), QString("1000"));
    }

    void storeWithoutATableIsRefused() {
        shell("ALTER TABLE \"Menu\" RENAME TO \"Other\"");
        Status status;
        QVERIFY(!reopen(&status));
        QVERIFY(!status.ok());
        QVERIFY(status.text.find("Menu") != std::string::npos);
        shell("ALTER TABLE \"Other\" RENAME TO \"Menu\"");
        QVERIFY(reopen());
    }

private:
    QString path() const { return m_directory->filePath("orvo.db"); }
    std::unique_ptr<Store> reopen(Status* status = nullptr) const {
        return orvo::store::open(path().toStdString(), {"tester"}, status);
    }
    QString shell(const QString& sql) const {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start("sqlite3", {"-batch", path(), sql});
        process.waitForFinished();
        return QString::fromUtf8(process.readAll()).trimmed();
    }
    std::unique_ptr<QTemporaryDir> m_directory;
};

QTEST_GUILESS_MAIN(TestSqliteSchema)

#include "tst_sqlite_schema.moc"
