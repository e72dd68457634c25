// Whether tables, indexes and triggers of an SQLite store are those that the program makes, and
// making the triggers again.
#include "platform/store/SqliteStore.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"
#include "platform/store/SqliteSchema.h"

namespace orvo::store::sqlite {

namespace {

/// "Нет триггера ..." or "Изменён триггер ...", for the types of sqlite_schema.
std::string difference(std::string_view type, std::string_view name, bool missing) {
    const struct {
        const char* type;
        std::string missing, altered;
    } words[] = {{"table", StdText::tr("Нет таблицы "), StdText::tr("Изменена таблица ")},
                 {"index", StdText::tr("Нет индекса "), StdText::tr("Изменён индекс ")},
                 {"trigger", StdText::tr("Нет триггера "), StdText::tr("Изменён триггер ")}};
    for (const auto& word : words)
        if (type == word.type)
            return (missing ? word.missing : word.altered) + std::string(name);
    return std::string(type) + ' ' + std::string(name);
}

} // namespace

Status differingDefinitions(const Connection& connection, std::vector<std::string>* lines) {
    const std::string what = StdText::tr("Устройство хранилища");
    int64_t version = 0;
    if (connection.integer("PRAGMA user_version", &version) != SQLITE_OK)
        return connection.failure(what);
    // The triggers of an earlier version are made again when it is updated.
    const bool newest = version == static_cast<int64_t>(migrations().size());
    Connection fresh;
    int made = fresh.open(":memory:", SQLITE_OPEN_READWRITE);
    if (made == SQLITE_OK)
        made = addStepFunctions(fresh);
    for (int64_t step = 0; made == SQLITE_OK && step < version; ++step)
        made = fresh.execute(migrations()[static_cast<size_t>(step)]);
    if (made == SQLITE_OK && newest)
        made = fresh.execute(triggers(dictionary()));
    if (made != SQLITE_OK)
        return fresh.failure(what);
    Statement wanted = fresh.prepare(
        std::string("SELECT type, name, sql FROM sqlite_schema WHERE sql IS NOT NULL") +
        (newest ? "" : " AND type <> 'trigger'") + " ORDER BY type, name");
    Statement present =
        connection.prepare("SELECT sql = ?3 FROM sqlite_schema WHERE type = ?1 AND name = ?2");
    if (!wanted || !present)
        return connection.failure(what);
    while (wanted.step() == SQLITE_ROW) {
        const ResetAfter reset(present);
        for (int i = 0; i < 3; ++i)
            present.bind(i + 1, wanted.text(i));
        const int step = present.step();
        if (step != SQLITE_ROW && step != SQLITE_DONE)
            return connection.failure(what);
        if (step == SQLITE_DONE || present.integer(0) != 1)
            lines->push_back(difference(wanted.text(0), wanted.text(1), step == SQLITE_DONE));
    }
    return {};
}

Status SqliteStore::remakeTriggers(std::vector<std::string>* differences) {
    return guarded([&]() -> Status {
        differences->clear();
        std::vector<std::string> lines;
        Status status = differingDefinitions(m_connection, &lines);
        if (!status.ok() || lines.empty())
            return status;
        status = inWrite([&]() -> Status {
            const Status made = sqlite::remakeTriggers(m_connection);
            if (!made.ok() || m_connection.execute(cursorsPruned) == SQLITE_OK)
                return made;
            return m_connection.failure(StdText::tr("Журнал изменений"));
        });
        if (status.ok())
            differences->swap(lines);
        return status;
    });
}

} // namespace orvo::store::sqlite
