// Leaving an open edit, and dropping one.
#include "tests/resources/ResSavingTest.h"

using namespace orvo::test;

class TestResLeaving : public QObject {
    Q_OBJECT
private slots:
    // Moving on

    void leavingANewRowSavesIt() {
        NewRowOpen live("actAddFolder", "mod");
        live.makeCurrent("rlog");
        QCOMPARE(live.written(), QString("MenuResourceFolder\n  +#1 ParentKey='mod' type_=1 "
                                         "caption='новая папка'\n"));
        QCOMPARE(live.state(), Idle);
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.currentKey(), QString("rlog"));
        QCOMPARE(live->passport("caption"), QVariant("Журнал"));
        live.deliver();
        QCOMPARE(live.currentKey(), QString("rlog"));
        QCOMPARE(live.below("mod"), "alarms " + live.key + " trends rlog rtable");
    }

    void leavingARefusedNewRowKeepsItOpen() {
        NewRowOpen live("actAddModule", "mod");
        live.makeCurrent("rlog");
        QCOMPARE(live.box(), QString(emptyObject));
        QCOMPARE(live.state(), NewRow);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live.currentKey(), QString("rlog"));
        QCOMPARE(live->passport("caption"), QVariant("Журнал"));
        QCOMPARE(QModelIndex(live->m_newItemIndex), live->row(qPrintable(live.key)));
        QCOMPARE(live.enabledActions(), QStringList());
        // It waits for its name.
        live->on_common_error_message(nullptr);
        live.makeCurrent(qPrintable(live.key));
        QCOMPARE(live.box(), QString());
        live.type("object", "Late");
        live.makeCurrent("rtable");
        QVERIFY(live.written().contains("name_='Late'"));
        QCOMPARE(live.state(), Idle);
    }

    void aSavedNewRowIsLeftAloneByTheNext() {
        NewRowOpen live("actAddModule", "mod");
        live.type("object", "Alpha");
        live.save();
        live.deliver();
        live.written();
        const QString saved = live.key;
        live.editor.action("actAddModule")->trigger();
        const QString key = live.currentKey();
        live.type("object", "Beta");
        // The saved one bears the mark of a new row still.
        live.makeCurrent(qPrintable(saved));
        QCOMPARE(live.state(), Idle);
        QVERIFY(live.written().contains("name_='Beta'"));
        live.makeCurrent("rlog");
        live.cancel();
        live.deliver();
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.host.failures, QStringList());
        QVERIFY(live->row(qPrintable(saved)).isValid());
        QVERIFY(orvo::seekKey(live->m_tabResource, key));
    }

    void aRefusedNewRowBesideASavedOneIsDroppedAlone() {
        NewRowOpen live("actAddModule", "mod");
        live.type("object", "Alpha");
        live.save();
        live.deliver();
        live.editor.action("actAddModule")->trigger();
        const QString refused = live.currentKey();
        live.makeCurrent(qPrintable(live.key));
        QCOMPARE(live.box(), QString(emptyObject));
        QCOMPARE(QModelIndex(live->m_newItemIndex), live->row(qPrintable(refused)));
        live->on_common_error_message(nullptr);
        live.cancel();
        QVERIFY(!live->row(qPrintable(refused)).isValid());
        QVERIFY(live->row(qPrintable(live.key)).isValid());
    }

    void leavingAnEditedRowSavesIt() {
        EditOpen live("rlog", "caption", "Дневник");
        live.makeCurrent("rboiler");
        QCOMPARE(live.written(),
                 QString("MenuResource\n  ~rlog MenuResourceFolderKey='mod' name_='Log' type_=1 "
                         "caption='Дневник' params='' ico=''\n"));
        QCOMPARE(live.state(), Idle);
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live->passport("object"), QVariant("Boiler"));
    }

    void leavingARefusedEditKeepsItOpen() {
        EditOpen live("trends", "caption", "Аварии");
        live.makeCurrent("rlog");
        QCOMPARE(live.box(), QString(takenFolder));
        QCOMPARE(live.state(), EditRow);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live->m_editKey, QString("trends"));
        QCOMPARE(live->passport("object"), QVariant("Log"));
        live->on_common_error_message(nullptr);
        live.makeCurrent("rtable");
        QCOMPARE(live.box(), QString(takenFolder));
        QCOMPARE(live.written(), QString());
        live->on_common_error_message(nullptr);
        live.cancel();
        QCOMPARE(live.currentKey(), QString("trends"));
        QCOMPARE(live.cell("trends", ResColumn::Caption), QVariant("Тренды"));
        QCOMPARE(live.state(), Idle);
    }

    void anEditEndsWhenItsRowIsGone_data() {
        QTest::addColumn<bool>("isNew");
        dataRow("new row", true);
        dataRow("edited row", false);
    }

    void anEditEndsWhenItsRowIsGone() {
        QFETCH(bool, isNew);
        Writing live("deep");
        if (isNew)
            live.editor.action("actAddFolder")->trigger();
        live.type("caption", "");
        live.makeCurrent("rlog");
        QCOMPARE(live.state(), isNew ? NewRow : EditRow);
        live->on_common_error_message(nullptr);
        // Another client deletes the folder.
        live.store.remove("MenuResourceFolder", "deep");
        live.deliver();
        QVERIFY(!live->row("deep").isValid());
        live.save();
        QCOMPARE(live.state(), isNew ? NewRow : EditRow);
        live.makeCurrent("rtable");
        QCOMPARE(live.state(), Idle);
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.box(), QString());
        QCOMPARE(live.written(), QString());
        live.makeCurrent("rtrend");
        QCOMPARE(live.enabledActions(), QStringList({"AddFolder", "AddModule", "Cut", "Delete"}));
    }

    void whileARefusedEditWaitsNoOtherRowIsEdited_data() {
        QTest::addColumn<QString>("value");
        dataRow("a word that would do for the edit", "Свободно");
        dataRow("a word that is taken", "Аварии");
    }

    void whileARefusedEditWaitsNoOtherRowIsEdited() {
        QFETCH(QString, value);
        EditOpen live("trends", "caption", "");
        live.makeCurrent("rlog");
        live->on_common_error_message(nullptr);
        live->on_editor_valueChanged("caption", value);
        // Shown and stored with neither row, it would be lost without a word.
        QCOMPARE(live.box(), "Ошибка\nСначала закончите правку: папка «Тренды».\n" +
                                 QString(emptyFolder).section('\n', 1));
        QCOMPARE(live.cell("rlog", ResColumn::Caption), QVariant("Журнал"));
        QCOMPARE(live->passport("caption"), QVariant("Журнал"));
        QCOMPARE(live->m_editCaption, QString());
        QCOMPARE(live->m_editKey, QString("trends"));
        live->on_common_error_message(nullptr);
        live.save();
        QCOMPARE(live.box(), QString(emptyFolder));
        QCOMPARE(live.written(), QString());
        live->on_common_error_message(nullptr);
        live.cancel();
        live.makeCurrent("rlog");
        live.type("caption", value);
        live.save();
        QVERIFY(live.written().contains("~rlog"));
    }

    void anEditThatCanBeSavedNowMakesWayForTheNext() {
        EditOpen live("trends", "caption", "Аварии");
        live.makeCurrent("rlog"); // refused
        live->on_common_error_message(nullptr);
        live.store.update("MenuResourceFolder",
                          {{"KeyLink", QString("alarms")}, {"caption", QString("Тревоги")}});
        live.deliver();
        live.type("caption", "Дневник");
        QVERIFY(live.written().contains("~trends ParentKey='mod' type_=1 caption='Аварии'"));
        QCOMPARE(live->m_editKey, QString("rlog"));
        live.save();
        QVERIFY(live.written().contains("~rlog MenuResourceFolderKey='mod' name_='Log' type_=1 "
                                        "caption='Дневник'"));
    }

    void anEditBeginsWithoutTheWordsOfTheOneBefore() {
        EditOpen live("trends", "caption", "Новое");
        live.save();
        live.makeCurrent("alarms");
        live->on_editor_valueChanged("nosuch", QString("x")); // a row without a column
        QCOMPARE(live.state(), EditRow);
        QCOMPARE(live->m_editCaption, QString());
        QCOMPARE(live->m_editObject, QString());
    }

    // Cancel

    void withoutAnEditCancelDisablesTheButtonsOnly() {
        Writing live("rlog");
        live->m_btnSave->setEnabled(true);
        live->m_btnCancel->setEnabled(true);
        live.cancel();
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.state(), Idle);
        QCOMPARE(live.currentKey(), QString("rlog"));
    }

    void aCancelledRowLeavesTheRowInItsPlaceCurrent() {
        NewRowOpen live("actAddFolder", "mod");
        live.cancel();
        QCOMPARE(live.currentKey(), QString("alarms"));
        QCOMPARE(live.below("mod"), QString("alarms trends rlog rtable"));
        QCOMPARE(live.state(), Idle);
        QVERIFY(!live.buttonsEnabled());
        QVERIFY(!live->m_newItemIndex.isValid());
        QCOMPARE(live->passport("caption"), QVariant("Аварии"));
        QCOMPARE(live.written(), QString());
    }

    void aCancelledLastRowLeavesTheNewLastCurrent() {
        NewRowOpen live("actAddModule", "mod");
        live.cancel();
        QCOMPARE(live.currentKey(), QString("rtable"));
        QCOMPARE(live->m_currentKey, QString("rtable"));
    }

    void aCancelledOnlyRowLeavesItsFolderCurrent() {
        for (const char* action : {"actAddModule", "actAddFolder"}) {
            NewRowOpen live(action, "alarms");
            live.cancel();
            QCOMPARE(live.currentKey(), QString("alarms"));
            QCOMPARE(live.below("alarms"), QString());
            QCOMPARE(live->passport("caption"), QVariant("Аварии"));
        }
    }

    void aCancelledRowBringsTheActionsBack() {
        NewRowOpen live("actAddModule", "alarms");
        live.cancel();
        QCOMPARE(live.enabledActions(), QStringList({"AddFolder", "AddModule", "Cut", "Delete"}));
    }

    void aCancelledRowThatIsNotCurrent() {
        NewRowOpen live("actAddModule", "mod");
        live.makeCurrent("rcalc");
        QCOMPARE(live.state(), NewRow); // refused
        live->on_common_error_message(nullptr);
        live.cancel();
        QCOMPARE(live.currentKey(), QString("rtable"));
        QCOMPARE(live.state(), Idle);
        QVERIFY(!live->row(qPrintable(live.key)).isValid());
    }

    void aCancelledResourceComesBackFromTheTable() {
        EditOpen live("rlog", "caption", "Дневник");
        live.type("params", "-x");
        live->on_editor_valueChanged("icon", QString("pump.png"));
        live.cancel();
        QCOMPARE(live.cell("rlog", ResColumn::Caption), QVariant("Журнал"));
        QCOMPARE(live.cell("rlog", ResColumn::Params).toString(), QString());
        QCOMPARE(live.cell("rlog", ResColumn::Icon).toString(), QString());
        QCOMPARE(live.state(), Idle);
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.currentKey(), QString("rlog"));
        QCOMPARE(live->passport("caption"), QVariant("Журнал"));
        QCOMPARE(live.written(), QString());
    }

    void aCancelledFolderComesBackFromTheTable() {
        EditOpen live("trends", "caption", "Азбука");
        live.cancel();
        QCOMPARE(live.cell("trends", ResColumn::Caption), QVariant("Тренды"));
        QCOMPARE(live.currentKey(), QString("trends"));
        QCOMPARE(live->passport("caption"), QVariant("Тренды"));
        QCOMPARE(live.enabledActions(), QStringList({"AddFolder", "AddModule", "Cut"}));
    }

    void aCancelledEditMakesItsRowCurrent() {
        EditOpen live("trends", "caption", "");
        live.makeCurrent("rcalc"); // refused
        live->on_common_error_message(nullptr);
        live.cancel();
        QCOMPARE(live.currentKey(), QString("trends"));
        QCOMPARE(live.cell("trends", ResColumn::Caption), QVariant("Тренды"));
        QCOMPARE(live.enabledActions(), QStringList({"AddFolder", "AddModule", "Cut"}));
    }

    void anEditWithoutARecordStaysAsTyped() {
        EditOpen live("rlog", "caption", "Дневник");
        live->forgetRecord("rlog");
        live.cancel();
        QCOMPARE(live.state(), Idle);
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.cell("rlog", ResColumn::Caption), QVariant("Дневник"));
    }

    void withoutTheEditedRowACancelChangesNothing() {
        EditOpen live("deep", "caption", "");
        live.makeCurrent("rlog"); // refused
        live->on_common_error_message(nullptr);
        live.store.remove("MenuResourceFolder", "deep");
        live.deliver();
        live.cancel();
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.state(), EditRow);
        QCOMPARE(live.currentKey(), QString("rlog"));
    }

    void aCancelledTopRowComesBack() {
        // A folder that lost its parent stands at the very top.
        Writing live;
        live.store.update("MenuResourceFolder",
                          {{"KeyLink", QString("deep")}, {"ParentKey", QString()}});
        live.deliver();
        live.makeCurrent("deep");
        live.type("caption", "Глубина");
        live.cancel();
        QCOMPARE(live.currentKey(), QString("deep"));
        QCOMPARE(live.cell("deep", ResColumn::Caption), QVariant("deep"));
        QCOMPARE(live.state(), Idle);
    }
};

QTEST_MAIN(TestResLeaving)
#include "tst_res_saving_more.moc"
