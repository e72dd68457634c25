// What an inverse does about records that others have only moved into what goes: they are older
// than it, so they go back to where they stood.
#include "history/Planning.h"

#include "frame/Vocabulary.h"
#include "history/Cuts.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <climits>
#include <cstring>
#include <optional>
#include <utility>

namespace orvo::history {

/// Follows the record, and what it was cut from, back through the log.
store::Status Planning::formerPlaces(const store::TableDef& table, const Record& record,
                                     int64_t since, Former* former) {
    std::vector<int> fields;
    for (const store::ParentField& parent : store::parentFields(table))
        fields.push_back(table.find(parent.field));
    Values place;
    const auto goTo = [&](const Values& values) {
        bool went = false;
        for (const int field : fields)
            if (const auto found = values.find(field); found != values.end()) {
                went = went || !(place[field] == found->second);
                place[field] = found->second;
            }
        return went;
    };
    goTo(record.now);
    const auto goBack = [&](const store::Change& change) {
        if (!goTo(store::valuesFromJson(table, change.before)))
            return;
        former->places.push_back(place);
        if (!former->moving)
            former->moving = change;
    };
    std::string key = record.key;
    for (int64_t until = INT64_MAX; !key.empty();) {
        std::vector<store::Change> changes;
        if (store::Status status = m_store.changesSince(table, {std::exchange(key, {})},
                                                        m_standing.begin() - 1, &changes);
            !status.ok())
            return status;
        for (auto change = changes.rbegin(); change != changes.rend(); ++change) {
            if (change->id >= until)
                continue;
            if (change->code != OrvoEventInsert) {
                goBack(*change);
                continue;
            }
            if (std::next(change) != changes.rend())
                continue; // it was there before
            std::optional<store::Change> deletion;
            if (store::Status status = deletionByCut(m_store, *change, &deletion); !status.ok())
                return status;
            if (!deletion) {
                former->isOlder = change->id < since;
                return {};
            }
            goBack(*deletion);
            key = deletion->key;
            until = deletion->id;
        }
    }
    former->isOlder = true;
    return {};
}

/// Whether the record, which is stored, can stand in that place.
store::Status Planning::fits(const store::TableDef& table, Record& record, const Values& place,
                             bool* can) {
    *can = true;
    for (const store::ParentField& parent : store::parentFields(table)) {
        const int field = table.find(parent.field);
        const std::string key = store::foldedKey(store::textOf(place.at(field)));
        if (key.empty())
            continue; // so it was
        Placement placement{&table, &record, field, store::findTable(parent.table),
                            bondField(table, field)};
        std::optional<Remark::Why> whyNot;
        store::Status status =
            m_store.storedValues(*placement.above, {key}, &m_above[placement.above]);
        if (status.ok())
            status = canStand(placement, key, true, &whyNot);
        if (!status.ok())
            return status;
        const auto bond = place.find(placement.bond);
        *can = *can && !whyNot &&
               misfitOf(table, field, bond == place.end() ? bondOf(placement) : bond->second,
                        valuesThen(*placement.above, key)) == Misfit::None;
    }
    return {};
}

store::Status Planning::moveBack(const store::TableDef& table, Record& record, const Former& former,
                                 bool* moved) {
    *moved = false;
    for (const Values& place : former.places) {
        store::Status status = fits(table, record, place, moved);
        if (!status.ok())
            return status;
        if (!*moved)
            continue;
        for (const auto& [field, value] : place)
            if (!(record.now[field] == value))
                moveAlong(record, field, value);
        m_movedBack.push_back({&table, &record, *former.moving});
        const int desktop = table.find(field::FolderKey);
        if (std::strcmp(table.name, table::Menu) == 0 && record.values.count(desktop) != 0)
            return changeDesktop({record.key}, {record.key, &record, &record});
        return {};
    }
    return {};
}

store::Status Planning::clear(const store::TableDef& table, const std::vector<Inside>& inside,
                              std::vector<Inside>* staying, bool* changed) {
    std::vector<std::string> keys, deleted;
    for (const Inside& one : inside)
        keys.push_back(one.key);
    std::vector<Record*> records;
    store::Status status = planStored(table, keys, &records);
    for (size_t i = 0; i < records.size() && status.ok(); ++i) {
        int64_t since = m_standing.begin(); // of what only goes along as well
        for (const Event& event : inside[i].above->events)
            if (isConcerned(event) && !m_standing.isUndoing(event.change->group)) {
                since = event.change->id;
                break;
            }
        Former former;
        status = formerPlaces(table, *records[i], since, &former);
        bool moved = false;
        if (status.ok() && !former.isOlder) {
            deleted.push_back(keys[i]);
            m_along[records[i]] = {inside[i].above, inside[i].above->flag};
        }
        if (status.ok() && former.isOlder)
            status = moveBack(table, *records[i], former, &moved);
        if (status.ok() && former.isOlder && !moved)
            staying->push_back({keys[i], inside[i].above, records[i]});
    }
    if (!status.ok() || deleted.empty())
        return status;
    *changed = true;
    return deleteBelow(table, deleted);
}

void Planning::tellMovedBack() {
    for (const MovedBack& one : m_movedBack)
        if (one.record->flag == MDX_UPDATE)
            remark(Remark::MovedBack, *one.table, *one.record, -1, &one.moving);
}

} // namespace orvo::history
