#include "history/Overtaken.h"

#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/RecordWords.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/Merge.h"
#include "platform/store/NamePlaces.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace orvo::history {

namespace {

using Keys = std::map<const store::TableDef*, std::vector<std::string>>;

/// The records below which the writes place theirs.
Keys keysAbove(const std::vector<store::TableWrites>& parts) {
    Keys keys;
    for (const store::TableWrites& part : parts)
        for (const store::ParentField& above : linksAbove(*part.table)) {
            const int field = part.table->find(above.field);
            std::vector<std::string>& found = keys[store::findTable(above.table)];
            for (const store::Write& write : part.writes)
                for (const auto& [number, value] : write.values)
                    if (number == field && !store::textOf(value).empty() &&
                        (found.empty() || found.back() != store::textOf(value)))
                        found.push_back(store::textOf(value));
        }
    return keys;
}

/// The records that stand below those that the writes delete.
Keys keysBelow(store::MaintainedStore& store, const std::vector<store::TableWrites>& parts) {
    Keys keys;
    for (const store::TableWrites& part : parts) {
        std::vector<std::string> deleted;
        for (const store::Write& write : part.writes)
            if (write.flag == MDX_DELETE)
                deleted.push_back(write.key);
        for (const store::ParentField& link : store::childFields(*part.table)) {
            const store::TableDef* below = store::findTable(link.table);
            std::vector<std::pair<std::string, std::string>> found;
            if (!deleted.empty() &&
                store.keysNaming(*below, below->find(link.field), deleted, &found).ok())
                for (auto& [key, named] : found)
                    keys[below].push_back(std::move(key));
        }
    }
    return keys;
}

QString words(const store::TableDef& table, const store::Change& change, RecordSource& source,
              const PersonNames& names) {
    return Text::tr("%1: тем временем %2 (%3)")
        .arg(recordWords(table, source.valuesOf(table, change.key), change.key),
             change.code == OrvoEventDelete   ? Text::tr("удалено")
             : change.code == OrvoEventInsert ? Text::tr("создано")
                                              : Text::tr("изменено"),
             whoAndWhen(change.login, change.time, names));
}

/// Who has taken a name since that one of the writes gives.
QString nameTaken(store::MaintainedStore& store, const store::TableWrites& part, int64_t seen,
                  RecordSource& source, const PersonNames& people) {
    if (!store::NamePlaces::concern(*part.table))
        return {};
    const store::NamePlaces places(*part.table);
    std::vector<std::string> written;
    for (const store::Write& write : part.writes)
        written.push_back(write.key);
    std::map<std::string, std::vector<store::Value>> stored;
    if (!store.storedValues(*part.table, written, &stored).ok())
        return {};
    std::set<std::string> own, wanted;
    for (const store::Write& write : part.writes) {
        own.insert(store::foldedKey(write.key));
        if (write.flag == MDX_DELETE)
            continue;
        Values values;
        if (const auto row = stored.find(store::foldedKey(write.key)); row != stored.end())
            for (size_t i = 0; i < row->second.size(); ++i)
                values[static_cast<int>(i)] = row->second[i];
        for (const auto& [field, value] : write.values)
            values[field] = value;
        wanted.insert(places.placeOf(values));
    }
    std::vector<std::string> holders;
    std::vector<store::Change> since;
    if (!store
             .namePlaces(*part.table,
                         [&](const std::string& key, const std::string& place) {
                             if (wanted.count(place) != 0 && own.count(key) == 0)
                                 holders.push_back(key);
                         })
             .ok() ||
        !store.changesSince(*part.table, holders, seen, &since).ok() || since.empty())
        return {};
    const store::Change& change = since.back();
    return Text::tr("%1: имя тем временем занято (%2)")
        .arg(recordWords(*part.table, source.valuesOf(*part.table, change.key), change.key),
             whoAndWhen(change.login, change.time, people));
}

QString overtaken(store::MaintainedStore& store, const std::vector<store::TableWrites>& parts,
                  int64_t seen, const PersonNames& names) {
    LoggedRecords source(store);
    std::vector<store::Change> since;
    for (const store::TableWrites& part : parts) {
        std::vector<std::string> keys;
        for (const store::Write& write : part.writes)
            keys.push_back(write.key);
        since.clear();
        if (store.changesSince(*part.table, keys, seen, &since).ok() && !since.empty())
            return words(*part.table, since.back(), source, names);
    }
    for (const auto& [table, keys] : keysAbove(parts)) {
        since.clear();
        if (!store.changesSince(*table, keys, seen, &since).ok())
            continue;
        const auto deletion =
            std::find_if(since.rbegin(), since.rend(), [](const store::Change& change) {
                return change.code == OrvoEventDelete;
            });
        if (deletion != since.rend())
            return words(*table, *deletion, source, names);
    }
    for (const auto& [table, keys] : keysBelow(store, parts)) {
        since.clear();
        if (store.changesSince(*table, keys, seen, &since).ok() && !since.empty())
            return words(*table, since.back(), source, names);
    }
    for (const store::TableWrites& part : parts)
        if (QString text = nameTaken(store, part, seen, source, names); !text.isEmpty())
            return text;
    store::LogQuery query;
    query.undoing = true;
    query.above = seen;
    since.clear();
    if (store.history(query, 1, &since).ok() && !since.empty())
        return Text::tr("тем временем отменили другую правку (%1)")
            .arg(whoAndWhen(since.front().login, since.front().time, names));
    return {};
}

} // namespace

store::Status tellWhoOvertook(store::MaintainedStore& store,
                              const std::vector<store::TableWrites>& parts, int64_t seen,
                              const PersonNames& names, const store::Status& status) {
    if (status.code != store::Outdated)
        return status;
    const QString text = overtaken(store, parts, seen, names);
    return text.isEmpty() ? status : store::Status{status.code, text.toStdString()};
}

store::Status tellWhoOvertook(store::MaintainedStore& store,
                              const std::vector<store::TableWrites>& parts, int64_t seen,
                              const store::Status& status) {
    PersonNames names;
    if (status.code == store::Outdated && !readPeople(store, &names).ok())
        names.clear(); // the logins serve
    return tellWhoOvertook(store, parts, seen, names, status);
}

} // namespace orvo::history
