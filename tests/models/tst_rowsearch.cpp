// Searching rows by a part of their text, against the match that it stands for.
#include "TreeText.h"

#include "models/ResTreeModel.h"
#include "models/RowSearch.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace treetext;
using orvo::RowSearch;

namespace {

constexpr int Key = 5;

QModelIndexList matches(const QAbstractItemModel& model, int column, const QString& text) {
    return model.match(model.index(0, 0), column == 0 ? 257 : 258, text, -1,
                       Qt::MatchContains | Qt::MatchRecursive);
}

QModelIndexList hits(const RowSearch& search) {
    QModelIndexList rows;
    for (int i = 0; i < search.count(); ++i)
        rows.append(search.hit(i));
    return rows;
}

struct Tree : Watched<ResTreeModel> {
    explicit Tree(const QString& text = QString()) : Watched(headers(14), QString()) {
        fill(*this, Key, text);
    }
    RowSearch search{*this, Key};

    QStringList found(int column, const QString& text) {
        search.find(column, text);
        if (hits(search) != matches(*this, column, text))
            qFatal("other rows than match finds");
        return keys();
    }
    /// Of the hits; "-" for a row that is gone.
    QStringList keys() const {
        QStringList keys;
        for (const QModelIndex& row : hits(search))
            keys << (row.isValid() ? getItemKeyLink(row) : QStringLiteral("-"));
        return keys;
    }
};

const char* const plant = "Насосы #n 1=Pump\n"
                          "  Насос 1 #n1 1=pump1\n"
                          "  Запасные #z\n"
                          "    насос 2 #n2 1=PUMP2\n"
                          "Котлы #k\n"
                          "  Котёл #k1 1=boiler\n";

/// Letters whose cases are odd, or that the tables' code page does not have.
QString oddText(QRandomGenerator& random, int most) {
    static const std::vector<QString> letters = {"а",
                                                 "А",
                                                 "ё",
                                                 "Ё",
                                                 "k",
                                                 "K",
                                                 QChar(0x212a), // Kelvin
                                                 "s",
                                                 "S",
                                                 QChar(0x17f), // long s
                                                 "i",
                                                 "I",
                                                 QChar(0x130),
                                                 QChar(0x131),
                                                 "ß",
                                                 QChar(0x1e9e),
                                                 QChar(0xb5),
                                                 QChar(0x3bc),
                                                 QChar(0x39c),
                                                 QString::fromUcs4(U"\U00010400"),
                                                 QString::fromUcs4(U"\U00010428"),
                                                 QChar(0xd801), // half of a pair
                                                 QChar(0),
                                                 QChar(0xffff),
                                                 " ",
                                                 "猫"};
    // Most texts have letters of the tables alone.
    const auto kinds = static_cast<quint32>(random.bounded(3) ? 6 : letters.size());
    QString text;
    for (int i = random.bounded(most + 1); i > 0; --i)
        text += letters[random.bounded(kinds)];
    return text;
}

} // namespace

class TestRowSearch : public QObject {
    Q_OBJECT
private slots:
    void rowsAreFoundInDisplayOrder() {
        Tree tree(plant);
        QCOMPARE(tree.found(0, "нас"), QStringList({"n", "n1", "n2"}));
        QCOMPARE(tree.found(0, "о"), QStringList({"n", "n1", "n2", "k", "k1"}));
        QCOMPARE(tree.found(0, "Котёл"), QStringList("k1"));
        QCOMPARE(tree.found(0, "Котел"), QStringList());
    }

    void casesAreEqual() {
        Tree tree(plant);
        QCOMPARE(tree.found(0, "НАСОС"), QStringList({"n", "n1", "n2"}));
        QCOMPARE(tree.found(1, "Pump"), QStringList({"n", "n1", "n2"}));
        QCOMPARE(tree.found(0, "КОТЁЛ"), QStringList("k1"));
    }

    void eachColumnHasItsOwnTexts() {
        Tree tree(plant);
        QCOMPARE(tree.found(1, "boil"), QStringList("k1"));
        QCOMPARE(tree.found(0, "boil"), QStringList());
        QCOMPARE(tree.found(1, "насос"), QStringList());
    }

    void textsDoNotRunIntoEachOther() {
        Tree tree("ab #1\ncd #2\n  ef #3\ngh #4\n");
        for (const char* text : {"bc", "abcd", "de", "fg", "b\xff", "dg"})
            QCOMPARE(tree.found(0, QString::fromLatin1(text)), QStringList());
        QCOMPARE(tree.found(0, QChar(0xffff)), QStringList());
        QCOMPARE(tree.found(0, QChar(0)), QStringList());
    }

    void anEmptyTreeHasNoHits() {
        Tree tree;
        QCOMPARE(tree.found(0, "а"), QStringList());
    }

