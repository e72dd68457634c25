#include "history/BackTo.h"

#include "frame/StdText.h"
#include "history/Standing.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

namespace orvo::history {

namespace {

constexpr size_t mostGroups = 1000;
constexpr size_t portionBack = 500;

store::Status addGroups(Reader& reader, std::set<int64_t>* found) {
    std::vector<Group> groups;
    store::Status status = reader.next(50, &groups);
    for (const Group& group : groups)
        found->insert(group.id);
    return status;
}

/// With the records that the scope lets pass.
store::Status addChanges(Reader& reader, Selection* selection, std::set<int64_t>* found) {
    std::vector<store::Change> changes;
    store::Status status = reader.nextChanges(portionBack, &changes);
    if (!selection->only)
        selection->only.emplace();
    for (const store::Change& change : changes) {
        if (changesNothing(change)) // its action may have changed other records
            continue;
        found->insert(change.group);
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
    std::set<int64_t> found;
    while (!reader.atEnd()) {
        if (store::Status status =
                isPart ? addChanges(reader, selection, &found) : addGroups(reader, &found);
            !status.ok())
            return status;
        if (found.size() > mostGroups)
            return {store::Refused, StdText::tr("действий больше ") + std::to_string(mostGroups) +
                                        StdText::tr(": выберите место ближе")};
    }
    const auto begin = found.lower_bound(group);
    if (begin == found.end() || *begin != group)
        if (store::Status status = addForgotten(store, group, selection); !status.ok())
            return status;
    if (begin == found.end())
        return {};
    Standing standing;
    store::Status status = standing.read(store, {*begin});
    for (auto one = begin; one != found.end(); ++one) {
        const std::vector<int64_t> undoes = standing.undoesOf(*one);
        const bool onlySuch =
            !undoes.empty() && std::all_of(undoes.begin(), undoes.end(), [&](int64_t undone) {
                return undone >= group && found.count(undone) != 0;
            });
        if (standing.stands(*one) && !onlySuch)
            selection->groups.push_back(*one);
    }
    return status;
}

} // namespace orvo::history
