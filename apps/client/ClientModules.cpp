// The modules of the client: opening them, asking for their open edits, reopening them.
#include "apps/client/Client.h"
#include "apps/client/CloseGuard.h"
#include "apps/client/FileMirror.h"
#include "apps/client/Launcher.h"
#include "apps/client/LogPane.h"
#include "apps/client/MainWindow.h"
#include "apps/client/ModuleTabs.h"
#include "apps/client/PageDocks.h"
#include "apps/client/WaitCursor.h"
#include "apps/client/WindowMemory.h"
#include "apps/client/Workplace.h"
#include "frame/Text.h"

namespace orvo::app {

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

void Client::openModules() {
    for (const QString& name : m_options.modules)
        openModule(name);
}

void Client::openModule(const QString& name) {
    const WaitCursor wait;
    COrvoCliMod* module = m_libraries.create(&m_app, name);
    if (!module) {
        fail(name, Text::tr("Ни одна библиотека модулей не знает модуля «%1».").arg(name));
        return;
    }
    m_modules.add(module, name);
    module->setFollowsOthers(m_window->followsOthers());
    m_window->tabs()->addModule(module, name);
    if (!m_modules.start(module))
        fail(name, Text::tr("Модуль не запущен; причина в журнале. «Клиент» — "
                            "«Открыть модули заново» повторит попытку."));
    else if (m_memory)
        m_memory->restoreModule(name, *module);
    else
        arrangeAsAtFirst(*module);
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
        m_window->showEditor(modules.first());
}

void Client::reopenModules(const QString& why, bool must, const QString& command) {
    if (!m_pump)
        return;
    // Not while a slot of a module waits in a dialog or a menu.
    if (!m_pump->mayDeliver()) {
        QTimer::singleShot(100, this,
                           [this, why, must, command] { reopenModules(why, must, command); });
        return;
    }
    CloseGuard::Answers answers{[this, why] { reopenNow(why); }, {}};
    if (must)
        answers.stay = [this, why] { reopenWhenClean(why); };
    const QString title = command.isEmpty() ? Text::tr("Открыть модули заново")
                                            : Text::tr("%1 — модули откроются заново").arg(command);
    if (m_guard->mayGo(m_window.get(), title, answers))
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
        fail(Text::tr("Связь"), QString::fromStdString(status.text));
        return;
    }
    m_outdated = false;
    const ModuleTabs::Order tabs = m_window->tabs()->order();
    const QPointer<QWidget> focus =
        QApplication::focusWidget() ? QApplication::focusWidget() : m_window->focusWidget();
    const auto isIn = [&focus](const QWidget* page) { return page && page->isAncestorOf(focus); };
    const auto* working = qobject_cast<COrvoCliMod*>(m_window->pageDocks().current());
    const bool isInPage = !focus || isIn(m_window->tabs()) || isIn(working);
    const QString editor = working ? working->m_moduleName : QString();
    m_window->pageDocks().keepPlaces();
    rememberModules();
    m_launcher->rememberModules();
    m_launcher->setConnected(true);
    m_modules.stopAll();
    m_pump->restart(); // the new place in the log comes before the new tables
    reloadCatalogue();
    openModules();
    m_workplace->reopen();
    m_launcher->reopenModules();
    // All are in tabs now, and each has given the focus to a tree of its own.
    const QWidget* page = m_window->tabs()->find(editor, true);
    const QPointer<QWidget> part = page ? page->focusWidget() : nullptr;
    m_window->pageDocks().fill();
    m_window->tabs()->arrange(tabs);
    if (!isInPage && focus)
        focus->setFocus(Qt::OtherFocusReason);
    else if (part)
        part->setFocus(Qt::OtherFocusReason);
    else
        m_window->focusPage();
    m_mirror->refresh();
    m_app.log(LogWarning, Text::tr("Клиент"), why);
}

/// In a workplace nobody opens the modules again by hand once a file is back at its place.
void Client::lookForStore() {
    if (m_pump && m_pump->mayDeliver() && client::sessionStore(*m_session).reopen().ok()) {
        m_lookForStore.stop();
        reopenModules(Text::tr("Хранилище снова на месте."), false);
    }
}

} // namespace orvo::app
