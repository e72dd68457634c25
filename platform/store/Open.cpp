// The one way into a store: the kinds there are, and which of them an address names.
#include "platform/store/Kinds.h"
#include "platform/store/PostgresPresence.h"
#include "platform/store/PostgresStore.h"
#include "platform/store/SqlitePresence.h"
#include "platform/store/SqliteStore.h"
#include "platform/store/StoreCore.h"
#include "platform/store/StoreUrl.h"

namespace orvo::store {

const std::vector<DatabaseKind>& kinds() {
    static const std::vector<DatabaseKind> all = {
        {{"sqlite:"}, sqlite::parseUrl, sqlite::openStore, sqlite::openPresence},
        {{"postgresql:", "postgres:"},
         postgres::parseUrl,
         postgres::openStore,
         postgres::openPresence},
    };
    return all;
}

const DatabaseKind* findKind(const std::string& url) {
    for (const DatabaseKind& kind : kinds())
        for (const char* scheme : kind.schemes)
            if (url.starts_with(scheme))
                return &kind;
    return nullptr;
}

const DatabaseKind& fileKind() {
    return kinds().front();
}

std::unique_ptr<MaintainedStore> openMaintained(const std::string& url, const OpenOptions& options,
                                                Status* status) {
    std::unique_ptr<MaintainedStore> store;
    Status result = guarded([&]() -> Status {
        StoreUrl address;
        Status done = address.parse(url);
        if (!done.ok())
            return done;
        store = findKind(address.text())->open(address.text(), options, &done);
        return done;
    });
    if (status != nullptr)
        *status = std::move(result);
    return store;
}

std::unique_ptr<Store> open(const std::string& url, const OpenOptions& options, Status* status) {
    return openMaintained(url, options, status);
}

} // namespace orvo::store
