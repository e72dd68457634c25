// The records behind the rows: bounds, ownership, levels, columns, file lists.
#include "models/PaspRec.h"
#include "models/TabRec.h"

#include <QtTest>

namespace {

QVector<QVariant> values(int columns) {
    return QVector<QVariant>(columns);
}

void name(TabRec& root, const QString& names) {
    for (int i = 0; i < root.childCount(); ++i)
        root.child(i)->setData(0, names.at(i));
}

QString names(TabRec& root) {
    QString text;
    for (int i = 0; i < root.childCount(); ++i)
        text += root.child(i)->data(0).toString();
    return text;
}

} // namespace

class TreeRecords : public QObject {
    Q_OBJECT
private slots:
    void aRowOutsideTheChildrenIsNull() {
        TabRec root(values(1));
        QVERIFY(root.insertChildren(0, 2, 1));
        QVERIFY(!root.child(-1));
        QVERIFY(!root.child(root.childCount()));
        QVERIFY(root.child(1));
    }

    void insertingAppendsAtTheEndAndFailsBehindIt() {
        TabRec root(values(1));
        QVERIFY(root.insertChildren(root.childCount(), 1, 3));
        QVERIFY(root.insertChildren(root.childCount(), 1, 3));
        QCOMPARE(root.childCount(), 2);
        QVERIFY(!root.insertChildren(root.childCount() + 1, 1, 3));
        QVERIFY(!root.insertChildren(-1, 1, 3));
        QCOMPARE(root.childCount(), 2);
        QCOMPARE(root.child(1)->columnCount(), 3);
        QVERIFY(!root.child(1)->data(2).isValid());
    }

    void insertingInTheMiddleKeepsTheOrder() {
        TabRec root(values(1));
        root.insertChildren(0, 4, 1);
        name(root, "abcd");
        QVERIFY(root.insertChildren(2, 3, 1));
        for (int i = 2; i < 5; ++i)
            root.child(i)->setData(0, "-");
        QCOMPARE(names(root), QString("ab---cd"));
    }

    void insertingNothingIsTrueAndChangesNothing() {
        TabRec root(values(1));
        QVERIFY(root.insertChildren(0, 0, 1));
        QVERIFY(root.insertChildren(0, -3, 1));
        QVERIFY(!root.insertChildren(1, 0, 1));
        QCOMPARE(root.childCount(), 0);
    }

    void removingNothingIsTrueAndTooManyIsFalse() {
        TabRec root(values(1));
        QVERIFY(root.removeChildren(0, 0));
        QVERIFY(!root.removeChildren(0, 1));
        QVERIFY(!root.removeChildren(-1, 1));
    }

    void removingTakesTheRangeOut() {
        TabRec root(values(1));
        root.insertChildren(0, 5, 1);
        name(root, "abcde");
        root.child(1)->insertChildren(0, 2, 1);
        QVERIFY(root.removeChildren(1, 3));
        QCOMPARE(names(root), QString("ae"));
        QVERIFY(!root.removeChildren(1, 2));
        QCOMPARE(names(root), QString("ae"));
    }

    void aHugeCountIsRefusedWithoutOverflow() {
        TabRec root(values(2));
        root.insertChildren(0, 1, 2);
        QVERIFY(!root.removeChildren(1, std::numeric_limits<int>::max()));
        QVERIFY(!root.removeColumns(1, std::numeric_limits<int>::max()));
        QCOMPARE(root.childCount(), 1);
        QCOMPARE(root.columnCount(), 2);
    }

    void readingPastTheColumnsIsInvalidAndWritingIsRefused() {
        TabRec row({QVariant(1), QVariant("x")});
        QVERIFY(!row.data(2).isValid());
        QVERIFY(!row.data(-1).isValid());
        QVERIFY(!row.setData(2, 7));
        QVERIFY(!row.setData(-1, 7));
        QVERIFY(row.setData(1, 7));
        QCOMPARE(row.columnCount(), 2);
        QCOMPARE(row.data(1), QVariant(7));
    }

    void levelsFollowTheConstructorAndNothingElse() {
        TabRec root(values(1));
        QCOMPARE(root.level(), -1);
        root.insertChildren(0, 1, 1);
        TabRec* top = root.child(0);
        QCOMPARE(top->level(), 0);
        top->insertChildren(0, 1, 1);
        QCOMPARE(top->child(0)->level(), 1);
        TabRec* below = top->child(0);
        below->setParent(&root);
        QCOMPARE(below->level(), 1);
        QCOMPARE(below->parent(), &root);
        below->setParent(top);
        QVERIFY(!top->isExpanded());
    }

