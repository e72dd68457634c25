// Adding, renaming, deleting and copying desktops and their folders.
#include "tests/menu/OperationsProbe.h"
#include "tests/models/TreeText.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMimeData>

using namespace orvo::test;
using orvo::menu::DesckColumn;
using orvo::menu::desckMime;

namespace {

QString shownDescks(const OperationsEditor& editor) {
    return treetext::print(*editor.module->m_desckModel, -1);
}

QVariantList rowValues(const QModelIndex& row) {
    QVariantList values;
    for (int column = 0; column < DesckColumn::Count; ++column)
        values << row.sibling(row.row(), column).data();
    return values;
}

void putDesckOnClipboard(const QByteArray& bytes) {
    auto* mime = new QMimeData; // the clipboard's
    mime->setData(desckMime, bytes);
    QGuiApplication::clipboard()->setMimeData(mime);
}

QByteArray desckOnClipboard() {
    return QGuiApplication::clipboard()->mimeData()->data(desckMime);
}

} // namespace

class TestMenuDesktopOps : public QObject {
    Q_OBJECT
private slots:
    void init();

    void aNewDesktopStandsAtTheEndOfItsFolder();
    void addingOnADesktopPlacesTheNewRowBesideIt();
    void aNewFolderAtTheTopGoesToTheEnd();
    void aNewFolderBelowGoesBeforeTheFirstDesktop();
    void aNewFolderWithoutDesktopsGoesToTheEnd();
    void addingOpensAnEditByNoEditor();
    void addingWithoutACurrentRowDoesNothing();
    void aNewRowIsWrittenOnSaveAndComesBack();
    void aSecondNewRowSavesTheFirst();
    void leavingANewRowOpensNoEditorElsewhere();

    void renamingOpensAnEditor();
    void renamingWritesTheCaptionAlone();
    void renamingSavesAPendingEdit();
    void leavingARenamedRowOpensNoEditorElsewhere();
    void renamingWithoutACurrentRowDoesNothing();

    void anEmptyFolderIsDeletedWithoutAQuestion();
    void aDesktopIsAskedAbout();
    void aNegativeAnswerChangesNothing();
    void aDeletedDesktopTakesItsElementsAlong();
    void aDesktopWithoutElementsIsDeletedInOneCall();
    void onlyElementsOfTheDesktopAreDeleted();
    void theMenuEmptiesBeforeTheServerAnswers();
    void aRefusedDeletionOfElementsLetsTheDesktopGo();
    void deletingWithoutACurrentRowDoesNothing();

    void copyingPutsTheBareKeyOnTheClipboard();
    void copyingWithoutACurrentDesktopLeavesTheClipboard();
    void aPastedDesktopHasNewKeysAndOldValues();
    void theElementsComeFromTheServer();
    void aLostParentBecomesEmptyText();
    void parentsCompareWithoutCase();
    void aDesktopWithoutElementsIsPastedInOneCall();
    void aPastedFolderBringsAllBelowIt();
    void onlyTheTopRowOfAPasteHasTheSuffix();
    void pastingAtTheTopWritesNoParent();
    void pastingOnADesktopTakesItsKeyAsParent();
    void aFolderWithOnlyAFolderIsPasted();
    void theKeyEndsAtAZeroByte();
    void foreignKeysPasteNothing_data();
    void foreignKeysPasteNothing();
    void aSourceDeletedMeanwhilePastesNothing();
    void withoutATargetNothingIsPasted();
    void withoutAnAnswerTheDesktopIsPastedBare();
    void aRefusedDesktopStillSendsItsElements();
    void aPastedFolderMayHoldItself();
    void pastingIntoItsOwnSubFolderEnds();
    void aCircleOfFoldersIsPastedOnce();
    void aVeryDeepFolderIsPasted();

    void withoutAStartNothingHappens();
    void bigDesktopsArePastedAndDeletedInOneCallATable();
};

void TestMenuDesktopOps::init() {
    QGuiApplication::clipboard()->clear();
}

// Adding -----------------------------------------------------------------------------------------

void TestMenuDesktopOps::aNewDesktopStandsAtTheEndOfItsFolder() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("ceh");
    editor->on_actAddDescktop_triggered();
    const QModelIndex row = editor.view("tvDesck")->currentIndex();
    QCOMPARE(row.parent(), editor->desck("ceh"));
    QCOMPARE(row.row(), 2);
    const QString key = row.sibling(row.row(), DesckColumn::KeyLink).data().toString();
    QCOMPARE(key.size(), 32);
    QCOMPARE(rowValues(row), QVariantList({"новый рабочий стол", key, "ceh", "2000", false, true}));
    QVERIFY(editor.view("tvDesck")->selectionModel()->isSelected(row));
    QCOMPARE(host.writes().take(), QString());
}

