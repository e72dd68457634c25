#include "history/Reading.h"

#include "frame/Vocabulary.h"
#include "history/Cuts.h"
#include "history/LoggedChange.h"
#include "history/RecordWords.h"
#include "history/ResourceContents.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <QElapsedTimer>

#include <algorithm>
#include <climits>
#include <map>

namespace orvo::history {

namespace {

/// So many changes are read at once, and for so long in one call of next().
constexpr int portion = 500;
constexpr qint64 longestMs = 50;
/// So many changes make a page as well as its groups do: there may be large ones, one after the
/// other.
constexpr size_t mostInPage = 4000;

void takeHead(const store::Change& change, Group* group) {
    group->id = change.group;
    group->login = change.login;
    group->client = change.client;
    group->place = change.place;
    group->time = change.time;
}

/// Whether a group that takes back these does again what they took back. `left`: so many groups
/// may still be asked for.
store::Status doAgain(store::MaintainedStore& store, int64_t group,
                      const std::vector<int64_t>& undone, int* left, bool* again) {
    store::Status status;
    *again = !undone.empty();
    for (size_t i = 0; i < undone.size() && *again && status.ok(); ++i) {
        *again = undone[i] < group && --*left >= 0; // else it is by hand
        store::LogQuery query;
        query.group = undone[i];
        query.undoing = true;
        std::vector<store::Change> first;
        if (*again)
            status = store.history(query, 1, &first);
        *again = *again && status.ok() && !first.empty();
        bool below = false;
        if (*again)
            status = doAgain(store, undone[i], first.front().undoes, left, &below);
        *again = *again && !below;
    }
    return status;
}

/// The change of that kind by which the group made or deleted the record; none if it did not.
store::Status findIn(store::MaintainedStore& store, const Group& group, int code,
                     const std::pair<const store::TableDef*, std::string>& record,
                     std::vector<store::Change>* found) {
    store::LogQuery query; // by the key: a group may be as long as the log
    query.table = record.first->name;
    query.key = record.second;
    query.above = group.id - 1;
    query.oldestFirst = true;
    constexpr int mostLooked = 10; // others may write to it while the group is made
    std::vector<store::Change> changes;
    store::Status status = store.history(query, mostLooked, &changes);
    found->clear();
    for (store::Change& change : changes)
        if (found->empty() && change.group == group.id && change.code == code)
            found->push_back(std::move(change));
    return status;
}

/// Whether the group writes again what that change of it deletes.
store::Status isWrittenAgain(store::MaintainedStore& store, const Group& group,
                             const store::Change& deletion, bool* again) {
    std::vector<store::Change> found;
    store::Status status;
    if (const store::TableDef* table = tableOf(deletion.table))
        status = findIn(store, group, OrvoEventInsert, {table, deletion.key}, &found);
    *again = !found.empty();
    return status;
}

/// The change with that id; of a record made or deleted that of the one that holds it, as far as
/// the group has it. `gone`: and has not written it again.
store::Status findTop(store::MaintainedStore& store, const Group& group, int64_t id, bool gone,
                      std::vector<store::Change>* top) {
    store::LogQuery query;
    query.above = id - 1;
    query.below = id + 1;
    store::Status status = store.history(query, 1, top);
    std::set<int64_t> seen; // records may stand in a circle
    while (status.ok() && !top->empty() && top->front().code != OrvoEventUpdate &&
           seen.insert(top->front().id).second) {
        std::vector<store::Change> above;
        for (const auto& place : placesOf(logged(top->front())))
            if (status.ok() && above.empty())
                status = findIn(store, group, top->front().code, place, &above);
        bool again = false;
        if (status.ok() && gone && !above.empty())
            status = isWrittenAgain(store, group, above.front(), &again);
        if (above.empty() || again)
            break;
        top->swap(above);
    }
    return status;
}

/// Of a group that rewrites: a deletion of that kind which is one; none if the first ones are not.
store::Status findGone(store::MaintainedStore& store, const Group& group,
                       const store::ChangeCount& kind, std::vector<store::Change>* top) {
    constexpr int mostLooked = 50;
    store::Status status;
    int looked = 0;
    top->clear();
    for (const store::Change& change : group.changes) {
        if (change.table != kind.table || change.code != kind.code)
            continue;
        bool again = false;
        status = isWrittenAgain(store, group, change, &again);
        if (status.ok() && !again)
            return findTop(store, group, change.id, true, top);
        if (!status.ok() || ++looked == mostLooked)
            break;
    }
    return status;
}

/// Whether the tops of a kind of deletions and one of inserts are the same record.
bool isRewriting(const Group& group) {
    for (size_t i = 0; i < group.counts.size(); ++i)
        for (size_t k = 0; k < group.counts.size(); ++k)
            if (group.counts[i].code == OrvoEventDelete &&
                group.counts[k].code == OrvoEventInsert &&
                group.counts[i].table == group.counts[k].table &&
                store::foldedKey(group.tops[i].key) == store::foldedKey(group.tops[k].key))
                return true;
    return false;
}

/// Whether that change moves a record from one that the group deletes to one that it makes.
store::Status isFollower(store::MaintainedStore& store, const Group& group,
                         const store::Change& change, bool* follows) {
    const LoggedChange read = logged(change);
    *follows = read.deed == Deed::Moved && !read.from.empty() && !read.to.empty();
    store::Status status;
    for (const bool isFrom : {true, false}) {
        std::vector<store::Change> found;
        if (*follows && status.ok())
            status = findIn(store, group, isFrom ? OrvoEventDelete : OrvoEventInsert,
                            {read.above, isFrom ? read.from : read.to}, &found);
        *follows = *follows && status.ok() && !found.empty();
    }
    return status;
}

/// The same of a kind of changes: its first one, and the last, which may stand deeper within what
/// was moved to another desktop.
store::Status isFollower(store::MaintainedStore& store, const Group& group,
                         const store::ChangeCount& count, const store::Change& first,
                         bool* follows) {
    *follows = false;
    if (count.code != OrvoEventUpdate || count.part != store::ChangeCount::Place)
        return {};
    store::Status status = isFollower(store, group, first, follows);
    if (!status.ok() || !*follows || count.last == count.first)
        return status;
    store::LogQuery query;
    query.above = count.last - 1;
    query.below = count.last + 1;
    std::vector<store::Change> last;
    status = store.history(query, 1, &last);
    if (!status.ok() || last.empty())
        return status;
    const LoggedChange top = logged(first), read = logged(last.front());
    const auto same = [](const std::string& one, const std::string& other) {
        return store::foldedKey(one) == store::foldedKey(other);
    };
    if (read.deed == Deed::Moved && !top.topFrom.empty() && same(read.from, top.topFrom) &&
        same(read.to, top.topTo))
        return status;
    return isFollower(store, group, last.front(), follows);
}

} // namespace

bool changesNothing(const store::Change& change) {
    if (change.code != OrvoEventUpdate || change.table == store::contentTable().name)
        return false;
    if (change.after == change.before)
        return true;
    const store::TableDef* table = tableOf(change.table);
    if (!table)
        return false;
    // An editor may write an empty text where there was none, which nobody sees.
    const Values after = store::valuesFromJson(*table, change.after);
    const Values before = store::valuesFromJson(*table, change.before);
    const auto isIn = [](const Values& values, const Values& others) {
        return std::all_of(values.begin(), values.end(), [&](const auto& one) {
            const auto other = others.find(one.first);
            return readAlike(one.second, other == others.end() ? store::Value() : other->second);
        });
    };
    return !(after.empty() && before.empty()) && isIn(after, before) && isIn(before, after);
}

std::map<std::string, int64_t> goneByTable(const Group& group) {
    std::map<std::string, int64_t> gone;
    for (const store::ChangeCount& count : group.counts)
        if (count.code != OrvoEventUpdate)
            gone[count.table] += count.code == OrvoEventDelete ? count.count : -count.count;
    return gone;
}

bool isMostlyGone(const Group& group) {
    int64_t deleted = 0, gone = 0;
    for (const store::ChangeCount& count : group.counts)
        deleted += count.code == OrvoEventDelete ? count.count : 0;
    for (const auto& [table, count] : goneByTable(group))
        gone += std::max<int64_t>(count, 0);
    return gone * 2 > deleted;
}

store::Status countGroup(store::MaintainedStore& store, Group* group) {
    if (group->isCounted())
        return {};
    std::vector<store::ChangeCount> counts;
    store::Status status = store.countChanges(group->id, &counts);
    if (status.ok())
        group->count = 0;
    for (const store::ChangeCount& count : counts) {
        std::vector<store::Change> top;
        if (status.ok())
            status = findTop(store, *group, count.first, false, &top);
        if (!status.ok())
            break;
        group->count += count.count;
        group->newest = std::max(group->newest, count.last);
        if (top.empty())
            continue; // pruned meanwhile
        bool follows = false;
        status = isFollower(store, *group, count, top.front(), &follows);
        group->counts.push_back(count);
        group->tops.push_back(std::move(top.front()));
        group->follows.push_back(follows);
    }
    group->rewrites = isRewriting(*group);
    for (size_t i = 0; i < group->counts.size() && group->rewrites && status.ok(); ++i) {
        if (group->counts[i].code != OrvoEventDelete || !isMostlyGone(*group))
            continue;
        std::vector<store::Change> top;
        status = findGone(store, *group, group->counts[i], &top);
        if (!top.empty())
            group->tops[i] = std::move(top.front());
    }
    return status;
}

store::Status readForWords(store::MaintainedStore& store, int64_t id, Group* group) {
    store::Status status = readGroup(store, id, group, Group::mostChanges);
    return status.ok() ? countGroup(store, group) : status;
}

store::Status readGroup(store::MaintainedStore& store, int64_t id, Group* group, int most) {
    store::LogQuery query;
    query.group = id;
    query.oldestFirst = true;
    group->changes.clear();
    const int limit = most < 0 ? INT_MAX : most + 1;
    store::Status status = store.history(query, limit, &group->changes);
    if (!status.ok() || group->changes.empty())
        return status;
    group->whole = group->changes.size() < static_cast<size_t>(limit);
    if (!group->whole)
        group->changes.pop_back();
    takeHead(group->changes.front(), group);
    for (const store::Change& change : group->changes)
        if (!change.undoes.empty())
            group->undoes = change.undoes;
    group->count = static_cast<int64_t>(group->changes.size());
    group->newest = group->changes.back().id;
    group->counts.clear();
    group->tops.clear();
    group->follows.clear();
    group->redoes = false;
    int left = 200; // it was taken back and done again so often
    if (most != 1)  // what is read for its head alone is not told
        status = doAgain(store, group->id, group->undoes, &left, &group->redoes);
    return status;
}

Reader::Reader(store::MaintainedStore& store, Filter filter, BranchMembers* members)
    : m_store(store)
    , m_filter(std::move(filter))
    , m_known(members) {
    m_query.table = m_filter.table;
    m_query.key = m_filter.key;
    m_query.login = m_filter.login;
    m_query.since = m_filter.since;
    m_query.until = m_filter.until;
    m_query.above = m_filter.above;
    if (!m_filter.text.isEmpty())
        m_text.emplace(store, m_filter.text);
}

void Reader::skip(std::set<int64_t> groups, int64_t from) {
    m_given = std::move(groups);
    if (!m_filter.branch) // else each change counts, since it may change what the branch was
        m_query.below = m_from = from;
}

/// The records of the branch as it is now, or what the row is now and the changes of its contents.
store::Status Reader::begin() {
    if (!m_filter.branch) {
        store::Status status;
        if (!m_query.key.empty())
            status = keyAfterCuts(m_store, m_query.table, &m_query.key);
        if (status.ok())
            status = contentChanges(m_store, m_query, &m_contents);
        m_begun = true;
        return status;
    }
    m_begun = true;
    BranchMembers own(*m_filter.branch);
    BranchMembers& members = m_known != nullptr ? *m_known : own;
    store::Status status = members.update(m_store);
    m_members = members.records();
    m_differing.clear();
    return status;
}

bool Reader::isMember(const BranchMembers::Record& record) const {
    const auto differing = m_differing.find(record);
    return differing == m_differing.end() ? m_members->count(record) != 0 : differing->second;
}

/// Going back in time a record joins the branch at the change that took it out, and leaves it at
/// the change that brought it in.
bool Reader::isInBranch(const store::Change& change) {
    const store::TableDef* table = tableOf(change.table);
    if (!table)
        return false;
    const BranchMembers::Record record{change.table, store::foldedKey(change.key)};
    const auto standsIn = [&](const std::string& json) {
        const Values values = store::valuesFromJson(*table, json);
        for (const store::ParentField& parent : linksAbove(*table)) {
            const auto found = values.find(table->find(parent.field));
            if (found != values.end() &&
                isMember({parent.table, store::foldedKey(store::textOf(found->second))}))
                return true;
        }
        return false;
    };
    const bool root =
        m_filter.branch->table == table && store::foldedKey(m_filter.branch->key) == record.second;
    const bool after = isMember(record);
    const bool wasPlaced = change.before.find('"') != std::string::npos;
    const bool before = root || (wasPlaced && standsIn(change.before));
    const bool movedIn = !root && after && standsIn(change.after) && !before;
    if (before)
        m_differing[record] = true;
    else if (movedIn)
        m_differing[record] = false;
    return after || before;
}

/// The next portion of what the database finds, with the changes of contents between, and which of
/// them pass.
store::Status Reader::readPage() {
    m_page = {};
    store::Status status = m_store.history(m_query, portion, &m_page.changes);
    if (!status.ok())
        return status;
    m_page.isLast = m_page.changes.size() < static_cast<size_t>(portion);
    mergeContents(m_contents, m_query.below, m_page.isLast, &m_page.changes);
    if (!m_page.changes.empty())
        m_query.below = m_page.changes.back().id;
    m_page.passes.assign(m_page.changes.size(), true);
    if (m_filter.branch) // each is asked: it may change what the branch was before it
        for (size_t i = 0; i < m_page.changes.size(); ++i)
            m_page.passes[i] = isInBranch(m_page.changes[i]);
    if (m_text)
        m_text->keep(m_page.changes, &m_page.passes);
    if (status.ok() && m_page.isLast && !m_filter.branch && !m_query.key.empty())
        status = followCut();
    return status;
}

store::Status Reader::followCut() {
    store::LogQuery query; // whoever has made it, and when
    query.table = m_query.table;
    query.key = m_query.key;
    query.oldestFirst = true;
    std::vector<store::Change> first;
    store::Status status = m_store.history(query, 1, &first);
    std::optional<store::Change> deletion;
    if (status.ok() && !first.empty() && first.front().id > m_query.above &&
        m_followed.insert(store::foldedKey(m_query.key)).second)
        status = deletionByCut(m_store, first.front(), &deletion);
    if (!status.ok() || !deletion || m_followed.count(store::foldedKey(deletion->key)) != 0)
        return status;
    m_contents.clear();
    m_query.table = deletion->table;
    m_query.key = deletion->key;
    m_query.below = m_from > 0 ? std::min(m_from, deletion->id + 1) : deletion->id + 1;
    m_page.isLast = false;
    return status;
}

store::Status Reader::read(const std::function<bool()>& wantsMore,
                           const std::function<store::Status(store::Change& change)>& take) {
    store::Status status = m_begun ? store::Status() : begin();
    QElapsedTimer time;
    time.start();
    while (status.ok() && !m_end && wantsMore() && time.elapsed() < longestMs) {
        if (m_page.next == m_page.changes.size())
            status = readPage();
        while (status.ok() && m_page.next < m_page.changes.size() && wantsMore()) {
            const size_t at = m_page.next++;
            if (m_page.passes[at])
                status = take(m_page.changes[at]);
        }
        m_end = status.ok() && m_page.isLast && m_page.next == m_page.changes.size();
    }
    return status;
}

store::Status Reader::next(size_t most, std::vector<Group>* groups) {
    std::vector<Group> found;
    size_t count = 0;
    store::Status status =
        read([&] { return found.size() < most && count < mostInPage; },
             [&](const store::Change& change) -> store::Status {
                 if (!m_given.insert(change.group).second)
                     return {};
                 Group group;
                 store::Status done = readGroup(m_store, change.group, &group, Group::mostChanges);
                 count += group.changes.size();
                 group.newest = std::max(group.newest, change.id);
                 const auto saysNothing = [](const Group& all) {
                     return std::all_of(all.changes.begin(), all.changes.end(), changesNothing);
                 };
                 bool isTold = !saysNothing(group);
                 if (done.ok() && !isTold && !group.whole) {
                     Group all;
                     done = readGroup(m_store, change.group, &all);
                     isTold = !saysNothing(all);
                 }
                 if (done.ok() && isTold)
                     found.push_back(std::move(group));
                 return done;
             });
    if (status.ok())
        std::move(found.begin(), found.end(), std::back_inserter(*groups));
    return status;
}

store::Status Reader::nextChanges(size_t most, std::vector<store::Change>* changes) {
    std::vector<store::Change> found;
    store::Status status = read([&] { return found.size() < most; },
                                [&](store::Change& change) -> store::Status {
                                    found.push_back(std::move(change));
                                    return {};
                                });
    if (status.ok())
        std::move(found.begin(), found.end(), std::back_inserter(*changes));
    return status;
}

} // namespace orvo::history
