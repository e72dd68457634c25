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
};

/// None: what is to be done is for people to decide. The writes are made from the records as the
/// catalogue knows them: to be applied by Store::writeAll with the change up to which it was kept.
std::optional<Cure> cureOf(const Problems& problems, const Finding& finding);

/// Several cures as one write: the first one to say anything about a field of a record has it.
class CureBatch {
public:
    /// False, and nothing is added, if another one has made a record what this would make another.
    bool add(const Cure& cure);
    bool isEmpty() const { return m_parts.empty(); }
    std::vector<store::TableWrites> parts() const;

private:
    std::map<const store::TableDef*, std::map<std::string, store::Write>> m_parts;
    std::set<std::string> m_claims;
};

} // namespace orvo::checks

#endif
