// StoredFiles.h: stored forms and files (resources of kind Form and File, and their contents) over
// what a database provides. What each operation does is told in Store.h.
//
// Invariants, asserted in debug builds:
//  1. A known tree of folders is what a read transaction saw up to the id of the log beside it; one
//     made inside a write is never kept, since that may be rolled back and its ids given again.
//  2. Beside no tree the id is 0.
//  3. A known tree is used again only where the log reaches at least to its id.
#ifndef ORVO_PLATFORM_STORE_STOREDFILES_H
#define ORVO_PLATFORM_STORE_STOREDFILES_H

#include "platform/store/FolderTree.h"
#include "platform/store/StoreBackend.h"

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvo::store {

/// The largest content of one stored file. Every database carries it in one value.
constexpr uint64_t largestFile = 512ull << 20;

class StoredFiles {
public:
    /// The backend must outlive the object.
    explicit StoredFiles(StoreBackend& backend) : m_backend(backend) {}

    Status formGet(std::string_view form, bool withBytes, std::vector<StoredFile>* files);
    Status formPut(std::string_view path, const std::vector<FileToPut>& files);
    Status formDelete(const std::vector<std::string>& forms);
    Status fileGet(std::string_view path, std::string_view name, bool withBytes,
                   std::vector<StoredFile>* files);
    Status filePut(const std::vector<FileToPut>& files);
    Status fileDelete(const std::vector<std::pair<std::string, std::string>>& files);
    Status
    fileArea(const std::function<void(const std::string& path, const StoredFile& file)>& each);

    /// Adds how these contents are called: the file with its path, by folded key. Inside a read.
    Status contentNames(const std::vector<std::string>& keys,
                        std::map<std::string, std::string>* names);

    /// Nothing that was read before says anything about the store that is open now.
    void forget() { m_folders = {}; }

private:
    using Row = StoreBackend::Row;
    struct Resource {
        std::string key, folder, name;
    };
    struct Content {
        std::string key, name;
        StoredFile file;
    };
    struct KnownFolders {
        std::shared_ptr<const FolderTree> tree;
        int64_t position = 0; ///< id of the log up to which it is right
    };
    enum class Within { Read, Write };

    /// The folders of an area as the present transaction sees them.
    Status folders(Area area, Within transaction, std::shared_ptr<const FolderTree>* tree);
    /// The forms that may have the name: key, folder, name.
    Status forms(std::string_view name, const StoreBackend::EachRow& each);
    /// The files with that link to a folder that may have the name: key, folder, name.
    Status filesIn(const Value& folder, std::string_view name, const StoreBackend::EachRow& each);
    Status form(std::string_view name, std::optional<Resource>* found);
    Status fileIn(const std::vector<std::string>& folders, std::string_view name,
                  std::optional<Resource>* found);
    Status contents(const std::string& resource, std::vector<Content>* found);
    Status insertResource(int type, const std::string& folder, std::string_view name,
                          Resource* made);
    Status putContent(const std::string& resource, std::string_view name, const FileToPut& file,
                      const std::vector<Content>& present);
    Status putFile(const FolderTree& tree, const FileToPut& file);
    Status removeResource(const std::string& key);

    StoreBackend& m_backend;
    /// By area: made of tens of thousands of records, and asked for with every file.
    std::array<KnownFolders, 2> m_folders;
};

} // namespace orvo::store

#endif
