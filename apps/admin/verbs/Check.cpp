#include "apps/admin/Failure.h"
#include "apps/admin/Json.h"
#include "apps/admin/Output.h"
#include "apps/admin/ProgressLine.h"
#include "apps/admin/Verb.h"
#include "checks/Cures.h"
#include "checks/Problems.h"
#include "frame/StdText.h"
#include "frame/Text.h"

#include <map>

namespace orvo::admin {

namespace {

constexpr int shownPerKind = 50;
std::string notCured() {
    return StdText::tr("ничего не исправлено");
}

void checkOptions(OptionList& options) {
    options.append(
        {QStringLiteral("all"),
         Text::tr("Показать все находки, а не первые %1 каждого вида.").arg(shownPerKind)});
    options.append({QStringLiteral("fix"),
                    Text::tr("Исправить то, что исправляется однозначно; отменяет undo.")});
    jsonOption(options);
    progressOption(options);
}

/// The records of the store as they are, and what is wrong with them.
struct Survey {
    int64_t seen = 0; ///< the log had this change before anything was read
    checks::Catalogue records;
    checks::Problems problems{records};

    void read(const Invocation& call, store::Store& store) {
        const WaitingLine line(call, StdText::tr("проверка записей"));
        require(store.logPosition(&seen), StdText::tr("журнал не читается"));
        require(records.load(store), StdText::tr("записи не читаются"));
        problems.lookAtAll();
        std::vector<checks::Problems::FilePlace> places;
        require(checks::readContents(store, &places), StdText::tr("файлы не перечислены"));
        problems.setContents(places);
        problems.settle();
    }
};

/// Prints findings as they come, of each kind the first ones.
class Report {
public:
    Report(bool all, bool json) : m_all(all), m_json(json) {}

    void damage(const std::string& what) {
        ++m_damages;
        m_json ? outJson({{"severity", "error"}, {"kind", "damage"}, {"what", jsonText(what)}})
               : out(StdText::tr("ошибка: база данных: ") + cell(what));
    }

    void fixed(const checks::Problems& problems, const checks::Finding& finding,
               const QString& cure) {
        ++m_fixed;
        print(problems, finding, &cure, true);
    }

    void found(const checks::Problems& problems) {
        for (const checks::Finding& finding : problems.all()) {
            const auto cure = checks::cureWordsOf(problems, finding);
            m_curable += cure ? 1 : 0;
            print(problems, finding, cure ? &*cure : nullptr, false);
        }
        m_errors = problems.errors();
        m_warnings = problems.warnings();
        m_records = problems.records().count();
    }

    bool hasErrors() const { return m_damages + m_errors > 0; }
    /// Prints how many findings were not shown, and the sum of it all.
    void finish(bool withFixes) const {
        qint64 hidden = 0;
        for (const auto& [kind, count] : m_perKind)
            if (!m_all && count > shownPerKind) {
                hidden += count - shownPerKind;
                if (!m_json)
                    out(StdText::tr("не показано: ") + kind + StdText::tr(": ещё ") +
                        std::to_string(count - shownPerKind) + StdText::tr(" (все покажет --all)"));
            }
        const auto number = [](size_t count) { return static_cast<qint64>(count); };
        if (m_json) {
            QJsonObject sum{{"records", number(m_records)},
                            {"errors", number(m_damages + m_errors)},
                            {"warnings", number(m_warnings)},
                            {"notShown", hidden},
                            {"fixable", number(m_curable)}};
            if (withFixes)
                sum.insert(QStringLiteral("fixed"), number(m_fixed));
            return outJson(sum);
        }
        std::string sum = StdText::tr("проверено записей: ") + std::to_string(m_records) +
                          StdText::tr(", ошибок: ") + std::to_string(m_damages + m_errors) +
                          StdText::tr(", замечаний: ") + std::to_string(m_warnings);
        if (withFixes)
            sum += StdText::tr(", исправлено: ") + std::to_string(m_fixed);
        if (m_curable > 0)
            sum += StdText::tr(", исправит --fix: ") + std::to_string(m_curable);
        out(sum);
    }

private:
    void print(const checks::Problems& problems, const checks::Finding& finding,
               const QString* cure, bool isFixed) {
        const std::string kind = (isFixed ? StdText::tr("исправлено: ") : "") +
                                 std::string(finding.table->name) + ": " +
                                 checks::titleOf(finding.problem).toStdString();
        if (++m_perKind[kind] > shownPerKind && !m_all)
            return;
        const bool isError = checks::severityOf(finding.problem) == checks::Severity::Error;
        const checks::Record record = problems.records().find(*finding.table, finding.key);
        const QString path = record ? checks::pathOf(problems.records(), record) : QString();
        const QString what = checks::wordsOf(problems.records(), problems.namesakes(), finding);
        if (m_json) {
            QJsonObject object{{"severity", isError ? "error" : "warning"},
                               {"kind", checks::identifierOf(finding.problem)},
                               {"table", finding.table->name},
                               {"key", jsonText(finding.key)},
                               {"name", record ? record.name() : QString()},
                               {"path", path},
                               {"what", what}};
            if (cure)
                object.insert(QStringLiteral("fix"), *cure);
            if (isFixed)
                object.insert(QStringLiteral("fixed"), true);
            return outJson(object);
        }
        std::string line = isFixed   ? StdText::tr("исправлено: ")
                           : isError ? StdText::tr("ошибка: ")
                                     : StdText::tr("замечание: ");
        line += finding.table->name;
        if (record)
            line += " " + cell(finding.key) + StdText::tr(" «") +
                    cell(record.name().toStdString()) + StdText::tr("»");
        if (!path.isEmpty())
            line += " (" + cell(path.toStdString()) + ")";
        line += ": " + cell(what.toStdString());
        if (isFixed)
            line += " - " + cell(cure->toStdString());
        out(line);
    }