void TestMenuDesktopOps::addingOnADesktopPlacesTheNewRowBesideIt() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armpech");
    editor->on_actAddDescktop_triggered();
    const QModelIndex row = editor.view("tvDesck")->currentIndex();
    QCOMPARE(row.parent(), editor->desck("pech"));
    QCOMPARE(row.row(), 1);
    QCOMPARE(row.sibling(1, DesckColumn::ParentKey).data(), QVariant("pech"));
}

void TestMenuDesktopOps::aNewFolderAtTheTopGoesToTheEnd() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("mainnode");
    editor->on_actAddFoldertvDesck_triggered();
    const QModelIndex row = editor.view("tvDesck")->currentIndex();
    QCOMPARE(row.parent(), editor->desck("mainnode"));
    QCOMPARE(row.row(), 3); // behind the desktop "Общий"
    const QString key = row.sibling(3, DesckColumn::KeyLink).data().toString();
    QCOMPARE(rowValues(row), QVariantList({"новая папка1", key, "mainnode", "1000", true, true}));
}

void TestMenuDesktopOps::aNewFolderBelowGoesBeforeTheFirstDesktop() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop"); // a desktop: its folder counts
    editor->on_actAddFoldertvDesck_triggered();
    const QModelIndex row = editor.view("tvDesck")->currentIndex();
    QCOMPARE(row.parent(), editor->desck("ceh"));
    QCOMPARE(row.row(), 1);
    QCOMPARE(editor->desck("armop").row(), 2);
    QCOMPARE(row.sibling(1, DesckColumn::Order).data(), QVariant("1000"));
}

void TestMenuDesktopOps::aNewFolderWithoutDesktopsGoesToTheEnd() {
    TestStore store;
    fillPlant(store);
    addDesck(store, "ugol", "sklad", "Угол", true);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("sklad");
    editor->on_actAddFoldertvDesck_triggered();
    QCOMPARE(editor.view("tvDesck")->currentIndex().parent(), editor->desck("sklad"));
    QCOMPARE(editor.view("tvDesck")->currentIndex().row(), 1);
}

void TestMenuDesktopOps::addingOpensAnEditByNoEditor() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("ceh");
    editor->on_actAddDescktop_triggered();
    const QModelIndex row = editor.view("tvDesck")->currentIndex();
    QCOMPARE(editor->m_editMode, int32_t(MenuProbe::NewDesck));
    QCOMPARE(QModelIndex(editor->m_editDesckIndex), row);
    QVERIFY(editor->m_btnSave->isEnabled());
    QVERIFY(editor->m_btnCancel->isEnabled());
    QCOMPARE(editor.view("tvDesck")->editTriggers(), QAbstractItemView::AllEditTriggers);
    QVERIFY(editor.view("tvDesck")->findChildren<QLineEdit*>().isEmpty());
    // The user starts one.
    QTest::keyClick(editor.view("tvDesck"), Qt::Key_F2);
    QCOMPARE(editor.view("tvDesck")->findChildren<QLineEdit*>().size(), 1);
}

void TestMenuDesktopOps::addingWithoutACurrentRowDoesNothing() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.view("tvDesck")->setCurrentIndex(QModelIndex());
    const QString before = shownDescks(editor);
    editor->on_actAddDescktop_triggered();
    editor->on_actAddFoldertvDesck_triggered();
    QCOMPARE(shownDescks(editor), before);
    QCOMPARE(editor->m_editMode, int32_t(MenuProbe::NoEdit));
}

void TestMenuDesktopOps::aNewRowIsWrittenOnSaveAndComesBack() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("ceh");
    editor->on_actAddFoldertvDesck_triggered();
    const QString key = editor->m_currentDesckKey;
    editor->on_save_pressed();
    QCOMPARE(host.writes().take(),
             QString("MenuFolder\n"
                     "  +#1 ParentKey='ceh' caption='новая папка1' order_='1000' isFolder=true\n"));
    QVERIFY(editor->m_desckModel->findIndexByKey(key).siblingAtColumn(5).data().toBool());
    host.deliver(*editor.module);
    QVERIFY(!editor->m_desckModel->findIndexByKey(key).siblingAtColumn(5).data().toBool());
}

void TestMenuDesktopOps::aSecondNewRowSavesTheFirst() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("sklad");
    editor->on_actAddDescktop_triggered();
    const QString first = editor->m_currentDesckKey;
    editor->on_actAddDescktop_triggered();
    QCOMPARE(host.writes().take(), QString("MenuFolder\n"
                                           "  +#1 ParentKey='sklad' caption='новый рабочий стол' "
                                           "order_='2000' isFolder=false\n"));
    QVERIFY(editor->m_currentDesckKey != first);
    QCOMPARE(editor->m_editMode, int32_t(MenuProbe::NewDesck));
    QCOMPARE(QModelIndex(editor->m_editDesckIndex), editor.view("tvDesck")->currentIndex());
    QVERIFY(editor->m_btnSave->isEnabled());
    editor->on_cancel_pressed();
    host.deliver(*editor.module);
    QCOMPARE(editor->m_desckModel->rowCount(editor->desck("sklad")), 1);
}

