// HistoryTest.h: actions of several users on one store, and what it holds as text.
#ifndef ORVO_TESTS_HISTORY_HISTORYTEST_H
#define ORVO_TESTS_HISTORY_HISTORYTEST_H

#include "tests/store/StoreTest.h"

#include "history/GroupWords.h"
#include "history/Inverse.h"
#include "platform/store/Maintenance.h"

#include <QTextStream>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orvo::history::test {

using store::test::Batch;
using store::test::StoreKind;

/// All that a store holds, a line a record.
class Snapshot : public store::Receiver {
public:
    store::Status expect(uint64_t, uint64_t, uint64_t) override { return {}; }
    store::Status record(const store::TableDef& table, const std::vector<store::Value>& values,
                         const std::string&) override {
        QString line = QString::fromLatin1(table.name);
        for (const store::Value& value : values) {
            line += '|';
            if (const auto* text = std::get_if<std::string>(&value))
                line += '"' + QString::fromStdString(*text) + '"';
            else if (const auto* number = std::get_if<int64_t>(&value))
                line += QString::number(*number);
            else if (const auto* real = std::get_if<double>(&value))
                line += QString::number(*real, 'g', 17);
        }
        lines << line;
        return {};
    }
    store::Status content(const std::vector<store::Value>& values, const std::string& p) override {
        return record(store::contentTable(), values, p);
    }
    store::Status bytes(std::string_view piece) override {
        lines.back() += ' ' + QString::fromLatin1(QByteArray(piece.data(), int(piece.size())));
        return {};
    }
    QStringList lines;
};

/// Gives every case a fresh store, into which "anna" and "boris" write.
class HistoryTest : public QObject {
    Q_OBJECT
public:
    explicit HistoryTest(StoreKind& kind) : m_kind(kind) {}

protected:
    std::unique_ptr<store::MaintainedStore> login(const char* name) const {
        store::Status status;
        auto store = store::openMaintained(m_kind.url(), {name, false, "test"}, &status);
        if (!store)
            qWarning("%s", status.text.c_str());
        return store;
    }
    /// The id of the group that this object wrote last.
    static int64_t last(const store::Store& store) { return store.lastWritten().first; }
    QStringList snapshot() const {
        Snapshot text;
        const store::Status status = m_anna->writeOut(text);
        return status.ok() ? text.lines : QStringList{QString::fromStdString(status.text)};
    }
    /// The line of the group.
    QString words(int64_t id) const {
        Group group;
        LoggedRecords source(*m_anna);
        const store::Status status = readGroup(*m_anna, id, &group);
        return status.ok() ? describe(group, source).what : QString::fromStdString(status.text);
    }
    QStringList remarks(const Inverse& inverse) const {
        QStringList list;
        LoggedRecords source(*m_anna);
        for (const Remark& remark : inverse.remarks)
            list << remarkWords(remark, source);
        return list;
    }

    /// A field of an element.
    QString fieldOf(const char* key, const char* field) const {
        std::map<std::string, std::vector<store::Value>> values;
        const store::TableDef& table = *store::findTable("Menu");
        const store::Status status = m_anna->storedValues(table, {key}, &values);
        return values.empty() ? QString::fromStdString(status.text)
                              : QString::fromStdString(store::textOf(
                                    values.begin()->second[size_t(table.find(field))]));
    }
    QString caption(const char* key) const { return fieldOf(key, "caption"); }

    /// A desktop "d" with the elements "a" > "b" > "c".
    void plantElements() {
        ORVO_OK(Batch("MenuFolder").insert("d", {{"caption", "Стол"}}).send(*m_anna));
        ORVO_OK(Batch("Menu")
                    .insert("a", {{"caption", "А"}, {"FolderKey", "d"}})
                    .insert("b", {{"caption", "Б"}, {"FolderKey", "d"}, {"parent", "a"}})
                    .insert("c", {{"caption", "В"}, {"FolderKey", "d"}, {"parent", "b"}})
                    .send(*m_anna));
    }
    /// Renames an element; the id of the group.
    static int64_t rename(store::Store& store, const char* key, const char* caption) {
        const store::Status status = Batch("Menu").update(key, {{"caption", caption}}).send(store);
        if (!status.ok())
            qWarning("%s", status.text.c_str());
        return status.ok() ? last(store) : -1;
    }

    StoreKind& m_kind;
    std::unique_ptr<store::MaintainedStore> m_anna, m_boris;

protected slots:
    void init() {
        QVERIFY(m_kind.renew());
        m_anna = login("anna");
        m_boris = login("boris");
        QVERIFY(m_anna && m_boris);
    }
};

} // namespace orvo::history::test

#endif
