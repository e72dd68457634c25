// The tree of desktops: icons, renaming, folders and the move among siblings.
#include "IconCheck.h"
#include "TreeText.h"

#include "models/DesckTreeModel.h"

#include <QSignalSpy>
#include <QtTest>

using namespace treetext;

namespace {

constexpr int Key = 1;
constexpr int IsFolder = 4;

struct Model : Watched<DesckTreeModel> {
    explicit Model(const QString& text = QString()) : Watched(headers(6)) {
        fill(*this, Key, text);
    }
    QString text() const { return print(*this, Key); }
    QModelIndex row(const QString& key) const { return findIndexByKey(key); }
};

} // namespace

class DesckTree : public QObject {
    Q_OBJECT
private slots:
    void theIconTellsTopFolderAndDesktop() {
        Model model("top #mainnode 4=true\n  folder #f 4=true\n  desktop #d 4=false\n  bare #b\n");
        QVERIFY(showsImage(model.row("mainnode"), ":/res/folders1.png"));
        QVERIFY(showsImage(model.row("f"), ":/res/closedfolder1.png"));
        QVERIFY(showsImage(model.row("d"), ":/res/descktop1.png"));
        QVERIFY(showsImage(model.row("b"), ":/res/descktop1.png"));
    }

    void aFolderOpensItsIconOnlyWhenRepainted() {
        Model model("top\n  folder #f 4=true\n  desktop #d 4=false\n");
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        model.setItemExpanded(model.row("f"));
        model.setItemExpanded(model.row("d"));
        QCOMPARE(changed.count(), 0);
        QVERIFY(showsImage(model.row("f"), ":/res/openfolder1.png"));
        QVERIFY(showsImage(model.row("d"), ":/res/descktop1.png"));
        model.setItemCollapsed(model.row("f"));
        QVERIFY(showsImage(model.row("f"), ":/res/closedfolder1.png"));
    }

    void onlyTheFirstColumnHasAnIcon() {
        Model model("top\n  folder #f 4=true\n");
        for (int column = 1; column < 6; ++column)
            QVERIFY(showsNothing(model.row("f").siblingAtColumn(column)));
    }

    void rolesAnswerTheirColumns() {
        Model model("top #k 4=true\n");
        const QModelIndex cell = model.index(0, IsFolder);
        QCOMPARE(cell.data(Qt::DisplayRole), QVariant(true));
        QCOMPARE(cell.data(Qt::EditRole), QVariant(true));
        QCOMPARE(cell.data(12), QVariant("k"));
        for (const int role : {3, 4, 6, 7, 8, 9, 10, 11, 13, 256, 257})
            QVERIFY(!cell.data(role).isValid());
    }

    void anEditedNameIsReported() {
        Model model("a #k\n");
        QSignalSpy named(&model, &DesckTreeModel::nameChanged);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QVERIFY(model.setData(model.index(0, 0), "b", Qt::EditRole));
        QCOMPARE(named.count(), 1);
        QCOMPARE(named.at(0).at(0).toString(), QString("b"));
        QCOMPARE(changed.count(), 1);
        QVERIFY(changed.at(0).at(2).value<QVector<int>>().isEmpty());
    }

    void anUnchangedNameIsNotReported() {
        Model model("a #k\n");
        QSignalSpy named(&model, &DesckTreeModel::nameChanged);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QVERIFY(model.setData(model.index(0, 0), "a", Qt::EditRole));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(named.count(), 0);
    }

    void aNameSetWithTheDisplayRoleIsNotReported() {
        Model model("a #k\n");
        QSignalSpy named(&model, &DesckTreeModel::nameChanged);
        QVERIFY(model.setData(model.index(0, 0), "b", Qt::DisplayRole));
        QCOMPARE(model.text(), QString("b #k\n"));
        QCOMPARE(named.count(), 0);
    }

    void anotherColumnIsNeverReportedAsName() {
        Model model("a #k\n");
        QSignalSpy named(&model, &DesckTreeModel::nameChanged);
        for (int column = 1; column < 6; ++column)
            QVERIFY(model.setData(model.index(0, column), "other", Qt::EditRole));
        QCOMPARE(named.count(), 0);
    }

    void anUnacceptedRoleIsNeitherStoredNorReported() {
        Model model("a #k\n");
        QSignalSpy named(&model, &DesckTreeModel::nameChanged);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QVERIFY(!model.setData(model.index(0, 0), "b", Qt::ToolTipRole));
        QVERIFY(!model.setData(model.index(0, 9), "b", Qt::EditRole));
        QCOMPARE(named.count() + changed.count(), 0);
        QCOMPARE(model.text(), QString("a #k\n"));
    }

