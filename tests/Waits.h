// QtTest, whose waits for a condition end after half a minute instead of five seconds.
//
// A wait ends as soon as its condition holds, so a longer one costs a test that passes nothing.
// Five seconds are too few beside other tests: a disk that others keep busy holds a durable write
// up for as long as ten, and whoever lost his store by then asks again after twice the time that
// has passed.
#ifndef ORVO_TESTS_WAITS_H
#define ORVO_TESTS_WAITS_H

#include <QtTest>

namespace orvo::test {
constexpr int longestWaitMs = 30'000;
}

#undef QTRY_VERIFY
#undef QTRY_VERIFY2
#undef QTRY_COMPARE
#define QTRY_VERIFY(expr) QTRY_VERIFY_WITH_TIMEOUT((expr), orvo::test::longestWaitMs)
#define QTRY_VERIFY2(expr, words)                                                                  \
    QTRY_VERIFY2_WITH_TIMEOUT((expr), (words), orvo::test::longestWaitMs)
#define QTRY_COMPARE(expr, expected)                                                               \
    QTRY_COMPARE_WITH_TIMEOUT((expr), expected, orvo::test::longestWaitMs)

#endif
