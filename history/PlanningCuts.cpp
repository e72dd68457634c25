// What an inverse does with a cut: it wrote anew what it took away, so others may have gone on with
// the new record. A cut goes back as a whole or stays: else there would be two of it.
#include "history/Planning.h"

#include "frame/Vocabulary.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <cstring>

namespace orvo::history {

namespace {

/// Where a record stands, which a cut changes.
bool isPlace(const store::TableDef& table, int field) {
    const auto is = [&](const char* name) {
        return std::strcmp(table.fields[static_cast<size_t>(field)].name, name) == 0;
    };
    return field == 0 || is(field::order_) || is(field::FolderKey) ||
           targetTable(table, field) != nullptr;
}

/// Without one it is NULL.
store::Value valueOf(const Values& values, int field) {
    const auto found = values.find(field);
    return found == values.end() ? store::Value() : found->second;
}

} // namespace

/// The record that is to come back and that the same action has written anew as `made`; null: none.
Planning::Record* Planning::cutFrom(const store::TableDef& table, const Record& made) {
    const auto making =
        std::find_if(made.events.begin(), made.events.end(), [&](const Event& event) {
            return isConcerned(event) && event.change->code == OrvoEventInsert;
        });
    if (making == made.events.end())
        return nullptr;
    const auto isTheSame = [&](Record& gone) {
        const bool together =
            std::any_of(gone.events.begin(), gone.events.end(), [&](const Event& event) {
                return event.change->group == making->change->group &&
                       event.change->code == OrvoEventDelete;
            });
        if (gone.flag != MDX_INSERT || !together)
            return false;
        for (int field = 0; field < static_cast<int>(table.fields.size()); ++field)
            if (!isPlace(table, field) &&
                !(valueOf(gone.values, field) == valueOf(making->after, field)))
                return false;
        return true;
    };
    for (auto& [key, gone] : m_records[&table])
        if (isTheSame(gone))
            return &gone;
    return nullptr;
}

void Planning::followCuts() {
    if (m_alone || !m_choices.othersWorkToo)
        return;
    for (auto& [table, records] : m_records)
        for (auto& [key, made] : records) {
            if (made.flag != MDX_DELETE || !made.builtOn)
                continue;
            Record* gone = cutFrom(*table, made);
            if (!gone)
                continue;
            for (const Event& event : made.events)
                if (counts(event) && !isConcerned(event))
                    for (const auto& [field, value] : event.after)
                        if (!isPlace(*table, field))
                            gone->values[field] = value;
        }
}

void Planning::keepCutsWhole(bool* changed) {
    std::set<int64_t> stuck;
    for (auto& [table, records] : m_records)
        for (auto& [key, made] : records)
            if (m_kept.count(&made) != 0 && cutFrom(*table, made))
                for (const Event& event : made.events)
                    if (isConcerned(event) && event.change->code == OrvoEventInsert)
                        stuck.insert(event.change->group);
    if (stuck.empty())
        return;
    for (auto& [table, records] : m_records)
        for (auto& [key, record] : records) {
            const bool isOfCut =
                std::any_of(record.events.begin(), record.events.end(), [&](const Event& event) {
                    return stuck.count(event.change->group) != 0;
                });
            if (!isOfCut || record.flag == 0)
                continue;
            if (record.flag == MDX_DELETE)
                m_kept.insert(&record);
            record.flag = 0;
            *changed = true;
        }
}

} // namespace orvo::history
