// bench_history [RECORDS]: taking back the deletion of RECORDS (100000) elements, planned and
// written, against the deletion itself as a session writes it for a module, on both databases.
// Medians of three. The same of their insertion, after which another has written. Then a page of
// the history behind as many changes, and of one record in them.
#include "bench/Budget.h"
#include "bench/store/Support.h"

#include "history/Inverse.h"
#include "history/Reading.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/Merge.h"
#include "tests/store/PostgresCluster.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdlib>

using namespace orvo;
using namespace orvo::bench;
using store::test::PostgresCluster;

namespace {

void require(const store::Status& status) {
    check(status.ok(), status.text);
}

std::string keyOf(int number) {
    return "bench" + std::to_string(number);
}

store::Write element(int number) {
    const store::TableDef& table = *store::findTable("Menu");
    store::Write write;
    write.flag = MDX_INSERT;
    write.key = keyOf(number);
    write.values = {{table.find("FolderKey"), std::string("desk")},
                    {table.find("caption"), "Крановая обвязка " + std::to_string(number)},
                    {table.find("order_"), int64_t(number)},
                    {table.find("params"), std::string("a=1;b=2")}};
    if (number >= 100)
        write.values.insert(write.values.begin(), {table.find("parent"), keyOf(number % 100)});
    return write;
}

std::vector<store::TableWrites> elements(int count) {
    store::TableWrites part{store::findTable("Menu"), {}};
    for (int i = 0; i < count; ++i)
        part.writes.push_back(element(i));
    return {std::move(part)};
}

/// As a module hands it to its session.
void markDeleted(int count, MDArray* records) {
    store::makeStructure(*store::findTable("Menu"), records);
    for (int i = 0; i < count; ++i) {
        MDRData* record = MDARecNew(records);
        MDRSetFlags(record, MDX_DELETE);
        MDRVar key{};
        const std::string text = keyOf(i);
        key.type = MDX_TEXT;
        key.value.text = {static_cast<uint32_t>(text.size()), text.c_str()};
        MDRSetVal(MDRFldByNum(records, 0), record, &key);
        MDARecPost(record, nullptr);
    }
}

void run(const char* name, const std::string& url, int count) {
    store::Status status;
    const auto opened = store::openMaintained(url, {"bench", true, "bench"}, &status);
    check(opened != nullptr, status.text);
    store::MaintainedStore& target = *opened;
    int64_t seen = 0;
    require(target.logPosition(&seen));
    const auto inserted = elements(count);
    const double insertion = seconds([&] { require(target.writeAll(inserted, seen, {})); });
    const int64_t made = target.lastWritten().first;
    require(target.logPosition(&seen));
    store::TableWrites another{store::findTable("MenuFolder"), {}};
    another.writes.push_back({MDX_INSERT, "other", {}, {}});
    require(target.writeAll({another}, seen, {}));
    history::Inverse removal;
    const double removalPlan =
        seconds([&] { require(history::planInverse(target, {made}, {}, &removal)); });
    check(removal.count == size_t(count) && removal.remarks.empty(), "not planned");
    std::printf("%s: what takes the insertion of %d elements back is planned in %.2f s\n", name,
                count, removalPlan);
    CMDArray deleted;
    markDeleted(count, deleted.array);
    std::vector<double> deletions, plans, undos;
    for (int i = 0; i < 3; ++i) {
        store::UpdateGuard guard;
        require(target.logPosition(&guard.seen));
        deletions.push_back(
            seconds([&] { require(target.update("Menu", deleted.array, &guard)); }));
        history::Inverse done;
        const int64_t group = target.lastWritten().first;
        history::Inverse planned;
        plans.push_back(
            seconds([&] { require(history::planInverse(target, {group}, {}, &planned)); }));
        undos.push_back(seconds([&] { require(history::undo(target, {group}, {}, &done)); }));
        check(done.written && done.remarks.empty(), "not taken back");
    }
    std::printf(
        "%s: inserting %d elements %.2f s; deleting them %.2f s, the plan to take that back "
        "%.2f s, taking it back %.2f s: %.2fx",
        name, count, insertion, median(deletions), median(plans), median(undos),
        median(undos) / median(deletions));
    judge(median(undos) / median(deletions), Bound::AtMost, 1.5, "x");
    const auto page = [&](const history::Filter& filter, const char* what) {
        const double taken = seconds([&] {
            history::Reader reader(target, filter);
            std::vector<history::Group> groups;
            require(reader.next(50, &groups));
        });
        std::printf("%s: first page of %s %.1f ms", name, what, taken * 1000);
        judge(taken * 1000, Bound::AtMost, 100, " ms");
    };
    page({}, "everything");
    history::Filter one;
    one.key = "bench77";
    page(one, "one record");
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const int count = argc > 1 ? std::atoi(argv[1]) : 100000;
    const QTemporaryDir directory;
    if (qEnvironmentVariableIsEmpty("ORVO_SOURCE_DIR")) // build/PRESET/bin
        qputenv("ORVO_SOURCE_DIR",
                (QCoreApplication::applicationDirPath() + "/../../..").toLocal8Bit());
    run("SQLite", directory.filePath("history.db").toStdString(), count);
    PostgresCluster* cluster = PostgresCluster::shared();
    check(cluster != nullptr, "no PostgreSQL");
    run("PostgreSQL", cluster->url("history"), count);
    return exitCode();
}
