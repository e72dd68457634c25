// The functions and triggers of a PostgreSQL store that write its log, made from the dictionary.
//
// The functions that log run with the owner's rights on behalf of whoever writes, who may have made
// types, functions, operators and tables of any name in a schema of his own. So each sets its
// search path, and names what it uses with its schema all the same. A call is dear, which is why
// one logs all rows of a statement.
#include "platform/store/PostgresTriggers.h"

#include "frame/Vocabulary.h"
#include "platform/store/Sql.h"

#include <algorithm>

namespace orvo::store::postgres {

namespace {

constexpr const char* equals = " OPERATOR(pg_catalog.=) ";

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

/// JSON object of the values of a row ("o." or "n.") that the update changed.
std::string changed(const TableDef& table, const char* row) {
    std::string sql = "pg_catalog.concat('{', pg_catalog.substr(pg_catalog.concat(";
    for (size_t i = 1; i < table.fields.size(); ++i) { // a changed key is no update
        const FieldDef& field = table.fields[i];
        const std::string before = named("o.", field);
        const std::string after = named("n.", field);
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

/// Gives v_group the group of the row v_id, the next one, and of those that the call writes with
/// it. The rows of a transaction follow each other, since it keeps the log to itself from before
/// the first of them to its end: so a row belongs to the group of the newest row exactly if the
/// same transaction has written that. Nobody can claim a transaction, unlike a setting. The first
/// row of a transaction may join a group of its own login.
constexpr const char* takeGroup =
    R"(    SELECT "group", "xact" INTO v_group, v_xact FROM public."NciEvent"
      WHERE "id" OPERATOR(pg_catalog.<) v_id ORDER BY "id" DESC LIMIT 1;
    v_undoes := '';
    IF NOT coalesce(v_xact OPERATOR(pg_catalog.=) pg_catalog.pg_current_xact_id(), false) THEN
      v_group := NULL;
      v_text := coalesce(pg_catalog.current_setting('orvo.action', true), '');
      IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}$' THEN
        SELECT "group" INTO v_group FROM public."NciEvent"
          WHERE "id" OPERATOR(pg_catalog.=) v_text::pg_catalog.int8
            AND "group" OPERATOR(pg_catalog.=) "id" AND "login" OPERATOR(pg_catalog.=) v_login;
      END IF;
      IF v_group IS NULL THEN
        v_group := v_id;
        v_text := coalesce(pg_catalog.current_setting('orvo.undoes', true), '');
        IF v_text OPERATOR(pg_catalog.~) '^[0-9]{1,18}(,[0-9]{1,18})*$' THEN
          v_undoes := v_text;
        END IF;
      END IF;
    END IF;
)";

/// Writes rows to the log, the first of them with the number v_id: one for each row of `from`, or a
/// single one.
std::string logEvents(const TableDef& table, OrvoEvent code, const std::string& key,
                      const std::string& after, const std::string& before,
                      const std::string& from = {}) {
    const auto ofFirst = [](const char* first, const char* others) {
        return std::string("CASE pg_catalog.row_number() OVER () WHEN 1 THEN ") + first + " ELSE " +
               others + " END";
    };
    return "INSERT INTO public.\"NciEvent\" SELECT\n      " +
           ofFirst("v_id", "pg_catalog.nextval('public.\"NciEventId\"')") + ", " +
           std::to_string(code) + ", " + literal(table.name) + ",\n      " + key +
           ", v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()),\n      " +
           after + ",\n      " + before +
           ", v_call,\n      v_group, pg_catalog.pg_current_xact_id(), v_client, v_place, " +
           ofFirst("v_undoes", "''") + from;
}

/// The login is that of the session, which nobody can choose. Only who owns the store, as whom the
/// function runs, may write under another one: the administrator's command, for example. "call"
/// tells a writer that lost its connection whether its transaction is in the log. Program and
/// machine are what the writer says of itself, or what the server knows of whoever says nothing.
constexpr const char* logWriter = R"(DECLARE
  v_login pg_catalog.text := session_user;
  v_other pg_catalog.text := pg_catalog.current_setting('orvo.login', true);
  v_call pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.call', true), '');
  v_client pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.client', true), '');
  v_place pg_catalog.text := coalesce(pg_catalog.current_setting('orvo.place', true), '');
  v_id pg_catalog.int8;
  v_group pg_catalog.int8;
  v_xact pg_catalog.xid8;
  v_undoes pg_catalog.text;
  v_text pg_catalog.text;
BEGIN
  IF v_client OPERATOR(pg_catalog.=) '' THEN
    v_client := coalesce(pg_catalog.current_setting('application_name', true), '');
  END IF;
  IF v_place OPERATOR(pg_catalog.=) '' THEN
    v_place := coalesce(pg_catalog.host(pg_catalog.inet_client_addr()), '');
  END IF;
  v_client := pg_catalog.left(v_client, 64);
  v_place := pg_catalog.left(v_place, 64);
  IF v_other OPERATOR(pg_catalog.<>) ''
      AND pg_catalog.pg_has_role(session_user, current_user, 'MEMBER') THEN
    v_login := v_other;
  END IF;
)";

/// The rows of an update, as they were and as they are, but for those whose key it changed. They
/// come in one order. An outer join, since a plan that was made for a single row would compare each
/// of them with all others.
constexpr const char* updatedRows = R"(
      FROM (SELECT pg_catalog.row_number() OVER () AS num, * FROM gone) AS o
      FULL JOIN (SELECT pg_catalog.row_number() OVER () AS num, * FROM come) AS n USING (num)
      WHERE o."KeyLink" OPERATOR(pg_catalog.=) n."KeyLink")";

