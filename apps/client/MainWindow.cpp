#include "apps/client/MainWindow.h"

#include "apps/client/DeskDock.h"
#include "apps/client/Handbook.h"
#include "apps/client/LogPane.h"
#include "apps/client/Look.h"
#include "apps/client/ModuleTabs.h"
#include "apps/client/PageDocks.h"
#include "apps/client/PaneKeys.h"
#include "apps/client/PaneRoom.h"
#include "apps/client/StatusLine.h"
#include "apps/client/WindowMemory.h"
#include "frame/OrvoClient.h"
#include "frame/Text.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QElapsedTimer>
#include <QMenuBar>
#include <QPointer>
#include <QScreen>
#include <QShortcut>
#include <QShowEvent>
#include <QThread>
#include <QTimer>
#include <QTreeView>
#include <QWindow>

#include <QTreeView>
#include <algorithm>
#include <memory>

namespace orvo::app {

namespace {

constexpr QSize usualSize(1366, 900);

} // namespace

MainWindow::MainWindow(const QString& store, const QString& login)
    : m_tabs(new ModuleTabs(this))
    , m_log(new LogPane(this))
    , m_status(new StatusLine(store, login, this))
    , m_logDock(new QDockWidget(Text::tr("Журнал"), this))
    , m_pageDocks(std::make_unique<PageDocks>(*this, *m_tabs)) {
    setObjectName(QStringLiteral("clientWindow"));
    setWindowTitle(QStringLiteral("Orvo — %1").arg(store));
    connect(m_tabs, &ModuleTabs::pageCloseRequested, this, &MainWindow::pageCloseRequested);
    m_tabs->setAccessibleName(Text::tr("Редакторы и открытые формы"));
    setCentralWidget(m_tabs);
    setStatusBar(m_status);
    m_logDock->setObjectName(QStringLiteral("logDock"));
    auto* search = new LogSearch(m_log); // the dock's child
    addPaneKeys(*search);
    m_logDock->setWidget(search);
    m_logDock->setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable);
    addDockWidget(Qt::BottomDockWidgetArea, m_logDock);
    m_paneRoom = std::make_unique<PaneRoom>(*this, *m_logDock);
    makeMenus();
    constexpr int titleBar = 40, borders = 8; // of the frame, not known yet
    const QRect area = screen()->availableGeometry();
    resize(QSize(area.width() - borders, area.height() - titleBar).boundedTo(usualSize));
    resizeDocks({m_logDock}, {130}, Qt::Vertical);
}

MainWindow::~MainWindow() = default;

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
    bringForward();
    if (m_pageDocks->bringUp(page))
        return;
    m_tabs->setCurrentWidget(page);
    page->setFocus();
}

void MainWindow::showEditor(const QString& name) {
    if (QWidget* editor = m_pageDocks->editor(name))
        showPage(editor);
}

void MainWindow::markPage(QWidget* page, const QString& why) {
    m_tabs->markPage(page, why);
    m_pageDocks->setTitle(page);
}

DeskDock* MainWindow::addDesk(COrvoCliMod* desk, Qt::DockWidgetArea area, const QString& name,
                              int width) {
    constexpr int usualWidth = 340;
    auto* dock = new DeskDock(
        desk, width > 0 ? width : usualWidth,
        [this, desk] {
            if (desk->isAncestorOf(QApplication::focusWidget()) || desk->hasFocus())
                focusPage();
            emit deskClosed(desk);
        },
        this);
    dock->setObjectName(name);
    if (m_isWorkplace)
        dock->fix();
    else // goes with the dock
        m_view->insertAction(m_logDock->toggleViewAction(), dock->toggleViewAction());
    addDockWidget(area, dock);
    restoreDockWidget(dock);
    dock->show();
    return dock;
}

void MainWindow::becomeWorkplace() {
    m_isWorkplace = true;
    menuBar()->hide();
    m_logDock->hide();
    m_status->leaveOutLog();
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
    addPaneKeys(*content);
    dock->setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable);
    addDockWidget(Qt::BottomDockWidgetArea, dock);
    tabifyDockWidget(m_logDock, dock);
    dock->hide();
    m_paneRoom->add(dock);
    emit paneAdded(dock);
    if (shortcut.isEmpty()) {
        m_view->addAction(dock->toggleViewAction());
        return dock;
    }
    QAction* toggle = m_view->addAction(title);
    toggle->setShortcut(shortcut);
    toggle->setCheckable(true);
    connect(dock->toggleViewAction(), &QAction::toggled, toggle, &QAction::setChecked);
    const auto cameFrom = std::make_shared<QPointer<QWidget>>();
    connect(toggle, &QAction::triggered, dock, [this, dock, cameFrom] {
        QWidget* focus = QApplication::focusWidget();
        const bool hasFocus = dock->isAncestorOf(focus);
        if (dock->isHidden() || dock->visibleRegion().isEmpty()) {
            if (!hasFocus)
                *cameFrom = focus;
            return bringUp(dock);
        }
        if (hasFocus && *cameFrom && (*cameFrom)->isVisible()) {
            (*cameFrom)->activateWindow(); // maybe another one
            (*cameFrom)->setFocus();
        }
        dock->hide();
    });
    // One that is behind others comes to the front and stays open.
    connect(toggle, &QAction::triggered, dock,
            [dock, toggle] { toggle->setChecked(!dock->isHidden()); });
    return dock;
}

