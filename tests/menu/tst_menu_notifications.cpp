// What notifications of the server do: the table first, then the tree, then what is current.
#include "tests/menu/LiveProbe.h"

#include <random>

using namespace orvo::test;
using orvo::menu::DesckColumn;
using orvo::menu::MenuColumn;

namespace {

QString inTable(const CMDArray& table, const char* key, const char* field) {
    const MDRData* record = orvo::seekKey(table, QString::fromLatin1(key));
    return record ? orvo::textOf(record, field) : QStringLiteral("no record");
}

/// Two more desktops in the folder "ceh", so that there are places to move to.
void moreDesktops(TestStore& store) {
    addDesck(store, "armb", "ceh", "Б стол", false);
    addDesck(store, "armv", "ceh", "В стол", false);
}

} // namespace

class TestMenuNotifications : public QObject {
    Q_OBJECT
private slots:
    // Which notifications are looked at
    void everyHandlingHasItsEventAndTable_data();
    void everyHandlingHasItsEventAndTable();
    void tableNamesCompareWithoutCase();
    void blocksOfAnotherWidthAreIgnored();
    void aSourceWithoutACommaNamesNoTable();
    void aModuleWhoseStartFailedSurvivesEverything();

    // Updates of desktops
    void anUpdatedDesktopIsRewrittenMovedAndMadeCurrent();
    void anUpdatedTopFolderMovesAmongTheTopRows();
    void anUpdatedDesktopInItsPlaceShowsItsMenuAnew();
    void aDesktopStaysUnderItsOldFolder();
    void anUpdateOfAnUnknownDesktopDoesNothing();
    void aDesktopWithoutARowIsUpdatedInTheTable();

    // Updates of elements
    void anUpdatedElementInItsPlaceRefreshesThePassport();
    void anotherElementMovesAndTheOwnStaysCurrent();
    void theOwnElementMovesAndStaysCurrent();
    void anElementMovesToAnotherParentWithAllBelowIt();
    void anElementWithoutAParentMovesToTheTop();
    void anElementOfAnUnknownParentWaitsInItsPlace();
    void anElementIsNeverMovedBelowItself();
    void anElementOfAnotherDesktopIsNotUpdated();
    void onlyTheMarkedFieldsAreMerged();
    void withoutACurrentElementAnUpdateShowsTheTop();

    // Deletions
    void deletingTheOnlyDesktopSelectsTheFolder();
    void deletingTheLastSiblingSelectsTheNewLast();
    void deletingAMiddleSiblingSelectsTheNext();
    void deletingAnotherRowKeepsTheSelection();
    void deletingAFolderTakesItsRowsAndNotTheirRecords();
    void deletingAnAncestorOfTheCurrentRowSelectsTheNeighbour();
    void deletedElementsLeaveLikeDesktops();
    void anUnknownKeyDeletesNothing();

    // Insertions
    void anInsertedDesktopTakesItsPlaceAndTheSelection();
    void anInsertedTopRowWaitsForTheNextStart();
    void anInsertedDesktopOfAnUnknownFolderEntersTheTableOnly();
    void theOwnNewDesktopMovesToItsPlace();
    void aSecondInsertionChangesNothing();
    void anInsertedElementTakesItsPlaceAndTheSelection();
    void anInsertedElementWithoutAParentStandsAtTheTop();
    void anInsertedElementOfAnUnknownParentEntersTheTableOnly();
    void anElementOfAnotherDesktopLeavesNoTrace();
    void theOwnNewElementKeepsItsPlace();
    void anInsertedResourceNamesNewElements();

    // Input that is not what it should be
    void anInsertionWithoutFieldsMakesARecordOfTheKeyAlone();
    void anUpdateWithoutFieldsChangesNothing();
    void aRecordCutShortChangesNothingElse_data();
    void aRecordCutShortChangesNothingElse();
    void damagedRecordsNeverBreakTheWindow();
    void anEmptyKeyTouchesNoRow();

    // Edits that are open
    void aRefreshOfTheCurrentRowSavesAnOpenEdit();
    void aDeletedFolderEndsTheEditOfTheNewRowBelowIt();
    void aDeletedRowEndsItsRenaming();
    void aDesktopOfAnotherClientSavesTheOpenPlaceholder();
    void aBurstIsTakenInOrder();
};

// Which notifications are looked at --------------------------------------------------------------

void TestMenuNotifications::everyHandlingHasItsEventAndTable_data() {
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("table");
    QTest::addColumn<QString>("merged");
    const auto row = [](int code, const char* table, const char* merged) {
        QTest::addRow("%d %s", code, table) << code << QByteArray(table) << QString(merged);
    };
    row(602, "MenuFolder", "update");
    row(602, "Menu", "update");
    row(602, "MenuResource", "");
    row(602, "MenuResourceFolder", "");
    row(603, "MenuFolder", "delete");
    row(603, "Menu", "delete");
    row(603, "MenuResource", "");
    row(603, "MenuResourceFolder", "");
    row(601, "MenuFolder", "insert");
    row(601, "Menu", "insert");
    row(601, "MenuResource", "insert");
    row(601, "MenuResourceFolder", "");
    for (const char* table : {"MenuFolder", "Menu", "MenuResource"}) {
        row(631, table, "");
        row(600, table, "");
        row(604, table, "");
        row(0, table, "");
    }
    for (const int code : {601, 602, 603}) {
        row(code, "Users", "");
        row(code, "MenuFolderX", "");
        row(code, "NoSuch", "");
        row(code, "", "");
    }
}

