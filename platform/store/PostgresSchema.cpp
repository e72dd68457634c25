#include "platform/store/PostgresSchema.h"

#include "platform/store/Names.h"
#include "platform/store/Sql.h"

#include <algorithm>

namespace orvo::store::postgres {

namespace {

std::string named(const char* prefix, const FieldDef& field) {
    return std::string(prefix) + identifier(field.name);
}

/// A column. The collation orders by code and folds ASCII only, which is how keys and links compare
/// in every store. The checks keep out what no record could hold.
std::string column(const FieldDef& field, bool isKey) {
    const std::string name = identifier(field.name);
    if (isKey)
        return name + " text COLLATE \"C\" PRIMARY KEY CHECK (" + name + " ~ '^[ -~]+$')";
    switch (field.type) {
    case MDX_BOOLEAN:
        return name + " boolean";
    case MDX_INTEGER:
        return name + " integer";
    case MDX_DATE: // neither infinite nor no number, which counts as the largest
        return name + " double precision CHECK (abs(" + name + ") <= 1.7976931348623157e308)";
    default:
        return name + " text COLLATE \"C\"" + (field.link ? " CHECK (" + name + " <> '')" : "");
    }
}

std::string createTable(const TableDef& table) {
    std::string sql = "CREATE TABLE " + qualified(table.name) + " (";
    for (size_t i = 0; i < table.fields.size(); ++i)
        sql += (i == 0 ? "\n  " : ",\n  ") + column(table.fields[i], i == 0);
    return sql + ");\nCREATE UNIQUE INDEX ON " + qualified(table.name) + " (lower(\"KeyLink\"));\n";
}

/// For equality, whatever the length of the values; links without regard to case.
std::string index(const char* table, const char* field, bool link) {
    const std::string name = identifier(field);
    return "CREATE INDEX ON " + qualified(table) + " USING hash (" +
           (link ? "lower(" + name + ")" : name) + ");\n";
}

// The functions below run with the owner's rights on behalf of anyone. Setting a search path of
// their own would make every call several times as expensive, so everything in them is qualified
// instead: neither a function nor an operator can be slipped in.

constexpr const char* equals = " OPERATOR(pg_catalog.=) ";

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

std::string logEvent(const TableDef& table, int code, const char* key, const std::string& after,
                     const std::string& before) {
    return "    PERFORM public.\"NciLog\"(" + std::to_string(code) + ", " + literal(table.name) +
           ", " + key + ",\n      " + after + ",\n      " + before + ");\n";
}

/// `onDelete` and `onNewKey` are statements that run before a deletion and after a change of key.
std::string logTriggers(const TableDef& table, const std::string& onDelete = {},
                        const std::string& onNewKey = {}) {
    const std::string function = qualified(std::string(table.name) + ".log");
    const std::string on = " ON " + qualified(table.name);
    // Dates to the last bit, whatever the session is set to.
    std::string sql = "CREATE FUNCTION " + function +
                      "() RETURNS trigger LANGUAGE plpgsql SECURITY DEFINER" +
                      (hasDates(table) ? " SET extra_float_digits = 1" : "") +
                      " AS $orvo$\nBEGIN\n  IF TG_OP" + equals + "'INSERT' THEN\n";
    sql += logEvent(table, 601, "NEW.\"KeyLink\"", whole(table, "NEW."), "'{}'");
    sql += std::string("  ELSIF TG_OP") + equals + "'DELETE' THEN\n" + onDelete;
    sql += logEvent(table, 603, "OLD.\"KeyLink\"", "'{}'", whole(table, "OLD."));
    sql += std::string("  ELSIF OLD.\"KeyLink\"") + equals + "NEW.\"KeyLink\" THEN\n";
    sql += logEvent(table, 602, "NEW.\"KeyLink\"", changed(table, "NEW."), changed(table, "OLD."));
    sql += "  ELSE\n";
    sql += logEvent(table, 603, "OLD.\"KeyLink\"", "'{}'", whole(table, "OLD."));
    sql += logEvent(table, 601, "NEW.\"KeyLink\"", whole(table, "NEW."), "'{}'");
    sql += onNewKey + "  END IF;\n  RETURN NULL;\nEND $orvo$;\n";
    // Or anyone could hang it on a table of his own and log what never happened.
    sql += "REVOKE ALL ON FUNCTION " + function + "() FROM PUBLIC;\n";
    sql += "CREATE TRIGGER \"log\" AFTER INSERT OR UPDATE OR DELETE" + on +
           " FOR EACH ROW EXECUTE FUNCTION " + function + "();\n";
    sql += "CREATE TRIGGER \"lock\" BEFORE INSERT OR UPDATE OR DELETE" + on +
           " FOR EACH STATEMENT EXECUTE FUNCTION public.\"NciLock\"();\n";
    sql += "CREATE TRIGGER \"truncate\" BEFORE TRUNCATE" + on +
           " FOR EACH STATEMENT EXECUTE FUNCTION public.\"NciTruncate\"();\n";
    return sql;
}

std::string makeRole(const char* role) {
    return std::string("DO $orvo$ BEGIN\n  IF NOT EXISTS (SELECT FROM pg_roles WHERE rolname = ") +
           literal(role) + ") THEN\n    CREATE ROLE " + role +
           " NOLOGIN;\n  END IF;\nEXCEPTION WHEN duplicate_object OR unique_violation THEN NULL;\n"
           "END $orvo$;\n";
}

/// The log, and what adds to it.
std::string logTables() {
    // A number alone is not commit order: whoever adds a row holds the lock from before the number
    // is drawn until the transaction has ended. The lock is taken before the statement touches a
    // row, so that two transactions never wait for each other across it and a row.
    //
    // The login is that of the session, which nobody can choose. Only who owns the store may write
    // under another one: the administrator's command, for example. "call" tells a writer that lost
    // its connection whether its transaction is in the log.
    return std::string(R"(
CREATE TABLE public."NciEvent" ("id" bigint PRIMARY KEY, "code" integer NOT NULL,
  "tableName" text NOT NULL, "key" text NOT NULL, "login" text NOT NULL,
  "time" double precision NOT NULL, "after" text NOT NULL, "before" text NOT NULL,
  "call" text NOT NULL);
CREATE SEQUENCE public."NciEventId" OWNED BY public."NciEvent"."id";
CREATE TABLE public."NciPruned" ("id" bigint NOT NULL);
INSERT INTO public."NciPruned" VALUES (0);
CREATE TABLE public."NciStore" ("version" integer NOT NULL);
INSERT INTO public."NciStore" VALUES (0);

CREATE FUNCTION public."NciLock"() RETURNS trigger LANGUAGE plpgsql AS $orvo$
BEGIN
  PERFORM pg_catalog.)") +
           takeLogLock + R"(;
  RETURN NULL;
END $orvo$;

CREATE FUNCTION public."NciTruncate"() RETURNS trigger LANGUAGE plpgsql
  SET search_path = pg_catalog, pg_temp AS $orvo$
BEGIN
  EXECUTE format('DELETE FROM %I.%I', TG_TABLE_SCHEMA, TG_TABLE_NAME);
  RETURN NULL;
END $orvo$;

CREATE FUNCTION public."NciLog"(p_code pg_catalog.int4,
  p_table pg_catalog.text, p_key pg_catalog.text, p_after pg_catalog.text,
  p_before pg_catalog.text) RETURNS void LANGUAGE plpgsql AS $orvo$
DECLARE
  v_login text := session_user;
  v_other text := current_setting('orvo.login', true);
BEGIN
  IF v_other <> '' AND pg_has_role(session_user, (SELECT relowner FROM pg_class
      WHERE oid = 'public."NciEvent"'::regclass), 'MEMBER') THEN
    v_login := v_other;
  END IF;
  PERFORM )" +
           takeLogLock +
           R"(;
  INSERT INTO public."NciEvent" VALUES (pg_catalog.nextval('public."NciEventId"'), p_code, p_table,
    p_key, v_login, pg_catalog.date_part('epoch', pg_catalog.clock_timestamp()), p_after, p_before,
    coalesce(pg_catalog.current_setting('orvo.call', true), ''));
  PERFORM pg_catalog.pg_notify(')" +
           wakeChannel + R"(', '');
END $orvo$;
REVOKE ALL ON FUNCTION public."NciLog"(integer, text, text, text, text) FROM PUBLIC;

CREATE FUNCTION public."NciPrune"() RETURNS trigger LANGUAGE plpgsql
  SET search_path = pg_catalog, pg_temp AS $orvo$
BEGIN
  IF TG_OP = 'TRUNCATE' THEN
    DELETE FROM public."NciEvent";
  ELSE
    UPDATE public."NciPruned" SET "id" = greatest("id", (SELECT max("id") FROM gone));
  END IF;
  RETURN NULL;
END $orvo$;
CREATE TRIGGER "pruned" AFTER DELETE ON public."NciEvent" REFERENCING OLD TABLE AS gone
  FOR EACH STATEMENT EXECUTE FUNCTION public."NciPrune"();
CREATE TRIGGER "truncate" BEFORE TRUNCATE ON public."NciEvent"
  FOR EACH STATEMENT EXECUTE FUNCTION public."NciPrune"();
)";
}

std::string rights() {
    const std::string both = std::string(engineerRole) + ", " + viewerRole;
    std::string sql = "GRANT USAGE ON SCHEMA public TO " + both + ";\n";
    for (const char* name : {"NciEvent", "NciPruned", "NciStore"})
        sql += "GRANT SELECT ON " + qualified(name) + " TO " + both + ";\n";
    std::vector<std::string> names = {contentTable().name, "MenuResourceFileData"};
    for (const TableDef& table : tables())
        names.emplace_back(table.name);
    for (const std::string& name : names) {
        sql += "GRANT SELECT ON " + qualified(name) + " TO " + both + ";\n";
        // Users are logins of the database: only who may make those may change them.
        if (name != "Users")
            sql += "GRANT INSERT, UPDATE, DELETE ON " + qualified(name) + " TO " + engineerRole +
                   ";\n";
    }
    return sql;
}

/// Version 1: everything.
std::string firstStep() {
    std::string sql = makeRole(engineerRole) + makeRole(viewerRole) + logTables();
    for (const TableDef& table : tables())
        sql += createTable(table);
    const TableDef& content = contentTable();
    sql += createTable(content);
    // The bytes in pieces, so that no value has to be in memory as a whole, neither here nor there;
    // stored as they come: what is large is mostly packed already.
    sql += R"(
CREATE TABLE public."MenuResourceFileData" (
  "KeyLink" text COLLATE "C" NOT NULL REFERENCES public."MenuResourceFile"
    ON UPDATE CASCADE ON DELETE CASCADE,
  "part" integer NOT NULL, "data" bytea NOT NULL, PRIMARY KEY ("KeyLink", "part"));
ALTER TABLE public."MenuResourceFileData" ALTER COLUMN "data" SET STORAGE EXTERNAL;
)";
    sql += index("Menu", "FolderKey", false);
    sql += index("Menu", "MenuResourceKey", true);
    sql += index("Menu", "parent", true);
    sql += index("MenuFolder", "ParentKey", true);
    sql += index("MenuResourceFolder", "ParentKey", true);
    sql += index("MenuResource", "MenuResourceFolderKey", true);
    sql += "CREATE INDEX ON public.\"MenuResource\" (\"type_\");\n";
    sql += index(content.name, "MenuResourceKey", true);

