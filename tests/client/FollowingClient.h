// FollowingClient.h: what a client is without its window: a session with the list of what is not
// written, a module, and the pump that follows the log over a connection of its own.
#ifndef ORVO_TESTS_CLIENT_FOLLOWINGCLIENT_H
#define ORVO_TESTS_CLIENT_FOLLOWINGCLIENT_H

#include "platform/client/ModuleRegistry.h"
#include "platform/client/NotificationPump.h"
#include "platform/client/UnwrittenList.h"
#include "tests/client/HostFixture.h"

#include <QVector>

namespace orvo::test {

class FollowingClient {
public:
    explicit FollowingClient(const std::string& url)
        : m_url(url)
        , session(client::makeSession(connect(), &m_status))
        , list(client::sessionStore(*session))
        , module(new Module(&m_app)) // the registry's
        , pump(*session, m_registry, connect()) {
        client::setUnwritten(*session, &list);
        m_app.m_session = session.get();
        m_registry.add(module, "Menu");
        m_registry.start(module);
        QObject::connect(&pump, &client::NotificationPump::logLost,
                         [this](bool replaced) { lost << replaced; });
        QObject::connect(&pump, &client::NotificationPump::connectionChanged,
                         [this](bool up, const QString&) { turns << up; });
        pump.start();
    }
    ~FollowingClient() { client::setUnwritten(*session, nullptr); }

    /// Writes a record as the module does; whether it was told to be saved.
    bool write(const char* table, uint32_t flag, const Fields& fields) {
        CMDArray array;
        store::makeStructure(*store::findTable(table), array.array);
        addRecord(array, flag, fields);
        return module->m_app->m_session->SqlUpdate(table, array.array, true, nullptr) != 0;
    }
    /// Another way into the store.
    std::unique_ptr<store::Store> connect() {
        auto opened = store::open(m_url, {}, &m_status);
        if (!opened)
            qFatal("%s", m_status.text.c_str());
        return opened;
    }

private:
    const std::string m_url;
    store::Status m_status;
    App m_app;
    client::ModuleRegistry m_registry;

public:
    std::unique_ptr<COrvoCliSes> session;
    client::UnwrittenList list;
    Module* const module;
    client::NotificationPump pump;
    QVector<bool> lost;  ///< whether the log was replaced, each time that a part of it was missing
    QVector<bool> turns; ///< of the connection: false when it is lost, true when it is back
};

} // namespace orvo::test

#endif
