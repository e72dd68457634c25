// PostgresSchema.h: tables, triggers, rights and migrations of a store in a PostgreSQL database.
//
// Everything lies in the schema "public". The triggers are the owner's: whoever may write to a
// table adds to the log through them, and in no other way.
#ifndef ORVO_PLATFORM_STORE_POSTGRESSCHEMA_H
#define ORVO_PLATFORM_STORE_POSTGRESSCHEMA_H

#include "platform/store/Migrations.h"
#include "platform/store/PostgresApi.h"

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace orvo::store::postgres {

/// Who may write the tables that the editors write, and who may only read. Logins are members.
constexpr const char* engineerRole = "orvo_engineer";
constexpr const char* viewerRole = "orvo_viewer";

/// Takes the lock that whoever adds to the log holds until the transaction ends. Only who may write
/// can take it.
constexpr const char* takeLogLock = "public.\"NciTakeLock\"()";
/// Announces, without contents, that the log has grown.
constexpr const char* wakeChannel = "orvo";

/// The copy of a content's bytes into its table.
constexpr const char* copyContentIn =
    "COPY public.\"MenuResourceFileData\" (\"KeyLink\", \"part\", \"data\") FROM STDIN (FORMAT "
    "binary)";

/// Makes what the rest of the transaction makes the store owner's, whoever runs it.
constexpr const char* actAsOwner =
    "DO $orvo$ BEGIN EXECUTE pg_catalog.format('SET LOCAL ROLE %I', (SELECT "
    "pg_catalog.pg_get_userbyid(relowner) FROM pg_catalog.pg_class WHERE oid "
    "OPERATOR(pg_catalog.=) 'public.\"NciStore\"'::pg_catalog.regclass)); END $orvo$;";
/// SQL that makes every number of a change that was ever given out too low for a reader of the log,
/// and the next change get a higher one.
std::string cursorsPruned();

/// public."name".
std::string qualified(std::string_view name);

/// A function of the store, in PL/pgSQL, without parameters and with a search path of its own.
struct Function {
    std::string name;
    const char* returns;
    std::string body;        ///< behind the line that opens it
    bool asOwner = false;    ///< runs with the rights of the store's owner
    bool exactDates = false; ///< writes dates to the last bit
    bool byIndex = false;    ///< looks rows up by an index; its queries are not worth compiling
};
struct Trigger {
    const char* name;
    std::string table;
    const char* when; ///< BEFORE or AFTER, and of what
    const char* each; ///< ROW or STATEMENT, and the condition, if there is one
    std::string function;
    const char* rows = ""; ///< names for the rows of the statement
};
using Definition = std::variant<Function, Trigger>;
/// What the store puts beside its tables, each behind what it needs.
std::vector<Definition> definitions(const Dictionary& dictionary);

/// SQL that drops the functions of a store of any version, and with them its triggers.
std::string dropFunctions();
/// SQL that makes functions, triggers and rights.
std::string functionsAndRights(const Dictionary& dictionary);
/// A query for what is missing, disabled or altered of functions and triggers, a line in Russian
/// for each. What others added besides does not matter.
std::string differingDefinitions(const Dictionary& dictionary);
/// A query for what PUBLIC may do with the database and its schema and is not to, a line each.
std::string looseRightsQuery();

/// Conditions by which the field's index serves, if it has one. `value` is an expression, folded
/// already for the first.
std::string foldedEquals(const TableDef& table, const FieldDef& field, const std::string& value);
std::string exactlyEquals(const FieldDef& field, const std::string& value);
/// The expression, over "MenuResource", that gives foldedName() of the name.
const std::string& foldedNameExpression();
/// The same behind the folded link to a folder (empty for NULL) and "/".
const std::string& foldedPlaceExpression();

/// Brings the store to the newest version: all missing steps and then functions, triggers and
/// rights again, in one transaction. They become those of the store's owner. NotAStore if the
/// database holds none and `create` is false; NewerStore if it is beyond the steps. Nothing is
/// written if it is there already.
Status migrate(Connection& connection, const MigrationSteps& steps, const Dictionary& dictionary,
               bool create);
/// With the steps and the dictionary of this program.
Status migrate(Connection& connection, bool create);

} // namespace orvo::store::postgres

#endif
