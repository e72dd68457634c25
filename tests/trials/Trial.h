// Trial.h: what the trials share. A trial does something cruel very often, at moments that a seed
// decides, and looks each time at what must hold whatever happened.
//
// ORVO_TRIAL_ROUNDS says how often, ORVO_TRIAL_SEED from which seed; the seed is printed.
#ifndef ORVO_TESTS_TRIALS_TRIAL_H
#define ORVO_TESTS_TRIALS_TRIAL_H

#include <QRandomGenerator>
#include <QtTest>

namespace orvo::test {

/// As often as asked for; else a few times, for a look.
inline int rounds(int few) {
    const int asked = qEnvironmentVariableIntValue("ORVO_TRIAL_ROUNDS");
    return asked > 0 ? asked : few;
}

inline unsigned seed() {
    static const unsigned value = [] {
        const int asked = qEnvironmentVariableIntValue("ORVO_TRIAL_SEED");
        const unsigned taken =
            asked > 0 ? unsigned(asked) : QRandomGenerator::global()->generate() >> 1;
        qInfo("ORVO_TRIAL_SEED=%u", taken);
        return taken;
    }();
    return value;
}

} // namespace orvo::test

#endif
