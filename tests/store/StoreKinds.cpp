#include "StoreKinds.h"

#include "PostgresCluster.h"

#include "platform/store/Maintenance.h"
#include "platform/store/PostgresApi.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QUuid>

#include <chrono>
#include <thread>
#include <unistd.h>

namespace orvo::store::test {

namespace {

/// A file of tests/store/data.
QString dataFile(const QString& name) {
    return QFile::decodeName(qgetenv("ORVO_SOURCE_DIR")) + "/tests/store/data/" + name;
}

class SqliteKind : public StoreKind {
public:
    QByteArray name() const override { return "sqlite"; }

    bool renew() override {
        m_directory = std::make_unique<QTemporaryDir>();
        // Making a store takes as long as a whole case, so the first one is copied for the others;
        // each has an identity of its own.
        static QByteArray made, identity;
        if (!m_directory->isValid() || (made.isEmpty() && !make(&made, &identity)))
            return false;
        QByteArray bytes = made;
        const QByteArray another = QUuid::createUuid().toByteArray(QUuid::WithoutBraces);
        bytes.replace(bytes.indexOf(identity), identity.size(), another);
        QFile copy(file());
        return copy.open(QIODevice::WriteOnly) &&
               copy.setPermissions(QFile::ReadOwner | QFile::WriteOwner) &&
               copy.write(bytes) == bytes.size();
    }

    bool renewAsOf(int version) override {
        m_directory = std::make_unique<QTemporaryDir>();
        return m_directory->isValid() &&
               QFile::copy(dataFile(QString("sqlite-%1.db").arg(version)), file());
    }

    QByteArray structure() override {
        QByteArray text;
        return byHand("SELECT type, name, sql FROM sqlite_master WHERE name NOT LIKE 'sqlite_%' "
                      "ORDER BY type, name; PRAGMA user_version; PRAGMA application_id;",
                      &text)
                   ? text
                   : QByteArray();
    }

    std::string url() const override { return "sqlite://" + file().toStdString(); }

    bool byHand(const QByteArray& sql, QByteArray* output) override {
        // By its millisecond the log tells a statement from the one before.
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        QProcess shell;
        shell.setProcessChannelMode(QProcess::MergedChannels);
        shell.start("sqlite3", {"-batch", "-bail", file()});
        shell.write(".timeout 5000\n" + sql + "\n");
        shell.closeWriteChannel();
        const bool finished = shell.waitForFinished();
        if (output != nullptr)
            *output = shell.readAll();
        return finished && shell.exitStatus() == QProcess::NormalExit && shell.exitCode() == 0;
    }

    QByteArray handLogin() const override { return {}; }

    QByteArray rawText(const QByteArray& bytes) const override {
        return "CAST(x'" + bytes.toHex() + "' AS TEXT)";
    }

private:
    bool make(QByteArray* bytes, QByteArray* identity) const {
        Status status;
        std::string text;
        auto store = openMaintained(url(), {"maker", true}, &status);
        if (!store || !store->identity(&text).ok())
            return false;
        store.reset(); // with its log
        QFile made(file());
        if (!made.open(QIODevice::ReadOnly))
            return false;
        *bytes = made.readAll();
        *identity = QByteArray::fromStdString(text);
        return bytes->count(*identity) == 1 && identity->size() == 36;
    }
    QString file() const { return m_directory->filePath("orvo.db"); }
    std::unique_ptr<QTemporaryDir> m_directory;
};

QByteArray rawPostgresText(const QByteArray& bytes) {
    return "convert_from('\\x" + bytes.toHex() + "', 'UTF8')";
}

/// Everything about a database that a case can change and that emptying it does not take back:
/// tables, columns, indexes, constraints, triggers, functions, rights and settings.
const char structureSum[] = R"(SELECT md5(string_agg(what, ';' ORDER BY what)) FROM (
  SELECT concat_ws(' ', 'class', relname, relkind, relacl, reloptions, relowner, relpersistence)
    FROM pg_class WHERE relnamespace = 'public'::regnamespace
  UNION ALL SELECT concat_ws(' ', 'column', c.relname, attname, atttypid, attnotnull, attacl,
      pg_get_expr(adbin, adrelid))
    FROM pg_attribute JOIN pg_class c ON c.oid = attrelid LEFT JOIN pg_attrdef
      ON adrelid = attrelid AND adnum = attnum
    WHERE c.relnamespace = 'public'::regnamespace AND attnum > 0
  UNION ALL SELECT pg_get_indexdef(i.indexrelid) || i.indisvalid
    FROM pg_index i JOIN pg_class c ON c.oid = indrelid
    WHERE c.relnamespace = 'public'::regnamespace
  UNION ALL SELECT conname || pg_get_constraintdef(oid)
    FROM pg_constraint WHERE connamespace = 'public'::regnamespace
  UNION ALL SELECT pg_get_triggerdef(t.oid) || tgenabled::text
    FROM pg_trigger t JOIN pg_class c ON c.oid = tgrelid
    WHERE c.relnamespace = 'public'::regnamespace
  UNION ALL SELECT concat_ws(' ', 'function', proname, prosrc, proacl, proconfig, prosecdef, proowner)
    FROM pg_proc WHERE pronamespace = 'public'::regnamespace
  UNION ALL SELECT concat_ws(' ', nspname, nspacl, nspowner) FROM pg_namespace
    WHERE nspname !~ '^pg_'
  UNION ALL SELECT concat_ws(' ', datacl, datdba, datconnlimit, datallowconn) FROM pg_database
    WHERE datname = current_database()
  UNION ALL SELECT concat_ws(' ', 'version', "version") FROM public."NciStore"
  UNION ALL SELECT concat_ws(' ', 'setting', setrole, setconfig) FROM pg_db_role_setting
    WHERE setdatabase = (SELECT oid FROM pg_database WHERE datname = current_database())
) AS everything (what))";

