// Stores of earlier versions, brought up to date: in the end they are as new ones.
#include "StoreTest.h"

#include "platform/store/Checksum.h"
#include "platform/store/Maintenance.h"
#include "platform/store/PostgresSchema.h"
#include "platform/store/SqliteSchema.h"

#include <QCryptographicHash>
#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTemporaryFile>

using namespace orvo::store;
using namespace orvo::store::test;

namespace {

/// Those of which a store lies in tests/store/data.
std::vector<int> keptVersions(bool sqlite) {
    const QDir data(qEnvironmentVariable("ORVO_SOURCE_DIR") + "/tests/store/data");
    std::vector<int> versions;
    for (const QString& name : data.entryList({sqlite ? "sqlite-*.db" : "postgres-*.sql"}))
        versions.push_back(name.section('-', 1).section('.', 0, 0).toInt());
    std::sort(versions.begin(), versions.end());
    return versions;
}

} // namespace

class TestMigrations : public StoreTest {
    Q_OBJECT
public:
    explicit TestMigrations(StoreKind& kind) : StoreTest(kind) {}

private slots:
    void oldStoreBecomesLikeANewOne_data() {
        QTest::addColumn<int>("version");
        for (const int version : keptVersions(isSqlite()))
            QTest::newRow(qPrintable(QString::number(version))) << version;
    }

    void oldStoreBecomesLikeANewOne() {
        QFETCH(int, version);
        const QList<QByteArray> fresh = m_kind.structure().split('\n');
        QVERIFY(fresh.size() > 100);
        m_store.reset();
        QVERIFY(m_kind.renewAsOf(version));
        QCOMPARE(m_kind.structure().split('\n') == fresh, version == int(newest()));
        QVERIFY(another("first"));
        const QList<QByteArray> now = m_kind.structure().split('\n');
        for (int i = 0; i < std::min(now.size(), fresh.size()); ++i)
            QCOMPARE(now[i], fresh[i]);
        QCOMPARE(now.size(), fresh.size());
    }

    /// So that every later version is tried with it.
    void aStoreOfThisVersionIsKept() {
        QVERIFY2(
            !keptVersions(isSqlite()).empty() && keptVersions(isSqlite()).back() == int(newest()),
            "Bring the store of the version before up to date (StoreKind::renewAsOf, then open "
            "it), and put it into tests/store/data under the number of this version");
    }
    void oldStoreKeepsWhatItHolds_data() { oldStoreBecomesLikeANewOne_data(); }

    void oldStoreKeepsWhatItHolds() {
        QFETCH(int, version);
        m_store.reset();
        QVERIFY(m_kind.renewAsOf(version));
        m_store = another("tester");
        QVERIFY(m_store);
        QCOMPARE(
            dump(*m_store, "Menu"),
            QString("m1|-|mf2|Щит ГЩУ|1000|-|false|true|r1|a=1\nm2|m1|mf2|План|2000|a.png|true|-|"
                    "R2|-"));
        std::vector<StoredFile> found;
        ORVO_OK(m_store->formGet("щИТ_", true, &found));
        QCOMPARE(found.size(), size_t(1));
        QCOMPARE(found.front().bytes, std::string("Форма"));
        std::vector<std::string> damages;
        ORVO_OK(m_store->integrity(&damages));
        QCOMPARE(damages, std::vector<std::string>());
        // The log goes on where it was: of the update itself it does not tell.
        QCOMPARE(position(), int64_t(15));
        QVERIFY(orvo::store::test::log(*m_store).startsWith("601 Users u1 "));
        ORVO_OK(Batch("MenuFileExt").insert("k", {{"fileExt", "a"}}).send(*m_store));
        ORVO_OK(Batch("MenuResource").remove("r1").send(*m_store));
        QVERIFY(
            orvo::store::test::log(*m_store, 15)
                .startsWith("601 MenuFileExt k tester {\"KeyLink\":\"k\",\"fileExt\":\"a\"} {}\n"
                            "603 MenuResourceFile c1 tester {} {\"KeyLink\":\"c1\""));
    }

    void addedFieldIsLogged_data() {
        QTest::addColumn<int>("version");
        QTest::newRow("none") << -1;
        QTest::newRow("new") << 0;
        // Every step is run by either of them, and each takes a second on a server.
        const std::vector<int> kept = keptVersions(isSqlite());
        for (const int version : {kept.front(), kept.back()})
            QTest::newRow(qPrintable(QString::number(version))) << version;
    }

