// SqliteApi.h: the sqlite3 C interface behind types that release what they hold.
#ifndef ORVO_PLATFORM_STORE_SQLITEAPI_H
#define ORVO_PLATFORM_STORE_SQLITEAPI_H

#include "platform/store/Sql.h"
#include "platform/store/Store.h"
#include "platform/store/WritePlan.h"

#include <memory>
#include <sqlite3.h>
#include <string>
#include <string_view>

namespace orvo::store::sqlite {

/// A prepared statement. Must not outlive its connection. One that has been stepped holds its
/// snapshot until it is reset or has given all rows.
class Statement {
public:
    Statement() = default;
    explicit operator bool() const { return m_statement != nullptr; }
    sqlite3_stmt* get() const { return m_statement.get(); }

    /// Parameters count from 1. A text is not copied: it must outlive the stepping.
    void bind(int parameter, std::string_view text);
    void bindRoom(int parameter, uint64_t size); ///< so many zero bytes
    void bind(int parameter, int64_t number);
    void bind(int parameter, const Value& value);

    /// SQLITE_ROW, SQLITE_DONE or an error; a failed bind shows here.
    int step();
    /// Ready to be run again, without parameters.
    void reset() noexcept;

    // Columns of the present row, from 0.
    int64_t integer(int column) const { return sqlite3_column_int64(get(), column); }
    double real(int column) const { return sqlite3_column_double(get(), column); }
    std::string_view text(int column) const;
    Value value(int column) const;

private:
    friend class Connection;
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3_stmt, Finalize> m_statement;
    int m_bindError = SQLITE_OK;
};

/// Resets a statement on the way out: an open one would hold its snapshot.
class ResetAfter {
public:
    explicit ResetAfter(Statement& statement) : m_statement(statement) {}
    ~ResetAfter() { m_statement.reset(); }
    ResetAfter(const ResetAfter&) = delete;
    ResetAfter& operator=(const ResetAfter&) = delete;

private:
    Statement& m_statement;
};

class Connection {
public:
    /// `name` is a file name, or a "file:" URI if the flags say so. `flags` as sqlite3_open_v2
    /// takes them. The result code; on failure the connection still explains it (failure()).
    int open(const char* name, int flags);
    sqlite3* get() const { return m_connection.get(); }
    /// SQLite's own handle of the main database file; null if there is none.
    sqlite3_file* file() const;

    /// Null, and the error at the connection, if the text does not prepare.
    Statement prepare(std::string_view sql) const;
    /// Runs a text of one or more statements and drops their rows.
    int execute(const char* sql) const;
    int execute(const std::string& sql) const { return execute(sql.c_str()); }
    /// The integer in the first row of a query; `*result` is untouched if there is none.
    int integer(const char* sql, int64_t* result) const;

    /// A Status for the last error: "what: why", in Russian.
    Status failure(std::string_view what) const;

private:
    struct Close {
        void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
    };
    std::unique_ptr<sqlite3, Close> m_connection;
};

struct CloseBlob {
    void operator()(sqlite3_blob* blob) const { sqlite3_blob_close(blob); }
};
/// A value that is read or written in pieces. Must not outlive its connection.
using Blob = std::unique_ptr<sqlite3_blob, CloseBlob>;

/// A transaction that is rolled back unless it is committed. A connection has one at a time at most
/// (asserted).
class Transaction {
public:
    enum Kind { Read, Write };
    Transaction(const Connection& connection, Kind kind);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /// Result of the beginning; SQLITE_BUSY past the waiting time.
    int begun() const { return m_begun; }
    int commit();

private:
    const Connection& m_connection;
    int m_begun;
};

} // namespace orvo::store::sqlite

#endif
