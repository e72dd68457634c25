// Locks.h: who has taken a form into work. A change that says so is no edit: it is neither taken
// back nor brought from one installation into another. The contents of a form are its holder's.
#ifndef ORVO_HISTORY_LOCKS_H
#define ORVO_HISTORY_LOCKS_H

#include "platform/store/Maintenance.h"

#include <map>
#include <string>
#include <vector>

namespace orvo::history {

/// Whether a field tells who holds the lock of a resource, or since when.
bool isLockField(const store::TableDef& table, int field);
/// Whether a change did nothing but take or release a lock.
bool isLockOnly(const store::Change& change);

struct FormLock {
    std::string key; ///< of the form, as it is spelled
    std::string login;
    double since = 0; ///< 0: nobody knows
};

/// Adds, by folded key, those of these resources that are forms held by another user than the one
/// who has opened the store. A lock of a user who is gone holds nothing.
store::Status heldByOthers(store::MaintainedStore& store, const std::vector<std::string>& resources,
                           std::map<std::string, FormLock>* held);

} // namespace orvo::history

#endif
