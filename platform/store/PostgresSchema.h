// PostgresSchema.h: tables, triggers, rights and migrations of a store in a PostgreSQL database.
//
// Everything lies in the schema "public". The triggers are the owner's: whoever may write to a
// table adds to the log through them, and in no other way.
#ifndef ORVO_PLATFORM_STORE_POSTGRESSCHEMA_H
#define ORVO_PLATFORM_STORE_POSTGRESSCHEMA_H

#include "platform/store/PostgresApi.h"

#include <string>
#include <string_view>
#include <vector>

namespace orvo::store::postgres {

/// Who may write the tables that the editors write, and who may only read. Logins are members.
constexpr const char* engineerRole = "orvo_engineer";
constexpr const char* viewerRole = "orvo_viewer";

/// Held, until the transaction ends, by whoever adds to the log.
constexpr const char* takeLogLock = "pg_advisory_xact_lock(1332901487, 1)";
/// Announces, without contents, that the log has grown.
constexpr const char* wakeChannel = "orvo";

/// The copy of a content's bytes into its table.
constexpr const char* copyContentIn =
    "COPY public.\"MenuResourceFileData\" (\"KeyLink\", \"part\", \"data\") FROM STDIN (FORMAT "
    "binary)";

/// public."name".
std::string qualified(std::string_view name);

/// What leads from each version to the next; the first from an empty database. A released step is
/// never changed.
const std::vector<std::string>& migrations();

/// The expression, over "MenuResource", that gives foldedName() of the name.
const std::string& foldedNameExpression();
/// The same behind the folded link to a folder (empty for NULL) and "/".
const std::string& foldedPlaceExpression();

/// Brings the store to the newest version, all missing steps in one transaction. NotAStore if the
/// database holds none and `create` is false; NewerStore if it is beyond the steps. Nothing is
/// written if it is there already.
Status migrate(Connection& connection, const std::vector<std::string>& steps, bool create);

} // namespace orvo::store::postgres

#endif
