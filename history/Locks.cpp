#include "history/Locks.h"

#include "frame/Vocabulary.h"
#include "history/RecordSource.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <algorithm>

namespace orvo::history {

namespace {

const store::Value& valueAt(const std::vector<store::Value>& row, const store::TableDef& table,
                            const char* field) {
    return row[static_cast<size_t>(table.find(field))];
}

bool isForm(const store::Value& kind) {
    const auto* number = std::get_if<int64_t>(&kind);
    return number && *number == Kind::Form;
}

} // namespace

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

store::Status heldByOthers(store::MaintainedStore& store, const std::vector<std::string>& resources,
                           std::map<std::string, FormLock>* held) {
    const store::TableDef& forms = *store::findTable(table::MenuResource);
    const store::TableDef& users = *store::findTable(table::Users);
    std::map<std::string, std::vector<store::Value>> stored, people;
    store::Status status = store.storedValues(forms, resources, &stored);
    std::map<std::string, std::string> holders; // by form, both folded
    std::vector<std::string> keys;
    for (const auto& [key, row] : stored)
        if (const std::string& holder = store::textOf(valueAt(row, forms, field::UsersKey));
            !holder.empty() && isForm(valueAt(row, forms, field::type_))) {
            holders[key] = store::foldedKey(holder);
            keys.push_back(holder);
        }
    if (status.ok() && !keys.empty())
        status = store.storedValues(users, keys, &people);
    if (!status.ok())
        return status;
    for (const auto& [key, holder] : holders) {
        const auto user = people.find(holder);
        if (user == people.end())
            continue;
        const std::string& login = store::textOf(valueAt(user->second, users, field::login_));
        if (store::sameText(login, store.login()))
            continue;
        const std::vector<store::Value>& row = stored.at(key);
        const auto* since = std::get_if<double>(&valueAt(row, forms, field::dateTimeEdit));
        (*held)[key] = {store::textOf(row.front()), login, since ? *since : 0};
    }
    return {};
}

} // namespace orvo::history
