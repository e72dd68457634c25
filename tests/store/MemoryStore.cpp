#include "MemoryStore.h"

#include "frame/Vocabulary.h"
#include "platform/store/Names.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace orvo::store::test {

namespace {

QJsonValue jsonOf(const Value& value, MdxType type) {
    if (const auto* text = std::get_if<std::string>(&value))
        return QString::fromStdString(*text);
    if (const auto* number = std::get_if<int64_t>(&value))
        return type == MDX_BOOLEAN ? QJsonValue(*number != 0) : QJsonValue(double(*number));
    if (const auto* real = std::get_if<double>(&value))
        return *real;
    return {};
}

/// The values of a row, or of those fields alone that differ from another row's.
std::string jsonOf(const TableDef& table, const StoreBackend::Row& row,
                   const StoreBackend::Row* other) {
    QJsonObject object;
    for (size_t i = 0; i < row.size(); ++i)
        if (other == nullptr || (*other)[i] != row[i])
            object[table.fields[i].name] = jsonOf(row[i], table.fields[i].type);
    return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}

StoreBackend::Row picked(const StoreBackend::Row& row, const std::vector<int>& fields) {
    StoreBackend::Row out;
    for (const int field : fields)
        out.push_back(row[static_cast<size_t>(field)]);
    return out;
}

bool equal(const TableDef& table, size_t field, const Value& a, const Value& b) {
    return isKeyOrLink(table, table.fields[field])
               ? foldedKey(textOf(a)) == foldedKey(textOf(b)) && a.index() == b.index()
               : a == b;
}

} // namespace

MemoryStore::MemoryStore() : StoreCore("tester", {}) {
    for (const TableDef& table : tables()) // all of them, so that looking changes nothing
        m_content.tables[table.name];
    m_content.tables[contentTable().name];
}

Status MemoryStore::called() {
    if (m_failAfter < 0 || m_failAfter-- > 0)
        return {};
    m_failed = true;
    return {Failed, "Так задано"};
}

// Transactions -----------------------------------------------------------------------------------

Status MemoryStore::inRead(const Work& work) {
    const Status status = called();
    return status.ok() ? work() : status;
}

Status MemoryStore::inWrite(const Work& work) {
    const Content before = m_content;
    const int64_t since = newest();
    m_written = {};
    Status status = called();
    if (status.ok())
        status = work();
    if (status.ok())
        status = called(); // the commit
    if (!status.ok()) {
        m_content = before;
        return status;
    }
    m_written.since = since;
    if (newest() > since) {
        m_written.first = since + 1;
        m_written.last = LogCursor(m_content.log.back());
    }
    return {};
}

// Records ----------------------------------------------------------------------------------------

Status MemoryStore::fetchRows(const TableDef& table, MDArray* into,
                              const std::function<bool(const Row& row)>& wanted) {
    return records(table, into, [&](mdx::RecordWriter& writer) -> Status {
        for (const auto& [key, row] : m_content.tables[table.name]) {
            if (!wanted(row))
                continue;
            writer.begin();
            for (size_t i = 0; i < row.size(); ++i) {
                const int field = static_cast<int>(i);
                if (const auto* text = std::get_if<std::string>(&row[i]))
                    writer.textUtf8(field, text->data(), text->size());
                else if (const auto* real = std::get_if<double>(&row[i]))
                    writer.date(field, *real);
                else if (const auto* number = std::get_if<int64_t>(&row[i]))
                    table.fields[i].type == MDX_BOOLEAN
                        ? writer.boolean(field, *number != 0)
                        : writer.integer(field, static_cast<int32_t>(*number));
            }
            writer.end();
        }
        return called();
    });
}

Status MemoryStore::fetchAll(const TableDef& table, MDArray* into) {
    return fetchRows(table, into, [](const Row&) { return true; });
}

Status MemoryStore::fetchMatching(const TableDef& table, const FieldDef& field, TextMatch match,
                                  std::string_view value, MDArray* into) {
    const auto number = static_cast<size_t>(&field - table.fields.data());
    return fetchRows(table, into, [&](const Row& row) {
        const auto* text = std::get_if<std::string>(&row[number]);
        return text != nullptr &&
               (match == TextMatch::Exact ? *text == value : foldedKey(*text) == foldedKey(value));
    });
}

Status MemoryStore::select(const TableDef& table, const std::vector<int>& fields,
                           const EachRow& each) {
    for (const auto& [key, row] : m_content.tables[table.name])
        each(picked(row, fields));
    return called();
}

Status MemoryStore::selectWhere(const TableDef& table, const std::vector<int>& fields, int where,
                                const Value& value, const EachRow& each) {
    const auto field = static_cast<size_t>(where);
    for (const auto& [key, row] : m_content.tables[table.name])
        if (equal(table, field, row[field], value))
            each(picked(row, fields));
    return called();
}

