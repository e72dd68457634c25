// The menu tree: icons by type, moves with subtrees, and the rules of its drag and drop.
#include "IconCheck.h"
#include "TreeText.h"

#include "models/MenuTreeModel.h"

#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace treetext;

namespace {

constexpr int Key = 5;
const char* const dragType = "OrvoMenu/menu/dragdrop";

struct Model : Watched<MenuTreeModel> {
    explicit Model(const QString& text = QString(), const QString& icons = "icons/")
        : Watched(headers(13), icons) {
        fill(*this, Key, text);
    }
    QString text() const { return print(*this, Key); }
    QModelIndex row(const QString& key) const { return findIndexByKey(key); }

    /// What a drag of these rows brings.
    std::unique_ptr<QMimeData> drag(const QStringList& keys) const {
        QModelIndexList rows;
        for (const QString& key : keys)
            rows.append(row(key));
        return std::unique_ptr<QMimeData>(mimeData(rows));
    }
    bool mayDrop(const QStringList& keys, const QString& target) const {
        return canDropMimeData(drag(keys).get(), Qt::MoveAction, -1, -1, row(target));
    }
};

std::unique_ptr<QMimeData> payload(const QByteArray& bytes, const QString& type = dragType) {
    auto data = std::make_unique<QMimeData>();
    data->setData(type, bytes);
    return data;
}

const char* const menu = "Меню #MenuRootNode\n"
                         "  a #a 1=папка\n"
                         "    a1 #a1 1=модуль\n"
                         "    a2 #a2 1=папка\n"
                         "      a21 #a21 1=модуль\n"
                         "  b #b 1=папка\n"
                         "  c #c 1=модуль\n";

} // namespace

class MenuTree : public QObject {
    Q_OBJECT
private slots:
    void theTopRowShowsTheMenu() {
        Model model("Меню #MenuRootNode 1=модуль 4=x.png\n");
        QVERIFY(showsImage(model.index(0, 0), ":/res/menu1.png"));
    }

    void aFolderWithoutIconShowsWhetherItIsOpen() {
        Model model(menu);
        QVERIFY(showsImage(model.row("a"), ":/res/closedfolder1.png"));
        model.setItemExpanded(model.row("a"));
        QVERIFY(showsImage(model.row("a"), ":/res/openfolder1.png"));
        model.setItemCollapsed(model.row("a"));
        model.setData(model.row("a").siblingAtColumn(4), QString());
        QVERIFY(showsImage(model.row("a"), ":/res/closedfolder1.png"));
    }

    void anElementWithoutIconShowsNone() {
        Model model(menu);
        for (const char* type : {"модуль", "файл", "функция"}) {
            model.setData(model.row("c").siblingAtColumn(1), type);
            QVERIFY(showsNothing(model.row("c")));
        }
    }

    void elementsOfKnownTypesShowTheirIconFile() {
        QTemporaryDir dir;
        QVERIFY(makeImage(dir.filePath("pump.png"), Qt::green));
        Model model(menu, dir.path() + '/');
        model.setData(model.row("c").siblingAtColumn(4), "pump.png");
        for (const char* type : {"модуль", "файл", "функция", "МОДУЛЬ"}) {
            model.setData(model.row("c").siblingAtColumn(1), type);
            QVERIFY(showsImage(model.row("c"), dir.filePath("pump.png")));
        }
    }

    void aFolderWithIconShowsItsFile() {
        QTemporaryDir dir;
        QVERIFY(makeImage(dir.filePath("pump.png"), Qt::green));
        Model model(menu, dir.path() + '/');
        model.setData(model.row("a").siblingAtColumn(4), "pump.png");
        QVERIFY(showsImage(model.row("a"), dir.filePath("pump.png")));
        model.setItemExpanded(model.row("a"));
        QVERIFY(showsImage(model.row("a"), dir.filePath("pump.png")));
    }

