// What notifications of the server do: the table first, then the tree, then what is current.
#include "tests/menu/MenuNotificationsTest.h"

class TestMenuNotifications : public QObject {
    Q_OBJECT
private slots:
    void everyHandlingHasItsEventAndTable_data() {
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<QString>("merged");
        const auto row = [](int code, const char* table, const char* merged) {
            QTest::addRow("%d %s", code, table) << code << QByteArray(table) << QString(merged);
        };
        row(602, "MenuFolder", "update");
        row(602, "Menu", "update");
        row(602, "MenuResource", "");
        row(602, "MenuResourceFolder", "update");
        row(603, "MenuFolder", "delete");
        row(603, "Menu", "delete");
        row(603, "MenuResource", "");
        row(603, "MenuResourceFolder", "delete");
        row(601, "MenuFolder", "insert");
        row(601, "Menu", "insert");
        row(601, "MenuResource", "insert");
        row(601, "MenuResourceFolder", "insert");
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

    void everyHandlingHasItsEventAndTable() {
        QFETCH(int, code);
        QFETCH(QByteArray, table);
        QFETCH(QString, merged);
        Live live([](TestStore& store) {
            store.insert(
                "MenuResourceFolder",
                {{"KeyLink", QString("known")}, {"type_", 1}, {"caption", QString("старое")}});
            addDesck(store, "known", "ceh", "старое", false);
            addResource(store, "known", 1, "старое");
            addElement(store, "armop", "known", "", "старое", 5000, "rform");
        });
        const auto state = [&] {
            QStringList lines;
            for (const CMDArray* records : {&live->m_tabFolder, &live->m_tabMenu,
                                            &live->m_tabResource, &live->m_tabResFolder})
                for (const char* key : {"known", "fresh"})
                    lines << inTable(*records, key, "caption");
            return lines.join('|') + live.desckText() + live.menuText();
        };
        const QString before = state();
        // A record that fits each of the tables: their fields differ in number and order.
        const bool isFolder = table.startsWith("MenuF");
        const bool isElement = table == "Menu";
        const QByteArray raw =
            isElement  ? rawRecordOf("Menu", {{"caption", QString("новое")},
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
        const CMDArray& records = isElement                 ? live->m_tabMenu
                                  : isFolder                ? live->m_tabFolder
                                  : table == "MenuResource" ? live->m_tabResource
                                                            : live->m_tabResFolder;
        QCOMPARE(inTable(records, "known", "caption"), merged == "update"   ? QString("новое")
                                                       : merged == "delete" ? QString("no record")
                                                                            : QString("старое"));
        QCOMPARE(inTable(records, "fresh", "caption"),
                 merged == "insert" ? QString("новое") : QString("no record"));
    }

    void tableNamesCompareWithoutCase() {
        Live live;
        notify(*live.editor.module,
               {602, "mENU", "shema", rawRecordOf("Menu", {{"caption", QString("Новая")}})});
        QCOMPARE(live.cell("shema", 0), QVariant("Новая"));
        notify(*live.editor.module, {602, "MENUFOLDER", "sklad",
                                     rawRecordOf("MenuFolder", {{"caption", QString("Новый")}})});
        QCOMPARE(live->desck("sklad").data(), QVariant("Новый"));
    }

    void blocksOfAnotherWidthAreIgnored() {
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

    void aSourceWithoutACommaNamesNoTable() {
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

    void aModuleWhoseStartFailedSurvivesEverything() {
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

    // Updates of desktops

    void anUpdatedDesktopIsRewrittenMovedAndMadeCurrent() {
        Live live(moreDesktops);
        live.openDesck("armpech");
        QCOMPARE(live.below(live->desck("ceh")), QString("pech armop armb armv"));
        live.store.update("MenuFolder",
                          {{"KeyLink", QString("armop")}, {"caption", QString("Бюро")}});
        live.deliver();
        QCOMPARE(live.below(live->desck("ceh")), QString("pech armb armop armv"));
        QCOMPARE(live->desck("armop").data(), QVariant("Бюро"));
        QCOMPARE(inTable(live->m_tabFolder, "armop", "caption"), QString("Бюро"));
        QCOMPARE(live->desck("armop").siblingAtColumn(DesckColumn::Order).data(), QVariant("2000"));
        QCOMPARE(live.currentDesck(), QString("armop"));
        QVERIFY(live->element("shema").isValid());
    }

    void anUpdatedTopFolderMovesAmongTheTopRows() {
        Live live;
        QCOMPARE(live.below(live->desck("mainnode")), QString("sklad ceh obshiy"));
        live.store.update("MenuFolder",
                          {{"KeyLink", QString("sklad")}, {"caption", QString("Яма")}});
        live.deliver();
        QCOMPARE(live.below(live->desck("mainnode")), QString("ceh sklad obshiy"));
        QCOMPARE(live.currentDesck(), QString("sklad"));
        QCOMPARE(live.below(live->desck("ceh")), QString("pech armop"));
    }

    void anUpdatedDesktopInItsPlaceShowsItsMenuAgain() {
        Live live;
        // A change of the menu that no notification of this window has told yet.
        addElement(live.store, "armop", "neu", "", "Новый", 9000, "rform");
        notify(*live.editor.module, {602, "MenuFolder", "armop",
                                     rawRecordOf("MenuFolder", {{"caption", QString("Бюро")}})});
        QCOMPARE(live.currentDesck(), QString("armop"));
        QVERIFY(live->element("neu").isValid());
        QVERIFY(!live.menuView()->currentIndex().isValid());
    }

    void aFolderThatMovesKeepsItsRows() {
        Live live([](TestStore& store) { addDesck(store, "anbau", "ceh", "Анбау", true); });
        QCOMPARE(live.below(live->desck("ceh")), QString("anbau pech armop"));
        QCOMPARE(live.below(live->desck("pech")), QString("armpech"));
        live.store.update("MenuFolder",
                          {{"KeyLink", QString("pech")}, {"caption", QString("А печь")}});
        live.deliver();
        QCOMPARE(live.below(live->desck("ceh")), QString("pech anbau armop"));
        QCOMPARE(live.below(live->desck("pech")), QString("armpech"));
        QCOMPARE(live.currentDesck(), QString("pech"));
        QCOMPARE(inTable(live->m_tabFolder, "armpech", "caption"), QString("АРМ печи"));
    }

    void aFolderInItsPlaceKeepsItsRows() {
        Live live;
        live.store.update("MenuFolder",
                          {{"KeyLink", QString("pech")}, {"caption", QString("Печи")}});
        live.deliver();
        QCOMPARE(live->desck("pech").data(), QVariant("Печи"));
        QCOMPARE(live.below(live->desck("pech")), QString("armpech"));
    }

    void aDesktopStaysUnderItsOldFolder() {
        Live live(moreDesktops);
        addDesck(live.store, "polka", "sklad", "Яполка", false);
        live.deliver();
        live.store.update("MenuFolder",
                          {{"KeyLink", QString("armv")}, {"ParentKey", QString("sklad")}});
        live.deliver();
        // The first of the new siblings, and so the first among the old ones.
        QCOMPARE(live.below(live->desck("ceh")), QString("armv pech armop armb"));
        QCOMPARE(live.below(live->desck("sklad")), QString("polka"));
        QCOMPARE(live->desck("armv").siblingAtColumn(DesckColumn::ParentKey).data(),
                 QVariant("sklad"));
    }

    void anUpdateOfAnUnknownDesktopDoesNothing() {
        Live live;
        const QString before = live.desckText();
        notify(*live.editor.module, {602, "MenuFolder", "neu",
                                     rawRecordOf("MenuFolder", {{"caption", QString("Бюро")}})});
        QCOMPARE(live.desckText(), before);
        QCOMPARE(inTable(live->m_tabFolder, "neu", "caption"), QString("no record"));
        QCOMPARE(live.currentDesck(), QString("armop"));
    }

    void aDesktopWithoutARowIsUpdatedInTheTable() {
        Live live([](TestStore& store) { addDesck(store, "lost", "nosuch", "Потерян", false); });
        const QString before = live.desckText();
        live.store.update("MenuFolder",
                          {{"KeyLink", QString("lost")}, {"caption", QString("Бюро")}});
        live.deliver();
        QCOMPARE(live.desckText(), before);
        QCOMPARE(inTable(live->m_tabFolder, "lost", "caption"), QString("Бюро"));
        QCOMPARE(live.currentDesck(), QString("armop"));
    }

    // Updates of elements

    void anUpdatedElementInItsPlaceRefreshesThePassport() {
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

    void anotherElementMovesAndTheOwnStaysCurrent() {
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

    void theOwnElementMovesAndStaysCurrent() {
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

    void anElementMovesToAnotherParentWithAllBelowIt() {
        Live live;
        live.makeCurrent("shema");
        live.store.update(
            "Menu", {{"KeyLink", QString("glubzhe")}, {"parent", QString()}, {"order_", 500}});
        live.deliver();
        QCOMPARE(live.below(live->element("MenuRootNode")),
                 QString("shema glubzhe grafiki propal"));
        QCOMPARE(live.below(live->element("glubzhe")), QString("form"));
        QCOMPARE(live.below(live->element("grafiki")), QString("trend calc"));
        QCOMPARE(live.currentElement(), QString("shema"));
        live.store.update(
            "Menu",
            {{"KeyLink", QString("trend")}, {"parent", QString("glubzhe")}, {"order_", -1}});
        live.deliver();
        QCOMPARE(live.below(live->element("glubzhe")), QString("trend form"));
        QCOMPARE(live.cell("trend", MenuColumn::ParentKey), QVariant("glubzhe"));
        QCOMPARE(live.currentElement(), QString("shema"));
    }

    void anElementWithoutAParentMovesToTheTop() {
        Live live;
        live.store.update("Menu", {{"KeyLink", QString("form")}, {"parent", QString()}});
        live.deliver();
        const QString top = live.below(live->element("MenuRootNode"));
        QVERIFY2(top == "form shema grafiki propal" || top == "shema form grafiki propal",
                 qPrintable(top));
        QCOMPARE(live.below(live->element("glubzhe")), QString());
    }

    void anElementOfAnUnknownParentWaitsInItsPlace() {
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

    void anElementIsNeverMovedBelowItself() {
        Live live;
        for (const char* parent : {"glubzhe", "grafiki"}) {
            live.store.moveBelow("Menu", "parent", "grafiki", parent);
            live.deliver();
            QCOMPARE(live.below(live->element("MenuRootNode")), QString("shema grafiki propal"));
            QCOMPARE(live.below(live->element("grafiki")), QString("trend calc glubzhe"));
        }
    }

    void anElementOfAnotherDesktopIsNotUpdated() {
        Live live([](TestStore& store) { addElement(store, "armpech", "fremd", "", "Чужой", 0); });
        const QString before = live.menuText();
        live.makeCurrent("calc");
        live.store.update("Menu", {{"KeyLink", QString("fremd")}, {"caption", QString("Иной")}});
        live.deliver();
        QCOMPARE(live.menuText(), before);
        QCOMPARE(inTable(live->m_tabMenu, "fremd", "caption"), QString("no record"));
        QCOMPARE(live.currentElement(), QString("calc"));
    }

    void onlyTheMarkedFieldsAreMerged() {
        Live live;
        notify(*live.editor.module,
               {602, "Menu", "calc", rawRecordOf("Menu", {{"ico", QString("pump.png")}})});
        QCOMPARE(inTable(live->m_tabMenu, "calc", "ico"), QString("pump.png"));
        QCOMPARE(inTable(live->m_tabMenu, "calc", "caption"), QString("Расчёт"));
        QCOMPARE(inTable(live->m_tabMenu, "calc", "parent"), QString("grafiki"));
        QCOMPARE(live.cell("calc", MenuColumn::Caption), QVariant("Расчёт"));
        QCOMPARE(live.cell("calc", MenuColumn::MenuResKey), QVariant("rcalc"));
    }

    void withoutACurrentElementAnUpdateShowsTheTop() {
        Live live;
        QVERIFY(!live.menuView()->currentIndex().isValid());
        live.store.update("Menu", {{"KeyLink", QString("shema")}, {"caption", QString("Иная")}});
        live.deliver();
        QCOMPARE(live.currentElement(), QString("MenuRootNode"));
    }

    // Deletions

    void deletingTheOnlyDesktopSelectsTheFolder() {
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

    void deletingTheLastSiblingSelectsTheNewLast() {
        Live live(moreDesktops);
        live.openDesck("armv");
        live.store.remove("MenuFolder", "armv");
        live.deliver();
        QCOMPARE(live.currentDesck(), QString("armb"));
        QCOMPARE(live.desckView()->currentIndex().column(), 0);
    }

    void deletingAMiddleSiblingSelectsTheNext() {
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

    void deletingAnotherRowKeepsTheSelection() {
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
};

QTEST_MAIN(TestMenuNotifications)
#include "tst_menu_notifications.moc"
