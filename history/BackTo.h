// BackTo.h: what is to be taken back to undo everything back to a place of the history.
#ifndef ORVO_HISTORY_BACKTO_H
#define ORVO_HISTORY_BACKTO_H

#include "history/Reading.h"

#include <cstdint>
#include <vector>

namespace orvo::history {

/// Finds the groups from the newest down to `group` that the scope lets pass, less those that take
/// back only such: the state before that group follows from taking back the rest.
store::Status collectBackTo(store::MaintainedStore& store, const Filter& scope, int64_t group,
                            std::vector<int64_t>* groups);

} // namespace orvo::history

#endif
