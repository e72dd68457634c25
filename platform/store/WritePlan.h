// WritePlan.h: from the flagged records of an update to values that a database statement takes.
// Everything about an update that needs no database is decided here, alike for every kind of store.
#ifndef ORVO_PLATFORM_STORE_WRITEPLAN_H
#define ORVO_PLATFORM_STORE_WRITEPLAN_H

#include "platform/store/Schema.h"
#include "platform/store/Store.h"

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace orvo::store {

/// A value on its way to or from a database: NULL; boolean (0 or 1) and integer; date; text or
/// bytes in UTF-8.
using Value = std::variant<std::monostate, int64_t, double, std::string>;

/// The text of a value, empty for NULL and for anything else.
const std::string& textOf(const Value& value);

/// What one record asks for.
struct Write {
    int flag = 0;    ///< MdxRecordFlag
    std::string key; ///< KeyLink, UTF-8
    std::vector<std::pair<int, Value>>
        values;             ///< field numbers of the TableDef, rising; no KeyLink
    std::string place = {}; ///< names the record in messages; empty: by table and key
};

/// Reads the posted records of an array as writes to a table. The array and the table must outlive
/// the plan.
class WritePlan {
public:
    WritePlan(const TableDef& table, const MDArray* records);

    uint32_t count() const;
    /// What the record of that entry asks for. Refused: a marked field that the table lacks, a
    /// value that the field cannot hold, an unknown flag, a key for a new record that is empty or
    /// no key (isKey). An update or deletion with an empty key asks for nothing.
    Status write(uint32_t entry, Write* into) const;

private:
    const TableDef& m_table;
    const MDArray* m_records;
    struct Column {
        MDRField field; ///< of the records
        int number;     ///< in the table, or -1
    };
    std::vector<Column> m_columns; ///< in the order of the table's fields, unknown ones first
    MDRField m_key = nullptr;
};

} // namespace orvo::store

#endif
