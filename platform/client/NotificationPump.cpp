#include "platform/client/NotificationPump.h"

#include <QApplication>
#include <QSocketNotifier>
#include <QThread>

#include <algorithm>

namespace orvo::client {

namespace {

constexpr int pollMs = 1000;       ///< behind a wake-up descriptor
constexpr int pollAloneMs = 100;   ///< without one
constexpr int blockedRetryMs = 25; ///< while a dialog, menu or drag is up
constexpr int lastRelookMs = 256;  ///< a commit takes no longer to become visible
constexpr int firstBackOffMs = 250;
constexpr int lastBackOffMs = 15000;
constexpr int readLimit = 256; ///< rows of one read: a fraction of a slice
constexpr int largestChunk = 64;

} // namespace

NotificationPump::NotificationPump(COrvoCliSes& session, ModuleRegistry& modules, QObject* parent)
    : QObject(parent)
    , m_session(session)
    , m_modules(modules)
    , m_cursor(sessionCursor(session)) {
    m_step.setSingleShot(true);
    m_step.setTimerType(Qt::PreciseTimer);
    connect(&m_step, &QTimer::timeout, this, &NotificationPump::step);
    connect(&m_poll, &QTimer::timeout, this, &NotificationPump::poll);
    m_relook.setSingleShot(true);
    connect(&m_relook, &QTimer::timeout, this, &NotificationPump::relook);
    connect(&sessionEvents(session), &SessionEvents::written, this, &NotificationPump::request);
}

NotificationPump::~NotificationPump() = default;

void NotificationPump::start() {
    m_stopped = false;
    watch();
    request(); // what came since the session was made
}

bool NotificationPump::restart() {
    m_backlog.clear();
    const store::Status status = sessionStore(m_session).logPosition(&m_cursor);
    m_stopped = false;
    if (!status.ok()) {
        connectionLost(status);
        return false;
    }
    request();
    return true;
}

bool NotificationPump::isIdle() const {
    return m_backlog.empty() && !m_unread;
}

bool NotificationPump::mayDeliver() const {
    // Level 1 is the application's own loop; 0 is event processing without any loop.
    return !m_delivering && !sessionBusy(m_session) && QThread::currentThread()->loopLevel() <= 1 &&
           !QApplication::activeModalWidget() && !QApplication::activePopupWidget();
}

void NotificationPump::request() {
    if (m_stopped)
        return;
    m_unread = true;
    if (m_backOffMs == 0 && !m_step.isActive())
        m_step.start(untilNextFrame());
}

/// However fast the changes come, the window is painted once a frame for all that came meanwhile.
int NotificationPump::untilNextFrame() const {
    return m_sliceBegin.isValid()
               ? static_cast<int>(std::clamp<qint64>(frameMs - m_sliceBegin.elapsed(), 0, frameMs))
               : 0;
}

/// Follows the store's descriptor, which a new connection may have changed.
void NotificationPump::watch() {
    const int fd = sessionStore(m_session).wakeFd();
    if (!m_notifier || m_notifier->socket() != fd) {
        m_notifier.reset();
        if (fd >= 0) {
            m_notifier = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
            connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
                sessionStore(m_session).takeWake();
                request();
                m_relook.start(1);
            });
        }
    }
    m_poll.start(fd >= 0 ? pollMs : pollAloneMs);
}

/// A wake-up may come before the change can be read: the writer has written, but its disk is still
/// busy making it durable. So the log is looked at again, at growing intervals.
void NotificationPump::relook() {
    const int next = m_relook.interval() * 2;
    poll();
    if (next <= lastRelookMs)
        m_relook.start(next);
}

void NotificationPump::poll() {
    if (!m_stopped && m_backOffMs == 0 && !sessionBusy(m_session) &&
        sessionStore(m_session).changed())
        request();
}

void NotificationPump::step() {
    if (m_stopped)
        return;
    if (!mayDeliver()) {
        m_step.start(blockedRetryMs);
        return;
    }
    if (m_unread && m_backlog.empty() && !readMore())
        return;
    deliverSlice();
    if (!m_stopped && !isIdle() && !m_step.isActive())
        m_step.start(untilNextFrame());
}

/// Reads the next rows of the log. False if there was no answer.
bool NotificationPump::readMore() {
    std::vector<store::Change> rows;
    const store::Status status = sessionStore(m_session).readLog(m_cursor, readLimit, &rows);
    if (status.code == store::LogPruned) {
        m_stopped = true;
        m_unread = false;
        emit logLost();
        return false;
    }
    if (!status.ok()) {
        connectionLost(status);
        return false;
    }
    m_unread = rows.size() == static_cast<size_t>(readLimit);
    if (!rows.empty())
        m_cursor = rows.back().id;
    std::move(rows.begin(), rows.end(), std::back_inserter(m_backlog));
    if (m_backOffMs != 0) {
        m_backOffMs = 0;
        watch();
        emit connectionChanged(true, {});
        for (const QPointer<COrvoCliMod>& module : m_modules.modules(ModuleState::Running))
            if (module)
                module->ModSesReconnect();
    }
    return true;
}

void NotificationPump::deliverSlice() {
    m_delivering = true;
    m_sliceBegin.start();
    while (!m_backlog.empty()) {
        const size_t count = std::min(m_backlog.size(), static_cast<size_t>(m_chunk));
        std::vector<store::Change> chunk(
            std::make_move_iterator(m_backlog.begin()),
            std::make_move_iterator(m_backlog.begin() + static_cast<ptrdiff_t>(count)));
        m_backlog.erase(m_backlog.begin(), m_backlog.begin() + static_cast<ptrdiff_t>(count));
        QElapsedTimer cost;
        cost.start();
        for (const store::Change& change : chunk)
            emit changed(change);
        for (const QPointer<COrvoCliMod>& module : m_modules.modules(ModuleState::Running)) {
            for (const store::Change& change : chunk)
                if (module)
                    module->messagePut(m_maker.make(change));
            if (module)
                module->MessageOn();
        }
        // A quarter of the slice at once is few enough to end in time.
        const qint64 each = std::max<qint64>(1, cost.nsecsElapsed() / static_cast<qint64>(count));
        m_chunk =
            static_cast<int>(std::clamp<qint64>(sliceBudgetMs * 250'000LL / each, 1, largestChunk));
        if (m_stopped || m_sliceBegin.elapsed() >= sliceBudgetMs)
            break;
    }
    m_delivering = false;
}

void NotificationPump::connectionLost(const store::Status& status) {
    const bool first = m_backOffMs == 0;
    m_unread = true;
    m_backOffMs = first ? firstBackOffMs : std::min(m_backOffMs * 2, lastBackOffMs);
    m_notifier.reset(); // a dead descriptor would be readable for ever
    m_step.start(m_backOffMs);
    if (first)
        emit connectionChanged(false, QString::fromStdString(status.text));
}

} // namespace orvo::client
