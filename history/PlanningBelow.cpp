// What an inverse does about what others have put below, or built on, what it would delete.
#include "history/Planning.h"

#include "frame/Vocabulary.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <optional>
#include <set>
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

store::Status Planning::planStored(const store::TableDef& table,
                                   const std::vector<std::string>& keys,
                                   std::vector<Record*>* records) {
    std::map<std::string, std::vector<store::Value>> stored;
    store::Status status = m_store.storedValues(table, keys, &stored);
    for (const std::string& key : keys) {
        const std::string folded = store::foldedKey(key);
        Record& record = m_records[&table][folded];
        record.key = key;
        record.present = true;
        if (const auto row = stored.find(folded); row != stored.end())
            for (size_t i = 0; i < row->second.size(); ++i)
                record.now[static_cast<int>(i)] = row->second[i];
        records->push_back(&record);
    }
    return status;
}

store::Status Planning::deleteBelow(const store::TableDef& table,
                                    const std::vector<std::string>& keys) {
    std::vector<Record*> records;
    store::Status status = planStored(table, keys, &records);
    const bool areForms = is(table.name, table::MenuResource);
    if (status.ok() && areForms)
        status = heldByOthers(m_store, keys, &m_locked);
    for (Record* record : records) {
        if (areForms && remarkLocked(store::foldedKey(record->key), Remark::Locked)) {
            m_kept.insert(record);
            continue;
        }
        record->flag = MDX_DELETE;
        record->values = {};
    }
    return status;
}

void Planning::moveAlong(Record& record, int field, store::Value value) {
    record.flag = MDX_UPDATE;
    record.values[field] = std::move(value);
    m_movedAlong.emplace_back(&record, field);
}

void Planning::forgetMovedAlong() {
    for (const auto& [record, field] : m_movedAlong) {
        record->values.erase(field);
        if (record->flag == MDX_UPDATE && record->values.empty())
            record->flag = 0;
    }
    m_movedAlong.clear();
    m_movedBack.clear();
}

store::Status Planning::moveAlong(const Link& link, const std::vector<Follower>& followers,
                                  bool* changed) {
    std::vector<std::string> keys;
    keys.reserve(followers.size());
    for (const Follower& one : followers)
        keys.push_back(one.key);
    std::vector<Record*> records;
    store::Status status = planStored(*link.below, keys, &records);
    for (size_t i = 0; i < records.size() && status.ok(); ++i)
        moveAlong(*records[i], link.field, store::Value(followers[i].origin->key));
    const store::TableDef* const above = targetTable(*link.below, link.field);
    for (size_t i = 0; above == link.below && i < records.size() && status.ok(); ++i) {
        std::optional<Remark::Why> whyNot;
        status = canStand({link.below, records[i], link.field, above},
                          store::foldedKey(followers[i].origin->key), true, &whyNot);
        if (whyNot) {
            m_stayingBelow.insert(records[i]);
            *changed = true;
        } else if (status.ok() && is(above->name, table::Menu)) {
            status = changeDesktop({followers[i].key}, followers[i]);
        }
    }
    return status;
}

/// Elements bear the desktop on which they stand, those within others too.
store::Status Planning::changeDesktop(const std::vector<std::string>& tops, const Follower& of) {
    const store::TableDef& elements = *store::findTable(table::Menu);
    const int desktop = elements.find(field::FolderKey);
    const auto keyIn = [&](const Values& values) {
        return store::foldedKey(textAt(values, desktop));
    };
    const std::string from = keyIn(of.made->now);
    if (from.empty() || keyIn(of.origin->values) == from)
        return {};
    std::vector<std::string> level = tops;
    std::set<std::string> seen;
    while (!level.empty()) {
        std::vector<std::string> fresh;
        for (const std::string& key : level)
            if (const Record* record = planned(elements, store::foldedKey(key));
                seen.insert(store::foldedKey(key)).second &&
                (!record || record->flag != MDX_DELETE))
                fresh.push_back(key);
        std::vector<Record*> records;
        if (store::Status status = planStored(elements, fresh, &records); !status.ok())
            return status;
        for (Record* record : records)
            if (keyIn(record->now) == from && record->values.count(desktop) == 0)
                moveAlong(*record, desktop, of.origin->values[desktop]);
        std::vector<std::pair<std::string, std::string>> below;
        if (store::Status status =
                m_store.keysNaming(elements, elements.find(field::parent), fresh, &below);
            !status.ok())
            return status;
        level.clear();
        for (auto& [key, named] : below)
            level.push_back(std::move(key));
    }
    return {};
}

