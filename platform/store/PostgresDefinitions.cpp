// Whether the functions and triggers of a PostgreSQL store are those that the program makes, and
// making them again.
#include "platform/store/PostgresStore.h"

#include "frame/StdText.h"
#include "platform/store/PostgresSchema.h"
#include "platform/store/Sql.h"

#include <string_view>

namespace orvo::store::postgres {

namespace {

const char* boolean(bool value) {
    return value ? "true" : "false";
}

std::string rowOf(const Function& function) {
    // As pg_proc holds it.
    return "(" + literal(function.name) + ", " + literal("\n" + function.body) +
           ", ARRAY['search_path=pg_catalog, pg_temp'" +
           (function.exactDates ? ", 'extra_float_digits=1'" : "") +
           (function.byIndex ? ", 'enable_seqscan=off', 'jit=off'" : "") + "], " +
           boolean(function.asOwner) + ", " + literal(function.returns) + ")";
}

std::string rowOf(const Trigger& trigger) {
    const std::string_view when = trigger.when;
    const std::string_view each = trigger.each;
    const std::string_view rows = trigger.rows;
    const auto has = [](std::string_view text, const char* word) {
        return text.find(word) != std::string_view::npos;
    };
    // The bits of pg_trigger.tgtype.
    const int type = (each.starts_with("ROW") ? 1 : 0) | (has(when, "BEFORE") ? 2 : 0) |
                     (has(when, "INSERT") ? 4 : 0) | (has(when, "DELETE") ? 8 : 0) |
                     (has(when, "UPDATE") ? 16 : 0) | (has(when, "TRUNCATE") ? 32 : 0);
    const auto table = [&](const char* word) {
        const size_t at = rows.find(word);
        return at == std::string_view::npos
                   ? std::string("NULL")
                   : literal(rows.substr(at + 13, rows.find(' ', at + 13) - at - 13));
    };
    return "(" + literal(trigger.name) + ", " + literal(trigger.table) + ", " +
           std::to_string(type) + ", " + boolean(has(when, "UPDATE OF")) + ", " +
           boolean(has(each, "WHEN")) + ", " + literal(trigger.function) + ", " +
           table("OLD TABLE AS ") + ", " + table("NEW TABLE AS ") + ")";
}

} // namespace

std::string differingDefinitions(const Dictionary& dictionary) {
    std::string functions;
    std::string triggers;
    for (const Definition& one : definitions(dictionary)) {
        if (const auto* function = std::get_if<Function>(&one))
            functions += (functions.empty() ? "" : ", ") + rowOf(*function);
        else if (const auto* trigger = std::get_if<Trigger>(&one))
            triggers += (triggers.empty() ? "" : ", ") + rowOf(*trigger);
    }
    return "WITH f (name, body, config, definer, returns) AS (VALUES " + functions +
           "), t (name, tab, type, columns, condition, function, oldrows, newrows) AS (VALUES " +
           triggers + R"()
SELECT CASE WHEN p.oid IS NULL THEN )" +
           literal(StdText::tr("Нет функции ")) + R"( ELSE )" +
           literal(StdText::tr("Изменена функция ")) + R"( END || f.name
FROM f LEFT JOIN pg_proc p ON p.proname = f.name AND p.pronamespace = 'public'::regnamespace
  AND p.pronargs = 0
WHERE p.oid IS NULL OR p.prosrc <> f.body OR p.proconfig IS DISTINCT FROM f.config
  OR p.prosecdef <> f.definer OR p.prorettype <> to_regtype(f.returns)
  OR p.prolang <> (SELECT oid FROM pg_language WHERE lanname = 'plpgsql')
  OR p.proowner <> (SELECT relowner FROM pg_class WHERE oid = 'public."NciEvent"'::regclass)
UNION ALL
SELECT CASE WHEN g.oid IS NULL THEN )" +
           literal(StdText::tr("Нет триггера ")) + R"( WHEN g.tgenabled NOT IN ('O', 'A')
  THEN )" + literal(StdText::tr("Отключён триггер ")) +
           R"( ELSE )" + literal(StdText::tr("Изменён триггер ")) + R"( END || t.name || )" +
           literal(StdText::tr(" таблицы ")) + R"( || t.tab
