#include "apps/client/MirrorPaths.h"

#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/FolderTree.h"

#include <unordered_map>

namespace orvo::app {

namespace {

std::string textOf(const MDArray* array, const char* field, const MDRData* record) {
    uint32_t length = 0;
    const char* text = nullptr;
    if (MDRGetTextRef(MDRFldByName(array, field), record, &length, &text) != MDX_OK)
        return {};
    return mdx::toUtf8({text, length});
}

} // namespace

store::Status plainFolderPaths(store::Store& store, std::set<std::string>* paths) {
    CMDArray table;
    store::Status status = store.fetch(table::MenuResourceFolder, table.array);
    if (!status.ok())
        return status;
    std::vector<store::FolderRow> rows;
    for (uint32_t i = 0; i < mdx::postedCount(table.array); ++i) {
        const MDRData* record = mdx::postedRecord(table.array, i);
        int32_t kind = 0;
        MDRGetAsInt32(MDRFldByName(table.array, field::type_), record, &kind);
        if (kind == Kind::File)
            rows.push_back({textOf(table.array, field::KeyLink, record),
                            textOf(table.array, field::ParentKey, record),
                            textOf(table.array, field::caption, record)});
    }
    std::unordered_map<std::string, const store::FolderRow*> byKey;
    for (const store::FolderRow& row : rows)
        // A record with the key of a top row is nobody's parent: what names it hangs at the top.
        if (const std::string key = store::FolderTree::link(row.key); !key.empty())
            byKey[key] = &row;
    const store::FolderTree tree(rows, store::Area::Files);
    *paths = {std::string()};
    for (const store::FolderRow& row : rows) {
        const auto path = tree.path(row.key);
        if (!path)
            continue; // hangs on nothing, or on itself
        bool plain = true;
        const store::FolderRow* at = &row;
        while (at && plain) {
            plain = store::isPlainFileName(at->caption);
            const auto above = byKey.find(store::FolderTree::link(at->parent));
            at = above == byKey.end() ? nullptr : above->second;
        }
        if (plain)
            paths->insert(*path);
    }
    return {};
}

} // namespace orvo::app
