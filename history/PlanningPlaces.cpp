// Where what an inverse restores is to stand.
#include "history/Planning.h"

#include "frame/Vocabulary.h"
#include "platform/store/LinkCycles.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace orvo::history {

const store::TableDef* targetTable(const store::TableDef& table, int field) {
    for (const store::ParentField& parent : store::parentFields(table))
        if (table.find(parent.field) == field)
            return store::findTable(parent.table);
    return nullptr;
}

const Planning::Record* Planning::planned(const store::TableDef& table,
                                          const std::string& key) const {
    const auto records = m_records.find(&table);
    if (records == m_records.end())
        return nullptr;
    const auto found = records->second.find(key);
    return found == records->second.end() ? nullptr : &found->second;
}

store::Status Planning::deletionOf(const store::TableDef& table, const std::string& key,
                                   const store::Change** deletion) {
    const auto [known, fresh] = m_deletions.try_emplace({&table, key});
    if (fresh) {
        std::vector<store::Change> changes;
        if (store::Status status = m_store.changesSince(table, {key}, 0, &changes); !status.ok())
            return status;
        for (store::Change& change : changes)
            if (change.code == OrvoEventDelete)
                known->second = std::move(change);
    }
    *deletion = known->second ? &*known->second : nullptr;
    return {};
}

std::vector<Planning::Placement> Planning::placements() {
    std::vector<Placement> found;
    for (auto& [table, records] : m_records) {
        std::vector<Placement> links;
        for (const store::ParentField& parent : store::parentFields(*table))
            links.push_back(
                {table, nullptr, table->find(parent.field), store::findTable(parent.table)});
        for (auto& [key, record] : records)
            if (record.flag == MDX_INSERT || record.flag == MDX_UPDATE)
                for (Placement& link : links)
                    if (record.values.count(link.field) != 0) {
                        link.record = &record;
                        found.push_back(link);
                    }
    }
    return found;
}

store::Status Planning::readAbove(const std::vector<Placement>& placements) {
    std::map<const store::TableDef*, std::set<std::string>> wanted;
    std::map<const store::TableDef*, std::unordered_set<std::string_view>> seen; // many to a folder
    for (const Placement& one : placements) {
        const std::string& text = store::textOf(one.record->values.at(one.field));
        if (!seen[one.above].insert(text).second)
            continue;
        const std::string key = store::foldedKey(text);
        wanted[one.above].insert(key);
        if (const auto place = m_choices.places.find(key); place != m_choices.places.end())
            wanted[one.above].insert(store::foldedKey(place->second));
    }
    store::Status status;
    for (const auto& [above, keys] : wanted)
        if (status.ok())
            status = m_store.storedValues(*above, {keys.begin(), keys.end()}, &m_above[above]);
    return status;
}

/// As LinkCycles wants to know it: of the record itself as it is, of the others as they will be.
store::Status Planning::parentOf(const Placement& of, const std::string& key, std::string* parent) {
    parent->clear();
    const Record* const record = planned(*of.table, key);
    if (record) {
        const bool moves = record != of.record && record->flag != 0;
        const Values& values =
            moves && record->values.count(of.field) != 0 ? record->values : record->now;
        if (const auto found = values.find(of.field);
            found != values.end() && record->flag != MDX_DELETE)
            *parent = store::textOf(found->second);
        return {};
    }
    auto& stored = m_above[of.table];
    if (stored.count(key) == 0)
        if (store::Status status = m_store.storedValues(*of.table, {key}, &stored); !status.ok())
            return status;
    if (const auto row = stored.find(key); row != stored.end())
        *parent = store::textOf(row->second[static_cast<size_t>(of.field)]);
    return {};
}

