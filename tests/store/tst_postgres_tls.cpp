// An encrypted connection: whose server is believed, and whose is not.
#include "PostgresTest.h"

#include <QProcess>
#include <QTcpServer>

using namespace orvo::store;
using namespace orvo::store::test;

class TestTls : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        m_cluster = PostgresCluster::start();
        QVERIFY(m_cluster);
        {
            QTcpServer free;
            QVERIFY(free.listen(QHostAddress::LocalHost));
            m_port = QString::number(free.serverPort());
        }
        Status status;
        const auto store = open(m_cluster->url("orvo"), {{}, true}, &status);
        QVERIFY2(store, status.text.c_str());
        User user;
        user.login = "secretive";
        user.password = "Sesam-open-77";
        ORVO_OK(store->userAdd(user));
        QFile rules(m_cluster->data() + "/pg_hba.conf");
        QVERIFY(rules.open(QIODevice::ReadWrite));
        const QByteArray usual = rules.readAll();
        rules.seek(0);
        rules.write("host all secretive 127.0.0.1/32 scram-sha-256\n" + usual);
        rules.close();
        QVERIFY(makeCertificate("right"));
        QVERIFY(makeCertificate("other"));
        QVERIFY(restart(true));
    }

    void serverOfTheRightAuthorityIsBelieved() {
        Status status;
        const auto store = open(url("Sesam-open-77", "localhost", "right.crt"), {}, &status);
        QVERIFY2(store, status.text.c_str());
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*store));
        QByteArray encrypted;
        QVERIFY(
            m_cluster->shell("orvo",
                             "SELECT bool_and(s.ssl) FROM pg_stat_ssl s JOIN pg_stat_activity a "
                             "USING (pid) WHERE a.usename = 'secretive';",
                             &encrypted, "postgres", m_port));
        QCOMPARE(encrypted, QByteArray("t"));
    }

    void serverThatCannotProveItselfIsRefused_data() {
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("authority");
        QTest::addColumn<QString>("mode");
        QTest::newRow("another authority") << "localhost"
                                           << "other.crt"
                                           << "verify-full";
        QTest::newRow("another authority, any name") << "localhost"
                                                     << "other.crt"
                                                     << "verify-ca";
        QTest::newRow("another name") << "orvo.example"
                                      << "right.crt"
                                      << "verify-full";
        QTest::newRow("no authority") << "localhost"
                                      << "missing.crt"
                                      << "verify-full";
    }

    void serverThatCannotProveItselfIsRefused() {
        QFETCH(QString, host);
        QFETCH(QString, authority);
        QFETCH(QString, mode);
        Status status;
        QVERIFY(!open(url("Sesam-open-77", host.toStdString(), authority, mode.toStdString()), {},
                      &status));
        QCOMPARE(status.code, int(CannotConnect));
        QVERIFY2(QString::fromStdString(status.text).contains("certificate"), status.text.c_str());
        QVERIFY2(status.text.find("Sesam") == std::string::npos, status.text.c_str());
        QVERIFY2(status.text.find('\n') == std::string::npos, status.text.c_str());
    }

    void wrongPasswordIsNotShown() {
        Status status;
        QVERIFY(!open(url("Sesam-shut-88", "localhost", "right.crt"), {}, &status));
        QCOMPARE(status.code, int(BadLogin));
        QVERIFY2(status.text.find("Sesam") == std::string::npos, status.text.c_str());
    }

    void serverWithoutEncryptionIsRefused() {
        QVERIFY(restart(false));
        Status status;
        QVERIFY(!open(url("Sesam-open-77", "localhost", "right.crt"), {}, &status));
        QCOMPARE(status.code, int(CannotConnect));
        QVERIFY2(status.text.find("SSL") != std::string::npos, status.text.c_str());
        QVERIFY2(status.text.find("Sesam") == std::string::npos, status.text.c_str());
        // It is the encryption that was missing.
        const auto store =
            open(url("Sesam-open-77", "localhost", "right.crt", "prefer"), {}, &status);
        QVERIFY2(store, status.text.c_str());
    }

private:
    /// A certificate that vouches for itself as `localhost`: NAME.crt and NAME.key.
    bool makeCertificate(const QString& name) const {
        const QString key = path(name + ".key");
        // The server takes no key but its user's own.
        return QProcess::execute("openssl", {"req", "-x509", "-newkey", "rsa:2048", "-nodes",
                                             "-days", "2", "-batch", "-subj", "/CN=localhost",
                                             "-addext", "subjectAltName=DNS:localhost", "-keyout",
                                             key, "-out", path(name + ".crt")}) == 0 &&
               QProcess::execute("chmod", {"600", key}) == 0 &&
               QProcess::execute("chown", {"--reference=" + m_cluster->data(), key}) == 0;
    }

    QString path(const QString& file) const { return m_cluster->directory() + '/' + file; }
    /// Starts the server anew, on m_port of this machine too.
    bool restart(bool encrypted) const {
        const QString options =
            QString("-c listen_addresses=127.0.0.1 -p %1 -c ssl=%2 -c ssl_cert_file=%3 "
                    "-c ssl_key_file=%4")
                .arg(m_port, encrypted ? "on" : "off", path("right.crt"), path("right.key"));
        return m_cluster->run("pg_ctl", {"restart", "-s", "-w", "-D", m_cluster->data(), "-o",
                                         options, "-l", m_cluster->data() + "/server.log"});
    }

    std::string url(const std::string& password, const std::string& host, const QString& authority,
                    const std::string& mode = "verify-full") const;

    std::unique_ptr<PostgresCluster> m_cluster;
    QString m_port;
};

std::string TestTls::url(const std::string& password, const std::string& host,
                         const QString& authority, const std::string& mode) const {
    return "postgresql://secretive:" + password + "@" + host + ":" + m_port.toStdString() +
           "/orvo?hostaddr=127.0.0.1&sslmode=" + mode +
           "&sslrootcert=" + path(authority).toStdString();
}

QTEST_MAIN(TestTls)
#include "tst_postgres_tls.moc"