    void aRootHasNoNumberButAPassportRootIsZero() {
        QCOMPARE(TabRec(values(1)).childNumber(), -1);
        QCOMPARE(PaspRec(values(1)).childNumber(), 0);
    }

    void aRecordThatItsParentDoesNotListHasNoNumber() {
        TabRec root(values(1));
        root.insertChildren(0, 3, 1);
        TabRec stranger(values(1), &root);
        QCOMPARE(stranger.childNumber(), -1);
        PaspRec sheet(values(1));
        PaspRec strangeRow(values(1), &sheet);
        QCOMPARE(strangeRow.childNumber(), -1);
    }

    void numbersStayRightThroughInsertionsAndRemovals() {
        TabRec root(values(1));
        quint32 seed = 1;
        const auto random = [&seed](int below) {
            seed = seed * 1664525 + 1013904223;
            return static_cast<int>((seed >> 8) % static_cast<quint32>(below));
        };
        for (int turn = 0; turn < 300; ++turn) {
            if (root.childCount() > 200 || (root.childCount() > 0 && random(3) == 0)) {
                const int at = random(root.childCount());
                root.removeChildren(at, random(root.childCount() - at) / 2 + 1);
            } else {
                root.insertChildren(random(root.childCount() + 1), random(60) + 1, 1);
            }
            const int step = random(7) + 1;
            for (int i = 0; i < root.childCount(); i += step)
                QCOMPARE(root.child(i)->childNumber(), i);
        }
    }

    void columnsChangeInEveryRecordBelow() {
        TabRec root({QVariant("a"), QVariant("b")});
        root.insertChildren(0, 1, 2);
        root.child(0)->setData(1, 5);
        root.child(0)->insertChildren(0, 1, 2);
        root.child(0)->child(0)->setData(0, 6);
        QVERIFY(root.insertColumns(1, 2));
        QCOMPARE(root.columnCount(), 4);
        QCOMPARE(root.child(0)->data(3), QVariant(5));
        QCOMPARE(root.child(0)->child(0)->columnCount(), 4);
        QVERIFY(root.removeColumns(0, 3));
        QCOMPARE(root.data(0), QVariant("b"));
        QCOMPARE(root.child(0)->data(0), QVariant(5));
        QCOMPARE(root.child(0)->child(0)->columnCount(), 1);
    }

    void aRecordThatRefusesAColumnKeepsItsSubtree() {
        TabRec root(values(4));
        root.insertChildren(0, 1, 1);
        root.child(0)->insertChildren(0, 1, 4);
        QVERIFY(root.insertColumns(3, 1));
        QCOMPARE(root.columnCount(), 5);
        QCOMPARE(root.child(0)->columnCount(), 1);
        QCOMPARE(root.child(0)->child(0)->columnCount(), 4);
    }

    void anImpossibleColumnPositionChangesNothing() {
        TabRec root(values(2));
        root.insertChildren(0, 1, 2);
        QVERIFY(!root.insertColumns(-1, 1));
        QVERIFY(!root.insertColumns(3, 1));
        QVERIFY(!root.removeColumns(-1, 1));
        QVERIFY(!root.removeColumns(1, 2));
        QCOMPARE(root.columnCount(), 2);
        QCOMPARE(root.child(0)->columnCount(), 2);
    }

    void lentChildrenOutliveEitherOfTheTwoListers_data() {
        QTest::addColumn<bool>("lenderGoesFirst");
        QTest::newRow("the lender goes first") << true;
        QTest::newRow("the borrower goes first") << false;
    }

    void lentChildrenOutliveEitherOfTheTwoListers() {
        QFETCH(bool, lenderGoesFirst);
        auto lender = std::make_unique<TabRec>(values(1));
        auto borrower = std::make_unique<TabRec>(values(1));
        lender->insertChildren(0, 2, 1);
        name(*lender, "ab");
        lender->child(0)->insertChildren(0, 1, 1);
        borrower->insertChildren(0, 1, 1);
        name(*borrower, "c");
        QCOMPARE(borrower->getChildrens(lender.get()), 0);
        QCOMPARE(names(*borrower), QString("cab"));
        QCOMPARE(names(*lender), QString("ab"));
        QCOMPARE(lender->child(0)->parent(), borrower.get());
        QCOMPARE(borrower->child(1)->childNumber(), 1);
        if (lenderGoesFirst) {
            lender.reset();
            QCOMPARE(names(*borrower), QString("cab"));
        } else {
            borrower.reset();
            QCOMPARE(names(*lender), QString("ab"));
            QVERIFY(!lender->child(0)->parent());
            QVERIFY(lender->removeChildren(0, 2));
        }
    }

