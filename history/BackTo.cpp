#include "history/BackTo.h"

#include "history/Standing.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace orvo::history {

namespace {

constexpr size_t mostGroups = 1000;
constexpr size_t portion = 500;

using Found = std::map<int64_t, std::vector<int64_t>>; ///< groups, and which they take back

store::Status addGroups(Reader& reader, Found* found) {
    std::vector<Group> groups;
    store::Status status = reader.next(50, &groups);
    for (Group& group : groups)
        (*found)[group.id] = std::move(group.undoes);
    return status;
}

/// With the records that the scope lets pass.
store::Status addChanges(Reader& reader, Selection* selection, Found* found) {
    std::vector<store::Change> changes;
    store::Status status = reader.nextChanges(portion, &changes);
    if (!selection->only)
        selection->only.emplace();
    for (const store::Change& change : changes) {
        found->try_emplace(change.group);
        selection->only->insert({change.table, store::foldedKey(change.key)});
    }
    return status;
}

/// The plan says then that the log does not tell of it.
store::Status addForgotten(store::MaintainedStore& store, int64_t group, Selection* selection) {
    Group head;
    store::Status status = readGroup(store, group, &head, 1);
    if (status.ok() && head.changes.empty())
        selection->groups.push_back(group);
    return status;
}

} // namespace

store::Status collectBackTo(store::MaintainedStore& store, const Filter& scope, int64_t group,
                            Selection* selection) {
    // By numbers: a clock that was set back says nothing of what came later.
    Filter later = scope;
    later.above = std::max(scope.above, group - 1);
    Reader reader(store, later);
    const bool isPart = scope.branch || !scope.key.empty();
    Found found;
    while (!reader.atEnd()) {
        if (store::Status status =
                isPart ? addChanges(reader, selection, &found) : addGroups(reader, &found);
            !status.ok())
            return status;
        if (found.size() > mostGroups)
            return {store::Refused,
                    "действий больше " + std::to_string(mostGroups) + ": выберите место ближе"};
    }
    if (isPart) // the first change of a group tells what it takes back, and may stand elsewhere
        for (auto& [id, undoes] : found) {
            Group head;
            if (store::Status status = readGroup(store, id, &head, 1); !status.ok())
                return status;
            undoes = std::move(head.undoes);
        }
    const auto begin = found.lower_bound(group);
    if (begin == found.end() || begin->first != group)
        if (store::Status status = addForgotten(store, group, selection); !status.ok())
            return status;
    if (begin == found.end())
        return {};
    Standing standing;
    store::Status status = standing.read(store, {begin->first});
    for (auto one = begin; one != found.end(); ++one) {
        const auto& [id, undoes] = *one;
        const bool onlySuch =
            !undoes.empty() && std::all_of(undoes.begin(), undoes.end(), [&](int64_t undone) {
                return undone >= group && found.count(undone) != 0;
            });
        if (standing.stands(id) && !onlySuch)
            selection->groups.push_back(id);
    }
    return status;
}

} // namespace orvo::history
