// Copying, cutting and pasting menu elements.
#include "tests/menu/OperationsProbe.h"
#include "tests/models/TreeText.h"

#include "frame/Records.h"
#include "menu/MenuPayload.h"
#include "platform/mdx/MdxBuild.h"

#include <QClipboard>
#include <QMimeData>

using namespace orvo::test;
using orvo::menu::menuMime;
using orvo::menu::MenuPayload;

namespace {

QByteArray payload() {
    const QMimeData* offered = QGuiApplication::clipboard()->mimeData();
    return offered ? offered->data(menuMime) : QByteArray();
}

void putOnClipboard(const QByteArray& bytes) {
    auto* mime = new QMimeData; // the clipboard's
    mime->setData(menuMime, bytes);
    QGuiApplication::clipboard()->setMimeData(mime);
}

/// The same payload as another program's: the bytes, put anew.
void putAgain() {
    putOnClipboard(payload());
}

QString shownMenu(const OperationsEditor& editor) {
    return treetext::print(*editor.module->m_menuModel, -1);
}

QStringList keysInOrder(const MDArray* array, int key) {
    QStringList keys;
    for (int32_t i = 0; const MDRData* record = MDARec(array, key, i); ++i)
        keys << orvo::textOf(record, "KeyLink");
    return keys;
}

} // namespace

class TestMenuClipboard : public QObject {
    Q_OBJECT
private slots:
    void init();

    void theCopiedBytes();
    void theCutBytes();
    void thePackedTableHasTheRecordsWithTwoKeys();
    void thePackedRecordsAreWholeAndUnflagged();
    void aFolderBringsAllBelowIt();
    void copyingTheRootRowLeavesTheClipboard();
    void withoutASelectionTheClipboardStays();
    void aRowWithoutARecordGivesItsKeyAlone();
    void aCircleInTheTableIsCopiedOnce();
    void aCutChangesNothing();

    void theFirstCutSurvivesInItsEditor();
    void theNextCutSurvivesToo();
    void aSecondEditorTakesACutAway();
    void aCopyIsLeftAlone();
    void aCutOfAnotherProgramIsTakenAway_data();
    void aCutOfAnotherProgramIsTakenAway();
    void otherFormatsAreLeftAlone();
    void anotherContentLosesTheCut();

    void aPastedElementIsTheLastInItsFolder();
    void pastingAtTheTop();
    void pastingIntoAnotherDesktop();
    void everyPasteMakesNewKeys();
    void allChosenElementsGetTheOrderOfTheLastChild();
    void aPastedFolderKeepsWhatLiesBelow();
    void subFoldersCarryTheirCaptionAsParent();
    void elementsWithoutTheirResourceStayOut();
    void pastingOnAnElementTakesItAsParent();
    void anElementWithoutACaptionIsPlacedAsChosen();
    void parentsCompareWithoutCase();
    void keysWithoutARecordAreSkipped();
    void aCopyIsPastedInAnotherClient();
    void withoutATargetNothingIsPasted();
    void theClipboardStaysAfterAPaste();
    void thePastedRowBecomesCurrent();

    void aPastedCutDeletesItsSource();
    void aCutFolderIsDeletedWhole();
    void aCutOfAnotherDesktopIsDeleted();
    void aCutElementWithoutItsResourceIsDeletedAllTheSame();
    void aSecondPasteOfACutDeletesNothingMore();
    void aRefusedPasteStillDeletesTheCut();
};

void TestMenuClipboard::init() {
    QGuiApplication::clipboard()->clear();
}

// Copying ----------------------------------------------------------------------------------------

void TestMenuClipboard::theCopiedBytes() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"calc", "trend", "glubzhe"});
    editor.action("actCopyMenuElement")->trigger();
    QCOMPARE(QGuiApplication::clipboard()->mimeData()->formats(), QStringList(menuMime));
    QStringList keys;
    for (const QModelIndex& row : editor.view("tvMenu")->selectionModel()->selectedRows(0))
        keys << editor->m_menuModel->getItemKeyLink(row);
    QCOMPARE(keys.size(), 3);
    const QByteArray head = "0\n" + keys.join(';').toUtf8() + ";\n";
    QVERIFY(payload().startsWith(head));
    // What follows is one whole packed table.
    const QByteArray image = payload().mid(head.size());
    CMDArray table;
    QCOMPARE(MDAUnpackN(table.array, image.constData(), uint32_t(image.size())), int(MDX_OK));
    QVERIFY(MDAUnpackN(table.array, image.constData(), uint32_t(image.size() - 1)) != MDX_OK);
    QVERIFY(!editor->m_cutPending);
    QCOMPARE(host.writes().take(), QString());
}

