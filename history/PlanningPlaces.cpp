// Where what an inverse restores is to stand.
#include "history/Planning.h"

#include "frame/Vocabulary.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/LinkCycles.h"
#include "platform/store/Merge.h"
#include "platform/store/NamePlaces.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace orvo::history {

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
            links.push_back({table, nullptr, table->find(parent.field),
                             store::findTable(parent.table),
                             bondField(*table, table->find(parent.field))});
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
    const store::Write write{
        MDX_UPDATE, placement.record->key, {{placement.field, store::Value(key)}}};
    store::LinkCycles cycles(*placement.table);
    cycles.add(write);
    store::Status status = cycles.check(
        [&](const std::string& at, std::string* above) { return parentOf(placement, at, above); });
    if (status.code != store::Refused)
        return status;
    *whyNot = Remark::PlaceInside;
    return {};
}

Values Planning::valuesThen(const Record& record) {
    if (record.flag == MDX_INSERT)
        return record.values;
    Values values = record.now;
    for (const auto& [field, value] : record.values)
        values[field] = value;
    return values;
}

Values Planning::valuesThen(const store::TableDef& table, const std::string& key) {
    if (const Record* record = planned(table, key);
        record && (record->present || record->flag == MDX_INSERT))
        return valuesThen(*record);
    Values values;
    const auto& stored = m_above[&table];
    if (const auto row = stored.find(key); row != stored.end())
        for (size_t i = 0; i < row->second.size(); ++i)
            values[static_cast<int>(i)] = row->second[i];
    return values;
}

const store::Value& Planning::bondOf(const Placement& placement) {
    static const store::Value none;
    for (const Values* values : {&placement.record->values, &placement.record->now})
        if (const auto found = values->find(placement.bond); found != values->end())
            return found->second;
    return none;
}

/// The last change that the plan leaves and that has made the one unfit for the other; null: it was
/// so before.
store::Status Planning::misfitSince(const Placement& placement, const std::string& key,
                                    Misfit misfit, const store::Change** since) {
    const int field = decisiveField(*placement.above, misfit);
    const auto [known, fresh] = m_decisive.try_emplace({placement.above, field, key});
    if (fresh) {
        std::vector<store::Change> changes;
        if (store::Status status =
                m_store.changesSince(*placement.above, {key}, m_standing.begin() - 1, &changes);
            !status.ok())
            return status;
        for (store::Change& change : changes)
            if (m_concerned.count(change.group) == 0 &&
                store::valuesFromJson(*placement.above, change.after).count(field) != 0)
                known->second = std::move(change);
    }
    *since = known->second ? &*known->second : nullptr;
    if (misfit == Misfit::Elsewhere)
        for (const Event& event : placement.record->events)
            if (counts(event) && !isConcerned(event) && event.after.count(placement.bond) != 0 &&
                (!*since || (*since)->id < event.change->id))
                *since = event.change;
    return {};
}

store::Status Planning::canHold(const Placement& placement, const std::string& key, bool isChosen,
                                std::optional<Remark::Why>* whyNot, const store::Change** since) {
    *since = nullptr;
    if (m_alone && m_kept.empty() && m_unplaced.empty())
        return {}; // all of it is as it was
    const Misfit misfit = misfitOf(*placement.table, placement.field, bondOf(placement),
                                   valuesThen(*placement.above, key));
    store::Status status;
    if (misfit != Misfit::None && !isChosen)
        status = misfitSince(placement, key, misfit, since);
    if (status.ok() && misfit != Misfit::None && (isChosen || *since))
        *whyNot = misfit == Misfit::NoFolder ? Remark::PlaceNoFolder : Remark::PlaceElsewhere;
    return status;
}

