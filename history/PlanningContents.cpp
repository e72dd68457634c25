// What an inverse does about the contents of forms and files.
#include "history/Planning.h"

#include "frame/Vocabulary.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <climits>

namespace orvo::history {

store::Status Planning::findUploadsInto(Records& resources) {
    if (std::none_of(resources.begin(), resources.end(),
                     [](const auto& entry) { return entry.second.flag == MDX_DELETE; }))
        return {};
    const store::TableDef& contents = store::contentTable();
    store::LogQuery query;
    query.table = contents.name;
    query.above = m_standing.begin() - 1;
    query.oldestFirst = true;
    std::vector<store::Change> changes;
    store::Status status = m_store.history(query, INT_MAX, &changes);
    std::vector<std::string> keys;
    keys.reserve(changes.size());
    for (const store::Change& change : changes)
        keys.push_back(change.key);
    std::map<std::string, std::vector<store::Value>> stored;
    if (status.ok())
        status = m_store.storedValues(contents, keys, &stored);
    m_changes.push_back(std::move(changes));
    const auto owner = static_cast<size_t>(contents.find(field::MenuResourceKey));
    for (const store::Change& change : m_changes.back()) {
        const auto content = stored.find(store::foldedKey(change.key));
        const Event event{&change, {}, {}};
        if (content == stored.end() || isConcerned(event) || !counts(event))
            continue;
        const auto resource =
            resources.find(store::foldedKey(store::textOf(content->second[owner])));
        if (resource == resources.end() || resource->second.flag != MDX_DELETE)
            continue;
        if (const Event* since = builtOnSince(resource->second);
            since && since->change->id < change.id)
            resource->second.builtOn = &change;
    }
    return status;
}

void Planning::keepOwnersOfUploads(bool* changed) {
    const store::TableDef& table = *store::findTable(table::MenuResource);
    Records& resources = m_records[&table];
    for (auto& [key, content] : m_records[&store::contentTable()]) {
        const auto upload =
            std::find_if(content.events.rbegin(), content.events.rend(), [&](const Event& event) {
                return isConcerned(event) && counts(event) && event.change->code != OrvoEventDelete;
            });
        const auto owner = resources.find(ownerKey(content));
        if (upload == content.events.rend() || owner == resources.end() ||
            owner->second.flag != MDX_DELETE)
            continue;
        remark(Remark::BuiltOn, table, owner->second, -1, upload->change);
        owner->second.flag = 0;
        m_kept.insert(&owner->second);
        content.presentThen = true; // what the action has made, it has put other bytes into
        if (content.flag == MDX_DELETE)
            content.flag = 0;
        *changed = true;
    }
}

store::Status Planning::ownerOf(const Record& content, Owner* owner) {
    *owner = Owner::Missing;
    const store::TableDef& resources = *store::findTable(table::MenuResource);
    const std::string key = ownerKey(content);
    if (key.empty())
        return {};
    if (const Record* resource = planned(resources, key)) {
        if (resource->flag == MDX_INSERT || (resource->present && resource->flag != MDX_DELETE))
            *owner = resource->present && !resource->presentThen ? Owner::Kept : Owner::There;
        return {};
    }
    std::map<std::string, std::vector<store::Value>> stored;
    store::Status status = m_store.storedValues(resources, {key}, &stored);
    if (!stored.empty())
        *owner = Owner::There;
    return status;
}

bool Planning::bytesOf(const Record& record, const std::map<int64_t, store::KeptVersion>& kept,
                       std::optional<store::KeptVersion>* version) const {
    const store::TableDef& contents = store::contentTable();
    const auto changesBytes = [&](const Event& event) {
        if (event.change->code != OrvoEventUpdate || kept.count(event.change->id) != 0)
            return true;
        // An upload of the same size and time changes no field.
        return event.change->id <= m_forgotten &&
               (event.after.empty() || event.after.count(contents.find(field::size)) != 0 ||
                event.after.count(contents.find(field::time)) != 0);
    };
    // What a change has left is what the next one took away.
    const Event* last = nullptr;
    for (const Event& event : record.events)
        if (counts(event) && changesBytes(event))
            last = &event;
    for (const Event& event : record.events) {
        if ((last && event.change->id <= last->change->id) || !changesBytes(event) ||
            event.change->code == OrvoEventInsert)
            continue;
        const auto found = kept.find(event.change->id);
        if (found == kept.end())
            return false;
        *version = found->second;
        return true;
    }
    return record.present;
}

/// A version of what is stored already is not written again: it would be kept once more, and a form
/// that is held be named for nothing.
store::Status Planning::forgetSameBytes(const Record& record,
                                        std::optional<store::KeptVersion>* version) {
    const auto size = record.now.find(store::contentTable().find(field::size));
    if (!*version || !record.present || size == record.now.end() ||
        size->second != store::Value(static_cast<int64_t>((*version)->size)))
        return {};
    bool same = false;
    store::Status status = m_store.hasBytesOf(record.key, (*version)->id, &same);
    if (status.code == store::Failed || status.code == store::UnknownName)
        return {}; // damaged, or pruned meanwhile: told where it is read
    if (same)
        version->reset();
    return status;
}

store::Status Planning::decideContents() {
    const store::TableDef& contents = store::contentTable();
    Records& records = m_records[&contents];
    if (records.empty())
        return {};
    store::VersionQuery query;
    query.contents.emplace();
    for (const auto& [key, record] : records)
        query.contents->push_back(key);
    std::vector<store::KeptVersion> versions; // the newest first: of an event the first one stays
    store::Status listed = m_store.versions(query, &versions);
    if (listed.ok())
        listed = m_store.versionsForgotten(&m_forgotten);
    if (!listed.ok())
        return listed;
    std::map<int64_t, store::KeptVersion> kept;
    for (store::KeptVersion& version : versions)
        kept[version.event] = std::move(version);
    const int size = contents.find(field::size);
    const int time = contents.find(field::time);
    for (auto& [key, record] : records) {
        Owner owner = Owner::There;
        if (record.flag == MDX_DELETE || !record.present)
            if (store::Status asked = ownerOf(record, &owner); !asked.ok())
                return asked;
        if (record.flag == MDX_DELETE) {
            // It goes, or stays, with its resource.
            if (owner != Owner::There || remarkLocked(ownerKey(record)))
                record.flag = 0;
            continue;
        }
        if (!record.presentThen || (!record.present && record.flag != MDX_INSERT))
            continue;
        // They go with the bytes, unless these stay.
        const auto touched = record.values.find(time);
        const std::optional<store::Value> onlyTime =
            touched != record.values.end() && record.flag == MDX_UPDATE
                ? std::optional<store::Value>(touched->second)
                : std::nullopt;
        record.values.erase(size);
        record.values.erase(time);
        if (record.values.empty())
            record.flag = 0;
        if (owner == Owner::Missing) {
            record.flag = 0;
            continue;
        }
        std::optional<store::KeptVersion> version;
        const bool known = bytesOf(record, kept, &version);
        if (store::Status asked = forgetSameBytes(record, &version); !asked.ok())
            return asked;
        if (known && !version && onlyTime) {
            record.values[time] = *onlyTime;
            record.flag = MDX_UPDATE;
        }
        if (known && !version && record.flag == 0)
            continue;
        if (remarkLocked(ownerKey(record))) {
            record.flag = 0;
            continue;
        }
        if (known && !version)
            continue;
        Remark::Why why = Remark::NoBytes;
        bool whole = known;
        if (known) {
            store::Status read = m_store.versionBytes(version->id, nullptr);
            if (!read.ok() && read.code != store::Failed && read.code != store::UnknownName)
                return read;
            whole = read.ok();
            why = read.code == store::Failed ? Remark::DamagedBytes : Remark::NoBytes;
        }
        if (!whole) {
            remark(why, contents, record);
            if (!record.present)
                record.flag = 0;
            continue;
        }
        record.version = version->id;
        record.values[size] = static_cast<int64_t>(version->size);
        record.values[time] = version->fileTime ? store::Value(*version->fileTime) : store::Value();
        if (record.flag == 0)
            record.flag = record.present ? MDX_UPDATE : MDX_INSERT;
    }
    return {};
}

void Planning::echoResources() {
    const auto contents = m_records.find(&store::contentTable());
    if (contents == m_records.end())
        return;
    const store::TableDef& resources = *store::findTable(table::MenuResource);
    const int owner = store::contentTable().find(field::MenuResourceKey);
    std::set<std::string> echoed;
    store::TableWrites part;
    part.table = &resources;
    for (const auto& [key, content] : contents->second) {
        if (content.flag == 0)
            continue;
        // Under a lock that is taken meanwhile nothing is to change, either: the echo would meet
        // it.
        const Values& values = content.present ? content.now : content.values;
        const std::string resource = textAt(values, owner);
        const Record* other = planned(resources, store::foldedKey(resource));
        if (store::isKey(resource) && (!other || other->flag == 0) &&
            echoed.insert(store::foldedKey(resource)).second)
            part.writes.push_back({MDX_UPDATE, resource, {}});
    }
    if (!part.writes.empty())
        m_inverse.parts.push_back(std::move(part));
}

} // namespace orvo::history
