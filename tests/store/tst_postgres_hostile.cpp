// An engineer or a viewer who puts objects of his own in the way of what the store uses gets
// nothing but his own rights, and stops nobody.
#include "PostgresTest.h"

#include "platform/store/Maintenance.h"
#include "platform/store/PostgresApi.h"

#include <QFile>
#include <QRegularExpression>

using namespace orvo::store;
using namespace orvo::store::test;

namespace {

/// The ways by which mallory gets his objects before the store's.
const char* const paths[] = {"\"$user\", public", "pg_temp, mallory, pg_catalog, public",
                             "mallory, pg_temp, pg_catalog"};

/// What an engineer may do; with his objects in the way it has to work all the same.
const char writes[] = R"(
INSERT INTO public."MenuFileExt" VALUES ('k', 'a'), ('n', 'b');
INSERT INTO public."MenuFileExt" VALUES ('k', 'c') ON CONFLICT ("KeyLink") DO UPDATE SET "fileExt" = 'd';
UPDATE public."MenuFileExt" SET "fileExt" = 'e';
UPDATE public."MenuFileExt" SET "KeyLink" = 'm' WHERE ctid = (SELECT pg_catalog.min(ctid) FROM public."MenuFileExt");
MERGE INTO public."MenuFileExt" t USING (VALUES ('z'::pg_catalog.text)) s(k) ON false
  WHEN NOT MATCHED THEN INSERT VALUES (s.k, 'x');
COPY public."MenuFileExt" FROM STDIN;
copied	text
\.
INSERT INTO public."MenuResource" ("KeyLink", "type_", "dateTimeEdit") VALUES ('r', 4, 1.5);
INSERT INTO public."MenuResourceFile" ("KeyLink", "MenuResourceKey", "size", "time") VALUES ('c', 'r', 1, 2.5);
INSERT INTO public."MenuResourceFileData" VALUES ('c', 0, 'x');
UPDATE public."MenuResource" SET "KeyLink" = 'q';
UPDATE public."MenuResourceFileData" SET "data" = 'y';
DELETE FROM public."MenuResource";
DELETE FROM public."MenuFileExt";
)";

/// What neither may do.
const char* const refused[] = {
    "ALTER TABLE public.\"Menu\" DISABLE TRIGGER ALL",
    "ALTER TABLE public.\"Menu\" DISABLE TRIGGER \"updated\"",
    "DROP TRIGGER \"updated\" ON public.\"Menu\"",
    "DROP FUNCTION public.\"Menu.log\"() CASCADE",
    "ALTER FUNCTION public.\"Menu.log\"() RESET search_path",
    "CREATE OR REPLACE FUNCTION public.\"NciTakeLock\"() RETURNS void LANGUAGE sql AS ''",
    "CREATE RULE r AS ON INSERT TO public.\"NciEvent\" DO INSTEAD NOTHING",
    "CREATE TABLE public.mine (a int)",
    "CREATE FUNCTION public.mine() RETURNS int LANGUAGE sql AS 'SELECT 1'",
    "CREATE SCHEMA another",
    "SET ROLE postgres",
    "SET SESSION AUTHORIZATION postgres",
    "SET session_replication_role = replica",
    "GRANT pg_execute_server_program TO mallory",
    "ALTER ROLE mallory SUPERUSER",
    "LOCK TABLE public.\"NciLock\" IN ACCESS SHARE MODE",
    "LOCK TABLE public.\"NciStore\" IN EXCLUSIVE MODE",
    "TRUNCATE public.\"Menu\"",
    "INSERT INTO public.\"Users\" (\"KeyLink\") VALUES ('x')",
    "INSERT INTO public.\"NciEvent\" SELECT * FROM public.\"NciEvent\"",
    "SELECT pg_catalog.nextval('public.\"NciEventId\"')",
    "SELECT pg_catalog.setval('public.\"NciEventId\"', 1)",
};

} // namespace

class TestHostile : public PostgresTest {
    Q_OBJECT
private slots:
    void init() {
        PostgresTest::init();
        QVERIFY(byHand(
            "DO $$ BEGIN CREATE ROLE mallory LOGIN; EXCEPTION WHEN duplicate_object THEN NULL; END "
            "$$;"
            "REVOKE orvo_engineer, orvo_viewer FROM mallory;"
            "CREATE SCHEMA mallory AUTHORIZATION mallory;"
            // More than the store gives, so that the functions have to stand by themselves.
            "DO $$ BEGIN EXECUTE pg_catalog.format('GRANT TEMPORARY, CONNECT ON DATABASE %I TO "
            "mallory', "
            "current_database()); END $$;"));
    }

