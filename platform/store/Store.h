// Store.h: what the session, the client and the admin command require of a database.
//
// Conventions:
//  1. Texts are UTF-8 here, Windows-1251 in records; the store converts where it reads and writes
//     records.
//  2. Every operation gives a Status. On failure nothing was changed. `text` is one line in Russian
//     for the user or the administrator: what failed and why; it never holds a password.
//  3. One thread per Store object. Several processes may have the same store open.
//  4. Nothing throws across this interface.
#ifndef ORVO_PLATFORM_STORE_STORE_H
#define ORVO_PLATFORM_STORE_STORE_H

#include "frame/OrvoMdx.h"
#include "platform/store/Schema.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvo::store {

/// Result codes of the server; the numbers with a text of their own in the editors keep it.
enum Code : int {
    Ok = 0,
    BadStructure = -4,
    ConnectionBroken = -3,
    BadArguments = -2,
    NoMemory = -1,
    NotActive = 2,
    CannotConnect = 3,
    BadLogin = 4,
    UnknownName = 5,
    Timeout = 7,
    Refused = 20,    ///< the write breaks a rule: existing key, unknown table or field, no right
    Failed = 21,     ///< the database failed: disk full, read-only, damaged
    NewerStore = 22, ///< made by a newer version
    NotAStore = 23,
    LogPruned = 24,     ///< the change log no longer reaches back to the cursor
    ParentDeleted = 26, ///< a record was to be placed below one that was deleted
    LogReplaced = 27,   ///< the change log is not the one in which the cursor was taken
    Outdated = 28,      ///< somebody changed the records since they were looked at
};

/// What an operation came to. To be looked at: a write that failed and was taken for saved is a
/// lost edit.
struct [[nodiscard]] Status {
    int code = Ok;
    std::string text;
    bool ok() const { return code == Ok; }
};

struct StoredFile {
    std::string name;
    std::optional<double> time; ///< seconds since 1970-01-01 UTC
    uint64_t size = 0;
    std::string bytes; ///< empty unless asked for
};

/// A file on its way into the store; the bytes stay the caller's.
struct FileToPut {
    std::string path; ///< folder captions joined by "/"; ignored for forms
    std::string name;
    std::string_view bytes;
    std::optional<double> time;
};

/// One row of the change log.
struct Change {
    int64_t id = 0;
    int code = 0; ///< OrvoEventInsert, OrvoEventUpdate or OrvoEventDelete
    std::string table;
    std::string key;
    std::string login; ///< who wrote; empty: by hand, past a database that knows no logins
    double time = 0;
    std::string after;  ///< JSON object: the changed fields; all fields of an insert
    std::string before; ///< JSON object: their values before; all fields of a delete
    /// What one action of a user wrote is one group: the id of its first change. A transaction by
    /// hand is a group in PostgreSQL; in SQLite, which tells no transactions apart, a statement is.
    int64_t group = 0;
    std::string client;          ///< the program that wrote, as it calls itself; may be empty
    std::string place;           ///< the machine on which it ran; may be empty
    std::vector<int64_t> undoes; ///< of a group's first change: the groups that it takes back
};

/// A place in the change log, with proof that the log there is the one that was read: a server may
/// have failed over to one that lacks the last changes, and others have been written since.
struct LogCursor {
    int64_t id = 0;
    /// Of the change of that id: proofOf, proofOfHead, or logEnd's; empty: nobody asks for it.
    std::string proof;

    LogCursor(int64_t place = 0) : id(place) {} // NOLINT(google-explicit-constructor)
    LogCursor(int64_t place, std::string proofOfIt) : id(place), proof(std::move(proofOfIt)) {}
    /// The place behind a change.
    explicit LogCursor(const Change& change);
};

/// A digest of everything that the log knows of a change.
std::string proofOf(const Change& change);
/// The same of what is known of a change without its values.
std::string proofOfHead(const Change& change);

