#include "bench/resources/Scale.h"
#include "bench/Budget.h"

#include "bench/Timing.h"
#include "bench/resources/Catalogue.h"
#include "frame/Records.h"
#include "tests/menu/Notices.h"
#include "tests/resources/ResProbe.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QImage>
#include <QScrollBar>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

using namespace orvo::test;

namespace orvo::bench {

namespace {

constexpr int perRound = 400;
constexpr int perSingle = 20;
constexpr int rounds = 5;
constexpr double mergeBudget = 50;     // microseconds
constexpr int mergeRows = 100000;      // for a catalogue of that size; open folders add to it
constexpr double choiceBudget = 50e3;  // of a row: nobody feels it
constexpr double frameBudget = 16.6e3; // sixty pictures a second

double wall(const std::function<void()>& work) {
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1000;
}

/// From the system, in MiB: "VmHWM:" the most that was resident, "VmRSS:" what is.
double memory(const char* what) {
    QFile status(QStringLiteral("/proc/self/status"));
    if (status.open(QIODevice::ReadOnly))
        for (const QByteArray& line : status.readAll().split('\n'))
            if (line.startsWith(what))
                return line.mid(static_cast<int>(qstrlen(what)))
                           .trimmed()
                           .split(' ')
                           .first()
                           .toDouble() /
                       1024;
    return 0;
}

class Scale {
public:
    Scale(ResProbe& editor, Catalogue& catalogue)
        : m_editor(editor)
        , m_catalogue(catalogue)
        , m_tree(*editor.findChild<QTreeView*>(QStringLiteral("tvRes"))) {}

    void merging(bool budgeted) {
        merge("update in place", budgeted, [&](int n) { return update(n); });
        merge("rename, moving the row", budgeted, [&](int n) { return rename(n); });
        merge("move to another folder", budgeted, [&](int) { return move(); });
        merge("insertion", budgeted, [&](int) { return insertion(); });
        merge("deletion", budgeted, [&](int) { return deletion(); });
        merge("rename of a folder of 200", false, [&](int n) { return renameFolder(n); });
    }

    /// Changes of others, taken together, up to the picture. The client hands over up to 64 at
    /// once.
    void deliveries() {
        const auto several = [&](const char* what, int count,
                                 const std::function<Notice(int)>& next) {
            int number = 1000000;
            std::vector<double> costs;
            for (int i = 0; i < 9; ++i) {
                for (int k = 0; k < count; ++k)
                    m_editor.messagePut(next(number++).make());
                costs.push_back(processorMicroseconds([&] {
                    m_editor.MessageOn();
                    QCoreApplication::processEvents();
                }));
            }
            tell(what, costs, frameBudget);
        };
        several("one update in place", 1, [&](int n) { return update(n); });
        several("one rename", 1, [&](int n) { return rename(n); });
        several("one move", 1, [&](int) { return move(); });
        several("one insertion", 1, [&](int) { return insertion(); });
        several("one deletion", 1, [&](int) { return deletion(); });
        several("one rename of a folder", 1, [&](int n) { return renameFolder(n); });
        several("64 renames", 64, [&](int n) { return rename(n); });
        several("64 insertions", 64, [&](int) { return insertion(); });
        several("64 deletions", 64, [&](int) { return deletion(); });
        several("1000 insertions", 1000, [&](int) { return insertion(); });
    }

    void choosing() {
        const char* const kinds[] = {"", "a module", "a function", "a form", "a file"};
        for (int kind = 1; kind <= 4; ++kind)
            choose(kinds[kind], [&] { return m_catalogue.any(kind); });
        choose("a folder", [&] { return m_catalogue.anyFolder(2); });
        each("select 200 rows", choiceBudget, 9, [&] {
            const QModelIndex folder = m_editor.row(m_catalogue.anyFolder(1).constData());
            const int last = m_editor.m_resModel->rowCount(folder) - 1;
            m_tree.selectionModel()->select({m_editor.m_resModel->index(0, 0, folder),
                                             m_editor.m_resModel->index(last, 0, folder)},
                                            QItemSelectionModel::ClearAndSelect |
                                                QItemSelectionModel::Rows);
            QCoreApplication::processEvents();
        });
        m_tree.clearSelection();
    }

    void scrolling() {
        QScrollBar& bar = *m_tree.verticalScrollBar();
        const auto frame = [&](int value) {
            bar.setValue(value);
            QCoreApplication::processEvents(); // and with them the picture
        };
        bar.setValue(bar.maximum() / 3);
        QCoreApplication::processEvents();
        each("a page down", frameBudget, 40, [&] { frame(bar.value() + bar.pageStep()); });
        each("a line down", frameBudget, 40, [&] { frame(bar.value() + bar.singleStep()); });
        each("the bar dragged", frameBudget, 40,
             [&] { frame(m_catalogue.below(bar.maximum() + 1)); });
    }

