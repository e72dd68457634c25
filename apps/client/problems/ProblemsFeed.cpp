#include "apps/client/problems/ProblemsFeed.h"

#include "apps/client/LogPane.h"
#include "checks/Cures.h"
#include "checks/Problems.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/RecordWords.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/WaitPolicy.h"

#include <atomic>
#include <cassert>
#include <chrono>
#include <optional>
#include <utility>

namespace orvo::app {

namespace {

/// Rows whose words name other records are written anew after such a change, not more often.
constexpr std::chrono::seconds rewordEvery{1};
constexpr size_t fewRows = 100; ///< these at once
constexpr std::chrono::milliseconds progressEvery{100};

ProblemRow rowOf(const checks::Problems& problems, const checks::Finding& finding) {
    const checks::Catalogue& records = problems.records();
    ProblemRow row;
    row.finding = finding;
    row.isError = checks::severityOf(finding.problem) == checks::Severity::Error;
    row.words = checks::wordsOf(records, problems.namesakes(), finding);
    row.cure = checks::cureWordsOf(problems, finding).value_or(QString());
    if (const checks::Record record = records.find(*finding.table, finding.key)) {
        row.what = history::recordWords(*finding.table, record.values(), finding.key);
        row.path = checks::pathOf(records, record);
        if (finding.table == &checks::fields().elements)
            row.desktop = QString::fromStdString(record.text(checks::fields().element.desktop));
    } else {
        row.what = Text::tr("дерево ресурсов");
    }
    row.sortKey = (row.isError ? QLatin1Char('0') : QLatin1Char('1')) +
                  (row.path + QLatin1Char('\n') + row.what).toCaseFolded();
    return row;
}

} // namespace

struct ProblemsFeed::Update {
    bool all = false; ///< these are all there are
    std::vector<RecordProblems> records;
    size_t errors = 0, warnings = 0;
    bool isOutdated = false; ///< words may tell of records as they were before
};

/// One cure of many findings. The numbers are the thread's that works at it, and read here when
/// that has answered.
struct ProblemsFeed::Plan : private store::WaitPolicy {
    std::vector<checks::Finding> findings;
    checks::CureBatch batch;
    QString first;      ///< what is put right
    size_t cured = 0;   ///< how many are
    size_t gone = 0;    ///< that are no longer so
    size_t open = 0;    ///< without a certain cure
    bool shows = false; ///< records that no editor has shown
    bool isWritten = false;
    int64_t seen = 0;
    size_t total = 0;
    std::atomic<size_t> looked = 0;
    std::atomic<bool> stop = false;

    void make(const checks::Problems& problems) {
        for (const checks::Finding& finding : findings) {
            if (stop)
                break;
            ++looked;
            if (!problems.holds(finding)) {
                ++gone;
            } else if (const auto words = batch.add(problems, finding)) {
                shows = shows || checks::isHiding(problems.records(), finding);
                if (++cured == 1)
                    first = QStringLiteral("%1: %2").arg(rowOf(problems, finding).what, *words);
            } else {
                ++open;
            }
        }
        findings = {};
    }
    store::Status write(store::MaintainedStore& store) {
        const store::WaitPolicyScope scope(this);
        store::Status status = store.writeAll(std::exchange(batch, {}).parts(), seen, {});
        isWritten = status.ok();
        return status;
    }

private:
    bool keepWaiting() override { return !stop; }
    bool endsWrites() const override { return true; }
};

/// Keeps the findings; in the thread of the catalogue.
class ProblemsFeed::Watcher : public catalogue::Listener {
public:
    using Publish = std::function<void(std::shared_ptr<Update>)>;
    explicit Watcher(Publish publish) : m_publish(std::move(publish)) {}

    checks::Problems& problems() { return *m_problems; }

    void loaded(const catalogue::Catalogue& records) override {
        if (!m_problems)
            m_problems.emplace(records);
        m_problems->lookAtAll();
        m_loaded = true;
    }

    void recordChanged(const catalogue::Catalogue& records, const catalogue::Record& before,
                       const catalogue::Record& after) override {
        if (!m_problems)
            return;
        m_problems->recordChanged(records, before, after);
        // Names and places of other records stand in the words of a finding.
        m_outdated = true;
    }

