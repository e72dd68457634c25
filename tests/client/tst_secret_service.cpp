// The password of a server in the desktop's store of secrets: a real one, on a bus of the test's
// own, and the client that takes the password from it.
#include "apps/client/start/SecretService.h"
#include "apps/client/start/ServerDialog.h"
#include "platform/store/Maintenance.h"
#include "tests/store/PostgresCluster.h"

#include <QApplication>
#include <QComboBox>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QSpinBox>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace orvo;
using app::ServerDialog;
namespace secrets = app::secrets;

namespace {

constexpr char address[] = "postgresql://ivanov@db:5432/orvo";

} // namespace

class TestSecretService : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;
    QProcess m_service;

    void fill(ServerDialog& dialog, const char* password) {
        dialog.findChild<QLineEdit*>("serverHost")->setText("db");
        dialog.findChild<QLineEdit*>("serverPassword")->setText(password);
        auto* keep = dialog.findChild<QComboBox*>("serverKeep");
        keep->setCurrentIndex(keep->findData(int(ServerDialog::Keep::SecretService)));
    }
    /// Exit code of a client that draws its window on that store.
    int draw(const QString& store, QByteArray* said) {
        QProcess client;
        client.start(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-client",
                     {"--store", store, "--work-dir", m_dir.path() + "/work", "--screenshot",
                      m_dir.path() + "/window.png"});
        if (!client.waitForFinished(120'000))
            return -1;
        *said = client.readAllStandardError();
        return client.exitCode();
    }

private slots:
    void initTestCase() {
        if (QStandardPaths::findExecutable("gnome-keyring-daemon").isEmpty())
            QSKIP("gnome-keyring is not installed");
        qputenv("PGPASSFILE", (m_dir.path() + "/pgpass").toUtf8());
        m_service.start("gnome-keyring-daemon",
                        {"--foreground", "--unlock", "--components=secrets"});
        QVERIFY(m_service.waitForStarted());
        m_service.write("key of the test");
        m_service.closeWriteChannel();
        QTRY_VERIFY(QDBusConnection::sessionBus().interface()->isServiceRegistered(
            "org.freedesktop.secrets"));
    }

    void aKeptPasswordIsFoundByItsAddressAlone() {
        QString error;
        QVERIFY2(secrets::keep(address, "пароль :\\", &error), qPrintable(error));
        QCOMPARE(secrets::passwordOf(address), QString("пароль :\\"));
        QCOMPARE(secrets::passwordOf("postgresql://ivanov:other@db:5432/orvo"),
                 QString("пароль :\\"));
        QCOMPARE(secrets::passwordOf("postgresql://petrova@db:5432/orvo"), QString());
        QCOMPARE(secrets::passwordOf("postgresql://ivanov@db:5433/orvo"), QString());
        QVERIFY(secrets::keep(address, "new", &error));
        QCOMPARE(secrets::passwordOf(address), QString("new"));
        secrets::forget(address);
        QCOMPARE(secrets::passwordOf(address), QString());
        secrets::forget(address);
    }

    void aFileHasNone() {
        QString error;
        QVERIFY(!secrets::keep("/s/a.db", "x", &error));
        QVERIFY2(error.contains("/s/a.db"), qPrintable(error));
        QCOMPARE(secrets::passwordOf("/s/a.db"), QString());
    }

    void theDialogKeepsItThereAndInNoFile() {
        ServerDialog dialog("ivanov");
        fill(dialog, "secret");
        dialog.accept();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(dialog.password(), QString("secret")); // the store is opened with it at once
        QCOMPARE(secrets::passwordOf(dialog.address()), QString("secret"));
        QVERIFY(!QFileInfo::exists(m_dir.path() + "/pgpass"));
    }

    void theNextClientOpensTheStoreWithIt() {
        const auto cluster = store::test::PostgresCluster::start();
        QVERIFY(cluster);
        QVERIFY(cluster->shell("postgres", "CREATE DATABASE locked;"));
        {
            store::Status status;
            const auto store =
                store::openMaintained(cluster->url("locked"), {"maker", true}, &status);
            QVERIFY2(store, status.text.c_str());
            store::User user;
            user.login = "needs_password";
            user.password = "s p";
            QVERIFY(store->userAdd(user).ok());
        }
        const QString url = QString::fromStdString(cluster->url("locked", "needs_password"));
        QByteArray said;
        QCOMPARE(draw(url, &said), 1);
        QString error;
        QVERIFY2(secrets::keep(url, "s p", &error), qPrintable(error));
        QVERIFY2(draw(url, &said) == 0, said);
        QVERIFY(secrets::keep(url, "wrong", &error));
        QCOMPARE(draw(url, &said), 1);
        QVERIFY2(!said.contains("wrong"), said);
    }

    void withoutTheServiceThePasswordIsNotLostUnseen() {
        ServerDialog dialog("ivanov");
        dialog.show();
        fill(dialog, "other");
        m_service.terminate();
        QVERIFY(m_service.waitForFinished());
        dialog.accept();
        QVERIFY(dialog.isVisible());
        QVERIFY(!dialog.findChild<QLabel*>("serverResult")->text().isEmpty());
        QCOMPARE(dialog.findChild<QLineEdit*>("serverPassword")->text(), QString("other"));
    }
};

/// On a bus of its own, which goes with it, in a home of its own.
int main(int argc, char** argv) {
    if (qEnvironmentVariableIsSet("ORVO_OWN_BUS")) {
        QApplication application(argc, argv);
        TestSecretService test;
        return QTest::qExec(&test, argc, argv);
    }
    const QTemporaryDir home;
    for (const char* name :
         {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME"})
        qputenv(name, home.path().toUtf8());
    qputenv("ORVO_OWN_BUS", "1");
    QStringList command("--");
    for (int i = 0; i < argc; ++i)
        command << QString::fromLocal8Bit(argv[i]);
    return QProcess::execute("dbus-run-session", command);
}

#include "tst_secret_service.moc"
