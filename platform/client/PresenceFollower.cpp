#include "platform/client/PresenceFollower.h"

#include "platform/client/BackOff.h"
#include "platform/client/WakeSignal.h"
#include "platform/store/WaitPolicy.h"

#include <atomic>
#include <mutex>
#include <poll.h>
#include <utility>

namespace orvo::client {

namespace {

constexpr int firstBackOffMs = 500;

} // namespace

/// What both threads share is below the mutex; the rest is the worker thread's alone.
class PresenceFollower::Worker : public store::WaitPolicy {
public:
    Worker(std::unique_ptr<store::Presence> presence, PresenceFollower& owner)
        : m_owner(owner)
        , m_presence(std::move(presence)) {}

    bool keepWaiting() override { return !stop; }
    void run();

    WakeSignal signal;
    std::mutex mutex;
    std::atomic<bool> stop = false;
    bool announced = false; ///< `edits` are new
    std::vector<store::OpenEdit> edits;
    std::vector<store::PresenceEntry> others;

private:
    void lookOnce();
    void rest() const;

    PresenceFollower& m_owner;
    const std::unique_ptr<store::Presence> m_presence;
    BackOff m_backOff{firstBackOffMs};
};

void PresenceFollower::Worker::run() {
    const store::WaitPolicyScope scope(this);
    while (!stop) {
        lookOnce();
        rest();
    }
}

void PresenceFollower::Worker::lookOnce() {
    {
        const std::lock_guard lock(mutex);
        if (std::exchange(announced, false))
            m_presence->announce(edits);
    }
    std::vector<store::PresenceEntry> seen;
    const store::Status status = m_presence->look(&seen);
    status.ok() ? m_backOff.succeeded() : m_backOff.failed();
    const std::lock_guard lock(mutex);
    if (stop || seen == others)
        return;
    others = std::move(seen);
    QMetaObject::invokeMethod(&m_owner, &PresenceFollower::take, Qt::QueuedConnection);
}

/// Until there is reason to look again.
void PresenceFollower::Worker::rest() const {
    const bool away = m_backOff.isAway();
    // A descriptor of a lost connection would be readable for ever.
    pollfd waits[] = {{signal.fd(), POLLIN, 0}, {away ? -1 : m_presence->wakeFd(), POLLIN, 0}};
    ::poll(waits, 2, away ? m_backOff.milliseconds() : m_presence->nextLookMs());
    if (waits[0].revents != 0)
        signal.take();
}

PresenceFollower::PresenceFollower(std::unique_ptr<store::Presence> presence, QObject* parent)
    : QObject(parent)
    , m_worker(std::make_unique<Worker>(std::move(presence), *this))
    , m_thread([worker = m_worker.get()] { worker->run(); }) {}

PresenceFollower::~PresenceFollower() {
    m_worker->stop = true;
    m_worker->signal.give();
    m_thread.join();
}

void PresenceFollower::announce(std::vector<store::OpenEdit> edits) {
    const std::lock_guard lock(m_worker->mutex);
    if (edits == m_worker->edits)
        return;
    m_worker->edits = std::move(edits);
    m_worker->announced = true;
    m_worker->signal.give();
}

void PresenceFollower::take() {
    {
        const std::lock_guard lock(m_worker->mutex);
        m_others = m_worker->others;
    }
    emit changed();
}

} // namespace orvo::client
