// Launcher.h: opens what the elements of an operator's menu stand for: modules, forms and files in
// tabs of the window, functions in processes of their own.
//
// What can go wrong where: a form or file is shown by a process (FormProcess.h) and a function runs
// in one (FunctionProcess.h), so that a crash there is told and nothing else. A module runs in the
// client, as the editors do: what it throws while it is made and started is told, but its crash is
// the client's.
//
// Invariants; 2 is asserted in debug builds: 1 of one element there is at most one entry that is
// "the first": the oldest that is still open; 2 an entry goes with its tab or process, whoever
// closes it.
#ifndef ORVO_APPS_CLIENT_LAUNCHER_H
#define ORVO_APPS_CLIENT_LAUNCHER_H

#include "apps/client/FormProcess.h"
#include "apps/client/FunctionProcess.h"
#include "frame/Launch.h"
#include "platform/store/Store.h"

#include <QCache>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <vector>

class COrvoCliApp;
class COrvoCliMod;

namespace orvo::client {
class ModuleRegistry;
}

namespace orvo::app {

class CloseGuard;
class MainWindow;
class ModuleLibraries;

class Launcher : public QObject {
    Q_OBJECT
public:
    /// What it works with; all of it outlives the launcher.
    struct Context {
        store::Store& store;
        ModuleLibraries& libraries;
        COrvoCliApp& app;
        client::ModuleRegistry& modules;
        MainWindow& window;
        CloseGuard& guard;
        FunctionContext functions;
        QString viewer; ///< the program that shows files
    };
    explicit Launcher(Context context, QObject* parent = nullptr);
    ~Launcher() override;

    /// Opens it, or brings the first of one copy to the front. `refusal`: why not, in Russian.
    void launch(LaunchRequest* request);
    /// The same without opening anything, as far as it can be told beforehand.
    void check(LaunchRequest* request);
    /// While the store is away what was read before is shown: from memory, and files also from
    /// their copies in the work directory.
    void setConnected(bool on) { m_isConnected = on; }
    /// A change of the store: what is open and no longer as the menu has it is marked, and stays.
    void changed(const store::Change& change);
    /// The user closes a tab: a module is asked for its open edit first.
    void closePage(QWidget* page);
    /// The modules are about to be stopped; `reopenModules` reopens those that were open then,
    /// and brings nothing to the front.
    void rememberModules();
    void reopenModules();
    /// Number of what is open.
    int count() const { return static_cast<int>(m_open.size()); }

signals:
    /// Something that was opened has failed, or has something to say.
    void problem(const QString& place, const QString& text);
    void logged(int level, const QString& place, const QString& text);

private:
    using Files = std::vector<store::StoredFile>;
    struct Opened {
        LaunchRequest request;
        QPointer<QWidget> page; ///< a tab of the window; null for a function
        std::unique_ptr<FunctionProcess> process;
        Files listing; ///< what is shown, without bytes
        bool isMarked = false;
    };

    QString openModule(const LaunchRequest& request);
    QString openFunction(const LaunchRequest& request);
    QString openForm(const LaunchRequest& request);
    QString openFile(const LaunchRequest& request);
    void showFiles(const LaunchRequest& request, const Files& files);
    void saveFile(const store::StoredFile& file);
    store::Status readContents(const LaunchRequest& request, Files* files);
    Files mirrored(const LaunchRequest& request) const;
    Opened* first(const QString& key);
    void bringToFront(const Opened& opened);
    void forget(const QObject* gone);
    void checkInvariants() const;
    void compareContents();
    void mark(Opened& opened, const QString& why);

    Context m_context;
    bool m_isConnected = true;
    std::vector<Opened> m_open; ///< the oldest first
    std::vector<LaunchRequest> m_toReopen;
    QTimer m_compare; ///< contents have changed, and perhaps more will
    /// Forms and files read before; the cost is in KiB.
    QCache<QString, Files> m_contents;
};

} // namespace orvo::app

#endif
