#include "apps/client/history/UndoActions.h"

#include "apps/client/LogPane.h"
#include "apps/client/Look.h"
#include "frame/Keys.h"
#include "frame/Text.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <utility>

namespace orvo::app {

namespace {

constexpr int readDelayMs = 50; ///< since the last change: a burst of them is one reason to read
constexpr size_t mostPresses = 30;
constexpr int longestWords = 70;

QString withWords(const QString& command, const QString& words) {
    return words.isEmpty()
               ? command
               : QStringLiteral("%1: %2").arg(command, clipped(oneLine(words), longestWords));
}

QString menuText(QString text) {
    return text.replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace

UndoActions::UndoActions(StoreThread& thread, Reverter& reverter, history::Actor actor,
                         bool mayWrite)
    : m_thread(thread)
    , m_reverter(reverter)
    , m_actor(std::move(actor))
    , m_mayWrite(mayWrite) {
    m_undo.setObjectName(QStringLiteral("actUndo"));
    m_redo.setObjectName(QStringLiteral("actRedo"));
    m_undo.setShortcuts(keys::sequences(*keys::command(QLatin1String(keys::undo))));
    m_redo.setShortcuts(keys::sequences(*keys::command(QLatin1String(keys::redo))));
    for (QAction* action : {&m_undo, &m_redo}) {
        action->setAutoRepeat(false);
        // Queued: the menu is closed before a question comes up.
        connect(
            action, &QAction::triggered, this, [this, action] { press(action == &m_redo); },
            Qt::QueuedConnection);
    }
    m_readSoon.setSingleShot(true);
    m_readSoon.setInterval(readDelayMs);
    connect(&m_readSoon, &QTimer::timeout, this, &UndoActions::read);
    show();
    read();
}

void UndoActions::outdate() {
    const bool wasFresh = std::exchange(m_fresh, false);
    m_outdated = m_reading;
    if (wasFresh)
        show();
    m_readSoon.start();
}

void UndoActions::setMayWrite(bool may) {
    m_mayWrite = may;
    outdate();
    show();
}

void UndoActions::changed(const store::Change& change) {
    for (auto passed = m_passed.begin(); passed != m_passed.end();) {
        const std::set<int64_t>& because = passed->second;
        const bool isFree = std::any_of(change.undoes.begin(), change.undoes.end(),
                                        [&](int64_t undone) { return because.count(undone) != 0; });
        passed = isFree ? m_passed.erase(passed) : std::next(passed);
    }
    if (change.login == m_actor.login || !change.undoes.empty())
        outdate();
}

void UndoActions::logLost() {
    m_passed.clear(); // numbers of another log
    outdate();
}

bool UndoActions::isIdle() const {
    return !m_mayWrite || (m_fresh && !m_isStepping && m_presses.empty());
}

void UndoActions::read() {
    m_readSoon.stop();
    if (m_reading || !m_mayWrite)
        return;
    m_reading = true;
    m_outdated = false;
    std::set<int64_t> passed;
    for (const auto& [group, because] : m_passed)
        passed.insert(group);
    auto steps = std::make_shared<history::Steps>();
    m_thread.run(
        this,
        [steps, actor = m_actor, passed](store::MaintainedStore& store) {
            return history::readSteps(store, actor, passed, steps.get());
        },
        [this, steps](const store::Status& status) { answered(status, *steps); });
}

void UndoActions::answered(const store::Status& status, const history::Steps& steps) {
    m_reading = false;
    if (!status.ok()) {
        if (!std::exchange(m_presses, {}).empty())
            emit told(LogError, Text::tr("Отмена: история не прочитана: %1")
                                    .arg(QString::fromStdString(status.text)));
        return; // the next change or key reads anew
    }
    if (m_outdated) {
        if (!m_presses.empty())
            read();
        else
            m_readSoon.start(); // once no more changes come
        return;
    }
    m_steps = steps;
    m_fresh = true;
    show();
    next();
}

void UndoActions::show() {
    const auto showOne = [this](QAction& action, const QString& command,
                                const history::Steps::Step& step) {
        const QString words = withWords(command, m_fresh ? step.words : QString());
        action.setText(menuText(words));
        action.setToolTip(plainToolTip(words));
        action.setEnabled(m_mayWrite && (!m_fresh || step.group != 0));
    };
    showOne(m_undo, Text::tr("Отменить"), m_steps.undo);
    showOne(m_redo, Text::tr("Повторить"), m_steps.redo);
}

void UndoActions::press(bool redo) {
    if (!m_mayWrite || m_presses.size() >= mostPresses)
        return;
    m_presses.push_back(redo);
    next();
}

void UndoActions::next() {
    if (m_presses.empty() || m_isStepping)
        return;
    if (!m_fresh) {
        read();
        return;
    }
    const bool redo = m_presses.front();
    m_presses.pop_front();
    const history::Steps::Step step = redo ? m_steps.redo : m_steps.undo;
    if (step.group == 0) {
        m_presses.clear();
        emit told(LogInformation,
                  redo ? Text::tr("Повторять нечего.") : Text::tr("Отменять нечего."));
        return;
    }
    Reverter::Request request;
    request.title = withWords(redo ? Text::tr("Повторить") : Text::tr("Отменить"), step.words);
    request.done = withWords(redo ? Text::tr("Повторено") : Text::tr("Отменено"), step.words);
    request.selection = {step.group};
    m_isStepping = true;
    if (!m_reverter.start(std::move(request),
                          [this, step](const Reverter::End& end) { finished(step, end); })) {
        m_isStepping = false;
        m_presses.clear();
    }
}

void UndoActions::finished(const history::Steps::Step& step, const Reverter::End& end) {
    using Outcome = Reverter::Outcome;
    assert(m_isStepping);
    m_isStepping = false;
    // Whatever it asked stays unanswered: the next key would ask the same again.
    const bool wasAsked = end.outcome == Outcome::GivenUp && !end.because.empty();
    if (wasAsked)
        emit told(LogInformation,
                  withWords(Text::tr("Оставлено"), step.words) +
                      Text::tr(". Дальше отменяется то, что было раньше; к этому вернёт история."));
    if (wasAsked || end.outcome == Outcome::NothingLeft)
        m_passed[step.group] = end.because;
    if (end.outcome == Outcome::GivenUp || end.outcome == Outcome::Failed)
        m_presses.clear();
    outdate();
    next();
}

} // namespace orvo::app
