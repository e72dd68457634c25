// bench_models [ROWS]: the tree models against Qt's own, in one run.
//
//  1. Filling a tree of ROWS (1000000) rows of 14 columns, a thousand to a folder, by a batch as
//  the
//     loaders do it, against QStandardItemModel filled by appendRow. Both get the same values, made
//     beforehand. Processor time and memory; a process of its own for each measurement, medians of
//     five, in turns.
//  2. Finding a row by its key, against the recursive match it stands for, over random keys, in the
//     same model; and how the cost grows with the tree.
//
// Ratios stand beside their budgets; the exit code is 1 if one is missed.
#include "models/ResTreeModel.h"

#include <QCoreApplication>
#include <QStandardItemModel>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int columns = 14;
constexpr int folderSize = 1000;
constexpr int keyColumn = 5;

/// Processor time: what others do on the machine meanwhile does not count.
double seconds(const std::function<void()>& work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    const double begin = now();
    work();
    return now() - begin;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double heapBytes() {
    const auto info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

QString keyOf(int row) {
    return QStringLiteral("%1%2")
        .arg(quint64(row + 1) * 0x9e3779b97f4a7c15ull, 16, 16, QLatin1Char('0'))
        .arg(quint64(row + 1) * 0xc2b2ae3d27d4eb4full, 16, 16, QLatin1Char('0'));
}

using Rows = std::vector<QVector<QVariant>>;

bool isFolder(size_t row) {
    return row % folderSize == 0;
}

/// The values of the rows as the resource editor's loader makes them, a vector for each. The keys
/// are all different; the other texts come from a small pool, since what the models cost is to be
/// seen.
Rows makeRows(int count) {
    constexpr size_t poolSize = 64;
    std::vector<QString> texts;
    for (size_t i = 0; i < poolSize; ++i)
        texts.push_back(QStringLiteral("Насосная станция %1").arg(i));
    Rows rows;
    rows.reserve(static_cast<size_t>(count));
    QString folderKey;
    for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
        const QString key = keyOf(static_cast<int>(i));
        const auto text = [&](size_t column) { return texts[(i + column) % poolSize]; };
        if (isFolder(i))
            folderKey = key;
        rows.push_back({text(0), text(1), text(2), QVariant(), QVariant(), key, 1, text(7),
                        folderKey, isFolder(i), QVariant(), 0, 0, false});
    }
    return rows;
}

QStringList headers() {
    QStringList list;
    for (int i = 0; i < columns; ++i)
        list.append(QString::number(i));
    return list;
}

void fill(ResTreeModel& model, Rows& values) {
    auto rows = model.newRows();
    TabRec* folder = nullptr;
    for (size_t i = 0; i < values.size(); ++i) {
        if (isFolder(i))
            folder = rows.add(std::move(values[i]));
        else
            rows.add(std::move(values[i]), folder);
    }
    model.insertFilledRows(0, std::move(rows));
}

void fill(QStandardItemModel& model, Rows& values) {
    model.setColumnCount(columns);
    QStandardItem* folder = nullptr;
    for (size_t i = 0; i < values.size(); ++i) {
        QList<QStandardItem*> row;
        row.reserve(columns);
        for (const QVariant& value : qAsConst(values[i])) {
            auto* item = new QStandardItem;
            item->setData(value, Qt::EditRole);
            row.append(item);
        }
        if (isFolder(i)) {
            folder = row.first();
            model.appendRow(row);
        } else {
            folder->appendRow(row);
        }
    }
}

struct Cost {
    double valueSeconds = 0;
    double seconds = 0;
    double bytes = 0;
};

/// Runs the measurement in a child, whose heap nobody used before.
Cost inChild(const std::function<Cost()>& measure) {
    int ends[2];
    if (pipe(ends) != 0)
        std::abort();
    const pid_t child = fork();
    if (child == 0) {
        const Cost cost = measure();
        const bool written = write(ends[1], &cost, sizeof cost) == ssize_t(sizeof cost);
        _exit(written ? 0 : 1);
    }
    close(ends[1]);
    Cost cost;
    const bool whole = read(ends[0], &cost, sizeof cost) == ssize_t(sizeof cost);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!whole || status != 0) {
        std::fprintf(stderr, "bench_models: a measurement failed\n");
        std::exit(2);
    }
    return cost;
}

/// Touches as much memory as the dearest fill needs and gives it back to the allocator, so that no
/// measurement pays for the kernel's clearing of pages.
void warmHeap(size_t bytes) {
    mallopt(M_TRIM_THRESHOLD, -1);
    mallopt(M_TOP_PAD, 64 << 20);
    mallopt(M_MMAP_MAX, 0);
    std::vector<void*> blocks;
    constexpr size_t block = 1 << 20;
    for (size_t done = 0; done < bytes; done += block) {
        void* memory = std::malloc(block);
        std::fill_n(static_cast<char*>(memory), block, '\1');
        blocks.push_back(memory);
    }
    for (void* memory : blocks)
        std::free(memory);
}

