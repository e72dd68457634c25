// What is typed and not saved yet, while changes of its row come in: others', and own ones.
#include "tests/resources/WritingProbe.h"

using namespace orvo::test;

class TestResTyped : public QObject {
    Q_OBJECT
private slots:
    void theEchoOfTheFirstEditComesDuringTheSecond() {
        Writing live("rlog");
        live.type("caption", "Дневник");
        live.save();
        live.type("params", "-x");
        live.type("caption", "Дневник смены");
        live.written();
        live.deliver();
        QCOMPARE(live.cell("rlog", ResColumn::Caption), QVariant("Дневник смены"));
        QCOMPARE(live.cell("rlog", ResColumn::Params), QVariant("-x"));
        QCOMPARE(live->passport("params"), QVariant("-x"));
        QCOMPARE(live.state(), EditRow);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live.written(), QString());
        live.save();
        QCOMPARE(live.written(),
                 QString("MenuResource\n  ~rlog MenuResourceFolderKey='mod' name_='Log' type_=1 "
                         "caption='Дневник смены' params='-x' ico=''\n"));
    }

    void severalEchoesComeDuringAnEdit() {
        Writing live("rlog");
        for (const char* caption : {"Раз", "Два", "Три"}) {
            live.type("caption", caption);
            live.save();
        }
        live.type("caption", "Четыре");
        live.deliver();
        QCOMPARE(live.cell("rlog", ResColumn::Caption), QVariant("Четыре"));
        QCOMPARE(live.state(), EditRow);
        live.cancel();
        QCOMPARE(live.cell("rlog", ResColumn::Caption), QVariant("Три"));
    }

    void whatIsTypedOutlivesAChangeOfAnotherField_data() {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("value");
        dataRow("a lock", "UsersKey", "uother");
        dataRow("parameters", "params", "-z");
        dataRow("a move by another", "MenuResourceFolderKey", "frm");
    }

    void whatIsTypedOutlivesAChangeOfAnotherField() {
        QFETCH(QString, field);
        QFETCH(QString, value);
        Writing live("rboiler");
        live.type("caption", "Котёл № 2");
        live.store.update("MenuResource",
                          {{"KeyLink", QString("rboiler")}, {field.toLatin1().constData(), value}});
        live.deliver();
        QCOMPARE(live.state(), EditRow);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live.currentKey(), QString("rboiler"));
        QCOMPARE(live.cell("rboiler", ResColumn::Caption), QVariant("Котёл № 2"));
        QCOMPARE(live->passport("caption"), QVariant("Котёл № 2"));
        if (field == "params")
            QCOMPARE(live->passport("params"), QVariant("-z"));
        QCOMPARE(live.written(), QString());
        live.save();
        QVERIFY(live.written().contains("caption='Котёл № 2'"));
        QCOMPARE(live.host.logLines.size(), 0);
    }

    void whatIsTypedGivesWayToAnotherInItsField() {
        Writing live("rlog");
        live.type("caption", "Дневник");
        live.type("params", "-x");
        live.store.update("MenuResource",
                          {{"KeyLink", QString("rlog")}, {"caption", QString("Иное")}});
        live.deliver();
        QCOMPARE(live.cell("rlog", ResColumn::Caption), QVariant("Иное"));
        QCOMPARE(live->passport("caption"), QVariant("Иное"));
        QCOMPARE(live.cell("rlog", ResColumn::Params), QVariant("-x"));
        QCOMPARE(live.host.logLines.size(), 1);
        QCOMPARE(
            live.host.logLines.first().text,
            QString("модуль «Иное» (Log): «Наименование» изменено другим, набранное «Дневник» не "
                    "сохранено"));
    }

    void whatIsTypedOutlivesAnOwnDrag() {
        Writing live("rlog");
        live.type("caption", "Дневник");
        live->on_res_dragdrop(live->row("trends"), {"rlog"});
        live.written();
        live.deliver();
        QCOMPARE(live->row("rlog").parent(), live->row("trends"));
        QCOMPARE(live.currentKey(), QString("rlog"));
        QCOMPARE(live.cell("rlog", ResColumn::Caption), QVariant("Дневник"));
        live.makeCurrent("rtable");
        live.deliver();
        QCOMPARE(live.cell("rlog", ResColumn::Caption), QVariant("Дневник"));
        const MDRData* stored = orvo::seekKey(live->m_tabResource, "rlog");
        QCOMPARE(orvo::textOf(stored, "caption"), QString("Дневник"));
        QCOMPARE(orvo::textOf(stored, "MenuResourceFolderKey"), QString("trends"));
    }

    void whatIsTypedBetweenTheSaveOfANewRowAndItsEcho_data() {
        QTest::addColumn<QString>("action");
        dataRow("folder", "actAddFolder");
        dataRow("resource", "actAddModule");
    }

    void whatIsTypedBetweenTheSaveOfANewRowAndItsEcho() {
        QFETCH(QString, action);
        Writing live("mod");
        live.editor.action(qPrintable(action))->trigger();
        const QString key = live.currentKey();
        if (action == "actAddModule")
            live.type("object", "Fresh");
        live.type("caption", "Первое");
        live.save();
        live.type("caption", "Второе");
        live.deliver();
        QCOMPARE(live.currentKey(), key);
        QCOMPARE(live.state(), EditRow);
        QCOMPARE(live.cell(live.current(), ResColumn::Caption), QVariant("Второе"));
        QCOMPARE(live->passport("caption"), QVariant("Второе"));
        live.save();
        live.deliver();
        QCOMPARE(live.state(), Idle);
        QCOMPARE(live.cell(live.current(), ResColumn::Caption), QVariant("Второе"));
    }

    void aChangeOfTheCurrentRowSavesNoEditElsewhere() {
        Writing live("trends");
        live.type("caption", "");
        live.makeCurrent("rlog"); // refused
        live->on_common_error_message(nullptr);
        live.store.update("MenuResource",
                          {{"KeyLink", QString("rlog")}, {"caption", QString("Иное")}});
        live.deliver();
        QCOMPARE(live.box(), QString());
        QCOMPARE(live.currentKey(), QString("rlog"));
        QCOMPARE(live->passport("caption"), QVariant("Иное"));
        QCOMPARE(live.state(), EditRow);
    }

    void aRefusedDropMakesNoRowCurrentLater() {
        Writing live("rcalc");
        live.host.writes().refusedTable = "MenuResource";
        live->on_res_dragdrop(live->row("alarms"), {"rlog"});
        live.host.writes().refusedTable.clear();
        live.type("params", "half");
        live.written();
        addItem(live.store, "other", 1, "mod", "Other", "Другой");
        live.deliver();
        QCOMPARE(live.currentKey(), QString("rcalc"));
        QCOMPARE(live.state(), EditRow);
        QCOMPARE(live.written(), QString());
    }
};

QTEST_MAIN(TestResTyped)
#include "tst_res_typed.moc"