    void anEmptyTextIsPartOfAll() {
        Tree tree(plant);
        QCOMPARE(tree.found(0, ""), QStringList({"n", "n1", "z", "n2", "k", "k1"}));
        tree.setData(tree.findIndexByKey("z"), "猫");
        QCOMPARE(tree.found(0, ""), QStringList({"n", "n1", "z", "n2", "k", "k1"}));
    }

    void aNewSearchReplacesTheHits() {
        Tree tree(plant);
        QCOMPARE(tree.found(0, "насос").size(), 3);
        tree.removeRows(0, 1, tree.findIndexByKey("n"));
        QCOMPARE(tree.keys(), QStringList({"n", "-", "n2"}));
        QCOMPARE(tree.found(0, "котёл"), QStringList("k1"));
        QCOMPARE(tree.found(0, "нет"), QStringList());
    }

    void changedTextsAreFound() {
        Tree tree(plant);
        QCOMPARE(tree.found(0, "турбина"), QStringList());
        tree.setData(tree.findIndexByKey("n2"), "Турбина");
        QCOMPARE(tree.found(0, "турбина"), QStringList("n2"));
        QCOMPARE(tree.found(0, "насос"), QStringList({"n", "n1"}));
        tree.setData(tree.findIndexByKey("n").siblingAtColumn(1), "turbo");
        QCOMPARE(tree.found(1, "turbo"), QStringList("n"));
    }

    void rowsThatComeAreFound() {
        Tree tree(plant);
        QCOMPARE(tree.found(0, "насос").size(), 3);
        fill(tree, Key, "Насосная #s\n  насос 3 #n3\n");
        QCOMPARE(tree.found(0, "насос"), QStringList({"n", "n1", "n2", "s", "n3"}));
    }

    void theFirstRowBelowARowIsFound() {
        Tree tree(plant);
        QCOMPARE(tree.found(0, "насос").size(), 3);
        const QModelIndex row = tree.findIndexByKey("k1");
        tree.insertRows(0, 1, row);
        tree.setData(tree.index(0, 0, row), "насос котла");
        tree.setData(tree.index(0, Key, row), "k2");
        QCOMPARE(tree.found(0, "насос"), QStringList({"n", "n1", "n2", "k2"}));
        tree.removeRows(0, 1, row);
        QCOMPARE(tree.found(0, "насос"), QStringList({"n", "n1", "n2"}));
    }

    void hitsOfRemovedRowsAreGone() {
        Tree tree(plant);
        QCOMPARE(tree.found(0, "насос"), QStringList({"n", "n1", "n2"}));
        tree.removeRows(0, 1, tree.findIndexByKey("n"));
        QCOMPARE(tree.keys(), QStringList({"n", "-", "n2"}));
        QCOMPARE(tree.search.count(), 3);
    }

    void hitsOfRemovedSubtreesAreGone() {
        Tree tree(plant);
        QCOMPARE(tree.found(0, "о").size(), 5);
        tree.removeRows(0, 1);
        QCOMPARE(tree.keys(), QStringList({"-", "-", "-", "k", "k1"}));
        QCOMPARE(tree.found(0, "о"), QStringList({"k", "k1"}));
    }

    void hitsFollowRowsThatMove() {
        Tree tree(plant);
        QCOMPARE(tree.found(0, "насос"), QStringList({"n", "n1", "n2"}));
        QVERIFY(tree.moveItem(0, 0, tree.findIndexByKey("n"), tree.findIndexByKey("k")));
        QCOMPARE(tree.keys(), QStringList({"n", "n1", "n2"}));
        QCOMPARE(tree.search.hit(1).parent(), tree.findIndexByKey("k"));
        QCOMPARE(tree.found(0, "насос"), QStringList({"n", "n2", "n1"}));
    }

    void hitsStayWhenRowsCome() {
        Tree tree(plant);
        QCOMPARE(tree.found(0, "насос"), QStringList({"n", "n1", "n2"}));
        tree.insertRows(0, 2);
        tree.insertRows(0, 3, tree.findIndexByKey("n"));
        QCOMPARE(tree.keys(), QStringList({"n", "n1", "n2"}));
        QCOMPARE(tree.search.hit(1).row(), 3);
    }

    void hitsOutOfRangeAreInvalid() {
        Tree tree(plant);
        QVERIFY(!tree.search.hit(0).isValid());
        tree.found(0, "насос");
        QVERIFY(!tree.search.hit(-1).isValid());
        QVERIFY(!tree.search.hit(3).isValid());
        QVERIFY(tree.search.hit(2).isValid());
    }