    void opening() {
        report("all folders opened",
               wall([&] {
                   for (const char* root : {"MenuResources", "FileResources"}) {
                       m_tree.setCurrentIndex(m_editor.row(root));
                       QTest::keyClick(&m_tree, Qt::Key_Asterisk);
                   }
                   QCoreApplication::processEvents();
               }) / 1000,
               "ms", 0);
    }
    void closing() {
        report("all folders closed", wall([&] {
                                         m_tree.collapseAll();
                                         QCoreApplication::processEvents();
                                     }) / 1000,
               "ms", 0);
    }
    void oneFolder() {
        const auto folder = [&] { return m_editor.row(m_catalogue.anyFolder(1).constData()); };
        std::vector<double> close;
        std::vector<double> open;
        for (int i = 0; i < rounds; ++i) {
            const QModelIndex row = folder();
            close.push_back(wall([&] {
                m_tree.collapse(row);
                QCoreApplication::processEvents();
            }));
            open.push_back(wall([&] {
                m_tree.expand(row);
                QCoreApplication::processEvents();
            }));
        }
        report("one folder closed", median(close) / 1000, "ms", choiceBudget / 1000);
        report("one folder opened", median(open) / 1000, "ms", choiceBudget / 1000);
    }

    /// What an engineer does to many rows, all folders open, up to the picture; a write with it.
    void actions(TestHost& host) {
        const auto large = [&] { return m_editor.row("large"); };
        const auto selectRows = [&](int count) {
            const QModelIndex folder = large();
            m_tree.selectionModel()->select({m_editor.m_resModel->index(0, 0, folder),
                                             m_editor.m_resModel->index(count - 1, 0, folder)},
                                            QItemSelectionModel::ClearAndSelect |
                                                QItemSelectionModel::Rows);
            QCoreApplication::processEvents();
        };
        const auto trigger = [&](const char* action) {
            m_editor.findChild<QAction*>(QString::fromLatin1(action))->trigger();
            QCoreApplication::processEvents();
        };
        const int all = m_catalogue.inLarge();
        const int part = all / 10;
        const auto name = [](const char* what, int count) {
            return QString::fromLatin1(what).arg(count).toUtf8();
        };
        each(name("select %1 rows", all).constData(), frameBudget, 3, [&] { selectRows(all); });
        each(name("select %1 rows", part).constData(), frameBudget, 3, [&] { selectRows(part); });
        each("cut them", frameBudget, 1, [&] { trigger("actCut"); });
        m_tree.setCurrentIndex(m_editor.row("empty"));
        each("paste them", frameBudget, 1, [&] { trigger("actPaste"); });
        each("their return", frameBudget, 1, [&] {
            host.deliver(m_editor);
            QCoreApplication::processEvents();
        });
        const auto notice = [&](const char* what, const Notice& one) {
            each(what, frameBudget, 1, [&] {
                m_editor.messagePut(one.make());
                m_editor.MessageOn();
                QCoreApplication::processEvents();
            });
        };
        notice("rename of the large folder",
               {602, "MenuResourceFolder", "large",
                rawRecordOf("MenuResourceFolder", {{"caption", QString("А")}})});
        notice("deletion of the large folder", {603, "MenuResourceFolder", "large", {}});
    }

    void report(const char* what, double value, const char* unit, double budget) {
        std::printf("  %-28s %9.1f %s", what, value, unit);
        end(budget > 0, value, budget);
    }

private:
    static QByteArray record(Fields fields) { return rawRecordOf("MenuResource", fields); }
    Notice update(int n) {
        return {602, "MenuResource", m_catalogue.any(),
                record({{"caption", QString("Станция %1").arg(n)}})};
    }
    Notice rename(int n) {
        return {602, "MenuResource", m_catalogue.any(),
                record({{"name_", QString("n_%1_%2").arg(m_catalogue.below(1000)).arg(n)}})};
    }
    Notice move() {
        const QByteArray folder = m_catalogue.anyFolder(1);
        return {602, "MenuResource", m_catalogue.any(1),
                record({{"MenuResourceFolderKey", QString::fromLatin1(folder)}})};
    }
    Notice insertion() {
        const QByteArray folder = m_catalogue.anyFolder(2);
        return {601, "MenuResource", "new-" + QByteArray::number(m_made++),
                record({{"MenuResourceFolderKey", QString::fromLatin1(folder)},
                        {"type_", 2},
                        {"name_", QString("x%1").arg(m_catalogue.below(100000))},
                        {"caption", QString("Новая")},
                        {"ico", QString("pump.png")}})};
    }
    Notice deletion() { return {603, "MenuResource", "new-" + QByteArray::number(m_gone++), {}}; }
    Notice renameFolder(int n) {
        return {602, "MenuResourceFolder", m_catalogue.anyFolder(1),
                rawRecordOf("MenuResourceFolder", {{"caption", QString("У%1").arg(n)}})};
    }

