// What the library exports: one function that makes modules, one that carries out functions. Names
// come in Windows-1251, without regard to case; ours are ASCII.
#include "Clock.h"
#include "Functions.h"
#include "JournalEvents.h"

#include <frame/RecordText.h>
#include <frame/modules.h>

#include <strings.h>

extern "C" void* CppCliModule(COrvoCliApp* app, const char* name) {
    COrvoCliMod* module = nullptr; // the caller's
    if (name && strcasecmp(name, "JournalEvents") == 0)
        module = new JournalEvents(app);
    else if (name && strcasecmp(name, "TimeSync") == 0)
        module = new Clock(app);
    return module; // as a COrvoCliMod*, whatever it is besides
}

extern "C" int CppCliFunction(COrvoCliApp* app, const char* name, const char* params) {
    const QString parameters = orvo::fromRecord(params);
    if (strcasecmp(name, "HelpOpen") == 0)
        return openHelp(*app, parameters);
    if (strcasecmp(name, "CallDispatcher") == 0)
        return callDispatcher(*app, parameters);
    return OrvoFunctionUnknown;
}
