// Another client's changes while the engineer is in the midst of something: an edit, a question, a
// drag, a search.
#include "tests/resources/WritingProbe.h"

#include <QClipboard>
#include <QMimeData>
#include <QToolBar>

using namespace orvo::test;
using orvo::resources::resourcesMime;

namespace {

/// A folder whose only row is a new one, not yet saved and not to be saved as it is.
struct RefusedRow : Writing {
    RefusedRow(const char* action, const char* folder) {
        makeCurrent(folder);
        editor.action(action)->trigger();
        key = currentKey();
        if (state() != NewRow)
            qFatal("%s made no row", action);
    }
    QString key;
};

} // namespace

class TestResDisturbed : public QObject {
    Q_OBJECT
private slots:
    // An edit
    // An edit

    void anEditedResourceThatIsDeleted() {
        Writing live("rlog");
        live.type("caption", "Дневник");
        live.store.remove("MenuResource", "rlog");
        live.deliver();
        QVERIFY(!live->row("rlog").isValid());
        QCOMPARE(live.currentKey(), QString("rtable"));
        QCOMPARE(live.state(), Idle);
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live->passport("caption"), QVariant("Архив"));
        QCOMPARE(live.cell("rtable", ResColumn::Caption), QVariant("Архив"));
        // The row was left, and so saved, when it went; the server has no record of it any more.
        live.deliver();
        QVERIFY(!orvo::seekKey(live->m_tabResource, "rlog"));
        QCOMPARE(live.host.failures, QStringList());
    }

    void anEditedFolderThatIsDeleted() {
        Writing live("alarms");
        live.type("caption", "Тревоги");
        live.store.remove("MenuResourceFolder", "alarms");
        live.deliver();
        QCOMPARE(live.currentKey(), QString("trends"));
        QCOMPARE(live.state(), Idle);
        live.deliver();
        QVERIFY(!orvo::seekKey(live->m_tabResFolder, "alarms"));
    }

    void aRefusedEditThatIsDeletedIsInNoOtherEditsWay() {
        Writing live("alarms");
        live.type("caption", "Тренды"); // taken
        live.store.remove("MenuResourceFolder", "alarms");
        live.deliver();
        QVERIFY(!live->row("alarms").isValid());
        QCOMPARE(live.currentKey(), QString("trends"));
        if (!live.box().isEmpty())
            live->on_common_error_message(nullptr);
        live.cancel();
        // What is typed now is an edit of the row that it is typed into.
        live.type("caption", "Графики");
        QCOMPARE(live.state(), EditRow);
        QCOMPARE(live->m_editKey, QString("trends"));
        QVERIFY(live.buttonsEnabled());
        live.written();
        live.save();
        QCOMPARE(live.written(), QString("MenuResourceFolder\n  ~trends ParentKey='mod' type_=1 "
                                         "caption='Графики'\n"));
    }

    void aNewRowWhoseFolderIsDeleted_data() {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("neighbour");
        dataRow("folder, its line open", "actAddFolder", "deep", "rmanual");
        dataRow("resource", "actAddModule", "alarms", "trends");
    }

    void aNewRowWhoseFolderIsDeleted() {
        QFETCH(QString, action);
        QFETCH(QString, folder);
        QFETCH(QString, neighbour);
        RefusedRow live(qPrintable(action), qPrintable(folder));
        live.type("caption", "");
        live.store.remove("MenuResourceFolder", qPrintable(folder));
        live.deliver();
        QVERIFY(!live->row(qPrintable(folder)).isValid());
        QVERIFY(!live->row(qPrintable(live.key)).isValid());
        QCOMPARE(live.currentKey(), neighbour);
        QCOMPARE(live->m_currentKey, neighbour);
        QCOMPARE(live->passport("keylink"), QVariant(neighbour));
        QVERIFY(live.enabledActions().contains("AddFolder"));
        QCOMPARE(live.state(), Idle);
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.written(), QString());
        live.type("caption", "Иное");
        QCOMPARE(live.state(), EditRow);
        QCOMPARE(live.cell(qPrintable(neighbour), ResColumn::Caption), QVariant("Иное"));
        live.save();
        QVERIFY(live.written().contains("~" + neighbour));
    }

    void aDropOnAFolderThatIsNotSavedIsRefused() {
        RefusedRow live("actAddFolder", "alarms");
        ResTreeModel& model = *live->m_resModel;
        const std::unique_ptr<QMimeData> data(model.mimeData({live->row("rlog")}));
        const QModelIndex target = live->row(qPrintable(live.key));
        QVERIFY(model.canDropMimeData(data.get(), Qt::MoveAction, -1, 0, target));
        model.dropMimeData(data.get(), Qt::MoveAction, -1, 0, target);
        QCOMPARE(live.written(), QString());
        QVERIFY2(live.box().contains("ещё не сохранена"), qPrintable(live.box()));
        QCOMPARE(live.state(), NewRow);
    }

    void aNewRowAmongForeignOnes() {
        Writing live("alarms");
        live.editor.action("actAddModule")->trigger();
        const QString key = live.currentKey();
        live.type("object", "Mid");
        addItem(live.store, "first", 1, "alarms", "A", "Первый");
        addItem(live.store, "last", 1, "alarms", "Z", "Последний");
        live.deliver();
        QCOMPARE(live.currentKey(), key);
        QCOMPARE(live.state(), NewRow);
        QCOMPARE(QModelIndex(live->m_newItemIndex), live->row(qPrintable(key)));
        live.save();
        QVERIFY(live.written().contains("MenuResourceFolderKey='alarms' name_='Mid'"));
        live.deliver();
        QCOMPARE(live.below("alarms"), "first " + key + " last");
        QCOMPARE(live.currentKey(), key);
    }

    void anOpenLineOutlivesABurst() {
        Writing live("rlog");
        QLineEdit* line = passportLine(live.propView(), *live->m_propModel, "caption");
        line->selectAll();
        typeText(line, "Днев");
        line->setCursorPosition(2);
        for (int i = 0; i < 60; ++i)
            addItem(live.store, qPrintable(QString("burst%1").arg(i)), 1, i % 2 ? "mod" : "alarms",
                    qPrintable(QString("Burst%1").arg(i)), "Пачка");
        live.store.remove("MenuResource", "rtable");
        live.store.remove("MenuResource", "rtrend");
        live.store.remove("MenuResourceFolder", "trends");
        live.deliver();
        QCOMPARE(live.currentKey(), QString("rlog"));
        QCOMPARE(live.state(), EditRow);
        const QModelIndex value = live->m_propModel->findIndexByKey("caption").siblingAtColumn(1);
        QCOMPARE(live.propView()->indexWidget(value), line);
        QCOMPARE(line->text(), QString("Днев"));
        QCOMPARE(line->cursorPosition(), 2);
        line->end(false);
        typeText(line, "ник");
        QCOMPARE(live.cell("rlog", ResColumn::Caption), QVariant("Дневник"));
        live.save();
        QVERIFY(live.written().contains("~rlog MenuResourceFolderKey='mod' name_='Log' type_=1 "
                                        "caption='Дневник'"));
    }

    void twoEditsInARowAreTwoWrites() {
        Writing live("rlog");
        live.type("caption", "Дневник");
        live.save();
        live.type("params", "-x");
        live.save();
        QCOMPARE(live.written(),
                 QString("MenuResource\n  ~rlog MenuResourceFolderKey='mod' name_='Log' type_=1 "
                         "caption='Дневник' params='' ico=''\n"
                         "MenuResource\n  ~rlog MenuResourceFolderKey='mod' name_='Log' type_=1 "
                         "caption='Дневник' params='-x' ico=''\n"));
        live.deliver();
        QCOMPARE(live.cell("rlog", ResColumn::Caption), QVariant("Дневник"));
        QCOMPARE(live.cell("rlog", ResColumn::Params), QVariant("-x"));
        QCOMPARE(live->passport("params"), QVariant("-x"));
        QCOMPARE(live.state(), Idle);
    }

    void aSecondCancelChangesNothing() {
        for (const bool isNew : {true, false}) {
            Writing live("mod");
            if (isNew)
                live.editor.action("actAddModule")->trigger();
            else
                live.type("caption", "Иное");
            live.cancel();
            const QString keys = treetext::print(*live->m_resModel, ResColumn::KeyLink, {0, 1});
            const QString current = live.currentKey();
            live.cancel();             // switched off
            live->on_cancel_pressed(); // as if it were not
            live->on_save_pressed();
            QCOMPARE(treetext::print(*live->m_resModel, ResColumn::KeyLink, {0, 1}), keys);
            QCOMPARE(live.currentKey(), current);
            QCOMPARE(live.state(), Idle);
            QVERIFY(!live.buttonsEnabled());
            QCOMPARE(live.written(), QString());
        }
    }

    void aCancelAfterTheRecordIsGone() {
        Writing live("trends");
        live.type("caption", "");
        live.makeCurrent("rlog"); // refused
        live->on_common_error_message(nullptr);
        live.store.remove("MenuResource", "rtrend");
        live.store.remove("MenuResourceFolder", "trends");
        live.deliver();
        live.cancel();
        live.cancel();
        QCOMPARE(live.currentKey(), QString("rlog"));
        QVERIFY(!live.buttonsEnabled());
        // The next edit is a whole one.
        live.type("caption", "Дневник");
        QCOMPARE(live.state(), EditRow);
        QCOMPARE(live->m_editKey, QString("rlog"));
        QVERIFY(live.buttonsEnabled());
        live.cancel();
        QCOMPARE(live.cell("rlog", ResColumn::Caption), QVariant("Журнал"));
        QCOMPARE(live.written(), QString());
    }

    void aMovedRowIsSavedWhereItStands() {
        Writing live("trends");
        live.type("caption", "");
        live.makeCurrent("rlog"); // refused
        live->on_common_error_message(nullptr);
        live.store.update("MenuResourceFolder",
                          {{"KeyLink", QString("trends")}, {"ParentKey", QString("alarms")}});
        live.deliver();
        QCOMPARE(live->row("trends").parent(), live->row("alarms"));
        live.makeCurrent("trends");
        live->on_common_error_message(nullptr);
        live.type("caption", "Графики");
        live.save();
        QCOMPARE(live.written(), QString("MenuResourceFolder\n  ~trends ParentKey='alarms' type_=1 "
                                         "caption='Графики'\n"));
    }

    void aResourceOfAnUnknownFolderIsStillAResource_data() {
        QTest::addColumn<QString>("act");
        QTest::addColumn<QString>("written");
        QTest::addColumn<QString>("caption");
        dataRow("save", "save",
                "MenuResource\n  ~rlog MenuResourceFolderKey='theirs' name_='Log' "
                "type_=1 caption='Дневник' params='' ico=''\n",
                "Дневник");
        dataRow("cancel", "cancel", "", "Журнал");
        dataRow("drop", "drop", "MenuResource\n  ~rlog MenuResourceFolderKey='trends'\n", "Журнал");
        dataRow("delete", "delete", "MenuResource\n  -rlog\n", "Журнал");
    }

    void aResourceOfAnUnknownFolderIsStillAResource() {
        QFETCH(QString, act);
        Writing live;
        // Another client moves it into a folder of its own, which has no row here: it is at the
        // top.
        addFolder(live.store, "theirs", 1, "mod", "Чужая");
        live.store.update("MenuResource", {{"KeyLink", QString("rlog")},
                                           {"MenuResourceFolderKey", QString("theirs")}});
        live.deliver();
        QVERIFY(live->row("rlog").isValid());
        QVERIFY(!live->row("rlog").parent().isValid());
        live.makeCurrent("rlog");
        QCOMPARE(live->passport("object"), QVariant("Log"));
        live.written();
        if (act == "drop") {
            live->on_res_dragdrop(live->row("trends"), {"rlog"});
        } else if (act == "delete") {
            live->on_actDelete_triggered();
            live.answer(YesRole);
        } else {
            live.type("caption", "Дневник");
            act == "save" ? live.save() : live.cancel();
        }
        QTEST(live.written(), "written");
        QCOMPARE(live.state(), Idle);
        QTEST(live.cell("rlog", ResColumn::Caption).toString(), "caption");
        live.deliver();
        if (act == "delete") {
            QVERIFY(!live->row("rlog").isValid());
            return;
        }
        QTEST(live.cell("rlog", ResColumn::Caption).toString(), "caption");
        if (act == "drop")
            QCOMPARE(live->row("rlog").parent(), live->row("trends"));
    }

    void anEditorThatClosesWithItsRowWritesNoOther() {
        Writing live("trends");
        live->on_actAddModule_triggered();
        // Open on a value that was never set, and so shown as another one than it is.
        QVERIFY(passportLine(live.propView(), *live->m_propModel, "object"));
        live.makeCurrent(
            "rlog"); // by the keyboard or by a search: the editor does not lose the focus
        QCOMPARE(live.cell("rlog", ResColumn::Name), QVariant("Log"));
        if (!live.box().isEmpty())
            live->on_common_error_message(nullptr);
        live.cancel();
        QCOMPARE(live.cell("rlog", ResColumn::Name), QVariant("Log"));
        QCOMPARE(live.written(), QString());
    }

    void aNewRowOutlivesTheMoveOfItsFolder_data() {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("value");
        dataRow("among its siblings", "caption", "Яркие");
        dataRow("to another parent", "ParentKey", "trends");
    }

    void aNewRowOutlivesTheMoveOfItsFolder() {
        QFETCH(QString, field);
        QFETCH(QString, value);
        Writing live("alarms");
        live.editor.action("actAddModule")->trigger();
        const QString key = live.currentKey();
        live.type("object", "Mid");
        live.store.update("MenuResourceFolder",
                          {{"KeyLink", QString("alarms")}, {field.toLatin1().constData(), value}});
        live.deliver();
        QCOMPARE(live.state(), NewRow);
        QCOMPARE(live.currentKey(), key);
        QCOMPARE(QModelIndex(live->m_newItemIndex), live->row(qPrintable(key)));
        QVERIFY(live.buttonsEnabled());
        live.save();
        QVERIFY(live.written().contains("+#1 MenuResourceFolderKey='alarms' name_='Mid'"));
        live.deliver();
        QVERIFY(orvo::seekKey(live->m_tabResource, key));
    }

    void aRenamedFolderKeepsTheNewRowInIt() {
        Writing live("alarms");
        live.type("caption", "Яркие");
        live.editor.action("actAddModule")->trigger(); // saves the new caption first
        const QString key = live.currentKey();
        live.deliver();
        QCOMPARE(live.below("mod"), QString("trends alarms rlog rtable"));
        live.written();
        live.type("object", "Mid");
        live.save();
        QVERIFY(live.written().contains("+#1 MenuResourceFolderKey='alarms' name_='Mid'"));
        live.deliver();
        QVERIFY(orvo::seekKey(live->m_tabResource, key));
    }

    void belowAFolderWhoseNameWasRefusedNothingIsDone() {
        Writing live("docs");
        live.type("caption", "icons"); // another folder's
        QCOMPARE(live->getFilePath(live->row("rmanual")), QString("icons"));
        live.makeCurrent("rmanual");
        live->on_common_error_message(nullptr);
        QCOMPARE(live.state(), EditRow);
        live.host.writes().jobs.clear();
        for (const char* action : {"on_actDelete_triggered", "on_actLoadFiles_triggered",
                                   "on_actExtractFiles_triggered"}) {
            QMetaObject::invokeMethod(live.editor.module.get(), action);
            QVERIFY(live.box().contains("Папка с таким именем уже существует"));
            live->on_common_error_message(nullptr);
        }
        QCOMPARE(live.host.writes().jobs, QStringList());
        live.cancel();
        QCOMPARE(live->getFilePath(live->row("rmanual")), QString("docs"));
    }

    void theCurrentRowStaysCurrentWhenItsFolderMoves() {
        Writing live("trends");
        live.type("caption", "А");
        live.makeCurrent("rtrend"); // saves the new caption
        live.deliver();
        QCOMPARE(live.below("mod"), QString("trends alarms rlog rtable"));
        QCOMPARE(live.currentKey(), QString("rtrend"));
        QCOMPARE(live.view()->selectionModel()->selectedRows().size(), 1);
    }

    void anOpenLineOutlivesTheMoveOfItsFolder() {
        Writing live("rtrend");
        QLineEdit* line = passportLine(live.propView(), *live->m_propModel, "caption");
        line->selectAll();
        typeText(line, "Граф");
        live.store.update("MenuResourceFolder",
                          {{"KeyLink", QString("trends")}, {"caption", QString("А")}});
        live.deliver();
        QCOMPARE(live.state(), EditRow);
        QCOMPARE(live.written(), QString());
        const QModelIndex value = live->m_propModel->findIndexByKey("caption").siblingAtColumn(1);
        QCOMPARE(live.propView()->indexWidget(value), line);
        typeText(line, "ик");
        live.save();
        QVERIFY(
            live.written().contains("~rtrend MenuResourceFolderKey='trends' name_='Trend' type_=1 "
                                    "caption='График'"));
    }

    // A question
    // A question

    void theRowOfTheQuestionIsDeleted() {
        Writing live("rcalc");
        live.editor.action("actDelete")->trigger();
        QVERIFY(!live.box().isEmpty());
        live.store.remove("MenuResource", "rcalc");
        live.deliver();
        QCOMPARE(live.currentKey(), QString("calc")); // a folder of functions
        live.answer(YesRole);
        QCOMPARE(live.box(), QString());
        // The answer is about the current row, whatever it is: no record of a resource has its key.
        QCOMPARE(live.written(), QString("MenuResource\n  -calc\n"));
        live.deliver();
        QVERIFY(live->row("calc").isValid());
        QVERIFY(orvo::seekKey(live->m_tabResFolder, "calc"));
        QCOMPARE(live.host.failures, QStringList());
    }

    void aSelectedFormIsDeletedDuringTheQuestion() {
        Writing live;
        live.select({"rboiler", "rburner"});
        live.editor.action("actDelete")->trigger();
        live.store.remove("MenuResource", "rboiler");
        live.deliver();
        live.host.writes().jobs.clear();
        live.answer(YesRole);
        QCOMPARE(live.host.writes().jobs,
                 QStringList({"look up Menu MenuResourceKey rburner", "delete forms Burner"}));
        QCOMPARE(live.written(), QString());
    }

    void theFolderOfTheQuestionIsDeleted() {
        Writing live("rtrend");
        live.editor.action("actDelete")->trigger();
        live.store.remove("MenuResourceFolder", "trends"); // with a row in it still
        live.deliver();
        QVERIFY(!live->row("rtrend").isValid());
        live.answer(NoRole);
        QCOMPARE(live.box(), QString());
        QCOMPARE(live.written(), QString());
        QVERIFY(!live.view()->selectionModel()->hasSelection());
    }

    void aChosenFileIsMovedDuringTheQuestion() {
        Writing live("rmanual");
        live.editor.action("actDelete")->trigger();
        live.store.update("MenuResource", {{"KeyLink", QString("rmanual")},
                                           {"MenuResourceFolderKey", QString("deep")}});
        live.deliver();
        QCOMPARE(live->row("rmanual").parent(), live->row("deep"));
        live.view()->selectionModel()->select(
            live->row("rmanual"), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        live.view()->selectionModel()->setCurrentIndex(live->row("rmanual"),
                                                       QItemSelectionModel::NoUpdate);
        live.host.writes().jobs.clear();
        live.answer(YesRole);
        QCOMPARE(live.host.writes().jobs, QStringList("delete files docs/deep/manual.txt"));
    }

    // The picker
    // The picker

    void theRowOfThePickerIsDeleted() {
        Writing live("rlog");
        live->on_passp_buttonpressed("icon");
        CPopObjectList* list = live->m_popList;
        list->tvObj()->setCurrentIndex(findRow(*list->treeModel, "pump.png"));
        live.store.remove("MenuResource", "rpump"); // the icon
        live.store.remove("MenuResource", "rlog");  // the row that is to get it
        live.deliver();
        QCOMPARE(live.currentKey(), QString("rtable"));
        list->on_btnOK_clicked();
        QCOMPARE(live.cell("rtable", ResColumn::Icon), QVariant("pump.png"));
        live.cancel();
        QCOMPARE(live.cell("rtable", ResColumn::Icon).toString(), QString());
        QCOMPARE(live.written(), QString());
    }

    // Moving rows
    // Moving rows

    void theTargetGoesBetweenCutAndPaste() {
        Writing live;
        live.select({"rlog"});
        live.editor.action("actCut")->trigger();
        live.makeCurrent("alarms");
        QVERIFY(live.editor.action("actPaste")->isEnabled());
        live.store.remove("MenuResourceFolder", "alarms");
        live.store.remove("MenuResource", "rlog");
        live.deliver();
        QCOMPARE(live.currentKey(), QString("trends"));
        live.editor.action("actPaste")->trigger();
        QCOMPARE(live.written(), QString());
        QVERIFY(onClipboard().isEmpty());
    }

    void theTargetOfADragGoes() {
        Writing live;
        ResTreeModel& model = *live->m_resModel;
        const std::unique_ptr<QMimeData> drag(
            model.mimeData({live->row("rlog"), live->row("rtable")}));
        const QPersistentModelIndex target = live->row("alarms");
        QVERIFY(model.canDropMimeData(drag.get(), Qt::MoveAction, -1, 0, target));
        live.store.remove("MenuResourceFolder", "alarms");
        live.store.remove("MenuResource", "rlog");
        live.deliver();
        QVERIFY(!model.canDropMimeData(drag.get(), Qt::MoveAction, -1, 0, target));
        QVERIFY(!model.dropMimeData(drag.get(), Qt::MoveAction, -1, 0, target));
        QCOMPARE(live.written(), QString());
        // The rows that are left still move.
        model.dropMimeData(drag.get(), Qt::MoveAction, -1, 0, live->row("trends"));
        QCOMPARE(live.written(),
                 QString("MenuResource\n  ~rtable MenuResourceFolderKey='trends'\n"));
    }

    void aDragIntoAFolderThatIsNotYetSaved() {
        Writing live("mod");
        live.editor.action("actAddFolder")->trigger();
        live.type("caption", "Тренды"); // taken
        const QString key = live.currentKey();
        live.makeCurrent("rlog");
        QCOMPARE(live.state(), NewRow);
        live->on_common_error_message(nullptr);
        ResTreeModel& model = *live->m_resModel;
        const std::unique_ptr<QMimeData> drag(model.mimeData({live->row("rlog")}));
        model.dropMimeData(drag.get(), Qt::MoveAction, -1, 0, live->row(qPrintable(key)));
        // The server has no such folder: what went there would be seen nowhere after a cancel.
        QCOMPARE(live.written(), QString());
        live.cancel();
        live.deliver();
        QCOMPARE(live->row("rlog").parent(), live->row("mod"));
    }

    void keysThatTheFormatCannotNameAreNotCut() {
        Writing live(
            [](TestStore& store) { addItem(store, "rlog;rtable", 1, "mod", "Odd", "Странный"); });
        QGuiApplication::clipboard()->setText("before");
        live.select({"rlog;rtable"});
        live.editor.action("actCut")->trigger();
        QCOMPARE(QGuiApplication::clipboard()->text(), QString("before"));
        live.select({"rlog;rtable", "rtable"});
        live.editor.action("actCut")->trigger();
        QVERIFY(
            !std::unique_ptr<QMimeData>(live->m_resModel->mimeData({live->row("rlog;rtable")})));
        QCOMPARE(onClipboard(), QByteArray("1\nrtable;\n"));
    }

    // Search
    // Search

    void theSearchPassesOverAWholeFolderThatWent() {
        Writing live;
        auto* line = live.editor.module->findChild<QToolBar*>()->findChild<QLineEdit*>();
        line->setText("о"); // in both areas
        const QString first = live.currentKey();
        live.store.remove("MenuResourceFolder", "docs"); // with all that stands below it
        live.store.remove("MenuResourceFolder", "boilers");
        live.deliver();
        QSet<QString> seen{first};
        for (int i = 0; i < 30; ++i) {
            QMetaObject::invokeMethod(live.editor.module.get(), "on_search_down_pressed");
            QVERIFY(live.current().isValid());
            seen.insert(live.currentKey());
        }
        QVERIFY(!seen.contains("rmanual"));
        QVERIFY(!seen.contains("rboiler"));
        QVERIFY(seen.contains("rpump"));
        waitForFades();
    }

    void theSearchFindsTheNewRow() {
        Writing live("mod");
        live.editor.action("actAddModule")->trigger();
        const QString key = live.currentKey();
        auto* line = live.editor.module->findChild<QToolBar*>()->findChild<QLineEdit*>();
        line->setText("новый");
        // The row itself is no other row: its edit stays open.
        QCOMPARE(live.currentKey(), key);
        QCOMPARE(live.state(), NewRow);
        QCOMPARE(live.box(), QString());
        live.cancel();
        QMetaObject::invokeMethod(live.editor.module.get(), "on_search_up_pressed");
        QMetaObject::invokeMethod(live.editor.module.get(), "on_search_down_pressed");
        QCOMPARE(live.currentKey(), QString("rtable"));
        waitForFades();
    }

    // Names
    // Names

    void namesWithSeparatorsAndLineFeeds() {
        Writing live([](TestStore& store) {
            addItem(store, "rodd", 3, "boilers", "A;B\nC", "Имя;с\nпереводом");
            addItem(store, "ra", 3, "boilers", "A", "А");
            addItem(store, "rfile", 4, "docs", "x;y\nz", "Файл");
        });
        live.makeCurrent("rodd");
        live.type("params", "-x");
        live.save();
        QVERIFY(live.written().contains("name_='A;B\nC' type_=3 caption='Имя;с\nпереводом'"));
        live.deliver();
        live.editor.action("actCut")->trigger();
        QCOMPARE(onClipboard(), QByteArray("3\nrodd;\n"));
        live.host.writes().jobs.clear();
        live.editor.action("actDelete")->trigger();
        live.answer(YesRole);
        live.deliver();
        QVERIFY(live->row("ra").isValid());
        live.makeCurrent("rfile");
        live.editor.action("actDelete")->trigger();
        live.answer(YesRole);
        live.deliver();
        QVERIFY(live->row("rmanual").isValid());
        QCOMPARE(live.host.writes().jobs,
                 QStringList({"look up Menu MenuResourceKey rodd", "delete forms A;B\nC",
                              "delete files docs/x;y\nz"}));
    }
};

QTEST_MAIN(TestResDisturbed)
#include "tst_res_disturbed.moc"
