// PostgresStore.h: a store in a database of a PostgreSQL server.
//
// Who writes: the login in the change log is the user of the session, which the server vouches for.
// Only who owns the store (or is a superuser) may write under OpenOptions::login instead, as the
// administrator's command does; for anyone else that option has no effect.
//
// Connections: a lost one is made again by the next call, within the time that the URL's
// connect_timeout allows (3 s). The call that meets the loss fails with ConnectionBroken, and with
// Timeout if the thread's wait policy ends it. A write
// that does finds out, when it can reach the server again within a few seconds, whether it was
// saved: then it succeeds, or says that it was not; otherwise it says that nobody knows.
#ifndef ORVO_PLATFORM_STORE_POSTGRESSTORE_H
#define ORVO_PLATFORM_STORE_POSTGRESSTORE_H

#include "platform/store/ContentChecksum.h"
#include "platform/store/InvariantScope.h"
#include "platform/store/Kinds.h"
#include "platform/store/PostgresApi.h"
#include "platform/store/PostgresCopy.h"
#include "platform/store/PostgresWake.h"
#include "platform/store/StoreCore.h"

#include <deque>
#include <memory>
#include <string>

namespace orvo::store::postgres {

/// See Kinds.h.
Status parseUrl(const std::string& url, Location* location);
/// With `create` the database is made too, if it is missing and the user may do that.
std::unique_ptr<MaintainedStore> openStore(const std::string& url, const OpenOptions& options,
                                           Status* status);

/// Before and after every transaction all of this holds; checkInvariants() looks at it.
///
///  1. The connection is closed, or it is idle: no transaction, no pipeline, no COPY. (A call that
///     an exception left may leave it busy: ready(), with which every call begins, then closes it.)
///  2. m_sent is empty and m_failure is Ok; inside inWrite, m_sent has an entry for each result
///  that
///     is still to come, in their order, and m_failure is the first failure among those met.
///  3. m_content is closed: it is open only inside inWrite, between beginContent and endContent.
///  4. A usable connection has its m_session, by which the server lists it.
///  5. m_written is what the last write left, nothing after one that failed, and `unknown`, without
///     changes, if the connection broke at its commit and nobody could be asked.
class PostgresStore final : public StoreCore {
public:
    /// Takes a connection to a store of the newest version.
    PostgresStore(Url url, Connection connection, const std::string& login, bool asAnother,
                  const OpenOptions& options);

    /// Prepares what every later call relies on.
    Status start();

    std::string displayName() const override { return m_url.displayName(); }
    bool mayWrite() const override { return m_mayWrite; }

    Status identity(std::string* identity) override;

    Status logPosition(int64_t* id) override;
    Status readLog(const LogCursor& cursor, int limit, std::vector<Change>* changes) override;
    Status readDesktopLog(std::string_view desktop, int limit, LogCursor* cursor,
                          std::vector<Change>* changes, bool* more) override;
    Status pruneLog(int64_t id) override;
    int wakeFd() const override;
    bool wakesEarly() const override { return false; }
    void takeWake() override;
    bool changed() override;

    Status integrity(std::vector<std::string>* damages) override;
    Status remakeTriggers(std::vector<std::string>* differences) override;
    Status looseRights(std::vector<std::string>* lines) override;

    Status countChanges(int64_t group, std::vector<ChangeCount>* counts) override;
    Status logBefore(double time, int64_t* id, int64_t* count) override;
    bool livesIn(const std::string& /*file*/) const override { return false; }
    Status backup(const std::string& file, const Progress& progress) override;
    Status restore(const std::string& file, const Progress& progress) override;
    Status missingLogins(std::vector<std::string>* logins) override;

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
    Status makeLogin(const User& user) override;
    Status changeLogin(const std::string& login, const UserChange& change) override;
    Status removeLogin(const std::string& login) override;
    bool hasLogins() const override { return true; }
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
    friend class InvariantScope<PostgresStore>;
    void checkInvariants() const;

    /// A statement on its way: what to say if it fails.
    struct Sent {
        std::string prepared; ///< text of a preparation; empty for a run
        std::string what;
        bool writes = false;
        bool tells = false; ///< its result is what the transaction left in the log
    };

    /// Connects if the connection is gone.
    Status ready();
    Status connect();
    Status rows(const TableDef& table, const std::vector<int>& fields, const std::string& sql,
                const Parameters& parameters, const EachRow& each);
    Status newest(int64_t* id, int milliseconds);
    bool hasTakenOver();
    /// Selects the end of the log, pruned or not.
    static const char newestIdSql[];
    /// The changes in a result, from that column on, up to a row without one.
    static std::vector<Change> changesIn(const PGresult* rows, int column);
    /// The same behind those that are there.
    static void takeChanges(const PGresult* rows, int column, std::vector<Change>* changes);
    Status selectManyChanges(const std::string& select, bool isWithin,
                             std::vector<Change>* changes);

    // Writing: statements go out in one stream, and their results are met later.
    Status begin(const std::string& call);
    Status commit();
    void rollback();
    /// Sends a statement; the first failure met so far.
    Status send(const std::string& sql, const Parameters& parameters, std::string what,
                bool writes);
    /// Sends one statement for the writes of a batch, which begins there.
    Status sendInserts(const TableDef& table, std::vector<Write>::const_iterator first,
                       size_t count);
    Status sendBatch(const TableDef& table, std::vector<Write>::const_iterator first, size_t count);
    /// Takes results until that many are outstanding.
    void receive(size_t left);
    void receiveOne();
    /// Takes the result of the statement that tells what a call left in the log.
    void takeWritten(const PGresult* result);
    // Logins, outside the stream.
    Status passwordClause(const std::string& login, const std::string& password,
                          std::string* clause);
    Status hasRole(const std::string& login, bool* has);
    Status revokeRoles(const std::string& login, bool* owns);
    /// Waits for the results of all that was sent, and ends the stream. The first failure of it.
    Status drainPipeline();
    /// After the connection broke at a commit: whether the transaction is in the log.
    Status resolveCommitOutcome(const std::string& call, int64_t since, const std::string& session);

    const Url m_url;
    const std::string m_asLogin; ///< to write under; empty: the session's user
    Connection m_connection;
    bool m_mayWrite = true;
    bool m_isStandby = false; ///< when the connection was made
    std::string m_session;    ///< which of pg_stat_activity this session is, as a condition
    mutable Listener m_listener;
    mutable bool m_followed = false; ///< someone asked for the descriptor: the listener connects

    std::deque<Sent> m_sent;
    Status m_failure;
    bool m_commitSent = false;

    /// Sends the checksum of a content's bytes.
    Status putChecksum(const std::string& key, const std::string& sum);

    std::optional<ContentCopy> m_content; ///< open between beginContent and endContent
    std::string m_contentKey;
    Checksum m_contentSum;

    int64_t m_known = 0; ///< an id that the log has reached
    int64_t m_seen = -1; ///< the newest id at the last look
    bool m_more = false; ///< the log was not read to its end
};

} // namespace orvo::store::postgres

#endif
