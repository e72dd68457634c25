// FakeSession.h: a session whose answers a test writes beforehand. Its definitions of COrvoCliSes
// stand in for those of the host library, so it is linked into tests that need no host.
#ifndef ORVO_TESTS_FRAME_FAKESESSION_H
#define ORVO_TESTS_FRAME_FAKESESSION_H

#include "frame/OrvoClient.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

/// What the session answers to the next request, and what it was asked.
struct SessionScript {
    // The answer
    bool sent = true;             ///< PacketExec's result
    int waited = 1;               ///< WaitResult's result
    MDXCliParam* reply = nullptr; ///< owned by the session from the request on
    bool nullReply = false;       ///< WaitResult takes the block away and gives none
    // The record of it
    QByteArray request; ///< name of the last request
    QByteArray data;    ///< its data
    int timeout = 0;
    int freed = 0;       ///< blocks freed by PrmFree
    int alive = 0;       ///< blocks handed out and not freed
    QStringList updates; ///< each SqlUpdate: "table flag:field=text,... flag:..."
};

/// A session over a script, which must outlive it.
std::unique_ptr<COrvoCliSes> makeSession(SessionScript& script);

#endif