void TestMenuNotifications::everyHandlingHasItsEventAndTable() {
    QFETCH(int, code);
    QFETCH(QByteArray, table);
    QFETCH(QString, merged);
    Live live([](TestStore& store) {
        store.insert("MenuResourceFolder",
                     {{"KeyLink", QString("known")}, {"type_", 1}, {"caption", QString("старое")}});
        addDesck(store, "known", "ceh", "старое", false);
        addResource(store, "known", 1, "старое");
        addElement(store, "armop", "known", "", "старое", 5000, "rform");
    });
    const auto state = [&] {
        QStringList lines;
        for (const CMDArray* records :
             {&live->m_tabFolder, &live->m_tabMenu, &live->m_tabResource, &live->m_tabResFolder})
            for (const char* key : {"known", "fresh"})
                lines << inTable(*records, key, "caption");
        return lines.join('|') + live.desckText() + live.menuText();
    };
    const QString before = state();
    // A record that fits each of the tables: their fields differ in number and order.
    const bool isFolder = table.startsWith("MenuF");
    const bool isElement = table == "Menu";
    const QByteArray raw = isElement ? rawRecordOf("Menu", {{"caption", QString("новое")},
                                                            {"FolderKey", QString("armop")},
                                                            {"parent", QString("grafiki")}})
                           : isFolder ? rawRecordOf("MenuFolder", {{"caption", QString("новое")},
                                                                   {"ParentKey", QString("ceh")},
                                                                   {"order_", QString("2000")}})
                           : table == "MenuResource"
                               ? rawRecordOf("MenuResource", {{"caption", QString("новое")}})
                               : rawRecordOf("MenuResourceFolder", {{"caption", QString("новое")}});
    Notice notice{code, table, code == 601 ? "fresh" : "known", raw};
    MDXCliParam* block = notice.make();
    QVERIFY(live->MessageData(block));
    live->m_app->m_session->PrmFree(block);
    if (merged.isEmpty()) {
        QCOMPARE(state(), before);
        return;
    }
    QVERIFY(state() != before);
    const CMDArray& records = isElement  ? live->m_tabMenu
                              : isFolder ? live->m_tabFolder
                                         : live->m_tabResource;
    QCOMPARE(inTable(records, "known", "caption"), merged == "update"   ? QString("новое")
                                                   : merged == "delete" ? QString("no record")
                                                                        : QString("старое"));
    QCOMPARE(inTable(records, "fresh", "caption"),
             merged == "insert" ? QString("новое") : QString("no record"));
}

void TestMenuNotifications::tableNamesCompareWithoutCase() {
    Live live;
    notify(*live.editor.module,
           {602, "mENU", "shema", rawRecordOf("Menu", {{"caption", QString("Новая")}})});
    QCOMPARE(live.cell("shema", 0), QVariant("Новая"));
    notify(*live.editor.module, {602, "MENUFOLDER", "sklad",
                                 rawRecordOf("MenuFolder", {{"caption", QString("Новый")}})});
    QCOMPARE(live->desck("sklad").data(), QVariant("Новый"));
}

void TestMenuNotifications::blocksOfAnotherWidthAreIgnored() {
    Live live;
    const QString before = live.menuText();
    for (const int width : {8, 9, 11}) {
        Notice notice{603, "Menu", "shema", {}};
        notice.fieldCount = width;
        notify(*live.editor.module, notice);
        QCOMPARE(live.menuText(), before);
    }
    QVERIFY(live->MessageData(nullptr));
    notify(*live.editor.module, {603, "Menu", "shema", {}});
    QVERIFY(live.menuText() != before);
}

void TestMenuNotifications::aSourceWithoutACommaNamesNoTable() {
    Live live;
    const QString before = live.menuText();
    for (const char* source : {"NCI:Menu", "Menu", "", "Menu,x", "NCI,Menu,"}) {
        Notice notice{603, "Menu", "shema", {}};
        notice.source = source;
        notify(*live.editor.module, notice);
        QCOMPARE(live.menuText(), before);
    }
    Notice notice{603, "Menu", "shema", {}};
    notice.source = "1234Menu,whatever,else";
    notify(*live.editor.module, notice);
    QVERIFY(live.menuText() != before);
}

void TestMenuNotifications::aModuleWhoseStartFailedSurvivesEverything() {
    TestStore store;
    fillPlant(store);
    TestHost host(store);
    store.sql("ALTER TABLE \"MenuFolder\" RENAME TO \"gone\"");
    EditorUnderTest<LiveProbe> editor(host, "Menu");
    QVERIFY(!editor->ModuleStart());
    editor->show();
    for (const char* table : {"Menu", "MenuFolder", "MenuResource"})
        for (const int code : {601, 602, 603, 631}) {
            notify(*editor.module,
                   {code, table, "shema", rawRecordOf(table, {{"caption", QString("х")}})});
            notify(*editor.module, {code, table, "neu", {}});
        }
    for (QAction* action : editor.module->findChildren<QAction*>())
        action->trigger();
    QTest::mouseClick(editor->m_btnSave, Qt::LeftButton);
    QTest::mouseClick(editor->m_btnCancel, Qt::LeftButton);
    editor->on_poplist_OK_Pressed();
    QCOMPARE(editor->m_editMode, int32_t(MenuProbe::NoEdit));
    QVERIFY(host.writes().take().isEmpty());
}

// Updates of desktops ----------------------------------------------------------------------------