void TestMenuDesktopOps::leavingANewRowOpensNoEditorElsewhere() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("ceh");
    editor->on_actAddDescktop_triggered();
    clickRow(editor.view("tvDesck"), editor->desck("sklad"));
    QCOMPARE(host.writes().calls.size(), 1);
    QCOMPARE(editor.view("tvDesck")->editTriggers(), QAbstractItemView::NoEditTriggers);
    QTest::qWait(QApplication::doubleClickInterval() + 50);
    QVERIFY(editor.view("tvDesck")->findChildren<QLineEdit*>().isEmpty());
}

// Renaming ---------------------------------------------------------------------------------------

void TestMenuDesktopOps::renamingOpensAnEditor() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    QVERIFY(editor.action("actChangeDescktopOrFolder")->isEnabled());
    editor->on_actChangeDescktopOrFolder_triggered();
    QCOMPARE(editor->m_editMode, int32_t(MenuProbe::RenameDesck));
    QCOMPARE(QModelIndex(editor->m_editDesckIndex), editor->desck("armop"));
    QVERIFY(editor->m_btnSave->isEnabled());
    QVERIFY(editor->m_btnCancel->isEnabled());
    QVERIFY(!editor.action("actChangeDescktopOrFolder")->isEnabled());
    QVERIFY(!editor.action("actDeleteFromtvDesck")->isEnabled());
    QCOMPARE(editor.view("tvDesck")->editTriggers(), QAbstractItemView::AllEditTriggers);
    const auto editors = editor.view("tvDesck")->findChildren<QLineEdit*>();
    QCOMPARE(editors.size(), 1);
    QCOMPARE(editors.first()->text(), QString("АРМ оператора"));
}

void TestMenuDesktopOps::renamingWritesTheCaptionAlone() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor->on_actChangeDescktopOrFolder_triggered();
    editor.view("tvDesck")->findChild<QLineEdit*>()->setText("Пульт");
    editor->on_save_pressed();
    QCOMPARE(host.writes().take(), QString("MenuFolder\n  ~armop caption='Пульт'\n"));
    QCOMPARE(editor.view("tvDesck")->editTriggers(), QAbstractItemView::NoEditTriggers);
}

void TestMenuDesktopOps::renamingSavesAPendingEdit() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("sklad");
    editor->on_actAddDescktop_triggered();
    editor->on_actChangeDescktopOrFolder_triggered();
    QCOMPARE(host.writes().calls.size(), 1);
    QCOMPARE(editor->m_editMode, int32_t(MenuProbe::RenameDesck));
    editor.view("tvDesck")->findChild<QLineEdit*>()->setText("Вдогонку");
    editor->on_save_pressed();
    host.deliver(*editor.module);
    QVERIFY(shownDescks(editor).contains("\n  Склад\n    Вдогонку\n"));
}

void TestMenuDesktopOps::leavingARenamedRowOpensNoEditorElsewhere() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor->on_actChangeDescktopOrFolder_triggered();
    editor.view("tvDesck")->findChild<QLineEdit*>()->setText("Пульт");
    clickRow(editor.view("tvDesck"), editor->desck("sklad"));
    QCOMPARE(host.writes().take(), QString("MenuFolder\n  ~armop caption='Пульт'\n"));
    QCOMPARE(editor.view("tvDesck")->editTriggers(), QAbstractItemView::NoEditTriggers);
    QTest::qWait(QApplication::doubleClickInterval() + 50);
    QVERIFY(editor.view("tvDesck")->findChildren<QLineEdit*>().isEmpty());
}

void TestMenuDesktopOps::renamingWithoutACurrentRowDoesNothing() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.view("tvDesck")->setCurrentIndex(QModelIndex());
    editor->on_actChangeDescktopOrFolder_triggered();
    QCOMPARE(editor->m_editMode, int32_t(MenuProbe::NoEdit));
    QVERIFY(!editor->m_btnSave->isEnabled());
}

// Deleting ---------------------------------------------------------------------------------------

void TestMenuDesktopOps::anEmptyFolderIsDeletedWithoutAQuestion() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("sklad");
    editor.action("actDeleteFromtvDesck")->trigger();
    QVERIFY(!editor.isAsking());
    QCOMPARE(host.writes().take(), QString("MenuFolder\n  -sklad\n"));
    QVERIFY(editor->desck("sklad").isValid());
    host.deliver(*editor.module);
    QVERIFY(!editor->desck("sklad").isValid());
}

