#include "platform/store/GuardedUpdate.h"

#include "frame/StdText.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/LinkCycles.h"
#include "platform/store/Names.h"
#include "platform/store/TakenNames.h"

#include "frame/Vocabulary.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <map>
#include <set>
#include <string_view>
#include <unordered_set>

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

std::string byWhom(const Change& change) {
    return change.login.empty() ? StdText::tr("вручную")
                                : StdText::tr("пользователем ") + shown(change.login);
}

bool isEmptyText(const Value& value) {
    const auto* text = std::get_if<std::string>(&value);
    return text != nullptr && text->empty();
}

/// An editor writes an empty text for NULL, since its rows show both alike: nobody has typed it.
void leaveNull(Write& write, const std::set<int>& nulls) {
    write.values.erase(std::remove_if(write.values.begin(), write.values.end(),
                                      [&](const std::pair<int, Value>& value) {
                                          return isEmptyText(value.second) &&
                                                 nulls.count(value.first) != 0;
                                      }),
                       write.values.end());
}

/// What people call the record: its caption or name, as far as a change of the log tells.
std::string nameIn(const TableDef& table, const std::string& json) {
    const FieldValues values = valuesFromJson(table, json);
    for (const char* name : {field::caption, field::name_, field::login_}) {
        const auto found = values.find(table.find(name));
        if (found != values.end() && !textOf(found->second).empty())
            return textOf(found->second);
    }
    return {};
}

} // namespace

Status GuardedUpdate::apply(UpdateGuard* guard) {
    Status status;
    if (guard != nullptr)
        status = checkReach(*guard);
    if (status.ok() && guard != nullptr && m_merged != nullptr)
        status = merge(*guard);
    if (status.ok() && guard != nullptr)
        status = checkParents(&guard->parentDeletion);
    if (status.ok() && guard != nullptr)
        status = checkResources(*guard);
    if (status.ok() && guard != nullptr)
        status = checkIcons(*guard);
    if (status.ok())
        status = refuseCycles();
    if (status.ok() && guard != nullptr && guard->seen >= 0 && NamePlaces::letRename(m_table))
        status = TakenNames(m_backend, m_table, *guard).check(m_writes);
    if (status.ok() && guard != nullptr)
        status = checkChildren(*guard);
    return status.ok() ? m_backend.applyAll(m_table, m_writes) : status;
}

Status GuardedUpdate::checkReach(const UpdateGuard& guard) {
    StoreBackend::Gap gap = StoreBackend::Gap::None;
    const Status status = guard.seen < 0 ? Status() : m_backend.gapSince(guard.seen, &gap);
    return status.ok() && gap != StoreBackend::Gap::None
               ? Status{Outdated, StoreBackend::gapWords(gap) +
                                      StdText::tr(", и уже не видно, что меняли другие")}
               : status;
}

Status GuardedUpdate::merge(UpdateGuard& guard) {
    std::set<std::string> updated;
    std::set<int> emptied;
    for (const Write& write : m_writes) {
        if (write.flag != MDX_UPDATE || !isKey(write.key))
            continue;
        updated.insert(foldedKey(write.key));
        for (const auto& [field, value] : write.values)
            if (isEmptyText(value))
                emptied.insert(field);
    }
    if (updated.empty())
        return {};
    std::vector<int> fields{0};
    if (guard.seen >= 0)
        fields.insert(fields.end(), emptied.begin(), emptied.end());
    std::vector<Change> changes;
    std::set<std::string> stored;
    std::map<std::string, std::set<int>> nulls;
    const auto note = [&](const StoreBackend::Row& row) {
        const std::string key = foldedKey(textOf(row.front()));
        for (size_t i = 1; i < fields.size(); ++i)
            if (std::holds_alternative<std::monostate>(row[i]))
                nulls[key].insert(fields[i]);
        stored.insert(key);
    };
    Status status = m_backend.selectKeys(m_table, fields, listOf(updated), note);
    if (status.ok() && guard.seen >= 0)
        status = m_backend.changesOf(m_table, listOf(updated), guard.seen, &changes);
    if (!status.ok())
        return status;
    const Merge merge(m_table, changes, guard);
    for (Write& write : *m_merged) {
        const std::string key = foldedKey(write.key);
        if (const auto found = nulls.find(key); found != nulls.end() && write.flag == MDX_UPDATE)
            leaveNull(write, found->second);
        merge.reduce(write);
        if (write.flag == MDX_INSERT)
            stored.insert(key);
        if (write.flag != MDX_UPDATE || stored.count(key) != 0 || write.key.empty())
            continue;
        const auto sameKey = [&](const MissingRecord& record) {
            return foldedKey(record.key) == key;
        };
        if (std::any_of(guard.missing.begin(), guard.missing.end(), sameKey))
            continue;
        guard.missing.push_back({write.key, {}});
        status = lastDeletion(m_table, key, &guard.missing.back().deletion);
        if (!status.ok())
            return status;
    }
    return {};
}

