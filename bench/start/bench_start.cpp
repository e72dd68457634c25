// bench_start [--in DIRECTORY] [ROWS...]: what the start of the editors costs, on whole
// installations of ROWS resources and as many menu elements (10000, 100000 and 1000000), made by
// `orvo-admin demo --scale`. The stores are made in DIRECTORY and stay there for the next run;
// without it in a temporary one.
//
// For each: the time until an editor's tables and trees are complete, for the resource editor, the
// menu editor, and both in one process; beside it, as the floor, the time to merely read the tables
// of the resource editor through SQLite's own interface, every value touched. The editors are built
// on the GUI thread, which is blocked for that time. Then the memory that stays resident, for each
// resource, above that of the bare window; and the most that was resident meanwhile, against that.
//
// Each measurement runs in a process of its own, three times in turns. The shortest time counts,
// since what others do on the machine only adds; the processor time of all threads stands beside
// it. The exit code is 1 if a budget is missed.
#include "bench/Budget.h"
#include "bench/Timing.h"
#include "frame/Records.h"
#include "menu/OrvoMenu.h"
#include "platform/store/Schema.h"
#include "tests/menu/ModuleFixture.h"
#include "tests/resources/ResProbe.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <sqlite3.h>
#include <vector>

using namespace orvo::test;

namespace {

constexpr int rounds = 3;
constexpr double timeBudget = 1.3;   // of merely reading the tables
constexpr double memoryBudget = 300; // bytes a record, for table, keys and tree of an editor
constexpr double secondBudget = 40;  // bytes a record more for the second editor
constexpr double peakBudget = 1.3;   // of what stays
constexpr int peakRows = 100000;     // below, the process itself outweighs the records

/// From the system, in bytes: "VmHWM:" the most that was resident, "VmRSS:" what is.
double memory(const char* what) {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(what))
            return line.mid(static_cast<int>(qstrlen(what)))
                       .trimmed()
                       .split(' ')
                       .first()
                       .toDouble() *
                   1024;
    return 0;
}

struct Result {
    double milliseconds = 0;
    double processor = 0; ///< milliseconds of all threads
    double bytes = 0;     ///< resident at the end, above the bare window
    double peak = 0;      ///< the most, above the bare window
};

/// Reads every value of the tables of the resource editor.
bool readTables(const QString& file) {
    sqlite3* database = nullptr;
    bool good = sqlite3_open_v2(QFile::encodeName(file).constData(), &database,
                                SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK;
    size_t bytes = 0;
    for (const char* table : {"MenuResource", "MenuResourceFolder", "Users", "MenuFileExt"}) {
        sqlite3_stmt* statement = nullptr;
        // Not those that the database computes for itself.
        QByteArray columns;
        for (const orvo::store::FieldDef& field : orvo::store::findTable(table)->fields)
            columns += (columns.isEmpty() ? "\"" : ", \"") + QByteArray(field.name) + '"';
        const QByteArray sql = "SELECT " + columns + " FROM \"" + table + '"';
        good = good &&
               sqlite3_prepare_v2(database, sql.constData(), -1, &statement, nullptr) == SQLITE_OK;
        while (good && sqlite3_step(statement) == SQLITE_ROW)
            for (int column = sqlite3_column_count(statement); column-- > 0;)
                if (sqlite3_column_text(statement, column))
                    bytes += static_cast<size_t>(sqlite3_column_bytes(statement, column));
        sqlite3_finalize(statement);
    }
    sqlite3_close(database);
    return good && bytes > 0;
}

/// In a process of its own: prints time and memory. `what` is "read", "resources", "menu", "both".
int measureHere(const QByteArray& what, const QString& file) {
    QElapsedTimer timer;
    Result result;
    bool good = true;
    if (what == "read") {
        timer.start();
        result.processor =
            orvo::bench::processorMicroseconds([&] { good = readTables(file); }) / 1000;
        result.milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    } else {
        qputenv("ORVO_TEST_STORE", QFile::encodeName("sqlite://" + file));
        int argc = 1;
        char name[] = "bench_start";
        char* argv[] = {name, nullptr};
        const QApplication app(argc, argv);
        TestStore store;
        TestHost host(store);
        std::vector<std::unique_ptr<COrvoCliMod>> editors;
        if (what != "menu")
            editors.push_back(std::make_unique<OrvoResources>(&host));
        if (what != "resources")
            editors.push_back(std::make_unique<OrvoMenu>(&host));
        for (const auto& editor : editors)
            editor->resize(1146, 825);
        malloc_trim(0);
        const double before = memory("VmRSS:");
        timer.start();
        result.processor = orvo::bench::processorMicroseconds([&] {
                               for (const auto& editor : editors)
                                   good = good && editor->ModuleStart();
                           }) /
                           1000;
        result.milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6;
        result.peak = memory("VmHWM:") - before;
        malloc_trim(0);
        result.bytes = memory("VmRSS:") - before;
        good = good && host.failures.isEmpty() && host.logLines.isEmpty();
    }
    std::printf("%f %f %f %f\n", result.milliseconds, result.processor, result.bytes, result.peak);
    std::fflush(stdout);
    // The editors' end is not what is measured, and takes its time.
    std::_Exit(good ? 0 : 1);
}

/// Of few records what the program itself takes is the most.
void judgeMemory(int rows, double figure, double budget, const char* unit) {
    if (rows >= peakRows)
        orvo::bench::judge(figure, orvo::bench::Bound::AtMost, budget, unit);
    else
        std::puts("");
}

Result measure(const char* what, const QString& file) {
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QCoreApplication::applicationFilePath(), {"--measure", what, file});
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        qFatal("%s not measured on %s", what, qPrintable(file));
    const QList<QByteArray> values = process.readAllStandardOutput().trimmed().split('\n');
    const QList<QByteArray> numbers = values.last().split(' ');
    return {numbers.at(0).toDouble(), numbers.at(1).toDouble(), numbers.at(2).toDouble(),
            numbers.at(3).toDouble()};
}