void TestMenuClipboard::theCutBytes() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"form"});
    editor.action("actCutMenuElement")->trigger();
    QVERIFY(payload().startsWith("1\nform;\n"));
}

void TestMenuClipboard::thePackedTableHasTheRecordsWithTwoKeys() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"grafiki", "shema"});
    editor->on_actCopyMenuElement_triggered();
    const QByteArray image = payload().mid(payload().indexOf('\n', 2) + 1);
    CMDArray table;
    QCOMPARE(MDAUnpack(table.array, image.constData()), int(MDX_OK));
    QCOMPARE(table.array->keyCount, 2u);
    QCOMPARE(table.array->fieldCount, editor->m_tabMenu.array->fieldCount);
    QCOMPARE(keysInOrder(table.array, 0),
             QStringList({"calc", "form", "glubzhe", "grafiki", "shema", "trend"}));
    QCOMPARE(keysInOrder(table.array, 1),
             QStringList({"shema", "grafiki", "form", "trend", "calc", "glubzhe"}));
    // Key 0 is unique, key 1 is not.
    CMDArray twin;
    QCOMPARE(MDAUnpack(twin.array, image.constData()), int(MDX_OK));
    MDRData* record = MDARecNew(twin.array);
    twin.SetValF(record, "KeyLink", orvo::textVar("calc"));
    QCOMPARE(twin.RecPost(record), 0u);
    twin.SetValF(record, "KeyLink", orvo::textVar("calc2"));
    twin.SetValF(record, "parent", orvo::textVar("grafiki"));
    twin.SetValF(record, "order_", orvo::integerVar(1000));
    QCOMPARE(twin.RecPost(record), 1u);
}

void TestMenuClipboard::thePackedRecordsAreWholeAndUnflagged() {
    TestStore store;
    fillPlant(store);
    store.insert("Menu", {{"KeyLink", QString("full")},
                          {"parent", QString("grafiki")},
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
    editor.selectElements({"full", "trend"});
    editor->on_actCopyMenuElement_triggered();
    MenuPayload read;
    QVERIFY(read.read(payload()));
    for (const char* key : {"full", "trend"}) {
        const MDRData* source = orvo::seekKey(editor->m_tabMenu, key);
        const MDRData* copy = orvo::seekKey(read.table, key);
        QVERIFY(source && copy);
        for (int field = 0; field < read.table.array->fieldCount; ++field) {
            QCOMPARE(orvo::isNull(copy, field), orvo::isNull(source, field));
            QCOMPARE(orvo::textOf(copy, field), orvo::textOf(source, field));
            QCOMPARE(orvo::integerOf(copy, field), orvo::integerOf(source, field));
            uint8_t user = 0;
            QCOMPARE(MDRIsUser(MDRFldByNum(read.table.array, field), copy, &user), int(MDX_OK));
            QCOMPARE(int(user), 1);
        }
        QCOMPARE(orvo::mdx::recordFlags(copy), 0u);
    }
}

void TestMenuClipboard::aFolderBringsAllBelowIt() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"grafiki"});
    editor->on_actCopyMenuElement_triggered();
    MenuPayload read;
    QVERIFY(read.read(payload()));
    QCOMPARE(read.keys, QStringList("grafiki"));
    // Folders precede what they hold; siblings stand in their order.
    QStringList entered;
    for (uint32_t i = 0; i < orvo::mdx::postedCount(read.table.array); ++i)
        entered << orvo::textOf(orvo::mdx::postedRecord(read.table.array, i), "KeyLink");
    QCOMPARE(entered, QStringList({"grafiki", "trend", "calc", "glubzhe", "form"}));
}

void TestMenuClipboard::copyingTheRootRowLeavesTheClipboard() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    QGuiApplication::clipboard()->setText("before");
    editor.selectElements({"MenuRootNode"});
    editor->on_actCopyMenuElement_triggered();
    editor->on_actCutMenuElement_triggered();
    QCOMPARE(QGuiApplication::clipboard()->text(), QString("before"));
    QVERIFY(!editor->m_cutPending);
}

