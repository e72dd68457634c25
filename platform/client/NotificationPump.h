// NotificationPump.h: brings the changes of the store to the running modules.
//
// The change log is read past the session's cursor and handed to the modules in commit order, from
// the bare event loop only: never while a slot runs a loop of its own, a modal dialog, a pop-up
// menu or a drag is up, or a call of the session is running. Until then the changes stay in the
// log. Delivery goes in slices of about sliceBudgetMs, one a frame, between which the window
// answers and paints.
#ifndef ORVO_PLATFORM_CLIENT_NOTIFICATIONPUMP_H
#define ORVO_PLATFORM_CLIENT_NOTIFICATIONPUMP_H

#include "platform/client/Blocks.h"
#include "platform/client/ModuleRegistry.h"
#include "platform/client/Session.h"

#include <QElapsedTimer>
#include <QTimer>

#include <deque>

class QSocketNotifier;

namespace orvo::client {

class ORVOCLIENT_EXPORT NotificationPump : public QObject {
    Q_OBJECT
public:
    static constexpr int frameMs = 16;
    static constexpr int sliceBudgetMs = 10;

    /// Session and registry outlive the pump. Nothing happens before start.
    NotificationPump(COrvoCliSes& session, ModuleRegistry& modules, QObject* parent = nullptr);
    ~NotificationPump() override;

    /// Begins at the session's cursor.
    void start();
    /// Begins anew at the end of the log, after logLost and before the modules are opened anew.
    /// False if the store does not answer; the connection is then reported as lost, and the pump
    /// asks again by itself until logLost comes once more.
    bool restart();
    /// Whether everything that the log held at the last look has been delivered.
    bool isIdle() const;
    /// Whether notifications may be delivered at this moment.
    bool mayDeliver() const;

signals:
    /// Every change, whatever its table, once, in commit order, just before the modules get it.
    void changed(const orvo::store::Change& change);
    /// The log no longer reaches back to the cursor: the modules must be opened anew. The pump
    /// rests until restart.
    void logLost();
    /// The store stopped or resumed answering; `text` says why it stopped.
    void connectionChanged(bool up, const QString& text);

private:
    void request();
    int untilNextFrame() const;
    void watch();
    void poll();
    void relook();
    void step();
    bool readMore();
    void deliverSlice();
    void connectionLost(const store::Status& status);

    COrvoCliSes& m_session;
    ModuleRegistry& m_modules;
    NotificationMaker m_maker;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QTimer m_poll;
    QTimer m_step;
    QTimer m_relook;
    QElapsedTimer m_sliceBegin; ///< of the last one
    std::deque<store::Change> m_backlog;
    int64_t m_cursor;
    int m_chunk = 1;       ///< changes handed over at once, by what they cost so far
    int m_backOffMs = 0;   ///< 0: connected
    bool m_unread = false; ///< the log may hold more
    bool m_stopped = true; ///< before start, and after logLost
    bool m_delivering = false;
};

} // namespace orvo::client

#endif
