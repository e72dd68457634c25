// Merge.h: an update against what others wrote since the writer last looked at the change log.
//
// An editor writes whole rows. Of such a row only what was typed is meant: a field that still has
// the value that the writer had seen keeps what another put there meanwhile, and a field that both
// changed is not written but reported.
#ifndef ORVO_PLATFORM_STORE_MERGE_H
#define ORVO_PLATFORM_STORE_MERGE_H

#include "platform/store/Store.h"
#include "platform/store/WritePlan.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvo::store {

/// Ids of the change log, both ends included.
struct IdRange {
    int64_t first = 0;
    int64_t last = 0;
};

/// A field that was not written because another has changed it, too.
struct Conflict {
    std::string key; ///< of the record
    int field = 0;   ///< number in the table
    Value mine;      ///< was to be written
    Value theirs;    ///< is stored
    Value before;    ///< what the writer had seen
    int64_t id = 0;  ///< the change that put `theirs` there
    std::string login;
    double time = 0;
};

/// An update that found no record.
struct MissingRecord {
    std::string key;
    std::optional<Change> deletion; ///< none: the log does not tell
};

/// What an update looks at beside its records, and what it found.
struct UpdateGuard {
    /// The writer has seen the log up to this change; -1: unknown, and every field is written. If
    /// the log does not reach back to it the update is Outdated; a name that another took after it
    /// is Refused (TakenNames.h).
    int64_t seen = -1;
    /// Changes after `seen` that are the writer's own. In rising order, without overlaps.
    std::vector<IdRange> own;

    // After an update that succeeded:
    std::vector<Conflict> conflicts;
    std::vector<MissingRecord> missing; ///< each key once, in the order of the records

    /// After ParentDeleted: the deletion of the record that was to stand above.
    std::optional<Change> parentDeletion;
};

/// A field by which a record of one table is placed below another one, and the table at its other
/// end. A record whose parent is not stored is shown nowhere.
struct ParentField {
    const char* field;
    const char* table;
};
std::vector<ParentField> parentFields(const TableDef& table);
/// The same from above: the fields by which records are placed below one of this table, each with
/// the table that has it.
std::vector<ParentField> childFields(const TableDef& table);

/// Whether a change after guard.seen is the writer's own.
bool isOwnChange(const UpdateGuard& guard, int64_t id);

/// Compares updates of one table with the changes since `seen`.
class Merge {
public:
    /// `changes` are those after guard.seen of the records in question, in the order of the log.
    /// The guard must outlive this object.
    Merge(const TableDef& table, const std::vector<Change>& changes, UpdateGuard& guard);
    ~Merge();
    Merge(const Merge&) = delete;
    Merge& operator=(const Merge&) = delete;

    /// Takes out of an update what is not to be written, and reports the conflicts.
    void reduce(Write& write) const;

private:
    struct Records;
    UpdateGuard& m_guard;
    std::unique_ptr<Records> m_records;
};

} // namespace orvo::store

#endif
