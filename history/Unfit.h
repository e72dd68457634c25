// Unfit.h: what cannot be brought from one installation into another without an error there.
#ifndef ORVO_HISTORY_UNFIT_H
#define ORVO_HISTORY_UNFIT_H

#include "history/Installation.h"

#include <set>
#include <vector>

namespace orvo::history {

/// A record that stays as it is, and why.
struct Unfit {
    enum Why {
        StillNamed, ///< it would be deleted, but `other`, which stays, names it
        NoFolder,   ///< `other` can hold nothing (Fitting.h)
        Elsewhere,  ///< or nothing of that desktop or kind
        NoResource, ///< it would open `other`, which is left out
        TopFolder,  ///< without it no editor loads the tree of resources; `other` is the same
    };
    RecordKey record;
    Why why = StillNamed;
    RecordKey other;
    int field = -1;     ///< by which one names the other
    bool isNew = false; ///< the record is not stored yet
};

/// Adds to `left` the records of which that is true, with what depends on them, once `from` has
/// become like `to` in all that is wanted (null: in everything) and not left; but for the places of
/// those in `placed`. What is wrong in `to` as well is its own affair.
std::vector<Unfit> leaveUnfit(const Installation& from, const Installation& to,
                              const std::set<RecordKey>* wanted, const std::set<RecordKey>& placed,
                              std::set<RecordKey>* left);

} // namespace orvo::history

#endif
