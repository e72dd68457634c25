// ResourceContents.h: the changes of the contents of a form or file, which the log has under keys
// of their own.
#ifndef ORVO_HISTORY_RESOURCECONTENTS_H
#define ORVO_HISTORY_RESOURCECONTENTS_H

#include "platform/store/Maintenance.h"

#include <cstdint>
#include <vector>

namespace orvo::history {

/// If the query is about the record of a form or file, by its key: the changes of the contents that
/// this has or had, by the login, in the time and after the number that the query wants, the newest
/// first. Deleted contents are known by the versions that are kept of them and by the actions that
/// made or deleted them together with their resource, or changed it. However long the log is, it is
/// asked for these keys and actions only.
store::Status contentChanges(store::MaintainedStore& store, const store::LogQuery& query,
                             std::vector<store::Change>* changes);
/// Puts those of them into a page of the log, the newest first, that stand between its changes:
/// below `below` (0: any), and above its end unless it is the last one.
void mergeContents(const std::vector<store::Change>& contents, int64_t below, bool isLast,
                   std::vector<store::Change>* page);

} // namespace orvo::history

#endif