/// The log of contents: the bytes that a change takes away get its number.
std::string logContents(const std::string& events) {
    return "WITH logged AS (" + events + R"( RETURNING "id", "key")
    UPDATE public."NciVersion" AS v SET "event" = l."id", "login" = v_login FROM logged AS l
      WHERE v."event" IS NULL
        AND pg_catalog.lower(v."KeyLink") OPERATOR(pg_catalog.=) pg_catalog.lower(l."key"))";
}

/// `onDelete` and `onNewKey` are statements that run before a deletion, of the rows `gone`, and
/// after the change of a key, of OLD and NEW. The row of a changed key is called for itself: it is
/// a deletion and an insertion.
void addLogTriggers(Definitions& all, const TableDef& table, const std::string& onDelete = {},
                    const std::string& onNewKey = {}) {
    const std::string name = std::string(table.name) + ".log";
    const bool contents = std::string_view(table.name) == table::MenuResourceFile;
    const auto log = [&](const std::string& events) {
        return "    " + (contents ? logContents(events) : events) + ";\n";
    };
    const char* const takeNumber = "    v_id := pg_catalog.nextval('public.\"NciEventId\"');\n";
    // A statement that finds nothing takes none.
    const auto numbersFor = [](const char* rows) {
        return std::string(
                   "    SELECT pg_catalog.nextval('public.\"NciEventId\"') INTO v_id FROM ") +
               rows + " LIMIT 1;\n    IF v_id IS NULL THEN\n      RETURN NULL;\n    END IF;\n" +
               takeGroup;
    };
    std::string sql =
        std::string(logWriter) + "  IF TG_LEVEL" + equals + "'ROW' THEN\n" + takeNumber + takeGroup;
    sql += log(logEvents(table, OrvoEventDelete, "OLD.\"KeyLink\"", "'{}'", whole(table, "OLD.")));
    sql += std::string(takeNumber) + "    v_undoes := '';\n    " +
           logEvents(table, OrvoEventInsert, "NEW.\"KeyLink\"", whole(table, "NEW."), "'{}'") +
           ";\n" + onNewKey;
    sql += std::string("  ELSIF TG_OP") + equals + "'INSERT' THEN\n" + numbersFor("come") + "    " +
           logEvents(table, OrvoEventInsert, "n.\"KeyLink\"", whole(table, "n."), "'{}'",
                     "\n      FROM come AS n") +
           ";\n";
    sql += std::string("  ELSIF TG_OP") + equals + "'DELETE' THEN\n" + onDelete +
           numbersFor("gone") +
           log(logEvents(table, OrvoEventDelete, "o.\"KeyLink\"", "'{}'", whole(table, "o."),
                         "\n      FROM gone AS o"));
    sql += "  ELSE\n" + numbersFor("come") +
           log(logEvents(table, OrvoEventUpdate, "n.\"KeyLink\"", changed(table, "n."),
                         changed(table, "o."), updatedRows));
    sql += "  END IF;\n  RETURN NULL;\nEND ";
    // Dates to the last bit, whatever the session is set to. And the newest row by its index: a
    // plan made while the log was short would read all of it for each statement of a long
    // transaction.
    all.push_back(Function{name, "trigger", sql, true, hasDates(table), true});
    const auto after = [&](const char* trigger, const char* when, const char* each,
                           const char* rows) {
        all.push_back(Trigger{trigger, table.name, when, each, name, rows});
    };
    after("rekeyed", "AFTER UPDATE",
          "ROW WHEN (OLD.\"KeyLink\" OPERATOR(pg_catalog.<>) NEW.\"KeyLink\")", "");
    after("inserted", "AFTER INSERT", "STATEMENT", "REFERENCING NEW TABLE AS come ");
    after("deleted", "AFTER DELETE", "STATEMENT", "REFERENCING OLD TABLE AS gone ");
    after("updated", "AFTER UPDATE", "STATEMENT",
          "REFERENCING OLD TABLE AS gone NEW TABLE AS come ");
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
    for (const TableDef& table : dictionary.tables) {
        // Content goes, and changes its owner's key, with its resource.
        const bool owner = std::string_view(table.name) == table::MenuResource;
        addLogTriggers(all, table,
                       owner ? "    DELETE FROM public.\"MenuResourceFile\"\n"
                               "      WHERE pg_catalog.lower(\"MenuResourceKey\") "
                               "OPERATOR(pg_catalog.=) ANY\n"
                               "        (SELECT pg_catalog.lower(\"KeyLink\") FROM gone);\n"
                             : "",
                       owner ? "    UPDATE public.\"MenuResourceFile\"\n"
                               "      SET \"MenuResourceKey\" = NEW.\"KeyLink\"\n"
                               "      WHERE pg_catalog.lower(\"MenuResourceKey\")\n"
                               "        OPERATOR(pg_catalog.=) pg_catalog.lower(OLD.\"KeyLink\");\n"
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
                   (function->byIndex ? "SET enable_seqscan = off SET jit = off " : "") +
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
