#include "apps/client/start/RecentStores.h"

#include "apps/client/WindowMemory.h"
#include "platform/store/StoreUrl.h"

#include <QSettings>

namespace orvo::app {

namespace {

constexpr char recentKey[] = "stores/recent";

/// Without any password; empty if it is no address.
QString readable(const QString& address) {
    store::StoreUrl url;
    return url.parse(address.toStdString()).ok() ? QString::fromStdString(url.displayName())
                                                 : QString();
}

} // namespace

QStringList recentStores() {
    QStringList all;
    for (const QString& entry : clientSettings().value(QLatin1String(recentKey)).toStringList()) {
        const QString address = readable(entry);
        if (!address.isEmpty() && !all.contains(address) && all.size() < mostRecentStores)
            all << address;
    }
    return all;
}

void rememberStore(const QString& address) {
    const QString entry = readable(address);
    if (entry.isEmpty())
        return;
    QStringList all = recentStores();
    all.removeAll(entry);
    all.prepend(entry);
    clientSettings().setValue(QLatin1String(recentKey), QStringList(all.mid(0, mostRecentStores)));
}

void forgetStore(const QString& address) {
    QStringList all = recentStores();
    if (all.removeAll(readable(address)) > 0)
        clientSettings().setValue(QLatin1String(recentKey), all);
}

} // namespace orvo::app
