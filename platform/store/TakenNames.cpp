#include "platform/store/TakenNames.h"

#include "frame/StdText.h"
#include "frame/Vocabulary.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <cstring>

namespace orvo::store {

TakenNames::TakenNames(StoreBackend& backend, const TableDef& table, const UpdateGuard& guard)
    : m_backend(backend)
    , m_table(table)
    , m_guard(guard)
    , m_places(table) {}

Status TakenNames::check(const std::vector<Write>& writes) {
    int64_t newest = 0;
    bool changed = false; // usually nobody has written since
    Status status = m_backend.changedSince(m_table, m_guard.seen, &newest, &changed);
    if (!status.ok() || !changed)
        return status;
    status = readStored(writes);
    if (!status.ok())
        return status;
    for (const Write& write : writes) {
        if (!isKey(write.key))
            continue;
        const std::string key = foldedKey(write.key);
        const auto stored = m_stored.find(key);
        if (write.flag == MDX_DELETE) {
            m_goesTo[key].clear();
            continue;
        }
        if (write.flag == MDX_UPDATE && stored == m_stored.end())
            continue; // gone: it is reported
        const Named wanted = after(write);
        const std::string place = placeOf(wanted);
        m_goesTo[key] = place;
        if (textOf(wanted.name).empty() ||
            (stored != m_stored.end() && placeOf(stored->second) == place))
            continue;
        m_wanted.insert_or_assign(place, Wanted{key, textOf(wanted.name)});
    }
    status = m_wanted.empty() ? status : findNamesakes();
    return status.ok() && !m_holders.empty() ? refuseTaken() : status;
}

Status TakenNames::readStored(const std::vector<Write>& writes) {
    std::vector<std::string> keys;
    for (const Write& write : writes)
        if (write.flag == MDX_UPDATE && isKey(write.key))
            keys.push_back(foldedKey(write.key));
    if (keys.empty())
        return {};
    return m_backend.selectKeys(
        m_table, {0, m_places.name(), m_places.folder(), m_places.kind()}, keys,
        [&](const StoreBackend::Row& row) {
            m_stored.insert_or_assign(foldedKey(textOf(row[0])), Named{row[1], row[2], row[3]});
        });
}

TakenNames::Named TakenNames::after(const Write& write) const {
    Named named;
    if (const auto stored = m_stored.find(foldedKey(write.key)); stored != m_stored.end())
        named = stored->second;
    for (const auto& [number, value] : write.values) {
        if (number == m_places.name())
            named.name = value;
        else if (number == m_places.folder())
            named.folder = value;
        else if (number == m_places.kind())
            named.type = value;
    }
    return named;
}

/// A look at all records costs less than it sounds, and only a new name after another's change asks
/// for it.
Status TakenNames::findNamesakes() {
    return m_backend.select(m_table, {0, m_places.name(), m_places.folder(), m_places.kind()},
                            [&](const StoreBackend::Row& row) {
                                const std::string key = foldedKey(textOf(row[0]));
                                const std::string place = placeOf({row[1], row[2], row[3]});
                                const auto goesTo = m_goesTo.find(key);
                                if (goesTo != m_goesTo.end() && goesTo->second != place)
                                    return; // it gives the name up
                                const auto wanted = m_wanted.find(place);
                                if (wanted != m_wanted.end() && wanted->second.key != key)
                                    m_holders.emplace(key, wanted->second.name);
                            });
}

Status TakenNames::refuseTaken() {
    std::vector<std::string> keys;
    for (const auto& [key, name] : m_holders)
        keys.push_back(key);
    std::vector<Change> changes;
    Status status = m_backend.changesOf(m_table, keys, m_guard.seen, &changes);
    if (!status.ok())
        return status;
    for (const Change& change : changes) {
        const FieldValues values = valuesFromJson(m_table, change.after);
        if (isOwnChange(m_guard, change.id) ||
            (values.count(m_places.name()) == 0 && values.count(m_places.folder()) == 0))
            continue;
        const std::string who = change.login.empty()
                                    ? StdText::tr("другой")
                                    : StdText::tr("пользователь ") + shown(change.login);
        return {Refused, StdText::tr("Имя ") + shown(m_holders[foldedKey(change.key)]) +
                             StdText::tr(" тем временем занял ") + who +
                             (std::strcmp(m_table.name, table::MenuResourceFolder) == 0
                                  ? StdText::tr(": такая папка здесь уже есть")
                                  : StdText::tr(": такой ресурс уже есть"))};
    }
    return {};
}

} // namespace orvo::store
