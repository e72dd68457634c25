#include "apps/client/PageDocks.h"

#include "apps/client/Look.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

#include <algorithm>
#include <cassert>
#include <functional>

namespace orvo::app {

/// The pane of one page.
class PageDock : public QDockWidget {
public:
    PageDock(const ModuleTabs::Order::Tab& page, std::function<void(QWidget* page)> closed,
             std::function<void()> activated, QWidget* parent)
        : QDockWidget(parent)
        , m_page(page)
        , m_closed(std::move(closed))
        , m_activated(std::move(activated)) {
        setWidget(page.page);
        setFeatures(DockWidgetClosable | DockWidgetMovable);
    }

    /// A window like any other, with the frame of the desktop: a tool window, which Qt makes of a
    /// pane, would stand over the search and the messages of the main window.
    void becomeWindow() {
        QWidget* before = titleBarWidget();
        setTitleBarWidget(new QWidget(this)); // none
        delete before;
        setFloating(true);
        setWindowFlags(Qt::Window);
        setAttribute(Qt::WA_QuitOnClose, false);
    }
    void becomePane() {
        setFloating(false);
        QWidget* none = titleBarWidget();
        setTitleBarWidget(nullptr);
        delete none;
    }

    QWidget* page() const { return m_page.page; }
    const ModuleTabs::Order::Tab& tab() const { return m_page; }
    void adopt(QWidget* page) {
        m_page.page = page;
        setWidget(page);
        page->show();
    }

protected:
    void changeEvent(QEvent* event) override {
        QDockWidget::changeEvent(event);
        if (event->type() == QEvent::ActivationChange && isActiveWindow() && isFloating())
            m_activated();
    }
    void closeEvent(QCloseEvent* event) override {
        event->ignore(); // whoever hears of it decides what becomes of the page
        m_closed(page());
    }

private:
    ModuleTabs::Order::Tab m_page;
    std::function<void(QWidget* page)> m_closed;
    std::function<void()> m_activated;
};

namespace {

/// Also of a window that the page has opened.
bool belongsTo(const QWidget* part, const QWidget& above) {
    while (part && part != &above)
        part = part->parentWidget();
    return part != nullptr;
}

} // namespace

PageDocks::PageDocks(QMainWindow& window, ModuleTabs& tabs) : m_window(window), m_tabs(tabs) {
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* now) { followFocus(now); });
    connect(&m_tabs, &QTabWidget::currentChanged, this, &PageDocks::settle);
}

QWidget* PageDocks::current() const {
    if (m_current && m_current->page())
        return m_current->page();
    if (m_tabs.currentWidget() || m_docks.empty())
        return m_tabs.currentWidget();
    return m_docks.back()->page();
}

std::vector<QWidget*> PageDocks::shown() const {
    std::vector<QWidget*> pages;
    if (m_tabs.currentWidget())
        pages.push_back(m_tabs.currentWidget());
    for (PageDock* dock : m_docks)
        if (dock->page() && !dock->visibleRegion().isEmpty())
            pages.push_back(dock->page());
    return pages;
}

PageDock* PageDocks::dockOf(const QWidget* page) const {
    for (PageDock* dock : m_docks)
        if (page && dock->page() == page)
            return dock;
    return nullptr;
}

std::optional<PageDocks::Place> PageDocks::placeOf(const QWidget* page) const {
    const PageDock* dock = dockOf(page);
    if (!dock)
        return std::nullopt;
    return dock->isFloating() ? Place::OwnWindow : Place::Beside;
}

PageDock* PageDocks::makeDock(const ModuleTabs::Order::Tab& page) {
    static int numbered = 0;
    auto* dock = new PageDock( // the window's child
        page, [this](QWidget* shown) { close(shown); }, [this] { emit currentChanged(); },
        &m_window);
    // The window's own keys work in a window of the page, too. What a module has in the menus is
    // that module's: the same key of two editors would be ambiguous, and neither would get it.
    for (const QAction* menu : m_window.menuBar()->actions())
        for (QAction* action : menu->menu()->actions())
            if (!action->property(entryProperty).isValid())
                dock->addAction(action);
    // By this name the window knows the place of an editor's pane again.
    dock->setObjectName(page.isModule ? QStringLiteral("page ") + page.name
                                      : QStringLiteral("page #%1").arg(++numbered));
    m_docks.emplace_back(dock);
    setTitle(page.page);
    followPage(dock);
    connect(dock, &QDockWidget::topLevelChanged, this, &PageDocks::currentChanged);
    return dock;
}

void PageDocks::followPage(PageDock* dock) {
    connect(dock->page(), &QObject::destroyed, dock, [this, dock] {
        if (!m_keepsPlaces)
            drop(dock);
    });
}

void PageDocks::drop(PageDock* dock) {
    m_docks.erase(std::find(m_docks.begin(), m_docks.end(), dock));
    if (m_current == dock)
        m_current = nullptr;
    dock->hide();
    dock->deleteLater(); // this may be its own close event
    settle();
}

