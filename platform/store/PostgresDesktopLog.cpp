// The change log of a PostgreSQL store as the followers of one desktop read it: hundreds of them
// ask for each change, and most changes are none of theirs.
#include "platform/store/PostgresStore.h"

#include "frame/Vocabulary.h"
#include "platform/store/Names.h"
#include "platform/store/PostgresSchema.h"
#include "platform/store/Sql.h"

#include <algorithm>
#include <iterator>

namespace orvo::store::postgres {

namespace {

/// The changes behind a place, without values where they concern others: $1 and the following, at
/// most $2; $3 the folded key of the desktop, $4 the same as the log's values hold it. The newest
/// change proves the place that is reached, and $5 the place so far, whole if $6 is 1.
///
/// An update tells what it changed, so the rest is asked of the records as they are now. A record
/// that has left the desktop since is followed no longer; the change by which it left names the
/// desktop, and so does the one by which another has come.
std::string statement(const std::string& newest) {
    const std::string head =
        R"sql(WITH RECURSIVE icons AS (
  SELECT lower(f."KeyLink") AS folder FROM public."MenuResourceFolder" f
    WHERE f."type_" = 4 AND f."ParentKey" IS NULL AND lower(f."caption") = ')sql" +
        std::string(iconFolder) + R"sql('
  UNION SELECT lower(f."KeyLink") FROM icons JOIN public."MenuResourceFolder" f
    ON lower(f."ParentKey") = folder),
ends AS MATERIALIZED (SELECT (SELECT "id" FROM public."NciPruned") AS pruned, ()sql" +
        newest + ") AS newest) SELECT pruned, newest, " + changeColumns + ", mine FROM ends ";
    return head +
           R"sql(LEFT JOIN LATERAL (SELECT e."id", "code", "tableName", "key", "login", e."time",
    CASE WHEN whole THEN "after" ELSE '' END AS "after",
    CASE WHEN whole THEN "before" ELSE '' END AS "before",
    "group", "client", "place", "undoes", mine
  FROM public."NciEvent" e
  CROSS JOIN LATERAL (SELECT CASE "tableName" WHEN 'MenuResource' THEN lower("key")
    WHEN 'MenuResourceFile' THEN coalesce(
      substring(lower("after") from '"menuresourcekey":"([^"\\]*)"'),
      substring(lower("before") from '"menuresourcekey":"([^"\\]*)"'),
      (SELECT lower(f."MenuResourceKey") FROM public."MenuResourceFile" f
        WHERE lower(f."KeyLink") = lower(e."key"))) END AS resource OFFSET 0) named
  CROSS JOIN LATERAL (SELECT CASE "tableName"
    WHEN 'Menu' THEN position($4 in lower("after")) > 0 OR position($4 in lower("before")) > 0
      OR EXISTS (SELECT FROM public."Menu" m
        WHERE lower(m."KeyLink") = lower(e."key") AND lower(m."FolderKey") = $3)
    WHEN 'MenuFolder' THEN lower("key") = $3
    WHEN 'MenuResource' THEN false WHEN 'MenuResourceFile' THEN false
    ELSE true END OR resource IS NOT NULL AND (EXISTS (SELECT FROM public."Menu" m
        WHERE lower(m."MenuResourceKey") = resource AND lower(m."FolderKey") = $3)
      OR EXISTS (SELECT FROM icons, (SELECT lower(r."MenuResourceFolderKey") AS "at"
        FROM (VALUES (1)) one LEFT JOIN public."MenuResource" r ON lower(r."KeyLink") = resource) r
        WHERE folder = "at" OR position('"menuresourcefolderkey":' || to_json(folder)::text
          in lower("after" || "before")) > 0)) AS mine OFFSET 0) which
  CROSS JOIN LATERAL (SELECT mine OR (e."id" = $5 AND $6 = 1) AS whole OFFSET 0) shown
  WHERE e."id" >= $1 AND e."id" <= newest AND (mine OR e."id" = newest OR e."id" = $5)
  ORDER BY e."id" LIMIT $2) e ON true ORDER BY e."id")sql";
}

