// HistoryFeed.h: brings the history into its model: a page whenever the view scrolls to its end,
// what is made meanwhile, and what is below a row. Everything is read beside the window.
//
// Invariants; 1 and 2 are asserted in debug builds:
// 1. There is a reader of the filter that is set; nothing is read before it was asked for.
// 2. Newer ones are looked for once at a time, while somebody looks.
// 3. An answer to what was asked before the filter was set, or the log was read anew, is dropped.
// 4. While nobody looks nothing newer is read: what has changed is remembered.
#ifndef ORVO_APPS_CLIENT_HISTORY_HISTORYFEED_H
#define ORVO_APPS_CLIENT_HISTORY_HISTORYFEED_H

#include "apps/client/StoreThread.h"
#include "apps/client/history/HistoryModel.h"
#include "history/Reading.h"

#include <QTimer>

#include <memory>

namespace orvo::app {

class HistoryFeed : public QObject {
    Q_OBJECT
public:
    static constexpr size_t pageSize = 40;

    /// The thread outlives it.
    explicit HistoryFeed(StoreThread& thread);
    ~HistoryFeed() override;

    HistoryModel& model() { return m_model; }
    const HistoryModel& model() const { return m_model; }
    /// Shows what the filter lets pass, from the newest on.
    void setFilter(const history::Filter& filter);
    const history::Filter& filter() const { return m_filter; }
    /// Whether anybody looks: nothing is read while nobody does.
    void setWatched(bool watched);
    /// A change of the store.
    void changed(const store::Change& change);
    /// The log is another one, or its beginning is gone.
    void reload();
    /// Users by login, as the last page knew them.
    const history::PersonNames& names() const { return m_names; }

signals:
    /// What there is to know about the whole: that it is being looked for, where the log begins.
    void noted(const QString& text);
    void namesChanged();
    void failed(const QString& text);

private:
    struct Reading; ///< the reader of the filter; the thread's
    struct Page;

    void more();
    void moreCame(uint64_t round, const store::Status& status, const Page& page);
    void refresh();
    void newerCame(uint64_t round, const store::Status& status, const Page& page);
    void texts(const std::vector<int64_t>& groups);
    void details(int64_t group);
    void take(const Page& page);
    void count(const Page& page);
    void note(const Page& page);

    StoreThread& m_thread;
    HistoryModel m_model;
    history::Filter m_filter;
    std::shared_ptr<Reading> m_reading;
    history::PersonNames m_names; ///< by login
    QTimer m_refreshSoon;
    uint64_t m_round = 0; ///< of the filter: earlier answers are outdated
    int64_t m_newest = 0; ///< the log had this change at the last look for newer ones
    bool m_watched = false;
    bool m_begun = false;    ///< something was asked for since the filter was set
    bool m_outdated = false; ///< while nobody looked, or while newer ones were looked for
    bool m_refreshing = false;
    bool m_searches = false; ///< a search has not reached the end, and nobody looks
    bool m_namesAreOld = true;
};

} // namespace orvo::app

#endif
