// Copying and pasting desktops and their folders.
#include "tests/menu/MenuDesktopOpsTest.h"

class TestMenuDesktopCopies : public QObject {
    Q_OBJECT
private slots:
    void init() { QGuiApplication::clipboard()->clear(); }

    void aPastedDesktopHasNewKeysAndOldValues() {
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
        OperationsOn editor(store, "armop");
        editor->on_actCopyDescktopOrFolder_triggered();
        editor.openDesck("sklad");
        QVERIFY(editor.action("actPasteDescktopOrFolder")->isEnabled());
        editor.action("actPasteDescktopOrFolder")->trigger();
        // The elements stand in the order of their old keys: calc, form, full, glubzhe, grafiki,
        // propal, shema, trend. Resources are not looked up: the lost one goes along.
        const QString none = " ico=NULL separator=NULL oneCopy=NULL";
        const QString bare = " params=NULL\n";
        QCOMPARE(
            editor.host.writes().take(),
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
        editor.host.deliver(*editor.module);
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
        QCOMPARE(editor.host.failures, QStringList());
    }

    void theElementsComeFromTheServer() {
        PlantOperations editor("armpech");
        editor->on_actCopyDescktopOrFolder_triggered();
        // Another desktop is open at the time of the paste, and the copied one gets an element.
        editor.openDesck("armop");
        addElement(editor.store, "armpech", "pozdnee", "", "Позднее", 5);
        editor->on_actPasteDescktopOrFolder_triggered();
        const QString written = editor.host.writes().take();
        QVERIFY2(written.contains("caption='Позднее' order_=5"), qPrintable(written));
        QVERIFY(!written.contains("Тренд"));
    }

    void aLostParentBecomesEmptyText() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armpech", "sirota", "nosuch", "Сирота", 5);
        OperationsOn editor(store, "armpech");
        editor->on_actCopyDescktopOrFolder_triggered();
        editor->on_actPasteDescktopOrFolder_triggered();
        QVERIFY(editor.host.writes().take().contains("parent='' FolderKey='#1' caption='Сирота'"));
    }

    void parentsCompareWithoutCase() {
        TestStore store;
        fillPlant(store);
        addElement(store, "armpech", "Papka", "", "Папка", 0);
        addElement(store, "armpech", "vnutri", "pAPKA", "Внутри", 5);
        OperationsOn editor(store, "armpech");
        editor->on_actCopyDescktopOrFolder_triggered();
        editor->on_actPasteDescktopOrFolder_triggered();
        const QString written = editor.host.writes().take();
        QVERIFY2(written.contains("+#3 parent='#2' FolderKey='#1' caption='Внутри'"),
                 qPrintable(written));
    }

    void aDesktopWithoutElementsIsPastedInOneCall() {
        PlantOperations editor("armpech");
        editor->on_actCopyDescktopOrFolder_triggered();
        editor.openDesck("sklad");
        editor->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(
            editor.host.writes().take(),
            QString("MenuFolder\n  +#1 ParentKey='sklad' caption='АРМ печи_копия' order_='2000' "
                    "isFolder=false\n"));
    }

    void aPastedFolderBringsAllBelowIt() {
        TestStore store;
        fillPlant(store);
        addDesck(store, "azot", "ceh", "Азот", false);
        addElement(store, "armpech", "odin", "", "Один", 5, "rtrend");
        OperationsOn editor(store, "ceh");
        editor->on_actCopyDescktopOrFolder_triggered();
        editor.openDesck("sklad");
        editor->on_actPasteDescktopOrFolder_triggered();
        const QString written = editor.host.writes().take();
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
        editor.host.deliver(*editor.module);
        QVERIFY2(shownDescks(editor).contains("  Склад\n"
                                              "    Цех 1_копия\n"
                                              "      Печь\n"
                                              "        АРМ печи\n"
                                              "      Азот\n"
                                              "      АРМ оператора\n"),
                 qPrintable(shownDescks(editor)));
        QCOMPARE(editor.host.failures, QStringList());
    }