    void fileListGrowsByOneAndKeepsItsElements() {
        TabRec row(values(1));
        QCOMPARE(row.fileInfoCount(), 0);
        QVERIFY(!row.getfileInfo(0));
        QCOMPARE(row.addfileInfoElement(), 0);
        row.setfileInfo(0, {"first", "second", 7});
        QCOMPARE(row.addfileInfoElement(), 1);
        QCOMPARE(row.fileInfoCount(), 2);
        QCOMPARE(row.getfileInfo(0)->firstText, QString("first"));
        QCOMPARE(row.getfileInfo(0)->secondText, QString("second"));
        QCOMPARE(row.getfileInfo(0)->number, 7);
        QCOMPARE(row.getfileInfo(1)->firstText, QString());
        QCOMPARE(row.getfileInfo(1)->number, 0);
    }

    void fileListIgnoresPositionsOutside() {
        TabRec row(values(1));
        row.addfileInfoElement();
        row.setfileInfo(1, {"x", "y", 1});
        row.setfileInfo(-1, {"x", "y", 1});
        QVERIFY(!row.getfileInfo(1));
        QVERIFY(!row.getfileInfo(-1));
        QCOMPARE(row.getfileInfo(0)->firstText, QString());
    }

    void clearingTheFileListEmptiesIt() {
        TabRec row(values(1));
        row.addfileInfoElement();
        row.clearFileInfo();
        QCOMPARE(row.fileInfoCount(), 0);
        QVERIFY(!row.getfileInfo(0));
        QCOMPARE(row.addfileInfoElement(), 0);
    }

    void aCheckStateIsKept() {
        TabRec row(values(1));
        row.setCheckState(Qt::PartiallyChecked);
        QCOMPARE(row.checkState(), Qt::PartiallyChecked);
    }

    void aChainOfAHundredThousandRecordsIsDeleted() {
        auto root = std::make_unique<TabRec>(values(1));
        TabRec* end = root.get();
        for (int i = 0; i < 100000; ++i) {
            end->insertChildren(0, 1, 1);
            end = end->child(0);
        }
        QCOMPARE(end->level(), 99999);
        QVERIFY(root->insertColumns(0, 1));
        QCOMPARE(end->columnCount(), 2);
        root.reset();
    }

    void aPassportRowKeepsItsBoxOnlyWhileItLives() {
        PaspRec row(values(1));
        auto box = std::make_unique<QComboBox>();
        row.setComboBox(box.get());
        QCOMPARE(row.comboBox(), box.get());
        box.reset();
        QVERIFY(!row.comboBox());
    }

    void passportRowsDoAsTreeRowsDo() {
        PaspRec root({QVariant("a"), QVariant("b")});
        QCOMPARE(root.level(), -1);
        QVERIFY(!root.isExpanded());
        QVERIFY(!root.comboBox());
        QVERIFY(!root.insertChildren(1, 1, 2));
        QVERIFY(!root.insertChildren(-1, 1, 2));
        QVERIFY(root.insertChildren(0, 0, 2));
        QVERIFY(root.insertChildren(0, 2, 2));
        QVERIFY(root.insertChildren(root.childCount(), 1, 2));
        QCOMPARE(root.childCount(), 3);
        QVERIFY(!root.child(-1));
        QVERIFY(!root.child(3));
        PaspRec* last = root.child(2);
        QCOMPARE(last->parent(), &root);
        QCOMPARE(last->childNumber(), 2);
        QCOMPARE(last->level(), 0);
        QVERIFY(last->setData(1, 5));
        QVERIFY(!last->setData(2, 5));
        QVERIFY(!last->setData(-1, 5));
        QVERIFY(!last->data(2).isValid());
        QVERIFY(last->insertChildren(0, 1, 2));
        QCOMPARE(last->child(0)->level(), 1);
        QVERIFY(!root.insertColumns(3, 1));
        QVERIFY(root.insertColumns(0, 1));
        QCOMPARE(last->child(0)->columnCount(), 3);
        QCOMPARE(last->data(2), QVariant(5));
        QVERIFY(!root.removeColumns(2, 2));
        QVERIFY(root.removeColumns(0, 2));
        QCOMPARE(root.data(0), QVariant("b"));
        QCOMPARE(last->data(0), QVariant(5));
        QVERIFY(!root.removeChildren(2, 2));
        QVERIFY(root.removeChildren(0, 2));
        QCOMPARE(root.child(0), last);
        QVERIFY(root.removeChildren(0, 1));
        QVERIFY(root.removeChildren(0, 0));
        QVERIFY(!root.removeChildren(0, 1));
    }
};

QTEST_MAIN(TreeRecords)
#include "tst_treerecords.moc"
