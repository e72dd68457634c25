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
#include <QTabBar>
#include <QTabWidget>
#include <QThread>
#include <QTimer>

namespace orvo::app {

namespace {

constexpr int usefulHeight = 300; ///< of a pane that is called by a key
constexpr char stayKey[] = "view/stayAtOwnRow";

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
    setCentralWidget(m_tabs);
    setStatusBar(m_status);
    m_logDock->setObjectName(QStringLiteral("logDock"));
    m_logDock->setWidget(m_log);
    m_logDock->setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable);
    addDockWidget(Qt::BottomDockWidgetArea, m_logDock);
    makeMenus();
    resize(1366, 900);
    resizeDocks({m_logDock}, {130}, Qt::Vertical);
}

void MainWindow::makeMenus() {
    QMenu* client = menuBar()->addMenu(QStringLiteral("&Клиент"));
    QAction* reopen = client->addAction(QStringLiteral("Открыть модули &заново"));
    reopen->setShortcut(QKeySequence(QStringLiteral("Ctrl+R")));
    // Queued: the menu is closed and its loop left before modules go.
    connect(reopen, &QAction::triggered, this, &MainWindow::reopenRequested, Qt::QueuedConnection);
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

void MainWindow::makeHelpMenu() {
    QMenu* help = menuBar()->addMenu(QStringLiteral("&Справка"));
    QAction* guide = help->addAction(QStringLiteral("&Руководство"));
    guide->setObjectName(QStringLiteral("actHandbook"));
    guide->setShortcut(QKeySequence(Qt::Key_F1));
    connect(guide, &QAction::triggered, this, &MainWindow::showHandbook);
    QAction* about = help->addAction(QStringLiteral("&О программе"));
    connect(about, &QAction::triggered, this, [this] {
        showBox(QStringLiteral("О программе"),
                QStringLiteral("Orvo " ORVO_VERSION "\nКлиент инженера: редактор меню и "
                               "редактор ресурсов."),
                MessageBoxIconNone);
    });
}

void MainWindow::showHandbook() {
    if (!m_handbook)
        m_handbook = new Handbook(this);
    QString error;
    if (!m_handbook->open(chapterOf(QApplication::focusWidget()), &error))
        showError(error);
}

bool MainWindow::followsOthers() const {
    return !m_stay->isChecked();
}

void MainWindow::addModule(COrvoCliMod* module, const QString& name) {
    m_tabs->tabBar()->setTabData(m_tabs->addTab(module, QString()), name);
    setTitle(module, module->windowTitle().isEmpty() ? name : module->windowTitle());
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

void MainWindow::setTitle(COrvoCliMod* module, const QString& title) {
    const int index = m_tabs->indexOf(module);
    if (index >= 0)
        m_tabs->setTabText(index, oneLine(title).replace(QLatin1Char('&'), QLatin1String("&&")));
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
