// SharedPlace.h: where the records of an action stand, in the one place that a line has for it.
#ifndef ORVO_HISTORY_SHAREDPLACE_H
#define ORVO_HISTORY_SHAREDPLACE_H

#include "history/LoggedChange.h"

#include <QString>

#include <vector>

namespace orvo::history {

/// What holds all these records, with what that stands in: "Документы / Инструкции"; if nothing
/// does, in how many places they stand: "в 4 местах". Empty if all stand at the top. Those that
/// have no place, like users, do not count.
QString sharedPlace(const std::vector<const LoggedChange*>& reads, RecordSource& source);
/// The same of some records of an action, where there are more: "в разных местах" for more places
/// than one.
QString sharedPlaceOfSome(const std::vector<const LoggedChange*>& reads, RecordSource& source);

} // namespace orvo::history

#endif
