// The one way of a write, and what is remembered of it.
#include "frame/StdText.h"
#include "frame/Text.h"
#include "platform/client/SessionPrivate.h"
#include "platform/client/WriteWords.h"

#include <QDateTime>

#include <algorithm>

using namespace orvo;
using namespace orvo::client;

namespace {

/// What a server that failed over may have lost is remembered within these bounds.
constexpr int rememberedSeconds = 15 * 60;
constexpr size_t mostRememberedChanges = 10000;
constexpr size_t mostRememberedBytes = 64u << 20;

/// Whether a failure leaves the store able to answer questions.
bool answers(const store::Status& status) {
    return status.code != store::ConnectionBroken && status.code != store::CannotConnect &&
           status.code != store::Timeout;
}

/// What failed, for the log and the status bar: with names and places instead of keys.
QString operationOf(const WriteWords& words) {
    return words.place.isEmpty() ? words.what
                                 : QStringLiteral("%1 (%2)").arg(words.what, words.place);
}

} // namespace

/// What the writing module has seen.
store::UpdateGuard COrvoCliSes::Private::guard() {
    store::UpdateGuard made;
    if (!module)
        return made;
    made.seen = module->messagesSeen();
    if (core->unwritten) {
        const auto repeated = core->unwritten->takeRepeated(module->m_moduleName);
        own.insert(own.end(), repeated.begin(), repeated.end());
        std::sort(own.begin(), own.end(), [](const store::IdRange& a, const store::IdRange& b) {
            return a.first < b.first;
        });
    }
    own.erase(std::remove_if(own.begin(), own.end(),
                             [&](const store::IdRange& range) { return range.last <= made.seen; }),
              own.end());
    made.own = own;
    return made;
}

void COrvoCliSes::Private::keep(UnwrittenEntry entry, bool canAsk) {
    entry.module = module ? module->m_moduleName : QString();
    if (module && entry.seen < 0)
        entry.seen = module->messagesSeen();
    if (module && entry.own.empty())
        entry.own = own;
    core->unwritten->add(std::move(entry), canAsk);
}

store::Status COrvoCliSes::Private::refuse(WriteRequest request, store::Status status,
                                           bool unknown) {
    const bool canAsk = answers(status);
    UnwrittenEntry entry;
    entry.words = describe(request, canAsk ? store : nullptr);
    report(operationOf(entry.words), status);
    if (!core->unwritten)
        return status;
    entry.request = std::move(request);
    entry.why = QString::fromStdString(status.text);
    if (unknown) {
        entry.state = UnwrittenEntry::Unknown;
        entry.written = store->lastWritten();
    }
    // What the log no longer tells it will not tell later: a repetition looks on from here.
    if (status.code == store::Outdated && !store->logPosition(&entry.seen).ok())
        entry.seen = -1;
    keep(std::move(entry), canAsk);
    return status;
}