store::Status Planning::canStand(const Placement& placement, const std::string& key, bool isChosen,
                                 std::optional<Remark::Why>* whyNot) {
    const Record* const parent = planned(*placement.above, key);
    const bool isStored = m_above[placement.above].count(key) != 0;
    const bool willBe = parent && parent->flag == MDX_INSERT;
    if (!willBe && (!isStored || (parent && parent->flag == MDX_DELETE))) {
        *whyNot = Remark::NoPlace;
        return {};
    }
    whyNot->reset();
    // What is restored may name what names it: so it was.
    const bool wasSo = placement.record->flag == MDX_INSERT && !isChosen;
    if (placement.above != placement.table || wasSo)
        return {};
    store::LinkCycles cycles(*placement.table);
    cycles.add({MDX_UPDATE, placement.record->key, {{placement.field, store::Value(key)}}});
    store::Status status = cycles.check(
        [&](const std::string& at, std::string* above) { return parentOf(placement, at, above); });
    if (status.code != store::Refused)
        return status;
    *whyNot = Remark::PlaceInside;
    return {};
}

/// Below what a cut has written in place of the record that is missing, if it can stand there
/// without another desktop for all below it; else `cutTo` is empty.
store::Status Planning::placeAfterCut(const Placement& placement, const std::string& missing,
                                      std::string* cutTo) {
    store::Status status = whereCutTo(*placement.above, missing, cutTo);
    if (!status.ok() || cutTo->empty())
        return status;
    Record& record = *placement.record;
    const int desktop = placement.table->find(field::FolderKey);
    const Record* const written = planned(*placement.above, *cutTo);
    std::optional<Remark::Why> whyNot;
    status = canStand(placement, *cutTo, true, &whyNot);
    const auto valueOf = [&](const Values& values) {
        const auto found = values.find(desktop);
        return found == values.end() ? std::string()
                                     : store::foldedKey(store::textOf(found->second));
    };
    if (status.ok() && !whyNot && placement.above == placement.table && desktop >= 0) {
        const std::string own =
            valueOf(record.values.count(desktop) != 0 ? record.values : record.now);
        const auto& stored = m_above[placement.above];
        const auto row = stored.find(*cutTo);
        const std::string there =
            written && written->flag == MDX_INSERT
                ? valueOf(written->values)
                : store::foldedKey(store::textOf(row->second[static_cast<size_t>(desktop)]));
        if (own != there && !own.empty())
            whyNot = Remark::NoPlace;
    }
    if (!status.ok() || whyNot)
        cutTo->clear();
    else
        record.values[placement.field] = store::Value(
            written ? written->key : store::textOf(m_above[placement.above].at(*cutTo).front()));
    return status;
}

store::Status Planning::place(const Placement& placement, bool* changed) {
    Record& record = *placement.record;
    const auto link = record.values.find(placement.field);
    if (record.flag == 0 || link == record.values.end())
        return {};
    // Of a record that is restored where it was the key alone decides.
    const bool isRestored = record.flag == MDX_INSERT;
    auto& fine = m_fine[placement.above];
    const std::string missing = store::textOf(link->second);
    if ((isRestored && fine.count(missing) != 0) || !store::isKey(missing))
        return {};
    const std::string key = store::foldedKey(missing);
    std::optional<Remark::Why> whyNot, whyNotChosen;
    store::Status status = canStand(placement, key, false, &whyNot);
    if (status.ok() && !whyNot && isRestored)
        fine.insert(missing);
    if (!status.ok() || !whyNot)
        return status;
    if (const auto chosen = m_choices.places.find(key); chosen != m_choices.places.end()) {
        if (!chosen->second.empty())
            status = canStand(placement, store::foldedKey(chosen->second), true, &whyNotChosen);
        if (!status.ok())
            return status;
        if (!whyNotChosen) {
            link->second = chosen->second.empty() ? store::Value() : store::Value(chosen->second);
            return {};
        }
    }
    if (whyNot == Remark::NoPlace) {
        std::string cutTo;
        status = placeAfterCut(placement, key, &cutTo);
        if (!status.ok() || !cutTo.empty())
            return status;
    }
    const store::Change* deletion = nullptr;
    if (whyNot == Remark::NoPlace) {
        status = deletionOf(*placement.above, key, &deletion);
        if (status.ok() && !deletion && isRestored && m_choices.places.empty())
            fine.insert(missing);
        if (!status.ok() || !deletion) // it has been an orphan before
            return status;
    }
    if (m_unplaced.count(planned(*placement.above, key)) == 0) {
        remark(*whyNot, *placement.table, record, placement.field, deletion);
        m_inverse.remarks.back().missing = missing;
    }
    if (record.flag == MDX_INSERT) {
        record.flag = 0;
        m_unplaced.insert(&record);
    } else {
        record.values.erase(link);
        if (record.values.empty())
            record.flag = 0;
    }
    *changed = true;
    m_fine.clear();
    return {};
}

