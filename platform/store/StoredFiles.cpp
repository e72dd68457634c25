#include "platform/store/StoredFiles.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"

#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <set>
#include <unordered_map>

namespace orvo::store {

namespace {

/// The fields of the tables by their numbers in the dictionary.
struct Fields {
    const TableDef& folder = *findTable(table::MenuResourceFolder);
    const TableDef& resource = *findTable(table::MenuResource);
    const TableDef& content = contentTable();
    const int folderParent = folder.find(field::ParentKey);
    const int folderType = folder.find(field::type_);
    const int folderCaption = folder.find(field::caption);
    const int resourceFolder = resource.find(field::MenuResourceFolderKey);
    const int resourceName = resource.find(field::name_);
    const int resourceType = resource.find(field::type_);
    const int resourceCaption = resource.find(field::caption);
    const int contentResource = content.find(field::MenuResourceKey);
    const int contentName = content.find(field::name_);
    const int contentTime = content.find(field::time);
    const int contentSize = content.find(field::size);
};

const Fields& fields() {
    static const Fields all;
    return all;
}

StoredFile storedFile(const std::string& name, const Value& time, const Value& size) {
    StoredFile file;
    file.name = name;
    if (const auto* seconds = std::get_if<double>(&time))
        file.time = *seconds;
    if (const auto* bytes = std::get_if<int64_t>(&size))
        file.size = static_cast<uint64_t>(std::max<int64_t>(*bytes, 0));
    return file;
}

Status checkFile(const FileToPut& file) {
    if (!isPlainFileName(file.name))
        return {Refused, StdText::tr("Недопустимое имя файла ") + shown(file.name)};
    if (!isShowable(file.name))
        return {Refused, StdText::tr("В имени файла ") + shown(file.name) +
                             StdText::tr(" есть знаки вне кодировки Windows-1251")};
    if (file.bytes.size() > largestFile)
        return {Refused, StdText::tr("Файл ") + shown(file.name) + StdText::tr(" больше ") +
                             std::to_string(largestFile >> 20) + StdText::tr(" МиБ")};
    return {};
}

/// Of resources with the name, the one that is meant: the very spelling before another case, then
/// the lowest key, as the editors' tables order them.
template <typename Resource>
bool better(const Resource& a, const Resource& b, std::string_view name) {
    if ((a.name == name) != (b.name == name))
        return a.name == name;
    return foldedKey(a.key) < foldedKey(b.key);
}

Status noFolder(std::string_view path) {
    return {Refused, StdText::tr("Нет папки с путём ") + shown(path)};
}

} // namespace

Status StoredFiles::folders(Area area, Within transaction,
                            std::shared_ptr<const FolderTree>* tree) {
    const Fields& f = fields();
    KnownFolders& known = m_folders.at(static_cast<size_t>(area));
    assert(known.tree || known.position == 0); // 2
    int64_t newest = 0;
    bool changed = true;
    Status status = m_backend.changedSince(f.folder, known.position, &newest, &changed);
    if (!status.ok())
        return status;
    if (!known.tree || changed) {
        std::vector<FolderRow> rows;
        status = m_backend.selectWhere(
            f.folder, {0, f.folderParent, f.folderCaption}, f.folderType,
            int64_t(area == Area::Forms ? Kind::Form : Kind::File), [&](const Row& row) {
                rows.push_back({textOf(row[0]), textOf(row[1]), validUtf8(textOf(row[2]))});
            });
        if (!status.ok())
            return status;
        *tree = std::make_shared<const FolderTree>(std::move(rows), area);
    } else {
        assert(newest >= known.position); // 3
        *tree = known.tree;
    }
    // What a transaction has written may never be, and its numbers may come again for other
    // changes.
    if (transaction == Within::Read)
        known = {*tree, newest};
    assert(transaction == Within::Read || !changed || known.tree != *tree); // 1
    return {};
}

Status StoredFiles::forms(std::string_view name, const StoreBackend::EachRow& each) {
    const Fields& f = fields();
    if (const auto folded = foldedName(name))
        return m_backend.selectStored(Kind::Form, *folded, std::nullopt, each);
    return m_backend.selectWhere(f.resource, {0, f.resourceFolder, f.resourceName}, f.resourceType,
                                 int64_t(Kind::Form), each);
}

Status StoredFiles::filesIn(const Value& folder, std::string_view name,
                            const StoreBackend::EachRow& each) {
    const Fields& f = fields();
    if (const auto folded = foldedName(name))
        return m_backend.selectStored(Kind::File, *folded, folder, each);
    return m_backend.selectWhere(f.resource, {0, f.resourceFolder, f.resourceName, f.resourceType},
                                 f.resourceFolder, folder, [&](const Row& row) {
                                     if (row[3] == Value(int64_t(Kind::File)))
                                         each(row);
                                 });
}

Status StoredFiles::form(std::string_view name, std::optional<Resource>* found) {
    return forms(name, [&](const Row& row) {
        Resource resource{textOf(row[0]), textOf(row[1]), textOf(row[2])};
        if (sameText(resource.name, name) && (!*found || better(resource, **found, name)))
            *found = std::move(resource);
    });
}

Status StoredFiles::fileIn(const std::vector<std::string>& folders, std::string_view name,
                           std::optional<Resource>* found) {
    const auto look = [&](const Row& row) {
        Resource resource{textOf(row[0]), textOf(row[1]), textOf(row[2])};
        if (sameText(resource.name, name) && (!*found || better(resource, **found, name)))
            *found = std::move(resource);
    };
    for (const std::string& folder : folders) {
        // The root has two names: no link, and the key of its row in the resource tree.
        const std::vector<Value> links =
            folder.empty() ? std::vector<Value>{std::monostate(), std::string(rowkey::files)}
                           : std::vector<Value>{folder};
        for (const Value& link : links) {
            const Status status = filesIn(link, name, look);
            if (!status.ok())
                return status;
        }
        if (*found)
            break;
    }
    return {};
}

Status StoredFiles::contents(const std::string& resource, std::vector<Content>* found) {
    const Fields& f = fields();
    found->clear();
    const Status status = m_backend.selectWhere(
        f.content, {0, f.contentName, f.contentTime, f.contentSize}, f.contentResource, resource,
        [&](const Row& row) {
            std::string name = textOf(row[1]);
            StoredFile file = storedFile(name, row[2], row[3]);
            found->push_back({textOf(row[0]), std::move(name), std::move(file)});
        });
    std::sort(found->begin(), found->end(), [](const Content& a, const Content& b) {
        const int order = mdx::compareText(mdx::toCp1251(a.name), mdx::toCp1251(b.name));
        return order != 0 ? order < 0 : a.name != b.name ? a.name < b.name : a.key < b.key;
    });
    return status;
}

Status StoredFiles::insertResource(int type, const std::string& folder, std::string_view name,
                                   Resource* made) {
    const Fields& f = fields();
    Write write;
    write.flag = MDX_INSERT;
    write.key = newKey();
    Value link;
    if (!folder.empty())
        link = folder;
    write.values = {{f.resourceFolder, std::move(link)},
                    {f.resourceName, std::string(name)},
                    {f.resourceType, int64_t(type)},
                    {f.resourceCaption, std::string(name)}};
    *made = {write.key, folder, std::string(name)};
    return m_backend.apply(f.resource, write);
}

Status StoredFiles::putContent(const std::string& resource, std::string_view name,
                               const FileToPut& file, const std::vector<Content>& present) {
    const Fields& f = fields();
    const auto old = std::find_if(present.begin(), present.end(),
                                  [&](const Content& content) { return content.name == name; });
    Write write;
    write.flag = old != present.end() ? MDX_UPDATE : MDX_INSERT;
    write.key = old != present.end() ? old->key : newKey();
    if (write.flag == MDX_INSERT)
        write.values = {{f.contentResource, resource}, {f.contentName, std::string(name)}};
    Value time;
    if (file.time)
        time = *file.time;
    write.values.emplace_back(f.contentTime, std::move(time));
    write.values.emplace_back(f.contentSize, static_cast<int64_t>(file.bytes.size()));
    return m_backend.applyContent(write, file.bytes);
}

Status StoredFiles::removeResource(const std::string& key) {
    Write write;
    write.flag = MDX_DELETE;
    write.key = key; // its contents go with it: the database sees to that
    return m_backend.apply(fields().resource, write);
}

// ---------------------------------------------------------------------------------------------

Status StoredFiles::contentNames(const std::vector<std::string>& keys,
                                 std::map<std::string, std::string>* names) {
    const Fields& f = fields();
    std::vector<std::string> folded;
    std::transform(keys.begin(), keys.end(), std::back_inserter(folded), foldedKey);
    std::map<std::string, std::pair<std::string, std::string>> owners; // by content: key and name
    Status status = m_backend.selectKeys(
        f.content, {0, f.contentResource, f.contentName}, folded, [&](const Row& row) {
            owners[foldedKey(textOf(row[0]))] = {foldedKey(textOf(row[1])), textOf(row[2])};
        });
    std::set<std::string> wanted;
    for (const auto& [content, owner] : owners)
        wanted.insert(owner.first);
    std::map<std::string, Row> resources;
    if (status.ok())
        status =
            m_backend.selectKeys(f.resource, {0, f.resourceFolder, f.resourceName, f.resourceType},
                                 {wanted.begin(), wanted.end()}, [&](const Row& row) {
                                     resources[foldedKey(textOf(row[0]))] = row;
                                 });
    std::shared_ptr<const FolderTree> forms, files;
    if (status.ok())
        status = folders(Area::Forms, Within::Read, &forms);
    if (status.ok())
        status = folders(Area::Files, Within::Read, &files);
    if (!status.ok())
        return status;
    for (const auto& [content, owner] : owners) {
        const auto found = resources.find(owner.first);
        if (found == resources.end())
            continue;
        const Row& resource = found->second;
        const bool isForm = resource[3] == Value(int64_t(Kind::Form));
        const std::string path = (isForm ? forms : files)->path(textOf(resource[1])).value_or("");
        const auto placed = [&](const std::string& name) {
            return shown(path.empty() ? name : path + "/" + name);
        };
        (*names)[content] =
            isForm ? shown(owner.second) + StdText::tr(" формы ") + placed(textOf(resource[2]))
                   : placed(owner.second);
    }
    return {};
}

Status StoredFiles::formGet(std::string_view name, bool withBytes, std::vector<StoredFile>* files) {
    std::vector<StoredFile> result;
    const Status status = m_backend.inRead([&]() -> Status {
        std::optional<Resource> resource;
        Status done = form(name, &resource);
        std::vector<Content> found;
        if (done.ok() && resource)
            done = contents(resource->key, &found);
        for (Content& content : found) {
            // A name changed by hand must not lead out of the directory of an extraction.
            if (!done.ok() || !isPlainFileName(content.name))
                continue;
            if (withBytes) {
                done = m_backend.contentBytes(content.key, &content.file.bytes);
                content.file.size = content.file.bytes.size();
            }
            result.push_back(std::move(content.file));
        }
        return done;
    });
    if (status.ok())
        files->swap(result);
    return status;
}

Status StoredFiles::formPut(std::string_view path, const std::vector<FileToPut>& files) {
    std::vector<std::string_view> names;
    for (const FileToPut& file : files) {
        const Status status = checkFile(file);
        if (!status.ok())
            return status;
        names.push_back(file.name);
    }
    if (names.empty())
        return {Refused, StdText::tr("Форма без файлов")};
    if (std::set<std::string_view>(names.begin(), names.end()).size() != names.size())
        return {Refused, StdText::tr("Два файла формы с одним именем")};
    const std::string name = formName(names);

    return m_backend.inWrite([&]() -> Status {
        std::shared_ptr<const FolderTree> tree;
        Status status = folders(Area::Forms, Within::Write, &tree);
        if (!status.ok())
            return status;
        const std::vector<std::string> targets = tree->find(path);
        if (targets.empty())
            return noFolder(path);
        std::optional<Resource> resource;
        status = form(name, &resource);
        std::vector<Content> present;
        if (status.ok() && resource) {
            status = contents(resource->key, &present);
        } else if (status.ok()) {
            resource.emplace();
            status = insertResource(Kind::Form, targets.front(), name, &*resource);
        }
        for (const FileToPut& file : files) {
            if (!status.ok())
                break;
            status = putContent(resource->key, file.name, file, present);
        }
        return status;
    });
}

Status StoredFiles::formDelete(const std::vector<std::string>& forms) {
    return m_backend.inWrite([&]() -> Status {
        for (const std::string& name : forms) {
            std::optional<Resource> resource;
            Status status = form(name, &resource);
            if (status.ok() && resource)
                status = removeResource(resource->key);
            if (!status.ok())
                return status;
        }
        return {};
    });
}

Status StoredFiles::fileGet(std::string_view path, std::string_view name, bool withBytes,
                            std::vector<StoredFile>* files) {
    if (!isPlainFileName(name))
        return {Refused, StdText::tr("Недопустимое имя файла ") + shown(name)};
    std::vector<StoredFile> result;
    const Status status = m_backend.inRead([&]() -> Status {
        std::shared_ptr<const FolderTree> tree;
        Status done = folders(Area::Files, Within::Read, &tree);
        std::optional<Resource> resource;
        if (done.ok())
            done = fileIn(tree->find(path), name, &resource);
        std::vector<Content> found;
        if (done.ok() && resource)
            done = contents(resource->key, &found);
        if (!done.ok() || found.empty())
            return done;
        StoredFile& file = found.front().file;
        file.name = resource->name; // which the record may have changed since
        if (withBytes) {
            done = m_backend.contentBytes(found.front().key, &file.bytes);
            file.size = file.bytes.size();
        }
        result.push_back(std::move(file));
        return done;
    });
    if (status.ok())
        files->swap(result);
    return status;
}

Status StoredFiles::putFile(const FolderTree& tree, const FileToPut& file) {
    const std::vector<std::string> targets = tree.find(file.path);
    if (targets.empty())
        return noFolder(file.path);
    std::optional<Resource> resource;
    Status status = fileIn(targets, file.name, &resource);
    // Names that differ in case are two files on the disks they come from and go to.
    if (status.ok() && (!resource || resource->name != file.name)) {
        resource.emplace();
        status = insertResource(Kind::File, targets.front(), file.name, &*resource);
    }
    std::vector<Content> present;
    if (status.ok())
        status = contents(resource->key, &present);
    if (!status.ok())
        return status;
    // The resource's name is the file's; the content keeps the name it came with.
    const std::string name = present.empty() ? file.name : present.front().name;
    return putContent(resource->key, name, file, present);
}

Status StoredFiles::filePut(const std::vector<FileToPut>& files) {
    for (const FileToPut& file : files) {
        const Status status = checkFile(file);
        if (!status.ok())
            return status;
    }
    return m_backend.inWrite([&]() -> Status {
        std::shared_ptr<const FolderTree> tree;
        Status status = folders(Area::Files, Within::Write, &tree);
        for (const FileToPut& file : files) {
            if (!status.ok())
                break;
            status = putFile(*tree, file);
        }
        return status;
    });
}

Status StoredFiles::fileDelete(const std::vector<std::pair<std::string, std::string>>& files) {
    return m_backend.inWrite([&]() -> Status {
        std::shared_ptr<const FolderTree> tree;
        Status status = folders(Area::Files, Within::Write, &tree);
        for (const auto& [path, name] : files) {
            std::optional<Resource> resource;
            if (status.ok())
                status = fileIn(tree->find(path), name, &resource);
            if (status.ok() && resource)
                status = removeResource(resource->key);
            if (!status.ok())
                break;
        }
        return status;
    });
}

Status StoredFiles::fileArea(
    const std::function<void(const std::string& path, const StoredFile& file)>& each) {
    const Fields& f = fields();
    struct Place {
        std::string path, name;
    };
    std::unordered_map<std::string, Place> places; // by folded key of the resource
    std::vector<std::pair<std::string, StoredFile>> area;
    const Status status = m_backend.inRead([&]() -> Status {
        std::shared_ptr<const FolderTree> tree;
        Status done = folders(Area::Files, Within::Read, &tree);
        if (!done.ok())
            return done;
        done = m_backend.selectWhere(
            f.resource, {0, f.resourceFolder, f.resourceName}, f.resourceType, int64_t(Kind::File),
            [&](const Row& row) {
                const auto path = tree->path(textOf(row[1]));
                if (path && isPlainFileName(textOf(row[2])))
                    places[foldedKey(textOf(row[0]))] = {*path, textOf(row[2])};
            });
        if (!done.ok())
            return done;
        return m_backend.select(
            f.content, {f.contentResource, f.contentTime, f.contentSize}, [&](const Row& row) {
                // Taken out of the map: a resource has one content.
                auto place = places.extract(foldedKey(textOf(row[0])));
                if (!place.empty())
                    area.emplace_back(place.mapped().path,
                                      storedFile(place.mapped().name, row[1], row[2]));
            });
    });
    if (!status.ok())
        return status;
    std::sort(area.begin(), area.end(), [](const auto& a, const auto& b) {
        return std::tie(a.first, a.second.name) < std::tie(b.first, b.second.name);
    });
    for (const auto& [path, file] : area)
        each(path, file); // after the snapshot: the caller may use the store again
    return {};
}

} // namespace orvo::store
