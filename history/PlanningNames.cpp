// What an inverse does about names that must be the only ones in their place.
#include "history/Planning.h"

#include "frame/Vocabulary.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/NamePlaces.h"
#include "platform/store/Names.h"

#include <utility>

namespace orvo::history {

/// The records of a table that get a name in a place where they have not stood, by that place.
std::map<std::string, Planning::Record*>
Planning::newPlaces(const store::NamePlaces& names, Records& records,
                    std::map<std::string, std::string>* goesTo,
                    std::vector<std::pair<Record*, std::string>>* holders) {
    std::map<std::string, Record*> wanted;
    const auto age = [](const Record& record) {
        return record.events.empty() ? 0 : record.events.back().change->id;
    };
    for (auto& [key, record] : records) {
        if (record.flag == 0)
            continue;
        Values after = record.flag == MDX_UPDATE ? record.now : Values();
        for (const auto& [field, value] : record.values)
            after[field] = value;
        const std::string place = record.flag == MDX_DELETE ? std::string() : names.placeOf(after);
        goesTo->emplace(key, place);
        if (place.empty() || (record.present && names.placeOf(record.now) == place))
            continue;
        // Of two that would share a name the one has it that was changed last.
        Record*& first = wanted.try_emplace(place, &record).first->second;
        if (first == &record)
            continue;
        Record* const other = age(*first) < age(record) ? std::exchange(first, &record) : &record;
        holders->emplace_back(other, store::foldedKey(first->key));
    }
    return wanted;
}

store::Status Planning::leaveTaken(const store::TableDef& table, const store::NamePlaces& names,
                                   Record& record, const std::string& holder) {
    std::vector<store::Change> changes;
    store::Status status = m_store.changesSince(table, {holder}, m_standing.begin() - 1, &changes);
    const store::Change* naming = nullptr;
    for (const store::Change& change : changes) {
        const Values after = store::valuesFromJson(table, change.after);
        if (after.count(names.name()) != 0 || after.count(names.folder()) != 0)
            naming = &change;
    }
    const auto value = record.values.find(names.name());
    const std::string name =
        store::textOf(value != record.values.end() ? value->second : record.now[names.name()]);
    remark(Remark::NameTaken, table, record, record.flag == MDX_UPDATE ? names.name() : -1, naming);
    m_inverse.remarks.back().missing = name;
    if (record.flag == MDX_INSERT) {
        record.flag = 0;
        m_unplaced.insert(&record);
    } else {
        for (const auto& [moved, field] : m_movedAlong)
            if (moved == &record && field == names.folder())
                m_stayingBelow.insert(&record);
        for (const int field : {names.name(), names.folder(), names.kind()})
            record.values.erase(field);
        if (record.values.empty())
            record.flag = 0;
    }
    return status;
}

store::Status Planning::keepNamesApart(bool* changed) {
    *changed = false;
    if (m_alone && m_kept.empty())
        return {}; // they were apart, or not, before
    for (auto& [table, records] : m_records) {
        if (!store::NamePlaces::concern(*table))
            continue;
        const store::NamePlaces names(*table);
        std::map<std::string, std::string> goesTo;          // folded key to place; empty: deleted
        std::vector<std::pair<Record*, std::string>> taken; // with the folded key of the holder
        std::map<std::string, Record*> wanted = newPlaces(names, records, &goesTo, &taken);
        if (wanted.empty())
            continue;
        std::unordered_set<std::string> all; // only to find a free one among them
        store::Status status =
            m_store.namePlaces(*table, [&](const std::string& key, const std::string& place) {
                const auto own = goesTo.find(key);
                if (m_choices.otherNames)
                    all.insert(own == goesTo.end() ? place : own->second);
                if (own != goesTo.end() && own->second != place)
                    return; // it gives the name up
                const auto found = wanted.find(place);
                if (found == wanted.end() || store::foldedKey(found->second->key) == key)
                    return;
                taken.emplace_back(found->second, key);
                wanted.erase(found);
            });
        for (const auto& [place, record] : wanted)
            all.insert(place);
        for (const auto& [record, holder] : taken) {
            if (!status.ok())
                return status;
            if (m_choices.otherNames && store::NamePlaces::letRename(*table))
                giveFreeName(*table, names, *record, &all);
            else
                status = leaveTaken(*table, names, *record, holder);
            *changed = true;
        }
        if (!status.ok())
            return status;
    }
    if (*changed)
        m_fine.clear();
    return {};
}

void Planning::giveFreeName(const store::TableDef& table, const store::NamePlaces& names,
                            Record& record, std::unordered_set<std::string>* taken) {
    Values after = record.flag == MDX_UPDATE ? record.now : Values();
    for (const auto& [field, value] : record.values)
        after[field] = value;
    const std::string name = store::textOf(after[names.name()]);
    for (int number = 2;; ++number) {
        after[names.name()] = names.numbered(name, number);
        if (taken->insert(names.placeOf(after)).second)
            break;
    }
    const int caption = table.find(field::caption);
    if (caption >= 0 && caption != names.name() && store::textOf(after[caption]) == name)
        record.values[caption] = after[names.name()]; // else two are told by the same name
    record.values[names.name()] = after[names.name()];
    m_inverse.freeNames[{table.name, store::foldedKey(record.key)}] =
        store::textOf(after[names.name()]);
}

} // namespace orvo::history