/// What a write call left in the log, or may have left there.
struct Written {
    int64_t since = 0;    ///< the log had reached this change before
    int64_t first = 0;    ///< its first change; 0: it left none, as far as anyone knows
    LogCursor last;       ///< its last one
    std::string call;     ///< names the call in the log of a server
    bool unknown = false; ///< the connection was lost at the commit, and nobody could be asked
};
enum class Outcome { Saved, NotSaved, Unknown };

struct User {
    std::string login, lastName, firstName, midlName;
    bool program = false;
    // Only for a database that has logins of its own; another refuses them.
    bool viewer = false;       ///< may read, but not write
    std::string password = {}; ///< empty: none is set
};

struct UpdateGuard;

class Store {
public:
    virtual ~Store() = default;

    /// For the status bar and messages: the URL without a password.
    virtual std::string displayName() const = 0;
    /// The login under which this object writes.
    virtual std::string login() const = 0;
    /// Whether that login may write here, as far as is known: a standby may take over, see changed.
    virtual bool mayWrite() const { return true; }
    /// Opens the store at the same address once more, if what was opened is no longer there: every
    /// call then gives ConnectionBroken until this gives Ok. A cursor of before is void. Ok, and
    /// nothing done, for a store that is there, or that finds its own way back.
    virtual Status reopen() { return {}; }

    /// Names the store that the log belongs to, as a UUID: made with a new store, and
    /// made anew when a backup is restored. A number of the log means something only together with
    /// it.
    virtual Status identity(std::string* identity) = 0;

    // Tables -------------------------------------------------------------------------------------

    /// Structure and all records, with key 0 over KeyLink. UnknownName for an unknown table. The
    /// array must be empty.
    virtual Status fetch(std::string_view table, MDArray* into) = 0;
    /// The records in which a text field equals `value` (UTF-8) exactly, byte for byte, zero bytes
    /// included.
    virtual Status fetchWhere(std::string_view table, std::string_view field,
                              std::string_view value, MDArray* into) = 0;
    /// The records in which a key or link field names `key`, without regard to case as keys
    /// compare. UnknownName for a field that is neither.
    virtual Status fetchLinked(std::string_view table, std::string_view field, std::string_view key,
                               MDArray* into) = 0;
    /// The records with these keys that are there, in no order, without regard to case as keys
    /// compare: however many they are, one question to the database.
    virtual Status fetchKeys(std::string_view table, const std::vector<std::string>& keys,
                             MDArray* into) = 0;
    /// Applies the posted records in order of entry, by their flags, in one transaction: all or
    /// none. Only fields with the user bit are written; empty text in a link field becomes NULL.
    /// Refused: unknown table, a field that the table lacks, flag 1 on an existing key or on an
    /// empty one, flag 0. Flags 2 and 4 on a missing or empty key write nothing for that record.
    ///
    /// With a guard (Merge.h) updates give way to what others wrote after guard->seen, field by
    /// field, inside the same transaction; updates of missing records are reported; and a new
    /// record, or one that is moved, is refused if the record that it is placed below was deleted;
    /// and so is the deletion of a record into which others have put something after guard->seen.
    virtual Status update(std::string_view table, const MDArray* records,
                          UpdateGuard* guard = nullptr) = 0;

    // Change log ---------------------------------------------------------------------------------

