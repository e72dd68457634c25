// bench_saving [--million]: what a save costs the engineer who waits for it, among few resources
// and among many: 100 and 100,000, with --million 1,000,000. The window and the store are real.
//
//  - new: the name is checked, the record written, and the own notification merged into table and
//    tree.
//  - edited: the same for a resource that was there, which is not checked.
//  - refused: a name that is taken, the answer included.
//  - folder: a renamed folder among a hundred, checked among them, written and merged.
//
// The store is in memory, if the system has a file system there: what a disk takes to keep a write
// depends on the disk and not on the number. The exit code is 1 if a budget is missed.
#include "bench/Budget.h"
#include "bench/Timing.h"
#include "tests/resources/WritingProbe.h"

#include <QElapsedTimer>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

using namespace orvo::test;
using orvo::bench::median;
namespace store = orvo::store;

namespace {

constexpr int perFolder = 100;
constexpr double budget = 2.0;

struct Figures {
    double fresh, edited, refused, folder; ///< medians in microseconds
};

QString folderKey(int number) {
    return QString("f%1").arg(number);
}

/// Hands `count` records to the store, filled in by fill(table, record, number).
void insertMany(store::Store& into, const char* table, int count,
                const std::function<void(CMDArray&, MDRData*, int)>& fill) {
    constexpr int atOnce = 50000;
    for (int from = 0; from < count; from += atOnce) {
        CMDArray records;
        store::makeStructure(*store::findTable(table), records.array);
        records.KeyAdd("KeyLink", MDX_KEY_UNIQUE);
        for (int i = from; i < std::min(count, from + atOnce); ++i) {
            MDRData* record = MDARecNew(records.array);
            MDRSetFlags(record, MDX_INSERT);
            fill(records, record, i);
            records.RecPost(record);
        }
        const store::Status status = into.update(table, records.array);
        if (!status.ok())
            qFatal("%s: %s", table, status.text.c_str());
    }
}

/// That many modules, a hundred to a folder, and a hundred folders to a group.
void fillModules(TestStore& store, int count) {
    const auto into = store.connect("filler");
    const int folders = count / perFolder;
    const int groups = (folders + perFolder - 1) / perFolder;
    insertMany(*into, "MenuResourceFolder", groups, [](CMDArray& table, MDRData* record, int i) {
        setFields(table, record,
                  {{"KeyLink", QString("g%1").arg(i)},
                   {"ParentKey", QString("mod")},
                   {"type_", 1},
                   {"caption", QString("Группа %1").arg(i)}});
    });
    // One group is whole at any number, so that the same rows are on the screen.
    insertMany(*into, "MenuResourceFolder", groups * perFolder,
               [](CMDArray& table, MDRData* record, int i) {
                   setFields(table, record,
                             {{"KeyLink", folderKey(i)},
                              {"ParentKey", QString("g%1").arg(i / perFolder)},
                              {"type_", 1},
                              {"caption", QString("Папка %1").arg(i)}});
               });
    insertMany(*into, "MenuResource", count, [](CMDArray& table, MDRData* record, int i) {
        setFields(table, record,
                  {{"KeyLink", QString("m%1").arg(i)},
                   {"MenuResourceFolderKey", folderKey(i / perFolder)},
                   {"type_", 1},
                   {"name_", QString("Module%1").arg(i)},
                   {"caption", QString("Модуль %1").arg(i)}});
    });
}

class SavingBench {
public:
    // Without the testers that watch the models of tests: they look at every row for each change.
    explicit SavingBench(TestStore& store) : m_host(store), m_module(&m_host) {
        m_module.m_moduleName = QStringLiteral("Resources");
        m_module.resize(1146, 825);
        const bool started = m_module.ModuleStart();
        m_module.show();
        if (!started || !QTest::qWaitForWindowExposed(&m_module))
            qFatal("the editor does not start");
    }

