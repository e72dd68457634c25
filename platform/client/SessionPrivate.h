// SessionPrivate.h: the inside of a session, shared by the requests, the tools and the pump.
#ifndef ORVO_PLATFORM_CLIENT_SESSIONPRIVATE_H
#define ORVO_PLATFORM_CLIENT_SESSIONPRIVATE_H

#include "platform/client/ActionGroup.h"
#include "platform/client/Session.h"
#include "platform/client/UnwrittenList.h"

#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvo::client {

/// A request between PacketExec and WaitResult.
struct Request {
    std::string name;
    std::string data;
};

} // namespace orvo::client

namespace orvo::client {

/// A committed write, for as long as a server could still turn out to have lost it.
struct OwnWrite {
    WriteRequest request;
    store::Written written;
    QDateTime when;
    QString module;
    size_t changes = 0;
};

/// What all handles of a session share.
struct SessionCore {
    std::unique_ptr<store::Store> store; ///< never null
    store::LogCursor cursor;
    SessionEvents events;
    int busy = 0;                       ///< calls and tools running now
    UnwrittenList* unwritten = nullptr; ///< not owned; null: failed writes are reported only
    ActionGroup action;
    std::deque<OwnWrite> ownWrites; ///< in order of commit; see rememberWrite
};

} // namespace orvo::client

/// A handle: the session's own, or that of one module, which tells whose a write is.
struct COrvoCliSes::Private {
    Private(std::shared_ptr<orvo::client::SessionCore> core, COrvoCliMod* module);

    const std::shared_ptr<orvo::client::SessionCore> core; ///< never null
    orvo::store::Store* const store;                       ///< never null
    orvo::client::SessionEvents& events;
    COrvoCliMod* const module; ///< null: of no module
    /// Changes by this handle that its module may not have been told of. In rising order.
    std::vector<orvo::store::IdRange> own;
    std::unordered_map<MDXCliParam*, orvo::client::Request> pending;

    /// Tells the host. Nothing happens for a status that is ok.
    void report(const QString& operation, const orvo::store::Status& status);
    /// The one way of a write: waits behind what it needs, gives way to what others wrote, is kept
    /// if it fails, is remembered if it succeeds.
    orvo::store::Status write(orvo::client::WriteRequest request);

private:
    orvo::store::Status refuse(orvo::client::WriteRequest request, orvo::store::Status status,
                               bool unknown);
    orvo::store::UpdateGuard guard();
    void keep(orvo::client::UnwrittenEntry entry, bool canAsk);
    void remember(orvo::client::WriteRequest request);
};

namespace orvo::client {

/// Marks the session as busy and shows the wait cursor while it lives.
class CallScope {
public:
    explicit CallScope(const COrvoCliSes::Private& session);
    ~CallScope();
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;

private:
    SessionCore& m_session;
    bool m_cursor;
};

/// Answers a request; the block is the caller's, null only if memory ran out.
MDXCliParam* answer(COrvoCliSes::Private& session, const Request& request);

/// What to do with a table in the words of a message: "Запись в таблицу «Menu»".
QString onTable(const std::string& doing, std::string_view table);

} // namespace orvo::client

#endif
