// Statements that an engineer or a viewer may send to the server past the program, made at random
// of all that its language knows: none gives him a right, changes the store without an event of
// his, or keeps others from writing. ORVO_TRIAL_ROUNDS is their number for each of the two.
#include "Trial.h"

#include "tests/store/LogReplay.h"
#include "tests/store/PostgresTest.h"

#include "platform/store/PostgresApi.h"

#include <QElapsedTimer>

#include <random>

using namespace orvo::store;
using namespace orvo::store::test;
using orvo::test::rounds;
using orvo::test::seed;

namespace {

constexpr size_t openSessions = 4;  ///< in which a viewer's statements stay unfinished
constexpr int checkEvery = 20;      ///< statements, of what takes long
constexpr int mostWriteMs = 10'000; ///< of a write of somebody else

const char* const tableNames[] = {"\"Menu\"",
                                  "\"MenuFolder\"",
                                  "\"MenuResource\"",
                                  "\"Users\"",
                                  "\"MenuFileExt\"",
                                  "\"MenuResourceFolder\"",
                                  "\"NciEvent\"",
                                  "\"NciLock\"",
                                  "\"NciStore\"",
                                  "\"NciPruned\"",
                                  "\"MenuResourceFile\"",
                                  "\"MenuResourceFileData\"",
                                  "\"MenuResourceFileSum\"",
                                  "\"NciVersion\"",
                                  "\"NciVersionData\""};
const char* const functionNames[] = {
    "\"NciTakeLock\"()", "\"NciLock\"()",   "\"Menu.log\"()",
    "\"NciTruncate\"()", "\"NciPrune\"()",  "\"NciKeep\"()",
    "\"NciRefuse\"()",   "\"Users.log\"()", "\"MenuResourceFileData.log\"()"};
const char* const roleNames[] = {"postgres",
                                 "orvo_engineer",
                                 "orvo_viewer",
                                 "anna",
                                 "pg_read_server_files",
                                 "pg_signal_backend",
                                 "pg_write_all_data",
                                 "pg_execute_server_program",
                                 "mallory",
                                 "CURRENT_USER",
                                 "PUBLIC"};
const char* const modes[] = {
    "ACCESS SHARE", "ROW SHARE",           "ROW EXCLUSIVE", "SHARE UPDATE EXCLUSIVE",
    "SHARE",        "SHARE ROW EXCLUSIVE", "EXCLUSIVE",     "ACCESS EXCLUSIVE"};
const char* const schemas[] = {"public", "pg_catalog", "pg_temp", "information_schema", "mallory"};
const char* const paths[] = {"pg_temp, public", "mallory, public, pg_catalog", "public",
                             "\"$user\"", "pg_temp, mallory, pg_catalog"};
const char* const values[] = {"NULL",
                              "''",
                              "'x'",
                              "0",
                              "repeat('x', 100000)",
                              "-9223372036854775808",
                              "current_user",
                              "'NaN'::float8",
                              "now()"};
const char* const settings[] = {"session_replication_role",
                                "orvo.login",
                                "orvo.call",
                                "search_path",
                                "lock_timeout",
                                "role",
                                "session_authorization",
                                "row_security",
                                "statement_timeout",
                                "idle_in_transaction_session_timeout",
                                "default_transaction_read_only",
                                "event_triggers",
                                "is_superuser",
                                "check_function_bodies"};

/// {T} a table, {F} a function, {R} a role, {M} a mode of lock, {S} a schema, {V} a value,
/// {G} a setting, {N} a number that differs.
const char* const statements[] = {
    "SELECT * FROM public.{T} LIMIT 5",
    "SELECT * FROM public.{T} LIMIT 5 FOR UPDATE",
    "SELECT * FROM public.{T} LIMIT 5 FOR KEY SHARE NOWAIT",
    "INSERT INTO public.{T} VALUES ('k{N}')",
    "INSERT INTO public.{T} (\"KeyLink\") VALUES ('k{N}'), ('n{N}')",
    "INSERT INTO public.{T} (\"KeyLink\") VALUES ({V})",
    "INSERT INTO public.{T} SELECT * FROM public.{T} ON CONFLICT DO NOTHING",
    "INSERT INTO public.\"MenuFileExt\" VALUES ('k{N}', {V}::text) ON CONFLICT DO NOTHING",
    "INSERT INTO public.\"MenuFileExt\" VALUES ('k', 'a') ON CONFLICT (\"KeyLink\") DO UPDATE SET "
    "\"fileExt\" = {V}::text",
    "UPDATE public.{T} SET \"KeyLink\" = \"KeyLink\" || '{N}'",
    "UPDATE public.{T} SET \"KeyLink\" = {V}",
    "UPDATE public.{T} SET \"caption\" = 'c{N}'",
    "UPDATE public.{T} SET \"data\" = '\\x{N}{N}'",
    "UPDATE public.{T} SET \"login\" = 'director', \"id\" = \"id\" + 1",
    "UPDATE public.{T} SET \"id\" = 0, \"version\" = 0, \"identity\" = 'x', \"sha256\" = 'x'",
    "UPDATE ONLY public.{T} SET \"sha256\" = 'x'",
    "DELETE FROM public.{T} WHERE random() < 0.3",
    "DELETE FROM public.{T}",
    "TRUNCATE public.{T} RESTART IDENTITY CASCADE",
    "MERGE INTO public.{T} t USING (VALUES ('m{N}'::text)) s(k) ON t.\"KeyLink\" = s.k WHEN "
    "MATCHED "
    "THEN DELETE WHEN NOT MATCHED THEN INSERT (\"KeyLink\") VALUES (s.k)",
    "WITH gone AS (DELETE FROM public.{T} RETURNING *) SELECT count(*) FROM gone",
    "WITH made AS (INSERT INTO public.{T} (\"KeyLink\") VALUES ('w{N}') RETURNING 1) DELETE FROM "
    "public.{T}",
    "EXPLAIN ANALYZE DELETE FROM public.{T}",
    "PREPARE p{N} AS DELETE FROM public.{T}; EXECUTE p{N}",
    "DECLARE c{N} CURSOR WITH HOLD FOR SELECT * FROM public.{T}",
    "COPY public.{T} TO PROGRAM 'id'",
    "COPY public.{T} FROM '/etc/passwd'",
    "COPY (SELECT 1) TO '/tmp/x{N}'",
    "LOCK TABLE public.{T} IN {M} MODE NOWAIT",
    "ALTER TABLE public.{T} DISABLE TRIGGER ALL",
    "ALTER TABLE public.{T} OWNER TO {R}",
    "ALTER TABLE public.{T} ADD COLUMN x{N} int",
    "ALTER TABLE public.{T} RENAME TO x{N}",
    "ALTER TABLE public.{T} SET SCHEMA {S}",
    "ALTER TABLE public.{T} DISABLE ROW LEVEL SECURITY",
    "ALTER TABLE public.{T} ENABLE ROW LEVEL SECURITY",
    "ALTER TABLE public.{T} REPLICA IDENTITY FULL",
    "DROP TABLE public.{T} CASCADE",
    "DROP TRIGGER IF EXISTS \"updated\" ON public.{T}",
    "DROP FUNCTION public.{F} CASCADE",
    "ALTER FUNCTION public.{F} SECURITY INVOKER",
    "ALTER FUNCTION public.{F} RESET ALL",
    "ALTER FUNCTION public.{F} OWNER TO {R}",
    "ALTER FUNCTION public.{F} RENAME TO x{N}",
    "ALTER FUNCTION public.{F} SET SCHEMA {S}",
    "CREATE OR REPLACE FUNCTION public.{F} RETURNS void LANGUAGE sql AS ''",
    "SELECT public.{F}",
    "CREATE TEMP TABLE t{N} (LIKE public.{T} INCLUDING ALL)",
    "CREATE TEMP TABLE h{N} (\"KeyLink\" text); CREATE TRIGGER x AFTER INSERT ON h{N} FOR EACH ROW "
    "EXECUTE FUNCTION public.{F}; INSERT INTO h{N} VALUES ('forged')",
    "CREATE TABLE {S}.x{N} (a int)",
    "CREATE TABLE {S}.x{N} (\"KeyLink\" text REFERENCES public.{T} ON DELETE RESTRICT)",
    "CREATE TABLE {S}.c{N} () INHERITS (public.{T})",
    "CREATE TRIGGER x{N} BEFORE INSERT OR UPDATE ON public.{T} FOR EACH ROW EXECUTE FUNCTION "
    "public.{F}",
    "CREATE RULE r{N} AS ON INSERT TO public.{T} DO INSTEAD NOTHING",
    "CREATE OR REPLACE VIEW {S}.v{N} AS SELECT * FROM public.{T}; DELETE FROM {S}.v{N}",
    "CREATE INDEX i{N} ON public.{T} ((1 / 0))",
    "CREATE POLICY q{N} ON public.{T} USING (false)",
    "CREATE STATISTICS s{N} ON \"KeyLink\", \"caption\" FROM public.{T}",
    "CREATE FUNCTION {S}.f{N}() RETURNS int LANGUAGE sql SECURITY DEFINER AS 'DELETE FROM "
    "public.{T}; SELECT 1'; SELECT {S}.f{N}()",
    "CREATE DOMAIN {S}.text AS pg_catalog.text CHECK (false)",
    "CREATE OPERATOR {S}.= (LEFTARG = text, RIGHTARG = text, FUNCTION = texteq)",
    "CREATE CAST (text AS int) WITH INOUT AS IMPLICIT",
    "CREATE SCHEMA x{N} AUTHORIZATION {R}",
    "CREATE EXTENSION dblink",
    "CREATE EVENT TRIGGER e{N} ON ddl_command_start EXECUTE FUNCTION public.{F}",
    "CREATE PUBLICATION p{N} FOR ALL TABLES",
    "CREATE SUBSCRIPTION s{N} CONNECTION 'dbname=x' PUBLICATION y",
    "CREATE LANGUAGE plperlu",
    "CREATE SERVER s{N} FOREIGN DATA WRAPPER x",
    "CREATE ROLE r{N} SUPERUSER",
    "CREATE DATABASE d{N}",
    "CREATE TABLESPACE t{N} LOCATION '/tmp'",
    "ALTER DATABASE CURRENT SET search_path = {S}",
    "ALTER ROLE {R} SUPERUSER",
    "ALTER ROLE {R} SET search_path = {S}",
    "ALTER ROLE {R} PASSWORD 'x'",
    "ALTER DEFAULT PRIVILEGES FOR ROLE {R} GRANT ALL ON TABLES TO mallory",
    "ALTER SYSTEM SET shared_buffers = '1kB'",
    "DROP OWNED BY {R} CASCADE",
    "REASSIGN OWNED BY {R} TO mallory",
    "GRANT {R} TO mallory",
    "GRANT ALL ON public.{T} TO mallory, PUBLIC",
    "GRANT EXECUTE ON FUNCTION public.{F} TO PUBLIC",
    "REVOKE ALL ON public.{T} FROM {R} CASCADE",
    "REVOKE orvo_engineer FROM anna",
    "SET ROLE {R}",
    "SET SESSION AUTHORIZATION {R}",
    "SET {G} = {V}",
    "SET {G} = replica",
    "SET LOCAL {G} TO DEFAULT",
    "SELECT set_config('{G}', 'director', false)",
    "SET orvo.login = 'director'; INSERT INTO public.\"MenuFileExt\" VALUES ('d{N}', 'x')",
    "SELECT nextval('public.\"NciEventId\"')",
    "SELECT setval('public.\"NciEventId\"', 1)",
    "ALTER SEQUENCE public.\"NciEventId\" RESTART",
    "SELECT pg_advisory_lock({N}), pg_advisory_lock_shared(1332901487, 1)",
    "SELECT lo_create(0), lo_from_bytea(0, 'x')",
    "SELECT lo_import('/etc/passwd')",
    "SELECT pg_read_file('/etc/passwd')",
    "SELECT pg_ls_dir('.')",
    "SELECT pg_terminate_backend(pid), pg_cancel_backend(pid) FROM pg_stat_activity WHERE pid <> "
    "pg_backend_pid() AND usename <> current_user",
    "SELECT pg_reload_conf(), pg_rotate_logfile()",
    "SELECT pg_switch_wal(), pg_promote()",
    "SELECT pg_create_physical_replication_slot('s{N}')",
    "SELECT pg_export_snapshot()",
    "SELECT query_to_xml('DELETE FROM public.{T}', true, true, '')",
    "SELECT pg_notify('orvo', repeat('x', 7999))",
    "LISTEN orvo",
    "UNLISTEN *",
    "DISCARD ALL",
    "VACUUM FULL public.{T}",
    "ANALYZE public.{T}",
    "REINDEX TABLE public.{T}",
    "CLUSTER public.{T}",
    "REFRESH MATERIALIZED VIEW public.{T}",
    "COMMENT ON TABLE public.{T} IS 'x'",
    "SECURITY LABEL ON TABLE public.{T} IS 'x'",
    "PREPARE TRANSACTION 'x{N}'",
    "CHECKPOINT",
    "LOAD 'plpgsql'",
    "IMPORT FOREIGN SCHEMA x FROM SERVER y INTO public",
    "DO $d$ BEGIN LOOP DELETE FROM public.{T}; EXIT; END LOOP; END $d$",
};

class Generator {
public:
    explicit Generator(unsigned from) : m_random(from) {}
    int below(int most) { return int(m_random() % unsigned(std::max(1, most))); }

