// The tree of desktops: how it is filled, and how one row is kept in step with its record.
#include "tests/menu/MenuProbe.h"
#include "tests/models/TreeText.h"

#include "frame/Records.h"

#include <QItemSelectionModel>
#include <QRegularExpression>

using namespace orvo::test;
using orvo::menu::DesckColumn;

namespace {

/// The tree of desktops as text: captions, keys, and those of the columns that are not empty.
QString shown(const MenuEditor& editor, const QList<int>& columns = {}) {
    return treetext::print(*editor.module->m_desckModel, DesckColumn::KeyLink, columns)
        .remove(QRegularExpression(" \\d+=(?=[ \\n])"));
}

} // namespace

class TestMenuDesktops : public QObject {
    Q_OBJECT
private slots:
    /// What is acted on is highlighted.
    void theCurrentDesktopCannotBeDeselected() {
        StartedPlant editor;
        QTreeView* view = editor.view("tvDesck");
        view->expandAll();
        clickRow(view, editor->desck("armop"));
        clickRow(view, editor->desck("armop"), Qt::ControlModifier);
        QCOMPARE(view->selectionModel()->selectedRows(), QModelIndexList{editor->desck("armop")});
        clickRow(view, editor->desck("pech"), Qt::ControlModifier);
        QCOMPARE(view->currentIndex(), editor->desck("pech"));
        QCOMPARE(view->selectionModel()->selectedRows(), QModelIndexList{editor->desck("pech")});
    }

    void anEmptyTableGivesTheRootRowAlone() {
        TestStore store;
        MenuOn editor(store);
        QCOMPARE(shown(editor), QString("Список рабочих столов #mainnode\n"));
        const QModelIndex root = editor->m_desckModel->index(0, 0);
        QVERIFY(editor.view("tvDesck")->isExpanded(root));
        QCOMPARE(editor.view("tvDesck")->currentIndex(), root);
        QCOMPARE(editor.view("tvDesck")->selectionModel()->selectedRows(), QModelIndexList{root});
    }

    void foldersComeBeforeDesktopsInOrderOfCaption() {
        TestStore store;
        addDesck(store, "f2", "", "Участок", true);
        addDesck(store, "f1", "", "Ёлка", true);
        addDesck(store, "f0", "", "еда", true);
        addDesck(store, "d1", "", "Азот", false);
        addDesck(store, "d3", "f1", "Ягода", false);
        addDesck(store, "d2", "f1", "анализ", false);
        addDesck(store, "f11", "f1", "Южный", true);
        addDesck(store, "f10", "f1", "северный", true);
        addDesck(store, "d4", "f11", "Внутри", false);
        MenuOn editor(store);
        QCOMPARE(shown(editor), QString("Список рабочих столов #mainnode\n"
                                        "  еда #f0\n"
                                        "  Ёлка #f1\n"
                                        "    северный #f10\n"
                                        "    Южный #f11\n"
                                        "      Внутри #d4\n"
                                        "    анализ #d2\n"
                                        "    Ягода #d3\n"
                                        "  Участок #f2\n"
                                        "  Азот #d1\n"));
    }

    void columnsAreFilledByLevel() {
        StartedPlant editor;
        const auto row = [&](const char* key) {
            QVariantList values;
            const QModelIndex index = editor->desck(key);
            for (int column = 0; column < DesckColumn::Count; ++column)
                values << index.sibling(index.row(), column).data();
            return values;
        };
        const QVariant none;
        QCOMPARE(row("mainnode"),
                 QVariantList({"Список рабочих столов", "mainnode", none, none, true, false}));
        QCOMPARE(row("ceh"), QVariantList({"Цех 1", "ceh", none, "1000", true, none}));
        QCOMPARE(row("obshiy"), QVariantList({"Общий", "obshiy", none, "2000", false, none}));
        QCOMPARE(row("pech"), QVariantList({"Печь", "pech", "ceh", none, true, false}));
        QCOMPARE(row("armpech"), QVariantList({"АРМ печи", "armpech", "pech", none, false, false}));
    }