void TestMenuDesktopOps::aDesktopIsAskedAbout() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.action("actDeleteFromtvDesck")->trigger();
    QVERIFY(editor.isAsking());
    QCOMPARE(editor.question(),
             QString("Уведомление\n"
                     "Вы действительно хотите удалить рабочий стол \"АРМ оператора\"?"));
    QCOMPARE(host.writes().take(), QString());
}

void TestMenuDesktopOps::aNegativeAnswerChangesNothing() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor->on_actDeleteFromtvDesck_triggered();
    editor.answer(editor.No);
    QVERIFY(!editor.isAsking());
    QCOMPARE(host.writes().take(), QString());
    QVERIFY(editor->element("calc").isValid());
    // Nor does a button of no box.
    editor->removeDesckTopMessage(nullptr);
    QCOMPARE(host.writes().take(), QString());
}

void TestMenuDesktopOps::aDeletedDesktopTakesItsElementsAlong() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.makeCurrent("calc");
    editor->on_actDeleteFromtvDesck_triggered();
    editor.answer(editor.Yes);
    QVERIFY(!editor.isAsking());
    QCOMPARE(host.writes().take(), QString("Menu\n"
                                           "  -calc\n"
                                           "  -form\n"
                                           "  -glubzhe\n"
                                           "  -grafiki\n"
                                           "  -propal\n"
                                           "  -shema\n"
                                           "  -trend\n"
                                           "MenuFolder\n"
                                           "  -armop\n"));
    QVERIFY(editor->m_currentMenuKey.isNull());
    host.deliver(*editor.module);
    QVERIFY(!editor->desck("armop").isValid());
    QCOMPARE(host.failures, QStringList());
}

void TestMenuDesktopOps::aDesktopWithoutElementsIsDeletedInOneCall() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armpech");
    editor->on_actDeleteFromtvDesck_triggered();
    editor.answer(editor.Yes);
    QCOMPARE(host.writes().take(), QString("MenuFolder\n  -armpech\n"));
}

void TestMenuDesktopOps::onlyElementsOfTheDesktopAreDeleted() {
    TestStore store;
    fillPlant(store);
    addElement(store, "armpech", "chuzhoy", "", "Чужой", 0);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    // The next fetch fails, so the table still has the elements of the desktop before.
    store.sql("ALTER TABLE \"Menu\" RENAME TO \"gone\"");
    editor.openDesck("armpech");
    store.sql("ALTER TABLE \"gone\" RENAME TO \"Menu\"");
    host.failures.clear();
    editor->on_actDeleteFromtvDesck_triggered();
    editor.answer(editor.Yes);
    QCOMPARE(host.writes().take(), QString("MenuFolder\n  -armpech\n"));
}

void TestMenuDesktopOps::theMenuEmptiesBeforeTheServerAnswers() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.makeCurrent("calc");
    editor->on_actDeleteFromtvDesck_triggered();
    QVERIFY(editor->m_propModel->rowCount() > 0);
    editor.answer(editor.Yes);
    QCOMPARE(editor->m_menuModel->rowCount(), 0);
    QCOMPARE(editor->m_propModel->rowCount(), 0);
    QVERIFY(editor->desck("armop").isValid());
}

void TestMenuDesktopOps::aRefusedDeletionOfElementsLetsTheDesktopGo() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor->on_actDeleteFromtvDesck_triggered();
    host.writes().refusedTable = "Menu";
    editor.answer(editor.Yes);
    QCOMPARE(host.writes().calls.size(), 2);
    host.deliver(*editor.module);
    QVERIFY(!editor->desck("armop").isValid());
    QVERIFY(!editor.isAsking());
}

void TestMenuDesktopOps::deletingWithoutACurrentRowDoesNothing() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.view("tvDesck")->setCurrentIndex(QModelIndex());
    editor->on_actDeleteFromtvDesck_triggered();
    QVERIFY(!editor.isAsking());
    QCOMPARE(host.writes().take(), QString());
}

// Copying and pasting ----------------------------------------------------------------------------

void TestMenuDesktopOps::copyingPutsTheBareKeyOnTheClipboard() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.action("actCopyDescktopOrFolder")->trigger();
    QCOMPARE(QGuiApplication::clipboard()->mimeData()->formats(), QStringList(desckMime));
    QCOMPARE(desckOnClipboard(), QByteArray("armop"));
    editor.openDesck("ceh");
    editor->on_actCopyDescktopOrFolder_triggered();
    QCOMPARE(desckOnClipboard(), QByteArray("ceh"));
    QCOMPARE(host.writes().take(), QString());
}

void TestMenuDesktopOps::copyingWithoutACurrentDesktopLeavesTheClipboard() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    putDesckOnClipboard("before");
    editor.view("tvDesck")->setCurrentIndex(QModelIndex());
    editor->on_actCopyDescktopOrFolder_triggered();
    editor->m_currentDesckKey = "nosuch";
    editor->on_actCopyDescktopOrFolder_triggered();
    QCOMPARE(desckOnClipboard(), QByteArray("before"));
}

