#include "history/Installation.h"

#include "frame/StdText.h"
#include "frame/Vocabulary.h"
#include "history/RecordWords.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <QString>

#include <cstring>

namespace orvo::history {

namespace {

const std::string nothing;
/// So many bytes are believed to come when they are announced.
constexpr int64_t mostReserved = int64_t(1) << 30;

} // namespace

const Installation::Records& Installation::records(const store::TableDef& table) const {
    static const Records none;
    const auto found = m_records.find(&table);
    return found == m_records.end() ? none : found->second;
}

const Values* Installation::find(const store::TableDef& table, const std::string& key) const {
    const Records& all = records(table);
    const auto found = all.find(store::foldedKey(key));
    return found == all.end() ? nullptr : &found->second;
}

const std::string& Installation::checksumOf(const std::string& contentKey) const {
    const auto found = m_sums.find(store::foldedKey(contentKey));
    return found == m_sums.end() ? nothing : found->second;
}

const std::string& Installation::bytesOf(const std::string& contentKey) const {
    const auto found = m_bytes.find(store::foldedKey(contentKey));
    return found == m_bytes.end() ? nothing : found->second;
}

Values Installation::valuesOf(const store::TableDef& table, const std::string& key) {
    const Values* found = find(table, key);
    return found ? *found : Values();
}

store::Status Installation::expect(uint64_t /*records*/, uint64_t /*contents*/,
                                   uint64_t /*bytes*/) {
    return {};
}

store::Status Installation::record(const store::TableDef& table,
                                   const std::vector<store::Value>& values,
                                   const std::string& place) {
    finish();
    if (values.size() != table.fields.size() || !store::isKey(store::textOf(values.front())))
        return {store::Refused, (place.empty() ? store::inTable(table) : place) +
                                    StdText::tr(": запись без ключа или не с теми полями")};
    Values& own = m_records[&table][store::foldedKey(store::textOf(values.front()))];
    for (size_t i = 0; i < values.size(); ++i) {
        const bool none = table.fields[i].link && store::textOf(values[i]).empty();
        own[static_cast<int>(i)] = none ? store::Value() : values[i];
    }
    return {};
}

store::Status Installation::content(const std::vector<store::Value>& values,
                                    const std::string& place) {
    store::Status status = record(store::contentTable(), values, place);
    if (!status.ok())
        return status;
    m_open = store::foldedKey(store::textOf(values.front()));
    const store::Value& promised =
        values[static_cast<size_t>(store::contentTable().find(field::size))];
    const auto* size = std::get_if<int64_t>(&promised);
    if (m_known && size && *size > 0 && *size <= mostReserved) // else it grows, and is copied
        m_read.reserve(static_cast<size_t>(*size));
    return {};
}

store::Status Installation::bytes(std::string_view piece) {
    m_sum.add(piece);
    if (m_known)
        m_read += piece;
    return {};
}

void Installation::finish() {
    if (m_open.empty())
        return;
    const std::string sum = m_sum.text();
    if (m_known && m_known->checksumOf(m_open) != sum)
        m_bytes[m_open] = std::move(m_read);
    m_sums[m_open] = sum;
    m_open.clear();
    m_read.clear();
    m_sum.reset();
}

std::vector<const store::TableDef*> allTables() {
    std::vector<const store::TableDef*> all;
    for (const store::TableDef& table : store::tables())
        all.push_back(&table);
    all.push_back(&store::contentTable());
    return all;
}

/// The records above a record: its parents, and the form or file of a content.
std::vector<RecordKey> recordsAbove(const store::TableDef& table, const Values& values) {
    std::vector<RecordKey> found;
    for (const store::ParentField& above : linksAbove(table))
        if (const std::string key = textAt(values, table.find(above.field)); store::isKey(key))
            found.emplace_back(store::findTable(above.table), store::foldedKey(key));
    return found;
}

Children childrenIn(const Installation& installation) {
    Children children;
    for (const store::TableDef* table : allTables())
        for (const auto& [key, values] : installation.records(*table))
            for (const RecordKey& parent : recordsAbove(*table, values))
                children[parent].emplace_back(table, key);
    return children;
}

// Paths ------------------------------------------------------------------------------------------

std::vector<RecordKey> findPath(const Installation& installation, const std::string& path) {
    std::vector<RecordKey> found;
    for (const store::TableDef& table : store::tables())
        if (std::strcmp(table.name, table::Users) != 0 && installation.find(table, path))
            found.emplace_back(&table, store::foldedKey(path));
    if (!found.empty())
        return found;
    using Place = std::pair<RecordKey, QString>; // and what of the path leads below it
    std::vector<Place> places;
    const auto go = [](std::vector<Place>* to, const RecordKey& record, const QString& name,
                       const QString& rest) {
        if (name == rest)
            to->emplace_back(record, QString());
        else if (!name.isEmpty() && rest.startsWith(name + QLatin1Char('/'))) // names may hold "/"
            to->emplace_back(record, rest.mid(name.size() + 1));
    };
    const Children children = childrenIn(installation);
    for (const store::TableDef& table : store::tables())
        for (const auto& [key, values] : installation.records(table))
            if (store::parentFields(table).size() > 0 && recordsAbove(table, values).empty())
                go(&places, {&table, key}, nameOf(table, values), QString::fromStdString(path));
    while (!places.empty()) {
        std::vector<Place> next;
        for (const auto& [record, rest] : places) {
            if (rest.isEmpty()) {
                found.push_back(record);
                continue;
            }
            if (const auto below = children.find(record); below != children.end())
                for (const RecordKey& child : below->second) {
                    const Values& values = *installation.find(*child.first, child.second);
                    // Elements stand below their desktop and below another element.
                    const bool atTop = recordsAbove(*child.first, values).size() == 1 ||
                                       record.first == child.first;
                    if (atTop)
                        go(&next, child, nameOf(*child.first, values), rest);
                }
        }
        places = std::move(next);
    }
    return found;
}

} // namespace orvo::history
