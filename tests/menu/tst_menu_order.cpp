// The place of an element among its siblings: the move buttons, drops, the last order of a folder.
#include "models/Passport.h"
#include "tests/menu/OperationsProbe.h"
#include "tests/models/TreeText.h"

#include "frame/Records.h"

#include <QMimeData>

#include <limits>

using namespace orvo::test;
using orvo::menu::MenuColumn;

namespace {

/// The folders "abcd" and "pqr" with those children, the empty folder "pusto", all on the desktop
/// "stol".
void fillOrder(TestStore& store) {
    addDesck(store, "f", "", "Цех", true);
    addDesck(store, "stol", "f", "Стол", false);
    addResource(store, "r", 1, "Trend");
    addElement(store, "stol", "abcd", "", "abcd", 1000);
    addElement(store, "stol", "pqr", "", "pqr", 2000);
    addElement(store, "stol", "pusto", "", "pusto", 3000);
    addElement(store, "stol", "a", "abcd", "a", 1000, "r");
    addElement(store, "stol", "b", "abcd", "b", 2000, "r");
    addElement(store, "stol", "c", "abcd", "c", 3000, "r");
    addElement(store, "stol", "d", "abcd", "d", 4000, "r");
    addElement(store, "stol", "p", "pqr", "p", 0, "r");
    addElement(store, "stol", "q", "pqr", "q", 1000, "r");
    addElement(store, "stol", "r", "pqr", "r", 2000, "r");
}

class Order {
public:
    Order() : host((fillOrder(store), store)), editor(host) { editor.openDesck("stol"); }

    /// The captions of the rows below an element.
    QString below(const char* key) const {
        QString names;
        const QModelIndex parent = editor.module->element(key);
        for (int row = 0; row < editor.module->m_menuModel->rowCount(parent); ++row)
            names += editor.module->m_menuModel->index(row, 0, parent).data().toString() + ' ';
        return names.trimmed();
    }
    void drop(const char* destination, QStringList keys, int option) {
        editor->on_menu_dragdrop(editor->element(destination), std::move(keys), option);
    }
    QString written() { return host.writes().take(); }
    void deliver() { host.deliver(*editor.module); }

    TestStore store;
    TestHost host;
    OperationsEditor editor;
};

} // namespace

class TestMenuOrder : public QObject {
    Q_OBJECT
private slots:
    // Move buttons

    void upSwapsWithTheRowBefore() {
        Order order;
        order.editor.makeCurrent("b");
        order.editor.action("actMoveUp")->trigger();
        QCOMPARE(order.written(), QString("Menu\n  ~b order_=1000\n  ~a order_=2000\n"));
        QCOMPARE(order.editor->m_focusKey, QString("b"));
        QCOMPARE(order.below("abcd"), QString("a b c d"));
        order.deliver();
        QCOMPARE(order.below("abcd"), QString("b a c d"));
    }

    void downSwapsWithTheRowAfter() {
        Order order;
        order.editor.makeCurrent("b");
        order.editor.action("actMoveDown")->trigger();
        QCOMPARE(order.written(), QString("Menu\n  ~b order_=3000\n  ~c order_=2000\n"));
        QCOMPARE(order.editor->m_focusKey, QString("b"));
        order.deliver();
        QCOMPARE(order.below("abcd"), QString("a c b d"));
    }

    void theMovedElementStaysCurrent() {
        Order order;
        order.editor.makeCurrent("c");
        order.editor->on_actMoveUp_triggered();
        order.deliver();
        QCOMPARE(order.editor->m_currentMenuKey, QString("c"));
        QCOMPARE(order.editor.view("tvMenu")->currentIndex(), order.editor->element("c"));
        QVERIFY(order.editor->m_focusKey.isNull());
        order.editor->on_actMoveUp_triggered();
        order.deliver();
        QCOMPARE(order.below("abcd"), QString("c a b d"));
    }

