// BackOff.h: how long to wait before a server that did not answer is asked again: each time twice
// as long.
//
// Invariant, asserted in debug builds: the pause is 0 while it answers, else between the first one
// and the last one.
#ifndef ORVO_PLATFORM_CLIENT_BACKOFF_H
#define ORVO_PLATFORM_CLIENT_BACKOFF_H

#include <algorithm>
#include <cassert>

namespace orvo::client {

class BackOff {
public:
    static constexpr int lastMs = 15000;

    /// `firstMs` is above 0 and at most lastMs.
    explicit BackOff(int firstMs) : m_firstMs(firstMs) { assert(firstMs > 0 && firstMs <= lastMs); }
    /// Whether the last attempt failed.
    bool isAway() const { return m_ms != 0; }
    /// The pause after the last attempt; 0 if it did not fail.
    int milliseconds() const { return m_ms; }
    void failed() {
        m_ms = m_ms == 0 ? m_firstMs : std::min(m_ms * 2, lastMs);
        assert(m_ms >= m_firstMs && m_ms <= lastMs);
    }
    void succeeded() { m_ms = 0; }

private:
    int m_firstMs;
    int m_ms = 0;
};

} // namespace orvo::client

#endif
