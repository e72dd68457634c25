// Updates that look at the change log before they write; see Merge.h.
#include "platform/store/ChangeRecord.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"
#include "platform/store/Sql.h"
#include "platform/store/StoreCore.h"

#include <algorithm>
#include <set>

namespace orvo::store {

namespace {

std::vector<std::string> listOf(const std::set<std::string>& keys) {
    return {keys.begin(), keys.end()};
}

const Value* valueOf(const Write& write, int field) {
    for (const auto& [number, value] : write.values)
        if (number == field)
            return &value;
    return nullptr;
}

/// What people call the record: its caption or name, as far as a change of the log tells.
std::string nameIn(const TableDef& table, const std::string& json) {
    const std::map<int, Value> values = valuesFromJson(table, json);
    for (const char* field : {"caption", "name_", "login_"}) {
        const auto found = values.find(table.find(field));
        if (found != values.end() && !textOf(found->second).empty())
            return textOf(found->second);
    }
    return {};
}

} // namespace

Status StoreCore::lastDeletion(const TableDef& table, const std::string& key,
                               std::optional<Change>* deletion) {
    std::vector<Change> changes;
    const Status status = changesOf(table, {foldedKey(key)}, 0, &changes);
    for (auto change = changes.rbegin(); change != changes.rend(); ++change)
        if (change->code == 603) {
            *deletion = std::move(*change);
            break;
        }
    return status;
}

Status StoreCore::checkParents(const TableDef& table, const std::vector<Write>& writes,
                               std::optional<Change>* deletedParent) {
    for (const ParentField& parent : parentFields(table)) {
        const int field = table.find(parent.field);
        const TableDef& above = *findTable(parent.table);
        std::set<std::string> wanted;
        for (const Write& write : writes) {
            const Value* value = write.flag == MDX_DELETE ? nullptr : valueOf(write, field);
            // Editors also write captions there, which no record has for a key.
            if (value != nullptr && isKey(textOf(*value)))
                wanted.insert(foldedKey(textOf(*value)));
        }
        if (&above == &table)
            for (const Write& write : writes)
                if (write.flag == MDX_INSERT)
                    wanted.erase(foldedKey(write.key));
        if (wanted.empty())
            continue;
        std::set<std::string> stored;
        if (const Status status = storedKeys(above, listOf(wanted), &stored); !status.ok())
            return status;
        for (const Write& write : writes) {
            const Value* value = write.flag == MDX_DELETE ? nullptr : valueOf(write, field);
            const std::string key = value != nullptr ? foldedKey(textOf(*value)) : std::string();
            if (wanted.count(key) == 0 || stored.count(key) != 0)
                continue;
            // An orphan that stays where it was is its writer's to change.
            bool moved = true;
            if (write.flag == MDX_UPDATE) {
                const Status status =
                    selectWhere(table, {field}, 0, write.key, [&](const Row& row) {
                        moved = foldedKey(textOf(row.front())) != key;
                    });
                if (!status.ok())
                    return status;
            }
            std::optional<Change> deletion;
            if (const Status status = moved ? lastDeletion(above, key, &deletion) : Status();
                !status.ok())
                return status;
            if (!deletion)
                continue;
            const std::string name = nameIn(above, deletion->before);
            const std::string who = deletion->login.empty()
                                        ? std::string("вручную")
                                        : "пользователем " + shown(deletion->login);
            *deletedParent = std::move(deletion);
            return {ParentDeleted, "Папка " + shown(name.empty() ? key : name) +
                                       ", в которой должна быть запись, удалена " + who};
        }
    }
    return {};
}

Status StoreCore::applyGuarded(const TableDef& table, std::vector<Write>& writes,
                               UpdateGuard& guard) {
    std::set<std::string> updated;
    for (const Write& write : writes)
        if (write.flag == MDX_UPDATE && isKey(write.key))
            updated.insert(foldedKey(write.key));
    std::vector<Change> changes;
    std::set<std::string> stored;
    if (!updated.empty()) {
        Status status = storedKeys(table, listOf(updated), &stored);
        if (status.ok() && guard.seen >= 0)
            status = changesOf(table, listOf(updated), guard.seen, &changes);
        if (!status.ok())
            return status;
    }
    const Merge merge(table, changes, guard);
    for (Write& write : writes) {
        merge.reduce(write);
        const std::string key = foldedKey(write.key);
        if (write.flag == MDX_INSERT)
            stored.insert(key);
        if (write.flag == MDX_UPDATE && stored.count(key) == 0 && !write.key.empty()) {
            const auto sameKey = [&](const MissingRecord& record) {
                return foldedKey(record.key) == key;
            };
            if (std::any_of(guard.missing.begin(), guard.missing.end(), sameKey))
                continue;
            guard.missing.push_back({write.key, {}});
            if (const Status status = lastDeletion(table, key, &guard.missing.back().deletion);
                !status.ok())
                return status;
        }
    }
    if (const Status status = checkParents(table, writes, &guard.parentDeletion); !status.ok())
        return status;
    if (const Status status = refuseCycles(table, writes); !status.ok())
        return status;
    for (const Write& write : writes)
        if (const Status status = apply(table, write); !status.ok())
            return status;
    return {};
}

} // namespace orvo::store
