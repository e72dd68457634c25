// ResourceContents.h: the changes of the contents of a form or file, which the log has under keys
// of their own.
#ifndef ORVO_HISTORY_RESOURCECONTENTS_H
#define ORVO_HISTORY_RESOURCECONTENTS_H

#include "platform/store/Maintenance.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvo::history {

/// The changes after `above` of the contents that the form or file has or had, the newest first; of
/// any other record none. Deleted contents are known by the versions that are kept of them and by
/// the actions that made or deleted them together with their resource, or changed it. However long
/// the log is, it is asked for these keys and actions only.
store::Status contentChanges(store::MaintainedStore& store, const std::string& resource,
                             int64_t above, std::vector<store::Change>* changes);

} // namespace orvo::history

#endif
