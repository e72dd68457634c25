#include "platform/store/FolderTree.h"

#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <cassert>

namespace orvo::store {

namespace {

/// Folders nested deeper are in no place: paths grow with the depth, and a chain without end in
/// damaged data must not eat the memory.
constexpr int deepest = 500;

} // namespace

std::string FolderTree::link(std::string_view key) {
    std::string folded = foldedKey(key);
    // The rows at the top of the resource tree have no record, but a folder made under one of them
    // is saved with that row's key as its parent.
    static const std::string top[] = {foldedKey(rowkey::files), foldedKey(rowkey::resources)};
    if (folded == top[0] || folded == top[1])
        folded.clear();
    return folded;
}

FolderTree::FolderTree(std::vector<FolderRow> folders, Area area) : m_area(area) {
    std::unordered_map<std::string, std::vector<size_t>> byParent;
    m_nodes.reserve(folders.size());
    for (FolderRow& row : folders) {
        byParent[link(row.parent)].push_back(m_nodes.size());
        Node node;
        node.key = std::move(row.key);
        node.caption = std::move(row.caption);
        node.caption1251 = mdx::toCp1251(node.caption);
        m_nodes.push_back(std::move(node));
    }
    const auto before = [this](size_t a, size_t b) {
        const int order = mdx::compareText(m_nodes[a].caption1251, m_nodes[b].caption1251);
        return order != 0 ? order < 0 : foldedKey(m_nodes[a].key) < foldedKey(m_nodes[b].key);
    };
    for (auto& [parent, children] : byParent)
        std::sort(children.begin(), children.end(), before);
    m_roots = std::move(byParent[""]);
    if (area == Area::Forms) {
        std::stable_partition(m_roots.begin(), m_roots.end(), [this](size_t node) {
            return sameText(m_nodes[node].caption, topfolder::forms);
        });
    }

    // From the roots down: what stands in a circle is never reached.
    std::vector<std::pair<size_t, int>> open; // node, level
    for (const size_t root : m_roots)
        open.emplace_back(root, 0);
    while (!open.empty()) {
        const auto [number, level] = open.back();
        open.pop_back();
        Node& node = m_nodes[number];
        if (area == Area::Files && level == 0)
            node.path = node.caption;
        const std::string folded = foldedKey(node.key);
        if (!m_placed.emplace(folded, number).second)
            continue;
        const auto children = byParent.find(folded);
        if (folded.empty() || children == byParent.end() || level == deepest)
            continue;
        node.children = std::move(children->second);
        const bool counts = area == Area::Files || level > 0;
        for (const size_t child : node.children) {
            m_nodes[child].path =
                counts ? node.path + "/" + m_nodes[child].caption : m_nodes[child].caption;
            open.emplace_back(child, level + 1);
        }
    }
    assert(isSound());
}

bool FolderTree::isSound() const {
    std::vector<bool> isBelow(m_nodes.size());
    for (const size_t root : m_roots)
        isBelow[root] = true;
    for (size_t number = 0; number < m_nodes.size(); ++number) {
        const auto placed = m_placed.find(foldedKey(m_nodes[number].key));
        if (!m_nodes[number].children.empty() &&
            (placed == m_placed.end() || placed->second != number))
            return false; // 2
        for (const size_t child : m_nodes[number].children) {
            if (isBelow[child])
                return false; // 1
            isBelow[child] = true;
        }
    }
    return true;
}

std::vector<std::string> FolderTree::find(std::string_view path) const {
    std::vector<std::string> found;
    const std::string path1251 = mdx::toCp1251(path);
    if (m_area == Area::Files) {
        if (path.empty())
            found.emplace_back();
        else
            collectBelow(m_roots, path1251, &found);
        return found;
    }
    for (const size_t root : m_roots) {
        if (path.empty())
            found.push_back(m_nodes[root].key);
        else
            collectBelow(m_nodes[root].children, path1251, &found);
    }
    return found;
}

void FolderTree::collectBelow(const std::vector<size_t>& children, std::string_view rest,
                              std::vector<std::string>* found) const {
    for (const size_t child : children)
        collect(child, rest, found);
}

void FolderTree::collect(size_t node, std::string_view rest,
                         std::vector<std::string>* found) const {
    const std::string& caption = m_nodes[node].caption1251;
    if (rest.size() < caption.size() ||
        mdx::compareText(rest.substr(0, caption.size()), caption) != 0)
        return;
    rest.remove_prefix(caption.size());
    if (rest.empty())
        found->push_back(m_nodes[node].key);
    else if (rest.front() == '/')
        collectBelow(m_nodes[node].children, rest.substr(1), found);
}

std::optional<std::string> FolderTree::path(std::string_view key) const {
    const std::string folded = link(key);
    if (folded.empty() && m_area == Area::Files)
        return std::string();
    const auto node = m_placed.find(folded);
    if (node == m_placed.end())
        return std::nullopt;
    return m_nodes[node->second].path;
}

} // namespace orvo::store
