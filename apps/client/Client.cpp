#include "apps/client/Client.h"

#include "apps/client/CloseGuard.h"
#include "apps/client/FileMirror.h"
#include "apps/client/FormViewer.h"
#include "apps/client/Inspector.h"
#include "apps/client/Installation.h"
#include "apps/client/Launcher.h"
#include "apps/client/LogPane.h"
#include "apps/client/LogReading.h"
#include "apps/client/MainWindow.h"
#include "apps/client/ModuleTabs.h"
#include "apps/client/PageDocks.h"
#include "apps/client/PresenceView.h"
#include "apps/client/Screenshot.h"
#include "apps/client/StatusLine.h"
#include "apps/client/WaitCursor.h"
#include "apps/client/WaitDialogController.h"
#include "apps/client/WindowMemory.h"
#include "apps/client/Workplace.h"
#include "apps/client/find/FindCommands.h"
#include "apps/client/find/FindPane.h"
#include "apps/client/find/UsesCommands.h"
#include "apps/client/history/HistoryCommands.h"
#include "apps/client/problems/ProblemsPane.h"
#include "apps/client/start/StorePage.h"
#include "frame/Text.h"

#include <QApplication>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QThread>

namespace orvo::app {

Client::Client(const Options& options) : m_options(options) {}

Client::~Client() {
    stop();
}

bool Client::openWorkDir(QString* error) {
    const QFileInfo directory(m_options.workDir);
    if (QDir().mkpath(m_options.workDir) && directory.isDir() && directory.isWritable())
        return true;
    *error = Text::tr("Рабочий каталог %1 не создан или закрыт для записи.").arg(m_options.workDir);
    return false;
}

bool Client::open(QString* error) {
    store::Status status;
    store::OpenOptions how;
    how.login = m_options.login.toStdString();
    how.allowReadOnly = true;
    how.client = clientName;
    auto store = store::open(m_options.store.toStdString(), how, &status);
    auto reader = store ? store::open(m_options.store.toStdString(), how, &status) : nullptr;
    if (reader)
        m_session = client::makeSession(std::move(store), &status);
    if (!m_session) {
        *error = QString::fromStdString(status.text);
        *error += adviceOnMissingStore(m_options);
        return false;
    }
    if (!openWorkDir(error))
        return false;
    m_libraries.load(installation::moduleDirectory(), m_options.moduleDirs);
    if (m_libraries.isEmpty()) {
        *error = m_libraries.problems().join(QLatin1Char(' '));
        return false;
    }
    m_unwritten = std::make_unique<client::UnwrittenList>(client::sessionStore(*m_session));
    client::setUnwritten(*m_session, m_unwritten.get());
    m_app.m_session = m_session.get();
    m_app.m_workDir = m_options.workDir;
    m_app.m_mayWrite = client::sessionStore(*m_session).mayWrite();
    m_logModule = std::make_unique<COrvoCliMod>(&m_app);
    m_app.m_logModule = m_logModule.get();
    m_mirror = std::make_unique<FileMirror>(
        [url = m_options.store.toStdString(), how](store::Status* why) {
            return store::open(url, how, why);
        },
        m_options.workDir, MirrorPace(), isWorkplace() ? MirrorExtent::Icons : MirrorExtent::All);
    m_openMaintained = [url = m_options.store.toStdString(), how](store::Status* why) {
        return store::openMaintained(url, how, why);
    };
    m_pump = std::make_unique<client::NotificationPump>(*m_session, m_modules, std::move(reader));
    m_waitDialog = std::make_unique<WaitDialogController>(
        QString::fromStdString(client::sessionStore(*m_session).displayName()),
        QCoreApplication::applicationFilePath());
    m_waitPolicy = std::make_unique<store::WaitPolicyScope>(m_waitDialog.get());
    return m_options.inspect.isEmpty() || openInspector(error);
}

bool Client::openInspector(QString* error) {
    Inspector::Sources sources;
    sources.modules = [this] {
        std::vector<QObject*> modules;
        for (const auto& module : m_modules.modules(client::ModuleState::Running))
            modules.push_back(module);
        return modules;
    };
    sources.state = [this]() -> QJsonObject {
        return {
            {"settled", settled()},
            {"mayDeliver", m_pump && m_pump->mayDeliver()},
            {"loopLevel", QThread::currentThread()->loopLevel()},
            {"running", static_cast<int>(m_modules.modules(client::ModuleState::Running).size())},
            {"opened", m_launcher ? m_launcher->count() : 0},
            {"connection", m_window ? m_window->statusLine()->connection() : QString()},
            {"failure", m_window ? m_window->statusLine()->failure() : QString()},
            {"held", m_window ? m_window->statusLine()->held() : QString()},
            {"others", m_window ? m_window->statusLine()->others() : QString()},
            {"marks", m_app.markedRecords().join(QLatin1Char('\n'))},
            {"historySettled", m_history && m_history->isIdle()},
            {"problems", m_window ? m_window->statusLine()->problems() : QString()},
            {"problemsKnown", m_problems && m_problems->isKnown()}};
    };
    m_inspector = std::make_unique<Inspector>(std::move(sources));
    return m_inspector->listen(m_options.inspect, error);
}

void Client::show() {
    store::Store& store = client::sessionStore(*m_session);
    m_window = std::make_unique<MainWindow>(QString::fromStdString(store.displayName()),
                                            QString::fromStdString(store.login()));
    m_guard = std::make_unique<CloseGuard>();
    int tab = 0;
    if (isWorkplace())
        m_window->becomeWorkplace();
    if (m_options.isKiosk) {
        m_window->becomeKiosk();
    } else if (!m_options.screenshot.isEmpty()) {
        m_window->becomePicture(); // the same for everybody
    } else {
        const QString kind = isWorkplace() ? QStringLiteral("desktop ") : QString();
        m_memory =
            std::make_unique<WindowMemory>(kind + QString::fromStdString(store.displayName()),
                                           QString::fromStdString(store.login()));
        tab = m_memory->restoreWindow(*m_window);
        connect(m_window.get(), &MainWindow::paneAdded, this,
                [this](const QDockWidget* pane) { m_memory->restorePane(*pane); });
    }
    addOpenEdits();
    connectAll();
    openForOperators();
    showUnwritten();
    if (!isWorkplace()) { // nothing is edited there
        makeHistory();
        makeProblems();
        makeFind();
    }
    m_window->show();
    for (const QString& problem : m_libraries.problems())
        fail(Text::tr("Модули"), problem);
    QString error;
    if (!m_mirror->start(&error))
        fail(Text::tr("Файловая область"), error);
    m_window->statusLine()->setBusy(Text::tr("Открываются модули: читаются таблицы…"));
    m_window->paintNow();
    openModules();
    m_window->statusLine()->setBusy({});
    if (isWorkplace())
        m_workplace->open(m_options.desktop);
    else
        m_workplace->openRemembered();
    if (m_memory)
        m_window->pageDocks().restore(m_memory->editorsOut());
    m_window->tabs()->setCurrentIndex(tab);
    if (!isWorkplace())
        m_window->focusPage();
    m_pump->start();
    if (!isWorkplace())
        showPresence();
    if (!m_app.m_mayWrite)
        tellReadOnly();
}

/// What the menus of operators need: somebody who opens what they name, and a place for them.
void Client::openForOperators() {
    store::Store& store = client::sessionStore(*m_session);
    m_launcher = std::make_unique<Launcher>(
        Launcher::Context{store,
                          m_libraries,
                          m_app,
                          m_modules,
                          *m_window,
                          *m_guard,
                          {QCoreApplication::applicationFilePath(), m_options.store,
                           m_options.login, m_options.workDir, m_options.moduleDirs},
                          installation::formViewProgram()});
    connect(&m_app, &HostApp::launchRequested, m_launcher.get(), &Launcher::launch);
    connect(&m_app, &HostApp::launchChecked, m_launcher.get(), &Launcher::check);
    connect(&m_app, &HostApp::logRequested, this,
            [&store](LogRequest* request) { readLastChanges(store, request); });
    connect(&m_app, &HostApp::handbookRequested, m_window.get(), [this](HandbookRequest* request) {
        request->refusal.clear();
        m_window->showHandbook(request->page, request->chapter, &request->refusal);
    });
    connect(m_launcher.get(), &Launcher::problem, this,
            [this](const QString& place, const QString& text) {
                fail(place, text);
                m_workplace->tell(text);
            });
    connect(m_launcher.get(), &Launcher::logged, &m_app, &HostApp::logged);
    connect(m_pump.get(), &client::NotificationPump::changed, m_launcher.get(), &Launcher::changed);
    m_workplace = std::make_unique<Workplace>(
        Workplace::Context{store, m_libraries, m_app, m_modules, *m_window, m_memory.get()});
    connect(m_workplace.get(), &Workplace::problem, this, &Client::fail);
    connect(&m_app, &HostApp::previewRequested, m_workplace.get(), &Workplace::togglePreview);
    connect(&m_app, &HostApp::previewEdited, m_workplace.get(), &Workplace::followPreview);
    connect(&m_lookForStore, &QTimer::timeout, this, &Client::lookForStore);
}

void Client::connectAll() {
    connect(&m_app, &HostApp::logged, m_window.get(),
            [this](int level, const QString& place, const QString& text) {
                m_window->logPane()->add(level, place, text);
                // What a module could not do shows until it is seen: the module itself is silent.
                if (level >= LogError)
                    m_window->statusLine()->setFailure(text);
            });
    connect(&m_app, &HostApp::titleChanged, m_window.get(), &MainWindow::setTitle);
    connect(&m_app, &HostApp::formRequested, this, &Client::openForm);
    connect(&client::sessionEvents(*m_session), &client::SessionEvents::failed, this,
            [this](const client::Failure& failure) {
                m_outdated = m_outdated || failure.code == store::ConnectionBroken ||
                             failure.code == store::CannotConnect || failure.code == store::Timeout;
                fail(failure.operation, failure.text.isEmpty()
                                            ? Text::tr("Ошибка %1").arg(failure.code)
                                            : failure.text);
            });
    connect(m_mirror.get(), &FileMirror::problem, this,
            [this](const QString& text) { fail(Text::tr("Файловая область"), text); });
    connect(m_mirror.get(), &FileMirror::progress, m_window->statusLine(), &StatusLine::setCopying);
    // The editors paint icons from their files, which have just changed.
    connect(m_mirror.get(), &FileMirror::updated, this, &Client::repaintModules);
    connect(m_pump.get(), &client::NotificationPump::changed, m_mirror.get(), &FileMirror::changed);
    connect(m_pump.get(), &client::NotificationPump::connectionChanged, this,
            &Client::connectionChanged);
    connect(m_pump.get(), &client::NotificationPump::mayWriteChanged, this,
            &Client::mayWriteChanged, Qt::QueuedConnection); // outside of the pump's step
    connect(
        m_pump.get(), &client::NotificationPump::logLost, this,
        [this](bool replaced) {
            const QString what = lossWords(replaced, Text::tr("модули открыты заново"));
            if (replaced)
                fail(Text::tr("Хранилище"), what);
            reopenModules(what, true);
        },
        Qt::QueuedConnection); // outside of the pump's step
    connect(m_pump.get(), &client::NotificationPump::logLossHeld, this, [this](bool replaced) {
        fail(Text::tr("Хранилище"),
             lossWords(replaced, Text::tr("показанное устарело, модули откроются заново, "
                                          "когда вы закончите правку")));
    });
    connect(m_window.get(), &MainWindow::reopenRequested, this, [this](const QString& command) {
        reopenModules(Text::tr("Модули открыты заново."), false, command);
    });
    connect(m_window.get(), &MainWindow::storeRequested, this, [this] {
        QStringList arguments{QStringLiteral("--login"), m_options.login};
        for (const QString& dir : m_options.moduleDirs)
            arguments << QStringLiteral("--modules") << dir;
        openFurtherStore(ownStore(), m_options.login, m_window.get(), arguments,
                         [this](const QString& why) {
                             fail(Text::tr("Хранилище"), Text::tr("Окно не открыто: %1").arg(why));
                         });
    });
    connect(m_window.get(), &MainWindow::closing, this, [this] {
        rememberModules();
        if (m_memory)
            m_memory->saveWindow(*m_window, m_window->tabs()->currentIndex(),
                                 m_window->pageDocks().editors());
        if (m_memory && m_find)
            m_memory->savePane(m_find->pane());
        stop();
    });
    m_window->setCloseCheck([this] {
        m_leaving = true;
        return m_guard->mayGo(m_window.get(), Text::tr("Выход"),
                              {[this] { m_window->closeNow(); }, [this] { m_leaving = false; }});
    });
    connect(m_pump.get(), &client::NotificationPump::heldChanged, this, &Client::showHeld);
    connect(m_window.get(), &MainWindow::followsOthersChanged, this, [this](bool on) {
        for (const auto& module : m_modules.modules(client::ModuleState::Running))
            module->setFollowsOthers(on);
    });
}

void Client::openForm(const QString& request) {
    const WaitCursor wait;
    QString error;
    FormWindow* form =
        app::openForm(client::sessionStore(*m_session), request, m_window.get(), &error);
    if (form) {
        connect(form, &FormWindow::problem, this,
                [this](const QString& text) { fail(Text::tr("Форма"), text); });
        m_window->tabs()->addPage(form, form->windowTitle());
        m_window->showPage(form);
    } else {
        m_window->logPane()->add(LogError, Text::tr("Клиент"), error);
        m_window->showError(error);
    }
}

void Client::fail(const QString& place, const QString& text) {
    if (!m_window)
        return;
    m_window->logPane()->add(LogError, place, text);
    m_window->statusLine()->setFailure(QStringLiteral("%1: %2").arg(place, text));
}

void Client::stop() {
    m_presence.reset();
    m_find.reset();
    m_uses.reset();
    delete std::exchange(m_problemsPane, nullptr); // it works with the next
    m_problems.reset();
    m_catalogue.reset();
    m_history.reset();
    m_workplace.reset();
    m_launcher.reset();
    m_lookForStore.stop();
    m_pump.reset(); // no notification from here on
    m_modules.stopAll();
}

bool Client::settled() const {
    return m_pump && m_pump->isIdle() && m_mirror->isIdle() &&
           m_modules.modules(client::ModuleState::Loaded).empty();
}

void Client::takeScreenshot() {
    const int asked = m_options.modules.size();
    m_screenshot = std::make_unique<Screenshot>(Screenshot::Context{
        *m_window, m_modules, asked, m_options.screenshot, [this] { return settled(); }});
}

} // namespace orvo::app
