// What an inverse finds below what it deletes beside what the store tells: what went with an undo
// before, and goes with it again unasked unless others have changed it; and what comes back itself.
#include "history/Planning.h"

#include "frame/Vocabulary.h"
#include "platform/store/Names.h"

#include <algorithm>

namespace orvo::history {

const Planning::Event* Planning::builtOnSince(const Record& record) const {
    const Event* since = nullptr;
    const bool wasAnswered = !wasTakenBackBeside(record);
    for (const Event& event : record.events)
        if (isConcerned(event) &&
            (!since || (wasAnswered && holdsAgain(event) && event.change->code == OrvoEventDelete)))
            since = &event;
    return since;
}

bool Planning::holdsAgain(const Event& event) const {
    const int64_t group = event.change->group;
    return m_standing.isUndoing(group) && isConcerned(event) &&
           (m_standing.stands(group) || group == m_answered) &&
           event.change->login == m_store.login();
}

bool Planning::wasTakenBackBeside(const Record& record) const {
    return std::any_of(record.events.begin(), record.events.end(), [&](const Event& event) {
        return m_beside.count(event.change->group) != 0;
    });
}

/// Of others an undo or a lock as well: they have it in hand.
bool Planning::isLaterWork(const Event& event) const {
    return !isConcerned(event) && (counts(event) || event.change->login != m_store.login());
}

int64_t Planning::wentAlong(const Record* below, int link) const {
    int64_t went = 0;
    if (!below || wasTakenBackBeside(*below))
        return went;
    for (const Event& event : below->events)
        if (isLaterWork(event))
            went = 0;
        else if (holdsAgain(event) &&
                 (event.change->code == OrvoEventDelete ||
                  (event.change->code == OrvoEventUpdate && event.after.count(link) != 0)))
            went = event.change->id;
    return went;
}

std::vector<std::string>
Planning::wentAlong(const Link& link,
                    const std::vector<std::pair<std::string, std::string>>& children) const {
    std::vector<std::string> keys;
    for (const auto& [child, named] : children)
        if (wentAlong(planned(*link.below, store::foldedKey(child)), link.field) > 0)
            keys.push_back(child);
    return keys;
}

store::Status Planning::uploadsInto(const std::vector<std::string>& keys,
                                    std::map<std::string, int64_t>* last) {
    const store::TableDef& contents = store::contentTable();
    std::vector<std::pair<std::string, std::string>> named; // with the form or file
    store::Status status =
        m_store.keysNaming(contents, contents.find(field::MenuResourceKey), keys, &named);
    std::map<std::string, std::string> owners;
    std::vector<std::string> all;
    for (const auto& [content, owner] : named) {
        owners[store::foldedKey(content)] = store::foldedKey(owner);
        all.push_back(content);
    }
    std::vector<store::Change> changes;
    if (status.ok() && !all.empty())
        status = m_store.changesSince(contents, all, m_standing.begin() - 1, &changes);
    for (const store::Change& change : changes)
        if (const Event event{&change, {}, {}}; isLaterWork(event))
            (*last)[owners[store::foldedKey(change.key)]] = change.id;
    return status;
}

bool Planning::comesBelow(const Record& record, int link, const std::string& key) {
    const auto value = record.values.find(link);
    return (record.flag == MDX_INSERT || record.flag == MDX_UPDATE) &&
           value != record.values.end() &&
           store::foldedKey(store::textOf(value->second)) == store::foldedKey(key);
}

/// Those that come back, or go back to there: the store does not tell of them.
void Planning::addPlanned(const Link& link, const std::vector<std::string>& deleted,
                          std::vector<std::pair<std::string, std::string>>* children) {
    const auto records = m_records.find(link.below);
    if (records == m_records.end())
        return;
    std::set<std::string> keys;
    for (const std::string& key : deleted)
        keys.insert(store::foldedKey(key));
    for (const auto& [key, record] : records->second) {
        if (record.flag != MDX_INSERT && record.flag != MDX_UPDATE)
            continue;
        const auto value = record.values.find(link.field);
        if (value == record.values.end())
            continue;
        if (const std::string named = store::foldedKey(store::textOf(value->second));
            keys.count(named) != 0)
            children->emplace_back(record.key, named);
    }
}

} // namespace orvo::history
