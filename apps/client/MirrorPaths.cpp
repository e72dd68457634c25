#include "apps/client/MirrorPaths.h"

#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvo::app {

std::string fieldText(const MDArray* array, const char* field, const MDRData* record) {
    uint32_t length = 0;
    const char* text = nullptr;
    if (MDRGetTextRef(MDRFldByName(array, field), record, &length, &text) != MDX_OK)
        return {};
    return mdx::toUtf8({text, length});
}

int32_t fieldNumber(const MDArray* array, const char* field, const MDRData* record) {
    int32_t value = 0;
    MDRGetAsInt32(MDRFldByName(array, field), record, &value);
    return value;
}

std::string joinPath(const std::string& folder, const std::string& name) {
    return folder.empty() ? name : folder + "/" + name;
}

std::vector<std::string> partsOf(const std::string& path) {
    std::vector<std::string> parts;
    size_t from = 0;
    while (from <= path.size()) {
        const size_t to = std::min(path.find('/', from), path.size());
        parts.push_back(path.substr(from, to - from));
        from = to + 1;
    }
    return parts;
}

bool isIcon(const std::string& folder) {
    constexpr std::string_view icons = iconFolder;
    return folder.starts_with(icons) &&
           (folder.size() == icons.size() || folder[icons.size()] == '/');
}

store::Status MirrorPaths::read(store::Store& store) {
    CMDArray table;
    store::Status status = store.fetch(table::MenuResourceFolder, table.array);
    if (!status.ok())
        return status;
    std::vector<store::FolderRow> rows;
    for (uint32_t i = 0; i < mdx::postedCount(table.array); ++i) {
        const MDRData* record = mdx::postedRecord(table.array, i);
        if (fieldNumber(table.array, field::type_, record) == Kind::File)
            rows.push_back({fieldText(table.array, field::KeyLink, record),
                            fieldText(table.array, field::ParentKey, record),
                            fieldText(table.array, field::caption, record)});
    }
    std::unordered_map<std::string, const store::FolderRow*> byKey;
    for (const store::FolderRow& row : rows)
        // A record with the key of a top row is nobody's parent: what names it hangs at the top.
        if (const std::string key = store::FolderTree::link(row.key); !key.empty())
            byKey[key] = &row;
    m_tree = store::FolderTree(rows, store::Area::Files);
    m_plain = {std::string()};
    m_placed.clear();
    for (const store::FolderRow& row : rows) {
        const auto path = m_tree.path(row.key);
        if (!path)
            continue; // hangs on nothing, or on itself
        m_placed.emplace_back(row.key, *path);
        bool plain = true;
        const store::FolderRow* at = &row;
        while (at && plain) {
            plain = store::isPlainFileName(at->caption);
            const auto above = byKey.find(store::FolderTree::link(at->parent));
            at = above == byKey.end() ? nullptr : above->second;
        }
        if (plain)
            m_plain.insert(*path);
    }
    return {};
}

std::optional<std::string> MirrorPaths::path(const std::string& key) const {
    return m_tree.path(key);
}

} // namespace orvo::app
