#include "apps/client/HistoryCommands.h"

#include "apps/client/CloseGuard.h"
#include "apps/client/HistoryPane.h"
#include "apps/client/HostApp.h"
#include "apps/client/LogPane.h"
#include "apps/client/MainWindow.h"
#include "apps/client/Options.h"
#include "apps/client/StatusLine.h"
#include "apps/client/VersionsDialog.h"
#include "frame/Keys.h"
#include "frame/Vocabulary.h"
#include "platform/client/Attention.h"

#include <QDockWidget>
#include <QMenu>

#include <utility>

namespace orvo::app {

HistoryCommands::HistoryCommands(Context context)
    : m_context(std::move(context))
    , m_thread(m_context.open)
    , m_reverter(m_thread, m_context.guard, &m_context.window)
    , m_undo(m_thread, m_reverter, m_context.actor, m_context.mayWrite)
    , m_pane(new HistoryPane(m_thread, QString::fromStdString(m_context.actor.login),
                             m_context.mayWrite)) {
    m_reverter.setCheck([this] { return whyNot(); });
    connectUndo();
    connectPane();
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
        if (busy)
            m_context.window.statusLine()->setDone(title + QStringLiteral("…"));
    });
}

void HistoryCommands::connectPane() {
    QDockWidget* dock = m_context.window.addPane(
        m_pane, QStringLiteral("&История"), QStringLiteral("historyDock"),
        keys::sequences(*keys::command(QLatin1String(keys::history))).first());
    dock->setWindowTitle(QStringLiteral("История"));
    m_context.window.restoreDockWidget(dock); // as the user left it
    HistoryFeed& feed = m_pane->feed();
    connect(&m_context.pump, &client::NotificationPump::changed, &feed, &HistoryFeed::changed);
    connect(&m_context.pump, &client::NotificationPump::logLost, &feed, &HistoryFeed::reload);
    connect(&m_context.app, &HostApp::historyRequested, this, &HistoryCommands::showHistory);
    connect(&m_context.app, &HostApp::versionsRequested, this, &HistoryCommands::showVersions);
    connect(m_pane, &HistoryPane::showRequested, this, &HistoryCommands::showRecord);
    connect(m_pane, &HistoryPane::revertRequested, this, [this](const Reverter::Request& request) {
        m_reverter.start(request, [this](Reverter::Outcome) { m_undo.outdate(); });
    });
}

bool HistoryCommands::isIdle() const {
    return m_undo.isIdle() && !m_reverter.isBusy();
}

/// What is taken back is not to come between a question and its answer.
QString HistoryCommands::whyNot() const {
    if (!m_context.pump.mayDeliver())
        return QStringLiteral("сначала закончите начатое");
    return whyAnswerFirst();
}

QString HistoryCommands::whyAnswerFirst() const {
    for (const QPointer<COrvoCliMod>& module :
         m_context.modules.modules(client::ModuleState::Running)) {
        const client::Attention attention = client::attentionIn(*module);
        if (attention == client::Attention::Question || attention == client::Attention::Picker)
            return QStringLiteral("сначала ответьте на вопрос: %1").arg(module->windowTitle());
    }
    return {};
}

void HistoryCommands::tell(int level, const QString& text) {
    m_context.window.logPane()->add(level, QStringLiteral("Правка"), text);
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

void HistoryCommands::showVersions(const QString& resource) {
    auto* dialog = new VersionsDialog(m_thread, resource, m_context.mayWrite, &m_context.window);
    connect(dialog, &VersionsDialog::told, this, &HistoryCommands::tell);
    dialog->open();
}

/// A row that becomes current under a question or a picker would get the answer. The record may
/// have gone since, and an element may stand in another menu now.
void HistoryCommands::showRecord(const QString& table, const QString& key, const QString& desktop) {
    if (refusesToShow())
        return;
    struct Found {
        bool stored = false;
        std::string desktop;
    };
    auto found = std::make_shared<Found>();
    m_thread.run(
        this,
        [found, name = table.toStdString(),
         wanted = key.toStdString()](store::MaintainedStore& store) {
            const store::TableDef* def = history::tableOf(name);
            std::map<std::string, std::vector<store::Value>> rows;
            store::Status status =
                def ? store.storedValues(*def, {wanted}, &rows) : store::Status();
            found->stored = !rows.empty();
            const int field = def ? def->find(orvo::field::FolderKey) : -1;
            if (found->stored && field >= 0)
                found->desktop = store::textOf(rows.begin()->second[static_cast<size_t>(field)]);
            return status;
        },
        [this, found, table, key, desktop](const store::Status& status) {
            if (!status.ok() || !found->stored) {
                tell(LogWarning, status.ok() ? QStringLiteral("Показать нечего: строки больше нет.")
                                             : QString::fromStdString(status.text));
                return;
            }
            if (refusesToShow())
                return; // what the guard saves would take the place of a question
            const QString where =
                found->desktop.empty() ? desktop : QString::fromStdString(found->desktop);
            const auto go = [this, table, key, where] {
                m_context.guard.dropAll();
                showRecordNow(table, key, where);
            };
            if (m_context.guard.mayGo(&m_context.window, QStringLiteral("Показать строку"),
                                      {go, {}}))
                go();
        });
}

bool HistoryCommands::refusesToShow() {
    const QString why = whyAnswerFirst();
    if (!why.isEmpty())
        tell(LogWarning, QStringLiteral("Строка не показана: ") + why);
    return !why.isEmpty();
}

void HistoryCommands::showRecordNow(const QString& table, const QString& key,
                                    const QString& desktop) {
    if (refusesToShow())
        return;
    // Not while a slot of a module waits in a dialog or a menu.
    if (!m_context.pump.mayDeliver()) {
        QTimer::singleShot(100, this,
                           [this, table, key, desktop] { showRecordNow(table, key, desktop); });
        return;
    }
    const bool isMenu = table == QLatin1String(orvo::table::Menu) ||
                        table == QLatin1String(orvo::table::MenuFolder);
    const QString name = isMenu ? knownModules().first() : knownModules().last();
    m_context.openModule(name);
    for (const QPointer<COrvoCliMod>& module :
         m_context.modules.modules(client::ModuleState::Running))
        if (module->m_moduleName == name && module->ModShowRecord(table, key, desktop))
            return;
    tell(LogWarning, QStringLiteral("Строка есть в хранилище, но в редакторе не видна."));
}

} // namespace orvo::app
