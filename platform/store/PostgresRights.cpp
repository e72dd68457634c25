// Who may do what with a PostgreSQL store, as SQL.
#include "platform/store/PostgresTriggers.h"

#include "frame/Vocabulary.h"
#include "platform/store/Sql.h"

namespace orvo::store::postgres {

namespace {

std::string both() {
    return std::string(engineerRole) + ", " + viewerRole;
}

/// Takes every right on the thing away from everybody but the owner, and gives these.
std::string grant(const std::string& rights, const std::string& thing, const std::string& to) {
    std::string sql = "REVOKE ALL ON " + thing + " FROM PUBLIC, " + both() + ";\n";
    return rights.empty() ? sql : sql + "GRANT " + rights + " ON " + thing + " TO " + to + ";\n";
}

/// Nobody but our roles gets into the database, and nobody but its owner makes anything in the
/// schema that the store lies in. The owner of the store can say so only if he owns the database.
std::string rightsOfDatabase() {
    return R"(DO $orvo$ BEGIN
  EXECUTE pg_catalog.format('REVOKE ALL ON DATABASE %1$I FROM PUBLIC; '
    'GRANT CONNECT ON DATABASE %1$I TO )" +
           both() + R"(', pg_catalog.current_database());
  REVOKE CREATE ON SCHEMA public FROM PUBLIC, )" +
           both() + R"(;
EXCEPTION WHEN insufficient_privilege THEN NULL;
END $orvo$;
GRANT USAGE ON SCHEMA public TO )" +
           both() + ";\n";
}

} // namespace

std::string rights(const Dictionary& dictionary) {
    std::string sql = rightsOfDatabase();
    std::vector<std::string> functions = {"NciLock",
                                          "NciTakeLock",
                                          "NciTruncate",
                                          "NciPrune",
                                          "NciRefuse",
                                          "NciKeep",
                                          "MenuResourceFileData.log",
                                          std::string(dictionary.content.name) + ".log"};
    std::vector<std::string> names = {dictionary.content.name, "MenuResourceFileData"};
    for (const TableDef& table : dictionary.tables) {
        names.emplace_back(table.name);
        functions.push_back(std::string(table.name) + ".log");
    }
    // Or anyone could hang them on a table of his own and log what never happened.
    for (const std::string& name : functions)
        sql += grant(name == "NciTakeLock" ? "EXECUTE" : "", "FUNCTION " + qualified(name) + "()",
                     engineerRole);
    for (const char* name : {"NciEvent", "NciPruned", "NciStore", "NciVersion", "NciVersionData"})
        sql += grant("SELECT", qualified(name), both());
    sql += grant("SELECT", "SEQUENCE " + qualified("NciEventId"), both());
    sql += grant("", qualified("NciLock"), {});
    // Not to be deleted: what has no checksum is not checked. It goes with its content.
    sql += grant("SELECT", qualified("MenuResourceFileSum"), both());
    sql += std::string("GRANT INSERT, UPDATE ON ") + qualified("MenuResourceFileSum") + " TO " +
           engineerRole + ";\n";
    for (const std::string& name : names) {
        sql += grant("SELECT", qualified(name), both());
        // Users are logins of the database: only who may make those may change them.
        if (name != table::Users)
            sql += "GRANT INSERT, UPDATE, DELETE ON " + qualified(name) + " TO " + engineerRole +
                   ";\n";
    }
    return sql;
}

} // namespace orvo::store::postgres
