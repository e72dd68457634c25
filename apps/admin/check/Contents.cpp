#include "apps/admin/Failure.h"
#include "apps/admin/Folders.h"
#include "apps/admin/check/Rules.h"

#include <unordered_set>

namespace orvo::admin {

void checkContents(store::Store& store, const Catalogue& catalogue, Findings& findings) {
    std::unordered_set<std::string> stored;
    require(store.fileArea([&](const std::string& path, const store::StoredFile& file) {
        stored.insert(folded(path) + '\n' + folded(file.name));
    }),
            "файлы не перечислены");
    const Folders folders(store);
    const Table& table = catalogue.resources;
    for (int i = 0; i < table.count(); ++i) {
        const Row resource = table.at(i);
        if (resource.integer(field::type_) != File || resource.text(field::name_).empty())
            continue;
        const std::string name = resource.text(field::name_);
        if (!store::isPlainFileName(name)) {
            findings.warning(table, resource, "имя не годится для файла, на диск не переносится");
            continue;
        }
        const auto path = folders.pathOf(resource.text(field::MenuResourceFolderKey));
        if (path && !stored.count(folded(*path) + '\n' + folded(name)))
            findings.warning(table, resource, "содержимого файла в хранилище нет:", name);
    }
}

} // namespace orvo::admin
