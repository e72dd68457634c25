// Entries for what an update met: fields that another changed, records that are gone.
#include "platform/client/UnwrittenList.h"

#include "frame/Text.h"
#include "history/RecordWords.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace orvo::client {

std::vector<UnwrittenEntry> conflictEntries(const store::TableDef& table,
                                            const store::UpdateGuard& guard, store::Store& store) {
    std::vector<UnwrittenEntry> entries;
    std::map<std::string, std::vector<const store::Conflict*>> byKey;
    history::StoredRecords source(&store);
    for (const store::Conflict& conflict : guard.conflicts)
        byKey[store::foldedKey(conflict.key)].push_back(&conflict);
    for (const auto& [key, conflicts] : byKey) {
        UnwrittenEntry entry;
        entry.state = UnwrittenEntry::Conflict;
        RecordWrite record{MDX_UPDATE, conflicts.front()->key, {}};
        QStringList who;
        for (const store::Conflict* conflict : conflicts) {
            record.values.emplace_back(conflict->field, conflict->mine);
            const QString login = conflict->login.empty() ? Text::tr("(вручную)")
                                                          : QString::fromStdString(conflict->login);
            entry.theirs.push_back(
                {conflict->key, conflict->field,
                 history::valueWords(table, conflict->field, conflict->theirs, &source), login,
                 QDateTime::fromMSecsSinceEpoch(std::llround(conflict->time * 1000.0))});
            who << login;
            entry.seen = std::max(entry.seen, conflict->id);
        }
        who.removeDuplicates();
        entry.request = requestOf(table, {record});
        entry.why = Text::tr("эти же поля изменил другой: %1").arg(who.join(QStringLiteral(", ")));
        entries.push_back(std::move(entry));
    }
    return entries;
}

std::vector<UnwrittenEntry> missingEntries(const WriteRequest& request,
                                           const store::UpdateGuard& guard) {
    std::vector<UnwrittenEntry> entries;
    const store::TableDef* table = store::findTable(request.table);
    if (!table || guard.missing.empty())
        return entries;
    const std::vector<RecordWrite> records = recordsOf(request);
    for (const store::MissingRecord& missing : guard.missing) {
        RecordWrite wanted{MDX_UPDATE, missing.key, {}};
        for (const RecordWrite& record : records)
            if (record.flag == MDX_UPDATE &&
                store::foldedKey(record.key) == store::foldedKey(missing.key))
                wanted.values = record.values;
        UnwrittenEntry entry;
        entry.state = UnwrittenEntry::Gone;
        entry.request = requestOf(*table, {wanted});
        entry.why = Text::tr("записи нет в хранилище");
        if (missing.deletion) {
            entry.deletedRecord = missing.deletion->before;
            const QString login = QString::fromStdString(missing.deletion->login);
            entry.why =
                Text::tr("запись удалена: %1, %2")
                    .arg(login.isEmpty() ? Text::tr("вручную") : login,
                         QDateTime::fromMSecsSinceEpoch(std::llround(missing.deletion->time * 1000))
                             .toString(Text::tr("dd.MM.yyyy HH:mm:ss")));
        }
        entries.push_back(std::move(entry));
    }
    return entries;
}

} // namespace orvo::client