    void theNameIsReportedAfterTheChange() {
        Model model("a #k\n");
        QStringList order;
        connect(&model, &QAbstractItemModel::dataChanged, this, [&] { order << "dataChanged"; });
        connect(&model, &DesckTreeModel::nameChanged, this,
                [&] { order << "nameChanged " + model.index(0, 0).data().toString(); });
        model.setData(model.index(0, 0), "b");
        QCOMPARE(order, QStringList({"dataChanged", "nameChanged b"}));
    }

    void hasChildrenDoesNotOverrideTheBaseClassOne() {
        struct Closed : DesckTreeModel {
            using DesckTreeModel::DesckTreeModel;
            bool hasChildren(const QModelIndex&) const override { return false; }
        };
        Closed model(headers(6));
        fill(model, Key, "a #a\n");
        DesckTreeModel& plain = model;
        const QAbstractItemModel& base = model;
        QVERIFY(plain.hasChildren(QModelIndex()));
        QVERIFY(!base.hasChildren());
    }

    void answersForAnInvalidIndex() {
        Model model("a #k\n");
        QVERIFY(model.isItemFolder(QModelIndex()));
        QCOMPARE(model.getItemLevel(QModelIndex()), -1);
        QCOMPARE(model.getFirstDesckElement(QModelIndex()), -1);
        QVERIFY(model.getItemKeyLink(QModelIndex()).isNull());
        QVERIFY(model.hasChildren(QModelIndex()));
        QVERIFY(!Model().hasChildren(QModelIndex()));
        // Not what the header says in that column.
        const Watched<DesckTreeModel> titled(QStringList{"", "", "", "", "false"});
        QVERIFY(titled.isItemFolder(QModelIndex()));
    }

    void theFirstDesktopIsFound() {
        Model model("top #t\n  f #f 4=true\n    d #d 4=false\n  g #g 4=true\n  e #e 4=false\n"
                    "  h #h 4=false\n");
        QCOMPARE(model.getFirstDesckElement(model.row("t")), 2);
        QCOMPARE(model.getFirstDesckElement(model.row("f")), 0);
        QCOMPARE(model.getFirstDesckElement(model.row("g")), -1);
        QVERIFY(model.isItemFolder(model.row("f")));
        QVERIFY(!model.isItemFolder(model.row("e")));
        QCOMPARE(model.getItemLevel(model.row("d")), 2);
        QCOMPARE(model.getItemKeyLink(model.row("d")), QString("d"));
    }

    void rowsBelowAreSeenFromAnyColumn() {
        Model model("top #t\n  f #f\n");
        QVERIFY(model.hasChildren(model.row("t")));
        QVERIFY(model.hasChildren(model.row("t").siblingAtColumn(3)));
        QVERIFY(!model.hasChildren(model.row("f")));
    }

    void aRowMovesDownAmongItsSiblings() {
        Model model("t #t\n  a #a\n  b #b\n  c #c\n  d #d\n");
        QVERIFY(model.moveSiblingItem(0, 2, model.row("t")));
        QCOMPARE(model.text(), QString("t #t\n  b #b\n  c #c\n  a #a\n  d #d\n"));
        QVERIFY(model.moveSiblingItem(0, 3, model.row("t")));
        QCOMPARE(model.text(), QString("t #t\n  c #c\n  a #a\n  d #d\n  b #b\n"));
    }

    void aRowMovesUpAmongItsSiblings() {
        Model model("t #t\n  a #a\n  b #b\n  c #c\n  d #d\n");
        QVERIFY(model.moveSiblingItem(3, 0, model.row("t")));
        QCOMPARE(model.text(), QString("t #t\n  d #d\n  a #a\n  b #b\n  c #c\n"));
        QVERIFY(model.moveSiblingItem(2, 1, model.row("t")));
        QCOMPARE(model.text(), QString("t #t\n  d #d\n  b #b\n  a #a\n  c #c\n"));
    }

    void aMovedFolderArrivesEmptyAndClosed() {
        Model model("t #t\n  a #a 4=true\n    x #x\n  b #b\n");
        model.setItemExpanded(model.row("a"));
        QVERIFY(model.moveSiblingItem(0, 1, model.row("t")));
        QCOMPARE(print(model, Key, {IsFolder}), QString("t #t 4=\n  b #b 4=\n  a #a 4=true\n"));
        QVERIFY(showsImage(model.row("a"), ":/res/closedfolder1.png"));
        QVERIFY(!model.row("x").isValid());
    }

    void aMoveToItselfTouchesNothing() {
        Model model("t #t\n  a #a\n    x #x\n  b #b\n  c #c\n");
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        QVERIFY(model.moveSiblingItem(2, 2, model.row("t")));
        QCOMPARE(inserted.count() + removed.count(), 0);
    }