    void aMoveAmongEqualOrdersMakesThemDiffer() {
        Order order;
        order.store.update("Menu", {{"KeyLink", QString("b")}, {"order_", 1000}});
        order.deliver();
        order.editor.makeCurrent("b");
        order.editor->on_actMoveUp_triggered();
        QCOMPARE(order.written(), QString("Menu\n  ~a order_=2000\n"));
        order.deliver();
        QCOMPARE(order.below("abcd"), QString("b a c d"));
    }

    void aMissingNeighbourCountsAsZero() {
        Order order;
        order.editor.makeCurrent("b");
        order.editor->m_currentMenuKey = "a";
        order.editor->on_actMoveUp_triggered();
        QCOMPARE(order.written(), QString("Menu\n  ~a order_=0\n  ~ order_=1000\n"));
        QCOMPARE(order.editor->m_focusKey, QString("a"));
        // A record without a key is nobody's: the call as a whole goes through.
        QCOMPARE(order.host.failures, QStringList());
        order.deliver();
        QCOMPARE(order.editor->element("a").siblingAtColumn(MenuColumn::Order).data(), QVariant(0));

        order.editor->m_currentMenuKey = "d";
        order.editor->on_actMoveDown_triggered();
        QCOMPARE(order.written(), QString("Menu\n  ~d order_=0\n  ~ order_=4000\n"));
        QCOMPARE(order.host.failures, QStringList());

        order.editor->m_currentMenuKey = "MenuRootNode";
        order.editor->on_actMoveDown_triggered();
        QCOMPARE(order.written(), QString("Menu\n  ~MenuRootNode order_=0\n  ~ order_=0\n"));
        QCOMPARE(order.host.failures, QStringList());
    }

    void movingWithoutACurrentElementDoesNothing() {
        Order order;
        order.editor->m_currentMenuKey = "nosuch";
        order.editor->on_actMoveUp_triggered();
        order.editor->on_actMoveDown_triggered();
        QCOMPARE(order.written(), QString());
        QVERIFY(order.editor->m_focusKey.isNull());
    }

    void movingReadsTheTreeNotTheTable() {
        Order order;
        order.editor.makeCurrent("b");
        MDRData* record =
            order.editor->m_tabMenu.RecEdit(orvo::seekKey(order.editor->m_tabMenu, "a"));
        order.editor->m_tabMenu.SetValF(record, "order_", orvo::integerVar(77));
        order.editor->m_tabMenu.RecPost(record);
        order.editor->on_actMoveUp_triggered();
        QCOMPARE(order.written(), QString("Menu\n  ~b order_=1000\n  ~a order_=2000\n"));
    }

    // Drops

    void dropsAmongSiblings_data() {
        QTest::addColumn<QString>("destination");
        QTest::addColumn<QString>("key");
        QTest::addColumn<int>("option");
        QTest::addColumn<QString>("records");
        QTest::addColumn<QString>("result");
        const auto row = [](const char* name, const char* destination, const char* key, int option,
                            const char* records, const char* result) {
            dataRow(name, destination, key, option, records, result);
        };
        row("d before row 1", "abcd", "d", 1, "~b order_=3000 ~c order_=4000 ~d order_=2000",
            "a d b c");
        row("a before row 3", "abcd", "a", 3, "~c order_=2000 ~b order_=1000 ~a order_=3000",
            "b c a d");
        row("d at the top lands second", "abcd", "d", 0,
            "~b order_=3000 ~c order_=4000 ~d order_=2000", "a d b c");
        row("c at the top lands second", "abcd", "c", 0, "~b order_=3000 ~c order_=2000",
            "a c b d");
        row("a at the end", "abcd", "a", 4,
            "~d order_=3000 ~c order_=2000 ~b order_=1000 ~a order_=4000", "b c d a");
        row("b before row 3", "abcd", "b", 3, "~c order_=2000 ~b order_=3000", "a c b d");
        row("d before row 2", "abcd", "d", 2, "~c order_=4000 ~d order_=3000", "a b d c");
        row("d onto a", "a", "d", -1, "~b order_=3000 ~c order_=4000 ~d order_=2000", "a d b c");
        row("d onto b", "b", "d", -1, "~c order_=4000 ~d order_=3000", "a b d c");
        row("a onto b", "b", "a", -1, "~b order_=1000 ~a order_=2000", "b a c d");
        row("a onto d", "d", "a", -1, "~d order_=3000 ~c order_=2000 ~b order_=1000 ~a order_=4000",
            "b c d a");
    }

