// Edits that something comes between: other clients' deletions, refused writes, a server that stops
// answering, moves to and fro. An edit always ends, and never on a row that is not its own.
#include "tests/menu/LiveProbe.h"
#include "tests/menu/Outage.h"

using namespace orvo::test;
using orvo::menu::MenuColumn;

namespace {

constexpr int None = MenuProbe::NoEdit;
constexpr int NewDesck = MenuProbe::NewDesck;
constexpr int NewElement = MenuProbe::NewElement;
constexpr int Rename = MenuProbe::RenameDesck;
constexpr int Element = MenuProbe::EditElement;

/// The editor of the plant in one of the states of an edit, "armop" open.
struct Interrupted : Live {
    explicit Interrupted(int state) {
        makeCurrent(state == NewElement ? "grafiki" : "calc");
        switch (state) {
        case NewDesck:
            editor->on_actAddDescktop_triggered();
            break;
        case NewElement:
            editor->on_actNewElemFolder_triggered();
            break;
        case Rename:
            editor->on_actChangeDescktopOrFolder_triggered();
            break;
        case Element:
            editor->on_editor_valueChanged("name", "Иное");
            break;
        default:
            break;
        }
        if (mode() != state)
            qFatal("state %d not reached", state);
        host.writes().take();
    }
    QString written() { return host.writes().take(); }
};

void addStates() {
    QTest::addColumn<int>("state");
    dataRow("new desktop", NewDesck);
    dataRow("new folder", NewElement);
    dataRow("name", Rename);
    dataRow("element", Element);
}

} // namespace

class TestMenuInterrupted : public QObject {
    Q_OBJECT
private slots:
    void theButtonsActWhenTheyGoDown() {
        {
            Interrupted live(Element);
            QTest::mousePress(live->m_btnSave, Qt::LeftButton);
            QCOMPARE(live.mode(), int32_t(None));
            QVERIFY(live.written().startsWith("Menu\n  ~calc "));
        }
        Interrupted live(Element);
        QTest::mousePress(live->m_btnCancel, Qt::LeftButton);
        QCOMPARE(live.mode(), int32_t(None));
        QCOMPARE(live.cell("calc", MenuColumn::Caption), QVariant("Расчёт"));
        QCOMPARE(live.written(), QString());
    }

    void aRefusedWriteLeavesTheTreeAsItIs_data() { addStates(); }
    void aRefusedWriteLeavesTheTreeAsItIs() {
        QFETCH(int, state);
        Interrupted live(state);
        if (state == Rename)
            live->on_Desck_NameChanged("Бюро");
        const QList<int> columns{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
        const QString menu = live.menuText(columns);
        const QString descks = live.desckText({2, 3, 4, 5});
        live.host.writes().refusedTable =
            state == NewDesck || state == Rename ? "MenuFolder" : "Menu";
        live.press(live->m_btnSave);
        QCOMPARE(live.mode(), int32_t(None));
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.host.failures.size(), 1);
        live.deliver();
        // The unsaved values stay, and a placeholder stays one.
        QCOMPARE(live.menuText(columns), menu);
        QCOMPARE(live.desckText({2, 3, 4, 5}), descks);
        QVERIFY(!live->m_popMessageBox);
    }

    // Rows that go away

    void otherHandsMayTakeTheRowsAway_data() {
        QTest::addColumn<int>("state");
        QTest::addColumn<QStringList>("removed"); // "table key"
        const auto row = [](const char* name, int state, const QStringList& removed) {
            QTest::addRow("%d: %s", state, name) << state << removed;
        };
        const QStringList folder{"MenuFolder ceh"};
        const QStringList desktop{"MenuFolder armop"};
        const QStringList elements{"Menu grafiki"};
        QStringList all{"Menu form",        "Menu glubzhe",       "Menu calc",
                        "Menu trend",       "Menu grafiki",       "Menu shema",
                        "Menu propal",      "MenuFolder armpech", "MenuFolder pech",
                        "MenuFolder armop", "MenuFolder ceh",     "MenuFolder sklad",
                        "MenuFolder obshiy"};
        for (const int state : {NewDesck, NewElement, Rename, Element}) {
            row("the folder of its desktop", state, folder);
            row("its desktop", state, desktop);
            row("its folder", state, elements);
            row("the current element", state, {"Menu calc"});
            row("everything", state, all);
            std::reverse(all.begin(), all.end());
            row("everything, from the top", state, all);
            std::reverse(all.begin(), all.end());
        }
    }

