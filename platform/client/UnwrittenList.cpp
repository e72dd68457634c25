#include "platform/client/UnwrittenList.h"

#include "frame/Text.h"
#include "history/RecordWords.h"
#include "platform/client/Corrections.h"
#include "platform/client/UnwrittenFiles.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <QUuid>

#include <algorithm>
#include <cassert>
#include <cmath>
#include <set>
#include <utility>

namespace orvo::client {

namespace {

using RecordKey = std::pair<std::string, std::string>; ///< table, folded key

/// The records that an entry would make.
std::set<RecordKey> madeBy(const UnwrittenEntry& entry) {
    std::set<RecordKey> keys;
    // A conflict's record is there, and so is what it needs.
    if (entry.state == UnwrittenEntry::Conflict)
        return keys;
    for (const RecordWrite& record : recordsOf(entry.request))
        if (record.flag == MDX_INSERT)
            keys.emplace(entry.request.table, store::foldedKey(record.key));
    return keys;
}

/// The records without which a request would write nothing, or something that nobody sees.
std::set<RecordKey> neededFor(const WriteRequest& request) {
    std::set<RecordKey> keys;
    const store::TableDef* table = store::findTable(request.table);
    if (!table)
        return keys;
    for (const RecordWrite& record : recordsOf(request)) {
        keys.emplace(request.table, store::foldedKey(record.key));
        for (const store::ParentField& parent : store::parentFields(*table))
            for (const auto& [number, value] : record.values)
                if (number == table->find(parent.field) && !store::textOf(value).empty())
                    keys.emplace(parent.table, store::foldedKey(store::textOf(value)));
    }
    return keys;
}

bool meet(const std::set<RecordKey>& one, const std::set<RecordKey>& other) {
    return std::any_of(one.begin(), one.end(),
                       [&](const RecordKey& key) { return other.count(key) != 0; });
}

QString newId() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

} // namespace

UnwrittenList::UnwrittenList(store::Store& store, QObject* parent)
    : QObject(parent)
    , m_store(store) {
    constexpr int pause = 10000;
    m_retry.setInterval(pause);
    connect(&m_retry, &QTimer::timeout, this, &UnwrittenList::saveRest);
}

UnwrittenList::~UnwrittenList() = default;

bool UnwrittenList::keepIn(const QString& directory, QString* error) {
    auto files = std::make_unique<UnwrittenFiles>(
        QString::fromStdString(m_store.displayName() + ' ' + m_store.login()));
    if (!files->open(directory, error))
        return false;
    m_files = std::move(files);
    QStringList problems;
    for (UnwrittenEntry& left : m_files->takeOver(&problems)) {
        left.words = describe(left.request, &m_store, left.deletedRecord);
        m_entries.push_back(std::move(left));
    }
    if (!problems.isEmpty())
        emit told(Text::tr("Несохранённое не прочитано, файлы оставлены на месте: %1")
                      .arg(problems.join(QStringLiteral(", "))));
    connectionReturned();
    emit changed();
    return true;
}

const UnwrittenEntry* UnwrittenList::find(const QString& id) const {
    const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                    [&](const UnwrittenEntry& entry) { return entry.id == id; });
    return found == m_entries.end() ? nullptr : &*found;
}

UnwrittenEntry* UnwrittenList::entry(const QString& id) {
    return const_cast<UnwrittenEntry*>(std::as_const(*this).find(id));
}

void UnwrittenList::check() const {
#ifndef NDEBUG
    for (const UnwrittenEntry& entry : m_entries) {
        assert(!entry.id.isEmpty());
        for (size_t i = 0; i < entry.own.size(); ++i)
            assert(entry.own[i].first <= entry.own[i].last &&
                   (i == 0 || entry.own[i - 1].last < entry.own[i].first));
    }
#endif
}

QString UnwrittenList::summary() const {
    if (m_entries.empty())
        return {};
    QString text = Text::tr("Не записано: ") + m_entries.front().words.what;
    if (m_entries.size() > 1)
        text += Text::tr(" и ещё %1").arg(m_entries.size() - 1);
    return text;
}

const UnwrittenEntry* UnwrittenList::neededBy(const WriteRequest& request) const {
    if (m_entries.empty())
        return nullptr;
    const std::set<RecordKey> needed = neededFor(request);
    for (const UnwrittenEntry& entry : m_entries)
        if (meet(needed, madeBy(entry)))
            return &entry;
    return nullptr;
}

