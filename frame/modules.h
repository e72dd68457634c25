// modules.h: the factory, the one function that libOrvoMenu.so exports.
#ifndef ORVO_FRAME_MODULES_H
#define ORVO_FRAME_MODULES_H

class COrvoCliApp;

extern "C" {

/// Makes the module of that name (Windows-1251; "Menu" or "Resources", without regard to case) and
/// gives it as a COrvoCliMod*; null for any other name, an empty one or null. `app` must outlive
/// the module. The module is the caller's from then on: the library keeps no pointer to it. No
/// server is touched yet.
__attribute__((visibility("default"))) void* CppCliModule(COrvoCliApp* app, const char* name);

/// The type of CppCliModule, for a host that finds it by name.
using CppCliModuleFunction = void* (*)(COrvoCliApp*, const char*);
}

#endif
