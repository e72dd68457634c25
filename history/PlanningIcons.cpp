// What an inverse does about icons: files that records name by their names alone.
#include "history/Planning.h"

#include "frame/Kinds.h"
#include "frame/Vocabulary.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <climits>
#include <utility>

namespace orvo::history {

namespace {

bool isIconFolder(const store::TableDef& folders, const Values& values) {
    const auto caption = values.find(folders.find(field::caption));
    const auto parent = values.find(folders.find(field::ParentKey));
    return caption != values.end() && parent != values.end() &&
           store::textOf(parent->second).empty() &&
           store::foldedName(store::textOf(caption->second)) == iconFolder;
}

} // namespace

store::Status Planning::withoutIcon(std::set<std::string>* names) {
    const store::TableDef& files = *store::findTable(table::MenuResource);
    const store::TableDef& folders = *store::findTable(table::MenuResourceFolder);
    const int name = files.find(field::name_);
    std::vector<std::pair<std::string, std::string>> named;
    store::Status status = m_store.keysNaming(files, name, {names->begin(), names->end()}, &named);
    std::set<std::string> keys, above;
    for (const auto& [key, text] : named)
        keys.insert(store::foldedKey(key));
    for (const auto& [key, record] : m_records[&files])
        if (record.flag != 0)
            keys.insert(key);
    if (status.ok())
        status = m_store.storedValues(files, {keys.begin(), keys.end()}, &m_above[&files]);
    std::vector<std::pair<std::string, std::string>> found; // name and folded key of the folder
    for (const std::string& key : keys) {
        const Record* const record = planned(files, key);
        const Values values = valuesThen(files, key);
        const auto text = values.find(name);
        const auto kind = values.find(files.find(field::type_));
        const auto folder = values.find(files.find(field::MenuResourceFolderKey));
        if ((record && record->flag == MDX_DELETE) || text == values.end() ||
            names->count(store::textOf(text->second)) == 0 || kind == values.end() ||
            !(kind->second == store::Value(int64_t(Kind::File))) || folder == values.end())
            continue;
        found.emplace_back(store::textOf(text->second),
                           store::foldedKey(store::textOf(folder->second)));
        above.insert(found.back().second);
    }
    if (status.ok())
        status = m_store.storedValues(folders, {above.begin(), above.end()}, &m_above[&folders]);
    for (const auto& [text, key] : found)
        if (isIconFolder(folders, valuesThen(folders, key)))
            names->erase(text);
    return status;
}

store::Status Planning::keepUsedIcons(bool* changed) {
    const store::TableDef& files = *store::findTable(table::MenuResource);
    const store::TableDef& folders = *store::findTable(table::MenuResourceFolder);
    std::map<std::string, std::vector<Record*>> going; // by name
    std::set<std::string> names;
    store::Status status;
    for (auto& [key, file] : m_records[&files]) {
        if (file.flag != MDX_DELETE ||
            !(file.now[files.find(field::type_)] == store::Value(int64_t(Kind::File))))
            continue;
        const std::string folder =
            store::foldedKey(store::textOf(file.now[files.find(field::MenuResourceFolderKey)]));
        if (status.ok())
            status = m_store.storedValues(folders, {folder}, &m_above[&folders]);
        if (!isIconFolder(folders, valuesThen(folders, folder)))
            continue;
        const std::string name = store::textOf(file.now[files.find(field::name_)]);
        names.insert(name);
        going[name].push_back(&file);
    }
    if (status.ok() && !names.empty())
        status = withoutIcon(&names);
    if (!status.ok() || names.empty())
        return status;
    for (const store::TableDef& table : store::tables()) {
        const int ico = table.find(field::ico);
        std::vector<std::pair<std::string, std::string>> bearers; // with the name
        std::vector<store::Change> changes;
        std::vector<std::string> keys;
        if (ico >= 0 && status.ok())
            status = m_store.keysNaming(table, ico, {names.begin(), names.end()}, &bearers);
        for (const auto& [key, name] : bearers)
            if (const Record* bearer = planned(table, store::foldedKey(key));
                !bearer || (bearer->flag != MDX_DELETE && bearer->values.count(ico) == 0))
                keys.push_back(key);
        if (status.ok() && !keys.empty())
            status = m_store.changesSince(table, keys, m_standing.begin() - 1, &changes);
        std::map<std::string, const store::Change*> naming; // else it waited for the icon
        for (const store::Change& change : changes)
            if (const Values after = store::valuesFromJson(table, change.after);
                m_concerned.count(change.group) == 0 && after.count(ico) != 0)
                naming[store::textOf(after.find(ico)->second)] = &change;
        for (const auto& [key, record] : m_records[&table]) // what comes back with it
            if (const auto name = record.values.find(ico);
                ico >= 0 && (record.flag == MDX_INSERT || record.flag == MDX_UPDATE) &&
                name != record.values.end() && !record.events.empty())
                naming[store::textOf(name->second)] = record.events.back().change;
        for (const auto& [name, change] : naming)
            for (Record* file : going[name]) {
                if (names.count(name) == 0 || file->flag == 0)
                    continue;
                remark(m_choices.othersWorkToo ? Remark::StillNamed : Remark::BuiltOn, files, *file,
                       -1, change);
                m_inverse.remarks.back().missing = change->key;
                m_inverse.remarks.back().namedBy = &table;
                file->flag = 0;
                m_kept.insert(file);
                *changed = true;
            }
    }
    return status;
}

store::Status Planning::keepIcons() {
    if (m_alone && m_kept.empty() && m_unplaced.empty() && m_inverse.undoes.size() < 2)
        return {}; // of several one may take the name away that another brings back
    struct Wanted {
        const store::TableDef* table;
        Record* record;
        int field;
    };
    std::map<std::string, std::vector<Wanted>> wanted; // by name
    std::set<std::string> names;
    for (auto& [table, records] : m_records)
        if (const int field = table->find(field::ico); field >= 0)
            for (auto& [key, record] : records)
                if (record.flag == MDX_INSERT || record.flag == MDX_UPDATE)
                    if (const auto name = record.values.find(field);
                        name != record.values.end() && !store::textOf(name->second).empty())
                        wanted[store::textOf(name->second)].push_back({table, &record, field});
    for (const auto& [name, records] : wanted)
        names.insert(name);
    store::Status status;
    if (!names.empty())
        status = withoutIcon(&names);
    if (!status.ok() || names.empty())
        return status;
    const store::TableDef& files = *store::findTable(table::MenuResource);
    store::LogQuery query;
    query.table = files.name;
    query.above = m_standing.begin() - 1;
    query.oldestFirst = true;
    std::vector<store::Change> changes;
    status = m_store.history(query, INT_MAX, &changes);
    std::map<std::string, const store::Change*> taking; // else it was missing before
    for (const store::Change& change : changes) {
        if (change.code == OrvoEventInsert || m_concerned.count(change.group) != 0)
            continue;
        const Values before = store::valuesFromJson(files, change.before);
        if (const auto name = before.find(files.find(field::name_));
            name != before.end() && names.count(store::textOf(name->second)) != 0)
            taking[store::textOf(name->second)] = &change;
    }
    for (const auto& [key, file] : m_records[&files]) // or goes back to another name itself
        if (const auto name = file.now.find(files.find(field::name_));
            file.flag == MDX_UPDATE && name != file.now.end() && !file.events.empty() &&
            names.count(store::textOf(name->second)) != 0)
            taking[store::textOf(name->second)] = file.events.back().change;
    for (const auto& [name, change] : taking)
        for (const Wanted& one : wanted[name]) {
            const bool isStored = one.record->flag == MDX_UPDATE;
            remark(Remark::NoIcon, *one.table, *one.record, isStored ? one.field : -1, change);
            m_inverse.remarks.back().missing = name;
            if (!isStored)
                continue;
            one.record->values.erase(one.field);
            if (one.record->values.empty())
                one.record->flag = 0;
        }
    return status;
}

} // namespace orvo::history
