// Pasting menu elements, and what becomes of a cut.
#include "tests/menu/MenuClipboardTest.h"

class TestMenuClipboardPaste : public QObject {
    Q_OBJECT
private slots:
    void init() { QGuiApplication::clipboard()->clear(); }

    void aPastedElementIsTheLastInItsFolder() {
        PlantOperations editor("armop");
        editor.selectElements({"shema"});
        editor->on_actCopyMenuElement_triggered();
        editor.makeCurrent("grafiki");
        QVERIFY(editor.action("actPasteMenuElement")->isEnabled());
        editor.action("actPasteMenuElement")->trigger();
        QCOMPARE(
            editor.host.writes().take(),
            QString("Menu\n"
                    "  +#1 parent='grafiki' FolderKey='armop' caption='Схема' order_=2000 "
                    "ico=NULL separator=NULL oneCopy=NULL MenuResourceKey='rform' params=NULL\n"));
        QCOMPARE(editor->m_menuModel->rowCount(editor->element("grafiki")), 3);
        editor.host.deliver(*editor.module);
        QCOMPARE(editor->m_menuModel->rowCount(editor->element("grafiki")), 4);
        QCOMPARE(editor.host.failures, QStringList());
    }

    void pastingAtTheTop() {
        PlantOperations editor("armop");
        editor.selectElements({"calc", "glubzhe"});
        editor->on_actCopyMenuElement_triggered();
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        // An element has the empty text for the top, a folder NULL.
        const QString rest = " ico=NULL separator=NULL oneCopy=NULL";
        QCOMPARE(editor.host.writes().take(),
                 "Menu\n"
                 "  +#1 parent='' FolderKey='armop' caption='Расчёт' order_=2000" +
                     rest +
                     " MenuResourceKey='rcalc' params=NULL\n"
                     "  +#2 parent=NULL FolderKey='armop' caption='Глубже' order_=2000" +
                     rest +
                     " params=NULL\n"
                     "  +#3 parent='#2' FolderKey='armop' caption='Котёл' order_=0" +
                     rest + " MenuResourceKey='rform' params=NULL\n");
        editor.host.deliver(*editor.module);
        QVERIFY2(shownMenu(editor).contains("\n  Глубже\n    Котёл\n"),
                 qPrintable(shownMenu(editor)));
        QVERIFY(shownMenu(editor).contains("\n  Расчёт\n"));
        QCOMPARE(editor.host.failures, QStringList());
    }

    void pastingIntoAnotherDesktop() {
        PlantOperations editor("armop");
        editor.selectElements({"glubzhe"});
        editor->on_actCopyMenuElement_triggered();
        editor.openDesck("armpech");
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        const QString rest = " ico=NULL separator=NULL oneCopy=NULL";
        QCOMPARE(editor.host.writes().take(),
                 "Menu\n"
                 "  +#1 parent=NULL FolderKey='armpech' caption='Глубже' order_=0" +
                     rest +
                     " params=NULL\n"
                     "  +#2 parent='#1' FolderKey='armpech' caption='Котёл' order_=0" +
                     rest + " MenuResourceKey='rform' params=NULL\n");
        editor.host.deliver(*editor.module);
        QCOMPARE(shownMenu(editor), QString("Меню\n  Глубже\n    Котёл\n"));
    }

