#include "history/Planning.h"

#include "frame/Vocabulary.h"
#include "history/Locks.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/mdx/RunInParallel.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <cstring>
#include <utility>

namespace orvo::history {

namespace {

constexpr size_t mostPreviewed = 2000;
/// Reading the values of so many takes longer than making a thread.
constexpr size_t manyChanges = 1000;

/// What was taken back before and done again has all happened by the same user's wish.
std::set<int64_t> withAnswer(const Standing& standing, std::set<int64_t> groups, int64_t answered) {
    if (answered != 0)
        groups.insert(answered);
    if (const int64_t again = standing.undoneBy(answered); again != 0)
        groups.insert(again);
    return groups;
}

} // namespace

Planning::Planning(store::MaintainedStore& store, const Standing& standing, const Choices& choices,
                   const Selection& selection, Inverse& inverse)
    : m_store(store)
    , m_standing(standing)
    , m_choices(choices)
    , m_selection(selection)
    , m_inverse(inverse)
    , m_answered(selection.only ? 0 : standing.lastAnswer(inverse.undoes, store.login()))
    , m_asked(standing.concerned(inverse.undoes))
    , m_concerned(withAnswer(standing, m_asked, m_answered))
    , m_beside(standing.concerned(standing.undoesOf(m_answered))) {
    for (const int64_t group : m_asked)
        m_beside.erase(group);
}

bool Planning::isAsked(const Record& record) const {
    return std::any_of(record.events.begin(), record.events.end(),
                       [&](const Event& event) { return m_asked.count(event.change->group) != 0; });
}

/// Whether a change has a say in what its record should be.
bool Planning::counts(const Event& event) const {
    return m_standing.stands(event.change->group) && !m_standing.isUndoing(event.change->group);
}

void Planning::remark(Remark::Why why, const store::TableDef& table, const Record& record,
                      int field, const store::Change* change) {
    Remark made;
    made.why = why;
    made.table = &table;
    made.key = record.key;
    made.field = field;
    if (change) {
        made.login = change->login;
        made.time = change->time;
        made.group = change->group;
    }
    m_inverse.remarks.push_back(std::move(made));
}

// What happened ----------------------------------------------------------------------------------

store::Status Planning::collect() {
    int64_t last = 0;
    size_t count = 0;
    for (const int64_t group : m_concerned) {
        store::LogQuery query;
        query.group = group;
        query.oldestFirst = true;
        std::vector<store::Change> changes;
        store::Status status = m_store.history(query, INT_MAX, &changes);
        if (!status.ok())
            return status;
        if (changes.empty() || changes.front().id != group) {
            Remark made;
            made.why = changes.empty() ? Remark::Forgotten : Remark::HalfForgotten;
            made.group = group;
            m_inverse.remarks.push_back(std::move(made));
        }
        for (const store::Change& change : changes)
            last = std::max(last, change.id);
        count += changes.size();
        m_changes.push_back(std::move(changes));
    }
    // Usually what was done last is taken back: then there is nothing else to be read.
    const bool nothingElse =
        last == m_inverse.seen && static_cast<int64_t>(count) == last - m_standing.begin() + 1;
    if (!nothingElse) {
        std::map<const store::TableDef*, std::vector<std::string>> keys;
        for (const std::vector<store::Change>& changes : m_changes)
            for (const store::Change& change : changes)
                if (const store::TableDef* table = tableOf(change.table))
                    keys[table].push_back(change.key);
        m_changes.clear();
        for (const auto& [table, all] : keys) {
            std::vector<store::Change> changes;
            store::Status status =
                m_store.changesSince(*table, all, m_standing.begin() - 1, &changes);
            if (!status.ok())
                return status;
            m_changes.push_back(std::move(changes));
        }
    }
    struct Found {
        const store::TableDef* table;
        std::string key;
        const store::Change* change;
        Values after, before;
    };
    std::vector<Found> found;
    for (const std::vector<store::Change>& changes : m_changes)
        for (const store::Change& change : changes)
            if (const store::TableDef* table = tableOf(change.table);
                table && change.id <= m_inverse.seen) {
                std::string key = store::foldedKey(change.key);
                if (isSelected(*table, key))
                    found.push_back({table, std::move(key), &change, {}, {}});
                else
                    m_leftOut = m_leftOut || m_concerned.count(change.group) != 0;
            }
    m_alone = nothingElse && !m_leftOut;
    std::stable_sort(found.begin(), found.end(), [](const Found& a, const Found& b) {
        return a.table != b.table ? a.table < b.table : a.key < b.key;
    });
    const auto read = [&](size_t from, size_t to) {
        for (size_t i = from; i < to; ++i) {
            Found& one = found[i];
            one.after = store::valuesFromJson(*one.table, one.change->after);
            one.before = store::valuesFromJson(*one.table, one.change->before);
        }
    };
    if (const size_t half = found.size() / 2; half >= manyChanges)
        mdx::runInParallel([&] { read(0, half); }, [&] { read(half, found.size()); });
    else
        read(0, found.size());
    for (Found& one : found) {
        const store::Change& change = *one.change;
        Records& records = m_records[one.table];
        Record& record = records.try_emplace(records.end(), std::move(one.key))->second;
        Event event{&change, std::move(one.after), std::move(one.before)};
        record.key = change.key;
        if (isConcerned(event)) {
            assert(one.table->fields.size() <= mostFields);
            for (const Values* values : {&event.after, &event.before})
                for (const auto& [field, value] : *values)
                    record.fields.set(static_cast<size_t>(field));
            record.wasMadeOrDeleted = record.wasMadeOrDeleted || change.code != OrvoEventUpdate;
        }
        record.events.push_back(std::move(event));
    }
    for (auto& [table, records] : m_records) // groups overlap once they are joined
        for (auto& [key, record] : records)
            std::stable_sort(
                record.events.begin(), record.events.end(),
                [](const Event& a, const Event& b) { return a.change->id < b.change->id; });
    findBranches();
    dropLocks();
    return {};
}

/// An element that went to another desktop with what it stood in, when that was taken back, comes
/// from there as well.
void Planning::findBranches() {
    const store::TableDef& elements = *store::findTable(table::Menu);
    const auto parent = static_cast<size_t>(elements.find(field::parent));
    const auto desktop = static_cast<size_t>(elements.find(field::FolderKey));
    const auto found = m_records.find(&elements);
    if (found == m_records.end() || m_alone)
        return;
    for (auto& [key, record] : found->second) {
        const bool went =
            std::any_of(record.events.begin(), record.events.end(), [&](const Event& event) {
                return m_standing.isUndoing(event.change->group) &&
                       event.change->code == OrvoEventUpdate &&
                       event.after.count(static_cast<int>(desktop)) != 0;
            });
        if (!went || !record.fields.test(parent) || record.fields.test(desktop))
            continue;
        record.fields.set(desktop);
        m_branches.push_back(&record);
    }
}

// What should be ---------------------------------------------------------------------------------

bool Planning::isSelected(const store::TableDef& table, const std::string& key) const {
    return !m_selection.only || m_selection.only->count({table.name, key}) != 0;
}

/// The record as the changes that stand have made it.
void Planning::work(Record& record) const {
    record.presentThen = record.events.front().change->code != OrvoEventInsert;
    for (Event& event : record.events) // a deletion knows the fields that nobody has changed
        record.then.takeMissing(std::move(event.before));
    for (const Event& event : record.events) {
        if (!counts(event))
            continue;
        if (event.change->code != OrvoEventUpdate)
            record.presentThen = event.change->code == OrvoEventInsert;
        for (const auto& [field, value] : event.after)
            record.then[field] = value;
    }
}

void Planning::update(const store::TableDef& table, Record& record) {
    for (int field = 1; field < static_cast<int>(table.fields.size()); ++field) {
        const auto wanted = record.then.find(field);
        if (!record.fields.test(static_cast<size_t>(field)) || wanted == record.then.end())
            continue;
        if (!(record.now[field] == wanted->second)) {
            record.values[field] = wanted->second;
            record.flag = MDX_UPDATE;
            continue;
        }
        const Event* first = nullptr;
        const Event* last = nullptr;
        for (const Event& event : record.events) {
            const bool has = event.after.count(field) != 0;
            if (has && isConcerned(event) && !first)
                first = &event;
            if (has && counts(event))
                last = &event;
        }
        if (first && last && !isConcerned(*last) && last->change->id > first->change->id)
            remark(Remark::ChangedSince, table, record, field, last->change);
    }
}

store::Status Planning::decide() {
    for (auto& [table, records] : m_records) {
        std::vector<std::string> keys;
        for (const auto& [key, record] : records)
            if (!m_alone || record.events.back().change->code != OrvoEventDelete)
                keys.push_back(key);
        std::map<std::string, std::vector<store::Value>> stored;
        store::Status status = m_store.storedValues(*table, keys, &stored);
        if (!status.ok())
            return status;
        for (auto& [key, record] : records) {
            if (const auto row = stored.find(key); row != stored.end()) {
                record.present = true;
                record.key = store::textOf(row->second.front());
                for (size_t i = 0; i < row->second.size(); ++i)
                    record.now[static_cast<int>(i)] = row->second[i];
            }
            if (!isAsked(record)) {
                record.presentThen = record.present;
                continue;
            }
            work(record);
            const Event* deletion = nullptr;
            bool wasTakenBack = false; // the making of it
            for (const Event& event : record.events)
                if (event.change->code == OrvoEventDelete) {
                    wasTakenBack = wasTakenBack || !counts(event);
                    deletion = counts(event) ? &event : deletion;
                }
            if (record.presentThen && record.present) {
                update(*table, record);
            } else if (!record.present && !record.wasMadeOrDeleted) {
                if (deletion || !wasTakenBack)
                    status = tellGone(*table, record, deletion ? deletion->change : nullptr);
                if (!status.ok())
                    return status;
            } else if (record.presentThen) {
                record.flag = MDX_INSERT;
                record.values = std::move(record.then);
            } else if (record.present && record.wasMadeOrDeleted) {
                record.flag = MDX_DELETE;
                const Event* const since = builtOnSince(record);
                const bool isAnswered = since && holdsAgain(*since);
                for (const Event& event : record.events)
                    if (since && event.change->id > since->change->id && isLaterWork(event) &&
                        (isAnswered || counts(event)) && !event.after.empty() &&
                        !isLockOnly(*event.change))
                        record.builtOn = event.change;
            }
            record.isWanted = record.flag != 0;
        }
    }
    return {};
}

// The writes -------------------------------------------------------------------------------------

void Planning::part(const store::TableDef& table, int flag) {
    const auto records = m_records.find(&table);
    if (records == m_records.end())
        return;
    store::TableWrites part;
    part.table = &table;
    for (auto& [key, record] : records->second) {
        if (record.flag != flag)
            continue;
        store::Write write;
        write.flag = flag;
        write.key = record.key;
        if (m_inverse.preview.size() < mostPreviewed) {
            store::Change change;
            change.table = table.name;
            change.key = record.key;
            Values before;
            for (const auto& [field, value] : record.values)
                before[field] = record.now[field];
            change.code = flag == MDX_INSERT   ? OrvoEventInsert
                          : flag == MDX_DELETE ? OrvoEventDelete
                                               : OrvoEventUpdate;
            change.after = jsonOf(table, record.values);
            change.before =
                flag == MDX_INSERT ? "{}" : jsonOf(table, flag == MDX_DELETE ? record.now : before);
            m_inverse.preview.push_back(std::move(change));
        }
        record.values.erase(0);
        write.values = record.values.take();
        part.writes.push_back(std::move(write));
        if (&table == &store::contentTable())
            part.bytes.push_back({record.version, {}});
    }
    m_inverse.count += part.writes.size();
    if (!part.writes.empty())
        m_inverse.parts.push_back(std::move(part));
}

void Planning::compose() {
    tellMovedBack();
    for (const store::TableDef& table : store::tables())
        part(table, MDX_INSERT);
    echoResources();
    part(store::contentTable(), MDX_INSERT);
    for (const store::TableDef& table : store::tables())
        part(table, MDX_UPDATE);
    part(store::contentTable(), MDX_UPDATE);
    part(store::contentTable(), MDX_DELETE);
    for (auto table = store::tables().rbegin(); table != store::tables().rend(); ++table)
        part(*table, MDX_DELETE);
    forgetLockActions();
    forgetWhatStays();
    forgetRemarksOfDeleted();
    tellNothingLeft();
    if (!m_leftOut)
        return;
    m_inverse.undoes.clear();
    if (m_inverse.count > 0) {
        Remark part;
        part.why = Remark::OnlyPart;
        m_inverse.remarks.push_back(std::move(part));
    }
}

/// An action that stays as a whole is not taken back: else nobody could do so later.
void Planning::forgetWhatStays() {
    if (m_inverse.count == 0)
        return;
    std::map<int64_t, std::pair<bool, bool>> groups; // whether something goes, or was left out
    for (const auto& [table, records] : m_records)
        for (const auto& [key, record] : records)
            for (const Event& event : record.events) {
                auto& [goes, stays] = groups[event.change->group];
                goes = goes || record.flag != 0;
                stays = stays || (record.flag == 0 && record.isWanted);
            }
    const auto staysWhole = [&](int64_t group) {
        bool goes = false, stays = false;
        for (const int64_t one : m_standing.concerned({group}))
            if (const auto found = groups.find(one); found != groups.end()) {
                goes = goes || found->second.first;
                stays = stays || found->second.second;
            }
        return stays && !goes;
    };
    std::vector<int64_t>& undoes = m_inverse.undoes;
    undoes.erase(std::remove_if(undoes.begin(), undoes.end(), staysWhole), undoes.end());
}

/// Of what goes nothing is left as it is.
void Planning::forgetRemarksOfDeleted() {
    std::vector<Remark>& remarks = m_inverse.remarks;
    remarks.erase(std::remove_if(remarks.begin(), remarks.end(),
                                 [&](const Remark& one) {
                                     const Record* const record =
                                         one.why == Remark::ChangedSince
                                             ? planned(*one.table, store::foldedKey(one.key))
                                             : nullptr;
                                     return record && record->flag == MDX_DELETE;
                                 }),
                  remarks.end());
}

void Planning::tellNothingLeft() {
    constexpr size_t mostTold = 20;
    if (m_inverse.count > 0 || !m_inverse.remarks.empty())
        return;
    const auto tell = [&](const store::TableDef& table, const Record& record) {
        const bool isMeant =
            std::any_of(record.events.begin(), record.events.end(), [&](const Event& event) {
                return m_asked.count(event.change->group) != 0 &&
                       event.change->after != event.change->before;
            });
        const auto deletion =
            std::find_if(record.events.rbegin(), record.events.rend(),
                         [](const Event& event) { return event.change->code == OrvoEventDelete; });
        if (!isMeant || m_inverse.remarks.size() == mostTold)
            return;
        if (record.present)
            remark(Remark::SameBefore, table, record);
        else if (deletion != record.events.rend())
            remark(counts(*deletion) ? Remark::GoneBefore : Remark::MakingUndone, table, record, -1,
                   deletion->change);
    };
    for (const auto& [table, records] : m_records)
        for (const auto& [key, record] : records)
            if (table != &store::contentTable())
                tell(*table, record);
    if (m_inverse.remarks.empty()) // else their forms and files are told of
        for (const auto& [key, record] : m_records[&store::contentTable()])
            tell(store::contentTable(), record);
    if (m_inverse.remarks.empty())
        for (const int64_t group : m_inverse.undoes) {
            Remark made;
            made.why = Remark::NothingDone;
            made.group = group;
            m_inverse.remarks.push_back(std::move(made));
        }
}

} // namespace orvo::history
