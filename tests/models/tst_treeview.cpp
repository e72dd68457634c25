// The view that follows changes of rows shows what a plain one shows, after each of them.
#include "frame/TreeView.h"
#include "frame/WindowParts.h"
#include "models/MenuTreeModel.h"
#include "tests/models/ModelWatch.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QtTest>

#include <random>

namespace {

QStringList titles() {
    QStringList titles;
    for (int column = 0; column < 17; ++column)
        titles << QString::number(column);
    return titles;
}

/// One model in two views, a plain one and ours, that are opened and closed alike.
struct TwoViews {
    MenuTreeModel model{titles(), QString()};
    ModelWatch watch{&model};
    QTreeView plain;
    orvo::TreeView ours;
    std::mt19937 random{1};
    int made = 0;

    TwoViews() {
        for (QTreeView* view : {&plain, static_cast<QTreeView*>(&ours)}) {
            // With the focus the active one alone would get a current row, and scroll to it.
            view->setFocusPolicy(Qt::NoFocus);
            view->setModel(&model);
            orvo::arrangeTree(view);
            for (int column = 3; column < model.columnCount(); ++column)
                view->hideColumn(column);
            view->resize(400, 300);
            view->show();
        }
    }
    int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }
    QModelIndex anyRow() {
        QModelIndex row;
        for (int depth = below(5); depth > 0 && model.rowCount(row) > 0; --depth)
            row = model.index(below(model.rowCount(row)), 0, row);
        return row;
    }
    void insert(const QModelIndex& parent, int position, int count, bool withRowsBelow = false) {
        auto rows = model.newRows(parent);
        for (int i = 0; i < count; ++i) {
            TabRec* row = rows.add();
            row->setData(0, QString("row %1").arg(made++));
            for (int k = withRowsBelow ? below(4) : 0; k > 0; --k)
                rows.add(row)->setData(0, QString("row %1").arg(made++));
        }
        QVERIFY(model.insertFilledRows(position, std::move(rows), parent));
    }
    void open(const QModelIndex& row, bool isOpen) {
        for (QTreeView* view : {&plain, static_cast<QTreeView*>(&ours)})
            view->setExpanded(row, isOpen);
    }
    void fill(int folders, int rows) {
        insert({}, 0, folders);
        for (int folder = 0; folder < folders; ++folder)
            insert(model.index(folder, 0), 0, rows);
    }
    void openAll() {
        for (int folder = 0; folder < model.rowCount(); ++folder)
            open(model.index(folder, 0), true);
    }

    /// Something that happens to a tree.
    void change() {
        const QModelIndex parent = anyRow();
        const int count = model.rowCount(parent);
        switch (below(9)) {
        case 0:
        case 1:
            insert(parent, below(count + 1), 1 + below(3), true);
            break;
        case 2:
            if (count > 0) {
                const int first = below(count);
                model.removeRows(first, 1 + below(std::min(3, count - first)), parent);
            }
            break;
        case 3:
            if (count > 1)
                model.moveSiblingItem(below(count), below(count), parent);
            break;
        case 4: {
            const QModelIndex to = anyRow();
            if (count > 0)
                model.moveItem(below(count), below(model.rowCount(to) + 1), parent, to);
            break;
        }
        case 5:
            if (parent.isValid())
                model.setData(parent, QString("named %1").arg(made++));
            break;
        case 6:
            open(parent, false);
            break;
        default:
            for (QModelIndex up = parent; up.isValid(); up = up.parent())
                open(up, true);
        }
    }

    /// The shown rows from the first on, where they are and whether they are open.
    static QStringList shown(const QTreeView& view) {
        QStringList rows;
        for (QModelIndex row = view.model()->index(0, 0); row.isValid();
             row = view.indexBelow(row)) {
            const QRect at = view.visualRect(row);
            rows << QString("%1 at %2,%3 %4")
                        .arg(row.data().toString())
                        .arg(at.left())
                        .arg(at.top())
                        .arg(view.isExpanded(row) ? "open" : "");
        }
        return rows;
    }
    void compare() {
        QCOMPARE(shown(ours), shown(plain));
        QCOMPARE(ours.verticalScrollBar()->maximum(), plain.verticalScrollBar()->maximum());
        QCOMPARE(ours.verticalScrollBar()->value(), plain.verticalScrollBar()->value());
        QCoreApplication::processEvents();        // the styles' and the layouts' own
        QVERIFY(picture(ours) == picture(plain)); // branches and their signs too
    }
    static QImage picture(const QTreeView& view) {
        return view.viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    }
};

/// Counts how often the model is asked for a row.
class AskedModel : public MenuTreeModel {
public:
    using MenuTreeModel::MenuTreeModel;
    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override {
        ++asked;
        return MenuTreeModel::index(row, column, parent);
    }
    mutable int asked = 0;
};

} // namespace

