// WaitPane.h: the pane that tells that the server does not answer, and lets the user give up. It is
// a process of its own: the client's thread waits, and can handle no click.
#ifndef ORVO_APPS_CLIENT_WAITPANE_H
#define ORVO_APPS_CLIENT_WAITPANE_H

#include <QRect>
#include <QString>
#include <QStringList>

namespace orvo::app {

/// The command line that shows the pane over a window at `over` (empty: anywhere).
QStringList waitPaneArguments(const QRect& over, const QString& store);
/// Whether a command line is such.
bool isWaitPane(int argc, char** argv);
/// Shows it; needs a QApplication. Writes a line to standard output when the user gives up, and
/// returns when standard input ends.
int runWaitPane(const QStringList& arguments);

} // namespace orvo::app

#endif
