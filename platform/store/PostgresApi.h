// PostgresApi.h: libpq behind types that release what they hold.
#ifndef ORVO_PLATFORM_STORE_POSTGRESAPI_H
#define ORVO_PLATFORM_STORE_POSTGRESAPI_H

#include "platform/store/InvariantScope.h"
#include "platform/store/PostgresUrl.h"
#include "platform/store/Store.h"
#include "platform/store/WritePlan.h"

#include <libpq-fe.h>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace orvo::store::postgres {

struct ClearResult {
    void operator()(PGresult* result) const { PQclear(result); }
};
using Result = std::unique_ptr<PGresult, ClearResult>;

/// Whether a text can be one of the database: valid UTF-8 without zero bytes. Any other equals no
/// text of the database.
bool isText(std::string_view text);

/// The values of a statement, in the binary form. Texts are not copied: they must outlive the
/// sending.
class Parameters {
public:
    Parameters& text(std::string_view value);
    Parameters& integer(int64_t value); ///< bigint
    /// As a field of that type holds it.
    Parameters& field(MdxType type, const Value& value);
    /// An array of such values; they are copied.
    Parameters& fields(MdxType type, const std::vector<const Value*>& values);

private:
    friend class Connection;
    struct Parameter {
        Oid type = 0;
        bool null = true;
        std::string_view bytes; ///< of a text
        std::string own;        ///< of anything else
    };
    std::vector<Parameter> m_values;
};

// Columns of a binary result.
bool isNull(const PGresult* result, int row, int column);
int64_t integerAt(const PGresult* result, int row, int column); ///< integer or bigint
double realAt(const PGresult* result, int row, int column);
std::string_view textAt(const PGresult* result, int row, int column); ///< or bytes
bool booleanAt(const PGresult* result, int row, int column);
Value valueAt(MdxType type, const PGresult* result, int row, int column);

struct FinishConnection {
    void operator()(PGconn* connection) const { PQfinish(connection); }
};
using ConnectionHandle = std::unique_ptr<PGconn, FinishConnection>;

/// A connection to a server, and the statements prepared there.
///
/// Nothing here blocks in libpq: every wait goes in steps and asks the thread's wait policy (see
/// WaitPolicy.h). A server that is silent in the middle of a call for longer than the URL's
/// tcp_user_timeout (20 s; 0: no limit) counts as lost: no system tells of one that is frozen.
///
///  1. m_prepared names the statements prepared on the present connection; none without one.
///  2. m_end is other than None only while there is no connection: it tells why it was closed.
///  3. libpq is in non-blocking mode from the end of open on.
class Connection {
public:
    /// Connects, within the time the URL allows. CannotConnect, BadLogin, or Timeout if given up.
    Status open(const Url& url);
    void close();
    /// Whether the last call ended because the wait policy ended it.
    bool givenUp() const { return m_end == End::GivenUp; }
    PGconn* get() const { return m_connection.get(); }
    bool usable() const { return m_connection && PQstatus(get()) == CONNECTION_OK; }
    /// Takes what has come in unasked and tells whether the connection still stands.
    bool alive();

    /// Runs a text of one or more statements; the result of the last, or of the first that failed
    /// or begins a COPY. Never null.
    Result execute(const std::string& sql);
    /// Runs one statement, prepared on first use, and waits for its result in binary form. Past
    /// the time limit (-1: none) the connection is closed.
    Result query(const std::string& sql, const Parameters& parameters, int milliseconds = -1);

    /// The two halves of execute() for one statement, the connection being idle. False if it broke.
    bool sendText(const std::string& sql);
    /// Null if the connection broke or the wait was given up.
    Result answer();

    // For pipelines: sends without waiting. False if the connection broke.
    bool isPrepared(const std::string& sql) const { return m_prepared.count(sql) != 0; }
    bool sendPrepare(const std::string& sql, const Parameters& parameters);
    bool sendRun(const std::string& sql, const Parameters& parameters) const;
    /// To be called when the server did not come to prepare the statement after all.
    void forget(const std::string& sql) { m_prepared.erase(sql); }
    /// Sends what is still to be sent. False if the connection broke or was given up.
    bool flush();
    /// Waits for the next result; as PQgetResult gives it. Null also if the wait was given up.
    Result next();
    /// The next message of a COPY out: its length, -1 at the end, -2 on failure.
    int copyData(char** message);

    /// A Status for a failed result (null: the connection's last error): "what: why". A broken
    /// connection is closed.
    Status failure(std::string_view what, const PGresult* result);
    /// What a call waited for in vain. Readers are in the way of one that changes tables only.
    enum class Wanted { Rows, Tables };
    /// Whose transaction it waited for, as the end of a sentence; empty if none is left.
    std::string whoHolds(Wanted wanted = Wanted::Rows);

    /// Lifts the time limit on an answer while it exists; the connection still has to stay alive.
    class NoTimeoutScope {
    public:
        explicit NoTimeoutScope(Connection& connection)
            : m_connection(connection)
            , m_before(std::exchange(connection.m_timeLimited, false)) {}
        ~NoTimeoutScope() { m_connection.m_timeLimited = m_before; }
        NoTimeoutScope(const NoTimeoutScope&) = delete;
        NoTimeoutScope& operator=(const NoTimeoutScope&) = delete;

    private:
        Connection& m_connection;
        const bool m_before;
    };

private:
    friend class InvariantScope<Connection>;
    void checkInvariants() const;
    enum class End { None, GivenUp, Silent };
    bool wait(short events);
    void takeRest();
    bool awaitInput();
    bool awaitResult();

    ConnectionHandle m_connection;
    std::unordered_map<std::string, std::string> m_prepared; ///< names by text
    unsigned m_made = 0;
    int m_streamed = 0; ///< bytes of the COPY under way, as far as that matters
    int m_silentMs = 0; ///< so long a server may be silent; 0: for ever
    bool m_timeLimited = true;
    End m_end = End::None; ///< why the connection was closed here
};

/// Whether a result is what it should be: rows or a finished command.
bool succeeded(const PGresult* result);
/// The error code of a result; empty if there is none.
std::string_view stateOf(const PGresult* result);
/// The error code in a message at full length ("ERROR:  55P03: ..."), whatever its language; empty
/// if there is none.
std::string stateIn(std::string_view message);
/// What a server's refusal of a statement, by its error code, means to the user: "what: why".
Status serverFailure(std::string_view what, std::string_view state, const std::string& message);

} // namespace orvo::store::postgres

#endif
