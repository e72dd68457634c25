#include "apps/admin/check/Findings.h"

#include "apps/admin/Json.h"
#include "apps/admin/Output.h"

namespace orvo::admin {

std::string shownName(const Row& row) {
    for (const char* field : {field::caption, field::name_, field::login_, field::fileExt})
        if (const std::string text = row.text(field); !text.empty())
            return cell(text);
    return {};
}

void Findings::print(const char* severity, const Table& table, const Row& row,
                     const std::string& what, const std::string& detail) {
    if (++perRule_[std::string(table.name()) + ": " + what] > shownPerRule && !all_)
        return;
    if (json_)
        return outJson({{"severity", severity},
                        {"table", table.name()},
                        {"key", jsonText(row.key())},
                        {"name", jsonText(shownName(row))},
                        {"what", jsonText(what + (detail.empty() ? "" : " " + detail))}});
    out(std::string(severity == std::string("error") ? "ошибка" : "замечание") + ": " +
        table.name() + " " + cell(row.key()) + " «" + shownName(row) + "»: " + what +
        (detail.empty() ? "" : " " + cell(detail)));
}

void Findings::error(const Table& table, const Row& row, const std::string& what,
                     const std::string& detail) {
    ++errors_;
    print("error", table, row, what, detail);
}

void Findings::warning(const Table& table, const Row& row, const std::string& what,
                       const std::string& detail) {
    ++warnings_;
    print("warning", table, row, what, detail);
}

void Findings::damage(const std::string& what) {
    ++errors_;
    json_ ? outJson({{"severity", "error"}, {"what", jsonText(what)}})
          : out("ошибка: база данных: " + cell(what));
}

void Findings::finish(int records) const {
    int hidden = 0;
    for (const auto& [rule, count] : perRule_)
        if (!all_ && count > shownPerRule) {
            hidden += count - shownPerRule;
            if (!json_)
                out("не показано: " + rule + ": ещё " + std::to_string(count - shownPerRule) +
                    " (все покажет --all)");
        }
    json_
        ? outJson({{"records", records},
                   {"errors", errors_},
                   {"warnings", warnings_},
                   {"notShown", hidden}})
        : out("проверено записей: " + std::to_string(records) +
              ", ошибок: " + std::to_string(errors_) + ", замечаний: " + std::to_string(warnings_));
}

} // namespace orvo::admin
