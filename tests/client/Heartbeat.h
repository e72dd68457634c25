// Heartbeat.h: how long a step of the window's thread takes.
#ifndef ORVO_TESTS_CLIENT_HEARTBEAT_H
#define ORVO_TESTS_CLIENT_HEARTBEAT_H

#include <QObject>

#include <algorithm>
#include <ctime>

namespace orvo::test {

/// The longest processor time of this thread between two looks of its event loop at the timers, in
/// milliseconds.
class Heartbeat : public QObject {
public:
    Heartbeat() {
        m_last = now();
        startTimer(0);
    }
    /// Since it was made.
    qint64 longestMs() const { return static_cast<qint64>(longest()); }
    double longest() const { return double(std::max(m_longest, now() - m_last)) / 1e6; }

protected:
    void timerEvent(QTimerEvent*) override {
        const qint64 time = now();
        m_longest = std::max(m_longest, time - m_last);
        m_last = time;
    }

private:
    static qint64 now() {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return qint64(time.tv_sec) * 1000000000 + time.tv_nsec;
    }
    qint64 m_last = 0, m_longest = 0;
};

} // namespace orvo::test

#endif