    void anEmptyIconNameIsAFileName() {
        // Only a name that is null means that there is none.
        QTemporaryDir dir;
        Model model(menu, dir.path() + '/');
        for (const char* key : {"a", "c"}) {
            model.setData(model.row(key).siblingAtColumn(4), "");
            const QVariant shown = model.row(key).data(Qt::DecorationRole);
            QCOMPARE(shown.userType(), int(QMetaType::QIcon));
            QVERIFY(shown.value<QIcon>().pixmap(16, 16).isNull());
        }
    }

    void anUnknownTypeShowsNoIcon() {
        QTemporaryDir dir;
        QVERIFY(makeImage(dir.filePath("pump.png"), Qt::green));
        Model model("top\n  x #x 1=нечто 4=pump.png\n  y #y 4=pump.png\n", dir.path() + '/');
        QVERIFY(showsNothing(model.row("x")));
        QVERIFY(showsNothing(model.row("y")));
    }

    void typesCompareWithoutRegardToCaseButWithBlanks() {
        Model model("top\n  x #x 1=ПАПКА\n  y #y\n");
        QVERIFY(model.itemIsFolder(model.row("x")));
        QVERIFY(showsImage(model.row("x"), ":/res/closedfolder1.png"));
        model.setData(model.row("y").siblingAtColumn(1), " папка");
        QVERIFY(!model.itemIsFolder(model.row("y")));
        QVERIFY(showsNothing(model.row("y")));
    }

    void onlyTheFirstColumnHasAnIcon() {
        Model model(menu);
        for (int column = 1; column < 13; ++column)
            QVERIFY(showsNothing(model.row("a").siblingAtColumn(column)));
    }

    void rolesAnswerTheirColumns() {
        Model model(menu);
        const QModelIndex cell = model.row("a1").siblingAtColumn(1);
        QCOMPARE(cell.data(Qt::DisplayRole), QVariant("модуль"));
        QCOMPARE(cell.data(Qt::EditRole), QVariant("модуль"));
        QCOMPARE(cell.data(12), QVariant("a1"));
        for (const int role : {3, 4, 6, 7, 8, 9, 10, 11, 13, 256, 257, 258})
            QVERIFY(!cell.data(role).isValid());
    }

    void anEmptyKeyGivesTheTopRow() {
        Model model(menu);
        QCOMPARE(model.findIndexByKey(""), model.index(0, 0));
        QCOMPARE(model.findIndexByKey(QString()), model.index(0, 0));
        QCOMPARE(model.findIndexByKey("A21").data().toString(), QString("a21"));
        QVERIFY(!model.findIndexByKey("none").isValid());
        QVERIFY(!Model().findIndexByKey("").isValid());
    }

    void foldersAreToldByTheirTypeWord() {
        Model model(menu);
        QVERIFY(model.itemIsFolder(model.row("MenuRootNode")));
        QVERIFY(model.itemIsFolder(model.row("a")));
        QVERIFY(!model.itemIsFolder(model.row("c")));
        model.setData(model.row("MenuRootNode").siblingAtColumn(1), "модуль");
        QVERIFY(model.itemIsFolder(model.row("MenuRootNode")));
    }

    void firstAndLastSiblings() {
        Model model(menu);
        QVERIFY(model.itemIsFirstSibling(model.row("a")));
        QVERIFY(!model.itemIsLastSibling(model.row("a")));
        QVERIFY(!model.itemIsFirstSibling(model.row("b")));
        QVERIFY(model.itemIsLastSibling(model.row("c")));
        QVERIFY(model.itemIsFirstSibling(model.row("a21")));
        QVERIFY(model.itemIsLastSibling(model.row("a21")));
        QVERIFY(model.itemIsFirstSibling(model.index(0, 0)));
        QVERIFY(model.itemIsLastSibling(model.index(0, 0)));
    }

    void answersForAnInvalidIndex() {
        Model model(menu);
        QVERIFY(!model.itemIsFolder(QModelIndex()));
        QCOMPARE(model.getItemLevel(QModelIndex()), -1);
        QVERIFY(!model.itemIsFirstSibling(QModelIndex()));
        QVERIFY(!model.itemIsLastSibling(QModelIndex()));
        QVERIFY(model.getItemKeyLink(QModelIndex()).isNull());
    }

