// The change log of a PostgreSQL store, and its health.
#include "platform/store/PostgresStore.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"
#include "platform/store/PostgresSchema.h"
#include "platform/store/Sql.h"

#include <algorithm>

namespace orvo::store::postgres {

namespace {

/// How long the regular look at the log waits for the server.
constexpr int lookMilliseconds = 2000;

} // namespace

// A row with a number that the store has not given out yet was put there by hand: who read it would
// not see the changes that come.
const char PostgresStore::newestIdSql[] =
    "SELECT greatest(coalesce((SELECT \"id\" FROM public.\"NciEvent\" WHERE \"id\" <= (SELECT "
    "last_value FROM public.\"NciEventId\") ORDER BY \"id\" DESC LIMIT 1), 0), "
    "coalesce((SELECT \"id\" FROM public.\"NciPruned\"), 0))";

Status PostgresStore::newest(int64_t* id, int milliseconds) {
    const Result result = m_connection.query(newestIdSql, {}, milliseconds);
    if (!succeeded(result.get()))
        return m_connection.failure(logName(), result.get());
    *id = integerAt(result.get(), 0, 0);
    m_known = *id;
    return {};
}

Status PostgresStore::logPosition(int64_t* id) {
    return guarded([&]() -> Status {
        const Status status = ready();
        return status.ok() ? newest(id, -1) : status;
    });
}

Status PostgresStore::readLog(const LogCursor& cursor, int limit, std::vector<Change>* changes) {
    return guarded([&]() -> Status {
        const Status status = ready();
        if (!status.ok())
            return status;
        if (m_followed) { // before the rows: what comes in between is announced
            m_listener.leave(m_connection);
            m_listener.revive(m_url);
        }
        const bool proved = !cursor.proof.empty(); // by the cursor's own change
        // One statement is one snapshot.
        const Result result = m_connection.query(
            std::string("WITH ends AS (SELECT (SELECT \"id\" FROM public.\"NciPruned\") AS pruned, "
                        "(") +
                newestIdSql + ") AS newest) SELECT pruned, newest, " + changeColumns +
                " FROM ends LEFT JOIN LATERAL "
                "(SELECT * FROM public.\"NciEvent\" WHERE \"id\" >= $1 AND \"id\" <= newest ORDER "
                "BY \"id\" LIMIT $2) e "
                "ON true ORDER BY e.\"id\"",
            Parameters()
                .integer(proved ? cursor.id : cursor.id + 1)
                .integer(int64_t(std::max(limit, 0)) + (proved ? 1 : 0)));
        if (!succeeded(result.get()))
            return m_connection.failure(logName(), result.get());
        const PGresult* row = result.get();
        const int64_t pruned = isNull(row, 0, 0) ? 0 : integerAt(row, 0, 0);
        const int64_t newest = integerAt(row, 0, 1);
        m_known = newest;
        std::vector<Change> read = changesIn(row, 2);
        if (const Status place = checkCursor(cursor, pruned, newest, &read); !place.ok())
            return place;
        if (limit >= 0 && read.size() > static_cast<size_t>(limit))
            read.pop_back(); // room for the cursor's own change, which is pruned
        m_seen = newest;
        m_more = limit <= 0 || read.size() == static_cast<size_t>(limit);
        changes->swap(read);
        return {};
    });
}

Status PostgresStore::pruneLog(int64_t id) {
    return guarded([&] {
        const Connection::NoTimeoutScope noTimeout(m_connection);
        return inWrite([&] {
            return send("DELETE FROM public.\"NciEvent\" WHERE \"id\" <= $1",
                        Parameters().integer(id), logName(), true);
        });
    });
}

int PostgresStore::wakeFd() const {
    if (!m_followed) {
        m_followed = true;
        const Status connected = guarded([&]() -> Status {
            m_listener.revive(m_url);
            return {};
        });
        static_cast<void>(connected); // every later look at the log tries again
    }
    return m_listener.fd();
}

void PostgresStore::takeWake() {
    const Status taken = guarded([&]() -> Status {
        m_listener.take();
        if (m_listener.isJoined() && m_connection.alive())
            Listener::takeFrom(m_connection);
        return {};
    });
    static_cast<void>(taken); // what is left keeps the descriptor readable
}

/// Whether a standby is one no more. A server tells by itself with an answer, one before version 14
/// is asked.
bool PostgresStore::hasTakenOver() {
    if (const char* told = PQparameterStatus(m_connection.get(), "in_hot_standby"))
        return std::string_view(told) == "off";
    const Result result =
        m_connection.query("SELECT NOT pg_is_in_recovery()", {}, lookMilliseconds);
    return succeeded(result.get()) && booleanAt(result.get(), 0, 0);
}

bool PostgresStore::changed() {
    bool result = true;
    const Status looked = guarded([&]() -> Status {
        if (!m_connection.alive() || m_session.empty())
            return {};
        if (m_followed)
            m_listener.revive(m_url);
        int64_t id = -1;
        const Status status = newest(&id, lookMilliseconds);
        if (m_isStandby && status.ok() && hasTakenOver()) {
            m_connection.close(); // the next one may write, and is announced to
            return {};
        }
        const bool announced = m_listener.isJoined() && Listener::takeFrom(m_connection);
        result = !status.ok() || announced || m_more || id != m_seen;
        m_seen = id;
        m_more = false;
        return {};
    });
    return result || !looked.ok(); // an error is the reader's to meet
}

Status PostgresStore::integrity(std::vector<std::string>* damages) {
    return guarded([&]() -> Status {
        const Status status = ready();
        if (!status.ok())
            return status;
        const Connection::NoTimeoutScope noTimeout(m_connection); // all there is gets read
        std::vector<std::string> found;
        const auto texts = [&](const std::string& sql, const auto& take) -> Status {
            const Result result = m_connection.execute(sql);
            if (succeeded(result.get())) {
                for (int row = 0; row < PQntuples(result.get()); ++row)
                    take(std::string(textAt(result.get(), row, 0)));
                return {};
            }
            const bool damage = stateOf(result.get()).substr(0, 2) == "XX";
            const Status failed = m_connection.failure(StdText::tr("Проверка базы"), result.get());
            if (!damage)
                return failed;
            found.push_back(failed.text);
            return {};
        };
        const auto lines = [&](const std::string& sql) {
            return texts(sql, [&](std::string line) { found.push_back(std::move(line)); });
        };
        const std::vector<std::string> definitions = {
            "SELECT " + literal(StdText::tr("Счётчик повреждённых страниц базы: ")) +
                " || checksum_failures FROM pg_stat_database WHERE datname = current_database() "
                "AND checksum_failures > 0",
            "SELECT " + literal(StdText::tr("Недействительный индекс ")) +
                " || indexrelid::regclass FROM pg_index JOIN pg_class c ON c.oid = indrelid "
                "WHERE c.relnamespace = 'public'::regnamespace AND NOT indisvalid",
            differingDefinitions(dictionary()), looseRightsQuery()};
        const std::pair<ContentFault, const char*> contents[] = {
            {ContentFault::OtherSize,
             "SELECT f.\"KeyLink\" FROM public.\"MenuResourceFile\" f WHERE f.\"size\" IS DISTINCT "
             "FROM (SELECT coalesce(sum(octet_length(\"data\")), 0) FROM "
             "public.\"MenuResourceFileData\" d WHERE d.\"KeyLink\" = f.\"KeyLink\")"},
            {ContentFault::OtherBytes,
             "SELECT s.\"KeyLink\" FROM public.\"MenuResourceFileSum\" s WHERE s.\"sha256\" <> "
             "encode(sha256(coalesce((SELECT string_agg(d.\"data\", '' ORDER BY d.\"part\") FROM "
             "public.\"MenuResourceFileData\" d WHERE d.\"KeyLink\" = s.\"KeyLink\"), '')), "
             "'hex')"},
            {ContentFault::NoChecksum,
             "SELECT f.\"KeyLink\" FROM public.\"MenuResourceFile\" f WHERE NOT EXISTS (SELECT 1 "
             "FROM public.\"MenuResourceFileSum\" s WHERE s.\"KeyLink\" = f.\"KeyLink\")"}};
        std::vector<std::string> checks = {
            "SELECT " + literal(StdText::tr("Прежнее содержимое файла \"")) +
                " || coalesce(v.\"name_\", '') || " + literal(StdText::tr("\" (версия ")) +
                " || v.\"id\" || " +
                literal(StdText::tr(") повреждено или изменено мимо программы: не сходится с "
                                    "контрольной суммой")) +
                " FROM public.\"NciVersion\" v WHERE v.\"sha256\" <> "
                "encode(sha256(coalesce((SELECT "
                "string_agg(d.\"data\", '' ORDER BY d.\"part\") FROM public.\"NciVersionData\" d "
                "WHERE d.\"id\" = v.\"id\"), '')), 'hex') ORDER BY v.\"id\"",
            "SELECT " + literal(StdText::tr("В журнале изменений строка ")) + " || \"id\" || " +
                literal(StdText::tr(" с номером, которого хранилище не давало: более новые "
                                    "изменения за ней не видны")) +
                " FROM public.\"NciEvent\" WHERE \"id\" > (SELECT last_value FROM "
                "public.\"NciEventId\")"};
        std::vector<std::string> names = {contentTable().name, "MenuResourceFileData", "NciVersion",
                                          "NciVersionData", "NciEvent"};
        for (const TableDef& table : tables())
            names.emplace_back(table.name);
        for (const std::string& name : names) // every value is read once
            checks.push_back("SELECT s::text FROM (SELECT sum(length(t::text)) AS s FROM " +
                             qualified(name) + " t) x WHERE s < 0");
        for (const std::string& check : definitions) {
            const Status done = lines(check);
            if (!done.ok())
                return done;
        }
        ContentFaults faults;
        for (const auto& [fault, keys] : contents) {
            const Status done = texts(keys, [&faults, fault = fault](std::string key) {
                faults.emplace_back(fault, std::move(key));
            });
            if (!done.ok())
                return done;
        }
        if (!faults.empty()) {
            const Status done = inRead([&]() -> Status {
                tellFaults(faults, &found);
                return {};
            });
            if (!done.ok())
                return done;
        }
        for (const std::string& check : checks) {
            const Status done = lines(check);
            if (!done.ok())
                return done;
        }
        damages->swap(found);
        return {};
    });
}

} // namespace orvo::store::postgres
