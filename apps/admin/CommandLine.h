// CommandLine.h: the command line of orvo-admin: the general options, then a verb of one or two
// words, then the verb's own options and arguments.
#ifndef ORVO_ADMIN_COMMANDLINE_H
#define ORVO_ADMIN_COMMANDLINE_H

#include <QStringList>

namespace orvo::admin {

/// Runs what the arguments ask for (the first is the program's name). Gives an Exit; throws Failure
/// for a line that makes no sense and whatever the verb throws.
int runCommandLine(const QStringList& arguments);

} // namespace orvo::admin

#endif
