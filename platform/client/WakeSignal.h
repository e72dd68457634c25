// WakeSignal.h: ends the rest of a thread that waits by poll().
#ifndef ORVO_PLATFORM_CLIENT_WAKESIGNAL_H
#define ORVO_PLATFORM_CLIENT_WAKESIGNAL_H

#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

namespace orvo::client {

/// Given from any thread, and taken by the one that waits. One that was given several times before
/// it is taken counts once. Without a descriptor (there were too many) it is never seen: a rest
/// then lasts as long as its time says.
class WakeSignal {
public:
    WakeSignal() : m_fd(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
    ~WakeSignal() {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    WakeSignal(const WakeSignal&) = delete;
    WakeSignal& operator=(const WakeSignal&) = delete;

    /// Readable from give() to take().
    int fd() const { return m_fd; }
    void give() const {
        const uint64_t one = 1;
        if (m_fd >= 0 && ::write(m_fd, &one, sizeof one) < 0)
            return; // full: it is readable all the same
    }
    void take() const {
        uint64_t count = 0;
        if (m_fd >= 0 && ::read(m_fd, &count, sizeof count) < 0)
            return; // taken already
    }

private:
    const int m_fd;
};

} // namespace orvo::client

#endif
