// ProblemsFeed.h: keeps the list of problems as the store is, and puts right what is certain.
//
// The rules run in the thread of the catalogue, as its listener; here are rows in words. Cures are
// planned in that thread and written in one of the store, in one transaction: the window waits for
// neither. While that is committed, a write of the window to a store in a file waits for it, as for
// any other writer. What a cure writes comes back as any change does.
//
// Invariants; 1 and 2 are asserted in debug builds:
// 1. One cure is made at a time, and ends with the plan that it began with.
// 2. Its progress is told as long as it is made, and at no other time.
// 3. What concerns the rules is the catalogue's thread's alone; model and counts are this one's,
//    and are those of one update.
#ifndef ORVO_APPS_CLIENT_PROBLEMS_PROBLEMSFEED_H
#define ORVO_APPS_CLIENT_PROBLEMS_PROBLEMSFEED_H

#include "apps/client/StoreThread.h"
#include "apps/client/problems/ProblemsModel.h"
#include "catalogue/LiveCatalogue.h"

#include <QTimer>

#include <memory>
#include <vector>

namespace orvo::app {

class ProblemsFeed : public QObject {
    Q_OBJECT
public:
    /// The catalogue, which is not started yet, outlives it. `seen`: the log has this change.
    ProblemsFeed(catalogue::LiveCatalogue& live, StoreThread::Opener open, int64_t seen);
    ~ProblemsFeed() override;

    ProblemsModel& model() { return m_model; }
    size_t errors() const { return m_errors; }
    size_t warnings() const { return m_warnings; }
    /// Whether everything has been looked at once.
    bool isKnown() const { return m_known; }

    /// The log was replaced or goes on elsewhere; the catalogue is loaded anew after that.
    void restart(int64_t seen) { m_seen = seen; }
    /// A change of the log; the catalogue is told of it, too.
    void changed(const store::Change& change);
    /// Puts these right, as one action, beside the window; what it came to is told. One at a time:
    /// nothing happens while isCuring().
    void cure(std::vector<checks::Finding> findings);
    bool isCuring() const { return m_plan != nullptr; }
    /// How far that is, in words.
    QString cureProgress() const;
    /// Gives it up; nothing is written then, unless all of it is already.
    void stopCure();

signals:
    void countChanged();
    /// isCuring(), or how far it is.
    void cureChanged();
    /// What the user should read; the numbers are those of COrvoCliMod::LogFile.
    void told(int level, const QString& text);
    /// What was put right has a place in the trees only after the modules are opened again.
    void reopenNeeded(const QString& command);

private:
    class Watcher;
    struct Update;
    struct Plan;

    void take(Update& update);
    void readContents();
    void write(const std::shared_ptr<Plan>& plan);
    void finish(const Plan& plan, const store::Status& status);

    catalogue::LiveCatalogue& m_live;
    StoreThread m_thread;
    ProblemsModel m_model;
    std::shared_ptr<Watcher> m_watcher; ///< of the catalogue's thread
    std::shared_ptr<Plan> m_plan;       ///< what is being cured; null: nothing
    QTimer m_progress;                  ///< of that
    QTimer m_rewordSoon;                ///< where more changes than words were written anew
    int64_t m_seen;
    size_t m_errors = 0, m_warnings = 0;
    bool m_known = false;
};

} // namespace orvo::app

#endif