Status MemoryStore::selectInOrder(const TableDef& table,
                                  const std::function<Status(const Row& row)>& each) {
    for (const auto& [key, row] : m_content.tables[table.name])
        if (const Status status = each(row); !status.ok())
            return status;
    return called();
}

Status MemoryStore::selectKeys(const TableDef& table, const std::vector<int>& fields,
                               const std::vector<std::string>& keys, const EachRow& each) {
    const auto& rows = m_content.tables[table.name];
    for (const std::string& key : keys)
        if (const auto row = rows.find(key); row != rows.end())
            each(picked(row->second, fields));
    return called();
}

Status MemoryStore::selectNaming(const TableDef& table, int field,
                                 const std::vector<std::string>& keys, const EachRow& each) {
    const bool isLink = isKeyOrLink(table, table.fields[static_cast<size_t>(field)]);
    for (const auto& [key, row] : m_content.tables[table.name]) {
        const std::string value = textOf(row[static_cast<size_t>(field)]);
        if (std::find(keys.begin(), keys.end(), isLink ? foldedKey(value) : value) != keys.end())
            each(picked(row, {0, field}));
    }
    return called();
}

void MemoryStore::logChange(const TableDef& table, int code, const std::string& key,
                            const Row& after, const Row& before) {
    Change change;
    change.id = change.group = newest() + 1;
    change.code = code;
    change.table = table.name;
    change.key = key;
    change.login = login();
    change.time = static_cast<double>(change.id);
    const bool update = code == OrvoEventUpdate;
    change.after = jsonOf(table, after, update ? &before : nullptr);
    change.before = jsonOf(table, before, update ? &after : nullptr);
    m_content.log.push_back(std::move(change));
}

Status MemoryStore::apply(const TableDef& table, const Write& write) {
    if (const Status status = called(); !status.ok())
        return status;
    auto& rows = m_content.tables[table.name];
    const auto present = rows.find(foldedKey(write.key));
    if (write.flag == MDX_INSERT && present != rows.end())
        return {Refused, placeOf(table, write) + ": такой ключ уже есть"};
    if (write.flag != MDX_INSERT && present == rows.end())
        return {};
    if (write.flag == MDX_DELETE) {
        const Row gone = present->second;
        const std::string key = textOf(gone.front());
        if (std::string_view(table.name) == table::MenuResource) { // its contents go with it
            const TableDef& content = contentTable();
            const auto owner = static_cast<size_t>(content.find(field::MenuResourceKey));
            std::vector<std::string> owned;
            for (const auto& [contentKey, row] : m_content.tables[content.name])
                if (foldedKey(textOf(row[owner])) == foldedKey(key))
                    owned.push_back(contentKey);
            for (const std::string& contentKey : owned) {
                m_content.bytes.erase(contentKey);
                if (const Status status = apply(content, {MDX_DELETE, contentKey, {}});
                    !status.ok())
                    return status;
            }
        }
        rows.erase(foldedKey(key));
        logChange(table, OrvoEventDelete, key, {}, gone);
        return {};
    }
    Row row = present != rows.end() ? present->second : Row(table.fields.size());
    if (write.flag == MDX_INSERT)
        row.front() = write.key;
    const Row before = present != rows.end() ? present->second : Row();
    for (const auto& [number, value] : write.values)
        row[static_cast<size_t>(number)] = value;
    rows[foldedKey(write.key)] = row;
    logChange(table, write.flag == MDX_INSERT ? OrvoEventInsert : OrvoEventUpdate,
              textOf(row.front()), row, before);
    return {};
}

Status MemoryStore::clearAll() {
    std::vector<const TableDef*> all = {&contentTable()};
    for (auto table = tables().rbegin(); table != tables().rend(); ++table)
        all.push_back(&*table);
    for (const TableDef* table : all)
        while (!m_content.tables[table->name].empty())
            if (const Status status =
                    apply(*table, {MDX_DELETE, m_content.tables[table->name].begin()->first, {}});
                !status.ok())
                return status;
    return called();
}

// Stored forms and files -------------------------------------------------------------------------

Status MemoryStore::selectStored(int type, std::string_view folded,
                                 const std::optional<Value>& folder, const EachRow& each) {
    const TableDef& table = *findTable(table::MenuResource);
    const auto place = static_cast<size_t>(table.find(field::MenuResourceFolderKey));
    const auto name = static_cast<size_t>(table.find(field::name_));
    const auto kind = static_cast<size_t>(table.find(field::type_));
    for (const auto& [key, row] : m_content.tables[table.name])
        if (row[kind] == Value(int64_t(type)) && foldedName(textOf(row[name])) == folded &&
            (!folder || equal(table, place, row[place], *folder)))
            each({row.front(), row[place], row[name]});
    return called();
}