void TestMenuNotifications::anUpdatedDesktopIsRewrittenMovedAndMadeCurrent() {
    Live live(moreDesktops);
    live.openDesck("armpech");
    QCOMPARE(live.below(live->desck("ceh")), QString("pech armop armb armv"));
    live.store.update("MenuFolder", {{"KeyLink", QString("armop")}, {"caption", QString("Бюро")}});
    live.deliver();
    QCOMPARE(live.below(live->desck("ceh")), QString("pech armb armop armv"));
    QCOMPARE(live->desck("armop").data(), QVariant("Бюро"));
    QCOMPARE(inTable(live->m_tabFolder, "armop", "caption"), QString("Бюро"));
    QCOMPARE(live->desck("armop").siblingAtColumn(DesckColumn::Order).data(), QVariant("2000"));
    QCOMPARE(live.currentDesck(), QString("armop"));
    QVERIFY(live->element("shema").isValid());
}

void TestMenuNotifications::anUpdatedTopFolderMovesAmongTheTopRows() {
    Live live;
    QCOMPARE(live.below(live->desck("mainnode")), QString("sklad ceh obshiy"));
    live.store.update("MenuFolder", {{"KeyLink", QString("sklad")}, {"caption", QString("Яма")}});
    live.deliver();
    QCOMPARE(live.below(live->desck("mainnode")), QString("ceh sklad obshiy"));
    QCOMPARE(live.currentDesck(), QString("sklad"));
    QCOMPARE(live.below(live->desck("ceh")), QString("pech armop"));
}

void TestMenuNotifications::anUpdatedDesktopInItsPlaceShowsItsMenuAnew() {
    Live live;
    // A change of the menu that no notification of this window has told yet.
    addElement(live.store, "armop", "neu", "", "Новый", 9000, "rform");
    notify(*live.editor.module,
           {602, "MenuFolder", "armop", rawRecordOf("MenuFolder", {{"caption", QString("Бюро")}})});
    QCOMPARE(live.currentDesck(), QString("armop"));
    QVERIFY(live->element("neu").isValid());
    QVERIFY(!live.menuView()->currentIndex().isValid());
}

void TestMenuNotifications::aDesktopStaysUnderItsOldFolder() {
    Live live(moreDesktops);
    addDesck(live.store, "polka", "sklad", "Яполка", false);
    live.deliver();
    live.store.update("MenuFolder",
                      {{"KeyLink", QString("armv")}, {"ParentKey", QString("sklad")}});
    live.deliver();
    // The first of the new siblings, and so the first among the old ones.
    QCOMPARE(live.below(live->desck("ceh")), QString("armv pech armop armb"));
    QCOMPARE(live.below(live->desck("sklad")), QString("polka"));
    QCOMPARE(live->desck("armv").siblingAtColumn(DesckColumn::ParentKey).data(), QVariant("sklad"));
}

void TestMenuNotifications::anUpdateOfAnUnknownDesktopDoesNothing() {
    Live live;
    const QString before = live.desckText();
    notify(*live.editor.module,
           {602, "MenuFolder", "neu", rawRecordOf("MenuFolder", {{"caption", QString("Бюро")}})});
    QCOMPARE(live.desckText(), before);
    QCOMPARE(inTable(live->m_tabFolder, "neu", "caption"), QString("no record"));
    QCOMPARE(live.currentDesck(), QString("armop"));
}

void TestMenuNotifications::aDesktopWithoutARowIsUpdatedInTheTable() {
    Live live([](TestStore& store) { addDesck(store, "lost", "nosuch", "Потерян", false); });
    const QString before = live.desckText();
    live.store.update("MenuFolder", {{"KeyLink", QString("lost")}, {"caption", QString("Бюро")}});
    live.deliver();
    QCOMPARE(live.desckText(), before);
    QCOMPARE(inTable(live->m_tabFolder, "lost", "caption"), QString("Бюро"));
    QCOMPARE(live.currentDesck(), QString("armop"));
}

// Updates of elements ----------------------------------------------------------------------------

void TestMenuNotifications::anUpdatedElementInItsPlaceRefreshesThePassport() {
    Live live;
    live.makeCurrent("calc");
    live.store.update("Menu", {{"KeyLink", QString("calc")},
                               {"caption", QString("Новый")},
                               {"ico", QString("pump.png")},
                               {"params", QString("-v")},
                               {"oneCopy", true}});
    live.deliver();
    QCOMPARE(live.currentElement(), QString("calc"));
    QCOMPARE(live.passport("name"), QVariant("Новый"));
    QCOMPARE(live.passport("icon"), QVariant("pump.png"));
    QCOMPARE(live.passport("params"), QVariant("-v"));
    QCOMPARE(live.passport("onecopy"), QVariant(true));
    QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
    // Another row in its place: the own one stays, its passport is made anew.
    live.store.update("Menu", {{"KeyLink", QString("shema")}, {"caption", QString("Иная")}});
    live.deliver();
    QCOMPARE(live.currentElement(), QString("calc"));
    QCOMPARE(live.cell("shema", 0), QVariant("Иная"));
    QCOMPARE(live.passport("name"), QVariant("Новый"));
}

void TestMenuNotifications::anotherElementMovesAndTheOwnStaysCurrent() {
    Live live;
    live.makeCurrent("calc");
    live.store.update("Menu", {{"KeyLink", QString("trend")}, {"order_", 9000}});
    live.deliver();
    QCOMPARE(live.below(live->element("grafiki")), QString("calc glubzhe trend"));
    QCOMPARE(live.currentElement(), QString("calc"));
    QCOMPARE(live.passport("keylink"), QVariant("rcalc"));
    // A folder brings its rows along.
    live.store.update("Menu", {{"KeyLink", QString("glubzhe")}, {"order_", -1}});
    live.deliver();
    QCOMPARE(live.below(live->element("grafiki")), QString("glubzhe calc trend"));
    QCOMPARE(live.below(live->element("glubzhe")), QString("form"));
    QCOMPARE(live.currentElement(), QString("calc"));
}