FROM t LEFT JOIN pg_trigger g ON g.tgname = t.name
  AND g.tgrelid = to_regclass(format('public.%I', t.tab))
WHERE g.oid IS NULL OR g.tgenabled NOT IN ('O', 'A') OR g.tgtype <> t.type
  OR (cardinality(g.tgattr::int2[]) > 0) <> t.columns OR (g.tgqual IS NOT NULL) <> t.condition
  OR g.tgfoid IS DISTINCT FROM to_regprocedure(format('public.%I()', t.function))
  OR g.tgoldtable::text IS DISTINCT FROM t.oldrows OR g.tgnewtable::text IS DISTINCT FROM t.newrows
ORDER BY 1)";
}

std::string looseRightsQuery() {
    return "SELECT format(" +
           literal(StdText::tr("К базе может подключиться любой вход сервера: владелец базы "
                               "закроет её командой REVOKE ALL ON DATABASE %I FROM PUBLIC")) +
           R"(, datname)
FROM pg_database WHERE datname = current_database() AND EXISTS (SELECT 1
  FROM aclexplode(coalesce(datacl, acldefault('d', datdba))) WHERE grantee = 0
    AND privilege_type = 'CONNECT')
UNION ALL
SELECT )" +
           literal(StdText::tr(
               "В схеме хранилища любой вход может создавать таблицы и функции: её владелец "
               "закроет это командой REVOKE CREATE ON SCHEMA public FROM PUBLIC")) +
           R"(
FROM pg_namespace WHERE nspname = 'public' AND EXISTS (SELECT 1
  FROM aclexplode(coalesce(nspacl, acldefault('n', nspowner))) WHERE grantee = 0
    AND privilege_type = 'CREATE'))";
}

Status PostgresStore::looseRights(std::vector<std::string>* lines) {
    return guarded([&]() -> Status {
        const Status status = ready();
        if (!status.ok())
            return status;
        const Result found = m_connection.execute(looseRightsQuery());
        if (!succeeded(found.get()))
            return m_connection.failure(StdText::tr("Права"), found.get());
        lines->clear();
        for (int row = 0; row < PQntuples(found.get()); ++row)
            lines->emplace_back(textAt(found.get(), row, 0));
        return {};
    });
}

Status PostgresStore::remakeTriggers(std::vector<std::string>* differences) {
    return guarded([&]() -> Status {
        const std::string what = StdText::tr("Триггеры и функции");
        differences->clear();
        Status status = ready();
        if (!status.ok())
            return status;
        const std::string query = differingDefinitions(dictionary());
        const Result found = m_connection.execute(query);
        if (!succeeded(found.get()))
            return m_connection.failure(what, found.get());
        std::vector<std::string> lines;
        for (int row = 0; row < PQntuples(found.get()); ++row)
            lines.emplace_back(textAt(found.get(), row, 0));
        if (lines.empty())
            return {};
        const Connection::NoTimeoutScope noTimeout(m_connection);
        std::string drop; // those that call another's function do not go with ours
        for (const Definition& one : definitions(dictionary()))
            if (const auto* trigger = std::get_if<Trigger>(&one))
                drop += "DROP TRIGGER IF EXISTS " + identifier(trigger->name) + " ON " +
                        qualified(trigger->table) + ";\n";
        // The lock of the log keeps writers away; it is taken as it is, whatever became of the
        // functions.
        const Result made = m_connection.execute(
            std::string("BEGIN; SET LOCAL lock_timeout = '10s';") + actAsOwner +
            "LOCK TABLE public.\"NciLock\" IN EXCLUSIVE MODE;" + drop + dropFunctions() +
            functionsAndRights(dictionary()) + cursorsPruned() + "COMMIT");
        if (succeeded(made.get())) {
            differences->swap(lines);
            return {};
        }
        status = m_connection.failure(what, made.get());
        if (m_connection.usable())
            m_connection.execute("ROLLBACK");
        if (status.code == Timeout && m_connection.usable())
            status.text += m_connection.whoHolds(Connection::Wanted::Tables);
        return status;
    });
}

} // namespace orvo::store::postgres
