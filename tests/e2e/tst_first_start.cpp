// The program on a machine without any store, by the keyboard: from the page that asks for one to
// the editors on the demonstration, and a further window from there.
#include "tests/e2e/Hands.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace orvo::test;

namespace {

const QString page = QStringLiteral("какое хранилище открыть");
const QString editors = QStringLiteral("orvo.db$");

} // namespace

class TestFirstStart : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;
    QProcess m_client;

    bool isActive(const QString& name) {
        return hands::activeWindow().contains(QRegularExpression(name));
    }

private slots:
    void initTestCase() {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "HOME"})
            environment.insert(QLatin1String(name), m_dir.path());
        m_client.setProcessEnvironment(environment);
        m_client.setProcessChannelMode(QProcess::ForwardedChannels);
    }

    void cancelEndsTheProgram() {
        m_client.start(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-client", QStringList());
        QTRY_VERIFY_WITH_TIMEOUT(isActive(page), 20000);
        QVERIFY(hands::key("Escape"));
        QVERIFY(m_client.waitForFinished(20000));
        QCOMPARE(m_client.exitCode(), 0);
        QVERIFY(!QDir(m_dir.path() + "/orvo").exists());
    }

    void enterMakesTheDemonstrationAndOpensTheEditorsOnIt() {
        m_client.start(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-client", QStringList());
        QTRY_VERIFY_WITH_TIMEOUT(isActive(page), 20000);
        QVERIFY(hands::key("Return"));
        QTRY_VERIFY_WITH_TIMEOUT(isActive(editors), 60000);
        QVERIFY(QFile::exists(m_dir.path() + "/orvo/orvo.db"));
    }

    void aFurtherStoreIsAskedForInFrontOfTheWindow() {
        QVERIFY(hands::key("ctrl+o"));
        QTRY_VERIFY_WITH_TIMEOUT(isActive(page), 20000);
        QVERIFY(hands::key("Escape"));
        QTRY_VERIFY_WITH_TIMEOUT(isActive(editors), 20000);
        QVERIFY(hands::key("ctrl+q"));
        QVERIFY(m_client.waitForFinished(20000));
        QCOMPARE(m_client.exitCode(), 0);
    }

    void theNextStartOpensTheStoreAtOnce() {
        m_client.start(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-client", QStringList());
        QTRY_VERIFY_WITH_TIMEOUT(isActive(editors), 30000);
        QVERIFY(hands::key("ctrl+q"));
        QVERIFY(m_client.waitForFinished(20000));
    }

    void cleanupTestCase() {
        m_client.kill();
        m_client.waitForFinished();
    }
};

QTEST_GUILESS_MAIN(TestFirstStart)
#include "tst_first_start.moc"
