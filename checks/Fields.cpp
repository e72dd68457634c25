#include "checks/Fields.h"

#include "frame/Kinds.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/Names.h"

#include <QStringList>

#include <array>
#include <deque>
#include <unordered_set>

namespace orvo::checks {

namespace {

/// Of each code of Windows-1251 that of the small letter.
std::array<char, 256> foldingTable() {
    std::array<char, 256> table{};
    for (size_t code = 0; code < table.size(); ++code)
        table[code] = static_cast<char>(code >= 'A' && code <= 'Z' ? code + 'a' - 'A' : code);
    const std::string upper = mdx::toCp1251(store::upperLetters);
    const std::string lower = mdx::toCp1251(store::lowerLetters);
    for (size_t i = 0; i < upper.size(); ++i)
        table[static_cast<unsigned char>(upper[i])] = lower[i];
    return table;
}

Fields makeFields() {
    const auto table = [](const char* name) -> const store::TableDef& {
        return *store::findTable(name);
    };
    const store::TableDef& users = table(table::Users);
    const store::TableDef& extensions = table(table::MenuFileExt);
    const store::TableDef& desktops = table(table::MenuFolder);
    const store::TableDef& elements = table(table::Menu);
    const store::TableDef& folders = table(table::MenuResourceFolder);
    const store::TableDef& resources = table(table::MenuResource);
    return {
        users,
        extensions,
        desktops,
        elements,
        folders,
        resources,
        {users.find(field::login_)},
        {extensions.find(field::fileExt)},
        {desktops.find(field::ParentKey), desktops.find(field::caption),
         desktops.find(field::order_), desktops.find(field::isFolder)},
        {elements.find(field::parent), elements.find(field::FolderKey),
         elements.find(field::caption), elements.find(field::order_), elements.find(field::ico),
         elements.find(field::MenuResourceKey)},
        {folders.find(field::ParentKey), folders.find(field::type_), folders.find(field::caption)},
        {resources.find(field::MenuResourceFolderKey), resources.find(field::name_),
         resources.find(field::type_), resources.find(field::UsersKey),
         resources.find(field::dateTimeEdit), resources.find(field::ico)}};
}

} // namespace

const Fields& fields() {
    static const Fields all = makeFields();
    return all;
}

const std::vector<const store::TableDef*>& checkedTables() {
    static const std::vector<const store::TableDef*> all = {
        &fields().users,    &fields().extensions, &fields().desktops,
        &fields().elements, &fields().folders,    &fields().resources};
    return all;
}

Record above(const Catalogue& records, const Record& record) {
    const Fields& f = fields();
    const store::TableDef* table = &record.table();
    if (table == &f.elements) {
        const bool isTop = record.cp1251(f.element.parent).empty();
        return records.linked(record, isTop ? f.element.desktop : f.element.parent);
    }
    if (table == &f.desktops)
        return records.linked(record, f.desktop.parent);
    if (table == &f.folders)
        return records.linked(record, f.folder.parent);
    return table == &f.resources ? records.linked(record, f.resource.folder) : Record();
}

QString pathOf(const Catalogue& records, const Record& record) {
    QStringList path;
    std::unordered_set<uint32_t> passed{record.number()}; // the data may hold circles
    Record top = record;
    const auto climb = [&](Record at) {
        for (; at && passed.insert(at.number()).second; at = above(records, at)) {
            path.prepend(at.name());
            top = at;
        }
    };
    climb(above(records, record));
    // Folders of a menu that hang on nothing, or in a circle, still belong to a desktop.
    if (&top.table() == &fields().elements)
        climb(records.linked(record, fields().element.desktop));
    return path.join(QStringLiteral(" / "));
}

void forEachBelow(const Catalogue& records, const Record& record,
                  const std::function<bool(const Record&)>& each) {
    const Fields& f = fields();
    const std::string key = record.key();
    bool more = true;
    const auto visit = [&](const Record& one, int) { return more = each(one); };
    const store::TableDef* table = &record.table();
    if (table == &f.elements) {
        records.forEachWith(table::Menu, field::parent, key, visit);
    } else if (table == &f.desktops) {
        records.forEachWith(table::MenuFolder, field::ParentKey, key, visit);
        if (more)
            records.forEachWith(table::Menu, field::FolderKey, key, visit);
    } else if (table == &f.folders) {
        records.forEachWith(table::MenuResourceFolder, field::ParentKey, key, visit);
        if (more)
            records.forEachWith(table::MenuResource, field::MenuResourceFolderKey, key, visit);
    }
}

size_t countBelow(const Catalogue& records, const Record& record, size_t most) {
    std::unordered_set<uint32_t> seen{record.number()};
    std::deque<uint32_t> open{record.number()};
    while (!open.empty() && seen.size() <= most) {
        const Record at = records.at(open.front());
        open.pop_front();
        forEachBelow(records, at, [&](const Record& one) {
            if (seen.insert(one.number()).second)
                open.push_back(one.number());
            return seen.size() <= most;
        });
    }
    return seen.size() - 1;
}

int parentFieldOf(const store::TableDef& table) {
    const Fields& f = fields();
    if (&table == &f.elements)
        return f.element.parent;
    if (&table == &f.desktops)
        return f.desktop.parent;
    return &table == &f.folders ? f.folder.parent : -1;
}

const char* topCaptionOf(int kind) {
    const ResourceKind* known = resourceKind(kind);
    return known ? known->topFolder : nullptr;
}

bool isTopRow(const std::string& key) {
    return store::sameText(key, rowkey::files) || store::sameText(key, rowkey::resources);
}

std::string folded(std::string_view cp1251) {
    static const std::array<char, 256> table = foldingTable();
    std::string text(cp1251);
    for (char& letter : text)
        letter = table[static_cast<unsigned char>(letter)];
    return text;
}

} // namespace orvo::checks
