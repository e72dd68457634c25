// The tree of the resource editor: filling it, its rows and positions.
#include "tests/resources/ResProbe.h"

#include "frame/Records.h"
#include "frame/Values.h"
#include "tests/models/IconCheck.h"
#include "tests/models/TreeText.h"

using namespace orvo::test;

class TestResTree : public QObject {
    Q_OBJECT
private slots:
    void theCatalogueIsShownInTableOrder() {
        StartedCatalogue editor;
        QCOMPARE(editor.watchedModels(), 2);
        QCOMPARE(treetext::print(*editor->m_resModel, ResColumn::KeyLink),
                 QString("Ресурсы меню #MenuResources\n"
                         "  модули #mod\n"
                         "    Аварии #alarms\n"
                         "    Тренды #trends\n"
                         "      Тренд #rtrend\n"
                         "    Журнал #rlog\n"
                         "    Архив #rtable\n"
                         "  функции #fun\n"
                         "    Расчёты #calc\n"
                         "      Расчёт #rcalc\n"
                         "  формы отображения #frm\n"
                         "    Котлы #boilers\n"
                         "      Старые #old\n"
                         "      Котёл #rboiler\n"
                         "      Горелка #rburner\n"
                         "    Барабан #rdrum\n"
                         "  Непривязанные объекты #WrongFolder\n"
                         "    Потерянная #rlost\n"
                         "Файловые ресурсы #FileResources\n"
                         "  docs #docs\n"
                         "    deep #deep\n"
                         "    Руководство #rmanual\n"
                         "  icons #icons\n"
                         "    Насос #rpump\n"
                         "  Прочти #rreadme\n"));
    }

    void bothAreasAreExpanded() {
        StartedCatalogue editor;
        QTreeView* view = editor.view("tvRes");
        QVERIFY(view->isExpanded(editor->row("MenuResources")));
        QVERIFY(view->isExpanded(editor->row("FileResources")));
        QVERIFY(!view->isExpanded(editor->row("mod")));
    }

    void columnsOfFoldersAndResources() {
        TestStore store;
        fillCatalogue(store);
        store.update("MenuResource", {{"KeyLink", QString("rtrend")},
                                      {"params", QString("/fast")},
                                      {"ico", QString("pump.png")}});
        ResourcesOn editor(store);
        const auto columns = [&](const char* key) {
            QVariantList values;
            for (int column = 0; column < ResColumn::Count; ++column)
                values << editor->row(key, column).data();
            return values;
        };
        const QVariant none;
        QCOMPARE(columns("trends"), (QVariantList{"Тренды", none, none, none, none, "trends", 1,
                                                  none, "mod", true, none, none, none, false}));
        QCOMPARE(columns("rtrend"),
                 (QVariantList{"Тренд", "Trend", "pump.png", none, none, "rtrend", 1, "/fast",
                               "trends", false, none, none, 0, none}));
        QCOMPARE(columns("MenuResources"),
                 (QVariantList{"Ресурсы меню", none, none, none, none, "MenuResources", 0, none,
                               none, true, none, none, none, none}));
        QCOMPARE(columns("FileResources").at(ResColumn::Type), QVariant(4));
        QVERIFY(orvo::isNull(editor->row("rlog", ResColumn::Icon).data()));
        QVERIFY(editor->text("mod", ResColumn::FolderKey).isEmpty());
    }

