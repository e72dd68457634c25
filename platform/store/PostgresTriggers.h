// PostgresTriggers.h: the parts that functionsAndRights() of PostgresSchema.h puts together.
#ifndef ORVO_PLATFORM_STORE_POSTGRESTRIGGERS_H
#define ORVO_PLATFORM_STORE_POSTGRESTRIGGERS_H

#include "platform/store/PostgresSchema.h"

#include <string>
#include <vector>

namespace orvo::store::postgres {

using Definitions = std::vector<Definition>;

/// Adds what keeps the bytes that are replaced or deleted. Bytes that change make an event of their
/// content's row, unless the same transaction wrote that row already: then it is in the log.
void addContentTriggers(Definitions& all, const TableDef& content);

/// SQL that gives the two roles their rights on tables, sequences and functions, and takes all
/// others away. The functions of definitions() have to exist.
std::string rights(const Dictionary& dictionary);

} // namespace orvo::store::postgres

#endif