    void otherHandsMayTakeTheRowsAway() {
        QFETCH(int, state);
        QFETCH(QStringList, removed);
        Interrupted live(state);
        for (const QString& record : removed)
            live.store.remove(qPrintable(record.section(' ', 0, 0)),
                              qPrintable(record.section(' ', 1)));
        live.deliver();
        live->on_save_pressed();
        QVERIFY(!live.buttonsEnabled());
        live.openDesck("obshiy");
        live.openDesck("mainnode");
        live.makeCurrent("MenuRootNode");
        live.menuView()->setCurrentIndex(QModelIndex());
        QCOMPARE(live.mode(), int32_t(None));
        live.deliver();
        QCOMPARE(live.host.failures, QStringList());
        // Whatever was written concerns the edit alone.
        for (const WriteCall& call : qAsConst(live.host.writes().calls))
            QCOMPARE(call.records.size(), 1);
        QVERIFY(live.host.writes().calls.size() <= 1);
    }

    void cancellingAfterwardsEndsWellToo_data() { otherHandsMayTakeTheRowsAway_data(); }
    void cancellingAfterwardsEndsWellToo() {
        QFETCH(int, state);
        QFETCH(QStringList, removed);
        Interrupted live(state);
        for (const QString& record : removed)
            live.store.remove(qPrintable(record.section(' ', 0, 0)),
                              qPrintable(record.section(' ', 1)));
        live.deliver();
        live->on_cancel_pressed();
        QVERIFY(!live.buttonsEnabled());
        live.openDesck("obshiy");
        live.openDesck("mainnode");
        QCOMPARE(live.mode(), int32_t(None));
        live.deliver();
        QCOMPARE(live.host.failures, QStringList());
        QVERIFY(live.host.writes().calls.size() <= 1);
    }

    // Rows that are not its own

    void aCancelledEditLeavesNoRowBehind() {
        Interrupted live(Element);
        {
            const StructureOutage outage;
            live.makeCurrent("shema");
        }
        QCOMPARE(live.mode(), int32_t(Element));
        QCOMPARE(QModelIndex(live->m_editMenuIndex), live->element("calc"));
        live->on_cancel_pressed();
        QCOMPARE(live.mode(), int32_t(None));
        QVERIFY(!live->m_editMenuIndex.isValid());
        QCOMPARE(live.cell("calc", MenuColumn::Caption), QVariant("Расчёт"));
        // The next edit saves its own row.
        live.makeCurrent("trend");
        live->on_editor_valueChanged("name", "Кривая");
        live.press(live->m_btnSave);
        const QString written = live.written();
        QVERIFY2(written.startsWith("Menu\n  ~trend ") && written.contains("caption='Кривая'"),
                 qPrintable(written));
    }

    void aDesktopChangeWithoutAnswersEndsWithTheNextMove() {
        Interrupted live(Element);
        {
            const StructureOutage outage;
            live.openDesck("armpech");
            QCOMPARE(live.menuText(), QString("Меню #MenuRootNode\n"));
        }
        QCOMPARE(live.written(), QString());
        live.openDesck("armop");
        live.makeCurrent("shema");
        live.makeCurrent("trend");
        QCOMPARE(live.mode(), int32_t(None));
        QVERIFY(!live.buttonsEnabled());
        live.deliver();
        QCOMPARE(live.host.failures, QStringList());
        QCOMPARE(live.cell("calc", MenuColumn::Caption), QVariant("Расчёт"));
        QCOMPARE(live.cell("shema", MenuColumn::Caption), QVariant("Схема"));
    }

    void theRowOfANewDesktopMayMove() {
        Interrupted live(NewDesck);
        const QString key = live.currentDesck();
        // Rows before it come and go without the current row's doing.
        const QModelIndex folder = live->desck("ceh");
        QVERIFY(live->m_desckModel->insertRows(0, 3, folder));
        QVERIFY(live->m_desckModel->removeRows(1, 1, live->desck("ceh")));
        QCOMPARE(live->m_editDesckIndex.data(orvo::KeyRole), QVariant(key));
        live.press(live->m_btnSave);
        QVERIFY(live.written().contains("+#1 ParentKey='ceh' caption='новый рабочий стол'"));
    }

