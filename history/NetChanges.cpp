#include "history/NetChanges.h"

#include "frame/Vocabulary.h"
#include "history/RecordSource.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <map>
#include <utility>
#include <vector>

namespace orvo::history {

namespace {

/// All that a group did to a record.
class Course {
public:
    explicit Course(const store::Change& first) : m_first(&first), m_table(tableOf(first.table)) {
        add(first);
    }

    void add(const store::Change& change) {
        ++m_count;
        m_isThere = change.code != OrvoEventDelete;
        if (!m_table)
            return;
        m_wasReplaced = m_wasReplaced || change.code != OrvoEventUpdate;
        if (m_first->code != OrvoEventInsert && !m_wasMade)
            m_before.takeMissing(store::valuesFromJson(*m_table, change.before));
        m_wasMade = m_wasMade || change.code == OrvoEventInsert;
        if (change.code != OrvoEventUpdate)
            m_after = {};
        for (auto& [field, value] : store::valuesFromJson(*m_table, change.after))
            m_after[field] = std::move(value);
    }

    /// None: the record is as it was.
    std::optional<store::Change> net() const {
        if (m_count == 1 || !m_table)
            return *m_first;
        const bool wasThere = m_first->code != OrvoEventInsert;
        if (!wasThere && !m_isThere)
            return std::nullopt;
        store::Change change = *m_first;
        change.code = !wasThere ? OrvoEventInsert : !m_isThere ? OrvoEventDelete : OrvoEventUpdate;
        Values before = m_before, after = m_after;
        if (change.code == OrvoEventUpdate)
            for (const auto& [field, value] : m_before)
                if (const auto now = m_after.find(field);
                    now != m_after.end() && now->second == value) {
                    before.erase(field);
                    after.erase(field);
                }
        // Bytes that were put in place of others may differ although size and time do not.
        const bool isContent = m_table == &store::contentTable() && !m_wasReplaced;
        if (change.code == OrvoEventUpdate && after.empty() && !isContent)
            return std::nullopt;
        change.before = wasThere ? jsonOf(*m_table, before) : "{}";
        change.after = m_isThere ? jsonOf(*m_table, after) : "{}";
        return change;
    }

private:
    const store::Change* m_first;
    const store::TableDef* m_table; ///< null: none of the dictionary
    int m_count = 0;
    bool m_isThere = false;     ///< afterwards
    bool m_wasMade = false;     ///< what it was before is known
    bool m_wasReplaced = false; ///< made or deleted
    Values m_before, m_after;
};

} // namespace

std::optional<Group> netChanges(const Group& group) {
    if (!group.whole)
        return std::nullopt;
    std::map<std::pair<std::string, std::string>, size_t> places; // of the records' courses
    std::vector<Course> courses;
    for (const store::Change& change : group.changes) {
        const auto [place, isNew] =
            places.try_emplace({change.table, store::foldedKey(change.key)}, courses.size());
        if (isNew)
            courses.emplace_back(change);
        else
            courses[place->second].add(change);
    }
    if (courses.size() == group.changes.size())
        return std::nullopt;
    Group net = group;
    net.changes.clear();
    for (const Course& course : courses)
        if (std::optional<store::Change> change = course.net())
            net.changes.push_back(std::move(*change));
    return net;
}

} // namespace orvo::history
