// What a move of the current row does in each state of editing, and the selection within one
// parent.
#include "models/Passport.h"
#include "tests/menu/MenuProbe.h"

#include <QItemSelectionModel>

using namespace orvo::test;

namespace {

/// Begins an edit as its action does.
void begin(MenuEditor& editor, const char* slot) {
    if (!QMetaObject::invokeMethod(editor.module.get(), slot))
        qFatal("no slot %s", slot);
}

} // namespace

class TestMenuCurrent : public QObject {
    Q_OBJECT
private slots:
    void theCurrentKeysFollow() {
        PlantEditor editor;
        openMenu(editor);
        QCOMPARE(editor->m_currentDesckKey, QString("armop"));
        editor.view("tvMenu")->setCurrentIndex(editor->element("calc"));
        QCOMPARE(editor->m_currentMenuKey, QString("calc"));
        editor.view("tvDesck")->setCurrentIndex(QModelIndex());
        QVERIFY(editor->m_currentDesckKey.isNull());
        QCOMPARE(editor->m_menuModel->rowCount(), 0);
    }

    void theSkipFlagIsUsedUpOnce() {
        PlantEditor editor;
        openMenu(editor);
        editor->m_skipDesckChange = true;
        editor.view("tvDesck")->setCurrentIndex(editor->desck("ceh"));
        QVERIFY(!editor->m_skipDesckChange);
        QCOMPARE(editor->m_currentDesckKey, QString("armop"));
        QVERIFY(editor->element("calc").isValid());
        editor.view("tvDesck")->setCurrentIndex(editor->desck("pech"));
        QCOMPARE(editor->m_currentDesckKey, QString("pech"));
        QVERIFY(!editor->element("calc").isValid());
    }

