// Reading.h: the change log as actions of users, newest first, a page at a time.
#ifndef ORVO_HISTORY_READING_H
#define ORVO_HISTORY_READING_H

#include "history/BranchMembers.h"
#include "history/TextMatch.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvo::history {

/// Whether the change left the values of its record as they were: the echo of a content, or a write
/// whose fields others had changed first. One of a content has put bytes there even then.
bool changesNothing(const store::Change& change);

/// What one action wrote.
struct Group {
    int64_t id = 0; ///< of its first change
    std::string login, client, place;
    double time = 0;
    std::vector<store::Change> changes; ///< in the order of the log, at most mostChanges
    bool whole = true;                  ///< false: it has more changes than are here
    int64_t count = 0;                  ///< of its changes, as far as they were counted
    int64_t newest = 0;                 ///< the last of these
    /// If it was read in part and counted, all its changes by kinds; and for each kind the change
    /// that it begins with, of records made or deleted the one that holds that record. If most of
    /// what it deletes is gone, so are those that stand here for it, as far as some of them tell.
    std::vector<store::ChangeCount> counts;
    std::vector<store::Change> tops;
    /// For each kind whether it moves records from what the group deletes to what it makes, as far
    /// as the first and the last of that kind tell: those in a branch that was cut.
    std::vector<bool> follows;
    /// Whether it writes again what it deletes, as far as the tops tell: a load with --replace.
    bool rewrites = false;
    std::vector<int64_t> undoes; ///< the groups that it takes back
    bool redoes = false; ///< all that it takes back took something back, so it does that again

    /// Whether the words for it hold for all its changes.
    bool isCounted() const { return whole || !counts.empty(); }

    static constexpr int mostChanges = 2000;
};

/// Which groups are wanted: those with a change that every given condition lets pass.
struct Filter {
    std::string table; ///< of this table
    std::string key;   ///< of the record with this key, of those from which it was cut, and of
                       ///< what it was cut to; of a form or file its contents as well
    std::optional<std::string> login; ///< by this login; empty: by hand
    std::optional<double> since;      ///< made at that time or later
    std::optional<double> until;      ///< made before that time
    int64_t above = 0;                ///< with a higher number than this
    std::optional<Branch> branch;     ///< of a record that stands in it, or stood there then
    QString text;                     ///< in which the text is to be read: TextMatch.h
};

/// Reads the history from its newest group back. Groups that are made meanwhile do not show, nor do
/// those that changed nothing.
///
/// Table, key, login and times are found by the database. Branch and text are looked for in what
/// those leave, a portion a call, so that no call takes long however long the log is.
class Reader {
public:
    /// `members`: of the filter's branch, if somebody keeps them for several readers; they are
    /// brought up to date. They outlive the first reading.
    Reader(store::MaintainedStore& store, Filter filter, BranchMembers* members = nullptr);

    /// Passes over these groups and, unless the filter has a branch, over all changes from that one
    /// on (0: none): they are known. To be called before the first reading.
    void skip(std::set<int64_t> groups, int64_t from);
    /// Adds the next groups, at most `most` of them, in the order of their last changes. May add
    /// fewer, or none, although there are more. Large ones are not counted.
    store::Status next(size_t most, std::vector<Group>* groups);
    /// The same with single changes, newest first.
    store::Status nextChanges(size_t most, std::vector<store::Change>* changes);
    bool atEnd() const { return m_end; }

private:
    store::Status begin();
    /// Hands over the next changes that pass, while more are wanted and not for too long.
    store::Status read(const std::function<bool()>& wantsMore,
                       const std::function<store::Status(store::Change& change)>& take);
    bool isInBranch(const store::Change& change);
    bool isMember(const BranchMembers::Record& record) const;
    store::Status readPage();
    /// Goes on with the record from which that one was cut whose changes have ended.
    store::Status followCut();

    store::MaintainedStore& m_store;
    const Filter m_filter;
    std::optional<TextMatch> m_text;
    BranchMembers* const m_known; ///< null: nobody keeps them
    store::LogQuery m_query;
    bool m_begun = false;
    bool m_end = false;
    std::set<int64_t> m_given; ///< ids of groups
    /// Records of the branch as it was when reading began, and what is different at the place that
    /// reading has reached: whether that record was one.
    std::shared_ptr<const BranchMembers::Records> m_members;
    std::map<BranchMembers::Record, bool> m_differing;
    /// If the filter's key is that of a form or file: those of its contents, the newest first.
    std::vector<store::Change> m_contents;
    int64_t m_from = 0;               ///< all changes from that one on are known; 0: none
    std::set<std::string> m_followed; ///< folded keys of the record, through all cuts
    /// What was read and judged last, some of which may be left for the next call.
    struct Page {
        std::vector<store::Change> changes;
        std::vector<bool> passes; ///< the filter; for each change
        size_t next = 0;          ///< the first that was not handed over
        bool isLast = false;
    };
    Page m_page;
};

/// Of a group that was counted and rewrites: how many records of each table are gone at least;
/// below 0: so many more are there.
std::map<std::string, int64_t> goneByTable(const Group& group);
/// Whether more than half of what it deletes is gone.
bool isMostlyGone(const Group& group);

/// The group with that id, with all its changes or the first `most` of them; without changes if the
/// log does not tell of it.
store::Status readGroup(store::MaintainedStore& store, int64_t id, Group* group, int most = -1);
/// Counts the changes of a group that was read in part, so that the words for it hold for all of
/// them. Takes as long as the group is large: 100,000 changes some 50 ms.
store::Status countGroup(store::MaintainedStore& store, Group* group);
/// Reads as much of the group as the words for it need, and counts the rest.
store::Status readForWords(store::MaintainedStore& store, int64_t id, Group* group);

} // namespace orvo::history

#endif
