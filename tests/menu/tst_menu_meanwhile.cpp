// What other hands, and the echoes of the editor's own writes, do while an edit, a question or the
// picker is open: nothing that was typed is lost, and nothing is written where nobody meant it.
#include "tests/menu/LiveProbe.h"
#include "tests/menu/Outage.h"

#include <QClipboard>

using namespace orvo::test;
using orvo::menu::MenuColumn;

namespace {

struct Meanwhile : Live {
    using Live::Live;

    QString written() { return host.writes().take(); }
    /// Until nothing comes back any more.
    void settle() {
        for (int i = 0; i < 4; ++i)
            deliver();
    }
    /// Of the record as this editor holds it.
    QString recordText(const char* element, const char* field) {
        return orvo::textOf(orvo::seekKey(editor->m_tabMenu, QString::fromUtf8(element)), field);
    }
    int recordOrder(const char* element) {
        return orvo::integerOf(orvo::seekKey(editor->m_tabMenu, QString::fromUtf8(element)),
                               "order_");
    }
    void edit(const char* element) {
        makeCurrent(element);
        editor->on_editor_valueChanged("name", "Иное");
        if (mode() != MenuProbe::EditElement)
            qFatal("no edit");
    }
    void select(const char* element) {
        menuView()->selectionModel()->clear();
        menuView()->selectionModel()->setCurrentIndex(
            editor->element(element), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    void sayYes() { answerBox(*editor.module, YesRole); }
    void chooseFirst() {
        CPopObjectList* list = editor->m_popList;
        list->tvObj()->setCurrentIndex(list->treeModel->index(0, 0));
        QTest::mouseClick(list->findChild<QPushButton*>("btnOK"), Qt::LeftButton);
    }
};

void addModule(TestStore& store) {
    store.insert("MenuResourceFolder",
                 {{"KeyLink", QString("mod")}, {"type_", 1}, {"caption", QString("модули")}});
    store.insert("MenuResource", {{"KeyLink", QString("rmod")},
                                  {"type_", 1},
                                  {"name_", QString("Mod")},
                                  {"caption", QString("Мод")},
                                  {"MenuResourceFolderKey", QString("mod")}});
}

} // namespace

class TestMenuMeanwhile : public QObject {
    Q_OBJECT
private slots:
    void init() { QGuiApplication::clipboard()->clear(); }

    // Edits of elements
    void anEditBelowAFolderThatMovesIsSavedOnItsOwnRow_data() { movesOfAFolder(); }
    // Edits of elements

    void anEditBelowAFolderThatMovesIsSavedOnItsOwnRow() {
        QFETCH(bool, toOtherParent);
        Meanwhile live;
        live.edit("form");
        moveFolder(live, toOtherParent);
        live.makeCurrent("shema");
        const QString written = live.written();
        QCOMPARE(written.count("\n  "), 1);
        QVERIFY2(written.contains("~form parent='glubzhe' FolderKey='armop' caption='Иное'"),
                 qPrintable(written));
        QCOMPARE(live.mode(), int(MenuProbe::NoEdit));
        live.settle();
        QCOMPARE(live.recordText("form", "caption"), QString("Иное"));
        QCOMPARE(live.cell("form", MenuColumn::Caption).toString(), QString("Иное"));
    }

    void aNewFolderGoesAlongWithAFolderThatMoves_data() { movesOfAFolder(); }
    void aNewFolderGoesAlongWithAFolderThatMoves() {
        QFETCH(bool, toOtherParent);
        Meanwhile live;
        live.makeCurrent("glubzhe");
        live->on_actNewElemFolder_triggered();
        const QByteArray key = live->m_currentMenuKey.toLatin1();
        live->on_editor_valueChanged("name", "Иное");
        moveFolder(live, toOtherParent);
        if (live.mode() == MenuProbe::NewElement)
            live.press(live->m_btnSave);
        QVERIFY(!live.buttonsEnabled());
        const QString written = live.written();
        QVERIFY2(written.contains("+#1 parent='glubzhe' FolderKey='armop' caption='Иное'"),
                 qPrintable(written));
        live.settle();
        QCOMPARE(live.recordText(key, "caption"), QString("Иное"));
        QVERIFY(!live.cell(key, MenuColumn::IsNew).toBool());
        QCOMPARE(live->element(key).parent(), live->element("glubzhe"));
    }