    void movingOnInTheDesktopsShowsTheNewMenu() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armpech", "druzhok", "", "Другой", 0, "rform");
        TestHost host(store);
        MenuEditor editor(host, "Menu");
        openMenu(editor);
        editor.view("tvMenu")->setCurrentIndex(editor->element("calc"));
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armpech"));
        QVERIFY(editor->element("druzhok").isValid());
        QVERIFY(!editor->element("calc").isValid());
        QCOMPARE(editor->m_propModel->rowCount(), 0);
    }

    void aNewDesktopRowBecomesTheEditedOne() {
        PlantEditor editor;
        openMenu(editor);
        begin(editor, "on_actAddDescktop_triggered");
        const QModelIndex row = editor.view("tvDesck")->currentIndex();
        QCOMPARE(QModelIndex(editor->m_editDesckIndex), row);
        QVERIFY(!editor.action("actAddDescktop")->isEnabled());
        // The menu that is open stays.
        QVERIFY(editor->element("calc").isValid());
        // The index follows its row, and ends with it.
        const int number = row.row();
        editor->m_desckModel->insertRows(0, 1, editor->desck("ceh"));
        QCOMPARE(editor->m_editDesckIndex.row(), number + 1);
        editor->m_desckModel->removeRows(number + 1, 1, editor->desck("ceh"));
        QVERIFY(!editor->m_editDesckIndex.isValid());
    }

    void leavingANewDesktopRowShowsNoOtherMenu() {
        PlantEditor editor;
        openMenu(editor);
        begin(editor, "on_actAddDescktop_triggered");
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armpech"));
        QCOMPARE(editor->m_currentDesckKey, QString("armpech"));
        QVERIFY(editor->element("calc").isValid());
        QVERIFY(!editor.action("actAddDescktop")->isEnabled());
    }

    void leavingARenamedRowShowsNoOtherMenu() {
        PlantEditor editor;
        openMenu(editor);
        begin(editor, "on_actChangeDescktopOrFolder_triggered");
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armpech"));
        QCOMPARE(editor->m_currentDesckKey, QString("armpech"));
        QVERIFY(editor->element("calc").isValid());
    }

    void leavingAnEditedElementForADesktopShowsItsMenu() {
        PlantEditor editor;
        openMenu(editor);
        editor.view("tvMenu")->setCurrentIndex(editor->element("calc"));
        orvo::editPassportValue(*editor->m_propModel, "name", "Иное");
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armpech"));
        QVERIFY(!editor->element("calc").isValid());
        QVERIFY(editor->element("MenuRootNode").isValid());
        QVERIFY(editor.action("actCopyDescktopOrFolder")->isEnabled());
    }

    void whileANewElementIsOpenTheDesktopsMoveAlone() {
        PlantEditor editor;
        openMenu(editor);
        editor.view("tvMenu")->setCurrentIndex(editor->element("grafiki"));
        begin(editor, "on_actNewElemFolder_triggered");
        const bool canDelete = editor.action("actDeleteFromtvDesck")->isEnabled();
        editor.view("tvDesck")->setCurrentIndex(editor->desck("mainnode"));
        QCOMPARE(editor->m_currentDesckKey, QString("mainnode"));
        QVERIFY(editor->element("calc").isValid());
        QCOMPARE(editor.action("actDeleteFromtvDesck")->isEnabled(), canDelete);
    }

    void aNewElementRowBecomesTheEditedOne() {
        PlantEditor editor;
        openMenu(editor);
        editor.view("tvMenu")->setCurrentIndex(editor->element("grafiki"));
        begin(editor, "on_actNewElemFolder_triggered");
        QCOMPARE(QModelIndex(editor->m_editMenuIndex), editor.view("tvMenu")->currentIndex());
        QCOMPARE(editor->m_propModel->getRowValue("name"), QVariant("Новая папка"));
        for (const char* action : {"actDeleteElem", "actNewElemFolder", "actAddDescktop"})
            QVERIFY(!editor.action(action)->isEnabled());
    }

    void leavingANewElementRowLeavesThePassportEmpty() {
        PlantEditor editor;
        openMenu(editor);
        editor.view("tvMenu")->setCurrentIndex(editor->element("grafiki"));
        begin(editor, "on_actNewElemFolder_triggered");
        editor.view("tvMenu")->setCurrentIndex(editor->element("calc"));
        QCOMPARE(editor->m_currentMenuKey, QString("calc"));
        QCOMPARE(editor->m_propModel->rowCount(), 0);
        QVERIFY(!editor.action("actDeleteElem")->isEnabled());
        QVERIFY(!editor.action("actAddDescktop")->isEnabled());
    }

    void leavingAnEditedElementLeavesThePassportEmpty() {
        PlantEditor editor;
        openMenu(editor);
        editor.view("tvMenu")->setCurrentIndex(editor->element("MenuRootNode"));
        editor.view("tvMenu")->setCurrentIndex(editor->element("shema"));
        orvo::editPassportValue(*editor->m_propModel, "name", "Иное");
        for (const char* action : {"actDeleteElem", "actNewElemFolder"})
            editor.action(action)->setEnabled(false);
        editor.view("tvMenu")->setCurrentIndex(editor->element("calc"));
        QCOMPARE(editor->m_currentMenuKey, QString("calc"));
        QCOMPARE(editor->m_propModel->rowCount(), 0);
        QVERIFY(!editor.action("actDeleteElem")->isEnabled());
        // The next change shows a passport again.
        editor.view("tvMenu")->setCurrentIndex(editor->element("trend"));
        QCOMPARE(editor->m_propModel->getRowValue("name"), QVariant("Тренд"));
    }

    void whileADesktopIsEditedElementsHaveNoPassport_data() {
        QTest::addColumn<QByteArray>("slot");
        dataRow("new", QByteArray("on_actAddDescktop_triggered"));
        dataRow("renamed", QByteArray("on_actChangeDescktopOrFolder_triggered"));
    }

    void whileADesktopIsEditedElementsHaveNoPassport() {
        QFETCH(QByteArray, slot);
        PlantEditor editor;
        openMenu(editor);
        editor.view("tvMenu")->setCurrentIndex(editor->element("MenuRootNode"));
        begin(editor, slot.constData());
        const int32_t mode = editor->m_editMode;
        QVERIFY(mode != MenuProbe::NoEdit);
        editor.view("tvMenu")->setCurrentIndex(editor->element("calc"));
        QCOMPARE(editor->m_currentMenuKey, QString("calc"));
        QCOMPARE(editor->m_propModel->rowCount(), 0);
        QVERIFY(!editor.action("actDeleteElem")->isEnabled());
        QCOMPARE(editor->m_editMode, mode);
    }

    void aClickSelectsOneRow() {
        PlantEditor editor;
        openMenu(editor);
        for (const char* key : {"MenuRootNode", "calc", "form", "propal"}) {
            clickRow(editor.view("tvMenu"), editor->element(key));
            QCOMPARE(selected(editor), QStringList(key));
        }
    }

    void aSelectionStaysWithinOneParent() {
        PlantEditor editor;
        openMenu(editor);
        QTreeView* view = editor.view("tvMenu");
        clickRow(view, editor->element("trend"));
        clickRow(view, editor->element("shema"), Qt::ControlModifier);
        QCOMPARE(selected(editor), QStringList({"trend"}));
        clickRow(view, editor->element("form"), Qt::ControlModifier);
        QCOMPARE(selected(editor), QStringList({"trend"}));
        clickRow(view, editor->element("MenuRootNode"), Qt::ControlModifier);
        QCOMPARE(selected(editor), QStringList({"trend"}));
        // What is highlighted is what actions act on: the refused row is not the current one
        // either.
        QCOMPARE(editor->m_currentMenuKey, QString("trend"));
        QCOMPARE(view->currentIndex(), editor->element("trend"));
    }

    void aRangeOverLevelsEndsWithinOneParent_data() {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        dataRow("over a subtree", "shema", "propal");
        dataRow("out of a folder", "trend", "propal");
        dataRow("into a folder", "shema", "form");
        dataRow("from the root", "MenuRootNode", "propal");
        dataRow("upwards", "propal", "shema");
    }

    void aRangeOverLevelsEndsWithinOneParent() {
        QFETCH(QString, from);
        QFETCH(QString, to);
        PlantEditor editor;
        openMenu(editor);
        QTreeView* view = editor.view("tvMenu");
        clickRow(view, editor->element(qPrintable(from)));
        clickRow(view, editor->element(qPrintable(to)), Qt::ShiftModifier);
        const QStringList keys = selected(editor);
        QVERIFY(!keys.isEmpty());
        for (const QString& key : keys)
            QCOMPARE(editor->element(qPrintable(key)).parent(),
                     editor->element(qPrintable(keys.first())).parent());
    }

    void aRangeOfSiblingsIsKeptWhole() {
        PlantEditor editor;
        openMenu(editor);
        QTreeView* view = editor.view("tvMenu");
        clickRow(view, editor->element("trend"));
        clickRow(view, editor->element("glubzhe"), Qt::ShiftModifier);
        QCOMPARE(selected(editor), QStringList({"calc", "glubzhe", "trend"}));
        view->collapse(editor->element("grafiki"));
        clickRow(view, editor->element("propal"));
        clickRow(view, editor->element("shema"), Qt::ShiftModifier);
        QCOMPARE(selected(editor), QStringList({"grafiki", "propal", "shema"}));
    }

    void rowsOfTheSelectedParentMayBeAdded() {
        PlantEditor editor;
        openMenu(editor);
        QTreeView* view = editor.view("tvMenu");
        clickRow(view, editor->element("trend"));
        clickRow(view, editor->element("glubzhe"), Qt::ControlModifier);
        clickRow(view, editor->element("calc"), Qt::ControlModifier);
        QCOMPARE(selected(editor), QStringList({"calc", "glubzhe", "trend"}));
        clickRow(view, editor->element("calc"), Qt::ControlModifier);
        QCOMPARE(selected(editor), QStringList({"glubzhe", "trend"}));
        clickRow(view, editor->element("shema"));
        QCOMPARE(selected(editor), QStringList({"shema"}));
    }

    void selectingAllKeepsOneLevel() {
        PlantEditor editor;
        openMenu(editor);
        editor.view("tvMenu")->selectAll();
        const QStringList keys = selected(editor);
        QVERIFY(!keys.isEmpty());
        const QModelIndex parent = editor->element(qPrintable(keys.first())).parent();
        for (const QString& key : keys)
            QCOMPARE(editor->element(qPrintable(key)).parent(), parent);
    }

private:
    QStringList selected(MenuEditor& editor) const {
        QStringList keys;
        for (const QModelIndex& row : editor.view("tvMenu")->selectionModel()->selectedRows())
            keys << editor->m_menuModel->getItemKeyLink(row);
        keys.sort();
        return keys;
    }

    /// Starts with the menu of "armop" shown to its last level.
    void openMenu(MenuEditor& editor) {
        QVERIFY(editor.start());
        editor.view("tvDesck")->expandAll();
        editor.view("tvDesck")->setCurrentIndex(editor->desck("armop"));
        editor.view("tvMenu")->expandAll();
    }
};

QTEST_MAIN(TestMenuCurrent)
#include "tst_menu_current.moc"
