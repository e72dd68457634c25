// Saving new and edited rows: what is checked, what is written, when the edit ends.
#include "tests/resources/ResSavingTest.h"

#include "platform/client/Session.h"

using namespace orvo::test;

class TestResSaving : public QObject {
    Q_OBJECT
private slots:
    // New rows

    void aNewResourceIsWritten_data() {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("written");
        dataRow("module", "actAddModule", "trends", "Отчёты",
                "MenuResource\n  +#1 MenuResourceFolderKey='trends' "
                "name_='Report' type_=1 caption='Отчёты' params='-d' ico=''\n");
        dataRow("function", "actAddFunction", "fun", "Счёт",
                "MenuResource\n  +#1 MenuResourceFolderKey='fun' "
                "name_='Report' type_=2 caption='Счёт' params='-d' ico=''\n");
    }

    void aNewResourceIsWritten() {
        QFETCH(QString, action);
        QFETCH(QString, folder);
        QFETCH(QString, caption);
        NewRowOpen live(qPrintable(action), qPrintable(folder));
        live.type("caption", caption);
        live.type("object", "Report");
        live.type("params", "-d");
        const QModelIndex row = live.current();
        live.save();
        QTEST(live.written(), "written");
        QCOMPARE(live.state(), Idle);
        QVERIFY(!live.buttonsEnabled());
        QVERIFY(!live->m_newItemIndex.isValid());
        QCOMPARE(live.box(), QString());
        // Neither the table nor the row's place has changed yet.
        QVERIFY(!orvo::seekKey(live->m_tabResource, live.key));
        QCOMPARE(live->row(qPrintable(live.key)), row);
        QCOMPARE(live.host.failures, QStringList());
    }

    void aNewResourceTakesItsPlaceWhenItComesBack() {
        NewRowOpen live("actAddModule", "mod");
        live.type("object", "Alpha");
        live.save();
        QCOMPARE(live.below("mod"), "alarms trends rlog rtable " + live.key);
        live.deliver();
        QCOMPARE(live.below("mod"), "alarms trends " + live.key + " rlog rtable");
        QCOMPARE(live.currentKey(), live.key);
        QCOMPARE(live->passport("object"), QVariant("Alpha"));
        QCOMPARE(live.cell(live.current(), ResColumn::Caption), QVariant("новый модуль"));
        QVERIFY(orvo::seekKey(live->m_tabResource, live.key));
    }

    void aNewResourceStaysNewUntilTheNextStart() {
        NewRowOpen live("actAddModule", "mod");
        live.type("object", "Alpha");
        live.save();
        live.deliver();
        QCOMPARE(live.cell(live.current(), ResColumn::IsNew), QVariant(true));
        // So its name can still be typed over, and is then written without a check.
        live.type("object", "Log");
        QCOMPARE(live.state(), EditRow);
        live.save();
        QCOMPARE(live.written().section('\n', 2),
                 QString("MenuResource\n  ~#1 MenuResourceFolderKey='mod' name_='Log' type_=1 "
                         "caption='новый модуль' params='' ico=''\n"));
        EditorUnderTest<WritingProbe> next(live.host, "Resources");
        QVERIFY(next.start());
        QVERIFY(!next->row(qPrintable(live.key), ResColumn::IsNew).data().toBool());
    }

