#include "apps/admin/Folders.h"
#include "apps/admin/check/Rules.h"

#include <set>

namespace orvo::admin {

namespace {

/// Names of the files that the editors offer as icons, folded.
std::set<std::string> iconNames(const Catalogue& catalogue) {
    std::set<std::string> folders, names;
    for (int i = 0; i < catalogue.folders.count(); ++i) {
        const Row folder = catalogue.folders.at(i);
        if (folder.integer(field::type_) == File && folder.text(field::ParentKey).empty() &&
            sameText(folder.text(field::caption), iconFolder))
            folders.insert(folded(folder.key()));
    }
    for (int i = 0; i < catalogue.resources.count(); ++i) {
        const Row resource = catalogue.resources.at(i);
        if (resource.integer(field::type_) == File &&
            folders.count(folded(resource.text(field::MenuResourceFolderKey))))
            names.insert(folded(resource.text(field::name_)));
    }
    return names;
}

void checkDesktopOf(const Catalogue& catalogue, const Row& element, Findings& findings) {
    const Table& table = catalogue.elements;
    const std::string key = element.text(field::FolderKey);
    const Row desktop = catalogue.desktops.byKey(key);
    if (key.empty())
        findings.error(table, element, "не сказано, на каком рабочем столе элемент");
    else if (!desktop)
        findings.error(table, element, "нет рабочего стола", key);
    else if (desktop.integer(field::isFolder))
        findings.error(table, element, "вместо рабочего стола папка столов:", shownName(desktop));
    else if (desktop.key() != key) // the menu is fetched by the exact key
        findings.error(table, element, "ключ рабочего стола записан другими буквами:", key);
}

void checkParentOf(const Catalogue& catalogue, const Row& element, Findings& findings) {
    const Table& table = catalogue.elements;
    const std::string key = element.text(field::parent);
    const Row parent = table.byKey(key);
    if (key.empty())
        return;
    if (!parent)
        findings.error(table, element, "нет родителя", key);
    else if (parent.text(field::FolderKey) != element.text(field::FolderKey))
        findings.error(table, element, "родитель на другом рабочем столе:", shownName(parent));
    else if (!parent.text(field::MenuResourceKey).empty())
        findings.error(table, element, "родитель - не папка меню:", shownName(parent));
}

void checkResourceOf(const Catalogue& catalogue, const Row& element, Findings& findings) {
    const Table& table = catalogue.elements;
    const std::string key = element.text(field::MenuResourceKey);
    if (key.empty())
        return;
    const Row resource = catalogue.resources.byKey(key);
    if (!resource)
        findings.error(table, element, "нет ресурса", key);
    else if (const int type = resource.integer(field::type_); type < Module || type > Form)
        findings.warning(table, element, "ресурс такого типа из меню не запускается:",
                         resource.text(field::name_) + ", тип " + std::to_string(type));
}

} // namespace

void checkElements(const Catalogue& catalogue, Findings& findings) {
    const Table& table = catalogue.elements;
    const std::set<std::string> icons = iconNames(catalogue);
    for (int i = 0; i < table.count(); ++i) {
        const Row element = table.at(i);
        if (element.text(field::caption).empty())
            findings.error(table, element, "пустое название");
        checkDesktopOf(catalogue, element, findings);
        checkParentOf(catalogue, element, findings);
        checkResourceOf(catalogue, element, findings);
        const std::string icon = element.text(field::ico);
        if (!icon.empty() && !icons.count(folded(icon)))
            findings.warning(table, element, "в папке icons нет значка", icon);
    }
    checkCycles(table, field::parent, findings);
}

} // namespace orvo::admin
