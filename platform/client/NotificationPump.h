// NotificationPump.h: brings the changes of the store to the running modules.
//
// The change log is read past the session's cursor (by a LogFollower, beside the window) and handed
// to the modules in commit order, from the bare event loop only: never while a slot runs a loop of
// its own, a modal dialog, a pop-up menu or a drag is up, or a call of the session is running.
// Until then the changes wait. Delivery goes in slices of about sliceBudgetMs, one a frame,
// between which the window answers and paints.
//
// Each module has its own place in the order of changes. A module that has the engineer's attention
// (Attention.h) gets nothing until that ends, however long it takes, while the log is read on and
// the other modules follow it. What the engineer writes meanwhile ends the hold on a typed cell or
// an open edit up to its own echo: what was done must be seen, in its place among the rest.
//
// Invariants, asserted in debug builds after each step:
// 1. first <= at <= announced <= end, for the place `at` of every module.
// 2. Behind a delivery nothing before the first of these places is kept.
// 3. The numbers in the log of what is kept rise: a module is given each change once, in order.
// 4. A look that was answered had been asked for.
// 5. Each module that is read for has one place.
#ifndef ORVO_PLATFORM_CLIENT_NOTIFICATIONPUMP_H
#define ORVO_PLATFORM_CLIENT_NOTIFICATIONPUMP_H

#include "platform/client/Attention.h"
#include "platform/client/Blocks.h"
#include "platform/client/ChunkSize.h"
#include "platform/client/LogFollower.h"
#include "platform/client/ModuleRegistry.h"
#include "platform/client/Session.h"

#include <QElapsedTimer>
#include <QTimer>

#include <deque>

namespace orvo::client {

/// Lives on the GUI thread.
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
    /// Restarts at the end of the log, after logLost and before the modules are reopened.
    /// False if the store does not answer; the pump then goes on from where it was, and as soon as
    /// the store answers, logLost comes once more if it is still due.
    bool restart();
    /// Tells a running module of these, which are no changes of the log (Corrections.h), as soon as
    /// it has not the engineer's attention.
    void correct(const QString& module, const std::vector<store::Change>& changes);
    /// Whether everything that the log held at the last look has been delivered.
    bool isIdle() const;
    /// Whether notifications may be delivered at this moment, to modules that are not held.
    bool mayDeliver() const;

    /// What is held back from a module.
    struct Held {
        QPointer<COrvoCliMod> module;
        Attention why = Attention::None;
        int changes = 0; ///< at least 1
    };
    /// The modules from which something is held back now.
    std::vector<Held> held() const;

signals:
    /// Every change, whatever its table, once, in commit order, just before the modules get it.
    void changed(const orvo::store::Change& change);
    /// The log no longer reaches back to the cursor: the modules must be reopened. The pump
    /// rests until restart. Not emitted while a module has the engineer's attention. `replaced`:
    /// the store no longer has the last changes that were read.
    void logLost(bool replaced);
    /// That is so, but a module has the engineer's attention: what it shows is outdated until then.
    /// Once before logLost.
    void logLossHeld(bool replaced);
    /// held() has changed.
    void heldChanged();
    /// The store stopped or resumed answering; `text` says why it stopped. May come at any time;
    /// the modules hear of the resumption (ModSesReconnect) from the bare event loop only.
    void connectionChanged(bool up, const QString& text);
    /// The server that is read from takes writes now, or no longer (Store::mayWrite). May come at
    /// any time.
    void mayWriteChanged(bool may);

private:
    /// A running module and how far it is. Places are numbers of changes since start.
    struct Reader {
        QPointer<COrvoCliMod> module;
        uint64_t at = 0;  ///< place of the next change
        int64_t echo = 0; ///< number in the log of the last change it wrote; 0: none
        std::vector<store::Change> corrections; ///< to be told beside the log
    };

    void request();
    void written();
    void arrived();
    int untilNextFrame() const;
    void step();
    void deliverSlice();
    size_t announce(size_t count);
    size_t deliver(COrvoCliMod* module, size_t count);
    void followModules();
    void forgetDelivered();
    void tellHeld();
    void check() const;
    Reader* readerOf(const COrvoCliMod* module);
    /// The place of the first change whose number in the log is above `id`.
    uint64_t placeBehind(int64_t id) const;
    /// The place before which the module may be given changes now.
    uint64_t limitOf(const Reader& reader) const;
    bool isSomethingDue() const;
    bool mayCorrect(const Reader& reader) const;
    bool isAttended() const;
    bool isAllDelivered() const;
    uint64_t end() const { return m_first + m_log.size(); }

    COrvoCliSes& m_session;
    ModuleRegistry& m_modules;
    NotificationMaker m_maker;
    LogFollower m_follower;
    QTimer m_step;
    QElapsedTimer m_sliceBegin;      ///< of the last one
    std::deque<store::Change> m_log; ///< what not every module has been given
    uint64_t m_first = 0;            ///< place of the first of these
    uint64_t m_announced = 0;        ///< place of the next one for `changed`
    std::vector<Reader> m_readers;
    std::vector<std::pair<QPointer<COrvoCliMod>, int>> m_told; ///< at the last heldChanged
    store::LogCursor m_cursor;                                 ///< where the follower began
    uint64_t m_asked = 0;       ///< number of the last look asked for
    uint64_t m_answered = 0;    ///< number of the last look answered
    ChunkSize m_chunk;          ///< changes handed over at once
    bool m_reconnected = false; ///< the modules are to be told
    bool m_gap = false;         ///< after these changes the log has a gap
    bool m_replaced = false;    ///< ...and the log is another one
    bool m_lossTold = false;    ///< logLossHeld was emitted for it
    bool m_stopped = true;      ///< before start, and after logLost
    bool m_delivering = false;
};

} // namespace orvo::client

#endif