    Figures measure() {
        return {medianOf([this](int i) { return saveNew(i); }),
                medianOf([this](int i) { return saveEdited(i); }),
                medianOf([this](int i) { return refuse(i); }),
                medianOf([this](int i) { return saveFolder(i); })};
    }

private:
    static double medianOf(const std::function<double(int)>& act) {
        constexpr int first = 5; // of each, not counted
        constexpr int times = 41;
        std::vector<double> took;
        for (int i = 0; i < first + times; ++i) {
            const double one = act(i);
            if (i >= first)
                took.push_back(one);
        }
        return median(took);
    }
    WritingProbe& module() { return m_module; }
    void makeCurrent(const QString& key) {
        const QModelIndex row = module().row(qPrintable(key));
        if (!row.isValid())
            qFatal("no row %s", qPrintable(key));
        m_module.findChild<QTreeView*>(QStringLiteral("tvRes"))->setCurrentIndex(row);
    }
    double saveTime() {
        QCoreApplication::processEvents();
        QElapsedTimer timer;
        timer.start();
        module().on_save_pressed();
        m_host.deliver(module());
        const double took = static_cast<double>(timer.nsecsElapsed()) / 1000;
        if (module().m_editState != WritingProbe::Idle || !m_host.failures.isEmpty())
            qFatal("not saved");
        QCoreApplication::processEvents();
        return took;
    }
    void addNamed(const QString& name) {
        makeCurrent(folderKey(0));
        module().on_actAddModule_triggered();
        module().on_editor_valueChanged("object", name);
    }
    double saveNew(int i) {
        addNamed(QString("New%1").arg(i));
        return saveTime();
    }
    double saveEdited(int i) {
        makeCurrent(QString("m%1").arg(i));
        module().on_editor_valueChanged("caption", QString("Иной %1").arg(i));
        return saveTime();
    }
    double saveFolder(int i) {
        makeCurrent(folderKey(i));
        module().on_editor_valueChanged("caption", QString("Иная %1").arg(i));
        return saveTime();
    }
    double refuse(int i) {
        addNamed(QString("Module%1").arg(i));
        QElapsedTimer timer;
        timer.start();
        module().on_save_pressed();
        const double took = static_cast<double>(timer.nsecsElapsed()) / 1000;
        if (module().m_editState != WritingProbe::NewRow || !boxStands(module()))
            qFatal("not refused");
        module().on_common_error_message(nullptr);
        module().on_cancel_pressed();
        return took;
    }

    TestHost m_host;
    WritingProbe m_module;
};

/// In a process of its own: what one catalogue leaves in memory is nothing to the next.
Figures measureInChild(int count) {
    int ends[2];
    if (pipe(ends) != 0)
        qFatal("no pipe");
    const pid_t child = fork();
    if (child == 0) {
        int argc = 1;
        char name[] = "bench_saving";
        char* argv[] = {name, nullptr};
        const QApplication app(argc, argv);
        TestStore store;
        fillCatalogue(store);
        fillModules(store, count);
        const Figures figures = SavingBench(store).measure();
        _exit(write(ends[1], &figures, sizeof figures) == sizeof figures ? 0 : 1);
    }
    close(ends[1]);
    Figures figures{};
    const bool whole = read(ends[0], &figures, sizeof figures) == sizeof figures;
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!whole || status != 0)
        std::exit(2);
    return figures;
}

void tell(const char* what, double few, double many) {
    const double ratio = many / few;
    std::printf("  %-9s %8.0f us, among few %6.0f us, %5.2fx", what, many, few, ratio);
    orvo::bench::judge(ratio, orvo::bench::Bound::AtMost, budget, "x");
}

} // namespace

int main(int argc, char** argv) {
    const bool million = argc == 2 && qstrcmp(argv[1], "--million") == 0;
    if (argc > 1 && !million) {
        std::fprintf(stderr, "usage: bench_saving [--million]\n");
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    if (QFileInfo(QStringLiteral("/dev/shm")).isWritable())
        qputenv("TMPDIR", "/dev/shm");
    const Figures few = measureInChild(100);
    for (const int count : {100000, 1000000}) {
        if (count > 100000 && !million)
            break;
        std::printf("A save among %d resources\n", count);
        std::fflush(stdout);
        const Figures many = measureInChild(count);
        tell("new", few.fresh, many.fresh);
        tell("edited", few.edited, many.edited);
        tell("refused", few.refused, many.refused);
        tell("folder", few.folder, many.folder);
    }
    return orvo::bench::exitCode();
}
