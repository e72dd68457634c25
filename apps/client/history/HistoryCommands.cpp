#include "apps/client/history/HistoryCommands.h"

#include "apps/client/CloseGuard.h"
#include "apps/client/HostApp.h"
#include "apps/client/LogPane.h"
#include "apps/client/MainWindow.h"
#include "apps/client/StatusLine.h"
#include "apps/client/history/HistoryPane.h"
#include "apps/client/history/VersionsDialog.h"
#include "frame/Keys.h"
#include "frame/Text.h"

#include <QDockWidget>
#include <QMenu>

#include <utility>

namespace orvo::app {

HistoryCommands::HistoryCommands(Context context)
    : m_context(std::move(context))
    , m_thread(m_context.open)
    , m_jump({m_thread, m_context.window, m_context.guard, m_context.pump, m_context.modules,
              m_context.openModule})
    , m_unseen(m_thread, m_context.modules)
    , m_reverter(m_thread, m_context.guard, &m_context.window)
    , m_undo(m_thread, m_reverter, m_context.actor, m_context.mayWrite)
    , m_pane(new HistoryPane(m_thread, QString::fromStdString(m_context.actor.login),
                             m_context.mayWrite)) {
    m_reverter.setCheck([this] { return whyNot(); });
    connectUndo();
    connectPane();
    connect(&m_context.pump, &client::NotificationPump::changed, &m_unseen, &UnseenPlaces::changed);
    connect(&m_unseen, &UnseenPlaces::told, this, [this](const QString& text) {
        m_context.window.logPane()->add(LogWarning, Text::tr("Ресурсы"), text);
        m_context.window.statusLine()->setFailure(text);
    });
}

HistoryCommands::~HistoryCommands() {
    delete m_pane; // it works with the thread
}

void HistoryCommands::setMayWrite(bool may) {
    m_context.mayWrite = may;
    m_undo.setMayWrite(may);
    m_pane->setMayWrite(may);
}

void HistoryCommands::connectUndo() {
    m_context.window.editMenu()->addActions({m_undo.undo(), m_undo.redo()});
    connect(&client::sessionEvents(m_context.session), &client::SessionEvents::written, &m_undo,
            &UndoActions::outdate);
    connect(&m_context.pump, &client::NotificationPump::changed, &m_undo, &UndoActions::changed);
    connect(&m_context.pump, &client::NotificationPump::logLost, &m_undo, &UndoActions::logLost);
    connect(&m_undo, &UndoActions::told, this, &HistoryCommands::tell);
    connect(&m_reverter, &Reverter::told, this, &HistoryCommands::tell);
    connect(&m_reverter, &Reverter::reopenNeeded, &m_context.window, &MainWindow::reopenRequested,
            Qt::QueuedConnection);
    connect(&m_reverter, &Reverter::busyChanged, this, [this](bool busy, const QString& title) {
        const QString text = title + QStringLiteral("…");
        if (busy)
            m_context.window.statusLine()->setDone(text);
        else
            m_context.window.statusLine()->dropDone(text); // unless it was told how it ended
    });
}

void HistoryCommands::connectPane() {
    QDockWidget* dock = m_context.window.addPane(
        m_pane, Text::tr("&История"), QStringLiteral("historyDock"),
        keys::sequences(*keys::command(QLatin1String(keys::history))).first());
    dock->setWindowTitle(Text::tr("История"));
    m_context.window.restoreDockWidget(dock); // as the user left it
    HistoryFeed& feed = m_pane->feed();
    connect(&m_context.pump, &client::NotificationPump::changed, &feed, &HistoryFeed::changed);
    connect(&m_context.pump, &client::NotificationPump::logLost, &feed, &HistoryFeed::reload);
    connect(&m_context.app, &HostApp::historyRequested, this, &HistoryCommands::showHistory);
    connect(&m_context.app, &HostApp::versionsRequested, this, &HistoryCommands::showVersions);
    connect(m_pane, &HistoryPane::showRequested, &m_jump, &RecordJump::show);
    connect(&m_jump, &RecordJump::told, this, &HistoryCommands::tell);
    connect(m_pane, &HistoryPane::revertRequested, this, [this](const Reverter::Request& request) {
        m_reverter.start(request, [this](const Reverter::End&) { m_undo.outdate(); });
    });
}

bool HistoryCommands::isIdle() const {
    return m_undo.isIdle() && !m_reverter.isBusy();
}

/// What is taken back is not to come between a question and its answer.
QString HistoryCommands::whyNot() const {
    if (!m_context.pump.mayDeliver())
        return Text::tr("сначала закончите начатое");
    return m_jump.whyAnswerFirst();
}

void HistoryCommands::tell(int level, const QString& text) {
    m_context.window.logPane()->add(level, Text::tr("Правка"), text);
    if (level > LogInformation)
        m_context.window.statusLine()->setFailure(text);
    else
        m_context.window.statusLine()->setDone(text);
}

void HistoryCommands::showHistory(const QString& table, const QString& key, bool withContent) {
    if (auto* dock = qobject_cast<QDockWidget*>(m_pane->parentWidget()))
        m_context.window.bringUp(dock);
    m_pane->showRecord(table, key, withContent);
}

void HistoryCommands::showActionsOf(const QString& login) {
    if (auto* dock = qobject_cast<QDockWidget*>(m_pane->parentWidget()))
        m_context.window.bringUp(dock);
    m_pane->showUser(login);
}

void HistoryCommands::showVersions(const QString& resource) {
    auto* dialog = new VersionsDialog(m_thread, resource, m_context.mayWrite, &m_context.window);
    connect(dialog, &VersionsDialog::told, this, &HistoryCommands::tell);
    dialog->open();
}

} // namespace orvo::app
