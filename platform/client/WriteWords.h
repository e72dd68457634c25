// WriteWords.h: a write call in words: what was to be done to which record, where it is, and which
// fields were to change from what to what.
#ifndef ORVO_PLATFORM_CLIENT_WRITEWORDS_H
#define ORVO_PLATFORM_CLIENT_WRITEWORDS_H

#include "platform/client/WriteRequest.h"

#include <QString>

#include <vector>

namespace orvo::client {

/// One field of one record.
struct FieldWords {
    std::string key;
    int field = 0; ///< number in the table
    QString name;  ///< "Название"
    QString before;
    QString mine;
    bool known = false; ///< `before` is what the store has
};

struct WriteWords {
    QString what; ///< "Переименован рабочий стол «КС-3»: было «КС-2»"
    QString place; ///< "Участок 1 / КС-3 / Насосная"; empty if unknown or at the top
    std::vector<FieldWords> fields;
};

/// Describes a request. Names, places and old values are looked up in the store; null: it cannot be
/// asked, and only what the request tells is said. `deleted`: what the change log says of its only
/// record, which the store no longer has, as JSON.
ORVOCLIENT_EXPORT WriteWords describe(const WriteRequest& request, store::Store* store,
                                      const std::string& deleted = {});

} // namespace orvo::client

#endif