    void otherClassesAreShownAtTheTopLevelOnly() {
        TestStore store;
        fillPlant(store);
        addDesck(store, "ranniy", "", "Ранний", false, "0500");
        addDesck(store, "promezh", "", "Промежуточный", true, "1500");
        addDesck(store, "skrytyi", "ceh", "Скрытый", false, "1500");
        addDesck(store, "vnutri", "promezh", "Внутри", false);
        MenuOn editor(store);
        QCOMPARE(shown(editor, {3}), QString("Список рабочих столов #mainnode\n"
                                             "  Ранний #ranniy 3=0500\n"
                                             "  Склад #sklad 3=1000\n"
                                             "  Цех 1 #ceh 3=1000\n"
                                             "    Печь #pech\n"
                                             "      АРМ печи #armpech\n"
                                             "    АРМ оператора #armop\n"
                                             "  Промежуточный #promezh 3=1500\n"
                                             "    Внутри #vnutri\n"
                                             "  Общий #obshiy 3=2000\n"));
    }

    void parentsCompareWithoutRegardToCase() {
        TestStore store;
        addDesck(store, "Ceh", "", "Цех", true);
        addDesck(store, "d1", "CEH", "Первый", false);
        addDesck(store, "d2", "ceh", "Второй", false);
        MenuOn editor(store);
        QCOMPARE(shown(editor), QString("Список рабочих столов #mainnode\n"
                                        "  Цех #Ceh\n"
                                        "    Второй #d2\n"
                                        "    Первый #d1\n"));
    }

    void aDesktopMarkedAsFolderAtTheTopShowsWhatLiesBelow() {
        TestStore store;
        // The flag decides at the top level, the sort class below it.
        addDesck(store, "f", "", "Папка", true, "2000");
        addDesck(store, "x", "f", "Флаг папки", true, "2000");
        addDesck(store, "y", "x", "Ниже", false);
        addDesck(store, "d", "", "Стол", false, "1000");
        addDesck(store, "z", "d", "Под столом", false);
        MenuOn editor(store);
        QCOMPARE(shown(editor, {4}), QString("Список рабочих столов #mainnode 4=true\n"
                                             "  Стол #d 4=false\n"
                                             "  Папка #f 4=true\n"
                                             "    Флаг папки #x 4=false\n"));
    }

    void recordsWithoutTheirParentAreNotShown() {
        TestStore store;
        addDesck(store, "f", "nosuch", "Потерянная", true);
        addDesck(store, "d", "f", "Потерянный", false);
        addDesck(store, "ok", "", "Стол", false);
        MenuOn editor(store);
        QCOMPARE(shown(editor), QString("Список рабочих столов #mainnode\n  Стол #ok\n"));
        QVERIFY(editor.host.logLines.isEmpty());
    }

    void aCircleOfParentsIsNotShownAndDoesNotHang() {
        TestStore store;
        addDesck(store, "a", "", "А", true);
        addDesck(store, "b", "a", "Б", true);
        addDesck(store, "self", "", "Сам", true);
        addDesck(store, "ok", "", "Папка", true);
        store.moveBelow("MenuFolder", "ParentKey", "a", "b");
        store.moveBelow("MenuFolder", "ParentKey", "self", "SELF");
        MenuOn editor(store);
        QCOMPARE(shown(editor), QString("Список рабочих столов #mainnode\n  Папка #ok\n"));
    }

    void aVeryDeepTreeIsLoaded() {
        TestStore store;
        constexpr int depth = 20000;
        store.sql(qPrintable(
            QString(
                "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                "INSERT INTO \"MenuFolder\" (\"KeyLink\", \"ParentKey\", \"caption\", \"order_\", "
                "\"isFolder\") SELECT 'k' || i, CASE i WHEN 0 THEN NULL ELSE 'k' || (i - 1) END, "
                "'n', '1000', TRUE FROM n")
                .arg(depth - 1)));
        TestHost host(store);
        auto window = std::make_unique<MenuProbe>(&host);
        QVERIFY(window->ModuleStart());
        QModelIndex row = window->m_desckModel->index(0, 0);
        int levels = 0;
        for (; window->m_desckModel->rowCount(row) == 1; ++levels)
            row = window->m_desckModel->index(0, 0, row);
        QCOMPARE(levels, depth);
        QCOMPARE(window->m_desckModel->getItemKeyLink(row), QString("k%1").arg(depth - 1));
    }