void TestMenuNotifications::theOwnElementMovesAndStaysCurrent() {
    Live live;
    live.makeCurrent("calc");
    for (const int order : {9000, -1, 1000}) {
        live.store.update("Menu", {{"KeyLink", QString("calc")}, {"order_", order}});
        live.deliver();
        QCOMPARE(live.currentElement(), QString("calc"));
        QCOMPARE(live->m_currentMenuKey, QString("calc"));
        QCOMPARE(live.passport("keylink"), QVariant("rcalc"));
        QCOMPARE(live.cell("calc", MenuColumn::Order), QVariant(order));
    }
    // Also if it is a folder above the own row that moves.
    live.makeCurrent("form");
    live.store.update("Menu", {{"KeyLink", QString("glubzhe")}, {"order_", -5}});
    live.deliver();
    QCOMPARE(live.below(live->element("grafiki")), QString("glubzhe trend calc"));
    QCOMPARE(live.currentElement(), QString("form"));
}

void TestMenuNotifications::anElementMovesToAnotherParentWithAllBelowIt() {
    Live live;
    live.makeCurrent("shema");
    live.store.update("Menu",
                      {{"KeyLink", QString("glubzhe")}, {"parent", QString()}, {"order_", 500}});
    live.deliver();
    QCOMPARE(live.below(live->element("MenuRootNode")), QString("shema glubzhe grafiki propal"));
    QCOMPARE(live.below(live->element("glubzhe")), QString("form"));
    QCOMPARE(live.below(live->element("grafiki")), QString("trend calc"));
    QCOMPARE(live.currentElement(), QString("shema"));
    live.store.update(
        "Menu", {{"KeyLink", QString("trend")}, {"parent", QString("glubzhe")}, {"order_", -1}});
    live.deliver();
    QCOMPARE(live.below(live->element("glubzhe")), QString("trend form"));
    QCOMPARE(live.cell("trend", MenuColumn::ParentKey), QVariant("glubzhe"));
    QCOMPARE(live.currentElement(), QString("shema"));
}

void TestMenuNotifications::anElementWithoutAParentMovesToTheTop() {
    Live live;
    live.store.update("Menu", {{"KeyLink", QString("form")}, {"parent", QString()}});
    live.deliver();
    const QString top = live.below(live->element("MenuRootNode"));
    QVERIFY2(top == "form shema grafiki propal" || top == "shema form grafiki propal",
             qPrintable(top));
    QCOMPARE(live.below(live->element("glubzhe")), QString());
}

void TestMenuNotifications::anElementOfAnUnknownParentWaitsInItsPlace() {
    Live live;
    live.store.update("Menu", {{"KeyLink", QString("calc")}, {"parent", QString("nosuch")}});
    live.deliver();
    QCOMPARE(live.below(live->element("grafiki")), QString("trend calc glubzhe"));
    QCOMPARE(live->m_menuModel->rowCount(), 1);
    // When the parent is known again, so is the place.
    live.store.update("Menu", {{"KeyLink", QString("calc")}, {"parent", QString("glubzhe")}});
    live.deliver();
    QCOMPARE(live.below(live->element("grafiki")), QString("trend glubzhe"));
    QCOMPARE(live.below(live->element("glubzhe")), QString("form calc"));
}

void TestMenuNotifications::anElementIsNeverMovedBelowItself() {
    Live live;
    for (const char* parent : {"glubzhe", "grafiki"}) {
        live.store.update("Menu", {{"KeyLink", QString("grafiki")}, {"parent", QString(parent)}});
        live.deliver();
        QCOMPARE(live.below(live->element("MenuRootNode")), QString("shema grafiki propal"));
        QCOMPARE(live.below(live->element("grafiki")), QString("trend calc glubzhe"));
    }
}

void TestMenuNotifications::anElementOfAnotherDesktopIsNotUpdated() {
    Live live([](TestStore& store) { addElement(store, "armpech", "fremd", "", "Чужой", 0); });
    const QString before = live.menuText();
    live.makeCurrent("calc");
    live.store.update("Menu", {{"KeyLink", QString("fremd")}, {"caption", QString("Иной")}});
    live.deliver();
    QCOMPARE(live.menuText(), before);
    QCOMPARE(inTable(live->m_tabMenu, "fremd", "caption"), QString("no record"));
    QCOMPARE(live.currentElement(), QString("calc"));
}

void TestMenuNotifications::onlyTheMarkedFieldsAreMerged() {
    Live live;
    notify(*live.editor.module,
           {602, "Menu", "calc", rawRecordOf("Menu", {{"ico", QString("pump.png")}})});
    QCOMPARE(inTable(live->m_tabMenu, "calc", "ico"), QString("pump.png"));
    QCOMPARE(inTable(live->m_tabMenu, "calc", "caption"), QString("Расчёт"));
    QCOMPARE(inTable(live->m_tabMenu, "calc", "parent"), QString("grafiki"));
    QCOMPARE(live.cell("calc", MenuColumn::Caption), QVariant("Расчёт"));
    QCOMPARE(live.cell("calc", MenuColumn::MenuResKey), QVariant("rcalc"));
}

void TestMenuNotifications::withoutACurrentElementAnUpdateShowsTheTop() {
    Live live;
    QVERIFY(!live.menuView()->currentIndex().isValid());
    live.store.update("Menu", {{"KeyLink", QString("shema")}, {"caption", QString("Иная")}});
    live.deliver();
    QCOMPARE(live.currentElement(), QString("MenuRootNode"));
}

// Deletions --------------------------------------------------------------------------------------