/// The memory is all that is there when only the model is left, texts included.
template <class Model>
Cost costOfFilling(Model& model, int rows) {
    warmHeap(static_cast<size_t>(rows) * 4500);
    Cost cost;
    const double before = heapBytes();
    {
        Rows values;
        cost.valueSeconds = seconds([&] { values = makeRows(rows); });
        cost.seconds = seconds([&] { fill(model, values); });
    }
    cost.bytes = heapBytes() - before;
    return cost;
}

bool missed = false;

void report(const char* what, double ratio, double budget) {
    const bool ok = ratio >= budget;
    missed = missed || !ok;
    std::printf("  %-34s %12.1fx   budget >= %.0fx   %s\n", what, ratio, budget,
                ok ? "met" : "MISSED");
}

void benchFill(int rows) {
    std::vector<double> values, time, memory, peerTime, peerMemory;
    for (int round = 0; round < 5; ++round) {
        const Cost own = inChild([&] {
            ResTreeModel model(headers(), QString());
            return costOfFilling(model, rows);
        });
        const Cost peer = inChild([&] {
            QStandardItemModel model;
            return costOfFilling(model, rows);
        });
        values.push_back(own.valueSeconds);
        time.push_back(own.seconds);
        memory.push_back(own.bytes);
        peerTime.push_back(peer.seconds);
        peerMemory.push_back(peer.bytes);
    }
    std::printf("Filling %d rows x %d columns\n", rows, columns);
    std::printf("  tree model         %8.3f s  %6.0f bytes a row\n", median(time),
                median(memory) / rows);
    std::printf("  QStandardItemModel %8.3f s  %6.0f bytes a row\n", median(peerTime),
                median(peerMemory) / rows);
    std::printf("  making the values  %8.3f s  before either, not counted\n", median(values));
    report("time", median(peerTime) / median(time), 12);
    report("memory", median(peerMemory) / median(memory), 4);
}

/// Seconds of one search by key, over random keys of the tree that have just arrived, as those of
/// notifications: the key is near at hand, the row is not.
double findTime(const ResTreeModel& model, int rows) {
    constexpr int batch = 500;
    std::vector<double> times;
    quint64 random = 1;
    for (int round = 0; round < 200; ++round) {
        std::vector<QString> keys;
        for (int i = 0; i < batch; ++i) {
            random = random * 6364136223846793005ull + 1442695040888963407ull;
            keys.push_back(keyOf(static_cast<int>((random >> 33) % static_cast<quint64>(rows))));
        }
        int found = 0;
        const double all = seconds([&] {
            for (const QString& key : keys)
                found += model.findIndexByKey(key).isValid();
        });
        if (found != batch)
            std::exit(2);
        times.push_back(all / batch);
    }
    return median(times);
}

void benchFind(int rows) {
    ResTreeModel model(headers(), QString());
    Rows values = makeRows(rows);
    fill(model, values);
    const double find = findTime(model, rows);
    // The last row: what a search costs that goes through the tree.
    const QString last = keyOf(rows - 1);
    std::vector<double> matches;
    for (int round = 0; round < 7; ++round) {
        QModelIndex hit;
        matches.push_back(seconds([&] {
            hit = model
                      .match(model.index(0, 0), 12, last, 1,
                             Qt::MatchFixedString | Qt::MatchWrap | Qt::MatchRecursive)
                      .value(0);
        }));
        if (!hit.isValid() || hit != model.findIndexByKey(last))
            std::exit(2);
    }
    std::printf("Finding a row by its key among %d\n", rows);
    std::printf("  findIndexByKey     %8.0f ns\n", find * 1e9);
    std::printf("  match              %8.0f ms\n", median(matches) * 1e3);
    report("findIndexByKey against match", median(matches) / find, 100000);
    for (int fewer = folderSize; fewer < rows; fewer *= 10) {
        ResTreeModel smaller(headers(), QString());
        Rows some = makeRows(fewer);
        fill(smaller, some);
        std::printf("  findIndexByKey     %8.0f ns among %d\n", findTime(smaller, fewer) * 1e9,
                    fewer);
    }
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int rows = argc > 1 ? std::atoi(argv[1]) : 1000000;
    if (rows < folderSize) {
        std::fprintf(stderr, "usage: bench_models [ROWS]   (at least %d)\n", folderSize);
        return 2;
    }
    benchFill(rows);
    benchFind(rows);
    return missed ? 1 : 0;
}