    void everyPasteMakesNewKeys() {
        PlantOperations editor("armop");
        editor.selectElements({"glubzhe"});
        editor->on_actCopyMenuElement_triggered();
        editor.makeCurrent("grafiki");
        editor->on_actPasteMenuElement_triggered();
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().calls.size(), 2);
        const QString written = editor.host.writes().take();
        QVERIFY2(written.contains("+#1 ") && written.contains("+#2 ") && written.contains("+#3 ") &&
                     written.contains("+#4 parent='#3'"),
                 qPrintable(written));
        QCOMPARE(editor.host.failures, QStringList());
    }

    void allChosenElementsGetTheOrderOfTheLastChild() {
        PlantOperations editor("armop");
        editor.selectElements({"trend", "calc"});
        editor->on_actCopyMenuElement_triggered();
        editor.makeCurrent("glubzhe"); // its last child has the order 0
        editor->on_actPasteMenuElement_triggered();
        const QString written = editor.host.writes().take();
        QCOMPARE(written.count("parent='glubzhe'"), 2);
        QCOMPARE(written.count("order_=0 "), 2);
    }

    void aPastedFolderKeepsWhatLiesBelow() {
        TestStore store;
        fillPlant(store);
        store.update("Menu", {{"KeyLink", QString("grafiki")},
                              {"ico", QString("f.png")},
                              {"separator", true},
                              {"oneCopy", false},
                              {"params", QString("p")}});
        OperationsOn editor(store, "armop");
        editor.selectElements({"grafiki"});
        editor->on_actCopyMenuElement_triggered();
        editor.openDesck("armpech");
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        const QString rest = " ico=NULL separator=NULL oneCopy=NULL";
        QCOMPARE(editor.host.writes().take(),
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
        QCOMPARE(editor.host.failures, QStringList());
    }

    void subFoldersCarryTheirCaptionAsParent_data() {
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("parent");
        dataRow("a text", "'Дно'", "'Дно'");
        dataRow("an empty text", "''", "''");
        dataRow("none", "NULL", "NULL");
    }

    void subFoldersCarryTheirCaptionAsParent() {
        QFETCH(QString, caption);
        QFETCH(QString, parent);
        TestStore store;
        fillPlant(store);
        addElement(store, "armop", "dno", "glubzhe", "Дно", 7);
        store.sql(qPrintable("UPDATE \"Menu\" SET \"caption\" = " + caption +
                             " WHERE \"KeyLink\" = 'dno'"));
        OperationsOn editor(store, "armop");
        editor.selectElements({"glubzhe"});
        editor->on_actCopyMenuElement_triggered();
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        const QString written = editor.host.writes().take();
        // The chosen folder has both as they should be.
        QVERIFY2(written.contains("+#1 parent=NULL FolderKey='armop' caption='Глубже'"),
                 qPrintable(written));
        QVERIFY2(written.contains("+#3 parent=" + parent + " FolderKey='armop' order_=7"),
                 qPrintable(written));
        QCOMPARE(editor.host.failures, QStringList());
    }

    void elementsWithoutTheirResourceStayOut() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armop", "gone", "glubzhe", "Нет его", 5, "nosuch");
        OperationsOn editor(store, "armop");
        editor.selectElements({"glubzhe", "calc"});
        editor->on_actCopyMenuElement_triggered();
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().calls.size(), 1);
        QCOMPARE(editor.host.writes().calls[0].records.size(), 3);
        QVERIFY(!editor.host.writes().take().contains("Нет его"));
        // A chosen one is dropped too, and then nothing is left to write.
        editor.selectElements({"propal"});
        editor->on_actCopyMenuElement_triggered();
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void anElementWithoutACaptionIsPlacedAsChosen() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armop", "nemoy", "grafiki", "", 9000, "rtrend");
        store.sql("UPDATE \"Menu\" SET \"caption\" = NULL WHERE \"KeyLink\" = 'nemoy'");
        OperationsOn editor(store, "armop");
        editor.selectElements({"nemoy"});
        editor->on_actCopyMenuElement_triggered();
        editor.makeCurrent("glubzhe");
        editor->on_actPasteMenuElement_triggered();
        QVERIFY(editor.host.writes().take().contains(
            "+#1 parent='glubzhe' FolderKey='armop' caption='' "
            "order_=0"));
    }

    void parentsCompareWithoutCase() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armop", "vnutri", "GLUBZHE", "Внутри", 5, "rtrend");
        OperationsOn editor(store, "armop");
        editor.selectElements({"glubzhe"});
        editor->on_actCopyMenuElement_triggered();
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        const QString written = editor.host.writes().take();
        QVERIFY2(written.contains("+#3 parent='#1' FolderKey='armop' caption='Внутри'"),
                 qPrintable(written));
    }

    void keysWithoutARecordAreSkipped() {
        PlantOperations editor("armop");
        editor.selectElements({"shema"});
        editor->on_actCopyMenuElement_triggered();
        QByteArray bytes = payload();
        putOnClipboard(bytes.replace("0\nshema;\n", "0\nnosuch;;shema;calc;\n"));
        editor.makeCurrent("grafiki");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().calls.size(), 1);
        QCOMPARE(editor.host.writes().calls[0].records.size(), 1);
    }

    // Read with its letters replaced, the key on the line would be the record's, which has no new
    // key.
    void aKeyThatNoRecordCanHoldPastesNothing() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armop", "k?", "", "Знак", 9000, "rcalc");
        OperationsOn editor(store, "armop");
        editor.selectElements({"k?"});
        editor->on_actCopyMenuElement_triggered();
        QByteArray bytes = payload();
        QVERIFY(bytes.startsWith("0\nk?;\n"));
        putOnClipboard(bytes.replace("0\nk?;\n", "0\nk\xB7;k\xE2\x86\x92;\n"));
        editor.makeCurrent("grafiki");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void aCopyIsPastedInAnotherClient() {
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

    void withoutATargetNothingIsPasted() {
        PlantOperations editor("armop");
        editor.selectElements({"shema"});
        editor->on_actCopyMenuElement_triggered();
        editor->m_currentMenuKey = "nosuch";
        editor->on_actPasteMenuElement_triggered();
        // A folder of desktops shows no menu at all.
        editor.openDesck("ceh");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void theClipboardStaysAfterAPaste() {
        PlantOperations editor("armop");
        editor.selectElements({"shema"});
        editor->on_actCutMenuElement_triggered();
        const QByteArray before = payload();
        QVERIFY(!before.isEmpty());
        editor.makeCurrent("grafiki");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(payload(), before);
    }

    void thePastedRowBecomesCurrent() {
        PlantOperations editor("armop");
        editor.selectElements({"shema"});
        editor->on_actCopyMenuElement_triggered();
        editor.makeCurrent("glubzhe");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor->m_currentMenuKey, QString("glubzhe"));
        editor.host.deliver(*editor.module);
        const QModelIndex current = editor.view("tvMenu")->currentIndex();
        QCOMPARE(current.data().toString(), QString("Схема"));
        QCOMPARE(current.parent(), editor->element("glubzhe"));
    }

    // Cutting

    void aPastedCutDeletesItsSource() {
        PlantOperations editor("armop");
        editor.selectElements({"trend", "calc"});
        editor->on_actCutMenuElement_triggered();
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().calls.size(), 2);
        QCOMPARE(editor.host.writes().calls[0].records.size(), 2);
        QCOMPARE(editor.host.writes().calls[1].table, QString("Menu"));
        QCOMPARE(editor.host.writes().calls[1].records, QStringList({"-trend", "-calc"}));
        editor.host.deliver(*editor.module);
        QVERIFY(!editor->element("trend").isValid());
        QVERIFY(!editor->element("calc").isValid());
        QVERIFY2(shownMenu(editor).contains("\n  Тренд\n"), qPrintable(shownMenu(editor)));
        QCOMPARE(editor.host.failures, QStringList());
    }

    void aCutFolderIsDeletedWhole() {
        PlantOperations editor("armop");
        editor.selectElements({"grafiki"});
        editor->on_actCutMenuElement_triggered();
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().calls.size(), 2);
        QCOMPARE(editor.host.writes().calls[1].records,
                 QStringList({"-grafiki", "-trend", "-calc", "-glubzhe", "-form"}));
    }

    void aCutOfAnotherDesktopIsDeleted() {
        PlantOperations editor("armop");
        editor.selectElements({"glubzhe"});
        editor->on_actCutMenuElement_triggered();
        editor.openDesck("armpech");
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().calls.size(), 2);
        QCOMPARE(editor.host.writes().calls[1].records, QStringList({"-glubzhe", "-form"}));
        editor.host.deliver(*editor.module);
        editor.openDesck("armop");
        QVERIFY(!editor->element("glubzhe").isValid());
        QVERIFY(!editor->element("form").isValid());
    }

    void aCutElementWithoutItsResourceIsDeletedAllTheSame() {
        PlantOperations editor("armop");
        editor.selectElements({"propal"});
        editor->on_actCutMenuElement_triggered();
        editor.makeCurrent("grafiki");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().take(), QString("Menu\n  -propal\n"));
    }

    void aCutKeyWithoutARecordIsNotDeleted() {
        PlantOperations editor("armop");
        editor.selectElements({"trend", "calc"});
        editor->m_tabMenu.RecDel(orvo::seekKey(editor->m_tabMenu, "calc"));
        editor->on_actCutMenuElement_triggered();
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().calls.size(), 2);
        QCOMPARE(editor.host.writes().calls[0].records.size(), 1);
        QCOMPARE(editor.host.writes().calls[1].records, QStringList("-trend"));
    }

    void aSecondPasteOfACutDeletesNothingMore() {
        PlantOperations editor("armop");
        editor.selectElements({"trend"});
        editor->on_actCutMenuElement_triggered();
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        editor.host.deliver(*editor.module);
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().calls.size(), 4);
        editor.host.deliver(*editor.module);
        QCOMPARE(shownMenu(editor).count("\n  Тренд\n"), 2);
        QCOMPARE(editor.host.failures, QStringList());
    }

    void aCutThatAnotherChangedMeanwhileIsRefused_data() {
        QTest::addColumn<QByteArray>("cut");
        QTest::addColumn<int>("act");
        QTest::addColumn<QString>("reason");
        QTest::newRow("renamed") << QByteArray("trend") << 0 << "изменено: \"Новое\"";
        QTest::newRow("renamed inside") << QByteArray("grafiki") << 0 << "изменено: \"Новое\"";
        QTest::newRow("put inside") << QByteArray("glubzhe") << 1 << "внутри появилось: \"Чужой\"";
        QTest::newRow("moved to another menu")
            << QByteArray("trend") << 2 << "удалено или перемещено: \"Тренд\"";
        QTest::newRow("deleted inside")
            << QByteArray("grafiki") << 3 << "удалено или перемещено: \"Тренд\"";
    }
    void aCutThatAnotherChangedMeanwhileIsRefused() {
        QFETCH(QByteArray, cut);
        QFETCH(int, act);
        PlantOperations editor("armop");
        editor.selectElements({cut.constData()});
        editor->on_actCutMenuElement_triggered();
        if (act == 0)
            editor.store.update("Menu",
                                {{"KeyLink", QString("trend")}, {"caption", QString("Новое")}});
        else if (act == 1)
            addElement(editor.store, "armop", "theirs", "glubzhe", "Чужой", 5000, "rtrend");
        else if (act == 2)
            editor.store.update("Menu",
                                {{"KeyLink", QString("trend")}, {"FolderKey", QString("armpech")}});
        else
            editor.store.remove("Menu", "trend");
        editor.host.deliver(*editor.module);
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        QVERIFY(editor.isAsking());
        QFETCH(QString, reason);
        QVERIFY2(editor.question().contains(reason), qPrintable(editor.question()));
        QCOMPARE(editor.host.writes().take(), QString());
        editor.box()->hide();
        // Cut anew it goes with what the other did.
        if (act == 2)
            return;
        editor.selectElements({cut.constData()});
        editor->on_actCutMenuElement_triggered();
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        QVERIFY(!editor.isAsking());
        QCOMPARE(editor.host.writes().calls.size(), 2);
    }

    /// The place of a chosen element among its siblings is another one after the paste.
    void aCutWhoseElementWasMovedUpIsPasted() {
        PlantOperations editor("armop");
        editor.selectElements({"calc"});
        editor->on_actCutMenuElement_triggered();
        editor.store.update("Menu", {{"KeyLink", QString("calc")}, {"order_", 7000}});
        editor.host.deliver(*editor.module);
        editor.makeCurrent("MenuRootNode");
        editor->on_actPasteMenuElement_triggered();
        QVERIFY(!editor.isAsking());
        QCOMPARE(editor.host.writes().calls.size(), 2);
    }

    void aRefusedPasteStillDeletesTheCut() {
        PlantOperations editor("armop");
        editor.selectElements({"trend"});
        editor->on_actCutMenuElement_triggered();
        editor.makeCurrent("MenuRootNode");
        editor.host.writes().refusedTable = "Menu";
        editor->on_actPasteMenuElement_triggered();
        QCOMPARE(editor.host.writes().calls.size(), 2);
        QCOMPARE(editor.host.writes().calls[1].records, QStringList("-trend"));
        QVERIFY(!editor.isAsking());
    }
};

QTEST_MAIN(TestMenuClipboardPaste)
#include "tst_menu_clipboard_paste.moc"
