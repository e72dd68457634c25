// bench_models [ROWS]: the tree models against Qt's own, in one run.
//
//  1. Filling a tree of ROWS (1000000) rows of 14 columns, a thousand to a folder, by a batch, the
//     loaders' way, against QStandardItemModel filled by appendRow. Both get the same values; the
//     making of the values is not counted. Processor time and memory; a process of its own for each
//     measurement, medians of five, in turns.
//  2. Finding a row by its key, against the recursive match it stands for, in the same model; and
//     how the cost grows with the tree.
//  3. A keystroke in the search field, against the match it stands for, in the same model; what the
//     first one costs, which copies the texts; and what changes cost while hits are kept.
//
// Ratios stand beside their budgets; the exit code is 1 if one is missed.
#include "bench/Budget.h"
#include "bench/Timing.h"
#include "models/ResTreeModel.h"
#include "models/RowSearch.h"

#include <QCoreApplication>
#include <QStandardItemModel>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using orvo::bench::median;
using orvo::bench::processorMicroseconds;

using orvo::RowSearch;

namespace {

constexpr int columns = 14;
constexpr int folderSize = 1000;
constexpr int keyColumn = 5;

template <class Work>
double seconds(Work work) {
    return processorMicroseconds(work) * 1e-6;
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

/// The values of a folder and its rows as the resource editor's loader makes them. The keys are all
/// different; the other texts come from a small pool, since what the models cost is to be seen.
Rows makeFolder(int first, int count) {
    static const std::vector<QString> texts = [] {
        std::vector<QString> pool;
        for (int i = 0; i < 64; ++i)
            pool.push_back(QStringLiteral("Насосная станция %1").arg(i));
        return pool;
    }();
    const QString folderKey = keyOf(first);
    Rows rows;
    rows.reserve(static_cast<size_t>(count));
    for (int i = first; i < first + count; ++i) {
        const auto text = [&](int column) { return texts[static_cast<size_t>(i + column) % 64]; };
        rows.push_back({text(0), text(1), text(2), QVariant(), QVariant(), keyOf(i), 1, text(7),
                        folderKey, i == first, QVariant(), 0, 0, false});
    }
    return rows;
}

QStringList headers() {
    QStringList list;
    for (int i = 0; i < columns; ++i)
        list.append(QString::number(i));
    return list;
}

/// Both fills make the values of one folder at a time, as they would come out of a table, and give
/// the seconds of the rest.
double fill(ResTreeModel& model, int rows) {
    double time = 0;
    auto batch = model.newRows();
    for (int first = 0; first < rows; first += folderSize) {
        Rows values = makeFolder(first, std::min(folderSize, rows - first));
        time += seconds([&] {
            TabRec* folder = nullptr;
            for (QVector<QVariant>& row : values) {
                if (!folder)
                    folder = batch.add(std::move(row));
                else
                    batch.add(std::move(row), folder);
            }
        });
    }
    return time + seconds([&] { model.insertFilledRows(0, std::move(batch)); });
}

double fill(QStandardItemModel& model, int rows) {
    double time = 0;
    model.setColumnCount(columns);
    for (int first = 0; first < rows; first += folderSize) {
        const Rows values = makeFolder(first, std::min(folderSize, rows - first));
        time += seconds([&] {
            QStandardItem* folder = nullptr;
            for (const QVector<QVariant>& row : values) {
                QList<QStandardItem*> items;
                items.reserve(columns);
                for (const QVariant& value : row) {
                    auto* item = new QStandardItem;
                    item->setData(value, Qt::EditRole);
                    items.append(item);
                }
                if (!folder) {
                    folder = items.first();
                    model.appendRow(items);
                } else {
                    folder->appendRow(items);
                }
            }
        });
    }
    return time;
}

struct Cost {
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
    cost.seconds = fill(model, rows);
    cost.bytes = heapBytes() - before;
    return cost;
}

void report(const char* what, double ratio, double budget) {
    std::printf("  %-34s %12.1fx", what, ratio);
    orvo::bench::judge(ratio, orvo::bench::Bound::AtLeast, budget, "x");
}

void benchFill(int rows) {
    std::vector<double> time, memory, peerTime, peerMemory;
    for (int round = 0; round < 5; ++round) {
        const Cost own = inChild([&] {
            ResTreeModel model(headers(), QString());
            return costOfFilling(model, rows);
        });
        const Cost peer = inChild([&] {
            QStandardItemModel model;
            return costOfFilling(model, rows);
        });
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
    report("time", median(peerTime) / median(time), 12);
    report("memory", median(peerMemory) / median(memory), 4);
}

/// Seconds of one search by key, as notifications bring keys: they have just arrived, their rows
/// may stand anywhere in the tree, and every second one, an insert, has no row yet.
double findTime(const ResTreeModel& model, int rows) {
    constexpr int batch = 500;
    std::vector<double> times;
    quint64 random = 1;
    for (int round = 0; round < 200; ++round) {
        std::vector<QString> keys;
        for (int i = 0; i < batch; ++i) {
            random = random * 6364136223846793005ull + 1442695040888963407ull;
            const int row = static_cast<int>((random >> 33) % static_cast<quint64>(rows));
            keys.push_back(keyOf(i % 2 == 0 ? row : rows + row));
        }
        int found = 0;
        const double all = seconds([&] {
            for (const QString& key : keys)
                found += model.findIndexByKey(key).isValid();
        });
        if (found != batch / 2)
            std::exit(2);
        times.push_back(all / batch);
    }
    return median(times);
}

void benchFind(int rows) {
    ResTreeModel model(headers(), QString());
    fill(model, rows);
    const double find = findTime(model, rows);
    // The last row, and one that is not there: both searches go through the whole tree.
    std::vector<double> matches;
    for (int round = 0; round < 8; ++round) {
        const QString key = keyOf(round % 2 == 0 ? rows - 1 : rows);
        QModelIndex hit;
        matches.push_back(seconds([&] {
            hit = model
                      .match(model.index(0, 0), 12, key, 1,
                             Qt::MatchFixedString | Qt::MatchWrap | Qt::MatchRecursive)
                      .value(0);
        }));
        if (hit.isValid() != (round % 2 == 0) || hit != model.findIndexByKey(key))
            std::exit(2);
    }
    std::printf("Finding a row by its key among %d\n", rows);
    std::printf("  findIndexByKey     %8.0f ns\n", find * 1e9);
    std::printf("  match              %8.0f ms\n", median(matches) * 1e3);
    report("findIndexByKey against match", median(matches) / find, 100000);
    for (int fewer = folderSize; fewer < rows; fewer *= 10) {
        ResTreeModel smaller(headers(), QString());
        fill(smaller, fewer);
        std::printf("  findIndexByKey     %8.0f ns among %d\n", findTime(smaller, fewer) * 1e9,
                    fewer);
    }
}

/// Rows whose captions are all different, as in a catalogue.
void fillCaptions(ResTreeModel& model, int rows) {
    static const char* const words[] = {"Насос", "Котёл", "Турбина", "Задвижка", "Тренд", "Щит"};
    auto batch = model.newRows();
    for (int first = 0; first < rows; first += folderSize) {
        TabRec* folder = nullptr;
        Rows values = makeFolder(first, std::min(folderSize, rows - first));
        for (size_t i = 0; i < values.size(); ++i) {
            const int row = first + static_cast<int>(i);
            values[i][0] = QStringLiteral("%1 питательный %2").arg(words[row % 6]).arg(row);
            TabRec* made = batch.add(std::move(values[i]), folder);
            folder = folder ? folder : made;
        }
    }
    model.insertFilledRows(0, std::move(batch));
}

/// The least ratio over texts that half of the rows have, few, and none.
double benchKeystrokes(const ResTreeModel& model, RowSearch& search) {
    double least = 0;
    for (const char* text : {"щ", "а", "на", "насос", "Питательный", "турбина питательный 12",
                             "99999", "нет такого"}) {
        const QString wanted = QString::fromUtf8(text);
        std::vector<double> own, peer;
        for (int round = 0; round < 5; ++round) {
            own.push_back(seconds([&] { search.find(0, wanted); }));
            QModelIndexList hits;
            peer.push_back(seconds([&] {
                hits = model.match(model.index(0, 0), Qt::UserRole + 1, wanted, -1,
                                   Qt::MatchContains | Qt::MatchRecursive);
            }));
            if (hits.size() != search.count() ||
                (!hits.isEmpty() && hits.last() != search.hit(search.count() - 1)))
                std::exit(2);
        }
        const double ratio = median(peer) / median(own);
        least = least > 0 ? std::min(least, ratio) : ratio;
        std::printf("  %7d hits %8.1f ms, match %7.1f ms, %6.1fx  \"%s\"\n", search.count(),
                    median(own) * 1e3, median(peer) * 1e3, ratio, text);
    }
    return least;
}

/// What changes of rows cost that notifications bring while hits are kept.
void benchChanges(ResTreeModel& model, RowSearch& search) {
    const auto folderOf = [&](int row) { return model.index(row % model.rowCount(), 0); };
    const auto rename = [&](int row) {
        const QModelIndex folder = folderOf(row);
        model.setData(model.index(row % model.rowCount(folder), 0, folder),
                      QStringLiteral("Насос %1").arg(row));
    };
    const auto move = [&](int row) {
        const QModelIndex folder = folderOf(row);
        model.moveSiblingItem(row % model.rowCount(folder), 0, folder);
    };
    constexpr int changes = 1000;
    const auto each = [&](auto change) {
        return seconds([&] {
                   for (int i = 0; i < changes; ++i)
                       change(i * 7919);
               }) /
               changes;
    };
    const double firstMove = seconds([&] { move(1); });
    const double renames = each(rename);
    const double moves = each(move);
    std::printf(
        "  while %d hits are kept: the first row that moves %.1f ms, a further one %.1f us, "
        "one renamed %.1f us\n",
        search.count(), firstMove * 1e3, moves * 1e6, renames * 1e6);
    std::printf("  the keystroke after %d changes all over the tree %.1f ms\n", 2 * changes,
                seconds([&] { search.find(0, QStringLiteral("насос")); }) * 1e3);
}

void benchSearch(int rows) {
    ResTreeModel model(headers(), QString());
    fillCaptions(model, rows);
    RowSearch search(model, keyColumn);
    std::printf("A keystroke in the search field over %d rows\n", rows);
    const double heap = heapBytes();
    const double first = seconds([&] { search.find(0, QStringLiteral("я")); });
    std::printf("  the first one %.1f ms, which then keeps %.0f bytes a row\n", first * 1e3,
                (heapBytes() - heap) / rows);
    report("search against match, the least", benchKeystrokes(model, search), 15);
    search.find(0, QStringLiteral("а"));
    benchChanges(model, search);
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
    benchSearch(rows);
    return orvo::bench::exitCode();
}
