// Checksum.h: the checksum that a backup is kept with, in a file of its own beside it, as the
// program sha256sum writes and checks it: 64 hexadecimal digits, two blanks, the file's name.
#ifndef ORVO_PLATFORM_STORE_CHECKSUM_H
#define ORVO_PLATFORM_STORE_CHECKSUM_H

#include "platform/store/Maintenance.h"

#include <string>

namespace orvo::store {

/// The name of the file with the checksum of a backup.
std::string checksumFile(const std::string& backup);
/// The line in it for a file that is, or will be, called `name`.
std::string checksumLine(const std::string& sum, const std::string& name);

/// SHA-256 of a file's bytes as hexadecimal digits. Failed if it cannot be read to its end;
/// Stopped.
Status sumOf(const std::string& file, const Progress& progress, std::string* sum);

/// Whether a backup has its checksum beside it.
bool hasChecksum(const std::string& backup);
/// Refused unless the backup has the checksum that stands beside it; Ok without one.
Status verifyChecksum(const std::string& backup, const Progress& progress);

} // namespace orvo::store

#endif
