// The one way into a store: which kind a URL names.
#include "platform/store/Names.h"
#include "platform/store/PostgresStore.h"
#include "platform/store/SqliteStore.h"
#include "platform/store/StoreCore.h"

namespace orvo::store {

namespace {

using OpenFunction = std::unique_ptr<Store> (*)(const std::string& location,
                                                const OpenOptions& options, Status* status);

std::unique_ptr<Store> openSqlite(const std::string& url, const OpenOptions& options,
                                  Status* status) {
    std::string path = url.substr(url.find(':') + 1);
    if (path.starts_with("//"))
        path.erase(0, 2);
    // "sqlite://name/..." would name a machine.
    if (path.empty() || (url.starts_with("sqlite://") && path.front() != '/')) {
        *status = {BadArguments, "В адресе хранилища нет пути к файлу: " + shown(url)};
        return nullptr;
    }
    return sqlite::openStore(path, options, status);
}

/// The kinds of store, by the scheme of their URLs.
const struct Kind {
    const char* scheme;
    OpenFunction open;
} kinds[] = {
    {"sqlite:", openSqlite},
    {"postgresql:", postgres::openStore},
    {"postgres:", postgres::openStore},
};

} // namespace

std::unique_ptr<Store> open(const std::string& url, const OpenOptions& options, Status* status) {
    std::unique_ptr<Store> store;
    Status result = guarded([&]() -> Status {
        Status opened;
        for (const Kind& kind : kinds) {
            if (url.starts_with(kind.scheme)) {
                store = kind.open(url, options, &opened);
                return opened;
            }
        }
        if (url.empty() || url.find("://") != std::string::npos ||
            url.find('\0') != std::string::npos)
            return {BadArguments, "Непонятный адрес хранилища"};
        store = sqlite::openStore(url, options, &opened);
        return opened;
    });
    if (status != nullptr)
        *status = std::move(result);
    return store;
}

} // namespace orvo::store
