// Cuts.h: how a cut is known, which writes anew, under other keys, what it takes away: by what an
// action has deleted and written again with the same content. Of those that are alike the first
// belongs to the first.
#ifndef ORVO_HISTORY_CUTS_H
#define ORVO_HISTORY_CUTS_H

#include "history/RecordSource.h"

#include <optional>
#include <string>

namespace orvo::history {

/// Where a record stands, which a cut changes.
bool isPlace(const store::TableDef& table, int field);
/// What a cut leaves as it is.
std::string contentOf(const store::TableDef& table, const Values& values);
/// The same of what an action has deleted.
std::string deletedContent(const store::TableDef& table, const store::Change& deletion);

/// The deletion of the record from which that one was cut which the change has inserted; none: it
/// was made in no cut, or in one of several thousand records.
store::Status deletionByCut(store::MaintainedStore& store, const store::Change& insertion,
                            std::optional<store::Change>* deletion);
/// The key under which the record is stored that the key named, or was stored last: a cut may have
/// given it another one.
store::Status keyAfterCuts(store::MaintainedStore& store, const std::string& table,
                           std::string* key);

} // namespace orvo::history

#endif