    void engineersObjectsAreNotUsed_data() {
        QTest::addColumn<QByteArray>("schema");
        QTest::addColumn<QByteArray>("kind");
        for (const char* schema : {"pg_temp", "mallory"})
            for (const char* kind : {"domain", "enum", "table", "function"})
                QTest::addRow("%s %s", schema, kind) << QByteArray(schema) << QByteArray(kind);
    }

    void engineersObjectsAreNotUsed() {
        QFETCH(QByteArray, schema);
        QFETCH(QByteArray, kind);
        QVERIFY(byHand("GRANT orvo_engineer TO mallory;"));
        QByteArray sql = traps(schema, kind);
        for (const char* path : paths)
            sql += "SET search_path = " + QByteArray(path) + ";\n" + writes;
        QByteArray words;
        QVERIFY2(byHand(sql, &words, "mallory"), words);
        QVERIFY2(!words.contains("TRAPPED as p"), words);
        noRightWasGained();
        // And the log tells who it was.
        QByteArray logins;
        QVERIFY(byHand(
            "SELECT count(*), count(DISTINCT \"login\"), max(\"login\") FROM \"NciEvent\" WHERE "
            "\"tableName\" <> 'Users';",
            &logins));
        QVERIFY2(logins.endsWith("|1|mallory") && logins.split('|').first().toInt() > 40, logins);
    }

    /// Who owns the store or the server works in it too: what he runs must not be what others put
    /// there.
    void ownersProgramUsesNoObjectsOfOthers() {
        QVERIFY(
            byHand("GRANT orvo_engineer TO mallory; GRANT CREATE ON SCHEMA public TO mallory;"));
        for (const char* kind : {"function", "table"}) {
            QByteArray words;
            // Without the store's own names, which nobody could take.
            QVERIFY2(byHand(traps("public", kind), &words, "mallory"), words);
            Status status;
            const auto store =
                openMaintained(m_cluster->url(m_database.toStdString()), {"boss", false}, &status);
            QVERIFY2(store, status.text.c_str());
            ORVO_OK(Batch("MenuFileExt").insert("k").send(*store));
            ORVO_OK(store->filePut({{"", "x", "bytes", {}}}));
            std::vector<std::string> damages;
            ORVO_OK(store->integrity(&damages));
            int64_t id = 0;
            int64_t count = 0;
            ORVO_OK(store->logBefore(1e12, &id, &count));
            ORVO_OK(store->pruneLog(id));
            std::vector<std::string> logins;
            ORVO_OK(store->missingLogins(&logins));
            ORVO_OK(Batch("MenuFileExt").remove("k").send(*store));
            noRightWasGained();
            QVERIFY(byHand("DROP OWNED BY mallory CASCADE; GRANT orvo_engineer TO mallory; CREATE "
                           "SCHEMA IF NOT "
                           "EXISTS mallory AUTHORIZATION mallory; GRANT CREATE ON SCHEMA public TO "
                           "mallory;"));
        }
    }
    void viewerChangesNothing_data() { engineersObjectsAreNotUsed_data(); }

    void viewerChangesNothing() {
        QFETCH(QByteArray, schema);
        QFETCH(QByteArray, kind);
        QVERIFY(byHand("GRANT orvo_viewer TO mallory;"));
        const QByteArray before = log(*m_store).toUtf8();
        // Each by itself, since the first that is refused would end the rest.
        QByteArray sql = traps(schema, kind) +
                         "SET search_path = " + paths[schema == "mallory" ? 2 : 1] +
                         ";\n\\set ON_ERROR_STOP off\n";
        int tried = 0;
        for (const QByteArray& line : QByteArray(writes).split('\n')) {
            if (!line.startsWith("INSERT") && !line.startsWith("UPDATE") &&
                !line.startsWith("DELETE"))
                continue;
            sql += line + '\n';
            ++tried;
        }
        QByteArray words;
        byHand(sql, &words, "mallory");
        QCOMPARE(words.count("permission denied for table"), tried);
        QVERIFY2(!words.contains("TRAPPED as p"), words);
        QCOMPARE(log(*m_store).toUtf8(), before);
        noRightWasGained();
    }

