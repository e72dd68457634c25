#include "apps/client/MainWindow.h"

#include "apps/client/DeskDock.h"
#include "apps/client/Handbook.h"
#include "apps/client/LogPane.h"
#include "apps/client/Look.h"
#include "apps/client/ModuleTabs.h"
#include "apps/client/StatusLine.h"
#include "apps/client/WindowMemory.h"
#include "frame/OrvoClient.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QMenuBar>
#include <QSettings>
#include <QShortcut>
#include <QThread>
#include <QTimer>

namespace orvo::app {

namespace {

constexpr int usefulHeight = 300; ///< of a pane that is called by a key
constexpr char stayKey[] = "view/stayAtOwnRow";

} // namespace

MainWindow::MainWindow(const QString& store, const QString& login)
    : m_tabs(new ModuleTabs(this))
    , m_log(new LogPane(this))
    , m_status(new StatusLine(store, login, this))
    , m_logDock(new QDockWidget(QStringLiteral("Журнал"), this)) {
    setObjectName(QStringLiteral("clientWindow"));
    setWindowTitle(QStringLiteral("Orvo — %1").arg(store));
    connect(m_tabs, &ModuleTabs::pageCloseRequested, this, &MainWindow::pageCloseRequested);
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
    QAction* store = client->addAction(QStringLiteral("Открыть &хранилище…"));
    store->setObjectName(QStringLiteral("actStore"));
    store->setShortcut(QKeySequence::Open);
    connect(store, &QAction::triggered, this, &MainWindow::storeRequested, Qt::QueuedConnection);
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
    connect(close, &QShortcut::activated, m_tabs, &ModuleTabs::closeCurrent);
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

void MainWindow::showPage(QWidget* page) {
    m_tabs->setCurrentWidget(page);
    bringForward();
    page->setFocus();
}

QDockWidget* MainWindow::addDesk(COrvoCliMod* desk, Qt::DockWidgetArea area, const QString& name,
                                 int width) {
    constexpr int usualWidth = 340;
    auto* dock = new DeskDock(
        desk, width > 0 ? width : usualWidth, [this, desk] { emit deskClosed(desk); }, this);
    dock->setObjectName(name);
    if (m_isWorkplace)
        dock->fix();
    addDockWidget(area, dock);
    restoreDockWidget(dock);
    dock->show();
    return dock;
}

void MainWindow::becomeWorkplace() {
    m_isWorkplace = true;
    menuBar()->hide();
    m_logDock->hide();
    setContextMenuPolicy(Qt::NoContextMenu); // which would show the log
    m_tabs->becomeTouchable();
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
    if (m_tabs->setTitle(page, title))
        return;
    if (QDockWidget* dock = DeskDock::of(page))
        dock->setWindowTitle(oneLine(title));
    if (m_isWorkplace) // its dock has no title
        setWindowTitle(QStringLiteral("Orvo — %1").arg(oneLine(title)));
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
