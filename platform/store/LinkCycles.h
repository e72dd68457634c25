// LinkCycles.h: an update must not put a folder below itself. What such a circle holds shows in no
// tree, and nobody could take it apart there.
#ifndef ORVO_PLATFORM_STORE_LINKCYCLES_H
#define ORVO_PLATFORM_STORE_LINKCYCLES_H

#include "platform/store/WritePlan.h"

#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace orvo::store {

/// Looks at the links to a parent that the writes of one update set, all of them together.
///
/// Refused is a write that gives an existing record another parent, if that or one above it is the
/// record itself; and records that are new and lie in each other. A write that leaves a record the
/// parent that it has is none of this, so that a circle which is there already, from a foreign
/// hand, can be renamed, taken apart and deleted. So is a new record which names one that names it
/// already: only restoring what was deleted does that.
class LinkCycles {
public:
    /// Whether records of the table link to a parent of the same table.
    static bool concern(const TableDef& table) { return parentField(table) > 0; }

    /// The table outlives it.
    explicit LinkCycles(const TableDef& table) : m_table(table), m_field(parentField(table)) {}

    /// The number of the link to the parent.
    int field() const { return m_field; }
    /// The write outlives the next check().
    void add(const Write& write);
    /// Gives the parent of the record of a key as the database has it, empty for none and for no
    /// record.
    using ParentOf = std::function<Status(const std::string& key, std::string* parent)>;
    /// Refused, or what `parentOf` failed with. Asks for nothing that the writes tell themselves.
    Status check(const ParentOf& parentOf);

private:
    static int parentField(const TableDef& table);
    /// Folded keys whose way up was found to end, so that a deep chain is walked once.
    struct Sound {
        std::unordered_set<std::string> amongWrites; ///< ends, or leaves the writes
        std::unordered_set<std::string> upToRoot;    ///< ends, with what the database has
    };
    Status checkOne(const std::string& key, const ParentOf& parentOf, Sound* sound) const;

    struct Link {
        std::string parent; ///< folded
        std::string key;    ///< as it was given
        int flag;
    };
    void takeLinks();

    const TableDef& m_table;
    int m_field;
    std::vector<std::pair<const Write*, const std::string*>> m_writes; ///< and their links
    std::unordered_map<std::string, Link> m_links;                     ///< by folded key
};

} // namespace orvo::store

#endif
