// NotificationPump.h: brings the changes of the store to the running modules.
//
// The change log is read past the session's cursor (by a LogFollower, beside the window) and handed
// to the modules in commit order, from the bare event loop only: never while a slot runs a loop of
// its own, a modal dialog, a pop-up menu or a drag is up, or a call of the session is running.
// Until then the changes wait. Delivery goes in slices of about sliceBudgetMs, one a frame,
// between which the window answers and paints.
#ifndef ORVO_PLATFORM_CLIENT_NOTIFICATIONPUMP_H
#define ORVO_PLATFORM_CLIENT_NOTIFICATIONPUMP_H

#include "platform/client/Blocks.h"
#include "platform/client/ChunkSize.h"
#include "platform/client/LogFollower.h"
#include "platform/client/ModuleRegistry.h"
#include "platform/client/Session.h"

#include <QElapsedTimer>
#include <QTimer>

#include <deque>

namespace orvo::client {

class ORVOCLIENT_EXPORT NotificationPump : public QObject {
    Q_OBJECT
public:
    static constexpr int frameMs = 16;
    static constexpr int sliceBudgetMs = 10;

    /// Session and registry outlive the pump. `reader` is another way into the session's store, on
    /// which the log is read; not null. Nothing happens before start.
    NotificationPump(COrvoCliSes& session, ModuleRegistry& modules,
                     std::unique_ptr<store::Store> reader, QObject* parent = nullptr);
    ~NotificationPump() override;

    /// Begins at the session's cursor.
    void start();
    /// Begins anew at the end of the log, after logLost and before the modules are opened anew.
    /// False if the store does not answer; the pump then goes on from where it was, and as soon as
    /// the store answers, logLost comes once more if it is still due.
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
    /// The store stopped or resumed answering; `text` says why it stopped. May come at any time;
    /// the modules hear of the resumption (ModSesReconnect) from the bare event loop only.
    void connectionChanged(bool up, const QString& text);

private:
    void request();
    void arrived();
    int untilNextFrame() const;
    void step();
    void deliverSlice();

    COrvoCliSes& m_session;
    ModuleRegistry& m_modules;
    NotificationMaker m_maker;
    LogFollower m_follower;
    QTimer m_step;
    QElapsedTimer m_sliceBegin; ///< of the last one
    std::deque<store::Change> m_backlog;
    int64_t m_cursor;           ///< where the follower began
    uint64_t m_asked = 0;       ///< number of the last look asked for
    uint64_t m_answered = 0;    ///< number of the last look answered
    ChunkSize m_chunk;          ///< changes handed over at once
    bool m_reconnected = false; ///< the modules are to be told
    bool m_gap = false;         ///< after the backlog the log has a gap
    bool m_stopped = true;      ///< before start, and after logLost
    bool m_delivering = false;
};

} // namespace orvo::client

#endif