    void onlyTheTopRowOfAPasteHasTheSuffix() {
        TestStore store;
        fillPlant(store);
        addDesck(store, "bezimeni", "sklad", "", false);
        OperationsOn editor(store, "sklad");
        editor->on_actCopyDescktopOrFolder_triggered();
        editor->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(
            editor.host.writes().take(),
            QString("MenuFolder\n"
                    "  +#1 ParentKey='sklad' caption='Склад_копия' order_='1000' isFolder=true\n"
                    "  +#2 ParentKey='#1' caption='' order_='2000' isFolder=false\n"));
        // A row without a caption, copied by itself, is named by the suffix alone.
        editor.openDesck("bezimeni");
        editor->on_actCopyDescktopOrFolder_triggered();
        editor.openDesck("ceh");
        editor->on_actPasteDescktopOrFolder_triggered();
        const QString written = editor.host.writes().take();
        QVERIFY2(written.contains("ParentKey='ceh' caption='_копия'"), qPrintable(written));
    }

    void pastingAtTheTopWritesNoParent() {
        PlantOperations editor;
        putDesckOnClipboard("armpech");
        editor.openDesck("mainnode");
        editor->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(editor.host.writes().take(),
                 QString("MenuFolder\n  +#1 ParentKey=NULL caption='АРМ печи_копия' order_='2000' "
                         "isFolder=false\n"));
    }

    void pastingOnADesktopTakesItsKeyAsParent() {
        PlantOperations editor;
        putDesckOnClipboard("armpech");
        editor.openDesck("armop");
        editor->on_actPasteDescktopOrFolder_triggered();
        QVERIFY(editor.host.writes().take().contains("ParentKey='armop'"));
    }

    void aFolderWithOnlyAFolderIsPasted() {
        TestStore store;
        addDesck(store, "f1", "", "Внешняя", true);
        addDesck(store, "f2", "f1", "Внутренняя", true);
        OperationsOn editor(store);
        putDesckOnClipboard("F1"); // keys compare without regard to case
        editor.openDesck("mainnode");
        editor->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(
            editor.host.writes().take(),
            QString("MenuFolder\n"
                    "  +#1 ParentKey=NULL caption='Внешняя_копия' order_='1000' isFolder=true\n"
                    "  +#2 ParentKey='#1' caption='Внутренняя' order_='1000' isFolder=true\n"));
    }

    void theOrderOfAPastedRowIsThatOfItsKind() {
        TestStore store;
        fillPlant(store);
        addDesck(store, "krayniy", "", "Крайний", false, "777");
        addDesck(store, "papka", "", "Папка", true, "5");
        addDesck(store, "vnutri", "papka", "Внутри", false, "888");
        OperationsOn editor(store, "sklad");
        putDesckOnClipboard("krayniy");
        editor->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(
            editor.host.writes().take(),
            QString("MenuFolder\n  +#1 ParentKey='sklad' caption='Крайний_копия' order_='2000' "
                    "isFolder=false\n"));
        putDesckOnClipboard("papka");
        editor->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(
            editor.host.writes().take(),
            QString("MenuFolder\n"
                    "  +#1 ParentKey='sklad' caption='Папка_копия' order_='1000' isFolder=true\n"
                    "  +#2 ParentKey='#1' caption='Внутри' order_='2000' isFolder=false\n"));
    }

    void whetherARowIsAFolderIsCopied() {
        TestStore store;
        fillPlant(store);
        store.sql("UPDATE \"MenuFolder\" SET \"isFolder\" = NULL WHERE \"KeyLink\" = 'obshiy'");
        OperationsOn editor(store, "sklad");
        putDesckOnClipboard("obshiy");
        editor->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(editor.host.writes().take(),
                 QString("MenuFolder\n  +#1 ParentKey='sklad' caption='Общий_копия' order_='2000' "
                         "isFolder=NULL\n"));
    }

