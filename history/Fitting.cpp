#include "history/Fitting.h"

#include "frame/Kinds.h"
#include "frame/Vocabulary.h"
#include "platform/store/NamePlaces.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace orvo::history {

namespace {

bool is(const store::TableDef& table, const char* name) {
    return std::strcmp(table.name, name) == 0;
}

int64_t numberOf(const store::Value& value) {
    const auto* number = std::get_if<int64_t>(&value);
    return number ? *number : 0;
}

store::Value valueAt(const Values& values, int field) {
    const auto found = values.find(field);
    return found == values.end() ? store::Value() : found->second;
}

} // namespace

const store::TableDef* targetTable(const store::TableDef& table, int field) {
    for (const store::ParentField& parent : store::parentFields(table))
        if (table.find(parent.field) == field)
            return store::findTable(parent.table);
    return nullptr;
}

int bondField(const store::TableDef& table, int field) {
    const store::TableDef* above = targetTable(table, field);
    if (!above || is(*above, table::MenuFolder))
        return -1;
    return table.find(is(*above, table::Menu) ? field::FolderKey : field::type_);
}

Misfit misfitOf(const store::TableDef& table, int field, const store::Value& bond,
                const Values& above) {
    const store::TableDef& holder = *targetTable(table, field);
    const store::Value decisive = valueAt(above, decisiveField(holder, Misfit::NoFolder));
    if (is(holder, table::MenuFolder))
        return (numberOf(decisive) == 0) == is(table, table::Menu) ? Misfit::None
                                                                   : Misfit::NoFolder;
    const store::Value there = valueAt(above, decisiveField(holder, Misfit::Elsewhere));
    if (is(holder, table::MenuResourceFolder))
        return numberOf(there) == numberOf(bond) ? Misfit::None : Misfit::Elsewhere;
    if (!store::textOf(decisive).empty())
        return Misfit::NoFolder;
    const std::string& desktop = store::textOf(bond); // what has none is shown nowhere anyway
    return desktop.empty() || store::foldedKey(store::textOf(there)) == store::foldedKey(desktop)
               ? Misfit::None
               : Misfit::Elsewhere;
}

bool canBeAtTop(const store::TableDef& table, int field, const store::Value& bond) {
    const store::TableDef& holder = *targetTable(table, field);
    if (is(holder, table::MenuResourceFolder)) // of its kind
        return numberOf(bond) == Kind::File;
    return is(table, table::MenuFolder) || !is(holder, table::MenuFolder);
}

bool isTopFolder(const store::TableDef& table, const Values& values) {
    if (!is(table, table::MenuResourceFolder))
        return false;
    const store::NamePlaces names(table);
    const std::string place = names.placeOf(values);
    return std::any_of(
        std::begin(resourceKinds), std::end(resourceKinds), [&](const ResourceKind& kind) {
            return kind.topFolder &&
                   place == names.placeOf(std::string(kind.topFolder), {}, int64_t(kind.number));
        });
}

int decisiveField(const store::TableDef& above, Misfit misfit) {
    if (is(above, table::MenuFolder))
        return above.find(field::isFolder);
    if (is(above, table::MenuResourceFolder))
        return above.find(field::type_);
    return above.find(misfit == Misfit::NoFolder ? field::MenuResourceKey : field::FolderKey);
}

} // namespace orvo::history