void TestMenuDesktopOps::aPastedDesktopHasNewKeysAndOldValues() {
    TestStore store;
    fillPlant(store);
    store.insert("Menu", {{"KeyLink", QString("full")},
                          {"parent", QString("glubzhe")},
                          {"FolderKey", QString("armop")},
                          {"caption", QString("Полный")},
                          {"order_", 7000},
                          {"ico", QString("pump.png")},
                          {"separator", true},
                          {"oneCopy", false},
                          {"MenuResourceKey", QString("rcalc")},
                          {"params", QString("-x 1")}});
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor->on_actCopyDescktopOrFolder_triggered();
    editor.openDesck("sklad");
    QVERIFY(editor.action("actPasteDescktopOrFolder")->isEnabled());
    editor.action("actPasteDescktopOrFolder")->trigger();
    // The elements stand in the order of their old keys: calc, form, full, glubzhe, grafiki,
    // propal, shema, trend. Resources are not looked up: the lost one goes along.
    const QString none = " ico=NULL separator=NULL oneCopy=NULL";
    const QString bare = " params=NULL\n";
    QCOMPARE(host.writes().take(),
             "MenuFolder\n"
             "  +#1 ParentKey='sklad' caption='АРМ оператора_копия' order_='2000' isFolder=false\n"
             "Menu\n"
             "  +#2 parent='#3' FolderKey='#1' caption='Расчёт' order_=1000" +
                 none + " MenuResourceKey='rcalc'" + bare +
                 "  +#4 parent='#5' FolderKey='#1' caption='Котёл' order_=0" + none +
                 " MenuResourceKey='rform'" + bare +
                 "  +#6 parent='#5' FolderKey='#1' caption='Полный' order_=7000 ico='pump.png' "
                 "separator=true oneCopy=false MenuResourceKey='rcalc' params='-x 1'\n"
                 "  +#5 parent='#3' FolderKey='#1' caption='Глубже' order_=2000" +
                 none + " MenuResourceKey=NULL" + bare +
                 "  +#3 parent=NULL FolderKey='#1' caption='Графики' order_=1000" + none +
                 " MenuResourceKey=NULL" + bare +
                 "  +#7 parent=NULL FolderKey='#1' caption='Пропавший' order_=2000" + none +
                 " MenuResourceKey='nosuch'" + bare +
                 "  +#8 parent=NULL FolderKey='#1' caption='Схема' order_=0" + none +
                 " MenuResourceKey='rform'" + bare +
                 "  +#9 parent='#3' FolderKey='#1' caption='Тренд' order_=0" + none +
                 " MenuResourceKey='rtrend'" + bare);
    QVERIFY(!shownDescks(editor).contains("_копия"));
    host.deliver(*editor.module);
    QVERIFY(shownDescks(editor).contains("  Склад\n    АРМ оператора_копия\n"));
    // The new desktop is current, with its menu.
    QCOMPARE(treetext::print(*editor->m_menuModel, -1), QString("Меню\n"
                                                                "  Схема\n"
                                                                "  Графики\n"
                                                                "    Тренд\n"
                                                                "    Расчёт\n"
                                                                "    Глубже\n"
                                                                "      Котёл\n"
                                                                "      Полный\n"
                                                                "  Пропавший\n"));
    QCOMPARE(host.failures, QStringList());
}

void TestMenuDesktopOps::theElementsComeFromTheServer() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armpech");
    editor->on_actCopyDescktopOrFolder_triggered();
    // Another desktop is open at the time of the paste, and the copied one gets an element.
    editor.openDesck("armop");
    addElement(store, "armpech", "pozdnee", "", "Позднее", 5);
    editor->on_actPasteDescktopOrFolder_triggered();
    const QString written = host.writes().take();
    QVERIFY2(written.contains("caption='Позднее' order_=5"), qPrintable(written));
    QVERIFY(!written.contains("Тренд"));
}

void TestMenuDesktopOps::aLostParentBecomesEmptyText() {
    TestStore store;
    fillPlant(store);
    addElement(store, "armpech", "sirota", "nosuch", "Сирота", 5);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armpech");
    editor->on_actCopyDescktopOrFolder_triggered();
    editor->on_actPasteDescktopOrFolder_triggered();
    QVERIFY(host.writes().take().contains("parent='' FolderKey='#1' caption='Сирота'"));
}

void TestMenuDesktopOps::parentsCompareWithoutCase() {
    TestStore store;
    fillPlant(store);
    addElement(store, "armpech", "Papka", "", "Папка", 0);
    addElement(store, "armpech", "vnutri", "pAPKA", "Внутри", 5);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armpech");
    editor->on_actCopyDescktopOrFolder_triggered();
    editor->on_actPasteDescktopOrFolder_triggered();
    const QString written = host.writes().take();
    QVERIFY2(written.contains("+#3 parent='#2' FolderKey='#1' caption='Внутри'"),
             qPrintable(written));
}

