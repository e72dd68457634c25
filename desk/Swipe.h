// Swipe.h: tells a press that scrolls a list from one that chooses.
#ifndef ORVO_DESK_SWIPE_H
#define ORVO_DESK_SWIPE_H

#include <QAbstractScrollArea>
#include <QPoint>
#include <QScrollBar>

namespace orvo::desk {

/// The rows move along with a finger, so that the row below it is the same at both ends of a swipe.
class Swipe {
public:
    void begin(const QAbstractScrollArea& view, const QPoint& at) {
        m_at = at;
        m_scrolled = view.verticalScrollBar()->value();
    }
    /// Whether the press that ends at `at` has scrolled. Rows that came above it meanwhile, and
    /// moved the rest, are no swipe.
    bool isSwipe(const QAbstractScrollArea& view, const QPoint& at) const {
        constexpr int jitter = 5;
        return view.verticalScrollBar()->value() != m_scrolled &&
               (at - m_at).manhattanLength() > jitter;
    }

private:
    QPoint m_at;
    int m_scrolled = 0;
};

} // namespace orvo::desk

#endif