    void dropsAmongSiblings() {
        QFETCH(QString, destination);
        QFETCH(QString, key);
        QFETCH(int, option);
        QFETCH(QString, records);
        QFETCH(QString, result);
        Order order;
        order.drop(qPrintable(destination), {key}, option);
        QCOMPARE(order.host.writes().calls.size(), 1);
        QCOMPARE(order.host.writes().calls[0].table, QString("Menu"));
        QCOMPARE(order.host.writes().calls[0].records.join(' '), records);
        QCOMPARE(order.editor->m_focusKey, key);
        QCOMPARE(order.below("abcd"), QString("a b c d"));
        order.deliver();
        QCOMPARE(order.below("abcd"), result);
        QCOMPARE(order.editor->m_currentMenuKey, key);
        QVERIFY(order.editor->m_focusKey.isNull());
    }

    void aDropBesideItselfWritesNothing_data() {
        QTest::addColumn<QString>("destination");
        QTest::addColumn<QString>("key");
        QTest::addColumn<int>("option");
        dataRow("above itself", "abcd", "c", 2);
        dataRow("below itself", "abcd", "c", 3);
        dataRow("the second at the top", "abcd", "b", 0);
        dataRow("the second above itself", "abcd", "b", 1);
        dataRow("the first at the top", "abcd", "a", 0);
        dataRow("the first below itself", "abcd", "a", 1);
        dataRow("the last at the end", "abcd", "d", 4);
        dataRow("onto itself", "b", "b", -1);
        dataRow("onto the row before", "b", "c", -1);
    }

    void aDropBesideItselfWritesNothing() {
        QFETCH(QString, destination);
        QFETCH(QString, key);
        QFETCH(int, option);
        Order order;
        order.editor->m_focusKey = "kept";
        order.drop(qPrintable(destination), {key}, option);
        QCOMPARE(order.written(), QString());
        QCOMPARE(order.editor->m_focusKey, QString("kept"));
    }

    void dropsUnderAnotherParent_data() {
        QTest::addColumn<QString>("destination");
        QTest::addColumn<int>("option");
        QTest::addColumn<QString>("written");
        QTest::addColumn<QString>("parent");
        QTest::addColumn<QString>("result");
        const auto row = [](const char* name, const char* destination, int option,
                            const char* written, const char* parent, const char* result) {
            dataRow(name, destination, option, written, parent, result);
        };
        row("before row 1", "pqr", 1,
            "Menu\n  ~q order_=2000\n  ~r order_=3000\nMenu\n  ~b parent='pqr' order_=1000\n",
            "pqr", "p b q r");
        row("at the top: after the first", "pqr", 0,
            "Menu\n  ~q order_=2000\n  ~r order_=3000\nMenu\n  ~b parent='pqr' order_=1000\n",
            "pqr", "p b q r");
        row("before row 2", "pqr", 2,
            "Menu\n  ~r order_=3000\nMenu\n  ~b parent='pqr' order_=2000\n", "pqr", "p q b r");
        row("at the end", "pqr", 3, "Menu\n  ~b parent='pqr' order_=3000\n", "pqr", "p q r b");
        row("into an empty folder", "pusto", 0, "Menu\n  ~b parent='pusto' order_=1000\n", "pusto",
            "b");
        row("onto an element", "p", -1,
            "Menu\n  ~q order_=2000\n  ~r order_=3000\nMenu\n  ~b parent='pqr' order_=1000\n",
            "pqr", "p b q r");
        row("onto the last element", "r", -1, "Menu\n  ~b parent='pqr' order_=3000\n", "pqr",
            "p q r b");
        row("between the rows of the top", "MenuRootNode", 1,
            "Menu\n  ~pqr order_=3000\n  ~pusto order_=4000\nMenu\n  ~b parent=NULL order_=2000\n",
            "MenuRootNode", "abcd b pqr pusto");
    }

