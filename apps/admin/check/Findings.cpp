#include "apps/admin/check/Findings.h"

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
    out(std::string(severity) + ": " + table.name() + " " + cell(row.key()) + " «" +
        shownName(row) + "»: " + what + (detail.empty() ? "" : " " + cell(detail)));
}

void Findings::error(const Table& table, const Row& row, const std::string& what,
                     const std::string& detail) {
    ++errors_;
    print("ошибка", table, row, what, detail);
}

void Findings::warning(const Table& table, const Row& row, const std::string& what,
                       const std::string& detail) {
    ++warnings_;
    print("замечание", table, row, what, detail);
}

void Findings::damage(const std::string& what) {
    ++errors_;
    out("ошибка: база данных: " + cell(what));
}

void Findings::finish() const {
    if (all_)
        return;
    for (const auto& [rule, count] : perRule_)
        if (count > shownPerRule)
            out("не показано: " + rule + ": ещё " + std::to_string(count - shownPerRule) +
                " (все покажет --all)");
}

} // namespace orvo::admin
