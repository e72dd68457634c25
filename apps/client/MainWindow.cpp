#include "apps/client/MainWindow.h"

#include "apps/client/Handbook.h"
#include "apps/client/LogPane.h"
#include "apps/client/Look.h"
#include "apps/client/StatusLine.h"
#include "apps/client/WindowMemory.h"
#include "frame/OrvoClient.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QMenuBar>
#include <QSettings>
#include <QShortcut>
#include <QTabBar>
#include <QTabWidget>
#include <QThread>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

namespace orvo::app {

namespace {

constexpr int usefulHeight = 300; ///< of a pane that is called by a key
constexpr char stayKey[] = "view/stayAtOwnRow";
constexpr char changedProperty[] = "changedSinceOpened"; // of a page: why it is marked
constexpr int touch = 44;                                // the least that a finger hits

/// What is in the pane of a desktop: the layout takes the first width of a pane from its content.
class DeskHolder : public QWidget {
public:
    DeskHolder(QWidget* desk, int width) : m_width(width) {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(desk);
        setFocusProxy(desk);
    }
    QSize sizeHint() const override { return {m_width, QWidget::sizeHint().height()}; }

private:
    const int m_width;
};

/// A pane that tells when its user closes it.
class DeskDock : public QDockWidget {
public:
    DeskDock(QWidget* parent, std::function<void()> closed)
        : QDockWidget(parent)
        , m_closed(std::move(closed)) {}

protected:
    void closeEvent(QCloseEvent* event) override {
        event->accept();
        m_closed();
    }

private:
    std::function<void()> m_closed;
};

} // namespace

MainWindow::MainWindow(const QString& store, const QString& login)
    : m_tabs(new QTabWidget(this))
    , m_log(new LogPane(this))
    , m_status(new StatusLine(store, login, this))
    , m_logDock(new QDockWidget(QStringLiteral("Журнал"), this)) {
    setObjectName(QStringLiteral("clientWindow"));
    setWindowTitle(QStringLiteral("Orvo — %1").arg(store));
    m_tabs->setObjectName(QStringLiteral("modules"));
    m_tabs->setDocumentMode(true);
    m_tabs->setTabsClosable(true);
    connect(m_tabs, &QTabWidget::tabCloseRequested, this,
            [this](int index) { emit pageCloseRequested(m_tabs->widget(index)); });
    setCentralWidget(m_tabs);
    setStatusBar(m_status);
    m_logDock->setObjectName(QStringLiteral("logDock"));
    m_logDock->setWidget(m_log);
    m_logDock->setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable);
    addDockWidget(Qt::BottomDockWidgetArea, m_logDock);
    makeMenus();
    makeKeys();
    resize(1366, 900);
    resizeDocks({m_logDock}, {130}, Qt::Vertical);
}

void MainWindow::makeMenus() {
    QMenu* client = menuBar()->addMenu(QStringLiteral("&Клиент"));
    QAction* reopen = client->addAction(QStringLiteral("Открыть модули &заново"));
    reopen->setShortcut(QKeySequence(QStringLiteral("Ctrl+R")));
    // Queued: the menu is closed and its loop left before modules go.
    connect(reopen, &QAction::triggered, this, &MainWindow::reopenRequested, Qt::QueuedConnection);
    QAction* desktop = client->addAction(QStringLiteral("&Рабочий стол…"));
    desktop->setObjectName(QStringLiteral("actDesktop"));
    connect(desktop, &QAction::triggered, this, &MainWindow::desktopRequested,
            Qt::QueuedConnection);
    client->addSeparator();
    QAction* quit = client->addAction(QStringLiteral("В&ыход"));
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, &QWidget::close, Qt::QueuedConnection);
    m_edit = menuBar()->addMenu(QStringLiteral("&Правка"));
    m_view = menuBar()->addMenu(QStringLiteral("&Вид"));
    m_view->addAction(m_logDock->toggleViewAction());
    m_view->addSeparator();
    m_stay = m_view->addAction(QStringLiteral("&Не переводить меня к правкам других"));
    m_stay->setObjectName(QStringLiteral("actStay"));
    m_stay->setCheckable(true);
    m_stay->setChecked(clientSettings().value(QLatin1String(stayKey), false).toBool());
    connect(m_stay, &QAction::toggled, this, [this](bool stay) {
        clientSettings().setValue(QLatin1String(stayKey), stay);
        emit followsOthersChanged(!stay);
    });
    makeHelpMenu();
}

