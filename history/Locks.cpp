#include "history/Locks.h"

#include "frame/Vocabulary.h"
#include "history/RecordSource.h"
#include "platform/store/ChangeRecord.h"

#include <algorithm>

namespace orvo::history {

bool isLockField(const store::TableDef& table, int field) {
    return &table == store::findTable(table::MenuResource) &&
           (field == table.find(field::UsersKey) || field == table.find(field::dateTimeEdit));
}

bool isLockOnly(const store::Change& change) {
    const store::TableDef* table = tableOf(change.table);
    if (!table || change.code != OrvoEventUpdate || change.table != table::MenuResource)
        return false;
    const Values after = store::valuesFromJson(*table, change.after);
    return !after.empty() && std::all_of(after.begin(), after.end(), [&](const auto& value) {
        return isLockField(*table, value.first);
    });
}

} // namespace orvo::history
