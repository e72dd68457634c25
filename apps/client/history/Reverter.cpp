#include "apps/client/history/Reverter.h"

#include "apps/client/CloseGuard.h"
#include "apps/client/LogPane.h"
#include "apps/client/history/RevertDialog.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/RecordWords.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace orvo::app {

namespace {

constexpr int mostLinesTold = 20;

bool hasText(const store::TableDef& table, const store::Write& write, const char* field) {
    const int number = table.find(field);
    return std::any_of(write.values.begin(), write.values.end(), [&](const auto& value) {
        return value.first == number && !store::textOf(value.second).empty();
    });
}

/// The editors give no row to some of what they have not made themselves: a desktop without a
/// folder, a folder of resources, a file at the top of the file area.
bool staysOutOfTrees(const history::Inverse& inverse) {
    for (const store::TableWrites& part : inverse.parts)
        for (const store::Write& write : part.writes) {
            const std::string_view name = part.table->name;
            if (write.flag == MDX_INSERT &&
                (name == table::MenuResourceFolder ||
                 (name == table::MenuFolder && !hasText(*part.table, write, field::ParentKey)) ||
                 (name == table::MenuResource &&
                  !hasText(*part.table, write, field::MenuResourceFolderKey))))
                return true;
        }
    return false;
}

} // namespace

Reverter::Reverter(StoreThread& thread, CloseGuard& guard, QWidget* window)
    : m_thread(thread)
    , m_guard(guard)
    , m_window(window) {}

Reverter::~Reverter() {
    delete m_dialog;
}

bool Reverter::start(Request request, Finished finished) {
    const QString reason = m_request ? Text::tr("прежняя отмена ещё не закончена")
                           : m_guard.isAsking() ? Text::tr("сначала ответьте на вопрос")
                           : m_check            ? m_check()
                                                : QString();
    if (!reason.isEmpty()) {
        emit told(LogWarning, QStringLiteral("%1: %2.").arg(request.title, reason));
        return false;
    }
    assert(!m_finished);
    m_request = std::move(request);
    m_finished = std::move(finished);
    m_choices = {};
    // The action that was named is the one that is taken back, whatever is saved before it.
    if (m_guard.mayGo(m_window, m_request->title,
                      {[this] { begin(); }, [this] { finish(Outcome::GivenUp); }}))
        begin();
    return true;
}

void Reverter::begin() {
    m_guard.dropAll();
    emit busyChanged(true, m_request->title);
    if (m_request->preview)
        showDialog();
    else
        write();
}

void Reverter::showDialog(const QString& note) {
    if (!m_dialog) {
        m_dialog = new RevertDialog(m_request->title, note, m_window);
        connect(m_dialog, &RevertDialog::choicesChanged, this, &Reverter::plan);
        // Queued: the dialog and its modality are gone before something else is shown.
        connect(
            m_dialog, &QDialog::finished, this,
            [this](int result) {
                if (!m_request)
                    return;
                if (result == QDialog::Accepted)
                    writeShown();
                else
                    finish(Outcome::GivenUp, m_shown.get());
            },
            Qt::QueuedConnection);
        m_dialog->open();
    }
    plan();
}

void Reverter::plan() {
    m_choices = m_dialog->choices();
    m_shown.reset();
    auto plan = std::make_shared<RevertPlan>();
    auto selection = std::make_shared<history::Selection>(m_request->selection);
    m_thread.run(
        this,
        [plan, selection, collect = m_request->collect,
         choices = m_choices](store::MaintainedStore& store) {
            store::Status status;
            if (selection->groups.empty() && collect)
                status = collect(store, selection.get());
            if (status.ok())
                status = history::planInverse(store, *selection, choices, &plan->inverse);
            if (status.ok())
                describePlan(store, true, plan.get());
            return status;
        },
        [this, plan, selection, round = ++m_round](const store::Status& status) {
            if (m_request && round == m_round)
                m_request->selection = *selection;
            planned(round, status, plan);
        });
}