    void aNewResourceWithoutANameIsRefused() {
        NewRowOpen live("actAddModule", "trends");
        live.save();
        QCOMPARE(live.box(), QString(emptyObject));
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.state(), NewRow);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live.below("trends"), "rtrend " + live.key);
        QCOMPARE(live.currentKey(), live.key);
        QVERIFY(live->m_newItemIndex.isValid());
        // The box has one button, which closes it.
        QTest::mouseClick(live->m_popMessageBox->findChildren<QPushButton*>().first(),
                          Qt::LeftButton);
        QCOMPARE(live.box(), QString());
        // A name that was typed and taken back is empty again.
        live.type("object", "Report");
        live.type("object", "");
        live.save();
        QCOMPARE(live.box(), QString(emptyObject));
        QCOMPARE(live.written(), QString());
    }

    void aTakenNameIsRefused_data() {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("name");
        dataRow("same folder", "mod", "Log");
        dataRow("another folder", "alarms", "Log");
        dataRow("another case", "alarms", "tREND");
    }

    void aTakenNameIsRefused() {
        QFETCH(QString, folder);
        QFETCH(QString, name);
        NewRowOpen live("actAddModule", qPrintable(folder));
        live.type("object", name);
        live.save();
        QCOMPARE(live.box(), QString(takenName));
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.state(), NewRow);
        QVERIFY(live.buttonsEnabled());
    }

    void theSameNameOfAnotherKindIsFree() {
        NewRowOpen live("actAddFunction", "calc");
        live.type("object", "Log");
        live.save();
        QCOMPARE(live.box(), QString());
        QVERIFY(live.written().contains("MenuResourceFolderKey='calc' name_='Log' type_=2"));
    }

    void theNameIsCheckedAsTyped() {
        NewRowOpen live("actAddModule", "trends");
        QString message = "что-то";
        const QModelIndex row = live.current();
        QVERIFY(!live->checkResourceName("", row, &message));
        QCOMPARE("Ошибка\n" + message, QString(emptyObject));
        QVERIFY(!live->checkResourceName("trend", row, &message));
        QCOMPARE("Ошибка\n" + message, QString(takenName));
        QVERIFY(live->checkResourceName("Calc", row, &message)); // a function's
        QVERIFY(!live->checkResourceName("Calc", live->row("rcalc"), &message));
        QVERIFY(live->checkResourceName("Tren", row, &message));
        QVERIFY(live->checkResourceName("Trend ", row, &message));
    }

    void aNewFolderIsWritten_data() {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("written");
        const auto add = [](const char* folder, int type) {
            dataRow(folder, folder,
                    QString("MenuResourceFolder\n  +#1 ParentKey='%1' type_=%2 "
                            "caption='новая папка'\n")
                        .arg(folder)
                        .arg(type));
        };
        add("trends", 1);
        add("fun", 2);
        add("old", 3);
        add("deep", 4);
        add("FileResources", 4);
    }

    void aNewFolderIsWritten() {
        QFETCH(QString, folder);
        NewRowOpen live("actAddFolder", qPrintable(folder));
        live.save();
        QTEST(live.written(), "written");
        QCOMPARE(live.state(), Idle);
        QVERIFY(!live.buttonsEnabled());
        QVERIFY(!live->m_newItemIndex.isValid());
        QCOMPARE(live.cell(live.current(), ResColumn::IsNew), QVariant(true));
        QCOMPARE(live.host.failures, QStringList());
    }

    void aNewFolderTakesItsPlaceWhenItComesBack() {
        NewRowOpen live("actAddFolder", "mod");
        live.type("caption", "Прочее");
        live.save();
        QCOMPARE(live.below("mod"), live.key + " alarms trends rlog rtable");
        live.deliver();
        QCOMPARE(live.below("mod"), "alarms " + live.key + " trends rlog rtable");
        QCOMPARE(live.cell(live.current(), ResColumn::IsNew), QVariant(false));
        QCOMPARE(live.currentKey(), live.key);
        QCOMPARE(live->passport("caption"), QVariant("Прочее"));
    }

    void aFolderOfTheFileRootIsGoneAtTheNextStart() {
        NewRowOpen live("actAddFolder", "FileResources");
        live.save();
        live.deliver();
        QVERIFY(live->row(qPrintable(live.key)).isValid());
        QCOMPARE(live.current().parent(), live->row("FileResources"));
        EditorUnderTest<WritingProbe> next(live.host, "Resources");
        QVERIFY(next.start());
        QVERIFY(!next->row(qPrintable(live.key)).isValid());
        QVERIFY(orvo::seekKey(next->m_tabResFolder, live.key));
    }

    void aNewFolderWithoutACaptionIsRefused() {
        NewRowOpen live("actAddFolder", "mod");
        live.type("caption", "");
        live.save();
        QCOMPARE(live.box(), QString(emptyFolder));
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.state(), NewRow);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live->row(qPrintable(live.key)).row(), 0);
    }

    void aTakenCaptionIsRefused_data() {
        QTest::addColumn<QString>("caption");
        dataRow("first of its siblings", "Аварии");
        dataRow("last of its siblings", "Тренды");
        dataRow("in another case", "тРЕНДЫ");
    }

    void aTakenCaptionIsRefused() {
        QFETCH(QString, caption);
        NewRowOpen live("actAddFolder", "mod");
        live.type("caption", caption);
        live.save();
        QCOMPARE(live.box(), QString(takenFolder));
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.state(), NewRow);
    }

    void aNameIsTakenFromItsSaveOn_data() {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("row");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("refusal");
        dataRow("folder", "actAddFolder", "caption", "mod", takenFolder);
        dataRow("resource, in another folder", "actAddModule", "object", "trends", takenName);
    }

    void aNameIsTakenFromItsSaveOn() {
        QFETCH(QString, action);
        QFETCH(QString, row);
        QFETCH(QString, folder);
        QFETCH(QString, refusal);
        NewRowOpen live(qPrintable(action), "mod");
        live.type(qPrintable(row), "Fresh");
        live.save(); // and its notification has not come yet
        live.written();
        live.makeCurrent(qPrintable(folder));
        QMetaObject::invokeMethod(live.editor.module.get(),
                                  qPrintable("on_" + action + "_triggered"));
        live.type(qPrintable(row), "FRESH");
        live.save();
        QCOMPARE(live.box(), refusal);
        QCOMPARE(live.written(), QString());
    }

    void aFolderOfTheFileAreaNeedsANameOfItsOwnAtTheTop() {
        // Records name the top in two ways.
        NewRowOpen live("actAddFolder", "FileResources");
        live.type("caption", "Docs");
        live.save();
        QCOMPARE(live.box(), QString(takenFolder));
        live.type("caption", "fresh");
        live.save();
        live.deliver();
        live->on_common_error_message(nullptr);
        live.makeCurrent("docs");
        live.type("caption", "FRESH");
        live.save();
        QCOMPARE(live.box(), QString(takenFolder));
    }

    void aSavedOrphanKeepsItsIcon() {
        EditOpen live("rlost", "caption", "Найденная", [](TestStore& store) {
            store.update("MenuResource",
                         {{"KeyLink", QString("rlost")}, {"ico", QString("a.png")}});
        });
        live.save();
        QVERIFY(live.written().contains("caption='Найденная' params='' ico='a.png'"));
        live.deliver();
        live->on_editor_valueChanged("icon", QString());
        live.save();
        QVERIFY(live.written().contains("ico=''"));
    }

    void aSecondNewFolderNeedsANameOfItsOwn() {
        NewRowOpen live("actAddFolder", "mod");
        live.save();
        live.deliver();
        live.written();
        live.makeCurrent("mod");
        live.editor.action("actAddFolder")->trigger();
        live.save();
        QCOMPARE(live.box(), QString(takenFolder));
        QCOMPARE(live.written(), QString());
        live->on_common_error_message(nullptr);
        live.type("caption", "новая папка 2");
        live.save();
        QCOMPARE(live.written(), QString("MenuResourceFolder\n  +#1 ParentKey='mod' type_=1 "
                                         "caption='новая папка 2'\n"));
    }

    void theSameCaptionBelowAnotherParentIsFree() {
        NewRowOpen live("actAddFolder", "trends");
        live.type("caption", "Аварии");
        live.save();
        QCOMPARE(live.box(), QString());
        QVERIFY(live.written().contains("ParentKey='trends' type_=1 caption='Аварии'"));
    }

    void withoutItsRowASaveChangesNothing() {
        NewRowOpen live("actAddModule", "trends");
        live.makeCurrent("rlog"); // refused: it has no name yet
        live->on_common_error_message(nullptr);
        live.store.remove("MenuResource", "rtrend");
        live.store.remove("MenuResourceFolder", "trends");
        live.deliver();
        live.save();
        QCOMPARE(live.state(), NewRow);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.box(), QString());
    }

    // Edits

    void anEditedResourceIsWrittenWhole() {
        EditOpen live("rtrend", "caption", "График", [](TestStore& store) {
            store.update("MenuResource", {{"KeyLink", QString("rtrend")},
                                          {"params", QString("-z")},
                                          {"ico", QString("pump.png")}});
        });
        live.save();
        QCOMPARE(live.written(),
                 QString("MenuResource\n  ~rtrend MenuResourceFolderKey='trends' "
                         "name_='Trend' type_=1 caption='График' params='-z' ico='pump.png'\n"));
        QCOMPARE(live.state(), Idle);
        QVERIFY(!live.buttonsEnabled());
        live.deliver();
        QCOMPARE(live.cell("rtrend", ResColumn::Caption), QVariant("График"));
        QCOMPARE(live.currentKey(), QString("rtrend"));
    }

    void anEditedResourceIsNotChecked() {
        EditOpen live("rtrend", "caption", "");
        live.save();
        QCOMPARE(live.box(), QString());
        QVERIFY(live.written().contains("caption=''"));
        live.deliver();
        QCOMPARE(live.cell("rtrend", ResColumn::Caption).toString(), QString());
        // Nor is its name, which the passport does not let be changed.
        live->on_editor_valueChanged("object", QString("Log"));
        live.save();
        QCOMPARE(live.box(), QString());
        QVERIFY(live.written().contains("name_='Log'"));
        live->on_editor_valueChanged("object", QString());
        live.save();
        QCOMPARE(live.box(), QString());
        QVERIFY(live.written().contains("name_=''"));
    }

    void aFormKeepsItsLock() {
        EditOpen live("rboiler", "params", "-w", [](TestStore& store) {
            store.update("MenuResource",
                         {{"KeyLink", QString("rboiler")}, {"UsersKey", QString("uother")}});
        });
        live.save();
        QVERIFY(!live.written().contains("UsersKey"));
        live.deliver();
        QCOMPARE(live.cell("rboiler", ResColumn::Blocked), QVariant(2));
        QCOMPARE(live.cell("rboiler", ResColumn::Params), QVariant("-w"));
    }

    void anEditedFolderIsWrittenWhole() {
        EditOpen live("trends", "caption", "Азбука");
        live.save();
        QCOMPARE(live.written(), QString("MenuResourceFolder\n  ~trends ParentKey='mod' type_=1 "
                                         "caption='Азбука'\n"));
        QCOMPARE(live.state(), Idle);
        QVERIFY(!live.buttonsEnabled());
        live.deliver();
        QCOMPARE(live.below("mod"), QString("alarms trends rlog rtable"));
        QCOMPARE(live.currentKey(), QString("trends"));
    }

    void anUnchangedFolderIsRefused_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("caption");
        dataRow("below a folder", "trends", "Тренды");
        dataRow("at the top", "docs", "docs");
        dataRow("in another case", "deep", "DEEP");
        dataRow("a sibling's", "trends", "аварии");
    }

    void anUnchangedFolderIsRefused() {
        QFETCH(QString, key);
        QFETCH(QString, caption);
        EditOpen live(qPrintable(key), "caption", "что-то ещё");
        live.type("caption", caption);
        live.save();
        QCOMPARE(live.box(), QString(takenFolder));
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.state(), EditRow);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live.cell(qPrintable(key), ResColumn::Caption), QVariant(caption));
    }

    void aTopFolderIsCheckedAmongTheTopFolders() {
        EditOpen live("docs", "caption", "icons");
        live.save();
        QCOMPARE(live.box(), QString(takenFolder));
        live->on_common_error_message(nullptr);
        live.type("caption", "Тренды"); // the name of a deeper folder
        live.save();
        QCOMPARE(live.written(), QString("MenuResourceFolder\n  ~docs ParentKey='' type_=4 "
                                         "caption='Тренды'\n"));
    }

    void theCaptionIsCheckedAsTypedAndWrittenAsShown() {
        EditOpen live("trends", "caption", "Своё");
        live.store.update("MenuResourceFolder",
                          {{"KeyLink", QString("alarms")}, {"caption", QString("Чужое")}});
        live.store.update("MenuResource",
                          {{"KeyLink", QString("rlog")}, {"caption", QString("Х")}});
        live.deliver();
        // Another client's change of the edited row replaces what is shown, not what was typed.
        live->m_resModel->setData(live->row("trends"), "Показанное");
        live.save();
        QCOMPARE(live.box(), QString());
        QVERIFY(live.written().contains("caption='Показанное'"));
        live->on_editor_valueChanged("caption", QString("чужое"));
        live->m_resModel->setData(live->row("trends"), "Показанное");
        live.save();
        QCOMPARE(live.box(), QString(takenFolder));
    }

    void withoutTheEditedRowASaveChangesNothing() {
        EditOpen live("deep", "caption", "");
        live.makeCurrent("rlog"); // refused
        live->on_common_error_message(nullptr);
        live.store.remove("MenuResourceFolder", "deep");
        live.deliver();
        live.save();
        QCOMPARE(live.state(), EditRow);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live.written(), QString());
    }

    // The end of an edit

    void withoutAnEditNothingIsSaved() {
        Writing live("rlog");
        live->on_save_pressed();
        QCOMPARE(live.state(), Idle);
        live->on_cancel_pressed();
        QCOMPARE(live.state(), Idle);
        QCOMPARE(live.written(), QString());
    }

    void withoutAStructureTheEditStaysOpen_data() {
        QTest::addColumn<bool>("isNew");
        QTest::addColumn<bool>("isFolder");
        dataRow("new resource", true, false);
        dataRow("new folder", true, true);
        dataRow("resource", false, false);
        dataRow("folder", false, true);
    }

    void withoutAStructureTheEditStaysOpen() {
        QFETCH(bool, isNew);
        QFETCH(bool, isFolder);
        Writing live;
        live.makeCurrent(isFolder ? "trends" : "rlog");
        if (isNew)
            live.editor.action(isFolder ? "actAddFolder" : "actAddModule")->trigger();
        live.type("caption", "Новое");
        if (isNew && !isFolder)
            live.type("object", "Fresh");
        const QPersistentModelIndex newRow = live->m_newItemIndex;
        {
            const StructureOutage outage;
            live.save();
        }
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.box(), QString());
        QCOMPARE(live.state(), isNew ? NewRow : EditRow);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live->m_newItemIndex, newRow);
        QCOMPARE(live.cell(live.current(), ResColumn::Caption), QVariant("Новое"));
        live.save();
        QCOMPARE(live.state(), Idle);
        QVERIFY(live.written().contains("caption='Новое'"));
    }

    void aRefusedWriteEndsTheEditAllTheSame() {
        EditOpen live("rlog", "caption", "Дневник");
        live.host.writes().refusedTable = "MenuResource";
        live.save();
        QVERIFY(!live.written().isEmpty());
        QCOMPARE(live.host.failures.size(), 1);
        QCOMPARE(live.state(), Idle);
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.box(), QString());
        live.deliver();
        QCOMPARE(live.cell("rlog", ResColumn::Caption), QVariant("Дневник"));
    }

    void theEditHasEndedBeforeTheWrite() {
        NewRowOpen live("actAddFolder", "mod");
        live.host.writes().refusedTable = "MenuResourceFolder";
        uint32_t state = NewRow;
        bool buttons = true;
        bool hasRow = true;
        QObject::connect(&orvo::client::sessionEvents(*live.host.m_session),
                         &orvo::client::SessionEvents::failed, live.view(), [&] {
                             state = live.state();
                             buttons = live.buttonsEnabled();
                             hasRow = live->m_newItemIndex.isValid();
                         });
        live.save();
        QCOMPARE(state, Idle);
        QVERIFY(!buttons);
        QVERIFY(!hasRow);
    }

    void aRefusedNameCanBeMended() {
        NewRowOpen live("actAddModule", "mod");
        live.type("object", "Log");
        live.save();
        QCOMPARE(live.box(), QString(takenName));
        live->on_common_error_message(nullptr);
        live.type("object", "Log2");
        live.save();
        QCOMPARE(live.box(), QString());
        QCOMPARE(live.state(), Idle);
        QVERIFY(live.written().contains("name_='Log2'"));
    }

    void actionsComeBackWithTheNotification() {
        NewRowOpen live("actAddModule", "trends");
        live.type("object", "Fresh");
        live.save();
        QCOMPARE(live.enabledActions(), QStringList());
        live.deliver();
        QCOMPARE(live.enabledActions(), QStringList({"AddFolder", "AddModule", "Cut", "Delete"}));
    }

    void actionsStayAsTheyAreUntilTheRowChanges() {
        EditOpen live("rlog", "caption", "Дневник");
        const QStringList ofModules = live.enabledActions();
        live.makeCurrent("rcalc");
        QCOMPARE(live.state(), Idle);
        QCOMPARE(live.enabledActions(), ofModules);
        live.deliver(); // the saved row is not current
        QCOMPARE(live.enabledActions(), ofModules);
        live.makeCurrent("rcalc");
        live.makeCurrent("calc");
        QVERIFY(live.enabledActions().contains("AddFunction"));
        QVERIFY(!live.enabledActions().contains("AddModule"));
    }
};

QTEST_MAIN(TestResSaving)
#include "tst_res_saving.moc"