    void theNameOfARowMayChangeUnderItsEditor() {
        Interrupted live(Rename);
        auto* line = qobject_cast<QLineEdit*>(
            live.desckView()->indexWidget(live.desckView()->currentIndex()));
        QVERIFY(line);
        line->selectAll();
        typeText(line, "Бю");
        // Another client renames it meanwhile: the row is shown afresh, which ends the edit with
        // what the row holds then.
        live.store.update("MenuFolder",
                          {{"KeyLink", QString("armop")}, {"caption", QString("Чужое")}});
        live.deliver();
        QCOMPARE(live.mode(), int32_t(None));
        QVERIFY(!live.buttonsEnabled());
        live.deliver();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!live.desckView()->indexWidget(live->desck("armop")));
        // The tree and the table agree.
        QCOMPARE(live->desck("armop").data().toString(),
                 orvo::textOf(orvo::seekKey(live->m_tabFolder, "armop"), "caption"));
        QCOMPARE(live->desck("ceh").data(), QVariant("Цех 1"));
    }

    void aCancelledNameIsNotWrittenBackByTheOpenEditor() {
        Interrupted live(Rename);
        auto* line = qobject_cast<QLineEdit*>(
            live.desckView()->indexWidget(live.desckView()->currentIndex()));
        QVERIFY(line);
        line->selectAll();
        typeText(line, "Бюро");
        QCOMPARE(live->desck("armop").data(), QVariant("Бюро"));
        // While the tree has yet to be laid out its view tells the editor of no change.
        live.store.remove("MenuFolder", "sklad");
        live.deliver();
        QCOMPARE(live.mode(), int32_t(Rename));
        live.press(live->m_btnCancel);
        QCOMPARE(live->desck("armop").data(), QVariant("АРМ оператора"));
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(live->desck("armop").data(), QVariant("АРМ оператора"));
        QCOMPARE(live.mode(), int32_t(None));
        QCOMPARE(live.written(), QString());
    }

    void anEndedEditorWritesNoOtherRow() {
        Interrupted live(Rename);
        auto* line = qobject_cast<QLineEdit*>(
            live.desckView()->indexWidget(live.desckView()->currentIndex()));
        QVERIFY(line);
        line->selectAll();
        typeText(line, "Бюро");
        live.store.remove("MenuFolder", "armop");
        live.deliver();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!live.desckText().contains("Бюро"));
        QCOMPARE(live.mode(), int32_t(None));
        QCOMPARE(live.host.failures, QStringList());
    }

    // Depths

    void theLowestRowOfAVeryDeepMenuIsWorkedOn() {
        constexpr int depth = 5000;
        Interrupted live(None);
        live.store.sql(qPrintable(
            QString("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                    "INSERT INTO \"Menu\" (\"KeyLink\", \"parent\", \"FolderKey\", \"caption\", "
                    "\"order_\") SELECT 'k' || i, CASE i WHEN 0 THEN NULL ELSE 'k' || (i - 1) END, "
                    "'obshiy', 'n', 0 FROM n")
                .arg(depth - 1)));
        live.desckView()->setCurrentIndex(live->desck("obshiy"));
        const QByteArray lowest = "k" + QByteArray::number(depth - 1);
        live.makeCurrent(lowest);
        QCOMPARE(live.currentElement(), QString(lowest));
        // A new folder below it, somebody else's element beside that, and a name of its own.
        live->on_actNewElemFolder_triggered();
        QCOMPARE(live.mode(), int32_t(NewElement));
        live.press(live->m_btnSave);
        addElement(live.store, "obshiy", "last", lowest, "Последний", 5000, "rform");
        live.deliver();
        QCOMPARE(live->m_menuModel->rowCount(live->element(lowest)), 2);
        QCOMPARE(live.currentElement(), QString("last"));
        live.makeCurrent(lowest);
        live->on_editor_valueChanged("name", "Дно");
        live.press(live->m_btnSave);
        live.deliver();
        QCOMPARE(live.cell(lowest, MenuColumn::Caption), QVariant("Дно"));
        // And all of it goes.
        live.makeCurrent("k0");
        live.host.writes().take();
        live->on_actDeleteElem_triggered();
        QTest::mouseClick(live.editor.module->m_popMessageBox->findChildren<QPushButton*>().first(),
                          Qt::LeftButton);
        QCOMPARE(live.host.writes().calls.size(), 1);
        QCOMPARE(live.host.writes().calls[0].records.size(), depth + 2);
        live.deliver();
        QCOMPARE(live.menuText(), QString("Меню #MenuRootNode\n"));
        QCOMPARE(live.host.failures, QStringList());
    }
};

QTEST_MAIN(TestMenuInterrupted)
#include "tst_menu_interrupted.moc"
