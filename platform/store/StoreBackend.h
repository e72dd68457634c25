// StoreBackend.h: what a database provides. StoreCore makes the operations of a store of it; a new
// kind of database implements this, and what StoreCore leaves open of Store and MaintainedStore.
//
// Every function gives a Status and may throw std::bad_alloc. They are called inside inRead or
// inWrite unless said otherwise. Keys are compared without regard to the case of ASCII letters,
// which is all that keys hold; "folded" is a text in lower case (foldedKey, foldedName in Names.h).
#ifndef ORVO_PLATFORM_STORE_STOREBACKEND_H
#define ORVO_PLATFORM_STORE_STOREBACKEND_H

#include "platform/store/Maintenance.h"
#include "platform/store/Store.h"
#include "platform/store/WritePlan.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::store {

/// Changes of the log by more than LogQuery names.
struct ChangeQuery : LogQuery {
    std::optional<int64_t> id; ///< the one of this id
    std::string call;          ///< left by the write call of this name; empty: by any
    int limit = 1;             ///< at most so many of them, the newest first
};

class StoreBackend {
public:
    virtual ~StoreBackend() = default;

    using Row = std::vector<Value>;
    using Work = std::function<Status()>;
    using EachRow = std::function<void(const Row& row)>;
    using EachPiece = std::function<Status(std::string_view piece)>;

    // Transactions -------------------------------------------------------------------------------

    /// Runs the work on one snapshot of the database. Outside any transaction.
    virtual Status inRead(const Work& work) = 0;
    /// Runs the work in one transaction that writes under the login; commits if it gives Ok, else
    /// (also when it throws) nothing is changed. Outside any transaction. Sets what lastWritten()
    /// of the store gives.
    virtual Status inWrite(const Work& work) = 0;

    // Records ------------------------------------------------------------------------------------

    /// Fetches all records into an empty array. Outside a transaction, like fetchMatching.
    virtual Status fetchAll(const TableDef& table, MDArray* into) = 0;
    /// How a text field is compared: byte for byte, or as keys and links are.
    enum class TextMatch { Exact, Key };
    /// Fetches into an empty array the records whose field matches; Key for a key or link only.
    virtual Status fetchMatching(const TableDef& table, const FieldDef& field, TextMatch match,
                                 std::string_view value, MDArray* into) = 0;
    /// Selects these fields of all rows, or of those where a field equals a value (NULL included).
    virtual Status select(const TableDef& table, const std::vector<int>& fields,
                          const EachRow& each) = 0;
    virtual Status selectWhere(const TableDef& table, const std::vector<int>& fields, int where,
                               const Value& value, const EachRow& each) = 0;
    /// Selects all rows in the order of their keys, not all at once.
    virtual Status selectInOrder(const TableDef& table,
                                 const std::function<Status(const Row& row)>& each) = 0;
    /// Selects these fields of those of the records with these folded keys that are stored.
    virtual Status selectKeys(const TableDef& table, const std::vector<int>& fields,
                              const std::vector<std::string>& keys, const EachRow& each) = 0;
    /// Adds the folded keys of those of them that are stored.
    Status storedKeys(const TableDef& table, const std::vector<std::string>& keys,
                      std::set<std::string>* stored);
    /// Selects key and field of the records whose text field equals one of these keys, folded ones
    /// for a link, exactly for any other field.
    virtual Status selectNaming(const TableDef& table, int field,
                                const std::vector<std::string>& keys, const EachRow& each) = 0;
    /// Applies one write, inside inWrite. An insert of an existing key is Refused; update and
    /// delete of a missing one do nothing. With a resource its contents go too.
    virtual Status apply(const TableDef& table, const Write& write) = 0;
    /// Applies writes one after the other, or as if.
    virtual Status applyAll(const TableDef& table, const std::vector<Write>& writes);
    /// Deletes all records and contents, inside inWrite.
    virtual Status clearAll() = 0;

    // Stored forms and files ---------------------------------------------------------------------

    /// Selects key, folder and name of the resources of a stored kind (form or file) whose
    /// foldedName() that is: all of them, or those with that link to a folder (NULL included).
    virtual Status selectStored(int type, std::string_view folded,
                                const std::optional<Value>& folder, const EachRow& each) = 0;
    /// Inserts or updates a row of contentTable() together with its bytes, inside inWrite.
    virtual Status applyContent(const Write& write, std::string_view bytes) = 0;
    /// The bytes of the content with that key; at once, or piece by piece.
    virtual Status contentBytes(const std::string& key, std::string* bytes) = 0;
    virtual Status contentPieces(const std::string& key, const EachPiece& each) = 0;
    /// Inserts a row of contentTable(), whose bytes come in pieces, `size` in all, before anything
    /// else is written; inside inWrite.
    virtual Status beginContent(const Write& write, uint64_t size) = 0;
    virtual Status contentPiece(std::string_view piece) = 0;
    virtual Status endContent() = 0;

    // Kept versions. A database without them keeps none.

    /// Adds the versions that the query lets pass, the newest first.
    virtual Status selectVersions(const VersionQuery& /*query*/,
                                  std::vector<KeptVersion>* /*versions*/) {
        return {};
    }
    /// Outside inWrite.
    virtual Status versionPieces(int64_t /*id*/, const EachPiece& /*each*/) { return {}; }
    /// As applyContent, with the bytes of a version whose checksum is known.
    virtual Status applyVersion(const Write& write, const KeptVersion& version);
    /// Remembers up to which change they were.
    virtual Status deleteVersions(const std::vector<int64_t>& /*ids*/) { return {}; }
    /// Up to which change versions may be missing.
    virtual Status selectVersionsEnd(int64_t* change) {
        *change = std::numeric_limits<int64_t>::max();
        return {};
    }

    struct Amount {
        uint64_t records = 0, contents = 0, bytes = 0;
    };
    /// How much the store holds.
    virtual Status measure(Amount* amount) = 0;

    // Change log ---------------------------------------------------------------------------------

    /// The newest id of the log, and whether records of the table have changed after the id
    /// `since`, or may have, the log no longer telling.
    virtual Status changedSince(const TableDef& table, int64_t since, int64_t* newest,
                                bool* changed) = 0;
    /// What keeps the log from telling of everything after `since`: it was shortened, or is no
    /// longer the one that had reached `since`.
    enum class Gap { None, Shortened, Replaced };
    Status gapSince(int64_t since, Gap* gap);
    static std::string gapWords(Gap gap);
    /// The changes after `since` of the records with these folded keys, in the order of the log.
    virtual Status changesOf(const TableDef& table, const std::vector<std::string>& keys,
                             int64_t since, std::vector<Change>* changes) = 0;
    /// The changes that the query lets pass. Outside a transaction, or right behind one of the two
    /// calls above.
    virtual Status selectChanges(const ChangeQuery& query, std::vector<Change>* changes) = 0;

    // Logins -------------------------------------------------------------------------------------

    /// Whether the database has logins of its own.
    virtual bool hasLogins() const { return false; }
    /// Makes the login of a new user, inside inWrite. Not called if there are none.
    virtual Status makeLogin(const User& /*user*/) { return {}; }
    /// Changes the rights or the password of a user's login, inside inWrite.
    virtual Status changeLogin(const std::string& /*login*/, const UserChange& /*change*/) {
        return {};
    }
    /// Takes the rights at this store from a login, if there is such a login, inside inWrite.
    virtual Status removeLogin(const std::string& /*login*/) { return {}; }
};

} // namespace orvo::store

#endif
