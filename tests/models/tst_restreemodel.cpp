// The resource tree: icons, search roles, file lists, moves, and the rules of its drag and drop.
#include "IconCheck.h"
#include "TreeText.h"

#include "models/ResTreeModel.h"

#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace treetext;

namespace {

constexpr int Key = 5;

QString typeName(int type) {
    static const char* const names[] = {"", "modres", "funcres", "menures", "sysres"};
    return QString("OrvoResources/%1/dragdrop").arg(names[type]);
}

struct Model : Watched<ResTreeModel> {
    explicit Model(const QString& text = QString(), const QString& icons = "icons/")
        : Watched(headers(14), icons) {
        fill(*this, Key, text);
    }
    QString text() const { return print(*this, Key); }
    QModelIndex row(const QString& key) const { return findIndexByKey(key); }
    std::unique_ptr<QMimeData> drag(const QStringList& keys) const {
        QModelIndexList rows;
        for (const QString& key : keys)
            rows.append(row(key));
        return std::unique_ptr<QMimeData>(mimeData(rows));
    }
    bool mayDrop(const QStringList& keys, const QModelIndex& parent, int row = -1) const {
        return canDropMimeData(drag(keys).get(), Qt::MoveAction, row, 0, parent);
    }
};

std::unique_ptr<QMimeData> payload(const QByteArray& bytes, const QString& type) {
    auto data = std::make_unique<QMimeData>();
    data->setData(type, bytes);
    return data;
}

const char* const tree = "menu #MenuResources 6=0 9=true\n"
                         "  modules #m 6=1 9=true\n"
                         "    mf #mf 6=1 9=true\n"
                         "      mg #mg 6=1 9=true\n"
                         "        mga #mga 1=mga 6=1 9=false\n"
                         "      mfa #mfa 1=mfa 6=1 9=false\n"
                         "    ma #ma 1=ma 6=1 9=false\n"
                         "    mb #mb 1=mb 6=1 9=false\n"
                         "  functions #f 6=2 9=true\n"
                         "    fa #fa 1=fa 6=2 9=false\n"
                         "  forms #s 6=3 9=true\n"
                         "    sa #sa 1=sa 6=3 9=false 12=0\n"
                         "  lost #WrongFolder 6=5 9=true\n"
                         "    la #la 1=la 6=3 9=false\n"
                         "files #FileResources 6=4 9=true\n"
                         "  icons #i 6=4 9=true\n"
                         "    pump #i1 1=pump.png 6=4 9=false\n"
                         "  docs #d 6=4 9=true\n"
                         "    pump2 #d1 1=pump.png 6=4 9=false\n"
                         "    PUMP #d2 1=PUMP.png 6=4 9=false\n"
                         "    icons #d3 6=4 9=true\n"
                         "  top #t1 1=top.txt 6=4 9=false\n";

} // namespace

class ResTree : public QObject {
    Q_OBJECT
private slots:
    void iconsFollowTheType_data() {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("image");
        QTest::newRow("module") << 1 << ":/res/modul1.png";
        QTest::newRow("function") << 2 << ":/res/function1.png";
        QTest::newRow("form") << 3 << ":/res/file1.png";
        QTest::newRow("file") << 4 << ":/res/file1.png";
        QTest::newRow("root") << 0 << QString();
        QTest::newRow("orphan folder") << 5 << QString();
    }

    void iconsFollowTheType() {
        QFETCH(int, type);
        QFETCH(QString, image);
        Model model(QString("a #a 6=%1 9=false\n").arg(type));
        if (image.isEmpty())
            QVERIFY(showsNothing(model.row("a")));
        else
            QVERIFY(showsImage(model.row("a"), image));
    }

    void aFolderShowsWhetherItIsOpen() {
        Model model(tree);
        QVERIFY(showsImage(model.row("m"), ":/res/closedfolder1.png"));
        model.setItemExpanded(model.row("m"));
        QVERIFY(showsImage(model.row("m"), ":/res/openfolder1.png"));
        model.setItemCollapsed(model.row("m"));
        QVERIFY(showsImage(model.row("m"), ":/res/closedfolder1.png"));
    }

