#include "StoreKinds.h"

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

    QByteArray rawText(const QByteArray& bytes) const override {
        return "CAST(x'" + bytes.toHex() + "' AS TEXT)";
    }

private:
    QString file() const { return m_directory->filePath("orvo.db"); }
    std::unique_ptr<QTemporaryDir> m_directory;
};

} // namespace

std::vector<std::unique_ptr<StoreKind>> storeKinds() {
    std::vector<std::unique_ptr<StoreKind>> kinds;
    kinds.push_back(std::make_unique<SqliteKind>());
    return kinds;
}

} // namespace orvo::store::test
