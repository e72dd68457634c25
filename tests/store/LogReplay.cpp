#include "LogReplay.h"

#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <QString>

#include <map>

namespace orvo::store::test {

namespace {

constexpr int mostShown = 20;
constexpr int rowsOfRead = 5000;

using Rows = std::map<std::string, std::vector<Value>>; ///< by folded key
using Content = std::map<std::string, Rows>;            ///< by table

/// Takes the rows of a store as they are.
class Snapshot : public Receiver {
public:
    Content rows;

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

QString shownRow(const TableDef& table, const std::vector<Value>& row) {
    QStringList values;
    for (size_t i = 0; i < row.size() && i < table.fields.size(); ++i) {
        QString text = "NULL";
        if (const auto* integer = std::get_if<int64_t>(&row[i]))
            text = QString::number(*integer);
        else if (const auto* real = std::get_if<double>(&row[i]))
            text = QString::number(*real, 'g', 17);
        else if (const auto* bytes = std::get_if<std::string>(&row[i]))
            text = '"' + QString::fromStdString(*bytes).left(60) + '"';
        values += QString("%1=%2").arg(table.fields[i].name, text);
    }
    return values.join(' ');
}

class Replay {
public:
    Content rows;
    QStringList faults;

    void add(const Change& change) {
        const QString place = QString("event %1 (%2 %3 %4): ")
                                  .arg(change.id)
                                  .arg(change.code)
                                  .arg(change.table.c_str(), change.key.c_str());
        if (change.id <= m_last)
            faults += place + "its id does not rise";
        m_last = change.id;
        const TableDef* table =
            change.table == contentTable().name ? &contentTable() : findTable(change.table);
        if (table == nullptr) {
            faults += place + "of no table";
            return;
        }
        Rows& all = rows[table->name];
        const std::string key = foldedKey(change.key);
        const bool there = all.count(key) != 0;
        if (there == (change.code == 601))
            faults += place + (there ? "the record is there already" : "there is no such record");
        if (change.code == 603) {
            all.erase(key);
            return;
        }
        std::vector<Value>& row = all[key];
        row.resize(table->fields.size());
        row[0] = change.key;
        for (auto& [field, value] : valuesFromJson(*table, change.after))
            row[static_cast<size_t>(field)] = value;
    }

private:
    int64_t m_last = 0;
};

void compare(const TableDef& table, const Rows& replayed, const Rows& stored, QStringList* faults) {
    const QString name = table.name;
    for (const auto& [key, row] : replayed) {
        const auto found = stored.find(key);
        if (found == stored.end())
            *faults += name + " lacks " + shownRow(table, row);
        else if (found->second != row)
            *faults +=
                name + " has " + shownRow(table, found->second) + ", not " + shownRow(table, row);
    }
    for (const auto& [key, row] : stored)
        if (replayed.count(key) == 0)
            *faults += name + " has, without an event, " + shownRow(table, row);
}

} // namespace

QStringList replayDifferences(MaintainedStore& store) {
    Replay replay;
    Snapshot snapshot;
    std::vector<Change> changes;
    LogCursor cursor;
    do {
        const Status read = store.readLog(cursor, rowsOfRead, &changes);
        if (!read.ok())
            return {QString::fromStdString(read.text)};
        for (const Change& change : changes)
            replay.add(change);
        if (!changes.empty())
            cursor = LogCursor(changes.back());
    } while (!changes.empty());
    const Status written = store.writeOut(snapshot);
    if (!written.ok())
        return {QString::fromStdString(written.text)};
    QStringList faults = replay.faults;
    for (const TableDef& table : tables())
        compare(table, replay.rows[table.name], snapshot.rows[table.name], &faults);
    const TableDef& content = contentTable();
    compare(content, replay.rows[content.name], snapshot.rows[content.name], &faults);
    return faults.mid(0, mostShown);
}

QStringList replayDifferences(const std::string& url) {
    Status status;
    const auto store = openMaintained(url, {}, &status);
    return store ? replayDifferences(*store) : QStringList(QString::fromStdString(status.text));
}

} // namespace orvo::store::test
