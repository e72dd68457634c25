#include "history/Difference.h"

#include "frame/Vocabulary.h"
#include "history/RecordWords.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <QStringList>

#include <algorithm>
#include <cstring>

namespace orvo::history {

namespace {

const std::string nothing;

std::string textAt(const Values& values, int field) {
    const auto found = values.find(field);
    return found == values.end() ? std::string() : store::textOf(found->second);
}

std::vector<const store::TableDef*> allTables() {
    std::vector<const store::TableDef*> all;
    for (const store::TableDef& table : store::tables())
        all.push_back(&table);
    all.push_back(&store::contentTable());
    return all;
}

/// The records above a record: its parents, and the form or file of a content.
std::vector<RecordKey> above(const store::TableDef& table, const Values& values) {
    std::vector<RecordKey> found;
    const auto add = [&](const char* target, const char* field) {
        if (const std::string key = textAt(values, table.find(field)); store::isKey(key))
            found.emplace_back(store::findTable(target), store::foldedKey(key));
    };
    for (const store::ParentField& parent : store::parentFields(table))
        add(parent.table, parent.field);
    if (&table == &store::contentTable())
        add(table::MenuResource, field::MenuResourceKey);
    return found;
}

using Children = std::map<RecordKey, std::vector<RecordKey>>;

Children childrenIn(const Installation& installation) {
    Children children;
    for (const store::TableDef* table : allTables())
        for (const auto& [key, values] : installation.records(*table))
            for (const RecordKey& parent : above(*table, values))
                children[parent].emplace_back(table, key);
    return children;
}

void addBranch(const Installation& installation, const RecordKey& top, std::set<RecordKey>* found) {
    const Children children = childrenIn(installation);
    std::vector<RecordKey> open;
    if (installation.find(*top.first, top.second))
        open.push_back(top);
    while (!open.empty()) {
        const RecordKey record = open.back();
        open.pop_back();
        if (!found->insert(record).second)
            continue;
        if (const auto below = children.find(record); below != children.end())
            open.insert(open.end(), below->second.begin(), below->second.end());
    }
}

/// Adds what the records need and `from` lacks: what is above them, and the resources of elements.
void addNeeded(const Installation& from, const Installation& to, std::set<RecordKey>* records) {
    const Children children = childrenIn(to);
    std::vector<RecordKey> open(records->begin(), records->end());
    while (!open.empty()) {
        const auto [table, key] = open.back();
        open.pop_back();
        const Values* values = to.find(*table, key);
        if (!values)
            continue;
        std::vector<RecordKey> needed = above(*table, *values);
        if (const int field = table->find(field::MenuResourceKey);
            field >= 0 && store::isKey(textAt(*values, field)))
            needed.emplace_back(store::findTable(table::MenuResource),
                                store::foldedKey(textAt(*values, field)));
        const auto contents = children.find({table, key}); // of a resource that is needed
        if (contents != children.end() && std::strcmp(table->name, table::MenuResource) == 0)
            for (const RecordKey& content : contents->second)
                if (content.first == &store::contentTable())
                    needed.push_back(content);
        for (const RecordKey& one : needed)
            if (to.find(*one.first, one.second) && !from.find(*one.first, one.second) &&
                records->insert(one).second)
                open.push_back(one);
    }
}

/// Whether a field belongs to the work with an installation, not to what was built in it.
bool isOwn(const store::TableDef& table, int field) {
    return std::strcmp(table.name, table::MenuResource) == 0 &&
           (field == table.find(field::UsersKey) || field == table.find(field::dateTimeEdit));
}

} // namespace

// Installation -----------------------------------------------------------------------------------

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
                                    ": запись без ключа или не с теми полями"};
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
    if (status.ok())
        m_open = store::foldedKey(store::textOf(values.front()));
    return status;
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

// Paths ------------------------------------------------------------------------------------------

std::vector<RecordKey> findPath(const Installation& installation, const std::string& path) {
    std::vector<RecordKey> found;
    for (const store::TableDef& table : store::tables())
        if (std::strcmp(table.name, table::Users) != 0 && installation.find(table, path))
            found.emplace_back(&table, store::foldedKey(path));
    if (!found.empty())
        return found;
    const QStringList names = QString::fromStdString(path).split('/');
    const Children children = childrenIn(installation);
    for (const store::TableDef& table : store::tables())
        for (const auto& [key, values] : installation.records(table))
            if (store::parentFields(table).size() > 0 && above(table, values).empty())
                if (nameOf(table, values) == names.front())
                    found.emplace_back(&table, key);
    for (int i = 1; i < names.size(); ++i) {
        std::vector<RecordKey> next;
        for (const RecordKey& record : found)
            if (const auto below = children.find(record); below != children.end())
                for (const RecordKey& child : below->second) {
                    const Values& values = *installation.find(*child.first, child.second);
                    // Elements stand below their desktop and below another element.
                    const bool atTop =
                        above(*child.first, values).size() == 1 || record.first == child.first;
                    if (atTop && nameOf(*child.first, values) == names[i])
                        next.push_back(child);
                }
        found = std::move(next);
    }
    return found;
}

