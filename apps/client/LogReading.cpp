#include "apps/client/LogReading.h"

#include <algorithm>
#include <cmath>

namespace orvo::app {

namespace {

/// The first place from `from` on that the log still reaches back to.
int64_t firstPlace(store::Store& store, int64_t from, int64_t end) {
    while (from < end) {
        const int64_t middle = from + (end - from) / 2;
        std::vector<store::Change> one;
        if (store.readLog(middle, 1, &one).code == store::LogPruned)
            from = middle + 1;
        else
            end = middle;
    }
    return from;
}

} // namespace

void readLastChanges(store::Store& store, LogRequest* request) {
    constexpr int atMost = 100000;
    const int most = std::clamp(request->most, 0, atMost);
    request->entries.clear();
    int64_t end = 0;
    store::Status status = store.logPosition(&end);
    int64_t from = request->after >= 0 ? request->after : std::max<int64_t>(0, end - most);
    std::vector<store::Change> changes;
    if (status.ok())
        status = store.readLog(from, most, &changes);
    if (status.code == store::LogPruned) {
        from = firstPlace(store, from, end);
        status = store.readLog(from, most, &changes);
    }
    request->refusal = QString::fromStdString(status.text);
    if (!status.ok())
        return;
    for (const store::Change& change : changes)
        request->entries.append({change.id, change.code, QString::fromStdString(change.table),
                                 QString::fromStdString(change.key),
                                 QString::fromStdString(change.login),
                                 QDateTime::fromMSecsSinceEpoch(std::llround(change.time * 1000)),
                                 QString::fromStdString(change.after)});
    request->last = changes.empty() ? std::max(from, end) : changes.back().id;
}

} // namespace orvo::app
