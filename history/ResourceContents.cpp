#include "history/ResourceContents.h"

#include "frame/Vocabulary.h"
#include "history/RecordSource.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <climits>
#include <iterator>
#include <set>

namespace orvo::history {

namespace {

/// Of the resource's own changes so many are looked at, the newest ones.
constexpr int mostLooked = 500;

/// Whether a change made or deleted a content of that resource.
bool isOf(const store::Change& change, const std::string& resource) {
    const store::TableDef& contents = store::contentTable();
    const std::string& json = change.code == OrvoEventDelete ? change.before : change.after;
    const Values values = store::valuesFromJson(contents, json);
    const auto owner = values.find(contents.find(field::MenuResourceKey));
    return owner != values.end() && store::sameText(store::textOf(owner->second), resource);
}

/// The contents that were made or deleted in one action with a change of their resource.
store::Status addLogged(store::MaintainedStore& store, const std::string& resource,
                        std::set<std::string>* keys) {
    store::LogQuery query;
    query.table = table::MenuResource;
    query.key = resource;
    std::vector<store::Change> own;
    store::Status status = store.history(query, mostLooked, &own);
    std::set<int64_t> groups;
    for (const store::Change& change : own)
        if (change.code != OrvoEventUpdate || change.after == change.before) // or its echo
            groups.insert(change.group);
    for (const int64_t group : groups) {
        store::LogQuery inside;
        inside.table = store::contentTable().name;
        inside.group = group;
        std::vector<store::Change> changes;
        if (status.ok())
            status = store.history(inside, INT_MAX, &changes);
        for (const store::Change& change : changes)
            if (change.code != OrvoEventUpdate && isOf(change, resource))
                keys->insert(store::foldedKey(change.key));
    }
    return status;
}

} // namespace

store::Status contentChanges(store::MaintainedStore& store, const store::LogQuery& query,
                             std::vector<store::Change>* changes) {
    changes->clear();
    const std::string& resource = query.key;
    if (resource.empty() || (!query.table.empty() && query.table != table::MenuResource))
        return {};
    const store::TableDef& contents = store::contentTable();
    std::set<std::string> keys;
    std::vector<std::pair<std::string, std::string>> stored;
    store::Status status =
        store.keysNaming(contents, contents.find(field::MenuResourceKey), {resource}, &stored);
    for (const auto& [key, owner] : stored)
        keys.insert(store::foldedKey(key));
    store::VersionQuery ofResource;
    ofResource.resource = resource;
    std::vector<store::KeptVersion> versions;
    if (status.ok())
        status = store.versions(ofResource, &versions);
    for (const store::KeptVersion& version : versions)
        keys.insert(store::foldedKey(version.key));
    if (status.ok())
        status = addLogged(store, resource, &keys);
    if (status.ok() && !keys.empty())
        status = store.changesSince(contents, {keys.begin(), keys.end()}, query.above, changes);
    std::reverse(changes->begin(), changes->end());
    changes->erase(std::remove_if(changes->begin(), changes->end(),
                                  [&](const store::Change& change) {
                                      return (query.login && change.login != *query.login) ||
                                             (query.since && change.time < *query.since) ||
                                             (query.until && change.time >= *query.until);
                                  }),
                   changes->end());
    return status;
}

void mergeContents(const std::vector<store::Change>& contents, int64_t below, bool isLast,
                   std::vector<store::Change>* page) {
    if (contents.empty())
        return;
    const int64_t oldest = isLast || page->empty() ? 0 : page->back().id;
    std::copy_if(contents.begin(), contents.end(), std::back_inserter(*page),
                 [&](const store::Change& change) {
                     return change.id > oldest && (below == 0 || change.id < below);
                 });
    std::sort(page->begin(), page->end(),
              [](const store::Change& a, const store::Change& b) { return a.id > b.id; });
}

} // namespace orvo::history
