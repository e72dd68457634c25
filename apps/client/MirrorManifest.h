// MirrorManifest.h: which files of the file area are copied: their paths, kept in a list in the
// work directory, so that the next client knows what it may remove.
//
// Invariants; 1 is asserted in debug builds:
// 1. Each path was named last by a comparison that has begun: none is newer than the newest.
// 2. The list on the disk is this one, unless isTouched().
#ifndef ORVO_APPS_CLIENT_MIRRORMANIFEST_H
#define ORVO_APPS_CLIENT_MIRRORMANIFEST_H

#include <QString>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace orvo::app {

class MirrorManifest {
public:
    /// `workDir` ends in a separator. Nothing is known before read().
    explicit MirrorManifest(const QString& workDir);

    void read();
    /// Gives why it could not be written; a null string if it was.
    QString write();
    /// Whether it has changed since it was written.
    bool isTouched() const { return m_isTouched; }

    bool has(const std::string& path) const { return m_paths.count(path) != 0; }
    /// The file is copied, as that comparison names it.
    void add(const std::string& path, uint64_t listing);
    /// That comparison names a file again. False if it is not copied.
    bool mark(const std::string& path, uint64_t listing);
    void remove(const std::string& path);
    /// What that comparison, the newest, has not named.
    std::vector<std::string> notIn(uint64_t listing) const;

private:
    const QString m_file;
    std::map<std::string, uint64_t> m_paths; ///< path: the comparison that named it last
    bool m_isTouched = false;
};

} // namespace orvo::app

#endif
