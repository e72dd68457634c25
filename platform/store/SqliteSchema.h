// SqliteSchema.h: tables, triggers and migrations of a store in an SQLite file.
//
// The triggers use built-in functions only, so that the plain sqlite3 shell can write to a store
// and its changes enter the log like any other.
#ifndef ORVO_PLATFORM_STORE_SQLITESCHEMA_H
#define ORVO_PLATFORM_STORE_SQLITESCHEMA_H

#include "platform/store/Migrations.h"
#include "platform/store/Schema.h"
#include "platform/store/SqliteApi.h"

#include <string>
#include <vector>

namespace orvo::store::sqlite {

/// "Orvo": marks a file as a store (PRAGMA application_id).
constexpr int applicationId = 0x4F72766F;

/// Gives the store a new identity.
constexpr const char* newIdentity = "UPDATE \"NciStore\" SET \"identity\" = (SELECT "
                                    "lower(substr(h, 1, 8) || '-' || substr(h, 9, 4) || "
                                    "'-4' || substr(h, 14, 3) || '-8' || substr(h, 18, 3) || '-' "
                                    "|| substr(h, 21, 12)) FROM (SELECT "
                                    "hex(randomblob(16)) AS h));";

/// Makes every number of a change that was ever given out too low for a reader of the log, and the
/// next change get a higher one.
constexpr const char* cursorsPruned =
    "UPDATE \"NciPruned\" SET \"id\" = 1 + max(\"id\", coalesce((SELECT max(\"id\") FROM "
    "\"NciEvent\"), 0), coalesce((SELECT seq FROM sqlite_sequence WHERE name = 'NciEvent'), 0));"
    "DELETE FROM sqlite_sequence WHERE name = 'NciEvent';"
    "INSERT INTO sqlite_sequence (name, seq) SELECT 'NciEvent', \"id\" FROM \"NciPruned\";";

/// The triggers, which write the change log, as SQL.
std::string triggers(const Dictionary& dictionary);
/// Makes the triggers of a store of the newest version again, whatever became of them.
Status remakeTriggers(const Connection& connection);
/// Adds a line in Russian for each table, index and, of the newest version, trigger that is missing
/// or not as the program makes it. What others added besides may be there.
Status differingDefinitions(const Connection& connection, std::vector<std::string>* lines);

/// The expression, over "MenuResource", that gives foldedName() of the name as the editors see it,
/// with ASCII letters compared without regard to case.
const std::string& foldedNameExpression();
/// Holds for the rows that the index over it is about.
constexpr const char* storedRows = "\"type_\" IN (3, 4)";

/// Gives the connection the functions of the program that the steps call. A result code of SQLite.
int addStepFunctions(const Connection& connection);

/// Brings the store to the newest version (PRAGMA user_version): all missing steps and then the
/// triggers again, in one transaction. NewerStore if it is beyond the steps. Nothing is written if
/// it is there already.
Status migrate(const Connection& connection, const MigrationSteps& steps,
               const Dictionary& dictionary);
/// With the steps and the dictionary of this program.
Status migrate(const Connection& connection);

} // namespace orvo::store::sqlite

#endif
