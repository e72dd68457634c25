// Reverter.h: takes actions of the history back, for a key or for the history's pane: asks about
// open edits first, shows what would be written where that is wanted or something has to be
// decided, writes it in one transaction beside the window, and tells what came of it.
//
// What is written comes back to the modules as any change of the store does.
//
// Invariants: 1 one request at a time; 2 each that was begun ends with one call of its Finished;
// 3 the dialog exists only while a request does; 4 of what was shown in it exactly that is written:
// if others have written meanwhile, the new plan is shown.
#ifndef ORVO_APPS_CLIENT_HISTORY_REVERTER_H
#define ORVO_APPS_CLIENT_HISTORY_REVERTER_H

#include "apps/client/StoreThread.h"
#include "apps/client/history/RevertPlan.h"

#include <QPointer>

#include <functional>
#include <memory>
#include <optional>
#include <set>

namespace orvo::app {

class CloseGuard;
class RevertDialog;

class Reverter : public QObject {
    Q_OBJECT
public:
    enum class Outcome {
        Written,
        NothingLeft, ///< there was nothing to write; why, was told
        GivenUp,     ///< by the user
        Failed,
    };
    struct End {
        Outcome outcome;
        /// If nothing was written although there was a plan: the actions that stood in the way.
        std::set<int64_t> because;
    };
    using Finished = std::function<void(const End& end)>;
    /// Finds what is to be taken back, in the thread of the store.
    using Collect =
        std::function<store::Status(store::MaintainedStore& store, history::Selection* selection)>;

    struct Request {
        QString title; ///< "Отменить: переместить «Котельная»"
        QString done;  ///< "Отменено: переместить «Котельная»"
        history::Selection selection;
        Collect collect;      ///< finds it; null: it is known
        bool preview = false; ///< ask in any case
    };

    /// All of these outlive it.
    Reverter(StoreThread& thread, CloseGuard& guard, QWidget* window);
    ~Reverter() override;

    /// Why nothing can be taken back at the moment; empty: it can.
    void setCheck(std::function<QString()> check) { m_check = std::move(check); }
    bool isBusy() const { return m_request.has_value(); }
    /// False if it did not begin, with the reason told.
    bool start(Request request, Finished finished);

signals:
    /// What the user should read; the numbers are those of COrvoCliMod::LogFile.
    void told(int level, const QString& text);
    void busyChanged(bool busy, const QString& title);
    /// What was written has a place in the trees only after the modules are opened anew.
    void reopenNeeded(const QString& command);

private:
    void begin();
    void plan();
    /// Without having shown anything: by a plan of that moment.
    void write();
    void writeShown();
    void showDialog(const QString& note = {});
    void planned(uint64_t round, const store::Status& status,
                 const std::shared_ptr<RevertPlan>& plan);
    void written(const store::Status& status, const RevertPlan& plan);
    void tellWritten(const RevertPlan& plan);
    void finish(Outcome outcome, const RevertPlan* plan = nullptr);

    StoreThread& m_thread;
    CloseGuard& m_guard;
    QWidget* const m_window;
    std::function<QString()> m_check;
    std::optional<Request> m_request;
    Finished m_finished;
    history::Choices m_choices;
    QPointer<RevertDialog> m_dialog;     ///< deletes itself when closed
    std::shared_ptr<RevertPlan> m_shown; ///< in the dialog; null: none yet
    uint64_t m_round = 0;                ///< of planning: earlier answers are outdated
    bool m_writing = false;
};

} // namespace orvo::app

#endif
