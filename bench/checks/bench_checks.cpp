// bench_checks [ROWS]: what one change costs the live list of problems in an installation of ROWS
// (1000000) resources and as many menu elements: the change applied to the records in memory, and
// everything that it touches looked at again. The budget is 5 ms of processor time for the slowest
// of 20000 changes; the first look is told beside it. Then 10000 elements of one folder that are
// all in one place of the order are put in by one and get places of their own one by one, as a cure
// does it: 0.1 ms of processor time for each of these changes, however many there are.
#include "bench/Budget.h"
#include "bench/Timing.h"
#include "bench/store/Support.h"

#include "checks/Problems.h"
#include "frame/Vocabulary.h"
#include "platform/store/SqliteApi.h"

#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <random>

using namespace orvo;
using namespace orvo::bench;

namespace {

constexpr double budgetMs = 5;
constexpr int changes = 20000;
constexpr int crowd = 10000;
constexpr double crowdBudgetMs = 0.1;
constexpr int perDesktop = 100;
constexpr int perFolder = 200;

/// Records by the hand of the database itself; nobody reads the log of it.
void fillInstallation(const std::string& file, const std::string& rows) {
    store::sqlite::Connection connection;
    check(connection.open(file.c_str(), SQLITE_OPEN_READWRITE) == SQLITE_OK, "no store");
    const auto run = [&](const std::string& sql) {
        check(connection.execute(sql) == SQLITE_OK, sqlite3_errmsg(connection.get()));
    };
    const std::string numbers =
        "WITH RECURSIVE n(g) AS (SELECT 0 UNION ALL SELECT g + 1 FROM n WHERE g + 1 < ";
    run("PRAGMA synchronous = OFF; BEGIN");
    run("INSERT INTO \"MenuResourceFolder\" VALUES ('top', NULL, 1, 'модули'), "
        "('icons', NULL, 4, 'icons')");
    run("INSERT INTO \"MenuResource\"(\"KeyLink\", \"MenuResourceFolderKey\", \"name_\", "
        "\"type_\") "
        "VALUES ('icon', 'icons', 'a.png', 4)");
    run(numbers + rows + " / " + std::to_string(perFolder) +
        ") INSERT INTO \"MenuResourceFolder\" SELECT 'f' || g, 'top', 1, 'Папка ' || g FROM n");
    run(numbers + rows +
        ") INSERT INTO \"MenuResource\"(\"KeyLink\", \"MenuResourceFolderKey\", \"name_\", "
        "\"type_\", \"caption\") SELECT 'r' || g, 'f' || (g / " +
        std::to_string(perFolder) + "), 'module' || g, 1, 'Крановая обвязка ' || g FROM n");
    run(numbers + rows + " / " + std::to_string(perDesktop) +
        ") INSERT INTO \"MenuFolder\" SELECT 'd' || g, NULL, 'Стол ' || g, '2000', 0 FROM n");
    run(numbers + rows +
        ") INSERT INTO \"Menu\"(\"KeyLink\", \"parent\", \"FolderKey\", \"caption\", \"order_\", "
        "\"ico\", \"MenuResourceKey\") SELECT 'm' || g, CASE WHEN g % 10 = 0 THEN NULL ELSE 'm' || "
        "(g / 10 * 10) END, 'd' || (g / " +
        std::to_string(perDesktop) +
        "), 'Насос ' || g, g * 10, 'a.png', CASE WHEN g % 10 = 0 THEN NULL ELSE 'r' || g END "
        "FROM n");
    run("COMMIT");
}

store::Change update(const char* table, const std::string& key, const std::string& after) {
    store::Change change;
    change.code = OrvoEventUpdate;
    change.table = table;
    change.key = key;
    change.after = after;
    return change;
}

/// What engineers do to one record, and what breaks something.
store::Change randomChange(std::mt19937& random, int rows) {
    const auto below = [&](int end) {
        return std::uniform_int_distribution<int>(0, end - 1)(random);
    };
    const std::string any = std::to_string(below(rows));
    switch (below(8)) {
    case 0:
        return update(table::Menu, "m" + any, R"({"caption":"Помпа"})");
    case 1:
        return update(table::Menu, "m" + any, R"({"ico":"gone.png"})");
    case 2:
        return update(table::Menu, "m" + any, R"({"order_":)" + std::to_string(below(rows)) + "}");
    case 3:
        return update(table::Menu, "m" + any,
                      R"({"MenuResourceKey":"r)" + std::to_string(below(2 * rows)) + "\"}");
    case 4:
        return update(table::MenuResource, "r" + any,
                      R"({"name_":"module)" + std::to_string(below(rows)) + "\"}");
    case 5:
        return update(table::MenuResource, "r" + any,
                      R"({"type_":)" + std::to_string(1 + below(4)) + "}");
    case 6:
        return update(table::MenuFolder, "d" + std::to_string(below(rows / perDesktop)),
                      R"({"isFolder":)" + std::string(below(2) ? "true" : "false") + "}");
    default:
        return update(table::MenuResourceFolder, "f" + std::to_string(below(rows / perFolder)),
                      R"({"type_":)" + std::to_string(1 + below(4)) + "}");
    }
}