    QByteArray statement() {
        QByteArray sql = pick(statements);
        ++m_number;
        const auto fill = [&](const char* place, const auto& choices) {
            for (int at = 0; (at = sql.indexOf(place)) >= 0;)
                sql.replace(at, int(qstrlen(place)), pick(choices));
        };
        fill("{T}", tableNames);
        fill("{F}", functionNames);
        fill("{R}", roleNames);
        fill("{M}", modes);
        fill("{S}", schemas);
        fill("{V}", values);
        fill("{G}", settings);
        sql.replace("{N}", QByteArray::number(m_number));
        switch (below(6)) {
        case 0:
            return "SET search_path = " + QByteArray(pick(paths)) + "; " + sql;
        case 1:
            return "DO $trial$ BEGIN EXECUTE $inner$" + sql +
                   "$inner$; EXCEPTION WHEN OTHERS THEN NULL; END $trial$";
        case 2:
            return "SAVEPOINT s; " + sql;
        default:
            return sql;
        }
    }

private:
    template <size_t count>
    const char* pick(const char* const (&all)[count]) {
        return all[below(int(count))];
    }
    std::mt19937 m_random;
    int m_number = 0;
};

} // namespace

class TestTrialStatements : public PostgresTest {
    Q_OBJECT
private slots:
    void initTestCase() {
        PostgresTest::initTestCase();
        QVERIFY(m_cluster->shell("postgres", "CREATE ROLE mallory LOGIN; CREATE ROLE anna LOGIN;"));
    }
    void neitherHarms_data() {
        QTest::addColumn<QByteArray>("role");
        QTest::newRow("viewer") << QByteArray("orvo_viewer");
        QTest::newRow("engineer") << QByteArray("orvo_engineer");
    }

