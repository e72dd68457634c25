#include "apps/client/Client.h"

#include "apps/client/CloseGuard.h"
#include "apps/client/FileMirror.h"
#include "apps/client/FormViewer.h"
#include "apps/client/HistoryCommands.h"
#include "apps/client/Inspector.h"
#include "apps/client/Installation.h"
#include "apps/client/Launcher.h"
#include "apps/client/LogPane.h"
#include "apps/client/LogReading.h"
#include "apps/client/MainWindow.h"
#include "apps/client/PresenceView.h"
#include "apps/client/Showcase.h"
#include "apps/client/StatusLine.h"
#include "apps/client/UnwrittenPane.h"
#include "apps/client/WaitDialogController.h"
#include "apps/client/WindowMemory.h"
#include "apps/client/Workplace.h"
#include "platform/store/StoreUrl.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QDir>
#include <QDockWidget>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QRegularExpression>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cstdio>

namespace orvo::app {

namespace {

constexpr char clientName[] = "orvo-client"; ///< in the change log

/// Shows that something takes its time, while it lives.
struct WaitCursor {
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

/// How to make a store that is missing, if the command that is named would do it.
QString adviceOnMissingStore(const Options& options) {
    store::StoreUrl url;
    if (!url.parse(options.store.toStdString()).ok() || url.file().empty())
        return {};
    const QFileInfo file(QString::fromStdString(url.file()));
    if (file.exists())
        return {};
    if (options.isDefaultStore)
        return QStringLiteral("; новое хранилище делает orvo-admin init");
    if (!file.dir().exists())
        return QStringLiteral("; каталога %1 нет").arg(file.path());
    QString place = QString::fromStdString(url.isPath() ? url.file() : url.displayName());
    if (place.contains(QRegularExpression(QStringLiteral("[^\\w./:@%+=-]"))))
        place = QLatin1Char('\'') + place.replace(QLatin1Char('\''), QLatin1String("'\\''")) +
                QLatin1Char('\'');
    return QStringLiteral("; новое хранилище делает orvo-admin --store %1 init").arg(place);
}

} // namespace

Client::Client(const Options& options) : m_options(options) {}

Client::~Client() {
    stop();
}

bool Client::openWorkDir(QString* error) {
    const QFileInfo directory(m_options.workDir);
    if (QDir().mkpath(m_options.workDir) && directory.isDir() && directory.isWritable())
        return true;
    *error = QStringLiteral("Рабочий каталог %1 не создан или закрыт для записи.")
                 .arg(m_options.workDir);
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
            {"historySettled", m_history && m_history->isIdle()}};
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
    if (m_options.isKiosk)
        m_window->becomeKiosk();
    else if (m_options.screenshot.isEmpty()) { // pictures are the same for everybody
        const QString kind = isWorkplace() ? QStringLiteral("desktop ") : QString();
        m_memory =
            std::make_unique<WindowMemory>(kind + QString::fromStdString(store.displayName()),
                                           QString::fromStdString(store.login()));
        tab = m_memory->restoreWindow(*m_window);
    }
    addOpenEdits();
    connectAll();
    openForOperators();
    showUnwritten();
    if (!isWorkplace()) // nothing is edited there
        makeHistory();
    m_window->show();
    for (const QString& problem : m_libraries.problems())
        fail(QStringLiteral("Модули"), problem);
    QString error;
    if (!m_mirror->start(&error))
        fail(QStringLiteral("Файловая область"), error);
    openModules();
    if (isWorkplace())
        m_workplace->open(m_options.desktop);
    else
        m_workplace->openRemembered();
    m_window->setCurrentModule(tab);
    m_pump->start();
    if (!isWorkplace())
        showPresence();
    if (!m_app.m_mayWrite)
        tellReadOnly();
}

/// Whoever may only look is not to find out with each write.
void Client::tellReadOnly() {
    const QString text =
        QStringLiteral("Пользователь %1 может здесь только смотреть: изменить ничего нельзя, "
                       "команды, которые меняют хранилище, выключены. Право менять даёт "
                       "администратор; на реплике не меняет никто, пока она не станет главным "
                       "сервером.")
            .arg(QString::fromStdString(client::sessionStore(*m_session).login()));
    m_window->statusLine()->setReadOnly(text);
    m_window->logPane()->add(LogInformation, QStringLiteral("Клиент"), text);
    // An operator is not there to change anything.
    if (m_options.screenshot.isEmpty() && !isWorkplace())
        m_window->showNotice(text);
}

/// A standby has taken over, or the address leads to one now.
void Client::mayWriteChanged(bool may) {
    m_app.m_mayWrite = may;
    if (m_history)
        m_history->setMayWrite(may);
    if (!may) { // what is edited stays; a write that is refused is kept as any other
        tellReadOnly();
        return;
    }
    m_window->statusLine()->setReadOnly({});
    const QString text = QStringLiteral("Сервер теперь принимает изменения.");
    if (isWorkplace()) // nothing is edited there
        m_app.log(LogInformation, QStringLiteral("Клиент"), text);
    else // the editors learn at their start what they may
        reopenModules(text + QStringLiteral(" Модули открыты заново."), false);
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
    connect(&m_app, &HostApp::previewRequested, m_workplace.get(), &Workplace::openPreview);
    connect(&m_app, &HostApp::previewEdited, m_workplace.get(), &Workplace::followPreview);
    connect(&m_lookForStore, &QTimer::timeout, this, &Client::lookForStore);
}

/// In a workplace nobody opens the modules anew by hand once a file is back at its place.
void Client::lookForStore() {
    if (m_pump && m_pump->mayDeliver() && client::sessionStore(*m_session).reopen().ok()) {
        m_lookForStore.stop();
        reopenModules(QStringLiteral("Хранилище снова на месте."), false);
    }
}

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
                                            ? QStringLiteral("Ошибка %1").arg(failure.code)
                                            : failure.text);
            });
    connect(m_mirror.get(), &FileMirror::problem, this,
            [this](const QString& text) { fail(QStringLiteral("Файловая область"), text); });
    connect(m_mirror.get(), &FileMirror::progress, m_window->statusLine(), &StatusLine::setCopying);
    // The editors paint icons from their files, which have just changed.
    connect(m_mirror.get(), &FileMirror::updated, this, [this] {
        for (const auto& module : m_modules.modules(client::ModuleState::Running))
            for (QAbstractScrollArea* area : module->findChildren<QAbstractScrollArea*>())
                area->viewport()->update();
    });
    connect(m_pump.get(), &client::NotificationPump::changed, m_mirror.get(), &FileMirror::changed);
    connect(m_pump.get(), &client::NotificationPump::connectionChanged, this,
            &Client::connectionChanged);
    connect(m_pump.get(), &client::NotificationPump::mayWriteChanged, this,
            &Client::mayWriteChanged, Qt::QueuedConnection); // outside of the pump's step
    connect(
        m_pump.get(), &client::NotificationPump::logLost, this,
        [this](bool replaced) {
            const QString what = lossWords(replaced, QStringLiteral("модули открыты заново"));
            if (replaced)
                fail(QStringLiteral("Хранилище"), what);
            reopenModules(what, true);
        },
        Qt::QueuedConnection); // outside of the pump's step
    connect(m_pump.get(), &client::NotificationPump::logLossHeld, this, [this](bool replaced) {
        fail(QStringLiteral("Хранилище"),
             lossWords(replaced, QStringLiteral("показанное устарело, модули откроются заново, "
                                                "когда вы закончите правку")));
    });
    connect(m_window.get(), &MainWindow::reopenRequested, this,
            [this] { reopenModules(QStringLiteral("Модули открыты заново."), false); });
    connect(m_window.get(), &MainWindow::closing, this, [this] {
        rememberModules();
        if (m_memory)
            m_memory->saveWindow(*m_window, m_window->currentModule());
        stop();
    });
    m_window->setCloseCheck([this] {
        m_leaving = true;
        return m_guard->mayGo(m_window.get(), QStringLiteral("Выход"),
                              {[this] { m_window->closeNow(); }, [this] { m_leaving = false; }});
    });
    connect(m_pump.get(), &client::NotificationPump::heldChanged, this, &Client::showHeld);
    connect(m_window.get(), &MainWindow::followsOthersChanged, this, [this](bool on) {
        for (const auto& module : m_modules.modules(client::ModuleState::Running))
            module->setFollowsOthers(on);
    });
}

