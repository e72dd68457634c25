// Migrations.h: the steps that lead a store from one version to the next, as SQL.
//
// A step is frozen text, migrations/<database>/<version>.sql, compiled in by CMake: it is written
// once, and neither changed after its release nor generated from the dictionary, which moves on.
// Steps hold tables, columns, indexes and data. What follows from the dictionary alone (triggers,
// functions, rights) stands in no step: migrate() of each database makes it again after any step,
// so a change of it needs a step of its own, if only one without a statement.
#ifndef ORVO_PLATFORM_STORE_MIGRATIONS_H
#define ORVO_PLATFORM_STORE_MIGRATIONS_H

#include <string>
#include <vector>

namespace orvo::store {

/// The step at i leads from version i to i + 1; version 0 is an empty database.
using MigrationSteps = std::vector<std::string>;

namespace sqlite {
const MigrationSteps& migrations();
}
namespace postgres {
const MigrationSteps& migrations();
}

} // namespace orvo::store

#endif