    void neitherHarms() {
        QFETCH(QByteArray, role);
        const bool writes = role == "orvo_engineer";
        QVERIFY(byHand("REVOKE orvo_engineer, orvo_viewer FROM mallory; GRANT " + role +
                       " TO mallory; GRANT orvo_engineer TO anna;"
                       "CREATE SCHEMA mallory AUTHORIZATION mallory;"
                       // More than the store gives, so that nothing hangs on it.
                       "DO $$ BEGIN EXECUTE format('GRANT TEMPORARY ON DATABASE %I TO mallory', "
                       "current_database()); END $$;"));
        ORVO_OK(m_store->filePut({{"", "x", "bytes", {}}}));
        const auto anna = opened("anna");
        QVERIFY(anna);
        ORVO_OK(Batch("Menu").insert("hers", {{"caption", "a"}}).send(*anna));
        const QByteArray before = rights();
        QVERIFY(before.size() > 500);

        postgres::Url url;
        ORVO_OK(url.parse(m_cluster->url(m_database.toStdString(), "mallory")));
        Generator generator(seed());
        std::vector<std::unique_ptr<postgres::Connection>> open;
        const int wanted = rounds(60);
        int done = 0;
        int events = 0;
        qint64 longest = 0;
        int64_t end = 0;
        for (int i = 0; i < wanted; ++i) {
            ORVO_OK(m_store->logPosition(&end));
            const QByteArray sql = generator.statement();
            // Of a viewer each statement stays in an open transaction; an engineer who does that
            // holds others up until a limit ends it, which is another test's.
            open.push_back(std::make_unique<postgres::Connection>());
            ORVO_OK(open.back()->open(url));
            open.back()->execute("RESET ALL; SET lock_timeout = '1s'");
            if (!writes)
                open.back()->execute("BEGIN");
            done += postgres::succeeded(open.back()->execute(sql.toStdString()).get()) ? 1 : 0;
            if (writes)
                open.clear();
            else if (open.size() > openSessions)
                open.erase(open.begin());

            std::vector<Change> changes;
            ORVO_OK(m_store->readLog(end, 100000, &changes));
            for (const Change& change : changes)
                QVERIFY2(writes && change.login == "mallory", sql);
            events += int(changes.size());
            QElapsedTimer clock;
            clock.start();
            const Status status =
                Batch("MenuFileExt").insert("anna-" + QByteArray::number(i) + "-").send(*anna);
            QVERIFY2(status.ok(), sql + ": " + status.text.c_str());
            longest = std::max(longest, clock.elapsed());
            QVERIFY2(clock.elapsed() < mostWriteMs, sql);
            if (i % checkEvery != checkEvery - 1 && i != wanted - 1)
                continue;
            QCOMPARE(rights(), before);
            std::vector<std::string> damages;
            ORVO_OK(m_store->integrity(&damages));
            for (const std::string& damage : damages) // bytes or their checksum, which he may write
                QVERIFY2(writes && QByteArray(damage.c_str()).contains("не сходится"),
                         damage.c_str());
            QCOMPARE(replayDifferences(m_cluster->url(m_database.toStdString())), QStringList());
        }
        qInfo("%d statements, %d of them done, %d events; others wrote within %lld ms", wanted,
              done, events, longest);
        open.clear();
    }

private:
    /// Rights of everybody, and whose the store's objects are.
    QByteArray rights() const {
        QByteArray all;
        byHand(
            "SELECT (SELECT string_agg(r::text, ';' ORDER BY rolname) FROM (SELECT rolname, "
            "rolsuper, rolinherit, rolcreaterole, rolcreatedb, rolcanlogin, rolreplication, "
            "rolbypassrls FROM pg_roles) r), (SELECT string_agg(roleid::regrole || '<' || "
            "member::regrole, ';' ORDER BY 1) FROM pg_auth_members), (SELECT string_agg(relname || "
            "relowner::regrole || coalesce(relacl::text, '') || relrowsecurity || relnatts, ';' "
            "ORDER BY relname) FROM pg_class WHERE relnamespace = 'public'::regnamespace AND "
            "relkind IN ('r', 'S')), (SELECT datacl FROM pg_database WHERE datname = "
            "current_database()), (SELECT count(*) FROM pg_database);",
            &all);
        return all;
    }
};

QTEST_GUILESS_MAIN(TestTrialStatements)

#include "tst_trial_statements.moc"
