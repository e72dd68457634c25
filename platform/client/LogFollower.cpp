#include "platform/client/LogFollower.h"

#include "platform/client/BackOff.h"
#include "platform/client/WakeSignal.h"
#include "platform/store/WaitPolicy.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <poll.h>

namespace orvo::client {

namespace {

constexpr int pollMs = 1000;      ///< behind a wake-up descriptor
constexpr int pollAloneMs = 100;  ///< without one
constexpr int lastRelookMs = 256; ///< a commit takes no longer to become visible
constexpr int readLimit = 256;    ///< rows of one read
constexpr size_t mostUntaken = 4096;

using Clock = std::chrono::steady_clock;

int millisecondsUntil(Clock::time_point when) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(when - Clock::now()).count();
    return static_cast<int>(std::clamp<int64_t>(left + 1, 0, pollMs));
}

} // namespace

/// What both threads share is below the mutex; the rest is the worker thread's alone.
class LogFollower::Worker : public store::WaitPolicy {
public:
    Worker(std::unique_ptr<store::Store> store, LogFollower& owner)
        : m_owner(owner)
        , m_store(std::move(store))
        , m_mayWrite(m_store->mayWrite()) {}

    bool keepWaiting() override { return !stop; }
    void run();

    WakeSignal signal;
    std::mutex mutex;
    std::atomic<bool> stop = false;
    uint64_t asked = 0;      ///< number of the last look
    uint64_t generation = 0; ///< number of the last begin; 0: none yet
    store::LogCursor from;   ///< where it was to begin
    std::string desktop;     ///< the one that is wanted; empty: all
    News news;

private:
    void obey();
    void readOnce();
    store::Status readBehind(const std::string& wanted, store::LogCursor* cursor,
                             std::vector<store::Change>* rows, bool* more);
    void check() const; ///< with the mutex held
    void rest();

    LogFollower& m_owner;
    std::unique_ptr<store::Store> m_store;
    bool m_mayWrite; ///< as it was told of
    uint64_t m_asked = 0;
    uint64_t m_generation = 0;
    store::LogCursor m_cursor;
    bool m_reopen = false; ///< the store is to be reopened, if it is not there any more
    BackOff m_backOff{firstBackOffMs};
    int m_relookMs = 0; ///< 0: none
    Clock::time_point m_next{};
    Clock::time_point m_looked{}; ///< the last slow look
    bool m_watches = false;       ///< the descriptor was asked for
    bool m_unread = false;        ///< the log may hold more
    bool m_full = false;          ///< too much waits to be taken
    bool m_pruned = false;
};

void LogFollower::Worker::run() {
    const store::WaitPolicyScope scope(this);
    while (!stop) {
        obey();
        const bool due = !m_backOff.isAway() || Clock::now() >= m_next;
        if (m_generation != 0 && m_unread && !m_full && !m_pruned && due)
            readOnce();
        else
            rest();
    }
}

void LogFollower::Worker::obey() {
    const std::lock_guard lock(mutex);
    if (m_generation != generation) {
        m_generation = generation;
        m_cursor = from;
        m_reopen = true;
        m_next = {}; // whoever asks does not wait for the next attempt
        m_pruned = false;
        m_unread = true;
    }
    if (m_asked != asked) {
        m_asked = asked;
        m_unread = true;
    }
    m_full = news.changes.size() >= mostUntaken;
}

void LogFollower::Worker::readOnce() {
    assert(!m_backOff.isAway() || Clock::now() >= m_next);
    std::vector<store::Change> rows;
    store::LogCursor cursor = m_cursor;
    bool more = false;
    std::string wanted;
    {
        const std::lock_guard lock(mutex);
        wanted = desktop;
    }
    store::Status status = m_reopen ? m_store->reopen() : store::Status();
    if (status.ok()) {
        m_reopen = false;
        status = readBehind(wanted, &cursor, &rows, &more);
    }
    const std::lock_guard lock(mutex);
    if (stop || m_generation != generation || wanted != desktop)
        return;
    const bool replaced = status.code == store::LogReplaced;
    const bool answered = status.ok() || status.code == store::LogPruned || replaced;
    if (!answered) {
        const bool first = !m_backOff.isAway();
        m_backOff.failed();
        m_next = Clock::now() + std::chrono::milliseconds(m_backOff.milliseconds());
        if (first)
            news.turns.push_back(std::move(status));
    } else if (m_backOff.isAway()) {
        m_backOff.succeeded();
        news.turns.emplace_back();
    }
    if (answered) {
        m_unread = more;
        m_looked = Clock::now(); // what was read need not be looked for
        m_pruned = !status.ok();
        news.pruned = m_pruned;
        news.replaced = replaced;
        if (status.ok())
            m_cursor = std::move(cursor);
        if (m_store->mayWrite() != m_mayWrite)
            news.mayWrite = m_mayWrite = m_store->mayWrite();
        std::move(rows.begin(), rows.end(), std::back_inserter(news.changes));
        if (!m_unread)
            news.answered = m_asked;
    }
    check();
    m_owner.tell();
}

