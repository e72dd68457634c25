// NewFile.h: a file of the local disk that is there whole or not at all.
#ifndef ORVO_ADMIN_NEWFILE_H
#define ORVO_ADMIN_NEWFILE_H

#include "platform/store/Maintenance.h"

#include <string>

namespace orvo::admin {

/// Made empty, readable by its owner only, under a passing name beside its place; removed unless it
/// is put there. For one at a time.
class NewFile {
public:
    /// Throws Failure: no directory, no right, something else than a regular file at the place, or
    /// a file of the store itself.
    NewFile(std::string place, const store::MaintainedStore& store);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// The passing name, as long as it has not been put in its place.
    const std::string& path() const { return m_path; }
    /// Puts the file in its place, whatever file was there, once the disk holds all of it. Throws
    /// Failure.
    void put();

private:
    const std::string m_place;
    std::string m_path;
};

} // namespace orvo::admin

#endif
