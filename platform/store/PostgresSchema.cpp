#include "platform/store/PostgresSchema.h"

#include "frame/StdText.h"
#include "frame/Vocabulary.h"
#include "platform/store/Names.h"
#include "platform/store/Sql.h"

#include <algorithm>

namespace orvo::store::postgres {

namespace {

/// -1: the database holds no store.
Status version(Connection& connection, size_t newest, int64_t* version) {
    const std::string what = StdText::tr("Версия хранилища");
    *version = -1;
    Result result =
        connection.query("SELECT pg_catalog.to_regclass('public.\"NciStore\"') IS NOT NULL", {});
    if (!succeeded(result.get()))
        return connection.failure(what, result.get());
    if (!booleanAt(result.get(), 0, 0))
        return {};
    result = connection.query("SELECT max(\"version\") FROM public.\"NciStore\"", {});
    if (!succeeded(result.get()))
        return connection.failure(what, result.get());
    *version = isNull(result.get(), 0, 0) ? -1 : integerAt(result.get(), 0, 0);
    if (*version > static_cast<int64_t>(newest)) {
        return {NewerStore,
                StdText::tr("Хранилище создано более новой версией программы (версия ") +
                    std::to_string(*version) + StdText::tr(", известна ") + std::to_string(newest) +
                    ")"};
    }
    return {};
}

/// Whether a value is found in the index of that text, which holds the beginnings of the values.
std::string indexed(const std::string& text, const std::string& value) {
    return "left(" + text + ", 100) = left(" + value + ", 100) AND " + text + " = " + value;
}

} // namespace

std::string foldedEquals(const TableDef& table, const FieldDef& field, const std::string& value) {
    const std::string folded = "lower(" + identifier(field.name) + ")";
    return &field == &table.fields.front() ? folded + " = " + value : indexed(folded, value);
}

std::string exactlyEquals(const FieldDef& field, const std::string& value) {
    const std::string name = identifier(field.name);
    return std::string_view(field.name) == field::FolderKey ? indexed(name, value)
                                                            : name + " = " + value;
}

std::string qualified(std::string_view name) {
    return "public." + identifier(name);
}

std::string cursorsPruned() {
    return std::string("UPDATE public.\"NciPruned\" SET \"id\" = 1 + greatest(\"id\", (SELECT "
                       "last_value FROM public.\"NciEventId\"), coalesce((SELECT max(\"id\") FROM "
                       "public.\"NciEvent\"), 0));\n"
                       "SELECT setval('public.\"NciEventId\"', (SELECT \"id\" FROM "
                       "public.\"NciPruned\"));\n"
                       "SELECT pg_notify('") +
           wakeChannel + "', '');\n";
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

Status migrate(Connection& connection, const MigrationSteps& steps, const Dictionary& dictionary,
               bool create) {
    int64_t present = -1;
    const auto newest = static_cast<int64_t>(steps.size());
    const auto look = [&]() -> Status {
        Status status = version(connection, steps.size(), &present);
        if (status.ok() && present < 0 && !create)
            status = {NotAStore, StdText::tr("База не является хранилищем")};
        return status;
    };
    Status status = look();
    if (!status.ok() || present == newest)
        return status;
    const std::string what = StdText::tr("Обновление хранилища");
    if (std::string_view(PQparameterStatus(connection.get(), "server_encoding")) != "UTF8")
        return {Refused, StdText::tr("Кодировка базы не UTF8")};
    const Connection::NoTimeoutScope noTimeout(connection);
    const auto run = [&](const std::string& sql) {
        if (!status.ok())
            return;
        const Result result = connection.execute(sql);
        if (!succeeded(result.get()))
            status = connection.failure(what, result.get());
    };
    run("BEGIN");
    if (present >= 0) {
        // What is made is the owner's, whoever brings the store up to date.
        run(std::string("SET LOCAL lock_timeout = '10s'; LOCK TABLE public.\"NciStore\" IN "
                        "EXCLUSIVE MODE;") +
            actAsOwner);
    }
    if (status.ok())
        status = look(); // another process may have come first
    if (status.ok() && present == newest) {
        run("ROLLBACK");
        return status;
    }
    // First, so that the log does not tell of what the steps do to the records.
    run(dropFunctions());
    for (auto step = static_cast<size_t>(std::max<int64_t>(present, 0)); step < steps.size();
         ++step)
        run(steps[step]);
    run(functionsAndRights(dictionary));
    run("UPDATE public.\"NciStore\" SET \"version\" = " + std::to_string(newest) + "; COMMIT");
    if (status.ok() || !connection.usable())
        return status;
    connection.execute("ROLLBACK");
    // Two that make a store at the same time collide, since nothing is there yet to be locked.
    const bool made = present < 0;
    if (made && look().ok() && present == newest)
        return {};
    return status;
}

Status migrate(Connection& connection, bool create) {
    return migrate(connection, migrations(), dictionary(), create);
}

} // namespace orvo::store::postgres