Status GuardedUpdate::checkParents(std::optional<Change>* deletedParent) {
    for (const ParentField& parent : parentFields(m_table)) {
        const int field = m_table.find(parent.field);
        const TableDef& above = *findTable(parent.table);
        std::set<std::string> wanted;
        std::unordered_set<std::string_view> spelled; // many are placed below one
        for (const Write& write : m_writes) {
            const Value* value = write.flag == MDX_DELETE ? nullptr : valueOf(write, field);
            // Editors also write captions there, which no record has for a key.
            if (value != nullptr && spelled.insert(textOf(*value)).second && isKey(textOf(*value)))
                wanted.insert(foldedKey(textOf(*value)));
        }
        if (&above == &m_table)
            for (const Write& write : m_writes)
                if (write.flag == MDX_INSERT)
                    wanted.erase(foldedKey(write.key));
        if (wanted.empty())
            continue;
        std::set<std::string> stored;
        if (const Status status = m_backend.storedKeys(above, listOf(wanted), &stored);
            !status.ok())
            return status;
        for (const Write& write : m_writes) {
            const Value* value = write.flag == MDX_DELETE ? nullptr : valueOf(write, field);
            const std::string key = value != nullptr ? foldedKey(textOf(*value)) : std::string();
            if (wanted.count(key) == 0 || stored.count(key) != 0)
                continue;
            if (const Status status = checkParent(write, field, above, key, deletedParent);
                !status.ok())
                return status;
            if (write.flag == MDX_INSERT) // it was never deleted: once is enough
                wanted.erase(key);
        }
    }
    return {};
}

Status GuardedUpdate::checkParent(const Write& write, int field, const TableDef& above,
                                  const std::string& key, std::optional<Change>* deletedParent) {
    if (write.flag == MDX_UPDATE) { // an orphan that stays where it was is its writer's to change
        bool moved = true;
        const auto compare = [&](const StoreBackend::Row& row) {
            moved = foldedKey(textOf(row.front())) != key;
        };
        const Status status = m_backend.selectWhere(m_table, {field}, 0, write.key, compare);
        if (!status.ok() || !moved)
            return status;
    }
    std::optional<Change> deletion;
    if (const Status status = lastDeletion(above, key, &deletion); !status.ok() || !deletion)
        return status;
    const std::string name = nameIn(above, deletion->before);
    const std::string who = byWhom(*deletion);
    *deletedParent = std::move(deletion);
    return {ParentDeleted, StdText::tr("Папка ") + shown(name.empty() ? key : name) +
                               StdText::tr(", в которой должна быть запись, удалена ") + who};
}

