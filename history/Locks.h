// Locks.h: what a change says of who has taken a form into work. That is no edit: it is neither
// taken back nor brought from one installation into another.
#ifndef ORVO_HISTORY_LOCKS_H
#define ORVO_HISTORY_LOCKS_H

#include "platform/store/Maintenance.h"

namespace orvo::history {

/// Whether a field tells who holds the lock of a resource, or since when.
bool isLockField(const store::TableDef& table, int field);
/// Whether a change did nothing but take or release a lock.
bool isLockOnly(const store::Change& change);

} // namespace orvo::history

#endif
