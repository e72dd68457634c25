#include "apps/client/history/HistoryFeed.h"

#include "apps/client/history/HistoryActions.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/GroupWords.h"
#include "history/Standing.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <QDateTime>

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>
#include <utility>

namespace orvo::app {

namespace {

constexpr int refreshDelayMs = 200; ///< a burst of changes is looked at once
constexpr size_t mostNewer = 200;   ///< beyond them the history is read from the newest on again

QString momentText(double time) {
    return QDateTime::fromMSecsSinceEpoch(std::llround(time * 1000.0))
        .toString(Text::tr("dd.MM.yyyy HH:mm"));
}

} // namespace

struct HistoryFeed::Reading {
    explicit Reading(history::Filter wanted) : filter(std::move(wanted)) {}

    const history::Filter filter;
    /// These groups are on show, and those with later changes than this; 0: none are.
    std::set<int64_t> shown;
    int64_t below = 0;
    std::unique_ptr<history::Reader> reader; ///< null at first
    uint64_t opening = 0;                    ///< on which it reads

    /// To be called when the branch was brought up to date.
    HistoryScope scope() const { return {filter, m_members ? m_members->records() : nullptr}; }
    /// The records of the filter's branch; null if it has none.
    history::BranchMembers* members(const StoreThread& thread) {
        if (!filter.branch)
            return nullptr;
        if (!m_members || m_membersOf != thread.openings())
            m_members = std::make_unique<history::BranchMembers>(*filter.branch);
        m_membersOf = thread.openings();
        return m_members.get();
    }

private:
    std::unique_ptr<history::BranchMembers> m_members;
    uint64_t m_membersOf = 0; ///< the opening
};

struct HistoryFeed::Page {
    std::vector<HistoryAction> actions;
    bool atEnd = false;
    bool isRestart = false; ///< from the newest on, since the place was lost
    int64_t position = 0;   ///< the newest change of the log before the page was read
    std::set<int64_t> undone;
    bool knowsOldest = false;
    store::Change oldest; ///< of the log; id 0: it is empty
    int64_t firstOfLog() const {
        return oldest.id == 0 ? std::numeric_limits<int64_t>::max() : oldest.id;
    }
    bool hasNames = false;
    history::PersonNames names;

