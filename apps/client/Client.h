// Client.h: the wiring of the client: session, modules, notifications, file mirror, window.
//
// The order of a run: 1 open (store, session, work directory, module libraries; no window yet),
// 2 show (window, then the modules: load, start), 3 the event loop, 4 stop (when the window closes:
// modules in order), 5 the destructor.
//
// Sources: Client.cpp has that order and what is connected, ClientModules.cpp opens the modules and
// reopens them, ClientPanes.cpp has the panes of the window and the states it tells of.
#ifndef ORVO_APPS_CLIENT_CLIENT_H
#define ORVO_APPS_CLIENT_CLIENT_H

#include "apps/client/HostApp.h"
#include "apps/client/ModuleLibraries.h"
#include "apps/client/Options.h"
#include "apps/client/StoreThread.h"
#include "catalogue/LiveCatalogue.h"
#include "platform/client/ModuleRegistry.h"
#include "platform/client/NotificationPump.h"
#include "platform/client/Session.h"
#include "platform/client/UnwrittenList.h"
#include "platform/store/WaitPolicy.h"

#include <QTimer>

#include <memory>

namespace orvo::app {

class CloseGuard;
class FileMirror;
class FindCommands;
class HistoryCommands;
class Inspector;
class Launcher;
class MainWindow;
class ProblemsFeed;
class ProblemsPane;
class UsesCommands;
class WaitDialogController;
class PresenceView;
class Screenshot;
class WindowMemory;
class Workplace;

class Client : public QObject {
    Q_OBJECT
public:
    explicit Client(const Options& options);
    ~Client() override;

    /// False, with one line in `error`, if the client cannot work.
    bool open(QString* error);
    /// Shows the window and starts the modules in it.
    void show();
    /// Comes forward and opens those of the modules that are not open; the first of them is shown.
    void openFurther(const QStringList& modules);
    /// Ends the event loop when everything that show began is done, with the window, and something
    /// worth seeing in it, in the file of the options: exit code 0, or 1 after a line on standard
    /// error.
    void takeScreenshot();

    /// Null before show.
    MainWindow* window() const { return m_window.get(); }
    client::ModuleRegistry& modules() { return m_modules; }
    /// Knows the open edits of the modules; others may add what they keep. Null before show.
    CloseGuard* closeGuard() const { return m_guard.get(); }
    /// Whether modules, notifications and mirror are at rest.
    bool settled() const;

private:
    static constexpr char clientName[] = "orvo-client"; ///< in the change log

    bool openWorkDir(QString* error);
    bool openInspector(QString* error);
    void connectAll();
    void openModules();
    void openModule(const QString& name);
    void rememberModules();
    /// `must`: an answer that keeps them open only puts it off.
    /// `command`: what asks for it, for the title of the question about what is not saved; empty:
    /// the menu's own.
    void reopenModules(const QString& why, bool must, const QString& command = {});
    void reopenNow(const QString& why);
    void reopenWhenClean(const QString& why);
    void addOpenEdits();
    void showHeld();
    void markUnwritten();
    void repaintModules();
    void openForm(const QString& request);
    void openForOperators();
    void lookForStore();
    bool isWorkplace() const { return !m_options.desktop.isEmpty(); }
    void showUnwritten();
    void showPresence();
    void makeHistory();
    void makeProblems();
    int64_t logPosition();
    void reloadCatalogue();
    void makeFind();
    void tellReadOnly();
    void mayWriteChanged(bool may);
    void fail(const QString& place, const QString& text);
    /// Lists what this client lost by it. `outcome`: what becomes of the modules.
    QString lossWords(bool replaced, const QString& outcome);
    void stop();
    void connectionChanged(bool up, const QString& text);

    Options m_options;
    ModuleLibraries m_libraries;
    HostApp m_app;
    std::unique_ptr<WaitDialogController>
        m_waitDialog; ///< of this thread, as long as the client lives
    std::unique_ptr<store::WaitPolicyScope> m_waitPolicy;
    std::unique_ptr<COrvoCliSes> m_session;
    std::unique_ptr<client::UnwrittenList> m_unwritten; ///< on the session's store
    std::unique_ptr<FileMirror> m_mirror;
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<WindowMemory> m_memory; ///< null: for a picture, nothing is remembered
    std::unique_ptr<CloseGuard> m_guard;
    bool m_leaving = false; ///< the window was asked to close
    StoreThread::Opener m_openMaintained;
    std::unique_ptr<HistoryCommands> m_history; ///< while the window is shown, as the next
    std::unique_ptr<catalogue::LiveCatalogue> m_catalogue;
    std::unique_ptr<ProblemsFeed> m_problems;
    ProblemsPane* m_problemsPane = nullptr; ///< child of the window
    std::unique_ptr<FindCommands> m_find;   ///< works with the catalogue, as the next
    std::unique_ptr<UsesCommands> m_uses;
    std::unique_ptr<COrvoCliMod> m_logModule;
    client::ModuleRegistry m_modules;
    bool m_outdated = false; ///< a call failed for want of the server: the editors may not show it
    std::unique_ptr<client::NotificationPump> m_pump;
    std::unique_ptr<Launcher> m_launcher; ///< while the window is shown, as the next
    std::unique_ptr<Workplace> m_workplace;
    QTimer m_lookForStore; ///< a workplace has nobody who would open its modules again
    std::unique_ptr<PresenceView> m_presence; ///< while the window is shown
    std::unique_ptr<Screenshot> m_screenshot; ///< looks at those above; null if not asked for
    std::unique_ptr<Inspector> m_inspector;   ///< asks those above; null if not asked for
};

} // namespace orvo::app

#endif
