// What an inverse does about what others have put below, or built on, what it would delete.
#include "history/Planning.h"

#include "frame/Vocabulary.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <cstring>
#include <utility>

namespace orvo::history {

namespace {

bool is(const char* name, const char* other) {
    return std::strcmp(name, other) == 0;
}

} // namespace

std::vector<Planning::Link> Planning::linksTo(const store::TableDef& table) {
    std::vector<Link> links;
    for (const store::TableDef& below : store::tables()) {
        for (const store::ParentField& parent : store::parentFields(below))
            if (is(parent.table, table.name))
                links.push_back({&below, below.find(parent.field), true});
        if (is(table.name, table::MenuResource) && below.find(field::MenuResourceKey) >= 0)
            links.push_back({&below, below.find(field::MenuResourceKey), false});
    }
    return links;
}

store::Status Planning::deleteBelow(const store::TableDef& table,
                                    const std::vector<std::string>& keys) {
    std::map<std::string, std::vector<store::Value>> stored;
    store::Status status = m_store.storedValues(table, keys, &stored);
    for (const std::string& key : keys) {
        const std::string folded = store::foldedKey(key);
        Record& record = m_records[&table][folded];
        record.key = key;
        record.present = true;
        record.flag = MDX_DELETE;
        if (const auto row = stored.find(folded); row != stored.end())
            for (size_t i = 0; i < row->second.size(); ++i)
                record.now[static_cast<int>(i)] = row->second[i];
    }
    return status;
}

/// Deals with the records that name some of those that are to be deleted, by one kind of link.
store::Status Planning::lookBelow(const store::TableDef& table, const Link& link,
                                  const std::vector<std::string>& deleted, bool* changed) {
    std::vector<std::pair<std::string, std::string>> children; // with what they name
    store::Status status = m_store.keysNaming(*link.below, link.field, deleted, &children);
    std::vector<std::string> deeper;
    std::vector<std::pair<Record*, std::string>> kept; // with the child that keeps it
    for (const auto& [child, named] : children) {
        Record& record = m_records[&table].at(store::foldedKey(named));
        const Record* const planned = this->planned(*link.below, store::foldedKey(child));
        if (record.flag == 0 ||
            (planned && (planned->flag == MDX_DELETE ||
                         (planned->flag == MDX_UPDATE && planned->values.count(link.field) != 0))))
            continue;
        if (m_choices.othersWorkToo) {
            if (link.places)
                deeper.push_back(child);
            continue;
        }
        if (m_kept.count(planned) == 0)
            kept.emplace_back(&record, child);
        record.flag = 0;
        m_kept.insert(&record);
        *changed = true;
    }
    if (status.ok() && !deeper.empty()) {
        status = deleteBelow(*link.below, deeper);
        *changed = true;
    }
    if (!status.ok() || kept.empty())
        return status;
    std::vector<std::string> keys;
    keys.reserve(kept.size());
    for (const auto& [record, child] : kept)
        keys.push_back(child);
    std::vector<store::Change> changes;
    status = m_store.changesSince(*link.below, keys, 0, &changes);
    // Whose it is, is told by the last change that stands: not by whoever took it back or did it
    // again.
    std::map<std::string, const store::Change*> newest;
    for (const bool any : {true, false})
        for (const store::Change& change : changes)
            if (any || (m_standing.stands(change.group) && !m_standing.isUndoing(change.group)))
                newest[store::foldedKey(change.key)] = &change;
    for (const auto& [record, child] : kept)
        remark(Remark::BuiltOn, table, *record, -1, newest[store::foldedKey(child)]);
    return status;
}

store::Status Planning::keepWhatIsBuiltOn() {
    if (m_alone)
        return {}; // nobody has done anything since
    if (!std::exchange(m_foundUploads, true))
        if (store::Status uploads =
                findUploadsInto(m_records[store::findTable(table::MenuResource)]);
            !uploads.ok())
            return uploads;
    for (bool again = true; again;) {
        again = false;
        // Deletions that are added join in the next round.
        std::map<const store::TableDef*, std::vector<std::string>> deleted;
        for (auto& [table, records] : m_records)
            for (auto& [key, record] : records) {
                if (record.flag != MDX_DELETE || table == &store::contentTable())
                    continue;
                if (record.builtOn && !m_choices.othersWorkToo) {
                    remark(Remark::BuiltOn, *table, record, -1, record.builtOn);
                    record.flag = 0;
                    m_kept.insert(&record);
                    again = true;
                } else {
                    deleted[table].push_back(record.key);
                }
            }
        for (const auto& [table, keys] : deleted)
            for (const Link& link : linksTo(*table))
                if (store::Status status = lookBelow(*table, link, keys, &again); !status.ok())
                    return status;
        if (!again && !m_kept.empty())
            keepCutsWhole(&again);
    }
    return {};
}

} // namespace orvo::history
