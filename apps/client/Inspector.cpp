#include "apps/client/Inspector.h"

#include "apps/client/WidgetReport.h"

#include <QJsonDocument>
#include <QLocalSocket>

#include <utility>

namespace orvo::app {

namespace {

constexpr qint64 longestQuestion = 4096;

QJsonObject failure(const QString& text) {
    return {{QStringLiteral("error"), text}};
}

} // namespace

Inspector::Inspector(Sources sources, QObject* parent)
    : QObject(parent)
    , m_sources(std::move(sources)) {
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &Inspector::greet);
}

bool Inspector::listen(const QString& name, QString* error) {
    if (m_server.listen(name))
        return true;
    if (m_server.serverError() == QAbstractSocket::AddressInUseError) {
        constexpr int answerMs = 500;
        QLocalSocket other;
        other.connectToServer(name);
        if (!other.waitForConnected(answerMs)) {
            QLocalServer::removeServer(name);
            if (m_server.listen(name))
                return true;
        }
    }
    *error = QStringLiteral("Сокет %1 не открыт: %2").arg(name, m_server.errorString());
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
