// LogReading.h: answers the request of a module for the change log.
#ifndef ORVO_APPS_CLIENT_LOGREADING_H
#define ORVO_APPS_CLIENT_LOGREADING_H

#include "frame/Launch.h"
#include "platform/store/Store.h"

namespace orvo::app {

/// Fills the request; its refusal says why not, and is empty if all is well. A log that was pruned
/// is read from where it begins.
void readLastChanges(store::Store& store, LogRequest* request);

} // namespace orvo::app

#endif
