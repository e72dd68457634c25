// Columns.h: the columns of the operator's menu. Only the first is shown.
#ifndef ORVO_DESK_COLUMNS_H
#define ORVO_DESK_COLUMNS_H

namespace orvo::desk {

struct DeskColumn {
    enum {
        Caption,
        Key,
        Kind, ///< Kind::None for a folder, missingResource for an element without its resource
        Name, ///< of the resource
        Params,
        Icon,
        OneCopy,
        Separator, ///< a line is drawn above the row
        Resource,  ///< key of the resource; empty for a folder
        Note,      ///< why the row cannot be opened; empty: it can, as far as is known
        Unsaved,   ///< an engineer edits it, and has not saved
        Count
    };
};

/// The kind of an element whose resource is not in the store.
inline constexpr int missingResource = -1;

} // namespace orvo::desk

#endif