void TestMenuClipboard::withoutASelectionTheClipboardStays() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    QGuiApplication::clipboard()->setText("before");
    editor.selectElements({});
    editor->on_actCutMenuElement_triggered();
    QCOMPARE(QGuiApplication::clipboard()->text(), QString("before"));
    QVERIFY(!editor->m_cutPending);
}

void TestMenuClipboard::aRowWithoutARecordGivesItsKeyAlone() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor->m_tabMenu.RecDel(orvo::seekKey(editor->m_tabMenu, "calc"));
    QGuiApplication::clipboard()->setText("before");
    editor.selectElements({"calc"});
    editor->on_actCopyMenuElement_triggered();
    QCOMPARE(QGuiApplication::clipboard()->text(), QString("before"));
    editor.selectElements({"calc", "trend"});
    editor->on_actCopyMenuElement_triggered();
    MenuPayload read;
    QVERIFY(read.read(payload()));
    QCOMPARE(read.keys.size(), 2);
    QCOMPARE(orvo::recordCount(read.table), 1);
    editor.makeCurrent("glubzhe");
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(host.writes().calls.size(), 1);
    QCOMPARE(host.writes().calls[0].records.size(), 1);
}

void TestMenuClipboard::aCircleInTheTableIsCopiedOnce() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    // Known to the table before the tree: the upper folder now hangs below the lower one.
    MDRData* record = editor->m_tabMenu.RecEdit(orvo::seekKey(editor->m_tabMenu, "grafiki"));
    editor->m_tabMenu.SetValF(record, "parent", orvo::textVar("glubzhe"));
    QCOMPARE(editor->m_tabMenu.RecPost(record), 1u);
    editor.selectElements({"grafiki"});
    editor->on_actCopyMenuElement_triggered();
    MenuPayload read;
    QVERIFY(read.read(payload()));
    QCOMPARE(keysInOrder(read.table.array, 0),
             QStringList({"calc", "form", "glubzhe", "grafiki", "trend"}));
    // The circle is pasted once too.
    editor.makeCurrent("MenuRootNode");
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(host.writes().calls.size(), 1);
    QCOMPARE(host.writes().calls[0].records.size(), 5);
}

void TestMenuClipboard::aCutChangesNothing() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    const QString before = shownMenu(editor);
    editor.selectElements({"grafiki"});
    editor->on_actCutMenuElement_triggered();
    host.deliver(*editor.module);
    QCOMPARE(shownMenu(editor), before);
    QCOMPARE(host.writes().take(), QString());
}

// A cut on the clipboard -------------------------------------------------------------------------

void TestMenuClipboard::theFirstCutSurvivesInItsEditor() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    QVERIFY(!editor->m_cutPending);
    editor.selectElements({"form"});
    editor->on_actCutMenuElement_triggered();
    QCoreApplication::processEvents();
    QVERIFY(payload().startsWith("1\nform;\n"));
    // The change has been seen, so the next cut that comes along is a foreign one.
    QVERIFY(!editor->m_cutPending);
}

void TestMenuClipboard::theNextCutSurvivesToo() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    for (const char* key : {"form", "trend", "form"}) {
        editor.selectElements({key});
        editor->on_actCutMenuElement_triggered();
        QCoreApplication::processEvents();
        QVERIFY(payload().startsWith("1\n" + QByteArray(key) + ";\n"));
    }
}

void TestMenuClipboard::aSecondEditorTakesACutAway() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    TestHost otherHost(store);
    OperationsEditor other(otherHost);
    editor.openDesck("armop");
    editor.selectElements({"form"});
    editor->on_actCutMenuElement_triggered();
    QCoreApplication::processEvents();
    QVERIFY(payload().isEmpty());
    editor.makeCurrent("grafiki");
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(host.writes().take(), QString());
    QVERIFY(editor->element("form").isValid());
}

void TestMenuClipboard::aCopyIsLeftAlone() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    TestHost otherHost(store);
    OperationsEditor other(otherHost);
    editor.openDesck("armop");
    editor.selectElements({"form"});
    editor->on_actCopyMenuElement_triggered();
    QCoreApplication::processEvents();
    QVERIFY(payload().startsWith("0\nform;\n"));
    putAgain();
    QCoreApplication::processEvents();
    QVERIFY(payload().startsWith("0\nform;\n"));
}