// Difference -------------------------------------------------------------------------------------

namespace {

class Comparing {
public:
    Comparing(const Installation& from, const Installation& to, Difference& difference)
        : m_from(from)
        , m_to(to)
        , m_difference(difference) {}

    /// Adds the writes of one kind to a table, of those of its records that are wanted.
    void add(const store::TableDef& table, int flag, const std::set<RecordKey>* wanted) {
        store::TableWrites part;
        part.table = &table;
        const Installation& named = flag == MDX_DELETE ? m_from : m_to;
        for (const auto& [key, values] : named.records(table)) {
            if (wanted && wanted->count({&table, key}) == 0)
                continue;
            const Values* old = m_from.find(table, key);
            const Values* made = m_to.find(table, key);
            const int needed = !old ? MDX_INSERT : !made ? MDX_DELETE : MDX_UPDATE;
            if (needed == flag)
                add(table, flag, key, old, made, part);
        }
        if (!part.writes.empty())
            m_difference.parts.push_back(std::move(part));
    }

private:
    void add(const store::TableDef& table, int flag, const std::string& key, const Values* old,
             const Values* made, store::TableWrites& part) {
        store::Write write;
        write.flag = flag;
        write.key = textAt(old ? *old : *made, 0);
        Values before, after;
        if (flag == MDX_DELETE)
            before = *old;
        const bool content = &table == &store::contentTable();
        const bool bytes =
            content && made && (!old || m_from.checksumOf(key) != m_to.checksumOf(key));
        if (made)
            for (const auto& [field, value] : *made) {
                const bool same = old && old->at(field) == value;
                const bool withBytes = bytes && field == table.find(field::size);
                if (isOwn(table, field) || (field == 0 && old) || (same && !withBytes))
                    continue;
                after[field] = value;
                if (old)
                    before[field] = old->at(field);
                if (field != 0)
                    write.values.emplace_back(field, value);
            }
        if (flag == MDX_UPDATE && write.values.empty() && !bytes)
            return;
        // Contents go with their form or file.
        if (flag == MDX_DELETE && content && !owner(*old))
            return;
        store::Change change;
        change.code = flag == MDX_INSERT   ? OrvoEventInsert
                      : flag == MDX_DELETE ? OrvoEventDelete
                                           : OrvoEventUpdate;
        change.table = table.name;
        change.key = write.key;
        change.after = jsonOf(table, after);
        change.before = jsonOf(table, before);
        m_difference.changes.push_back(std::move(change));
        part.writes.push_back(std::move(write));
        if (content)
            part.bytes.push_back(
                {0, bytes ? std::optional<std::string>(m_to.bytesOf(key)) : std::nullopt});
    }
    bool owner(const Values& content) const {
        const std::string key = textAt(content, store::contentTable().find(field::MenuResourceKey));
        return m_to.find(*store::findTable(table::MenuResource), key) != nullptr;
    }

    const Installation& m_from;
    const Installation& m_to;
    Difference& m_difference;
};

} // namespace

Difference differenceOf(const Installation& from, const Installation& to,
                        const std::optional<RecordKey>& top, bool withUsers) {
    Difference difference;
    std::set<RecordKey> wanted;
    if (top) {
        addBranch(from, *top, &wanted);
        addBranch(to, *top, &wanted);
        addNeeded(from, to, &wanted);
    }
    std::vector<const store::TableDef*> tables = allTables();
    if (!withUsers)
        tables.erase(std::remove(tables.begin(), tables.end(), store::findTable(table::Users)),
                     tables.end());
    Comparing comparing(from, to, difference);
    for (const int flag : {MDX_INSERT, MDX_UPDATE})
        for (const store::TableDef* table : tables)
            comparing.add(*table, flag, top ? &wanted : nullptr);
    for (auto table = tables.rbegin(); table != tables.rend(); ++table)
        comparing.add(**table, MDX_DELETE, top ? &wanted : nullptr);
    return difference;
}

} // namespace orvo::history
