// ChunkSize.h: how many changes are handed to the modules at once.
#ifndef ORVO_PLATFORM_CLIENT_CHUNKSIZE_H
#define ORVO_PLATFORM_CLIENT_CHUNKSIZE_H

#include <QtGlobal>

#include <algorithm>

namespace orvo::client {

/// Grows while chunks are cheap and shrinks when they take long, so that the window answers in
/// between. But a chunk has a price of its own, however few changes it brings: a big tree is laid
/// out once for each. Where that is most of it, smaller chunks only make the whole take longer; so
/// every step that does not pay is taken back.
///
///  1. changes() is 1 to `largest`.
class ChunkSize {
public:
    static constexpr int largest = 64;

    int changes() const { return m_size; }
    /// What handing over `count` changes, at least one, cost, and what it should cost at the most,
    /// in the same unit of time.
    void took(int count, qint64 cost, qint64 wanted) {
        adjust(count, cost, wanted);
        Q_ASSERT(m_size >= 1 && m_size <= largest); // 1
    }

private:
    static constexpr int pause = 16; ///< chunks between two tries

    void adjust(int count, qint64 cost, qint64 wanted) {
        if (count < m_size) { // the last ones of a burst
            if (cost <= wanted)
                return;
            m_size = count;
            m_trying = false;
        }
        const qint64 each = std::max<qint64>(1, cost / count);
        if (m_trying) {
            m_trying = false;
            const bool pays = m_up ? each * 3 <= m_before * 2 : each * 2 <= m_before * 3;
            if (!pays) {
                m_size = m_up ? m_size / 2 : m_size * 2;
                m_pause = m_up ? pause : 0;
                m_up = !m_up;
                return;
            }
        }
        if (cost * 4 < wanted) {
            m_size = std::min(m_size * 2, largest);
            m_pause = 0;
        } else if (m_pause > 0) {
            --m_pause;
        } else if (cost > wanted) {
            tryAnother(each);
        }
    }

    void tryAnother(qint64 each) {
        if (m_up && m_size == largest) {
            m_up = false;
            m_pause = pause;
            return;
        }
        if (m_size == 1)
            m_up = true;
        m_size = m_up ? std::min(m_size * 2, largest) : m_size / 2;
        m_before = each;
        m_trying = true;
    }

    int m_size = 1;
    bool m_up = false;     ///< whether the next step goes up
    bool m_trying = false; ///< the last step is not judged yet
    qint64 m_before = 0;   ///< price of a change before the present try
    int m_pause = 0;       ///< chunks until the next try
};

} // namespace orvo::client

#endif
