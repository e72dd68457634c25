// A client that is started while one runs on the same store.
#include "apps/client/Instance.h"
#include "tests/client/HostFixture.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QProcess>
#include <QtTest>

#include <sys/stat.h>

using namespace orvo::app;
using namespace orvo::test;

namespace {

struct Clients : Host {
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    const QString inspector = dir.path() + "/inspect.sock";
    QProcess first;

    Clients() {
        variables.insert("QT_QPA_PLATFORM", "offscreen");
        variables.insert("XDG_RUNTIME_DIR", dir.path());
    }
    ~Clients() {
        if (first.state() != QProcess::NotRunning) {
            first.kill();
            first.waitForFinished();
        }
    }
    Options options() const {
        Options options;
        options.store = QString::fromStdString(url);
        options.login = "engineer";
        options.workDir = dir.filePath("copies") + QDir::separator();
        return options;
    }
    QStringList arguments(const QStringList& more) const {
        return QStringList{"--store",       options().store, "--login",
                           options().login, "--work-dir",    dir.filePath("copies")} +
               more;
    }
    void start(QProcess& process, const QStringList& more) const {
        process.setProcessEnvironment(variables);
        process.start(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-client", arguments(more));
        QVERIFY(process.waitForStarted());
    }
    void startFirst() {
        start(first, {"--module", "Menu", "--inspect", inspector});
        QTRY_COMPARE_WITH_TIMEOUT(running(), 1, 30000);
    }
    int running() const {
        QLocalSocket socket;
        socket.connectToServer(inspector);
        if (!socket.waitForConnected(500))
            return -1;
        socket.write("state\n");
        while (!socket.canReadLine() && socket.waitForReadyRead(5000)) {
        }
        return QJsonDocument::fromJson(socket.readLine()).object()["running"].toInt();
    }
    /// Exit code of a further client; -1 if it goes on running.
    int further(const QStringList& more) const {
        QProcess process;
        start(process, more);
        if (process.waitForFinished(15000))
            return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
        process.kill();
        process.waitForFinished();
        return -1;
    }
};

} // namespace

class TestInstance : public QObject {
    Q_OBJECT
private slots:
    void aFurtherModuleIsOpenedByTheRunningClient() {
        Clients clients;
        clients.startFirst();
        QCOMPARE(clients.further({}), 0); // only comes forward
        QCOMPARE(clients.running(), 1);
        QCOMPARE(clients.further({"--module", "resources"}), 0);
        QTRY_COMPARE_WITH_TIMEOUT(clients.running(), 2, 30000);
        QCOMPARE(clients.further({"--module", "Menu"}), 0); // is open already
        QCOMPARE(clients.running(), 2);
    }

    void anotherUserOrWorkDirectoryIsAnotherClient() {
        Clients clients;
        qputenv("XDG_RUNTIME_DIR", clients.dir.path().toUtf8());
        Options other = clients.options();
        Instance held(other);
        QCOMPARE(held.take(false), Instance::Role::First);
        other.login = "another";
        Instance byLogin(other);
        QCOMPARE(byLogin.take(true), Instance::Role::First);
        other = clients.options();
        other.workDir += "b/";
        Instance byDirectory(other);
        QCOMPARE(byDirectory.take(true), Instance::Role::First);
        Instance same(clients.options());
        QCOMPARE(same.take(false), Instance::Role::Alone);
    }

    void aClientThatWasKilledIsInNobodysWay() {
        Clients clients;
        clients.startFirst();
        clients.first.kill();
        QVERIFY(clients.first.waitForFinished());
        QFile::remove(clients.inspector);
        clients.startFirst();
        QCOMPARE(clients.further({}), 0);
    }

    void aSeparateClientIsItsOwn() {
        Clients clients;
        clients.startFirst();
        QProcess process;
        const QString inspector = clients.dir.path() + "/second.sock";
        clients.start(process, {"--separate", "--module", "Resources", "--inspect", inspector});
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(inspector), 30000);
        QCOMPARE(process.state(), QProcess::Running);
        QCOMPARE(clients.running(), 1);
        process.kill();
        process.waitForFinished();
    }

    void requestsAreBoundedAndChecked_data() {
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("nothing") << QByteArray("\n");
        QTest::newRow("no JSON") << QByteArray("open Menu\n");
        QTest::newRow("an array") << QByteArray("[\"Menu\"]\n");
        QTest::newRow("no list") << QByteArray("{\"open\":\"Menu\"}\n");
        QTest::newRow("unknown module") << QByteArray("{\"open\":[\"/tmp/evil.so\"]}\n");
        QTest::newRow("a number") << QByteArray("{\"open\":[1]}\n");
        QTest::newRow("something else") << QByteArray("{\"open\":[],\"run\":\"x\"}\n");
        QTest::newRow("many") << "{\"open\":[" + QByteArray("\"Menu\",").repeated(40) +
                                     "\"Menu\"]}\n";
    }
    void requestsAreBoundedAndChecked() {
        QFETCH(QByteArray, line);
        QVERIFY(!Instance::parse(line));
        Clients clients;
        qputenv("XDG_RUNTIME_DIR", clients.dir.path().toUtf8());
        Instance instance(clients.options());
        QCOMPARE(instance.take(false), Instance::Role::First);
        QSignalSpy requested(&instance, &Instance::requested);
        QLocalSocket socket;
        socket.connectToServer(instance.socketPath());
        QTRY_COMPARE(socket.state(), QLocalSocket::ConnectedState);
        socket.write(line);
        QTRY_VERIFY(socket.canReadLine());
        QCOMPARE(socket.readLine(), QByteArray("no\n"));
        QVERIFY(requested.isEmpty());
    }

    void aRequestThatNeverEndsIsCutOff() {
        Clients clients;
        qputenv("XDG_RUNTIME_DIR", clients.dir.path().toUtf8());
        Instance instance(clients.options());
        QCOMPARE(instance.take(false), Instance::Role::First);
        QLocalSocket socket;
        socket.connectToServer(instance.socketPath());
        QTRY_COMPARE(socket.state(), QLocalSocket::ConnectedState);
        socket.write(QByteArray(1 << 20, 'x'));
        QTRY_COMPARE(socket.state(), QLocalSocket::UnconnectedState);
    }

    void onlyTheUserCanAsk() {
        Clients clients;
        qputenv("XDG_RUNTIME_DIR", clients.dir.path().toUtf8());
        Instance instance(clients.options());
        QCOMPARE(instance.take(false), Instance::Role::First);
        struct stat directory {};
        QVERIFY(::stat(qPrintable(clients.dir.path() + "/orvo"), &directory) == 0);
        QCOMPARE(directory.st_mode & 0777u, 0700u);
        // A directory that others may enter is not used.
        QVERIFY(::chmod(qPrintable(clients.dir.path() + "/orvo"), 0755) == 0);
        Options other = clients.options();
        other.login = "another";
        Instance open(other);
        QCOMPARE(open.take(true), Instance::Role::Alone);
    }
};

QTEST_MAIN(TestInstance)
#include "tst_instance.moc"
