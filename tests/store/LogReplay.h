// LogReplay.h: the change log carried out from its beginning, for comparison with the tables.
#ifndef ORVO_TESTS_STORE_LOGREPLAY_H
#define ORVO_TESTS_STORE_LOGREPLAY_H

#include "platform/store/Maintenance.h"

#include <QStringList>

namespace orvo::store::test {

/// What the records and contents of a store are not, compared with its log carried out from the
/// first change on: a line for each difference, the first of them only. Also a change that cannot
/// be carried out, and ids that do not rise. The log must not have been pruned, and nobody may
/// write meanwhile. Contents are compared without their bytes, which the log does not hold.
QStringList replayDifferences(MaintainedStore& store);
/// The same of the store behind a URL.
QStringList replayDifferences(const std::string& url);

} // namespace orvo::store::test

#endif
