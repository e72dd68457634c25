// ChangeRecord.h: the values of a change, which the log keeps as JSON, as fields of a record.
#ifndef ORVO_PLATFORM_STORE_CHANGERECORD_H
#define ORVO_PLATFORM_STORE_CHANGERECORD_H

#include "platform/store/FieldValues.h"
#include "platform/store/Store.h"

#include <string>

namespace orvo::store {

/// Sets in `record`, whose array has the structure of the table (makeStructure), the fields that a
/// JSON object of the change log names (Change::after, Change::before), and marks them with the
/// user bit; a JSON null sets NULL. Names that the table lacks and values that the field cannot
/// hold are passed over. False, and nothing set, if the text is no JSON object or memory ran out.
bool setFromJson(const TableDef& table, const std::string& json, MDRData* record);

/// The same values by their fields' numbers, for comparing; none if the text is no JSON object.
FieldValues valuesFromJson(const TableDef& table, const std::string& json);

} // namespace orvo::store

#endif
