// BaseFolders.h: the folders that the editors expect of every store.
#ifndef ORVO_ADMIN_VERBS_BASEFOLDERS_H
#define ORVO_ADMIN_VERBS_BASEFOLDERS_H

#include "platform/store/Maintenance.h"

#include <string>

namespace orvo::admin {

/// Makes those of the top folders of modules, functions and forms, and the icon folder, that are
/// missing. Throws Failure.
void makeBaseFolders(store::Store& store);

/// Names something in the store besides those folders, for a message; empty if there is nothing.
/// Users and extensions count only if `peopleToo`. Throws Failure.
std::string findWork(store::MaintainedStore& store, bool peopleToo);

} // namespace orvo::admin

#endif