    void settled(const catalogue::Catalogue&) override {
        if (!m_problems)
            return;
        m_problems->settle();
        publish();
    }

    void publish() {
        auto update = std::make_shared<Update>();
        update->all = std::exchange(m_loaded, false);
        const checks::Problems::Changed changed = m_problems->takeChanged();
        if (update->all) {
            m_rows.clear();
            for (const checks::Finding& finding : m_problems->all())
                add(*update, finding.table, finding.key, {finding});
        } else {
            for (const auto& [record, findings] : changed)
                add(*update, record.first, record.second, findings);
            reword(*update);
        }
        update->errors = m_problems->errors();
        update->warnings = m_problems->warnings();
        update->isOutdated = m_outdated;
        if (update->all || update->isOutdated || !update->records.empty())
            m_publish(std::move(update));
    }

private:
    using Id = std::pair<const store::TableDef*, std::string>;

    std::vector<ProblemRow> rowsOf(const checks::Findings& findings) const {
        std::vector<ProblemRow> rows;
        for (const checks::Finding& finding : findings)
            rows.push_back(rowOf(*m_problems, finding));
        return rows;
    }

    void add(Update& update, const store::TableDef* table, const std::string& key,
             const checks::Findings& findings) {
        std::vector<ProblemRow> rows = rowsOf(findings);
        std::vector<ProblemRow>& known = m_rows[{table, key}];
        if (update.all)
            known.insert(known.end(), rows.begin(), rows.end());
        else
            known = rows;
        if (known.empty())
            m_rows.erase({table, key});
        update.records.push_back({table, key, std::move(rows)});
    }

    void reword(Update& update) {
        const auto now = std::chrono::steady_clock::now();
        if (!m_outdated || (m_rows.size() > fewRows && now - m_reworded < rewordEvery))
            return;
        m_outdated = false;
        m_reworded = now;
        for (auto& [id, rows] : m_rows) {
            checks::Findings findings;
            for (const ProblemRow& row : rows)
                findings.push_back(row.finding);
            std::vector<ProblemRow> fresh = rowsOf(findings);
            if (fresh == rows)
                continue;
            rows = fresh;
            update.records.push_back({id.first, id.second, std::move(fresh)});
        }
    }