    void hasChildrenIsTheBaseClassOne() {
        Model model(menu);
        const QAbstractItemModel& base = model;
        QVERIFY(base.hasChildren());
        QVERIFY(base.hasChildren(model.row("a")));
        QVERIFY(!base.hasChildren(model.row("b")));
        QVERIFY(!Model().hasChildren());
    }

    void copyingRowsBelowCopiesTheWholeSubtree() {
        Model model(menu);
        QVERIFY(model.copyChildRows(model.row("a"), model.row("b")));
        QCOMPARE(print(model, Key, {1}, model.row("b")),
                 QString("a1 #a1 1=модуль\na2 #a2 1=папка\n  a21 #a21 1=модуль\n"));
        QCOMPARE(print(model, Key, {}, model.row("a")), QString("a1 #a1\na2 #a2\n  a21 #a21\n"));
    }

    void copyingFromARowWithoutRowsBelowIsTrueAndChangesNothing() {
        Model model(menu);
        const QString before = model.text();
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QVERIFY(model.copyChildRows(model.row("b"), model.row("a")));
        QCOMPARE(inserted.count(), 0);
        QCOMPARE(model.text(), before);
    }

    void copiedRowsStandBeforeThoseThatAreThere() {
        Model model("t\n  a #a\n    1 #1\n    2 #2\n  b #b\n    3 #3\n");
        QVERIFY(model.copyChildRows(model.row("a"), model.row("b")));
        QCOMPARE(print(model, Key, {}, model.row("b")), QString("1 #1\n2 #2\n3 #3\n"));
    }

    void copiedFoldersAreClosed() {
        Model model(menu);
        model.setItemExpanded(model.row("a2"));
        QVERIFY(model.copyChildRows(model.row("a"), model.row("b")));
        QVERIFY(!model.getItem(model.index(1, 0, model.row("b")))->isExpanded());
        QVERIFY(model.getItem(model.index(1, 0, model.row("a")))->isExpanded());
    }

    void copyingRowsBelowThemselvesEnds() {
        Model model("t\n  a #a\n    x #x\n");
        QVERIFY(model.copyChildRows(model.row("a"), model.row("x")));
        QCOMPARE(print(model, Key, {}, model.row("a")), QString("x #x\n  x #x\n"));
        QVERIFY(model.copyChildRows(model.row("a"), model.row("a")));
        QCOMPARE(model.rowCount(model.row("a")), 2);
    }

    void aRowMovesWithItsSubtreeAmongSiblings() {
        Model model(menu);
        const QModelIndex top = model.index(0, 0);
        QVERIFY(model.moveSiblingItem(0, 2, top));
        QCOMPARE(print(model, Key, {}, top),
                 QString("b #b\nc #c\na #a\n  a1 #a1\n  a2 #a2\n    a21 #a21\n"));
        QVERIFY(model.moveSiblingItem(2, 1, top));
        QCOMPARE(print(model, Key, {}, top),
                 QString("b #b\na #a\n  a1 #a1\n  a2 #a2\n    a21 #a21\nc #c\n"));
        QCOMPARE(model.row("a21").parent(), model.row("a2"));
    }