    void viewerStopsNothing() {
        QVERIFY(byHand("GRANT orvo_viewer TO mallory;"));
        // In one open session everything that a reader can hold; others write on.
        postgres::Url url;
        ORVO_OK(url.parse(m_cluster->url(m_database.toStdString(), "mallory")));
        postgres::Connection viewer;
        ORVO_OK(viewer.open(url));
        for (const char* hold :
             {"SELECT pg_advisory_lock(1332901487, 1), pg_advisory_lock(1332901487, 2)",
              "SELECT pg_advisory_lock_shared(1332901487)", "SELECT lo_create(0)", "LISTEN orvo",
              "BEGIN ISOLATION LEVEL SERIALIZABLE",
              "SELECT * FROM public.\"Menu\", public.\"NciEvent\", public.\"NciStore\", "
              "public.\"NciPruned\", public.\"MenuResourceFileData\", public.\"MenuFileExt\"",
              "LOCK TABLE public.\"MenuFileExt\" IN ACCESS SHARE MODE"})
            QVERIFY2(postgres::succeeded(viewer.execute(hold).get()), hold);
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*m_store));
        ORVO_OK(m_store->filePut({{"", "x", "bytes", {}}}));
        ORVO_OK(opened()->pruneLog(1));
        noRightWasGained();
    }

    void neitherGetsMoreRights_data() {
        QTest::addColumn<QByteArray>("role");
        QTest::newRow("engineer") << QByteArray("orvo_engineer");
        QTest::newRow("viewer") << QByteArray("orvo_viewer");
    }

    void neitherGetsMoreRights() {
        QFETCH(QByteArray, role);
        QVERIFY(byHand("GRANT " + role + " TO mallory;"));
        QByteArray made;
        QVERIFY2(byHand(traps("mallory", "function"), &made, "mallory"), made);
        const QByteArray before = QByteArray::number(log(*m_store).count('\n'));
        for (const char* sql : refused) {
            QByteArray words;
            QVERIFY2(!byHand("SET search_path = mallory, pg_catalog; BEGIN; " + QByteArray(sql) +
                                 "; COMMIT;",
                             &words, "mallory"),
                     sql);
            QVERIFY2(words.contains("permission denied") || words.contains("must be owner") ||
                         words.contains("must be superuser") ||
                         words.contains("must have admin option"),
                     words);
        }
        noRightWasGained();
        QCOMPARE(QByteArray::number(log(*m_store).count('\n')), before);
    }

    void updateOfAnOldDatabaseClosesTheHole() {
        QFile dump(qEnvironmentVariable("ORVO_SOURCE_DIR") + "/tests/store/data/postgres-2.sql");
        QVERIFY(dump.open(QIODevice::ReadOnly));
        m_store.reset();
        QVERIFY(m_cluster->shell("postgres",
                                 "CREATE DATABASE old TEMPLATE template0 ENCODING 'UTF8';"
                                 "GRANT orvo_engineer TO mallory;"));
        m_database = "old";
        QByteArray words;
        QVERIFY2(byHand(dump.readAll(), &words), words);
        const QByteArray attack = traps("pg_temp", "domain") +
                                  "SET search_path = pg_temp, pg_catalog;"
                                  "INSERT INTO public.\"MenuFileExt\" VALUES (";
        const QByteArray harmless =
            QByteArray(attack).replace("ALTER ROLE mallory SUPERUSER", "SELECT 1");
        byHand(harmless + "'before', 'x');", &words, "mallory");
        QVERIFY2(words.contains("TRAPPED as postgres"), words);
        QVERIFY(opened()); // which brings it up to date
        QVERIFY(byHand("GRANT TEMPORARY ON DATABASE old TO mallory;"));
        QVERIFY2(byHand(attack + "'after', 'x');", &words, "mallory"), words);
        QVERIFY2(!words.contains("TRAPPED"), words);
        noRightWasGained();
    }

