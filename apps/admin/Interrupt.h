// Interrupt.h: what SIGINT, SIGTERM and SIGHUP do to long work: it ends at the next good place, the
// way any failure ends, so that what is half-done is taken back. Where no such place comes within
// some seconds, or on a second signal, the process ends at once; a database takes back by itself
// what was not committed.
#ifndef ORVO_ADMIN_INTERRUPT_H
#define ORVO_ADMIN_INTERRUPT_H

#include <string>

namespace orvo::admin {

/// As long as it lives, the signals are taken. One at a time.
class Interruptible {
public:
    Interruptible();
    ~Interruptible();
    Interruptible(const Interruptible&) = delete;
    Interruptible& operator=(const Interruptible&) = delete;

    /// Whether a signal has come.
    static bool requested();
};

/// Names a file that goes when the process ends at once; empty: none any more. Throws Failure for a
/// path that is too long.
void removeAtSuddenEnd(const std::string& path);

} // namespace orvo::admin

#endif
