// Repeating what was not written.
#include "platform/client/UnwrittenList.h"

#include "frame/StdText.h"
#include "frame/Text.h"
#include "platform/store/ChangeRecord.h"

#include <utility>

namespace orvo::client {

namespace {

/// The record of a deletion as an insert, with later values over it.
RecordWrite remade(const store::TableDef& table, const std::string& json, const RecordWrite& over) {
    store::FieldValues values = store::valuesFromJson(table, json);
    values.erase(0);
    for (const auto& [number, value] : over.values)
        values[number] = value;
    return {MDX_INSERT, over.key, {values.begin(), values.end()}};
}

} // namespace

/// The folder that was deleted, as it was; and those above it.
store::Status UnwrittenList::restoreParent(UnwrittenEntry& entry, int depth) {
    constexpr int deepest = 32;
    const store::TableDef* table = store::findTable(entry.deletedParentTable);
    if (!table || depth == deepest)
        return {};
    const RecordWrite folder =
        remade(*table, entry.deletedParent, {MDX_INSERT, entry.deletedParentKey, {}});
    UnwrittenEntry above;
    above.request = requestOf(*table, {folder});
    store::UpdateGuard guard;
    bool unknown = false;
    store::Status status = perform(above.request, m_store, &guard, &unknown);
    if (status.code == store::ParentDeleted && guard.parentDeletion) {
        above.deletedParent = guard.parentDeletion->before;
        above.deletedParentKey = guard.parentDeletion->key;
        above.deletedParentTable = guard.parentDeletion->table;
        status = restoreParent(above, depth + 1);
        if (status.ok())
            status = perform(above.request, m_store, &guard, &unknown);
    }
    if (status.ok())
        entry.deletedParent = entry.deletedParentKey = entry.deletedParentTable = {};
    return status;
}

store::Status UnwrittenList::write(UnwrittenEntry& entry, store::UpdateGuard* guard,
                                   bool* unknown) {
    if (!entry.deletedParentTable.empty())
        if (const store::Status status = restoreParent(entry, 0); !status.ok())
            return status;
    if (entry.state != UnwrittenEntry::Gone)
        return perform(entry.request, m_store, guard, unknown);
    const store::TableDef* table = store::findTable(entry.request.table);
    const std::vector<RecordWrite> records = recordsOf(entry.request);
    if (!table || records.empty())
        return {store::BadStructure, StdText::tr("Записи не читаются.")};
    return perform(requestOf(*table, {remade(*table, entry.deletedRecord, records.front())}),
                   m_store, guard, unknown);
}

bool UnwrittenList::repeat(const QString& id) {
    UnwrittenEntry* which = entry(id);
    if (!which || m_busy || which->state == UnwrittenEntry::Unknown)
        return !which;
    if (which->state == UnwrittenEntry::Waiting) {
        const UnwrittenEntry* before = neededBy(which->request);
        if (before && before != which && before->when <= which->when &&
            before < which) // invariant 1: those before it
            return false;
    }
    m_busy = true;
    store::UpdateGuard guard;
    guard.seen = which->seen;
    guard.own = which->own;
    bool unknown = false;
    const store::Status status = write(*which, &guard, &unknown);
    m_busy = false;
    if (status.ok()) {
        const UnwrittenEntry done = *which;
        const store::Written made = m_store.lastWritten();
        if (made.first > 0) {
            // What the same module gave later knows what it gave before.
            const store::IdRange range{made.first, made.last.id};
            for (auto later = m_entries.begin() + (which - m_entries.data());
                 later != m_entries.end(); ++later)
                if (later->module == done.module)
                    later->own.push_back(range);
            m_repeated[done.module].push_back(range);
        }
        remove(done.id);
        if (const store::TableDef* table = store::findTable(done.request.table)) {
            std::vector<UnwrittenEntry> met = missingEntries(done.request, guard);
            for (UnwrittenEntry& other : conflictEntries(*table, guard, m_store))
                met.push_back(std::move(other));
            for (UnwrittenEntry& other : met) {
                other.when = done.when;
                other.module = done.module;
                other.own = done.own;
                if (made.first > 0)
                    other.own.push_back({made.first, made.last.id});
                add(std::move(other), true);
            }
        }
        check();
        emit changed();
        emit written();
        emit told(Text::tr("Записано: %1").arg(done.words.what));
        free();
        return true;
    }
    which->why = QString::fromStdString(status.text);
    if (unknown) {
        which->state = UnwrittenEntry::Unknown;
        which->written = m_store.lastWritten();
    } else if (which->state == UnwrittenEntry::Waiting) {
        which->state = UnwrittenEntry::Refused;
    }
    if (status.code == store::ParentDeleted && guard.parentDeletion) {
        which->deletedParent = guard.parentDeletion->before;
        which->deletedParentKey = guard.parentDeletion->key;
        which->deletedParentTable = guard.parentDeletion->table;
    }
    save(*which);
    emit changed();
    return false;
}

std::vector<store::IdRange> UnwrittenList::takeRepeated(const QString& module) {
    const auto found = m_repeated.find(module);
    if (found == m_repeated.end())
        return {};
    std::vector<store::IdRange> ranges = std::move(found->second);
    m_repeated.erase(found);
    return ranges;
}

/// Makes the calls that waited for nothing but what is written now.
void UnwrittenList::free() {
    for (size_t i = 0; i < m_entries.size(); ++i) {
        const UnwrittenEntry& waiting = m_entries[i];
        if (waiting.state != UnwrittenEntry::Waiting)
            continue;
        const UnwrittenEntry* before = neededBy(waiting.request);
        if (before && before < &waiting)
            continue;
        repeat(QString(waiting.id)); // goes on from there
        return;
    }
}

int UnwrittenList::repeatAll() {
    QStringList ids;
    for (const UnwrittenEntry& entry : m_entries)
        if (entry.state != UnwrittenEntry::Conflict)
            ids << entry.id;
    int left = 0;
    for (const QString& id : ids)
        if (find(id) && !repeat(id))
            ++left;
    return left;
}

void UnwrittenList::connectionReturned() {
    bool any = false;
    QStringList saved;
    for (size_t i = 0; i < m_entries.size();) {
        UnwrittenEntry& entry = m_entries[i];
        ++i;
        if (entry.words.fields.empty() || entry.words.place.isEmpty()) {
            entry.words = describe(entry.request, &m_store, entry.deletedRecord);
            any = true;
        }
        if (entry.state != UnwrittenEntry::Unknown)
            continue;
        store::Outcome outcome = store::Outcome::Unknown;
        if (!m_store.outcomeOf(entry.written, &outcome).ok())
            break;
        any = true;
        if (outcome == store::Outcome::Saved) {
            saved << entry.words.what;
            remove(QString(entry.id));
            --i;
        } else {
            entry.state = UnwrittenEntry::Refused;
            entry.why = outcome == store::Outcome::NotSaved
                            ? Text::tr("связь потеряна при записи; в хранилище этого нет")
                            : Text::tr("связь потеряна при записи; журнал изменений очищен, "
                                       "и узнать исход уже нельзя");
            save(entry);
        }
    }
    if (any)
        emit changed();
    for (const QString& what : saved)
        emit told(Text::tr("Связь терялась при записи, но записано: %1").arg(what));
    if (!saved.isEmpty())
        free();
}

} // namespace orvo::client
