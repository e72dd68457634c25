// Folders.h: the folders of the resource tree by their paths, as the editors and the stores of
// forms and files write them: captions joined by "/"; for the kinds 1 to 3 without the top folder.
#ifndef ORVO_ADMIN_FOLDERS_H
#define ORVO_ADMIN_FOLDERS_H

#include "apps/admin/Records.h"
#include "frame/Vocabulary.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvo::admin {

inline constexpr int Module = Kind::Module, Function = Kind::Function, Form = Kind::Form,
                     File = Kind::File;

/// Caption that the editors expect of the top folder of the kinds 1 to 3; null for the others.
const char* topCaption(int kind);
/// Its key in stores that this command makes: the same in every store.
std::string topKey(int kind);
/// The key of the folder of icons in stores that this command makes.
std::string iconFolderKey();

/// The captions of a path; empty for the empty path. Throws Failure for one that no folder can
/// have.
std::vector<std::string> splitPath(const std::string& path);

class Folders {
public:
    explicit Folders(store::Store& store);

    /// Key of the folder: the top folder for the empty path (empty for files, whose top has no
    /// record). None if there is no such folder.
    std::optional<std::string> find(int kind, const std::string& path) const;
    /// find, or a Failure; `advice` ends its text.
    std::string need(int kind, const std::string& path, const std::string& advice = {}) const;
    /// Makes what is missing of the path, the top folder included, in one transaction.
    void make(store::Store& store, int kind, const std::string& path);
    /// Path of the folder of that key; none if it is missing, or hangs nowhere.
    std::optional<std::string> pathOf(const std::string& key) const;

private:
    struct Folder {
        int kind;
        std::string parent, caption;
    };
    void add(const std::string& key, Folder folder);
    std::optional<std::string> child(int kind, const std::string& parent,
                                     const std::string& caption) const;

    std::map<std::string, Folder> m_byKey;        ///< folded key
    std::map<std::string, std::string> m_byPlace; ///< kind, parent, caption, folded; to the key
};

} // namespace orvo::admin

#endif
