#include "platform/store/Merge.h"

#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <utility>

namespace orvo::store {

namespace {

/// The text that a record shows; none for another type.
std::optional<std::string> shownText(const Value& value) {
    if (std::holds_alternative<std::monostate>(value))
        return std::string();
    const auto* text = std::get_if<std::string>(&value);
    return text != nullptr ? std::optional(mdx::toCp1251(*text)) : std::nullopt;
}

/// Whether two values read alike in a record. Another's text may hold letters that a record has a
/// question mark for, and editors write an empty text for NULL: a writer that gives back what it
/// read has not changed it.
bool sameInRecords(const Value& a, const Value& b) {
    const std::optional<std::string> one = shownText(a);
    return one ? one == shownText(b) : a == b;
}

/// What became of one field after the writer last saw it.
struct FieldState {
    std::vector<Value> seen; ///< values that the writer may show: as seen, and as written since
    Value now;
    int64_t id = 0; ///< another's change that gave it this value; 0: nobody else's
    std::string login;
    double time = 0;
};

struct ParentEntry {
    const char* table;
    ParentField parent;
};

constexpr ParentEntry parents[] = {
    {table::Menu, {field::parent, table::Menu}},
    {table::Menu, {field::FolderKey, table::MenuFolder}},
    {table::MenuFolder, {field::ParentKey, table::MenuFolder}},
    {table::MenuResource, {field::MenuResourceFolderKey, table::MenuResourceFolder}},
    {table::MenuResourceFolder, {field::ParentKey, table::MenuResourceFolder}},
};

} // namespace

std::vector<ParentField> parentFields(const TableDef& table) {
    std::vector<ParentField> found;
    for (const ParentEntry& entry : parents)
        if (std::strcmp(entry.table, table.name) == 0)
            found.push_back(entry.parent);
    return found;
}

std::vector<ParentField> childFields(const TableDef& table) {
    std::vector<ParentField> found;
    for (const ParentEntry& entry : parents)
        if (std::strcmp(entry.parent.table, table.name) == 0)
            found.push_back({entry.parent.field, entry.table});
    return found;
}

bool isOwnChange(const UpdateGuard& guard, int64_t id) {
    const auto after =
        std::upper_bound(guard.own.begin(), guard.own.end(), id,
                         [](int64_t left, const IdRange& range) { return left < range.first; });
    return after != guard.own.begin() && id <= std::prev(after)->last;
}

struct Merge::Records {
    std::unordered_map<std::string, std::unordered_map<int, FieldState>> byKey; ///< folded keys
};

Merge::Merge(const TableDef& table, const std::vector<Change>& changes, UpdateGuard& guard)
    : m_guard(guard)
    , m_records(std::make_unique<Records>()) {
    for (const Change& change : changes) {
        auto& fields = m_records->byKey[foldedKey(change.key)];
        const bool own = isOwnChange(guard, change.id);
        const FieldValues before = valuesFromJson(table, change.before);
        const FieldValues after = valuesFromJson(table, change.after);
        for (const auto& [number, value] : before) {
            const auto [field, first] = fields.try_emplace(number);
            if (first) {
                field->second.seen.push_back(value);
                field->second.now = value;
            }
        }
        for (const auto& [number, value] : after) {
            FieldState& field = fields[number];
            if (own) {
                field.seen.push_back(value);
                field.id = 0;
            } else if (!sameInRecords(value, field.now)) {
                const bool asSeen = !field.seen.empty() && sameInRecords(value, field.seen.back());
                field.id = asSeen ? 0 : change.id;
                field.login = change.login;
                field.time = change.time;
            }
            field.now = value;
        }
    }
}

Merge::~Merge() = default;

void Merge::reduce(Write& write) const {
    const auto record = m_records->byKey.find(foldedKey(write.key));
    if (write.flag != MDX_UPDATE || record == m_records->byKey.end())
        return;
    const auto leftOut = [&](const std::pair<int, Value>& value) {
        const auto found = record->second.find(value.first);
        if (found == record->second.end() || found->second.id == 0)
            return false;
        const FieldState& field = found->second;
        const auto isIt = [&](const Value& other) { return sameInRecords(value.second, other); };
        if (isIt(field.now) || std::any_of(field.seen.begin(), field.seen.end(), isIt))
            return true;
        m_guard.conflicts.push_back({write.key, value.first, value.second, field.now,
                                     field.seen.empty() ? Value() : field.seen.back(), field.id,
                                     field.login, field.time});
        return true;
    };
    write.values.erase(std::remove_if(write.values.begin(), write.values.end(), leftOut),
                       write.values.end());
}

} // namespace orvo::store
