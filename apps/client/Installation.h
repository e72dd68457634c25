// Installation.h: what lies beside the program, in an installation and in a build directory alike.
#ifndef ORVO_APPS_CLIENT_INSTALLATION_H
#define ORVO_APPS_CLIENT_INSTALLATION_H

#include <QString>

namespace orvo::app::installation {

/// The directory of the module libraries. It need not be there; neither need the following.
QString moduleDirectory();
/// The program that shows files of forms.
QString formViewProgram();
/// The administrators' command; its package may not be installed.
QString adminProgram();
/// A page of the handbook, "user-guide.html".
QString handbookPage(const QString& page);

} // namespace orvo::app::installation

#endif
