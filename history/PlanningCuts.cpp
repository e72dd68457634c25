// What an inverse does with a cut: it wrote anew what it took away, so others may have gone on with
// the new record, or have taken it away. A cut goes back as a whole or stays: else there would be
// two of it, or somebody's deletion would be taken back unasked.
#include "history/Planning.h"

#include "frame/Vocabulary.h"
#include "history/Cuts.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace orvo::history {

/// A cut is known by what its action has deleted and written again with the same content, however
/// the two have been changed since; of those that are alike the first belongs to the first.
void Planning::findCuts() {
    struct Half {
        const Event* event;
        Record* record;
    };
    const auto byTime = [](const Half& a, const Half& b) {
        return a.event->change->id < b.event->change->id;
    };
    for (auto& [table, records] : m_records) {
        if (table == &store::contentTable())
            continue;
        std::set<int64_t> making;
        std::vector<Half> made, gone;
        for (auto& [key, record] : records)
            for (const Event& event : record.events)
                if (isConcerned(event) && event.change->code == OrvoEventInsert) {
                    making.insert(event.change->group);
                    made.push_back({&event, &record});
                }
        if (made.empty())
            continue;
        for (auto& [key, record] : records)
            for (const Event& event : record.events)
                if (event.change->code == OrvoEventDelete && making.count(event.change->group) != 0)
                    gone.push_back({&event, &record});
        if (gone.empty())
            continue;
        std::sort(made.begin(), made.end(), byTime);
        std::sort(gone.begin(), gone.end(), byTime);
        std::map<std::pair<int64_t, std::string>, std::deque<Record*>> byContent;
        for (const Half& half : gone)
            byContent[{half.event->change->group, deletedContent(*table, *half.event->change)}]
                .push_back(half.record);
        for (const Half& half : made) {
            const auto found =
                byContent.find({half.event->change->group, contentOf(*table, half.event->after)});
            if (found == byContent.end() || found->second.empty())
                continue;
            m_cutFrom[half.record] = found->second.front();
            found->second.pop_front();
        }
    }
}

Planning::Record* Planning::cutFrom(const Record& made,
                                    const std::function<bool(const Record&)>& isMeant) const {
    Record* origin = nullptr;
    std::set<const Record*> seen; // a cut that was done again leads back
    for (const Record* at = &made; seen.insert(at).second; at = origin) {
        const auto found = m_cutFrom.find(at);
        if (found == m_cutFrom.end())
            return nullptr;
        origin = found->second;
        if (isMeant(*origin))
            return origin;
    }
    return nullptr;
}

Planning::Record* Planning::cutFrom(const Record& made) const {
    return cutFrom(made, [](const Record& origin) { return origin.flag == MDX_INSERT; });
}

store::Status Planning::halvesOf(const store::TableDef& table, const store::Change& deletion,
                                 const Halves** halves) {
    constexpr int mostRead = 2000;
    *halves = nullptr;
    auto found = m_halves.find(deletion.group);
    if (found == m_halves.end()) {
        found = m_halves.try_emplace(deletion.group).first;
        store::LogQuery query;
        query.group = deletion.group;
        std::vector<store::Change> changes;
        if (store::Status status = m_store.history(query, mostRead, &changes); !status.ok())
            return status;
        for (const store::Change& change : changes) {
            const store::TableDef* of = tableOf(change.table);
            if (of && change.code == OrvoEventInsert)
                found->second[{of, contentOf(*of, store::valuesFromJson(*of, change.after))}]
                    .made.push_back(store::foldedKey(change.key));
            if (of && change.code == OrvoEventDelete)
                found->second[{of, deletedContent(*of, change)}].gone.push_back(
                    store::foldedKey(change.key));
        }
    }
    if (const auto alike = found->second.find({&table, deletedContent(table, deletion)});
        alike != found->second.end() && !alike->second.made.empty())
        *halves = &alike->second;
    return {};
}

store::Status Planning::whereCutTo(const store::TableDef& table, std::string key,
                                   std::string* found) {
    found->clear();
    std::set<std::string> seen;
    while (seen.insert(key).second) {
        const Record* const record = planned(table, key);
        if (record && record->flag == MDX_DELETE) {
            if (const Record* origin = cutFrom(*record))
                *found = store::foldedKey(origin->key);
            return {};
        }
        auto& stored = m_above[&table];
        if (store::Status status = m_store.storedValues(table, {key}, &stored); !status.ok())
            return status;
        if ((record && record->flag == MDX_INSERT) || stored.count(key) != 0) {
            *found = key;
            return {};
        }
        const store::Change* deletion = nullptr;
        const Halves* halves = nullptr;
        store::Status status = deletionOf(table, key, &deletion);
        if (status.ok() && deletion)
            status = halvesOf(table, *deletion, &halves);
        if (!status.ok() || !halves || halves->made.size() != halves->gone.size())
            return status;
        const auto at = std::find(halves->gone.begin(), halves->gone.end(), key);
        if (at != halves->gone.end())
            key = halves->made[static_cast<size_t>(at - halves->gone.begin())];
    }
    return {};
}

store::Status Planning::tellGone(const store::TableDef& table, const Record& record,
                                 const store::Change* deletion) {
    const Halves* halves = nullptr;
    store::Status status = deletion ? halvesOf(table, *deletion, &halves) : store::Status();
    remark(halves ? Remark::MovedSince : Remark::DeletedSince, table, record, -1, deletion);
    return status;
}

/// Restoring what others have taken away since would write it twice, or take their deletion back.
store::Status Planning::keepCutsThatWentOn() {
    if (m_cutFrom.empty())
        return {};
    std::set<int64_t> stuck;
    for (auto& [table, records] : m_records)
        for (auto& [key, made] : records) {
            const auto cut = m_cutFrom.find(&made);
            if (cut == m_cutFrom.end() || cut->second->flag != MDX_INSERT || made.present ||
                made.flag != 0)
                continue;
            const auto deletion =
                std::find_if(made.events.rbegin(), made.events.rend(), [&](const Event& event) {
                    return event.change->code == OrvoEventDelete && counts(event) &&
                           !isConcerned(event);
                });
            if (deletion == made.events.rend())
                continue;
            addMakings(made, &stuck);
            if (store::Status status = tellGone(*table, made, deletion->change); !status.ok())
                return status;
        }
    bool changed = false;
    leaveOut(stuck, &changed);
    return {};
}

void Planning::followCuts() {
    if (m_alone || !m_choices.othersWorkToo)
        return;
    for (auto& [table, records] : m_records)
        for (auto& [key, made] : records) {
            Record* gone = made.flag == MDX_DELETE && made.builtOn ? cutFrom(made) : nullptr;
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
    for (const Record* kept : m_kept)
        if (cutFrom(*kept))
            addMakings(*kept, &stuck);
    const auto hasNoPlace = [&](const Record& origin) { return m_unplaced.count(&origin) != 0; };
    for (const auto& [made, origin] : m_cutFrom) // or there would be none of it
        if (made->flag == MDX_DELETE && cutFrom(*made, hasNoPlace))
            addMakings(*made, &stuck);
    leaveOut(stuck, changed);
}

/// The actions that have made the record.
void Planning::addMakings(const Record& record, std::set<int64_t>* groups) const {
    for (const Event& event : record.events)
        if (isConcerned(event) && event.change->code == OrvoEventInsert)
            groups->insert(event.change->group);
}

void Planning::leaveOut(const std::set<int64_t>& stuck, bool* changed) {
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