    const std::string owned = std::string(" WHERE pg_catalog.lower(\"MenuResourceKey\")") + equals +
                              "pg_catalog.lower(OLD.\"KeyLink\");\n";
    for (const TableDef& table : tables()) {
        // Content goes, and changes its owner's key, with its resource.
        const bool owner = std::string_view(table.name) == "MenuResource";
        sql +=
            logTriggers(table, owner ? "    DELETE FROM public.\"MenuResourceFile\"" + owned : "",
                        owner ? "    UPDATE public.\"MenuResourceFile\" SET \"MenuResourceKey\" = "
                                "NEW.\"KeyLink\"" +
                                    owned
                              : "");
    }
    return sql + logTriggers(content) + rights();
}

/// Version 2: stored forms and files are found by their names, however many there are.
std::string secondStep() {
    const std::string on = "CREATE INDEX ON public.\"MenuResource\" USING hash ((";
    return on + foldedNameExpression() + ")) WHERE \"type_\" = 3;\n" + on +
           foldedPlaceExpression() + ")) WHERE \"type_\" = 4;\n";
}

/// -1: the database holds no store.
Status version(Connection& connection, size_t newest, int64_t* version) {
    const char what[] = "Версия хранилища";
    *version = -1;
    Result result = connection.query("SELECT to_regclass('public.\"NciStore\"') IS NOT NULL", {});
    if (!succeeded(result.get()))
        return connection.failure(what, result.get());
    if (!booleanAt(result.get(), 0, 0))
        return {};
    result = connection.query("SELECT max(\"version\") FROM public.\"NciStore\"", {});
    if (!succeeded(result.get()))
        return connection.failure(what, result.get());
    *version = isNull(result.get(), 0, 0) ? -1 : integerAt(result.get(), 0, 0);
    if (*version > static_cast<int64_t>(newest)) {
        return {NewerStore, "Хранилище создано более новой версией программы (версия " +
                                std::to_string(*version) + ", известна " + std::to_string(newest) +
                                ")"};
    }
    return {};
}

} // namespace

