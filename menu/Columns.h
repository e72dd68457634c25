// Columns.h: the columns of the trees of the menu editor. The lists of titles that the models are
// made with follow these orders.
#ifndef ORVO_MENU_COLUMNS_H
#define ORVO_MENU_COLUMNS_H

#include "frame/Vocabulary.h"

#include <limits>

namespace orvo::menu {

/// Columns of `tvDesck`.
struct DesckColumn {
    enum { Name, KeyLink, ParentKey, Order, IsFolder, IsNew, Count };
};

/// Columns of `tvMenu`.
struct MenuColumn {
    enum {
        Caption,
        Type, ///< "папка", "модуль", "функция", "файл", or nothing if the resource is gone
        Command, ///< the resource's name
        FolderKey,
        Icon,
        KeyLink,
        MenuResKey,
        OneCopy,
        Order,
        Params,
        ParentKey,
        Separator,
        IsNew,
        Count
    };
};

/// Keys of rows that no record stands behind.
inline constexpr const char* desckRootKey = rowkey::desktops;
inline constexpr const char* menuRootKey = rowkey::elements;

/// The texts in `order_` of `MenuFolder`: folders come before desktops.
inline constexpr const char* folderClass = sortclass::folder;
inline constexpr const char* desktopClass = sortclass::desktop;

/// The distance between the `order_` of new neighbours.
inline constexpr int orderStep = 1000;
/// One step after an `order_`. The field ends where an int does; rows written by other programs may
/// be there already.
constexpr int nextOrderAfter(int order) {
    return order > std::numeric_limits<int>::max() - orderStep ? std::numeric_limits<int>::max()
                                                               : order + orderStep;
}

/// Clipboard formats.
inline constexpr char menuMime[] = "OrvoMenu/menu";
inline constexpr char desckMime[] = "OrvoMenu/descktop";

} // namespace orvo::menu

#endif
