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

/// Runs a COPY of one bytea column and appends its values to `bytes`.
Status copyOut(Connection& connection, const std::string& sql, std::string_view what,
               std::string* bytes);

/// Runs a "COPY ... (text, integer, bytea) FROM STDIN (FORMAT binary)" with the bytes in pieces,
/// numbered from 0.
Status copyIn(Connection& connection, const std::string& sql, std::string_view what,
              std::string_view key, std::string_view bytes);

} // namespace orvo::store::postgres

#endif
