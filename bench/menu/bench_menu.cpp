// bench_menu [ROWS]: what one notification costs the menu editor, table and tree, on a desktop of
// ROWS (100000) elements, a thousand to a folder, fetched from a real store into a real window.
//
// The blocks are made beforehand and handed over as the host does it, in bursts of 400: what is
// timed is OrvoMenu::MessageOn. Beside it the cost of notifications that come alone. First for the
// table and the tree, with the window not yet on the screen; this has a budget, and the exit code
// is 1 if it is missed. Then in the open window, where the views lay out their rows and paint them,
// with a budget again when all folders are open. Processor time, medians of five rounds.
#include "tests/menu/MenuProbe.h"

#include "bench/Budget.h"
#include "bench/Timing.h"
#include "frame/Records.h"
#include "tests/menu/Notices.h"

#include <QApplication>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <vector>

using namespace orvo::test;
using orvo::bench::processorMicroseconds;

namespace {

constexpr int folderSize = 1000;
constexpr int perRound = 400;
constexpr int perSingle = 20;
constexpr int rounds = 5;
constexpr double tableBudget = 50;    // microseconds a notification
constexpr double pictureBudget = 100; // the same, the views laid out and painted

QByteArray keyOf(int row) {
    return "element-" + QByteArray::number(row);
}

void fill(TestStore& store, int rows) {
    addDesck(store, "folder", "", "Цех", true);
    addDesck(store, "big", "folder", "Большой", false);
    addDesck(store, "small", "folder", "Малый", false);
    addResource(store, "resource", 1, "Trend");
    // Row 0, 1000, 2000 ... are folders, the rows behind each of them are its elements.
    const std::string sql =
        "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i + 1 < " +
        std::to_string(rows) +
        ") INSERT INTO \"Menu\" (\"KeyLink\", \"parent\", \"FolderKey\", \"caption\", \"order_\", "
        "\"separator\", \"oneCopy\", \"MenuResourceKey\") SELECT 'element-' || i, "
        "CASE WHEN i % 1000 = 0 THEN NULL ELSE 'element-' || (i - i % 1000) END, 'big', "
        "'Насосная станция ' || i, 10 * i, 0, 0, "
        "CASE WHEN i % 1000 = 0 THEN NULL ELSE 'resource' END FROM n";
    store.sql(sql.c_str());
}

struct Bench {
    MenuProbe& editor;
    int rows;
    std::mt19937 random{7};
    double budget = tableBudget; ///< 0: none
    bool isShown = false;        ///< then the picture counts as well

    int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }
    /// The number of a row that is no folder.
    int element() {
        const int row = below(rows);
        return row % folderSize == 0 ? row + 1 : row;
    }

    void run(const char* what, const std::function<Notice(int)>& next) {
        std::vector<double> costs;
        std::vector<double> single;
        int number = 0;
        for (int round = 0; round < rounds; ++round) {
            std::vector<MDXCliParam*> blocks;
            for (int i = 0; i < perRound; ++i)
                blocks.push_back(next(number++).make());
            std::vector<MDXCliParam*> singles;
            for (int i = 0; i < perSingle; ++i)
                singles.push_back(next(number++).make());
            for (MDXCliParam* block : blocks)
                editor.messagePut(block);
            costs.push_back(processorMicroseconds([&] {
                                editor.MessageOn();
                                if (isShown)
                                    QCoreApplication::processEvents();
                            }) /
                            perRound);
            QCoreApplication::processEvents();
            single.push_back(processorMicroseconds([&] {
                                 for (MDXCliParam* block : singles) {
                                     editor.messagePut(block);
                                     editor.MessageOn();
                                 }
                             }) /
                             perSingle);
            QCoreApplication::processEvents();
        }
        std::sort(costs.begin(), costs.end());
        std::sort(single.begin(), single.end());
        const double cost = costs[rounds / 2];
        std::printf("  %-28s %8.1f us, alone %8.1f us", what, cost, single[rounds / 2]);
        if (budget > 0)
            orvo::bench::judge(cost, orvo::bench::Bound::AtMost, budget, " us");
        else
            std::puts("");
        std::fflush(stdout);
    }
};

} // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int rows = argc > 1 ? std::max(2 * folderSize, std::atoi(argv[1])) : 100000;

    TestStore store;
    fill(store, rows);
    TestHost host(store);
    MenuProbe editor(&host);
    editor.m_moduleName = QStringLiteral("Menu");
    editor.resize(1146, 825);
    if (!editor.ModuleStart())
        return 2;
    auto* desckView = editor.findChild<QTreeView*>(QStringLiteral("tvDesck"));
    auto* menuView = editor.findChild<QTreeView*>(QStringLiteral("tvMenu"));
    desckView->setCurrentIndex(editor.desck("big"));
    menuView->setCurrentIndex(editor.element("element-5"));
    QCoreApplication::processEvents();
    std::printf("%d records, %d elements\n", orvo::recordCount(editor.m_tabMenu), rows);

    Bench bench{editor, rows};
    const auto captionOf = [](int number) {
        return rawRecordOf("Menu", {{"caption", QString("Станция %1").arg(number)}});
    };
    const auto update = [&](int number) {
        return Notice{602, "Menu", keyOf(bench.element()), captionOf(number)};
    };
    const auto move = [&](int) {
        return Notice{602, "Menu", keyOf(bench.element()),
                      rawRecordOf("Menu", {{"order_", bench.below(10 * rows)}})};
    };
    const auto reparent = [&](int) {
        const int folder = bench.below(rows / folderSize) * folderSize;
        return Notice{602, "Menu", keyOf(bench.element()),
                      rawRecordOf("Menu", {{"parent", QString::fromLatin1(keyOf(folder))}})};
    };
    const auto insert = [&](int number) {
        const int folder = bench.below(rows / folderSize) * folderSize;
        return Notice{601, "Menu", "new-" + QByteArray::number(number),
                      rawRecordOf("Menu", {{"parent", QString::fromLatin1(keyOf(folder))},
                                           {"FolderKey", QString("big")},
                                           {"caption", QString("Новая")},
                                           {"order_", bench.below(10 * rows)},
                                           {"MenuResourceKey", QString("resource")}})};
    };
    const auto remove = [&](int number) {
        return Notice{603, "Menu", "new-" + QByteArray::number(number), {}};
    };

    const auto all = [&] {
        bench.run("update in place", update);
        bench.run("update that moves the row", move);
        bench.run("update to another parent", reparent);
        bench.run("insertion", insert);
        bench.run("deletion", remove);
    };
    std::puts("Table and tree, budgeted:");
    all();
    bench.budget = 0;
    bench.isShown = true;
    editor.show();
    QCoreApplication::processEvents();
    std::puts("With the views' own layout, folders opened as elements come:");
    all();
    menuView->setCurrentIndex(editor.m_menuModel->index(0, 0));
    QTest::keyClick(menuView, Qt::Key_Asterisk);
    QCoreApplication::processEvents();
    bench.budget = pictureBudget;
    std::puts("With the views' own layout, all folders open, up to the picture:");
    all();
    return orvo::bench::exitCode();
}