/// One server for all cases, with a database for each that is open at a time. One that was used
/// serves the next case again, emptied, if its structure is still that of a new store: making a
/// database and a store in it takes ten times as long. The last ones go with the server.
class PostgresKind : public StoreKind {
public:
    ~PostgresKind() override { giveBack(); }
    QByteArray name() const override { return "postgresql"; }

    bool renew() override {
        giveBack();
        if (PostgresCluster::shared() == nullptr)
            return false;
        while (!usedOnes().empty()) {
            m_database = usedOnes().back();
            usedOnes().pop_back();
            if (empty())
                return true;
            drop();
        }
        return make();
    }

    bool renewAsOf(int version) override {
        drop();
        PostgresCluster* cluster = PostgresCluster::shared();
        QFile dump(dataFile(QString("postgres-%1.sql").arg(version)));
        QByteArray words;
        newName();
        if (cluster != nullptr && dump.open(QIODevice::ReadOnly) &&
            cluster->shell("postgres",
                           "DO $$ BEGIN CREATE ROLE orvo_engineer; EXCEPTION WHEN "
                           "duplicate_object THEN NULL; END $$; DO $$ BEGIN CREATE ROLE "
                           "orvo_viewer; EXCEPTION WHEN duplicate_object THEN NULL; END $$;"
                           "CREATE DATABASE \"" +
                               m_database + "\" TEMPLATE template0 ENCODING 'UTF8' LOCALE 'C';",
                           &words) &&
            cluster->shell(m_database, dump.readAll(), &words))
            return true;
        qWarning("%s", words.constData());
        return false;
    }

    QByteArray structure() override {
        QByteArray text;
        const PostgresCluster& cluster = *PostgresCluster::shared();
        if (!cluster.run("pg_dump",
                         {"--schema-only", "-h", cluster.directory(), "-U", "postgres", m_database},
                         &text))
            return {};
        QByteArray rights;
        byHand("SELECT datacl FROM pg_database WHERE datname = current_database();", &rights);
        QByteArray lines;
        for (const QByteArray& line : text.split('\n'))
            if (!line.startsWith("\\")) // a word that differs in each dump
                lines += line + '\n';
        return lines + rights;
    }

    std::string url() const override {
        return PostgresCluster::shared()->url(m_database.toStdString());
    }

    bool byHand(const QByteArray& sql, QByteArray* output) override {
        return PostgresCluster::shared()->shell(m_database, sql, output);
    }

    QByteArray handLogin() const override { return "postgres"; }

