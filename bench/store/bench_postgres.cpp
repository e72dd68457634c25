// bench_postgres [RECORDS]: the PostgreSQL store against named peers, in one run, on a server of
// its own over a Unix socket.
//
//  1. A stored file of 200 MiB in and out: the peak of the client's memory beside the file's size.
//  2. Durable updates of single records, against the same statements each waited for: BEGIN, the
//     log's lock, the update, COMMIT. Medians of seven rounds of a fifth of a second, in turns. The
//     same once more without waiting for the disk.
//  3. Fetching RECORDS (1000000) x 9 fields into records, against the same COPY with every row
//     dropped as it comes, and against Qt's SQL driver, forward only, with every value read.
//     Medians of five, in turns.
#include "Support.h"
#include "bench/Budget.h"

#include "platform/store/PostgresApi.h"
#include "platform/store/PostgresSchema.h"
#include "tests/store/PostgresCluster.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdlib>

using namespace orvo;
using namespace orvo::bench;
using store::test::PostgresCluster;

namespace {

std::unique_ptr<store::Store> openStore(const std::string& url) {
    store::Status status;
    auto result = store::open(url, {{}, true}, &status);
    check(result != nullptr, status.text);
    return result;
}

store::postgres::Connection connect(const std::string& location) {
    store::postgres::Url url;
    store::postgres::Connection connection;
    store::Status status = url.parse(location);
    if (status.ok())
        status = connection.open(url);
    check(status.ok(), status.text);
    return connection;
}

void benchWrites(const std::string& url, const char* what, bool budgeted) {
    const auto target = openStore(url);
    store::postgres::Connection connection = connect(url);
    int number = 0;
    const auto update = [&] { updateOne(*target, number++); };
    const auto four = [&] {
        const std::string key = std::to_string(100000 + number * 7 % 1000);
        const std::string caption = "caption " + std::to_string(number++);
        const auto run = [&](const std::string& sql, const store::postgres::Parameters& values) {
            const auto result = connection.query(sql, values);
            check(store::postgres::succeeded(result.get()), sql);
        };
        run("BEGIN", {});
        run(std::string("SELECT ") + store::postgres::takeLogLock +
                ", set_config('orvo.login', $1, true), set_config('orvo.call', $2, true)",
            store::postgres::Parameters().text("").text("call"));
        run("UPDATE public.\"Menu\" SET \"caption\" = $2 WHERE lower(\"KeyLink\") = $1",
            store::postgres::Parameters().text(key).text(caption));
        run("COMMIT", {});
    };
    for (int i = 0; i < 500; ++i) {
        update();
        four();
    }
    std::vector<double> own;
    std::vector<double> peer;
    for (int i = 0; i < 7; ++i) {
        own.push_back(rate(update));
        peer.push_back(rate(four));
    }
    std::printf("%s single-record updates: one stream %.0f/s, four round trips %.0f/s: %.2fx", what,
                median(own), median(peer), median(own) / median(peer));
    if (budgeted)
        judge(median(own) / median(peer), Bound::AtLeast, 2, "x");
    else
        std::puts("");
    std::fflush(stdout);
}

double fetchAndDrop(store::postgres::Connection& connection, int records) {
    touchMemory();
    int rows = 0;
    const double time = seconds([&] {
        const auto begun = connection.execute(
            "COPY public.\"MenuResource\" (" +
            std::string("\"KeyLink\", \"MenuResourceFolderKey\", \"name_\", \"type_\", "
                        "\"caption\", \"params\", \"ico\", \"UsersKey\", \"dateTimeEdit\"") +
            ") TO STDOUT (FORMAT binary)");
        check(PQresultStatus(begun.get()) == PGRES_COPY_OUT, "COPY");
        char* row = nullptr;
        while (PQgetCopyData(connection.get(), &row, 0) > 0) {
            PQfreemem(row);
            ++rows;
        }
        while (const store::postgres::Result end{PQgetResult(connection.get())})
            check(store::postgres::succeeded(end.get()), "COPY");
    });
    check(rows >= records, "rows are missing");
    return time;
}

void benchFetch(const PostgresCluster& cluster, const std::string& url, int records) {
    const auto source = openStore(url);
    std::printf("filling %d records...\n", records);
    std::fflush(stdout);
    const double filled = seconds([&] { fill(*source, records); });
    store::postgres::Connection connection = connect(url);
    check(store::postgres::succeeded(
              connection.execute("VACUUM ANALYZE public.\"MenuResource\"").get()),
          "VACUUM");
    std::vector<double> own;
    std::vector<double> dropped;
    std::vector<double> peer;
    fetchIntoRecords(*source, records); // the table into the server's memory
    for (int i = 0; i < 5; ++i) {
        own.push_back(fetchIntoRecords(*source, records));
        dropped.push_back(fetchAndDrop(connection, records));
        peer.push_back(fetchThroughQt("QPSQL", "bench", cluster.directory(), "postgres", records));
    }
    std::printf("write of %d records through update(): %.0f records/s\n", records,
                records / filled);
    std::printf("fetch of %d x 9: store %.3f s, COPY dropped %.3f s: %.0f %%", records, median(own),
                median(dropped), 100 * median(dropped) / median(own));
    judge(100 * median(dropped) / median(own), Bound::AtLeast, 90, " %");
    std::printf("    Qt SQL driver %.3f s: %.2fx", median(peer), median(peer) / median(own));
    judge(median(peer) / median(own), Bound::AtLeast, 1.3, "x");
}

} // namespace

int main(int argc, char** argv) {
    keepMemory();
    QCoreApplication application(argc, argv);
    const int records = argc > 1 ? std::max(1, std::atoi(argv[1])) : 1000000;
    if (qEnvironmentVariableIsEmpty("ORVO_SOURCE_DIR")) // build/PRESET/bin
        qputenv("ORVO_SOURCE_DIR",
                (QCoreApplication::applicationDirPath() + "/../../..").toLocal8Bit());
    qputenv("ORVO_PG_DURABLE", "1");
    const auto cluster = PostgresCluster::start();
    check(cluster != nullptr, "no server");
    const std::string url = cluster->url("bench");
    const std::string large = cluster->url("large");
    openStore(large);
    benchLargeFile([&] { return openStore(large); });
    insertForUpdates(*openStore(url));
    benchWrites(url, "durable", true);
    // What the disk costs is the same on both sides; without it the difference itself shows.
    benchWrites(url + "&options=-csynchronous_commit%3Doff", "not waiting for the disk:", false);
    benchFetch(*cluster, url, records);
    return exitCode();
}