void PageDocks::takeOut(QWidget* page, Place place) {
    PageDock* dock = dockOf(page);
    if (!dock && m_tabs.indexOf(page) < 0)
        return;
    const QSize size = page->size();
    const QPointer<QWidget> part = page->focusWidget();
    if (!dock) {
        dock = makeDock(m_tabs.takePage(page));
        m_window.addDockWidget(Qt::RightDockWidgetArea, dock);
    }
    if (place == Place::OwnWindow) {
        dock->becomeWindow();
        dock->resize(size);
        dock->move(m_window.geometry().center() - dock->rect().center());
    } else {
        dock->becomePane();
        m_window.resizeDocks({dock}, {m_window.width() / 2}, Qt::Horizontal);
    }
    dock->show();
    page->show();
    settle();
    bringUp(page);
    if (part)
        part->setFocus();
    assert(invariantsHold());
}

void PageDocks::putBack(QWidget* page) {
    PageDock* dock = dockOf(page);
    if (!dock)
        return;
    disconnect(page, &QObject::destroyed, dock, nullptr);
    const QPointer<QWidget> part = page->focusWidget();
    m_tabs.putPage(dock->tab());
    drop(dock);
    m_tabs.setCurrentWidget(page);
    m_window.activateWindow();
    (part ? part.data() : page)->setFocus();
    assert(invariantsHold());
}

bool PageDocks::bringUp(const QWidget* page) {
    PageDock* dock = dockOf(page);
    if (!dock)
        return false;
    dock->show();
    dock->raise();
    dock->activateWindow();
    dock->page()->setFocus();
    m_current = dock;
    emit currentChanged();
    return true;
}

bool PageDocks::setTitle(QWidget* page) {
    PageDock* dock = dockOf(page);
    if (dock)
        dock->setWindowTitle(m_tabs.titleOf(page));
    return dock != nullptr;
}

void PageDocks::close(QWidget* page) {
    const PageDock* dock = dockOf(page);
    const bool isModule = dock ? dock->tab().isModule : m_tabs.isModule(page);
    if (!isModule)
        emit m_tabs.pageCloseRequested(page);
    else
        putBack(page);
}

QWidget* PageDocks::editor(const QString& name) const {
    for (PageDock* dock : m_docks)
        if (dock->tab().isModule && dock->tab().name == name)
            return dock->page();
    return m_tabs.find(name, true);
}

QStringList PageDocks::editors() const {
    QStringList names;
    for (PageDock* dock : m_docks)
        if (dock->tab().isModule)
            names << dock->tab().name;
    return names;
}

void PageDocks::restore(const QStringList& editors) {
    for (const QString& name : editors) {
        QWidget* page = m_tabs.find(name, true);
        if (!page)
            continue;
        PageDock* dock = makeDock(m_tabs.takePage(page));
        if (!m_window.restoreDockWidget(dock)) {
            m_window.addDockWidget(Qt::RightDockWidgetArea, dock);
            m_window.resizeDocks({dock}, {m_window.width() / 2}, Qt::Horizontal);
        }
        if (dock->isFloating())
            dock->becomeWindow();
        dock->show();
        page->show();
    }
    settle();
    assert(invariantsHold());
}

void PageDocks::keepPlaces() {
    m_keepsPlaces = true;
}

void PageDocks::fill() {
    m_keepsPlaces = false;
    for (PageDock* dock : std::vector<PageDock*>(m_docks)) {
        if (dock->page())
            continue;
        if (QWidget* page = m_tabs.find(dock->tab().name, dock->tab().isModule)) {
            dock->adopt(m_tabs.takePage(page).page);
            followPage(dock);
            setTitle(page);
        } else {
            drop(dock); // it did not come back
        }
    }
    settle();
    assert(invariantsHold());
}

void PageDocks::followFocus(QWidget* now) {
    PageDock* found = nullptr;
    for (PageDock* dock : m_docks)
        if (belongsTo(now, *dock))
            found = dock;
    if (m_current == found || (!found && !belongsTo(now, m_tabs)))
        return; // in a pane that is no page the user still works with the same one
    m_current = found;
    emit currentChanged();
}

/// After any change of what there is.
void PageDocks::settle() {
    if (!m_keepsPlaces)
        m_tabs.setHidden(m_tabs.count() == 0 && !m_docks.empty());
    emit currentChanged();
}

bool PageDocks::invariantsHold() const {
    if (m_keepsPlaces)
        return true;
    if (m_current && std::find(m_docks.begin(), m_docks.end(), m_current) == m_docks.end())
        return false;
    for (const PageDock* dock : m_docks)
        if (!dock->page() || m_tabs.indexOf(dock->page()) >= 0 || dockOf(dock->page()) != dock)
            return false;
    return m_tabs.isHidden() == (m_tabs.count() == 0 && !m_docks.empty());
}

} // namespace orvo::app