    void theLockIconStandsInItsColumn_data() {
        QTest::addColumn<int>("type");
        QTest::addColumn<QVariant>("blocked");
        QTest::addColumn<QString>("image");
        QTest::newRow("mine") << 3 << QVariant(1) << ":/res/blocked1.png";
        QTest::newRow("another's") << 3 << QVariant(2) << ":/res/blocked5.png";
        QTest::newRow("free") << 3 << QVariant(0) << QString();
        QTest::newRow("not set") << 3 << QVariant() << QString();
        QTest::newRow("no form") << 1 << QVariant(1) << QString();
        QTest::newRow("a file") << 4 << QVariant(2) << QString();
    }

    void theLockIconStandsInItsColumn() {
        QFETCH(int, type);
        QFETCH(QVariant, blocked);
        QFETCH(QString, image);
        Model model(QString("a #a 6=%1 9=false\n").arg(type));
        model.setData(model.index(0, 12), blocked);
        if (image.isEmpty())
            QVERIFY(showsNothing(model.index(0, 3)));
        else
            QVERIFY(showsImage(model.index(0, 3), image));
    }

    void theIconColumnShowsTheIconItself() {
        QTemporaryDir dir;
        QVERIFY(makeImage(dir.filePath("pump.png"), Qt::green));
        Model model("a #a 6=1 9=false\n", dir.path() + '/');
        QVERIFY(showsNothing(model.index(0, 2)));
        model.setData(model.index(0, 2), QString());
        QVERIFY(showsNothing(model.index(0, 2)));
        model.setData(model.index(0, 2), "pump.png");
        QVERIFY(showsImage(model.index(0, 2), dir.filePath("pump.png")));
        QCOMPARE(model.index(0, 2).data().toString(), QString("pump.png"));
    }

    void anEmptyIconNameIsNotNoIcon() {
        // Only a name that is null means that there is none. An empty one names no file of the
        // folder, whatever the path of the folder itself leads to.
        QTemporaryDir dir;
        QVERIFY(makeImage(dir.filePath("pump.png"), Qt::green));
        for (const QString& path : {dir.path() + '/', dir.filePath("pump.png")}) {
            Model model("a #a 6=1 9=false\n", path);
            model.setData(model.index(0, 2), "");
            const QVariant shown = model.index(0, 2).data(Qt::DecorationRole);
            QCOMPARE(shown.userType(), int(QMetaType::QIcon));
            QVERIFY(shown.value<QIcon>().pixmap(16, 16).isNull());
            model.setData(model.index(0, 2), QString());
            QVERIFY(showsNothing(model.index(0, 2)));
        }
    }

    void otherColumnsHaveNoIcon() {
        Model model("a #a 6=3 9=true 12=1\n");
        for (const int column : {1, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13})
            QVERIFY(showsNothing(model.index(0, column)));
    }

    void orphansAreRedInTheFirstColumn() {
        Model model(tree);
        const QModelIndex orphans = model.row("WrongFolder");
        QCOMPARE(orphans.data(Qt::ForegroundRole).value<QColor>(), QColor(Qt::red));
        for (int column = 1; column < 14; ++column)
            QVERIFY(!orphans.siblingAtColumn(column).data(Qt::ForegroundRole).isValid());
        QVERIFY(!model.row("la").data(Qt::ForegroundRole).isValid());
        QVERIFY(!model.row("m").data(Qt::ForegroundRole).isValid());
    }

    void searchRolesAnswerNameAndResource() {
        Model model(tree);
        for (int column = 0; column < 14; ++column) {
            const QModelIndex cell = model.row("d1").siblingAtColumn(column);
            QCOMPARE(cell.data(257), QVariant("pump2"));
            QCOMPARE(cell.data(258), QVariant("pump.png"));
            QCOMPARE(cell.data(12), QVariant("d1"));
        }
        const QModelIndex cell = model.row("d1").siblingAtColumn(1);
        QCOMPARE(cell.data(Qt::DisplayRole), QVariant("pump.png"));
        QCOMPARE(cell.data(Qt::EditRole), QVariant("pump.png"));
        for (const int role : {3, 4, 6, 7, 8, 9, 10, 11, 13, 256, 259})
            QVERIFY(!cell.data(role).isValid());
    }