    const Publish m_publish;
    std::optional<checks::Problems> m_problems;
    std::map<Id, std::vector<ProblemRow>> m_rows; ///< as published
    bool m_loaded = false, m_outdated = false;
    std::chrono::steady_clock::time_point m_reworded;
};

ProblemsFeed::ProblemsFeed(catalogue::LiveCatalogue& live, StoreThread::Opener open, int64_t seen)
    : m_live(live)
    , m_thread(std::move(open))
    , m_seen(seen) {
    const QPointer<QObject> context(this); // made in this thread
    m_watcher = std::make_shared<Watcher>([this, context, &live](std::shared_ptr<Update> update) {
        live.post(context, [this, update = std::move(update)] { take(*update); });
    });
    live.addListener(m_watcher);
    m_progress.setInterval(progressEvery);
    connect(&m_progress, &QTimer::timeout, this, &ProblemsFeed::cureChanged);
    m_rewordSoon.setSingleShot(true);
    m_rewordSoon.setInterval(rewordEvery);
    connect(&m_rewordSoon, &QTimer::timeout, this, [this] {
        const auto publish = [watcher = m_watcher](const catalogue::Catalogue&) {
            watcher->publish();
        };
        m_live.run(this, publish, [] {});
    });
    connect(&live, &catalogue::LiveCatalogue::loaded, this, &ProblemsFeed::readContents);
}

ProblemsFeed::~ProblemsFeed() {
    stopCure();
}

void ProblemsFeed::take(Update& update) {
    if (update.all)
        m_model.setAll(std::move(update.records));
    else
        m_model.update(std::move(update.records));
    m_errors = update.errors;
    m_warnings = update.warnings;
    m_known = true;
    if (update.isOutdated && !m_rewordSoon.isActive())
        m_rewordSoon.start();
    emit countChanged();
}

/// Which files have bytes is not in the catalogue.
void ProblemsFeed::readContents() {
    auto places = std::make_shared<std::vector<checks::Problems::FilePlace>>();
    m_thread.run(
        this,
        [places](store::MaintainedStore& store) {
            return checks::readContents(store, places.get());
        },
        [this, places](const store::Status& status) {
            if (status.ok())
                m_live.run(
                    this,
                    [places, watcher = m_watcher](const catalogue::Catalogue& records) {
                        watcher->problems().setContents(*places);
                        watcher->settled(records);
                    },
                    [] {});
        });
}

void ProblemsFeed::changed(const store::Change& change) {
    m_seen = change.id;
    const store::TableDef& contents = store::contentTable();
    if (change.table != contents.name || change.code == OrvoEventUpdate)
        return;
    const bool isStored = change.code == OrvoEventInsert;
    const history::Values values =
        store::valuesFromJson(contents, isStored ? change.after : change.before);
    const auto resource = values.find(contents.find(field::MenuResourceKey));
    if (resource == values.end() || !m_live.isStarted())
        return;
    m_live.run(
        this,
        [watcher = m_watcher, key = store::textOf(resource->second),
         isStored](const catalogue::Catalogue& records) {
            watcher->problems().contentChanged(key, isStored);
            watcher->settled(records);
        },
        [] {});
}

void ProblemsFeed::cure(std::vector<checks::Finding> findings) {
    if (isCuring() || findings.empty())
        return;
    m_plan = std::make_shared<Plan>();
    m_plan->total = findings.size();
    m_plan->findings = std::move(findings);
    m_plan->seen = m_seen;
    m_progress.start();
    emit cureChanged();
    m_live.run(
        this,
        [plan = m_plan, watcher = m_watcher](const catalogue::Catalogue&) {
            plan->make(watcher->problems());
        },
        [this, plan = m_plan] { write(plan); });
}

void ProblemsFeed::write(const std::shared_ptr<Plan>& plan) {
    assert(plan == m_plan && m_progress.isActive());
    if (plan->cured == 0 || plan->stop)
        return finish(*plan, {});
    m_thread.run(
        this, [plan](store::MaintainedStore& store) { return plan->write(store); },
        [this, plan](const store::Status& status) { finish(*plan, status); });
}

void ProblemsFeed::stopCure() {
    if (m_plan)
        m_plan->stop = true;
}

QString ProblemsFeed::cureProgress() const {
    if (!m_plan)
        return {};
    const size_t looked = m_plan->looked;
    if (m_plan->stop)
        return Text::tr("Исправление прерывается…");
    if (looked < m_plan->total)
        return Text::tr("Исправление готовится: %1 из %2…").arg(looked).arg(m_plan->total);
    return Text::tr("Исправления записываются: %1…").arg(m_plan->total);
}

void ProblemsFeed::finish(const Plan& plan, const store::Status& status) {
    assert(m_plan.get() == &plan && m_progress.isActive());
    m_plan.reset(); // the caller has it
    m_progress.stop();
    emit cureChanged();
    if (plan.stop && !plan.isWritten) {
        emit told(
            LogWarning,
            status.ok()
                ? Text::tr("Исправление прервано, ничего не записано.")
                : Text::tr("Исправление прервано: %1.").arg(QString::fromStdString(status.text)));
        return;
    }
    if (status.code == store::Outdated)
        emit told(LogWarning, Text::tr("Не исправлено: тем временем эти записи изменил "
                                       "другой. Посмотрите, что осталось."));
    else if (!status.ok())
        emit told(LogError, Text::tr("Не исправлено: %1").arg(QString::fromStdString(status.text)));
    else if (plan.cured == 1)
        emit told(LogInformation, Text::tr("Исправлено: %1").arg(plan.first));
    else if (plan.cured > 1)
        emit told(LogInformation, Text::tr("Исправлено: %1. Отменяет Ctrl+Z.").arg(plan.cured));
    if (status.ok() && plan.shows)
        emit reopenNeeded(Text::tr("Исправить: %1")
                              .arg(plan.cured == 1 ? plan.first : QString::number(plan.cured)));
    if (plan.gone > 0)
        emit told(LogWarning, Text::tr("Уже исправлено без вас: %1.").arg(plan.gone));
    if (plan.open > 0)
        emit told(LogWarning,
                  Text::tr("Однозначно не исправляется, решать вам: %1.").arg(plan.open));
}

} // namespace orvo::app