private:
    /// SQL that makes, as mallory, an object of every name that the store's functions mention, in
    /// that schema, each with a trap. The kinds exclude each other: a table is a type too.
    QByteArray traps(const QByteArray& schema, const QByteArray& kind) const {
        // Every word and every operator of every function of ours, from the catalog.
        QByteArray sql = R"(
SET client_min_messages = warning; SET search_path = pg_catalog;
CREATE FUNCTION SCHEMA.trap() RETURNS boolean LANGUAGE plpgsql AS $t$
BEGIN
  RAISE WARNING 'TRAPPED as %', current_user;
  BEGIN
    EXECUTE 'ALTER ROLE mallory SUPERUSER';
  EXCEPTION WHEN OTHERS THEN NULL;
  END;
  RETURN true;
END $t$;
DO $d$ DECLARE
  word record;
  made int := 0;
  type text;
BEGIN
  FOR word IN SELECT DISTINCT m[1] AS name FROM pg_catalog.pg_proc p,
      pg_catalog.regexp_matches(p.prosrc, '[A-Za-z_][A-Za-z_0-9.]*|[-+*/<>=~!@#%^&|]+', 'g') m
      WHERE p.pronamespace = 'public'::regnamespace
      UNION SELECT unnest(ARRAY['text', 'int4', 'bool', 'name', 'oid', 'float8', 'regclass', '=', '<>',
        '<', '>', '||', '~', 'coalesce', 'lower', 'max', 'pg_class', 'pg_roles', 'pg_authid', 'gone'])
  LOOP
    CONTINUE WHEN word.name IN ('trap', 'trap1', 'trap2');
    BEGIN
      IF word.name !~ '^[A-Za-z_]' THEN
        CONTINUE WHEN 'KIND' <> 'function';
        FOREACH type IN ARRAY ARRAY['text', 'name', 'oid', 'int4', 'int8', 'float8', 'bool', '"char"', 'bytea',
            'regclass', 'xid'] LOOP
          BEGIN
            EXECUTE pg_catalog.format('CREATE FUNCTION SCHEMA.trap2(pg_catalog.%s, pg_catalog.%1$s) RETURNS '
              'pg_catalog.bool LANGUAGE sql AS ''SELECT SCHEMA.trap()''', type);
          EXCEPTION WHEN duplicate_function THEN NULL;
          END;
          EXECUTE pg_catalog.format('CREATE OPERATOR SCHEMA.%s (LEFTARG = pg_catalog.%s, RIGHTARG = pg_catalog.%2$s, '
            'FUNCTION = SCHEMA.trap2)', word.name, type);
          made := made + 1;
        END LOOP;
      ELSIF 'KIND' = 'domain' THEN
        EXECUTE pg_catalog.format('CREATE DOMAIN SCHEMA.%I AS pg_catalog.text CHECK (SCHEMA.trap())', word.name);
      ELSIF 'KIND' = 'enum' THEN
        EXECUTE pg_catalog.format('CREATE TYPE SCHEMA.%I AS ENUM (''x'')', word.name);
        EXECUTE pg_catalog.format('CREATE FUNCTION SCHEMA.%I(SCHEMA.%I) RETURNS pg_catalog.text LANGUAGE sql AS '
          '''SELECT SCHEMA.trap()::pg_catalog.text''', 'cast of ' || word.name, word.name);
        EXECUTE pg_catalog.format('CREATE CAST (SCHEMA.%I AS pg_catalog.text) WITH FUNCTION SCHEMA.%I(SCHEMA.%1$I) AS '
          'IMPLICIT', word.name, 'cast of ' || word.name);
      ELSIF 'KIND' = 'table' THEN
        EXECUTE pg_catalog.format('CREATE TABLE SCHEMA.%I (oid pg_catalog.oid DEFAULT 10, relowner pg_catalog.oid '
          'DEFAULT 16384, id pg_catalog.int8, "KeyLink" pg_catalog.text, CHECK (SCHEMA.trap()))', word.name);
        EXECUTE pg_catalog.format('INSERT INTO SCHEMA.%I SELECT c.oid, a.oid FROM pg_catalog.pg_class c, pg_catalog.pg_roles a WHERE '
          'c.relname = ''NciEvent'' AND a.rolname = ''mallory''', word.name);
      ELSE
        FOREACH type IN ARRAY ARRAY['', 'pg_catalog.text', 'pg_catalog.text, pg_catalog.bool',
            'pg_catalog.text, pg_catalog.text', 'anyelement', 'pg_catalog.regclass', 'pg_catalog.name',
            'pg_catalog.text, pg_catalog.int4', 'anyelement, pg_catalog.oid, pg_catalog.text'] LOOP
          EXECUTE pg_catalog.format('CREATE FUNCTION SCHEMA.%I(%s) RETURNS pg_catalog.text LANGUAGE sql AS '
            '''SELECT SCHEMA.trap()::pg_catalog.text''', word.name, type);
        END LOOP;
      END IF;
      made := made + 1;
    EXCEPTION WHEN OTHERS THEN
      RAISE NOTICE '%: %', word.name, SQLERRM;
    END;
  END LOOP;
  IF made < 40 THEN
    RAISE EXCEPTION 'only % objects', made;
  END IF;
END $d$;
)";
        return sql.replace("SCHEMA", schema).replace("KIND", kind);
    }

    void noRightWasGained() const {
        QByteArray rights;
        QVERIFY(byHand(
            "SELECT rolsuper OR rolcreaterole OR rolcreatedb OR rolreplication OR rolbypassrls, "
            "(SELECT string_agg(g.rolname, ',') FROM pg_auth_members m JOIN pg_roles g ON "
            "g.oid = m.roleid WHERE m.member = r.oid) FROM pg_roles r WHERE rolname = "
            "'mallory';",
            &rights));
        QVERIFY2(rights.startsWith("f|") && !rights.contains(','), rights);
    }
};

QTEST_GUILESS_MAIN(TestHostile)

#include "tst_postgres_hostile.moc"
