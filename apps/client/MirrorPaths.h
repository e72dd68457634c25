// MirrorPaths.h: paths of the file area, and which of its folders have a place on the disk.
#ifndef ORVO_APPS_CLIENT_MIRRORPATHS_H
#define ORVO_APPS_CLIENT_MIRRORPATHS_H

#include "platform/store/FolderTree.h"
#include "platform/store/Store.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace orvo::app {

/// The text of a field as UTF-8; empty for NULL. The field exists, or it is NULL as well.
std::string fieldText(const MDArray* array, const char* field, const MDRData* record);
/// 0 for NULL.
int32_t fieldNumber(const MDArray* array, const char* field, const MDRData* record);

/// A path as a folder of the file area and a name in it, joined; the empty folder is the root.
std::string joinPath(const std::string& folder, const std::string& name);
/// The names of which a path is made.
std::vector<std::string> partsOf(const std::string& path);
/// Whether a folder is that of the icons, which the editors show at once, or within it.
bool isIcon(const std::string& folder);

/// The folders of the file area as they were when they were read.
class MirrorPaths {
public:
    store::Status read(store::Store& store);
    /// Whether the captions are plain file names all the way down; the root's "" is. A caption may
    /// hold the separator itself, so that a path alone does not tell: a folder "a/b" is not a
    /// folder "b" in a folder "a".
    bool isPlain(const std::string& path) const { return m_plain.count(path) != 0; }
    /// The path of a folder by its key, as links hold it; nothing for one that hangs on nothing, or
    /// on itself.
    std::optional<std::string> path(const std::string& key) const;

    /// Key and path of each folder that has a place in the area.
    const std::vector<std::pair<std::string, std::string>>& folders() const { return m_placed; }

private:
    std::vector<std::pair<std::string, std::string>> m_placed;
    std::set<std::string> m_plain{std::string()};
    store::FolderTree m_tree{{}, store::Area::Files};
};

} // namespace orvo::app

#endif
