// bench_store [RECORDS]: the SQLite store against named peers, in one run.
//
//  1. Fetching RECORDS (1000000) x 9 fields into records, against Qt's SQL driver, forward only,
//  with
//     every value read. Medians of five, in turns.
//  2. Durable updates of single records, against overwriting 4 KiB of a file and waiting for it to
//     reach the disk. Medians of seven rounds of a fifth of a second each, in turns.
//  3. A stored file of 200 MiB in and out: the peak of the memory beside the file's own size.
#include "Support.h"
#include "bench/Budget.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

using namespace orvo;
using namespace orvo::bench;

namespace {

std::unique_ptr<store::Store> openStore(const std::string& path) {
    store::Status status;
    auto result = store::open(path, {"bench", true}, &status);
    check(result != nullptr, status.text);
    return result;
}

void benchFetch(const QString& directory, int records) {
    const QString path = directory + "/fetch.db";
    const auto source = openStore(path.toStdString());
    std::printf("filling %d records...\n", records);
    std::fflush(stdout);
    const double filled = seconds([&] { fill(*source, records); });
    std::vector<double> own;
    std::vector<double> peer;
    fetchIntoRecords(*source, records); // the file into the page cache
    for (int i = 0; i < 5; ++i) {
        own.push_back(fetchIntoRecords(*source, records));
        peer.push_back(fetchThroughQt("QSQLITE", path, {}, {}, records));
    }
    std::printf("write of %d records through update(): %.0f records/s\n", records,
                records / filled);
    std::printf("fetch of %d x 9: store %.3f s, Qt SQL driver %.3f s: %.2fx", records, median(own),
                median(peer), median(peer) / median(own));
    judge(median(peer) / median(own), Bound::AtLeast, 2, "x");
}

void benchWrites(const QString& directory) {
    const auto target = openStore((directory + "/write.db").toStdString());
    insertForUpdates(*target);

    const QByteArray raw = QFile::encodeName(directory + "/raw");
    const int fd = ::open(raw.constData(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
    check(fd >= 0, "no file to compare with");
    std::vector<char> page(4096, 'x');
    for (int i = 0; i < 1024; ++i)
        check(::pwrite(fd, page.data(), page.size(), i * 4096) == 4096, "write");
    ::fsync(fd);

    int number = 0;
    const auto update = [&] { updateOne(*target, number++); };
    const auto overwrite = [&] {
        page[0] = static_cast<char>(++number);
        check(::pwrite(fd, page.data(), page.size(), number * 7 % 1024 * 4096) == 4096 &&
                  ::fdatasync(fd) == 0,
              "write");
    };
    for (int i = 0; i < 3000; ++i)
        update(); // until the write-ahead log is overwritten and no longer grows
    std::vector<double> own;
    std::vector<double> peer;
    for (int i = 0; i < 7; ++i) {
        own.push_back(rate(update));
        peer.push_back(rate(overwrite));
    }
    ::close(fd);
    std::printf("durable single-record updates: store %.0f/s, overwrite and fdatasync %.0f/s: "
                "%.0f %%",
                median(own), median(peer), 100 * median(own) / median(peer));
    judge(100 * median(own) / median(peer), Bound::AtLeast, 60, " %");
}

} // namespace

int main(int argc, char** argv) {
    keepMemory();
    QCoreApplication application(argc, argv);
    const int records = argc > 1 ? std::max(1, std::atoi(argv[1])) : 1000000;
    // Beside the program, so that it is a disk and not memory.
    const QTemporaryDir directory(QCoreApplication::applicationDirPath() + "/bench-store-XXXXXX");
    check(directory.isValid(), "no directory for the databases");
    const std::string large = (directory.path() + "/large.db").toStdString();
    openStore(large);
    benchLargeFile([&] { return openStore(large); });
    benchWrites(directory.path());
    benchFetch(directory.path(), records);
    return exitCode();
}