    const bool m_all, m_json;
    size_t m_damages = 0, m_errors = 0, m_warnings = 0, m_curable = 0, m_fixed = 0, m_records = 0;
    std::map<std::string, int> m_perKind; ///< table and kind of finding; how many
};

/// Writes the cures of all findings that have one, as one action.
void fix(const Invocation& call, store::MaintainedStore& store, Report& report) {
    constexpr int mostTries = 5; // others write as well
    for (int tried = 1;; ++tried) {
        Survey survey;
        survey.read(call, store);
        checks::CureBatch batch;
        std::vector<std::pair<checks::Finding, QString>> cures;
        for (const checks::Finding& finding : survey.problems.all())
            if (const auto cure = batch.add(survey.problems, finding))
                cures.emplace_back(finding, *cure);
        if (batch.isEmpty())
            return;
        const store::Status status = store.writeAll(batch.parts(), survey.seen, {});
        if (status.code == store::Outdated && tried < mostTries)
            continue;
        require(status, notCured());
        for (const auto& [finding, cure] : cures)
            report.fixed(survey.problems, finding, cure);
        return;
    }
}

int run(const Invocation& call) {
    const auto store = call.open();
    Report report(call.has("all"), call.has("json"));
    // The database first: what is damaged may not be readable below.
    std::vector<std::string> damages;
    {
        const WaitingLine line(call, StdText::tr("проверка базы данных"));
        require(store->integrity(&damages), StdText::tr("база данных не проверена"));
    }
    for (const std::string& damage : damages)
        report.damage(damage);
    if (call.has("fix")) {
        std::vector<std::string> loose; // rights that others have do no harm to what is written
        require(store->looseRights(&loose), notCured());
        if (damages.size() > loose.size())
            throw Failure(std::string(notCured()) +
                          StdText::tr(": база данных повреждена, см. check без --fix"));
        fix(call, *store, report);
    }
    Survey survey;
    try {
        survey.read(call, *store);
        report.found(survey.problems);
    } catch (const Failure& failure) {
        // Of a damaged database some tables may not be readable: one finding more.
        if (damages.empty())
            throw;
        report.damage(failure.what());
    }
    report.finish(call.has("fix"));
    return report.hasErrors() ? ErrorsFound : Done;
}

} // namespace

const Verb checkVerb = {
    "check",
    "[--all] [--fix] [--json] [--progress]",
    QT_TRANSLATE_NOOP("orvo", "Проверить хранилище"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "Называет каждую находку на своей строке: таблица, ключ, название, где стоит, что не так.\n"
        "Ошибка - то, что потеряно, не видно в редакторах или двусмысленно; замечание - то, на "
        "что\n"
        "стоит взглянуть (например, форма без папки). С --fix сначала исправляет то, что "
        "исправляется\n"
        "однозначно, одним действием истории, которое отменяет undo. Код завершения 1, если "
        "остались\n"
        "ошибки; замечания его не меняют."),
    0,
    0,
    checkOptions,
    run,
};

} // namespace orvo::admin
