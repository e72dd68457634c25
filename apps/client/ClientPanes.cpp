// The panes of the client's window and what its status line tells.
#include "apps/client/Client.h"
#include "apps/client/FileMirror.h"
#include "apps/client/Launcher.h"
#include "apps/client/LogPane.h"
#include "apps/client/MainWindow.h"
#include "apps/client/PresenceView.h"
#include "apps/client/StatusLine.h"
#include "apps/client/UnwrittenPane.h"
#include "apps/client/WindowMemory.h"
#include "apps/client/find/FindCommands.h"
#include "apps/client/find/FindPane.h"
#include "apps/client/find/UsesCommands.h"
#include "apps/client/history/HistoryCommands.h"
#include "apps/client/history/HistoryPane.h"
#include "apps/client/problems/ProblemsPane.h"
#include "frame/Keys.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "platform/store/StoreUrl.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QDockWidget>

#include <algorithm>

namespace orvo::app {

/// Who else is here is good to know and nothing hangs on it: where it cannot be known, nothing is
/// said.
void Client::showPresence() {
    store::Store& store = client::sessionStore(*m_session);
    store::Status status;
    auto presence = store::openPresence(m_options.store.toStdString(), store.login(), &status);
    if (!presence)
        return;
    m_presence = std::make_unique<PresenceView>(std::move(presence), store, m_app, m_modules,
                                                *m_window->statusLine());
    connect(m_pump.get(), &client::NotificationPump::changed, m_presence.get(),
            &PresenceView::changed);
}

void Client::makeHistory() {
    store::Store& store = client::sessionStore(*m_session);
    m_history = std::make_unique<HistoryCommands>(HistoryCommands::Context{
        .open = m_openMaintained,
        .actor = {store.login(), clientName},
        .mayWrite = m_app.m_mayWrite,
        .window = *m_window,
        .guard = *m_guard,
        .app = m_app,
        .session = *m_session,
        .pump = *m_pump,
        .modules = m_modules,
        .openModule = [this](const QString& name) { openFurther({name}); },
    });
}

/// 0 if the store does not tell: a cure is refused then until the next change is heard of.
int64_t Client::logPosition() {
    int64_t position = 0;
    const store::Status status = client::sessionStore(*m_session).logPosition(&position);
    if (!status.ok())
        m_app.log(LogWarning, Text::tr("Проблемы"), QString::fromStdString(status.text));
    return position;
}

void Client::reloadCatalogue() {
    if (!m_catalogue)
        return;
    m_problems->restart(logPosition());
    m_catalogue->reload();
}

/// The rules look at all records there are: not before the editors have theirs.
void Client::makeProblems() {
    constexpr int startAfterMs = 2000;
    m_catalogue = std::make_unique<catalogue::LiveCatalogue>(
        [open = m_openMaintained](store::Status* status) { return open(status); });
    connect(m_pump.get(), &client::NotificationPump::changed, m_catalogue.get(),
            &catalogue::LiveCatalogue::changed);
    m_problems = std::make_unique<ProblemsFeed>(*m_catalogue, m_openMaintained, logPosition());
    m_problemsPane = new ProblemsPane(*m_problems, m_app.m_mayWrite);
    QDockWidget* dock =
        m_window->addPane(m_problemsPane, Text::tr("&Проблемы"), QStringLiteral("problemsDock"),
                          keys::sequences(*keys::command(QLatin1String(keys::problems))).first());
    dock->setWindowTitle(Text::tr("Проблемы"));
    m_window->restoreDockWidget(dock); // as the user left it
    connect(m_pump.get(), &client::NotificationPump::changed, m_problems.get(),
            &ProblemsFeed::changed);
    connect(m_problems.get(), &ProblemsFeed::countChanged, this, [this] {
        m_window->statusLine()->setProblems(m_problems->errors(), m_problems->warnings());
    });
    connect(m_problems.get(), &ProblemsFeed::told, this, [this](int level, const QString& text) {
        m_window->logPane()->add(level, Text::tr("Проблемы"), text);
        if (level > LogInformation)
            m_window->statusLine()->setFailure(text);
        else
            m_window->statusLine()->setDone(text);
    });
    connect(
        m_problems.get(), &ProblemsFeed::reopenNeeded, this,
        [this](const QString& command) {
            reopenModules(Text::tr("Модули открыты заново: показано исправленное."), false,
                          command);
        },
        Qt::QueuedConnection);
    connect(m_window->statusLine(), &StatusLine::problemsRequested, dock,
            [this, dock] { m_window->bringUp(dock); });
    connect(m_problemsPane, &ProblemsPane::showRequested, &m_history->jump(), &RecordJump::show);
    QTimer::singleShot(startAfterMs, m_catalogue.get(), &catalogue::LiveCatalogue::start);
}

/// Searching and what is used where. The search hears of the catalogue before that is loaded.
void Client::makeFind() {
    const QString icons =
        m_app.m_workDir + QLatin1String(mirrorPath) + QLatin1String(iconFolder) + QLatin1Char('/');
    m_find = std::make_unique<FindCommands>(*m_catalogue, *m_window, *m_history, icons);
    if (m_memory)
        m_memory->restorePane(m_find->pane());
    connect(m_pump.get(), &client::NotificationPump::changed, m_find.get(), &FindCommands::changed);
    m_uses =
        std::make_unique<UsesCommands>(*m_catalogue, *m_window, m_app, m_history->jump(), icons);
    connect(m_pump.get(), &client::NotificationPump::changed, m_uses.get(), &UsesCommands::changed);
    connect(m_find.get(), &FindCommands::usesRequested, m_uses.get(),
            [this](const catalogue::Found& found) {
                m_uses->show({found.table, found.key});
            });
    connect(&m_history->pane(), &HistoryPane::usesRequested, m_uses.get(),
            [this](const QString& table, const QString& key, const QString& login) {
                m_uses->show({table, key, login});
            });
    connect(m_problemsPane, &ProblemsPane::usesRequested, m_uses.get(),
            [this](const QString& table, const QString& key) {
                m_uses->show({table, key});
            });
}

/// What is not written has a pane that comes up by itself, now and whenever something is added.
void Client::showUnwritten() {
    QDockWidget* pane = m_window->addPane(
        new UnwrittenPane(*m_unwritten), Text::tr("&Не записано"), QStringLiteral("unwrittenDock"),
        keys::sequences(*keys::command(QLatin1String(keys::unwritten))).first());
    const auto setTitle = [this, pane] {
        const QString title = Text::tr("Не записано");
        const size_t count = m_unwritten->entries().size();
        pane->setWindowTitle(count > 0 ? QStringLiteral("%1 (%2)").arg(title).arg(count) : title);
        if (count > 0)
            return;
        if (pane->isAncestorOf(QApplication::focusWidget()))
            m_window->returnToPage();
        pane->hide();
    };
    const auto raise = [pane] {
        pane->show();
        pane->raise();
    };
    setTitle();
    markUnwritten();
    connect(m_unwritten.get(), &client::UnwrittenList::changed, pane, setTitle);
    connect(m_unwritten.get(), &client::UnwrittenList::changed, this, &Client::markUnwritten);
    connect(m_unwritten.get(), &client::UnwrittenList::added, pane, raise);
    connect(m_unwritten.get(), &client::UnwrittenList::dropped, m_pump.get(),
            &client::NotificationPump::correct);
    connect(m_unwritten.get(), &client::UnwrittenList::told, this, [this](const QString& text) {
        m_window->logPane()->add(LogInformation, Text::tr("Не записано"), text);
    });
    QString error;
    if (!m_unwritten->keepIn(m_options.workDir + QStringLiteral("unwritten"), &error))
        fail(Text::tr("Не записано"), error);
    if (!m_unwritten->isEmpty()) {
        raise();
        fail(Text::tr("С прошлого раза"), m_unwritten->summary());
    }
}

/// A row goes on showing what was typed into it, whether that was written or not.
void Client::markUnwritten() {
    QHash<QString, QString> records;
    for (const client::UnwrittenEntry& entry : m_unwritten->entries())
        for (const client::RecordWrite& record : client::recordsOf(entry.request))
            records[HostApp::markKey(QString::fromStdString(entry.request.table),
                                     QString::fromStdString(record.key))] = entry.words.what;
    m_app.setUnwritten(std::move(records));
    repaintModules();
}

void Client::repaintModules() {
    for (const auto& module : m_modules.modules(client::ModuleState::Running))
        for (QAbstractScrollArea* area : module->findChildren<QAbstractScrollArea*>())
            area->viewport()->update();
}

void Client::showHeld() {
    int most = 0;
    QStringList lines;
    for (const client::NotificationPump::Held& one : m_pump->held()) {
        most = std::max(most, one.changes);
        const char* why =
            one.why == client::Attention::Question ? QT_TRANSLATE_NOOP("orvo", "стоит вопрос")
            : one.why == client::Attention::Picker ? QT_TRANSLATE_NOOP("orvo", "открыт выбор")
            : one.why == client::Attention::Cell
                ? QT_TRANSLATE_NOOP("orvo", "открыта ячейка")
                : QT_TRANSLATE_NOOP("orvo", "правка не сохранена и не отменена");
        lines << QStringLiteral("%1: %2").arg(one.module->windowTitle(), Text::tr(why));
    }
    if (most > 0)
        lines << Text::tr("Изменения других покажутся, когда вы закончите.");
    m_window->statusLine()->setHeld(most, lines.join('\n'));
}

/// Whoever may only look is not to find out with each write.
void Client::tellReadOnly() {
    const QString text =
        Text::tr("Пользователь %1 может здесь только смотреть: изменить ничего нельзя, "
                 "команды, которые меняют хранилище, выключены. Право менять даёт "
                 "администратор; на реплике не меняет никто, пока она не станет главным "
                 "сервером.")
            .arg(QString::fromStdString(client::sessionStore(*m_session).login()));
    m_window->statusLine()->setReadOnly(text);
    m_window->logPane()->add(LogInformation, Text::tr("Клиент"), text);
    // An operator is not there to change anything.
    if (m_options.screenshot.isEmpty() && !isWorkplace())
        m_window->showNotice(text);
}

/// A standby has taken over, or the address leads to one now.
void Client::mayWriteChanged(bool may) {
    m_app.m_mayWrite = may;
    if (m_history)
        m_history->setMayWrite(may);
    if (m_problemsPane)
        m_problemsPane->setMayWrite(may);
    if (!may) { // what is edited stays; a write that is refused is kept as any other
        tellReadOnly();
        return;
    }
    m_window->statusLine()->setReadOnly({});
    const QString text = Text::tr("Сервер теперь принимает изменения.");
    if (isWorkplace()) // nothing is edited there
        m_app.log(LogInformation, Text::tr("Клиент"), text);
    else // the editors learn at their start what they may
        reopenModules(text + Text::tr(" Модули открыты заново."), false);
}

QString Client::lossWords(bool replaced, const QString& outcome) {
    client::listLostWrites(*m_session);
    if (!replaced)
        return Text::tr("Журнал изменений очищен раньше, чем прочитан: %1.").arg(outcome);
    const auto& entries = m_unwritten->entries();
    const bool own = std::any_of(entries.begin(), entries.end(), [](const auto& entry) {
        return entry.state == client::UnwrittenEntry::Lost;
    });
    return Text::tr("Хранилище вернулось к более раннему состоянию, последние изменения "
                    "потеряны: %1%2.")
        .arg(outcome, own ? Text::tr(", ваши потерянные записи — в «Не записано»") : QString());
}

void Client::connectionChanged(bool up, const QString& text) {
    m_window->statusLine()->setConnected(up, text);
    m_mirror->setConnected(up);
    m_launcher->setConnected(up);
    const QString place = Text::tr("Связь");
    if (up) {
        m_unwritten->connectionReturned();
        client::listLostWrites(*m_session);
    }
    store::StoreUrl url;
    const bool isFile = url.parse(m_options.store.toStdString()).ok() && !url.file().empty();
    constexpr int lookMs = 3000;
    if (isFile && isWorkplace() && !up)
        m_lookForStore.start(lookMs);
    if (!up)
        // A server is looked for again by itself; what stands at a path may be another store.
        fail(place, isFile ? text + Text::tr("; запись остановлена. Когда хранилище будет на "
                                             "месте, его откроет «Клиент» — «Открыть модули "
                                             "заново».")
                           : text);
    else if (m_outdated)
        // The editors do not look at results. Opening them again could cost an unfinished edit, so
        // that is left to the user.
        fail(place, Text::tr("восстановлена, но выполнено не всё: «Клиент» — «Открыть модули "
                             "заново» покажет, что сохранено."));
    else
        m_app.log(LogInformation, place, Text::tr("Связь с хранилищем восстановлена."));
}

} // namespace orvo::app