void UnwrittenList::save(const UnwrittenEntry& entry) {
    QString error;
    m_unsaved.erase(entry.id);
    if (m_files && !m_files->save(entry, &error)) {
        m_unsaved.insert(entry.id);
        m_retry.start();
        emit told(error);
    }
}

/// A full disk has room again some time.
void UnwrittenList::saveRest() {
    QString error;
    while (!m_unsaved.empty()) {
        const UnwrittenEntry* unsaved = find(*m_unsaved.begin());
        if (unsaved != nullptr && !m_files->save(*unsaved, &error))
            return;
        m_unsaved.erase(m_unsaved.begin());
    }
    m_retry.stop();
    emit told(Text::tr("Список «Не записано» снова хранится на диске весь"));
}

/// The id is a copy: it may be that of the very entry that goes.
void UnwrittenList::remove(QString id) { // NOLINT(performance-unnecessary-value-param)
    m_entries.erase(std::remove_if(m_entries.begin(), m_entries.end(),
                                   [&](const UnwrittenEntry& entry) { return entry.id == id; }),
                    m_entries.end());
    m_unsaved.erase(id);
    if (m_files)
        m_files->remove(id);
}

void UnwrittenList::add(UnwrittenEntry entry, bool canAsk) {
    entry.request.keep();
    if (entry.id.isEmpty())
        entry.id = newId();
    if (!entry.when.isValid())
        entry.when = QDateTime::currentDateTime();
    if (entry.state == UnwrittenEntry::Gone || entry.state == UnwrittenEntry::Conflict) {
        // One entry for a record: what was typed later goes over what was typed before. An entry
        // that was repeated was typed at its own time.
        const store::TableDef* table = store::findTable(entry.request.table);
        const std::vector<RecordWrite> records = recordsOf(entry.request);
        for (size_t i = 0; table && records.size() == 1 && i < m_entries.size(); ++i) {
            const UnwrittenEntry& old = m_entries[i];
            const std::vector<RecordWrite> before = recordsOf(old.request);
            if (old.state != entry.state || old.request.table != entry.request.table ||
                before.size() != 1 ||
                store::foldedKey(before[0].key) != store::foldedKey(records[0].key))
                continue;
            const bool isLater = entry.when >= old.when;
            RecordWrite both = isLater ? records[0] : before[0];
            for (const auto& value : isLater ? before[0].values : records[0].values)
                if (std::none_of(both.values.begin(), both.values.end(),
                                 [&](const auto& one) { return one.first == value.first; }))
                    both.values.push_back(value);
            std::sort(both.values.begin(), both.values.end(),
                      [](const auto& a, const auto& b) { return a.first < b.first; });
            for (const Theirs& one : old.theirs)
                if (std::none_of(entry.theirs.begin(), entry.theirs.end(),
                                 [&](const Theirs& other) { return other.field == one.field; }))
                    entry.theirs.push_back(one);
            entry.request = requestOf(*table, {both});
            entry.when = std::max(entry.when, old.when);
            remove(QString(old.id));
            break;
        }
    }
    if (entry.words.what.isEmpty())
        entry.words = describe(entry.request, canAsk ? &m_store : nullptr, entry.deletedRecord);
    save(entry);
    const QString id = entry.id;
    m_entries.push_back(std::move(entry));
    check();
    emit changed();
    emit added(id);
}

void UnwrittenList::superseded(const WriteRequest& request) {
    if (m_entries.empty() || request.kind != WriteRequest::Records)
        return;
    const store::TableDef* table = store::findTable(request.table);
    const std::vector<RecordWrite> done = recordsOf(request);
    bool any = false;
    for (size_t i = 0; table && i < m_entries.size();) {
        UnwrittenEntry& entry = m_entries[i];
        if (entry.request.table != request.table || entry.request.kind != WriteRequest::Records ||
            entry.state == UnwrittenEntry::Unknown) {
            ++i;
            continue;
        }
        std::vector<RecordWrite> left;
        bool less = false;
        for (RecordWrite record : recordsOf(entry.request)) {
            bool deleted = false;
            for (const RecordWrite& now : done) {
                deleted = deleted || (record.flag == MDX_DELETE && now.flag == MDX_DELETE &&
                                      store::foldedKey(now.key) == store::foldedKey(record.key));
                if (record.flag != MDX_UPDATE ||
                    store::foldedKey(now.key) != store::foldedKey(record.key))
                    continue;
                const size_t before = record.values.size();
                const auto outdated = [&](const auto& value) {
                    return now.flag == MDX_DELETE || std::find(now.values.begin(), now.values.end(),
                                                               value) != now.values.end();
                };
                record.values.erase(
                    std::remove_if(record.values.begin(), record.values.end(), outdated),
                    record.values.end());
                less = less || record.values.size() != before;
            }
            less = less || deleted;
            if (!deleted && (record.flag != MDX_UPDATE || !record.values.empty()))
                left.push_back(std::move(record));
        }
        if (!less) {
            ++i;
            continue;
        }
        any = true;
        if (left.empty()) {
            remove(QString(entry.id));
            continue;
        }
        entry.request = requestOf(*table, left);
        entry.words = describe(entry.request, &m_store, entry.deletedRecord);
        save(entry);
        ++i;
    }
    check();
    if (any)
        emit changed();
}