    void anEmptyKeyFindsNothing() {
        Model model(tree);
        QVERIFY(!model.findIndexByKey(QString()).isValid());
        QVERIFY(!model.findIndexByKey("").isValid());
        QCOMPARE(model.findIndexByKey("wrongfolder").data().toString(), QString("lost"));
    }

    void hasChildrenDoesNotOverrideTheBaseClassOne() {
        struct Closed : ResTreeModel {
            using ResTreeModel::ResTreeModel;
            bool hasChildren(const QModelIndex&) const override { return false; }
        };
        Closed model(headers(14), QString());
        fill(model, Key, "a #a\n");
        ResTreeModel& plain = model;
        const QAbstractItemModel& base = model;
        QVERIFY(plain.hasChildren(QModelIndex()));
        QVERIFY(!base.hasChildren());
    }

    void answersForAnInvalidIndex() {
        Model model(tree);
        QVERIFY(!model.itemIsFolder(QModelIndex()));
        QVERIFY(!model.itemInSystemArea(QModelIndex()));
        QCOMPARE(model.getItemLevel(QModelIndex()), -1);
        QVERIFY(model.getItemKeyLink(QModelIndex()).isNull());
        QVERIFY(model.hasChildren(QModelIndex()));
        QVERIFY(!Model().hasChildren(QModelIndex()));
    }

    void areasAndFolders() {
        Model model(tree);
        model.setData(model.row("FileResources").siblingAtColumn(9), false);
        QVERIFY(model.itemIsFolder(model.row("FileResources")));
        QVERIFY(model.itemIsFolder(model.row("i")));
        QVERIFY(!model.itemIsFolder(model.row("i1")));
        QVERIFY(model.itemInSystemArea(model.row("i1")));
        QVERIFY(!model.itemInSystemArea(model.row("sa")));
        QVERIFY(model.hasChildren(model.row("i")));
        QVERIFY(!model.hasChildren(model.row("i1")));
    }

    void fileListsBelongToRows() {
        Model model(tree);
        const QModelIndex row = model.row("i1");
        QCOMPARE(model.addfileInfo(row), 0);
        QCOMPARE(model.addfileInfo(row), 1);
        QCOMPARE(model.fileInfoCount(row), 2);
        QCOMPARE(model.fileInfoCount(model.row("d1")), 0);
        model.setFileInfo(row, 1, {"a", "b", 3});
        model.setFileInfo(row, 2, {"x", "x", 9});
        QCOMPARE(model.getfileInfo(row, 1)->secondText, QString("b"));
        QVERIFY(!model.getfileInfo(row, 2));
        model.clearfileInfo(row);
        QCOMPARE(model.fileInfoCount(row), 0);
        QCOMPARE(model.addfileInfo(QModelIndex()), -1);
        QCOMPARE(model.fileInfoCount(QModelIndex()), 0);
        QVERIFY(!model.getfileInfo(QModelIndex(), 0));
        model.setFileInfo(QModelIndex(), 0, {});
        model.clearfileInfo(QModelIndex());
    }

    void aMovedRowLeavesItsFileListBehind() {
        Model model(tree);
        model.addfileInfo(model.row("d1"));
        QVERIFY(model.moveSiblingItem(0, 1, model.row("d")));
        QCOMPARE(model.row("d1").row(), 1);
        QCOMPARE(model.fileInfoCount(model.row("d1")), 0);
    }