/// Below what a cut has written in place of the record that is missing, if it can stand there
/// without another desktop for all below it; else `cutTo` is empty, and `misfit` says what that has
/// become.
store::Status Planning::placeAfterCut(const Placement& placement, const std::string& missing,
                                      std::string* cutTo, Misfit* misfit) {
    store::Status status = whereCutTo(*placement.above, missing, cutTo);
    if (!status.ok() || cutTo->empty())
        return status;
    Record& record = *placement.record;
    const Record* const written = planned(*placement.above, *cutTo);
    std::optional<Remark::Why> whyNot;
    status = canStand(placement, *cutTo, true, &whyNot);
    if (status.ok() && !whyNot)
        *misfit = misfitOf(*placement.table, placement.field, bondOf(placement),
                           valuesThen(*placement.above, *cutTo));
    if (!status.ok() || whyNot || *misfit != Misfit::None)
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
    auto& fine = m_fine[{placement.table, placement.field}];
    const std::string missing = store::textOf(link->second);
    const auto asBefore = isRestored ? fine.find(missing) : fine.end();
    if ((asBefore != fine.end() && asBefore->second == bondOf(placement)) || !store::isKey(missing))
        return {};
    const std::string key = store::foldedKey(missing);
    std::optional<Remark::Why> whyNot, whyNotChosen;
    store::Status status = canStand(placement, key, false, &whyNot);
    const store::Change* culprit = nullptr;
    if (status.ok() && !whyNot)
        status = canHold(placement, key, false, &whyNot, &culprit);
    if (status.ok() && !whyNot && isRestored)
        fine[missing] = bondOf(placement);
    if (!status.ok() || !whyNot)
        return status;
    if (const auto chosen = m_choices.places.find(key); chosen != m_choices.places.end()) {
        if (!chosen->second.empty())
            status = canStand(placement, store::foldedKey(chosen->second), true, &whyNotChosen);
        else if (!canBeAtTop(*placement.table, placement.field, bondOf(placement)))
            whyNotChosen = Remark::NoPlace;
        const store::Change* none = nullptr;
        if (status.ok() && !whyNotChosen && !chosen->second.empty())
            status =
                canHold(placement, store::foldedKey(chosen->second), true, &whyNotChosen, &none);
        if (!status.ok())
            return status;
        if (!whyNotChosen) {
            link->second = chosen->second.empty() ? store::Value() : store::Value(chosen->second);
            return {};
        }
    }
    Misfit misfit = Misfit::None;
    if (whyNot == Remark::NoPlace) {
        std::string cutTo;
        status = placeAfterCut(placement, key, &cutTo, &misfit);
        if (!status.ok() || !cutTo.empty())
            return status;
    }
    if (whyNot == Remark::NoPlace) {
        status = deletionOf(*placement.above, key, &culprit);
        if (status.ok() && !culprit && isRestored && m_choices.places.empty())
            fine[missing] = bondOf(placement);
        if (!status.ok() || !culprit) // it has been an orphan before
            return status;
        if (misfit == Misfit::Elsewhere)
            whyNot = Remark::PlaceElsewhere;
    }
    if (m_unplaced.count(planned(*placement.above, key)) == 0) {
        remark(*whyNot, *placement.table, record, placement.field, culprit);
        m_inverse.remarks.back().missing = missing;
        m_inverse.remarks.back().whyNotChosen = whyNotChosen;
        if (whyNotChosen)
            m_inverse.remarks.back().chosen = m_choices.places.at(key);
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
                const bool isStored = record->flag == MDX_UPDATE;
                remark(Remark::NoResource, elements, *record, isStored ? link : -1, deletion);
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

void Planning::keepTopFolders() {
    const store::TableDef& folders = *store::findTable(table::MenuResourceFolder);
    const store::NamePlaces names(folders);
    for (auto& [key, record] : m_records[&folders]) {
        if (record.flag != MDX_UPDATE || !isTopFolder(folders, record.now) ||
            isTopFolder(folders, valuesThen(record)))
            continue;
        for (const int field : {names.name(), names.folder(), names.kind()}) {
            if (record.values.count(field) == 0)
                continue;
            remark(Remark::TopFolder, folders, record, field);
            record.values.erase(field);
        }
        if (record.values.empty())
            record.flag = 0;
    }
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