void TestMenuClipboard::aCutOfAnotherProgramIsTakenAway_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("taken");
    QTest::newRow("a cut") << QByteArray("1\nform;\nX") << true;
    QTest::newRow("any other number") << QByteArray("7\nform;\nX") << true;
    QTest::newRow("a negative number") << QByteArray("-1\nform;\nX") << true;
    QTest::newRow("a number without a line") << QByteArray("1") << true;
    QTest::newRow("a copy") << QByteArray("0\nform;\nX") << false;
    QTest::newRow("no number") << QByteArray("one\nform;\nX") << false;
    QTest::newRow("an empty line") << QByteArray("\nform;\nX") << false;
    QTest::newRow("a number that is none") << QByteArray("99999999999999999999\nform;\nX") << false;
    QTest::newRow("a cut on the second line") << QByteArray("0\n1\nX") << false;
}

void TestMenuClipboard::aCutOfAnotherProgramIsTakenAway() {
    QFETCH(QByteArray, bytes);
    QFETCH(bool, taken);
    TestStore store;
    TestHost host(store);
    OperationsEditor editor(host);
    putOnClipboard(bytes);
    QCoreApplication::processEvents();
    QCOMPARE(payload(), taken ? QByteArray() : bytes);
}

void TestMenuClipboard::otherFormatsAreLeftAlone() {
    TestStore store;
    TestHost host(store);
    OperationsEditor editor(host);
    editor->m_cutPending = true;
    QGuiApplication::clipboard()->setText("1\nform;\n");
    QCoreApplication::processEvents();
    QCOMPARE(QGuiApplication::clipboard()->text(), QString("1\nform;\n"));
    QVERIFY(editor->m_cutPending); // only a cut that it sees uses this up
}

void TestMenuClipboard::anotherContentLosesTheCut() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"form"});
    editor->on_actCutMenuElement_triggered();
    QGuiApplication::clipboard()->setText("else");
    editor.makeCurrent("grafiki");
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(host.writes().take(), QString());
    QVERIFY(editor->element("form").isValid());
}

// Pasting ----------------------------------------------------------------------------------------

void TestMenuClipboard::aPastedElementIsTheLastInItsFolder() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"shema"});
    editor->on_actCopyMenuElement_triggered();
    editor.makeCurrent("grafiki");
    QVERIFY(editor.action("actPasteMenuElement")->isEnabled());
    editor.action("actPasteMenuElement")->trigger();
    QCOMPARE(host.writes().take(),
             QString("Menu\n"
                     "  +#1 parent='grafiki' FolderKey='armop' caption='Схема' order_=2000 "
                     "ico=NULL separator=NULL oneCopy=NULL MenuResourceKey='rform' params=NULL\n"));
    QCOMPARE(editor->m_menuModel->rowCount(editor->element("grafiki")), 3);
    host.deliver(*editor.module);
    QCOMPARE(editor->m_menuModel->rowCount(editor->element("grafiki")), 4);
    QCOMPARE(host.failures, QStringList());
}

void TestMenuClipboard::pastingAtTheTop() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"calc", "glubzhe"});
    editor->on_actCopyMenuElement_triggered();
    editor.makeCurrent("MenuRootNode");
    editor->on_actPasteMenuElement_triggered();
    // An element has the empty text for the top, a folder NULL.
    const QString rest = " ico=NULL separator=NULL oneCopy=NULL";
    QCOMPARE(host.writes().take(),
             "Menu\n"
             "  +#1 parent='' FolderKey='armop' caption='Расчёт' order_=2000" +
                 rest +
                 " MenuResourceKey='rcalc' params=NULL\n"
                 "  +#2 parent=NULL FolderKey='armop' caption='Глубже' order_=2000" +
                 rest +
                 " params=NULL\n"
                 "  +#3 parent='#2' FolderKey='armop' caption='Котёл' order_=0" +
                 rest + " MenuResourceKey='rform' params=NULL\n");
    host.deliver(*editor.module);
    QVERIFY2(shownMenu(editor).contains("\n  Глубже\n    Котёл\n"), qPrintable(shownMenu(editor)));
    QVERIFY(shownMenu(editor).contains("\n  Расчёт\n"));
    QCOMPARE(host.failures, QStringList());
}

