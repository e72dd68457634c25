// Schema.h: the one dictionary of tables and fields. Statements, record structures and the triggers
// of every store come from it; the tables themselves from the steps of Migrations.h.
#ifndef ORVO_PLATFORM_STORE_SCHEMA_H
#define ORVO_PLATFORM_STORE_SCHEMA_H

#include "frame/OrvoMdx.h"

#include <string>
#include <string_view>
#include <vector>

namespace orvo::store {

struct FieldDef {
    const char* name;
    MdxType type;
    /// What people call it wherever a change is told; null: it is told of by its name.
    const char* word = nullptr;
    bool link = false; ///< holds the key of another record: empty text is stored as NULL
};

struct TableDef {
    const char* name;
    std::vector<FieldDef> fields; ///< field 0 is KeyLink

    /// Number of the field of that name (without regard to ASCII case), or -1.
    int find(std::string_view field) const;
};

struct Dictionary {
    /// The tables that the editors know, in the order in which a store may be filled: a link's
    /// target before what links to it.
    std::vector<TableDef> tables;
    /// The contents of stored forms and files, "MenuResourceFile": logged like the tables above,
    /// but not one of them. The bytes are one more column, "data", which only the stores touch.
    TableDef content;
};

const Dictionary& dictionary();
inline const std::vector<TableDef>& tables() {
    return dictionary().tables;
}
inline const TableDef& contentTable() {
    return dictionary().content;
}
/// The one of tables() of exactly that name, or null.
const TableDef* findTable(std::string_view name);
/// Whether the field holds this record's key or another's.
bool isKeyOrLink(const TableDef& table, const FieldDef& field);
/// Names the table in a message.
std::string inTable(const TableDef& table);
/// Gives an array without fields the structure of the table.
int makeStructure(const TableDef& table, MDArray* array);

} // namespace orvo::store

#endif
