// ServerPassword.h: the password that libpq finds in PGPASSWORD.
//
// A typed password is for the server it was typed for: it stands in the environment while that
// store is tried and worked with, and never while another one is. What the user's own environment
// held when the program began comes back then.
#ifndef ORVO_APPS_CLIENT_START_SERVERPASSWORD_H
#define ORVO_APPS_CLIENT_START_SERVERPASSWORD_H

#include <QProcessEnvironment>
#include <QString>

namespace orvo::app {

/// Before the first call of the others, on the thread that makes the QApplication and while no
/// other runs: what the environment holds now is the user's own.
void keepOwnPassword();

/// Whether that was one.
bool hasOwnPassword();
/// For the store that this process opens next. Empty: none was typed.
void offerPassword(const QString& typed);
/// The environment of another process that opens a store.
QProcessEnvironment environmentOffering(const QString& typed);

} // namespace orvo::app

#endif
