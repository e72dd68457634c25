// Rules.h: the rules of `check`, by subject. Each reads what it needs and tells the findings.
#ifndef ORVO_ADMIN_CHECK_RULES_H
#define ORVO_ADMIN_CHECK_RULES_H

#include "apps/admin/check/Findings.h"

namespace orvo::admin {

/// The tables, fetched once and read by several rules.
struct Catalogue {
    explicit Catalogue(store::Store& store)
        : users(store, table::Users)
        , extensions(store, table::MenuFileExt)
        , folders(store, table::MenuResourceFolder)
        , resources(store, table::MenuResource)
        , desktops(store, table::MenuFolder)
        , elements(store, table::Menu) {}

    Table users, extensions, folders, resources, desktops, elements;
};

/// Users and file extensions: empty or repeated names.
void checkPeople(const Catalogue& catalogue, Findings& findings);
/// Folders of desktops and desktops.
void checkDesktops(const Catalogue& catalogue, Findings& findings);
/// Menu elements, their desktops, parents, resources and icons.
void checkElements(const Catalogue& catalogue, Findings& findings);
/// Folders of resources.
void checkFolders(const Catalogue& catalogue, Findings& findings);
/// Resources, their folders, names and locks.
void checkResources(const Catalogue& catalogue, Findings& findings);
/// Records with the keys that the editors give to the fixed rows of their trees.
void checkFixedKeys(const Catalogue& catalogue, Findings& findings);
/// Files without stored content. (Forms may stand without files: their menus can be laid out
/// first.)
void checkContents(store::Store& store, const Catalogue& catalogue, Findings& findings);

/// Tells each cycle of the parent field once, at its first member.
void checkCycles(const Table& table, const char* parentField, Findings& findings);

} // namespace orvo::admin

#endif
