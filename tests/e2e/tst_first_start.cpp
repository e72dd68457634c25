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
    static QProcessEnvironment homeIn(const QString& dir) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "HOME"})
            environment.insert(QLatin1String(name), dir);
        return environment;
    }
    /// What the process of the active window was started with: "cmdline", "environ".
    static QList<QByteArray> startedWith(const char* what) {
        QProcess ask;
        ask.start("xdotool", {"getactivewindow", "getwindowpid"});
        ask.waitForFinished();
        QFile file("/proc/" + ask.readAllStandardOutput().trimmed() + '/' + what);
        return file.open(QIODevice::ReadOnly) ? file.readAll().split('\0') : QList<QByteArray>();
    }

private slots:
    void initTestCase() {
        m_client.setProcessEnvironment(homeIn(m_dir.path()));
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

    void whatWasTypedForOneServerGoesToNoOtherStore() {
        const QTemporaryDir home;
        const QString second = home.path() + "/second.db",
                      bin = qEnvironmentVariable("ORVO_BIN_DIR");
        QCOMPARE(QProcess::execute(bin + "/orvo-admin", {"--store", second, "init"}), 0);
        m_client.setProcessEnvironment(homeIn(home.path()));
        m_client.start(bin + "/orvo-client", {"--modules", home.path()});
        QTRY_VERIFY_WITH_TIMEOUT(isActive(page), 20000);
        QVERIFY(hands::xdotool({"key", "Tab", "Tab", "Return"}));
        QTRY_VERIFY_WITH_TIMEOUT(isActive("Хранилище на сервере"), 20000);
        // No server listens there, so the page comes back and asks for another store.
        QVERIFY(hands::type("127.0.0.1\t1\torvo\tivanov\ttyped-secret") && hands::key("Return"));
        QTRY_VERIFY_WITH_TIMEOUT(isActive(page), 20000);
        QVERIFY(hands::key("Return"));
        QTRY_VERIFY_WITH_TIMEOUT(isActive(editors), 60000);

        QVERIFY(hands::key("ctrl+o"));
        QTRY_VERIFY_WITH_TIMEOUT(isActive(page), 20000);
        QVERIFY(hands::xdotool({"key", "Tab", "Tab", "Tab", "Return"}));
        QTRY_VERIFY_WITH_TIMEOUT(isActive("Файл хранилища"), 20000);
        QVERIFY(hands::type(second) && hands::key("Return"));
        QTRY_VERIFY_WITH_TIMEOUT(isActive("second.db$"), 30000);
        QVERIFY(!startedWith("environ").contains("PGPASSWORD=typed-secret"));
        const QList<QByteArray> words = startedWith("cmdline");
        QCOMPARE(words.value(words.indexOf("--modules") + 1), home.path().toUtf8());
        QVERIFY(hands::key("ctrl+q"));
        QTRY_VERIFY_WITH_TIMEOUT(isActive(editors), 20000);
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
