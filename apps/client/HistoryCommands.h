// HistoryCommands.h: the history in the client: undo and redo in the menu "Правка", the pane
// "История", and a thread of its own with a connection of its own for both.
#ifndef ORVO_APPS_CLIENT_HISTORYCOMMANDS_H
#define ORVO_APPS_CLIENT_HISTORYCOMMANDS_H

#include "apps/client/Reverter.h"
#include "apps/client/UndoActions.h"
#include "platform/client/ModuleRegistry.h"
#include "platform/client/NotificationPump.h"

#include <functional>

namespace orvo::app {

class CloseGuard;
class HistoryPane;
class HostApp;
class MainWindow;

class HistoryCommands : public QObject {
    Q_OBJECT
public:
    /// What is referred to outlives the commands.
    struct Context {
        StoreThread::Opener open;
        history::Actor actor; ///< whose actions undo takes back
        bool mayWrite = true;
        MainWindow& window;
        CloseGuard& guard;
        HostApp& app;
        COrvoCliSes& session;
        client::NotificationPump& pump;
        client::ModuleRegistry& modules;
        std::function<void(const QString& name)> openModule; ///< and bring it forward
    };

    explicit HistoryCommands(Context context);
    ~HistoryCommands() override;

    void setMayWrite(bool may);

    /// Whether nothing is being taken back, and what would be next is known.
    bool isIdle() const;

    /// Opens the editor, and of an element the desktop, on that record; it may have gone.
    void showRecord(const QString& table, const QString& key, const QString& desktop);

private:
    void connectUndo();
    void connectPane();
    QString whyNot() const;
    /// Names the module in which a question or a picker stands; empty if there is none.
    QString whyAnswerFirst() const;
    bool refusesToShow();
    void tell(int level, const QString& text);
    void showHistory(const QString& table, const QString& key, bool withContent);
    void showVersions(const QString& resource);
    void showRecordNow(const QString& table, const QString& key, const QString& desktop);

    Context m_context;
    StoreThread m_thread;
    Reverter m_reverter;
    UndoActions m_undo;
    HistoryPane* m_pane; ///< child of the window
};

} // namespace orvo::app

#endif
