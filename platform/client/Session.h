// Session.h: how a host makes a COrvoCliSes, and what it hears from it.
#ifndef ORVO_PLATFORM_CLIENT_SESSION_H
#define ORVO_PLATFORM_CLIENT_SESSION_H

#include "frame/OrvoClient.h"
#include "platform/store/Store.h"

#include <QObject>
#include <QString>

#include <memory>

namespace orvo::client {

/// A request, write or tool that failed. The modules do not look at results; the host shows this.
struct Failure {
    QString operation; ///< what was tried, in Russian
    int code = 0;      ///< store::Code
    QString text;      ///< why: the server's text
};

/// What a session tells its host. Signals are emitted inside the failing or writing call, on the
/// GUI thread, while the session still counts as busy: a receiver shows or schedules, and calls
/// nothing of the session.
class ORVOCLIENT_EXPORT SessionEvents : public QObject {
    Q_OBJECT
signals:
    void failed(const orvo::client::Failure& failure);
    /// A write or a tool has changed the store: its notification waits in the change log.
    void written();
};

/// A session over an open store, which it owns from then on (also on failure). The place in the
/// change log is taken here, before any table can be read through the session. Null on failure,
/// with the reason in `status` (which must not be null).
ORVOCLIENT_EXPORT std::unique_ptr<COrvoCliSes> makeSession(std::unique_ptr<store::Store> store,
                                                           store::Status* status);

/// A handle of the same session for one module, which must outlive it. By it the session knows
/// whose a write is, and up to which change that module has seen the log: what others wrote later
/// stays (store/Merge.h). To be made before the module reads its tables.
ORVOCLIENT_EXPORT std::unique_ptr<COrvoCliSes> makeModuleSession(const COrvoCliSes& session,
                                                                 COrvoCliMod& module);

class UnwrittenList;
/// Where the session keeps the writes that fail; null (the default): nowhere. The list is made on
/// the session's store and outlives the session's calls.
ORVOCLIENT_EXPORT void setUnwritten(COrvoCliSes& session, UnwrittenList* list);
/// After the server may have failed over to one without the last changes: adds to the list of
/// setUnwritten what this session wrote within the last minutes and the store no longer has. The
/// number of entries.
ORVOCLIENT_EXPORT int listLostWrites(COrvoCliSes& session);

/// The session's store; lives as long as the session.
ORVOCLIENT_EXPORT store::Store& sessionStore(COrvoCliSes& session);
/// The session's signals; live as long as the session.
ORVOCLIENT_EXPORT SessionEvents& sessionEvents(COrvoCliSes& session);
/// The place in the change log from which notifications are to be read.
ORVOCLIENT_EXPORT const store::LogCursor& sessionCursor(const COrvoCliSes& session);
/// Whether a call or a tool of the session is running.
ORVOCLIENT_EXPORT bool sessionBusy(const COrvoCliSes& session);

} // namespace orvo::client

#endif