/// What the mouse does at the tabs and between the parts of the window.
void MainWindow::makeKeys() {
    auto* close = new QShortcut(QKeySequence(QStringLiteral("Ctrl+W")), this);
    connect(close, &QShortcut::activated, this, [this] {
        const int index = m_tabs->currentIndex();
        if (index >= 0 && m_tabs->tabBar()->tabData(index).isNull()) // an editor stays
            emit pageCloseRequested(m_tabs->widget(index));
    });
    auto* next = new QShortcut(QKeySequence(Qt::Key_F6), this);
    connect(next, &QShortcut::activated, this, &MainWindow::focusNextPart);
}

/// From the page to the menus of desktops, and from the last of them back to the page.
void MainWindow::focusNextPart() {
    std::vector<QWidget*> parts;
    if (QWidget* page = m_tabs->currentWidget())
        parts.push_back(page);
    for (const QDockWidget* dock :
         findChildren<QDockWidget*>(QString(), Qt::FindDirectChildrenOnly))
        if (dynamic_cast<const DeskDock*>(dock) != nullptr && dock->isVisible() && dock->widget())
            parts.push_back(dock->widget());
    if (parts.empty())
        return;
    const QWidget* focus = QApplication::focusWidget();
    size_t next = 0;
    for (size_t i = 0; i < parts.size(); ++i)
        if (focus && (parts[i] == focus || parts[i]->isAncestorOf(focus)))
            next = (i + 1) % parts.size();
    parts[next]->setFocus(Qt::ShortcutFocusReason);
}

void MainWindow::makeHelpMenu() {
    QMenu* help = menuBar()->addMenu(QStringLiteral("&Справка"));
    QAction* guide = help->addAction(QStringLiteral("&Руководство"));
    guide->setObjectName(QStringLiteral("actHandbook"));
    guide->setShortcut(QKeySequence(Qt::Key_F1));
    connect(guide, &QAction::triggered, this, &MainWindow::showHelp);
    addAction(guide); // there without a menu bar, too
    QAction* about = help->addAction(QStringLiteral("&О программе"));
    connect(about, &QAction::triggered, this, [this] {
        showBox(QStringLiteral("О программе"),
                QStringLiteral("Orvo " ORVO_VERSION "\nКлиент инженера: редактор меню и "
                               "редактор ресурсов."),
                MessageBoxIconNone);
    });
}

void MainWindow::showHelp() {
    const QWidget* focus = QApplication::focusWidget();
    QString error;
    if (!(m_isWorkplace
              ? showHandbook({}, {}, &error)
              : showHandbook(QLatin1String(handbookpage::engineers), chapterOf(focus), &error)))
        showError(error);
}

bool MainWindow::showHandbook(const QString& page, const QString& chapter, QString* error) {
    if (!m_handbook)
        m_handbook = new Handbook(this);
    return m_handbook->open(page, chapter, error);
}

bool MainWindow::followsOthers() const {
    return !m_stay->isChecked();
}

void MainWindow::addModule(COrvoCliMod* module, const QString& name) {
    const int index = m_tabs->addTab(module, QString());
    m_tabs->tabBar()->setTabData(index, name);
    for (const QTabBar::ButtonPosition side : {QTabBar::LeftSide, QTabBar::RightSide})
        m_tabs->tabBar()->setTabButton(index, side, nullptr); // an editor stays
    setTitle(module, module->windowTitle().isEmpty() ? name : module->windowTitle());
}

void MainWindow::addPage(QWidget* page, const QString& title) {
    const int index = m_tabs->addTab(page, QString());
    if (m_isWorkplace)
        addCloseButton(page, index);
    setTitle(page, title);
}

