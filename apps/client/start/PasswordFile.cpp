#include "apps/client/start/PasswordFile.h"

#include "frame/Text.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace orvo::app {

namespace {

QByteArray escaped(const QString& field) {
    QByteArray bytes = field.toUtf8();
    bytes.replace('\\', "\\\\");
    bytes.replace(':', "\\:");
    return bytes;
}

/// "host:port:database:user:", with which a line of that login begins.
QByteArray beginningOf(const ServerLogin& login) {
    QByteArray bytes;
    for (const QString& field : {login.host, login.port, login.database, login.user})
        bytes += escaped(field) + ':';
    return bytes;
}

} // namespace

QString passwordFile() {
    const QString named = qEnvironmentVariable("PGPASSFILE");
    return named.isEmpty() ? QDir::home().filePath(QStringLiteral(".pgpass")) : named;
}

QByteArray withPassword(const QByteArray& file, const ServerLogin& login, const QString& password) {
    const QByteArray beginning = beginningOf(login);
    QByteArray result = beginning + escaped(password) + '\n';
    QList<QByteArray> lines = file.split('\n');
    if (lines.last().isEmpty())
        lines.removeLast();
    for (const QByteArray& line : qAsConst(lines))
        if (!line.startsWith(beginning))
            result += line + '\n';
    return result;
}

bool keepPassword(const ServerLogin& login, const QString& password, QString* error) {
    const QString path = passwordFile();
    if (password.contains(QLatin1Char('\n')) || password.contains(QLatin1Char('\r'))) {
        *error = Text::tr("Пароль с переводом строки в файл %1 не записать.").arg(path);
        return false;
    }
    QFile old(path);
    QByteArray bytes;
    if (old.exists()) {
        if (!old.open(QIODevice::ReadOnly)) {
            *error = Text::tr("Файл паролей %1 не прочитан: %2").arg(path, old.errorString());
            return false;
        }
        bytes = old.readAll();
    }
    QSaveFile file(path);
    file.setDirectWriteFallback(false);
    if (!file.open(QIODevice::WriteOnly) ||
        !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner) ||
        file.write(withPassword(bytes, login, password)) < 0 || !file.commit()) {
        *error = Text::tr("Пароль не записан в %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

} // namespace orvo::app
