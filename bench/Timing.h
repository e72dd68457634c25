// Timing.h: what benchmarks measure by.
#ifndef ORVO_BENCH_TIMING_H
#define ORVO_BENCH_TIMING_H

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <vector>

namespace orvo::bench {

/// The processor time of some work, in microseconds, of all threads of this process together: what
/// others do on the machine meanwhile does not count, nor does waiting.
template <class Work>
double processorMicroseconds(const Work& work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) * 1e-3;
    };
    const double begin = now();
    work();
    return now() - begin;
}

/// The middle one; of an even number of values the upper of the two. There is at least one.
inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace orvo::bench

#endif
