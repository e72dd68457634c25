// SecretService.h: passwords of servers in the desktop's own store of secrets.
//
// An entry belongs to the address of a store without its password (store::StoreUrl::displayName).
// All calls wait for the service, which may ask the user to open it; windows are painted meanwhile
// and take no input. On the thread of the QApplication.
#ifndef ORVO_APPS_CLIENT_START_SECRETSERVICE_H
#define ORVO_APPS_CLIENT_START_SECRETSERVICE_H

#include <QString>

namespace orvo::app::secrets {

/// Whether this session has such a store, running or to be started by its bus.
bool areHere();
/// The password of that store; empty if there is none, or it may not be read, and for a file.
QString passwordOf(const QString& address);
/// Keeps it in place of the former one. False, with one line in `error`, if it is not kept.
bool keep(const QString& address, const QString& password, QString* error);
/// Nothing happens if there is none.
void forget(const QString& address);

} // namespace orvo::app::secrets

#endif