    void theNewNameIsMadeOfWhatTheTreeShows() {
        PlantOperations editor;
        editor->m_desckModel->setData(editor->desck("armpech"), "Иное", Qt::DisplayRole);
        editor->m_desckModel->setData(editor->desck("pech"), "Горн", Qt::DisplayRole);
        editor.openDesck("sklad");
        putDesckOnClipboard("pech");
        editor->on_actPasteDescktopOrFolder_triggered();
        // What lies below comes from the table.
        QCOMPARE(
            editor.host.writes().take(),
            QString("MenuFolder\n"
                    "  +#1 ParentKey='sklad' caption='Горн_копия' order_='1000' isFolder=true\n"
                    "  +#2 ParentKey='#1' caption='АРМ печи' order_='2000' isFolder=false\n"));
    }

    void theKeyEndsAtAZeroByte() {
        PlantOperations editor;
        putDesckOnClipboard(QByteArray("armpech\0and more", 16));
        editor.openDesck("sklad");
        editor->on_actPasteDescktopOrFolder_triggered();
        QVERIFY(editor.host.writes().take().contains("АРМ печи_копия"));
    }

    void foreignKeysPasteNothing_data() {
        QTest::addColumn<QByteArray>("bytes");
        dataRow("nothing", QByteArray());
        dataRow("a zero byte", QByteArray("\0armop", 6));
        dataRow("an unknown key", QByteArray("nosuch"));
        dataRow("the root row", QByteArray("mainnode"));
        dataRow("a key with a blank", QByteArray("armop "));
        dataRow("a statement", QByteArray("armop' or '1'='1"));
        dataRow("bytes of another code", QByteArray("\xff\xfe\x98\x01"));
        dataRow("a megabyte", QByteArray(1 << 20, 'a'));
    }

