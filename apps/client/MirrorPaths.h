// MirrorPaths.h: which folders of the file area have a place on the disk.
#ifndef ORVO_APPS_CLIENT_MIRRORPATHS_H
#define ORVO_APPS_CLIENT_MIRRORPATHS_H

#include "platform/store/Store.h"

#include <set>
#include <string>

namespace orvo::app {

/// Paths of the folders of the file area whose captions, all the way down, are plain file names;
/// the root's "" among them. A caption may hold the separator itself, so that a path alone does not
/// tell: a folder "a/b" is not a folder "b" in a folder "a".
store::Status plainFolderPaths(store::Store& store, std::set<std::string>* paths);

} // namespace orvo::app

#endif