Status GuardedUpdate::checkResources(const UpdateGuard& guard) {
    if (guard.seen < 0 || &m_table != findTable(table::Menu))
        return {};
    const int link = m_table.find(field::MenuResourceKey);
    const auto chosenBy = [&](const Write& write) {
        const Value* value = write.flag == MDX_DELETE ? nullptr : valueOf(write, link);
        return value != nullptr && isKey(textOf(*value)) ? foldedKey(textOf(*value))
                                                         : std::string();
    };
    std::set<std::string> chosen;
    for (const Write& write : m_writes)
        if (std::string key = chosenBy(write); !key.empty())
            chosen.insert(std::move(key));
    if (chosen.empty())
        return {};
    const TableDef& resources = *findTable(table::MenuResource);
    std::set<std::string> stored;
    Status status = m_backend.storedKeys(resources, listOf(chosen), &stored);
    for (const std::string& key : stored)
        chosen.erase(key);
    std::vector<Change> changes;
    if (status.ok() && !chosen.empty())
        status = m_backend.changesOf(resources, listOf(chosen), guard.seen, &changes);
    for (const Change& change : changes)
        for (const Write& write : m_writes) {
            if (change.code != OrvoEventDelete || chosenBy(write) != foldedKey(change.key))
                continue;
            bool isNew = true; // what named it before is its writer's to change
            const auto compare = [&](const StoreBackend::Row& row) {
                isNew = foldedKey(textOf(row.front())) != foldedKey(change.key);
            };
            if (write.flag == MDX_UPDATE)
                status = m_backend.selectWhere(m_table, {link}, 0, write.key, compare);
            if (!status.ok())
                return status;
            if (!isNew)
                continue;
            const std::string name = nameIn(resources, change.before);
            return {Refused, StdText::tr("Ресурс ") + shown(name.empty() ? change.key : name) +
                                 StdText::tr(" тем временем удалён ") + byWhom(change) +
                                 StdText::tr("; выберите другой")};
        }
    return status;
}

Status GuardedUpdate::checkIcons(const UpdateGuard& guard) {
    const int icon = m_table.find(field::ico);
    const TableDef& resources = *findTable(table::MenuResource);
    if (guard.seen < 0 || icon < 0)
        return {};
    const auto chosenBy = [&](const Write& write) {
        const Value* value = write.flag == MDX_DELETE ? nullptr : valueOf(write, icon);
        return value != nullptr ? textOf(*value) : std::string();
    };
    std::set<std::string> chosen;
    for (const Write& write : m_writes)
        if (std::string name = chosenBy(write); !name.empty())
            chosen.insert(std::move(name));
    int64_t newest = 0;
    bool changed = false; // usually nobody has written since
    Status status;
    if (!chosen.empty())
        status = m_backend.changedSince(resources, guard.seen, &newest, &changed);
    std::map<std::string, Change> gone;
    if (status.ok() && changed)
        status = findGoneIcons(guard.seen, std::move(chosen), &gone);
    for (const Write& write : m_writes) {
        const auto found = gone.find(chosenBy(write));
        if (!status.ok() || found == gone.end())
            continue;
        bool isNew = true; // what named it before is its writer's to change
        const auto compare = [&](const StoreBackend::Row& row) {
            isNew = textOf(row.front()) != found->first;
        };
        if (write.flag == MDX_UPDATE)
            status = m_backend.selectWhere(m_table, {icon}, 0, write.key, compare);
        if (status.ok() && isNew)
            return {Refused,
                    StdText::tr("Иконки ") + shown(found->first) +
                        StdText::tr(" больше нет: тем временем её файл ") +
                        (found->second.code == OrvoEventDelete ? StdText::tr("удалён ")
                                                               : StdText::tr("переименован ")) +
                        byWhom(found->second) + StdText::tr("; выберите другую")};
    }
    return status;
}

