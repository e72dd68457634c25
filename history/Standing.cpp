#include "history/Standing.h"

#include <algorithm>
#include <climits>

namespace orvo::history {

store::Status Standing::read(store::MaintainedStore& store, const std::vector<int64_t>& groups) {
    m_undoes.clear();
    m_logins.clear();
    m_begin = groups.empty() ? 0 : *std::min_element(groups.begin(), groups.end());
    for (int64_t before = 0; before != m_begin;) {
        before = m_begin;
        store::LogQuery query;
        query.undoing = true;
        query.above = m_begin - 1;
        std::vector<store::Change> changes;
        store::Status status = store.history(query, INT_MAX, &changes);
        if (!status.ok())
            return status;
        for (const store::Change& change : changes) {
            m_undoes[change.group] = change.undoes;
            m_logins[change.group] = change.login;
            for (const int64_t group : change.undoes)
                m_begin = std::min(m_begin, group);
        }
    }
    settle({});
    return {};
}

void Standing::settle(const std::vector<int64_t>& more) {
    m_off = {more.begin(), more.end()};
    // What takes a group back came later than it.
    for (auto undoing = m_undoes.rbegin(); undoing != m_undoes.rend(); ++undoing)
        if (stands(undoing->first))
            m_off.insert(undoing->second.begin(), undoing->second.end());
}

int64_t Standing::undoneBy(int64_t group) const {
    for (auto undoing = m_undoes.rbegin(); undoing != m_undoes.rend(); ++undoing)
        if (stands(undoing->first) && std::find(undoing->second.begin(), undoing->second.end(),
                                                group) != undoing->second.end())
            return undoing->first;
    return 0;
}

int64_t Standing::lastAnswer(const std::vector<int64_t>& groups, const std::string& login) const {
    const std::set<int64_t> asked(groups.begin(), groups.end());
    for (auto undoing = m_undoes.rbegin(); undoing != m_undoes.rend(); ++undoing) {
        const int64_t group = undoing->first;
        const std::set<int64_t> answered(undoing->second.begin(), undoing->second.end());
        if (stands(group) || asked.empty() ||
            !std::includes(answered.begin(), answered.end(), asked.begin(), asked.end()))
            continue;
        const int64_t by = undoneBy(group);
        return by != 0 && m_logins.at(group) == login && m_logins.at(by) == login ? group : 0;
    }
    return 0;
}

std::set<int64_t> Standing::concerned(const std::vector<int64_t>& groups) const {
    std::set<int64_t> found;
    std::vector<int64_t> open = groups;
    while (!open.empty()) {
        const int64_t group = open.back();
        open.pop_back();
        if (!found.insert(group).second)
            continue;
        if (const auto undoing = m_undoes.find(group); undoing != m_undoes.end())
            open.insert(open.end(), undoing->second.begin(), undoing->second.end());
    }
    return found;
}

} // namespace orvo::history
