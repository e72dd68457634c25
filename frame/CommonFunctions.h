// CommonFunctions.h: the free functions that both editors share: requests to the server with their
// error texts, attribute words, a user's caption. Those that merge notifications are in
// Notification.h, which comes along.
#ifndef ORVO_FRAME_COMMONFUNCTIONS_H
#define ORVO_FRAME_COMMONFUNCTIONS_H

#include "frame/Notification.h"
#include "frame/OrvoClient.h"

#include <QString>

#include <cstdint>
#include <string>

/// Fetches a table with its records. Non-zero on success; otherwise the reason is in `error`, which
/// is cleared at the start. `session` and `error` are not null. The keys are those the server gave;
/// see orvo::setKeys. `table.status` tells how the reply's table unpacked; if it did not, the table
/// is empty and `error` says so, although the result is that of a success.
int GetTableRecords(COrvoCliSes* session, const std::string& tableName, CMDArray& table,
                    QString* error);
/// Fetches the structure of a table, without records. As GetTableRecords; a reply without fields is
/// a failure as well.
int GetTableStructure(COrvoCliSes* session, const std::string& tableName, CMDArray& table,
                      QString* error);
/// Fetches the one record about the logged-in user: field 2 is the login. `error` is set, not
/// appended to: empty on success.
int getUserInfo(COrvoCliSes* session, CMDArray& table, QString& error);
/// The words for a result code of the server; never empty.
QString getServerErrorText(int32_t code);

/// 0 "папка", 1 "модуль", 2 "функция", 3 "файл"; an empty string for any other code.
QString convertMenuAttributes(int code);
/// The code of such a word, without regard to case; -1 for any other text.
int getMenuAttributes(const QString& word);
/// How a user of the table `Users` is shown: family name and initials; the login for programs and
/// for users without a family name. Empty if the record or the table is null.
QString getUserCaption(MDRData* record, const CMDArray* users);
/// Whether the path is an existing file; false for directories.
bool checkFileExists(const QString& path);

namespace orvo {

/// One step of a module's start: runs `request(session, error)`, which gives non-zero on success.
/// After a failure, and for a reply that cannot be read, the text goes to the log under that
/// place.
template <class Request>
bool fetchOrLog(COrvoCliMod& module, const char* place, Request request) {
    QString error;
    const bool done = request(module.m_app->m_session, &error);
    if (!done || !error.isEmpty())
        module.m_app->m_logModule->LogFile(5, QString::fromLatin1(place), error);
    return done;
}

} // namespace orvo

#endif
