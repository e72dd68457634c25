// FunctionHost.h: the process in which one function of a module library is carried out. The client
// starts it as FunctionProcess.h tells.
#ifndef ORVO_APPS_CLIENT_FUNCTIONHOST_H
#define ORVO_APPS_CLIENT_FUNCTIONHOST_H

namespace orvo::app {

inline constexpr char functionHostMode[] = "--function-host";

/// Whether this process was started for that.
bool isFunctionHost(int argc, char** argv);
/// Reads what is to be done from standard input, does it, and serves the windows that came of it.
/// Needs the QApplication. Gives the exit code, a FunctionExit.
int runFunctionHost();

} // namespace orvo::app

#endif