/// In place of the style's own, which a finger does not hit.
void MainWindow::addCloseButton(QWidget* page, int index) {
    auto* button = new QToolButton(m_tabs->tabBar());
    button->setObjectName(QStringLiteral("closePage"));
    button->setAccessibleName(QStringLiteral("Закрыть"));
    button->setToolTip(QStringLiteral("Закрыть (Ctrl+W)"));
    button->setIcon(style()->standardIcon(QStyle::SP_DockWidgetCloseButton));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setFixedSize(touch, touch);
    connect(button, &QToolButton::clicked, page, [this, page] { emit pageCloseRequested(page); });
    QTabBar* bar = m_tabs->tabBar();
    for (const QTabBar::ButtonPosition side : {QTabBar::LeftSide, QTabBar::RightSide}) {
        QWidget* own = bar->tabButton(index, side);
        bar->setTabButton(index, side, nullptr); // which hides it
        delete own;
    }
    bar->setTabButton(index, QTabBar::RightSide, button); // which owns it
}

void MainWindow::showPage(QWidget* page) {
    m_tabs->setCurrentWidget(page);
    bringForward();
    page->setFocus();
}

void MainWindow::markPage(QWidget* page, const QString& why) {
    page->setProperty(changedProperty, why);
    setTitle(page, page->windowTitle());
}

QDockWidget* MainWindow::addDesk(COrvoCliMod* desk, Qt::DockWidgetArea area, const QString& name,
                                 int width) {
    constexpr int usualWidth = 340;
    auto* dock = new DeskDock(this, [this, desk] { emit deskClosed(desk); });
    dock->setObjectName(name);
    dock->setWidget(new DeskHolder(desk, width > 0 ? width : usualWidth)); // the dock's own
    dock->setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable);
    if (m_isWorkplace) {
        dock->setFeatures(QDockWidget::NoDockWidgetFeatures);
        dock->setTitleBarWidget(new QWidget(dock)); // none
    }
    addDockWidget(area, dock);
    connect(desk, &QObject::destroyed, dock, &QObject::deleteLater);
    restoreDockWidget(dock);
    dock->show();
    return dock;
}

QDockWidget* MainWindow::dockOf(const QWidget* desk) {
    QWidget* above = desk ? desk->parentWidget() : nullptr;
    while (above && !qobject_cast<QDockWidget*>(above))
        above = above->parentWidget();
    return qobject_cast<QDockWidget*>(above);
}

void MainWindow::becomeWorkplace() {
    m_isWorkplace = true;
    menuBar()->hide();
    m_logDock->hide();
    setContextMenuPolicy(Qt::NoContextMenu); // which would show the log
    m_tabs->tabBar()->setStyleSheet(QStringLiteral("QTabBar::tab{min-height:%1px}").arg(touch));
}

void MainWindow::becomeKiosk() {
    m_isKiosk = true;
    setWindowFlag(Qt::FramelessWindowHint);
    auto* end = new QShortcut(QKeySequence(QStringLiteral("Ctrl+Alt+Q")), this);
    end->setContext(Qt::ApplicationShortcut);
    connect(end, &QShortcut::activated, this, &MainWindow::kioskEndRequested);
    setWindowState(Qt::WindowFullScreen);
}

QDockWidget* MainWindow::addPane(QWidget* content, const QString& title, const QString& name,
                                 const QKeySequence& shortcut) {
    auto* dock = new QDockWidget(title, this);
    dock->setObjectName(name);
    dock->setWidget(content);
    dock->setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable);
    addDockWidget(Qt::BottomDockWidgetArea, dock);
    tabifyDockWidget(m_logDock, dock);
    dock->hide();
    if (shortcut.isEmpty()) {
        m_view->addAction(dock->toggleViewAction());
        return dock;
    }
    QAction* toggle = m_view->addAction(title);
    toggle->setShortcut(shortcut);
    connect(toggle, &QAction::triggered, dock, [this, dock] {
        if (!dock->isHidden() && !dock->visibleRegion().isEmpty())
            dock->hide();
        else
            bringUp(dock);
    });
    return dock;
}

