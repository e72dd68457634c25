#include "history/Cuts.h"

#include "frame/Vocabulary.h"
#include "history/Fitting.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <cstring>
#include <set>
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

namespace {

/// What a cut has done besides with the content of a record that it has inserted or deleted.
store::Status otherHalf(store::MaintainedStore& store, const store::Change& half,
                        std::optional<store::Change>* other) {
    constexpr int mostRead = 2000;
    other->reset();
    const store::TableDef* table = tableOf(half.table);
    if (!table || half.code == OrvoEventUpdate)
        return {};
    store::LogQuery query;
    query.group = half.group;
    query.table = half.table;
    query.oldestFirst = true;
    std::vector<store::Change> changes;
    store::Status status = store.history(query, mostRead, &changes);
    const auto contentIn = [&](const store::Change& change) {
        return change.code == OrvoEventDelete
                   ? deletedContent(*table, change)
                   : contentOf(*table, store::valuesFromJson(*table, change.after));
    };
    const std::string content = contentIn(half);
    size_t number = 0; // among those alike
    for (const store::Change& change : changes)
        if (change.code == half.code && change.id < half.id && contentIn(change) == content)
            ++number;
    for (store::Change& change : changes)
        if (change.code != half.code && change.code != OrvoEventUpdate &&
            contentIn(change) == content && number-- == 0) {
            *other = std::move(change);
            break;
        }
    return status;
}

} // namespace

store::Status deletionByCut(store::MaintainedStore& store, const store::Change& insertion,
                            std::optional<store::Change>* deletion) {
    deletion->reset();
    return insertion.code == OrvoEventInsert ? otherHalf(store, insertion, deletion)
                                             : store::Status();
}

store::Status keyAfterCuts(store::MaintainedStore& store, const std::string& table,
                           std::string* key) {
    std::set<std::string> seen;
    while (seen.insert(store::foldedKey(*key)).second) {
        store::LogQuery query;
        query.table = table;
        query.key = *key;
        std::vector<store::Change> last;
        std::optional<store::Change> insertion;
        store::Status status = store.history(query, 1, &last);
        if (status.ok() && !last.empty() && last.front().code == OrvoEventDelete)
            status = otherHalf(store, last.front(), &insertion);
        if (!status.ok() || !insertion)
            return status;
        *key = insertion->key;
    }
    return {};
}

} // namespace orvo::history
