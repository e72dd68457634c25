#include "platform/store/SqliteSchema.h"

#include "platform/store/Names.h"

namespace orvo::store::sqlite {

namespace {

std::string named(const char* prefix, const FieldDef& field) {
    return std::string(prefix) + identifier(field.name);
}

/// A column. Keys and links compare without regard to case, as in records. The checks keep out what
/// no record could hold; types are kept by STRICT.
std::string column(const FieldDef& field, bool isKey) {
    const std::string name = identifier(field.name);
    if (isKey) {
        // Printable ASCII without zero bytes; length() stops at the first of those.
        return name + " TEXT COLLATE NOCASE NOT NULL PRIMARY KEY CHECK (" + name + " <> '' AND " +
               name + " NOT GLOB '*[^ -~]*' AND length(" + name + ") = length(CAST(" + name +
               " AS BLOB)))";
    }
    switch (field.type) {
    case MDX_BOOLEAN:
        return name + " INTEGER CHECK (" + name + " IN (0, 1))";
    case MDX_INTEGER:
        return name + " INTEGER CHECK (" + name + " BETWEEN -2147483648 AND 2147483647)";
    case MDX_DATE:
        return name + " REAL CHECK (abs(" + name + ") <= 1.7976931348623157e308)";
    default:
        return field.link ? name + " TEXT COLLATE NOCASE CHECK (" + name + " <> '')"
                          : name + " TEXT";
    }
}

std::string createTable(const TableDef& table, const std::string& extra = {}) {
    std::string sql = "CREATE TABLE " + identifier(table.name) + " (";
    for (size_t i = 0; i < table.fields.size(); ++i)
        sql += (i == 0 ? "\n  " : ",\n  ") + column(table.fields[i], i == 0);
    return sql + extra + ") STRICT;\n";
}

/// The value as JSON text.
std::string json(const char* row, const FieldDef& field) {
    const std::string value = named(row, field);
    switch (field.type) {
    case MDX_BOOLEAN:
        return "CASE WHEN " + value + " IS NULL THEN 'null' WHEN " + value +
               " THEN 'true' ELSE 'false' END";
    case MDX_DATE: // json_quote would round
        return "CASE WHEN " + value + " IS NULL THEN 'null' ELSE printf('%!.17g', " + value +
               ") END";
    default:
        return "json_quote(" + value + ")";
    }
}

/// JSON object of all values of a row ("NEW.", "OLD." or "").
std::string whole(const TableDef& table, const char* row) {
    std::string sql = "'{";
    for (const FieldDef& field : table.fields) {
        if (&field != &table.fields.front())
            sql += " || ',";
        sql += std::string("\"") + field.name + "\":' || " + json(row, field);
    }
    return sql + " || '}'";
}

/// JSON object of the values of a row that the update changed.
std::string changed(const TableDef& table, const char* row) {
    std::string sql = "'{' || substr(";
    for (const FieldDef& field : table.fields) {
        if (&field == &table.fields.front())
            continue; // a changed key is no update
        if (&field != &table.fields[1])
            sql += " ||\n    ";
        sql += "CASE WHEN " + named("OLD.", field) + " COLLATE BINARY IS NOT " +
               named("NEW.", field) + " THEN ',\"" + field.name + "\":' || " + json(row, field) +
               " ELSE '' END";
    }
    return sql + ", 2) || '}'";
}

/// Adds a row to the log. The store puts its login into NciWriter and takes it away before it
/// commits, so it is empty for whoever writes by hand.
std::string logEvent(const TableDef& table, const std::string& code, const char* key,
                     const std::string& after, const std::string& before) {
    return "  INSERT INTO \"NciEvent\" (\"code\", \"tableName\", \"key\", \"login\", \"time\", "
           "\"after\", \"before\")\n  VALUES (" +
           code + ", " + literal(table.name) + ", " + key +
           ",\n    coalesce((SELECT \"login\" FROM \"NciWriter\"), ''), (julianday('now') - "
           "2440587.5) * 86400.0,\n    " +
           after + ",\n    " + before + ");\n";
}

std::string trigger(const TableDef& table, const char* name, const std::string& when,
                    const std::string& body) {
    return "CREATE TRIGGER " + identifier(std::string(table.name) + "." + name) + " " + when +
           "\nBEGIN\n" + body + "END;\n";
}

/// The triggers that log a table's changes. `onDelete` and `onNewKey` are statements that run
/// before a deletion and after a change of key.
std::string logTriggers(const TableDef& table, const std::string& onDelete = {},
                        const std::string& onNewKey = {}) {
    const std::string name = identifier(table.name);
    const std::string on = " ON " + name;
    const std::string replaced = "\"tableName\" = " + literal(table.name) + " AND \"key\" = ";
    const std::string before =
        "(SELECT \"before\" FROM \"NciReplaced\" WHERE " + replaced + "NEW.\"KeyLink\")";
    const std::string sameKey = "OLD.\"KeyLink\" COLLATE BINARY = NEW.\"KeyLink\"";
    const std::string otherKey = "OLD.\"KeyLink\" COLLATE BINARY <> NEW.\"KeyLink\"";

    std::string sql;
    // INSERT OR REPLACE deletes the old row without a delete trigger. What it replaces is put aside
    // before, and the insert is then logged as the update that it is.
    sql += trigger(table, "inserting", "BEFORE INSERT" + on,
                   "  DELETE FROM \"NciReplaced\" WHERE " + replaced + "NEW.\"KeyLink\";\n" +
                       "  INSERT INTO \"NciReplaced\" SELECT " + literal(table.name) +
                       ", \"KeyLink\",\n    " + whole(table, "") + "\n    FROM " + name +
                       " WHERE \"KeyLink\" = NEW.\"KeyLink\";\n");
    sql += trigger(table, "inserted", "AFTER INSERT" + on,
                   logEvent(table, "CASE WHEN " + before + " IS NULL THEN 601 ELSE 602 END",
                            "NEW.\"KeyLink\"", whole(table, "NEW."),
                            "coalesce(" + before + ", '{}')") +
                       "  DELETE FROM \"NciReplaced\" WHERE " + replaced + "NEW.\"KeyLink\";\n");
    sql += trigger(
        table, "updated", "AFTER UPDATE" + on + " WHEN " + sameKey,
        logEvent(table, "602", "NEW.\"KeyLink\"", changed(table, "NEW."), changed(table, "OLD.")));
    sql += trigger(table, "rekeying",
                   "BEFORE UPDATE OF \"KeyLink\"" + on + " WHEN " + otherKey +
                       " AND EXISTS (SELECT 1 FROM " + name +
                       " WHERE \"KeyLink\" = NEW.\"KeyLink\" AND rowid <> OLD.rowid)",
                   "  SELECT RAISE(ABORT, 'KeyLink exists');\n");
    sql += trigger(table, "rekeyed", "AFTER UPDATE OF \"KeyLink\"" + on + " WHEN " + otherKey,
                   logEvent(table, "603", "OLD.\"KeyLink\"", "'{}'", whole(table, "OLD.")) +
                       logEvent(table, "601", "NEW.\"KeyLink\"", whole(table, "NEW."), "'{}'") +
                       onNewKey);
    sql +=
        trigger(table, "deleted", "AFTER DELETE" + on,
                onDelete + logEvent(table, "603", "OLD.\"KeyLink\"", "'{}'", whole(table, "OLD.")) +
                    "  DELETE FROM \"NciReplaced\" WHERE " + replaced + "OLD.\"KeyLink\";\n");
    return sql;
}

std::string index(const char* table, const std::vector<const char*>& fields) {
    std::string name = table;
    std::string list;
    for (const char* field : fields) {
        name += std::string(".") + field;
        list += (list.empty() ? "" : ", ") + identifier(field);
    }
    return "CREATE INDEX " + identifier(name) + " ON " + identifier(table) + " (" + list + ");\n";
}

/// Version 1: everything.
std::string firstStep() {
    // AUTOINCREMENT: an id is not used again after the log was pruned.
    std::string sql = R"(
CREATE TABLE "NciEvent" ("id" INTEGER PRIMARY KEY AUTOINCREMENT, "code" INTEGER NOT NULL,
  "tableName" TEXT NOT NULL, "key" TEXT NOT NULL, "login" TEXT NOT NULL, "time" REAL NOT NULL,
  "after" TEXT NOT NULL, "before" TEXT NOT NULL) STRICT;
CREATE TABLE "NciWriter" ("login" TEXT NOT NULL) STRICT;
INSERT INTO "NciWriter" VALUES ('');
CREATE TABLE "NciPruned" ("id" INTEGER NOT NULL) STRICT;
INSERT INTO "NciPruned" VALUES (0);
CREATE TRIGGER "NciEvent.deleted" AFTER DELETE ON "NciEvent"
BEGIN
  UPDATE "NciPruned" SET "id" = OLD."id" WHERE "id" < OLD."id";
END;
CREATE TABLE "NciReplaced" ("tableName" TEXT NOT NULL, "key" TEXT NOT NULL COLLATE NOCASE,
  "before" TEXT NOT NULL, PRIMARY KEY ("tableName", "key")) STRICT, WITHOUT ROWID;
)";
    for (const TableDef& table : tables())
        sql += createTable(table);
    // The bytes come last: reading the other columns does not pass over them.
    const TableDef& content = contentTable();
    sql += createTable(content,
                       ",\n  \"data\" BLOB NOT NULL,\n  CHECK (\"size\" IS length(\"data\"))");

