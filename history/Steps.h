// Steps.h: which action the next undo of a login takes back, and which the next redo does again. It
// follows from the log alone, so it is the same after a restart and in another client.
//
// A group of the login that takes back just one other group of the same login is a step: of undo if
// that was an action, of redo if that was a step of undo. Every other group is an action, one that
// takes back what others did included; but what only took or released locks, or changed nothing, is
// none.
#ifndef ORVO_HISTORY_STEPS_H
#define ORVO_HISTORY_STEPS_H

#include "history/RecordSource.h"

#include <QString>

#include <cstdint>
#include <set>
#include <string>

namespace orvo::history {

struct Steps {
    struct Step {
        int64_t group = 0; ///< what is to be taken back; 0: there is nothing
        QString words;     ///< of the action: "переместить «Котельная»"
    };
    Step undo; ///< the newest action that stands
    Step redo; ///< the newest step of undo that stands and has no action after it
};

/// Whose actions these are. What other programs wrote under the same login is not taken back by a
/// key: an import would go with it.
struct Actor {
    std::string login;
    std::string client; ///< the program; what was written when none was noted counts, too
};

/// `passed`: groups of which nothing is left to be taken back; they are gone past.
store::Status readSteps(store::MaintainedStore& store, const Actor& actor,
                        const std::set<int64_t>& passed, Steps* steps);

} // namespace orvo::history

#endif