void TestMenuDesktopOps::aDesktopWithoutElementsIsPastedInOneCall() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armpech");
    editor->on_actCopyDescktopOrFolder_triggered();
    editor.openDesck("sklad");
    editor->on_actPasteDescktopOrFolder_triggered();
    QCOMPARE(host.writes().take(),
             QString("MenuFolder\n  +#1 ParentKey='sklad' caption='АРМ печи_копия' order_='2000' "
                     "isFolder=false\n"));
}

void TestMenuDesktopOps::aPastedFolderBringsAllBelowIt() {
    TestStore store;
    fillPlant(store);
    addDesck(store, "azot", "ceh", "Азот", false);
    addElement(store, "armpech", "odin", "", "Один", 5, "rtrend");
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("ceh");
    editor->on_actCopyDescktopOrFolder_triggered();
    editor.openDesck("sklad");
    editor->on_actPasteDescktopOrFolder_triggered();
    const QString written = host.writes().take();
    // Folders before desktops, each group by caption; what lies in a folder right behind it.
    QVERIFY2(written.startsWith(
                 "MenuFolder\n"
                 "  +#1 ParentKey='sklad' caption='Цех 1_копия' order_='1000' isFolder=true\n"
                 "  +#2 ParentKey='#1' caption='Печь' order_='1000' isFolder=true\n"
                 "  +#3 ParentKey='#2' caption='АРМ печи' order_='2000' isFolder=false\n"
                 "  +#4 ParentKey='#1' caption='Азот' order_='2000' isFolder=false\n"
                 "  +#5 ParentKey='#1' caption='АРМ оператора' order_='2000' isFolder=false\n"
                 "Menu\n"
                 "  +#6 parent=NULL FolderKey='#3' caption='Один' order_=5"),
             qPrintable(written));
    QCOMPARE(written.count("FolderKey='#5'"), 7);
    host.deliver(*editor.module);
    QVERIFY2(shownDescks(editor).contains("  Склад\n"
                                          "    Цех 1_копия\n"
                                          "      Печь\n"
                                          "        АРМ печи\n"
                                          "      Азот\n"
                                          "      АРМ оператора\n"),
             qPrintable(shownDescks(editor)));
    QCOMPARE(host.failures, QStringList());
}

void TestMenuDesktopOps::onlyTheTopRowOfAPasteHasTheSuffix() {
    TestStore store;
    fillPlant(store);
    addDesck(store, "bezimeni", "sklad", "", false);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("sklad");
    editor->on_actCopyDescktopOrFolder_triggered();
    editor->on_actPasteDescktopOrFolder_triggered();
    QCOMPARE(host.writes().take(),
             QString("MenuFolder\n"
                     "  +#1 ParentKey='sklad' caption='Склад_копия' order_='1000' isFolder=true\n"
                     "  +#2 ParentKey='#1' caption='' order_='2000' isFolder=false\n"));
    // A row without a caption, copied by itself, is named by the suffix alone.
    editor.openDesck("bezimeni");
    editor->on_actCopyDescktopOrFolder_triggered();
    editor.openDesck("ceh");
    editor->on_actPasteDescktopOrFolder_triggered();
    const QString written = host.writes().take();
    QVERIFY2(written.contains("ParentKey='ceh' caption='_копия'"), qPrintable(written));
}

void TestMenuDesktopOps::pastingAtTheTopWritesNoParent() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    putDesckOnClipboard("armpech");
    editor.openDesck("mainnode");
    editor->on_actPasteDescktopOrFolder_triggered();
    QCOMPARE(host.writes().take(),
             QString("MenuFolder\n  +#1 ParentKey=NULL caption='АРМ печи_копия' order_='2000' "
                     "isFolder=false\n"));
}

void TestMenuDesktopOps::pastingOnADesktopTakesItsKeyAsParent() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    putDesckOnClipboard("armpech");
    editor.openDesck("armop");
    editor->on_actPasteDescktopOrFolder_triggered();
    QVERIFY(host.writes().take().contains("ParentKey='armop'"));
}

void TestMenuDesktopOps::aFolderWithOnlyAFolderIsPasted() {
    TestStore store;
    addDesck(store, "f1", "", "Внешняя", true);
    addDesck(store, "f2", "f1", "Внутренняя", true);
    TestHost host(store);
    OperationsEditor editor(host);
    putDesckOnClipboard("F1"); // keys compare without regard to case
    editor.openDesck("mainnode");
    editor->on_actPasteDescktopOrFolder_triggered();
    QCOMPARE(host.writes().take(),
             QString("MenuFolder\n"
                     "  +#1 ParentKey=NULL caption='Внешняя_копия' order_='1000' isFolder=true\n"
                     "  +#2 ParentKey='#1' caption='Внутренняя' order_='1000' isFolder=true\n"));
}