/// Deals with the records that name some of those that are to be deleted, by one kind of link.
store::Status Planning::lookBelow(const store::TableDef& table, const Link& link,
                                  const std::vector<std::string>& deleted, bool* changed) {
    std::vector<std::pair<std::string, std::string>> children; // with what they name
    store::Status status = m_store.keysNaming(*link.below, link.field, deleted, &children);
    addPlanned(link, deleted, &children);
    std::map<std::string, int64_t> uploads;
    if (status.ok() && is(link.below->name, table::MenuResource))
        status = uploadsInto(wentAlong(link, children), &uploads);
    std::vector<Inside> deeper, older;
    std::vector<Follower> followers;
    std::vector<std::pair<Record*, std::string>> kept; // with the child that keeps it
    for (const auto& [child, named] : children) {
        Record& record = m_records[&table].at(store::foldedKey(named));
        const Record* const planned = this->planned(*link.below, store::foldedKey(child));
        const bool comes = planned && comesBelow(*planned, link.field, named);
        if (record.flag == 0 ||
            (planned && !comes &&
             (planned->flag == MDX_DELETE ||
              (planned->flag == MDX_UPDATE && planned->values.count(link.field) != 0))))
            continue;
        if (comes) { // taken back together they would leave it nowhere
            kept.emplace_back(&record, child);
            record.flag = 0;
            m_kept.insert(&record);
            *changed = true;
            continue;
        }
        const bool stays = m_stayingBelow.count(planned) != 0;
        if (Record* const origin = stays ? nullptr : cutFrom(record)) {
            followers.push_back({child, &record, origin});
            continue;
        }
        const int64_t went = wentAlong(planned, link.field);
        const auto upload = uploads.find(store::foldedKey(child));
        const bool goes = m_choices.othersWorkToo ||
                          (went > 0 && (upload == uploads.end() || upload->second < went));
        if (goes && link.places && !stays && m_kept.count(planned) == 0) {
            deeper.push_back({child, &record});
            continue;
        }
        if (m_alone) { // it was without that record before; if somebody had deleted it, knowingly
            const store::Change* deletion = nullptr;
            status = deletionOf(table, store::foldedKey(record.key), &deletion);
            if (!status.ok() || deletion)
                continue;
        }
        if (m_choices.othersWorkToo && !link.places) {
            remark(Remark::StillNamed, table, record, link.field);
            m_inverse.remarks.back().missing = child;
            m_inverse.remarks.back().namedBy = link.below;
        } else if (m_kept.count(planned) == 0) {
            kept.emplace_back(&record, child);
        }
        record.flag = 0;
        m_kept.insert(&record);
        *changed = true;
    }
    deeper.erase(std::remove_if(deeper.begin(), deeper.end(),
                                [](const Inside& one) { return one.above->flag == 0; }),
                 deeper.end()); // it stays, so what is in it does
    if (status.ok() && !deeper.empty())
        status = clear(*link.below, deeper, &older, changed);
    for (const Inside& one : older) {
        if (one.above->flag == 0)
            continue;
        if (m_alone) {
            const store::Change* deletion = nullptr;
            status = deletionOf(table, store::foldedKey(one.above->key), &deletion);
            if (!status.ok() || deletion)
                continue;
        }
        remark(Remark::OlderInside, *link.below, *one.inside, link.field);
        m_inverse.remarks.back().missing = one.above->key;
        one.above->flag = 0;
        m_kept.insert(one.above);
        *changed = true;
    }
    if (status.ok() && !followers.empty())
        status = moveAlong(link, followers, changed);
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
    for (const auto& [record, child] : kept) {
        remark(Remark::BuiltOn, table, *record, -1, newest[store::foldedKey(child)]);
        if (link.places)
            continue;
        m_inverse.remarks.back().missing = child;
        m_inverse.remarks.back().namedBy = link.below;
    }
    return status;
}

store::Status Planning::moveBranches() {
    const int desktop = store::findTable(table::Menu)->find(field::FolderKey);
    store::Status status;
    for (Record* record : m_branches)
        if (status.ok() && record->flag == MDX_UPDATE && record->values.count(desktop) != 0)
            status = changeDesktop({record->key}, {record->key, record, record});
    return status;
}