void TestMenuClipboard::pastingIntoAnotherDesktop() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"glubzhe"});
    editor->on_actCopyMenuElement_triggered();
    editor.openDesck("armpech");
    editor.makeCurrent("MenuRootNode");
    editor->on_actPasteMenuElement_triggered();
    const QString rest = " ico=NULL separator=NULL oneCopy=NULL";
    QCOMPARE(host.writes().take(),
             "Menu\n"
             "  +#1 parent=NULL FolderKey='armpech' caption='Глубже' order_=0" +
                 rest +
                 " params=NULL\n"
                 "  +#2 parent='#1' FolderKey='armpech' caption='Котёл' order_=0" +
                 rest + " MenuResourceKey='rform' params=NULL\n");
    host.deliver(*editor.module);
    QCOMPARE(shownMenu(editor), QString("Меню\n  Глубже\n    Котёл\n"));
}

void TestMenuClipboard::everyPasteMakesNewKeys() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"glubzhe"});
    editor->on_actCopyMenuElement_triggered();
    editor.makeCurrent("grafiki");
    editor->on_actPasteMenuElement_triggered();
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(host.writes().calls.size(), 2);
    const QString written = host.writes().take();
    QVERIFY2(written.contains("+#1 ") && written.contains("+#2 ") && written.contains("+#3 ") &&
                 written.contains("+#4 parent='#3'"),
             qPrintable(written));
    QCOMPARE(host.failures, QStringList());
}

void TestMenuClipboard::allChosenElementsGetTheOrderOfTheLastChild() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"trend", "calc"});
    editor->on_actCopyMenuElement_triggered();
    editor.makeCurrent("glubzhe"); // its last child has the order 0
    editor->on_actPasteMenuElement_triggered();
    const QString written = host.writes().take();
    QCOMPARE(written.count("parent='glubzhe'"), 2);
    QCOMPARE(written.count("order_=0 "), 2);
}

void TestMenuClipboard::aPastedFolderKeepsWhatLiesBelow() {
    TestStore store;
    fillPlant(store);
    store.update("Menu", {{"KeyLink", QString("grafiki")},
                          {"ico", QString("f.png")},
                          {"separator", true},
                          {"oneCopy", false},
                          {"params", QString("p")}});
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"grafiki"});
    editor->on_actCopyMenuElement_triggered();
    editor.openDesck("armpech");
    editor.makeCurrent("MenuRootNode");
    editor->on_actPasteMenuElement_triggered();
    const QString rest = " ico=NULL separator=NULL oneCopy=NULL";
    QCOMPARE(host.writes().take(),
             "Menu\n"
             "  +#1 parent=NULL FolderKey='armpech' caption='Графики' order_=0 ico='f.png' "
             "separator=true oneCopy=false params='p'\n"
             "  +#2 parent='#1' FolderKey='armpech' caption='Тренд' order_=0" +
                 rest +
                 " MenuResourceKey='rtrend' params=NULL\n"
                 "  +#3 parent='#1' FolderKey='armpech' caption='Расчёт' order_=1000" +
                 rest +
                 " MenuResourceKey='rcalc' params=NULL\n"
                 "  +#4 parent='Глубже' FolderKey='armpech' order_=2000" +
                 rest +
                 " params=NULL\n"
                 "  +#5 parent='#4' FolderKey='armpech' caption='Котёл' order_=0" +
                 rest + " MenuResourceKey='rform' params=NULL\n");
    QCOMPARE(host.failures, QStringList());
}

void TestMenuClipboard::subFoldersCarryTheirCaptionAsParent() {
    TestStore store;
    fillPlant(store);
    addElement(store, "armop", "dno", "glubzhe", "", 7);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"glubzhe"});
    editor->on_actCopyMenuElement_triggered();
    editor.makeCurrent("MenuRootNode");
    editor->on_actPasteMenuElement_triggered();
    const QString written = host.writes().take();
    // The chosen folder has both as they should be; a sub-folder without a caption has neither.
    QVERIFY2(written.contains("+#1 parent=NULL FolderKey='armop' caption='Глубже'"),
             qPrintable(written));
    QVERIFY2(written.contains("+#3 parent='' FolderKey='armop' order_=7") ||
                 written.contains("+#3 parent=NULL FolderKey='armop' order_=7"),
             qPrintable(written));
    QCOMPARE(host.failures, QStringList());
}