    void rowsMoveWithTheirSubtrees() {
        Model model(tree);
        QVERIFY(model.moveSiblingItem(0, 2, model.row("m")));
        QCOMPARE(print(model, Key, {}, model.row("m")),
                 QString("ma #ma\nmb #mb\nmf #mf\n  mg #mg\n    mga #mga\n  mfa #mfa\n"));
        QVERIFY(model.moveItem(0, 1, model.row("mf"), model.row("m")));
        QCOMPARE(print(model, Key, {}, model.row("m")),
                 QString("ma #ma\nmg #mg\n  mga #mga\nmb #mb\nmf #mf\n  mfa #mfa\n"));
        QVERIFY(model.copyChildRows(model.row("mf"), model.row("mg")));
        QCOMPARE(print(model, Key, {}, model.row("mg")), QString("mfa #mfa\nmga #mga\n"));
    }

    void aRowMovesToTheTop() {
        Model model(tree);
        QVERIFY(model.moveItem(0, 2, model.row("m"), QModelIndex()));
        QCOMPARE(model.getItemLevel(model.row("mf")), 0);
        QCOMPARE(model.row("mf").row(), 2);
        QCOMPARE(print(model, Key, {}, model.row("mf")), QString("mg #mg\n  mga #mga\nmfa #mfa\n"));
    }

    void impossibleMovesChangeNothing() {
        Model model(tree);
        const QString before = model.text();
        const QModelIndex modules = model.row("m");
        for (const auto& [from, to] : {std::pair{-1, 0}, {0, -1}, {0, 3}, {3, 0}})
            QVERIFY(!model.moveSiblingItem(from, to, modules));
        QVERIFY(model.moveSiblingItem(2, 2, modules));
        const QModelIndex functions = model.row("f");
        for (const auto& [from, to] : {std::pair{-1, 0}, {3, 0}, {0, -1}, {0, 2}, {0, 3}})
            QVERIFY(!model.moveItem(from, to, modules, functions));
        QVERIFY(model.copyChildRows(model.row("ma"), functions));
        QCOMPARE(model.text(), before);
    }

    void aMovedFolderIsClosed() {
        Model model(tree);
        model.setItemExpanded(model.row("mf"));
        QVERIFY(model.moveSiblingItem(0, 1, model.row("m")));
        QVERIFY(showsImage(model.row("mf"), ":/res/closedfolder1.png"));
    }

    // ---------------------------------------------------------------------------------------------
    // Drags

    void formatsAreOfferedInOrder() {
        QCOMPARE(Model().mimeTypes(),
                 QStringList({typeName(3), typeName(4), typeName(1), typeName(2)}));
    }

    void onlyMovesAreOffered() {
        QCOMPARE(Model().supportedDropActions(), Qt::DropActions(Qt::MoveAction));
    }

    void aDragOfOneTypeCarriesKeysJoinedBySemicolons() {
        Model model(tree);
        const QMap<int, QStringList> drags{
            {1, {"ma", "mb"}}, {2, {"fa"}}, {3, {"sa", "la"}}, {4, {"i1", "d"}}};
        for (auto it = drags.begin(); it != drags.end(); ++it) {
            const auto data = model.drag(it.value());
            QCOMPARE(data->formats(), QStringList{typeName(it.key())});
            QCOMPARE(data->data(typeName(it.key())), it.value().join(';').toUtf8());
        }
        QModelIndexList cells;
        for (int column = 0; column < 5; ++column)
            cells.append(model.row("ma").siblingAtColumn(column));
        std::unique_ptr<QMimeData> one(model.mimeData(cells));
        QCOMPARE(one->data(typeName(1)), QByteArray("ma"));
    }

    void rowsOfDifferentTypesCannotBeDragged() {
        Model model(tree);
        QVERIFY(!model.drag({"ma", "fa"}));
        QVERIFY(!model.drag({"m", "mb", "i1"}));
    }

    void rowsOfOneTypeAcrossFoldersAreOneDrag() {
        Model model(tree);
        QCOMPARE(model.drag({"mga", "ma", "mfa"})->data(typeName(1)), QByteArray("mga;ma;mfa"));
    }

    void rowsWithoutADragTypeCannotBeDragged() {
        Model model(tree);
        QVERIFY(!model.drag({"MenuResources"}));
        QVERIFY(!model.drag({"WrongFolder"}));
    }