    sql += index("Menu", {"FolderKey"});
    sql += index("Menu", {"MenuResourceKey"});
    sql += index("Menu", {"parent"});
    sql += index("MenuFolder", {"ParentKey"});
    sql += index("MenuResourceFolder", {"ParentKey"});
    sql += index("MenuResource", {"MenuResourceFolderKey"});
    sql += index("MenuResource", {"type_", "name_"});
    sql += index("MenuResourceFile", {"MenuResourceKey"});

    for (const TableDef& table : tables()) {
        // Content goes, and changes its owner's key, with its resource.
        const bool owner = std::string_view(table.name) == "MenuResource";
        sql += logTriggers(
            table,
            owner ? "  DELETE FROM \"MenuResourceFile\" WHERE \"MenuResourceKey\" = "
                    "OLD.\"KeyLink\";\n"
                  : "",
            owner ? "  UPDATE \"MenuResourceFile\" SET \"MenuResourceKey\" = NEW.\"KeyLink\" WHERE "
                    "\"MenuResourceKey\" = OLD.\"KeyLink\";\n"
                  : "");
    }
    return sql + logTriggers(content);
}

/// The text with some of the letters in lower case: from one of upperLetters up to another.
std::string folded(std::string text, size_t from, size_t to) {
    constexpr size_t length = 2; // of each letter
    for (size_t i = from; i < to; ++i)
        text = "replace(" + text + ", '" + std::string(&upperLetters[i * length], length) + "', '" +
               std::string(&lowerLetters[i * length], length) + "')";
    return text;
}

constexpr size_t letters = (sizeof upperLetters - 1) / 2;
/// SQLite's parser does not nest all of them: so many are folded in a column of their own.
constexpr size_t lettersInColumn = letters / 2;

/// Version 2: stored forms and files are found by their names, however many there are.
std::string secondStep() {
    // A zero byte ends the text in records. The column is computed and never stored.
    const std::string shown = "substr(\"name_\", 1, instr(\"name_\" || char(0), char(0)) - 1)";
    return "ALTER TABLE \"MenuResource\" ADD COLUMN \"nameFolding\" TEXT AS (" +
           folded(shown, 0, lettersInColumn) +
           ") VIRTUAL;\nCREATE INDEX \"MenuResource.stored\" ON \"MenuResource\" (\"type_\", " +
           foldedNameExpression() + ", \"MenuResourceFolderKey\") WHERE " + storedRows + ";\n";
}

Status version(const Connection& connection, size_t newest, int64_t* version) {
    *version = 0;
    if (connection.integer("PRAGMA user_version", version) != SQLITE_OK)
        return connection.failure("Версия хранилища");
    if (*version < 0 || *version > static_cast<int64_t>(newest)) {
        return {NewerStore, "Хранилище создано более новой версией программы (версия " +
                                std::to_string(*version) + ", известна " + std::to_string(newest) +
                                ")"};
    }
    return {};
}

} // namespace

