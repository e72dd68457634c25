// What an inverse does with a cut: it wrote anew what it took away, so others may have gone on with
// the new record. A cut goes back as a whole or stays: else there would be two of it.
#include "history/Planning.h"

#include "frame/Vocabulary.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <variant>

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

} // namespace

/// Finds the record that is to come back and that the same action has written anew.
class Planning::Cuts {
public:
    Cuts(const store::TableDef& table, Records& records) : m_table(table) {
        for (auto& [key, gone] : records)
            if (gone.flag == MDX_INSERT)
                for (const Event& event : gone.events)
                    if (event.change->code == OrvoEventDelete)
                        m_gone.try_emplace({event.change->group, contentOf(gone.values)}, &gone);
    }
    /// Null: none. `making` wrote it anew.
    Record* from(const Event& making) const {
        const auto found = m_gone.find({making.change->group, contentOf(making.after)});
        return found == m_gone.end() ? nullptr : found->second;
    }

private:
    /// What a cut leaves as it is.
    std::string contentOf(const Values& values) const {
        Values content;
        for (const auto& [field, value] : values)
            if (!isPlace(m_table, field) && !std::holds_alternative<std::monostate>(value))
                content[field] = value;
        return jsonOf(m_table, content);
    }

    const store::TableDef& m_table;
    std::map<std::pair<int64_t, std::string>, Record*>
        m_gone; ///< the first of those that are alike
};

/// The event by which the actions made the record; null if they did not.
const Planning::Event* Planning::makingOf(const Record& record) const {
    const auto making =
        std::find_if(record.events.begin(), record.events.end(), [&](const Event& event) {
            return isConcerned(event) && event.change->code == OrvoEventInsert;
        });
    return making == record.events.end() ? nullptr : &*making;
}

void Planning::followCuts() {
    if (m_alone || !m_choices.othersWorkToo)
        return;
    for (auto& [table, records] : m_records) {
        const Cuts cuts(*table, records);
        for (auto& [key, made] : records) {
            const Event* making =
                made.flag == MDX_DELETE && made.builtOn ? makingOf(made) : nullptr;
            Record* gone = making ? cuts.from(*making) : nullptr;
            if (!gone)
                continue;
            for (const Event& event : made.events)
                if (counts(event) && !isConcerned(event))
                    for (const auto& [field, value] : event.after)
                        if (!isPlace(*table, field))
                            gone->values[field] = value;
        }
    }
}

void Planning::keepCutsWhole(bool* changed) {
    std::set<int64_t> stuck;
    if (m_kept.empty())
        return;
    for (auto& [table, records] : m_records) {
        const Cuts cuts(*table, records);
        for (auto& [key, made] : records)
            if (const Event* making = m_kept.count(&made) != 0 ? makingOf(made) : nullptr;
                making && cuts.from(*making))
                for (const Event& event : made.events)
                    if (isConcerned(event) && event.change->code == OrvoEventInsert)
                        stuck.insert(event.change->group);
    }
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
