// Fields.h: the columns of the two record trees of the menu editor and the fields behind them. A
// new field of a menu element is one more column in Columns.h and one more entry in Fields.cpp.
#ifndef ORVO_MENU_FIELDS_H
#define ORVO_MENU_FIELDS_H

#include "editor/RecordFields.h"

namespace orvo::menu {

/// `Menu`, as tvMenu shows it.
const editor::RecordFields& elementFields();
/// `MenuFolder`, as tvDesck shows it.
const editor::RecordFields& desckFields();

} // namespace orvo::menu

#endif
