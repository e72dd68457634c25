// New rows, edits of the passport, and the icon picker.
#include "tests/menu/Outage.h"
#include "tests/resources/WritingProbe.h"

using namespace orvo::test;

class TestResCreating : public QObject {
    Q_OBJECT
private slots:
    // New rows
    // New rows

    void aNewRow_data() {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("object");
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("place");
        dataRow("module", "actAddModule", "mod", "новый модуль", "", 1, 4);
        dataRow("function", "actAddFunction", "calc", "новая функция", "", 2, 1);
        dataRow("folder", "actAddFolder", "mod", "новая папка", "folder", 1, 0);
    }

    void aNewRow() {
        QFETCH(QString, action);
        QFETCH(QString, folder);
        QFETCH(QString, caption);
        QFETCH(QString, object);
        QFETCH(int, type);
        QFETCH(int, place);
        Writing live;
        live.makeCurrent(qPrintable(folder));
        const int rows = live->m_resModel->rowCount(live->row(qPrintable(folder)));
        live.editor.action(qPrintable(action))->trigger();

        const QModelIndex added = live.current();
        QCOMPARE(added.parent(), live->row(qPrintable(folder)));
        QCOMPARE(added.row(), place);
        QCOMPARE(live->m_resModel->rowCount(added.parent()), rows + 1);
        QCOMPARE(live.cell(added, ResColumn::Caption), QVariant(caption));
        QCOMPARE(live.cell(added, ResColumn::FolderKey), QVariant(folder));
        QCOMPARE(live.cell(added, ResColumn::IsFolder), QVariant(object == "folder"));
        QCOMPARE(live.cell(added, ResColumn::Type), QVariant(type));
        QCOMPARE(live.cell(added, ResColumn::IsNew), QVariant(true));
        for (int column : {ResColumn::Name, ResColumn::Icon, ResColumn::Lock, ResColumn::LockTime,
                           ResColumn::Params, ResColumn::Date, ResColumn::Size, ResColumn::Blocked})
            QVERIFY(!live.cell(added, column).isValid());
        QCOMPARE(live.state(), NewRow);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(QModelIndex(live->m_newItemIndex), added);
        QCOMPARE(live->m_editCaption, caption);
        QCOMPARE(live->m_editObject, object);
        QCOMPARE(live->m_currentKey, live.currentKey());
        QCOMPARE(live->passport("caption"), QVariant(caption));
        QCOMPARE(live->passport("keylink"), QVariant(live.currentKey()));
    }

    void aNewRowBesideAResource() {
        Writing live("rlog");
        live.editor.action("actAddModule")->trigger();
        QCOMPARE(live.current().parent(), live->row("mod"));
        QCOMPARE(live.current().row(), 4);
        live.cancel();
        live.makeCurrent("rlog");
        live.editor.action("actAddFolder")->trigger();
        QCOMPARE(live.current().parent(), live->row("mod"));
        QCOMPARE(live.current().row(), 0);
        QCOMPARE(live.cell(live.current(), ResColumn::FolderKey), QVariant("mod"));
    }

    void aNewRowOfAnyKind_data() {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<int>("type");
        dataRow("modules", "trends", 1);
        dataRow("functions", "calc", 2);
        dataRow("forms", "boilers", 3);
        dataRow("files", "docs", 4);
        dataRow("a top folder", "frm", 3);
    }

    void aNewRowOfAnyKind() {
        QFETCH(QString, folder);
        QFETCH(int, type);
        Writing live;
        live.makeCurrent(qPrintable(folder));
        live.editor.action("actAddFolder")->trigger();
        QCOMPARE(live.cell(live.current(), ResColumn::Type), QVariant(type));
        live.cancel();
        // An action that was left switched on makes nothing of another kind.
        const QString before = treetext::print(*live->m_resModel, ResColumn::KeyLink);
        live->on_actAddModule_triggered();
        if (type == 1) {
            QCOMPARE(live.cell(live.current(), ResColumn::Type), QVariant(type));
            return;
        }
        QVERIFY2(live.box().startsWith("Ошибка\nЗдесь этого создать нельзя: "),
                 qPrintable(live.box()));
        QCOMPARE(treetext::print(*live->m_resModel, ResColumn::KeyLink), before);
        QCOMPARE(live.state(), Idle);
    }