    void theTopRowOfFilesCanBeDragged() {
        Model model(tree);
        QCOMPARE(model.drag({"FileResources"})->data(typeName(4)), QByteArray("FileResources"));
    }

    void nothingCannotBeDragged() { QVERIFY(!Model(tree).drag({})); }

    // ---------------------------------------------------------------------------------------------
    // Where a drop is allowed

    void typesAcceptOnlyTheirOwn_data() {
        QTest::addColumn<QString>("dragged");
        QTest::addColumn<QString>("target");
        QTest::addColumn<bool>("allowed");
        const QMap<QString, QString> rows{{"mga", "m"}, {"fa", "fb"}, {"la", "s"}, {"i1", "d3"}};
        for (auto source = rows.begin(); source != rows.end(); ++source) {
            for (auto target = rows.begin(); target != rows.end(); ++target)
                QTest::addRow("%s on %s", qPrintable(source.key()), qPrintable(target.value()))
                    << source.key() << target.value() << (source == target);
            for (const char* target : {"MenuResources", "WrongFolder"})
                QTest::addRow("%s on %s", qPrintable(source.key()), target)
                    << source.key() << target << true;
        }
    }

    void typesAcceptOnlyTheirOwn() {
        QFETCH(QString, dragged);
        QFETCH(QString, target);
        QFETCH(bool, allowed);
        Model model(tree);
        fill(model, Key, "fb #fb 6=2 9=true\n", model.row("f"));
        QCOMPARE(model.mayDrop({dragged}, model.row(target)), allowed);
    }

    void theEmptyAreaTakesNothing() {
        Model model(tree);
        QVERIFY(!model.mayDrop({"ma"}, QModelIndex()));
        QVERIFY(!model.mayDrop({"ma"}, QModelIndex(), 1));
        QVERIFY(!model.canDropMimeData(nullptr, Qt::MoveAction, -1, -1, model.row("m")));
    }

    void aRowIsNotDroppedOnItsOwnParent() {
        Model model(tree);
        QVERIFY(!model.mayDrop({"ma"}, model.row("m")));
        QVERIFY(!model.mayDrop({"mga", "ma"}, model.row("m")));
        QVERIFY(model.mayDrop({"mga", "mfa"}, model.row("m")));
    }

    void aRowGoesToASiblingFolder() {
        Model model(tree);
        QVERIFY(model.mayDrop({"ma"}, model.row("mf")));
        QVERIFY(model.mayDrop({"ma"}, model.row("mf").siblingAtColumn(3)));
    }

    void aRowDroppedOnAResourceGoesToItsFolder() {
        Model model(tree);
        QVERIFY(model.mayDrop({"ma"}, model.row("mfa")));
        QVERIFY(!model.mayDrop({"ma"}, model.row("mb")));
    }

    void aFolderIsNotDroppedBelowItself() {
        Model model(tree);
        QVERIFY(!model.mayDrop({"mf"}, model.row("mg")));
        QVERIFY(!model.mayDrop({"mf"}, model.row("mga")));
        QVERIFY(!model.mayDrop({"m"}, model.row("mf")));
        // Only parents of the destination are compared: into the folder itself is let through.
        QVERIFY(model.mayDrop({"mf"}, model.row("mfa")));
    }

    void theTopRowIsNoFolderAboveADestination() {
        Model model(tree);
        const auto top = payload("MenuResources", typeName(1));
        const auto drop = [&](const char* target) {
            return model.canDropMimeData(top.get(), Qt::MoveAction, -1, -1, model.row(target));
        };
        // The walk over the folders above ends at level 1: the top row itself is never among them.
        QVERIFY(drop("m"));
        QVERIFY(drop("mf"));
        QVERIFY(drop("mg"));
        const auto modules = payload("m", typeName(1));
        QVERIFY(!model.canDropMimeData(modules.get(), Qt::MoveAction, -1, -1, model.row("mf")));
    }