    void aNewFolderBelowAMovedFolderCanBeCancelled_data() { movesOfAFolder(); }
    void aNewFolderBelowAMovedFolderCanBeCancelled() {
        QFETCH(bool, toOtherParent);
        Meanwhile live;
        live.makeCurrent("glubzhe");
        live->on_actNewElemFolder_triggered();
        const QByteArray key = live->m_currentMenuKey.toLatin1();
        moveFolder(live, toOtherParent);
        if (!toOtherParent)
            return; // saved by the move of the current row
        QCOMPARE(live.mode(), int(MenuProbe::NewElement));
        QCOMPARE(live.currentElement(), QString(key));
        live.press(live->m_btnCancel);
        QVERIFY(!live->element(key).isValid());
        QCOMPARE(live.mode(), int(MenuProbe::NoEdit));
        QCOMPARE(live.written(), QString());
    }

    void whatWasTypedOutlivesAForeignChangeOfOtherFields() {
        Meanwhile live;
        live.edit("calc");
        live.store.update("Menu", {{"KeyLink", QString("calc")}, {"params", QString("-x")}});
        live.settle();
        live.makeCurrent("shema");
        live.settle();
        QCOMPARE(live.recordText("calc", "caption"), QString("Иное"));
        QCOMPARE(live.recordText("calc", "params"), QString("-x"));
    }

    void aForeignChangeOfTheSameFieldStands() {
        Meanwhile live;
        live.edit("calc");
        live.store.update("Menu", {{"KeyLink", QString("calc")}, {"caption", QString("Чужое")}});
        live.settle();
        live.makeCurrent("shema");
        live.settle();
        QCOMPARE(live.recordText("calc", "caption"), QString("Чужое"));
        QCOMPARE(live.cell("calc", MenuColumn::Caption).toString(), QString("Чужое"));
        QCOMPARE(live.host.logLines.size(), 1);
        QCOMPARE(live.host.logLines.first().text,
                 QString("элемент «Чужое»: «Наименование» изменено другим, набранное «Иное» не "
                         "сохранено"));
    }

    void anEditedElementThatOthersMoveIsSavedInItsNewPlace() {
        Meanwhile live;
        live.edit("shema");
        live.store.update(
            "Menu",
            {{"KeyLink", QString("shema")}, {"parent", QString("grafiki")}, {"order_", 5000}});
        live.deliver();
        QCOMPARE(live.mode(), int(MenuProbe::EditElement));
        live.press(live->m_btnSave);
        live.settle();
        QCOMPARE(live.recordText("shema", "parent"), QString("grafiki"));
        QCOMPARE(live.recordText("shema", "caption"), QString("Иное"));
        QCOMPARE(live.recordOrder("shema"), 5000);
        QCOMPARE(live->element("shema").parent(), live->element("grafiki"));
    }

    void anEditedElementIsDropped_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("onto");
        QTest::addColumn<int>("option");
        QTest::addColumn<QString>("parent");
        QTest::addColumn<QString>("rows");
        dataRow("onto a folder", "shema", "grafiki", -1, "grafiki", "trend calc glubzhe shema");
        dataRow("between others", "shema", "grafiki", 1, "grafiki", "trend shema calc glubzhe");
        dataRow("among its siblings", "glubzhe", "grafiki", 1, "grafiki", "trend glubzhe calc");
        dataRow("to the top", "calc", "MenuRootNode", -1, "", "shema grafiki propal calc");
    }