void Client::addOpenEdits() {
    m_guard->addSource([this] {
        std::vector<CloseGuard::Unsaved> all;
        for (const QPointer<COrvoCliMod>& module :
             m_modules.modules(client::ModuleState::Running)) {
            const QString edit = module->ModEditText();
            if (edit.isEmpty())
                continue;
            all.push_back({QStringLiteral("%1: %2").arg(module->windowTitle(), edit),
                           [this, module] {
                               // The module does not look at results; the session tells of them.
                               bool stored = true;
                               const auto watch = connect(&client::sessionEvents(*m_session),
                                                          &client::SessionEvents::failed, this,
                                                          [&] { stored = false; });
                               const bool closed = !module || module->ModEditSave();
                               disconnect(watch);
                               return closed && stored;
                           },
                           [module] {
                               if (module)
                                   module->ModEditCancel();
                           },
                           module.data()});
        }
        return all;
    });
    // What is not written outlives the modules and the process; the user should know of it when he
    // goes.
    m_guard->addSource([this]() -> std::vector<CloseGuard::Unsaved> {
        if (!m_leaving || m_unwritten->isEmpty())
            return {};
        return {{m_unwritten->summary(), [this] {
                     m_unwritten->repeatAll();
                     return m_unwritten->isEmpty(); // what two have changed is to be chosen
                 }}};
    });
}

