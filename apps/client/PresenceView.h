// PresenceView.h: who else has the installation open, in the status line and at the rows that they
// edit; and what is edited here, for the others.
#ifndef ORVO_APPS_CLIENT_PRESENCEVIEW_H
#define ORVO_APPS_CLIENT_PRESENCEVIEW_H

#include "apps/client/HostApp.h"
#include "platform/client/ModuleRegistry.h"
#include "platform/client/PresenceFollower.h"
#include "platform/store/Store.h"

#include <QTimer>

#include <memory>

namespace orvo::app {

class StatusLine;

class PresenceView : public QObject {
    Q_OBJECT
public:
    /// How often is looked whether an edit here has begun or ended.
    static constexpr int lookMs = 200;

    /// All of these outlive the view; `users` is the store whose users are named.
    PresenceView(std::unique_ptr<store::Presence> presence, store::Store& users, HostApp& app,
                 const client::ModuleRegistry& modules, StatusLine& line);

    /// A change of the store: names of users may be other ones now.
    void changed(const store::Change& change);

private:
    void lookAtEdits();
    void show();
    /// The names of users by login, folded.
    const QHash<QString, QString>& names();
    QString nameOf(const std::string& login);

    client::PresenceFollower m_follower;
    store::Store& m_users;
    HostApp& m_app;
    const client::ModuleRegistry& m_modules;
    StatusLine& m_line;
    QTimer m_look;
    std::vector<store::OpenEdit> m_edits; ///< here, each with the time at which it was first seen
    QHash<QString, QString> m_names;
    bool m_namesAreOld = true;
};

} // namespace orvo::app

#endif
