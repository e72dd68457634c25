#include "platform/store/LinkCycles.h"

#include "frame/StdText.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <string_view>
#include <unordered_set>

namespace orvo::store {

int LinkCycles::parentField(const TableDef& table) {
    for (const ParentField& parent : parentFields(table))
        if (findTable(parent.table) == &table)
            return table.find(parent.field);
    return -1;
}

void LinkCycles::add(const Write& write) {
    static const std::string none;
    if (write.flag == MDX_DELETE)
        m_writes.emplace_back(&write, &none);
    for (const auto& [number, value] : write.values)
        if (number == m_field)
            m_writes.emplace_back(&write, &textOf(value));
}

/// Where all records are new, only those that others of them name can lie in a circle: often none
/// of a hundred thousand but a few folders. The way up from a stored one may lead to any of them.
void LinkCycles::takeLinks() {
    std::unordered_set<std::string_view> spelled; // many name the same
    std::unordered_set<std::string> named;
    bool areNew = true;
    for (const auto& [write, parent] : m_writes) {
        areNew = areNew && write->flag == MDX_INSERT;
        if (spelled.insert(*parent).second)
            named.insert(foldedKey(*parent));
    }
    for (const auto& [write, parent] : m_writes) {
        std::string key = foldedKey(write->key);
        if (!areNew || named.count(key) != 0)
            m_links[std::move(key)] = {foldedKey(*parent), write->key, write->flag};
    }
    m_writes.clear();
}

Status LinkCycles::check(const ParentOf& parentOf) {
    takeLinks();
    Sound sound;
    for (const auto& [key, link] : m_links) {
        if (link.parent.empty())
            continue;
        const Status status = checkOne(key, parentOf, &sound);
        if (!status.ok())
            return status;
    }
    return {};
}

Status LinkCycles::checkOne(const std::string& key, const ParentOf& parentOf, Sound* sound) const {
    const Link& own = m_links.at(key);
    const bool isNew = own.flag == MDX_INSERT;
    if (isNew && own.parent != key && m_links.count(own.parent) == 0)
        return {};
    std::string parent;
    if (!isNew) {
        const Status status = parentOf(key, &parent);
        if (!status.ok() || foldedKey(parent) == own.parent)
            return status;
    }
    std::unordered_set<std::string>& known = isNew ? sound->amongWrites : sound->upToRoot;
    if (known.count(own.parent) != 0)
        return {}; // of those below one folder only the first walks
    std::unordered_set<std::string> seen{key};
    std::string at = own.parent;
    while (!at.empty() && known.count(at) == 0) {
        if (at == key)
            return {Refused, StdText::tr("Таблица ") + shown(m_table.name) +
                                 StdText::tr(", запись ") + shown(own.key) +
                                 StdText::tr(": папка оказалась бы внутри самой себя")};
        if (!seen.insert(at).second)
            return {}; // a circle above, which this record is no part of
        const auto written = m_links.find(at);
        if (written != m_links.end()) {
            at = written->second.parent;
            continue;
        }
        if (isNew)
            break;
        const Status status = parentOf(at, &parent);
        if (!status.ok())
            return status;
        at = foldedKey(parent);
    }
    known.merge(seen);
    return {};
}

} // namespace orvo::store
