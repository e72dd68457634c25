// bench_problems [ROWS]: what a list of ROWS (10000) problems costs the window: the client with its
// pane "Проблемы" runs in this process, and its user shows the list, filters and sorts it, selects
// all of it and puts all of it right. Of each of these acts the longest step of the window's thread
// is told, in processor time; none may take more than 16 ms. The exit code is 1 if one does.
#include "bench/Budget.h"
#include "tests/client/Heartbeat.h"
#include "tests/client/ProblemsFixture.h"

#include <QApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <functional>

using namespace orvo;
using namespace orvo::test;

namespace {

constexpr double budgetMs = 16;
constexpr int patienceMs = 120000;

/// Does something, waits until that is so, and judges the longest step meanwhile.
void measure(const char* what, const std::function<void()>& act,
             const std::function<bool()>& isDone) {
    const Heartbeat heart;
    act();
    if (!QTest::qWaitFor(isDone, patienceMs))
        qFatal("%s: it does not end", what);
    QTest::qWait(500); // what follows from it
    std::printf("%s: longest step %.1f ms", what, heart.longest());
    bench::judge(heart.longest(), bench::Bound::AtMost, budgetMs, " ms");
}

} // namespace

int main(int argc, char** argv) {
    const QTemporaryDir home; // what a user's windows remember is not ours
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
        qputenv(name, home.path().toUtf8());
    const QApplication application(argc, argv);
    const int rows = argc > 1 ? std::atoi(argv[1]) : 10000;
    ProblemsFixture fixture;
    fixture.fillWithMissingIcons(rows);
    const auto count = [&] { return fixture.model()->rowCount(); };
    measure(
        "found after the start", [] {}, [&] { return count() >= rows; });
    measure(
        "the pane is shown", [&] { fixture.dock()->show(); },
        [&] { return fixture.dock()->isVisible(); });
    auto* text = fixture.child<QLineEdit>("problemsText");
    for (const QString& typed : {QStringLiteral("9"), QStringLiteral("99"), QString()})
        measure(
            qPrintable("filter \"" + typed + '"'), [&] { text->setText(typed); },
            [&] { return typed.isEmpty() ? count() >= rows : count() < rows; });
    QTreeView* view = fixture.pane()->view();
    measure(
        "sorted by the record", [&] { view->sortByColumn(0, Qt::DescendingOrder); },
        [] { return true; });
    measure(
        "all selected", [&] { view->selectAll(); }, [] { return true; });
    measure(
        "all put right", [&] { fixture.child<QPushButton>("problemsCure")->click(); },
        [&] { return fixture.logged("Отменяет Ctrl+Z.") == 1 && count() < 10; });
    return bench::exitCode();
}