    void addedFieldIsLogged() {
        QFETCH(int, version);
        m_store.reset();
        if (version > 0)
            QVERIFY(m_kind.renewAsOf(version));
        else if (version < 0)
            QVERIFY(makeEmpty());
        Dictionary extended = dictionary();
        const auto table = std::find_if(extended.tables.begin(), extended.tables.end(),
                                        [](const TableDef& t) { return t.find("fileExt") >= 0; });
        table->fields.push_back({"hint", MDX_TEXT});
        ORVO_OK(migrateFurther(isSqlite()
                                   ? "ALTER TABLE \"MenuFileExt\" ADD COLUMN \"hint\" TEXT"
                                   : "ALTER TABLE public.\"MenuFileExt\" ADD COLUMN \"hint\" "
                                     "text COLLATE \"C\"",
                               extended));
        QVERIFY(
            m_kind.byHand("DELETE FROM \"NciEvent\";"
                          "INSERT INTO \"MenuFileExt\" VALUES ('k', 'a', 'of step');"
                          "UPDATE \"MenuFileExt\" SET \"hint\" = 'b' WHERE \"KeyLink\" = 'k';"));
        QByteArray text;
        QVERIFY(m_kind.byHand("SELECT \"code\", \"after\", \"before\" FROM \"NciEvent\" ORDER BY "
                              "\"id\";",
                              &text));
        QCOMPARE(text.trimmed(),
                 QByteArray(R"(601|{"KeyLink":"k","fileExt":"a","hint":"of step"}|{})"
                            "\n"
                            R"(602|{"hint":"b"}|{"hint":"of step"})"));
        if (version < 0 && isSqlite()) // bears no mark yet
            QVERIFY(m_kind.byHand("PRAGMA application_id = 1332901487;"));
        // This program does not know that version.
        Status status;
        QVERIFY(!open(m_kind.url(), {}, &status));
        QCOMPARE(status.code, int(NewerStore));
    }

    void triggersAreMadeAgainByAStepWithoutAStatement() {
        m_store.reset();
        const QByteArray fresh = m_kind.structure();
        QVERIFY(m_kind.byHand(isSqlite() ? "DROP TRIGGER \"Menu.inserted\";"
                                         : "DROP FUNCTION \"Menu.log\" CASCADE;"));
        QVERIFY(m_kind.structure() != fresh);
        ORVO_OK(migrateFurther("-- The triggers changed.\n", dictionary()));
        const QByteArray version = QByteArray::number(int(newest()));
        QVERIFY(m_kind.byHand(isSqlite()
                                  ? "PRAGMA user_version = " + version
                                  : "UPDATE \"NciStore\" SET \"version\" = " + version + ";"));
        QCOMPARE(m_kind.structure(), fresh);
    }

    /// Stores of the newest version keep the triggers that they have: new ones come with a step.
    void triggersChangeOnlyWithAStep() {
        const std::string text = isSqlite() ? sqlite::triggers(dictionary())
                                            : postgres::functionsAndRights(dictionary());
        const QByteArray now =
            m_kind.name() + ' ' + QByteArray::number(int(newest())) + ' ' +
            QCryptographicHash::hash(QByteArray::fromStdString(text), QCryptographicHash::Sha256)
                .toHex();
        QFile file(qEnvironmentVariable("ORVO_SOURCE_DIR") + "/tests/store/data/triggers.txt");
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY2(
            file.readAll().split('\n').contains(now),
            "The triggers are not those of this version: add a step to platform/store/migrations, "
            "if only an empty one, and to tests/store/data/triggers.txt: " +
                now);
    }

