// NamePlaces.h: where a name must be the only one. Names are unique among the modules, among the
// functions and among the forms; those of files in their folder, with regard to case; those of
// folders among their siblings; those of contents, with regard to case, in their form or file; the
// logins of users; file extensions.
#ifndef ORVO_PLATFORM_STORE_NAMEPLACES_H
#define ORVO_PLATFORM_STORE_NAMEPLACES_H

#include "platform/store/FieldValues.h"
#include "platform/store/Schema.h"

#include <string>
#include <vector>

namespace orvo::store {

class NamePlaces {
public:
    /// Whether names of that table's records are to be unique.
    static bool concern(const TableDef& table);
    /// Whether such a record may as well bear another name. What bears a login or the name of a
    /// content would be something else under another one.
    static bool letRename(const TableDef& table);

    /// Of a table that is concerned, which must outlive it.
    explicit NamePlaces(const TableDef& table);

    // Fields: what a place is made of; 0: nothing.
    int name() const { return m_name; }
    int folder() const { return m_folder; }
    int kind() const { return m_kind; }

    /// Name and place in one text; equal for two records that must not be. Empty: the record has no
    /// name.
    std::string placeOf(const Value& name, const Value& folder, const Value& kind) const;
    /// Fields that are missing count as NULL.
    std::string placeOf(const FieldValues& values) const;
    /// A name that might be free: "a (2).png", "Цех (3)".
    std::string numbered(const std::string& name, int number) const;

private:
    enum class Scope { Table, Folders, Resources, Contents };
    static Scope scopeOf(const TableDef& table);

    Scope m_scope;
    int m_name, m_folder, m_kind;
};

} // namespace orvo::store

#endif