const std::string& foldedNameExpression() {
    static const std::string expression =
        folded("\"nameFolding\"", lettersInColumn, letters) + " COLLATE NOCASE";
    return expression;
}

const std::vector<std::string>& migrations() {
    static const std::vector<std::string> steps = {firstStep(), secondStep()};
    return steps;
}

Status migrate(const Connection& connection, const std::vector<std::string>& steps) {
    int64_t present = 0;
    Status status = version(connection, steps.size(), &present);
    if (!status.ok() || present == static_cast<int64_t>(steps.size()))
        return status;
    const char what[] = "Обновление хранилища";
    Transaction transaction(connection, Transaction::Write);
    if (transaction.begun() != SQLITE_OK)
        return connection.failure(what);
    // Another process may have come first.
    status = version(connection, steps.size(), &present);
    if (!status.ok())
        return status;
    for (size_t step = static_cast<size_t>(present); step < steps.size(); ++step) {
        if (connection.execute(steps[step]) != SQLITE_OK)
            return connection.failure(what);
    }
    const std::string mark = "PRAGMA user_version = " + std::to_string(steps.size());
    if (connection.execute(mark) != SQLITE_OK || transaction.commit() != SQLITE_OK)
        return connection.failure(what);
    return {};
}

} // namespace orvo::store::sqlite
