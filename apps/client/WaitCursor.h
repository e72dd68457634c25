// WaitCursor.h: the cursor of something that takes its time.
#ifndef ORVO_APPS_CLIENT_WAITCURSOR_H
#define ORVO_APPS_CLIENT_WAITCURSOR_H

#include <QApplication>

namespace orvo::app {

/// Shows that something takes its time, while it lives.
struct WaitCursor {
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

} // namespace orvo::app

#endif