WriteRequest UnwrittenList::withoutUnwritten(const WriteRequest& request) {
    const store::TableDef* table = store::findTable(request.table);
    if (m_entries.empty() || !table || request.kind != WriteRequest::Records)
        return request;
    std::set<RecordKey> made;
    for (const UnwrittenEntry& entry : m_entries)
        made.merge(madeBy(entry));
    std::vector<RecordWrite> left;
    std::set<RecordKey> gone;
    for (RecordWrite& record : recordsOf(request)) {
        RecordKey key{request.table, store::foldedKey(record.key)};
        if (record.flag == MDX_DELETE && made.count(key) != 0)
            gone.insert(std::move(key));
        else
            left.push_back(std::move(record));
    }
    if (gone.empty())
        return request;
    std::vector<std::pair<QString, WriteRequest>> told;
    for (size_t i = 0; i < m_entries.size();) {
        UnwrittenEntry& entry = m_entries[i];
        std::vector<RecordWrite> records = recordsOf(entry.request);
        const auto first =
            std::stable_partition(records.begin(), records.end(), [&](const RecordWrite& record) {
                return gone.count({entry.request.table, store::foldedKey(record.key)}) == 0;
            });
        if (first == records.end()) {
            ++i;
            continue;
        }
        told.emplace_back(entry.module, requestOf(*store::findTable(entry.request.table),
                                                  {first, records.end()}));
        records.erase(first, records.end());
        if (records.empty()) {
            remove(QString(entry.id));
        } else {
            entry.request = requestOf(*store::findTable(entry.request.table), records);
            save(entry);
            ++i;
        }
    }
    emit changed();
    for (const auto& [module, records] : told)
        tellDropped(module, records);
    return left.empty() ? WriteRequest{} : requestOf(*table, left);
}

void UnwrittenList::giveUp(const QString& id) {
    const UnwrittenEntry* which = find(id);
    if (!which)
        return;
    const std::set<RecordKey> made = madeBy(*which);
    const UnwrittenEntry gone = *which;
    remove(id);
    // What waits for records that will never be goes, too.
    QStringList after;
    for (const UnwrittenEntry& waiting : m_entries)
        if (waiting.state == UnwrittenEntry::Waiting && meet(neededFor(waiting.request), made))
            after << waiting.id;
    for (const QString& one : after)
        giveUp(one);
    emit changed();
    tellDropped(gone.module, gone.request);
}

void UnwrittenList::tellDropped(const QString& module, const WriteRequest& request) {
    const std::vector<store::Change> corrections = correctionsOf(request, m_store);
    if (!corrections.empty())
        emit dropped(module, corrections);
}

void UnwrittenList::setMine(const QString& id, const std::string& key, int field,
                            const QString& text) {
    UnwrittenEntry* which = entry(id);
    const store::TableDef* table = which ? store::findTable(which->request.table) : nullptr;
    if (!table)
        return;
    std::vector<RecordWrite> records = recordsOf(which->request);
    for (RecordWrite& record : records)
        for (auto& [number, value] : record.values) {
            if (number != field || record.key != key)
                continue;
            const MdxType type = table->fields[static_cast<size_t>(field)].type;
            bool good = true;
            if (type == MDX_TEXT)
                value = text.toStdString();
            else if (const int integer = text.toInt(&good); type == MDX_INTEGER && good)
                value = int64_t(integer);
        }
    which->request = requestOf(*table, records);
    which->words = describe(which->request, &m_store, which->deletedRecord);
    save(*which);
    emit changed();
}

} // namespace orvo::client
