// SqliteStore.h: a store in one SQLite file.
#ifndef ORVO_PLATFORM_STORE_SQLITESTORE_H
#define ORVO_PLATFORM_STORE_SQLITESTORE_H

#include "platform/store/ContentChecksum.h"
#include "platform/store/InvariantScope.h"
#include "platform/store/Kinds.h"
#include "platform/store/SqliteApi.h"
#include "platform/store/SqlitePlace.h"
#include "platform/store/SqliteWake.h"
#include "platform/store/StoreCore.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <unordered_map>

namespace orvo::store::sqlite {

/// How long an operation waits for another process's transaction.
constexpr int busyMilliseconds = 5000;

/// A "file:" URI by which a file is read without locks and without a journal, so that nothing is
/// made beside it.
std::string immutableUri(const std::string& path);

/// Opens the store that is in the file at a path without links. NotAStore and its like leave
/// everything as it was.
Status connectTo(const std::string& path, bool allowReadOnly, Connection* connection);

/// See Kinds.h.
Status parseUrl(const std::string& url, Location* location);
/// The address of the store in the file at that absolute path.
std::string urlOf(const std::string& path);
std::unique_ptr<MaintainedStore> openStore(const std::string& url, const OpenOptions& options,
                                           Status* status);

/// Before and after every transaction all of this holds; checkInvariants() looks at it.
///
///  1. After start() the connection is open and m_place knows the files that it has open.
///  2. No transaction is open, and no statement is in the midst of its rows: one that were would
///     keep its snapshot, and with it the write-ahead log from being carried over.
///  3. m_content is closed: it is open only inside inWrite, between beginContent and endContent.
///  4. The statements in m_statements and m_writes belong to m_connection.
///  5. m_written tells of one committed write, or of none: its changes follow `since` without gaps.
///  NciWriter, which names who writes, is empty for everybody outside our transactions.
class SqliteStore final : public StoreCore {
public:
    /// Takes an open connection to a store of the newest version.
    SqliteStore(Connection connection, const std::string& path, const OpenOptions& options);

    /// Prepares what every later call relies on. Failed if the file lacks a table or field.
    Status start();

    ~SqliteStore() override;

    std::string displayName() const override { return urlOf(m_path); }
    bool mayWrite() const override { return m_mayWrite; }
    Status reopen() override;

    Status identity(std::string* identity) override;

    Status logPosition(int64_t* id) override;
    Status readLog(const LogCursor& cursor, int limit, std::vector<Change>* changes) override;
    Status pruneLog(int64_t id) override;
    int wakeFd() const override { return m_watch.fd(); }
    void takeWake() override { m_watch.take(); }
    bool changed() override;

    Status integrity(std::vector<std::string>* damages) override;
    Status remakeTriggers(std::vector<std::string>* differences) override;

