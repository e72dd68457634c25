// bench_undo [ELEMENTS]: what a user waits for on both databases: a menu of ELEMENTS (100000) is
// deleted in the menu editor by Del and "Да", and brought back by Ctrl+Z. Each lasts from the key
// until the tree has taken all of it: what another writes behind it shows. Medians of three. The
// exit code is 1 if taking back lasts longer than 1.5 times the deletion.
#include "bench/Budget.h"
#include "bench/Timing.h"
#include "tests/client/RunningClient.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <functional>

using namespace orvo;
using namespace orvo::test;

namespace {

constexpr double budget = 1.5;
constexpr int patienceMs = 120000;

void require(bool isSo, const char* what) {
    if (!isSo)
        qFatal("%s", what);
}

struct Fixture : RunningClient {
    /// Below а, a hundred folders at its top.
    void fill(int count) {
        stop();
        const QString rows = "with recursive n(i) as (select 0 union all select i + 1 from n where "
                             "i + 1 < %1) insert into \"Menu\" (\"KeyLink\", \"parent\", "
                             "\"FolderKey\", \"caption\", \"order_\", \"params\") select 'p' || i, "
                             "case when i < 100 then 'a' else 'p' || (i %% 100) end, 'desk', "
                             "'Крановая обвязка ' || i, i, 'a=1;b=2' from n";
        require(host.byHand(QString(rows).replace("%%", "%").arg(count)), "not filled");
        start();
    }
    QTreeView* tree() const { return view("tvMenu"); }
    QModelIndex row(const QString& caption) const {
        const QAbstractItemModel& model = *tree()->model();
        const QModelIndex top = model.index(0, 0);
        for (int i = 0; i < model.rowCount(top); ++i)
            if (model.index(i, 0, top).data().toString() == caption)
                return model.index(i, 0, top);
        return {};
    }
    /// Seconds from the act until the tree shows what is written after its `writes` changes.
    double lasts(int writes, const std::function<void()>& act) {
        int64_t before = 0, now = 0;
        require(host.store().logPosition(&before).ok(), "no log");
        QElapsedTimer clock;
        clock.start();
        act();
        const auto isWritten = [&] {
            require(host.store().logPosition(&now).ok(), "no log");
            return now >= before + writes;
        };
        require(QTest::qWaitFor(isWritten, patienceMs), "it does not end");
        const QByteArray mark = "mark" + QByteArray::number(++m_marks);
        add(mark, mark, nullptr);
        require(QTest::qWaitFor([&] { return row(mark).isValid(); }, patienceMs), "not shown");
        return double(clock.nsecsElapsed()) / 1e9;
    }
    void removeAll() const {
        tree()->setFocus(Qt::ShortcutFocusReason);
        tree()->setCurrentIndex(row("а"));
        QTest::keyClick(tree(), Qt::Key_Delete);
        for (auto* button : module("Menu")->m_popMessageBox->findChildren<QPushButton*>())
            if (button->text() == "Да" && button->isVisible())
                return button->click();
        qFatal("no question");
    }

private:
    int m_marks = 0;
};

void run(const char* name, int count) {
    Fixture fixture;
    fixture.fill(count);
    const int all = count + 3; // а, б, в
    const auto isWhole = [&] {
        const QModelIndex top = fixture.row("а");
        const QAbstractItemModel& model = *fixture.tree()->model();
        return top.isValid() && model.rowCount(top) == 101 &&
               model.rowCount(model.index(0, 0, top)) == count / 100 - 1;
    };
    require(QTest::qWaitFor(isWhole, patienceMs), "not loaded");
    std::vector<double> deletions, undos;
    for (int i = 0; i < 3; ++i) {
        deletions.push_back(fixture.lasts(all, [&] { fixture.removeAll(); }));
        require(!fixture.row("а").isValid(), "not deleted");
        require(QTest::qWaitFor([&] { return fixture.undoText().contains("удалить «а»"); }), "?");
        undos.push_back(fixture.lasts(all, [&] { fixture.action("actUndo")->trigger(); }));
        require(isWhole(), "not all is back");
    }
    const double ratio = bench::median(undos) / bench::median(deletions);
    std::printf("%s: deleting %d elements lasts %.2f s, taking that back %.2f s: %.2fx", name, all,
                bench::median(deletions), bench::median(undos), ratio);
    bench::judge(ratio, bench::Bound::AtMost, budget, "x");
}

} // namespace

int main(int argc, char** argv) {
    const QTemporaryDir home; // what a user's windows remember is not ours
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
        qputenv(name, home.path().toUtf8());
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    if (qEnvironmentVariableIsEmpty("ORVO_SOURCE_DIR")) // build/PRESET/bin
        qputenv("ORVO_SOURCE_DIR",
                (QCoreApplication::applicationDirPath() + "/../../..").toLocal8Bit());
    const int count = argc > 1 ? std::atoi(argv[1]) : 100000;
    for (const char* kind : {"sqlite", "postgres"}) {
        qputenv("ORVO_STORE_KIND", kind);
        run(kind, count);
    }
    return bench::exitCode();
}
