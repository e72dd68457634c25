// SessionPrivate.h: the inside of a session, shared by the requests, the tools and the pump.
#ifndef ORVO_PLATFORM_CLIENT_SESSIONPRIVATE_H
#define ORVO_PLATFORM_CLIENT_SESSIONPRIVATE_H

#include "platform/client/Session.h"

#include <string>
#include <unordered_map>

namespace orvo::client {

/// A request between PacketExec and WaitResult.
struct Request {
    std::string name;
    std::string data;
};

} // namespace orvo::client

struct COrvoCliSes::Private {
    std::unique_ptr<orvo::store::Store> store; ///< never null
    int64_t cursor = 0;
    orvo::client::SessionEvents events;
    int busy = 0; ///< calls and tools running now
    std::unordered_map<MDXCliParam*, orvo::client::Request> pending;

    /// Tells the host. Nothing happens for a status that is ok.
    void report(const QString& operation, const orvo::store::Status& status);
};

namespace orvo::client {

/// Marks the session as busy and shows the wait cursor while it lives.
class CallScope {
public:
    explicit CallScope(COrvoCliSes::Private& session);
    ~CallScope();
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;

private:
    COrvoCliSes::Private& m_session;
    bool m_cursor;
};

/// Answers a request; the block is the caller's, null only if memory ran out.
MDXCliParam* answer(COrvoCliSes::Private& session, const Request& request);

/// What to do with a table in the words of a message: "Запись в таблицу «Menu»".
QString onTable(const char* doing, std::string_view table);

} // namespace orvo::client

#endif