void TestMenuNotifications::deletingTheOnlyDesktopSelectsTheFolder() {
    Live live;
    live.openDesck("armpech");
    live.store.remove("MenuFolder", "armpech");
    live.deliver();
    QCOMPARE(live.currentDesck(), QString("pech"));
    QCOMPARE(live->m_currentDesckKey, QString("pech"));
    QCOMPARE(live.below(live->desck("pech")), QString());
    QCOMPARE(inTable(live->m_tabFolder, "armpech", "caption"), QString("no record"));
    QCOMPARE(live->m_menuModel->rowCount(), 0);
}

void TestMenuNotifications::deletingTheLastSiblingSelectsTheNewLast() {
    Live live(moreDesktops);
    live.openDesck("armv");
    live.store.remove("MenuFolder", "armv");
    live.deliver();
    QCOMPARE(live.currentDesck(), QString("armb"));
    QCOMPARE(live.desckView()->currentIndex().column(), 0);
}

void TestMenuNotifications::deletingAMiddleSiblingSelectsTheNext() {
    Live live(moreDesktops);
    live.openDesck("armb");
    live.store.remove("MenuFolder", "armb");
    live.deliver();
    QCOMPARE(live.currentDesck(), QString("armv"));
    live.openDesck("pech");
    live.store.remove("MenuFolder", "pech");
    live.deliver();
    QCOMPARE(live.currentDesck(), QString("armop"));
    QVERIFY(live->element("shema").isValid());
}

void TestMenuNotifications::deletingAnotherRowKeepsTheSelection() {
    Live live(moreDesktops);
    live.makeCurrent("calc");
    live.store.remove("MenuFolder", "armb");
    live.store.remove("MenuFolder", "sklad");
    live.deliver();
    QCOMPARE(live.currentDesck(), QString("armop"));
    QCOMPARE(live.currentElement(), QString("calc"));
    QCOMPARE(live.below(live->desck("ceh")), QString("pech armop armv"));
    QCOMPARE(live.below(live->desck("mainnode")), QString("ceh obshiy"));
}

void TestMenuNotifications::deletingAFolderTakesItsRowsAndNotTheirRecords() {
    Live live;
    live.store.remove("MenuFolder", "pech");
    live.deliver();
    QVERIFY(!live->desck("armpech").isValid());
    QCOMPARE(inTable(live->m_tabFolder, "pech", "caption"), QString("no record"));
    QCOMPARE(inTable(live->m_tabFolder, "armpech", "caption"), QString("АРМ печи"));
    live.store.remove("Menu", "grafiki");
    live.deliver();
    QVERIFY(!live->element("form").isValid());
    QCOMPARE(inTable(live->m_tabMenu, "form", "caption"), QString("Котёл"));
    live.store.remove("Menu", "form");
    live.deliver();
    QCOMPARE(inTable(live->m_tabMenu, "form", "caption"), QString("no record"));
}

void TestMenuNotifications::deletingAnAncestorOfTheCurrentRowSelectsTheNeighbour() {
    Live live;
    live.makeCurrent("form");
    live.store.remove("Menu", "grafiki");
    live.deliver();
    QCOMPARE(live.currentElement(), QString("propal"));
    QCOMPARE(live->m_currentMenuKey, QString("propal"));
    live.openDesck("armpech");
    live.store.remove("MenuFolder", "ceh");
    live.deliver();
    QCOMPARE(live.currentDesck(), QString("obshiy"));
    QCOMPARE(live->m_currentDesckKey, QString("obshiy"));
}

void TestMenuNotifications::deletedElementsLeaveLikeDesktops() {
    Live live;
    live.makeCurrent("trend");
    live.store.remove("Menu", "trend");
    live.deliver();
    QCOMPARE(live.currentElement(), QString("calc"));
    QCOMPARE(live.passport("keylink"), QVariant("rcalc"));
    live.makeCurrent("glubzhe");
    live.store.remove("Menu", "glubzhe");
    live.deliver();
    QCOMPARE(live.currentElement(), QString("calc"));
    live.store.remove("Menu", "shema");
    live.deliver();
    QCOMPARE(live.currentElement(), QString("calc"));
    live.store.remove("Menu", "calc");
    live.deliver();
    QCOMPARE(live.currentElement(), QString("grafiki"));
    live.store.remove("Menu", "propal");
    live.store.remove("Menu", "grafiki");
    live.deliver();
    QCOMPARE(live.currentElement(), QString("MenuRootNode"));
    QCOMPARE(live.menuText(), QString("Меню #MenuRootNode\n"));
    QCOMPARE(inTable(live->m_tabMenu, "trend", "caption"), QString("no record"));
}

void TestMenuNotifications::anUnknownKeyDeletesNothing() {
    Live live([](TestStore& store) { addElement(store, "armpech", "fremd", "", "Чужой", 0); });
    const QString before = live.menuText() + live.desckText();
    for (const char* key : {"nosuch", "fremd", "MenuRootNode", "mainnode", ""}) {
        notify(*live.editor.module, {603, "Menu", key, {}});
        notify(*live.editor.module, {603, "MenuFolder", key, {}});
    }
    QCOMPARE(live.menuText() + live.desckText(), before);
    QCOMPARE(orvo::recordCount(live->m_tabMenu), 7);
}

// Insertions -------------------------------------------------------------------------------------

void TestMenuNotifications::anInsertedDesktopTakesItsPlaceAndTheSelection() {
    Live live(moreDesktops);
    addDesck(live.store, "neu", "ceh", "Бюро", false);
    live.deliver();
    QCOMPARE(live.below(live->desck("ceh")), QString("pech armop armb neu armv"));
    QCOMPARE(live.currentDesck(), QString("neu"));
    QCOMPARE(live->desck("neu").siblingAtColumn(DesckColumn::IsNew).data(), QVariant(false));
    QCOMPARE(live.menuText(), QString("Меню #MenuRootNode\n"));
    addDesck(live.store, "neuf", "ceh", "Ящик", true);
    live.deliver();
    QCOMPARE(live.below(live->desck("ceh")), QString("pech neuf armop armb neu armv"));
    QCOMPARE(live.currentDesck(), QString("neuf"));
}

