#include "apps/admin/Folders.h"
#include "apps/admin/check/Rules.h"

#include <set>
#include <unordered_set>

namespace orvo::admin {

namespace {

bool isKind(int type) {
    return type >= Module && type <= File;
}

/// The fixed rows at the top of the tree have no record; a folder made under one of them bears its
/// key until it is moved.
bool isTopRow(const std::string& key) {
    return sameText(key, rowkey::files) || sameText(key, rowkey::resources);
}

void checkParentOf(const Table& table, const Row& folder, Findings& findings) {
    const std::string key = folder.text(field::ParentKey);
    const Row parent = table.byKey(key);
    if (key.empty())
        return;
    if (isTopRow(key))
        findings.warning(table, folder,
                         "сделана под верхней строкой дерева и после перезапуска редактора не "
                         "видна; ParentKey",
                         key);
    else if (!parent)
        findings.error(table, folder, "нет родителя", key);
    else if (parent.integer(field::type_) != folder.integer(field::type_))
        findings.error(table, folder, "родитель другого типа:", shownName(parent));
}

void checkTops(const Table& table, Findings& findings) {
    for (const int kind : {Module, Function, Form}) {
        const char* caption = topCaption(kind);
        if (!table.find([&](const Row& row) {
                return row.integer(field::type_) == kind && row.text(field::ParentKey).empty() &&
                       sameText(row.text(field::caption), caption);
            }))
            findings.damage(std::string("нет верхней папки «") + caption +
                            "», без неё дерево ресурсов не загружается; её сделает init");
    }
}

void checkFolderOf(const Catalogue& catalogue, const Row& resource, Findings& findings) {
    const Table& table = catalogue.resources;
    const int type = resource.integer(field::type_);
    const std::string key = resource.text(field::MenuResourceFolderKey);
    const Row folder = catalogue.folders.byKey(key);
    if (key.empty()) {
        if (type != File)
            findings.error(table, resource, "ресурс вне папок, в дереве не виден");
    } else if (type == File && isTopRow(key)) {
        findings.warning(table, resource, "после перезапуска редактора не виден; папка", key);
    } else if (!folder && type == Form) {
        findings.warning(table, resource,
                         "папки нет, форма стоит среди непривязанных объектов; папка", key);
    } else if (!folder) {
        findings.error(table, resource, "нет папки", key);
    } else if (folder.integer(field::type_) != type) {
        findings.error(table, resource, "папка другого типа:", shownName(folder));
    }
}

void checkLockOf(const Catalogue& catalogue, const Row& resource, Findings& findings) {
    const Table& table = catalogue.resources;
    const std::string key = resource.text(field::UsersKey);
    if (key.empty())
        return;
    if (!catalogue.users.byKey(key))
        findings.error(table, resource, "нет пользователя, который держит блокировку:", key);
    if (resource.integer(field::type_) != Form)
        findings.warning(table, resource, "блокировка не на форме");
}

} // namespace

void checkFolders(const Catalogue& catalogue, Findings& findings) {
    const Table& table = catalogue.folders;
    std::unordered_set<std::string> siblings;
    for (int i = 0; i < table.count(); ++i) {
        const Row folder = table.at(i);
        const int type = folder.integer(field::type_);
        const std::string caption = folder.text(field::caption);
        if (!isKind(type))
            findings.error(table, folder, "неизвестный тип", std::to_string(type));
        if (caption.empty())
            findings.error(table, folder, "пустое название");
        else if (type >= Form && !store::isPlainFileName(caption))
            findings.warning(table, folder, "название не годится в путь, на диск не переносится");
        const std::string place = std::to_string(type) + '\n' +
                                  folded(folder.text(field::ParentKey)) + '\n' + folded(caption);
        if (!caption.empty() && !siblings.insert(place).second)
            findings.error(table, folder, "рядом есть папка с таким же названием");
        checkParentOf(table, folder, findings);
    }
    checkTops(table, findings);
    checkCycles(table, field::ParentKey, findings);
}

void checkResources(const Catalogue& catalogue, Findings& findings) {
    const Table& table = catalogue.resources;
    std::unordered_set<std::string> names;
    for (int i = 0; i < table.count(); ++i) {
        const Row resource = table.at(i);
        const int type = resource.integer(field::type_);
        const std::string name = resource.text(field::name_);
        if (!isKind(type))
            findings.error(table, resource, "неизвестный тип", std::to_string(type));
        if (name.empty())
            findings.error(table, resource, "пустое имя ресурса");
        // Files are told apart by folder and name, everything else by its name alone.
        std::string place = std::to_string(type) + '\n' + folded(name);
        if (type == File)
            place += '\n' + folded(resource.text(field::MenuResourceFolderKey));
        if (!name.empty() && !names.insert(place).second)
            findings.error(table, resource, "имя ресурса повторяется:", name);
        checkFolderOf(catalogue, resource, findings);
        checkLockOf(catalogue, resource, findings);
    }
}

} // namespace orvo::admin
