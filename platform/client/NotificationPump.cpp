#include "platform/client/NotificationPump.h"

#include "platform/client/QuestionNotes.h"

#include <QApplication>
#include <QThread>

#include <algorithm>
#include <cassert>
#include <iterator>
#include <utility>

namespace orvo::client {

namespace {

constexpr int blockedRetryMs = 25;     ///< while a dialog, menu or drag is up
constexpr int heldRetryMs = 50;        ///< while a module has the engineer's attention
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
    connect(&m_modules, &ModuleRegistry::changed, this,
            [this] { m_follower.wantOnly(m_modules.onlyDesktop()); });
    connect(&sessionEvents(session), &SessionEvents::written, this, &NotificationPump::written);
}

NotificationPump::~NotificationPump() = default;

void NotificationPump::start() {
    m_stopped = false;
    m_follower.begin(m_cursor);
    request(); // what came since the session was made
}

bool NotificationPump::restart() {
    m_log.clear();
    m_first = m_announced = 0;
    m_readers.clear();
    m_gap = m_lossTold = false;
    store::Status status = sessionStore(m_session).reopen();
    if (status.ok())
        status = sessionStore(m_session).logEnd(&m_cursor);
    start();
    tellHeld();
    return status.ok();
}

void NotificationPump::check() const {
#ifndef NDEBUG
    if (m_stopped)
        return;
    assert(m_first <= m_announced && m_announced <= end());
    assert(m_answered <= m_asked);
    for (size_t i = 1; i < m_log.size(); ++i)
        assert(m_log[i - 1].id < m_log[i].id);
    for (auto reader = m_readers.begin(); reader != m_readers.end(); ++reader) {
        if (!reader->module)
            continue;
        assert(m_first <= reader->at && reader->at <= m_announced);
        assert(std::none_of(m_readers.begin(), reader,
                            [&](const Reader& other) { return other.module == reader->module; }));
    }
#endif
}

bool NotificationPump::isIdle() const {
    return m_stopped || (isAllDelivered() && m_answered == m_asked);
}

bool NotificationPump::isAllDelivered() const {
    return m_announced == end() && std::all_of(m_readers.begin(), m_readers.end(), [this](auto& r) {
               return !r.module || (r.at == end() && r.corrections.empty());
           });
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

/// The module that the engineer works in wrote. Where that cannot be told, since the keyboard is in
/// a pane of the window, each module on show may have.
void NotificationPump::written() {
    request();
    followModules();
    const int64_t last = sessionStore(m_session).lastWritten().last.id;
    const auto hasFocus = [](const Reader& reader) {
        const QWidget* part = QApplication::focusWidget();
        while (part && part != reader.module)
            part = part->parentWidget(); // also out of a window that it has opened
        return part != nullptr;
    };
    const bool isKnown = std::any_of(m_readers.begin(), m_readers.end(), hasFocus);
    for (Reader& reader : m_readers)
        if (reader.module && (isKnown ? hasFocus(reader) : reader.module->isVisible()))
            reader.echo = std::max(reader.echo, last);
}

/// However fast the changes come, the window is painted once a frame for all that came meanwhile.
int NotificationPump::untilNextFrame() const {
    return m_sliceBegin.isValid()
               ? static_cast<int>(std::clamp<qint64>(frameMs - m_sliceBegin.elapsed(), 0, frameMs))
               : 0;
}

/// The state of the connection shows at once; changes wait for the bare loop.
void NotificationPump::arrived() {
    const bool enough = m_stopped || end() - m_announced >= enoughBacklog;
    LogFollower::News news = enough ? m_follower.takeTurns() : m_follower.take();
    if (!enough) {
        std::move(news.changes.begin(), news.changes.end(), std::back_inserter(m_log));
        m_answered = news.answered;
        m_gap = m_gap || news.pruned;
        m_replaced = m_replaced || news.replaced;
        if (news.mayWrite)
            emit mayWriteChanged(*news.mayWrite);
    }
    const bool fresh = m_announced < end() || m_gap;
    if (fresh && (!m_step.isActive() || m_step.remainingTime() > untilNextFrame()))
        m_step.start(untilNextFrame());
    for (const store::Status& turn : news.turns) {
        if (turn.ok()) {
            m_reconnected = true;
            m_step.start(0);
        }
        emit connectionChanged(turn.ok(), QString::fromStdString(turn.text));
    }
    check();
}

/// A new module has read its tables after all that was announced by then.
void NotificationPump::followModules() {
    const auto running = m_modules.modules(ModuleState::Running);
    m_readers.erase(std::remove_if(m_readers.begin(), m_readers.end(),
                                   [&](const Reader& reader) {
                                       return std::find(running.begin(), running.end(),
                                                        reader.module) == running.end();
                                   }),
                    m_readers.end());
    for (const QPointer<COrvoCliMod>& module : running)
        if (!readerOf(module))
            m_readers.push_back({module, m_announced, 0, {}});
}

NotificationPump::Reader* NotificationPump::readerOf(const COrvoCliMod* module) {
    for (Reader& reader : m_readers)
        if (module && reader.module == module)
            return &reader;
    return nullptr;
}

uint64_t NotificationPump::placeBehind(int64_t id) const {
    const auto behind =
        std::upper_bound(m_log.begin(), m_log.end(), id,
                         [](int64_t one, const store::Change& change) { return one < change.id; });
    return m_first + static_cast<uint64_t>(behind - m_log.begin());
}

uint64_t NotificationPump::limitOf(const Reader& reader) const {
    switch (attentionIn(*reader.module)) {
    case Attention::None:
        return m_announced;
    case Attention::Cell:
    case Attention::Edit:
        return std::min(placeBehind(reader.echo), m_announced);
    default:
        return reader.at;
    }
}

bool NotificationPump::isSomethingDue() const {
    return m_announced < end() || std::any_of(m_readers.begin(), m_readers.end(), [this](auto& r) {
               return r.module && (r.at < limitOf(r) || mayCorrect(r));
           });
}

bool NotificationPump::mayCorrect(const Reader& reader) const {
    return !reader.corrections.empty() && attentionIn(*reader.module) == Attention::None;
}

void NotificationPump::correct(const QString& module, const std::vector<store::Change>& changes) {
    followModules();
    for (Reader& reader : m_readers)
        if (reader.module && reader.module->m_moduleName == module)
            reader.corrections.insert(reader.corrections.end(), changes.begin(), changes.end());
    if (!m_stopped && !m_step.isActive())
        m_step.start(0);
}

bool NotificationPump::isAttended() const {
    const auto running = m_modules.modules(ModuleState::Running);
    return std::any_of(running.begin(), running.end(),
                       [](const auto& module) { return attentionIn(*module) != Attention::None; });
}

std::vector<NotificationPump::Held> NotificationPump::held() const {
    std::vector<Held> all;
    for (const Reader& reader : m_readers) {
        if (!reader.module || reader.at >= m_announced)
            continue;
        const Attention why = attentionIn(*reader.module);
        if (why != Attention::None)
            all.push_back({reader.module, why, static_cast<int>(m_announced - reader.at)});
    }
    return all;
}

void NotificationPump::tellHeld() {
    std::vector<std::pair<QPointer<COrvoCliMod>, int>> now;
    for (const Held& one : held())
        now.emplace_back(one.module, one.changes);
    if (now == m_told)
        return;
    m_told = std::move(now);
    emit heldChanged();
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
    if (end() - m_announced < enoughBacklog && !m_gap)
        arrived(); // what waited
    tellHeld();
    const bool done = isAllDelivered();
    if (done && m_gap && !isAttended()) {
        m_stopped = true;
        m_gap = m_lossTold = false;
        emit logLost(std::exchange(m_replaced, false));
    } else if ((!done || m_gap) && !m_step.isActive()) {
        m_step.start(isSomethingDue() ? untilNextFrame() : heldRetryMs);
        if (m_gap && isAttended() && !std::exchange(m_lossTold, true))
            emit logLossHeld(m_replaced);
    }
}

void NotificationPump::deliverSlice() {
    m_delivering = true;
    m_sliceBegin.start();
    followModules();
    while (!m_stopped) {
        const auto count = static_cast<size_t>(m_chunk.changes());
        QElapsedTimer cost;
        cost.start();
        size_t most = announce(count);
        for (const QPointer<COrvoCliMod>& module : m_modules.modules(ModuleState::Running))
            most = std::max(most, deliver(module, count));
        forgetDelivered();
        if (most == 0)
            break;
        // A quarter of the slice at once is few enough to end in time.
        m_chunk.took(static_cast<int>(most), cost.nsecsElapsed(), sliceBudgetMs * 250000LL);
        if (m_sliceBegin.elapsed() >= sliceBudgetMs)
            break;
    }
    m_delivering = false;
}

/// Tells the host of the next changes; how many there were.
size_t NotificationPump::announce(size_t count) {
    const uint64_t from = m_announced;
    const uint64_t to = std::min<uint64_t>(end(), from + count);
    for (uint64_t place = from; place < to; ++place) {
        const store::Change& change = m_log[place - m_first];
        emit changed(change);
        for (const Reader& reader : m_readers)
            if (reader.module)
                noteInQuestion(*reader.module, change);
    }
    m_announced = to;
    return to - from;
}

/// Gives a module its next changes; how many there were.
size_t NotificationPump::deliver(COrvoCliMod* module, size_t count) {
    Reader* reader = readerOf(module);
    if (!reader)
        return 0;
    const uint64_t from = reader->at;
    const uint64_t to = std::min<uint64_t>(limitOf(*reader), from + count);
    assert(m_first <= from && from <= m_announced && m_announced <= end());
    if (mayCorrect(*reader)) {
        // In the tables of the module is what the log has told it so far.
        for (const store::Change& change : std::exchange(reader->corrections, {}))
            module->messagePut(m_maker.make(change));
        if (to <= from) {
            module->MessageOn();
            return 1;
        }
    }
    if (to <= from)
        return 0;
    for (uint64_t place = from; place < to; ++place)
        module->messagePut(m_maker.make(m_log[place - m_first]));
    reader->at = to;
    module->MessageOn(); // may write, or take modules down: `reader` ends here
    return to - from;
}

void NotificationPump::forgetDelivered() {
    uint64_t needed = m_announced;
    for (const Reader& reader : m_readers)
        if (reader.module)
            needed = std::min(needed, reader.at);
    m_log.erase(m_log.begin(), m_log.begin() + static_cast<ptrdiff_t>(needed - m_first));
    m_first = needed;
    check();
}

} // namespace orvo::client