    void dropsUnderAnotherParent() {
        QFETCH(QString, destination);
        QFETCH(int, option);
        QFETCH(QString, written);
        QFETCH(QString, parent);
        QFETCH(QString, result);
        Order order;
        order.drop(qPrintable(destination), {"b"}, option);
        QCOMPARE(order.written(), written);
        QCOMPARE(order.editor->m_focusKey, QString("b"));
        order.deliver();
        QCOMPARE(order.below(qPrintable(parent)), result);
        QCOMPARE(order.below("abcd"), QString("a c d"));
        QCOMPARE(order.editor->m_currentMenuKey, QString("b"));
        QCOMPARE(order.host.failures, QStringList());
    }

    void dropsOntoFolders_data() {
        QTest::addColumn<QString>("destination");
        QTest::addColumn<QStringList>("keys");
        QTest::addColumn<QString>("records");
        QTest::addColumn<QString>("result");
        dataRow("one", "pqr", QStringList{"b"}, "~b parent='pqr' order_=3000", "p q r b");
        dataRow("several, in the order of the list", "pqr", QStringList{"c", "a", "pusto"},
                "~c parent='pqr' order_=3000 ~a parent='pqr' order_=4000 ~pusto parent='pqr' "
                "order_=5000",
                "p q r c a pusto");
        dataRow("into an empty folder", "pusto", QStringList{"d", "c"},
                "~d parent='pusto' order_=0 ~c parent='pusto' order_=1000", "d c");
        dataRow("the root row", "MenuRootNode", QStringList{"b"}, "~b parent=NULL order_=4000",
                "abcd pqr pusto b");
        dataRow("its own folder", "abcd", QStringList{"b"}, "~b parent='abcd' order_=5000",
                "a c d b");
        dataRow("none", "pqr", QStringList(), "", "p q r");
    }

    void dropsOntoFolders() {
        QFETCH(QString, destination);
        QFETCH(QStringList, keys);
        QFETCH(QString, records);
        QFETCH(QString, result);
        Order order;
        order.drop(qPrintable(destination), keys, -1);
        if (keys.isEmpty()) {
            QCOMPARE(order.written(), QString());
            return;
        }
        QCOMPARE(order.host.writes().calls.size(), 1);
        QCOMPARE(order.host.writes().calls[0].records.join(' '), records);
        QCOMPARE(order.editor->m_focusKey, keys.last());
        order.deliver();
        QCOMPARE(order.below(qPrintable(destination)), result);
        QCOMPARE(order.editor->m_currentMenuKey, keys.last());
        QCOMPARE(order.host.failures, QStringList());
    }

    void theSiblingsMakeRoomFirst() {
        Order order;
        order.drop("pqr", {"b"}, 1);
        QCOMPARE(order.host.writes().calls.size(), 2);
        QCOMPARE(order.host.writes().calls[0].records.size(), 2);
        QCOMPARE(order.host.writes().calls[1].records.size(), 1);
    }

    void aRefusedShiftLetsTheElementMove() {
        Order order;
        order.host.writes().refusedTable = "Menu";
        order.drop("pqr", {"b"}, 1);
        QCOMPARE(order.host.writes().calls.size(), 2);
        QVERIFY(!order.editor.isAsking());
        // It is selected all the same at the next notification.
        order.host.writes().refusedTable.clear();
        order.deliver();
        QCOMPARE(order.editor->m_currentMenuKey, QString("b"));
        QCOMPARE(order.below("abcd"), QString("a b c d"));
    }

    void severalElementsBetweenRowsAreLeft() {
        Order order;
        order.editor->m_focusKey = "kept";
        order.drop("pqr", {"a", "b"}, 1);
        order.drop("pqr", {}, 1);
        order.drop("p", {"a", "b"}, -1);
        QCOMPARE(order.written(), QString());
        QCOMPARE(order.editor->m_focusKey, QString("kept"));
    }