void TestMenuDesktopOps::theKeyEndsAtAZeroByte() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    putDesckOnClipboard(QByteArray("armpech\0and more", 16));
    editor.openDesck("sklad");
    editor->on_actPasteDescktopOrFolder_triggered();
    QVERIFY(host.writes().take().contains("АРМ печи_копия"));
}

void TestMenuDesktopOps::foreignKeysPasteNothing_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("a zero byte") << QByteArray("\0armop", 6);
    QTest::newRow("an unknown key") << QByteArray("nosuch");
    QTest::newRow("the root row") << QByteArray("mainnode");
    QTest::newRow("a key with a blank") << QByteArray("armop ");
    QTest::newRow("a statement") << QByteArray("armop' or '1'='1");
    QTest::newRow("bytes of another code") << QByteArray("\xff\xfe\x98\x01");
    QTest::newRow("a megabyte") << QByteArray(1 << 20, 'a');
}

void TestMenuDesktopOps::foreignKeysPasteNothing() {
    QFETCH(QByteArray, bytes);
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    putDesckOnClipboard(bytes);
    editor.openDesck("sklad");
    editor->on_actPasteDescktopOrFolder_triggered();
    QCOMPARE(host.writes().take(), QString());
    QCOMPARE(host.failures, QStringList());
    QGuiApplication::clipboard()->setText("armop");
    editor->on_actPasteDescktopOrFolder_triggered();
    QCOMPARE(host.writes().take(), QString());
}

void TestMenuDesktopOps::aSourceDeletedMeanwhilePastesNothing() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armpech");
    editor->on_actCopyDescktopOrFolder_triggered();
    editor.openDesck("sklad");
    store.remove("MenuFolder", "armpech");
    host.deliver(*editor.module);
    editor->on_actPasteDescktopOrFolder_triggered();
    QCOMPARE(host.writes().take(), QString());
}

void TestMenuDesktopOps::withoutATargetNothingIsPasted() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    putDesckOnClipboard("armop");
    editor.view("tvDesck")->setCurrentIndex(QModelIndex());
    editor->on_actPasteDescktopOrFolder_triggered();
    editor->m_currentDesckKey = "nosuch";
    editor->on_actPasteDescktopOrFolder_triggered();
    QCOMPARE(host.writes().take(), QString());
}

void TestMenuDesktopOps::withoutAnAnswerTheDesktopIsPastedBare() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    putDesckOnClipboard("armop");
    editor.openDesck("sklad");
    store.sql("ALTER TABLE \"Menu\" RENAME TO \"gone\"");
    editor->on_actPasteDescktopOrFolder_triggered();
    QCOMPARE(host.writes().take(),
             QString("MenuFolder\n  +#1 ParentKey='sklad' caption='АРМ оператора_копия' "
                     "order_='2000' isFolder=false\n"));
    QVERIFY(!editor.isAsking());
}

void TestMenuDesktopOps::aRefusedDesktopStillSendsItsElements() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    putDesckOnClipboard("armop");
    editor.openDesck("sklad");
    host.writes().refusedTable = "MenuFolder";
    editor->on_actPasteDescktopOrFolder_triggered();
    QCOMPARE(host.writes().calls.size(), 2);
    QCOMPARE(host.writes().calls[1].table, QString("Menu"));
    QVERIFY(!editor.isAsking());
}

void TestMenuDesktopOps::aPastedFolderMayHoldItself() {
    // A folder pasted into itself is read from the table, which the paste does not change.
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    putDesckOnClipboard("pech");
    editor.openDesck("pech");
    editor->on_actPasteDescktopOrFolder_triggered();
    QCOMPARE(host.writes().take(),
             QString("MenuFolder\n"
                     "  +#1 ParentKey='pech' caption='Печь_копия' order_='1000' isFolder=true\n"
                     "  +#2 ParentKey='#1' caption='АРМ печи' order_='2000' isFolder=false\n"));
}

void TestMenuDesktopOps::pastingIntoItsOwnSubFolderEnds() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    putDesckOnClipboard("ceh");
    editor.openDesck("pech");
    editor->on_actPasteDescktopOrFolder_triggered();
    QCOMPARE(host.writes().calls.size(), 2);
    QCOMPARE(host.writes().calls[0].records.size(), 4);
    host.deliver(*editor.module);
    QVERIFY(shownDescks(editor).contains("    Печь\n      Цех 1_копия\n        Печь\n"));
}

