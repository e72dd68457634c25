// GuardedUpdate.h: the writes of one update call inside its transaction, with regard to what others
// wrote (Merge.h) and to what must never be stored.
#ifndef ORVO_PLATFORM_STORE_GUARDEDUPDATE_H
#define ORVO_PLATFORM_STORE_GUARDEDUPDATE_H

#include "platform/store/Merge.h"
#include "platform/store/StoreBackend.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvo::store {

class GuardedUpdate {
public:
    /// All of them must outlive the object.
    GuardedUpdate(StoreBackend& backend, const TableDef& table, std::vector<Write>& writes)
        : m_backend(backend)
        , m_table(table)
        , m_writes(writes)
        , m_merged(&writes) {}
    /// For writes whose records nobody else has changed: there is nothing to be merged.
    GuardedUpdate(StoreBackend& backend, const TableDef& table, const std::vector<Write>& writes)
        : m_backend(backend)
        , m_table(table)
        , m_writes(writes) {}

    /// Applies the writes; see Store::update. Without a guard they go in as they are, unless one
    /// puts a record below itself.
    Status apply(UpdateGuard* guard);

private:
    /// Outdated if the log no longer tells of everything that the writer has not seen.
    Status checkReach(const UpdateGuard& guard);
    /// Takes out of the updates what others wrote, and lists those of missing records.
    Status merge(UpdateGuard& guard);
    /// ParentDeleted if a record would be placed below one that was deleted.
    Status checkParents(std::optional<Change>* deletedParent);
    Status checkParent(const Write& write, int field, const TableDef& above, const std::string& key,
                       std::optional<Change>* deletedParent);
    /// Refuses to let an element name a resource that was deleted since the writer last looked: he
    /// chose it from a list in which it still was. What named it before may be written.
    Status checkResources(const UpdateGuard& guard);
    /// The same of an icon, which is named by its file: deleted or renamed since.
    Status checkIcons(const UpdateGuard& guard);
    Status findGoneIcons(int64_t seen, std::set<std::string> names,
                         std::map<std::string, Change>* gone);
    /// Refuses to delete what others have put something into since the writer last looked.
    Status checkChildren(const UpdateGuard& guard);
    /// Refuses an update that would put a record below itself.
    Status refuseCycles();
    Status lastDeletion(const TableDef& table, const std::string& key,
                        std::optional<Change>* deletion);

    StoreBackend& m_backend;
    const TableDef& m_table;
    const std::vector<Write>& m_writes;
    std::vector<Write>* const m_merged = nullptr; ///< the same, or null
};

} // namespace orvo::store

#endif
