// Functions.h: the functions of the library. Each runs in a process of its own (frame/modules.h).
#ifndef SAMPLE_FUNCTIONS_H
#define SAMPLE_FUNCTIONS_H

#include <frame/OrvoClient.h>
#include <frame/modules.h>

/// Shows the operator's page of the handbook; "Раздел=name" at that chapter.
OrvoFunctionResult openHelp(COrvoCliApp& app, const QString& parameters);
/// Shows a window; the process lives until it is closed. "Линия=number".
OrvoFunctionResult callDispatcher(COrvoCliApp& app, const QString& parameters);

#endif
