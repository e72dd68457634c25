// Reading and writing records of several tables by their keys, for whoever takes changes back.
#include "frame/StdText.h"
#include "platform/store/GuardedUpdate.h"
#include "platform/store/NamePlaces.h"
#include "platform/store/Names.h"
#include "platform/store/Sql.h"
#include "platform/store/StoreCore.h"
#include "platform/store/TakenNames.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <numeric>
#include <set>

namespace orvo::store {

namespace {

/// Changed only in a log that was pruned.
const TableDef noTable{"", {}};

/// Keys without regard to case, each once.
std::vector<std::string> foldedKeys(const std::vector<std::string>& keys) {
    std::set<std::string> folded;
    for (const std::string& key : keys)
        if (isKey(key))
            folded.insert(foldedKey(key));
    return {folded.begin(), folded.end()};
}

} // namespace

Status StoreBackend::gapSince(int64_t since, Gap* gap) {
    int64_t newest = 0;
    bool pruned = false;
    Status status = changedSince(noTable, since, &newest, &pruned);
    *gap = !pruned ? Gap::None : newest < since ? Gap::Replaced : Gap::Shortened;
    if (!status.ok() || *gap != Gap::Shortened)
        return status;
    // A restore takes all numbers back as well, but leaves the rows that it brings.
    ChangeQuery oldest;
    oldest.oldestFirst = true;
    std::vector<Change> rows;
    status = selectChanges(oldest, &rows);
    if (!rows.empty() && rows.front().id <= since)
        *gap = Gap::Replaced;
    return status;
}

std::string StoreBackend::gapWords(Gap gap) {
    return gap == Gap::Shortened ? StdText::tr("Журнал изменений тем временем сокращён")
                                 : StdText::tr("Журнал изменений тем временем заменён (хранилище "
                                               "восстановлено из копии или создано заново)");
}

Status StoreBackend::storedKeys(const TableDef& table, const std::vector<std::string>& keys,
                                std::set<std::string>* stored) {
    return selectKeys(table, {0}, keys,
                      [&](const Row& row) { stored->insert(foldedKey(textOf(row.front()))); });
}

Status StoreBackend::applyAll(const TableDef& table, const std::vector<Write>& writes) {
    Status status;
    for (const Write& write : writes)
        if (status.ok())
            status = apply(table, write);
    return status;
}

Status StoreCore::changesSince(const TableDef& table, const std::vector<std::string>& keys,
                               int64_t since, std::vector<Change>* changes) {
    return guarded([&]() -> Status {
        const std::vector<std::string> folded = foldedKeys(keys);
        std::vector<Change> found;
        const Status status = folded.empty()
                                  ? Status()
                                  : inRead([&] { return changesOf(table, folded, since, &found); });
        if (status.ok())
            changes->swap(found);
        return status;
    });
}

Status StoreCore::storedValues(const TableDef& table, const std::vector<std::string>& keys,
                               std::map<std::string, std::vector<Value>>* values) {
    return guarded([&]() -> Status {
        const std::vector<std::string> folded = foldedKeys(keys);
        std::vector<int> fields(table.fields.size());
        std::iota(fields.begin(), fields.end(), 0);
        if (folded.empty())
            return {};
        return inRead([&] {
            return selectKeys(table, fields, folded, [&](const Row& row) {
                values->insert_or_assign(foldedKey(textOf(row.front())), row);
            });
        });
    });
}

Status StoreCore::keysNaming(const TableDef& table, int field, const std::vector<std::string>& keys,
                             std::vector<std::pair<std::string, std::string>>* found) {
    return guarded([&]() -> Status {
        if (field < 0 || static_cast<size_t>(field) >= table.fields.size())
            return {UnknownName, inTable(table) + StdText::tr(": нет такого поля")};
        std::vector<std::string> wanted;
        if (isKeyOrLink(table, table.fields[static_cast<size_t>(field)]))
            wanted = foldedKeys(keys);
        else
            std::copy_if(keys.begin(), keys.end(), std::back_inserter(wanted),
                         [](const std::string& key) { return isKey(key); });
        constexpr size_t most = 5000; // a statement
        return inRead([&]() -> Status {
            Status status;
            for (size_t i = 0; i < wanted.size() && status.ok(); i += most)
                status = selectNaming(
                    table, field,
                    {wanted.begin() + static_cast<ptrdiff_t>(i),
                     wanted.begin() + static_cast<ptrdiff_t>(std::min(i + most, wanted.size()))},
                    [&](const Row& row) { found->emplace_back(textOf(row[0]), textOf(row[1])); });
            return status;
        });
    });
}

Status StoreCore::namePlaces(
    const TableDef& table,
    const std::function<void(const std::string& key, const std::string& place)>& each) {
    return guarded([&]() -> Status {
        const NamePlaces places(table);
        return inRead([&] {
            return select(table, {0, places.name(), places.folder(), places.kind()},
                          [&](const Row& row) {
                              const std::string place = places.placeOf(row[1], row[2], row[3]);
                              if (!place.empty())
                                  each(foldedKey(textOf(row[0])), place);
                          });
        });
    });
}

Status StoreCore::checkUnchanged(const TableWrites& part, int64_t seen) {
    int64_t newest = 0;
    bool changed = false; // usually nobody has written since
    Status status = changedSince(*part.table, seen, &newest, &changed);
    if (!status.ok() || !changed)
        return status;
    std::vector<std::string> keys;
    for (const Write& write : part.writes)
        keys.push_back(write.key);
    std::vector<Change> since;
    status = changesOf(*part.table, foldedKeys(keys), seen, &since);
    if (status.ok() && since.empty()) {
        Gap gap = Gap::None;
        status = gapSince(seen, &gap);
        if (status.ok() && gap != Gap::None)
            return {Outdated, gapWords(gap)};
    }
    if (!status.ok() || since.empty())
        return status;
    const Change& last = since.back();
    return {Outdated, inTable(*part.table) + StdText::tr(", запись ") + shown(last.key) +
                          StdText::tr(": её тем временем изменили (") +
                          (last.login.empty() ? StdText::tr("вручную") : shown(last.login)) + ")"};
}

Status StoreCore::checkUndoing(int64_t seen) {
    ChangeQuery query;
    query.undoing = true;
    query.above = seen;
    std::vector<Change> since;
    const Status status = selectChanges(query, &since);
    if (!status.ok() || since.empty())
        return status;
    const std::string& who = since.front().login;
    return {Outdated, StdText::tr("Тем временем отменили другую правку (") +
                          (who.empty() ? StdText::tr("вручную") : shown(who)) + ")"};
}

Status StoreCore::findVersions(const TableWrites& part, std::vector<KeptVersion>* versions) {
    if (part.bytes.empty())
        return {};
    if (part.table != &contentTable() || part.bytes.size() != part.writes.size())
        return {BadArguments, StdText::tr("Не у каждой записи содержимого его байты")};
    versions->resize(part.bytes.size());
    for (size_t i = 0; i < part.bytes.size(); ++i) {
        if (part.bytes[i].version == 0)
            continue;
        KeptVersion& version = versions->at(i);
        const Status status = inRead([&]() -> Status {
            const Status found = findVersion(part.bytes[i].version, &version);
            return found.ok() && version.sha256.empty()
                       ? readVersion(version, nullptr, &version.sha256)
                       : found;
        });
        if (!status.ok())
            return status;
    }
    return {};
}

Status StoreCore::writeContents(const TableWrites& part, const std::vector<KeptVersion>& versions) {
    for (size_t i = 0; i < part.writes.size(); ++i) {
        const Write& write = part.writes[i];
        const BytesToWrite none;
        const BytesToWrite& bytes = part.bytes.empty() ? none : part.bytes[i];
        const Status status = bytes.version != 0 ? applyVersion(write, versions[i])
                              : bytes.bytes      ? applyContent(write, *bytes.bytes)
                                                 : apply(*part.table, write);
        if (!status.ok())
            return status;
    }
    return {};
}

Status StoreCore::writeAll(const std::vector<TableWrites>& parts, int64_t seen,
                           const std::vector<int64_t>& undoes) {
    return guarded([&]() -> Status {
        struct RestoreOrigin {
            Origin& origin;
            const int64_t group = origin.group;
            ~RestoreOrigin() {
                origin.group = group;
                origin.undoes.clear();
            }
        } const restore{m_origin};
        m_origin.group = 0;
        m_origin.undoes = undoes;
        std::map<const TableWrites*, std::vector<KeptVersion>> versions;
        for (const TableWrites& part : parts)
            if (const Status found = findVersions(part, &versions[&part]); !found.ok())
                return found;
        return inWrite([&]() -> Status {
            int64_t newest = 0;
            bool changed = false;
            Status status = changedSince(noTable, seen, &newest, &changed);
            for (const TableWrites& part : parts)
                if (status.ok())
                    status = checkUnchanged(part, seen);
            if (status.ok() && !undoes.empty())
                status = checkUndoing(seen);
            for (const TableWrites& part : parts) {
                UpdateGuard guard;
                guard.seen = seen;
                guard.own = {{newest + 1, std::numeric_limits<int64_t>::max()}};
                if (status.ok() && NamePlaces::concern(*part.table) &&
                    !NamePlaces::letRename(*part.table)) // those every update looks at
                    status = TakenNames(*this, *part.table, guard).check(part.writes);
                if (status.ok() && part.table != &contentTable())
                    status = GuardedUpdate(*this, *part.table, part.writes).apply(&guard);
                else if (status.ok())
                    status = writeContents(part, versions.at(&part));
            }
            if ((status.code == Refused || status.code == ParentDeleted) && newest > seen)
                status.code = Outdated; // what others have done since may be why
            return status;
        });
    });
}

} // namespace orvo::store
