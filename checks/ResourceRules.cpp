// Folders of resources, and resources.
#include "checks/Rules.h"

#include "frame/Kinds.h"
#include "platform/store/Store.h"

namespace orvo::checks {

namespace {

bool isKind(int kind) {
    return resourceKind(kind) != nullptr;
}

void lookAtParentOfFolder(const Scene& scene, const Record& folder, Findings& findings) {
    const Fields& f = fields();
    const std::string key = folder.text(f.folder.parent);
    const Record parent = scene.records.linked(folder, f.folder.parent);
    if (key.empty())
        return;
    // The fixed rows at the top of the tree have no record; a folder made under one of them bears
    // its key until it is moved.
    if (isTopRow(key))
        add(findings, folder, Problem::UnderTopRow, key);
    else if (!parent)
        add(findings, folder, Problem::NoParent, key);
    else if (parent.integer(f.folder.kind) != folder.integer(f.folder.kind))
        add(findings, folder, Problem::ParentOfOtherKind, parent.key());
}

void lookAtFolderOf(const Scene& scene, const Record& resource, Findings& findings) {
    const Fields& f = fields();
    const int kind = resource.integer(f.resource.kind);
    const std::string key = resource.text(f.resource.folder);
    const Record folder = scene.records.linked(resource, f.resource.folder);
    if (key.empty()) {
        if (kind != Kind::File)
            add(findings, resource, Problem::FolderUnsaid);
    } else if (kind == Kind::File && isTopRow(key)) {
        add(findings, resource, Problem::InTopRow, key);
    } else if (!folder) {
        add(findings, resource, kind == Kind::Form ? Problem::OrphanForm : Problem::NoFolder, key);
    } else if (folder.integer(f.folder.kind) != kind) {
        add(findings, resource, Problem::FolderOfOtherKind, folder.key());
    }
}

void lookAtLockOf(const Scene& scene, const Record& resource, Findings& findings) {
    const Fields& f = fields();
    const std::string key = resource.text(f.resource.holder);
    if (key.empty())
        return;
    if (!scene.records.linked(resource, f.resource.holder))
        add(findings, resource, Problem::LockHolderGone, key);
    if (resource.integer(f.resource.kind) != Kind::Form)
        add(findings, resource, Problem::LockOnNoForm);
}

} // namespace

void lookAtTops(const Scene& scene, Findings& findings) {
    for (const ResourceKind& kind : resourceKinds) {
        if (!kind.topFolder)
            continue;
        bool found = false;
        scene.namesakes.forEach(scene.records, Namesakes::topPlace(kind.number),
                                [&](const Record&) {
                                    found = true;
                                    return false;
                                });
        if (!found)
            findings.push_back({&fields().folders, {}, Problem::NoTopFolder, kind.topFolder});
    }
}

void lookAtFolder(const Scene& scene, const Record& record, Findings& findings) {
    const Fields& f = fields();
    const int kind = record.integer(f.folder.kind);
    const std::string caption = record.text(f.folder.caption);
    if (!isKind(kind))
        add(findings, record, Problem::UnknownKind, std::to_string(kind));
    if (caption.empty())
        add(findings, record, Problem::NoCaption);
    else if (hasContents(kind) && !store::isPlainFileName(caption))
        add(findings, record, Problem::CaptionNoPath);
    if (isSecond(scene, record))
        add(findings, record, Problem::FolderTwice);
    lookAtParentOfFolder(scene, record, findings);
}

void lookAtResource(const Scene& scene, const Record& record, Findings& findings) {
    const Fields& f = fields();
    const int kind = record.integer(f.resource.kind);
    const std::string name = record.text(f.resource.name);
    if (!isKind(kind))
        add(findings, record, Problem::UnknownKind, std::to_string(kind));
    if (name.empty())
        add(findings, record, Problem::NameEmpty);
    else if (isSecond(scene, record))
        add(findings, record, Problem::NameTwice, name);
    lookAtFolderOf(scene, record, findings);
    lookAtLockOf(scene, record, findings);
    lookAtIcon(scene, record, f.resource.icon, findings);
    if (kind != Kind::File || name.empty())
        return;
    // Forms may stand without files: their menus can be laid out first.
    if (!store::isPlainFileName(name))
        add(findings, record, Problem::NameNoFile);
    else if (scene.withContent && !scene.withContent->count(record.number()))
        add(findings, record, Problem::NoContent, name);
}

} // namespace orvo::checks
