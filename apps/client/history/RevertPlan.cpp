#include "apps/client/history/RevertPlan.h"

#include "frame/Vocabulary.h"
#include "history/Fitting.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <cstring>
#include <set>

namespace orvo::app {

namespace {

constexpr size_t mostWrites = 1000;
constexpr uint32_t mostPlaces = 3000;

bool is(const store::TableDef& table, const char* name) {
    return std::strcmp(table.name, name) == 0;
}

const store::Value* valueIn(const store::TableDef& table, const history::Values& values,
                            const char* field) {
    const auto found = values.find(table.find(field));
    return found == values.end() ? nullptr : &found->second;
}

RevertPlan::Place placeOf(store::MaintainedStore& store, history::LoggedRecords& source,
                          const history::PersonNames& names, const history::Remark& remark) {
    const store::TableDef& table = *remark.table;
    RevertPlan::Place place;
    place.missing = store::foldedKey(remark.missing);
    place.what = history::remarkWords(remark, source, names);
    const history::Values values = source.valuesOf(table, remark.key);
    const store::TableDef* above = history::targetTable(table, remark.field);
    if (!above)
        return place;
    const auto bondValue = values.find(history::bondField(table, remark.field));
    const store::Value bond = bondValue == values.end() ? store::Value() : bondValue->second;
    place.top = history::canBeAtTop(table, remark.field, bond);
    CMDArray rows;
    store::Status status;
    if (is(*above, table::Menu)) {
        const store::Value* desktop = valueIn(table, values, field::FolderKey);
        status =
            history::fetchNaming(store, *above, above->find(field::FolderKey),
                                 desktop ? store::textOf(*desktop) : std::string(), rows.array);
    } else {
        status = store.fetch(above->name, rows.array);
    }
    const uint32_t count = status.ok() ? mdx::postedCount(rows.array) : 0;
    for (uint32_t i = 0; i < count && place.others.size() < mostPlaces; ++i) {
        const history::Values those = history::valuesIn(rows.array, i);
        if (history::misfitOf(table, remark.field, bond, those) != history::Misfit::None)
            continue;
        const QString path = history::placeOf(*above, those, &source);
        const QString name = history::nameOf(*above, those);
        place.others.emplace_back(path.isEmpty() ? name : path + QStringLiteral(" / ") + name,
                                  store::textOf(those.at(0)));
    }
    std::sort(place.others.begin(), place.others.end());
    return place;
}

} // namespace

void describePlan(store::MaintainedStore& store, bool withWrites, RevertPlan* plan) {
    history::LoggedRecords source(store);
    if (withWrites) {
        source.prepareUpdated(plan->inverse.preview);
        const size_t count = std::min(plan->inverse.preview.size(), mostWrites);
        for (size_t i = 0; i < count; ++i) {
            const store::Change& change = plan->inverse.preview[i];
            plan->writes.push_back(
                {history::describe(change, source), history::placeOf(change, source)});
            plan->writes.back().words.what += history::freeNameWords(plan->inverse, change);
        }
    }
    history::PersonNames names;
    if (!plan->inverse.remarks.empty() && !history::readPeople(store, &names).ok())
        names.clear(); // the logins serve
    std::set<std::string> missing;
    for (const history::Remark& remark : plan->inverse.remarks) {
        if (remark.asksForPlace() && withWrites) {
            if (missing.insert(store::foldedKey(remark.missing)).second)
                plan->places.push_back(placeOf(store, source, names, remark));
        } else if (remark.asksForOthers()) {
            const bool isCut = remark.why == history::Remark::CutChanged;
            (isCut ? plan->asksToMove : plan->asksToDelete) = true;
            plan->builtOn << history::remarkWords(remark, source, names);
        } else {
            plan->left << history::remarkWords(remark, source, names);
            plan->namesTaken = plan->namesTaken || remark.asksForName();
        }
    }
}

} // namespace orvo::app
