// LoggedValues.h: reads the JSON objects that the stores' own triggers write, several times as fast
// as a parser of all that JSON may be. Of ChangeRecord.cpp alone.
#ifndef ORVO_PLATFORM_STORE_LOGGEDVALUES_H
#define ORVO_PLATFORM_STORE_LOGGEDVALUES_H

#include "platform/store/FieldValues.h"

#include <string_view>

namespace orvo::store {

/// Adds the values of the fields that the table has and that can hold them. False for anything but
/// a flat object without blanks, in valid UTF-8, each name once and in the order of the table, and
/// no other escape sequence than a trigger has use for: that is for the parser of everything, and
/// `values` is then empty.
bool readLoggedValues(const TableDef& table, std::string_view json, FieldValues* values);

} // namespace orvo::store

#endif