    void anEditedElementIsDropped() {
        QFETCH(QString, key);
        QFETCH(QString, onto);
        QFETCH(int, option);
        QFETCH(QString, parent);
        QFETCH(QString, rows);
        const QByteArray name = key.toLatin1();
        Meanwhile live;
        live.edit(name);
        live->on_menu_dragdrop(live->element(qPrintable(onto)), {key}, option);
        QCOMPARE(live.mode(), int(MenuProbe::EditElement));
        live.settle();
        live.makeCurrent("form"); // an edit still open is saved now
        live.settle();
        QCOMPARE(live.mode(), int(MenuProbe::NoEdit));
        QCOMPARE(live.recordText(name, "caption"), QString("Иное"));
        QCOMPARE(live.recordText(name, "parent"), parent);
        QCOMPARE(live.below(live->element(qPrintable(onto))), rows);
        // Loaded anew it stands there too.
        live.openDesck("obshiy");
        live.openDesck("armop");
        QCOMPARE(live.below(live->element(qPrintable(onto))), rows);
    }

    void anEditedElementMovesDown() {
        Meanwhile live;
        live.edit("calc");
        live->on_actMoveDown_triggered();
        live.settle();
        live.makeCurrent("shema");
        live.settle();
        QCOMPARE(live.below(live->element("grafiki")), QString("trend glubzhe calc"));
        QCOMPARE(live.recordText("calc", "caption"), QString("Иное"));
        QCOMPARE(live.recordOrder("calc"), 2000);
    }

    void anEditedElementMakesRoomForADrop() {
        Meanwhile live;
        live.edit("calc");
        live->on_menu_dragdrop(live->element("grafiki"), {"glubzhe"}, 1);
        live.settle();
        live.makeCurrent("shema");
        live.settle();
        QCOMPARE(live.below(live->element("grafiki")), QString("trend glubzhe calc"));
        QCOMPARE(live.recordText("calc", "caption"), QString("Иное"));
    }

    void anEditWhoseFolderIsDeletedWritesNothing() {
        Meanwhile live;
        live.edit("calc");
        live.store.remove("Menu", "grafiki");
        live.deliver();
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.mode(), int(MenuProbe::NoEdit));
        QVERIFY(!live.buttonsEnabled());
    }

    void anEditThatCouldNotBeSavedTwiceIsSavedOnItsOwnRow() {
        Meanwhile live;
        live.edit("calc");
        {
            const StructureOutage outage;
            live.makeCurrent("shema");
            live.makeCurrent("propal");
        }
        QCOMPARE(live.mode(), int(MenuProbe::EditElement));
        live.makeCurrent("trend");
        const QString written = live.written();
        QVERIFY2(written.contains("~calc ") && written.contains("caption='Иное'"),
                 qPrintable(written));
        QCOMPARE(written.count("\n  "), 1);
    }

    void aNameThatCouldNotBeSavedTwiceIsSavedOnItsOwnRow() {
        Meanwhile live;
        live->on_actChangeDescktopOrFolder_triggered();
        live->on_Desck_NameChanged("Бюро");
        {
            const StructureOutage outage;
            live.openDesck("sklad");
            live.openDesck("obshiy");
        }
        live.openDesck("ceh");
        QCOMPARE(live.written(), QString("MenuFolder\n  ~armop caption='Бюро'\n"));
    }

    // Edits of desktops
    // Edits of desktops

    void aDesktopBegunInANewFolderOutlivesTheFoldersEcho() {
        Meanwhile live;
        live.openDesck("mainnode");
        live->on_actAddFoldertvDesck_triggered();
        live->on_actAddDescktop_triggered(); // saves the folder first
        const QByteArray key = live->m_currentDesckKey.toLatin1();
        live.settle();
        const QString written = live.written();
        QCOMPARE(written.count("\n  +"), 2);
        const QModelIndex desktop = live->desck(key);
        QVERIFY(desktop.isValid());
        QVERIFY(!desktop.siblingAtColumn(orvo::menu::DesckColumn::IsNew).data().toBool());
        QCOMPARE(desktop.parent().data().toString(), QString("новая папка1"));
        QCOMPARE(live.mode(), int(MenuProbe::NoEdit));
    }