void TestMenuNotifications::anInsertedTopRowWaitsForTheNextStart() {
    Live live;
    const QString before = live.desckText();
    addDesck(live.store, "neu", "", "Бюро", true);
    live.deliver();
    QCOMPARE(live.desckText(), before);
    QCOMPARE(live.currentDesck(), QString("armop"));
    QCOMPARE(inTable(live->m_tabFolder, "neu", "caption"), QString("Бюро"));
}

void TestMenuNotifications::anInsertedDesktopOfAnUnknownFolderEntersTheTableOnly() {
    Live live;
    const QString before = live.desckText();
    addDesck(live.store, "neu", "nosuch", "Бюро", false);
    live.deliver();
    QCOMPARE(live.desckText(), before);
    QCOMPARE(inTable(live->m_tabFolder, "neu", "caption"), QString("Бюро"));
}

void TestMenuNotifications::theOwnNewDesktopMovesToItsPlace() {
    Live live(moreDesktops);
    live->on_actAddDescktop_triggered();
    const QString key = live.currentDesck();
    live->m_desckModel->setData(live.desckView()->currentIndex(), "Бюро", Qt::EditRole);
    live.press(live->m_btnSave);
    QCOMPARE(live.below(live->desck("ceh")), "pech armop armb armv " + key);
    QCOMPARE(live->m_desckModel->findIndexByKey(key).siblingAtColumn(DesckColumn::IsNew).data(),
             QVariant(true));
    live.deliver();
    QCOMPARE(live.below(live->desck("ceh")), "pech armop armb " + key + " armv");
    QCOMPARE(live->m_desckModel->findIndexByKey(key).siblingAtColumn(DesckColumn::IsNew).data(),
             QVariant(false));
    QCOMPARE(live.currentDesck(), key);
}

void TestMenuNotifications::aSecondInsertionChangesNothing() {
    Live live;
    live.makeCurrent("calc");
    const QString before = live.menuText() + live.desckText();
    notify(*live.editor.module, {601, "Menu", "shema",
                                 rawRecordOf("Menu", {{"caption", QString("Иная")},
                                                      {"FolderKey", QString("armpech")}})});
    notify(*live.editor.module, {601, "MenuFolder", "armpech",
                                 rawRecordOf("MenuFolder", {{"caption", QString("Иная")}})});
    notify(*live.editor.module, {601, "MenuResource", "rcalc",
                                 rawRecordOf("MenuResource", {{"caption", QString("Иная")}})});
    QCOMPARE(live.menuText() + live.desckText(), before);
    QCOMPARE(inTable(live->m_tabMenu, "shema", "caption"), QString("Схема"));
    QCOMPARE(inTable(live->m_tabFolder, "armpech", "caption"), QString("АРМ печи"));
    QCOMPARE(inTable(live->m_tabResource, "rcalc", "caption"), QString("Calc"));
    QCOMPARE(live.currentElement(), QString("calc"));
    QCOMPARE(live.currentDesck(), QString("armop"));
}

void TestMenuNotifications::anInsertedElementTakesItsPlaceAndTheSelection() {
    Live live;
    live.menuView()->collapseAll();
    addElement(live.store, "armop", "neu", "grafiki", "Новый", 500, "rtrend");
    live.deliver();
    QCOMPARE(live.below(live->element("grafiki")), QString("trend neu calc glubzhe"));
    QCOMPARE(live.currentElement(), QString("neu"));
    QCOMPARE(live.cell("neu", MenuColumn::Command), QVariant("Trend"));
    QCOMPARE(live.cell("neu", MenuColumn::IsNew), QVariant(false));
    QCOMPARE(live.passport("name"), QVariant("Новый"));
    QVERIFY(live.menuView()->isExpanded(live->element("grafiki")));
}

void TestMenuNotifications::anInsertedElementWithoutAParentStandsAtTheTop() {
    Live live;
    addElement(live.store, "armop", "neu", "", "Новый", 1500);
    live.deliver();
    QCOMPARE(live.below(live->element("MenuRootNode")), QString("shema grafiki neu propal"));
    // Empty text in place of NULL stands there too.
    notify(*live.editor.module, {601, "Menu", "leer",
                                 rawRecordOf("Menu", {{"caption", QString("Пустой")},
                                                      {"FolderKey", QString("armop")},
                                                      {"parent", QString("")},
                                                      {"order_", 1700}})});
    QCOMPARE(live->element("leer").parent(), live->element("MenuRootNode"));
    QCOMPARE(live.currentElement(), QString("leer"));
}

void TestMenuNotifications::anInsertedElementOfAnUnknownParentEntersTheTableOnly() {
    Live live;
    live.makeCurrent("calc");
    const QString before = live.menuText();
    addElement(live.store, "armop", "neu", "nosuch", "Новый", 500, "rtrend");
    live.deliver();
    QCOMPARE(live.menuText(), before);
    QCOMPARE(inTable(live->m_tabMenu, "neu", "caption"), QString("Новый"));
    QCOMPARE(live.currentElement(), QString("calc"));
}

