// TakenNames.h: a name that must be the only one in its place is not stored when another has taken
// it since the writer last looked. Editors look for themselves before they save, but in tables that
// are kept as they were while an edit is open.
#ifndef ORVO_PLATFORM_STORE_TAKENNAMES_H
#define ORVO_PLATFORM_STORE_TAKENNAMES_H

#include "platform/store/Merge.h"
#include "platform/store/NamePlaces.h"
#include "platform/store/StoreBackend.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace orvo::store {

/// Looks at the names in the writes of one update. What bore the name before the writer looked is
/// his to know, and his own changes are no other's. Nor does a record hold a name that the same
/// update takes away from it.
class TakenNames {
public:
    /// All must outlive it. The table is one that NamePlaces concern.
    TakenNames(StoreBackend& backend, const TableDef& table, const UpdateGuard& guard);

    /// Refused if another has taken a name that the writes give.
    Status check(const std::vector<Write>& writes);

private:
    struct Named {
        Value name, folder, type;
    };
    struct Wanted {
        std::string key; ///< folded: of the record that is to have it
        std::string name;
    };
    Status readStored(const std::vector<Write>& writes);
    Status findNamesakes();
    Status refuseTaken();
    std::string placeOf(const Named& record) const {
        return m_places.placeOf(record.name, record.folder, record.type);
    }
    Named after(const Write& write) const;

    StoreBackend& m_backend;
    const TableDef& m_table;
    const UpdateGuard& m_guard;
    const NamePlaces m_places;
    std::unordered_map<std::string, Named> m_stored;        ///< by folded key: what is updated
    std::unordered_map<std::string, Wanted> m_wanted;       ///< by place
    std::unordered_map<std::string, std::string> m_goesTo;  ///< folded key to place; empty: deleted
    std::unordered_map<std::string, std::string> m_holders; ///< folded key to the name it bears
};

} // namespace orvo::store

#endif