void Client::showHeld() {
    int most = 0;
    QStringList lines;
    for (const client::NotificationPump::Held& one : m_pump->held()) {
        most = std::max(most, one.changes);
        const char* why = one.why == client::Attention::Question ? "стоит вопрос"
                          : one.why == client::Attention::Picker ? "открыт выбор"
                          : one.why == client::Attention::Cell
                              ? "открыта ячейка"
                              : "правка не сохранена и не отменена";
        lines << QStringLiteral("%1: %2").arg(one.module->windowTitle(), QString::fromUtf8(why));
    }
    if (most > 0)
        lines << QStringLiteral("Изменения других покажутся, когда вы закончите.");
    m_window->statusLine()->setHeld(most, lines.join('\n'));
}

/// What is not written has a pane that comes up by itself, now and whenever something is added.
void Client::showUnwritten() {
    QDockWidget* pane =
        m_window->addPane(new UnwrittenPane(*m_unwritten), {}, QStringLiteral("unwrittenDock"));
    const auto setTitle = [this, pane] {
        const QString title = QStringLiteral("Не записано");
        const size_t count = m_unwritten->entries().size();
        pane->setWindowTitle(count > 0 ? QStringLiteral("%1 (%2)").arg(title).arg(count) : title);
        if (count == 0)
            pane->hide();
    };
    const auto raise = [pane] {
        pane->show();
        pane->raise();
    };
    setTitle();
    connect(m_unwritten.get(), &client::UnwrittenList::changed, pane, setTitle);
    connect(m_unwritten.get(), &client::UnwrittenList::added, pane, raise);
    connect(m_unwritten.get(), &client::UnwrittenList::dropped, m_pump.get(),
            &client::NotificationPump::correct);
    connect(m_unwritten.get(), &client::UnwrittenList::told, this, [this](const QString& text) {
        m_window->logPane()->add(LogInformation, QStringLiteral("Не записано"), text);
    });
    QString error;
    if (!m_unwritten->keepIn(m_options.workDir + QStringLiteral("unwritten"), &error))
        fail(QStringLiteral("Не записано"), error);
    if (!m_unwritten->isEmpty()) {
        raise();
        fail(QStringLiteral("С прошлого раза"), m_unwritten->summary());
    }
}

QString Client::lossWords(bool replaced, const QString& outcome) {
    client::listLostWrites(*m_session);
    if (!replaced)
        return QStringLiteral("Журнал изменений очищен раньше, чем прочитан: %1.").arg(outcome);
    const auto& entries = m_unwritten->entries();
    const bool own = std::any_of(entries.begin(), entries.end(), [](const auto& entry) {
        return entry.state == client::UnwrittenEntry::Lost;
    });
    return QStringLiteral("Хранилище вернулось к более раннему состоянию, последние изменения "
                          "потеряны: %1%2.")
        .arg(outcome,
             own ? QStringLiteral(", ваши потерянные записи — в «Не записано»") : QString());
}

void Client::connectionChanged(bool up, const QString& text) {
    m_window->statusLine()->setConnected(up, text);
    m_mirror->setConnected(up);
    m_launcher->setConnected(up);
    const QString place = QStringLiteral("Связь");
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
        fail(place, isFile ? text + QStringLiteral("; запись остановлена. Когда хранилище будет на "
                                                   "месте, его откроет «Клиент» — «Открыть модули "
                                                   "заново».")
                           : text);
    else if (m_outdated)
        // The editors do not look at results. Opening them anew could cost an unfinished edit, so
        // that is left to the user.
        fail(place, QStringLiteral("восстановлена, но выполнено не всё: «Клиент» — «Открыть модули "
                                   "заново» покажет, что сохранено."));
    else
        m_app.log(LogInformation, place, QStringLiteral("Связь с хранилищем восстановлена."));
}

void Client::openModules() {
    for (const QString& name : m_options.modules)
        openModule(name);
}

void Client::openModule(const QString& name) {
    const WaitCursor wait;
    COrvoCliMod* module = m_libraries.create(&m_app, name);
    if (!module) {
        fail(name, QStringLiteral("Ни одна библиотека модулей не знает модуля «%1».").arg(name));
        return;
    }
    m_modules.add(module, name);
    module->setFollowsOthers(m_window->followsOthers());
    m_window->addModule(module, name);
    if (!m_modules.start(module))
        fail(name, QStringLiteral("Модуль не запущен; причина в журнале. «Клиент» — "
                                  "«Открыть модули заново» повторит попытку."));
    else if (m_memory)
        m_memory->restoreModule(name, *module);
}

