#include "platform/store/NamePlaces.h"

#include "frame/Vocabulary.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <cstring>

namespace orvo::store {

namespace {

bool is(const TableDef& table, const char* name) {
    return std::strcmp(table.name, name) == 0;
}

int fieldOr0(const TableDef& table, const char* field) {
    return std::max(table.find(field), 0);
}

} // namespace

bool NamePlaces::concern(const TableDef& table) {
    return letRename(table) || is(table, table::MenuResourceFile) || is(table, table::Users) ||
           is(table, table::MenuFileExt);
}

bool NamePlaces::letRename(const TableDef& table) {
    return is(table, table::MenuResourceFolder) || is(table, table::MenuResource);
}

NamePlaces::Scope NamePlaces::scopeOf(const TableDef& table) {
    return is(table, table::MenuResourceFolder) ? Scope::Folders
           : is(table, table::MenuResource)     ? Scope::Resources
           : is(table, table::MenuResourceFile) ? Scope::Contents
                                                : Scope::Table;
}

NamePlaces::NamePlaces(const TableDef& table)
    : m_scope(scopeOf(table))
    , m_name(table.find(m_scope == Scope::Folders ? field::caption
                        : m_scope != Scope::Table ? field::name_
                        : is(table, table::Users) ? field::login_
                                                  : field::fileExt))
    , m_folder(fieldOr0(table, m_scope == Scope::Folders    ? field::ParentKey
                               : m_scope == Scope::Contents ? field::MenuResourceKey
                                                            : field::MenuResourceFolderKey))
    , m_kind(fieldOr0(table, field::type_)) {}

std::string NamePlaces::placeOf(const Value& name, const Value& folder, const Value& kind) const {
    const std::string& text = textOf(name);
    if (text.empty())
        return {};
    const auto* number = std::get_if<int64_t>(&kind);
    const bool file = m_scope == Scope::Resources && number != nullptr && *number == Kind::File;
    const bool isBelow = file || m_scope == Scope::Folders || m_scope == Scope::Contents;
    std::string above = isBelow ? foldedKey(textOf(folder)) : std::string();
    if (above == foldedKey(rowkey::files))
        above.clear(); // the top of the file area has two spellings
    const bool exact = file || m_scope == Scope::Contents;
    return std::to_string(number != nullptr ? *number : 0) + '/' + above + '/' +
           (exact ? text : foldedName(text).value_or(text));
}

std::string NamePlaces::placeOf(const FieldValues& values) const {
    static const Value none;
    const auto value = [&](int field) -> const Value& {
        const auto found = values.find(field);
        return found == values.end() ? none : found->second;
    };
    return placeOf(value(m_name), value(m_folder), value(m_kind));
}

std::string NamePlaces::numbered(const std::string& name, int number) const {
    const std::string mark = " (" + std::to_string(number) + ")";
    const size_t dot = m_scope == Scope::Folders ? std::string::npos : name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name + mark
                                                : name.substr(0, dot) + mark + name.substr(dot);
}

} // namespace orvo::store