/// The same as `statement` for a tenth of its price, where changes of menus are concerned: "mine"
/// is NULL for a change that only the other one can tell. It gives all changes, those of others
/// without key, login and values.
std::string menuStatement(const std::string& newest) {
    return R"sql(SELECT (SELECT "id" FROM public."NciPruned"), newest, e.*
  FROM (SELECT ()sql" +
           newest + R"sql() AS newest OFFSET 0) ends
  LEFT JOIN LATERAL (SELECT "id", "code", "tableName",
      CASE WHEN mine OR "id" = newest OR "id" = $5 THEN "key" ELSE '' END AS "key",
      CASE WHEN mine OR "id" = newest OR "id" = $5 THEN "login" ELSE '' END AS "login", e."time",
      CASE WHEN mine OR ("id" = $5 AND $6 = 1) THEN "after" ELSE '' END AS "after",
      CASE WHEN mine OR ("id" = $5 AND $6 = 1) THEN "before" ELSE '' END AS "before",
      "group", "client", "place", "undoes", mine
    FROM public."NciEvent" e CROSS JOIN LATERAL (SELECT CASE "tableName"
      WHEN 'Menu' THEN position($4 in lower("after")) > 0 OR position($4 in lower("before")) > 0
        OR EXISTS (SELECT FROM public."Menu" m
          WHERE lower(m."KeyLink") = lower(e."key") AND lower(m."FolderKey") = $3)
      WHEN 'MenuFolder' THEN lower("key") = $3
      WHEN 'MenuResource' THEN NULL WHEN 'MenuResourceFile' THEN NULL
      ELSE true END AS mine OFFSET 0) which
    WHERE "id" >= $1 AND "id" <= newest ORDER BY "id" LIMIT $2) e ON true ORDER BY e."id")sql";
}

/// A key as it stands in the values of the log, in lower case.
std::string inValues(const std::string& folded) {
    std::string text = "\"folderkey\":\"";
    for (const char c : folded) {
        if (c == '"' || c == '\\')
            text += '\\';
        text += c;
    }
    return text + '"';
}

} // namespace

Status PostgresStore::readDesktopLog(std::string_view desktop, int limit, LogCursor* cursor,
                                     std::vector<Change>* changes, bool* more) {
    return guarded([&]() -> Status {
        const Status status = ready();
        if (!status.ok())
            return status;
        if (m_followed) { // before the rows: what comes in between is announced
            m_listener.join(m_connection);
            m_listener.revive(m_url);
        }
        static const std::string ofMenus = menuStatement(newestIdSql);
        static const std::string ofAll = statement(newestIdSql);
        // Planning takes several times what running does, and one plan suits every place in the
        // log, unless it was made while the log was short: that would read all of it.
        if (!m_connection.isPrepared(ofMenus) &&
            !succeeded(m_connection
                           .execute("SET plan_cache_mode = force_generic_plan; SET enable_seqscan "
                                    "= off; SET jit = off")
                           .get()))
            return m_connection.failure(logName(), nullptr);
        const bool proved = !cursor->proof.empty();
        const std::string folded = foldedKey(desktop);
        const std::string values = inValues(folded);
        const int64_t most = std::max(limit, 0) + (proved ? 1 : 0);
        const auto parameters = Parameters()
                                    .integer(proved ? cursor->id : cursor->id + 1)
                                    .integer(most)
                                    .text(folded)
                                    .text(values)
                                    .integer(proved ? cursor->id : -1)
                                    .integer(isOfHead(*cursor) ? 0 : 1);
        const int mineColumn = 2 + changeColumnCount;
        Result result = m_connection.query(ofMenus, parameters);
        for (int row = 0; succeeded(result.get()) && row < PQntuples(result.get()); ++row)
            if (!isNull(result.get(), row, 2) && isNull(result.get(), row, mineColumn) &&
                integerAt(result.get(), row, 2) != cursor->id) {
                result = m_connection.query(ofAll, parameters);
                break;
            }
        if (!succeeded(result.get()))
            return m_connection.failure(logName(), result.get());
        const PGresult* rows = result.get();
        const int64_t newest = integerAt(rows, 0, 1);
        m_known = newest;
        std::vector<Change> read = changesIn(rows, 2);
        const bool full = static_cast<int64_t>(read.size()) == most;
        LogCursor reached = *cursor;
        if (!read.empty())
            reached = {read.back().id, proofOfHead(read.back())};
        std::vector<bool> mine;
        for (size_t i = 0; i < read.size(); ++i)
            mine.push_back(!isNull(rows, static_cast<int>(i), mineColumn) &&
                           booleanAt(rows, static_cast<int>(i), mineColumn));
        const size_t all = read.size();
        if (const Status place =
                checkCursor(*cursor, isNull(rows, 0, 0) ? 0 : integerAt(rows, 0, 0), newest, &read);
            !place.ok())
            return place;
        const size_t ownPlace = all - read.size(); // the cursor's own change is gone
        std::vector<Change> kept;
        for (size_t i = 0; i < read.size(); ++i)
            if (mine[ownPlace + i])
                kept.push_back(std::move(read[i]));
        m_seen = newest;
        *more = m_more = Listener::takeFrom(m_connection) || full;
        *cursor = std::move(reached);
        changes->swap(kept);
        return {};
    });
}

} // namespace orvo::store::postgres
