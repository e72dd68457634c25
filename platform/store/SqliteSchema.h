// SqliteSchema.h: tables, triggers and migrations of a store in an SQLite file.
//
// The triggers use built-in functions only, so that the plain sqlite3 shell can write to a store
// and its changes enter the log like any other.
#ifndef ORVO_PLATFORM_STORE_SQLITESCHEMA_H
#define ORVO_PLATFORM_STORE_SQLITESCHEMA_H

#include "platform/store/SqliteApi.h"

#include <string>
#include <vector>

namespace orvo::store::sqlite {

/// "Orvo": marks a file as a store (PRAGMA application_id).
constexpr int applicationId = 0x4F72766F;

/// What leads from each version to the next (PRAGMA user_version); the first from an empty file.
/// A released step is never changed.
const std::vector<std::string>& migrations();

/// The expression, over "MenuResource", that gives foldedName() of the name as the editors see it,
/// with ASCII letters compared without regard to case.
const std::string& foldedNameExpression();
/// Holds for the rows that the index over it is about.
constexpr const char* storedRows = "\"type_\" IN (3, 4)";

/// Brings the store to the newest version, all missing steps in one transaction. NewerStore if it
/// is beyond the steps. Nothing is written if it is there already.
Status migrate(const Connection& connection, const std::vector<std::string>& steps);

} // namespace orvo::store::sqlite

#endif
