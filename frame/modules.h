// modules.h: what a module library exports. libOrvoMenu.so and libOrvoDesk.so export CppCliModule;
// a library of somebody else may export either function, or both.
//
// The client loads every libOrvo*.so of its directory of modules, and asks one library after the
// other, in the order of their names, until one knows the name.
#ifndef ORVO_FRAME_MODULES_H
#define ORVO_FRAME_MODULES_H

class COrvoCliApp;

/// What CppCliFunction came to.
enum OrvoFunctionResult : int {
    OrvoFunctionUnknown = 0, ///< the library has no function of that name; nothing was done
    OrvoFunctionDone = 1,
    OrvoFunctionFailed = 2, ///< why stands in the log (COrvoCliApp::log)
};

extern "C" {

/// Makes the module of that name (Windows-1251, without regard to case) and gives it as a
/// COrvoCliMod*; null for any other name, an empty one or null. `app` must outlive the module. The
/// module is the caller's from then on: the library keeps no pointer to it. No server is touched
/// yet.
__attribute__((visibility("default"))) void* CppCliModule(COrvoCliApp* app, const char* name);

/// Carries out the function of that name (Windows-1251, without regard to case), with the
/// parameters of the menu's element (Windows-1251, as they stand there; never null). Gives an
/// OrvoFunctionResult.
///
/// The host calls it in a process of its own, on the thread of a QApplication; `app` has a session
/// of its own there, without modules and without notifications. What a function does to that
/// process, a crash included, the client survives. Windows that it opens are served when it has
/// returned: the process ends with the last of them, or at once if there is none, and in any case
/// with the client.
__attribute__((visibility("default"))) int CppCliFunction(COrvoCliApp* app, const char* name,
                                                          const char* params);

/// Their types, for a host that finds them by name.
using CppCliModuleFunction = void* (*)(COrvoCliApp*, const char*);
using CppCliFunctionFunction = int (*)(COrvoCliApp*, const char*, const char*);
}

#endif
