#include "StoreKinds.h"

#include "PostgresCluster.h"

#include "platform/store/Store.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace orvo::store::test {

namespace {

class SqliteKind : public StoreKind {
public:
    QByteArray name() const override { return "sqlite"; }

    bool renew() override {
        m_directory = std::make_unique<QTemporaryDir>();
        Status status;
        return m_directory->isValid() && open(url(), {"maker", true}, &status) != nullptr;
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

/// One server for all cases, with a database for each.
class PostgresKind : public StoreKind {
public:
    QByteArray name() const override { return "postgresql"; }

    bool renew() override {
        if (!m_cluster)
            m_cluster = PostgresCluster::start();
        Status status = {Failed, "no server"};
        if (!m_cluster)
            return false;
        if (m_number > 0)
            m_cluster->shell("postgres", "DROP DATABASE \"" + database() + "\" WITH (FORCE);");
        ++m_number;
        if (open(url(), {"maker", true}, &status))
            return true;
        qWarning("%s", status.text.c_str());
        return false;
    }

    std::string url() const override { return m_cluster->url(database().toStdString()); }

    bool byHand(const QByteArray& sql, QByteArray* output) override {
        return m_cluster->shell(database(), sql, output);
    }

    QByteArray handLogin() const override { return "postgres"; }

    QByteArray rawText(const QByteArray& bytes) const override {
        return "convert_from('\\x" + bytes.toHex() + "', 'UTF8')";
    }

private:
    QByteArray database() const { return "orvo" + QByteArray::number(m_number); }
    std::unique_ptr<PostgresCluster> m_cluster;
    int m_number = 0;
};

} // namespace

std::vector<std::unique_ptr<StoreKind>> storeKinds() {
    std::vector<std::unique_ptr<StoreKind>> kinds;
    // ORVO_STORE_KIND names one of them, for a closer look.
    const QByteArray only = qgetenv("ORVO_STORE_KIND");
    if (only.isEmpty() || only == "sqlite")
        kinds.push_back(std::make_unique<SqliteKind>());
    if (only.isEmpty() || only == "postgresql")
        kinds.push_back(std::make_unique<PostgresKind>());
    return kinds;
}

} // namespace orvo::store::test