    static void end(bool budgeted, double figure, double budget) {
        if (budgeted)
            judge(figure, Bound::AtMost, budget, "");
        else
            std::puts("");
        std::fflush(stdout);
    }

    /// The median and the worst of several, in processor time.
    void each(const char* what, double budget, int times, const std::function<void()>& work) {
        std::vector<double> costs;
        for (int i = 0; i < times; ++i)
            costs.push_back(processorMicroseconds(work));
        tell(what, costs, budget);
    }
    static void tell(const char* what, const std::vector<double>& costs, double budget) {
        const double worst = *std::max_element(costs.begin(), costs.end());
        const double cost = median(costs);
        std::printf("  %-28s %9.2f ms, worst %8.2f ms", what, cost / 1000, worst / 1000);
        judge(cost / 1000, Bound::AtMost, budget / 1000, " ms");
    }

    void choose(const char* what, const std::function<QByteArray()>& key) {
        each(what, choiceBudget, 15, [&] {
            m_tree.setCurrentIndex(m_editor.row(key().constData()));
            QCoreApplication::processEvents();
        });
    }

    void merge(const char* what, bool budgeted, const std::function<Notice(int)>& next) {
        std::vector<double> burst;
        std::vector<double> alone;
        int number = 0;
        for (int round = 0; round < rounds; ++round) {
            std::vector<MDXCliParam*> blocks;
            for (int i = 0; i < perRound + perSingle; ++i)
                blocks.push_back(next(number++).make());
            for (int i = 0; i < perRound; ++i)
                m_editor.messagePut(blocks[static_cast<size_t>(i)]);
            burst.push_back(processorMicroseconds([&] { m_editor.MessageOn(); }) / perRound);
            QCoreApplication::processEvents();
            alone.push_back(processorMicroseconds([&] {
                                for (int i = perRound; i < perRound + perSingle; ++i) {
                                    m_editor.messagePut(blocks[static_cast<size_t>(i)]);
                                    m_editor.MessageOn();
                                }
                            }) /
                            perSingle);
            QCoreApplication::processEvents();
        }
        const double cost = median(burst);
        std::printf("  %-28s %9.1f us, alone %9.1f us", what, cost, median(alone));
        end(budgeted, cost, mergeBudget);
    }

    ResProbe& m_editor;
    Catalogue& m_catalogue;
    QTreeView& m_tree;
    int m_made = 0; ///< insertions
    int m_gone = 0; ///< deletions
};

} // namespace

bool measureScale(int rows) {
    int argc = 1;
    char name[] = "bench_resources";
    char* argv[] = {name, nullptr};
    const QApplication app(argc, argv);
    TestStore store;
    Catalogue catalogue(rows);
    catalogue.fill(store);
    TestHost host(store);
    QDir().mkpath(host.m_workDir + "files/icons");
    QImage icon(16, 16, QImage::Format_ARGB32);
    icon.fill(Qt::darkGreen);
    icon.save(host.m_workDir + "files/icons/pump.png");

    ResProbe editor(&host);
    editor.m_moduleName = QStringLiteral("Resources");
    editor.resize(1146, 825);
    const double before = memory("VmRSS:");
    bool started = false;
    const double start = wall([&] { started = editor.ModuleStart(); });
    if (!started)
        return false;
    Scale scale(editor, catalogue);
    std::printf("%u resources\n", orvo::recordCount(editor.m_tabResource));
    scale.report("start", start / 1000, "ms", 0);
    scale.report("memory above the bare window", memory("VmHWM:") - before, "MiB", 0);
    std::puts("A notification, table and tree, the window not yet shown:");
    scale.merging(rows <= mergeRows);
    scale.report("shown", wall([&] {
                              editor.show();
                              QCoreApplication::processEvents();
                          }) / 1000,
                 "ms", 0);
    std::puts("A row chosen, up to its passport:");
    scale.choosing();
    std::puts("A notification in the open window, folders opened as rows come:");
    scale.merging(false);
    std::puts("Folders:");
    scale.opening();
    scale.oneFolder();
    std::puts("Scrolling with all folders open, up to the picture:");
    scale.scrolling();
    std::puts("A row chosen with all folders open:");
    scale.choosing();
    std::puts("A notification with all folders open:");
    scale.merging(false);
    std::puts("Changes of others with all folders open, up to the picture:");
    scale.deliveries();
    std::puts("Actions on many rows with all folders open, up to the picture:");
    scale.actions(host);
    scale.closing();
    scale.report("memory at the end, the most", memory("VmHWM:"), "MiB", 0);
    return !isMissed() && host.failures.isEmpty() && host.logLines.isEmpty();
}

} // namespace orvo::bench
