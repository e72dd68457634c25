// Overtaken.h: why a write is Outdated: what others have changed since it was planned, and who.
#ifndef ORVO_HISTORY_OVERTAKEN_H
#define ORVO_HISTORY_OVERTAKEN_H

#include "history/People.h"

#include <cstdint>
#include <vector>

namespace orvo::history {

/// The status of writing `parts`, which were made when the newest change was `seen`; of one that is
/// Outdated the text tells which of the records, or of those above and below them, was changed
/// since, that a name was taken, or that another action was taken back: by whom and when. As it was
/// if the log tells nothing of it.
store::Status tellWhoOvertook(store::MaintainedStore& store,
                              const std::vector<store::TableWrites>& parts, int64_t seen,
                              const PersonNames& names, const store::Status& status);
/// The same, with the names that the store has.
store::Status tellWhoOvertook(store::MaintainedStore& store,
                              const std::vector<store::TableWrites>& parts, int64_t seen,
                              const store::Status& status);

} // namespace orvo::history

#endif
