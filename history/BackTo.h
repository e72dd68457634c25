// BackTo.h: what is to be taken back to undo everything back to a place of the history.
#ifndef ORVO_HISTORY_BACKTO_H
#define ORVO_HISTORY_BACKTO_H

#include "history/Inverse.h"

#include <cstdint>

namespace orvo::history {

/// Finds the groups from the newest down to `group` that the scope lets pass, less those that take
/// back only such: the state before that group follows from taking back the rest. If the scope is a
/// record or a branch, only the records in it are to be taken back, whatever else the groups have
/// written. `group` is among them as well if the log does not tell of it any more.
store::Status collectBackTo(store::MaintainedStore& store, const Filter& scope, int64_t group,
                            Selection* selection);

} // namespace orvo::history

#endif