    QByteArray rawText(const QByteArray& bytes) const override { return rawPostgresText(bytes); }

private:
    void newName() {
        static int number = 0;
        m_database = "orvo" + QByteArray::number(::getpid()) + '_' + QByteArray::number(++number);
    }
    bool make() {
        newName();
        Status status;
        if (!open(url(), {"maker", true}, &status)) {
            qWarning("%s", status.text.c_str());
            return false;
        }
        if (structureOfNew().isEmpty()) {
            postgres::Connection connection;
            if (connect(&connection))
                structureOfNew() = sumOf(connection);
        }
        return true;
    }
    void drop() {
        if (!m_database.isEmpty())
            PostgresCluster::shared()->shell("postgres",
                                             "DROP DATABASE \"" + m_database + "\" WITH (FORCE);");
        m_database.clear();
    }
    void giveBack() {
        if (!m_database.isEmpty())
            usedOnes().push_back(m_database);
        m_database.clear();
    }
    static std::vector<QByteArray>& usedOnes() {
        static std::vector<QByteArray> names;
        return names;
    }
    static QByteArray& structureOfNew() {
        static QByteArray sum;
        return sum;
    }
    bool connect(postgres::Connection* connection) const {
        postgres::Url address;
        return address.parse(url()).ok() && connection->open(address).ok();
    }
    static QByteArray sumOf(postgres::Connection& connection) {
        const postgres::Result sum = connection.execute(structureSum);
        if (!postgres::succeeded(sum.get()) || PQntuples(sum.get()) != 1)
            qFatal("no structure: %s", PQresultErrorMessage(sum.get()));
        return PQgetvalue(sum.get(), 0, 0);
    }
    /// Leaves the database as a new store; false if it is none any more, for want of a table, for
    /// example.
    bool empty() const {
        postgres::Connection connection;
        // Whoever is still connected, and waits or holds locks, is none of the next case.
        if (!connect(&connection) ||
            !postgres::succeeded(
                connection
                    .execute("SELECT pg_terminate_backend(pid, 10000) FROM pg_stat_activity WHERE "
                             "datname = current_database() AND pid <> pg_backend_pid()")
                    .get()) ||
            structureOfNew().isEmpty() || sumOf(connection) != structureOfNew())
            return false;
        const char sql[] = R"(SET session_replication_role = replica;
DO $$ BEGIN
  EXECUTE (SELECT 'TRUNCATE ' || string_agg(format('public.%I', tablename), ', ')
    FROM pg_tables WHERE schemaname = 'public' AND tablename NOT IN ('NciPruned', 'NciStore'));
  IF (SELECT count(*) FROM public."NciPruned") <> 1 OR (SELECT count(*) FROM public."NciStore") <> 1
  THEN
    RAISE EXCEPTION 'no store any more';
  END IF;
END $$;
UPDATE public."NciPruned" SET "id" = 0, "versions" = 0;
UPDATE public."NciStore" SET "identity" = gen_random_uuid();
SELECT setval('public."NciEventId"', 1, false))";
        return postgres::succeeded(connection.execute(sql).get());
    }

    QByteArray m_database;
};

} // namespace

std::vector<std::unique_ptr<StoreKind>> storeKinds() {
    std::vector<std::unique_ptr<StoreKind>> kinds;
    const QByteArray only = qgetenv("ORVO_STORE_KIND");
    if (only.isEmpty() || only == "sqlite")
        kinds.push_back(std::make_unique<SqliteKind>());
    if (only.isEmpty() || only == "postgresql")
        kinds.push_back(std::make_unique<PostgresKind>());
    return kinds;
}

namespace {

class GivenKind : public StoreKind {
public:
    GivenKind(const PostgresCluster& cluster, QByteArray database, std::string url)
        : m_cluster(cluster)
        , m_database(std::move(database))
        , m_url(std::move(url)) {}
    QByteArray name() const override { return "postgresql"; }
    bool renew() override {
        Status status;
        return open(m_url, {{}, true}, &status) != nullptr;
    }
    std::string url() const override { return m_url; }
    bool byHand(const QByteArray& sql, QByteArray* output) override {
        return m_cluster.shell(m_database, sql, output, "postgres", "5432") ||
               m_cluster.shell(m_database, sql, output, "postgres", "5433");
    }
    QByteArray handLogin() const override { return "postgres"; }
    QByteArray rawText(const QByteArray& bytes) const override { return rawPostgresText(bytes); }

private:
    const PostgresCluster& m_cluster;
    const QByteArray m_database;
    const std::string m_url;
};

} // namespace

std::unique_ptr<StoreKind> kindOn(const PostgresCluster& cluster, const QByteArray& database,
                                  const std::string& url) {
    return std::make_unique<GivenKind>(cluster, database, url);
}

std::unique_ptr<StoreKind> storeKind() {
    if (qgetenv("ORVO_STORE_KIND") == "postgresql")
        return std::make_unique<PostgresKind>();
    return std::make_unique<SqliteKind>();
}

} // namespace orvo::store::test
