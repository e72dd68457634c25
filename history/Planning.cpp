#include "history/Planning.h"

#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <cstring>

namespace orvo::history {

namespace {

constexpr size_t mostPreviewed = 2000;

bool is(const char* name, const char* other) {
    return std::strcmp(name, other) == 0;
}

/// A field by which records of `below` name those of a table.
struct Link {
    const store::TableDef* below;
    int field;
    bool places; ///< by it they stand below them
};

std::vector<Link> linksTo(const store::TableDef& table) {
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

std::vector<std::string> keysIn(const MDArray* rows) {
    std::vector<std::string> keys;
    for (uint32_t i = 0; i < mdx::postedCount(rows); ++i) {
        const char* text = nullptr;
        uint32_t length = 0;
        if (MDRGetTextRef(MDRFldByNum(rows, 0), mdx::postedRecord(rows, i), &length, &text) ==
            MDX_OK)
            keys.emplace_back(text, length);
    }
    return keys;
}

} // namespace

Planning::Planning(store::MaintainedStore& store, const Standing& standing, const Choices& choices,
                   Inverse& inverse)
    : m_store(store)
    , m_standing(standing)
    , m_choices(choices)
    , m_inverse(inverse)
    , m_concerned(standing.concerned(inverse.undoes)) {}

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
        if (changes.empty() || changes.front().id != group)
            m_inverse.remarks.push_back(
                {changes.empty() ? Remark::Forgotten : Remark::HalfForgotten,
                 nullptr,
                 {},
                 -1,
                 {},
                 {},
                 0,
                 group});
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
    m_alone = nothingElse;
    struct Found {
        const store::TableDef* table;
        std::string key;
        const store::Change* change;
    };
    std::vector<Found> found;
    for (const std::vector<store::Change>& changes : m_changes)
        for (const store::Change& change : changes)
            if (const store::TableDef* table = tableOf(change.table);
                table && change.id <= m_inverse.seen)
                found.push_back({table, store::foldedKey(change.key), &change});
    std::stable_sort(found.begin(), found.end(), [](const Found& a, const Found& b) {
        return a.table != b.table ? a.table < b.table : a.key < b.key;
    });
    for (Found& one : found) {
        const store::Change& change = *one.change;
        Records& records = m_records[one.table];
        Record& record = records.try_emplace(records.end(), std::move(one.key))->second;
        Event event{&change, store::valuesFromJson(*one.table, change.after),
                    store::valuesFromJson(*one.table, change.before)};
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
    return {};
}

// What should be ---------------------------------------------------------------------------------

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
                    remark(Remark::DeletedSince, *table, record, -1,
                           deletion ? deletion->change : nullptr);
            } else if (record.presentThen) {
                record.flag = MDX_INSERT;
                record.values = std::move(record.then);
            } else if (record.present && record.wasMadeOrDeleted) {
                record.flag = MDX_DELETE;
                bool made = false;
                for (const Event& event : record.events) {
                    made = made || isConcerned(event);
                    if (made && counts(event) && !isConcerned(event) && !event.after.empty())
                        record.builtOn = event.change;
                }
            }
        }
    }
    return {};
}

// What others have built -------------------------------------------------------------------------

store::Status Planning::deleteBelow(const store::TableDef& table, const std::string& key) {
    Record& record = m_records[&table][store::foldedKey(key)];
    record.key = key;
    record.present = true;
    record.flag = MDX_DELETE;
    std::map<std::string, std::vector<store::Value>> stored;
    store::Status status = m_store.storedValues(table, {key}, &stored);
    for (const auto& [folded, row] : stored)
        for (size_t i = 0; i < row.size(); ++i)
            record.now[static_cast<int>(i)] = row[i];
    return status;
}

store::Status Planning::keepWhatIsBuiltOn() {
    if (m_alone)
        return {}; // nobody has done anything since
    store::Status uploads = findUploadsInto(m_records[store::findTable(table::MenuResource)]);
    if (!uploads.ok())
        return uploads;
    std::set<const Record*> kept;
    for (bool again = true; again;) {
        again = false;
        // Deletions that are added join in the next round.
        std::vector<std::pair<const store::TableDef*, Record*>> deletions;
        for (auto& [table, records] : m_records)
            for (auto& [key, record] : records)
                if (record.flag == MDX_DELETE && table != &store::contentTable())
                    deletions.emplace_back(table, &record);
        for (const auto& [table, record] : deletions) {
            if (record->builtOn && !m_choices.othersWorkToo) {
                remark(Remark::BuiltOn, *table, *record, -1, record->builtOn);
                record->flag = 0;
                kept.insert(record);
                again = true;
                continue;
            }
            for (const Link& link : linksTo(*table)) {
                CMDArray rows;
                store::Status status =
                    fetchNaming(m_store, *link.below, link.field, record->key, rows.array);
                for (const std::string& child : keysIn(rows.array)) {
                    if (!status.ok() || record->flag == 0)
                        break;
                    Record* planned = nullptr;
                    if (auto& records = m_records[link.below];
                        records.count(store::foldedKey(child)) != 0)
                        planned = &records[store::foldedKey(child)];
                    if (planned &&
                        (planned->flag == MDX_DELETE ||
                         (planned->flag == MDX_UPDATE && planned->values.count(link.field) != 0)))
                        continue;
                    if (m_choices.othersWorkToo) {
                        if (link.places) {
                            status = deleteBelow(*link.below, child);
                            again = true;
                        }
                        continue;
                    }
                    std::vector<store::Change> changes;
                    status = m_store.changesSince(*link.below, {child}, 0, &changes);
                    if (!kept.count(planned))
                        remark(Remark::BuiltOn, *table, *record, -1,
                               changes.empty() ? nullptr : &changes.back());
                    record->flag = 0;
                    kept.insert(record);
                    again = true;
                }
                if (!status.ok())
                    return status;
            }
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
    for (const store::TableDef& table : store::tables())
        part(table, MDX_INSERT);
    part(store::contentTable(), MDX_INSERT);
    echoResources();
    for (const store::TableDef& table : store::tables())
        part(table, MDX_UPDATE);
    part(store::contentTable(), MDX_UPDATE);
    part(store::contentTable(), MDX_DELETE);
    for (auto table = store::tables().rbegin(); table != store::tables().rend(); ++table)
        part(*table, MDX_DELETE);
}

} // namespace orvo::history
