// Who may do what on a server, and what nobody gets to see.
#include "PostgresTest.h"

#include "platform/store/Maintenance.h"
#include "platform/store/Merge.h"
#include "platform/store/PostgresSchema.h"
#include "platform/store/PostgresUrl.h"

#include <QTemporaryFile>

using namespace orvo::store;
using namespace orvo::store::test;

class TestAccess : public PostgresTest {
    Q_OBJECT
private slots:
    void engineerWritesUnderHisLogin() {
        QVERIFY(login("инженер"));
        const auto store = opened("%D0%B8%D0%BD%D0%B6%D0%B5%D0%BD%D0%B5%D1%80");
        QVERIFY(store);
        QCOMPARE(store->login(), std::string("инженер"));
        int64_t before = 0;
        ORVO_OK(store->logPosition(&before));
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*store));
        ORVO_OK(
            Batch("MenuResourceFolder").insert("f", {{"type_", 4}, {"caption", "c"}}).send(*store));
        ORVO_OK(store->filePut({{"c", "x", "bytes", {}}}));
        ORVO_OK(store->filePut({{"c", "x", "other", {}}}));
        std::vector<StoredFile> files;
        ORVO_OK(store->fileGet("c", "x", true, &files));
        QCOMPARE(files.at(0).bytes, std::string("other"));
        ORVO_OK(store->fileDelete({{"c", "x"}}));
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(before, 100, &changes));
        QCOMPARE(changes.size(), size_t(7));
        for (const Change& change : changes)
            QCOMPARE(change.login, std::string("инженер"));
        ORVO_FAILS(store->pruneLog(before), Refused);
    }

    void loginOfTheLogIsTheSessionsAndNotTheOneAskedFor() {
        QVERIFY(login("engineer1"));
        Status status;
        const auto store = open(m_cluster->url(m_database.toStdString(), "engineer1"),
                                {"director", false}, &status);
        QVERIFY2(store, status.text.c_str());
        QCOMPARE(store->login(), std::string("engineer1"));
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*store));
        QVERIFY(log(*m_store).contains("601 MenuFileExt k engineer1 "));
        QVERIFY(
            byHand("SET orvo.login = 'director'; INSERT INTO \"MenuFileExt\" VALUES ('n', 'x');",
                   nullptr, "engineer1"));
        QVERIFY(log(*m_store).contains("601 MenuFileExt n engineer1 "));
        QVERIFY(!log(*m_store).contains("director"));
    }

    void onlyTheOwnerWritesUnderAnotherLogin() {
        Status status;
        const auto store =
            open(m_cluster->url(m_database.toStdString()), {"o'brien\\", false}, &status);
        QVERIFY2(store, status.text.c_str());
        QCOMPARE(store->login(), std::string("o'brien\\"));
        QCOMPARE(m_store->login(), std::string("postgres"));
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*store));
        ORVO_OK(Batch("MenuFileExt").insert("n").send(*m_store));
        QVERIFY(log(*m_store).contains("601 MenuFileExt k o'brien\\ "));
        QVERIFY(log(*m_store).contains("601 MenuFileExt n postgres "));
    }

    void viewerReadsButCannotWrite() {
        QVERIFY(login("viewer1", true));
        ORVO_OK(Batch("MenuFileExt").insert("k", {{"fileExt", "a"}}).send(*m_store));
        ORVO_OK(m_store->filePut({{"", "x", "bytes", {}}}));
        const auto store = opened("viewer1");
        QVERIFY(store);
        QCOMPARE(dump(*store, "MenuFileExt"), "k|a");
        std::vector<StoredFile> files;
        ORVO_OK(store->fileGet("", "x", true, &files));
        QCOMPARE(files.at(0).bytes, std::string("bytes"));
        QVERIFY(log(*store).contains("601 MenuFileExt k"));
        int64_t before = 0;
        ORVO_OK(store->logPosition(&before));
        for (Status status :
             {Batch("MenuFileExt").insert("n").send(*store),
              Batch("MenuFileExt").update("k").send(*store),
              Batch("MenuFileExt").remove("k").send(*store),
              store->filePut({{"", "y", "bytes", {}}}), store->filePut({{"", "x", "new", {}}}),
              store->fileDelete({{"", "x"}})}) {
            ORVO_FAILS(status, Refused);
            QVERIFY2(QString::fromStdString(status.text)
                         .contains("у пользователя \"viewer1\" нет права на запись"),
                     status.text.c_str());
        }
        ORVO_FAILS(store->pruneLog(before), Refused);
        User user;
        user.login = "another";
        ORVO_FAILS(store->userAdd(user), Refused);
        int64_t after = 0;
        ORVO_OK(store->logPosition(&after));
        QCOMPARE(after, before);
        QCOMPARE(dump(*store, "MenuFileExt"), "k|a"); // and the connection is as good as before
    }

    void logCannotBeForged() {
        QVERIFY(login("engineer2"));
        for (const char* sql :
             {"INSERT INTO \"NciEvent\" SELECT 999, 601, 'Menu', 'k', 'director', 0, '{}', '{}', "
              "'';",
              "UPDATE \"NciEvent\" SET \"login\" = 'director';", "DELETE FROM \"NciEvent\";",
              "TRUNCATE \"NciEvent\";", "SELECT nextval('\"NciEventId\"');",
              "SELECT \"NciTakeLock\"(); UPDATE \"NciStore\" SET \"identity\" = 'x';",
              "UPDATE \"NciPruned\" SET \"id\" = 0;", "UPDATE \"NciStore\" SET \"version\" = 0;",
              "TRUNCATE \"Menu\";", "ALTER TABLE \"Menu\" DISABLE TRIGGER ALL;",
              "CREATE TEMP TABLE \"Menu\" (LIKE public.\"Menu\"); CREATE TRIGGER t AFTER INSERT ON "
              "pg_temp.\"Menu\" FOR EACH ROW EXECUTE FUNCTION public.\"Menu.log\"();"}) {
            QByteArray words;
            QVERIFY2(!byHand(sql, &words, "engineer2"), sql);
            QVERIFY2(words.contains("permission denied") || words.contains("must be owner"), words);
        }
        QCOMPARE(log(*m_store).count("\n"), 0); // the Users row of the login itself
    }

    void usersAreChangedByTheOwnerOnly() {
        QVERIFY(login("engineer3"));
        const auto store = opened("engineer3");
        QVERIFY(store);
        ORVO_FAILS(Batch("Users").insert("k", {{"login_", "x"}}).send(*store), Refused);
        User user;
        user.login = "newcomer";
        ORVO_FAILS(store->userAdd(user), Refused);
        QCOMPARE(dump(*store, "Users", {"login_"}), "engineer3");
        QByteArray count;
        QVERIFY(byHand("SELECT count(*) FROM pg_roles WHERE rolname = 'newcomer';", &count));
        QCOMPARE(count, QByteArray("0"));
    }

    void loginWithoutARoleSeesNothing() {
        QVERIFY(byHand("CREATE ROLE stranger LOGIN;"));
        Status status;
        QVERIFY(!opened("stranger", &status));
        QCOMPARE(status.code, int(Refused));
        QVERIFY2(QString::fromStdString(status.text).contains("недостаточно прав"),
                 status.text.c_str());
    }

    void passwordLetsInAndAWrongOneDoesNot() {
        QVERIFY(login("needs_password", false, "p@ss/wörd"));
        Status status;
        const auto store = opened("needs_password:p%40ss%2Fw%C3%B6rd", &status);
        QVERIFY2(store, status.text.c_str());
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*store));
        for (const char* user : {"needs_password:wrong", "needs_password"}) {
            QVERIFY(!opened(user, &status));
            QCOMPARE(status.code, int(BadLogin));
            QVERIFY(status.text.find('\n') == std::string::npos);
            QVERIFY(status.text.find("wrong") == std::string::npos);
        }
        QByteArray stored;
        QVERIFY(
            byHand("SELECT rolpassword FROM pg_authid WHERE rolname = 'needs_password';", &stored));
        QVERIFY2(stored.startsWith("SCRAM-SHA-256$"), stored);
    }

    void existingLoginKeepsItsPassword() {
        QVERIFY(byHand("CREATE ROLE present LOGIN PASSWORD 'old';"));
        User user;
        user.login = "present";
        user.password = "new";
        ORVO_FAILS(m_store->userAdd(user), Refused);
        QCOMPARE(dump(*m_store, "Users"), "");
        user.password.clear();
        ORVO_OK(m_store->userAdd(user));
        QVERIFY(opened("present"));
    }

    void impossibleLoginsAreRefused() {
        for (const std::string& name :
             {std::string(64, 'x'), std::string("pg_read_all_data"), std::string("a\0b", 3)}) {
            User user;
            user.login = name;
            ORVO_FAILS(m_store->userAdd(user), Refused);
        }
        User hostile;
        hostile.login = "x\"; DROP TABLE \"Menu\"; --";
        ORVO_OK(m_store->userAdd(hostile));
        QCOMPARE(dump(*m_store, "Users", {"login_"}), "x\"; DROP TABLE \"Menu\"; --");
        QCOMPARE(dump(*m_store, "Menu"), "");
    }

    void passwordShowsNowhere() {
        QVERIFY(byHand("ALTER SYSTEM SET log_statement = 'all'; SELECT pg_reload_conf();"));
        QVERIFY(byHand("ALTER SYSTEM SET log_min_messages = 'debug1'; SELECT pg_reload_conf();"));
        QVERIFY(login("secretive", false, "Sesam-open-77"));
        Status status;
        const auto store = opened("secretive:Sesam-open-77", &status);
        QVERIFY2(store, status.text.c_str());
        QVERIFY(store->displayName().find("Sesam") == std::string::npos);
        QVERIFY(store->displayName().find("secretive") != std::string::npos);
        ORVO_FAILS(store->userAdd({"other", "", "", ""}), Refused);
        QVERIFY(byHand("ALTER SYSTEM RESET ALL; SELECT pg_reload_conf();"));
        QFile log(m_cluster->data() + "/server.log");
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QByteArray written = log.readAll();
        QVERIFY(written.contains("CREATE ROLE \"secretive\""));
        QVERIFY(!written.contains("Sesam"));
    }

    void badAddressesAreRefusedWithoutQuotingThem_data() {
        QTest::addColumn<QByteArray>("url");
        QTest::newRow("no slashes") << QByteArray("postgresql:secret");
        QTest::newRow("percent") << QByteArray("postgresql://u:secret%zz@h/db");
        QTest::newRow("option") << QByteArray("postgresql://u:secret@h/db?secret=1");
        QTest::newRow("bracket") << QByteArray("postgresql://u:secret@[::1/db");
        QTest::newRow("zero byte") << QByteArray("postgresql://u:secret@h/db\0x", 28);
        QTest::newRow("zero in percent") << QByteArray("postgresql://u:secret%00@h/db");
    }

    void badAddressesAreRefusedWithoutQuotingThem() {
        QFETCH(QByteArray, url);
        Status status;
        QVERIFY(!open(url.toStdString(), {}, &status));
        QCOMPARE(status.code, int(BadArguments));
        QVERIFY2(status.text.find("secret") == std::string::npos, status.text.c_str());
    }

    void addressIsShownWithoutSecrets_data() {
        QTest::addColumn<QByteArray>("url");
        QTest::addColumn<QByteArray>("display");
        QTest::newRow("all") << QByteArray("postgresql://u:secret@h:5433/db?sslmode=require")
                             << QByteArray("postgresql://u@h:5433/db");
        QTest::newRow("parameter") << QByteArray("postgres://h/db?user=u&password=secret")
                                   << QByteArray("postgresql://u@h/db");
        QTest::newRow("hosts") << QByteArray("postgresql://u:secret@a:1,b:2,[::1]:3/db")
                               << QByteArray("postgresql://u@a:1,b:2,[::1]:3/db");
        QTest::newRow("socket") << QByteArray("postgresql://u:secret@/db?host=/run/x&port=6")
                                << QByteArray("postgresql://u@/db?host=/run/x&port=6");
        QTest::newRow("strange") << QByteArray("postgresql://a%40b:secret@h/d%2Fb")
                                 << QByteArray("postgresql://a%40b@h/d%2Fb");
        QTest::newRow("Cyrillic") << QByteArray("postgresql://иван@h/база")
                                  << QByteArray("postgresql://иван@h/база");
        QTest::newRow("key password") << QByteArray("postgresql://h/db?sslpassword=secret")
                                      << QByteArray("postgresql://h/db");
        QTest::newRow("nothing") << QByteArray("postgresql://") << QByteArray("postgresql:///");
    }

    void addressIsShownWithoutSecrets() {
        QFETCH(QByteArray, url);
        QFETCH(QByteArray, display);
        postgres::Url parsed;
        ORVO_OK(parsed.parse(url.toStdString()));
        QCOMPARE(QByteArray::fromStdString(parsed.displayName()), display);
        postgres::Url again;
        ORVO_OK(again.parse(parsed.displayName())); // what is shown can be used
        QCOMPARE(QByteArray::fromStdString(again.displayName()), display);
        QCOMPARE(parsed.withoutSecrets("a\nb  secret"),
                 url.contains("secret") ? std::string("a b ***") : std::string("a b secret"));
    }

    void missingServerAndDatabaseAreNamed() {
        Status status;
        QVERIFY(!open("postgresql://u:secret@/db?host=/nowhere", {}, &status));
        QCOMPARE(status.code, int(CannotConnect));
        QVERIFY(status.text.find("/nowhere") != std::string::npos);
        QVERIFY(status.text.find("secret") == std::string::npos);
        QVERIFY(!open(m_cluster->url("absent"), {}, &status));
        QCOMPARE(status.code, int(CannotConnect));
        QVERIFY2(status.text.find("нет базы \"absent\"") != std::string::npos, status.text.c_str());
    }

    void databaseWithoutAStoreIsNone() {
        Status status;
        QVERIFY(!open(m_cluster->url("template1"), {}, &status));
        QCOMPARE(status.code, int(NotAStore));
        QByteArray tables;
        QVERIFY(m_cluster->shell(
            "template1", "SELECT count(*) FROM pg_tables WHERE schemaname = 'public';", &tables));
        QCOMPARE(tables, QByteArray("0"));
    }

    void newerStoreIsRefused() {
        QVERIFY(byHand("UPDATE \"NciStore\" SET \"version\" = 1000;"));
        for (const bool create : {false, true}) {
            Status status;
            QVERIFY(!open(m_cluster->url(m_database.toStdString()), {{}, create}, &status));
            QCOMPARE(status.code, int(NewerStore));
        }
    }

    void missingStepsRunInOneTransaction() {
        postgres::Url url;
        ORVO_OK(url.parse(m_cluster->url(m_database.toStdString())));
        postgres::Connection connection;
        ORVO_OK(connection.open(url));
        std::vector<std::string> steps = postgres::migrations();
        const size_t released = steps.size();
        steps.emplace_back("CREATE TABLE public.second (a text); DROP TABLE public.\"Menu\"");
        steps.emplace_back("this is no statement");
        ORVO_FAILS(postgres::migrate(connection, steps, dictionary(), false), Failed);
        QCOMPARE(dump(*m_store, "Menu"), "");
        steps.back() = "INSERT INTO public.second VALUES ('x')";
        steps[released] = "CREATE TABLE public.second (a text)";
        ORVO_OK(postgres::migrate(connection, steps, dictionary(), false));
        ORVO_OK(postgres::migrate(connection, steps, dictionary(), false)); // and once only
        QByteArray words;
        QVERIFY(byHand("SELECT a, \"version\" FROM second, \"NciStore\";", &words));
        QCOMPARE(words, "x|" + QByteArray::number(int(released) + 2));
    }

    void storedNamesAreFoundByAnIndex() {
        for (const QByteArray& where :
             {" 3 AND " + QByteArray::fromStdString(postgres::foldedNameExpression()),
              " 4 AND (" + QByteArray::fromStdString(postgres::foldedPlaceExpression()) + ")"}) {
            QByteArray plan;
            QVERIFY(
                byHand("SET enable_seqscan = off; SET enable_bitmapscan = off; EXPLAIN SELECT * "
                       "FROM \"MenuResource\" WHERE \"type_\" =" +
                           where + " = 'x';",
                       &plan));
            QVERIFY2(plan.contains("Index Scan") && plan.contains("Index Cond"), plan);
        }
    }

    void linksAreFoundByIndexesOfThoseThatAreThere() {
        QByteArray text;
        QVERIFY(
            byHand("SELECT count(*) FROM pg_indexes WHERE \"indexname\" LIKE '%\\_left\\_%' AND "
                   "\"indexdef\" LIKE '%IS NOT NULL)';",
                   &text));
        QCOMPARE(text.trimmed(), QByteArray("6"));
        for (const TableDef& table : tables())
            for (const ParentField& parent : parentFields(table)) {
                const FieldDef& field = table.fields[size_t(table.find(parent.field))];
                // One record's, and those of many at once.
                const std::string select = "SELECT * FROM \"" + std::string(table.name) + "\"";
                for (const std::string& query :
                     {select + " WHERE " + postgres::foldedEquals(table, field, "'x'"),
                      select + " JOIN unnest(ARRAY['x', 'y'] COLLATE \"C\") AS wanted ON " +
                          postgres::foldedEquals(table, field, "wanted")}) {
                    if (std::string_view(field.name) == "FolderKey")
                        continue; // by its exact text
                    QByteArray plan;
                    QVERIFY(byHand("SET enable_seqscan = off; SET enable_bitmapscan = off; SET "
                                   "enable_hashjoin = off; SET enable_mergejoin = off; EXPLAIN " +
                                       QByteArray::fromStdString(query) + ";",
                                   &plan));
                    QVERIFY2(plan.contains("_left_idx") && plan.contains("Index Cond"), plan);
                }
            }
        QVERIFY(
            byHand("SET enable_seqscan = off; SET enable_bitmapscan = off; EXPLAIN SELECT * FROM "
                   "\"Menu\" WHERE " +
                       QByteArray::fromStdString(postgres::exactlyEquals(
                           *std::find_if(findTable("Menu")->fields.begin(),
                                         findTable("Menu")->fields.end(),
                                         [](const FieldDef& field) {
                                             return std::string_view(field.name) == "FolderKey";
                                         }),
                           "'x'")) +
                       ";",
                   &text));
        QVERIFY2(text.contains("Menu_left_idx"), text);
    }

    void storeWithoutATableIsRefused() {
        QVERIFY(byHand("DROP TABLE \"MenuFolder\";"));
        Status status;
        QVERIFY(!opened("postgres", &status));
        QVERIFY2(status.text.find("MenuFolder") != std::string::npos, status.text.c_str());
        QVERIFY(byHand("ALTER TABLE \"Users\" DROP COLUMN \"login_\";"));
        QVERIFY(!opened("postgres", &status));
    }

    void initAgainChangesNothing() {
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*m_store));
        int64_t before = 0;
        ORVO_OK(m_store->logPosition(&before));
        Status status;
        const auto again = open(m_cluster->url(m_database.toStdString()), {{}, true}, &status);
        QVERIFY2(again, status.text.c_str());
        int64_t after = 0;
        ORVO_OK(again->logPosition(&after));
        QCOMPARE(after, before);
        QCOMPARE(dump(*again, "MenuFileExt"), "k|-");
    }

    void truncateByHandIsLogged() {
        ORVO_OK(Batch("MenuFileExt").insert("a").insert("b").send(*m_store));
        int64_t before = 0;
        ORVO_OK(m_store->logPosition(&before));
        QVERIFY(byHand("TRUNCATE \"MenuFileExt\";"));
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(before, 10, &changes));
        QCOMPARE(changes.size(), size_t(2));
        QCOMPARE(changes[0].code, 603);
        QVERIFY(byHand("TRUNCATE \"NciEvent\";"));
        ORVO_FAILS(m_store->readLog(before, 10, &changes), LogPruned);
        ORVO_OK(m_store->readLog(changes[1].id, 10, &changes));
    }

    void replacedRowByHandIsLogged() {
        QVERIFY(byHand("INSERT INTO \"MenuFileExt\" VALUES ('k', 'a');"
                       "INSERT INTO \"MenuFileExt\" VALUES ('k', 'b') ON CONFLICT (\"KeyLink\") DO "
                       "UPDATE SET \"fileExt\" = excluded.\"fileExt\";"
                       "INSERT INTO \"MenuFileExt\" VALUES ('k', 'c') ON CONFLICT DO NOTHING;"
                       "BEGIN; INSERT INTO \"MenuFileExt\" VALUES ('gone', 'c'); ROLLBACK;"
                       "BEGIN; SAVEPOINT s; DELETE FROM \"MenuFileExt\"; ROLLBACK TO s;"
                       "UPDATE \"MenuFileExt\" SET \"fileExt\" = 'd'; COMMIT;"));
        QCOMPARE(log(*m_store),
                 QString(R"(601 MenuFileExt k postgres {"KeyLink":"k","fileExt":"a"} {})"
                         "\n"
                         R"(602 MenuFileExt k postgres {"fileExt":"b"} {"fileExt":"a"})"
                         "\n"
                         R"(602 MenuFileExt k postgres {"fileExt":"d"} {"fileExt":"b"})"));
    }

    void textNobodyCanStoreIsRefused() {
        const std::string huge(1 << 20, 'k');
        QString key; // too long for an index, and not to be compressed
        for (int i = 0; i < 3000; ++i)
            key += QString::number(i * 2654435761u % 1000003, 36);
        ORVO_FAILS(Batch("MenuFileExt").insert(key.toUtf8().constData()).send(*m_store), Refused);
        ORVO_OK(Batch("Menu")
                    .insert("k", {{"caption", QString::fromStdString(huge)}, {"FolderKey", key}})
                    .send(*m_store));
        CMDArray found;
        ORVO_OK(m_store->fetchWhere("Menu", "FolderKey", key.toStdString(), found.array));
        QCOMPARE(found.array->recordCount, 1u);
        CMDArray none;
        ORVO_OK(m_store->fetchWhere("Menu", "caption", "\xFF", none.array));
        QCOMPARE(none.array->recordCount, 0u);
        QCOMPARE(none.array->keyCount, 1u);
    }

    void integrityFindsWhatIsBroken() {
        ORVO_OK(m_store->filePut({{"", "x", "bytes", {}}}));
        std::vector<std::string> damages;
        ORVO_OK(m_store->integrity(&damages));
        QCOMPARE(damages.size(), size_t(0));
        QVERIFY(byHand("UPDATE \"MenuResourceFileData\" SET \"data\" = 'b';"
                       "ALTER TABLE \"Menu\" DISABLE TRIGGER \"updated\";"));
        ORVO_OK(m_store->integrity(&damages));
        QCOMPARE(damages.size(), size_t(3));
        QVERIFY(damages[0].find("Menu") != std::string::npos);
        QVERIFY(damages[1].find("не сходится с записанным") != std::string::npos);
        QVERIFY(damages[2].find("не сходятся с контрольной суммой") != std::string::npos);
    }

    /// "tuple concurrently updated", for example.
    void serversOwnErrorIsNoDamage() {
        for (const auto& [state, words] : {std::pair("XX000", "внутренняя ошибка сервера (odd)"),
                                           std::pair("XX001", "база повреждена (odd)"),
                                           std::pair("XX002", "база повреждена (odd)")}) {
            QVERIFY(
                byHand("CREATE OR REPLACE FUNCTION public.odd() RETURNS trigger LANGUAGE plpgsql "
                       "AS $$ BEGIN RAISE EXCEPTION 'odd' USING ERRCODE = '" +
                       QByteArray(state) +
                       "'; END $$; CREATE OR REPLACE TRIGGER odd BEFORE INSERT ON "
                       "public.\"MenuFileExt\" EXECUTE FUNCTION public.odd();"));
            const Status status = Batch("MenuFileExt").insert("k").send(*m_store);
            ORVO_FAILS(status, Failed);
            QVERIFY2(status.text.find(words) != std::string::npos, status.text.c_str());
        }
    }

    void waitingWriterIsToldWhomItWaitsFor() {
        QVERIFY(login("slow"));
        QVERIFY(login("quick"));
        postgres::Url url;
        ORVO_OK(url.parse(m_cluster->url(m_database.toStdString(), "slow")));
        postgres::Connection other;
        ORVO_OK(other.open(url));
        QVERIFY(postgres::succeeded(
            other.execute("BEGIN; INSERT INTO public.\"MenuFileExt\" VALUES ('o', 'x')").get()));
        const auto store = opened("quick");
        QVERIFY(store);
        const Status status = Batch("MenuFileExt").insert("k").send(*store);
        ORVO_FAILS(status, Timeout);
        QVERIFY2(status.text.find("незаконченная транзакция входа \"slow\"") != std::string::npos,
                 status.text.c_str());
        QVERIFY(postgres::succeeded(other.execute("COMMIT").get()));
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*store));
    }

    void whatTheOwnerCannotCloseIsTold() {
        QVERIFY(byHand("CREATE ROLE tenant LOGIN; GRANT orvo_engineer, orvo_viewer TO tenant WITH "
                       "ADMIN OPTION;"));
        QVERIFY(byHand("CREATE DATABASE rented TEMPLATE template0 ENCODING 'UTF8' LOCALE 'C';"));
        QVERIFY(m_cluster->shell("rented", "GRANT CREATE ON SCHEMA public TO PUBLIC;"));
        Status status;
        const auto store =
            openMaintained(m_cluster->url("rented", "tenant"), {"boss", true}, &status);
        QVERIFY2(store, status.text.c_str());
        std::vector<std::string> loose, damages;
        ORVO_OK(store->looseRights(&loose));
        QCOMPARE(loose.size(), size_t(2));
        QVERIFY2(loose[0].find("REVOKE ALL ON DATABASE rented FROM PUBLIC") != std::string::npos,
                 loose[0].c_str());
        QVERIFY2(loose[1].find("REVOKE CREATE ON SCHEMA public") != std::string::npos,
                 loose[1].c_str());
        ORVO_OK(store->integrity(&damages));
        QCOMPARE(damages, loose);
        QVERIFY(m_cluster->shell("rented",
                                 "REVOKE ALL ON DATABASE rented FROM PUBLIC; GRANT CONNECT "
                                 "ON DATABASE rented TO tenant; REVOKE CREATE ON SCHEMA "
                                 "public FROM PUBLIC;"));
        ORVO_OK(store->looseRights(&loose));
        QCOMPARE(loose, std::vector<std::string>());
    }

    void onlyOurRolesGetIn() {
        QByteArray words;
        QVERIFY(byHand("CREATE ROLE visitor LOGIN;"));
        QVERIFY(!byHand("SELECT 1;", &words, "visitor"));
        QVERIFY2(words.contains("CONNECT"), words);
        QVERIFY(byHand("GRANT orvo_viewer TO visitor;"));
        QVERIFY(byHand("SELECT count(*) FROM \"Menu\";", &words, "visitor"));
        QVERIFY(!byHand("CREATE TEMPORARY TABLE t (a int);", &words, "visitor"));
        QVERIFY(byHand("SHOW idle_in_transaction_session_timeout;", &words, "visitor"));
        QCOMPARE(words, QByteArray("5min"));
    }

    /// The least that the administrator of a server gives: a login, a database of its own, and the
    /// two roles, which it may hand on.
    void ownerNeedsNoRightOnTheServer() {
        QVERIFY(byHand(
            "CREATE ROLE keeper LOGIN; GRANT orvo_engineer, orvo_viewer TO keeper WITH ADMIN "
            "OPTION; CREATE ROLE vera LOGIN;"));
        QVERIFY(byHand(
            "CREATE DATABASE kept OWNER keeper TEMPLATE template0 ENCODING 'UTF8' LOCALE 'C';"));
        Status status;
        const std::string url = m_cluster->url("kept", "keeper");
        const auto store = openMaintained(url, {"boss", true}, &status);
        QVERIFY2(store, status.text.c_str());
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*store));
        ORVO_OK(store->userAdd({"vera", "", "", ""})); // who has a login
        ORVO_FAILS(store->userAdd({"nobody", "", "", ""}), Refused);
        const auto engineer = open(m_cluster->url("kept", "vera"), {}, &status);
        QVERIFY2(engineer, status.text.c_str());
        ORVO_OK(Batch("MenuFileExt").insert("n").send(*engineer));
        QTemporaryFile file;
        QVERIFY(file.open());
        ORVO_OK(store->backup(file.fileName().toStdString(), {}));
        ORVO_OK(store->restore(file.fileName().toStdString(), {}));
        std::vector<std::string> damages;
        ORVO_OK(store->integrity(&damages));
        QCOMPARE(damages, std::vector<std::string>());
        ORVO_OK(Batch("MenuFileExt").remove("n").send(*store));
        ORVO_OK(store->pruneLog(1));
        ORVO_OK(Batch("MenuFileExt").insert("n").send(*engineer));
    }
};

QTEST_GUILESS_MAIN(TestAccess)

#include "tst_postgres_access.moc"