/// Leaves out the elements, or the links of elements, whose resource others have deleted since.
store::Status Planning::keepResources(bool* changed) {
    if (m_alone && m_kept.empty() && m_unplaced.empty())
        return {}; // what they name comes back as they do
    const store::TableDef& elements = *store::findTable(table::Menu);
    const store::TableDef& resources = *store::findTable(table::MenuResource);
    const int link = elements.find(field::MenuResourceKey);
    std::map<std::string, std::vector<Record*>> naming; // by folded key of the resource
    std::unordered_map<std::string_view, std::vector<Record*>*> spelled; // many name one
    for (auto& [key, record] : m_records[&elements]) {
        const auto value = record.values.find(link);
        if ((record.flag != MDX_INSERT && record.flag != MDX_UPDATE) ||
            value == record.values.end() || !store::isKey(store::textOf(value->second)))
            continue;
        const auto [found, fresh] = spelled.try_emplace(store::textOf(value->second), nullptr);
        if (fresh)
            found->second = &naming[store::foldedKey(store::textOf(value->second))];
        found->second->push_back(&record);
    }
    std::set<std::string> keys;
    for (const auto& [key, records] : naming)
        keys.insert(key);
    std::map<std::string, std::vector<store::Value>> stored;
    store::Status status;
    if (!keys.empty())
        status = m_store.storedValues(resources, {keys.begin(), keys.end()}, &stored);
    for (auto& [key, records] : naming) {
        const Record* const resource = planned(resources, key);
        const store::Change* deletion = nullptr;
        if (stored.count(key) != 0 || (resource && resource->flag == MDX_INSERT))
            continue;
        if (status.ok())
            status = deletionOf(resources, key, &deletion);
        if (!status.ok())
            return status;
        for (Record* record : records) {
            const auto first = std::find_if(record->events.begin(), record->events.end(),
                                            [&](const Event& event) { return isConcerned(event); });
            const bool wasSo =
                !deletion || first == record->events.end() ||
                (deletion->id < first->change->id && m_concerned.count(deletion->group) == 0);
            if (wasSo)
                continue;
            if (m_unplaced.count(resource) == 0) {
                remark(Remark::NoResource, elements, *record, link, deletion);
                m_inverse.remarks.back().missing = store::textOf(record->values[link]);
            }
            if (record->flag == MDX_INSERT) {
                m_unplaced.insert(record);
                record->flag = 0;
            } else {
                record->values.erase(link);
                if (record->values.empty())
                    record->flag = 0;
            }
            *changed = true;
        }
    }
    return status;
}

store::Status Planning::placeRestored() {
    forgetMovedAlong();
    bool changed = false;
    store::Status status = keepResources(&changed);
    const std::vector<Placement> all = placements();
    if (status.ok())
        status = readAbove(all);
    if (changed)
        m_fine.clear();
    for (bool again = true; again && status.ok();) { // what has no place is no place for others
        again = false;
        for (const Placement& one : all)
            if (status.ok())
                status = place(one, &again);
    }
    return status;
}

} // namespace orvo::history
