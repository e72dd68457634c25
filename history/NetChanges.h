// NetChanges.h: what a group left of each record, in one change. A transaction made by hand may
// write a record several times, and a load with --replace deletes each and writes it again: who
// reads the history asks what is different, not how often it was written.
#ifndef ORVO_HISTORY_NETCHANGES_H
#define ORVO_HISTORY_NETCHANGES_H

#include "history/Reading.h"

#include <optional>

namespace orvo::history {

/// The group with one change for each record, at the place of its first one and with that one's
/// number: from the values before the first to those after the last. Left out is a record that the
/// group wrote several times and left as it was: contents too, if it deleted them and wrote others
/// of the same size and time. None if the group was not read whole, or wrote no record twice.
std::optional<Group> netChanges(const Group& group);

} // namespace orvo::history

#endif
