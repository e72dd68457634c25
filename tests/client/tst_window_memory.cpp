// What the window remembers of how its user left it.
#include "apps/client/WindowMemory.h"

#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QHeaderView>
#include <QMainWindow>
#include <QSettings>
#include <QSplitter>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTreeView>
#include <QtTest>

using namespace orvo::app;

namespace {

constexpr int keyRole = Qt::AccessibleDescriptionRole;

/// A module with one tree: a, with b (with c) and d below it; e beside it.
struct Editor {
    QWidget module;
    QSplitter splitter{&module};
    QTreeView* tree = new QTreeView(&splitter);
    QTreeView* passport = new QTreeView(&splitter);
    QStandardItemModel model;

    Editor() {
        splitter.setObjectName("splitter");
        tree->setObjectName("tvDesck");
        passport->setObjectName("tvProp");
        passport->setEditTriggers(QAbstractItemView::CurrentChanged);
        QStandardItem* a = add(model.invisibleRootItem(), "a");
        add(add(a, "b"), "c");
        add(a, "d");
        add(model.invisibleRootItem(), "e");
        tree->setModel(&model);
        passport->setModel(&model);
        splitter.resize(900, 300);
        module.resize(900, 300);
        module.show();
    }
    static QStandardItem* add(QStandardItem* parent, const char* key) {
        auto* item = new QStandardItem(QString("row ") + key);
        item->setData(QString(key), keyRole);
        parent->appendRow({item, new QStandardItem("value"), new QStandardItem("last")});
        return item;
    }
    QModelIndex row(const char* key) const {
        return model
            .match(model.index(0, 0), keyRole, QString(key), 1,
                   Qt::MatchExactly | Qt::MatchRecursive)
            .value(0);
    }
    QString current() const { return tree->currentIndex().data(keyRole).toString(); }
};

/// A window of the module, with a tree.
struct Popup {
    QWidget window;
    QTreeView* tree = new QTreeView(&window);

    explicit Popup(Editor& editor) : window(&editor.module, Qt::Window) {
        tree->setObjectName("tvObj");
        tree->setModel(&editor.model);
        window.show();
    }
};

struct Pane {
    QDockWidget* dock;
    QTreeView* tree = new QTreeView;

    Pane(QMainWindow& window, const char* name, QAbstractItemModel& model)
        : dock(new QDockWidget(&window)) {
        dock->setObjectName(name);
        tree->setObjectName("rows");
        tree->setModel(&model);
        dock->setWidget(tree);
        window.addDockWidget(Qt::BottomDockWidgetArea, dock);
    }
};

QString settingsFile() {
    return clientSettings().fileName();
}

} // namespace