    void aNameTypedBelowAFolderThatMovesIsSaved() {
        Meanwhile live;
        live.openDesck("armpech");
        live->on_actChangeDescktopOrFolder_triggered();
        live->on_Desck_NameChanged("Бюро");
        live.store.update("MenuFolder",
                          {{"KeyLink", QString("sklad")}, {"caption", QString("Ящик")}});
        live.deliver();
        live.store.update("MenuFolder", {{"KeyLink", QString("ceh")}, {"caption", QString("Ять")}});
        live.deliver();
        QCOMPARE(live.written(), QString("MenuFolder\n  ~armpech caption='Бюро'\n"));
        QCOMPARE(live.mode(), int(MenuProbe::NoEdit));
    }

    void anEditThatLosesItsRowOpensNoEditorElsewhere() {
        Meanwhile live;
        live.openDesck("sklad");
        live->on_actAddDescktop_triggered();
        live.store.remove("MenuFolder", "sklad");
        live.deliver();
        live.openDesck("ceh");
        QCOMPARE(live.mode(), int(MenuProbe::NoEdit));
        QCOMPARE(live.desckView()->editTriggers(), QAbstractItemView::NoEditTriggers);
        QVERIFY(!live.desckView()->indexWidget(live.desckView()->currentIndex()));
        QCOMPARE(live.written(), QString());
    }

    void deletingANewDesktopRowCancelsIt() {
        Meanwhile live;
        live.openDesck("ceh");
        live->on_actAddDescktop_triggered();
        const QByteArray key = live->m_currentDesckKey.toLatin1();
        live->on_actDeleteFromtvDesck_triggered();
        QVERIFY(!live->desck(key).isValid());
        live.openDesck("armop");
        QCOMPARE(live.written(), QString());
        QVERIFY(!live.editor->m_popMessageBox || !boxStands(*live.editor.module));
    }

    // Another desktop than the shown menu's is current
    // Another desktop than the shown menu's is current

    void elementsBelongToTheMenuThatIsShown() {
        Meanwhile live(addModule);
        live.makeCurrent("grafiki");
        live->on_actNewElemFolder_triggered();
        const QByteArray key = live->m_currentMenuKey.toLatin1();
        // The selection goes to a desktop that somebody else makes; the menu with the new folder
        // stays.
        addDesck(live.store, "neu", "ceh", "Бюро", false);
        live.deliver();
        QCOMPARE(live.currentDesck(), QString("neu"));
        live.press(live->m_btnSave);
        live.deliver();
        QVERIFY(!live.cell(key, MenuColumn::IsNew).toBool());
        live.written();
        live.makeCurrent("grafiki");
        live->on_actNewElemModul_triggered();
        live.chooseFirst();
        const QString written = live.written();
        QVERIFY2(written.contains("parent='grafiki'") && written.contains("FolderKey='armop'"),
                 qPrintable(written));
    }

    void aDesktopWhoseMenuIsNotOpenIsDeletedWithItsElements() {
        Meanwhile live(
            [](TestStore& store) { addElement(store, "armpech", "pe", "", "Печной", 0, "rform"); });
        live.makeCurrent("grafiki");
        live->on_actNewElemFolder_triggered();
        live.openDesck("armpech");
        live.press(live->m_btnSave);
        live.deliver();
        live.written();
        live->on_actDeleteFromtvDesck_triggered();
        live.sayYes();
        QCOMPARE(live.written(), QString("Menu\n  -pe\nMenuFolder\n  -armpech\n"));
    }

    // Questions, the picker, the clipboard, the buttons
    // Questions, the picker, the clipboard, the buttons

    void theAnswerAboutADesktopDeletesNoFolder() {
        Meanwhile live;
        live->on_actDeleteFromtvDesck_triggered();
        live.store.update("MenuFolder",
                          {{"KeyLink", QString("pech")}, {"caption", QString("Печь 2")}});
        live.deliver();
        QCOMPARE(live->m_currentDesckKey, QString("pech"));
        live.sayYes();
        QCOMPARE(live.written(), QString());
    }

