// MenuPayload.h: menu elements on the clipboard, format "OrvoMenu/menu": rows as in
// frame/ClipboardRows.h, where the number is the mode, "0" (copy) or "1" (cut), and the rest the
// image that MDAPack makes of the records of the chosen rows and of all below them.
#ifndef ORVO_MENU_MENUPAYLOAD_H
#define ORVO_MENU_MENUPAYLOAD_H

#include "frame/OrvoMdx.h"

#include <QByteArray>
#include <QStringList>

namespace orvo::menu {

struct MenuPayload {
    enum Mode { Copy = 0, Cut = 1 };

    bool cut = false;
    QStringList keys;
    CMDArray table; ///< key 0 KeyLink, unique; key 1 parent;order_

    /// The bytes for a table with those two keys; empty if it could not be packed.
    static QByteArray write(int mode, const QStringList& keys, const CMDArray& table);
    /// The mode that the bytes begin with; Copy for bytes of any other kind.
    static int mode(const QByteArray& bytes);
    /// Takes the bytes apart. False, and nothing to be used, unless they hold a table with records
    /// that have unique keys. Trusts nothing: the bytes may come from any program.
    bool read(const QByteArray& bytes);
};

} // namespace orvo::menu

#endif