void TestMenuDesktopOps::aCircleOfFoldersIsPastedOnce() {
    TestStore store;
    addDesck(store, "f1", "", "Первая", true);
    addDesck(store, "f2", "f1", "Вторая", true);
    addDesck(store, "d", "f2", "Стол", false);
    TestHost host(store);
    OperationsEditor editor(host);
    // Another client hangs the upper folder below the lower one; the row stays where it was.
    store.update("MenuFolder", {{"KeyLink", QString("f1")}, {"ParentKey", QString("F2")}});
    host.deliver(*editor.module);
    putDesckOnClipboard("f1");
    editor.openDesck("mainnode");
    editor->on_actPasteDescktopOrFolder_triggered();
    QCOMPARE(host.writes().take(),
             QString("MenuFolder\n"
                     "  +#1 ParentKey=NULL caption='Первая_копия' order_='1000' isFolder=true\n"
                     "  +#2 ParentKey='#1' caption='Вторая' order_='1000' isFolder=true\n"
                     "  +#3 ParentKey='#2' caption='Стол' order_='2000' isFolder=false\n"));
}

void TestMenuDesktopOps::aVeryDeepFolderIsPasted() {
    constexpr int depth = 20000;
    TestStore store;
    addDesck(store, "f0", "", "Дно", true);
    store.sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000) "
              "INSERT INTO \"MenuFolder\" (\"KeyLink\", \"ParentKey\", \"caption\", \"order_\", "
              "\"isFolder\") SELECT 'f' || i, 'f' || (i - 1), 'x', '1000', 1 FROM n");
    TestHost host(store);
    EditorUnderTest<OperationsProbe> editor(host, "Menu");
    QVERIFY(editor.start());
    putDesckOnClipboard("f0");
    editor.view("tvDesck")->setCurrentIndex(editor->desck("mainnode"));
    editor->on_actPasteDescktopOrFolder_triggered();
    QCOMPARE(host.writes().calls.size(), 1);
    QCOMPARE(host.writes().calls[0].records.size(), depth + 1);
    QCOMPARE(host.failures, QStringList());
}

// ------------------------------------------------------------------------------------------------

void TestMenuDesktopOps::withoutAStartNothingHappens() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    store.sql("ALTER TABLE \"MenuFolder\" RENAME TO \"gone\"");
    EditorUnderTest<OperationsProbe> editor(host, "Menu");
    QVERIFY(!editor->ModuleStart());
    putDesckOnClipboard("armop");
    for (QAction* action : editor->findChildren<QAction*>())
        if (action->objectName().startsWith("act")) {
            action->setEnabled(true);
            action->trigger();
        }
    editor->removeDesckTopMessage(nullptr);
    editor->removeMenuMessage(nullptr);
    QCOMPARE(host.writes().take(), QString());
}

void TestMenuDesktopOps::bigDesktopsArePastedAndDeletedInOneCallATable() {
    TestStore store;
    fillPlant(store);
    addDesck(store, "big", "sklad", "Большой", false);
    store.sql("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 9999) "
              "INSERT INTO \"Menu\" (\"KeyLink\", \"parent\", \"FolderKey\", \"caption\", "
              "\"order_\", \"MenuResourceKey\") "
              "SELECT 'e' || i, CASE WHEN i < 100 THEN NULL ELSE 'e' || (i % 100) END, 'big', "
              "'Элемент ' || i, i * 1000, CASE WHEN i < 100 THEN NULL ELSE 'rtrend' END FROM n");
    TestHost host(store);
    OperationsEditor editor(host);
    editor.view("tvDesck")->setCurrentIndex(editor->desck("big"));
    editor->on_actCopyDescktopOrFolder_triggered();
    editor.view("tvDesck")->setCurrentIndex(editor->desck("sklad"));
    QElapsedTimer timer;
    timer.start();
    editor->on_actPasteDescktopOrFolder_triggered();
    qInfo("a desktop with 10,000 elements pasted in %lld ms", timer.elapsed());
    QVERIFY(timer.elapsed() < 20000);
    QCOMPARE(host.writes().calls.size(), 2);
    QCOMPARE(host.writes().calls[0].records.size(), 1);
    QCOMPARE(host.writes().calls[1].records.size(), 10000);
    host.writes().calls.clear();
    host.deliver(*editor.module);
    editor.view("tvDesck")->setCurrentIndex(editor->desck("big"));
    editor->on_actDeleteFromtvDesck_triggered();
    timer.start();
    editor.answer(editor.Yes);
    qInfo("and deleted in %lld ms", timer.elapsed());
    QVERIFY(timer.elapsed() < 20000);
    QCOMPARE(host.writes().calls.size(), 2);
    QCOMPARE(host.writes().calls[0].records.size(), 10000);
    QCOMPARE(host.writes().calls[1].records, QStringList("-big"));
}

QTEST_MAIN(TestMenuDesktopOps)
#include "tst_menu_desktopops.moc"
