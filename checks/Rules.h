// Rules.h: the rules, by subject. Each looks at one record and at those that it names.
#ifndef ORVO_CHECKS_RULES_H
#define ORVO_CHECKS_RULES_H

#include "checks/Finding.h"
#include "checks/Namesakes.h"

#include <unordered_set>
#include <vector>

namespace orvo::checks {

struct Scene {
    const Catalogue& records;
    const Namesakes& namesakes;
    const std::unordered_set<uint32_t>* withContent; ///< numbers of files; null: nobody knows
};

using Findings = std::vector<Finding>;

/// Everything that can be said of the record but whether it stands in a circle.
void look(const Scene& scene, const Record& record, Findings& findings);
/// Whether the folders are there without which the tree of resources is not shown.
void lookAtTops(const Scene& scene, Findings& findings);

// By table.
void lookAtPerson(const Scene& scene, const Record& record, Findings& findings);
void lookAtDesktop(const Scene& scene, const Record& record, Findings& findings);
void lookAtElement(const Scene& scene, const Record& record, Findings& findings);
void lookAtFolder(const Scene& scene, const Record& record, Findings& findings);
void lookAtResource(const Scene& scene, const Record& record, Findings& findings);

void add(Findings& findings, const Record& record, Problem problem, std::string value = {});
/// Whether another record has the right to what this one should share with nobody.
bool isSecond(const Scene& scene, const Record& record);
/// Whether the icon that the field names is among the files that serve as icons.
void lookAtIcon(const Scene& scene, const Record& record, int field, Findings& findings);

} // namespace orvo::checks

#endif