    Status countChanges(int64_t group, std::vector<ChangeCount>* counts) override;
    Status logBefore(double time, int64_t* id, int64_t* count) override;
    bool livesIn(const std::string& file) const override;
    Status backup(const std::string& file, const Progress& progress) override;
    Status restore(const std::string& file, const Progress& progress) override;

protected:
    Status fetchAll(const TableDef& table, MDArray* into) override;
    Status fetchMatching(const TableDef& table, const FieldDef& field, TextMatch match,
                         std::string_view value, MDArray* into) override;
    Status inRead(const Work& work) override;
    Status inWrite(const Work& work) override;
    Status apply(const TableDef& table, const Write& write) override;
    Status applyAll(const TableDef& table, const std::vector<Write>& writes) override;
    Status applyContent(const Write& write, std::string_view bytes) override;
    Status contentBytes(const std::string& key, std::string* bytes) override;
    Status select(const TableDef& table, const std::vector<int>& fields,
                  const EachRow& each) override;
    Status selectWhere(const TableDef& table, const std::vector<int>& fields, int where,
                       const Value& value, const EachRow& each) override;
    Status selectStored(int type, std::string_view folded, const std::optional<Value>& folder,
                        const EachRow& each) override;
    Status changedSince(const TableDef& table, int64_t since, int64_t* newest,
                        bool* changed) override;
    Status selectNaming(const TableDef& table, int field, const std::vector<std::string>& keys,
                        const EachRow& each) override;
    Status selectKeys(const TableDef& table, const std::vector<int>& fields,
                      const std::vector<std::string>& keys,
                      const std::function<void(const Row& row)>& each) override;
    Status changesOf(const TableDef& table, const std::vector<std::string>& keys, int64_t since,
                     std::vector<Change>* changes) override;
    Status measure(Amount* amount) override;
    Status selectInOrder(const TableDef& table,
                         const std::function<Status(const Row& row)>& each) override;
    Status contentPieces(const std::string& key, const EachPiece& each) override;
    Status clearAll() override;
    Status beginContent(const Write& write, uint64_t size) override;
    Status contentPiece(std::string_view piece) override;
    Status endContent() override;
    Status selectChanges(const ChangeQuery& query, std::vector<Change>* changes) override;
    Status selectVersions(const VersionQuery& query, std::vector<KeptVersion>* versions) override;
    Status versionPieces(int64_t id, const EachPiece& each) override;
    Status applyVersion(const Write& write, const KeptVersion& version) override;
    Status deleteVersions(const std::vector<int64_t>& ids) override;
    Status selectVersionsEnd(int64_t* change) override;

private:
    friend class InvariantScope<SqliteStore>;
    void checkInvariants() const;
    /// ConnectionBroken if the files at the path are no longer the ones that are open.
    Status present();
    /// Keeps the connection from writing into files that are not its own any more when it closes.
    void letGo();
    /// A prepared statement that is kept; null if it does not prepare.
    Statement* cached(const std::string& sql);
    /// The statement for writes of this shape, or for so many inserts of it.
    Statement* writing(const TableDef& table, const Write& write, bool bytes, size_t rows = 1);
    /// Inserts that many records of one shape at once.
    Status insertBatch(const TableDef& table, std::vector<Write>::const_iterator first,
                       size_t rows);
    /// Tells the triggers who writes the present transaction, and to which group.
    Status setWriter();
    Status clearWriter();
    /// Marks the group that the present transaction began after `before` with what it undoes.
    Status noteUndone(int64_t before);
    /// What the present transaction has added to the log, which reached `before`.
    Status lastChange(int64_t before, Written* written);
    /// `room` is for the bytes of a content, which come later.
    Status run(const TableDef& table, const Write& write, std::optional<uint64_t> room);
    /// Adds a line for each content whose bytes are not those that the checksum was made of.
    Status checkContents(std::vector<std::string>* damages);
    /// The same of what is kept.
    Status checkVersions(std::vector<std::string>* damages);
    Status openContent(const std::string& key, bool write, Blob* blob);
    /// Hands over what is stored there, a piece of at most 1 MiB at a time.
    Status blobPieces(const Blob& blob, const EachPiece& each);
    Status readChanges(Statement& statement, std::vector<Change>* changes);
    Status fetchRows(const TableDef& table, Statement& statement, MDArray* into);
    Status rows(Statement& statement, size_t columns, const EachRow& each);
    /// A number that grows whenever another connection has committed; -1 if it cannot be read.
    int64_t dataVersion();

    const std::string m_path;
    std::optional<Place> m_place; ///< none before start
    Connection m_connection;      ///< before the statements, which must go first
    bool m_mayWrite;
    std::unordered_map<std::string, Statement> m_statements;
    /// By table, flag, the fields written and the number of records.
    std::map<std::tuple<const TableDef*, int, uint64_t, size_t>, Statement> m_writes;
    Blob m_content; ///< open between beginContent and endContent
    int m_contentAt = 0;
    std::string m_contentKey;
    Checksum m_contentSum;
    WalWatch m_watch;
    int64_t m_seenVersion = -1;
    bool m_grown = true; ///< this object has committed, or the log was not read to its end
};

} // namespace orvo::store::sqlite

#endif
