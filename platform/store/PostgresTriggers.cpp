// The functions, triggers and rights of a PostgreSQL store, made from the dictionary.
//
// The functions that log run with the owner's rights on behalf of whoever writes, who may have made
// types, functions, operators and tables of any name in a schema of his own. So each sets its
// search path, and names what it uses with its schema all the same. Setting a path is paid per
// call, which is why one call does all that a row needs.
#include "platform/store/PostgresSchema.h"

#include "frame/Vocabulary.h"
#include "platform/store/Sql.h"

#include <algorithm>

namespace orvo::store::postgres {

namespace {

constexpr const char* equals = " OPERATOR(pg_catalog.=) ";

std::string both() {
    return std::string(engineerRole) + ", " + viewerRole;
}

using Definitions = std::vector<Definition>;

std::string named(const char* prefix, const FieldDef& field) {
    return std::string(prefix) + identifier(field.name);
}

/// The value as JSON text.
std::string json(const char* row, const FieldDef& field) {
    return "coalesce(pg_catalog.to_json(" + named(row, field) + ")::pg_catalog.text, 'null')";
}

/// JSON object of all values of a row ("NEW." or "OLD.").
std::string whole(const TableDef& table, const char* row) {
    std::string sql = "pg_catalog.concat('{";
    for (const FieldDef& field : table.fields) {
        if (&field != &table.fields.front())
            sql += ", ',";
        sql += std::string("\"") + field.name + "\":', " + json(row, field);
    }
    return sql + ", '}')";
}

/// JSON object of the values of a row that the update changed.
std::string changed(const TableDef& table, const char* row) {
    std::string sql = "pg_catalog.concat('{', pg_catalog.substr(pg_catalog.concat(";
    for (size_t i = 1; i < table.fields.size(); ++i) { // a changed key is no update
        const FieldDef& field = table.fields[i];
        const std::string before = named("OLD.", field);
        const std::string after = named("NEW.", field);
        sql += std::string(i == 1 ? "" : ",\n      ") + "CASE WHEN coalesce(" + before + equals +
               after + ", " + before + " IS NULL AND " + after +
               " IS NULL) THEN '' ELSE pg_catalog.concat(',\"" + field.name + "\":', " +
               json(row, field) + ") END";
    }
    return sql + "), 2), '}')";
}

bool hasDates(const TableDef& table) {
    return std::any_of(table.fields.begin(), table.fields.end(),
                       [](const FieldDef& field) { return field.type == MDX_DATE; });
}

std::string logEvent(const TableDef& table, OrvoEvent code, const char* key,
                     const std::string& after, const std::string& before) {
    return "    INSERT INTO public.\"NciEvent\" VALUES "
           "(pg_catalog.nextval('public.\"NciEventId\"'), " +
           std::to_string(code) + ", " + literal(table.name) + ",\n      " + key +
           ", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),\n      " +
           after + ",\n      " + before + ", v_call);\n";
}

/// The login is that of the session, which nobody can choose. Only who owns the store, as whom the
/// function runs, may write under another one: the administrator's command, for example. "call"
/// tells a writer that lost its connection whether its transaction is in the log.
constexpr const char* writer = R"(DECLARE
  v_login pg_catalog.text := session_user;
  v_other pg_catalog.text := pg_catalog.current_setting('orvo.login', true);
  v_call pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.call', true), '');
BEGIN
  IF v_other OPERATOR(pg_catalog.<>) ''
      AND pg_catalog.pg_has_role(session_user, current_user, 'MEMBER') THEN
    v_login := v_other;
  END IF;
)";

/// `onDelete` and `onNewKey` are statements that run before a deletion and after a change of key.
void addLogTriggers(Definitions& all, const TableDef& table, const std::string& onDelete = {},
                    const std::string& onNewKey = {}) {
    const std::string name = std::string(table.name) + ".log";
    std::string sql = std::string(writer) + "  IF TG_OP" + equals + "'INSERT' THEN\n";
    sql += logEvent(table, OrvoEventInsert, "NEW.\"KeyLink\"", whole(table, "NEW."), "'{}'");
    sql += std::string("  ELSIF TG_OP") + equals + "'DELETE' THEN\n" + onDelete;
    sql += logEvent(table, OrvoEventDelete, "OLD.\"KeyLink\"", "'{}'", whole(table, "OLD."));
    sql += std::string("  ELSIF OLD.\"KeyLink\"") + equals + "NEW.\"KeyLink\" THEN\n";
    sql += logEvent(table, OrvoEventUpdate, "NEW.\"KeyLink\"", changed(table, "NEW."),
                    changed(table, "OLD."));
    sql += "  ELSE\n";
    sql += logEvent(table, OrvoEventDelete, "OLD.\"KeyLink\"", "'{}'", whole(table, "OLD."));
    sql += logEvent(table, OrvoEventInsert, "NEW.\"KeyLink\"", whole(table, "NEW."), "'{}'");
    sql += onNewKey + "  END IF;\n  RETURN NULL;\nEND ";
    // Dates to the last bit, whatever the session is set to.
    all.push_back(Function{name, "trigger", sql, true, hasDates(table)});
    all.push_back(Trigger{"log", table.name, "AFTER INSERT OR UPDATE OR DELETE", "ROW", name});
    all.push_back(
        Trigger{"lock", table.name, "BEFORE INSERT OR UPDATE OR DELETE", "STATEMENT", "NciLock"});
    all.push_back(Trigger{"truncate", table.name, "BEFORE TRUNCATE", "STATEMENT", "NciTruncate"});
}

/// What serves the log as a whole.
void addLogFunctions(Definitions& all) {
    // A number alone is not commit order: whoever adds a row holds the lock from before the number
    // is drawn until the transaction has ended. The lock is taken before the statement touches a
    // row, so that two transactions never wait for each other across it and a row.
    // Whoever holds it is held to limits for the rest of the transaction, if his session has none:
    // a transaction left open must not stop everybody else. And it announces the change, unless
    // some listener that does not read has let the server's queue run half full: a full one would
    // fail every commit, and readers look at the log each second anyway.
    const std::string lock = std::string(R"(DECLARE
  v_idle pg_catalog.interval :=
    pg_catalog.current_setting('idle_in_transaction_session_timeout')::pg_catalog.interval;
BEGIN
  LOCK TABLE public."NciLock" IN EXCLUSIVE MODE;
  IF v_idle OPERATOR(pg_catalog.=) '0'::pg_catalog.interval
      OR v_idle OPERATOR(pg_catalog.>) '1 min'::pg_catalog.interval THEN
    PERFORM pg_catalog.set_config('idle_in_transaction_session_timeout', '60s', true);
  END IF;
  IF pg_catalog.current_setting('statement_timeout') OPERATOR(pg_catalog.=) '0' THEN
    PERFORM pg_catalog.set_config('statement_timeout', '10min', true);
  END IF;
  IF pg_catalog.pg_notification_queue_usage() OPERATOR(pg_catalog.<) 0.5::pg_catalog.float8 THEN
    PERFORM pg_catalog.pg_notify(')") +
                             wakeChannel + "', '');\n  END IF;\n";
    all.push_back(Function{"NciLock", "trigger", lock + "  RETURN NULL;\nEND ", true});
    all.push_back(Function{"NciTakeLock", "void", lock + "END ", true});
    all.push_back(Function{"NciTruncate", "trigger", R"(BEGIN
  EXECUTE pg_catalog.format('DELETE FROM %I.%I', TG_TABLE_SCHEMA, TG_TABLE_NAME);
  RETURN NULL;
END )"});
    all.push_back(Function{"NciPrune", "trigger", R"(BEGIN
  IF TG_OP OPERATOR(pg_catalog.=) 'TRUNCATE' THEN
    DELETE FROM public."NciEvent";
  ELSE
    UPDATE public."NciPruned" SET "id" = greatest("id", (SELECT pg_catalog.max("id") FROM gone));
  END IF;
  RETURN NULL;
END )"});
    // Rows come from the functions above, with numbers in their order: a number from elsewhere
    // would hide those that follow from whoever has read it.
    all.push_back(Function{"NciRefuse", "trigger", R"(BEGIN
  RAISE EXCEPTION 'the log gives its ids itself' USING ERRCODE = 'insufficient_privilege';
END )"});
    all.push_back(Trigger{"number", "NciEvent", "BEFORE INSERT OR UPDATE OF \"id\"",
                          "STATEMENT WHEN (pg_catalog.pg_trigger_depth() OPERATOR(pg_catalog.=) 0)",
                          "NciRefuse"});
    all.push_back(Trigger{"pruned", "NciEvent", "AFTER DELETE", "STATEMENT", "NciPrune",
                          "REFERENCING OLD TABLE AS gone "});
    all.push_back(Trigger{"truncate", "NciEvent", "BEFORE TRUNCATE", "STATEMENT", "NciPrune"});
}

/// Bytes that change make an event of their content's row, unless the same transaction wrote that
/// row already: then it is in the log.
void addContentTriggers(Definitions& all, const TableDef& content) {
    const std::string data = "MenuResourceFileData";
    const auto touch = [&](const char* unless, const char* rows) {
        return std::string("  IF TG_OP OPERATOR(pg_catalog.<>) '") + unless +
               "' THEN\n    UPDATE " + qualified(content.name) +
               " SET \"KeyLink\" = \"KeyLink\"\n    WHERE xmin OPERATOR(pg_catalog.<>) "
               "pg_catalog.pg_current_xact_id()::pg_catalog.xid\n      AND \"KeyLink\" "
               "OPERATOR(pg_catalog.=) ANY (SELECT \"KeyLink\" FROM " +
               rows + ");\n  END IF;\n";
    };
    const std::string name = data + ".log";
    all.push_back(Function{name, "trigger",
                           "BEGIN\n" + touch("INSERT", "gone") + touch("DELETE", "come") +
                               "  RETURN NULL;\nEND ",
                           true});
    const auto after = [&](const char* trigger, const char* when, const char* rows) {
        all.push_back(Trigger{trigger, data, when, "STATEMENT", name, rows});
    };
    after("inserted", "AFTER INSERT", "REFERENCING NEW TABLE AS come ");
    after("deleted", "AFTER DELETE", "REFERENCING OLD TABLE AS gone ");
    after("updated", "AFTER UPDATE", "REFERENCING OLD TABLE AS gone NEW TABLE AS come ");
    all.push_back(
        Trigger{"lock", data, "BEFORE INSERT OR UPDATE OR DELETE", "STATEMENT", "NciLock"});
    all.push_back(Trigger{"truncate", data, "BEFORE TRUNCATE", "STATEMENT", "NciTruncate"});
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

std::string rights(const Dictionary& dictionary) {
    std::string sql = rightsOfDatabase();
    std::vector<std::string> functions = {"NciLock",
                                          "NciTakeLock",
                                          "NciTruncate",
                                          "NciPrune",
                                          "NciRefuse",
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
    for (const char* name : {"NciEvent", "NciPruned", "NciStore"})
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

} // namespace

std::string dropFunctions() {
    // With their triggers. Whatever others made under names of another form stays.
    return R"(DO $orvo$ DECLARE
  name pg_catalog.regprocedure;
BEGIN
  FOR name IN SELECT p.oid FROM pg_catalog.pg_proc p
      WHERE p.pronamespace OPERATOR(pg_catalog.=) 'public'::pg_catalog.regnamespace
        AND (p.proname OPERATOR(pg_catalog.~) '^Nci[A-Z]'
          OR p.proname OPERATOR(pg_catalog.~) '^[A-Z][A-Za-z]*[.]log$') LOOP
    EXECUTE pg_catalog.format('DROP FUNCTION %s CASCADE', name);
  END LOOP;
END $orvo$;
)";
}

std::vector<Definition> definitions(const Dictionary& dictionary) {
    Definitions all;
    addLogFunctions(all);
    const std::string owned = std::string(" WHERE pg_catalog.lower(\"MenuResourceKey\")") + equals +
                              "pg_catalog.lower(OLD.\"KeyLink\");\n";
    for (const TableDef& table : dictionary.tables) {
        // Content goes, and changes its owner's key, with its resource.
        const bool owner = std::string_view(table.name) == table::MenuResource;
        addLogTriggers(all, table,
                       owner ? "    DELETE FROM public.\"MenuResourceFile\"" + owned : "",
                       owner ? "    UPDATE public.\"MenuResourceFile\" SET \"MenuResourceKey\" = "
                               "NEW.\"KeyLink\"" +
                                   owned
                             : "");
    }
    addLogTriggers(all, dictionary.content);
    addContentTriggers(all, dictionary.content);
    return all;
}

std::string functionsAndRights(const Dictionary& dictionary) {
    std::string sql;
    for (const Definition& one : definitions(dictionary)) {
        if (const auto* function = std::get_if<Function>(&one))
            sql += "CREATE FUNCTION " + qualified(function->name) + "() RETURNS " +
                   function->returns + " LANGUAGE plpgsql SET search_path = pg_catalog, pg_temp " +
                   (function->exactDates ? "SET extra_float_digits = 1 " : "") +
                   (function->asOwner ? "SECURITY DEFINER" : "") + " AS $orvo$\n" + function->body +
                   "$orvo$;\n";
        else if (const auto* trigger = std::get_if<Trigger>(&one))
            sql += "CREATE TRIGGER " + identifier(trigger->name) + " " + trigger->when + " ON " +
                   qualified(trigger->table) + " " + trigger->rows + "FOR EACH " + trigger->each +
                   " EXECUTE FUNCTION " + qualified(trigger->function) + "();\n";
    }
    return sql + rights(dictionary);
}

} // namespace orvo::store::postgres