    /// What every page brings beside its actions. `from`: the oldest group that is shown.
    store::Status finish(store::MaintainedStore& store, const std::vector<history::Group>& groups,
                         const HistoryScope& scope, int64_t from, bool withNames) {
        history::LoggedRecords source(store);
        for (const history::Group& group : groups)
            if (!group.changes.empty()) {
                actions.push_back(actionOf(group, scope, source));
                from = from == 0 ? group.id : std::min(from, group.id);
            }
        store::Status status;
        if (from != 0) {
            history::Standing standing;
            status = standing.read(store, {from});
            if (status.ok())
                undone = standing.undone();
        }
        store::LogQuery query;
        query.oldestFirst = true;
        std::vector<store::Change> first;
        if (status.ok())
            status = store.history(query, 1, &first);
        knowsOldest = status.ok();
        if (!first.empty())
            oldest = first.front();
        if (status.ok() && withNames) {
            status = history::readPeople(store, &names);
            hasNames = status.ok();
        }
        for (HistoryAction& action : actions)
            action.undone = undone.count(action.group) != 0;
        return status;
    }
};

HistoryFeed::HistoryFeed(StoreThread& thread) : m_thread(thread) {
    connect(&m_model, &HistoryModel::moreWanted, this, &HistoryFeed::more);
    connect(&m_model, &HistoryModel::detailsWanted, this, &HistoryFeed::details);
    connect(&m_model, &HistoryModel::textsWanted, this, &HistoryFeed::texts);
    connect(&m_model, &HistoryModel::tailRemoved, this, [this] {
        ++m_round;
        m_reading = std::make_shared<Reading>(m_filter);
        m_reading->shown = m_model.groups();
        m_reading->below = m_model.lastShown();
    });
    m_refreshSoon.setSingleShot(true);
    m_refreshSoon.setInterval(refreshDelayMs);
    connect(&m_refreshSoon, &QTimer::timeout, this, &HistoryFeed::refresh);
    setFilter({});
}

HistoryFeed::~HistoryFeed() = default;

void HistoryFeed::setFilter(const history::Filter& filter) {
    m_filter = filter;
    reload();
}

void HistoryFeed::reload() {
    ++m_round;
    m_reading = std::make_shared<Reading>(m_filter);
    m_begun = m_outdated = m_refreshing = m_searches = false;
    m_newest = 0;
    m_model.clear();
    emit noted(QString());
    if (m_watched)
        m_model.wantMore();
}

void HistoryFeed::setWatched(bool watched) {
    if (m_watched == watched)
        return;
    m_watched = watched;
    if (!watched)
        return;
    if (!m_begun)
        reload();
    else if (m_outdated)
        refresh();
    if (std::exchange(m_searches, false))
        m_model.wantMore();
}

void HistoryFeed::changed(const store::Change& change) {
    m_namesAreOld = m_namesAreOld || change.table == table::Users;
    if (m_watched && !m_begun)
        reload(); // what failed before can be read now
    else if (!m_watched || m_refreshing)
        m_outdated = true;
    else if (!m_refreshSoon.isActive())
        m_refreshSoon.start();
}

void HistoryFeed::take(const Page& page) {
    if (page.hasNames) {
        m_names = page.names;
        m_namesAreOld = false;
        emit namesChanged();
    }
    m_model.setNames(m_names);
    if (page.knowsOldest)
        m_model.setOldest(page.firstOfLog());
}

/// Large actions are counted behind the page, which need not wait for it.
void HistoryFeed::count(const Page& page) {
    for (const HistoryAction& action : page.actions)
        if (!action.isCounted)
            texts({action.group});
}

void HistoryFeed::note(const Page& page) {
    if (!m_model.isAtEnd())
        emit noted(QString());
    else if (page.oldest.id > 1)
        emit noted(Text::tr("Журнал изменений начинается %1: более раннее очищено.")
                       .arg(momentText(page.oldest.time)));
    else
        emit noted(m_model.count() == 0 ? Text::tr("Таких действий нет.") : QString());
}

// Older ones -------------------------------------------------------------------------------------

void HistoryFeed::more() {
    assert(m_reading);
    m_begun = true;
    auto page = std::make_shared<Page>();
    m_thread.run(
        this,
        [page, reading = m_reading, thread = &m_thread, from = m_model.oldestGroup(),
         names = m_namesAreOld](store::MaintainedStore& store) -> store::Status {
            store::Status status = store.logPosition(&page->position);
            if (!status.ok())
                return status;
            if (!reading->reader || reading->opening != thread->openings()) {
                page->isRestart = reading->reader != nullptr;
                reading->reader = std::make_unique<history::Reader>(store, reading->filter,
                                                                    reading->members(*thread));
                if (!page->isRestart)
                    reading->reader->skip(reading->shown, reading->below);
                reading->opening = thread->openings();
            }
            std::vector<history::Group> groups;
            status = reading->reader->next(pageSize, &groups);
            page->atEnd = reading->reader->atEnd();
            return status.ok() ? page->finish(store, groups, reading->scope(),
                                              page->isRestart ? 0 : from, names)
                               : status;
        },
        [this, page, round = m_round](const store::Status& status) {
            moreCame(round, status, *page);
        });
}

void HistoryFeed::moreCame(uint64_t round, const store::Status& status, const Page& page) {
    if (round != m_round)
        return;
    if (!status.ok()) {
        m_model.append({}, true); // nothing more is asked for until it is read anew
        m_begun = false;
        emit failed(QString::fromStdString(status.text));
        return;
    }
    if (page.isRestart)
        m_model.clear();
    if (m_newest == 0 || page.isRestart)
        m_newest = page.position;
    m_model.append(page.actions, page.atEnd);
    take(page);
    count(page);
    m_model.setUndone(page.undone);
    if (page.actions.empty() && !page.atEnd) {
        emit noted(Text::tr("Ищется дальше…"));
        m_searches = !m_watched; // goes on when somebody looks again
        if (m_watched)
            m_model.wantMore();
        return;
    }
    note(page);
    if (std::exchange(m_outdated, false))
        m_refreshSoon.start();
}

// Newer ones -------------------------------------------------------------------------------------

void HistoryFeed::refresh() {
    if (!m_watched || m_refreshing || !m_begun) {
        m_outdated = true;
        return;
    }
    m_outdated = false;
    assert(m_reading && m_watched && !m_refreshing);
    m_refreshing = true;
    auto page = std::make_shared<Page>();
    m_thread.run(
        this,
        [page, reading = m_reading, thread = &m_thread, newest = m_newest,
         from = m_model.oldestGroup(),
         names = m_namesAreOld](store::MaintainedStore& store) -> store::Status {
            store::Status status = store.logPosition(&page->position);
            if (!status.ok())
                return status;
            history::Filter newer = reading->filter;
            newer.above = newest;
            history::Reader reader(store, newer, reading->members(*thread));
            std::vector<history::Group> groups;
            status = reader.next(mostNewer, &groups);
            // So many that they do not meet those on show: from the newest on.
            page->isRestart = !reader.atEnd();
            return status.ok() ? page->finish(store, groups, reading->scope(), from, names)
                               : status;
        },
        [this, page, round = m_round](const store::Status& status) {
            newerCame(round, status, *page);
        });
}

void HistoryFeed::newerCame(uint64_t round, const store::Status& status, const Page& page) {
    if (round != m_round)
        return;
    m_refreshing = false;
    if (!status.ok()) {
        m_outdated = true;
        emit failed(QString::fromStdString(status.text));
        return;
    }
    if (page.isRestart) {
        reload();
        return;
    }
    m_newest = page.position;
    m_model.prepend(page.actions);
    take(page);
    count(page);
    m_model.setUndone(page.undone);
    note(page);
    if (std::exchange(m_outdated, false))
        m_refreshSoon.start();
}

// Texts of a row, and below it -------------------------------------------------------------------

void HistoryFeed::texts(const std::vector<int64_t>& groups) {
    auto page = std::make_shared<Page>();
    m_thread.run(
        this,
        [page, groups, reading = m_reading](store::MaintainedStore& store) {
            store::Status status;
            std::vector<history::Group> read;
            for (const int64_t id : groups) {
                history::Group group;
                if (status.ok())
                    status = history::readForWords(store, id, &group);
                group.id = id;
                read.push_back(std::move(group));
            }
            const int64_t from = *std::min_element(groups.begin(), groups.end());
            if (status.ok())
                status = page->finish(store, read, reading->scope(), from, false);
            for (const history::Group& group : read)
                if (group.changes.empty())
                    page->actions.push_back(forgottenAction(group.id));
            return status;
        },
        [this, page, round = m_round](const store::Status& status) {
            if (round != m_round || !status.ok()) {
                m_model.askAgain();
                return;
            }
            m_model.fill(page->actions);
            m_model.setNames(m_names);
            m_model.setOldest(page->firstOfLog());
        });
}

void HistoryFeed::details(int64_t group) {
    auto details = std::make_shared<std::vector<HistoryAction::Detail>>();
    m_thread.run(
        this,
        [details, group](store::MaintainedStore& store) {
            history::Group read;
            store::Status status = history::readGroup(store, group, &read, mostDetails);
            history::LoggedRecords source(store);
            source.prepareUpdated(read.changes);
            if (status.ok())
                *details = detailsOf(read, source);
            return status;
        },
        [this, details, group](const store::Status& status) {
            if (status.ok())
                m_model.setDetails(group, *details);
            else
                m_model.setDetails(group, {{QString::fromStdString(status.text), {}, {}, {}, {}}});
        });
}

} // namespace orvo::app