/// Of these names those that no icon has, but that one had after `seen`, with the change that took
/// it away.
Status GuardedUpdate::findGoneIcons(int64_t seen, std::set<std::string> names,
                                    std::map<std::string, Change>* gone) {
    const TableDef& resources = *findTable(table::MenuResource);
    const TableDef& folders = *findTable(table::MenuResourceFolder);
    Status status;
    for (auto name = names.begin(); name != names.end() && status.ok();) {
        std::vector<Value> places;
        if (const auto folded = foldedName(*name))
            status = m_backend.selectStored(Kind::File, *folded, std::nullopt,
                                            [&](const StoreBackend::Row& row) {
                                                if (textOf(row[2]) == *name)
                                                    places.push_back(row[1]);
                                            });
        bool isStored = false;
        for (const Value& place : places)
            if (status.ok())
                status = m_backend.selectWhere(
                    folders, {folders.find(field::caption), folders.find(field::ParentKey)}, 0,
                    place, [&](const StoreBackend::Row& row) {
                        isStored = isStored || (textOf(row[1]).empty() &&
                                                foldedName(textOf(row[0])) == iconFolder);
                    });
        name = isStored ? names.erase(name) : std::next(name);
    }
    if (!status.ok() || names.empty())
        return status;
    ChangeQuery query;
    query.table = resources.name;
    query.above = seen;
    query.limit = std::numeric_limits<int>::max();
    std::vector<Change> changes;
    status = m_backend.selectChanges(query, &changes);
    for (Change& change : changes) {
        const FieldValues before = valuesFromJson(resources, change.before);
        const auto name = before.find(resources.find(field::name_));
        if (change.code != OrvoEventInsert && name != before.end() &&
            names.count(textOf(name->second)) != 0)
            gone->emplace(textOf(name->second), std::move(change));
    }
    return status;
}

Status GuardedUpdate::checkChildren(const UpdateGuard& guard) {
    constexpr size_t fewKeys = 50; // more are cheaper to find in one pass over the table
    std::set<std::string> deleted;
    for (const Write& write : m_writes)
        if (write.flag == MDX_DELETE && isKey(write.key))
            deleted.insert(foldedKey(write.key));
    if (deleted.empty() || guard.seen < 0)
        return {};
    for (const ParentField& link : childFields(m_table)) {
        const TableDef& below = *findTable(link.table);
        const int field = below.find(link.field);
        int64_t newest = 0;
        bool changed = false;
        Status status = m_backend.changedSince(below, guard.seen, &newest, &changed);
        if (status.ok() && !changed)
            continue;
        std::set<std::string> children;
        const auto take = [&](const StoreBackend::Row& row) {
            const std::string key = foldedKey(textOf(row[0]));
            if (deleted.count(foldedKey(textOf(row[1]))) != 0 &&
                (&below != &m_table || deleted.count(key) == 0))
                children.insert(key);
        };
        if (status.ok() && deleted.size() > fewKeys)
            status = m_backend.select(below, {0, field}, take);
        else
            for (const Write& write : m_writes)
                if (status.ok() && write.flag == MDX_DELETE)
                    status = m_backend.selectWhere(below, {0, field}, field, write.key, take);
        std::vector<Change> changes;
        if (status.ok() && !children.empty())
            status = m_backend.changesOf(below, listOf(children), guard.seen, &changes);
        if (!status.ok())
            return status;
        for (const Change& change : changes) {
            const FieldValues after = valuesFromJson(below, change.after);
            if (isOwnChange(guard, change.id) || after.find(field) == after.end())
                continue;
            const std::string name = nameIn(below, change.after);
            const std::string who = change.login.empty()
                                        ? StdText::tr("другой")
                                        : StdText::tr("пользователь ") + shown(change.login);
            return {Refused, StdText::tr("Не удалено: ") + who +
                                 StdText::tr(" тем временем поместил внутрь ") +
                                 shown(name.empty() ? change.key : name) +
                                 StdText::tr("; посмотрите и удалите ещё раз")};
        }
    }
    return {};
}

Status GuardedUpdate::refuseCycles() {
    if (!LinkCycles::concern(m_table))
        return {};
    LinkCycles cycles(m_table);
    for (const Write& write : m_writes)
        cycles.add(write);
    return cycles.check([&](const std::string& key, std::string* parent) {
        parent->clear();
        const auto take = [&](const StoreBackend::Row& row) { *parent = textOf(row[0]); };
        return m_backend.selectWhere(m_table, {cycles.field()}, 0, key, take);
    });
}

Status GuardedUpdate::lastDeletion(const TableDef& table, const std::string& key,
                                   std::optional<Change>* deletion) {
    std::vector<Change> changes;
    const Status status = m_backend.changesOf(table, {foldedKey(key)}, 0, &changes);
    for (auto change = changes.rbegin(); change != changes.rend(); ++change)
        if (change->code == OrvoEventDelete) {
            *deletion = std::move(*change);
            break;
        }
    return status;
}

} // namespace orvo::store
