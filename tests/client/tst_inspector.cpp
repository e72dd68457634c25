// The socket that answers what stands on the screen: whose place it takes, and whose it does not.
#include "apps/client/Inspector.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>
#include <memory>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using orvo::app::Inspector;

namespace {

/// An inspector that answers "state" with a number.
struct Answering : Inspector {
    explicit Answering(int number)
        : Inspector({[number] {
                         return QJsonObject{{"number", number}};
                     },
                     [] { return std::vector<QObject*>(); }}) {}
};

/// What the program behind a socket says; -1 if nobody does.
int numberAt(const QString& name) {
    QLocalSocket socket;
    socket.connectToServer(name);
    if (!socket.waitForConnected(1000))
        return -1;
    socket.write("state\n");
    if (!QTest::qWaitFor([&] { return socket.canReadLine(); }, 5000))
        return -1;
    return QJsonDocument::fromJson(socket.readLine()).object()["number"].toInt(-1);
}

/// A socket file whose program has died.
bool leaveSocket(const QString& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(path);
    if (name.size() >= int(sizeof address.sun_path))
        return false;
    std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    const bool bound = ::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(fd);
    return bound;
}

} // namespace

class TestInspector : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        m_place = m_dir->filePath("socket");
    }

    void anInspectorAnswersThisUserOnly() {
        Answering inspector(1);
        QString error;
        QVERIFY2(inspector.listen(m_place, &error), qPrintable(error));
        QCOMPARE(numberAt(m_place), 1);
        struct stat found {};
        QCOMPARE(::stat(QFile::encodeName(m_place).constData(), &found), 0);
        QCOMPARE(found.st_mode & 077, mode_t(0));
    }

    void anInspectorTakesNoFilesPlace() {
        QFile file(m_place);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("precious");
        file.close();
        const QString link = m_dir->filePath("link");
        QVERIFY(QFile::link(m_dir->filePath("nowhere"), link));
        const QString folder = m_dir->filePath("folder");
        QVERIFY(QDir().mkpath(folder));
        for (const QString& place : {m_place, link, folder}) {
            Answering inspector(1);
            QString error;
            QVERIFY(!inspector.listen(place, &error));
            QVERIFY2(error.contains("уже есть файл"), qPrintable(error));
            QVERIFY(error.contains(place));
        }
        QVERIFY(QFileInfo(link).isSymLink());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("precious"));
    }

    void aFileOfThatNameAmongTheTemporaryOnesStaysToo() {
        QFile file(QDir::tempPath() + "/orvo-inspector-" +
                   QString::number(QCoreApplication::applicationPid()));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::NewOnly));
        file.write("precious");
        file.close();
        Answering inspector(1);
        QString error;
        const bool listens = inspector.listen(QFileInfo(file).fileName(), &error);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray content = file.readAll();
        file.remove();
        QVERIFY(!listens);
        QCOMPARE(content, QByteArray("precious"));
    }

    void aSecondInspectorLeavesTheFirstItsSocket() {
        Answering first(1);
        QString error;
        QVERIFY(first.listen(m_place, &error));
        {
            Answering second(2);
            QVERIFY(!second.listen(m_place, &error));
            QVERIFY2(error.contains("занят"), qPrintable(error));
            QCOMPARE(numberAt(m_place), 1);
        }
        QCOMPARE(numberAt(m_place), 1);
    }

    void whatADeadClientLeftIsTakenOver() {
        QVERIFY(leaveSocket(m_place));
        Answering inspector(1);
        QString error;
        QVERIFY2(inspector.listen(m_place, &error), qPrintable(error));
        QCOMPARE(numberAt(m_place), 1);
    }

    void aPlaceThatCannotBeIsNamed() {
        Answering inspector(1);
        QString error;
        QVERIFY(!inspector.listen(m_dir->filePath("none/socket"), &error));
        QVERIFY(error.contains("none/socket"));
        QVERIFY(!error.contains('\n'));
    }

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_place;
};

QTEST_MAIN(TestInspector)
#include "tst_inspector.moc"
