// StoreUrl.h: the address of a store. This is the one place that reads such a text; what it says of
// one that it does not understand holds nothing of it but its scheme, for the rest may be a
// password in an unexpected place.
//
//   address   = "sqlite:" path | "sqlite://" absolute path
//             | "postgresql://..." | "postgres://..."   as libpq takes them
//             | path                                    of an SQLite file
//
// A path that is not absolute and does not begin with "./" or "../" holds none of the characters
// that addresses and connection strings are made of (":", "@", "="): a mistyped address is no file.
#ifndef ORVO_PLATFORM_STORE_STOREURL_H
#define ORVO_PLATFORM_STORE_STOREURL_H

#include "platform/store/Store.h"

#include <string>
#include <string_view>

namespace orvo::store {

class StoreUrl {
public:
    /// BadArguments, and the object as it was, if it is no address.
    Status parse(const std::string& text);

    /// The address itself, for open: it may hold a password.
    const std::string& text() const { return m_text; }
    /// The address without any password; itself an address. For windows, messages and logs.
    const std::string& displayName() const { return m_displayName; }
    /// Absolute path of the file that the store lives in; empty for a server's.
    const std::string& file() const { return m_file; }
    /// Whether the address was just a path.
    bool isPath() const { return m_isPath; }

private:
    std::string m_text, m_displayName, m_file;
    bool m_isPath = false;
};

/// A text for a message or a log with "***" in the place of what may be a password: after a user's
/// name in what looks like an address, and after "password=".
std::string withoutCredentials(std::string text);

} // namespace orvo::store

#endif