    void anUnknownElementIsLeft() {
        // Dragged from the tree of another client: its row is not here, and its desktop is another.
        Order order;
        order.drop("pqr", {"nosuch"}, 1);
        order.drop("p", {"nosuch"}, -1);
        QCOMPARE(order.written(), QString());
        order.drop("pqr", {"nosuch", "b"}, -1);
        order.deliver();
        QCOMPARE(order.below("pqr"), QString("p q r b"));
        QCOMPARE(order.host.failures, QStringList());
    }

    void aDropNowhereComesToTheTop() {
        Order order;
        order.editor->on_menu_dragdrop(QModelIndex(), {"b"}, -1);
        QCOMPARE(order.written(), QString("Menu\n  ~MenuRootNode order_=1000\n"
                                          "Menu\n  ~b parent=NULL order_=1000\n"));
        QCOMPARE(order.editor->m_focusKey, QString("b"));
        QCOMPARE(order.host.failures, QStringList());
        order.deliver();
        QCOMPARE(order.editor->element("b").parent(), order.editor->element("MenuRootNode"));
    }

    void aFolderDroppedIntoItselfStays() {
        // The view refuses it; a call that comes all the same ends.
        Order order;
        addElement(order.store, "stol", "inner", "abcd", "inner", 9000);
        order.deliver();
        order.drop("abcd", {"abcd"}, -1);
        QCOMPARE(order.written(), QString("Menu\n  ~abcd parent='abcd' order_=10000\n"));
        order.drop("inner", {"abcd"}, 0);
        QCOMPARE(order.written(), QString("Menu\n  ~abcd parent='inner' order_=1000\n"));
        order.deliver();
        QCOMPARE(order.editor->element("abcd").parent(), order.editor->element("MenuRootNode"));
        QCOMPARE(order.below("abcd"), QString("a b c d inner"));
        // What now stands in a circle is deleted once.
        order.editor.makeCurrent("abcd");
        order.editor->on_actDeleteElem_triggered();
        order.editor.answer(order.editor.Yes);
        QCOMPARE(order.host.writes().calls.last().records,
                 QStringList({"-abcd", "-a", "-b", "-c", "-d", "-inner"}));
        order.deliver();
        QCOMPARE(order.below("MenuRootNode"), QString("pqr pusto"));
    }

    void aFolderWithTheTopsKeyInOtherCaseIsNotTheTop() {
        Order order;
        addElement(order.store, "stol", "menurootnode", "", "Папка", 5000);
        order.editor.openDesck("f");
        order.editor.openDesck("stol");
        const QModelIndex folder = findRow(*order.editor->m_menuModel, "Папка");
        QVERIFY(folder.isValid());
        order.editor->on_menu_dragdrop(folder, {"a"}, -1);
        QCOMPARE(order.written(), QString("Menu\n  ~a parent='menurootnode' order_=0\n"));
    }

    void aDropLeavesThePendingEdit() {
        Order order;
        order.editor.makeCurrent("c");
        orvo::editPassportValue(*order.editor->m_propModel, "name", "Иное");
        order.drop("abcd", {"d"}, 1);
        order.editor->on_actMoveUp_triggered();
        QCOMPARE(order.editor->m_editMode, int32_t(MenuProbe::EditElement));
    }

    void aDropIntoAModelReachesTheEditor() {
        Order order;
        MenuTreeModel& model = *order.editor->m_menuModel;
        const std::unique_ptr<QMimeData> drag(model.mimeData({order.editor->element("d")}));
        const QModelIndex folder = order.editor->element("abcd");
        QVERIFY(model.canDropMimeData(drag.get(), Qt::MoveAction, 1, 0, folder));
        QVERIFY(!model.dropMimeData(drag.get(), Qt::MoveAction, 1, 0, folder));
        QCOMPARE(order.host.writes().calls.size(), 1);
        QCOMPARE(order.below("abcd"), QString("a b c d"));
        order.deliver();
        QCOMPARE(order.below("abcd"), QString("a d b c"));
    }

