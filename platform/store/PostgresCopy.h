// PostgresCopy.h: rows in the binary form of COPY.
//
//   stream  = header *tuple trailer
//   header  = "PGCOPY\n" %xFF "\r\n" %x00, flags (4 bytes), length of extension (4), extension
//   tuple   = number of fields (2), then for each: length (4; -1 is NULL), bytes
//   trailer = -1 (2)
//
// Numbers are big-endian. Each message of the server holds whole tuples.
#ifndef ORVO_PLATFORM_STORE_POSTGRESCOPY_H
#define ORVO_PLATFORM_STORE_POSTGRESCOPY_H

#include "platform/mdx/MdxBuild.h"
#include "platform/store/PostgresApi.h"

#include <functional>

namespace orvo::store::postgres {

/// Runs a "COPY ... TO STDOUT (FORMAT binary)" and writes its rows, which have the fields of the
/// table in their order, as records. BadStructure if the stream is none of such rows.
Status copyOut(Connection& connection, const std::string& sql, std::string_view what,
               const TableDef& table, mdx::RecordWriter& writer);

/// The same with the rows as values, one at a time. What comes after the first call that does not
/// give Ok is dropped.
Status copyOut(Connection& connection, const std::string& sql, std::string_view what,
               const TableDef& table,
               const std::function<Status(const std::vector<Value>& row)>& each);

/// Runs a COPY of one bytea column and hands over its values.
Status copyOut(Connection& connection, const std::string& sql, std::string_view what,
               const std::function<Status(std::string_view bytes)>& each);

/// A "COPY ... (text, integer, bytea) FROM STDIN (FORMAT binary)" that sends bytes under one key in
/// parts of half a mebibyte, numbered from 0. The calls: begin, then put any number of times, then
/// end; after a put that failed nothing more. In between the connection serves nothing else.
///
///  1. Unless a put failed, m_part holds less than a part.
///  2. Once m_sent is false nothing more is sent.
class ContentCopy {
public:
    /// The connection outlives it. `what` is tried, for the text of a failure.
    ContentCopy(Connection& connection, std::string what, std::string key);

    Status begin(const std::string& sql);
    Status put(std::string_view bytes);
    /// Ends the copy, also a failed one.
    Status end();

private:
    Status sendPart(std::string_view data);

    Connection* m_connection;
    std::string m_what, m_key;
    std::string m_head;    ///< of the stream, until it is sent
    std::string m_part;    ///< bytes that make no whole part yet
    uint64_t m_number = 0; ///< of the next part
    bool m_sent = true;    ///< all that was to be sent has been
};

/// Copies all of it at once.
Status copyIn(Connection& connection, const std::string& sql, std::string_view what,
              std::string_view key, std::string_view bytes);

} // namespace orvo::store::postgres

#endif
