// Rows.h: filling rows of the trees.
#ifndef ORVO_MENU_ROWS_H
#define ORVO_MENU_ROWS_H

#include "frame/ViewRows.h"

namespace orvo::menu {

using orvo::setRow;

} // namespace orvo::menu

#endif
