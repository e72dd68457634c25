// UndoActions.h: the commands that take the own actions back one by one, and do them again.
//
// What comes next is read from the change log (history/Steps.h) beside the window. A key pressed
// while that is not known, or while another one is being carried out, waits its turn.
//
// Invariants:
// 1. Only what the log told after the last known change of the store is offered or taken back.
// 2. The action in the text of a command is the one that it takes back.
// 3. One step at a time: the next one begins when the last has been answered.
#ifndef ORVO_APPS_CLIENT_HISTORY_UNDOACTIONS_H
#define ORVO_APPS_CLIENT_HISTORY_UNDOACTIONS_H

#include "apps/client/history/Reverter.h"
#include "history/Steps.h"

#include <QAction>
#include <QTimer>

#include <deque>
#include <map>
#include <set>

namespace orvo::app {

class UndoActions : public QObject {
    Q_OBJECT
public:
    /// Thread and reverter outlive it. `mayWrite` false: the commands stay switched off.
    UndoActions(StoreThread& thread, Reverter& reverter, history::Actor actor, bool mayWrite);

    void setMayWrite(bool may);

    QAction* undo() { return &m_undo; }
    QAction* redo() { return &m_redo; }

    /// The store has been written here, so the steps are other ones.
    void outdate();
    /// A change of the store, by whomever.
    void changed(const store::Change& change);
    /// The log is another one, or its beginning is gone.
    void logLost();
    /// Whether the steps are known and nothing waits.
    bool isIdle() const;

signals:
    void told(int level, const QString& text);

private:
    void read();
    void answered(const store::Status& status, const history::Steps& steps);
    void show();
    void press(bool redo);
    void next();
    void finished(const history::Steps::Step& step, const Reverter::End& end);

    StoreThread& m_thread;
    Reverter& m_reverter;
    const history::Actor m_actor;
    bool m_mayWrite;
    QAction m_undo;
    QAction m_redo;
    QTimer m_readSoon;
    history::Steps m_steps;
    /// Groups of which nothing is left to be taken back, or which the user has left, with the
    /// actions that stand in the way: once one of those is taken back, the group comes again.
    std::map<int64_t, std::set<int64_t>> m_passed;
    bool m_fresh = false; ///< m_steps is what the log says
    bool m_reading = false;
    bool m_outdated = false;    ///< while it was being read
    bool m_isStepping = false;  ///< the reverter works for this object
    std::deque<bool> m_presses; ///< that wait; true: redo
};

} // namespace orvo::app

#endif
