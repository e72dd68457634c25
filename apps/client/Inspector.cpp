#include "apps/client/Inspector.h"

#include "apps/client/WidgetReport.h"
#include "frame/Text.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QLocalSocket>

#include <sys/stat.h>
#include <utility>

namespace orvo::app {

namespace {

constexpr qint64 longestQuestion = 4096;

QJsonObject failure(const QString& text) {
    return {{QStringLiteral("error"), text}};
}

/// What stands where the socket is to be and must not be lost; empty if nothing does. The server
/// itself does not look: it makes its socket elsewhere and renames it over whatever is there.
QString inTheWay(const QString& name) {
    constexpr int answerMs = 500;
    const QString path = name.startsWith(QLatin1Char('/'))
                             ? name
                             : QDir::cleanPath(QDir::tempPath()) + QLatin1Char('/') + name;
    struct stat found {};
    if (::lstat(QFile::encodeName(path).constData(), &found) != 0)
        return {};
    if (!S_ISSOCK(found.st_mode))
        return Text::tr("уже есть файл с таким именем");
    QLocalSocket other;
    other.connectToServer(name);
    return other.waitForConnected(answerMs) ? Text::tr("он занят другой программой") : QString();
}

} // namespace

Inspector::Inspector(Sources sources, QObject* parent)
    : QObject(parent)
    , m_sources(std::move(sources)) {
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &Inspector::greet);
}

bool Inspector::listen(const QString& name, QString* error) {
    QString hindrance = inTheWay(name);
    if (hindrance.isEmpty()) {
        if (m_server.listen(name))
            return true;
        hindrance = m_server.errorString();
    }
    *error = Text::tr("Сокет %1 не открыт: %2").arg(name, hindrance);
    return false;
}

void Inspector::greet() {
    while (QLocalSocket* socket = m_server.nextPendingConnection()) {
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { read(socket); });
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    }
}

void Inspector::read(QLocalSocket* socket) {
    while (socket->canReadLine()) {
        const QString question = QString::fromUtf8(socket->readLine(longestQuestion)).trimmed();
        socket->write(QJsonDocument(answer(question)).toJson(QJsonDocument::Compact) + '\n');
    }
    if (socket->bytesAvailable() >= longestQuestion)
        socket->abort();
}

QJsonObject Inspector::answer(const QString& question) const {
    const QString verb = question.section(QLatin1Char(' '), 0, 0);
    const QString name = question.section(QLatin1Char(' '), 1);
    if (verb == QLatin1String("state"))
        return m_sources.state();
    if (verb == QLatin1String("windows"))
        return report::windows();
    if (name.isEmpty())
        return failure(QStringLiteral("unknown question, or a name is missing"));
    if (verb == QLatin1String("control"))
        return report::controls(name);
    if (verb == QLatin1String("tree")) {
        const QJsonObject tree = report::tree(name);
        return tree.isEmpty() ? failure(QStringLiteral("no such tree")) : tree;
    }
    if (verb == QLatin1String("table")) {
        for (QObject* module : m_sources.modules()) {
            QString text;
            if (module->metaObject()->indexOfMethod("tableText(QString)") >= 0 &&
                QMetaObject::invokeMethod(module, "tableText", Qt::DirectConnection,
                                          Q_RETURN_ARG(QString, text), Q_ARG(QString, name)) &&
                !text.isNull())
                return {{QStringLiteral("text"), text}};
        }
        return failure(QStringLiteral("no module has such a table"));
    }
    return failure(QStringLiteral("unknown question"));
}

} // namespace orvo::app
