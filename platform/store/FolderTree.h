// FolderTree.h: the folders of stored forms or files, found by the captions on the way to them.
//
// Content belongs to its resource record and not to a path, so renaming or moving a folder loses
// nothing: a path is walked each time it is used.
#ifndef ORVO_PLATFORM_STORE_FOLDERTREE_H
#define ORVO_PLATFORM_STORE_FOLDERTREE_H

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvo::store {

struct FolderRow {
    std::string key, parent, caption; ///< UTF-8; an empty parent for NULL
};

enum class Area {
    Forms, ///< the first level does not count: "" is the folder "формы отображения"
    Files, ///< "" is the root, which has no record and the key ""
};

/// A snapshot of one area's folders. Folders that hang on nothing, or on each other in a circle,
/// are in no place of it.
///
/// Invariants, asserted in debug builds:
///  1. A folder is below one other at most, and no root is below any: each walk from a root ends.
///  2. Only folders that have a place have others below them.
class FolderTree {
public:
    FolderTree(std::vector<FolderRow> folders, Area area);

    /// Keys of the folders that the path names, the best first: captions compare without regard to
    /// case, and folders of equal captions follow each other in (caption, KeyLink) order. A caption
    /// may itself hold the separator "/".
    std::vector<std::string> find(std::string_view path) const;
    /// The path of the folder with that key (as links hold it), or nothing.
    std::optional<std::string> path(std::string_view key) const;
    /// A link to a folder as the tree knows it: folded, and "" for the root under any of its names.
    static std::string link(std::string_view key);

private:
    struct Node {
        std::string key, caption, caption1251, path;
        std::vector<size_t> children; ///< in (caption, KeyLink) order
    };
    /// 1 and 2.
    bool isSound() const;
    void collect(size_t node, std::string_view rest, std::vector<std::string>* found) const;
    void collectBelow(const std::vector<size_t>& children, std::string_view rest,
                      std::vector<std::string>* found) const;

    std::vector<Node> m_nodes;
    std::vector<size_t> m_roots;                      ///< where paths begin
    std::unordered_map<std::string, size_t> m_placed; ///< by folded key; only folders with a path
    Area m_area;
};

} // namespace orvo::store

#endif
