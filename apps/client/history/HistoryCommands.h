// HistoryCommands.h: the history in the client: undo and redo in the menu "Правка", the pane
// "История", and a thread of its own with a connection of its own for both.
#ifndef ORVO_APPS_CLIENT_HISTORY_HISTORYCOMMANDS_H
#define ORVO_APPS_CLIENT_HISTORY_HISTORYCOMMANDS_H

#include "apps/client/RecordJump.h"
#include "apps/client/UnseenPlaces.h"
#include "apps/client/history/Reverter.h"
#include "apps/client/history/UndoActions.h"
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

    /// Shows a record.
    RecordJump& jump() { return m_jump; }
    HistoryPane& pane() { return *m_pane; }
    /// Opens the pane with what that user did.
    void showActionsOf(const QString& login);

private:
    void connectUndo();
    void connectPane();
    QString whyNot() const;
    void tell(int level, const QString& text);
    void showHistory(const QString& table, const QString& key, bool withContent);
    void showVersions(const QString& resource);

    Context m_context;
    StoreThread m_thread;
    RecordJump m_jump;
    UnseenPlaces m_unseen;
    Reverter m_reverter;
    UndoActions m_undo;
    HistoryPane* m_pane; ///< child of the window
};

} // namespace orvo::app

#endif