store::Status LogFollower::Worker::readBehind(const std::string& wanted, store::LogCursor* cursor,
                                              std::vector<store::Change>* rows, bool* more) {
    if (!wanted.empty())
        return m_store->readDesktopLog(wanted, readLimit, cursor, rows, more);
    store::Status status = m_store->readLog(*cursor, readLimit, rows);
    *more = rows->size() == static_cast<size_t>(readLimit);
    if (!rows->empty())
        *cursor = store::LogCursor(rows->back());
    return status;
}

void LogFollower::Worker::check() const {
#ifndef NDEBUG
    int64_t last = from.id;
    for (const store::Change& change : news.changes) {
        assert(last < change.id);
        last = change.id;
    }
    assert(m_cursor.id >= last);
    assert(news.answered <= asked);
    assert(!news.replaced || news.pruned);
    assert(m_generation == generation && m_pruned == news.pruned);
#endif
}

/// Until there is reason to look again.
void LogFollower::Worker::rest() {
    const bool idle = m_generation == 0 || m_full || m_pruned;
    const bool away = m_backOff.isAway();
    // A descriptor of a lost connection would be readable for ever.
    const int wake = idle || away ? -1 : m_store->wakeFd();
    if (!idle && !away && !std::exchange(m_watches, true)) {
        m_unread = true; // what came before the descriptor was there, woke nobody
        return;
    }
    const int usual = wake >= 0 ? pollMs : pollAloneMs;
    pollfd waits[] = {{signal.fd(), POLLIN, 0}, {wake, POLLIN, 0}};
    const int timeout = idle   ? pollMs
                        : away ? millisecondsUntil(m_next)
                        : m_relookMs > 0
                            ? m_relookMs
                            : millisecondsUntil(m_looked + std::chrono::milliseconds(usual));
    const int ready = ::poll(waits, 2, timeout);
    if (waits[0].revents != 0)
        signal.take();
    if (idle || away || stop)
        return;
    if (waits[1].revents != 0) {
        m_store->takeWake();
        m_unread = true;
        // A wake-up may come before the change can be read: the writer has written, but its disk is
        // still busy making it durable. So the log is looked at again, at growing intervals.
        m_relookMs = m_store->wakesEarly() ? 1 : 0;
    } else if (ready == 0 || Clock::now() >= m_looked + std::chrono::milliseconds(usual)) {
        // Whoever asks or takes all the time puts no look off.
        m_looked = Clock::now();
        if (m_relookMs > 0)
            m_relookMs = m_relookMs * 2 <= lastRelookMs ? m_relookMs * 2 : 0;
        if (m_store->changed())
            m_unread = true;
    }
}

LogFollower::LogFollower(std::unique_ptr<store::Store> store, QObject* parent)
    : QObject(parent)
    , m_worker(std::make_unique<Worker>(std::move(store), *this))
    , m_thread([worker = m_worker.get()] { worker->run(); }) {}

LogFollower::~LogFollower() {
    m_worker->stop = true;
    m_worker->signal.give();
    m_thread.join();
}

void LogFollower::begin(store::LogCursor cursor) {
    const std::lock_guard lock(m_worker->mutex);
    ++m_worker->generation;
    m_worker->from = std::move(cursor);
    m_worker->news.changes.clear();
    m_worker->news.pruned = false;
    m_worker->news.replaced = false;
    m_worker->signal.give();
}

void LogFollower::wantOnly(const QString& desktop) {
    const std::lock_guard lock(m_worker->mutex);
    m_worker->desktop = desktop.toStdString();
}

uint64_t LogFollower::look() {
    const std::lock_guard lock(m_worker->mutex);
    ++m_worker->asked;
    m_worker->signal.give();
    return m_worker->asked;
}

LogFollower::News LogFollower::take() {
    const std::lock_guard lock(m_worker->mutex);
    News& waiting = m_worker->news;
    News taken;
    std::swap(taken, waiting);
    waiting.answered = taken.answered;
    m_worker->signal.give();
    return taken;
}

LogFollower::News LogFollower::takeTurns() {
    const std::lock_guard lock(m_worker->mutex);
    News taken;
    std::swap(taken.turns, m_worker->news.turns);
    return taken;
}

void LogFollower::tell() {
    QMetaObject::invokeMethod(this, &LogFollower::arrived, Qt::QueuedConnection);
}

} // namespace orvo::client
