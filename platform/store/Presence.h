// Presence.h: who has a store open just now, and which records they are editing.
//
// Nothing of it is stored in the tables or the change log, and no right is needed beyond reading.
// On a server every client announces itself to the others over a channel of its own; the server
// vouches for who announces and tells who is still connected. Beside a store in a file every client
// keeps a small locked file of its own; the system takes the lock off when the client dies.
//
// What others announce is untrusted input: texts are bounded, valid UTF-8 and without control
// characters, tables are known ones, and there are at most mostPresent entries.
#ifndef ORVO_PLATFORM_STORE_PRESENCE_H
#define ORVO_PLATFORM_STORE_PRESENCE_H

#include "platform/store/Store.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::store {

/// A record that somebody edits and has neither saved nor dropped.
struct OpenEdit {
    std::string table;
    std::string key;  ///< empty: a record that the store does not have yet
    double since = 0; ///< seconds since 1970-01-01 UTC
    std::string what; ///< in words
    bool operator==(const OpenEdit&) const = default;
};

/// A client that has the store open.
struct PresenceEntry {
    std::string login; ///< as in the change log
    std::string place; ///< name of its machine
    double since = 0;
    std::vector<OpenEdit> edits;
    bool operator==(const PresenceEntry&) const = default;
};

constexpr size_t mostPresent = 1000;
constexpr size_t mostOpenEdits = 8;
constexpr size_t longestPresenceText = 200;   ///< bytes of a login, place, key or of words
constexpr size_t longestPresenceEntry = 6000; ///< bytes of an entry as text

/// One client's part in it. From one thread; no operation throws; destroying it takes the client
/// out of what the others see, and waits for no server.
class Presence {
public:
    virtual ~Presence() = default;
    /// What this client edits now, in place of what it announced before. The others learn of it,
    /// and of this client, with the next call of look. Edits beyond mostOpenEdits are left out.
    virtual void announce(std::vector<OpenEdit> edits) = 0;
    /// All other clients that are alive, by login and time. After a failure nobody is known; the
    /// next call tries again.
    virtual Status look(std::vector<PresenceEntry>* others) = 0;
    /// Readable when somebody came, went or changed something; -1: none. May change with each look.
    virtual int wakeFd() const = 0;
    /// In so many milliseconds look has something to do even if the descriptor stays silent.
    virtual int nextLookMs() const = 0;
};

/// Takes part in the store behind a URL, as that login. Needs no server yet. Null, with the reason
/// in `status`, if the URL names no store.
std::unique_ptr<Presence> openPresence(const std::string& url, const std::string& login,
                                       Status* status);

/// An entry as text: a line "orvo-presence 1", then lines of a name, a blank and a value, of which
/// `edit` has seconds, table, key ("-" if empty) and words. Texts too long are cut.
std::string presenceText(const PresenceEntry& entry);
/// Reads such a text; false for any other. Lines that cannot be meant are passed over.
bool parsePresence(std::string_view text, PresenceEntry* entry);
/// Puts the entries into the order in which look gives them.
void sortPresence(std::vector<PresenceEntry>* entries);
/// An entry of this client, on this machine, from now on.
PresenceEntry ownPresence(const std::string& login);

} // namespace orvo::store

#endif
