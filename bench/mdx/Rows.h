// Rows.h: the table that is measured, and how times are taken.
#ifndef ORVO_BENCH_MDX_ROWS_H
#define ORVO_BENCH_MDX_ROWS_H

#include "frame/OrvoMdx.h"

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

namespace bench {

/// About 200 bytes. Texts are ASCII in one case, so that the peers may compare them by bytes.
struct Row {
    std::string key, folder, name, parameters;
    int32_t type;
};

std::vector<Row> makeRows(size_t count, uint32_t seed);
void fill(MDArray* array, const std::vector<Row>& rows);
MDArray* makeArray();

/// The four keys: key text; type, folder, name; type, name; folder.
constexpr const char* keyFields[4] = {"KeyLink", "type_;folder;name", "type_;name", "folder"};
constexpr const char* keyTitles[4] = {"key", "type;folder;name", "type;name", "folder"};

/// Order of two rows in key `key`; ties go by key text, as in the record library.
template <int key>
struct Less {
    using is_transparent = void;
    bool operator()(const Row* a, const Row* b) const {
        if constexpr (key == 0)
            return a->key < b->key;
        if constexpr (key == 1 || key == 2)
            if (a->type != b->type)
                return a->type < b->type;
        if constexpr (key == 1 || key == 3)
            if (const int order = a->folder.compare(b->folder))
                return order < 0;
        if constexpr (key == 1 || key == 2)
            if (const int order = a->name.compare(b->name))
                return order < 0;
        return a->key < b->key;
    }
};

/// Processor time of this thread, all work here being done by it and in memory: a machine busy with
/// other things disturbs it less than the clock on the wall.
inline double now() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) * 1e-9;
}

inline double seconds(const std::function<void()>& work) {
    const double start = now();
    work();
    return now() - start;
}

inline double median(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

/// Median time of some rounds of the work.
inline double timed(int rounds, const std::function<void()>& work) {
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i)
        times.push_back(seconds(work));
    return median(times);
}

/// What keeps the compiler from dropping a result.
extern volatile uint64_t sink;

} // namespace bench

#endif
