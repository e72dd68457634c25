// The triggers of an SQLite store, made from the dictionary.
#include "platform/store/SqliteSchema.h"

#include "frame/Vocabulary.h"
#include "platform/store/Sql.h"

namespace orvo::store::sqlite {

namespace {

const std::string inserted = std::to_string(OrvoEventInsert);
const std::string updated = std::to_string(OrvoEventUpdate);
const std::string deleted = std::to_string(OrvoEventDelete);

std::string named(const char* prefix, const FieldDef& field) {
    return std::string(prefix) + identifier(field.name);
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

/// The group of a new row: the one that the store has put into NciWriter. By hand it is that of the
/// newest row if one statement wrote both, which the time tells (it stands still while a statement
/// runs), else a new one: nothing within reach of a trigger tells of a transaction.
const char groupOfRow[] =
    "coalesce((SELECT \"group\" FROM \"NciWriter\"),\n"
    "      (SELECT \"group\" FROM \"NciEvent\" WHERE \"id\" = (SELECT max(\"id\") FROM "
    "\"NciEvent\")\n"
    "        AND \"login\" = '' AND \"client\" = '' AND \"time\" = (julianday('now') - 2440587.5) "
    "* "
    "86400.0),\n"
    "      1 + max(coalesce((SELECT max(\"id\") FROM \"NciEvent\"), 0),\n"
    "        coalesce((SELECT seq FROM sqlite_sequence WHERE name = 'NciEvent'), 0)))";

/// Adds a row to the log. The store puts its login into NciWriter and takes it away before it
/// commits, so it is empty for whoever writes by hand.
std::string logEvent(const TableDef& table, const std::string& code, const char* key,
                     const std::string& after, const std::string& before) {
    return "  INSERT INTO \"NciEvent\" (\"code\", \"tableName\", \"key\", \"login\", \"time\", "
           "\"after\", \"before\",\n    \"group\", \"client\", \"place\")\n  VALUES (" +
           code + ", " + literal(table.name) + ", " + key +
           ",\n    coalesce((SELECT \"login\" FROM \"NciWriter\"), ''), (julianday('now') - "
           "2440587.5) * 86400.0,\n    " +
           after + ",\n    " + before + ",\n    " + groupOfRow +
           ",\n    coalesce((SELECT \"client\" FROM \"NciWriter\"), ''), coalesce((SELECT "
           "\"place\" "
           "FROM \"NciWriter\"), ''));\n";
}

std::string trigger(const TableDef& table, const char* name, const std::string& when,
                    const std::string& body) {
    return "CREATE TRIGGER " + identifier(std::string(table.name) + "." + name) + " " + when +
           "\nBEGIN\n" + body + "END;\n";
}

/// Puts the bytes of a content, which are about to go, aside. Until the change that takes them away
/// is in the log the row has no event; one that stayed without is of a change that failed.
std::string keepBytes(const char* key) {
    const std::string where = std::string("\"KeyLink\" = ") + key + ".\"KeyLink\";\n";
    return "  DELETE FROM \"NciVersion\" WHERE \"event\" IS NULL AND " + where +
           "  INSERT INTO \"NciVersion\" (\"time\", \"KeyLink\", \"MenuResourceKey\", \"name_\", "
           "\"fileTime\", \"size\", \"sha256\", \"data\")\n    SELECT (julianday('now') - "
           "2440587.5) * "
           "86400.0, \"KeyLink\", \"MenuResourceKey\", \"name_\", \"time\", \"size\",\n    (SELECT "
           "\"sha256\" FROM \"MenuResourceFileSum\" AS s WHERE s.\"KeyLink\" = f.\"KeyLink\"), "
           "\"data\" FROM \"MenuResourceFile\" AS f WHERE " +
           where;
}

/// Behind the row of the log.
std::string noteKept(const char* key) {
    return std::string("  UPDATE \"NciVersion\" SET \"event\" = (SELECT max(\"id\") FROM "
                       "\"NciEvent\"),\n    \"login\" = coalesce((SELECT \"login\" FROM "
                       "\"NciWriter\"), '') WHERE \"event\" IS NULL AND \"KeyLink\" = ") +
           key + ".\"KeyLink\";\n";
}

/// The triggers that log a table's changes. `onDelete` and `onNewKey` are statements that run
/// before a deletion and after a change of key.
std::string logTriggers(const TableDef& table, const std::string& onDelete = {},
                        const std::string& onNewKey = {}) {
    const bool content = std::string_view(table.name) == table::MenuResourceFile;
    const std::string keptOld = content ? noteKept("OLD") : std::string();
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
    // A row that is replaced for its rowid would go without a trace (and -1 stands for none given).
    const std::string taken = "EXISTS (SELECT 1 FROM " + name + " WHERE rowid = NEW.rowid AND ";
    sql += trigger(table, "inserting", "BEFORE INSERT" + on,
                   "  SELECT RAISE(ABORT, 'rowid exists') WHERE NEW.rowid <> -1 AND " + taken +
                       "\"KeyLink\" <> NEW.\"KeyLink\");\n"
                       "  DELETE FROM \"NciReplaced\" WHERE " +
                       replaced + "NEW.\"KeyLink\";\n" + "  INSERT INTO \"NciReplaced\" SELECT " +
                       literal(table.name) + ", \"KeyLink\",\n    " + whole(table, "") +
                       "\n    FROM " + name + " WHERE \"KeyLink\" = NEW.\"KeyLink\";\n" +
                       (content ? keepBytes("NEW") : std::string()));
    sql += trigger(
        table, "inserted", "AFTER INSERT" + on,
        logEvent(table,
                 "CASE WHEN " + before + " IS NULL THEN " + inserted + " ELSE " + updated + " END",
                 "NEW.\"KeyLink\"", whole(table, "NEW."), "coalesce(" + before + ", '{}')") +
            (content ? noteKept("NEW") : std::string()) + "  DELETE FROM \"NciReplaced\" WHERE " +
            replaced +
            "NEW.\"KeyLink\";\n"
            "  SELECT RAISE(ABORT, 'rowid below 1') WHERE NEW.rowid < 1;\n");
    sql += trigger(table, "renumbering",
                   "BEFORE UPDATE" + on + " WHEN OLD.rowid <> NEW.rowid AND " + taken +
                       "rowid <> OLD.rowid)",
                   "  SELECT RAISE(ABORT, 'rowid exists');\n");
    sql += trigger(table, "updated", "AFTER UPDATE" + on + " WHEN " + sameKey,
                   logEvent(table, updated, "NEW.\"KeyLink\"", changed(table, "NEW."),
                            changed(table, "OLD.")) +
                       keptOld);
    sql += trigger(table, "rekeying",
                   "BEFORE UPDATE OF \"KeyLink\"" + on + " WHEN " + otherKey +
                       " AND EXISTS (SELECT 1 FROM " + name +
                       " WHERE \"KeyLink\" = NEW.\"KeyLink\" AND rowid <> OLD.rowid)",
                   "  SELECT RAISE(ABORT, 'KeyLink exists');\n");
    sql += trigger(table, "rekeyed", "AFTER UPDATE OF \"KeyLink\"" + on + " WHEN " + otherKey,
                   logEvent(table, deleted, "OLD.\"KeyLink\"", "'{}'", whole(table, "OLD.")) +
                       logEvent(table, inserted, "NEW.\"KeyLink\"", whole(table, "NEW."), "'{}'") +
                       keptOld + onNewKey);
    sql += trigger(
        table, "deleted", "AFTER DELETE" + on,
        onDelete + logEvent(table, deleted, "OLD.\"KeyLink\"", "'{}'", whole(table, "OLD.")) +
            keptOld + "  DELETE FROM \"NciReplaced\" WHERE " + replaced + "OLD.\"KeyLink\";\n");
    if (content) {
        sql += trigger(table, "deleting", "BEFORE DELETE" + on, keepBytes("OLD"));
        sql += trigger(table, "replacing",
                       "BEFORE UPDATE OF \"data\"" + on + " WHEN OLD.\"data\" IS NOT NEW.\"data\"",
                       keepBytes("OLD"));
    }
    return sql;
}

} // namespace

std::string triggers(const Dictionary& dictionary) {
    std::string sql = R"(
CREATE TRIGGER "NciEvent.inserted" AFTER INSERT ON "NciEvent" WHEN NEW."id" <> 1 + max(
    coalesce((SELECT max("id") FROM "NciEvent" WHERE "id" < NEW."id"), 0),
    coalesce((SELECT seq FROM sqlite_sequence WHERE name = 'NciEvent'), 0))
BEGIN
  SELECT RAISE(ABORT, 'the log gives its ids itself');
END;
CREATE TRIGGER "NciEvent.renumbering" BEFORE UPDATE OF "id" ON "NciEvent" WHEN OLD."id" <> NEW."id"
BEGIN
  SELECT RAISE(ABORT, 'the log gives its ids itself');
END;
CREATE TRIGGER "NciEvent.deleted" AFTER DELETE ON "NciEvent"
BEGIN
  UPDATE "NciPruned" SET "id" = OLD."id" WHERE "id" < OLD."id";
END;
)";
    for (const TableDef& table : dictionary.tables) {
        // Content goes, and changes its owner's key, with its resource.
        const bool owner = std::string_view(table.name) == table::MenuResource;
        sql += logTriggers(
            table,
            owner ? "  DELETE FROM \"MenuResourceFile\" WHERE \"MenuResourceKey\" = "
                    "OLD.\"KeyLink\";\n"
                  : "",
            owner ? "  UPDATE \"MenuResourceFile\" SET \"MenuResourceKey\" = NEW.\"KeyLink\" WHERE "
                    "\"MenuResourceKey\" = OLD.\"KeyLink\";\n"
                  : "");
    }
    const std::string sum = "\"MenuResourceFileSum\"";
    const std::string ofOld = " WHERE \"KeyLink\" = OLD.\"KeyLink\";\n";
    return sql + logTriggers(dictionary.content, "  DELETE FROM " + sum + ofOld,
                             "  UPDATE " + sum + " SET \"KeyLink\" = NEW.\"KeyLink\"" + ofOld);
}

} // namespace orvo::store::sqlite