void MainWindow::bringUp(QDockWidget* pane) {
    pane->show();
    pane->raise();
    if (pane->height() < usefulHeight)
        resizeDocks({pane}, {usefulHeight}, Qt::Vertical);
    pane->widget()->setFocus();
}

void MainWindow::setTitle(QWidget* page, const QString& title) {
    const int index = m_tabs->indexOf(page);
    if (index < 0) {
        if (QDockWidget* dock = dockOf(page))
            dock->setWindowTitle(oneLine(title));
        if (m_isWorkplace) // its dock has no title
            setWindowTitle(QStringLiteral("Orvo — %1").arg(oneLine(title)));
        return;
    }
    const QString changed = page->property(changedProperty).toString();
    page->setWindowTitle(title);
    m_tabs->setTabText(index, oneLine(title).replace(QLatin1Char('&'), QLatin1String("&&")) +
                                  (changed.isEmpty() ? QString() : QStringLiteral(" ●")));
    m_tabs->setTabToolTip(index, plainToolTip(changed));
}

QString MainWindow::tabName(int index) const {
    const QVariant module = m_tabs->tabBar()->tabData(index);
    return module.isNull() ? m_tabs->widget(index)->windowTitle() : module.toString();
}

MainWindow::Tabs MainWindow::tabs() const {
    Tabs tabs;
    tabs.current = m_tabs->currentIndex();
    for (int i = 0; i < m_tabs->count(); ++i)
        tabs.pages.emplace_back(m_tabs->widget(i), tabName(i));
    return tabs;
}

void MainWindow::arrangeTabs(const Tabs& as) {
    int place = 0;
    QWidget* current = nullptr;
    for (size_t i = 0; i < as.pages.size(); ++i) {
        const auto& [page, name] = as.pages[i];
        int found = page ? m_tabs->indexOf(page) : -1;
        for (int at = place; found < 0 && at < m_tabs->count(); ++at)
            if (tabName(at) == name)
                found = at;
        if (found < place)
            continue; // it did not come back
        m_tabs->tabBar()->moveTab(found, place);
        if (static_cast<int>(i) == as.current)
            current = m_tabs->widget(place);
        ++place;
    }
    if (current)
        m_tabs->setCurrentWidget(current);
}

int MainWindow::currentModule() const {
    return m_tabs->currentIndex();
}

void MainWindow::setCurrentModule(int index) {
    m_tabs->setCurrentIndex(index);
}

void MainWindow::setCurrentModule(const QString& name) {
    for (int i = 0; i < m_tabs->count(); ++i)
        if (m_tabs->tabBar()->tabData(i).toString() == name)
            m_tabs->setCurrentIndex(i);
}

void MainWindow::bringForward() {
    if (isMinimized())
        showNormal();
    raise();
    activateWindow();
    QApplication::alert(this);
}

void MainWindow::showError(const QString& text) {
    showBox(QStringLiteral("Ошибка"), text, MessageBoxIconError);
}

void MainWindow::showNotice(const QString& text) {
    showBox(QStringLiteral("Уведомление"), text, MessageBoxIconNone);
}

void MainWindow::showBox(const QString& title, const QString& text, int icon) {
    if (!m_box)
        m_box = new CPopMessageBox(this); // owned by its parent
    m_box->setMessage(title, text, static_cast<TMessageBoxIcon>(icon), MessageBoxTypeOk,
                      SLOT(errorSeen()));
    m_box->show();
}

void MainWindow::errorSeen() {
    m_box->hide();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (m_isKiosk && !m_closesNow) {
        event->ignore();
        return;
    }
    // A module whose slot runs a menu or a dialog cannot go before that slot has returned.
    if (QThread::currentThread()->loopLevel() > 1) {
        event->ignore();
        if (QWidget* popup = QApplication::activePopupWidget())
            popup->close();
        QTimer::singleShot(50, this, &QWidget::close);
        return;
    }
    if (!m_closesNow && m_closeCheck && !m_closeCheck()) {
        event->ignore();
        return;
    }
    emit closing();
    event->accept();
}

void MainWindow::closeNow() {
    m_closesNow = true;
    close();
}

} // namespace orvo::app
