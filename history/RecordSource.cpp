#include "history/RecordSource.h"

#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace orvo::history {

namespace {

QJsonValue jsonValue(MdxType type, const store::Value& value) {
    if (const auto* number = std::get_if<int64_t>(&value))
        return type == MDX_BOOLEAN ? QJsonValue(*number != 0)
                                   : QJsonValue(static_cast<double>(*number));
    if (const auto* real = std::get_if<double>(&value))
        return *real;
    if (const auto* text = std::get_if<std::string>(&value))
        return QString::fromStdString(*text);
    return {};
}

} // namespace

std::string jsonOf(const store::TableDef& table, const Values& values) {
    QJsonObject object;
    for (const auto& [field, value] : values) {
        const store::FieldDef& def = table.fields[static_cast<size_t>(field)];
        object.insert(QLatin1String(def.name), jsonValue(def.type, value));
    }
    return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}

std::string textAt(const Values& values, int field) {
    const auto found = values.find(field);
    return found == values.end() ? std::string() : store::textOf(found->second);
}

const store::TableDef* tableOf(const std::string& name) {
    return name == store::contentTable().name ? &store::contentTable() : store::findTable(name);
}

std::vector<store::ParentField> linksAbove(const store::TableDef& table) {
    return &table == &store::contentTable()
               ? std::vector<store::ParentField>{{field::MenuResourceKey, table::MenuResource}}
               : store::parentFields(table);
}

std::vector<store::ParentField> linksBelow(const store::TableDef& table) {
    std::vector<store::ParentField> found = store::childFields(table);
    if (&table == store::findTable(table::MenuResource))
        found.push_back({field::MenuResourceKey, store::contentTable().name});
    return found;
}

store::Status fetchNaming(store::Store& store, const store::TableDef& table, int field,
                          const std::string& key, MDArray* into) {
    const store::FieldDef& def = table.fields[static_cast<size_t>(field)];
    return store::isKeyOrLink(table, def) ? store.fetchLinked(table.name, def.name, key, into)
                                          : store.fetchWhere(table.name, def.name, key, into);
}

Values valuesIn(const MDArray* rows, uint32_t number) {
    Values values;
    MDRData* record = mdx::postedRecord(rows, number);
    for (int i = 0; record && i < rows->fieldCount; ++i) {
        MDRVar var{};
        if (MDRGetVal(MDRFldByNum(rows, i), record, &var) != MDX_OK)
            continue;
        if (var.null != 0 || var.type == MDX_NONE)
            values[i] = std::monostate();
        else if (var.type == MDX_TEXT)
            values[i] = mdx::toUtf8({var.value.text.pointer, var.value.text.length});
        else if (var.type == MDX_DATE)
            values[i] = double(var.value.date); // a copy: the member is not aligned
        else
            values[i] = int64_t(var.type == MDX_BOOLEAN ? var.value.boolean : var.value.integer);
    }
    return values;
}

void RecordSource::prepare(const store::TableDef&, const std::vector<std::string>&) {}

void RecordSource::prepareUpdated(const std::vector<store::Change>& changes) {
    std::map<const store::TableDef*, std::vector<std::string>> keys;
    for (const store::Change& change : changes)
        if (const store::TableDef* table = tableOf(change.table);
            table && change.code == OrvoEventUpdate)
            keys[table].push_back(change.key);
    for (const auto& [table, all] : keys)
        prepare(*table, all);
}

Values StoredRecords::valuesOf(const store::TableDef& table, const std::string& key) {
    CMDArray rows;
    if (!m_store || key.empty() ||
        !m_store->fetchLinked(table.name, field::KeyLink, key, rows.array).ok() ||
        mdx::postedCount(rows.array) == 0)
        return {};
    return valuesIn(rows.array, 0);
}

void LoggedRecords::prepare(const store::TableDef& table, const std::vector<std::string>& keys) {
    std::vector<std::string> unknown;
    for (const std::string& key : keys)
        if (m_known.count({table.name, store::foldedKey(key)}) == 0)
            unknown.push_back(key);
    std::map<std::string, std::vector<store::Value>> stored;
    if (unknown.empty() || !m_store.storedValues(table, unknown, &stored).ok())
        return;
    for (const auto& [key, row] : stored) {
        Values& values = m_known[{table.name, key}];
        for (size_t i = 0; i < row.size(); ++i)
            values[static_cast<int>(i)] = row[i];
    }
}

Values LoggedRecords::valuesOf(const store::TableDef& table, const std::string& key) {
    if (!store::isKey(key))
        return {};
    const std::pair<std::string, std::string> record{table.name, store::foldedKey(key)};
    if (const auto known = m_known.find(record); known != m_known.end())
        return known->second;
    prepare(table, {key});
    const auto [known, fresh] = m_known.try_emplace(record);
    if (!fresh)
        return known->second;
    store::LogQuery query;
    query.table = table.name;
    query.key = key;
    constexpr int mostLooked = 2; // the deletion is the newest, unless the log was tampered with
    std::vector<store::Change> changes;
    if (m_store.history(query, mostLooked, &changes).ok())
        for (const store::Change& change : changes)
            if (change.code == OrvoEventDelete) {
                known->second = store::valuesFromJson(table, change.before);
                break;
            }
    return known->second;
}

} // namespace orvo::history