/// Processor time of a change, in milliseconds: elements that come into one place of the order, and
/// leave it.
double changeInCrowd(checks::Catalogue& records, checks::Problems& problems) {
    const auto applyAll = [&](const auto& changeOf) {
        for (int i = 0; i < crowd; ++i) {
            records.apply(changeOf(i));
            problems.settle();
        }
    };
    const double time = processorMicroseconds([&] {
        applyAll([](int i) {
            store::Change change =
                update(table::Menu, "crowd" + std::to_string(i),
                       R"({"FolderKey":"d0","parent":"m0","caption":"Насос","order_":-7})");
            change.code = OrvoEventInsert;
            return change;
        });
        check(problems.warnings() >= crowd - 1, "the elements are not in one place");
        applyAll([](int i) {
            return update(table::Menu, "crowd" + std::to_string(i),
                          R"({"order_":)" + std::to_string(-100000 - i) + "}");
        });
    });
    return time / 1000 / (2 * crowd);
}

} // namespace

int main(int argc, char** argv) {
    const int rows = argc > 1 ? std::atoi(argv[1]) : 1000000;
    check(rows >= 1000, "at least 1000 rows");
    const QTemporaryDir directory;
    const std::string file = directory.filePath(QStringLiteral("orvo.db")).toStdString();
    store::Status status;
    const auto source = store::open(file, {"bench", true, "bench"}, &status);
    check(status.ok(), status.text);
    fillInstallation(file, std::to_string(rows));

    checks::Catalogue records;
    const double loading =
        seconds([&] { check(records.load(*source).ok(), "records are not read"); });
    checks::Problems problems(records);
    const double looking = seconds([&] { problems.lookAtAll(); });
    check(problems.errors() <= 2, "the installation is not sound"); // two tops are missing
    records.addListener(&problems);
    std::printf("%zu records: loaded in %.2f s, looked at in %.2f s\n", records.count(), loading,
                looking);

    std::mt19937 random(1);
    std::vector<double> times;
    for (int i = 0; i < changes; ++i) {
        const store::Change change = randomChange(random, rows);
        times.push_back(processorMicroseconds([&] {
                            records.apply(change);
                            problems.settle();
                        }) /
                        1000);
    }
    const size_t found = problems.errors() + problems.warnings();
    check(found > 1000, "the changes have broken nothing");
    const double middle = orvo::bench::median(times);
    std::sort(times.begin(), times.end());
    const double most = times.back();
    std::printf("one change: median %.3f ms, p99 %.3f ms, %zu problems then; slowest "
                "%.3f ms",
                middle, times[times.size() * 99 / 100], found, most);
    orvo::bench::judge(most, orvo::bench::Bound::AtMost, budgetMs, " ms");
    const double inCrowd = changeInCrowd(records, problems);
    std::printf("one change among %d elements in one place of the order: %.4f ms", crowd, inCrowd);
    orvo::bench::judge(inCrowd, orvo::bench::Bound::AtMost, crowdBudgetMs, " ms");
    return orvo::bench::exitCode();
}
