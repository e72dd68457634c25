// ReturnVersion.h: puts the bytes of a kept version back into their form or file.
#ifndef ORVO_HISTORY_RETURNVERSION_H
#define ORVO_HISTORY_RETURNVERSION_H

#include "history/Inverse.h"

namespace orvo::history {

/// As one action. `seen`: the log had this newest change when the version was chosen. Nothing is
/// written, and the text is a sentence for the user, if
///  - the bytes are no longer what they were (Failed) or not kept (UnknownName),
///  - another user has taken the form into work, or the form or file is gone (Refused),
///  - the content, or the record of its form or file, was changed after `seen` (Outdated).
store::Status returnVersion(store::MaintainedStore& store, int64_t id, int64_t seen,
                            const PersonNames& names);

} // namespace orvo::history

#endif