    void withoutACurrentElementNothingIsDeleted() {
        Meanwhile live;
        live.makeCurrent("form");
        live->on_actDeleteElem_triggered();
        live->m_currentMenuKey.clear();
        live.sayYes();
        QCOMPARE(live.written(), QString());
        live->on_actDeleteElem_triggered();
        QVERIFY(!boxText(*live.editor.module).contains("Меню"));
        live.sayYes();
        QCOMPARE(live.written(), QString());
    }

    void chosenElementsGoToTheFolderOfAnElementThatBecameCurrent() {
        Meanwhile live(addModule);
        live.makeCurrent("grafiki");
        live->on_actNewElemModul_triggered();
        addElement(live.store, "armop", "chuzhoy", "grafiki", "Чужой", 9000, "rtrend");
        live.deliver();
        QCOMPARE(live.currentElement(), QString("chuzhoy"));
        live.chooseFirst();
        QVERIFY(live.written().contains("parent='grafiki'"));
    }

    void aCutIsNotPastedBelowItself_data() {
        QTest::addColumn<QString>("cut");
        QTest::addColumn<QString>("onto");
        dataRow("a folder onto itself", "glubzhe", "glubzhe");
        dataRow("a folder into what lies below it", "grafiki", "glubzhe");
        dataRow("an element onto itself", "calc", "calc");
    }

    void aCutIsNotPastedBelowItself() {
        QFETCH(QString, cut);
        QFETCH(QString, onto);
        Meanwhile live;
        live.select(qPrintable(cut));
        live->on_actCutMenuElement_triggered();
        live.select(qPrintable(onto));
        live->on_actPasteMenuElement_triggered();
        QCOMPARE(live.written(), QString());
        // Elsewhere it is still to be had.
        live.select("MenuRootNode");
        live->on_actPasteMenuElement_triggered();
        QVERIFY(live.written().contains("  -" + cut));
    }

    void theMoveButtonGoesOffWithTheLastNeighbour() {
        Meanwhile live;
        live.makeCurrent("grafiki");
        QVERIFY(live.editor.action("actMoveDown")->isEnabled());
        QVERIFY(live.editor.action("actMoveUp")->isEnabled());
        live.store.remove("Menu", "propal");
        live.deliver();
        QVERIFY(!live.editor.action("actMoveDown")->isEnabled());
        live.store.update("Menu", {{"KeyLink", QString("shema")}, {"parent", QString("grafiki")}});
        live.deliver();
        QVERIFY(!live.editor.action("actMoveUp")->isEnabled());
    }

    void recordsWithTheKeysOfRootRowsLeaveTheRootRows() {
        Meanwhile live;
        addElement(live.store, "armop", "MenuRootNode", "grafiki", "Чужой", 9000);
        live.deliver();
        QCOMPARE(live.cell("MenuRootNode", MenuColumn::Caption).toString(), QString("Меню"));
        live.store.remove("Menu", "MenuRootNode");
        live.deliver();
        QCOMPARE(live.below(live->element("MenuRootNode")), QString("shema grafiki propal"));
        addDesck(live.store, "mainnode", "ceh", "Чужой", true);
        live.deliver();
        QCOMPARE(live->desck("mainnode").data().toString(), QString("Список рабочих столов"));
        live.store.remove("MenuFolder", "mainnode");
        live.deliver();
        QVERIFY(live->desck("armop").isValid());
    }

private:
    static void movesOfAFolder() {
        QTest::addColumn<bool>("toOtherParent");
        dataRow("among its siblings", false);
        dataRow("to another parent", true);
    }
    static void moveFolder(Meanwhile& live, bool toOtherParent) {
        if (toOtherParent)
            live.store.update("Menu", {{"KeyLink", QString("glubzhe")}, {"parent", QString()}});
        else
            live.store.update("Menu", {{"KeyLink", QString("grafiki")}, {"order_", 3000}});
        live.deliver();
    }
};

QTEST_MAIN(TestMenuMeanwhile)
#include "tst_menu_meanwhile.moc"
