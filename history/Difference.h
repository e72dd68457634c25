// Difference.h: what differs between two installations, in changes as the log would tell of them,
// and the part of it that is to be brought from one into the other.
#ifndef ORVO_HISTORY_DIFFERENCE_H
#define ORVO_HISTORY_DIFFERENCE_H

#include "history/RecordSource.h"

#include "platform/store/ContentChecksum.h"

#include <map>
#include <optional>
#include <set>
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

/// The records whose names (captions) lead to one place from the top, "Folder/Desktop/Element" or
/// "Folder/Form"; or the one with that key. More than one: the path does not say which.
std::vector<RecordKey> findPath(const Installation& installation, const std::string& path);

struct Difference {
    std::vector<store::TableWrites> parts; ///< make the one like the other
    std::vector<store::Change> changes;    ///< as the log would tell of them
};

/// What makes `from` like `to`: everything, or what is at and below `top` in either of them, with
/// the folders above and the resources that its elements need, if `from` lacks these. Users and
/// locks of resources are the installation's own: they stay, unless `withUsers`.
Difference differenceOf(const Installation& from, const Installation& to,
                        const std::optional<RecordKey>& top, bool withUsers);

} // namespace orvo::history

#endif
