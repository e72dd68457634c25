// Installation.h: all records of an installation in memory, of a store or of an export, and how
// they are found by the names above them.
#ifndef ORVO_HISTORY_INSTALLATION_H
#define ORVO_HISTORY_INSTALLATION_H

#include "history/RecordSource.h"

#include "platform/store/ContentChecksum.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace orvo::history {

/// All that a store or an export holds. Of stored bytes it keeps the checksum, and the bytes
/// themselves if `known` has other ones under that key.
class Installation : public store::Receiver, public RecordSource {
public:
    explicit Installation(const Installation* known = nullptr) : m_known(known) {}

    using Records = std::map<std::string, Values>; ///< by folded key; all fields of each
    const Records& records(const store::TableDef& table) const;
    /// Null if there is none.
    const Values* find(const store::TableDef& table, const std::string& key) const;
    const std::string& checksumOf(const std::string& contentKey) const;
    const std::string& bytesOf(const std::string& contentKey) const;
    /// To be called when everything has been handed over.
    void finish();

    Values valuesOf(const store::TableDef& table, const std::string& key) override;

    store::Status expect(uint64_t records, uint64_t contents, uint64_t bytes) override;
    store::Status record(const store::TableDef& table, const std::vector<store::Value>& values,
                         const std::string& place) override;
    store::Status content(const std::vector<store::Value>& values,
                          const std::string& place) override;
    store::Status bytes(std::string_view piece) override;

private:
    const Installation* const m_known; ///< not owned
    std::map<const store::TableDef*, Records> m_records;
    std::map<std::string, std::string> m_sums, m_bytes; ///< by folded key of the content
    std::string m_open; ///< folded key of the content whose bytes are coming; empty: none
    std::string m_read;
    store::Checksum m_sum;
};

using RecordKey = std::pair<const store::TableDef*, std::string>; ///< with the folded key

using Children = std::map<RecordKey, std::vector<RecordKey>>;

/// All tables, that of the contents included.
std::vector<const store::TableDef*> allTables();
/// The records above a record: its parents, and the form or file of a content.
std::vector<RecordKey> recordsAbove(const store::TableDef& table, const Values& values);
/// The same from above, of all records.
Children childrenIn(const Installation& installation);

/// The records whose names (captions) lead to one place from the top, "Folder/Desktop/Element" or
/// "Folder/Form"; or the one with that key. More than one: the path does not say which.
std::vector<RecordKey> findPath(const Installation& installation, const std::string& path);

} // namespace orvo::history

#endif