void Reverter::planned(uint64_t round, const store::Status& status,
                       const std::shared_ptr<RevertPlan>& plan) {
    if (!m_request || round != m_round || !m_dialog)
        return;
    if (status.ok()) {
        m_shown = plan;
        m_dialog->setPlan(*plan);
        return;
    }
    emit told(LogError,
              QStringLiteral("%1: %2").arg(m_request->title, QString::fromStdString(status.text)));
    finish(Outcome::Failed);
}

void Reverter::write() {
    ++m_round; // plans on their way are of no use any more
    auto plan = std::make_shared<RevertPlan>();
    m_thread.run(
        this,
        [plan, selection = m_request->selection,
         choices = m_choices](store::MaintainedStore& store) {
            store::Status status = history::undo(store, selection, choices, &plan->inverse);
            if (status.ok())
                describePlan(store, false, plan.get());
            return status;
        },
        [this, plan](const store::Status& status) { written(status, *plan); });
}

void Reverter::writeShown() {
    ++m_round;
    const std::shared_ptr<RevertPlan> plan = std::move(m_shown);
    if (!plan) { // nothing stood in the dialog that could have been agreed to
        finish(Outcome::GivenUp);
        return;
    }
    m_thread.run(
        this,
        [plan](store::MaintainedStore& store) {
            return history::writeInverse(store, &plan->inverse);
        },
        [this, plan](const store::Status& status) { written(status, *plan); });
}

void Reverter::written(const store::Status& status, const RevertPlan& plan) {
    if (!m_request)
        return;
    if (status.code == store::Outdated) {
        const QString note = Text::tr("Пока вы решали, записано другое: %1. Посмотрите ещё "
                                      "раз, что будет записано.")
                                 .arg(QString::fromStdString(status.text));
        emit told(LogWarning, QStringLiteral("%1: %2").arg(m_request->title, note));
        showDialog(note);
    } else if (!status.ok()) {
        emit told(LogError, QStringLiteral("%1: %2").arg(m_request->title,
                                                         QString::fromStdString(status.text)));
        finish(Outcome::Failed);
    } else if (plan.inverse.written) {
        tellWritten(plan);
        const QString command = m_request->title;
        finish(Outcome::Written);
        if (staysOutOfTrees(plan.inverse))
            emit reopenNeeded(command);
    } else if (plan.inverse.asks() && !m_choices.partly) {
        showDialog();
    } else {
        QStringList why = plan.left;
        why << plan.builtOn;
        emit told(LogWarning, why.isEmpty()
                                  ? Text::tr("%1: возвращать нечего.").arg(m_request->title)
                                  : Text::tr("%1: возвращать нечего. %2.")
                                        .arg(m_request->title, why.join(QStringLiteral(". "))));
        finish(Outcome::NothingLeft, &plan);
    }
}

void Reverter::tellWritten(const RevertPlan& plan) {
    const size_t count = plan.inverse.count;
    emit told(LogInformation,
              QStringLiteral("%1 (%2 %3)")
                  .arg(m_request->done)
                  .arg(count)
                  .arg(history::numeralForm(count, Text::tr("запись"), Text::tr("записи"),
                                            Text::tr("записей"))));
    QStringList left = plan.left;
    left << plan.builtOn;
    for (int i = 0; i < left.size() && i < mostLinesTold; ++i)
        emit told(LogWarning, left[i] + QLatin1Char('.'));
    if (left.size() > mostLinesTold)
        emit told(
            LogWarning,
            Text::tr("Не возвращено ещё %1: смотрите историю.").arg(left.size() - mostLinesTold));
}

void Reverter::finish(Outcome outcome, const RevertPlan* plan) {
    assert(m_request);
    End end{outcome, {}};
    if (plan)
        for (const history::Remark& remark : plan->inverse.remarks)
            end.because.insert(remark.group);
    const QString title = m_request->title;
    const Finished finished = std::exchange(m_finished, nullptr);
    m_request.reset();
    ++m_round;
    if (m_dialog) {
        m_dialog->disconnect(this); // its end is none of the next request
        m_dialog->close();
    }
    emit busyChanged(false, title);
    if (finished)
        finished(end);
}

} // namespace orvo::app