    void manySiblings() {
        Tree tree;
        auto rows = tree.newRows();
        for (int i = 0; i < 5000; ++i) {
            TabRec* row = rows.add();
            row->setData(0, QString::number(i));
            row->setData(Key, QString("k%1").arg(i));
        }
        tree.insertFilledRows(0, std::move(rows));
        QCOMPARE(tree.found(0, "1023"), QStringList("k1023"));
        QCOMPARE(tree.found(0, "1024"), QStringList("k1024"));
        QCOMPARE(tree.found(0, "499"),
                 QStringList({"k499", "k1499", "k2499", "k3499", "k4499"}) +
                     QStringList({"k4990", "k4991", "k4992", "k4993", "k4994", "k4995", "k4996",
                                  "k4997", "k4998", "k4999"}));
        tree.insertRows(1000, 1);
        tree.removeRows(3000, 100);
        tree.setData(tree.index(1024, 0), "1024x");
        QCOMPARE(tree.found(0, "1024"), QStringList({"k1023", "k1024"}));
        QCOMPARE(tree.found(0, "7").size(), matches(tree, 0, "7").size());
        tree.removeRows(0, tree.rowCount());
        QCOMPARE(tree.found(0, "7"), QStringList());
    }

    void deepTreesAreSearched() {
        // The recursion of match, and what the watching of the model recurses, stop far earlier.
        ResTreeModel tree(headers(14), QString());
        constexpr int depth = 200000;
        auto rows = tree.newRows();
        TabRec* row = nullptr;
        for (int i = 0; i < depth; ++i) {
            row = rows.add(row);
            row->setData(0, i + 1 == depth ? QStringLiteral("дно") : QStringLiteral("глубже"));
        }
        tree.insertFilledRows(0, std::move(rows));
        RowSearch search(tree, Key);
        search.find(0, "дно");
        QCOMPARE(search.count(), 1);
        search.find(0, "глубже");
        QCOMPARE(search.count(), depth - 1);
    }

    void asMatchInRandomTrees_data() {
        QTest::addColumn<int>("rows");
        for (int round = 0; round < 8; ++round)
            QTest::addRow("%d", round) << (round % 4 == 3 ? 3000 : 60);
    }

    void asMatchInRandomTrees() {
        QFETCH(int, rows);
        QRandomGenerator random(static_cast<quint32>(QByteArray(QTest::currentDataTag()).toInt()));
        Tree tree;
        int made = 0;
        const auto anyRow = [&](bool top) {
            QModelIndex at;
            while (tree.rowCount(at) > 0 && random.bounded(4) > 0)
                at = tree.index(random.bounded(tree.rowCount(at)), 0, at);
            return !top && !at.isValid() && tree.rowCount() > 0 ? tree.index(0, 0) : at;
        };
        const auto addRows = [&](int count) {
            const QModelIndex parent = anyRow(true);
            const int at = random.bounded(tree.rowCount(parent) + 1);
            auto batch = tree.newRows(parent);
            for (int i = 0; i < count; ++i) {
                TabRec* row = batch.add();
                if (random.bounded(8) > 0) // some have no text at all
                    row->setData(0, oddText(random, 8));
                row->setData(1, oddText(random, 3));
                row->setData(Key, QString("k%1").arg(made++));
            }
            QVERIFY(tree.insertFilledRows(at, std::move(batch), parent));
        };
        while (made < rows)
            addRows(1 + random.bounded(rows / 10));
        for (int step = 0; step < 40; ++step) {
            const int column = random.bounded(2);
            const QString text = oddText(random, 2) + oddText(random, 1);
            const QModelIndexList wanted = matches(tree, column, text);
            tree.search.find(column, text);
            QCOMPARE(hits(tree.search), wanted);
            QList<QPersistentModelIndex> kept;
            QStringList keys;
            for (const QModelIndex& row : wanted) {
                kept << row;
                keys << tree.getItemKeyLink(row);
            }
            const QModelIndex row = anyRow(false);
            switch (row.isValid() ? random.bounded(5) : 0) {
            case 0:
                addRows(1 + random.bounded(3));
                break;
            case 1:
                tree.setData(row.siblingAtColumn(random.bounded(2)), oddText(random, 8));
                break;
            case 2:
                tree.moveSiblingItem(row.row(), random.bounded(tree.rowCount(row.parent())),
                                     row.parent());
                break;
            case 3: {
                const QModelIndex to = anyRow(true);
                tree.moveItem(row.row(), random.bounded(tree.rowCount(to) + 1), row.parent(), to);
                break;
            }
            default:
                tree.removeRows(row.row(), 1, row.parent());
            }
            QVERIFY2(!tree.search.check(), tree.search.check());
            QVERIFY2(!tree.check(), tree.check());
            for (int i = 0; i < kept.size(); ++i) {
                QCOMPARE(tree.search.hit(i), tree.findIndexByKey(keys[i]));
                if (kept[i].isValid())
                    QCOMPARE(tree.search.hit(i), QModelIndex(kept[i]));
            }
        }
    }
};

QTEST_MAIN(TestRowSearch)
#include "tst_rowsearch.moc"