QString madeStore(const QString& directory, int rows) {
    const QString file = QStringLiteral("%1/start-%2.db").arg(directory).arg(rows);
    if (QFileInfo::exists(file))
        return file;
    const QString admin = QCoreApplication::applicationDirPath() + "/orvo-admin";
    for (const QStringList& words :
         {QStringList{"init"}, QStringList{"demo", "--scale", QString::number(rows)}})
        if (QProcess::execute(admin, QStringList{"--store", file} + words) != 0)
            qFatal("no store %s", qPrintable(file));
    return file;
}

void compare(const QString& file, int rows) {
    const char* const kinds[] = {"read", "resources", "menu", "both"};
    const char* const words[] = {"the tables read in C", "resource editor", "menu editor",
                                 "both in one process"};
    std::vector<Result> best(std::size(kinds));
    for (int round = 0; round < rounds; ++round)
        for (size_t kind = 0; kind < std::size(kinds); ++kind) {
            const Result one = measure(kinds[kind], file);
            if (round == 0 || one.milliseconds < best[kind].milliseconds)
                best[kind] = one;
        }
    std::printf("%d resources, %d menu elements\n", rows, rows);
    const double floor = best[0].milliseconds;
    std::printf("  %-24s %8.1f ms (processor %8.1f)\n", words[0], floor, best[0].processor);
    for (size_t kind = 1; kind < std::size(kinds); ++kind) {
        const double time = best[kind].milliseconds;
        std::printf("  %-24s %8.1f ms (processor %8.1f), %5.2fx", words[kind], time,
                    best[kind].processor, time / floor);
        orvo::bench::judge(time / floor, orvo::bench::Bound::AtMost, timeBudget, "x");
    }
    for (size_t kind = 1; kind < std::size(kinds); ++kind) {
        const double bytes = best[kind].bytes / rows;
        const double budget = memoryBudget + (kind == 3 ? secondBudget : 0);
        std::printf("  %-24s %8.0f bytes a record", words[kind], bytes);
        judgeMemory(rows, bytes, budget, "");
        const double peak = best[kind].peak / best[kind].bytes;
        std::printf("  %-24s %8.0f at the most, %5.2fx", "", best[kind].peak / rows, peak);
        judgeMemory(rows, peak, peakBudget, "x");
    }
}

} // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (argc == 4 && qstrcmp(argv[1], "--measure") == 0)
        return measureHere(argv[2], QFile::decodeName(argv[3]));
    const QCoreApplication app(argc, argv);
    const QTemporaryDir temporary;
    QString directory = temporary.path();
    std::vector<int> sizes;
    for (int i = 1; i < argc; ++i) {
        if (qstrcmp(argv[i], "--in") == 0 && i + 1 < argc)
            directory = QFileInfo(QFile::decodeName(argv[++i])).absoluteFilePath();
        else
            sizes.push_back(std::max(1000, std::atoi(argv[i])));
    }
    if (sizes.empty())
        sizes = {10000, 100000, 1000000};
    for (const int rows : sizes)
        compare(madeStore(directory, rows), rows);
    return orvo::bench::exitCode();
}
