// Maintenance.h: what the administrator's command requires of a store beyond Store.h: its history,
// its whole content on the way out and in, and copies of it that serve as backups.
//
// The conventions of Store.h hold.
#ifndef ORVO_PLATFORM_STORE_MAINTENANCE_H
#define ORVO_PLATFORM_STORE_MAINTENANCE_H

#include "platform/store/Store.h"
#include "platform/store/WritePlan.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::store {

/// Code of a Status: the work was ended because its Progress said so.
constexpr int Stopped = 25;

/// Told now and then how far long work has come: how much is done, and how much there is in all
/// (0: nobody knows), in the same unit. False ends the work, which then leaves nothing half-done.
using Progress = std::function<bool(uint64_t done, uint64_t all)>;

/// Which changes of the log are wanted; what is left empty lets every change pass.
struct LogQuery {
    std::string table;                ///< of exactly this name
    std::string key;                  ///< without regard to case, as keys compare
    std::optional<std::string> login; ///< of exactly this name; empty: by hand
    /// Made at that time or later; before that time. Changes that a clock set back by more than an
    /// hour has dated are missed.
    std::optional<double> since, until;
    int64_t below = 0;    ///< with a lower id than this; 0: any
    int64_t above = 0;    ///< with a higher id than this
    int64_t group = 0;    ///< of this group; 0: any
    bool undoing = false; ///< only those with which a group that takes others back begins
    bool oldestFirst = false;
};

/// How many changes of one kind a group of the log has.
struct ChangeCount {
    /// What of a record an update changed: any field by which it is placed below another one; the
    /// order among its siblings alone; anything else. Other for all that are no updates.
    enum Part { Other, Place, Order };
    std::string table;
    int code = 0;
    Part part = Other;
    int64_t count = 0;
    int64_t first = 0, last = 0; ///< ids of the first and the last of them
};

/// Where a write to contentTable() takes the bytes of its content from.
struct BytesToWrite {
    int64_t version = 0; ///< a KeptVersion; 0: none
    /// These, which the caller keeps until they are written; none and no version: the bytes stay.
    std::optional<std::string_view> bytes;
};

/// Writes to one table, to be applied in their order.
struct TableWrites {
    const TableDef* table = nullptr; ///< of tables(), or contentTable()
    std::vector<Write> writes;
    /// Of contentTable(): for each write, if there are any. An insert needs bytes; a write with
    /// bytes has their size among its values.
    std::vector<BytesToWrite> bytes = {};
};

/// Bytes of a content (contentTable()) that were replaced or deleted, and are kept.
struct KeptVersion {
    int64_t id = 0;                 ///< grows
    int64_t event = 0;              ///< the change that replaced or deleted them
    std::string login;              ///< who did; empty: by hand
    double time = 0;                ///< and when
    std::string key;                ///< of the content
    std::string resource;           ///< key of the form or file that it belonged to
    std::string name;               ///< of the file
    std::optional<double> fileTime; ///< of the file, as StoredFile::time
    uint64_t size = 0;
    std::string sha256; ///< of the bytes; empty: nobody knows
};

/// Which versions are wanted; what is left empty lets every one pass.
struct VersionQuery {
    std::string resource;                             ///< of the contents of this form or file
    std::optional<std::vector<std::string>> contents; ///< of these contents
    int64_t id = 0;                                   ///< this one
};

struct PrunedVersions {
    int64_t count = 0;
    uint64_t bytes = 0;
};

/// Takes a whole installation: all records table by table in the order of tables(), then the
/// contents, each followed by its bytes. The first call that does not give Ok ends the work.
class Receiver {
public:
    virtual ~Receiver() = default;
    /// How much is to come, before everything else.
    virtual Status expect(uint64_t records, uint64_t contents, uint64_t bytes) = 0;
    /// A record: a value for each field of the table. `place` names it in messages; empty: by its
    /// table and key.
    virtual Status record(const TableDef& table, const std::vector<Value>& values,
                          const std::string& place) = 0;
    /// A record of contentTable(), whose "size" tells how many bytes follow.
    virtual Status content(const std::vector<Value>& values, const std::string& place) = 0;
    virtual Status bytes(std::string_view piece) = 0;
};

