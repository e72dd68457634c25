// Columns.h: the columns of the tree of the resource editor, and what its rows are.
#ifndef ORVO_RESOURCES_COLUMNS_H
#define ORVO_RESOURCES_COLUMNS_H

#include "frame/Kinds.h"
#include "frame/Records.h"
#include "frame/Vocabulary.h"
#include "frame/WindowParts.h"

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
        Type, ///< Kind
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

enum LockState { NotLocked = 0, LockedHere = 1, LockedElsewhere = 2 };

inline QString textAt(const QModelIndex& row, int column) {
    return row.siblingAtColumn(column).data().toString();
}

/// Kind of a row; None for an invalid index.
inline int kindOf(const QModelIndex& row) {
    return row.siblingAtColumn(ResColumn::Type).data().toInt();
}

/// Whether a row is a fixed folder or its record is a folder's. The model calls every top row a
/// folder, and a resource may stand there, too: one whose folder has no row in this window.
inline bool isFolder(const QModelIndex& row) {
    return row.siblingAtColumn(ResColumn::IsFolder).data().toBool();
}

/// The table of a row's record.
inline const char* tableOf(const QModelIndex& row) {
    return isFolder(row) ? table::MenuResourceFolder : table::MenuResource;
}

/// `name_` of a row's resource.
inline QString nameOf(const QModelIndex& row) {
    return textAt(row, ResColumn::Name);
}

/// The record of a row; none for an invalid index.
inline RecordName recordOf(const QModelIndex& row) {
    if (!row.isValid())
        return {};
    const bool bearsFiles = hasContents(kindOf(row));
    return {QString::fromLatin1(tableOf(row)), textAt(row, ResColumn::KeyLink),
            bearsFiles && !isFolder(row)};
}

/// Whether a row's key is that of a row without a record.
inline bool isFixedKey(const QString& key) {
    for (const char* fixed : {rowkey::resources, rowkey::files, rowkey::orphans})
        if (sameText(key, QString::fromLatin1(fixed)))
            return true;
    return false;
}

/// The fields of the host's lists of stored files.
struct FileField {
    enum { Name, Time, Size, Content };
};

/// The clipboard format.
inline constexpr char resourcesMime[] = "OrvoResources/resources";

} // namespace orvo::resources

#endif