void TestMenuNotifications::anElementOfAnotherDesktopLeavesNoTrace() {
    Live live;
    const QString before = live.menuText();
    addElement(live.store, "armpech", "neu", "", "Новый", 500, "rtrend");
    addElement(live.store, "armpech", "neu2", "grafiki", "Новый", 500, "rtrend");
    live.deliver();
    QCOMPARE(live.menuText(), before);
    QCOMPARE(orvo::recordCount(live->m_tabMenu), 7);
    QCOMPARE(inTable(live->m_tabMenu, "neu", "caption"), QString("no record"));
    // Without a desktop in the window none belongs to it.
    live.openDesck("ceh");
    addElement(live.store, "armop", "neu3", "", "Новый", 500, "rtrend");
    live.deliver();
    QCOMPARE(inTable(live->m_tabMenu, "neu3", "caption"), QString("no record"));
}

void TestMenuNotifications::theOwnNewElementKeepsItsPlace() {
    Live live;
    live.makeCurrent("grafiki");
    live->on_actNewElemFolder_triggered();
    const QString key = live.currentElement();
    live.press(live->m_btnSave);
    // Somebody gave it another order meanwhile: the row does not move.
    live.store.update("Menu", {{"KeyLink", key}, {"order_", -5}, {"caption", QString("Иная")}});
    live.deliver();
    QCOMPARE(live->m_menuModel->findIndexByKey(key).siblingAtColumn(MenuColumn::IsNew).data(),
             QVariant(false));
    QCOMPARE(live->m_menuModel->findIndexByKey(key).data(), QVariant("Иная"));
    // The insertion left it last; the update after it moved it.
    QCOMPARE(live.below(live->element("grafiki")), key + " trend calc glubzhe");

    live.makeCurrent("glubzhe");
    live->on_actNewElemFolder_triggered();
    const QString second = live.currentElement();
    live.press(live->m_btnSave);
    addElement(live.store, "armop", "spaet", "glubzhe", "Поздний", 5000);
    live.deliver();
    QCOMPARE(live.below(live->element("glubzhe")), "form " + second + " spaet");
}

void TestMenuNotifications::anInsertedResourceNamesNewElements() {
    Live live;
    addResource(live.store, "rneu", 1, "Neu");
    addElement(live.store, "armop", "neu", "", "Новый", 500, "rneu");
    live.deliver();
    QCOMPARE(live.cell("neu", MenuColumn::Type), QVariant("модуль"));
    QCOMPARE(live.cell("neu", MenuColumn::Command), QVariant("Neu"));
    // Later changes of the catalogue are not followed.
    live.store.update("MenuResource", {{"KeyLink", QString("rneu")}, {"name_", QString("Alt")}});
    live.store.remove("MenuResource", "rcalc");
    live.deliver();
    QCOMPARE(inTable(live->m_tabResource, "rneu", "name_"), QString("Neu"));
    QCOMPARE(inTable(live->m_tabResource, "rcalc", "name_"), QString("Calc"));
}

// Input that is not what it should be ------------------------------------------------------------

void TestMenuNotifications::anInsertionWithoutFieldsMakesARecordOfTheKeyAlone() {
    Live live;
    const QString before = live.menuText() + live.desckText();
    for (const char* table : {"MenuFolder", "Menu", "MenuResource"}) {
        notify(*live.editor.module, {601, table, "bare", {}});
        notify(*live.editor.module, {601, table, "bare", {}});
    }
    QCOMPARE(inTable(live->m_tabFolder, "bare", "KeyLink"), QString("bare"));
    QCOMPARE(inTable(live->m_tabFolder, "bare", "caption"), QString());
    QCOMPARE(inTable(live->m_tabResource, "bare", "KeyLink"), QString("bare"));
    // It names no desktop, so it is none of the open one.
    QCOMPARE(inTable(live->m_tabMenu, "bare", "KeyLink"), QString("no record"));
    QCOMPARE(live.menuText() + live.desckText(), before);
}

void TestMenuNotifications::anUpdateWithoutFieldsChangesNothing() {
    Live live;
    live.makeCurrent("calc");
    const QString before = live.menuText() + live.desckText();
    notify(*live.editor.module, {602, "Menu", "shema", {}});
    notify(*live.editor.module, {602, "Menu", "shema", rawRecordOf("Menu", {})});
    notify(*live.editor.module, {602, "MenuFolder", "armop", {}});
    QCOMPARE(live.menuText() + live.desckText(), before);
    QCOMPARE(inTable(live->m_tabMenu, "shema", "caption"), QString("Схема"));
}

void TestMenuNotifications::aRecordCutShortChangesNothingElse_data() {
    QTest::addColumn<QByteArray>("table");
    for (const char* table : {"MenuFolder", "Menu", "MenuResource"})
        QTest::addRow("%s", table) << QByteArray(table);
}

void TestMenuNotifications::aRecordCutShortChangesNothingElse() {
    QFETCH(QByteArray, table);
    Live live;
    const QByteArray raw = rawRecordOf(table.constData(), {{"caption", QString("Новое имя")}});
    const QString before = live.menuText() + live.desckText();
    for (int length = 0; length < raw.size(); ++length) {
        notify(*live.editor.module,
               {602, table, table == "Menu" ? "shema" : "armop", raw.left(length)});
        QCOMPARE(live.menuText() + live.desckText(), before);
        const QByteArray key = "cut" + QByteArray::number(length);
        notify(*live.editor.module, {601, table, key, raw.left(length)});
        QCOMPARE(live.menuText() + live.desckText(), before);
    }
}