/// Refused if a store cannot hold these values as a new record of the table, a value for each
/// field; of contentTable() with a name that a file can have. `place` as in Receiver::record.
Status checkRecord(const TableDef& table, const std::vector<Value>& values,
                   const std::string& place);

/// Takes the next piece of some bytes; anything but Ok ends the reading.
using TakePiece = std::function<Status(std::string_view piece)>;

/// What is to be changed of a user; what is left empty stays.
struct UserChange {
    std::optional<std::string> lastName, firstName, midlName;
    std::optional<bool> program;
    // Only for a database that has logins of its own; another refuses them.
    std::optional<bool> viewer; ///< may read only, or write too
    std::string password = {};
};

class MaintainedStore : public Store {
public:
    // Change log ---------------------------------------------------------------------------------

    /// The newest changes that the query lets pass, newest first (or the oldest, oldest first), at
    /// most `limit` of them.
    virtual Status history(const LogQuery& query, int limit, std::vector<Change>* changes) = 0;
    /// Counts the changes of a group by their kinds, in the order of their first ones. Their values
    /// are not read.
    virtual Status countChanges(int64_t group, std::vector<ChangeCount>* counts) = 0;
    /// All changes of these records after an id, oldest first. Keys in any case; those that no
    /// record can have are passed over.
    virtual Status changesSince(const TableDef& table, const std::vector<std::string>& keys,
                                int64_t since, std::vector<Change>* changes) = 0;

    // Records by key, and writes to several tables ------------------------------------------------

    /// Adds the values of those of these records that are stored, by folded key.
    virtual Status storedValues(const TableDef& table, const std::vector<std::string>& keys,
                                std::map<std::string, std::vector<Value>>* values) = 0;
    /// Adds, of all records of a table whose field names one of these keys, their keys and what
    /// they name, both as they are spelled. A link names without regard to case, any other field
    /// exactly.
    virtual Status keysNaming(const TableDef& table, int field,
                              const std::vector<std::string>& keys,
                              std::vector<std::pair<std::string, std::string>>* found) = 0;
    /// Hands over the folded key and the place (NamePlaces.h) of each record that has a name, of a
    /// table whose names are to be unique.
    virtual Status namePlaces(
        const TableDef& table,
        const std::function<void(const std::string& key, const std::string& place)>& each) = 0;
    /// Applies writes to several tables in one transaction, which is a new group of the change log
    /// that takes back the groups `undoes`. Refuses what update() refuses with a guard that has
    /// seen the log up to `seen`. Outdated, and nothing is written, if one of the records was
    /// changed after that, the log no longer reaches back to it, something is refused and others
    /// have written since (it may be their doing), or groups are taken back and another one was
    /// since: what a record goes back to depends on which groups still stand.
    virtual Status writeAll(const std::vector<TableWrites>& parts, int64_t seen,
                            const std::vector<int64_t>& undoes) = 0;
    /// How many of the oldest changes were made before that time, and the id of the last of them
    /// (0: none): up to the first that was made at that time or later. A change dated after now
    /// says nothing of when it was made; those that follow it do.
    virtual Status logBefore(double time, int64_t* id, int64_t* count) = 0;

    // Kept versions ------------------------------------------------------------------------------

