// BranchMembers.h: the records of a branch as it is now, kept up to date by the change log.
//
// A branch may have tens of thousands of records, so it is looked up a level at a time and only
// once; afterwards what was written since tells what has joined it. Only if a record has left it,
// which may take a part of the branch away, it is looked up again.
#ifndef ORVO_HISTORY_BRANCHMEMBERS_H
#define ORVO_HISTORY_BRANCHMEMBERS_H

#include "history/RecordSource.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace orvo::history {

/// A record and everything below it: elements below an element, a desktop's elements, what is in
/// folders, and the contents of forms and files.
struct Branch {
    const store::TableDef* table = nullptr;
    std::string key;
};

class BranchMembers {
public:
    /// Names of tables and folded keys.
    using Record = std::pair<std::string, std::string>;
    using Records = std::set<Record>;

    explicit BranchMembers(Branch branch);

    /// Afterwards the records are those that the branch has now, or had a moment ago. After a
    /// failure they are what they were.
    store::Status update(store::MaintainedStore& store);
    /// They stay as they are for who has them, whatever is written later. Not null.
    std::shared_ptr<const Records> records() const { return m_records; }
    /// How often the whole branch was looked up.
    int lookUps() const { return m_lookUps; }

private:
    using Level = std::vector<std::pair<const store::TableDef*, std::string>>;

    store::Status lookUp(store::MaintainedStore& store);
    static store::Status addBelow(store::MaintainedStore& store, Level level, Records* records);
    /// Takes in what was written; `known` false: the branch has to be looked up.
    store::Status follow(store::MaintainedStore& store, const std::vector<store::Change>& changes,
                         bool* known);

    const Branch m_branch;
    std::shared_ptr<Records> m_records; ///< others have it as well: no more to be changed
    int64_t m_position = -1;            ///< of the log, up to which they are known; -1: not at all
    int m_lookUps = 0;
};

} // namespace orvo::history

#endif