/// How the user left the modules, for when they are opened again.
void Client::rememberModules() {
    if (!m_memory)
        return;
    for (const QPointer<COrvoCliMod>& module : m_modules.modules(client::ModuleState::Running))
        if (m_options.modules.contains(module->m_moduleName))
            m_memory->saveModule(module->m_moduleName, *module);
    m_workplace->rememberDesk();
}

void Client::openFurther(const QStringList& modules) {
    if (!m_pump)
        return;
    m_window->bringForward();
    // Not while a slot of a module waits in a dialog or a menu.
    if (!m_pump->mayDeliver()) {
        if (!modules.isEmpty())
            QTimer::singleShot(100, this, [this, modules] { openFurther(modules); });
        return;
    }
    for (const QString& name : modules)
        if (!m_options.modules.contains(name)) {
            m_options.modules << name;
            openModule(name);
        }
    if (!modules.isEmpty())
        m_window->setCurrentModule(modules.first());
}

void Client::reopenModules(const QString& why, bool must) {
    if (!m_pump)
        return;
    // Not while a slot of a module waits in a dialog or a menu.
    if (!m_pump->mayDeliver()) {
        QTimer::singleShot(100, this, [this, why, must] { reopenModules(why, must); });
        return;
    }
    CloseGuard::Answers answers{[this, why] { reopenNow(why); }, {}};
    if (must)
        answers.stay = [this, why] { reopenWhenClean(why); };
    if (m_guard->mayGo(m_window.get(), QStringLiteral("Открыть модули заново"), answers))
        reopenNow(why);
}

/// The modules no longer follow the store; the user goes on with his edit all the same.
void Client::reopenWhenClean(const QString& why) {
    constexpr int lookMs = 500;
    if (m_guard->isClean())
        reopenModules(why, true);
    else
        QTimer::singleShot(lookMs, this, [this, why] { reopenWhenClean(why); });
}

void Client::reopenNow(const QString& why) {
    if (!m_pump)
        return;
    // A store that is not there any more is not to take the modules with it: what they show is what
    // is left of it.
    if (const store::Status status = client::sessionStore(*m_session).reopen(); !status.ok()) {
        fail(QStringLiteral("Связь"), QString::fromStdString(status.text));
        return;
    }
    m_outdated = false;
    const MainWindow::Tabs tabs = m_window->tabs();
    rememberModules();
    m_launcher->rememberModules();
    m_launcher->setConnected(true);
    m_modules.stopAll();
    m_pump->restart(); // the new place in the log comes before the new tables
    openModules();
    m_workplace->reopen();
    m_launcher->reopenModules();
    m_window->arrangeTabs(tabs);
    m_mirror->refresh();
    m_app.log(LogWarning, QStringLiteral("Клиент"), why);
}

void Client::openForm(const QString& request) {
    const WaitCursor wait;
    QString error;
    FormWindow* form =
        app::openForm(client::sessionStore(*m_session), request, m_window.get(), &error);
    if (form) {
        connect(form, &FormWindow::problem, this,
                [this](const QString& text) { fail(QStringLiteral("Форма"), text); });
    } else {
        m_window->logPane()->add(LogError, QStringLiteral("Клиент"), error);
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
    constexpr int lookMs = 50;
    constexpr int restMs = 400; // repaints and last layouts
    constexpr int limitMs = 120000;
    auto* timer = new QTimer(this);
    QElapsedTimer total;
    total.start();
    connect(timer, &QTimer::timeout, this, [=, this, arranged = false, rest = 0]() mutable {
        rest = settled() ? rest + lookMs : 0;
        const bool late = total.elapsed() >= limitMs;
        if (rest < restMs && !late)
            return;
        if (!arranged && !late) {
            for (const auto& module : m_modules.modules(client::ModuleState::Running))
                if (module->isVisible())
                    prepareScreenshot(*module);
            arranged = true;
            rest = 0;
            return;
        }
        timer->stop();
        saveScreenshot();
    });
    timer->start(lookMs);
}

void Client::saveScreenshot() {
    const bool all = m_modules.modules(client::ModuleState::Failed).empty() &&
                     m_modules.modules(client::ModuleState::Running).size() >=
                         static_cast<size_t>(m_options.modules.size());
    const bool saved = m_window->grab().save(m_options.screenshot, "PNG");
    if (!saved)
        std::fprintf(stderr, "orvo-client: снимок %s не записан.\n",
                     qUtf8Printable(m_options.screenshot));
    else if (!all)
        std::fprintf(stderr, "orvo-client: не все модули запущены: %s\n",
                     qUtf8Printable(m_window->statusLine()->failure()));
    QCoreApplication::exit(saved && all ? 0 : 1);
}

} // namespace orvo::app