/// Leaves elements folders into which others have put elements.
store::Status Planning::keepFolders(bool* changed) {
    const store::TableDef& elements = *store::findTable(table::Menu);
    const auto planned = m_records.find(&elements);
    if (planned == m_records.end() || (m_alone && m_kept.empty()))
        return {};
    const int resource = elements.find(field::MenuResourceKey);
    const int parent = elements.find(field::parent);
    std::vector<std::string> leaves;
    for (const auto& [key, record] : planned->second)
        if (record.flag == MDX_UPDATE && !textAt(record.values, resource).empty() &&
            textAt(record.now, resource).empty())
            leaves.push_back(key);
    std::vector<std::pair<std::string, std::string>> inside, staying; // with the key above
    store::Status status;
    if (!leaves.empty())
        status = m_store.keysNaming(elements, parent, leaves, &inside);
    std::vector<std::string> keys;
    for (const auto& [child, named] : inside) {
        const Record* const record = this->planned(elements, store::foldedKey(child));
        if (record && (record->flag == MDX_DELETE ||
                       (record->flag == MDX_UPDATE && record->values.count(parent) != 0)))
            continue;
        staying.emplace_back(store::foldedKey(child), store::foldedKey(named));
        keys.push_back(child);
    }
    std::vector<store::Change> changes;
    if (status.ok() && !keys.empty())
        status = m_store.changesSince(elements, keys, m_standing.begin() - 1, &changes);
    std::map<std::string, const store::Change*> placing; // what was there before may stay
    for (const store::Change& change : changes)
        if (m_concerned.count(change.group) == 0 &&
            store::valuesFromJson(elements, change.after).count(parent) != 0)
            placing[store::foldedKey(change.key)] = &change;
    std::vector<Inside> inFolders, older;
    for (const auto& [child, key] : staying) {
        const auto since = placing.find(child);
        Record& record = planned->second.at(key);
        if (!status.ok() || since == placing.end() || record.values.count(resource) == 0)
            continue;
        const Record* const element = this->planned(elements, child);
        if ((m_choices.othersWorkToo || wentAlong(element, parent) > 0) &&
            m_kept.count(element) == 0) {
            inFolders.push_back({child, &record});
            continue;
        }
        *changed = true;
        remark(Remark::BuiltOn, elements, record, resource, since->second);
        record.values.erase(resource);
        if (record.values.empty())
            record.flag = 0;
    }
    if (status.ok() && !inFolders.empty())
        status = clear(elements, inFolders, &older, changed);
    for (const Inside& one : older) {
        if (one.above->values.count(resource) == 0)
            continue;
        one.above->values.erase(resource);
        remark(Remark::OlderInside, elements, *one.inside, parent);
        m_inverse.remarks.back().missing = one.above->key;
        if (one.above->values.empty())
            one.above->flag = 0;
        *changed = true;
    }
    return status;
}

/// What goes only because of what it stands in stays with that. Whether there was any.
bool Planning::keepAlong() {
    const store::TableDef& elements = *store::findTable(table::Menu);
    const int resource = elements.find(field::MenuResourceKey);
    bool any = false;
    for (const auto& [record, cause] : m_along) {
        const auto& [above, flag] = cause;
        const bool goes =
            above->flag == flag && (flag == MDX_DELETE || above->values.count(resource) != 0);
        if (goes || record->flag != MDX_DELETE)
            continue;
        record->flag = 0;
        any = true;
    }
    return any;
}

store::Status Planning::keepWhatIsBuiltOn(bool* changed) {
    const bool isAlone = m_alone && m_kept.empty();
    if (!isAlone && !std::exchange(m_foundUploads, true))
        if (store::Status uploads =
                findUploadsInto(m_records[store::findTable(table::MenuResource)]);
            !uploads.ok())
            return uploads;
    for (bool again = true; again;) {
        again = keepAlong();
        keepOwnersOfUploads(&again);
        forgetMovedAlong();
        // Deletions that are added join in the next round.
        std::map<const store::TableDef*, std::vector<std::string>> deleted;
        for (auto& [table, records] : m_records)
            for (auto& [key, record] : records) {
                if (record.flag != MDX_DELETE || table == &store::contentTable())
                    continue;
                if (isTopFolder(*table, record.now)) {
                    remark(Remark::TopFolder, *table, record);
                    record.flag = 0;
                    m_kept.insert(&record);
                    again = true;
                } else if (record.builtOn && !m_choices.othersWorkToo) {
                    remark(cutFrom(record) ? Remark::CutChanged : Remark::BuiltOn, *table, record,
                           -1, record.builtOn);
                    record.flag = 0;
                    m_kept.insert(&record);
                    again = true;
                } else {
                    deleted[table].push_back(record.key);
                }
            }
        const auto look = [&](bool placing) {
            store::Status status;
            for (const auto& [table, keys] : deleted)
                for (const Link& link : linksTo(*table))
                    if (status.ok() && link.places == placing)
                        status = lookBelow(*table, link, keys, &again);
            return status;
        };
        store::Status status = look(true);
        if (status.ok())
            status = moveBranches();
        if (status.ok())
            status = keepFolders(&again);
        if (status.ok() && !again) // what names a resource may go as well
            status = look(false);
        if (status.ok() && !again)
            status = keepUsedIcons(&again);
        if (!status.ok())
            return status;
        if (again || m_cutFrom.empty())
            continue;
        keepCutsWhole(&again);
        *changed = *changed || again; // what would have stood in them is placed anew
    }
    return {};
}

} // namespace orvo::history