    void storeHasAnIdentityOfItsOwn() {
        const std::string first = identity();
        QVERIFY2(QRegularExpression("^[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$")
                     .match(QString::fromStdString(first))
                     .hasMatch(),
                 first.c_str());
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*m_store));
        QCOMPARE(identity(), first);
        m_store.reset();
        QVERIFY(m_kind.renew());
        QVERIFY(identity() != first);
        for (const int version : {1, 2}) { // later ones have brought one along
            QVERIFY(m_kind.renewAsOf(version));
            const std::string old = identity();
            QCOMPARE(old.size(), first.size());
            QVERIFY(m_kind.renewAsOf(version));
            QVERIFY(identity() != old);
        }
    }

    void restoreIsANewLife() {
        const std::string first = identity();
        QTemporaryFile file;
        QVERIFY(file.open());
        Status status;
        const auto store = openMaintained(m_kind.url(), {"tester", false}, &status);
        QVERIFY2(store, status.text.c_str());
        ORVO_OK(store->backup(file.fileName().toStdString(), {}));
        QCOMPARE(identity(), first);
        ORVO_OK(store->restore(file.fileName().toStdString(), {}));
        QVERIFY(identity() != first);
        QCOMPARE(identity().size(), first.size());
    }

    void missingAndAlteredTriggersAreNamedAndMadeAgain_data() {
        QTest::addColumn<QByteArray>("byHand");
        QTest::addColumn<QString>("named");
        const auto row = [&](const char* name, const char* lite, const char* litely,
                             const char* server, const char* serverly) {
            QTest::newRow(name) << QByteArray(isSqlite() ? lite : server)
                                << QString(isSqlite() ? litely : serverly);
        };
        row("dropped", "DROP TRIGGER \"Menu.updated\";", "Нет триггера Menu.updated",
            "DROP TRIGGER \"updated\" ON \"Menu\";", "Нет триггера updated таблицы Menu");
        row("of the log itself", "DROP TRIGGER \"NciEvent.deleted\";",
            "Нет триггера NciEvent.deleted", "DROP TRIGGER \"number\" ON \"NciEvent\";",
            "Нет триггера number таблицы NciEvent");
        row("altered",
            "DROP TRIGGER \"Menu.deleted\"; CREATE TRIGGER \"Menu.deleted\" AFTER DELETE ON "
            "\"Menu\" "
            "BEGIN SELECT 1; END;",
            "Изменён триггер Menu.deleted",
            "DROP TRIGGER \"lock\" ON \"Menu\"; CREATE TRIGGER \"lock\" AFTER UPDATE ON \"Menu\" "
            "EXECUTE FUNCTION \"NciLock\"();",
            "Изменён триггер lock таблицы Menu");
        row("of contents", "DROP TRIGGER \"MenuResourceFile.updated\";",
            "Нет триггера MenuResourceFile.updated",
            "DROP TRIGGER \"updated\" ON \"MenuResourceFileData\";",
            "Нет триггера updated таблицы MenuResourceFileData");
        if (isSqlite())
            return;
        const auto server = [](const char* name, const char* sql, const char* named) {
            QTest::newRow(name) << QByteArray(sql) << QString(named);
        };
        server("disabled", "ALTER TABLE \"Menu\" DISABLE TRIGGER \"updated\";",
               "Отключён триггер updated таблицы Menu");
        server("for replicas only", "ALTER TABLE \"Menu\" ENABLE REPLICA TRIGGER \"updated\";",
               "Отключён триггер updated таблицы Menu");
        server("with a condition",
               "DROP TRIGGER \"inserted\" ON \"Menu\"; CREATE TRIGGER \"inserted\" AFTER INSERT ON "
               "\"Menu\" REFERENCING NEW TABLE AS come FOR EACH STATEMENT WHEN (false) EXECUTE "
               "FUNCTION \"Menu.log\"();",
               "Изменён триггер inserted таблицы Menu");
        server("of some columns",
               "DROP TRIGGER \"rekeyed\" ON \"Menu\"; CREATE TRIGGER \"rekeyed\" AFTER UPDATE OF "
               "\"caption\" ON \"Menu\" FOR EACH ROW WHEN (true) EXECUTE FUNCTION \"Menu.log\"();",
               "Изменён триггер rekeyed таблицы Menu");
        server("with another function",
               "DROP TRIGGER \"inserted\" ON \"Menu\"; CREATE TRIGGER \"inserted\" AFTER INSERT ON "
               "\"Menu\" REFERENCING NEW TABLE AS come FOR EACH STATEMENT EXECUTE FUNCTION "
               "\"Users.log\"();",
               "Изменён триггер inserted таблицы Menu");
        server(
            "empty function",
            "CREATE OR REPLACE FUNCTION \"Menu.log\"() RETURNS trigger LANGUAGE plpgsql SECURITY "
            "DEFINER SET search_path = pg_catalog, pg_temp AS 'BEGIN RETURN NULL; END';",
            "Изменена функция Menu.log");
        server("function without a search path", "ALTER FUNCTION \"Menu.log\"() RESET search_path;",
               "Изменена функция Menu.log");
        server("function with another's rights", "ALTER FUNCTION \"Menu.log\"() SECURITY INVOKER;",
               "Изменена функция Menu.log");
        server("another's function", "ALTER FUNCTION \"NciTakeLock\"() OWNER TO orvo_engineer;",
               "Изменена функция NciTakeLock");
    }

    void missingAndAlteredTriggersAreNamedAndMadeAgain() {
        QFETCH(QByteArray, byHand);
        QFETCH(QString, named);
        Status status;
        const auto store = openMaintained(m_kind.url(), {"boss", false}, &status);
        QVERIFY2(store, status.text.c_str());
        std::vector<std::string> lines;
        ORVO_OK(store->remakeTriggers(&lines)); // there is nothing to be made
        QCOMPARE(lines, std::vector<std::string>());
        LogCursor cursor;
        ORVO_OK(store->logEnd(&cursor));
        const QByteArray sound = m_kind.structure();
        QByteArray words;
        QVERIFY2(m_kind.byHand(byHand, &words), words);
        ORVO_OK(store->integrity(&lines));
        QCOMPARE(lines, std::vector<std::string>{named.toStdString()});
        ORVO_OK(store->remakeTriggers(&lines));
        QCOMPARE(lines, std::vector<std::string>{named.toStdString()});
        QCOMPARE(m_kind.structure(), sound);
        ORVO_OK(store->integrity(&lines));
        QCOMPARE(lines, std::vector<std::string>());
        // What happened meanwhile may not stand in the log: whoever reads it begins anew.
        std::vector<Change> changes;
        ORVO_FAILS(store->readLog(cursor, 10, &changes), LogPruned);
        ORVO_OK(store->logEnd(&cursor));
        ORVO_OK(Batch("Menu").insert("k").send(*store));
        ORVO_OK(store->readLog(cursor, 10, &changes));
        QCOMPARE(changes.size(), size_t(1));
    }

    void restoreMakesTheTriggersThatABackupLacks() {
        const QByteArray sound = m_kind.structure();
        QVERIFY(m_kind.byHand(isSqlite() ? "DROP TRIGGER \"Menu.inserted\";"
                                         : "DROP FUNCTION \"Menu.log\" CASCADE;"));
        const QTemporaryDir directory;
        const std::string file = directory.filePath("backup").toStdString();
        QFile made(QString::fromStdString(file));
        QVERIFY(made.open(QIODevice::WriteOnly));
        made.close();
        Status status;
        const auto store = openMaintained(m_kind.url(), {"boss", false}, &status);
        QVERIFY2(store, status.text.c_str());
        ORVO_OK(store->backup(file, {}));
        std::string sum;
        ORVO_OK(sumOf(file, {}, &sum));
        QFile vouches(QString::fromStdString(checksumFile(file)));
        QVERIFY(vouches.open(QIODevice::WriteOnly));
        vouches.write(QByteArray::fromStdString(checksumLine(sum, "backup")));
        vouches.close();
        ORVO_OK(store->restore(file, {}));
        QCOMPARE(m_kind.structure(), sound);
    }