    /// The versions that the query lets pass, the newest first, without their bytes.
    virtual Status versions(const VersionQuery& query, std::vector<KeptVersion>* versions) = 0;
    /// Hands over the bytes of a version, a piece at a time; null: they are only checked. They are
    /// never in memory as a whole. UnknownName if it is kept no more; Failed, naming it, if they
    /// are not the ones that its checksum was made of: then the pieces are not to be used.
    virtual Status versionBytes(int64_t id, const TakePiece& take) = 0;
    /// Whether the stored content of this key has the bytes of the version, whose checksum must
    /// tell: both that of what is stored and its size are taken from the bytes. False as well if
    /// there is no such content. Fails as versionBytes() does.
    virtual Status hasBytesOf(const std::string& content, int64_t version, bool* has) = 0;
    /// Of a later change than this one, every version is kept: if it has none, it took no bytes
    /// away.
    virtual Status versionsForgotten(int64_t* change) = 0;
    /// Forgets the versions that were replaced before that time and, of the others, the oldest ones
    /// beyond so many bytes. With `onlyLook` it only tells what would go.
    virtual Status pruneVersions(double before, uint64_t mostBytes, bool onlyLook,
                                 PrunedVersions* pruned) = 0;

    // The whole content --------------------------------------------------------------------------

    /// Hands over all records and contents of one moment, each kind in the order of its keys. What
    /// others write meanwhile neither waits nor shows.
    virtual Status writeOut(Receiver& into) = 0;
    /// Replaces all records and contents by what `work` hands over, in one transaction; the change
    /// log tells of it record by record. Refused: an existing or impossible key, a value that its
    /// field cannot hold, content of another length than its record says. Links to missing records
    /// and circles of parents are taken: what a store holds can be put into another one.
    virtual Status replaceAll(const std::function<Status(Receiver& store)>& work) = 0;

    // Backups ------------------------------------------------------------------------------------

    /// Whether a file of the disk, there or still to be made, is one of those that the store lives
    /// in: what is put in its place takes the store's content with it.
    virtual bool livesIn(const std::string& file) const = 0;
    /// Copies the store as it is at one moment, its log included, into a file, which is there and
    /// empty. Others may write meanwhile. On failure the file's content is undefined.
    virtual Status backup(const std::string& file, const Progress& progress) = 0;
    /// Makes the store what the backup holds, whatever it was, in one transaction. All readers of
    /// the log find their cursors pruned. Refused, with nothing changed, if the file is no backup
    /// of this kind of store, is damaged, or has not the checksum beside it (Checksum.h). Without
    /// one its tables and rows must be as the program makes them; that leaves edited texts unseen.
    virtual Status restore(const std::string& file, const Progress& progress) = 0;

    // Triggers -----------------------------------------------------------------------------------

    /// Makes what writes the log anew, triggers and on a server functions and rights, if any of it
    /// is missing, disabled or not as the program makes it; `differences`, a line each, were found
    /// (as by integrity). Without one nothing is written. Changes may have gone unlogged meanwhile:
    /// all readers of the log find their cursors pruned. What others added besides stays.
    virtual Status remakeTriggers(std::vector<std::string>* differences) = 0;

    /// What others may do though the store means to forbid it, since its owner has no right to take
    /// that from them: a line each, with what closes it. integrity() tells of it as well.
    virtual Status looseRights(std::vector<std::string>* lines) {
        lines->clear();
        return {};
    }

    // Users and logins ---------------------------------------------------------------------------

    /// Changes what `change` has, of the user of that login (without regard to case). Refused: no
    /// such user; rights or a password where the database has no logins, or not that one.
    virtual Status userChange(const std::string& login, const UserChange& change) = 0;
    /// Deletes a user in one transaction with the locks that he holds, whose number it gives, and
    /// his rights at the database. A login at the database stays: others may depend on it. Refused:
    /// no such user.
    virtual Status userRemove(const std::string& login, int* unlocked) = 0;

    /// Gives a user who is in the table Users his login at the database. Refused by a database that
    /// has no logins.
    virtual Status loginAdd(const User& user) = 0;
    /// Whether the database has logins, with rights that a record in the table Users does not give.
    virtual bool givesRights() const = 0;
    /// The logins in the table Users that the database does not know; none if it has no logins.
    virtual Status missingLogins(std::vector<std::string>* logins) = 0;
};

/// As store::open.
std::unique_ptr<MaintainedStore> openMaintained(const std::string& url, const OpenOptions& options,
                                                Status* status);

} // namespace orvo::store

#endif