    void theEmptyAreaRefusesDrops() {
        Order order;
        QCOMPARE(order.editor->m_menuModel->flags(QModelIndex()), Qt::NoItemFlags);
    }

    void ordersEndAtTheLastNumber() {
        constexpr int last = std::numeric_limits<int>::max();
        Order order;
        order.store.update("Menu", {{"KeyLink", QString("r")}, {"order_", last}});
        order.store.update("Menu", {{"KeyLink", QString("q")}, {"order_", last - 500}});
        order.deliver();
        const QString end = QString::number(last);
        order.drop("pqr", {"b", "a"}, -1);
        QCOMPARE(order.written(), "Menu\n  ~b parent='pqr' order_=" + end +
                                      "\n  ~a parent='pqr' order_=" + end + '\n');
        order.drop("pqr", {"b"}, 2);
        QCOMPARE(order.written(),
                 "Menu\n  ~r order_=" + end + "\nMenu\n  ~b parent='pqr' order_=" + end + '\n');
    }

    // The last order

    void theLastOrderOfAFolder() {
        Order order;
        QCOMPARE(order.editor->getLastMenuOrder("abcd"), 4000);
        QCOMPARE(order.editor->getLastMenuOrder("pqr"), 2000);
        QCOMPARE(order.editor->getLastMenuOrder("pusto"), 0);
        QCOMPARE(order.editor->getLastMenuOrder("nosuch"), 0);
        QCOMPARE(order.editor->getLastMenuOrder("a"), 0);
        // Before the first folder of the table and behind the last one.
        QCOMPARE(order.editor->getLastMenuOrder("!"), 0);
        QCOMPARE(order.editor->getLastMenuOrder("яяя"), 0);
    }

    void theLastOrderIsTheHighest() {
        Order order;
        addElement(order.store, "stol", "pervyy", "abcd", "Первый", -5000, "r");
        order.deliver();
        QCOMPARE(order.editor->getLastMenuOrder("abcd"), 4000);
        addElement(order.store, "stol", "odin", "pusto", "Один", -5000, "r");
        order.deliver();
        QCOMPARE(order.editor->getLastMenuOrder("pusto"), -5000);
        order.store.sql("UPDATE \"Menu\" SET \"order_\" = NULL WHERE \"KeyLink\" = 'odin'");
        order.editor.openDesck("stol");
        order.deliver();
        QCOMPARE(order.editor->getLastMenuOrder("pusto"), 0);
    }

    void theLastOrderOfTheTop() {
        Order order;
        QCOMPARE(order.editor->getLastMenuOrder(QString()), 3000);
        TestStore empty;
        addDesck(empty, "f", "", "Цех", true);
        addDesck(empty, "stol", "f", "Стол", false);
        TestHost host(empty);
        OperationsEditor editor(host);
        QCOMPARE(editor->getLastMenuOrder(QString()), 0);
        editor.openDesck("stol");
        QCOMPARE(editor->getLastMenuOrder(QString()), 0);
        QCOMPARE(editor->getLastMenuOrder("f"), 0);
    }

    void theLastOrderAtTheEndOfNumbers() {
        constexpr int last = std::numeric_limits<int>::max();
        Order order;
        order.store.update("Menu", {{"KeyLink", QString("r")}, {"order_", last}});
        order.store.update("Menu", {{"KeyLink", QString("q")}, {"order_", last}});
        order.deliver();
        QCOMPARE(order.editor->getLastMenuOrder("pqr"), last);
        QCOMPARE(order.editor->getLastMenuOrder("abcd"), 4000);
    }

    void theLastOrderIgnoresTheCaseOfKeys() {
        Order order;
        QCOMPARE(order.editor->getLastMenuOrder("ABCD"), 4000);
    }
};

QTEST_MAIN(TestMenuOrder)
#include "tst_menu_order.moc"
