#include "apps/client/Instance.h"

#include "apps/client/KnownModules.h"
#include "platform/store/StoreUrl.h"

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QThread>
#include <QTimer>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvo::app {

namespace {

constexpr int connectMs = 3000; ///< the first may have the lock, but not listen yet
constexpr int answerMs = 5000;
constexpr int mostModules = 16;

/// A directory that nobody else can enter or has made; empty if there is none.
QString privateDirectory() {
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QString path = QDir::isAbsolutePath(runtime)
                             ? runtime + QStringLiteral("/orvo")
                             : QDir::tempPath() + QStringLiteral("/orvo-%1").arg(::geteuid());
    const QByteArray name = QFile::encodeName(path);
    struct stat found {};
    if (::mkdir(name.constData(), 0700) != 0 && errno != EEXIST)
        return {};
    if (::lstat(name.constData(), &found) != 0 || !S_ISDIR(found.st_mode) ||
        found.st_uid != ::geteuid() || (found.st_mode & 077) != 0)
        return {};
    return path;
}

/// The same for every way to write the same store.
QString placeOf(const Options& options) {
    QString place = options.store;
    store::StoreUrl url;
    if (url.parse(options.store.toStdString()).ok() && !url.file().empty())
        if (const QString file = QFileInfo(QString::fromStdString(url.file())).canonicalFilePath();
            !file.isEmpty())
            place = file;
    return place;
}

bool isOurs(const QLocalSocket& socket) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_PEERCRED, &peer,
                        &size) == 0 &&
           peer.uid == ::geteuid();
}

} // namespace

Instance::Instance(const Options& options, QObject* parent)
    : QObject(parent)
    , m_modules(options.askedModules) {
    const QString directory = privateDirectory();
    if (!directory.isEmpty()) {
        // No text of the address can be read from the name.
        const QString key = placeOf(options) + QLatin1Char('\n') + options.login +
                            QLatin1Char('\n') + options.workDir;
        m_path =
            directory + QLatin1Char('/') +
            QString::fromLatin1(QCryptographicHash::hash(key.toUtf8(), QCryptographicHash::Sha256)
                                    .toHex()
                                    .left(24));
    }
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    m_server.setMaxPendingConnections(4);
    connect(&m_server, &QLocalServer::newConnection, this, &Instance::greet);
}

Instance::~Instance() {
    m_server.close();
    if (m_lock >= 0)
        ::close(m_lock);
}

bool Instance::lock() {
    const QByteArray name = QFile::encodeName(m_path + QStringLiteral(".lock"));
    m_lock = ::open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (m_lock < 0 || ::flock(m_lock, LOCK_EX | LOCK_NB) == 0)
        return m_lock >= 0;
    ::close(m_lock);
    m_lock = -1;
    return false;
}

Instance::Role Instance::take(bool mayHandOver) {
    if (m_path.isEmpty())
        return Role::Alone;
    if (lock()) {
        QLocalServer::removeServer(socketPath()); // of a client that was killed
        return m_server.listen(socketPath()) ? Role::First : Role::Alone;
    }
    return mayHandOver && ask() ? Role::Further : Role::Alone;
}

bool Instance::ask() const {
    QElapsedTimer time;
    time.start();
    QLocalSocket socket;
    for (;;) {
        socket.connectToServer(socketPath());
        if (socket.waitForConnected(connectMs))
            break;
        if (time.elapsed() > connectMs)
            return false;
        QThread::msleep(50);
    }
    if (!isOurs(socket))
        return false;
    const QJsonObject request{{QStringLiteral("open"), QJsonArray::fromStringList(m_modules)}};
    socket.write(QJsonDocument(request).toJson(QJsonDocument::Compact) + '\n');
    time.restart();
    while (!socket.canReadLine())
        if (time.elapsed() > answerMs || !socket.waitForReadyRead(answerMs))
            return false;
    return socket.readLine(16) == "ok\n";
}

void Instance::greet() {
    while (QLocalSocket* socket = m_server.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        if (!isOurs(*socket)) {
            socket->abort();
            continue;
        }
        socket->setReadBufferSize(longestRequest);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { read(socket); });
        QTimer::singleShot(answerMs, socket, [socket] { socket->abort(); });
        read(socket);
    }
}

void Instance::read(QLocalSocket* socket) {
    if (!socket->canReadLine()) {
        if (socket->bytesAvailable() >= longestRequest)
            socket->abort();
        return;
    }
    const std::optional<QStringList> modules = parse(socket->readLine(longestRequest + 1));
    socket->write(modules ? "ok\n" : "no\n");
    socket->disconnectFromServer(); // once that is written
    if (modules)
        emit requested(*modules);
}

std::optional<QStringList> Instance::parse(const QByteArray& line) {
    const QJsonObject request = QJsonDocument::fromJson(line).object();
    const QJsonValue open = request.value(QStringLiteral("open"));
    if (request.size() != 1 || !open.isArray() || open.toArray().size() > mostModules)
        return {};
    QStringList modules;
    for (const QJsonValue& value : open.toArray()) {
        const QString name = moduleNamed(value.toString());
        if (name.isEmpty())
            return {};
        if (!modules.contains(name))
            modules << name;
    }
    return modules;
}

} // namespace orvo::app
