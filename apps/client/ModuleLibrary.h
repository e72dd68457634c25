// ModuleLibrary.h: the module library, loaded by name at run time.
#ifndef ORVO_APPS_CLIENT_MODULELIBRARY_H
#define ORVO_APPS_CLIENT_MODULELIBRARY_H

#include <QLibrary>
#include <QString>

class COrvoCliApp;
class COrvoCliMod;

namespace orvo::app {

class ModuleLibrary {
public:
    /// False, with one line in `error`, if the file is missing, cannot be loaded or has no
    /// CppCliModule. The library stays loaded until the process ends: its modules' code is in it.
    bool load(const QString& file, QString* error);

    /// A new module, the caller's; null if the library does not know the name.
    COrvoCliMod* create(COrvoCliApp* app, const QString& name) const;

private:
    using Factory = void* (*)(COrvoCliApp*, const char*);
    QLibrary m_library;
    Factory m_factory = nullptr;
};

} // namespace orvo::app

#endif
