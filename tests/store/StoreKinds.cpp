#include "StoreKinds.h"

#include "PostgresCluster.h"

#include "platform/store/PostgresApi.h"
#include "platform/store/Store.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

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
        Status status;
        return m_directory->isValid() && open(url(), {"maker", true}, &status) != nullptr;
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
    QString file() const { return m_directory->filePath("orvo.db"); }
    std::unique_ptr<QTemporaryDir> m_directory;
};

QByteArray rawPostgresText(const QByteArray& bytes) {
    return "convert_from('\\x" + bytes.toHex() + "', 'UTF8')";
}

/// One server for all cases, with a database for each.
class PostgresKind : public StoreKind {
public:
    ~PostgresKind() override { drop(); }
    QByteArray name() const override { return "postgresql"; }

    bool renew() override {
        drop();
        return PostgresCluster::shared() != nullptr && make();
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

protected:
    void newName() {
        static int number = 0;
        m_database = "orvo" + QByteArray::number(::getpid()) + '_' + QByteArray::number(++number);
    }
    bool make() {
        newName();
        Status status;
        if (open(url(), {"maker", true}, &status))
            return true;
        qWarning("%s", status.text.c_str());
        return false;
    }
    void drop() {
        if (!m_database.isEmpty())
            PostgresCluster::shared()->shell("postgres",
                                             "DROP DATABASE \"" + m_database + "\" WITH (FORCE);");
        m_database.clear();
    }
    QByteArray m_database;
};

/// Databases that have been used serve the next; the last ones go with the server.
class QuickPostgresKind : public PostgresKind {
public:
    ~QuickPostgresKind() override { giveBack(); }

    bool renew() override {
        giveBack();
        if (PostgresCluster::shared() == nullptr)
            return false;
        std::vector<QByteArray>& used = usedOnes();
        if (!used.empty()) {
            m_database = used.back();
            used.pop_back();
            if (empty())
                return true;
            drop();
        }
        return make();
    }

private:
    static std::vector<QByteArray>& usedOnes() {
        static std::vector<QByteArray> names;
        return names;
    }
    void giveBack() {
        if (!m_database.isEmpty())
            usedOnes().push_back(m_database);
        m_database.clear();
    }
    /// As a new store; false if it cannot be made one, for want of a table, for example.
    bool empty() const {
        postgres::Url address;
        postgres::Connection connection;
        if (!address.parse(url()).ok() || !connection.open(address).ok())
            return false;
        std::string sql = "SET session_replication_role = replica; TRUNCATE public.\"NciEvent\", "
                          "public.\"MenuResourceFile\", public.\"MenuResourceFileData\", "
                          "public.\"MenuResourceFileSum\"";
        for (const TableDef& table : tables())
            sql += ", public.\"" + std::string(table.name) + "\"";
        sql += "; UPDATE public.\"NciPruned\" SET \"id\" = 0; "
               "SELECT setval('public.\"NciEventId\"', 1, false)";
        return postgres::succeeded(connection.execute(sql).get());
    }
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

std::unique_ptr<StoreKind> quickStoreKind() {
    if (qgetenv("ORVO_STORE_KIND") == "postgresql")
        return std::make_unique<QuickPostgresKind>();
    return std::make_unique<SqliteKind>();
}

} // namespace orvo::store::test
