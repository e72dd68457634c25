// Standing.h: which actions of the change log stand, and which have been taken back.
//
// A group that takes others back only turns them off; taking it back turns them on again. So what a
// field should hold follows from the changes that stand, in the order of the log, and does not
// depend on the order in which actions were taken back.
#ifndef ORVO_HISTORY_STANDING_H
#define ORVO_HISTORY_STANDING_H

#include "platform/store/Maintenance.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace orvo::history {

class Standing {
public:
    /// Reads what the log tells of groups that take others back, as far as it bears on these groups
    /// and what came after them.
    store::Status read(store::MaintainedStore& store, const std::vector<int64_t>& groups);

    /// Decides as if a newest group took back `more` as well.
    void settle(const std::vector<int64_t>& more);

    /// Everything before that id bears on nothing that was asked about.
    int64_t begin() const { return m_begin; }
    bool stands(int64_t group) const { return m_off.count(group) == 0; }
    /// The groups that do not stand, of those from begin() on.
    const std::set<int64_t>& undone() const { return m_off; }
    /// The newest group that stands and takes this one back; 0: none.
    int64_t undoneBy(int64_t group) const;
    bool isUndoing(int64_t group) const { return m_undoes.count(group) != 0; }
    /// The groups that it takes back; of those from begin() on.
    std::vector<int64_t> undoesOf(int64_t group) const {
        const auto undoing = m_undoes.find(group);
        return undoing == m_undoes.end() ? std::vector<int64_t>() : undoing->second;
    }
    /// The newest group that took back these, or these and others: if it was of that login, and the
    /// same login has taken it back; else 0.
    int64_t lastAnswer(const std::vector<int64_t>& groups, const std::string& login) const;
    /// These groups, the ones that they take back, the ones that those take back and so on.
    std::set<int64_t> concerned(const std::vector<int64_t>& groups) const;

private:
    int64_t m_begin = 0;
    std::map<int64_t, std::vector<int64_t>> m_undoes; ///< by the group that takes back
    std::map<int64_t, std::string> m_logins;          ///< of the same groups
    std::set<int64_t> m_off;
};

} // namespace orvo::history

#endif
