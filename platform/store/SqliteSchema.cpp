#include "platform/store/SqliteSchema.h"

#include "frame/StdText.h"
#include "platform/store/ContentChecksum.h"
#include "platform/store/Names.h"
#include "platform/store/Sql.h"

namespace orvo::store::sqlite {

namespace {

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

/// Drops the triggers of the store, which are named after their tables. Those that somebody added
/// under names of another form stay.
int dropTriggers(const Connection& connection) {
    std::string sql;
    Statement statement = connection.prepare(
        "SELECT name FROM sqlite_master WHERE type = 'trigger' AND name LIKE tbl_name || '.%'");
    if (!statement)
        return SQLITE_ERROR;
    int step = SQLITE_DONE;
    while ((step = statement.step()) == SQLITE_ROW)
        sql += "DROP TRIGGER " + identifier(statement.text(0)) + ";";
    return step == SQLITE_DONE ? connection.execute(sql) : step;
}

/// orvo_sha256(bytes), for the steps.
void sha256(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    const auto* data = static_cast<const char*>(sqlite3_value_blob(values[0]));
    const std::string sum = checksum({data, static_cast<size_t>(sqlite3_value_bytes(values[0]))});
    sqlite3_result_text(context, sum.data(), static_cast<int>(sum.size()), SQLITE_TRANSIENT);
}

Status version(const Connection& connection, size_t newest, int64_t* version) {
    *version = 0;
    if (connection.integer("PRAGMA user_version", version) != SQLITE_OK)
        return connection.failure(StdText::tr("Версия хранилища"));
    if (*version < 0 || *version > static_cast<int64_t>(newest)) {
        return {NewerStore,
                StdText::tr("Хранилище создано более новой версией программы (версия ") +
                    std::to_string(*version) + StdText::tr(", известна ") + std::to_string(newest) +
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

int addStepFunctions(const Connection& connection) {
    return sqlite3_create_function(connection.get(), "orvo_sha256", 1,
                                   SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, sha256, nullptr,
                                   nullptr);
}

Status remakeTriggers(const Connection& connection) {
    int done = dropTriggers(connection);
    if (done == SQLITE_OK)
        done = connection.execute(triggers(dictionary()));
    return done == SQLITE_OK ? Status() : connection.failure(StdText::tr("Триггеры"));
}

Status migrate(const Connection& connection, const MigrationSteps& steps,
               const Dictionary& dictionary) {
    int64_t present = 0;
    Status status = version(connection, steps.size(), &present);
    if (!status.ok() || present == static_cast<int64_t>(steps.size()))
        return status;
    const std::string what = StdText::tr("Обновление хранилища");
    Transaction transaction(connection, Transaction::Write);
    if (transaction.begun() != SQLITE_OK)
        return connection.failure(what);
    // Another process may have come first.
    status = version(connection, steps.size(), &present);
    if (!status.ok() || present == static_cast<int64_t>(steps.size()))
        return status;
    // First, so that the log does not tell of what the steps do to the records.
    int done = dropTriggers(connection);
    if (done == SQLITE_OK)
        done = addStepFunctions(connection);
    for (auto step = static_cast<size_t>(present); done == SQLITE_OK && step < steps.size(); ++step)
        done = connection.execute(steps[step]);
    if (done == SQLITE_OK)
        done = connection.execute(triggers(dictionary));
    if (done == SQLITE_OK)
        done = connection.execute("PRAGMA user_version = " + std::to_string(steps.size()));
    if (done == SQLITE_OK)
        done = transaction.commit();
    return done == SQLITE_OK ? Status() : connection.failure(what);
}

Status migrate(const Connection& connection) {
    return migrate(connection, migrations(), dictionary());
}

} // namespace orvo::store::sqlite