store::Status COrvoCliSes::Private::write(WriteRequest request) {
    UnwrittenList* list = core->unwritten;
    if (list && !list->isEmpty()) {
        const size_t before = recordsOf(request).size();
        request = list->withoutUnwritten(request);
        if (before > 0 && recordsOf(request).empty())
            return {}; // what was to be deleted had never been written
        while (const UnwrittenEntry* needed = list->neededBy(request)) {
            const QString what = needed->words.what;
            if (list->repeat(QString(needed->id)))
                continue;
            UnwrittenEntry entry;
            entry.state = UnwrittenEntry::Waiting;
            entry.words = describe(request, nullptr);
            entry.why = Text::tr("ждёт: %1").arg(what);
            const store::Status status{store::Refused, entry.why.toStdString()};
            report(operationOf(entry.words), status);
            entry.request = std::move(request);
            keep(std::move(entry), false);
            return status;
        }
    }
    store::UpdateGuard guarded = guard();
    // A host that keeps nothing must not leave anything out either.
    const bool merges = list && request.kind == WriteRequest::Records;
    bool unknown = false;
    store->joinGroup(core->action.current());
    store::Status status = perform(request, *store, merges ? &guarded : nullptr, &unknown);
    store->joinGroup(0);
    if (!status.ok()) {
        if (status.code == store::ParentDeleted && guarded.parentDeletion && list) {
            UnwrittenEntry entry;
            entry.words = describe(request, store);
            entry.why = QString::fromStdString(status.text);
            entry.deletedParent = guarded.parentDeletion->before;
            entry.deletedParentKey = guarded.parentDeletion->key;
            entry.deletedParentTable = guarded.parentDeletion->table;
            report(operationOf(entry.words), status);
            entry.request = std::move(request);
            keep(std::move(entry), true);
            return status;
        }
        return refuse(std::move(request), std::move(status), unknown);
    }
    const store::Written& written = store->lastWritten();
    core->action.wrote(written.first);
    if (module && written.first > 0)
        own.push_back({written.first, written.last.id});
    const store::TableDef* table = store::findTable(request.table);
    if (list && table) {
        list->superseded(request); // before the entries that it makes itself
        std::vector<UnwrittenEntry> met = missingEntries(request, guarded);
        for (UnwrittenEntry& entry : conflictEntries(*table, guarded, *store))
            met.push_back(std::move(entry));
        for (UnwrittenEntry& entry : met) {
            entry.words = describe(entry.request, store, entry.deletedRecord);
            report(operationOf(entry.words),
                   {store::Refused, StdText::tr("не записано: ") + entry.why.toStdString()});
            keep(std::move(entry), true);
        }
    }
    remember(std::move(request));
    emit events.written();
    return status;
}

void COrvoCliSes::Private::remember(WriteRequest request) {
    const store::Written& written = store->lastWritten();
    if (!core->unwritten || written.first == 0 || request.size() > mostRememberedBytes)
        return;
    request.keep();
    OwnWrite made{std::move(request), written, QDateTime::currentDateTime(),
                  module ? module->m_moduleName : QString(),
                  static_cast<size_t>(written.last.id - written.first + 1)};
    core->ownWrites.push_back(std::move(made));
    size_t changes = 0, bytes = 0;
    for (const OwnWrite& one : core->ownWrites) {
        changes += one.changes;
        bytes += one.request.size();
    }
    const QDateTime oldest = QDateTime::currentDateTime().addSecs(-rememberedSeconds);
    while (core->ownWrites.size() > 1 &&
           (changes > mostRememberedChanges || bytes > mostRememberedBytes ||
            core->ownWrites.front().when < oldest)) {
        changes -= core->ownWrites.front().changes;
        bytes -= core->ownWrites.front().request.size();
        core->ownWrites.pop_front();
    }
}

namespace orvo::client {

int listLostWrites(COrvoCliSes& session) {
    SessionCore& core = *session.data()->core;
    if (!core.unwritten)
        return 0;
    // The log is one line: what a server lost is the end of what was written.
    size_t lost = core.ownWrites.size();
    while (lost > 0) {
        store::Outcome outcome = store::Outcome::Unknown;
        const store::Written& written = core.ownWrites[lost - 1].written;
        store::Status status = core.store->outcomeOf(written, &outcome);
        if (!answers(status)) // this connection meets the loss only now
            status = core.store->outcomeOf(written, &outcome);
        if (!status.ok() || outcome != store::Outcome::NotSaved)
            break;
        --lost;
    }
    const auto first = core.ownWrites.begin() + static_cast<ptrdiff_t>(lost);
    const auto count = static_cast<int>(core.ownWrites.end() - first);
    const int64_t seen = count > 0 ? first->written.first - 1 : -1;
    for (auto own = first; own != core.ownWrites.end(); ++own) {
        UnwrittenEntry entry;
        entry.state = UnwrittenEntry::Lost;
        entry.request = std::move(own->request);
        entry.when = own->when;
        entry.module = own->module;
        entry.written = own->written;
        entry.seen = seen; // what was written there instead is another's
        entry.why = Text::tr("было записано, но сервер, который работает теперь, этого не "
                             "имеет");
        core.unwritten->add(std::move(entry), true);
    }
    core.ownWrites.erase(first, core.ownWrites.end());
    return count;
}

} // namespace orvo::client
