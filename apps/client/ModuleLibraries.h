// ModuleLibraries.h: the libraries of modules and functions, loaded by name at run time.
#ifndef ORVO_APPS_CLIENT_MODULELIBRARIES_H
#define ORVO_APPS_CLIENT_MODULELIBRARIES_H

#include "frame/modules.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <vector>

class COrvoCliApp;
class COrvoCliMod;

namespace orvo::app {

/// Every libOrvo*.so of some directories, in the order of the directories and in each by name. A
/// library stays loaded until the process ends: the code of its modules is in it.
///
/// What a library does while it is loaded, or a module in the client, it does as the client. So a
/// directory that somebody names is only taken if nobody but its owner, who is this user or root,
/// may write it, a library of it, or a directory above it; the client's own directory is as safe as
/// the client itself.
class ModuleLibraries {
public:
    /// Loads those of the client's own directory and of further ones. A library that cannot be
    /// used, and a directory that is not to be trusted, is passed over and told in problems().
    void load(const QString& own, const QStringList& further);
    /// Whether no library was loaded.
    bool isEmpty() const { return m_libraries.empty(); }
    /// A line each.
    const QStringList& problems() const { return m_problems; }

    /// A new module, the caller's, of the first library that knows the name; null if none does.
    /// What a library throws counts as not knowing it.
    COrvoCliMod* create(COrvoCliApp* app, const QString& name) const;
    /// Whether a library knows the module. The first time a module is made and deleted for that.
    bool knows(COrvoCliApp* app, const QString& name);
    bool hasFunctions() const;
    /// Calls a function of the first library that knows the name. What it throws is its failure,
    /// and logged.
    OrvoFunctionResult call(COrvoCliApp* app, const QString& name, const QString& params) const;

private:
    struct Library {
        QString file;
        CppCliModuleFunction makeModule; ///< null: it has no modules
        CppCliFunctionFunction callFunction;
    };
    void loadDirectory(const QString& directory, bool isTrusted);
    void loadLibrary(const QString& file);

    std::vector<Library> m_libraries;
    QStringList m_problems;
    QHash<QString, bool> m_known; ///< names of modules, folded, that were asked for
};

} // namespace orvo::app

#endif
