// SqliteDamage.h: what is damaged in a file, by SQLite's own full check.
#ifndef ORVO_PLATFORM_STORE_SQLITEDAMAGE_H
#define ORVO_PLATFORM_STORE_SQLITEDAMAGE_H

#include <cstdint>
#include <optional>
#include <sqlite3.h>
#include <string>
#include <vector>

namespace orvo::store::sqlite {

/// What integrity_check finds in the open database, its write-ahead log included: one line per
/// damage in Russian, each with the table or index it is in where that can be told; none if the
/// database is sound. At most `limit` of them; 0: all. Nothing if the check could not be carried
/// through: `milliseconds` were over (0: no limit), or the database is busy or cannot be read; the
/// connection then explains the error. Unless the database is sound, its log is left beside it when
/// the connection closes.
std::optional<std::vector<std::string>> findDamages(sqlite3* connection, int limit,
                                                    int64_t milliseconds = 0);

/// Whether a result code says that what SQLite read makes no sense. That alone proves no damage:
/// findDamages does.
bool isDamageCode(int code);

} // namespace orvo::store::sqlite

#endif
