#include "history/Cuts.h"

#include "frame/Vocabulary.h"
#include "history/Fitting.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <cstring>
#include <utility>
#include <variant>
#include <vector>

namespace orvo::history {

namespace {

/// Whether the value is none: what is pasted may have an empty text or 0 in place of NULL.
bool isNone(const store::Value& value) {
    const auto* text = std::get_if<std::string>(&value);
    const auto* number = std::get_if<int64_t>(&value);
    return std::holds_alternative<std::monostate>(value) || (text && text->empty()) ||
           (number && *number == 0);
}

} // namespace

bool isPlace(const store::TableDef& table, int field) {
    const auto is = [&](const char* name) {
        return std::strcmp(table.fields[static_cast<size_t>(field)].name, name) == 0;
    };
    return field == 0 || is(field::order_) || is(field::FolderKey) ||
           targetTable(table, field) != nullptr;
}

std::string contentOf(const store::TableDef& table, const Values& values) {
    Values content;
    for (const auto& [field, value] : values)
        if (!isPlace(table, field) && !isNone(value))
            content[field] = value;
    return jsonOf(table, content);
}

std::string deletedContent(const store::TableDef& table, const store::Change& deletion) {
    return contentOf(table, store::valuesFromJson(table, deletion.before));
}

store::Status deletionByCut(store::MaintainedStore& store, const store::Change& insertion,
                            std::optional<store::Change>* deletion) {
    constexpr int mostRead = 2000;
    deletion->reset();
    const store::TableDef* table = tableOf(insertion.table);
    if (!table || insertion.code != OrvoEventInsert)
        return {};
    store::LogQuery query;
    query.group = insertion.group;
    query.table = insertion.table;
    query.oldestFirst = true;
    std::vector<store::Change> changes;
    store::Status status = store.history(query, mostRead, &changes);
    const std::string content = contentOf(*table, store::valuesFromJson(*table, insertion.after));
    size_t number = 0; // among what the action has made alike
    for (const store::Change& change : changes)
        if (change.code == OrvoEventInsert && change.id < insertion.id &&
            contentOf(*table, store::valuesFromJson(*table, change.after)) == content)
            ++number;
    for (store::Change& change : changes)
        if (change.code == OrvoEventDelete && deletedContent(*table, change) == content &&
            number-- == 0) {
            *deletion = std::move(change);
            break;
        }
    return status;
}

} // namespace orvo::history
