// bench_log [ROWS [URL...]]: the first pages of the history behind a change log of ROWS
// (10000000) changes, on both databases, without a filter and with each; the budget of a page is
// 100 ms. The slowest of the pages, of which each filter reads five. Rows that are far between are
// looked for in portions, of which each is a page here; how many it takes to the first of them is
// told. A text that is nowhere is looked for through all of the log.
//
// The log is filled by the databases themselves: 20 changes an action, 20 people, 200000 elements;
// one of them and one person at the very beginning alone. With URLs the stores there are read
// instead, whose logs were filled so before.
#include "bench/Budget.h"
#include "bench/store/Support.h"

#include "history/GroupWords.h"
#include "history/Reading.h"
#include "platform/store/PostgresApi.h"
#include "platform/store/SqliteApi.h"
#include "tests/store/PostgresCluster.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdlib>

using namespace orvo;
using namespace orvo::bench;
using store::test::PostgresCluster;

namespace {

constexpr double begin = 1.7e9;
constexpr double step = 4; // seconds from change to change: ten million are 15 months

void require(const store::Status& status) {
    check(status.ok(), status.text);
}

/// The values of the log's columns for the change of number g; `text` turns a number into a text
/// where that needs a function, `call` and `xact` are those that a server has besides.
std::string values(const std::string& text, const std::string& call, const std::string& xact) {
    const std::string early = "g <= 40";
    const std::string key =
        "CASE WHEN " + early + " THEN 'early' ELSE 'k' || " + text + "(g * 7919 % 200000) END";
    const auto json = [&](const char* mark) {
        return std::string("'{\"caption\":\"Крановая обвязка ") + mark + "' || CASE WHEN " + early +
               " THEN 'Белый Мыс' ELSE " + text + "(g) END || '\"}'";
    };
    return "g, 602, 'Menu', " + key + ", CASE WHEN " + early + " THEN 'newcomer' ELSE 'user' || " +
           text + "(g / 400 % 20) END, " + std::to_string(begin) + " + " + std::to_string(step) +
           " * g, " + json("№ ") + ", " + json("") + call + ", (g - 1) / 20 * 20 + 1" + xact +
           ", 'orvo-client', 'ws1', ''";
}

void fillSqlite(const std::string& file, const std::string& rows) {
    store::sqlite::Connection connection;
    check(connection.open(file.c_str(), SQLITE_OPEN_READWRITE) == SQLITE_OK, "no store");
    const std::string columns = "\"id\", \"code\", \"tableName\", \"key\", \"login\", \"time\", "
                                "\"after\", \"before\", \"group\", \"client\", "
                                "\"place\", \"undoes\"";
    const auto run = [&](const std::string& sql) {
        const bool done = connection.execute(sql) == SQLITE_OK;
        check(done, sqlite3_errmsg(connection.get()));
    };
    auto made = connection.prepare("SELECT \"type\", \"name\", \"sql\" FROM sqlite_master WHERE "
                                   "\"type\" IN ('index', 'trigger') AND \"tbl_name\" = "
                                   "'NciEvent' AND \"sql\" IS NOT NULL");
    std::string drop, make; // indexes are made faster afterwards
    while (made.step() == SQLITE_ROW) {
        drop += "DROP " + std::string(made.text(0)) + " \"" + std::string(made.text(1)) + "\";";
        make += std::string(made.text(2)) + ";";
    }
    made.reset();
    run("PRAGMA synchronous = OFF; BEGIN;" + drop);
    run("WITH RECURSIVE n(g) AS (SELECT 1 UNION ALL SELECT g + 1 FROM n WHERE g < " + rows +
        ") INSERT INTO \"NciEvent\" (" + columns + ") SELECT " + values("", "", "") + " FROM n");
    run(make + "COMMIT; ANALYZE");
    auto trigger = connection.prepare("SELECT \"sql\" FROM sqlite_master WHERE \"name\" = "
                                      "'Menu.inserted'");
    check(trigger.step() == SQLITE_ROW, "no trigger");
    const std::string inserted(trigger.text(0));
    trigger.reset();
    run("DROP TRIGGER \"Menu.inserted\"; WITH RECURSIVE n(g) AS (SELECT 0 UNION ALL SELECT g + 1 "
        "FROM n WHERE g < 199999) INSERT INTO \"Menu\" (\"KeyLink\", \"caption\") SELECT 'k' || "
        "g, 'Крановая обвязка' FROM n;" +
        inserted);
}

void fillPostgres(const std::string& location, const std::string& rows) {
    store::postgres::Url url;
    store::postgres::Connection connection;
    require(url.parse(location));
    require(connection.open(url));
    const store::postgres::Connection::NoTimeoutScope noTimeout(
        connection); // silent while it fills
    const auto run = [&](const std::string& sql) {
        const auto result = connection.execute(sql);
        check(store::postgres::succeeded(result.get()),
              sql.substr(0, 100) + ": " + PQerrorMessage(connection.get()));
    };
    run("SET statement_timeout = 0");
    std::string drop, make; // indexes are made faster afterwards
    const auto indexes =
        connection.execute("SELECT indexname, indexdef FROM pg_indexes WHERE schemaname = 'public' "
                           "AND tablename = 'NciEvent' AND indexname <> 'NciEvent_pkey'");
    for (int row = 0; row < PQntuples(indexes.get()); ++row) {
        drop += "DROP INDEX public.\"" +
                std::string(store::postgres::textAt(indexes.get(), row, 0)) + "\";";
        make += std::string(store::postgres::textAt(indexes.get(), row, 1)) + ";";
    }
    run("BEGIN;" + drop +
        "ALTER TABLE public.\"NciEvent\" DISABLE TRIGGER \"number\"; INSERT INTO "
        "public.\"NciEvent\" "
        "SELECT " +
        values("concat", ", ''", ", '1'::xid8") + " FROM generate_series(1::bigint, " + rows +
        ") g; ALTER TABLE public.\"NciEvent\" ENABLE TRIGGER \"number\"; SELECT "
        "setval('public.\"NciEventId\"', " +
        rows + ");" + make + "COMMIT");
    run("BEGIN; ALTER TABLE public.\"Menu\" DISABLE TRIGGER USER; INSERT INTO public.\"Menu\" "
        "(\"KeyLink\", "
        "\"caption\") SELECT 'k' || g, 'Крановая обвязка' FROM generate_series(0, 199999) g; ALTER "
        "TABLE public.\"Menu\" ENABLE TRIGGER USER; COMMIT");
    run("VACUUM ANALYZE public.\"NciEvent\"");
    run("VACUUM ANALYZE public.\"Menu\"");
}

void measure(const char* name, store::MaintainedStore& target, const char* what,
             const history::Filter& filter) {
    history::Reader reader(target, filter);
    double slowest = 0;
    double sum = 0;
    int calls = 0;
    int callsToFirst = 0;
    size_t found = 0;
    while (calls < 5 || (found == 0 && !reader.atEnd() && calls < 1000)) {
        std::vector<history::Group> groups;
        const double taken = seconds([&] {
            require(reader.next(50, &groups));
            history::LoggedRecords source(target);
            for (const history::Group& group : groups)
                history::describe(group, source);
        });
        ++calls;
        sum += taken;
        slowest = std::max(slowest, taken);
        found += groups.size();
        if (found == 0)
            callsToFirst = calls;
        if (reader.atEnd())
            break;
    }
    std::printf("%s: %s: %zu actions in %d pages, on average %.0f ms", name, what, found, calls,
                sum * 1000 / calls);
    if (callsToFirst > 0)
        std::printf(", the first action after %d pages", callsToFirst);
    std::printf(", slowest %.0f ms", slowest * 1000);
    judge(slowest * 1000, Bound::AtMost, 100, " ms");
}

/// A text that nobody wrote is looked for through all of the log, a portion a call: between them
/// the pane is alive, and the text can be changed.
void measureThrough(const char* name, store::MaintainedStore& target, double rows) {
    constexpr double mostSeconds = 15; // a million changes; 2.5 minutes for ten
    history::Filter filter;
    filter.text = "чего никто не писал";
    history::Reader reader(target, filter);
    double slowest = 0;
    double sum = 0;
    int calls = 0;
    while (!reader.atEnd()) {
        std::vector<history::Group> groups;
        const double taken = seconds([&] { require(reader.next(50, &groups)); });
        check(groups.empty(), "found what is not there");
        ++calls;
        sum += taken;
        slowest = std::max(slowest, taken);
    }
    std::printf("%s: a text that is nowhere: all %.0f changes in %.1f s, %d portions, the slowest",
                name, rows, sum, calls);
    std::printf(" %.0f ms", slowest * 1000);
    judge(slowest * 1000, Bound::AtMost, 100, " ms");
    std::printf("%s: a million changes for a text", name);
    judge(sum / rows * 1e6, Bound::AtMost, mostSeconds, " s");
}

void measureAll(const char* name, const std::string& url, double rows) {
    store::Status status;
    const auto target = store::openMaintained(url, {"bench", true, "bench"}, &status);
    check(target != nullptr, status.text);
    const double end = begin + step * rows;
    history::Filter filter;
    const auto with = [&](const char* what, auto change) {
        history::Filter one;
        change(one);
        measure(name, *target, what, one);
    };
    measure(name, *target, "everything", filter);
    with("a row", [](auto& one) { one.table = "Menu", one.key = "k77"; });
    with("a row of the beginning", [](auto& one) { one.table = "Menu", one.key = "early"; });
    with("a person", [](auto& one) { one.login = "user7"; });
    with("a person of the beginning", [](auto& one) { one.login = "newcomer"; });
    with("by hand, which nobody did", [](auto& one) { one.login = ""; });
    with("a table without changes", [](auto& one) { one.table = "Users"; });
    with("the last hour", [&](auto& one) { one.since = end - 3600; });
    with("the last year", [&](auto& one) { one.since = end - 365 * 86400.0; });
    with("before the last year", [&](auto& one) { one.until = end - 365 * 86400.0; });
    with("the last hour of a person of the beginning",
         [&](auto& one) { one.login = "newcomer", one.since = end - 3600; });
    with("the last year of a person",
         [&](auto& one) { one.login = "user7", one.since = end - 365 * 86400.0; });
    with("a row and a person",
         [](auto& one) { one.table = "Menu", one.key = "k77", one.login = "user7"; });
    with("a text that is everywhere", [](auto& one) { one.text = "обвязка"; });
    with("a text of the last day",
         [&](auto& one) { one.text = QString::number(static_cast<qint64>(rows) - 20000); });
    with("a text of a person", [](auto& one) { one.text = "777", one.login = "user7"; });
    with("a text of the beginning", [](auto& one) { one.text = "Белый Мыс"; });
    measureThrough(name, *target, rows);
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const std::string rows = argc > 1 ? argv[1] : "10000000";
    const double count = std::atof(rows.c_str());
    if (qEnvironmentVariableIsEmpty("ORVO_SOURCE_DIR")) // build/PRESET/bin
        qputenv("ORVO_SOURCE_DIR",
                (QCoreApplication::applicationDirPath() + "/../../..").toLocal8Bit());
    for (int i = 2; i < argc; ++i)
        measureAll(argv[i], argv[i], count);
    if (argc > 2)
        return exitCode();
    const QTemporaryDir directory;
    const QString file = directory.filePath("log.db");
    store::Status status;
    check(store::openMaintained(file.toStdString(), {"bench", true}, &status) != nullptr,
          status.text);
    double filled = seconds([&] { fillSqlite(file.toStdString(), rows); });
    std::printf("SQLite: %s changes in %.0f s, %lld MiB\n", rows.c_str(), filled,
                QFileInfo(file).size() >> 20);
    measureAll("SQLite", file.toStdString(), count);
    PostgresCluster* cluster = PostgresCluster::shared();
    check(cluster != nullptr, "no PostgreSQL");
    const std::string url = cluster->url("log");
    check(store::openMaintained(url, {"bench", true}, &status) != nullptr, status.text);
    filled = seconds([&] { fillPostgres(url, rows); });
    std::printf("PostgreSQL: %s changes in %.0f s\n", rows.c_str(), filled);
    measureAll("PostgreSQL", url, count);
    return exitCode();
}
