// LocalFiles.h: files of the local disk on their way into and out of the store.
#ifndef ORVO_ADMIN_LOCALFILES_H
#define ORVO_ADMIN_LOCALFILES_H

#include <optional>
#include <string>
#include <string_view>

namespace orvo::admin {

struct LocalFile {
    std::string name; ///< without directories
    std::string bytes;
    double time; ///< of its last change: seconds since 1970-01-01 UTC
};

/// Reads a regular file whole. Throws Failure: missing, no regular file, unreadable, too large for
/// a store, a name that the store does not take.
LocalFile readLocalFile(const std::string& path);

/// Throws Failure unless `directory` is one that can be written to.
void requireDirectory(const std::string& directory);
/// Writes `directory`/`name` whole or not at all: a temporary file beside it takes its place. A
/// link of that name is replaced, never followed. Throws Failure for a name that is no plain file
/// name and for whatever the disk refuses.
void writeLocalFile(const std::string& directory, const std::string& name, std::string_view bytes,
                    const std::optional<double>& time);

} // namespace orvo::admin

#endif
