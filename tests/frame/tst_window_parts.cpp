// What the trees of both windows share.
#include "frame/ViewRows.h"
#include "frame/WindowParts.h"

#include <QAbstractItemModelTester>
#include <QHeaderView>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTreeView>
#include <QtTest>

namespace {

/// A folder "a" with a folder "b" with a row, and a row; beside it a folder "c" with a row.
struct Tree {
    QStandardItemModel model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
    QTreeView view;

    Tree() {
        QStandardItem* a = add(model.invisibleRootItem(), "a");
        add(add(a, "b"), "leaf of b");
        add(a, "leaf of a");
        add(add(model.invisibleRootItem(), "c"), "leaf of c");
        view.setModel(&model);
        orvo::arrangeTree(&view);
        view.resize(400, 300);
        view.show();
    }
    static QStandardItem* add(QStandardItem* parent, const char* text) {
        auto* item = new QStandardItem(QString(text)); // the parent's from here on
        parent->appendRow({item, new QStandardItem(QString("second"))});
        return item;
    }
    QModelIndex row(const char* text) const {
        return model.match(model.index(0, 0), Qt::DisplayRole, QString(text), 1,
                           Qt::MatchRecursive | Qt::MatchExactly)[0];
    }
    bool open(const char* text) const { return view.isExpanded(row(text)); }
};

} // namespace

class TestWindowParts : public QObject {
    Q_OBJECT
private slots:
    void aListOfNamesIsShort() {
        QCOMPARE(orvo::nameLines({}), QString());
        QCOMPARE(orvo::nameLines({"Насос", "Цех\n№ 2"}), QString("Насос\nЦех № 2"));
        QStringList names;
        for (int i = 0; i < 12; ++i)
            names << QString::number(i);
        QCOMPARE(orvo::nameLines(names.mid(0, 10)).count('\n'), 9);
        QVERIFY(orvo::nameLines(names).endsWith("9\nи ещё 2"));
        // The place of an element on a line of its own: a box wraps it.
        const QString place =
            "элемент меню «Однолинейная схема 10 кВ» (Линейные управления / Энергоснабжение и "
            "связь / Диспетчер энергослужбы)";
        QCOMPARE(orvo::nameLines({place}), place);
        const QString elided = orvo::nameLines({"начало" + QString(500, 'x') + "конец"});
        QCOMPARE(elided.size(), 300);
        QVERIFY(elided.startsWith("начало") && elided.endsWith("конец"));
    }

    void thePassportHasTheWidthThatItsWindowHas() {
        QStandardItemModel model(3, 6);
        QTreeView view;
        view.setModel(&model);
        orvo::arrangePassport(&view);
        for (const int width : {700, 320, 500}) {
            view.resize(width, 300);
            view.show();
            QTRY_COMPARE(view.viewport()->width(), width - 2 * view.frameWidth());
            QTRY_COMPARE(view.header()->length(), view.viewport()->width());
            QTRY_VERIFY(!view.horizontalScrollBar()->isVisible());
        }
    }

    void starOpensAllFoldersBelowTheCurrentRow_data() {
        QTest::addColumn<int>("column");
        QTest::newRow("first column") << 0;
        QTest::newRow("second column") << 1;
    }
    void starOpensAllFoldersBelowTheCurrentRow() {
        QFETCH(int, column);
        Tree tree;
        tree.view.setCurrentIndex(tree.row("a").siblingAtColumn(column));
        QSignalSpy expanded(&tree.view, &QTreeView::expanded);
        QTest::keyClick(&tree.view, Qt::Key_Asterisk);
        QVERIFY(tree.open("a"));
        QVERIFY(tree.open("b"));
        QVERIFY(!tree.open("c"));
        QCOMPARE(expanded.size(), 2);
        QVERIFY(tree.view.indexBelow(tree.row("b")) == tree.row("leaf of b"));
        QCOMPARE(tree.view.currentIndex().siblingAtColumn(0), tree.row("a"));
    }

    // Each would be a persistent index, which every row that comes or goes has to pass.
    void starKeepsNothingInMindOfRowsWithoutRowsBelow() {
        Tree tree;
        tree.view.setCurrentIndex(tree.row("a"));
        QTest::keyClick(&tree.view, Qt::Key_Asterisk);
        QVERIFY(!tree.open("leaf of a"));
        QVERIFY(!tree.open("leaf of b"));
    }

    void starWithoutACurrentRowOpensNothing() {
        Tree tree;
        tree.view.setCurrentIndex({});
        QTest::keyClick(&tree.view, Qt::Key_Asterisk);
        QVERIFY(!tree.open("a"));
    }

    void otherKeysStayTheViews() {
        Tree tree;
        tree.view.setCurrentIndex(tree.row("a"));
        QTest::keyClick(&tree.view, Qt::Key_Plus);
        QVERIFY(tree.open("a"));
        QVERIFY(!tree.open("b"));
        QTest::keyClick(&tree.view, Qt::Key_Down);
        QCOMPARE(tree.view.currentIndex(), tree.row("b"));
    }

    void aRowWrittenAgainTellsOfWhatIsAnotherValueOnly() {
        Tree tree;
        QSignalSpy changed(&tree.model, &QAbstractItemModel::dataChanged);
        orvo::setRow(tree.model, tree.row("a"), {QString("a"), QString("other")});
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed[0][0].toModelIndex(), tree.row("a").siblingAtColumn(1));
        // What only compares equal is another value.
        const QModelIndex second = tree.row("a").siblingAtColumn(1);
        for (const QVariant& value : {QVariant(QString("1")), QVariant(1)}) {
            orvo::setRow(tree.model, tree.row("a"), {QVariant(), value});
            QCOMPARE(second.data().userType(), value.userType());
            QCOMPARE(second.data(), value);
        }
    }
};

QTEST_MAIN(TestWindowParts)

#include "tst_window_parts.moc"
