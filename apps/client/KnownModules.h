// KnownModules.h: the editors that the client opens by name. The words of --module, their
// completion, the tab for a record that somebody wants to see, and the chapters of the handbook
// follow from this list alone.
//
// 1. A table is shown by one editor at most; asserted in debug builds.
#ifndef ORVO_APPS_CLIENT_KNOWNMODULES_H
#define ORVO_APPS_CLIENT_KNOWNMODULES_H

#include <QString>
#include <QStringList>

#include <vector>

namespace orvo::app {

struct KnownModule {
    QString name;        ///< by which its library makes it
    const char* window;  ///< object name of its window
    const char* chapter; ///< of the handbook, for what has none of its own in the window
    std::vector<const char*> tables; ///< of which it has rows
};
using KnownModules = std::vector<KnownModule>;

/// In the order in which they are opened.
const KnownModules& knownModules();
/// Their names.
QStringList moduleNames(const KnownModules& modules = knownModules());
/// The name of the one that equals the word without regard to case; empty if none does.
QString moduleNamed(const QString& asked);
/// The name of the one that shows the records of a table; empty if none does.
QString moduleShowing(const QString& table, const KnownModules& modules = knownModules());

} // namespace orvo::app

#endif
