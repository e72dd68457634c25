// HistoryActions.h: actions of the log as rows of the history: who did what to which record, and
// what stands below such a row. Made in the thread of the store.
#ifndef ORVO_APPS_CLIENT_HISTORY_HISTORYACTIONS_H
#define ORVO_APPS_CLIENT_HISTORY_HISTORYACTIONS_H

#include "apps/client/history/HistoryModel.h"
#include "history/Reading.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace orvo::app {

constexpr int mostDetails = 500; ///< changes that are shown below an action

/// What a filter is about beside the words of an action.
struct HistoryScope {
    history::Filter filter;
    std::shared_ptr<const history::BranchMembers::Records> members; ///< of its branch; null: none
};

/// The row of a group that has changes. It is not marked as undone.
HistoryAction actionOf(const history::Group& group, const HistoryScope& scope,
                       history::RecordSource& source);
/// In the place of one that was shown and has been pruned since.
HistoryAction forgottenAction(int64_t group);
/// The rows below it: the fields of its one change, or its changes with theirs.
std::vector<HistoryAction::Detail> detailsOf(const history::Group& group,
                                             history::RecordSource& source);

} // namespace orvo::app

#endif
