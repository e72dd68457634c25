// BaseFolders.h: the folders that the editors expect of every store.
#ifndef ORVO_ADMIN_VERBS_BASEFOLDERS_H
#define ORVO_ADMIN_VERBS_BASEFOLDERS_H

#include "platform/store/Store.h"

namespace orvo::admin {

/// Makes those of the top folders of modules, functions and forms, and the icon folder, that are
/// missing. Throws Failure.
void makeBaseFolders(store::Store& store);

} // namespace orvo::admin

#endif
