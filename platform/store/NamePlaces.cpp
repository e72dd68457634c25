#include "platform/store/NamePlaces.h"

#include "frame/Vocabulary.h"
#include "platform/store/Names.h"

#include <cstring>

namespace orvo::store {

namespace {

bool isFolders(const TableDef& table) {
    return std::strcmp(table.name, table::MenuResourceFolder) == 0;
}

} // namespace

bool NamePlaces::concern(const TableDef& table) {
    return isFolders(table) || std::strcmp(table.name, table::MenuResource) == 0;
}

NamePlaces::NamePlaces(const TableDef& table)
    : m_areFolders(isFolders(table))
    , m_name(table.find(m_areFolders ? field::caption : field::name_))
    , m_folder(table.find(m_areFolders ? field::ParentKey : field::MenuResourceFolderKey))
    , m_kind(table.find(field::type_)) {}

std::string NamePlaces::placeOf(const Value& name, const Value& folder, const Value& kind) const {
    const std::string& text = textOf(name);
    if (text.empty())
        return {};
    const auto* number = std::get_if<int64_t>(&kind);
    const bool file = number != nullptr && *number == Kind::File;
    std::string above = file || m_areFolders ? foldedKey(textOf(folder)) : std::string();
    if (above == foldedKey(rowkey::files))
        above.clear(); // the top of the file area has two spellings
    const bool exact = file && !m_areFolders;
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
    const size_t dot = m_areFolders ? std::string::npos : name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name + mark
                                                : name.substr(0, dot) + mark + name.substr(dot);
}

} // namespace orvo::store
