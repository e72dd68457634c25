#include "platform/client/NotificationPump.h"

#include <QApplication>
#include <QThread>

#include <algorithm>
#include <iterator>
#include <utility>

namespace orvo::client {

namespace {

constexpr int blockedRetryMs = 25;     ///< while a dialog, menu or drag is up
constexpr size_t enoughBacklog = 1024; ///< more waits with the follower

} // namespace

NotificationPump::NotificationPump(COrvoCliSes& session, ModuleRegistry& modules,
                                   std::unique_ptr<store::Store> reader, QObject* parent)
    : QObject(parent)
    , m_session(session)
    , m_modules(modules)
    , m_follower(std::move(reader))
    , m_cursor(sessionCursor(session)) {
    m_step.setSingleShot(true);
    m_step.setTimerType(Qt::PreciseTimer);
    connect(&m_step, &QTimer::timeout, this, &NotificationPump::step);
    connect(&m_follower, &LogFollower::arrived, this, &NotificationPump::arrived);
    connect(&sessionEvents(session), &SessionEvents::written, this, &NotificationPump::request);
}

NotificationPump::~NotificationPump() = default;

void NotificationPump::start() {
    m_stopped = false;
    m_follower.begin(m_cursor);
    request(); // what came since the session was made
}

bool NotificationPump::restart() {
    m_backlog.clear();
    m_gap = false;
    const store::Status status = sessionStore(m_session).logPosition(&m_cursor);
    start();
    return status.ok();
}

bool NotificationPump::isIdle() const {
    return m_stopped || (m_backlog.empty() && m_answered == m_asked);
}

bool NotificationPump::mayDeliver() const {
    // Level 1 is the application's own loop; 0 is event processing without any loop.
    return !m_delivering && !sessionBusy(m_session) && QThread::currentThread()->loopLevel() <= 1 &&
           !QApplication::activeModalWidget() && !QApplication::activePopupWidget();
}

void NotificationPump::request() {
    if (!m_stopped)
        m_asked = m_follower.look();
}

/// However fast the changes come, the window is painted once a frame for all that came meanwhile.
int NotificationPump::untilNextFrame() const {
    return m_sliceBegin.isValid()
               ? static_cast<int>(std::clamp<qint64>(frameMs - m_sliceBegin.elapsed(), 0, frameMs))
               : 0;
}

/// The state of the connection shows at once; changes wait for the bare loop.
void NotificationPump::arrived() {
    const bool enough = m_stopped || m_backlog.size() >= enoughBacklog;
    LogFollower::News news = enough ? m_follower.takeTurns() : m_follower.take();
    if (!enough) {
        std::move(news.changes.begin(), news.changes.end(), std::back_inserter(m_backlog));
        m_answered = news.answered;
        m_gap = m_gap || news.pruned;
    }
    if ((!m_backlog.empty() || m_gap) && !m_step.isActive())
        m_step.start(untilNextFrame());
    for (const store::Status& turn : news.turns) {
        if (turn.ok()) {
            m_reconnected = true;
            m_step.start(0);
        }
        emit connectionChanged(turn.ok(), QString::fromStdString(turn.text));
    }
}

void NotificationPump::step() {
    if (m_stopped)
        return;
    if (!mayDeliver()) {
        m_step.start(blockedRetryMs);
        return;
    }
    if (std::exchange(m_reconnected, false)) {
        for (const QPointer<COrvoCliMod>& module : m_modules.modules(ModuleState::Running))
            if (module)
                module->ModSesReconnect();
    }
    deliverSlice();
    if (m_stopped)
        return;
    if (m_backlog.size() < enoughBacklog && !m_gap)
        arrived(); // what waited
    if (m_backlog.empty() && m_gap) {
        m_stopped = true;
        m_gap = false;
        emit logLost();
    } else if (!m_backlog.empty() && !m_step.isActive()) {
        m_step.start(untilNextFrame());
    }
}

void NotificationPump::deliverSlice() {
    m_delivering = true;
    m_sliceBegin.start();
    while (!m_backlog.empty()) {
        const size_t count = std::min(m_backlog.size(), static_cast<size_t>(m_chunk.changes()));
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
        m_chunk.took(static_cast<int>(count), cost.nsecsElapsed(), sliceBudgetMs * 250'000LL);
        if (m_stopped || m_sliceBegin.elapsed() >= sliceBudgetMs)
            break;
    }
    m_delivering = false;
}

} // namespace orvo::client
