// bench_resources [MIB | --rows N]: two measurements of the resource editor; with an argument, one
// of them. The exit code is 1 if a budget is missed.
//
// The first: what it needs of memory for a file on its way up to the store and back, against the
// file's own size of MIB (200) mebibytes. Each way runs in a process of its own, whose peak of
// resident memory above what it had before is taken.
//
// The second, in a process of its own too: a catalogue of N (100000) resources in a real store and
// a real window. Its start and memory; notifications merged, in bursts and alone; a row chosen, up
// to its passport; frames of scrolling (all these in processor time); folders opened.
#include "bench/Budget.h"
#include "bench/resources/Scale.h"
#include "tests/resources/ResProbe.h"

#include <QElapsedTimer>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace orvo::test;

namespace {

constexpr double mebi = 1 << 20;

class UploadProbe : public ResProbe {
public:
    using OrvoResources::loadFileToDB;
    using OrvoResources::loadFormToDB;
    using ResProbe::ResProbe;
};

double peakMiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

/// Runs the work in a child and reports its peak above what stood there before the work.
void measure(const char* what, double size, double budget,
             const std::function<void(double& before)>& work) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        double before = 0;
        QElapsedTimer timer;
        timer.start();
        work(before);
        const double ratio = (peakMiB() - before) / size;
        std::printf("  %-28s %5.1f s, %6.0f MiB above %3.0f, %5.2fx the size", what,
                    static_cast<double>(timer.elapsed()) / 1000, peakMiB() - before, before, ratio);
        orvo::bench::judge(ratio, orvo::bench::Bound::AtMost, budget, "x");
        _exit(orvo::bench::exitCode());
    }
    int status = 0;
    waitpid(child, &status, 0);
    orvo::bench::isMissed() |= status != 0;
}

void writeFile(const QString& path, int mib) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        std::exit(2);
    QByteArray part(1 << 20, '\0');
    for (int i = 0; i < mib; ++i) {
        for (int at = 0; at < part.size(); at += 61)
            part[at] = static_cast<char>(i + at);
        file.write(part);
    }
}

/// An application, a host and the window; `use` gets the window.
void inWindow(TestStore& store, double& before, const std::function<void(UploadProbe&)>& use) {
    int argc = 1;
    char name[] = "bench_resources";
    char* argv[] = {name, nullptr};
    QApplication app(argc, argv);
    TestHost host(store);
    EditorUnderTest<UploadProbe> editor(host, "Resources");
    if (!editor.start())
        std::exit(2);
    malloc_trim(0);
    before = peakMiB();
    use(*editor.module);
    if (!host.failures.isEmpty() || !host.logLines.isEmpty())
        std::exit(2);
}

bool scaleInChild(int rows) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        const bool met = orvo::bench::measureScale(rows);
        std::fflush(stdout);
        _exit(met ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status == 0;
}

void measureFiles(int mib) {
    const QTemporaryDir local;
    const QString path = local.filePath("large");
    writeFile(path, mib);
    TestStore store;
    fillCatalogue(store);
    std::printf("A file of %d MiB\n", mib);
    measure("up as a new file", mib, 1.5, [&](double& before) {
        inWindow(store, before, [&](UploadProbe& window) { window.loadFileToDB(path, "docs"); });
    });
    measure("up in place of another", mib, 1.5, [&](double& before) {
        inWindow(store, before, [&](UploadProbe& window) { window.loadFileToDB(path, "docs"); });
    });
    measure("up as a form", mib, 1.5, [&](double& before) {
        inWindow(store, before, [&](UploadProbe& window) { window.loadFormToDB(path, ""); });
    });
    measure("back to the tool's reply", mib, 2.5, [&](double& before) {
        inWindow(store, before, [&](UploadProbe& window) {
            CToolFileGet tool(&window);
            tool.path = "docs";
            tool.name = "large";
            tool.Perform(false);
            if (!MDARec(tool.result.array, 0, 0))
                std::exit(2);
        });
    });
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const bool rowsAsked = argc == 3 && qstrcmp(argv[1], "--rows") == 0;
    const int mib = argc == 2 ? std::atoi(argv[1]) : 200;
    const int rows = rowsAsked ? std::atoi(argv[2]) : 100000;
    if (mib < 1 || mib > 512 || rows < 1000 || rows > 5000000 || (argc > 2 && !rowsAsked)) {
        std::fprintf(stderr,
                     "usage: bench_resources [MIB | --rows N]   (1 to 512; 1000 to 5000000)\n");
        return 2;
    }
    if (!rowsAsked)
        measureFiles(mib);
    if (argc != 2 && !scaleInChild(rows))
        orvo::bench::isMissed() = true;
    return orvo::bench::exitCode();
}
