// RecentStores.h: the stores that this user has opened last, kept in the client's settings.
//
// An entry is the address of a store without any password (store::StoreUrl::displayName). What the
// settings hold beside such addresses is passed over: somebody may have written there by hand.
#ifndef ORVO_APPS_CLIENT_START_RECENTSTORES_H
#define ORVO_APPS_CLIENT_START_RECENTSTORES_H

#include <QStringList>

namespace orvo::app {

constexpr int mostRecentStores = 10;

/// The newest first, each once.
QStringList recentStores();
/// Puts a store first. An address that cannot be read is not kept.
void rememberStore(const QString& address);
void forgetStore(const QString& address);

} // namespace orvo::app

#endif