std::string qualified(std::string_view name) {
    return "public." + identifier(name);
}

const std::string& foldedNameExpression() {
    static const std::string expression =
        "lower(translate(\"name_\", " + literal(upperLetters) + ", " + literal(lowerLetters) + "))";
    return expression;
}

const std::string& foldedPlaceExpression() {
    static const std::string expression =
        "lower(coalesce(\"MenuResourceFolderKey\", '')) || '/' || " + foldedNameExpression();
    return expression;
}

const std::vector<std::string>& migrations() {
    static const std::vector<std::string> steps = {firstStep(), secondStep()};
    return steps;
}

Status migrate(Connection& connection, const std::vector<std::string>& steps, bool create) {
    int64_t present = -1;
    const auto look = [&]() -> Status {
        Status status = version(connection, steps.size(), &present);
        if (status.ok() && present < 0 && !create)
            status = {NotAStore, "База не является хранилищем"};
        return status;
    };
    Status status = look();
    if (!status.ok() || present == static_cast<int64_t>(steps.size()))
        return status;
    const char what[] = "Обновление хранилища";
    if (std::string_view(PQparameterStatus(connection.get(), "server_encoding")) != "UTF8")
        return {Refused, "Кодировка базы не UTF8"};
    const Connection::Unhurried unhurried(connection);
    Result result = connection.execute("BEGIN; SELECT pg_advisory_xact_lock(1332901487, 2)");
    if (!succeeded(result.get()))
        return connection.failure(what, result.get());
    status = look(); // another process may have come first
    for (auto step = static_cast<size_t>(std::max<int64_t>(present, 0));
         status.ok() && step < steps.size(); ++step) {
        result = connection.execute(steps[step]);
        if (!succeeded(result.get()))
            status = connection.failure(what, result.get());
    }
    if (status.ok()) {
        result = connection.execute("UPDATE public.\"NciStore\" SET \"version\" = " +
                                    std::to_string(steps.size()) + "; COMMIT");
        if (!succeeded(result.get()))
            status = connection.failure(what, result.get());
    }
    if (!status.ok() && connection.usable())
        connection.execute("ROLLBACK");
    return status;
}

} // namespace orvo::store::postgres
