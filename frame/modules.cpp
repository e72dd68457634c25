#include "frame/modules.h"

#include "frame/OrvoClient.h"
#include "frame/Records.h"
#include "menu/OrvoMenu.h"
#include "resources/OrvoResources.h"

#include <QString>

namespace {

COrvoCliMod* makeModule(COrvoCliApp* app, const QString& name) {
    if (orvo::sameText(name, QStringLiteral("Menu")))
        return new OrvoMenu(app); // owned by the caller
    if (orvo::sameText(name, QStringLiteral("Resources")))
        return new OrvoResources(app); // likewise
    return nullptr;
}

} // namespace

void* CppCliModule(COrvoCliApp* app, const char* name) {
    if (!name || !*name)
        return nullptr;
    return makeModule(app, orvo::fromRecord(name));
}
