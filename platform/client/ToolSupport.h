// ToolSupport.h: what the reading and the writing tools share.
#ifndef ORVO_PLATFORM_CLIENT_TOOLSUPPORT_H
#define ORVO_PLATFORM_CLIENT_TOOLSUPPORT_H

#include "platform/client/SessionPrivate.h"

namespace orvo::client {

/// Folder path and name as one text for messages.
inline QString storedPath(const QString& path, const QString& name) {
    return path.isEmpty() ? name : path + QLatin1Char('/') + name;
}

/// Ends a writing tool: a failure is reported, a success announces its notifications.
inline void finishWrite(COrvoCliSes& session, const QString& operation,
                        const store::Status& status) {
    session.data()->report(operation, status);
    if (status.ok())
        emit session.data()->events.written();
}

} // namespace orvo::client

#endif