    /// Id of the newest change.
    virtual Status logPosition(int64_t* id) = 0;
    /// The place behind it, with proof: the cursor to take before the first fetch.
    virtual Status logEnd(LogCursor* cursor) = 0;
    /// The changes after `cursor`, in commit order, at most `limit` of them. LogPruned if some of
    /// them are gone; LogReplaced if the proof fails, and then it cannot be told what was missed.
    virtual Status readLog(const LogCursor& cursor, int limit, std::vector<Change>* changes) = 0;
    /// The same for whoever shows one desktop and nothing else: changes may be left out that
    /// concern other desktops only, or resources that neither the desktop names nor serve as icons.
    /// The cursor moves behind all that was looked through. `more`: the log may hold more.
    virtual Status readDesktopLog(std::string_view desktop, int limit, LogCursor* cursor,
                                  std::vector<Change>* changes, bool* more) = 0;
    /// From now on the write calls of this object belong to that group, if it is one of the same
    /// login that the log still tells of; else, and for 0 as in the beginning, each call is a group
    /// of its own. A call's new group has the id lastWritten().first.
    virtual void joinGroup(int64_t group) = 0;
    /// What the last write call of this object left in the log, if it succeeded or its outcome is
    /// unknown.
    virtual const Written& lastWritten() const = 0;
    /// Whether the log has what a write call left there. Unknown: pruned since.
    virtual Status outcomeOf(const Written& written, Outcome* outcome) = 0;
    /// Deletes the changes up to `id` included.
    virtual Status pruneLog(int64_t id) = 0;
    /// File descriptor that becomes readable when the log may have grown; -1 if there is none.
    virtual int wakeFd() const = 0;
    /// Whether the descriptor may become readable before what it announces can be read.
    virtual bool wakesEarly() const { return true; }
    /// Takes what the descriptor holds. To be called when it is readable, before readLog.
    virtual void takeWake() = 0;
    /// A cheap look whether the log may have grown since the last call of changed or readLog, or
    /// the server has become one that takes writes; for a slow poll behind the descriptor.
    virtual bool changed() = 0;

    // Stored forms and files ---------------------------------------------------------------------

    /// Files of the form (resource of type 3 with that name), in name order.
    virtual Status formGet(std::string_view form, bool withBytes,
                           std::vector<StoredFile>* files) = 0;
    /// Adds or replaces the files of one form and never deletes others. The form's name: the file
    /// name that ends in "_", if there is one, else the shortest. A new form gets its MenuResource
    /// row in the folder of the path. A path that names no folder is refused.
    virtual Status formPut(std::string_view path, const std::vector<FileToPut>& files) = 0;
    /// Deletes forms with their records. Unknown names are passed over.
    virtual Status formDelete(const std::vector<std::string>& forms) = 0;
    /// Files of that name in the folder (one, or none).
    virtual Status fileGet(std::string_view path, std::string_view name, bool withBytes,
                           std::vector<StoredFile>* files) = 0;
    virtual Status filePut(const std::vector<FileToPut>& files) = 0;
    virtual Status fileDelete(const std::vector<std::pair<std::string, std::string>>& files) = 0;
    /// The whole file area: folder path, file without bytes. For the local mirror and listings.
    virtual Status
    fileArea(const std::function<void(const std::string& path, const StoredFile& file)>& each) = 0;

    // Administration -----------------------------------------------------------------------------

    /// Adds a user, and his login at the database if it has such.
    virtual Status userAdd(const User& user) = 0;
    /// What the database itself says about its health: one line per damage, none if sound.
    virtual Status integrity(std::vector<std::string>* damages) = 0;
};

struct OpenOptions {
    /// Who writes. PostgreSQL takes the user of the session, unless that is the store's owner.
    std::string login;
    bool create = false;     ///< make the store if it is missing (never overwrites anything)
    std::string client = {}; ///< name of the program, for the change log
    /// Open a file that this user may read and not write for reading, instead of refusing it. A
    /// server lets in whoever may read in any case. See Store::mayWrite.
    bool allowReadOnly = false;
};

/// Opens the store behind a URL: "sqlite:///absolute/path.db" (or a plain path), or
/// "postgresql://..." as libpq takes it. Null on failure, with one clear line in `status`: missing,
/// not a store, newer, locked, read-only, full. A store of an older version is migrated in one
/// transaction.
std::unique_ptr<Store> open(const std::string& url, const OpenOptions& options, Status* status);

/// Whether a file name may enter the store: no separator, no control character, not empty, not "."
/// or "..".
bool isPlainFileName(std::string_view name);

} // namespace orvo::store

#endif
