// Kinds.h: the kinds of database behind the interface of Store.h. Open.cpp lists them; a new one is
// its own files in this folder and one line there.
#ifndef ORVO_PLATFORM_STORE_KINDS_H
#define ORVO_PLATFORM_STORE_KINDS_H

#include "platform/store/Maintenance.h"
#include "platform/store/Presence.h"

#include <memory>
#include <string>
#include <vector>

namespace orvo::store {

/// What a kind makes of an address of its own.
struct Location {
    std::string displayName; ///< without any password; itself an address
    std::string file;        ///< absolute path, if the store lives in one file
};

struct DatabaseKind {
    std::vector<const char*>
        schemes; ///< that its addresses begin with, "name:"; the first is usual
    /// BadArguments if the address is none of this kind, in words that quote nothing of it.
    Status (*parse)(const std::string& url, Location* location);
    /// As store::open.
    std::unique_ptr<MaintainedStore> (*open)(const std::string& url, const OpenOptions& options,
                                             Status* status);
    /// As store::openPresence.
    std::unique_ptr<Presence> (*presence)(const std::string& url, const std::string& login,
                                          Status* status);
};

/// Whether a text can be meant as a path (StoreUrl.h).
bool isPathText(const std::string& text);

const std::vector<DatabaseKind>& kinds();
/// The kind that the address is one of by its scheme; null if it has none that is known.
const DatabaseKind* findKind(const std::string& url);
/// The kind that a plain path names a file of.
const DatabaseKind& fileKind();

} // namespace orvo::store

#endif