    void aMoveOutOfRangeIsRefused() {
        Model model("t #t\n  a #a\n  b #b\n");
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        const QModelIndex top = model.row("t");
        QVERIFY(!model.moveSiblingItem(0, model.rowCount(top), top));
        QVERIFY(!model.moveSiblingItem(model.rowCount(top), 0, top));
        QVERIFY(!model.moveSiblingItem(-1, 0, top));
        QVERIFY(!model.moveSiblingItem(0, -1, top));
        QVERIFY(!model.moveSiblingItem(-1, -1, top));
        QVERIFY(!model.moveSiblingItem(0, 0, model.row("a")));
        QCOMPARE(inserted.count(), 0);
        QCOMPARE(model.text(), QString("t #t\n  a #a\n  b #b\n"));
    }

    void aMovedKeyIsFoundAtItsNewPlace() {
        Model model("t #t\n  a #a\n  b #b\n  c #c\n");
        model.moveSiblingItem(0, 2, model.row("t"));
        QCOMPARE(model.row("a").row(), 2);
        QCOMPARE(model.row("b").row(), 0);
    }

    void valuesMoveToAnotherParentWithoutRowsBelow() {
        Model model("s #s\n  a #a\n    x #x\n  b #b\n  c #c\nd #d\n  y #y\n  z #z\n");
        QVERIFY(model.moveRows(model.row("s"), 0, 2, model.row("d"), 1));
        QCOMPARE(model.text(), QString("s #s\n  c #c\nd #d\n  y #y\n  a #a\n  b #b\n  z #z\n"));
        QVERIFY(!model.row("x").isValid());
        QCOMPARE(model.row("b").parent(), model.row("d"));
    }

    void rowsMoveToTheHeadAndToTheEndOfAnotherParent() {
        Model model("s #s\n  a #a\n  b #b\nd #d\n  y #y\n");
        QVERIFY(model.moveRows(model.row("s"), 1, 1, model.row("d"), 1));
        QVERIFY(model.moveRows(model.row("s"), 0, 1, model.row("d"), 0));
        QCOMPARE(model.text(), QString("s #s\nd #d\n  a #a\n  y #y\n  b #b\n"));
        QVERIFY(model.moveRows(model.row("d"), 0, 1, QModelIndex(), 0));
        QCOMPARE(model.text(), QString("a #a\ns #s\nd #d\n  y #y\n  b #b\n"));
        QCOMPARE(model.getItemLevel(model.row("a")), 0);
    }

    void movingRowsWithinOneParentIsRefused() {
        Model model("s #s\n  a #a\n  b #b\n");
        QSignalSpy moving(&model, &QAbstractItemModel::rowsAboutToBeMoved);
        QVERIFY(!model.moveRows(model.row("s"), 0, 1, model.row("s"), 2));
        QVERIFY(!model.moveRows(QModelIndex(), 0, 1, QModelIndex(), 1));
        QCOMPARE(moving.count(), 0);
    }

    void movingRowsBelowThemselvesIsRefused() {
        Model model("s #s\n  a #a\n    x #x\n");
        QVERIFY(!model.moveRows(QModelIndex(), 0, 1, model.row("x"), 0));
        QVERIFY(!model.moveRows(model.row("s"), 0, 1, model.row("a"), 0));
        QCOMPARE(model.text(), QString("s #s\n  a #a\n    x #x\n"));
    }

    void movingRowsThatAreNotThereIsRefused() {
        Model model("s #s\n  a #a\nd #d\n");
        const QModelIndex s = model.row("s");
        const QModelIndex d = model.row("d");
        QVERIFY(!model.moveRows(s, 0, 2, d, 0));
        QVERIFY(!model.moveRows(s, -1, 1, d, 0));
        QVERIFY(!model.moveRows(s, 0, 0, d, 0));
        QVERIFY(!model.moveRows(s, 0, 1, d, 1));
        QVERIFY(!model.moveRows(s, 0, 1, d, -1));
        QCOMPARE(model.text(), QString("s #s\n  a #a\nd #d\n"));
    }

    void movedRowsKeepTheirPersistentIndexes() {
        Model model("s #s\n  a #a\n    x #x\n  b #b\nd #d\n");
        const QPersistentModelIndex a = model.row("a");
        const QPersistentModelIndex x = model.row("x");
        const QPersistentModelIndex b = model.row("b");
        QVERIFY(model.moveRows(model.row("s"), 0, 1, model.row("d"), 0));
        QCOMPARE(QModelIndex(a), model.row("a"));
        QCOMPARE(a.data().toString(), QString("a"));
        QVERIFY(!x.isValid());
        QCOMPARE(QModelIndex(b), model.row("b"));
        QCOMPARE(b.row(), 0);
    }
};

QTEST_MAIN(DesckTree)
#include "tst_descktreemodel.moc"
