// Difference.h: what differs between two installations, in changes as the log would tell of them,
// and the part of it that is to be brought from one into the other.
#ifndef ORVO_HISTORY_DIFFERENCE_H
#define ORVO_HISTORY_DIFFERENCE_H

#include "history/Installation.h"
#include "history/Unfit.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvo::history {

/// What becomes of a record whose name another one has (NamePlaces.h).
enum class SameNames {
    Stay,     ///< it is written as it is
    LeaveOut, ///< it is not, nor what is new below it; a stored one keeps name and place
    Number,   ///< it gets a free one: "a (2).png"
};

struct TakenName {
    RecordKey record, holder;
    std::string name;
    bool isNew = false; ///< the record is not stored yet
};

struct Difference {
    /// Make the one like the other; their bytes are those of the newer installation.
    std::vector<store::TableWrites> parts;
    std::vector<store::Change> changes; ///< as the log would tell of them
    std::vector<TakenName> leftOut;
    std::vector<Unfit> unfit; ///< left as well
    /// Of the held forms those that would have been deleted (true), or whose contents changed.
    std::map<std::string, bool> heldBack;
};

/// What makes `from` like `to`: everything, or what is at and below `top` in either of them, with
/// the folders above and the resources that its elements need, if `from` lacks these. Users and
/// locks of resources are the installation's own: they stay, unless `withUsers`. The forms in
/// `held`, by folded key, keep their contents, and are not deleted.
Difference differenceOf(const Installation& from, const Installation& to,
                        const std::optional<RecordKey>& top, bool withUsers,
                        SameNames names = SameNames::Stay, const std::set<std::string>& held = {});

} // namespace orvo::history

#endif
