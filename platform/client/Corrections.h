// Corrections.h: what a module is told when a request of its own will not be made any more.
#ifndef ORVO_PLATFORM_CLIENT_CORRECTIONS_H
#define ORVO_PLATFORM_CLIENT_CORRECTIONS_H

#include "platform/client/WriteRequest.h"

#include <vector>

namespace orvo::client {

/// The changes that put the rows of a module right which still show these records as they were to
/// be written: an update that brings no field has it show its own record again, and a record that
/// was to be made is made and deleted for that module alone, unless the store has one of that key.
/// None for other requests, and none if the store does not answer. They are no changes of the log:
/// their id is 0.
std::vector<store::Change> correctionsOf(const WriteRequest& request, store::Store& store);

} // namespace orvo::client

#endif
