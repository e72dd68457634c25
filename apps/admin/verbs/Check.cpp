#include "apps/admin/Failure.h"
#include "apps/admin/Json.h"
#include "apps/admin/Verb.h"
#include "apps/admin/check/Rules.h"

namespace orvo::admin {

namespace {

void checkOptions(OptionList& options) {
    options.append({QStringLiteral("all"),
                    QString::fromUtf8("Показать все находки, а не первые %1 каждого вида.")
                        .arg(Findings::shownPerRule)});
    jsonOption(options);
}

/// Checks the tables and gives the number of their records.
int checkRecords(store::Store& store, Findings& findings) {
    const Catalogue catalogue(store);
    checkPeople(catalogue, findings);
    checkDesktops(catalogue, findings);
    checkElements(catalogue, findings);
    checkFolders(catalogue, findings);
    checkResources(catalogue, findings);
    checkFixedKeys(catalogue, findings);
    checkContents(store, catalogue, findings);
    int records = 0;
    for (const Table* table : {&catalogue.users, &catalogue.extensions, &catalogue.folders,
                               &catalogue.resources, &catalogue.desktops, &catalogue.elements})
        records += table->count();
    return records;
}

int run(const Invocation& call) {
    const auto store = call.open();
    Findings findings(call.has("all"), call.has("json"));
    // The database first: what is damaged may not be readable below.
    std::vector<std::string> damages;
    require(store->integrity(&damages), "база данных не проверена");
    for (const std::string& damage : damages)
        findings.damage(damage);

    int records = 0;
    try {
        records = checkRecords(*store, findings);
    } catch (const Failure& failure) {
        // Of a damaged database some tables may not be readable: one finding more.
        if (damages.empty())
            throw;
        findings.damage(failure.what());
    }
    findings.finish(records);
    return findings.errors() ? ErrorsFound : Done;
}

} // namespace

const Verb checkVerb = {
    "check",
    "[--all] [--json]",
    "Проверить хранилище",
    "Называет каждую находку на своей строке: таблица, ключ, название, что не так. Ошибка - то,\n"
    "что потеряно, не видно в редакторах или двусмысленно; замечание - то, на что стоит взглянуть\n"
    "(например, форма без папки). Код завершения 1, если есть ошибки; замечания его не меняют.",
    0,
    0,
    checkOptions,
    run,
};

} // namespace orvo::admin
