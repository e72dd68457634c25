// RecordJump.h: takes the user to a record: opens its editor, its desktop, and makes its row
// current. The one way there for everything that names records: history, search, problems.
#ifndef ORVO_APPS_CLIENT_RECORDJUMP_H
#define ORVO_APPS_CLIENT_RECORDJUMP_H

#include "apps/client/StoreThread.h"
#include "platform/client/ModuleRegistry.h"
#include "platform/client/NotificationPump.h"

#include <functional>

namespace orvo::app {

class CloseGuard;
class MainWindow;

class RecordJump : public QObject {
    Q_OBJECT
public:
    /// What is referred to outlives it.
    struct Context {
        StoreThread& thread;
        MainWindow& window;
        CloseGuard& guard;
        client::NotificationPump& pump;
        client::ModuleRegistry& modules;
        std::function<void(const QString& name)> openModule; ///< and bring it forward
    };

    explicit RecordJump(Context context);

    /// Shows the row of the record, which is looked up first: it may have gone since, and an
    /// element may stand in another menu now. `desktop`: of an element, as far as is known. What
    /// keeps it from being shown is told.
    void show(const QString& table, const QString& key, const QString& desktop = {});
    /// For a record that no editor shows: goes on if it is still there, else that is told.
    void whenStored(const QString& table, const QString& key, const std::function<void()>& go);
    /// Names the module in which a question or a picker stands; empty if there is none.
    QString whyAnswerFirst() const;

signals:
    /// A level of the log, and one line.
    void told(int level, const QString& text);

private:
    /// Is given the desktop of an element; empty for other records.
    using Take = std::function<void(const QString& desktop)>;
    void lookUp(const QString& table, const QString& key, const Take& take);
    bool refuses();
    void showNow(const QString& table, const QString& key, const QString& desktop);

    Context m_context;
};

} // namespace orvo::app

#endif
