#include "LogReplay.h"

#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <limits>

namespace orvo::store::test {

/// Takes the rows of a store as they are.
class StoreSnapshot : public Receiver {
public:
    LogReplay::Tables rows;

    Status expect(uint64_t /*records*/, uint64_t /*contents*/, uint64_t /*bytes*/) override {
        return {};
    }
    Status record(const TableDef& table, const std::vector<Value>& values,
                  const std::string& /*place*/) override {
        rows[table.name][foldedKey(textOf(values[0]))] = values;
        return {};
    }
    Status content(const std::vector<Value>& values, const std::string& place) override {
        return record(contentTable(), values, place);
    }
    Status bytes(std::string_view /*piece*/) override { return {}; }
};

namespace {

constexpr int mostShown = 20;

QString shown(const Value& value) {
    if (const auto* integer = std::get_if<int64_t>(&value))
        return QString::number(*integer);
    if (const auto* real = std::get_if<double>(&value))
        return QString::number(*real, 'g', 17);
    if (const auto* bytes = std::get_if<std::string>(&value))
        return '"' + QString::fromStdString(*bytes).left(60) + '"';
    return "NULL";
}

QString shownRow(const TableDef& table, const std::vector<Value>& row) {
    QStringList values;
    for (size_t i = 0; i < row.size() && i < table.fields.size(); ++i)
        values += QString("%1=%2").arg(table.fields[i].name, shown(row[i]));
    return values.join(' ');
}

} // namespace

QString LogReplay::apply(const Change& change) {
    const QString place = QString("event %1 (%2 %3 %4): ")
                              .arg(change.id)
                              .arg(change.code)
                              .arg(change.table.c_str(), change.key.c_str());
    const bool rises = change.id > m_position;
    m_position = change.id;
    ++m_changes;
    const TableDef* table =
        change.table == contentTable().name ? &contentTable() : findTable(change.table);
    if (table == nullptr)
        return place + "of no table";
    Rows& rows = m_tables[change.table];
    const std::string key = foldedKey(change.key);
    const bool there = rows.count(key) != 0;
    Row& row = rows[key];
    row.resize(table->fields.size());
    QString fault;
    for (const auto& [field, value] : valuesFromJson(*table, change.before)) {
        const Value& known = row[static_cast<size_t>(field)];
        if (there && known != value)
            fault = QString("%1 was %2, not %3")
                        .arg(table->fields[static_cast<size_t>(field)].name, shown(known),
                             shown(value));
    }
    row[0] = change.key;
    const auto after = valuesFromJson(*table, change.after);
    for (const auto& [field, value] : after)
        row[static_cast<size_t>(field)] = value;
    if (change.code == 601 && after.size() != table->fields.size())
        fault = "it does not tell of all fields";
    if (change.code == 603)
        rows.erase(key);
    if (there == (change.code == 601))
        fault = there ? "the record is there already" : "there is no such record";
    if (!rises)
        fault = "its id does not rise";
    return fault.isEmpty() ? QString() : place + fault;
}

QStringList LogReplay::follow(Store& store) {
    constexpr int rowsOfRead = 5000;
    QStringList faults;
    std::vector<Change> changes;
    do {
        const Status read = store.readLog(m_position, rowsOfRead, &changes);
        if (!read.ok())
            return {QString::fromStdString(read.text)};
        for (const Change& change : changes)
            if (const QString fault = apply(change); !fault.isEmpty())
                faults += fault;
    } while (!changes.empty());
    return faults.mid(0, mostShown);
}

QStringList LogReplay::compare(MaintainedStore& store) const {
    StoreSnapshot stored;
    const Status written = store.writeOut(stored);
    if (!written.ok())
        return {QString::fromStdString(written.text)};
    QStringList faults;
    std::vector<const TableDef*> all = {&contentTable()};
    for (const TableDef& table : tables())
        all.push_back(&table);
    for (const TableDef* table : all) {
        const auto replayed = m_tables.find(table->name);
        const Rows& rows = replayed == m_tables.end() ? Rows() : replayed->second;
        const Rows& present = stored.rows[table->name];
        const QString name = table->name;
        for (const auto& [key, row] : rows) {
            const auto found = present.find(key);
            if (found == present.end())
                faults += name + " lacks " + shownRow(*table, row);
            else if (found->second != row)
                faults += name + " has " + shownRow(*table, found->second) + ", not " +
                          shownRow(*table, row);
        }
        for (const auto& [key, row] : present)
            if (rows.count(key) == 0)
                faults += name + " has, without an event, " + shownRow(*table, row);
    }
    return faults.mid(0, mostShown);
}

QStringList LogReplay::check(MaintainedStore& store) {
    QStringList faults = follow(store);
    faults += compare(store);
    return faults.mid(0, mostShown);
}

QStringList replayDifferences(MaintainedStore& store) {
    return LogReplay().check(store);
}

QStringList replayDifferences(const std::string& url) {
    Status status;
    const auto store = openMaintained(url, {}, &status);
    return store ? replayDifferences(*store) : QStringList(QString::fromStdString(status.text));
}

QStringList historyDifferences(MaintainedStore& store) {
    std::vector<Change> changes;
    const Status read = store.history({}, std::numeric_limits<int>::max(), &changes);
    if (!read.ok())
        return {QString::fromStdString(read.text)};
    LogReplay replay;
    QStringList faults;
    for (auto change = changes.rbegin(); change != changes.rend(); ++change)
        if (const QString fault = replay.apply(*change); !fault.isEmpty())
            faults += fault;
    faults += replay.compare(store);
    return faults.mid(0, mostShown);
}

} // namespace orvo::store::test