void TestMenuNotifications::damagedRecordsNeverBreakTheWindow() {
    Live live;
    live.makeCurrent("calc");
    std::mt19937 random(20251);
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % unsigned(limit));
    };
    const QList<QByteArray> tables{"MenuFolder", "Menu", "MenuResource"};
    const QList<QByteArray> keys{"calc", "grafiki", "armop", "ceh", "rcalc", "neu", "neu2"};
    for (int turn = 0; turn < 1500; ++turn) {
        const QByteArray& table = tables[below(tables.size())];
        QByteArray raw = rawRecordOf(table.constData(), {{"caption", QString("Имя")}});
        for (int i = below(6); i >= 0; --i)
            raw[below(raw.size())] = static_cast<char>(random());
        notify(*live.editor.module, {601 + below(2), table, keys[below(keys.size())], raw});
    }
    // The tables still hold together, and the window still works.
    for (const CMDArray* records : {&live->m_tabFolder, &live->m_tabMenu, &live->m_tabResource}) {
        int seen = 0;
        orvo::walkAll(*records, 0, [&](const MDRData* record) {
            ++seen;
            return orvo::isNull(record, "KeyLink") ||
                   orvo::seekKey(*records, orvo::textOf(record, "KeyLink")) != nullptr;
        });
        QCOMPARE(seen, orvo::recordCount(*records));
    }
    addDesck(live.store, "heil", "sklad", "Целый", false);
    addElement(live.store, "heil", "ganz", "", "Целый", 0, "rform");
    live.deliver();
    QCOMPARE(live.currentDesck(), QString("heil"));
    QCOMPARE(live.menuText(), QString("Меню #MenuRootNode\n  Целый #ganz\n"));
}

void TestMenuNotifications::anEmptyKeyTouchesNoRow() {
    Live live;
    const QString before = live.menuText() + live.desckText();
    const QByteArray raw =
        rawRecordOf("Menu", {{"caption", QString("Без ключа")}, {"FolderKey", QString("armpech")}});
    for (const int code : {601, 602, 603}) {
        notify(*live.editor.module, {code, "Menu", "", raw});
        notify(*live.editor.module, {code, "MenuFolder", "", {}});
        QCOMPARE(live.menuText() + live.desckText(), before);
    }
}

// Edits that are open ----------------------------------------------------------------------------

void TestMenuNotifications::aRefreshOfTheCurrentRowSavesAnOpenEdit() {
    Live live;
    live.makeCurrent("calc");
    live.type("name", "Своё");
    QCOMPARE(live.mode(), int32_t(MenuProbe::EditElement));
    live.host.writes().take();
    // Notifications that refresh nothing leave the edit open.
    addResource(live.store, "rneu", 1, "Neu");
    live.store.remove("Menu", "propal");
    live.deliver();
    QCOMPARE(live.mode(), int32_t(MenuProbe::EditElement));
    live.store.update("Menu", {{"KeyLink", QString("shema")}, {"caption", QString("Чужая")}});
    live.deliver();
    QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
    QCOMPARE(live.currentElement(), QString("calc"));
    QVERIFY(live.host.writes().take().contains("~calc "));
    live.deliver();
    QCOMPARE(inTable(live->m_tabMenu, "calc", "caption"), QString("Своё"));
}

void TestMenuNotifications::aDeletedFolderEndsTheEditOfTheNewRowBelowIt() {
    Live live;
    live.openDesck("pech");
    live->on_actAddDescktop_triggered();
    QCOMPARE(live.mode(), int32_t(MenuProbe::NewDesck));
    live.store.remove("MenuFolder", "pech");
    live.deliver();
    QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
    QVERIFY(!live.buttonsEnabled());
    live.openDesck("obshiy");
    live.openDesck("armop");
    QVERIFY(live->element("shema").isValid());

    live.makeCurrent("glubzhe");
    live->on_actNewElemFolder_triggered();
    QCOMPARE(live.mode(), int32_t(MenuProbe::NewElement));
    live.store.remove("Menu", "grafiki");
    live.deliver();
    QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
    QVERIFY(!live.buttonsEnabled());
    live.makeCurrent("shema");
    QCOMPARE(live.passport("name"), QVariant("Схема"));
}

void TestMenuNotifications::aDeletedRowEndsItsRenaming() {
    Live live(moreDesktops);
    live->on_actChangeDescktopOrFolder_triggered();
    QVERIFY(live.desckView()->indexWidget(live->desck("armop")));
    live.store.remove("MenuFolder", "armop");
    live.deliver();
    QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
    QCOMPARE(live.currentDesck(), QString("armb"));
    QVERIFY(!live.buttonsEnabled());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void TestMenuNotifications::aDesktopOfAnotherClientSavesTheOpenPlaceholder() {
    Live live;
    live->on_actAddDescktop_triggered();
    const QString own = live.currentDesck();
    addDesck(live.store, "neu", "ceh", "Бюро", false);
    live.deliver();
    QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
    QCOMPARE(live.currentDesck(), QString("neu"));
    live.deliver();
    QCOMPARE(inTable(live->m_tabFolder, own.toLatin1(), "caption"), QString("новый рабочий стол"));
    QCOMPARE(live.currentDesck(), own);
}

void TestMenuNotifications::aBurstIsTakenInOrder() {
    Live live;
    live.makeCurrent("calc");
    for (int i = 0; i < 50; ++i) {
        addElement(live.store, "armop", qPrintable(QString("n%1").arg(i)), "grafiki",
                   qPrintable(QString::number(i)), 5000 - i);
        live.store.update("Menu", {{"KeyLink", QString("n%1").arg(i)}, {"order_", 6000 + i}});
        if (i % 5 == 0)
            live.store.remove("Menu", qPrintable(QString("n%1").arg(i)));
    }
    live.deliver();
    QStringList expected{"trend", "calc", "glubzhe"};
    for (int i = 0; i < 50; ++i)
        if (i % 5 != 0)
            expected << QString("n%1").arg(i);
    QCOMPARE(live.below(live->element("grafiki")), expected.join(' '));
}

QTEST_MAIN(TestMenuNotifications)
#include "tst_menu_notifications.moc"