private:
    bool isSqlite() const { return m_kind.name() == "sqlite"; }
    size_t newest() const {
        return (isSqlite() ? sqlite::migrations() : postgres::migrations()).size();
    }
    /// Runs the released steps and this one, with that dictionary.
    Status migrateFurther(const std::string& step, const Dictionary& fields) const {
        if (isSqlite()) {
            sqlite::Connection connection;
            connection.open(m_kind.url().substr(strlen("sqlite://")).c_str(),
                            SQLITE_OPEN_READWRITE);
            MigrationSteps steps = sqlite::migrations();
            steps.push_back(step);
            return sqlite::migrate(connection, steps, fields);
        }
        postgres::Url url;
        postgres::Connection connection;
        Status status = url.parse(m_kind.url());
        if (status.ok())
            status = connection.open(url);
        MigrationSteps steps = postgres::migrations();
        steps.push_back(step);
        return status.ok() ? postgres::migrate(connection, steps, fields, true) : status;
    }

    /// Leaves a database without a store, for a step that makes one.
    bool makeEmpty() const {
        if (!isSqlite())
            return m_kind.byHand("DROP SCHEMA public CASCADE; CREATE SCHEMA public;");
        const std::string file = m_kind.url().substr(strlen("sqlite://"));
        for (const char* suffix : {"", "-wal", "-shm"})
            QFile::remove(QString::fromStdString(file + suffix));
        sqlite::Connection connection;
        return connection.open(file.c_str(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) ==
                   SQLITE_OK &&
               connection.execute("PRAGMA journal_mode = WAL") == SQLITE_OK;
    }

    std::string identity() const {
        std::string identity;
        const Status status = another("reader")->identity(&identity);
        return status.ok() ? identity : status.text;
    }
};

int main(int argc, char** argv) {
    return runOnAllKinds<TestMigrations>(argc, argv);
}

#include "tst_store_migrations.moc"