    void aMoveAmongSiblingsOutOfRangeIsRefused() {
        Model model(menu);
        const QModelIndex top = model.index(0, 0);
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsAboutToBeInserted);
        QVERIFY(!model.moveSiblingItem(0, 3, top));
        QVERIFY(!model.moveSiblingItem(3, 0, top));
        QVERIFY(!model.moveSiblingItem(-1, 0, top));
        QVERIFY(!model.moveSiblingItem(0, -1, top));
        QVERIFY(model.moveSiblingItem(1, 1, top));
        QCOMPARE(inserted.count(), 0);
    }

    void aRowMovesWithItsSubtreeToAnotherParent() {
        Model model(menu);
        QVERIFY(model.moveItem(1, 0, model.row("a"), model.row("b")));
        QCOMPARE(print(model, Key, {}, model.index(0, 0)),
                 QString("a #a\n  a1 #a1\nb #b\n  a2 #a2\n    a21 #a21\nc #c\n"));
        QCOMPARE(model.getItemLevel(model.row("a21")), 3);
    }

    void aMoveAboveTheSourceParentFindsItAgain() {
        Model model(menu);
        // The new row pushes the source parent down while its row is still to be removed.
        QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        QVERIFY(model.moveItem(1, 0, model.row("a"), model.index(0, 0)));
        QCOMPARE(removed.count(), 1);
        QCOMPARE(removed.at(0).at(0).toModelIndex(), model.row("a"));
        QCOMPARE(print(model, Key, {}, model.index(0, 0)),
                 QString("a2 #a2\n  a21 #a21\na #a\n  a1 #a1\nb #b\nc #c\n"));
        QCOMPARE(model.getItemLevel(model.row("a21")), 2);
    }

    void aMoveBehindTheEndIsRefused() {
        Model model(menu);
        const QString before = model.text();
        const QModelIndex a = model.row("a");
        const QModelIndex b = model.row("b");
        QVERIFY(!model.moveItem(0, model.rowCount(b) + 1, a, b));
        QVERIFY(!model.moveItem(0, model.rowCount(b) + 2, a, b));
        QVERIFY(!model.moveItem(0, -1, a, b));
        QVERIFY(!model.moveItem(2, 0, a, b));
        QVERIFY(!model.moveItem(-1, 0, a, b));
        QCOMPARE(model.text(), before);
        QVERIFY(model.moveItem(0, model.rowCount(b), a, b));
    }

    void aMoveBelowTheMovedRowIsRefused() {
        Model model(menu);
        const QString before = model.text();
        QVERIFY(!model.moveItem(0, 0, model.index(0, 0), model.row("a2")));
        QVERIFY(!model.moveItem(0, 0, model.index(0, 0), model.row("a")));
        QCOMPARE(model.text(), before);
    }

    void aMoveWithinOneParentIsAMoveAmongSiblings() {
        Model model(menu);
        const QModelIndex top = model.index(0, 0);
        QVERIFY(model.moveItem(2, 0, top, top));
        QCOMPARE(print(model, Key, {}, top),
                 QString("c #c\na #a\n  a1 #a1\n  a2 #a2\n    a21 #a21\nb #b\n"));
    }

    void aMoveToTheTopGivesATopRow() {
        Model model(menu);
        QVERIFY(model.moveItem(1, 1, model.row("a"), QModelIndex()));
        QCOMPARE(print(model, Key, {}, model.index(1, 0)), QString("a21 #a21\n"));
        QCOMPARE(model.getItemLevel(model.row("a2")), 0);
    }

    void rowsMoveBetweenParentsByValue() {
        Model model(menu);
        QVERIFY(model.moveRows(model.row("a"), 0, 2, model.row("b"), 0));
        QCOMPARE(print(model, Key, {}, model.index(0, 0)),
                 QString("a #a\nb #b\n  a1 #a1\n  a2 #a2\nc #c\n"));
    }

    void aDragCarriesEachKeyWithASemicolon() {
        Model model(menu);
        QCOMPARE(model.drag({"a1"})->data(dragType), QByteArray("a1;"));
        const QByteArray two = model.drag({"c", "a1"})->data(dragType);
        QCOMPARE(two, QByteArray("c;a1;"));
        QCOMPARE(QString::fromUtf8(two).split(';', Qt::SkipEmptyParts).size(), 2);
    }

    void severalColumnsOfARowAreOneKey() {
        Model model(menu);
        QModelIndexList cells;
        for (const char* key : {"a1", "a2"}) {
            for (int column = 0; column < 3; ++column)
                cells.append(model.row(key).siblingAtColumn(column));
        }
        std::unique_ptr<QMimeData> data(model.mimeData(cells));
        QCOMPARE(data->data(dragType), QByteArray("a1;a2;"));
    }

    void onlyAdjacentRepeatsAreFolded() {
        Model model(menu);
        QCOMPARE(model.drag({"a1", "a2", "a1"})->data(dragType), QByteArray("a1;a2;a1;"));
        // The same row number below another parent is another row.
        QCOMPARE(model.drag({"a1", "a21"})->data(dragType), QByteArray("a1;a21;"));
    }

    void aKeyThatReadsAsOthersIsNotDragged() {
        Model model(QString(menu) + "Чужой #a1;a2\n");
        QVERIFY(model.row("a1;a2").isValid());
        QCOMPARE(model.drag({"a1;a2", "c"})->data(dragType), QByteArray("c;"));
    }

    void anEmptyDragHasAnEmptyPayload() {
        Model model(menu);
        const auto data = model.drag({});
        QVERIFY(data);
        QVERIFY(data->data(dragType).isEmpty());
    }

    void onlyMovesAreOffered() {
        Model model;
        QCOMPARE(model.supportedDropActions(), Qt::DropActions(Qt::MoveAction));
        QCOMPARE(model.supportedDragActions(), Qt::DropActions(Qt::MoveAction));
    }

    void onlyOneFormatIsOffered() { QCOMPARE(Model().mimeTypes(), QStringList{dragType}); }

    void dropRules_data() {
        QTest::addColumn<QStringList>("keys");
        QTest::addColumn<QString>("target");
        QTest::addColumn<bool>("allowed");
        using S = QStringList;
        QTest::newRow("one row on itself") << S{"a"} << "a" << false;
        QTest::newRow("one row on a child") << S{"a"} << "a1" << false;
        QTest::newRow("one row deep below itself") << S{"a"} << "a21" << false;
        QTest::newRow("one row on a sibling folder") << S{"a"} << "b" << true;
        QTest::newRow("one row on a sibling element") << S{"a"} << "c" << true;
        QTest::newRow("one row on its parent") << S{"a21"} << "a2" << true;
        QTest::newRow("one row on an element elsewhere") << S{"b"} << "a1" << true;
        QTest::newRow("one row on the top row") << S{"a"} << "MenuRootNode" << true;
        QTest::newRow("several on a sibling of one") << S{"a21", "b"} << "c" << false;
        QTest::newRow("several on a sibling of all") << S{"a", "b"} << "c" << false;
        QTest::newRow("several on one of them") << S{"a21", "c"} << "c" << false;
        QTest::newRow("several below one of them") << S{"a", "c"} << "a21" << false;
        QTest::newRow("several elsewhere") << S{"b", "c"} << "a21" << true;
        QTest::newRow("several on the top row") << S{"b", "c"} << "MenuRootNode" << true;
        QTest::newRow("the top row on itself") << S{"MenuRootNode"} << "MenuRootNode" << true;
        QTest::newRow("keys in another case") << S{"A"} << "a21" << false;
    }

    void dropRules() {
        QFETCH(QStringList, keys);
        QFETCH(QString, target);
        QFETCH(bool, allowed);
        Model model(menu);
        const auto data = payload(keys.join(';').toUtf8() + ';');
        for (const int row : {-1, 0, 7}) {
            for (const Qt::DropAction action : {Qt::MoveAction, Qt::CopyAction, Qt::IgnoreAction})
                QCOMPARE(model.canDropMimeData(data.get(), action, row, 0, model.row(target)),
                         allowed);
        }
    }

    void aForeignPayloadMayBeDroppedAnywhere() {
        Model model(menu);
        const auto data = payload("a;", "text/plain");
        QVERIFY(model.canDropMimeData(data.get(), Qt::MoveAction, -1, -1, model.row("a")));
        QVERIFY(model.canDropMimeData(payload("").get(), Qt::MoveAction, -1, -1, model.row("a")));
        QVERIFY(model.canDropMimeData(nullptr, Qt::MoveAction, -1, -1, model.row("a")));
    }

    void anUnknownKeyAloneMayBeDropped() {
        Model model(menu);
        const auto data = payload("nobody;");
        QVERIFY(model.canDropMimeData(data.get(), Qt::MoveAction, -1, -1, model.row("a")));
        QVERIFY(model.canDropMimeData(data.get(), Qt::MoveAction, -1, -1, model.index(0, 0)));
    }

    void anUnknownKeyAmongSeveralMeetsTopRows() {
        Model model(menu);
        const auto data = payload("nobody;a1;");
        QVERIFY(!model.canDropMimeData(data.get(), Qt::MoveAction, -1, -1, model.index(0, 0)));
        QVERIFY(model.canDropMimeData(data.get(), Qt::MoveAction, -1, -1, model.row("b")));
    }

    void dropOnAnotherColumnIsADropOnTheRow() {
        Model model(menu);
        const auto data = payload("a;");
        QVERIFY(!model.canDropMimeData(data.get(), Qt::MoveAction, -1, -1,
                                       model.row("a").siblingAtColumn(2)));
        QVERIFY(!model.canDropMimeData(data.get(), Qt::MoveAction, -1, -1,
                                       model.row("a1").siblingAtColumn(1)));
    }

    void aDropIsReportedAndChangesNothing() {
        Model model(menu);
        const QString before = model.text();
        QSignalSpy drops(&model, &MenuTreeModel::dragdropOperation);
        const QModelIndex target = model.row("b").siblingAtColumn(2);
        QVERIFY(!model.dropMimeData(model.drag({"a1", "c"}).get(), Qt::MoveAction, -1, -1, target));
        QCOMPARE(drops.count(), 1);
        QCOMPARE(drops.at(0).at(0).toModelIndex(), model.row("b"));
        QCOMPARE(drops.at(0).at(1).toStringList(), QStringList({"a1", "c"}));
        QCOMPARE(drops.at(0).at(2).toInt(), -1);
        QCOMPARE(model.text(), before);
    }

    void aDropBetweenRowsReportsTheRow() {
        Model model(menu);
        QSignalSpy drops(&model, &MenuTreeModel::dragdropOperation);
        QVERIFY(!model.dropMimeData(model.drag({"c"}).get(), Qt::MoveAction, 1, 0, model.row("a")));
        QCOMPARE(drops.at(0).at(0).toModelIndex(), model.row("a"));
        QCOMPARE(drops.at(0).at(2).toInt(), 1);
    }

    void aDropOnTheEmptyAreaHasNoDestination() {
        Model model(menu);
        QSignalSpy drops(&model, &MenuTreeModel::dragdropOperation);
        QVERIFY(
            !model.dropMimeData(model.drag({"c"}).get(), Qt::MoveAction, -5, -1, QModelIndex()));
        QCOMPARE(drops.count(), 1);
        QVERIFY(!drops.at(0).at(0).toModelIndex().isValid());
        QCOMPARE(drops.at(0).at(2).toInt(), -1);
    }

    void thePayloadEndsAtAZeroByte() {
        Model model(menu);
        QSignalSpy drops(&model, &MenuTreeModel::dragdropOperation);
        const auto data = payload(QByteArray("c;;a1;\0b;", 9));
        model.dropMimeData(data.get(), Qt::MoveAction, -1, -1, model.row("a"));
        QCOMPARE(drops.at(0).at(1).toStringList(), QStringList({"c", "a1"}));
    }

    void keysTravelInUtf8() {
        Model model("t #t\n  a #ключ\n");
        QSignalSpy drops(&model, &MenuTreeModel::dragdropOperation);
        const auto data = model.drag({"ключ"});
        QCOMPARE(data->data(dragType), QString("ключ;").toUtf8());
        model.dropMimeData(data.get(), Qt::MoveAction, -1, -1, model.row("t"));
        QCOMPARE(drops.at(0).at(1).toStringList(), QStringList{"ключ"});
    }
};

QTEST_MAIN(MenuTree)
#include "tst_menutreemodel.moc"
