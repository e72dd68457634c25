// The menus of the client's window: its own commands, those of the module on show, and the keys
// that go from part to part of the window.
#include "apps/client/DeskDock.h"
#include "apps/client/MainWindow.h"
#include "apps/client/ModuleTabs.h"
#include "apps/client/PageDocks.h"
#include "apps/client/StatusLine.h"
#include "apps/client/WindowMemory.h"
#include "frame/Keys.h"
#include "frame/OrvoClient.h"
#include "frame/Text.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDockWidget>
#include <QMap>
#include <QMenu>
#include <QMenuBar>
#include <QSettings>
#include <QTabBar>

#include <algorithm>
#include <utility>
#include <vector>

namespace orvo::app {

namespace {

constexpr char stayKey[] = "view/stayAtOwnRow";
constexpr char placeProperty[] = "orvoPlace";     // of a module's entry: its place among the others
constexpr char paletteProperty[] = "orvoPalette"; // of a window that stays beside its module

/// Whether it is a passport, which shows one record.
bool editsWhatIsCurrent(const QWidget* part) {
    const auto* view = qobject_cast<const QAbstractItemView*>(part);
    return view && (view->editTriggers() & QAbstractItemView::CurrentChanged);
}

} // namespace

QAction* MainWindow::addCommand(const char* id, QMenu* menu, bool always) {
    const keys::Command* command = keys::command(QLatin1String(id));
    QAction* action = menu->addAction(keys::text(*command));
    action->setObjectName(QLatin1String("client_") + QLatin1String(id));
    action->setShortcuts(keys::sequences(*command));
    if (always)
        addAction(action);
    return action;
}

void MainWindow::makeMenus() {
    QMenu* client = menuBar()->addMenu(Text::tr("&Клиент"));
    // Queued: the menu is closed and its loop left before modules go.
    connect(
        addCommand(keys::reopen, client), &QAction::triggered, this, [this] { reopenRequested(); },
        Qt::QueuedConnection);
    QAction* desktop = client->addAction(Text::tr("&Рабочий стол…"));
    desktop->setObjectName(QStringLiteral("actDesktop"));
    connect(desktop, &QAction::triggered, this, &MainWindow::desktopRequested,
            Qt::QueuedConnection);
    QAction* store = client->addAction(Text::tr("Открыть &хранилище…"));
    store->setObjectName(QStringLiteral("actStore"));
    store->setShortcuts(keys::sequences(*keys::command(QLatin1String(keys::openStore))));
    connect(store, &QAction::triggered, this, &MainWindow::storeRequested, Qt::QueuedConnection);
    connect(addCommand(keys::closeTab, client, true), &QAction::triggered, this, [this] {
        if (QWidget* page = m_pageDocks->current())
            m_pageDocks->close(page);
    });
    client->addSeparator();
    connect(addCommand(keys::quit, client), &QAction::triggered, this, &QWidget::close,
            Qt::QueuedConnection);
    m_edit = menuBar()->addMenu(Text::tr("&Правка"));
    m_view = menuBar()->addMenu(Text::tr("&Вид"));
    m_view->addAction(m_logDock->toggleViewAction());
    connect(addCommand(keys::failure, m_view, true), &QAction::triggered, m_status,
            &StatusLine::readFailure);
    makePlaceCommands();
    m_view->addSeparator();
    m_stay = m_view->addAction(Text::tr("&Не переводить меня к правкам других"));
    m_stay->setObjectName(QStringLiteral("actStay"));
    m_stay->setCheckable(true);
    m_stay->setChecked(clientSettings().value(QLatin1String(stayKey), false).toBool());
    connect(m_stay, &QAction::toggled, this, [this](bool stay) {
        clientSettings().setValue(QLatin1String(stayKey), stay);
        emit followsOthersChanged(!stay);
    });
    makeGoMenu();
    makeHelpMenu();
    for (QMenu* menu : {m_edit, m_view, m_go, m_help})
        connect(menu, &QMenu::aboutToShow, this, [this] {
            showModuleEntries(); // a module may have made more of them since
            if (auto* module = qobject_cast<COrvoCliMod*>(m_pageDocks->current()))
                module->slot_modNotify(QStringLiteral("menus"), {});
        });
    connect(m_pageDocks.get(), &PageDocks::currentChanged, this, &MainWindow::showModuleEntries);
    connect(m_pageDocks.get(), &PageDocks::currentChanged, this, &MainWindow::refreshActions);
}

/// The page on show beside the others or in a window of its own, and back: in the menu and at its
/// tab.
void MainWindow::makePlaceCommands() {
    m_view->addSeparator();
    QAction* beside = addCommand(keys::beside, m_view);
    QAction* window = addCommand(keys::ownWindow, m_view);
    const auto add = [this](QAction* action, PageDocks::Place place) {
        action->setCheckable(true);
        connect(action, &QAction::triggered, this, [this, place] {
            QWidget* page = m_pageDocks->current();
            if (!page)
                return;
            if (m_pageDocks->placeOf(page) == place)
                m_pageDocks->putBack(page);
            else
                m_pageDocks->takeOut(page, place);
        });
    };
    add(beside, PageDocks::Place::Beside);
    add(window, PageDocks::Place::OwnWindow);
    connect(m_pageDocks.get(), &PageDocks::currentChanged, this, [this, beside, window] {
        const QWidget* page = m_pageDocks->current();
        for (QAction* action : {beside, window})
            action->setEnabled(page != nullptr);
        beside->setChecked(m_pageDocks->placeOf(page) == PageDocks::Place::Beside);
        window->setChecked(m_pageDocks->placeOf(page) == PageDocks::Place::OwnWindow);
    });
    QTabBar* bar = m_tabs->tabBar();
    bar->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(bar, &QWidget::customContextMenuRequested, this,
            [this, bar, beside, window](QPoint at) {
                const int index = bar->tabAt(at);
                if (index < 0 || m_isWorkplace)
                    return;
                m_tabs->setCurrentIndex(index);
                focusPage();
                auto* menu = new QMenu(this);
                menu->setAttribute(Qt::WA_DeleteOnClose);
                menu->addActions({beside, window});
                menu->popup(bar->mapToGlobal(at));
            });
}

/// What the mouse does at the tabs and between the parts of the window.
void MainWindow::makeGoMenu() {
    m_go = menuBar()->addMenu(Text::tr("П&ереход"));
    connect(addCommand(keys::menuBar, m_go), &QAction::triggered, this, [this] {
        // The bar takes the focus itself once the menu is left, and gives back what it has taken.
        menuBar()->setActiveAction(menuBar()->actions().first());
    });
    connect(addCommand(keys::nextPane, m_go, true), &QAction::triggered, this,
            [this] { focusPart(1); });
    connect(addCommand(keys::previousPane, m_go, true), &QAction::triggered, this,
            [this] { focusPart(-1); });
    connect(addCommand(keys::nextTab, m_go, true), &QAction::triggered, this,
            [this] { stepTab(1); });
    connect(addCommand(keys::previousTab, m_go, true), &QAction::triggered, this,
            [this] { stepTab(-1); });
    // Shown only: the lists take the key themselves, fields have their own menu.
    QAction* contextMenu = addCommand(keys::contextMenu, m_go);
    contextMenu->setShortcutContext(Qt::WidgetShortcut);
    // Queued: this menu is closed before another comes up.
    connect(
        contextMenu, &QAction::triggered, this,
        [this] {
            QWidget* focus = focusWidget();
            if (!focus)
                return;
            const QPoint at = focus->rect().center();
            QContextMenuEvent asked(QContextMenuEvent::Keyboard, at, focus->mapToGlobal(at));
            QApplication::sendEvent(focus, &asked);
        },
        Qt::QueuedConnection);
}

void MainWindow::stepTab(int by) {
    const int count = m_tabs->count();
    if (count == 0)
        return;
    m_tabs->setCurrentIndex((m_tabs->currentIndex() + by + count) % count);
    focusPage();
}

void MainWindow::focusPage() {
    QWidget* page = m_pageDocks->current();
    if (!page)
        return;
    QWidget* part = page->focusWidget();
    // The first tree by the order of Tab; one that edits whatever becomes current shows one record.
    for (QWidget* next = page->nextInFocusChain(); !part && next != page;
         next = next->nextInFocusChain()) {
        const auto* view = qobject_cast<QAbstractItemView*>(next);
        if (view && page->isAncestorOf(view) && (view->focusPolicy() & Qt::TabFocus) &&
            !editsWhatIsCurrent(view))
            part = next;
    }
    (part ? part : page)->setFocus(Qt::ShortcutFocusReason);
}

void MainWindow::returnToPage() {
    activateWindow(); // the page that is gone may have had one of its own
    focusPage();
}

void MainWindow::showModuleEntries() {
    for (QAction* separator : qAsConst(m_moduleSeparators))
        delete separator;
    m_moduleSeparators.clear();
    for (QMenu* menu : {m_edit, m_view, m_go, m_help})
        for (QAction* action : menu->actions())
            if (action->property(entryProperty).isValid())
                menu->removeAction(action);
    const QWidget* page = m_pageDocks->current();
    if (!page)
        return;
    QMap<int, QMenu*> menus{{int(keys::Menu::Edit), m_edit},
                            {int(keys::Menu::View), m_view},
                            {int(keys::Menu::Go), m_go},
                            {int(keys::Menu::Help), m_help}};
    for (auto menu = menus.cbegin(); menu != menus.cend(); ++menu) {
        QList<QAction*> entries;
        for (QAction* action : page->findChildren<QAction*>()) {
            const QVariant wanted = action->property(entryProperty);
            if (wanted.isValid() && wanted.toInt() == menu.key())
                entries << action;
        }
        std::stable_sort(entries.begin(), entries.end(),
                         [](const QAction* one, const QAction* other) {
                             return one->property(placeProperty).toInt() <
                                    other->property(placeProperty).toInt();
                         });
        if (!entries.isEmpty() && !menu.value()->isEmpty())
            m_moduleSeparators << menu.value()->addSeparator();
        menu.value()->addActions(entries);
    }
}

namespace {

/// The trees of a part from left to right, or itself if it has none.
std::vector<QWidget*> viewsOf(QWidget* part) {
    std::vector<QWidget*> views;
    for (QAbstractItemView* view : part->findChildren<QAbstractItemView*>())
        if (view->isVisible() && view->focusPolicy() != Qt::NoFocus &&
            view->window() == part->window() && !view->inherits("QHeaderView"))
            views.push_back(view);
    std::sort(views.begin(), views.end(), [](const QWidget* one, const QWidget* other) {
        const QPoint a = one->mapToGlobal(QPoint()), b = other->mapToGlobal(QPoint());
        return std::pair(a.x(), a.y()) < std::pair(b.x(), b.y());
    });
    if (views.empty())
        views.push_back(part);
    return views;
}

/// The trees of a page, and of its palette before the passport: it is the tree that one adds to.
/// A passport that the palette covers is passed.
std::vector<QWidget*> partsOf(QWidget* page) {
    std::vector<QWidget*> parts = viewsOf(page);
    for (QWidget* palette : page->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (!palette->isVisible() || !palette->property(paletteProperty).toBool())
            continue;
        parts.erase(std::remove_if(parts.begin(), parts.end(),
                                   [palette](const QWidget* part) {
                                       return editsWhatIsCurrent(part) &&
                                              palette->geometry().contains(
                                                  part->mapToGlobal(part->rect().center()));
                                   }),
                    parts.end());
        const auto passport = std::find_if(parts.begin(), parts.end(), editsWhatIsCurrent);
        const std::vector<QWidget*> views = viewsOf(palette);
        parts.insert(passport, views.begin(), views.end());
    }
    return parts;
}

} // namespace

/// Each page, then the open panes. What has no way to take the focus is passed.
void MainWindow::focusPart(int by) {
    std::vector<QWidget*> parts;
    const auto add = [&parts](const std::vector<QWidget*>& more) {
        parts.insert(parts.end(), more.begin(), more.end());
    };
    for (QWidget* page : m_pageDocks->shown())
        add(partsOf(page));
    for (const QDockWidget* dock :
         findChildren<QDockWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (dock->isHidden() || dock->visibleRegion().isEmpty() || !dock->widget() ||
            m_pageDocks->placeOf(dock->widget()))
            continue;
        if (dynamic_cast<const DeskDock*>(dock) != nullptr)
            parts.push_back(dock->widget());
        else if (!m_isWorkplace)
            add(viewsOf(dock->widget()));
    }
    if (parts.empty())
        return;
    const QWidget* focus = QApplication::focusWidget();
    const int count = static_cast<int>(parts.size());
    int next = by > 0 ? 0 : count - 1;
    const auto holds = [focus](const QWidget* part) {
        return part == focus || part->isAncestorOf(focus);
    };
    const auto isInWindow = [this, focus](const QWidget* part) {
        return focus->window() != this && part->window() == focus->window();
    };
    if (focus) {
        auto at = std::find_if(parts.begin(), parts.end(), holds);
        if (at == parts.end()) // in a field of a palette, say
            at = std::find_if(parts.begin(), parts.end(), isInWindow);
        if (at != parts.end())
            next = (static_cast<int>(at - parts.begin()) + by + count) % count;
    }
    QWidget* part = parts[static_cast<size_t>(next)];
    part->window()->raise(); // a palette is one of its own
    part->activateWindow();
    part->setFocus(Qt::ShortcutFocusReason);
}

bool MainWindow::focusNextPrevChild(bool next) {
    const auto takesTab = [this](const QWidget& widget) {
        if (!(widget.focusPolicy() & Qt::TabFocus) || widget.focusProxy() || !widget.isEnabled() ||
            widget.window() != this || !widget.isVisibleTo(this))
            return false;
        for (const QWidget* up = &widget; up != this; up = up->parentWidget())
            if (qobject_cast<const QDockWidget*>(up) && up->visibleRegion().isEmpty())
                return false;
        return true;
    };
    QWidget* const from = focusWidget() ? focusWidget() : this;
    QWidget* to = from;
    do
        to = next ? to->nextInFocusChain() : to->previousInFocusChain();
    while (to != from && !takesTab(*to));
    if (to == from)
        return false;
    to->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

void MainWindow::makeHelpMenu() {
    m_help = menuBar()->addMenu(Text::tr("&Справка"));
    QAction* guide = addCommand(keys::help, m_help, true);
    guide->setObjectName(QStringLiteral("actHandbook"));
    connect(guide, &QAction::triggered, this, &MainWindow::showHelp);
    QAction* about = m_help->addAction(Text::tr("&О программе"));
    connect(about, &QAction::triggered, this, [this] {
        showBox(Text::tr("О программе"),
                QStringLiteral("Orvo " ORVO_VERSION "\n") +
                    Text::tr("Клиент инженера: редактор меню и редактор ресурсов."),
                MessageBoxIconNone);
    });
}

} // namespace orvo::app