    void whereNothingCanStandNothingIsMade_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("named");
        dataRow("beside a form without a folder", "rlost", "форма «Потерянная» (Lost)");
        dataRow("in the folder of those", "WrongFolder", "папка «Непривязанные объекты»");
        dataRow("at the top", "MenuResources", "папка «Ресурсы меню»");
    }

    void whereNothingCanStandNothingIsMade() {
        QFETCH(QString, key);
        QFETCH(QString, named);
        Writing live;
        const QString before = treetext::print(*live->m_resModel, ResColumn::KeyLink);
        live.makeCurrent(qPrintable(key));
        live->on_actAddFolder_triggered();
        QCOMPARE(live.box(), "Ошибка\nЗдесь этого создать нельзя: " + named + ".");
        QCOMPARE(treetext::print(*live->m_resModel, ResColumn::KeyLink), before);
        QCOMPARE(live.state(), Idle);
        live->on_common_error_message(nullptr);
        QMetaObject::invokeMethod(live.editor.module.get(), "on_actLoadFiles_triggered");
        QVERIFY(live.box().startsWith("Ошибка\nЗдесь нет места загруженным файлам: "));
    }

    void aFolderOfTheFileRootBearsTheKeyOfItsRow() {
        Writing live("FileResources");
        live.editor.action("actAddFolder")->trigger();
        QCOMPARE(live.current().parent(), live->row("FileResources"));
        QCOMPARE(live.current().row(), 0);
        QCOMPARE(live.cell(live.current(), ResColumn::FolderKey), QVariant("FileResources"));
        QCOMPARE(live.cell(live.current(), ResColumn::Type), QVariant(4));
    }

    void aNewRowIsAKeyOfItsOwn() {
        Writing live;
        QSet<QString> keys;
        for (int i = 0; i < 3; ++i) {
            live.makeCurrent("mod");
            live.editor.action("actAddModule")->trigger();
            QVERIFY(QRegularExpression("^[0-9A-Fa-f]{32}$").match(live.currentKey()).hasMatch());
            keys.insert(live.currentKey());
            live.cancel();
        }
        QCOMPARE(keys.size(), 3);
    }

    void aNewRowIsInSight() {
        Writing live;
        QVERIFY(!live.view()->isExpanded(live->row("trends")));
        live.makeCurrent("trends");
        live.editor.action("actAddModule")->trigger();
        QVERIFY(live.view()->isExpanded(live->row("trends")));
        QVERIFY(live.view()->viewport()->rect().contains(live.view()->visualRect(live.current())));
        QVERIFY(live.view()->selectionModel()->isRowSelected(live.current().row(),
                                                             live.current().parent()));
    }

    void aNewFolderIsNamedAtOnce() {
        Writing live("trends");
        live.editor.action("actAddFolder")->trigger();
        const QModelIndex value = live->m_propModel->findIndexByKey("caption").siblingAtColumn(1);
        auto* line = qobject_cast<QLineEdit*>(live.propView()->indexWidget(value));
        QVERIFY(line);
        QCOMPARE(line->text(), QString("новая папка"));
        typeText(line, "Пуск");
        QCOMPARE(live.cell(live.current(), ResColumn::Caption), QVariant(line->text()));
        QVERIFY(line->text().contains("Пуск"));
        QCOMPARE(live->m_editCaption, line->text());
    }

    void aNewResourceIsNamedWhenItsRowIsChosen() {
        Writing live("trends");
        live.editor.action("actAddModule")->trigger();
        QVERIFY(live.propView()->findChildren<QLineEdit*>().isEmpty());
        live.type("object", "Fresh");
        QCOMPARE(live.cell(live.current(), ResColumn::Name), QVariant("Fresh"));
        QCOMPARE(live->m_editObject, QString("Fresh"));
    }

    void aNewRowSwitchesAllActionsOff() {
        Writing live("trends");
        QVERIFY(!live.enabledActions().isEmpty());
        live.editor.action("actAddModule")->trigger();
        QCOMPARE(live.enabledActions(), QStringList());
    }

    void nothingIsWrittenYet() {
        Writing live("trends");
        live.editor.action("actAddModule")->trigger();
        live.type("object", "Fresh");
        live.cancel();
        live.editor.action("actAddFolder")->trigger();
        QCOMPARE(live.written(), QString());
        QVERIFY(!orvo::seekKey(live->m_tabResFolder, live.currentKey()));
    }

    void withoutACurrentRowNothingIsAdded() {
        Writing live("mod");
        const QString before = treetext::print(*live->m_resModel, ResColumn::KeyLink);
        live->m_currentKey = "nosuch";
        live->on_actAddModule_triggered();
        live->on_actAddFunction_triggered();
        live->on_actAddFolder_triggered();
        QCOMPARE(treetext::print(*live->m_resModel, ResColumn::KeyLink), before);
        QCOMPARE(live.state(), Idle);
        QVERIFY(!live.buttonsEnabled());
    }

    void aFailedStartAddsNothing() {
        TestStore store;
        TestHost host(store);
        store.sql("ALTER TABLE \"MenuFileExt\" RENAME TO \"Away\"");
        EditorUnderTest<WritingProbe> editor(host, "Resources");
        QVERIFY(!editor.start());
        for (const char* name : {"actAddModule", "actAddFunction", "actAddFolder", "actDelete"})
            editor.action(name)->trigger();
        editor->on_save_pressed();
        editor->on_cancel_pressed();
        QCOMPARE(editor->m_editState, Idle);
        QCOMPARE(host.writes().take(), QString());
    }

    void anOpenEditIsSavedFirst() {
        Writing live("rlog");
        live.type("caption", "Дневник");
        QVERIFY(live.editor.action("actAddModule")->isEnabled());
        live.editor.action("actAddModule")->trigger();
        QCOMPARE(live.written(),
                 QString("MenuResource\n  ~rlog MenuResourceFolderKey='mod' name_='Log' type_=1 "
                         "caption='Дневник' params='' ico=''\n"));
        QCOMPARE(live.state(), NewRow);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live->m_editCaption, QString("новый модуль"));
        QCOMPARE(live.current().parent(), live->row("mod"));
        QCOMPARE(QModelIndex(live->m_newItemIndex), live.current());
    }

    void anOpenEditThatIsRefusedComesFirst() {
        Writing live("trends");
        live.type("caption", "");
        live.editor.action("actAddModule")->trigger();
        QCOMPARE(live.box(),
                 QString("Ошибка\nСвойство \"Имя папки\" не может быть пустым. Данные не "
                         "сохранены."));
        QCOMPARE(live.state(), EditRow);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live.below("trends"), QString("rtrend"));
        QCOMPARE(live.written(), QString());
    }

    void anOpenEditWithoutAStructureComesFirst() {
        Writing live("rlog");
        live.type("caption", "Дневник");
        const StructureOutage outage;
        live.editor.action("actAddModule")->trigger();
        QCOMPARE(live.state(), EditRow);
        QCOMPARE(live.below("mod"), QString("alarms trends rlog rtable"));
    }

    void aNewRowThatIsRefusedComesFirst() {
        Writing live("mod");
        live.editor.action("actAddModule")->trigger();
        const QString key = live.currentKey();
        live->on_actAddModule_triggered();
        QCOMPARE(live.box(), QString("Ошибка\nСвойство Объект не может быть пустым. Данные не "
                                     "сохранены."));
        QCOMPARE(live.below("mod"), "alarms trends rlog rtable " + key);
        QCOMPARE(live.state(), NewRow);
    }

    void anOpenEditWhoseRowIsGoneIsInNobodysWay() {
        Writing live("trends");
        live.type("caption", "");
        live.makeCurrent("alarms"); // refused, and still open
        QCOMPARE(live.state(), EditRow);
        live.store.remove("MenuResource", "rtrend");
        live.store.remove("MenuResourceFolder", "trends");
        live.deliver();
        live->on_actAddModule_triggered();
        QCOMPARE(live.state(), NewRow);
        QCOMPARE(live.current().parent(), live->row("alarms"));
        QCOMPARE(live.written(), QString());
    }

    // Edits
    // Edits

    void eachPassportRowHasItsColumn_data() {
        QTest::addColumn<QString>("row");
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("object");
        dataRow("caption", "caption", int(ResColumn::Caption), "Новое", "");
        dataRow("object", "object", int(ResColumn::Name), "", "Новое");
        dataRow("params", "params", int(ResColumn::Params), "", "");
        dataRow("icon", "icon", int(ResColumn::Icon), "", "");
        dataRow("in another case", "CapTion", int(ResColumn::Caption), "Новое", "");
    }

    void eachPassportRowHasItsColumn() {
        QFETCH(QString, row);
        QFETCH(int, column);
        QFETCH(QString, caption);
        QFETCH(QString, object);
        Writing live("rlog");
        const QModelIndex index = live->row("rlog");
        QVariantList before;
        for (int i = 0; i < ResColumn::Count; ++i)
            before << live.cell(index, i);
        live->on_editor_valueChanged(row, QString("Новое"));
        for (int i = 0; i < ResColumn::Count; ++i)
            QCOMPARE(live.cell(index, i), i == column ? QVariant("Новое") : before[i]);
        QCOMPARE(live->m_editCaption, caption);
        QCOMPARE(live->m_editObject, object);
        QCOMPARE(live.state(), EditRow);
        QCOMPARE(live.written(), QString());
    }

    void anEditOpensOnce() {
        Writing live("rlog");
        QVERIFY(!live.buttonsEnabled());
        live.type("params", "-x");
        QCOMPARE(live.state(), EditRow);
        QCOMPARE(live->m_editKey, QString("rlog"));
        QVERIFY(live.buttonsEnabled());
        // Later values belong to the same edit.
        live.type("caption", "Дневник");
        QCOMPARE(live->m_editKey, QString("rlog"));
        QCOMPARE(live.written(), QString());
        live.save();
        QVERIFY(live.written().contains("caption='Дневник' params='-x'"));
    }

    void anUnknownRowOpensAnEditToo() {
        Writing live("rlog");
        const QString before = treetext::print(*live->m_resModel, ResColumn::KeyLink, {1, 2, 7});
        live->on_editor_valueChanged("keylink", QString("Новое"));
        QCOMPARE(live.state(), EditRow);
        QCOMPARE(live->m_editKey, QString("rlog"));
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(treetext::print(*live->m_resModel, ResColumn::KeyLink, {1, 2, 7}), before);
    }

    void withoutACurrentRowNoEditOpens() {
        Writing live("rlog");
        live->m_currentKey = "nosuch";
        live->on_editor_valueChanged("caption", QString("Новое"));
        QCOMPARE(live.state(), Idle);
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live->m_editCaption, QString());
        QCOMPARE(live->m_propModel->rowCount(), 0); // nothing more is typed there
    }

    void thePassportOfANewRowWritesThatRow() {
        Writing live("mod");
        live.editor.action("actAddModule")->trigger();
        live.type("caption", "Отчёты");
        live.type("object", "Report");
        live.type("params", "-day");
        QCOMPARE(live.state(), NewRow);
        QCOMPARE(live->m_editKey, live.currentKey());
        QCOMPARE(live.cell(live.current(), ResColumn::Caption), QVariant("Отчёты"));
        QCOMPARE(live.cell(live.current(), ResColumn::Name), QVariant("Report"));
        QCOMPARE(live.cell(live.current(), ResColumn::Params), QVariant("-day"));
    }

    void whatWasTypedIsKept() {
        Writing live("trends");
        live.type("caption", "Новое");
        live.store.update("MenuResourceFolder",
                          {{"KeyLink", QString("trends")}, {"caption", QString("Чужое")}});
        live.host.deliver(*live.editor.module);
        QCOMPARE(live.cell("trends", ResColumn::Caption), QVariant("Чужое"));
        QCOMPARE(live->m_editCaption, QString("Новое"));
    }

    void keysEnterTheTreeOneByOne() {
        Writing live("rlog");
        QLineEdit* line = passportLine(live.propView(), *live->m_propModel, "caption");
        line->selectAll();
        for (int i = 1; i <= 4; ++i) {
            typeText(line, QString("Узел").mid(i - 1, 1));
            QCOMPARE(live.cell("rlog", ResColumn::Caption), QVariant(QString("Узел").left(i)));
        }
        QCOMPARE(live->m_editCaption, QString("Узел"));
    }

    void aFixedRowIsEditedLikeAFolder() {
        Writing live("FileResources");
        live.type("caption", "Файлы");
        QCOMPARE(live.state(), EditRow);
        QCOMPARE(live.cell("FileResources", ResColumn::Caption), QVariant("Файлы"));
        // No record is behind it: the server is told of a key that it does not have.
        live.save();
        QCOMPARE(live.written(),
                 QString("MenuResourceFolder\n  ~FileResources ParentKey='' type_=4 "
                         "caption='Файлы'\n"));
        live.deliver();
        QCOMPARE(live.state(), Idle);
        QCOMPARE(live.host.failures, QStringList());
    }

    // The picker
    // The picker

    void anotherRowsButtonOpensNoPicker() {
        Writing live("rlog");
        live->on_passp_buttonpressed("object");
        QCOMPARE(live->m_popTarget, QString("object"));
        QVERIFY(!live->m_popList);
    }

    void theIconsButtonOpensThePicker() {
        Writing live("rlog");
        emit live->m_passpDelegate->buttonPressed("Icon");
        QCOMPARE(live->m_popTarget, QString("Icon"));
        CPopObjectList* list = live->m_popList;
        QVERIFY(list);
        QVERIFY(list->isVisible());
        QCOMPARE(list->parent(), live.editor.module.get());
        QCOMPARE(list->windowTitle(), QString("Выбор иконок АРМ"));
        QCOMPARE(list->objectType, 4);
        QCOMPARE(list->sourceName, QString("icons"));
        QVERIFY(list->m_popup);
        const QPoint place = list->pos();
        list->move(0, 0);
        list->moveToCenter();
        QVERIFY(!list->pos().isNull());
        QCOMPARE(place, list->pos());
        QVERIFY(!list->multipleChoice);
        QCOMPARE(list->chosenName, QString());
        QCOMPARE(list->treeModel->rowCount(), 1);
        QVERIFY(findRow(*list->treeModel, "pump.png").isValid());
        QCOMPARE(live.state(), Idle);
    }

    void thePickerIsMadeOnce() {
        Writing live("rlog");
        live->on_passp_buttonpressed("icon");
        CPopObjectList* list = live->m_popList;
        list->on_btnCancel_clicked();
        QVERIFY(!list->isVisible());
        live.store.insert("MenuResource", {{"KeyLink", QString("rtank")},
                                           {"type_", 4},
                                           {"MenuResourceFolderKey", QString("icons")},
                                           {"name_", QString("tank.png")}});
        live.deliver();
        list->setWindowTitle("другое");
        list->sourceName = "docs";
        live->on_passp_buttonpressed("icon");
        QCOMPARE(live->m_popList, list);
        QVERIFY(list->isVisible());
        QCOMPARE(list->windowTitle(), QString("Выбор иконок АРМ"));
        QCOMPARE(list->sourceName, QString("icons"));
        QCOMPARE(list->treeModel->rowCount(), 2);
        // It lists anew also where it stands open.
        live.store.remove("MenuResource", "rtank");
        live.deliver();
        live->on_passp_buttonpressed("icon");
        QVERIFY(list->isVisible());
        QCOMPARE(list->treeModel->rowCount(), 1);
    }

    void thePickerKeepsWhatWasChosenLast() {
        Writing live(
            [](TestStore& store) { addItem(store, "rtank", 4, "icons", "tank.png", "Бак"); });
        live.makeCurrent("rlog");
        live->on_passp_buttonpressed("icon");
        CPopObjectList* list = live->m_popList;
        list->tvObj()->setCurrentIndex(findRow(*list->treeModel, "tank.png"));
        list->on_btnOK_clicked();
        live.makeCurrent("rtable");
        live->on_passp_buttonpressed("icon");
        QCOMPARE(list->chosenName, QString("tank.png"));
        QCOMPARE(list->tvObj()->selectionModel()->selectedRows(),
                 QModelIndexList{findRow(*list->treeModel, "tank.png")});
    }

    void aChosenIconEntersTheTree() {
        Writing live("rlog");
        live->on_passp_buttonpressed("icon");
        CPopObjectList* list = live->m_popList;
        list->tvObj()->setCurrentIndex(findRow(*list->treeModel, "pump.png"));
        list->on_btnOK_clicked();
        QVERIFY(!list->isVisible());
        QCOMPARE(live->passport("icon"), QVariant("pump.png"));
        QCOMPARE(live.cell("rlog", ResColumn::Icon), QVariant("pump.png"));
        QCOMPARE(live.state(), EditRow);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live.written(), QString());
        live.save();
        QCOMPARE(live.written(),
                 QString("MenuResource\n  ~rlog MenuResourceFolderKey='mod' name_='Log' type_=1 "
                         "caption='Журнал' params='' ico='pump.png'\n"));
    }

    void aFolderIsNoIcon() {
        Writing live([](TestStore& store) { addFolder(store, "tanks", 4, "icons", "Баки"); });
        live.makeCurrent("rlog");
        live->on_passp_buttonpressed("icon");
        CPopObjectList* list = live->m_popList;
        list->tvObj()->setCurrentIndex(findRow(*list->treeModel, "Баки"));
        list->on_btnOK_clicked();
        QCOMPARE(live.box(), QString("Ошибка\nВыбрана папка \"Баки\", а нужно то, что в ней."));
        QVERIFY(live->passport("icon").toString().isEmpty());
        QCOMPARE(live.state(), Idle);
    }

    void aChosenIconGoesToTheRowThatIsCurrentThen() {
        Writing live("rlog");
        live->on_passp_buttonpressed("icon");
        CPopObjectList* list = live->m_popList;
        list->tvObj()->setCurrentIndex(findRow(*list->treeModel, "pump.png"));
        live.makeCurrent("rtable");
        list->on_btnOK_clicked();
        QCOMPARE(live.cell("rtable", ResColumn::Icon), QVariant("pump.png"));
        QVERIFY(live.cell("rlog", ResColumn::Icon).toString().isEmpty());
        live.save();
        live.deliver();
        // The passport of a folder has no icon.
        live.makeCurrent("trends");
        live->m_popList->chosenName = "pump.png";
        live->on_poplist_OK_Pressed();
        QCOMPARE(live.state(), Idle);
    }

    void theSameIconOpensNoEdit() {
        Writing live;
        live.store.update("MenuResource",
                          {{"KeyLink", QString("rlog")}, {"ico", QString("pump.png")}});
        live.deliver();
        live.makeCurrent("rlog");
        live->on_passp_buttonpressed("icon");
        CPopObjectList* list = live->m_popList;
        list->tvObj()->setCurrentIndex(findRow(*list->treeModel, "pump.png"));
        list->on_btnOK_clicked();
        QCOMPARE(live.state(), Idle);
    }

    void okForAnotherRowChangesNothing() {
        Writing live("rlog");
        live->on_passp_buttonpressed("icon");
        live->on_passp_buttonpressed("object");
        live->m_popList->chosenName = "pump.png";
        live->on_poplist_OK_Pressed();
        QCOMPARE(live.state(), Idle);
        QVERIFY(live->passport("icon").toString().isEmpty());
    }

    void okWithoutAPickerChangesNothing() {
        Writing live("rlog");
        live->m_popTarget = "icon";
        live->on_poplist_OK_Pressed();
        QCOMPARE(live.state(), Idle);
    }
};

QTEST_MAIN(TestResCreating)
#include "tst_res_creating.moc"
