#include "apps/admin/Folders.h"

#include "apps/admin/Failure.h"
#include "apps/admin/Suggestion.h"
#include "frame/Kinds.h"
#include "frame/StdText.h"

namespace orvo::admin {

namespace {

/// A folder made under one of the fixed top rows of the tree is saved with that row's key.
bool isTopRow(const std::string& parent) {
    return parent.empty() || sameText(parent, rowkey::files) || sameText(parent, rowkey::resources);
}

std::string place(int kind, const std::string& parent, const std::string& caption) {
    return std::to_string(kind) + '\n' + (isTopRow(parent) ? std::string() : folded(parent)) +
           '\n' + folded(caption);
}

} // namespace

const char* topCaption(int kind) {
    const ResourceKind* known = resourceKind(kind);
    return known ? known->topFolder : nullptr;
}

std::string topKey(int kind) {
    return "0a00000000000000000000000000000" + std::to_string(kind);
}

std::string iconFolderKey() {
    return topKey(File);
}

std::vector<std::string> splitPath(const std::string& path) {
    std::vector<std::string> captions;
    for (size_t begin = 0; begin < path.size() || !captions.empty();) {
        const size_t end = std::min(path.find('/', begin), path.size());
        captions.push_back(path.substr(begin, end - begin));
        if (!store::isPlainFileName(captions.back()))
            throw Failure(StdText::tr("путь «") + path + StdText::tr("» не годится: «") +
                          captions.back() + StdText::tr("» не может быть именем папки"));
        requireStorable(captions.back(), StdText::tr("имя папки"));
        if (end == path.size())
            break;
        begin = end + 1;
    }
    return captions;
}

Folders::Folders(store::Store& store) {
    const Table table(store, table::MenuResourceFolder);
    for (int i = 0; i < table.count(); ++i) {
        const Row row = table.at(i);
        add(row.key(),
            {row.integer(field::type_), row.text(field::ParentKey), row.text(field::caption)});
    }
}

void Folders::add(const std::string& key, Folder folder) {
    m_byPlace.emplace(place(folder.kind, folder.parent, folder.caption), key);
    m_byKey.emplace(folded(key), std::move(folder));
}

std::optional<std::string> Folders::child(int kind, const std::string& parent,
                                          const std::string& caption) const {
    const auto found = m_byPlace.find(place(kind, parent, caption));
    return found == m_byPlace.end() ? std::nullopt : std::make_optional(found->second);
}

std::optional<std::string> Folders::find(int kind, const std::string& path) const {
    std::optional<std::string> key = std::string();
    if (const char* top = topCaption(kind))
        key = child(kind, {}, top);
    for (const std::string& caption : splitPath(path)) {
        if (!key)
            break;
        key = child(kind, *key, caption);
    }
    return key;
}

std::string Folders::need(int kind, const std::string& path, const std::string& advice) const {
    if (const auto key = find(kind, path))
        return *key;
    if (path.empty())
        throw Failure(StdText::tr("в хранилище нет папки «") + topCaption(kind) +
                      StdText::tr("»; её делает orvo-admin init"));
    std::vector<std::string> present;
    for (const auto& [folderKey, folder] : m_byKey)
        if (folder.kind == kind)
            if (const auto known = pathOf(folderKey); known && !known->empty())
                present.push_back(*known);
    throw Failure(StdText::tr("папки «") + path + StdText::tr("» нет") + suggestion(path, present) +
                  advice);
}

void Folders::make(store::Store& store, int kind, const std::string& path) {
    Batch batch(table::MenuResourceFolder);
    std::string parent;
    std::vector<std::string> captions = splitPath(path);
    const char* top = topCaption(kind);
    if (top)
        captions.insert(captions.begin(), top);
    for (size_t level = 0; level < captions.size(); ++level) {
        std::string key = child(kind, parent, captions[level]).value_or(std::string());
        if (key.empty()) {
            key = top && level == 0 ? topKey(kind) : newKey();
            batch.insert(key).text(field::ParentKey, parent).integer(field::type_, kind);
            batch.text(field::caption, captions[level]);
            add(key, {kind, parent, captions[level]});
        }
        parent = key;
    }
    batch.send(store, StdText::tr("папка «") + path + StdText::tr("» не сделана"));
}

std::optional<std::string> Folders::pathOf(const std::string& key) const {
    std::string path;
    std::string at = key;
    // A chain longer than there are folders is a cycle.
    for (size_t steps = 0; steps <= m_byKey.size(); ++steps) {
        if (isTopRow(at))
            return path;
        const auto found = m_byKey.find(folded(at));
        if (found == m_byKey.end())
            return std::nullopt;
        const Folder& folder = found->second;
        const char* top = topCaption(folder.kind);
        if (!(isTopRow(folder.parent) && top && sameText(folder.caption, top)))
            path = path.empty() ? folder.caption : folder.caption + "/" + path;
        at = folder.parent;
    }
    return std::nullopt;
}

} // namespace orvo::admin
