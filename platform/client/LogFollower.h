// LogFollower.h: reads the change log past a cursor, in a thread and over a connection of its own,
// so that a server that is slow, frozen or gone never holds up a window.
//
// Invariants, asserted in debug builds at each read:
// 1. What waits to be taken is past the place that reading began at, in rising order and without
//    doubles; the cursor is at the last change of it, or behind it if only one desktop is wanted.
// 2. A look that was answered had been asked for.
// 3. Behind a gap nothing more is read before begin; a log that is another one is a gap.
// 4. While the store does not answer nothing is read before the pause is over, except for begin.
#ifndef ORVO_PLATFORM_CLIENT_LOGFOLLOWER_H
#define ORVO_PLATFORM_CLIENT_LOGFOLLOWER_H

#include "frame/OrvoClient.h"
#include "platform/store/Store.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace orvo::client {

class ORVOCLIENT_EXPORT LogFollower : public QObject {
    Q_OBJECT
public:
    /// After a failure the log is looked at again so much later, then as BackOff says.
    static constexpr int firstBackOffMs = 250;

    /// What was found since the last take.
    struct News {
        std::vector<store::Change> changes; ///< in commit order
        /// Each time the store stopped answering (why) or answered again (Ok), in order.
        std::vector<store::Status> turns;
        /// Everything in the log at the time of the look() that gave this number is in what was
        /// taken.
        uint64_t answered = 0;
        /// After these changes the log has a gap; nothing more is read before begin.
        bool pruned = false;
        /// ...because the log is not the one that was read before.
        bool replaced = false;
        /// Set if Store::mayWrite of the follower's store has changed: a standby has taken over, or
        /// the address now leads to one.
        std::optional<bool> mayWrite;
    };

    /// Takes the store over; nothing happens before begin. Not null.
    explicit LogFollower(std::unique_ptr<store::Store> store, QObject* parent = nullptr);
    /// Waits for no server.
    ~LogFollower() override;

    /// Reads from that place on, also a second time; what was found before and not taken is
    /// forgotten.
    void begin(store::LogCursor cursor);
    /// From now on only what concerns that desktop (Store::readDesktopLog) has to be found; all of
    /// it again for none, as at first. What is committed after this call was made and goes beyond
    /// what was wanted until then is found.
    void wantOnly(const QString& desktop);
    /// The log may have grown. The number that News::answered will reach.
    uint64_t look();
    /// Takes what was found. Reading pauses while very much waits to be taken.
    News take();
    /// The turns only.
    News takeTurns();

signals:
    /// There may be something to take. Emitted in the thread of this object.
    void arrived();

private:
    class Worker;
    void tell();

    std::unique_ptr<Worker> m_worker; ///< what the thread works on; goes after it
    std::thread m_thread;
};

} // namespace orvo::client

#endif
