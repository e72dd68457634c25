// The tree of the object picker: its icons and what it answers.
#include "IconCheck.h"
#include "TreeText.h"

#include "models/PopTreeModel.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace treetext;

namespace {

constexpr int Key = 4;

struct Model : Watched<PopTreeModel> {
    explicit Model(const QString& text, const QString& files = "files/")
        : Watched(headers(7), files) {
        fill(*this, Key, text);
    }
};

} // namespace

class PopTree : public QObject {
    Q_OBJECT
private slots:
    void itStartsWithoutAKindAndWithoutFileIcons() {
        Model model("a #1\n");
        QCOMPARE(model.objectType(), 0);
        QVERIFY(!model.showFileIcons());
        QVERIFY(model.initialFolderPath().isEmpty());
        QVERIFY(showsNothing(model.index(0, 0)));
        model.setInitialFolder("icons");
        QCOMPARE(model.initialFolderPath(), QString("files/icons/"));
    }

    void aFolderIsClosedUntilItIsExpanded() {
        Model model("a #1 5=true\n");
        QVERIFY(showsImage(model.index(0, 0), ":/res/closedfolder1.png"));
        model.setItemExpanded(model.index(0, 0));
        QVERIFY(showsImage(model.index(0, 0), ":/res/openfolder1.png"));
        model.setItemCollapsed(model.index(0, 0));
        model.setObjectType(4);
        QVERIFY(showsImage(model.index(0, 0), ":/res/closedfolder1.png"));
    }

    void theKindDecidesTheIconOfOtherRows_data() {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("image");
        QTest::newRow("module") << 1 << ":/res/modul1.png";
        QTest::newRow("function") << 2 << ":/res/function1.png";
        QTest::newRow("form") << 3 << ":/res/file1.png";
        QTest::newRow("file") << 4 << ":/res/file1.png";
        QTest::newRow("no kind") << 0 << QString();
        QTest::newRow("unknown kind") << 5 << QString();
    }

    void theKindDecidesTheIconOfOtherRows() {
        QFETCH(int, kind);
        QFETCH(QString, image);
        Model model("a #1 5=false\n");
        model.setObjectType(kind);
        if (image.isEmpty())
            QVERIFY(showsNothing(model.index(0, 0)));
        else
            QVERIFY(showsImage(model.index(0, 0), image));
    }

    void filesShowTheirOwnImageIfWanted() {
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkdir("icons"));
        QVERIFY(makeImage(dir.filePath("icons/pump.png"), Qt::blue));
        Model model("pump.png #1 5=false\n", dir.path() + '/');
        model.setObjectType(4);
        model.setShowFileIcons(true);
        model.setInitialFolder("icons");
        QVERIFY(showsImage(model.index(0, 0), dir.filePath("icons/pump.png")));
        model.setShowFileIcons(false);
        QVERIFY(showsImage(model.index(0, 0), ":/res/file1.png"));
    }

    void aChangedImageFileIsShownAgain() {
        QTemporaryDir dir;
        const QString path = dir.filePath("icons/pump.png");
        QVERIFY(QDir(dir.path()).mkdir("icons"));
        QVERIFY(makeImage(path, Qt::blue));
        Model model("pump.png #1 5=false\n", dir.path() + '/');
        model.setObjectType(4);
        model.setShowFileIcons(true);
        model.setInitialFolder("icons");
        QVERIFY(showsImage(model.index(0, 0), path));
        QVERIFY(makeImage(path, Qt::red));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(5),
                                 QFileDevice::FileModificationTime));
        file.close();
        const auto icon = model.index(0, 0).data(Qt::DecorationRole).value<QIcon>();
        QCOMPARE(icon.pixmap(16, 16).toImage().pixelColor(8, 8), QColor(Qt::red));
    }

    void aMissingImageFileShowsNoPicture() {
        Model model("gone.png #1 5=false\n", "/nowhere/");
        model.setObjectType(4);
        model.setShowFileIcons(true);
        model.setInitialFolder("icons");
        QVERIFY(model.index(0, 0).data(Qt::DecorationRole).value<QIcon>().pixmap(16, 16).isNull());
    }

    void onlyTheFirstColumnHasAnIcon() {
        Model model("a #1 5=true\n");
        model.setObjectType(1);
        for (int column = 1; column < 7; ++column)
            QVERIFY(showsNothing(model.index(0, column)));
    }

    void rolesAnswerTheirColumns() {
        Model model("a #k 1=about\n");
        const QModelIndex cell = model.index(0, 1);
        QCOMPARE(cell.data(Qt::DisplayRole), QVariant("about"));
        QCOMPARE(cell.data(Qt::EditRole), QVariant("about"));
        QCOMPARE(cell.data(12), QVariant("k"));
        for (const int role : {3, 8, 9, 11, 13, 257, 258})
            QVERIFY(!cell.data(role).isValid());
    }

    void anEmptyKeyFindsNothing() {
        Model model("a #k\n");
        QVERIFY(!model.findIndexByKey(QString()).isValid());
        QCOMPARE(model.findIndexByKey("K"), model.index(0, 0));
    }

    void answersForFoldersAndKeys() {
        Model model("a #k 5=true\n  b #b 5=false\n");
        QVERIFY(model.itemIsFolder(model.findIndexByKey("k")));
        QVERIFY(!model.itemIsFolder(model.findIndexByKey("b")));
        QVERIFY(!model.itemIsFolder(QModelIndex()));
        QCOMPARE(model.getItemKeyLink(model.findIndexByKey("b")), QString("b"));
        QVERIFY(model.getItemKeyLink(QModelIndex()).isNull());
    }
};

QTEST_MAIN(PopTree)
#include "tst_poptreemodel.moc"
