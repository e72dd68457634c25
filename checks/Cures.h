// Cures.h: what puts a problem right, where that is certain.
#ifndef ORVO_CHECKS_CURES_H
#define ORVO_CHECKS_CURES_H

#include "checks/Problems.h"
#include "platform/store/Maintenance.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvo::checks {

struct Cure {
    QString words; ///< what it does: "перенести в папку «модули»"
    store::TableWrites writes;
    std::string claims = {}; ///< the identity (Namesakes.h) that a record will have; may be empty
    std::string folder = {}; ///< it puts right all of that kind in there; empty: the one finding
};

/// None: what is to be done is for people to decide. The writes are made from the records as the
/// catalogue knows them: to be applied by Store::writeAll with the change up to which it was kept.
std::optional<Cure> cureOf(const Problems& problems, const Finding& finding);
/// Its words alone, for a finding that holds: what a cure writes may be as long as its folder.
std::optional<QString> cureWordsOf(const Problems& problems, const Finding& finding);

/// Several cures as one write: the first one to say anything about a field of a record has it.
class CureBatch {
public:
    /// Plans what puts that right and gives the words for it. None, and nothing is added, if there
    /// is nothing certain, or another cure has made a record what this would make another.
    std::optional<QString> add(const Problems& problems, const Finding& finding);
    bool isEmpty() const { return m_parts.empty(); }
    std::vector<store::TableWrites> parts() const;

private:
    bool add(const Cure& cure);
    void addToTopOfMenu(const Catalogue& records, const Record& element);

    std::map<const store::TableDef*, std::map<std::string, store::Write>> m_parts;
    std::set<std::string> m_claims;
    std::set<std::string> m_folders;            ///< that have been put right as a whole
    std::map<std::string, int64_t> m_lastAtTop; ///< by menu: the last place, with what was added
};

} // namespace orvo::checks

#endif
