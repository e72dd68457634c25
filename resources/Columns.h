// Columns.h: the columns of the tree of the resource editor, the kinds of its rows, and the keys of
// those that no record stands behind.
#ifndef ORVO_RESOURCES_COLUMNS_H
#define ORVO_RESOURCES_COLUMNS_H

#include <QModelIndex>
#include <QVariant>

namespace orvo::resources {

/// Columns of `tvRes`, in the order of the titles that the model is made with.
struct ResColumn {
    enum {
        Caption,
        Name, ///< `name_`; empty for folders
        Icon,
        Lock,     ///< who holds the form's lock
        LockTime, ///< since when, as text
        KeyLink,
        Type, ///< ResKind
        Params,
        FolderKey, ///< `ParentKey` of a folder
        IsFolder,
        Date,
        Size,
        Blocked, ///< LockState
        IsNew,   ///< not yet written to the server
        Count
    };
};

/// `type_`. Folders bear the kind of what they hold.
enum ResKind { MenuArea = 0, Module = 1, Function = 2, Form = 3, File = 4, Orphans = 5 };

enum LockState { NotLocked = 0, LockedHere = 1, LockedElsewhere = 2 };

/// Whether a row is a fixed folder or its record is a folder's. The model calls every top row a
/// folder, and a resource may stand there, too: one whose folder has no row in this window.
inline bool isFolder(const QModelIndex& row) {
    return row.siblingAtColumn(ResColumn::IsFolder).data().toBool();
}

/// Keys of rows that no record stands behind.
inline constexpr char menuRootKey[] = "MenuResources";
inline constexpr char fileRootKey[] = "FileResources";
inline constexpr char orphansKey[] = "WrongFolder";

/// The clipboard format.
inline constexpr char resourcesMime[] = "OrvoResources/resources";

} // namespace orvo::resources

#endif
