// Rows that read their values from the records of a table.
#include "TreeText.h"

#include "frame/Records.h"
#include "models/models.h"
#include "platform/mdx/MdxBuild.h"

#include <QSignalSpy>
#include <QtTest>

#include <initializer_list>
#include <map>

using namespace treetext;

namespace {

constexpr int Caption = 0;
constexpr int KeyLink = 5;
constexpr int IsFolder = 9;
constexpr int Columns = 14;

using Res = Watched<ResTreeModel>;

class Rows final : public orvo::RowSource {
public:
    int columnCount() const override { return Columns; }
    QVariant value(const MDRData* record, int column) const override {
        if (column == KeyLink)
            return orvo::textOf(record, "KeyLink");
        if (column == Caption)
            return orvo::textOf(record, "caption");
        return column == IsFolder ? QVariant(false) : QVariant();
    }
};
const Rows source;

/// Records of a key and a caption each.
class Table {
public:
    Table() {
        orvo::mdx::addField(m_records.array, "KeyLink", MDX_TEXT);
        orvo::mdx::addField(m_records.array, "caption", MDX_TEXT);
        orvo::setKeys(m_records);
    }
    MDRData* add(const QString& key, const QString& caption) {
        MDRData* record = MDARecNew(m_records.array);
        set(record, "KeyLink", key);
        set(record, "caption", caption);
        m_records.RecPost(record);
        return record;
    }
    void set(MDRData* record, const char* field, const QString& text) {
        const QByteArray bytes = orvo::toRecord(text);
        m_records.SetValF(record, field, orvo::textVar(bytes));
        m_records.RecPost(record);
    }
    void remove(MDRData* record) { m_records.RecDel(record); }

private:
    CMDArray m_records;
};

QString captionOf(const Res& model, const char* key) {
    return model.findIndexByKey(key).data().toString();
}

} // namespace

class RowValuesTest : public QObject {
    Q_OBJECT
private slots:
    void aRowShowsItsRecord() {
        Table table;
        Res model(headers(Columns), QString());
        auto rows = model.newRows();
        TabRec* folder = rows.add(source, table.add("f", "Цех"));
        rows.add(source, table.add("a", "Насос"), folder);
        QVERIFY(model.insertFilledRows(0, std::move(rows)));
        QCOMPARE(captionOf(model, "A"), QString("Насос"));
        QCOMPARE(model.findIndexByKey("a").parent(), model.findIndexByKey("f"));
        QCOMPARE(model.getItem(model.findIndexByKey("a"))->columnCount(), Columns);
        QVERIFY(!model.findIndexByKey("a").siblingAtColumn(1).data().isValid());
        QVERIFY2(!model.check(), model.check());
    }

    void aWrittenValueIsTheRowsOwnAndTheOthersStay() {
        Table table;
        Res model(headers(Columns), QString());
        MDRData* record = table.add("a", "Насос");
        auto rows = model.newRows();
        rows.add(source, record);
        model.insertFilledRows(0, std::move(rows));
        QVERIFY(model.setData(model.index(0, 1), "pump"));
        table.set(record, "caption", "Котёл"); // which the row does not read any more
        QCOMPARE(model.index(0, 0).data(), QVariant("Насос"));
        QCOMPARE(model.index(0, 1).data(), QVariant("pump"));
        QCOMPARE(model.index(0, IsFolder).data(), QVariant(false));
        QCOMPARE(model.findIndexByKey("a"), model.index(0, 0));
        QVERIFY2(!model.check(), model.check());
    }

    void aRowKeepsWhatItShowsWhenItsRecordIsToChangeOrToGo() {
        Table table;
        Res model(headers(Columns), QString());
        MDRData* changed = table.add("a", "Насос");
        MDRData* gone = table.add("b", "Котёл");
        auto rows = model.newRows();
        rows.add(source, changed);
        rows.add(source, gone);
        model.insertFilledRows(0, std::move(rows));
        const QSignalSpy told(&model, &QAbstractItemModel::dataChanged);
        for (MDRData* record : {changed, gone})
            model.keepValues(source, record);
        model.keepValues(source, nullptr);
        table.set(changed, "caption", "Горелка");
        table.set(changed, "KeyLink", "c");
        table.remove(gone);
        QCOMPARE(captionOf(model, "a"), QString("Насос"));
        QCOMPARE(captionOf(model, "b"), QString("Котёл"));
        QVERIFY(!model.findIndexByKey("c").isValid());
        QCOMPARE(told.count(), 0);
        QVERIFY2(!model.check(), model.check());
    }

    void everyRowOfTheRecordKeepsItsValues() {
        Table table;
        Res model(headers(Columns), QString());
        MDRData* record = table.add("a", "Насос");
        auto rows = model.newRows();
        rows.add(source, table.add("f", "Цех"));
        rows.add(source, record);
        model.insertFilledRows(0, std::move(rows));
        auto again = model.newRows(model.index(0, 0));
        again.add(source, record);
        model.insertFilledRows(0, std::move(again), model.index(0, 0));
        // Moves and copies read from it as well.
        QVERIFY(model.copyChildRows(model.index(0, 0), model.index(1, 0)));
        QVERIFY(model.moveSiblingItem(0, 1, QModelIndex()));
        model.keepValues(source, record);
        table.remove(record);
        const QModelIndexList hits = model.match(model.index(0, 0), orvo::KeyRole, "a", -1,
                                                 Qt::MatchFixedString | Qt::MatchRecursive);
        QCOMPARE(hits.size(), 3);
        for (const QModelIndex& row : hits)
            QCOMPARE(row.data(), QVariant("Насос"));
        QVERIFY2(!model.check(), model.check());
    }

