// MainWindow.h: the client's window: modules as tabs, beside them or in windows of their own; the
// log below, the status line.
#ifndef ORVO_APPS_CLIENT_MAINWINDOW_H
#define ORVO_APPS_CLIENT_MAINWINDOW_H

#include <QKeySequence>
#include <QMainWindow>
#include <QPointer>

#include <functional>
#include <memory>

class COrvoCliMod;
class CPopMessageBox;
class QAction;
class QDockWidget;
class QMenu;

namespace orvo::app {

class DeskDock;
class Handbook;
class LogPane;
class ModuleTabs;
class PageDocks;
class PaneRoom;
class StatusLine;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    MainWindow(const QString& store, const QString& login);
    ~MainWindow() override;

    LogPane* logPane() const { return m_log; }
    StatusLine* statusLine() const { return m_status; }

    ModuleTabs* tabs() const { return m_tabs; }

    /// The pages that are not in the tabs.
    PageDocks& pageDocks() const { return *m_pageDocks; }

    /// Brings the page to the front, in a tab or out.
    void showPage(QWidget* page);
    /// Nothing is changed if there is no editor of that name.
    void showEditor(const QString& name);
    /// Gives the focus to the part of the page on show that had it there, else to its first tree.
    void focusPage();
    /// The same once what had the focus is closed, maybe in a window of its own.
    void returnToPage();
    /// What the page shows is no longer as it was; `why` in words.
    void markPage(QWidget* page, const QString& why);
    /// Places the menu of a desktop beside the tabs, at the left or the right; the pane can be
    /// closed (deskClosed), by the menu of views too, and goes with the module. It is `width` wide
    /// (0: as is usual) if the window's own state, as it was restored, does not know the pane.
    DeskDock* addDesk(COrvoCliMod* desk, Qt::DockWidgetArea area, const QString& name,
                      int width = 0);
    /// For an operator: no menus and no log, the desktop's menu always there. Before show.
    void becomeWorkplace();
    /// Full screen, without a frame, and it stays until endKiosk.
    void becomeKiosk();
    /// Of its usual size whatever the screen, for a picture. Before show.
    void becomePicture();
    void endKiosk() { m_isKiosk = false; }
    /// Places a widget, which becomes the window's, in a pane beside the log, closed at first.
    /// With a shortcut, it brings the pane to the front, or closes it if it is there.
    QDockWidget* addPane(QWidget* content, const QString& title, const QString& name,
                         const QKeySequence& shortcut = {});
    /// Opens a pane in front of those beside it, with room to work in, and gives it the focus.
    void bringUp(QDockWidget* pane);
    /// Scrolls the trees of the module on show to their current rows, as far as these are not seen.
    void showCurrentRows();
    /// The menu of what changes the store.
    QMenu* editMenu() const { return m_edit; }
    /// The menu of what moves the focus and finds.
    QMenu* goMenu() const { return m_go; }
    /// The menu of how the window looks.
    QMenu* viewMenu() const { return m_view; }
    /// The action of a key of the list, in its menu; `always`: its key works without a menu bar
    /// too.
    QAction* addCommand(const char* id, QMenu* menu, bool always = false);
    /// Of what is in a tab or in the pane of a desktop.
    void setTitle(QWidget* page, const QString& title);
    /// Has the window painted before this returns, unless the window system takes too long. After
    /// show: what follows may keep the event loop waiting. Takes no input, and does not close.
    void paintNow();
    /// In front of other windows, or marked in the task bar where the desktop does not want that.
    void bringForward();
    /// A message over the whole window; returns at once.
    void showError(const QString& text);
    void showNotice(const QString& text);
    /// Shows a page of the handbook as Handbook::open does.
    bool showHandbook(const QString& page, const QString& chapter, QString* error);

    /// Asked before the window closes; false: it stays, and whoever answered calls closeNow later.
    void setCloseCheck(std::function<bool()> check) { m_closeCheck = std::move(check); }
    /// Closes without asking.
    void closeNow();
    /// Whether the changes of others move the current row; the user's choice, kept between runs.
    bool followsOthers() const;

signals:
    /// `command`: in the user's words what asks for it; empty: he himself.
    void reopenRequested(const QString& command = {});
    void followsOthersChanged(bool on);
    /// The user wants to choose a desktop.
    void desktopRequested();
    /// The user wants to open a further store.
    void storeRequested();
    void paneAdded(QDockWidget* pane);
    /// The user has closed the pane of a desktop.
    void deskClosed(COrvoCliMod* desk);
    void pageCloseRequested(QWidget* page);
    /// Ctrl+Alt+Q in a kiosk.
    void kioskEndRequested();
    /// The window is about to close: the modules are to be stopped now.
    void closing();

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    /// Tab passes the panes that are behind others: to Qt they are visible, beyond the window's
    /// edge.
    bool focusNextPrevChild(bool next) override;

private slots:
    void errorSeen();

private:
    /// No edge of the window is beyond the screen, whatever size it has asked for.
    void fitScreen();
    void makeMenus();
    void makeGoMenu();
    void makePlaceCommands();
    /// Back from a dialog or another window the user finds on what he left: a module switches the
    /// actions of its rows off when these lose the focus.
    void refreshActions();
    /// Puts the entries of the module on show into the menus, behind the window's own.
    void showModuleEntries();
    void stepTab(int by);
    void showBox(const QString& title, const QString& text, int icon);
    void makeHelpMenu();
    void focusPart(int by);
    void showHelp();

    ModuleTabs* m_tabs; // these: children of the window
    LogPane* m_log;
    StatusLine* m_status;
    QDockWidget* m_logDock;
    std::unique_ptr<PaneRoom> m_paneRoom;
    std::unique_ptr<PageDocks> m_pageDocks; ///< goes before what it looks at
    QMenu* m_edit = nullptr;
    QMenu* m_view = nullptr;
    QMenu* m_go = nullptr;
    QMenu* m_help = nullptr;
    QList<QAction*> m_moduleSeparators; ///< in the menus, before the entries of the module
    CPopMessageBox* m_box = nullptr;
    QPointer<Handbook> m_handbook; ///< made when first asked for; goes with the window
    QAction* m_stay;               ///< "do not take me to the changes of others"
    std::function<bool()> m_closeCheck;
    bool m_closesNow = false;
    bool m_isWorkplace = false;
    bool m_isKiosk = false;
    bool m_isPainting = false; ///< inside paintNow
    bool m_isPicture = false;
};

} // namespace orvo::app

#endif