class TestTreeView : public QObject {
    Q_OBJECT
private slots:
    void changesShowAsInAPlainView_data() {
        QTest::addColumn<int>("perLayout");
        QTest::newRow("each laid out") << 1;
        QTest::newRow("a few at once") << 4;
        QTest::newRow("bursts") << 40;
    }
    void changesShowAsInAPlainView() {
        QFETCH(int, perLayout);
        TwoViews views;
        views.random.seed(static_cast<unsigned>(perLayout));
        views.fill(4, 4);
        for (int step = 0; step < 600; ++step) {
            views.change();
            if (QTest::currentTestFailed())
                return;
            if (step % perLayout != 0)
                continue;
            if (views.below(10) == 0) {
                const int value = views.below(1 + views.plain.verticalScrollBar()->maximum());
                views.plain.verticalScrollBar()->setValue(value);
                views.ours.verticalScrollBar()->setValue(value);
            }
            views.compare();
            if (QTest::currentTestFailed())
                return;
        }
        QVERIFY(TwoViews::shown(views.ours).size() > 20);
    }

    void aRowAtThePlaceOfARemovedOneIsNotTakenForIt() {
        TwoViews views;
        views.fill(3, 3);
        views.openAll();
        views.compare();
        // The memory of a removed row is soon that of another.
        for (int i = 0; i < 200; ++i) {
            views.model.removeRows(1, 1);
            views.insert({}, 1, 1, true);
            views.open(views.model.index(1, 0), i % 2 == 0);
        }
        views.compare();
    }

    void closingAndOpeningWhileALayoutIsDue() {
        TwoViews views;
        views.fill(3, 30);
        views.openAll();
        views.compare();
        views.insert(views.model.index(0, 0), 3, 1);
        views.open(views.model.index(1, 0), false);
        views.model.removeRows(2, 4, views.model.index(1, 0));
        views.compare();
        views.model.removeRows(0, 1, views.model.index(1, 0));
        views.open(views.model.index(1, 0), true);
        views.compare();
        views.insert(views.model.index(2, 0), 0, 2);
        views.plain.collapseAll();
        views.ours.collapseAll();
        views.compare();
        views.insert(views.model.index(2, 0), 0, 2);
        views.plain.expandAll();
        views.ours.expandAll();
        views.compare();
    }

    void aLayoutInTheMiddleOfARemoval() {
        TwoViews views;
        views.fill(3, 30);
        views.openAll();
        views.compare();
        // As by a slot that shows the row that has become current.
        connect(&views.model, &QAbstractItemModel::rowsAboutToBeRemoved, &views.ours,
                [&views] { views.ours.doItemsLayout(); });
        views.model.removeRows(2, 1, views.model.index(0, 0));
        views.compare();
        views.open(views.model.index(1, 0), false);
        connect(&views.model, &QAbstractItemModel::rowsAboutToBeRemoved, &views.ours,
                [&views] { views.open(views.model.index(1, 0), true); });
        views.model.removeRows(2, 1, views.model.index(1, 0));
        views.compare();
    }

    void anotherModelWhileALayoutIsDue() {
        TwoViews views;
        views.fill(3, 30);
        views.openAll();
        views.compare();
        views.insert(views.model.index(0, 0), 3, 1);
        {
            MenuTreeModel other(titles(), QString());
            views.plain.setModel(&other);
            views.ours.setModel(&other);
            views.compare();
        }
        views.plain.setModel(&views.model);
        views.ours.setModel(&views.model);
        views.compare();
    }

    void aChangeAsksForTheRowsOfItsFolderOnly() {
        if (!orvo::TreeView::isIncremental())
            QSKIP("built without Qt's private headers");
        AskedModel model(titles(), QString());
        orvo::TreeView view;
        view.setModel(&model);
        orvo::arrangeTree(&view);
        view.resize(400, 300);
        const auto addRows = [&](const QModelIndex& parent, int count) {
            auto rows = model.newRows(parent);
            for (int i = 0; i < count; ++i)
                rows.add()->setData(0, QString::number(i));
            QVERIFY(model.insertFilledRows(0, std::move(rows), parent));
        };
        constexpr int folders = 100;
        addRows({}, folders);
        for (int folder = 0; folder < folders; ++folder) {
            addRows(model.index(folder, 0), 100);
            view.expand(model.index(folder, 0));
        }
        view.show();
        view.doItemsLayout();
        for (const int changed : {10, 0, folders - 1}) {
            model.asked = 0;
            addRows(model.index(changed, 0), 1);
            model.removeRows(50, 1, model.index((changed + 1) % folders, 0));
            view.visualRect(model.index(0, 0));
            QVERIFY2(model.asked > 200 && model.asked < 1500,
                     qPrintable(QString::number(model.asked)));
        }
    }
};

QTEST_MAIN(TestTreeView)
#include "tst_treeview.moc"
