// What an inverse does about the people: forms that somebody has taken into work, and users whose
// rights lie with the database.
#include "history/Planning.h"

#include "frame/Vocabulary.h"
#include "history/Locks.h"
#include "platform/store/Names.h"

#include <algorithm>

namespace orvo::history {

void Planning::dropLocks() {
    const store::TableDef& resources = *store::findTable(table::MenuResource);
    std::map<int64_t, bool> only; // of these groups
    for (const std::vector<store::Change>& changes : m_changes)
        for (const store::Change& change : changes) {
            const bool lock = isLockOnly(change);
            const bool says = lock || change.after != change.before; // or it is an echo
            if (says && m_concerned.count(change.group) != 0) {
                bool& all = only.try_emplace(change.group, true).first->second;
                all = all && lock;
            }
        }
    for (const auto& [group, all] : only)
        if (all)
            m_lockOnly.insert(group);
    for (auto& [key, record] : m_records[&resources])
        for (int field = 0; field < static_cast<int>(resources.fields.size()); ++field)
            if (isLockField(resources, field))
                record.fields.reset(static_cast<size_t>(field));
}

/// The form or file that a content belongs to, folded.
std::string Planning::ownerKey(const Record& content) const {
    const Values& values = content.present          ? content.now
                           : content.values.empty() ? content.then
                                                    : content.values;
    return store::foldedKey(textAt(values, store::contentTable().find(field::MenuResourceKey)));
}

store::Status Planning::keepLocked() {
    const store::TableDef& resources = *store::findTable(table::MenuResource);
    std::set<std::string> keys;
    for (auto& [key, record] : m_records[&resources]) {
        if (record.flag == MDX_INSERT) // what comes back is nobody's
            for (int field = 0; field < static_cast<int>(resources.fields.size()); ++field)
                if (isLockField(resources, field))
                    record.values.erase(field);
        if (record.present && record.flag != 0)
            keys.insert(key);
    }
    for (const auto& [key, content] : m_records[&store::contentTable()])
        keys.insert(ownerKey(content));
    store::Status status = heldByOthers(m_store, {keys.begin(), keys.end()}, &m_locked);
    // Its name and place may be changed, as in an editor; its contents are the holder's.
    for (const auto& [key, lock] : m_locked)
        if (const auto record = m_records[&resources].find(key);
            record != m_records[&resources].end() && record->second.flag == MDX_DELETE) {
            m_kept.insert(&record->second);
            record->second.flag = 0;
            record->second.values = {};
            remarkLocked(key, Remark::Locked);
        }
    return status;
}

store::Status Planning::releaseForms() {
    const store::TableDef& users = *store::findTable(table::Users);
    const store::TableDef& resources = *store::findTable(table::MenuResource);
    std::vector<std::string> gone;
    if (const auto records = m_records.find(&users); records != m_records.end())
        for (const auto& [key, record] : records->second)
            if (record.flag == MDX_DELETE)
                gone.push_back(key);
    if (gone.empty())
        return {};
    std::vector<std::pair<std::string, std::string>> held; // with whose they are
    store::Status status =
        m_store.keysNaming(resources, resources.find(field::UsersKey), gone, &held);
    std::vector<std::string> keys;
    for (auto& [key, user] : held)
        keys.push_back(std::move(key));
    std::vector<Record*> forms;
    if (status.ok())
        status = planStored(resources, keys, &forms);
    for (Record* form : forms) {
        if (form->flag == MDX_DELETE)
            continue;
        form->flag = MDX_UPDATE;
        for (int field = 0; field < static_cast<int>(resources.fields.size()); ++field)
            if (isLockField(resources, field))
                form->values[field] = store::Value();
    }
    return status;
}

/// Whether a resource is to be left alone for its lock; says so if it is.
bool Planning::remarkLocked(const std::string& resource, Remark::Why why) {
    const auto lock = m_locked.find(resource);
    if (lock == m_locked.end())
        return false;
    if (!m_toldLocks.insert(resource).second)
        return true;
    m_inverse.remarks.push_back(lockRemark(lock->second, why));
    return true;
}

void Planning::forgetLockActions() {
    std::vector<int64_t>& undoes = m_inverse.undoes;
    const size_t asked = undoes.size();
    undoes.erase(std::remove_if(undoes.begin(), undoes.end(),
                                [&](int64_t group) {
                                    const std::set<int64_t> all = m_standing.concerned({group});
                                    return std::all_of(all.begin(), all.end(), [&](int64_t one) {
                                        return m_lockOnly.count(one) != 0;
                                    });
                                }),
                 undoes.end());
    if (undoes.size() == asked || m_inverse.count > 0)
        return;
    const store::TableDef& resources = *store::findTable(table::MenuResource);
    for (const auto& [key, record] : m_records[&resources])
        if (std::any_of(record.events.begin(), record.events.end(), [&](const Event& event) {
                return m_lockOnly.count(event.change->group) != 0;
            }))
            remark(Remark::LockStays, resources, record);
}

/// The log knows nothing of rights, and giving them back unasked would open the store to somebody
/// who was shut out of it.
void Planning::keepRights() {
    const store::TableDef& users = *store::findTable(table::Users);
    const auto records = m_records.find(&users);
    if (records == m_records.end() || !m_store.givesRights())
        return;
    for (auto& [key, record] : records->second) {
        const bool isMade = record.flag == MDX_INSERT;
        if (!isMade && record.flag != MDX_DELETE)
            continue;
        const Values& values = isMade ? record.values : record.now;
        remark(isMade ? Remark::NoRights : Remark::RightsStay, users, record);
        m_inverse.remarks.back().missing = textAt(values, users.find(field::login_));
        if (!isMade)
            record.flag = 0;
    }
}

} // namespace orvo::history
