// RecordSource.h: what is known of a record by its key, for texts that name it.
#ifndef ORVO_HISTORY_RECORDSOURCE_H
#define ORVO_HISTORY_RECORDSOURCE_H

#include "platform/store/FieldValues.h"
#include "platform/store/Maintenance.h"
#include "platform/store/Merge.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace orvo::history {

/// Values of a record by the numbers of its fields in the table; fields that nobody told of are
/// missing.
using Values = store::FieldValues;

/// The table of that name, that of the contents included; null for any other.
const store::TableDef* tableOf(const std::string& name);

/// The fields by which a record stands below another one, and the tables of those; a content below
/// its form or file.
std::vector<store::ParentField> linksAbove(const store::TableDef& table);
/// The same from above: the fields that place others below a record, and their tables.
std::vector<store::ParentField> linksBelow(const store::TableDef& table);

/// The text of that field; empty if it is NULL or missing.
std::string textAt(const Values& values, int field);

/// The values as the change log holds them.
std::string jsonOf(const store::TableDef& table, const Values& values);

/// Fetches the records whose field names that key: a link without regard to case, any other field
/// exactly.
store::Status fetchNaming(store::Store& store, const store::TableDef& table, int field,
                          const std::string& key, MDArray* into);
/// The values of a posted record, by its number in the order of entry.
Values valuesIn(const MDArray* rows, uint32_t number);

class RecordSource {
public:
    virtual ~RecordSource() = default;
    /// The values of the record; none if nothing is known of it.
    virtual Values valuesOf(const store::TableDef& table, const std::string& key) = 0;
    /// These records are asked for next; a source may look them up at once.
    virtual void prepare(const store::TableDef& table, const std::vector<std::string>& keys);
    /// The records that these changes have updated are.
    void prepareUpdated(const std::vector<store::Change>& changes);
};

/// Asks a store of any kind for one record at a time. Null: nothing is known of any.
class StoredRecords : public RecordSource {
public:
    explicit StoredRecords(store::Store* store) : m_store(store) {}
    Values valuesOf(const store::TableDef& table, const std::string& key) override;

private:
    store::Store* const m_store; ///< not owned
};

/// The records of a store and, of those that were deleted, what the change log says they were. What
/// was asked for once is remembered: an object is for one page of the history.
class LoggedRecords : public RecordSource {
public:
    explicit LoggedRecords(store::MaintainedStore& store) : m_store(store) {}
    Values valuesOf(const store::TableDef& table, const std::string& key) override;
    void prepare(const store::TableDef& table, const std::vector<std::string>& keys) override;

private:
    store::MaintainedStore& m_store;
    std::map<std::pair<std::string, std::string>, Values> m_known; ///< by table and folded key
};

} // namespace orvo::history

#endif