void TestMenuClipboard::elementsWithoutTheirResourceStayOut() {
    TestStore store;
    fillPlant(store);
    addElement(store, "armop", "gone", "glubzhe", "Нет его", 5, "nosuch");
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"glubzhe", "calc"});
    editor->on_actCopyMenuElement_triggered();
    editor.makeCurrent("MenuRootNode");
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(host.writes().calls.size(), 1);
    QCOMPARE(host.writes().calls[0].records.size(), 3);
    QVERIFY(!host.writes().take().contains("Нет его"));
    // A chosen one is dropped too, and then nothing is left to write.
    editor.selectElements({"propal"});
    editor->on_actCopyMenuElement_triggered();
    editor.makeCurrent("MenuRootNode");
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(host.writes().take(), QString());
}

void TestMenuClipboard::pastingOnAnElementTakesItAsParent() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"shema"});
    editor->on_actCopyMenuElement_triggered();
    editor.makeCurrent("calc");
    editor->on_actPasteMenuElement_triggered();
    QVERIFY(host.writes().take().contains("+#1 parent='calc' FolderKey='armop' caption='Схема' "
                                          "order_=0"));
}

void TestMenuClipboard::anElementWithoutACaptionIsPlacedAsChosen() {
    TestStore store;
    fillPlant(store);
    addElement(store, "armop", "nemoy", "grafiki", "", 9000, "rtrend");
    store.sql("UPDATE \"Menu\" SET \"caption\" = NULL WHERE \"KeyLink\" = 'nemoy'");
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"nemoy"});
    editor->on_actCopyMenuElement_triggered();
    editor.makeCurrent("glubzhe");
    editor->on_actPasteMenuElement_triggered();
    QVERIFY(host.writes().take().contains("+#1 parent='glubzhe' FolderKey='armop' caption='' "
                                          "order_=0"));
}

void TestMenuClipboard::parentsCompareWithoutCase() {
    TestStore store;
    fillPlant(store);
    addElement(store, "armop", "vnutri", "GLUBZHE", "Внутри", 5, "rtrend");
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"glubzhe"});
    editor->on_actCopyMenuElement_triggered();
    editor.makeCurrent("MenuRootNode");
    editor->on_actPasteMenuElement_triggered();
    const QString written = host.writes().take();
    QVERIFY2(written.contains("+#3 parent='#1' FolderKey='armop' caption='Внутри'"),
             qPrintable(written));
}

void TestMenuClipboard::keysWithoutARecordAreSkipped() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"shema"});
    editor->on_actCopyMenuElement_triggered();
    QByteArray bytes = payload();
    putOnClipboard(bytes.replace("0\nshema;\n", "0\nnosuch;;shema;calc;\n"));
    editor.makeCurrent("grafiki");
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(host.writes().calls.size(), 1);
    QCOMPARE(host.writes().calls[0].records.size(), 1);
}

void TestMenuClipboard::aCopyIsPastedInAnotherClient() {
    TestStore store;
    fillPlant(store);
    TestStore otherStore;
    addDesck(otherStore, "f", "", "Другой цех", true);
    addDesck(otherStore, "d", "f", "Другой стол", false);
    addResource(otherStore, "rcalc", 2, "Calc");
    TestHost host(store);
    OperationsEditor editor(host);
    TestHost otherHost(otherStore);
    OperationsEditor other(otherHost);
    editor.openDesck("armop");
    editor.selectElements({"grafiki"});
    editor->on_actCopyMenuElement_triggered();
    other.openDesck("d");
    other.makeCurrent("MenuRootNode");
    other->on_actPasteMenuElement_triggered();
    // Of the resources that client knows one.
    QCOMPARE(otherHost.writes().calls.size(), 1);
    QCOMPARE(otherHost.writes().calls[0].records.size(), 3);
    const QString written = otherHost.writes().take();
    QVERIFY(written.contains("FolderKey='d' caption='Расчёт'"));
    QVERIFY(!written.contains("Тренд"));
    QCOMPARE(host.writes().take(), QString());
}

