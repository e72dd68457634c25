#include "apps/client/start/SecretService.h"

#include "apps/client/Look.h"
#include "frame/Text.h"
#include "platform/store/StoreUrl.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QEventLoop>

#include <keychain.h>

namespace orvo::app::secrets {

namespace {

/// Of whom the entry says that it is his.
const QString owner = QStringLiteral("Orvo");

/// Empty for what is no server's address.
QString entryOf(const QString& address) {
    store::StoreUrl url;
    if (!url.parse(address.toStdString()).ok() || !url.file().empty())
        return {};
    return QString::fromStdString(url.displayName());
}

void finish(QKeychain::Job& job, const QString& entry) {
    QEventLoop loop;
    QObject::connect(&job, &QKeychain::Job::finished, &loop, &QEventLoop::quit);
    job.setAutoDelete(false);
    job.setKey(entry);
    job.start();
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

QString wordsOf(const QKeychain::Job& job) {
    switch (job.error()) {
    case QKeychain::AccessDeniedByUser:
    case QKeychain::AccessDenied:
        return Text::tr("Хранилище паролей рабочего стола не открыто.");
    case QKeychain::NoBackendAvailable:
        return Text::tr("Хранилища паролей в этом сеансе нет.");
    default:
        return Text::tr("Хранилище паролей рабочего стола не приняло пароль: %1")
            .arg(oneLine(job.errorString()));
    }
}

} // namespace

bool areHere() {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    const QDBusConnectionInterface* interface = bus.interface();
    if (!interface)
        return false;
    const QStringList running = interface->registeredServiceNames();
    const QStringList startable = interface->activatableServiceNames();
    for (const char* name : {"org.freedesktop.secrets", "org.kde.kwalletd5", "org.kde.kwalletd6"})
        if (running.contains(QLatin1String(name)) || startable.contains(QLatin1String(name)))
            return true;
    return false;
}

QString passwordOf(const QString& address) {
    const QString entry = entryOf(address);
    if (entry.isEmpty() || !areHere())
        return {};
    QKeychain::ReadPasswordJob job(owner);
    finish(job, entry);
    return job.error() == QKeychain::NoError ? job.textData() : QString();
}

bool keep(const QString& address, const QString& password, QString* error) {
    const QString entry = entryOf(address);
    if (entry.isEmpty()) {
        *error = Text::tr("Это не адрес сервера: %1").arg(address);
        return false;
    }
    QKeychain::WritePasswordJob job(owner);
    job.setTextData(password);
    finish(job, entry);
    if (job.error() == QKeychain::NoError)
        return true;
    *error = wordsOf(job);
    return false;
}

void forget(const QString& address) {
    const QString entry = entryOf(address);
    if (entry.isEmpty() || !areHere())
        return;
    QKeychain::DeletePasswordJob job(owner);
    finish(job, entry);
}

} // namespace orvo::app::secrets
