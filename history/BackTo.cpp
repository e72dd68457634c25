#include "history/BackTo.h"

#include "history/Standing.h"

#include <algorithm>
#include <set>
#include <string>

namespace orvo::history {

namespace {

constexpr size_t mostGroups = 1000;

} // namespace

store::Status collectBackTo(store::MaintainedStore& store, const Filter& scope, int64_t group,
                            std::vector<int64_t>* groups) {
    // By numbers: a clock that was set back says nothing of what came later.
    Filter later = scope;
    later.above = std::max(scope.above, group - 1);
    Reader reader(store, later);
    std::vector<Group> found;
    while (!reader.atEnd()) {
        const size_t known = found.size();
        store::Status status = reader.next(50, &found);
        if (!status.ok())
            return status;
        for (size_t i = known; i < found.size(); ++i) // what they wrote is of no matter here
            found[i].changes = {};
        if (found.size() > mostGroups)
            return {store::Refused,
                    "действий больше " + std::to_string(mostGroups) + ": выберите место ближе"};
    }
    std::set<int64_t> all;
    for (const Group& one : found)
        if (one.id >= group)
            all.insert(one.id);
    if (all.empty())
        return {};
    Standing standing;
    store::Status status = standing.read(store, {*all.begin()});
    for (const Group& one : found) {
        const bool onlySuch = !one.undoes.empty() &&
                              std::all_of(one.undoes.begin(), one.undoes.end(),
                                          [&](int64_t undone) { return all.count(undone) != 0; });
        if (all.count(one.id) != 0 && standing.stands(one.id) && !onlySuch)
            groups->push_back(one.id);
    }
    return status;
}

} // namespace orvo::history
