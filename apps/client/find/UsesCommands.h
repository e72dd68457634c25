// UsesCommands.h: "Где используется" in the client: the pane, and what the modules ask.
#ifndef ORVO_APPS_CLIENT_FIND_USESCOMMANDS_H
#define ORVO_APPS_CLIENT_FIND_USESCOMMANDS_H

#include "apps/client/find/UsesFeed.h"
#include "frame/Launch.h"

namespace orvo::app {

class HostApp;
class MainWindow;
class RecordJump;
class UsesPane;

class UsesCommands : public QObject {
    Q_OBJECT
public:
    /// All of these outlive the commands.
    UsesCommands(catalogue::LiveCatalogue& live, MainWindow& window, HostApp& app, RecordJump& jump,
                 const QString& iconsPath);
    ~UsesCommands() override;

    /// Opens the pane on that record.
    void show(const catalogue::Subject& subject, bool takeFocus = true);
    /// A change of the store.
    void changed() { m_feed.outdate(); }

private:
    void answer(orvo::UsesRequest* request);

    MainWindow& m_window;
    UsesFeed m_feed;
    UsesPane* m_pane; ///< child of the window
};

} // namespace orvo::app

#endif