    void foreignKeysPasteNothing() {
        QFETCH(QByteArray, bytes);
        PlantOperations editor;
        putDesckOnClipboard(bytes);
        editor.openDesck("sklad");
        editor->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(editor.host.writes().take(), QString());
        QCOMPARE(editor.host.failures, QStringList());
        QGuiApplication::clipboard()->setText("armop");
        editor->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void aSourceDeletedMeanwhilePastesNothing() {
        PlantOperations editor("armpech");
        editor->on_actCopyDescktopOrFolder_triggered();
        editor.openDesck("sklad");
        editor.store.remove("MenuFolder", "armpech");
        editor.host.deliver(*editor.module);
        editor->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void withoutATargetNothingIsPasted() {
        PlantOperations editor;
        putDesckOnClipboard("armop");
        editor.view("tvDesck")->setCurrentIndex(QModelIndex());
        editor->on_actPasteDescktopOrFolder_triggered();
        editor->m_currentDesckKey = "nosuch";
        editor->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(editor.host.writes().take(), QString());
    }

    void withoutAnAnswerTheDesktopIsPastedBare() {
        PlantOperations editor;
        putDesckOnClipboard("armop");
        editor.openDesck("sklad");
        editor.store.sql("ALTER TABLE \"Menu\" RENAME TO \"gone\"");
        editor->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(editor.host.writes().take(),
                 QString("MenuFolder\n  +#1 ParentKey='sklad' caption='АРМ оператора_копия' "
                         "order_='2000' isFolder=false\n"));
        QVERIFY(!editor.isAsking());
    }

    void aRefusedDesktopStillSendsItsElements() {
        PlantOperations editor;
        putDesckOnClipboard("armop");
        editor.openDesck("sklad");
        editor.host.writes().refusedTable = "MenuFolder";
        editor->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(editor.host.writes().calls.size(), 2);
        QCOMPARE(editor.host.writes().calls[1].table, QString("Menu"));
        QVERIFY(!editor.isAsking());
    }

    void aPastedFolderMayHoldItself() {
        // A folder pasted into itself is read from the table, which the paste does not change.
        PlantOperations editor;
        putDesckOnClipboard("pech");
        editor.openDesck("pech");
        editor->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(editor.host.writes().take(),
                 QString("MenuFolder\n"
                         "  +#1 ParentKey='pech' caption='Печь_копия' order_='1000' isFolder=true\n"
                         "  +#2 ParentKey='#1' caption='АРМ печи' order_='2000' isFolder=false\n"));
    }

    void pastingIntoItsOwnSubFolderEnds() {
        PlantOperations editor;
        putDesckOnClipboard("ceh");
        editor.openDesck("pech");
        editor->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(editor.host.writes().calls.size(), 2);
        QCOMPARE(editor.host.writes().calls[0].records.size(), 4);
        editor.host.deliver(*editor.module);
        QVERIFY(shownDescks(editor).contains("    Печь\n      Цех 1_копия\n        Печь\n"));
    }

    void aCircleOfFoldersIsPastedOnce() {
        TestStore store;
        addDesck(store, "f1", "", "Первая", true);
        addDesck(store, "f2", "f1", "Вторая", true);
        addDesck(store, "d", "f2", "Стол", false);
        OperationsOn editor(store);
        // Another client hangs the upper folder below the lower one; the row stays where it was.
        store.moveBelow("MenuFolder", "ParentKey", "f1", "F2");
        editor.host.deliver(*editor.module);
        putDesckOnClipboard("f1");
        editor.openDesck("mainnode");
        editor->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(editor.host.writes().take(),
                 QString("MenuFolder\n"
                         "  +#1 ParentKey=NULL caption='Первая_копия' order_='1000' isFolder=true\n"
                         "  +#2 ParentKey='#1' caption='Вторая' order_='1000' isFolder=true\n"
                         "  +#3 ParentKey='#2' caption='Стол' order_='2000' isFolder=false\n"));
    }

    void aVeryDeepFolderIsPasted() {
        constexpr int depth = 20000;
        TestStore store;
        addDesck(store, "f0", "", "Дно", true);
        store.sql(
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000) "
            "INSERT INTO \"MenuFolder\" (\"KeyLink\", \"ParentKey\", \"caption\", \"order_\", "
            "\"isFolder\") SELECT 'f' || i, 'f' || (i - 1), 'x', '1000', TRUE FROM n");
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

    void withoutAStartNothingHappens() {
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

    void bigDesktopsArePastedAndDeletedInOneCallATable() {
        TestStore store;
        fillPlant(store);
        addDesck(store, "big", "sklad", "Большой", false);
        store.sql(
            "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 9999) "
            "INSERT INTO \"Menu\" (\"KeyLink\", \"parent\", \"FolderKey\", \"caption\", "
            "\"order_\", \"MenuResourceKey\") "
            "SELECT 'e' || i, CASE WHEN i < 100 THEN NULL ELSE 'e' || (i % 100) END, 'big', "
            "'Элемент ' || i, i * 1000, CASE WHEN i < 100 THEN NULL ELSE 'rtrend' END FROM n");
        OperationsOn editor(store);
        editor.view("tvDesck")->setCurrentIndex(editor->desck("big"));
        editor->on_actCopyDescktopOrFolder_triggered();
        editor.view("tvDesck")->setCurrentIndex(editor->desck("sklad"));
        QElapsedTimer timer;
        timer.start();
        editor->on_actPasteDescktopOrFolder_triggered();
        qInfo("a desktop with 10,000 elements pasted in %lld ms", timer.elapsed());
        QVERIFY(timer.elapsed() < 20000);
        QCOMPARE(editor.host.writes().calls.size(), 2);
        QCOMPARE(editor.host.writes().calls[0].records.size(), 1);
        QCOMPARE(editor.host.writes().calls[1].records.size(), 10000);
        editor.host.writes().calls.clear();
        editor.host.deliver(*editor.module);
        editor.view("tvDesck")->setCurrentIndex(editor->desck("big"));
        editor->on_actDeleteFromtvDesck_triggered();
        timer.start();
        editor.answer(editor.Yes);
        qInfo("and deleted in %lld ms", timer.elapsed());
        QVERIFY(timer.elapsed() < 20000);
        QCOMPARE(editor.host.writes().calls.size(), 2);
        QCOMPARE(editor.host.writes().calls[0].records.size(), 10000);
        QCOMPARE(editor.host.writes().calls[1].records, QStringList("-big"));
    }
};

QTEST_MAIN(TestMenuDesktopCopies)
#include "tst_menu_desktopops_more.moc"
