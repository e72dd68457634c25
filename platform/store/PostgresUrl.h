// PostgresUrl.h: the address of a store on a PostgreSQL server, as libpq takes it.
#ifndef ORVO_PLATFORM_STORE_POSTGRESURL_H
#define ORVO_PLATFORM_STORE_POSTGRESURL_H

#include "platform/store/Store.h"

#include <string>
#include <utility>
#include <vector>

namespace orvo::store::postgres {

/// The parsed address. Several hosts give fail-over: the first that takes writes is used.
class Url {
public:
    /// BadArguments, in words that quote nothing of the address, if it is none.
    Status parse(const std::string& url);

    std::string get(const std::string& option) const;
    void set(const std::string& option, std::string value);

    /// The address without any password or key file; itself an address.
    std::string displayName() const;
    /// The text with everything in it that is secret made unreadable, on one line.
    std::string withoutSecrets(std::string text) const;

    /// For PQconnectdbParams; valid as long as the address stays as it is.
    struct Arrays {
        std::vector<const char*> names, values;
    };
    Arrays arrays() const;

private:
    std::vector<std::pair<std::string, std::string>> m_options;
};

} // namespace orvo::store::postgres

#endif
