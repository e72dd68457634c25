#include "apps/admin/check/Rules.h"

namespace orvo::admin {

void checkCycles(const Table& table, const char* parentField, Findings& findings) {
    const int count = table.count();
    std::vector<int> parents(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        parents[static_cast<size_t>(i)] = table.placeOf(table.byKey(table.at(i).text(parentField)));
    // Each record is walked once: the number of the walk that reached it, 0 for none.
    std::vector<int> walks(static_cast<size_t>(count), 0);
    for (int start = 0; start < count; ++start) {
        const int walk = start + 1;
        int at = start;
        while (at >= 0 && walks[static_cast<size_t>(at)] == 0) {
            walks[static_cast<size_t>(at)] = walk;
            at = parents[static_cast<size_t>(at)];
        }
        if (at < 0 || walks[static_cast<size_t>(at)] != walk)
            continue;
        int length = 1;
        for (int next = parents[static_cast<size_t>(at)]; next != at;
             next = parents[static_cast<size_t>(next)])
            ++length;
        findings.error(table, table.at(at), std::string("круг по полю ") + parentField,
                       "записей в круге: " + std::to_string(length));
    }
}

} // namespace orvo::admin
