// QuestionNotes.h: tells a standing question what others do to that which it is about.
#ifndef ORVO_PLATFORM_CLIENT_QUESTIONNOTES_H
#define ORVO_PLATFORM_CLIENT_QUESTIONNOTES_H

#include "frame/OrvoClient.h"
#include "platform/store/Store.h"

namespace orvo::client {

/// Adds to the question of that module, if one stands about the changed record or about the folder,
/// desktop or element that the record is in, what has been done, by whom and when. A question whose
/// every subject is gone, or into whose subject something was put, is withdrawn. For each change of
/// the log as it becomes known, long before the module is given it. GUI thread.
ORVOCLIENT_EXPORT void noteInQuestion(COrvoCliMod& module, const store::Change& change);

} // namespace orvo::client

#endif
