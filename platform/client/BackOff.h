// BackOff.h: how long to wait before a server that did not answer is asked again: each time twice
// as long.
//
// Invariant: 0 while it answers, else between the first pause and the last one.
#ifndef ORVO_PLATFORM_CLIENT_BACKOFF_H
#define ORVO_PLATFORM_CLIENT_BACKOFF_H

#include <algorithm>

namespace orvo::client {

class BackOff {
public:
    static constexpr int lastMs = 15000;

    explicit BackOff(int firstMs) : m_firstMs(firstMs) {}
    /// Whether the last attempt failed.
    bool isAway() const { return m_ms != 0; }
    /// The pause after the last attempt; 0 if it did not fail.
    int milliseconds() const { return m_ms; }
    void failed() { m_ms = m_ms == 0 ? m_firstMs : std::min(m_ms * 2, lastMs); }
    void succeeded() { m_ms = 0; }

private:
    int m_firstMs;
    int m_ms = 0;
};

} // namespace orvo::client

#endif
