#include "apps/client/KnownModules.h"

#include "frame/Vocabulary.h"

#include <QSet>

namespace orvo::app {

namespace {

bool isOneForEachTable(const KnownModules& modules) {
    QSet<QString> seen;
    for (const KnownModule& module : modules)
        for (const char* table : module.tables) {
            if (seen.contains(QLatin1String(table)))
                return false;
            seen.insert(QLatin1String(table));
        }
    return true;
}

} // namespace

const KnownModules& knownModules() {
    static const KnownModules all{
        {QStringLiteral("Menu"), "OrvoMenu", "menu", {table::Menu, table::MenuFolder}},
        {QStringLiteral("Resources"),
         "OrvoResources",
         "resources",
         {table::MenuResource, table::MenuResourceFolder}},
    };
    return all;
}

QStringList moduleNames(const KnownModules& modules) {
    QStringList names;
    for (const KnownModule& module : modules)
        names << module.name;
    return names;
}

QString moduleNamed(const QString& asked) {
    for (const KnownModule& module : knownModules())
        if (module.name.compare(asked, Qt::CaseInsensitive) == 0)
            return module.name;
    return {};
}

QString moduleShowing(const QString& table, const KnownModules& modules) {
    Q_ASSERT(isOneForEachTable(modules)); // 1
    for (const KnownModule& module : modules)
        for (const char* own : module.tables)
            if (table == QLatin1String(own))
                return module.name;
    return {};
}

} // namespace orvo::app