void TestMenuClipboard::withoutATargetNothingIsPasted() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"shema"});
    editor->on_actCopyMenuElement_triggered();
    editor->m_currentMenuKey = "nosuch";
    editor->on_actPasteMenuElement_triggered();
    // A folder of desktops shows no menu at all.
    editor.openDesck("ceh");
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(host.writes().take(), QString());
}

void TestMenuClipboard::theClipboardStaysAfterAPaste() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"shema"});
    editor->on_actCutMenuElement_triggered();
    const QByteArray before = payload();
    QVERIFY(!before.isEmpty());
    editor.makeCurrent("grafiki");
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(payload(), before);
}

void TestMenuClipboard::thePastedRowBecomesCurrent() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"shema"});
    editor->on_actCopyMenuElement_triggered();
    editor.makeCurrent("glubzhe");
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(editor->m_currentMenuKey, QString("glubzhe"));
    host.deliver(*editor.module);
    const QModelIndex current = editor.view("tvMenu")->currentIndex();
    QCOMPARE(current.data().toString(), QString("Схема"));
    QCOMPARE(current.parent(), editor->element("glubzhe"));
}

// Cutting ----------------------------------------------------------------------------------------

void TestMenuClipboard::aPastedCutDeletesItsSource() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"trend", "calc"});
    editor->on_actCutMenuElement_triggered();
    editor.makeCurrent("MenuRootNode");
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(host.writes().calls.size(), 2);
    QCOMPARE(host.writes().calls[0].records.size(), 2);
    QCOMPARE(host.writes().calls[1].table, QString("Menu"));
    QCOMPARE(host.writes().calls[1].records, QStringList({"-trend", "-calc"}));
    host.deliver(*editor.module);
    QVERIFY(!editor->element("trend").isValid());
    QVERIFY(!editor->element("calc").isValid());
    QVERIFY2(shownMenu(editor).contains("\n  Тренд\n"), qPrintable(shownMenu(editor)));
    QCOMPARE(host.failures, QStringList());
}

void TestMenuClipboard::aCutFolderIsDeletedWhole() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"grafiki"});
    editor->on_actCutMenuElement_triggered();
    editor.makeCurrent("MenuRootNode");
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(host.writes().calls.size(), 2);
    QCOMPARE(host.writes().calls[1].records,
             QStringList({"-grafiki", "-trend", "-calc", "-glubzhe", "-form"}));
}

void TestMenuClipboard::aCutOfAnotherDesktopIsDeleted() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"glubzhe"});
    editor->on_actCutMenuElement_triggered();
    editor.openDesck("armpech");
    editor.makeCurrent("MenuRootNode");
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(host.writes().calls.size(), 2);
    QCOMPARE(host.writes().calls[1].records, QStringList({"-glubzhe", "-form"}));
    host.deliver(*editor.module);
    editor.openDesck("armop");
    QVERIFY(!editor->element("glubzhe").isValid());
    QVERIFY(!editor->element("form").isValid());
}

void TestMenuClipboard::aCutElementWithoutItsResourceIsDeletedAllTheSame() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"propal"});
    editor->on_actCutMenuElement_triggered();
    editor.makeCurrent("grafiki");
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(host.writes().take(), QString("Menu\n  -propal\n"));
}

void TestMenuClipboard::aSecondPasteOfACutDeletesNothingMore() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"trend"});
    editor->on_actCutMenuElement_triggered();
    editor.makeCurrent("MenuRootNode");
    editor->on_actPasteMenuElement_triggered();
    host.deliver(*editor.module);
    editor.makeCurrent("MenuRootNode");
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(host.writes().calls.size(), 4);
    host.deliver(*editor.module);
    QCOMPARE(shownMenu(editor).count("\n  Тренд\n"), 2);
    QCOMPARE(host.failures, QStringList());
}

void TestMenuClipboard::aRefusedPasteStillDeletesTheCut() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    OperationsEditor editor(host);
    editor.openDesck("armop");
    editor.selectElements({"trend"});
    editor->on_actCutMenuElement_triggered();
    editor.makeCurrent("MenuRootNode");
    host.writes().refusedTable = "Menu";
    editor->on_actPasteMenuElement_triggered();
    QCOMPARE(host.writes().calls.size(), 2);
    QCOMPARE(host.writes().calls[1].records, QStringList("-trend"));
    QVERIFY(!editor.isAsking());
}

QTEST_MAIN(TestMenuClipboard)
#include "tst_menu_clipboard.moc"