    void aRecordWithoutAKeyIsCopied() {
        Table table;
        Res model(headers(Columns), QString());
        MDRData* record = table.add("", "Насос");
        auto rows = model.newRows();
        rows.add(source, record);
        rows.add(source, table.add("a", "Котёл"));
        model.insertFilledRows(0, std::move(rows));
        model.keepValues(source, record);
        table.remove(record);
        QCOMPARE(model.index(0, 0).data(), QVariant("Насос"));
        QVERIFY2(!model.check(), model.check());
    }

    void aRowThatShowsItsRecordAgainReadsFromItAgain() {
        Table table;
        Res model(headers(Columns), QString());
        MDRData* record = table.add("a", "Насос");
        auto rows = model.newRows();
        rows.add(source, record);
        model.insertFilledRows(0, std::move(rows));
        model.keepValues(source, record);
        model.shareValues(model.index(0, 0), source, record);
        table.set(record, "caption", "Котёл");
        QCOMPARE(captionOf(model, "a"), QString("Котёл"));
        // What it shows besides stays.
        QVERIFY(model.setData(model.index(0, 1), "pump"));
        model.shareValues(model.index(0, 0), source, record);
        QCOMPARE(model.index(0, 1).data(), QVariant("pump"));
        QVERIFY2(!model.check(), model.check());
    }

    void columnsComeAndGoInRowsOfRecords() {
        Table table;
        Res model(headers(Columns), QString());
        auto rows = model.newRows();
        rows.add(source, table.add("a", "Насос"));
        model.insertFilledRows(0, std::move(rows));
        QVERIFY(model.insertColumns(0, 1));
        QCOMPARE(model.index(0, 1).data(), QVariant("Насос"));
        QVERIFY(model.removeColumns(0, 1));
        QCOMPARE(captionOf(model, "a"), QString("Насос"));
        QVERIFY2(!model.check(), model.check());
    }

    void keysOfOneHashAreToldApart() {
        std::map<uint32_t, QString> seen;
        QString one;
        QString other;
        for (int i = 0; one.isEmpty(); ++i) {
            other = QStringLiteral("key-%1").arg(i);
            const auto [place, isNew] = seen.emplace(orvo::KeyIndex::hash(other), other);
            if (!isNew)
                one = place->second;
        }
        Table table;
        Res model(headers(Columns), QString());
        auto rows = model.newRows();
        rows.add(source, table.add(one, "Насос"));
        QVERIFY(model.insertFilledRows(0, std::move(rows)));
        QVERIFY(!model.findIndexByKey(other).isValid());
        auto second = model.newRows();
        second.add(source, table.add(other, "Котёл"));
        QVERIFY(model.insertFilledRows(0, std::move(second)));
        QCOMPARE(model.findIndexByKey(one).data(), QVariant("Насос"));
        QCOMPARE(model.findIndexByKey(other).data(), QVariant("Котёл"));
        QVERIFY(model.removeRows(0, 1));
        QVERIFY(!model.findIndexByKey(other).isValid());
        QCOMPARE(model.findIndexByKey(one).row(), 0);
    }

    void randomChangesOfTableAndTreeShowNoValueThatIsGone() {
        Table table;
        Res model(headers(Columns), QString());
        std::map<QString, MDRData*> records;
        std::map<QString, QString> shown;
        quint64 seed = 5;
        const auto random = [&seed](int limit) {
            seed = seed * 6364136223846793005ull + 1442695040888963407ull;
            return static_cast<int>((seed >> 33) % static_cast<quint64>(limit));
        };
        for (int turn = 0; turn < 3000; ++turn) {
            const QString key = QStringLiteral("k%1").arg(random(60));
            const QModelIndex row = model.findIndexByKey(key);
            const QString text = QStringLiteral("t%1").arg(turn);
            MDRData*& record = records[key];
            switch (random(5)) {
            case 0: // comes
                if (!record && !row.isValid()) {
                    record = table.add(key, text);
                    auto rows = model.newRows();
                    rows.add(source, record);
                    QVERIFY(model.insertFilledRows(random(model.rowCount() + 1), std::move(rows)));
                    shown[key] = text;
                }
                break;
            case 1: // changes, and the row follows or not
                if (record) {
                    model.keepValues(source, record);
                    table.set(record, "caption", text);
                    if (row.isValid() && random(2)) {
                        model.setData(row, text);
                        model.shareValues(row, source, record);
                        shown[key] = text;
                    }
                }
                break;
            case 2: // is typed into
                if (row.isValid()) {
                    model.setData(row, text);
                    shown[key] = text;
                }
                break;
            case 3: // moves
                if (row.isValid())
                    model.moveSiblingItem(row.row(), random(model.rowCount()), QModelIndex());
                break;
            default: // goes, the row first or not at all
                if (record) {
                    model.keepValues(source, record);
                    if (row.isValid() && random(2)) {
                        model.removeRows(row.row(), 1);
                        shown.erase(key);
                    }
                    table.remove(record);
                    record = nullptr;
                }
            }
            if (turn % 10 != 0)
                continue;
            QVERIFY2(!model.check(), model.check());
            QCOMPARE(model.rowCount(), static_cast<int>(shown.size()));
            for (const auto& [shownKey, caption] : shown)
                QCOMPARE(captionOf(model, qPrintable(shownKey)), caption);
        }
    }
};

QTEST_MAIN(RowValuesTest)
#include "tst_rowvalues.moc"