    void aKindWithoutTopFolderEndsTheLoading_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QStringList>("kinds");
        dataRow("module", "mod", QStringList());
        dataRow("function", "fun", QStringList("mod"));
        dataRow("form", "frm", QStringList({"mod", "fun"}));
    }

    void aKindWithoutTopFolderEndsTheLoading() {
        QFETCH(QString, key);
        QFETCH(QStringList, kinds);
        TestStore store;
        fillCatalogue(store);
        store.remove("MenuResourceFolder", qPrintable(key));
        ResourcesOn editor(store);
        const QModelIndex root = editor->row("MenuResources");
        QStringList shown;
        for (int row = 0; row < editor->m_resModel->rowCount(root); ++row)
            shown << editor->m_resModel->getItemKeyLink(editor->m_resModel->index(row, 0, root));
        QCOMPARE(shown, kinds);
        QCOMPARE(editor->m_resModel->rowCount(editor->row("FileResources")), 0);
        QVERIFY(!editor.view("tvRes")->isExpanded(root));
        QVERIFY(!editor.view("tvRes")->isExpanded(editor->row("FileResources")));
    }

    void withoutOrphansThereIsNoOrphanRow() {
        TestStore store;
        fillCatalogue(store);
        store.remove("MenuResource", "rlost");
        ResourcesOn editor(store);
        QCOMPARE(orvo::recordCount(editor->m_tabOrphans), 0);
        QVERIFY(!editor->row("WrongFolder").isValid());
        QCOMPARE(editor->m_resModel->rowCount(editor->row("FileResources")), 3);
    }

    void orphansShowNoIconAndNoLock() {
        TestStore store;
        fillCatalogue(store);
        store.update("MenuResource", {{"KeyLink", QString("rlost")},
                                      {"ico", QString("pump.png")},
                                      {"params", QString("p")},
                                      {"UsersKey", QString("uother")}});
        ResourcesOn editor(store);
        QCOMPARE(orvo::recordCount(editor->m_tabOrphans), 1);
        QCOMPARE(editor->text("rlost", ResColumn::Name), QString("Lost"));
        QCOMPARE(editor->text("rlost", ResColumn::Params), QString("p"));
        QCOMPARE(editor->text("rlost", ResColumn::FolderKey), QString("nofolder"));
        QCOMPARE(editor->row("rlost", ResColumn::Type).data(), QVariant(3));
        QCOMPARE(editor->row("rlost", ResColumn::IsFolder).data(), QVariant(false));
        for (int column :
             {ResColumn::Icon, ResColumn::Lock, ResColumn::LockTime, ResColumn::Blocked})
            QVERIFY(!editor->row("rlost", column).data().isValid());
        QCOMPARE(editor->row("WrongFolder", ResColumn::Type).data(), QVariant(5));
        QVERIFY(!editor->row("rnowhere").isValid());
    }

    void orphansAreMarkedCopiesOfTheirRecords() {
        TestStore store;
        fillCatalogue(store);
        addItem(store, "ralso", 3, "nowhere", "Also", "Тоже");
        ResourcesOn editor(store);
        QCOMPARE(orvo::recordCount(editor->m_tabOrphans), 2);
        // By key, not by name.
        QCOMPARE(editor->row("ralso").row(), 0);
        QCOMPARE(editor->row("rlost").row(), 1);
        const MDRData* orphan = orvo::seekKey(editor->m_tabOrphans, "rlost");
        const MDRData* record = orvo::seekKey(editor->m_tabResource, "rlost");
        QVERIFY(orphan && record && orphan != record);
        for (int field = 0; field < editor->m_tabOrphans.array->fieldCount; ++field) {
            uint8_t marked = 0;
            QCOMPARE(MDRIsUser(orvo::fieldOf(orphan, field), orphan, &marked), MDX_OK);
            QCOMPARE(int(marked), 1);
            QCOMPARE(orvo::textOf(orphan, field), orvo::textOf(record, field));
        }
    }

    void onlyFormsAreOrphans() {
        TestStore store;
        fillCatalogue(store);
        store.remove("MenuResource", "rlost");
        addItem(store, "rastray", 1, "nofolder", "Stray", "Модуль");
        addItem(store, "rbstray", 2, "nofolder", "Stray", "Функция");
        addItem(store, "rcstray", 4, "nofolder", "stray.txt", "Файл");
        ResourcesOn editor(store);
        QCOMPARE(orvo::recordCount(editor->m_tabOrphans), 0);
        QVERIFY(!editor->row("WrongFolder").isValid());
        for (const char* key : {"rastray", "rbstray", "rcstray"})
            QVERIFY(!editor->row(key).isValid());
    }

    void iconsComeFromTheWorkDirectory() {
        TestStore store;
        fillCatalogue(store);
        store.update("MenuResource", {{"KeyLink", QString("rlog")}, {"ico", QString("green.png")}});
        TestHost host(store);
        ResEditor editor(host, "Resources");
        const QString icon = editor->m_paths->workDir + "files/icons/green.png";
        QVERIFY(makeImage(icon, Qt::green));
        QVERIFY(editor.start());
        QVERIFY(showsImage(editor->row("rlog", ResColumn::Icon), icon));
        QVERIFY(showsNothing(editor->row("rtable", ResColumn::Icon)));
    }

    void anOpenFolderShowsIt() {
        StartedCatalogue editor;
        QVERIFY(showsImage(editor->row("MenuResources"), ":/res/openfolder1.png"));
        QVERIFY(showsImage(editor->row("mod"), ":/res/closedfolder1.png"));
        editor.view("tvRes")->expand(editor->row("mod"));
        QVERIFY(showsImage(editor->row("mod"), ":/res/openfolder1.png"));
        editor.view("tvRes")->collapse(editor->row("mod"));
        QVERIFY(showsImage(editor->row("mod"), ":/res/closedfolder1.png"));
    }

    void equalNamesKeepTheTablesOrder() {
        TestStore store;
        fillCatalogue(store);
        addItem(store, "same2", 1, "alarms", "Same", "Второй");
        addItem(store, "same1", 1, "alarms", "same", "Первый");
        ResourcesOn editor(store);
        QCOMPARE(editor->row("same1").row(), editor->getResItemPosition("same1", "alarms", 1));
        QCOMPARE(editor->row("same2").row(), editor->getResItemPosition("same2", "alarms", 1));
        QCOMPARE(editor->row("same1").row(), 0);
        QCOMPARE(editor->row("same2").row(), 1);
    }

    void aFileInAFolderOfAnotherKindHasNoRow() {
        StartedCatalogue editor;
        QVERIFY(!editor->row("rstray").isValid());
        QVERIFY(orvo::seekKey(editor->m_tabResource, "rstray"));
    }

    void aFolderBelowTheKeyOfTheFileAreaIsPassedOver() {
        TestStore store;
        fillCatalogue(store);
        addFolder(store, "literal", 4, "FileResources", "literal");
        ResourcesOn editor(store);
        QVERIFY(!editor->row("literal").isValid());
    }

    void aCircleOfFoldersIsNotFollowed() {
        TestStore store;
        fillCatalogue(store);
        addFolder(store, "a", 1, "", "A");
        addFolder(store, "b", 1, "a", "B");
        addFolder(store, "self", 1, "", "Self");
        store.moveBelow("MenuResourceFolder", "ParentKey", "a", "b");
        store.moveBelow("MenuResourceFolder", "ParentKey", "self", "self");
        ResourcesOn editor(store);
        QVERIFY(!editor->row("a").isValid());
        QVERIFY(!editor->row("self").isValid());
    }

    void locksShowTheirOwner_data() {
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<int>("blocked");
        dataRow("own, in another case", "ueng", "Иванов П.", 1);
        dataRow("another's", "uother", "Петрова А.", 2);
    }

    void locksShowTheirOwner() {
        QFETCH(QString, user);
        TestStore store;
        fillCatalogue(store);
        store.update("MenuResource", {{"KeyLink", QString("rboiler")}, {"UsersKey", user}});
        store.sql(
            "UPDATE \"MenuResource\" SET \"dateTimeEdit\" = 86400 WHERE \"KeyLink\" = 'rboiler'");
        store.update("MenuResource", {{"KeyLink", QString("rtrend")}, {"UsersKey", user}});
        ResourcesOn editor(store);
        QTEST(editor->text("rboiler", ResColumn::Lock), "caption");
        QCOMPARE(editor->text("rboiler", ResColumn::LockTime),
                 QDateTime::fromSecsSinceEpoch(86400).toString("dd.MM.yyyy hh:mm:ss"));
        QTEST(editor->row("rboiler", ResColumn::Blocked).data().toInt(), "blocked");
        QVERIFY(!editor->row("rboiler", ResColumn::Lock).data(Qt::DecorationRole).isNull());
        // Only forms are locked.
        QVERIFY(editor->text("rtrend", ResColumn::Lock).isEmpty());
        QCOMPARE(editor->row("rtrend", ResColumn::Blocked).data(), QVariant(0));
    }

    void aReleasedLockLeavesItsTexts() {
        TestStore store;
        fillCatalogue(store);
        store.update("MenuResource",
                     {{"KeyLink", QString("rboiler")}, {"UsersKey", QString("ueng")}});
        store.sql(
            "UPDATE \"MenuResource\" SET \"dateTimeEdit\" = 86400 WHERE \"KeyLink\" = 'rboiler'");
        ResourcesOn editor(store);
        const QString time = editor->text("rboiler", ResColumn::LockTime);
        QVERIFY(!time.isEmpty());
        store.sql("UPDATE \"MenuResource\" SET \"UsersKey\" = NULL, \"dateTimeEdit\" = NULL "
                  "WHERE \"KeyLink\" = 'rboiler'");
        editor.host.deliver(*editor.module);
        QCOMPARE(editor->row("rboiler", ResColumn::Blocked).data(), QVariant(0));
        QVERIFY(editor->row("rboiler", ResColumn::Lock).data(Qt::DecorationRole).isNull());
        QCOMPARE(editor->text("rboiler", ResColumn::Lock), QString("Иванов П."));
        QCOMPARE(editor->text("rboiler", ResColumn::LockTime), time);
    }

    void anUnknownUserLocksNothing() {
        TestStore store;
        fillCatalogue(store);
        store.update("MenuResource",
                     {{"KeyLink", QString("rboiler")}, {"UsersKey", QString("nobody")}});
        ResourcesOn editor(store);
        QVERIFY(editor->text("rboiler", ResColumn::Lock).isEmpty());
        QCOMPARE(editor->row("rboiler", ResColumn::Blocked).data(), QVariant(0));
    }

    void aUserWithoutANameLocksNothing() {
        TestStore store;
        fillCatalogue(store);
        addUser(store, "unameless", "", "", "");
        store.update("MenuResource",
                     {{"KeyLink", QString("rboiler")}, {"UsersKey", QString("unameless")}});
        store.sql(
            "UPDATE \"MenuResource\" SET \"dateTimeEdit\" = 86400 WHERE \"KeyLink\" = 'rboiler'");
        ResourcesOn editor(store);
        QVERIFY(editor->text("rboiler", ResColumn::Lock).isEmpty());
        QVERIFY(!editor->row("rboiler", ResColumn::LockTime).data().isValid());
        QCOMPARE(editor->row("rboiler", ResColumn::Blocked).data(), QVariant(0));
    }

    void aLockWithoutATimeShowsNone() {
        TestStore store;
        fillCatalogue(store);
        store.update("MenuResource",
                     {{"KeyLink", QString("rboiler")}, {"UsersKey", QString("uother")}});
        ResourcesOn editor(store);
        QCOMPARE(editor->text("rboiler", ResColumn::Lock), QString("Петрова А."));
        QVERIFY(!editor->row("rboiler", ResColumn::LockTime).data().isValid());
        QCOMPARE(editor->row("rboiler", ResColumn::Blocked).data(), QVariant(2));
    }

    void foldersHavePositions() {
        StartedCatalogue editor;
        QCOMPARE(editor->getResFolderPosition("alarms", "mod", 1), 0);
        QCOMPARE(editor->getResFolderPosition("TRENDS", "MOD", 1), 1);
        QCOMPARE(editor->getResFolderPosition("docs", "", 4), 0);
        QCOMPARE(editor->getResFolderPosition("icons", "", 4), 1);
        QCOMPARE(editor->getResFolderPosition("trends", "fun", 1), -1);
        QCOMPARE(editor->getResFolderPosition("trends", "mod", 2), -1);
        QCOMPARE(editor->getResFolderPosition("nosuch", "mod", 1), -1);
        QCOMPARE(editor->getResFolderPosition("nosuch", "zzz", 9), -1); // past the last record
    }

    void resourcesHavePositions() {
        StartedCatalogue editor;
        QCOMPARE(editor->getResItemPosition("rlog", "mod", 1), 0);
        QCOMPARE(editor->getResItemPosition("rtable", "mod", 1), 1);
        QCOMPARE(editor->getResItemPosition("rreadme", "", 4), 0);
        QCOMPARE(editor->getResItemPosition("rlog", "trends", 1), -1);
        QCOMPARE(editor->getResItemPosition("rlog", "mod", 4), -1);
        QCOMPARE(editor->getResItemPosition("nosuch", "mod", 1), -1);
    }

    void foldersBeforeResourcesAreCounted() {
        StartedCatalogue editor;
        QCOMPARE(editor->getFolderCount("mod"), 2);
        QCOMPARE(editor->getFolderCount("trends"), 0);
        QCOMPARE(editor->getFolderCount(""), 2);
        QCOMPARE(editor->getFolderCount("FileResources"), 2);
        QCOMPARE(editor->getFolderCount("nosuch"), 2); // of the top rows
    }
};

QTEST_MAIN(TestResTree)
#include "tst_res_tree.moc"
