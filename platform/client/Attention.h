// Attention.h: what the engineer is in the middle of in a module, so that the changes of others do
// not come between a question and its answer, a picker and its choice, or two keystrokes.
//
// Invariants: 1 nothing is remembered: what is told is what stands in the module at that moment, so
// it ends with what it is about, however that ends; 2 of several things at once the first in the
// order of Attention is told.
#ifndef ORVO_PLATFORM_CLIENT_ATTENTION_H
#define ORVO_PLATFORM_CLIENT_ATTENTION_H

#include "frame/OrvoClient.h"

namespace orvo::client {

/// In the order in which they are looked for.
enum class Attention {
    None,
    Question, ///< a question of the module stands, also while another tab hides it
    Picker,   ///< a pop-up window of the module is open
    Cell,     ///< an editor of one of its item views has the focus, changed or not
    Edit,     ///< the module has an edit that is neither saved nor dropped
};

/// What has the engineer's attention in that module now. An open notice with one button is none:
/// nothing hangs on its answer. GUI thread.
ORVOCLIENT_EXPORT Attention attentionIn(const COrvoCliMod& module);

} // namespace orvo::client

#endif