    void aFolderOnItselfPassesTheAncestorRule() {
        Model model(tree);
        QVERIFY(model.mayDrop({"mf"}, model.row("mf")));
        QVERIFY(model.mayDrop({"mg"}, model.row("mg")));
    }

    void betweenRowsTheFolderBelowTheIndicatorCounts() {
        Model model(tree);
        // Below the indicator stands mf, a sibling of ma: the destination is mf, and the sibling
        // rule is left out.
        QVERIFY(model.mayDrop({"ma"}, model.row("m"), 0));
        QVERIFY(model.mayDrop({"mfa"}, model.row("m"), 0));
        // mf may not go below itself that way either.
        QVERIFY(!model.mayDrop({"mf"}, model.row("mf"), 0));
    }

    void betweenRowsOfAnotherColumnTheFolderAboveCounts() {
        Model model(tree);
        // There are no rows below another column, so that nothing stands below the indicator.
        QVERIFY(model.mayDrop({"ma"}, model.row("m"), 0));
        QVERIFY(!model.mayDrop({"ma"}, model.row("m").siblingAtColumn(3), 0));
    }

    void betweenRowsAResourceMeansItsParent() {
        Model model(tree);
        QVERIFY(!model.mayDrop({"ma"}, model.row("m"), 2));
        QVERIFY(model.mayDrop({"mfa"}, model.row("m"), 2));
    }

    void behindTheLastRowNothingIsDropped() {
        Model model(tree);
        QVERIFY(!model.mayDrop({"mfa"}, model.row("m"), model.rowCount(model.row("m"))));
        QVERIFY(!model.mayDrop({"mfa"}, model.row("m"), 99));
        QVERIFY(model.mayDrop({"mfa"}, model.row("m"), -1));
        QVERIFY(!model.mayDrop({"mfa"}, model.row("ma"), 0));
    }

    void filesAreUniqueInTheirFolder() {
        Model model(tree);
        QVERIFY(!model.mayDrop({"i1"}, model.row("d")));
        QVERIFY(!model.mayDrop({"d1"}, model.row("i")));
        QVERIFY(model.mayDrop({"d2"}, model.row("i")));
        QVERIFY(!model.mayDrop({"d2", "d1"}, model.row("i")));
        QVERIFY(model.mayDrop({"i1"}, model.row("FileResources")));
        QVERIFY(model.mayDrop({"t1"}, model.row("d")));
    }

    void foldersOfFilesAreUniqueByName() {
        Model model(tree);
        QVERIFY(!model.mayDrop({"d3"}, model.row("FileResources")));
        QVERIFY(!model.mayDrop({"i"}, model.row("d")));
        model.setData(model.row("d3"), "Icons");
        QVERIFY(model.mayDrop({"d3"}, model.row("FileResources")));
    }

    void namesOfFilesAreComparedByCase() {
        Model model(tree);
        QVERIFY(!model.mayDrop({"i1"}, model.row("d")));
        const QModelIndex name = model.row("i1").siblingAtColumn(1);
        model.setData(name, name.data().toString().toUpper());
        QVERIFY(model.mayDrop({"i1"}, model.row("d")));
    }

    void inTheMenuAreaNamesMayRepeat() {
        Model model(tree);
        model.setData(model.row("mfa").siblingAtColumn(1), "ma");
        model.setData(model.row("mfa"), "ma");
        QVERIFY(model.mayDrop({"mfa"}, model.row("m")));
    }

    // Rows that another window drags and this tree does not have.
    void unknownKeysAreJudgedAsFilesWithoutAName() {
        Model model(tree);
        const auto modules = payload("nosuch", typeName(1));
        const auto files = payload("nosuch", typeName(4));
        const auto drop = [&](const QMimeData& data, const char* target) {
            return model.canDropMimeData(&data, Qt::MoveAction, -1, -1, model.row(target));
        };
        QVERIFY(drop(*modules, "m"));
        QVERIFY(drop(*files, "i"));
        QVERIFY(!drop(*files, "d")); // its folder "icons" has no resource name either
    }

    // ---------------------------------------------------------------------------------------------
    // What a drop reports

