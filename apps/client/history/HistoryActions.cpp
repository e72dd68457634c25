#include "apps/client/history/HistoryActions.h"

#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/GroupWords.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <string>
#include <utility>

namespace orvo::app {

namespace {

std::string textIn(const store::TableDef& table, const history::Values& values, const char* field) {
    return history::textAt(values, table.find(field));
}

HistoryRecord recordOf(const store::Change& change, history::RecordSource& source) {
    const store::TableDef* table = history::tableOf(change.table);
    if (!table)
        return {};
    if (change.table == table::MenuResourceFile) { // the form or file that it belongs to
        std::string owner;
        for (const std::string* values : {&change.after, &change.before})
            if (owner.empty())
                owner =
                    textIn(*table, store::valuesFromJson(*table, *values), field::MenuResourceKey);
        if (owner.empty())
            owner = textIn(*table, source.valuesOf(*table, change.key), field::MenuResourceKey);
        return owner.empty() ? HistoryRecord() : HistoryRecord{table::MenuResource, owner, {}};
    }
    HistoryRecord record{change.table, change.key, {}};
    if (change.table == table::MenuFolder)
        record.desktop = change.key;
    if (change.table == table::Menu) {
        for (const std::string* values : {&change.after, &change.before})
            if (record.desktop.empty())
                record.desktop =
                    textIn(*table, store::valuesFromJson(*table, *values), field::FolderKey);
        if (record.desktop.empty())
            record.desktop = textIn(*table, source.valuesOf(*table, change.key), field::FolderKey);
    }
    return record;
}

/// The record that the action is shown for: the one that the filter names, one in its branch, or
/// the first of those that its line is about.
HistoryRecord recordOf(const history::Group& group, const history::GroupWords& words,
                       const HistoryScope& scope, history::RecordSource& source) {
    const history::Filter& filter = scope.filter;
    store::Change named; // whatever it did to that record
    if (!filter.key.empty() && history::tableOf(filter.table)) {
        named.table = filter.table;
        named.key = filter.key;
        return recordOf(named, source); // each action that passes has to do with it
    }
    const bool isNamed = !filter.branch && !words.first.second.empty();
    HistoryRecord first, inside;
    for (const store::Change& change : group.changes) {
        if (isNamed && words.first != std::pair{change.table, change.key})
            continue;
        HistoryRecord record = recordOf(change, source);
        if (record.key.empty())
            continue;
        if (!filter.branch)
            return record;
        const std::string key = store::foldedKey(record.key);
        if (record.table == filter.branch->table->name &&
            key == store::foldedKey(filter.branch->key))
            return record;
        if (inside.key.empty() && scope.members && scope.members->count({record.table, key}) != 0)
            inside = record;
        if (first.key.empty())
            first = std::move(record);
    }
    return inside.key.empty() ? first : inside;
}

std::vector<HistoryAction::Detail> fieldsOf(const history::ChangeWords& words) {
    std::vector<HistoryAction::Detail> fields;
    for (const history::FieldWords& field : words.fields)
        fields.push_back({field.name, field.before, field.after, {}, {}});
    return fields;
}

} // namespace

HistoryAction actionOf(const history::Group& group, const HistoryScope& scope,
                       history::RecordSource& source) {
    HistoryAction action;
    action.group = group.id;
    action.newest = group.newest;
    action.isCounted = group.isCounted();
    action.time = group.time;
    action.login = group.login;
    action.who = group.login.empty() ? Text::tr("(вручную)") : QString::fromStdString(group.login);
    action.machine = QString::fromStdString(group.place);
    if (!group.client.empty())
        action.machine += (action.machine.isEmpty() ? QString() : QStringLiteral(", ")) +
                          QString::fromStdString(group.client);
    const history::GroupWords words = history::describe(group, source);
    action.what = words.what;
    action.place = words.place;
    action.record = recordOf(group, words, scope, source);
    if (group.changes.size() == 1 && group.changes.front().code == OrvoEventUpdate) {
        const auto fields = history::describe(group.changes.front(), source).fields;
        if (fields.size() == 1) {
            action.before = fields.front().before;
            action.after = fields.front().after;
        }
    }
    return action;
}

HistoryAction forgottenAction(int64_t group) {
    HistoryAction action;
    action.group = action.newest = group;
    action.what = Text::tr("Журнал изменений этого уже не помнит");
    action.forgotten = true;
    return action;
}

std::vector<HistoryAction::Detail> detailsOf(const history::Group& group,
                                             history::RecordSource& source) {
    if (group.changes.empty())
        return {{Text::tr("Журнал изменений этого действия уже не помнит"), {}, {}, {}, {}}};
    if (group.changes.size() == 1) {
        auto fields = fieldsOf(history::describe(group.changes.front(), source));
        if (fields.empty())
            fields.push_back({Text::tr("Значения не изменились"), {}, {}, {}, {}});
        return fields;
    }
    std::vector<HistoryAction::Detail> details;
    for (const store::Change& change : group.changes) {
        const history::ChangeWords words = history::describe(change, source);
        details.push_back({words.what, {}, {}, recordOf(change, source), fieldsOf(words)});
    }
    if (!group.whole)
        details.push_back(
            {Text::tr("… и другие: показаны первые %1").arg(mostDetails), {}, {}, {}, {}});
    return details;
}

} // namespace orvo::app
