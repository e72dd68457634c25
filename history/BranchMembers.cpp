#include "history/BranchMembers.h"

#include "frame/Vocabulary.h"
#include "history/LoggedChange.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <map>

namespace orvo::history {

namespace {

/// So many changes are followed; beyond them looking up the branch again takes no longer.
constexpr int mostFollowed = 2000;

} // namespace

BranchMembers::BranchMembers(Branch branch)
    : m_branch(std::move(branch))
    , m_records(std::make_shared<Records>()) {}

/// Adds these records and all below them.
store::Status BranchMembers::addBelow(store::MaintainedStore& store, Level level,
                                      Records* records) {
    while (!level.empty()) {
        std::map<const store::TableDef*, std::vector<std::string>> keys;
        for (const auto& [table, key] : level)
            if (records->insert({table->name, store::foldedKey(key)}).second)
                keys[table].push_back(key);
        level.clear();
        for (const auto& [table, all] : keys)
            for (const store::ParentField& child : linksBelow(*table)) {
                const store::TableDef* below = tableOf(child.table);
                std::vector<std::pair<std::string, std::string>> found;
                store::Status status =
                    store.keysNaming(*below, below->find(child.field), all, &found);
                if (!status.ok())
                    return status;
                for (auto& [key, named] : found)
                    level.emplace_back(below, std::move(key));
            }
    }
    return {};
}

store::Status BranchMembers::lookUp(store::MaintainedStore& store) {
    // As the key is spelled: not every field that names a record is compared as keys are.
    std::string key = m_branch.key;
    std::map<std::string, std::vector<store::Value>> top;
    store::Status status = store.storedValues(*m_branch.table, {key}, &top);
    if (!top.empty())
        key = store::textOf(top.begin()->second.front());
    auto records = std::make_shared<Records>();
    if (status.ok())
        status = addBelow(store, {{m_branch.table, key}}, records.get());
    if (!status.ok())
        return status;
    m_records.swap(records);
    ++m_lookUps;
    return {};
}

store::Status BranchMembers::follow(store::MaintainedStore& store,
                                    const std::vector<store::Change>& changes, bool* known) {
    Level joined;
    Records fresh;
    const auto isMember = [&](const store::TableDef* table, const std::string& key) {
        const Record record{table->name, store::foldedKey(key)};
        return m_records->count(record) != 0 || fresh.count(record) != 0;
    };
    for (const store::Change& change : changes) {
        const LoggedChange read = logged(change);
        if (!read.table || change.code == OrvoEventDelete)
            continue; // what is stored no more is in nobody's way
        const auto links = linksAbove(*read.table);
        const bool inside = std::any_of(links.begin(), links.end(), [&](const auto& link) {
            const store::Value* above = valueIn(*read.table, read.after, link.field);
            return above && isMember(store::findTable(link.table), store::textOf(*above));
        });
        if (inside) {
            joined.emplace_back(read.table, change.key);
            fresh.insert({change.table, store::foldedKey(change.key)});
        } else if ((read.deed == Deed::Moved || read.deed == Deed::Created) &&
                   isMember(read.table, change.key)) { // it was, and has left
            *known = false;
            return {};
        }
    }
    // What is a member has to be entered anew: others may have been below it before it was.
    Records records;
    store::Status status = addBelow(store, std::move(joined), &records);
    if (!status.ok() || records.empty())
        return status;
    if (m_records.use_count() > 1)
        m_records = std::make_shared<Records>(*m_records);
    m_records->insert(records.begin(), records.end());
    return {};
}

store::Status BranchMembers::update(store::MaintainedStore& store) {
    int64_t position = 0;
    store::Status status = store.logPosition(&position);
    bool known = m_position >= 0 && position >= m_position;
    std::vector<store::Change> changes;
    if (status.ok() && known && position > m_position) {
        status = store.readLog(m_position, mostFollowed, &changes);
        known = status.ok() && changes.size() < static_cast<size_t>(mostFollowed);
        if (status.code == store::LogPruned || status.code == store::LogReplaced)
            status = {};
    }
    if (status.ok() && known && !changes.empty())
        status = follow(store, changes, &known);
    if (status.ok() && !known)
        status = lookUp(store);
    if (status.ok())
        m_position = position;
    return status;
}

} // namespace orvo::history
