#include "checks/Rules.h"

#include "platform/store/Names.h"

#include <initializer_list>

namespace orvo::checks {

namespace {

/// The editors give these keys to the fixed rows of their trees.
bool hasFixedKey(const Record& record) {
    const Fields& f = fields();
    const auto isOneOf = [key = record.key()](std::initializer_list<const char*> keys) {
        return std::any_of(keys.begin(), keys.end(),
                           [&](const char* fixed) { return store::sameText(key, fixed); });
    };
    const store::TableDef* table = &record.table();
    if (table == &f.desktops)
        return isOneOf({rowkey::desktops});
    if (table == &f.elements)
        return isOneOf({rowkey::elements});
    return (table == &f.folders || table == &f.resources) &&
           isOneOf({rowkey::resources, rowkey::files, rowkey::orphans});
}

} // namespace

void add(Findings& findings, const Record& record, Problem problem, std::string value) {
    findings.push_back({&record.table(), record.key(), problem, std::move(value)});
}

bool isSecond(const Scene& scene, const Record& record) {
    const Namesakes::First first =
        scene.namesakes.first(scene.records, Namesakes::identityOf(record));
    return first.next && first.owner.number() != record.number();
}

void look(const Scene& scene, const Record& record, Findings& findings) {
    const Fields& f = fields();
    const store::TableDef* table = &record.table();
    if (table == &f.elements)
        lookAtElement(scene, record, findings);
    else if (table == &f.resources)
        lookAtResource(scene, record, findings);
    else if (table == &f.folders)
        lookAtFolder(scene, record, findings);
    else if (table == &f.desktops)
        lookAtDesktop(scene, record, findings);
    else
        lookAtPerson(scene, record, findings);
    if (hasFixedKey(record))
        add(findings, record, Problem::FixedKey);
}

void lookAtPerson(const Scene& scene, const Record& record, Findings& findings) {
    const Fields& f = fields();
    const bool isUser = &record.table() == &f.users;
    if (record.cp1251(isUser ? f.user.login : f.extension.name).empty())
        add(findings, record, isUser ? Problem::LoginEmpty : Problem::ExtensionEmpty);
    else if (isSecond(scene, record))
        add(findings, record, isUser ? Problem::LoginTwice : Problem::ExtensionTwice);
}

} // namespace orvo::checks
