// Desktops, their folders, and the elements of their menus.
#include "checks/Rules.h"

#include "frame/Kinds.h"

namespace orvo::checks {

namespace {

void lookAtDesktopOf(const Scene& scene, const Record& element, Findings& findings) {
    const Fields& f = fields();
    const std::string key = element.text(f.element.desktop);
    const Record desktop = scene.records.linked(element, f.element.desktop);
    if (key.empty())
        add(findings, element, Problem::DesktopUnsaid);
    else if (!desktop)
        add(findings, element, Problem::NoDesktop, key);
    else if (desktop.integer(f.desktop.isFolder))
        add(findings, element, Problem::DesktopIsFolder, desktop.key());
    else if (desktop.key() != key) // the menu is fetched by the exact key
        add(findings, element, Problem::DesktopSpelling, key);
}

void lookAtParentOfElement(const Scene& scene, const Record& element, Findings& findings) {
    const Fields& f = fields();
    const std::string key = element.text(f.element.parent);
    const Record parent = scene.records.linked(element, f.element.parent);
    if (key.empty())
        return;
    if (!parent)
        add(findings, element, Problem::NoParent, key);
    else if (parent.cp1251(f.element.desktop) != element.cp1251(f.element.desktop))
        add(findings, element, Problem::ParentElsewhere, parent.key());
    else if (!parent.cp1251(f.element.resource).empty())
        add(findings, element, Problem::ParentNoFolder, parent.key());
}

void lookAtResourceOf(const Scene& scene, const Record& element, Findings& findings) {
    const Fields& f = fields();
    const std::string key = element.text(f.element.resource);
    if (key.empty())
        return;
    const Record resource = scene.records.linked(element, f.element.resource);
    if (!resource)
        add(findings, element, Problem::NoResource, key);
    else if (const ResourceKind* kind = resourceKind(resource.integer(f.resource.kind));
             !kind || !kind->attribute)
        add(findings, element, Problem::NotLaunched, resource.key());
}

} // namespace

void lookAtIcon(const Scene& scene, const Record& record, int field, Findings& findings) {
    const Fields& f = fields();
    const std::string name = record.text(field);
    if (name.empty())
        return;
    bool found = false;
    scene.records.forEachWith(
        table::MenuResource, field::name_, name, [&](const Record& file, int) {
            found = file.integer(f.resource.kind) == Kind::File &&
                    isIconFolder(scene.records.linked(file, f.resource.folder));
            return !found;
        });
    if (!found)
        add(findings, record, Problem::NoIcon, name);
}

void lookAtDesktop(const Scene& scene, const Record& record, Findings& findings) {
    const Fields& f = fields();
    if (record.cp1251(f.desktop.caption).empty())
        add(findings, record, Problem::NoCaption);

    const std::string order = record.text(f.desktop.order);
    const bool isFolder = record.integer(f.desktop.isFolder) != 0;
    if (order != sortclass::folder && order != sortclass::desktop)
        add(findings, record, Problem::OrderClassUnknown, "\"" + order + "\"");
    else if ((order == sortclass::folder) != isFolder)
        add(findings, record, Problem::OrderClassOfOther, "\"" + order + "\"");

    const std::string key = record.text(f.desktop.parent);
    const Record parent = scene.records.linked(record, f.desktop.parent);
    if (!key.empty() && !parent)
        add(findings, record, Problem::NoParent, key);
    else if (parent && !parent.integer(f.desktop.isFolder))
        add(findings, record, Problem::ParentIsDesktop, parent.key());
}

void lookAtElement(const Scene& scene, const Record& record, Findings& findings) {
    const Fields& f = fields();
    if (record.cp1251(f.element.caption).empty())
        add(findings, record, Problem::NoCaption);
    lookAtDesktopOf(scene, record, findings);
    lookAtParentOfElement(scene, record, findings);
    lookAtResourceOf(scene, record, findings);
    lookAtIcon(scene, record, f.element.icon, findings);
    if (isSecond(scene, record))
        add(findings, record, Problem::SameOrder, std::to_string(record.integer(f.element.order)));
}

} // namespace orvo::checks