Status MemoryStore::applyContent(const Write& write, std::string_view bytes) {
    Status status = beginContent(write, bytes.size());
    if (status.ok())
        status = contentPiece(bytes);
    return status.ok() ? endContent() : status;
}

Status MemoryStore::contentBytes(const std::string& key, std::string* bytes) {
    *bytes = m_content.bytes[foldedKey(key)];
    return called();
}

Status MemoryStore::contentPieces(const std::string& key, const EachPiece& each) {
    const std::string& bytes = m_content.bytes[foldedKey(key)];
    const size_t half = bytes.size() / 2;
    Status status = each(std::string_view(bytes).substr(0, half));
    if (status.ok())
        status = each(std::string_view(bytes).substr(half));
    return status.ok() ? called() : status;
}

Status MemoryStore::beginContent(const Write& write, uint64_t /*size*/) {
    m_open = foldedKey(write.key);
    m_content.bytes[m_open].clear();
    return apply(contentTable(), write);
}

Status MemoryStore::contentPiece(std::string_view piece) {
    m_content.bytes[m_open] += piece;
    return called();
}

Status MemoryStore::endContent() {
    return called();
}

Status MemoryStore::measure(Amount* amount) {
    for (const TableDef& table : tables())
        amount->records += m_content.tables[table.name].size();
    amount->contents = m_content.bytes.size();
    for (const auto& [key, bytes] : m_content.bytes)
        amount->bytes += bytes.size();
    return called();
}

// Change log -------------------------------------------------------------------------------------

Status MemoryStore::identity(std::string* identity) {
    *identity = "memory";
    return {};
}

Status MemoryStore::logPosition(int64_t* id) {
    *id = newest();
    return called();
}

Status MemoryStore::readLog(const LogCursor& cursor, int limit, std::vector<Change>* changes) {
    std::vector<Change> read;
    const bool proved = !cursor.proof.empty();
    for (const Change& change : m_content.log)
        if (change.id >= cursor.id + (proved ? 0 : 1) &&
            read.size() < static_cast<size_t>(limit + (proved ? 1 : 0)))
            read.push_back(change);
    if (const Status status = checkCursor(cursor, m_content.pruned, newest(), &read); !status.ok())
        return status;
    changes->swap(read);
    return called();
}

Status MemoryStore::pruneLog(int64_t id) {
    auto& log = m_content.log;
    while (!log.empty() && log.front().id <= id) {
        m_content.pruned = log.front().id;
        log.erase(log.begin());
    }
    return {};
}

Status MemoryStore::changedSince(const TableDef& table, int64_t since, int64_t* newestId,
                                 bool* changed) {
    *newestId = newest();
    *changed = m_content.pruned > since || newest() < since ||
               std::any_of(m_content.log.begin(), m_content.log.end(), [&](const Change& change) {
                   return change.id > since && change.table == table.name;
               });
    return called();
}

Status MemoryStore::changesOf(const TableDef& table, const std::vector<std::string>& keys,
                              int64_t since, std::vector<Change>* changes) {
    for (const Change& change : m_content.log)
        if (change.id > since && change.table == table.name &&
            std::find(keys.begin(), keys.end(), foldedKey(change.key)) != keys.end())
            changes->push_back(change);
    return called();
}

Status MemoryStore::selectChanges(const ChangeQuery& query, std::vector<Change>* changes) {
    for (auto change = m_content.log.rbegin(); change != m_content.log.rend(); ++change) {
        const bool passes = (query.table.empty() || change->table == query.table) &&
                            (query.key.empty() || foldedKey(change->key) == foldedKey(query.key)) &&
                            (!query.login || change->login == *query.login) &&
                            (!query.since || change->time >= *query.since) &&
                            (!query.until || change->time < *query.until) &&
                            (query.below == 0 || change->id < query.below) &&
                            (!query.id || change->id == *query.id) && change->id > query.above;
        if (passes && changes->size() < static_cast<size_t>(query.limit))
            changes->push_back(*change);
    }
    return called();
}

Status MemoryStore::countChanges(int64_t group, std::vector<ChangeCount>* counts) {
    for (const Change& change : m_content.log)
        if (change.group == group)
            counts->push_back({change.table, change.code, {}, 1, change.id, change.id});
    return called();
}

Status MemoryStore::logBefore(double time, int64_t* id, int64_t* count) {
    for (const Change& change : m_content.log)
        if (change.time < time) {
            *id = change.id;
            ++*count;
        }
    return {};
}

Status MemoryStore::integrity(std::vector<std::string>* /*damages*/) {
    return {};
}

Status MemoryStore::backup(const std::string& /*file*/, const Progress& /*progress*/) {
    return {Refused, "Хранилище в памяти не сохраняется"};
}

Status MemoryStore::restore(const std::string& /*file*/, const Progress& /*progress*/) {
    return {Refused, "Хранилище в памяти не сохраняется"};
}

} // namespace orvo::store::test