    void aDropIsReportedAndChangesNothing() {
        Model model(tree);
        const QString before = model.text();
        QSignalSpy drops(&model, &ResTreeModel::dragdropOperation);
        QVERIFY(!model.dropMimeData(model.drag({"ma", "mb"}).get(), Qt::MoveAction, -1, -1,
                                    model.row("mf").siblingAtColumn(2)));
        QCOMPARE(drops.count(), 1);
        QCOMPARE(drops.at(0).at(0).toModelIndex(), model.row("mf"));
        QCOMPARE(drops.at(0).at(1).toStringList(), QStringList({"ma", "mb"}));
        QCOMPARE(model.text(), before);
    }

    void aDropOnAResourceReportsItsFolder() {
        Model model(tree);
        QSignalSpy drops(&model, &ResTreeModel::dragdropOperation);
        model.dropMimeData(model.drag({"ma"}).get(), Qt::MoveAction, -1, -1, model.row("mfa"));
        QCOMPARE(drops.at(0).at(0).toModelIndex(), model.row("mf"));
    }

    void aDropBetweenRowsReportsTheirParent() {
        Model model(tree);
        QSignalSpy drops(&model, &ResTreeModel::dragdropOperation);
        // The folder below the indicator counted for whether it is allowed, not for where it goes.
        model.dropMimeData(model.drag({"mfa"}).get(), Qt::MoveAction, 0, 0, model.row("m"));
        QCOMPARE(drops.at(0).at(0).toModelIndex(), model.row("m"));
    }

    void aDropBetweenRowsBelowAResourceReportsTheResource() {
        Model model(tree);
        QSignalSpy drops(&model, &ResTreeModel::dragdropOperation);
        model.dropMimeData(model.drag({"ma"}).get(), Qt::MoveAction, 0, 0, model.row("mfa"));
        QCOMPARE(drops.at(0).at(0).toModelIndex(), model.row("mfa"));
    }

    void aDropOfAnotherTypeReportsNothing() {
        Model model(tree);
        QSignalSpy drops(&model, &ResTreeModel::dragdropOperation);
        QVERIFY(
            !model.dropMimeData(model.drag({"fa"}).get(), Qt::MoveAction, -1, -1, model.row("m")));
        QVERIFY(!model.dropMimeData(payload("ma", "text/plain").get(), Qt::MoveAction, -1, -1,
                                    model.row("m")));
        QVERIFY(!model.dropMimeData(nullptr, Qt::MoveAction, -1, -1, model.row("m")));
        QCOMPARE(drops.count(), 0);
    }

    void aDropOnTheMenuRootReportsNothing() {
        Model model(tree);
        QSignalSpy drops(&model, &ResTreeModel::dragdropOperation);
        for (const char* target : {"MenuResources", "WrongFolder"}) {
            QVERIFY(model.mayDrop({"ma"}, model.row(target)));
            QVERIFY(!model.dropMimeData(model.drag({"ma"}).get(), Qt::MoveAction, -1, -1,
                                        model.row(target)));
        }
        QCOMPARE(drops.count(), 0);
    }

    void aDropOnTheEmptyAreaReportsNothing() {
        Model model(tree);
        QSignalSpy drops(&model, &ResTreeModel::dragdropOperation);
        QVERIFY(
            !model.dropMimeData(model.drag({"ma"}).get(), Qt::MoveAction, -1, -1, QModelIndex()));
        QCOMPARE(drops.count(), 0);
    }

    void thePayloadEndsAtAZeroByte() {
        Model model(tree);
        QSignalSpy drops(&model, &ResTreeModel::dragdropOperation);
        const auto data = payload(QByteArray(";ma;;mb\0;m", 10), typeName(1));
        model.dropMimeData(data.get(), Qt::MoveAction, -1, -1, model.row("mf"));
        QCOMPARE(drops.at(0).at(1).toStringList(), QStringList({"ma", "mb"}));
    }
};

QTEST_MAIN(ResTree)
#include "tst_restreemodel.moc"
