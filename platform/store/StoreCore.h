// StoreCore.h: what every kind of store does alike, over a handful of database operations.
#ifndef ORVO_PLATFORM_STORE_STORECORE_H
#define ORVO_PLATFORM_STORE_STORECORE_H

#include "platform/mdx/MdxBuild.h"
#include "platform/store/FolderTree.h"
#include "platform/store/Maintenance.h"
#include "platform/store/Store.h"
#include "platform/store/WaitPolicy.h"
#include "platform/store/WritePlan.h"

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvo::store {

/// The Status of an exception being handled.
Status statusOfException() noexcept;

/// Runs a body that gives a Status; an exception becomes a Status too, so that none crosses the
/// interface.
template <typename Body>
Status guarded(const Body& body) noexcept {
    const CallMark mark;
    try {
        return body();
    } catch (...) {
        return statusOfException();
    }
}

/// The largest content of one stored file. Every database carries it in one value.
constexpr uint64_t largestFile = 512ull << 20;

class StoreCore : public MaintainedStore {
public:
    std::string login() const final { return m_login; }

    Status fetchWhere(std::string_view table, std::string_view field, std::string_view value,
                      MDArray* into) final;
    Status fetchLinked(std::string_view table, std::string_view field, std::string_view key,
                       MDArray* into) final;
    Status update(std::string_view table, const MDArray* records,
                  UpdateGuard* guard = nullptr) final;

    Status logEnd(LogCursor* cursor) final;
    const Written& lastWritten() const final { return m_written; }
    Status outcomeOf(const Written& written, Outcome* outcome) final;

    Status formGet(std::string_view form, bool withBytes, std::vector<StoredFile>* files) final;
    Status formPut(std::string_view path, const std::vector<FileToPut>& files) final;
    Status formDelete(const std::vector<std::string>& forms) final;
    Status fileGet(std::string_view path, std::string_view name, bool withBytes,
                   std::vector<StoredFile>* files) final;
    Status filePut(const std::vector<FileToPut>& files) final;
    Status fileDelete(const std::vector<std::pair<std::string, std::string>>& files) final;
    Status fileArea(
        const std::function<void(const std::string& path, const StoredFile& file)>& each) final;

    Status userAdd(const User& user) final;

    Status history(const LogQuery& query, int limit, std::vector<Change>* changes) final;
    Status writeOut(Receiver& into) final;
    Status replaceAll(const std::function<Status(Receiver& store)>& work) final;
    Status loginAdd(const User& user) final;
    Status missingLogins(std::vector<std::string>* logins) override;

protected:
    /// Nothing that was read before says anything about the store that is open now.
    void forgetWhatWasRead() { m_folders = {}; }

    explicit StoreCore(std::string login) : m_login(std::move(login)) {}

    /// Gives an empty array the table's structure, key 0 and what `write` writes. After a failure
    /// the array is empty again.
    static Status records(const TableDef& table, MDArray* into,
                          const std::function<Status(mdx::RecordWriter& writer)>& write);

    // What a kind of store provides. These may throw std::bad_alloc.
    using Row = std::vector<Value>;
    using Work = std::function<Status()>;

    /// How a text field is compared: byte for byte, or as keys and links are, without regard to the
    /// case of ASCII letters (they hold no others).
    enum class TextMatch { Exact, Key };
    /// Fetches into an empty array the records whose field matches; Key for a key or link only.
    virtual Status fetchMatching(const TableDef& table, const FieldDef& field, TextMatch match,
                                 std::string_view value, MDArray* into) = 0;

    /// Runs the work on one snapshot of the database.
    virtual Status inRead(const Work& work) = 0;
    /// Runs the work in one transaction that writes under the login; commits if it gives Ok, else
    /// (also when it throws) nothing is changed.
    virtual Status inWrite(const Work& work) = 0;
    /// Applies one write, inside inWrite. An insert of an existing key is Refused; update and
    /// delete of a missing one do nothing.
    virtual Status apply(const TableDef& table, const Write& write) = 0;
    /// Inserts or updates a row of contentTable() together with its bytes, inside inWrite.
    virtual Status applyContent(const Write& write, std::string_view bytes) = 0;
    /// The bytes of the content with that key.
    virtual Status contentBytes(const std::string& key, std::string* bytes) = 0;
    /// Selects these fields of all rows, or of those where a field equals a value (NULL included).
    virtual Status select(const TableDef& table, const std::vector<int>& fields,
                          const std::function<void(const Row& row)>& each) = 0;
    virtual Status selectWhere(const TableDef& table, const std::vector<int>& fields, int where,
                               const Value& value,
                               const std::function<void(const Row& row)>& each) = 0;

    /// Selects key, folder and name of the resources of a stored kind (type 3 or 4) whose
    /// foldedName() that is: all of them, or those with that link to a folder (NULL included).
    virtual Status selectStored(int type, std::string_view folded,
                                const std::optional<Value>& folder,
                                const std::function<void(const Row& row)>& each) = 0;
    /// The newest id of the log, and whether records of the table have changed after the id
    /// `since`, or may have, the log no longer telling. Inside inRead or inWrite.
    virtual Status changedSince(const TableDef& table, int64_t since, int64_t* newest,
                                bool* changed) = 0;

    /// Makes the login of a new user, inside inWrite. A store without logins refuses what it would
    /// need one for.
    virtual Status makeLogin(const User& user);
    virtual bool hasLogins() const { return false; }

    /// Checks a cursor against the ends of the log and the changes read from the cursor's own on,
    /// which is taken away.
    static Status checkCursor(const LogCursor& cursor, int64_t pruned, int64_t newest,
                              std::vector<Change>* changes);
    /// Of the last inWrite.
    Written m_written;

    // For guarded updates. Keys are those of isKey, folded.

    /// Adds the folded keys of those records of the table that are stored. Inside inWrite.
    virtual Status storedKeys(const TableDef& table, const std::vector<std::string>& keys,
                              std::set<std::string>* stored) = 0;
    /// The changes after `since` of these records, in the order of the log. Inside inWrite.
    virtual Status changesOf(const TableDef& table, const std::vector<std::string>& keys,
                             int64_t since, std::vector<Change>* changes) = 0;

    // For what Maintenance.h asks.
    struct Amount {
        uint64_t records = 0, contents = 0, bytes = 0;
    };
    /// How much the store holds, inside inRead.
    virtual Status measure(Amount* amount) = 0;
    /// Selects all rows in the order of their keys, not all at once, inside inRead.
    virtual Status selectInOrder(const TableDef& table,
                                 const std::function<Status(const Row& row)>& each) = 0;
    /// Hands over the bytes of the content with that key piece by piece, inside inRead.
    virtual Status contentPieces(const std::string& key,
                                 const std::function<Status(std::string_view piece)>& each) = 0;
    /// Deletes all records and contents, inside inWrite.
    virtual Status clearAll() = 0;
    /// Inserts a row of contentTable(), whose bytes come in pieces, `size` in all, before anything
    /// else is written; inside inWrite.
    virtual Status beginContent(const Write& write, uint64_t size) = 0;
    virtual Status contentPiece(std::string_view piece) = 0;
    virtual Status endContent() = 0;
    /// Selects changes of the log; `which` is what follows the table in the statement.
    virtual Status selectChanges(const std::string& which, std::vector<Change>* changes) = 0;

private:
    class Filler;
    /// The writes of one guarded update, inside inWrite.
    Status applyGuarded(const TableDef& table, std::vector<Write>& writes, UpdateGuard& guard);
    Status lastDeletion(const TableDef& table, const std::string& key,
                        std::optional<Change>* deletion);
    Status checkParents(const TableDef& table, const std::vector<Write>& writes,
                        std::optional<Change>* deletedParent);
    struct Resource {
        std::string key, folder, name;
    };
    struct Content {
        std::string key, name;
        StoredFile file;
    };
    /// Refuses an update that would put a record below itself; inside inWrite.
    Status refuseCycles(const TableDef& table, const std::vector<Write>& writes);
    Status fetchField(std::string_view table, std::string_view field, TextMatch match,
                      std::string_view value, MDArray* into);
    /// A tree of folders, and the id of the log up to which it is right.
    struct KnownFolders {
        std::shared_ptr<const FolderTree> tree;
        int64_t position = 0;
    };
    enum class Within { Read, Write };
    /// The folders of an area as the present transaction sees them.
    Status folders(Area area, Within transaction, std::shared_ptr<const FolderTree>* tree);
    Status forms(std::string_view name, const std::function<void(const Row& row)>& each);
    Status filesIn(const Value& folder, std::string_view name,
                   const std::function<void(const Row& row)>& each);
    Status form(std::string_view name, std::optional<Resource>* found);
    Status fileIn(const std::vector<std::string>& folders, std::string_view name,
                  std::optional<Resource>* found);
    Status contents(const std::string& resource, std::vector<Content>* found);
    Status insertResource(int type, const std::string& folder, std::string_view name,
                          Resource* made);
    Status putContent(const std::string& resource, std::string_view name, const FileToPut& file,
                      const std::vector<Content>& present);
    Status putFile(const FolderTree& tree, const FileToPut& file);
    Status removeResource(const std::string& key);

    const std::string m_login;
    /// By area: made of tens of thousands of records, and asked for with every file.
    std::array<KnownFolders, 2> m_folders;
};

} // namespace orvo::store

#endif