class TestWindowMemory : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_dir.path());
    }
    void init() { QFile::remove(settingsFile()); }

    void aModuleComesBackAsItWasLeft() {
        const WindowMemory memory("store", "ivanov");
        QList<int> sizes;
        {
            Editor left;
            left.tree->expand(left.row("a"));
            left.tree->expand(left.row("b"));
            left.tree->setCurrentIndex(left.row("c"));
            left.tree->header()->resizeSection(0, 217);
            left.splitter.setSizes({700, 200});
            sizes = left.splitter.sizes();
            memory.saveModule("Menu", left.module);
        }
        Editor found;
        QVERIFY(found.splitter.sizes() != sizes);
        memory.restoreModule("Menu", found.module);
        QVERIFY(found.tree->isExpanded(found.row("a")));
        QVERIFY(found.tree->isExpanded(found.row("b")));
        QCOMPARE(found.current(), QString("c"));
        QCOMPARE(found.tree->columnWidth(0), 217);
        QCOMPARE(found.splitter.sizes(), sizes);
        QVERIFY(!found.passport->currentIndex().isValid()); // it follows what is current elsewhere
        QVERIFY(!found.passport->isExpanded(found.row("a")));
    }

    void ofARowThatIsGoneTheNearestAboveBecomesCurrent() {
        const WindowMemory memory("store", "ivanov");
        {
            Editor left;
            left.tree->expand(left.row("a"));
            left.tree->expand(left.row("b"));
            left.tree->setCurrentIndex(left.row("c"));
            memory.saveModule("Menu", left.module);
        }
        Editor found;
        found.model.removeRow(0, found.row("b"));
        memory.restoreModule("Menu", found.module);
        QCOMPARE(found.current(), QString("b"));
        Editor other;
        other.model.removeRow(0);
        other.tree->setCurrentIndex(other.row("e"));
        memory.restoreModule("Menu", other.module);
        QCOMPARE(other.current(), QString("e")); // nothing of the way to it is left
    }

    void eachStoreAndEachLoginHasItsOwn() {
        Editor editor;
        editor.tree->setCurrentIndex(editor.row("e"));
        WindowMemory("store", "ivanov").saveModule("Menu", editor.module);
        for (const auto& [store, login, known] :
             {std::tuple("store", "ivanov", true), std::tuple("other", "ivanov", false),
              std::tuple("store", "petrov", false), std::tuple("storei", "vanov", false)}) {
            Editor found;
            WindowMemory(store, login).restoreModule("Menu", found.module);
            QCOMPARE(found.current() == "e", known);
        }
    }

    void theWindowComesBackInItsPlace() {
        const WindowMemory memory("store", "ivanov");
        QMainWindow left;
        left.setGeometry(40, 50, 700, 500);
        left.show();
        memory.saveWindow(left, 1);
        QMainWindow found;
        QCOMPARE(memory.restoreWindow(found), 1);
        found.show();
        QCOMPARE(found.size(), QSize(700, 500));
    }

    void whatWasNeverShownIsFittedWhenItIs() {
        const WindowMemory memory("store", "ivanov");
        const auto start = [&](bool isShown, int* width) {
            Editor editor;
            editor.module.hide(); // the tab of another is in front
            editor.tree->header()->resizeSection(0, 900);
            memory.restoreModule("Menu", editor.module);
            if (isShown) {
                editor.module.show();
                QTRY_VERIFY(editor.tree->columnWidth(0) < 600);
            }
            *width = editor.tree->columnWidth(0);
            memory.saveModule("Menu", editor.module);
        };
        int before = 0, fitted = 0;
        start(false, &before);
        QCOMPARE(before, 900);
        start(true, &fitted);
        // From then on the widths are the user's.
        Editor next;
        memory.restoreModule("Menu", next.module);
        QCOMPARE(next.tree->columnWidth(0), fitted);
    }

    void thePopUpOfAModuleHasItsColumnsWhenItIsFirstShown() {
        const WindowMemory memory("store", "ivanov");
        {
            Editor left;
            Popup popup(left);
            popup.tree->header()->resizeSection(0, 333);
            popup.tree->header()->resizeSection(1, 222);
            memory.saveModule("Menu", left.module);
            // A column that is hidden at the end keeps the width that it had.
            popup.tree->setColumnHidden(1, true);
            memory.saveModule("Menu", left.module);
        }
        Editor found;
        memory.restoreModule("Menu", found.module);
        Popup popup(found);
        QCOMPARE(popup.tree->columnWidth(0), 333);
        QCOMPARE(popup.tree->columnWidth(1), 222);
        // Later shows change nothing of what the user has done since.
        popup.tree->header()->resizeSection(0, 300);
        popup.window.hide();
        popup.window.show();
        QCOMPARE(popup.tree->columnWidth(0), 300);
    }

    void aListOfOneColumnLeavesTheWidthsOfTheOthers() {
        const WindowMemory memory("store", "ivanov");
        {
            Editor left;
            memory.restoreModule("Menu", left.module);
            Popup popup(left);
            popup.tree->resize(760, 200);
            popup.tree->header()->resizeSection(0, 333);
            popup.tree->header()->resizeSection(1, 222);
            popup.window.hide();
            for (const int column : {1, 2})
                popup.tree->setColumnHidden(column, true);
            popup.window.show();
            QTRY_VERIFY(popup.tree->columnWidth(0) > 700); // all of the room
            popup.window.hide();
            memory.saveModule("Menu", left.module);
        }
        Editor found;
        memory.restoreModule("Menu", found.module);
        Popup popup(found);
        QCOMPARE(popup.tree->columnWidth(0), 333);
        QCOMPARE(popup.tree->columnWidth(1), 222);
    }

    void aPaneHasItsColumnsWheneverItIsMade() {
        const WindowMemory memory("store", "ivanov");
        Editor rows;
        {
            QMainWindow left;
            Pane log(left, "logDock", rows.model), history(left, "historyDock", rows.model);
            left.show();
            log.tree->header()->resizeSection(0, 111);
            history.tree->header()->resizeSection(0, 222);
            memory.saveWindow(left, 0);
        }
        QMainWindow found;
        Pane log(found, "logDock", rows.model);
        memory.restoreWindow(found);
        QCOMPARE(log.tree->columnWidth(0), 111);
        Pane history(found, "historyDock", rows.model);
        memory.restorePane(*history.dock);
        QCOMPARE(history.tree->columnWidth(0), 222);
    }

    void aDamagedFileMeansAFirstDay_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("binary") << QByteArray(1000, '\xff') + QByteArray(1000, '\0');
        QTest::newRow("no ini") << QByteArray("[[[[\n====\n@Invalid(\n");
        const QByteArray good = [] {
            QFile::remove(settingsFile());
            Editor editor;
            QMainWindow window;
            editor.tree->expand(editor.row("a"));
            WindowMemory("store", "ivanov").saveModule("Menu", editor.module);
            WindowMemory("store", "ivanov").saveWindow(window, 0);
            QFile file(settingsFile());
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        }();
        QVERIFY(good.size() > 200);
        for (int i = 1; i < 16; ++i)
            QTest::addRow("cut at %d/16", i) << good.left(good.size() * i / 16);
        for (int i = 0; i < 16; ++i) {
            QByteArray bytes = good;
            for (int at = i; at < bytes.size(); at += 16)
                bytes[at] = static_cast<char>(bytes[at] ^ (1 << (i % 8)));
            QTest::addRow("flipped %d", i) << bytes;
        }
        QByteArray wide = good;
        QTest::newRow("columns of a million pixels")
            << wide.replace("columns=", "columns=1000000, 999999999999, ");
    }
    void aDamagedFileMeansAFirstDay() {
        QFETCH(QByteArray, bytes);
        QFile file(settingsFile());
        QVERIFY(QDir().mkpath(QFileInfo(file).path()));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
        file.close();
        const WindowMemory memory("store", "ivanov");
        QMainWindow window;
        memory.restoreWindow(window);
        window.show();
        Editor editor;
        memory.restoreModule("Menu", editor.module);
        QVERIFY(editor.tree->columnWidth(0) <= 4000);
        QCOMPARE(editor.model.rowCount(), 2);
        editor.tree->setCurrentIndex(editor.row("d"));
        memory.saveModule("Menu", editor.module); // and it is mended by the next end
        Editor found;
        memory.restoreModule("Menu", found.module);
        QCOMPARE(found.current(), QString("d"));
    }

private:
    QTemporaryDir m_dir;
};

QTEST_MAIN(TestWindowMemory)
#include "tst_window_memory.moc"
