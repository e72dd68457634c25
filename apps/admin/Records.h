// Records.h: fetched tables and changes on their way out, in UTF-8 and by field name.
#ifndef ORVO_ADMIN_RECORDS_H
#define ORVO_ADMIN_RECORDS_H

#include "frame/OrvoMdx.h"
#include "frame/Vocabulary.h"
#include "platform/store/Store.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvo::admin {

/// One record of a fetched table. Valid as long as its Table.
class Row {
public:
    Row() = default;
    explicit Row(MDRData* record) : m_record(record) {}
    explicit operator bool() const { return m_record != nullptr; }

    /// A text field as UTF-8; empty for NULL and for no such field.
    std::string text(const char* field) const;
    /// An integer or boolean; 0 for NULL.
    int integer(const char* field) const;
    bool isNull(const char* field) const;
    /// Field 0 of every table.
    std::string key() const { return text(field::KeyLink); }

private:
    friend class Table;
    MDRData* m_record = nullptr; ///< of the table's array
};

/// A table fetched whole.
class Table {
public:
    /// Throws Failure if the fetch fails.
    Table(store::Store& store, const char* name);

    const char* name() const { return m_name; }
    int count() const;
    /// The record at that place in the order of its entry.
    Row at(int place) const;
    /// The record of that key, without regard to case as the editors look it up; or none.
    Row byKey(const std::string& key) const;
    /// The place of a record of this table; -1 for no record.
    int placeOf(const Row& row) const;
    /// A text field of all records.
    std::vector<std::string> texts(const char* field) const;
    /// The first record for which the test holds; or none.
    Row find(const std::function<bool(const Row&)>& test) const;

private:
    const char* m_name;
    CMDArray m_records;
    mutable std::vector<std::pair<const MDRData*, int>> m_places; ///< sorted; made when first asked
};

/// Changes of one table, sent in one transaction.
class Batch {
public:
    explicit Batch(const char* table);

    /// Opens the next record; the setters below fill it until the next of these calls.
    Batch& insert(std::string_view key) { return begin(key, MDX_INSERT); }
    Batch& update(std::string_view key) { return begin(key, MDX_UPDATE); }
    Batch& remove(std::string_view key) { return begin(key, MDX_DELETE); }
    Batch& text(const char* field, std::string_view utf8);
    Batch& integer(const char* field, int value);
    Batch& flag(const char* field, bool value);
    Batch& date(const char* field, double value);
    Batch& null(const char* field);

    int count() const { return m_count; }
    /// Sends and forgets the changes, if there are any. Throws Failure "<what>: ...".
    void send(store::Store& store, const std::string& what);

private:
    Batch& begin(std::string_view key, uint32_t flag);
    void set(const char* field, const MDRVar& value);
    void post();

    const store::TableDef* m_definition;
    std::optional<CMDArray> m_records;
    MDRData* m_open = nullptr; ///< of m_records
    int m_count = 0;
};

/// A new unique key.
std::string newKey();
/// Refuses a text that the records cannot carry: control characters, or characters outside their
/// code page. `what` names it in the Failure.
void requireStorable(std::string_view utf8, const std::string& what);
/// Both texts without regard to case.
bool sameText(const std::string& a, const std::string& b);
/// The text in the form in which texts that differ only in case are equal.
std::string folded(const std::string& text);

} // namespace orvo::admin

#endif
