// The one function that libOrvoDesk.so exports.
#include "frame/modules.h"

#include "desk/OrvoDesktop.h"
#include "frame/Records.h"

void* CppCliModule(COrvoCliApp* app, const char* name) {
    if (!name || !orvo::sameText(orvo::fromRecord(name), QStringLiteral("Desktop")))
        return nullptr;
    return static_cast<COrvoCliMod*>(new OrvoDesktop(app)); // owned by the caller
}
