// Findings.h: what `check` found, one line each.
#ifndef ORVO_ADMIN_CHECK_FINDINGS_H
#define ORVO_ADMIN_CHECK_FINDINGS_H

#include "apps/admin/Records.h"

#include <map>
#include <string>

namespace orvo::admin {

/// Prints findings as they come: "ошибка: Menu KEY «caption»: what is wrong".
class Findings {
public:
    /// `all`: every finding is printed; else at most `shownPerRule` of each kind, and their number.
    /// `json`: each as an object.
    Findings(bool all, bool json) : all_(all), json_(json) {}
    static constexpr int shownPerRule = 50;

    /// Something is lost, invisible or ambiguous. `what` is the same for all findings of a kind;
    /// `detail` follows it.
    void error(const Table& table, const Row& row, const std::string& what,
               const std::string& detail = {});
    /// Something works, but is worth a look.
    void warning(const Table& table, const Row& row, const std::string& what,
                 const std::string& detail = {});
    /// An error of the store as a whole.
    void damage(const std::string& what);

    int errors() const { return errors_; }
    int warnings() const { return warnings_; }
    /// Prints how many findings were not shown, and the sum of it all.
    void finish(int records) const;

private:
    void print(const char* severity, const Table& table, const Row& row, const std::string& what,
               const std::string& detail);

    const bool all_, json_;
    int errors_ = 0, warnings_ = 0;
    std::map<std::string, int> perRule_; ///< table and kind of finding; how many
};

/// Name of a record for people: caption, else resource name, login or extension.
std::string shownName(const Row& row);

} // namespace orvo::admin

#endif