    void theRootRowIsExpandedCurrentAndSelected() {
        StartedPlant editor;
        const QTreeView* view = editor.view("tvDesck");
        const QModelIndex root = editor->desck("mainnode");
        QVERIFY(view->isExpanded(root));
        QVERIFY(!view->isExpanded(editor->desck("ceh")));
        QCOMPARE(view->currentIndex(), root);
        QCOMPARE(view->selectionModel()->selectedRows(), QModelIndexList{root});
        QCOMPARE(editor->m_currentDesckKey, QString("mainnode"));
        QCOMPARE(editor->m_menuModel->rowCount(), 0);
    }

    void positionsFollowTheTable() {
        TestStore store;
        fillPlant(store);
        addDesck(store, "d2", "ceh", "Архив", false);
        MenuOn editor(store);
        const auto position = [&](const char* key, const char* parent) {
            return editor->getDesckElementPosition(QString::fromUtf8(key),
                                                   QString::fromUtf8(parent));
        };
        QCOMPARE(position("pech", "ceh"), 0);
        QCOMPARE(position("armop", "ceh"), 1);
        QCOMPARE(position("d2", "CEH"), 2);
        QCOMPARE(position("ARMPECH", "pech"), 0);
        QCOMPARE(position("sklad", ""), 0);
        QCOMPARE(position("ceh", ""), 1);
        QCOMPARE(position("obshiy", ""), 2);
        // Each row stands where its position says.
        for (const char* key : {"pech", "armop", "d2"})
            QCOMPARE(editor->desck(key).row(), position(key, "ceh"));
    }

    void aKeyThatIsNoSiblingGetsTheLastPlace() {
        StartedPlant editor;
        QCOMPARE(editor->getDesckElementPosition("nosuch", "ceh"), 1);
        QCOMPARE(editor->getDesckElementPosition("nosuch", ""), 2);
        // Known, but of another folder.
        QCOMPARE(editor->getDesckElementPosition("armpech", "ceh"), 1);
        QCOMPARE(editor->getDesckElementPosition("armpech", ""), 2);
    }

    void withoutSiblingsThereIsNoPosition() {
        TestStore store;
        TestHost empty(store);
        MenuEditor nothing(empty, "Menu");
        QVERIFY(nothing.start());
        QCOMPARE(nothing->getDesckElementPosition("x", ""), -1);
        QCOMPARE(nothing->getDesckElementPosition("x", "y"), -1);
        fillPlant(store);
        MenuOn editor(store);
        QCOMPARE(editor->getDesckElementPosition("x", "sklad"), -1);
        QCOMPARE(editor->getDesckElementPosition("x", "zzz"), -1);
    }

    void positionsAmongEqualCaptionsAreDistinct() {
        TestStore store;
        addDesck(store, "f", "", "Папка", true);
        for (const char* key : {"b", "a", "c"})
            addDesck(store, key, "f", "Стол", false);
        store.insert("MenuFolder", {{"KeyLink", QString("n")},
                                    {"ParentKey", QString("f")},
                                    {"order_", QString("2000")},
                                    {"isFolder", false}});
        MenuOn editor(store);
        // A caption that is NULL sorts first and is counted, though the loader does not show it.
        QCOMPARE(editor->getDesckElementPosition("n", "f"), 0);
        QCOMPARE(editor->getDesckElementPosition("a", "f"), 1);
        QCOMPARE(editor->getDesckElementPosition("b", "f"), 2);
        QCOMPARE(editor->getDesckElementPosition("c", "f"), 3);
        QVERIFY(!editor->desck("n").isValid());
        QCOMPARE(editor->desck("a").row(), 0);
    }

    void updatingANodeWritesAndMovesIt() {
        TestStore store;
        fillPlant(store);
        addDesck(store, "d2", "ceh", "Архив", false);
        MenuOn editor(store);
        const QModelIndex row = editor->desck("d2");
        QCOMPARE(row.row(), 2);
        editor->m_desckModel->setData(row, "не сохранено", Qt::DisplayRole);
        editor->m_desckModel->setData(row.sibling(2, DesckColumn::IsNew), true, Qt::DisplayRole);
        editor->updateNewDesckNode(orvo::seekKey(editor->m_tabFolder, "d2"), 1, row);
        const QModelIndex moved = editor->desck("d2");
        QCOMPARE(moved.row(), 1);
        QVariantList values;
        for (int column = 0; column < DesckColumn::Count; ++column)
            values << moved.sibling(moved.row(), column).data();
        QCOMPARE(values, QVariantList({"Архив", "d2", "ceh", "2000", false, false}));
        QCOMPARE(editor->desck("armop").row(), 2);
        // At an impossible position the values are written and nothing moves.
        editor->updateNewDesckNode(orvo::seekKey(editor->m_tabFolder, "armop"), 17,
                                   editor->desck("armop"));
        QCOMPARE(editor->desck("armop").row(), 2);
    }

