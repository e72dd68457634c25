// PasswordFile.h: passwords of servers where every PostgreSQL program looks for them: in the file
// that PGPASSFILE names, else in ~/.pgpass. Nothing of them goes into a file of ours.
//
//   file = { line "\n" }
//   line = host ":" port ":" database ":" user ":" password | "#" comment | ""
//   In a field "\" stands before ":" and "\". The first line that fits is the one that counts.
#ifndef ORVO_APPS_CLIENT_START_PASSWORDFILE_H
#define ORVO_APPS_CLIENT_START_PASSWORDFILE_H

#include <QByteArray>
#include <QString>

namespace orvo::app {

/// Whose password it is. No field is empty.
struct ServerLogin {
    QString host, port, database, user;
};

QString passwordFile();
/// The bytes of the file with the password of that login in the first line, in place of what it had
/// for the same login; all other lines as they are.
QByteArray withPassword(const QByteArray& file, const ServerLogin& login, const QString& password);
/// Replaces the file, atomically, for its owner's eyes only. False, with one line in `error`
/// and the file as it was, if that fails or the password holds a line break, which no line can.
bool keepPassword(const ServerLogin& login, const QString& password, QString* error);

} // namespace orvo::app

#endif
