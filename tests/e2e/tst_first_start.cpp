// The program on a machine without any store, by the keyboard: from the page that asks for one to
// the editors on the demonstration, and a further window from there; with a store that does not
// open, and with a wrong command line.
#include "tests/e2e/Hands.h"

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
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

    QByteArray m_said; ///< by the client, on standard error

    QString makeBrokenStore() const {
        QFile file(m_dir.path() + "/broken.db");
        if (!file.open(QIODevice::WriteOnly) || file.write("not a database at all") < 0)
            qFatal("%s is not written", qUtf8Printable(file.fileName()));
        return file.fileName();
    }
    /// Why the page is shown, copied from it by keys.
    static QString copiedReason() {
        QGuiApplication::clipboard()->clear();
        const auto text = [] { return QGuiApplication::clipboard()->text(); };
        if (!hands::xdotool({"key", "shift+Tab", "shift+Tab", "ctrl+a", "ctrl+c"}) ||
            !QTest::qWaitFor([&] { return !text().isEmpty(); }))
            return {};
        return text();
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
        // No server listens there, so the page comes back and offers others below it.
        QVERIFY(hands::type("127.0.0.1\t1\torvo\tivanov\ttyped-secret") && hands::key("Return"));
        QTRY_VERIFY_WITH_TIMEOUT(isActive(page), 20000);
        QVERIFY(hands::xdotool({"key", "Tab", "Return"}));
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

    void aNamedStoreThatDoesNotOpenIsToldOnThePageThatOffersOthers() {
        const QString program = qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-client";
        const QString store = makeBrokenStore();
        m_client.setProcessEnvironment(homeIn(m_dir.path()));
        m_client.setProcessChannelMode(QProcess::SeparateChannels);
        m_client.start(program, {"--store", store});
        QTRY_VERIFY_WITH_TIMEOUT(isActive(page), 20000);
        QCOMPARE(copiedReason(), "Файл не является хранилищем: \"" + store + '"');
        QVERIFY(hands::key("Escape"));
        QVERIFY(m_client.waitForFinished(20000));
        QCOMPARE(m_client.exitCode(), 1);
        QVERIFY(m_client.readAllStandardError().contains(store.toUtf8()));

        // Whoever has put it right tries again with Enter.
        m_client.start(program, {"--store", store});
        QTRY_VERIFY_WITH_TIMEOUT(isActive(page), 20000);
        QVERIFY(QFile::remove(store));
        QCOMPARE(QProcess::execute(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-admin",
                                   {"--store", store, "init"}),
                 0);
        QVERIFY(hands::key("Return"));
        QTRY_VERIFY_WITH_TIMEOUT(isActive("broken.db$"), 30000);
        QVERIFY(hands::key("ctrl+q"));
        QVERIFY(m_client.waitForFinished(20000));
        QCOMPARE(m_client.exitCode(), 0);
    }

    void anOperatorIsToldInAWindowThatHisStoreDoesNotOpen() {
        m_client.setProcessChannelMode(QProcess::SeparateChannels);
        m_client.start(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-client",
                       {"--store", makeBrokenStore(), "--desktop", "КС-1"});
        QTRY_VERIFY_WITH_TIMEOUT(isActive("^Рабочий стол не открыт$"), 20000);
        QVERIFY(hands::key("Return")); // the same once more
        QVERIFY(QTest::qWaitFor(
            [&] {
                m_said += m_client.readAllStandardError();
                return m_said.count('\n') == 2;
            },
            20000));
        QTRY_VERIFY_WITH_TIMEOUT(isActive("^Рабочий стол не открыт$"), 20000);
        QVERIFY(hands::key("Escape"));
        QVERIFY(m_client.waitForFinished(20000));
        QCOMPARE(m_client.exitCode(), 1);
    }

    void aWrongCommandLineIsToldInAWindowWhereNobodyReadsStandardError() {
        m_client.setProcessChannelMode(QProcess::SeparateChannels);
        m_client.start(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-client", {"--colour"});
        QTRY_VERIFY_WITH_TIMEOUT(isActive("^Клиент не запущен$"), 20000);
        QVERIFY(hands::key("Escape"));
        QVERIFY(m_client.waitForFinished(20000));
        QCOMPARE(m_client.exitCode(), 2);
        const QByteArray said = m_client.readAllStandardError();
        QVERIFY2(said.count('\n') == 1 && said.contains("colour"), said.constData());
    }

    void aWrongCommandLineInATerminalShowsNoWindow() {
        m_client.start("script", {"--quiet", "--return", "--command",
                                  qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-client --colour",
                                  "/dev/null"});
        QVERIFY(m_client.waitForFinished(20000));
        QCOMPARE(m_client.exitCode(), 2);
        QVERIFY(m_client.readAllStandardOutput().contains("colour"));
    }

    void whoeverTakesAPictureIsToldOnStandardErrorAlone() {
        m_client.start(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-client",
                       {"--colour", "--screenshot", m_dir.path() + "/a.png"});
        QVERIFY(m_client.waitForFinished(20000));
        QCOMPARE(m_client.exitCode(), 2);
    }

    void cleanupTestCase() {
        m_client.kill();
        m_client.waitForFinished();
    }
};

QTEST_MAIN(TestFirstStart)
#include "tst_first_start.moc"