void MainWindow::showCurrentRows() {
    for (const QWidget* page : m_pageDocks->shown())
        for (QTreeView* tree : page->findChildren<QTreeView*>())
            if (tree->isVisible() && tree->currentIndex().isValid())
                tree->scrollTo(tree->currentIndex());
}

void MainWindow::bringUp(QDockWidget* pane) {
    m_paneRoom->open(pane);
    raise(); // the key may come from another window
    activateWindow();
    pane->widget()->setFocus(Qt::ShortcutFocusReason);
}

void MainWindow::setTitle(QWidget* page, const QString& title) {
    if (m_tabs->setTitle(page, title) || m_pageDocks->setTitle(page))
        return;
    if (QDockWidget* dock = DeskDock::of(page))
        dock->setWindowTitle(oneLine(title));
    if (m_isWorkplace) // its dock has no title
        setWindowTitle(QStringLiteral("Orvo — %1").arg(oneLine(title)));
}

void MainWindow::paintNow() {
    constexpr int longestWaitMs = 500;
    m_isPainting = true;
    QElapsedTimer waited;
    waited.start();
    while (windowHandle() && !windowHandle()->isExposed() && waited.elapsed() < longestWaitMs) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        QThread::msleep(1);
    }
    repaint();
    m_isPainting = false;
}

void MainWindow::bringForward() {
    if (isMinimized())
        showNormal();
    raise();
    activateWindow();
    QApplication::alert(this);
}

void MainWindow::showError(const QString& text) {
    showBox(Text::tr("Ошибка"), text, MessageBoxIconError);
}

void MainWindow::showNotice(const QString& text) {
    showBox(Text::tr("Уведомление"), text, MessageBoxIconNone);
}

void MainWindow::showBox(const QString& title, const QString& text, int icon) {
    if (!m_box)
        m_box = new CPopMessageBox(this); // owned by its parent
    m_box->setMessage(title, text, static_cast<TMessageBoxIcon>(icon), MessageBoxTypeOk,
                      SLOT(errorSeen()));
    if (QApplication::activeWindow() && !isActiveWindow()) { // another of the client's
        raise();
        activateWindow();
    }
    m_box->show();
}

void MainWindow::errorSeen() {
    m_box->hide();
}

void MainWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    // The frame is known when the window manager has made it.
    if (!event->spontaneous())
        QTimer::singleShot(200, this, &MainWindow::fitScreen);
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        refreshActions();
}

void MainWindow::refreshActions() {
    // The focus comes back after what calls this.
    QTimer::singleShot(0, this, [this] {
        auto* module = qobject_cast<COrvoCliMod*>(m_pageDocks->current());
        if (module && module->isAncestorOf(QApplication::focusWidget()))
            module->slot_modNotify(QStringLiteral("menus"), {});
    });
}

void MainWindow::becomePicture() {
    m_isPicture = true;
    resize(usualSize);
}

void MainWindow::fitScreen() {
    if (m_isPicture)
        return;
    if (windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen | Qt::WindowMinimized))
        return;
    const QRect area = screen()->availableGeometry();
    const QSize frame = frameGeometry().size() - size();
    if (frameGeometry().height() <= area.height() && frameGeometry().width() <= area.width() &&
        area.contains(frameGeometry().bottomLeft()))
        return;
    resize(size().boundedTo(area.size() - frame));
    const QSize whole = size() + frame;
    move(std::max(area.left(), std::min(x(), area.left() + area.width() - whole.width())),
         std::max(area.top(), std::min(y(), area.top() + area.height() - whole.height())));
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (m_isKiosk && !m_closesNow) {
        event->ignore();
        return;
    }
    // A module whose slot runs a menu or a dialog cannot go before that slot has returned.
    if (m_isPainting || QThread::currentThread()->loopLevel() > 1) {
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
