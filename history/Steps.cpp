#include "history/Steps.h"

#include "history/GroupWords.h"
#include "history/Locks.h"
#include "history/Reading.h"
#include "history/Standing.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace orvo::history {

namespace {

constexpr int portionOfSteps = 100;

bool isNoEdit(const store::Change& change) {
    return isLockOnly(change) || changesNothing(change);
}

class Walk {
public:
    Walk(store::MaintainedStore& store, const Actor& actor, const std::set<int64_t>& passed)
        : m_store(store)
        , m_actor(actor)
        , m_passed(passed) {}

    store::Status walk(Steps* steps);

private:
    enum class Kind { Action, Undo, Redo };
    struct Head {
        bool known = false; ///< the log tells of it
        std::string login, client;
        std::vector<int64_t> undoes;
        bool mayBeNoEdit = false; ///< as far as its first change tells
    };

    store::Status head(int64_t group, const Head** head);
    store::Status kindOf(int64_t group, Kind* kind, int64_t* action);
    store::Status visit(int64_t group, const Standing& standing, Steps* steps);
    store::Status words(int64_t group, QString* words);
    /// Whether the action only takes or releases locks, or changes nothing at all.
    store::Status areNoEdits(int64_t group, bool* all);

    store::MaintainedStore& m_store;
    const Actor& m_actor;
    const std::set<int64_t>& m_passed;
    std::map<int64_t, Head> m_heads;
    bool m_redoEnds = false;
    bool m_done = false;
    int64_t m_redone = 0; ///< the action that the redo does again
};

store::Status Walk::head(int64_t group, const Head** head) {
    const auto [found, fresh] = m_heads.try_emplace(group);
    *head = &found->second;
    if (!fresh)
        return {};
    Group read;
    store::Status status = readGroup(m_store, group, &read, 1);
    if (status.ok() && !read.changes.empty())
        found->second = {true, read.login, read.client, read.undoes,
                         isNoEdit(read.changes.front())};
    return status;
}

/// `action`: of a step, the action that it is about.
store::Status Walk::kindOf(int64_t group, Kind* kind, int64_t* action) {
    *kind = Kind::Action;
    *action = group;
    // A step is newer than what it takes back, so this ends; in a log by hand it need not.
    constexpr int longest = 100000;
    bool undoing = false;
    for (int i = 0; i < longest; ++i) {
        const Head* step = nullptr;
        store::Status status = head(*action, &step);
        if (!status.ok())
            return status;
        if (step->undoes.size() != 1)
            break;
        const int64_t target = step->undoes.front();
        const Head* undone = nullptr;
        status = head(target, &undone);
        if (!status.ok())
            return status;
        if (!undone->known || undone->login != m_actor.login || target >= *action)
            break;
        *action = target;
        undoing = !undoing;
        *kind = undoing ? Kind::Undo : Kind::Redo;
    }
    return {};
}

store::Status Walk::visit(int64_t group, const Standing& standing, Steps* steps) {
    const Head* known = nullptr;
    store::Status status = head(group, &known);
    if (!status.ok() || !known->known ||
        (!known->client.empty() && known->client != m_actor.client))
        return status;
    Kind kind = Kind::Action;
    int64_t action = group;
    status = kindOf(group, &kind, &action);
    if (!status.ok())
        return status;
    const bool counts = standing.stands(group) && m_passed.count(group) == 0;
    bool noEdit = false;
    if (kind == Kind::Action && known->mayBeNoEdit)
        status = areNoEdits(group, &noEdit);
    if (!status.ok() || noEdit)
        return status;
    if (kind == Kind::Action) {
        m_redoEnds = true;
        if (counts) {
            steps->undo.group = group;
            m_done = true;
        }
    } else if (kind == Kind::Undo && counts && !m_redoEnds && steps->redo.group == 0) {
        steps->redo.group = group;
        m_redone = action;
    }
    return {};
}

store::Status Walk::areNoEdits(int64_t group, bool* all) {
    Group read;
    store::Status status = readGroup(m_store, group, &read, Group::mostChanges);
    *all = read.whole && std::all_of(read.changes.begin(), read.changes.end(), isNoEdit);
    return status;
}

store::Status Walk::words(int64_t group, QString* words) {
    if (group == 0)
        return {};
    Group read;
    store::Status status = readForWords(m_store, group, &read);
    if (!status.ok())
        return status;
    LoggedRecords source(m_store);
    *words = commandWords(read, source);
    return {};
}

store::Status Walk::walk(Steps* steps) {
    store::LogQuery query;
    query.login = m_actor.login;
    std::set<int64_t> seen;
    while (!m_done) {
        std::vector<store::Change> changes;
        store::Status status = m_store.history(query, portionOfSteps, &changes);
        if (!status.ok())
            return status;
        std::vector<int64_t> groups;
        for (const store::Change& change : changes)
            if (seen.insert(change.group).second)
                groups.push_back(change.group);
        Standing standing;
        if (!groups.empty())
            status = standing.read(m_store, groups);
        for (const int64_t group : groups)
            if (status.ok() && !m_done)
                status = visit(group, standing, steps);
        if (!status.ok())
            return status;
        if (changes.size() < static_cast<size_t>(portionOfSteps))
            break;
        // A long action is not read to its beginning.
        query.below = changes.front().group == changes.back().group
                          ? std::min(changes.back().id, changes.front().group)
                          : changes.back().id;
    }
    store::Status status = words(steps->undo.group, &steps->undo.words);
    return status.ok() ? words(m_redone, &steps->redo.words) : status;
}

} // namespace

store::Status readSteps(store::MaintainedStore& store, const Actor& actor,
                        const std::set<int64_t>& passed, Steps* steps) {
    *steps = {};
    return Walk(store, actor, passed).walk(steps);
}

} // namespace orvo::history
