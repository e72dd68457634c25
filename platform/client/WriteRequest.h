// WriteRequest.h: a write call of a session, kept so that it can be made again.
#ifndef ORVO_PLATFORM_CLIENT_WRITEREQUEST_H
#define ORVO_PLATFORM_CLIENT_WRITEREQUEST_H

#include "frame/OrvoClient.h"
#include "platform/store/Merge.h"
#include "platform/store/Store.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvo::client {

struct ORVOCLIENT_EXPORT WriteRequest {
    enum Kind { Records = 1, FormPut = 2, FilePut = 3, FormDelete = 4, FileDelete = 5 };
    struct File {
        QString path; ///< of the folder; unused for forms
        QString name;
        QByteArray bytes; ///< of those that are put
        std::optional<double> time;
    };

    Kind kind = Records;
    std::string table;  ///< Records
    QByteArray records; ///< Records: the packed image of flagged records
    QString formPath;   ///< FormPut
    std::vector<File> files;

    /// Records and the bytes of files may be the caller's, who keeps them until the call is made.
    const MDArray* callersRecords = nullptr;

    static WriteRequest ofRecords(std::string_view table, const MDArray* records);
    /// Makes everything its own.
    void keep();
    size_t size() const; ///< bytes that it holds of its own
};

/// A record of a request: its flag, its key and the values of the marked fields.
struct RecordWrite {
    uint32_t flag = 0;
    std::string key;                                  ///< UTF-8
    std::vector<std::pair<int, store::Value>> values; ///< by field number of the table
};

/// The records of a request, in order; none if it has none or the image does not hold.
ORVOCLIENT_EXPORT std::vector<RecordWrite> recordsOf(const WriteRequest& request);
/// A request of these records. Unknown tables give an empty one.
ORVOCLIENT_EXPORT WriteRequest requestOf(const store::TableDef& table,
                                         const std::vector<RecordWrite>& records);

/// Makes the call. `guard` may be null. `unknown`: the call failed, but may have been saved all the
/// same, as store.lastWritten() describes.
ORVOCLIENT_EXPORT store::Status perform(const WriteRequest& request, store::Store& store,
                                        store::UpdateGuard* guard, bool* unknown);

/// Whether a request from outside the process holds: a known table, an image whose records the
/// table could take, file names that may enter a store.
ORVOCLIENT_EXPORT bool isSound(const WriteRequest& request);

} // namespace orvo::client

#endif