    void insertingAnElementPlacesItAndReturnsToTheCurrentRow() {
        StartedPlant editor("armop");
        // Rows that other clients have made, and that this one knows from its table alone.
        for (const char* key : {"pech", "obshiy"}) {
            const QModelIndex row = editor->desck(key);
            editor->m_desckModel->removeRows(row.row(), 1, row.parent());
            QVERIFY(!editor->desck(key).isValid());
            editor.view("tvMenu")->setFocus();
            editor->insertElementToDesckTree(orvo::seekKey(editor->m_tabFolder, key));
            QCOMPARE(editor.view("tvDesck")->currentIndex(), editor->desck("armop"));
        }
        QCOMPARE(shown(editor, {2, 3, 4}), QString("Список рабочих столов #mainnode 4=true\n"
                                                   "  Склад #sklad 3=1000 4=true\n"
                                                   "  Цех 1 #ceh 3=1000 4=true\n"
                                                   "    Печь #pech 2=ceh 3=1000 4=true\n"
                                                   "    АРМ оператора #armop 2=ceh 4=false\n"
                                                   "  Общий #obshiy 3=2000 4=false\n"));
    }

    // The level of the parent's row decides which siblings count, not the text in the record.
    void anElementOfTheRootRowTakesTheLastPlace() {
        TestStore store;
        fillPlant(store);
        addDesck(store, "odd", "MAINNODE", "Азбука", false);
        MenuOn editor(store);
        QVERIFY(!editor->desck("odd").isValid());
        QCOMPARE(editor->getDesckElementPosition("odd", "mainnode"), 0);
        editor->insertElementToDesckTree(orvo::seekKey(editor->m_tabFolder, "odd"));
        QCOMPARE(editor->desck("odd").parent(), editor->desck("mainnode"));
        QCOMPARE(editor->desck("odd").row(), 2);
        QCOMPARE(editor->desck("obshiy").row(), 3);
    }

    void anElementOfAMissingParentIsNotInserted() {
        TestStore store;
        fillPlant(store);
        addDesck(store, "lost", "nosuch", "Потерянный", false);
        MenuOn editor(store);
        const QString before = shown(editor);
        editor->insertElementToDesckTree(orvo::seekKey(editor->m_tabFolder, "lost"));
        QCOMPARE(shown(editor), before);
    }

    void foldersAndDesktopsOfARowAreLoadedApart() {
        StartedPlant editor;
        const auto empty = [&] {
            const QModelIndex ceh = editor->desck("ceh");
            editor->m_desckModel->removeRows(0, editor->m_desckModel->rowCount(ceh), ceh);
        };
        const auto below = [&] {
            const QModelIndex ceh = editor->desck("ceh");
            return treetext::print(*editor->m_desckModel, DesckColumn::KeyLink, {2, 4, 5}, ceh)
                .remove(QRegularExpression(" \\d+=(?=[ \\n])"));
        };
        empty();
        editor->loadDesckFolder(editor->desck("ceh"));
        const QString folders = "Печь #pech 2=ceh 4=true 5=false\n"
                                "  АРМ печи #armpech 2=pech 4=false 5=false\n";
        QCOMPARE(below(), folders);
        editor->loadDesckItems(editor->desck("ceh"));
        const QString desktops = "АРМ оператора #armop 2=ceh 4=false 5=false\n";
        QCOMPARE(below(), folders + desktops);
        empty();
        editor->loadDesckItems(editor->desck("ceh"));
        QCOMPARE(below(), desktops);
        // A desktop has neither.
        const QString before = shown(editor);
        editor->loadDesckFolder(editor->desck("armop"));
        editor->loadDesckItems(editor->desck("armop"));
        QCOMPARE(shown(editor), before);
    }
};

QTEST_MAIN(TestMenuDesktops)
#include "tst_menu_desktops.moc"
