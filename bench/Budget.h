// Budget.h: a figure beside its budget, in one form for all benchmarks, and the exit code that
// follows.
#ifndef ORVO_BENCH_BUDGET_H
#define ORVO_BENCH_BUDGET_H

#include <cstdio>

namespace orvo::bench {

enum class Bound { AtMost, AtLeast };

/// Whether this process has missed a budget.
inline bool& isMissed() {
    static bool missed = false;
    return missed;
}

/// Ends a line that told the figure: with the budget, and whether it is kept. False if not.
inline bool judge(double figure, Bound bound, double budget, const char* unit) {
    const bool isKept = bound == Bound::AtMost ? figure <= budget : figure >= budget;
    std::printf("   budget %s %.6g%s   %s\n", bound == Bound::AtMost ? "<=" : ">=", budget, unit,
                isKept ? "kept" : "MISSED");
    std::fflush(stdout);
    isMissed() = isMissed() || !isKept;
    return isKept;
}

/// What main() returns: 1 after a miss.
inline int exitCode() {
    return isMissed() ? 1 : 0;
}

} // namespace orvo::bench

#endif
