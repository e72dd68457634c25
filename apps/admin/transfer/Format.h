// Format.h: the file that export writes and import reads, UTF-8:
//
//   {
//   "format": "orvo-export",
//   "version": 1,
//   "tables": {
//   "Users": [
//   {"KeyLink":"...","login_":"...",...},
//   ...
//   ],
//   ...
//   },
//   "files": [
//   {"KeyLink":"...","MenuResourceKey":"...","name_":"...","time":...,"size":...,"data":["...",...]},
//   ...
//   ]
//   }
//
// "tables" holds every table that the editors know, each once; "files" the contents of stored forms
// and files. A record stands on a line of its own, in the order of the keys, so that two exports
// can be compared line by line; a field that is left out is NULL. Dates are seconds since
// 1970-01-01 UTC. "data", the last field of its record, is Base64 in pieces, so that no file has to
// be in memory as a whole. "format" and "version" come first. Blanks and line feeds between the
// values are free.
#ifndef ORVO_ADMIN_TRANSFER_FORMAT_H
#define ORVO_ADMIN_TRANSFER_FORMAT_H

#include "platform/store/Maintenance.h"

#include <cstdint>
#include <cstdio>
#include <functional>

namespace orvo::admin {

inline constexpr const char* exportFormat = "orvo-export";
inline constexpr int exportVersion = 1;

/// How much has gone through.
struct TransferCount {
    uint64_t records = 0, files = 0, bytes = 0;
};

/// Writes what the store holds to a stream that stays the caller's.
store::Status writeExport(store::MaintainedStore& store, std::FILE* file,
                          const store::Progress& progress, TransferCount* count);

/// Reads an export and hands it over. Refused, with the line, the table and the number of the
/// record, at the first thing that is wrong. The progress is in bytes of `size` (0: unknown).
store::Status readExport(std::FILE* file, uint64_t size, store::Receiver& into,
                         const store::Progress& progress, TransferCount* count);

} // namespace orvo::admin

#endif
