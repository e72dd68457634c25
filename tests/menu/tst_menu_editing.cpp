// The one edit at a time: each row of its table of states, what is written on save, what is undone
// on cancel.
#include "tests/menu/LiveProbe.h"
#include "tests/menu/Outage.h"

using namespace orvo::test;
using orvo::menu::DesckColumn;
using orvo::menu::MenuColumn;

namespace {

constexpr int32_t None = MenuProbe::NoEdit;
constexpr int32_t NewDesck = MenuProbe::NewDesck;
constexpr int32_t NewElement = MenuProbe::NewElement;
constexpr int32_t Rename = MenuProbe::RenameDesck;
constexpr int32_t Element = MenuProbe::EditElement;

/// The editor in one of the states of an edit.
struct Editing : Live {
    explicit Editing(int32_t state = None, Fill fill = nullptr) : Live(fill) {
        makeCurrent("calc");
        switch (state) {
        case NewDesck:
            editor->on_actAddDescktop_triggered();
            break;
        case NewElement:
            makeCurrent("grafiki");
            editor->on_actNewElemFolder_triggered();
            break;
        case Rename:
            editor->on_actChangeDescktopOrFolder_triggered();
            break;
        case Element:
            type("name", "Иное");
            break;
        default:
            break;
        }
        if (mode() != state)
            qFatal("state %d not reached", state);
        host.writes().take();
    }
    void save() { press(editor->m_btnSave); }
    void cancel() { press(editor->m_btnCancel); }
    QString written() { return host.writes().take(); }
    /// Takes the row of the edit out of its tree, and nobody hears of it.
    void removeEditedRow() {
        const bool desck = editor->m_editDesckIndex.isValid();
        const QModelIndex row = desck ? editor->m_editDesckIndex : editor->m_editMenuIndex;
        const QSignalBlocker desckSelection(desckView()->selectionModel());
        const QSignalBlocker menuSelection(menuView()->selectionModel());
        if (desck)
            editor->m_desckModel->removeRows(row.row(), 1, row.parent());
        else
            editor->m_menuModel->removeRows(row.row(), 1, row.parent());
    }
    QLineEdit* nameEditor() {
        return qobject_cast<QLineEdit*>(desckView()->indexWidget(desckView()->currentIndex()));
    }
    void typeName(const QString& text) {
        QLineEdit* line = nameEditor();
        if (!line)
            qFatal("no editor on the desktop");
        line->selectAll();
        typeText(line, text);
    }
};

} // namespace

class TestMenuEditing : public QObject {
    Q_OBJECT
private slots:
    // What opens an edit
    // What opens an edit

    void aNewDesktopOpensAnEdit() {
        Editing live(NewDesck);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(QModelIndex(live->m_editDesckIndex), live.desckView()->currentIndex());
        QVERIFY(!live.editor.action("actAddDescktop")->isEnabled());
        QCOMPARE(live.desckView()->currentIndex().siblingAtColumn(DesckColumn::IsNew).data(),
                 QVariant(true));
    }

    void aNewFolderOfDesktopsOpensAnEdit() {
        Editing live;
        live.openDesck("ceh");
        live->on_actAddFoldertvDesck_triggered();
        QCOMPARE(live.mode(), NewDesck);
        QVERIFY(live.buttonsEnabled());
    }

    void aNewElementFolderOpensAnEdit() {
        Editing live(NewElement);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(QModelIndex(live->m_editMenuIndex), live.menuView()->currentIndex());
        QVERIFY(!live.editor.action("actNewElemModul")->isEnabled());
    }

    void renamingOpensAnEdit() {
        Editing live(Rename);
        QVERIFY(live.buttonsEnabled());
        QVERIFY(live.nameEditor());
        QCOMPARE(QModelIndex(live->m_editDesckIndex), live->desck("armop"));
        QVERIFY(!live.editor.action("actChangeDescktopOrFolder")->isEnabled());
    }

    void aChangedPassportOpensAnEdit() {
        Editing live;
        QVERIFY(!live.buttonsEnabled());
        live.makeCurrent("calc");
        live.type("name", "И");
        QCOMPARE(live.mode(), Element);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live.cell("calc", MenuColumn::Caption), QVariant("И"));
        typeText(live.lineOf("name"), "но");
        QCOMPARE(live.cell("calc", MenuColumn::Caption), QVariant("Ино"));
        // The actions of the trees stay as they are.
        QVERIFY(live.editor.action("actDeleteElem")->isEnabled());
        QCOMPARE(live.written(), QString());
    }

    void aChangeOfARowWithoutAColumnOpensAnEditToo() {
        Editing live;
        const QString before = live.menuText({1, 2, 3, 4, 6, 7, 8, 9, 10, 11, 12});
        live->on_editor_valueChanged("object", "Другой");
        QCOMPARE(live.mode(), Element);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live.menuText({1, 2, 3, 4, 6, 7, 8, 9, 10, 11, 12}), before);
    }

    void aChangeWithoutAnElementOpensNone() {
        Editing live;
        live.makeCurrent("calc");
        live->m_currentMenuKey = "gone";
        live->on_editor_valueChanged("name", "Иное");
        QCOMPARE(live.mode(), None);
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live->m_propModel->rowCount(), 0); // nothing more is typed there
    }

    void eachPassportRowHasItsColumn_data() {
        QTest::addColumn<QString>("row");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<int>("column");
        dataRow("name", "name", QVariant("Иное"), int(MenuColumn::Caption));
        dataRow("icon", "icon", QVariant("pump.png"), int(MenuColumn::Icon));
        dataRow("params", "params", QVariant("-x"), int(MenuColumn::Params));
        dataRow("onecopy", "onecopy", QVariant(true), int(MenuColumn::OneCopy));
        dataRow("separator", "separator", QVariant(true), int(MenuColumn::Separator));
        dataRow("Name", "Name", QVariant("Иное"), int(MenuColumn::Caption));
        dataRow("OneCopy", "OneCopy", QVariant(true), int(MenuColumn::OneCopy));
        for (const char* row : {"object", "keylink", "type", "order", ""})
            QTest::addRow("no column: %s", row) << QString(row) << QVariant("Иное") << -1;
    }

    void eachPassportRowHasItsColumn() {
        QFETCH(QString, row);
        QFETCH(QVariant, value);
        QFETCH(int, column);
        Editing live;
        const auto values = [&] {
            QVariantList list;
            for (int i = 0; i < MenuColumn::Count; ++i)
                list << live.cell("calc", i);
            return list;
        };
        QVariantList expected = values();
        if (column >= 0)
            expected[column] = value;
        live->on_editor_valueChanged(row, value);
        QCOMPARE(values(), expected);
        QCOMPARE(live.mode(), Element);
    }

    void thePassportOfANewFolderWritesItsPlaceholder() {
        Editing live(NewElement);
        live.type("name", "Своя");
        QCOMPARE(live.mode(), NewElement);
        QCOMPARE(live.menuView()->currentIndex().data(), QVariant("Своя"));
        live.save();
        const QString written = live.written();
        QVERIFY2(written.startsWith("Menu\n  +") && written.contains("caption='Своя'"),
                 qPrintable(written));
    }

    void aFlagIsToggledInThePassport() {
        Editing live;
        const QModelIndex value = live->m_propModel->findIndexByKey("separator").siblingAtColumn(1);
        live.propView()->scrollTo(value);
        QTest::mouseClick(live.propView()->viewport(), Qt::LeftButton, Qt::NoModifier,
                          live.propView()->visualRect(value).center());
        QCOMPARE(live.mode(), Element);
        QCOMPARE(live.cell("calc", MenuColumn::Separator), QVariant(true));
        live.save();
        const QString written = live.written();
        QVERIFY2(written.contains("separator=true"), qPrintable(written));
    }

    // Save
    // Save

    void savingNothingDisablesTheButtonsOnly() {
        Editing live;
        const QString before = live.menuText() + live.desckText();
        live->m_btnSave->setEnabled(true);
        live->m_btnCancel->setEnabled(true);
        live.save();
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.mode(), None);
        QCOMPARE(live.menuText() + live.desckText(), before);
        QCOMPARE(live.written(), QString());
    }

    void savingANewDesktopWritesIt() {
        Editing live(NewDesck);
        const QString key = live.currentDesck();
        live.save();
        QCOMPARE(live.written(), QString("MenuFolder\n  +#1 ParentKey='ceh' caption='новый рабочий "
                                         "стол' order_='2000' isFolder=false\n"));
        QCOMPARE(live.mode(), None);
        QVERIFY(!live.buttonsEnabled());
        QVERIFY(!live->m_editDesckIndex.isValid());
        QCOMPARE(live.desckView()->editTriggers(), QAbstractItemView::NoEditTriggers);
        QVERIFY(!live.nameEditor());
        // The row waits for the server.
        QCOMPARE(live.desckView()->currentIndex().siblingAtColumn(DesckColumn::IsNew).data(),
                 QVariant(true));
        live.deliver();
        QCOMPARE(live.currentDesck(), key);
        QCOMPARE(live.desckView()->currentIndex().siblingAtColumn(DesckColumn::IsNew).data(),
                 QVariant(false));
    }

    void savingATopFolderWritesNoParent() {
        Editing live;
        live.openDesck("mainnode");
        live->on_actAddFoldertvDesck_triggered();
        live.save();
        QCOMPARE(live.written(), QString("MenuFolder\n  +#1 ParentKey=NULL caption='новая папка1' "
                                         "order_='1000' isFolder=true\n"));
    }

    void savingANewElementFolderWritesIt() {
        Editing live(NewElement);
        live.save();
        const QString written = live.written();
        QCOMPARE(written.count('\n'), 2);
        for (const char* part :
             {"Menu\n  +#1", "parent='grafiki'", "FolderKey='armop'", "caption='Новая папка'",
              "order_=3000", "ico=''", "separator=false", "oneCopy=false"})
            QVERIFY2(written.contains(part), qPrintable(written));
        QVERIFY(!written.contains("MenuResourceKey"));
        QVERIFY(!written.contains("params"));
        QCOMPARE(live.mode(), None);
        QVERIFY(!live.buttonsEnabled());
        QVERIFY(!live->m_editMenuIndex.isValid());
        QCOMPARE(live.menuView()->currentIndex().siblingAtColumn(MenuColumn::IsNew).data(),
                 QVariant(true));
    }

    void savingATopElementFolderWritesNoParent() {
        Editing live;
        live.makeCurrent("MenuRootNode");
        live->on_actNewElemFolder_triggered();
        live.save();
        const QString written = live.written();
        QVERIFY2(written.contains("parent=NULL"), qPrintable(written));
    }

    void savingANameWritesKeyAndCaptionAlone() {
        Editing live(Rename);
        live.typeName("Бюро");
        live.save();
        QCOMPARE(live.written(), QString("MenuFolder\n  ~armop caption='Бюро'\n"));
        QCOMPARE(live.mode(), None);
        QVERIFY(!live.buttonsEnabled());
        QVERIFY(!live->m_editDesckIndex.isValid());
        QVERIFY(!live.nameEditor());
        QCOMPARE(live.desckView()->editTriggers(), QAbstractItemView::NoEditTriggers);
        QCOMPARE(live->desck("armop").data(), QVariant("Бюро"));
        live.deliver();
        QCOMPARE(orvo::textOf(orvo::seekKey(live->m_tabFolder, "armop"), "caption"),
                 QString("Бюро"));
    }

    void savingAnElementWritesAllItsFields() {
        Editing live;
        live->on_editor_valueChanged("icon", "pump.png");
        live.save();
        const QString written = live.written();
        QCOMPARE(written.count('\n'), 2);
        for (const char* part :
             {"Menu\n  ~calc", "parent='grafiki'", "FolderKey='armop'", "caption='Расчёт'",
              "order_=1000", "ico='pump.png'", "separator=false", "oneCopy=false",
              "MenuResourceKey='rcalc'", "params=''"})
            QVERIFY2(written.contains(part), qPrintable(written));
        QCOMPARE(live.mode(), None);
        QVERIFY(!live.buttonsEnabled());
        live.deliver();
        QCOMPARE(live.currentElement(), QString("calc"));
        QCOMPARE(live.passport("icon"), QVariant("pump.png"));
    }

    void savingAFolderWritesNoObject() {
        Editing live;
        live.makeCurrent("grafiki");
        live.type("name", "Иные");
        live.save();
        const QString written = live.written();
        QVERIFY2(written.startsWith("Menu\n  ~grafiki parent=NULL "), qPrintable(written));
        QVERIFY2(!written.contains("MenuResourceKey") && !written.contains("params"),
                 qPrintable(written));
    }

    void aRefusedWriteEndsTheEditAllTheSame() {
        Editing live(NewElement);
        live.host.writes().refusedTable = "Menu";
        live.save();
        QCOMPARE(live.mode(), None);
        QVERIFY(!live.buttonsEnabled());
        live.deliver();
        QCOMPARE(live.menuView()->currentIndex().siblingAtColumn(MenuColumn::IsNew).data(),
                 QVariant(true));
        QCOMPARE(live.host.failures.size(), 1);
    }

    void withoutAStructureTheEditStaysOpen_data() {
        QTest::addColumn<int>("state");
        dataRow("new desktop", NewDesck);
        dataRow("new element", NewElement);
        dataRow("name", Rename);
        dataRow("element", Element);
    }

    void withoutAStructureTheEditStaysOpen() {
        QFETCH(int, state);
        Editing live(state);
        {
            const StructureOutage outage;
            live.save();
            QCOMPARE(live.mode(), state);
            QVERIFY(!live.buttonsEnabled());
            QCOMPARE(live.written(), QString());
        }
        // Moving on saves it.
        if (state == NewDesck || state == Rename)
            live.openDesck("sklad");
        else
            live.makeCurrent("shema");
        QCOMPARE(live.mode(), None);
        QCOMPARE(live.written().count('\n'), 2);
    }

    void withoutItsRowASaveChangesNothing_data() { withoutAStructureTheEditStaysOpen_data(); }

    void withoutItsRowASaveChangesNothing() {
        QFETCH(int, state);
        Editing live(state);
        live.removeEditedRow();
        live.save();
        QCOMPARE(live.mode(), state);
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.written(), QString());
    }

    void aStaleRowGivesWayToTheCurrentOne() {
        Editing live(NewElement);
        live.cancel();
        QVERIFY(!live->m_editMenuIndex.isValid());
        live.makeCurrent("calc");
        live.type("name", "Иное");
        live.save();
        QVERIFY(live.written().startsWith("Menu\n  ~calc "));
    }

    // Cancel
    // Cancel

    void cancellingNothingDisablesTheButtonsOnly() {
        Editing live;
        const QString before = live.menuText() + live.desckText();
        live->m_btnSave->setEnabled(true);
        live->m_btnCancel->setEnabled(true);
        live.cancel();
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.mode(), None);
        QCOMPARE(live.menuText() + live.desckText(), before);
        QCOMPARE(live.currentElement(), QString("calc"));
    }

    void aCancelledDesktopLeavesTheRowInItsPlaceCurrent() {
        Editing live;
        const QString before = live.desckText();
        live.openDesck("ceh");
        // A new folder stands before the desktops.
        live->on_actAddFoldertvDesck_triggered();
        QCOMPARE(live.desckView()->currentIndex().row(), 1);
        live.cancel();
        QCOMPARE(live.desckText(), before);
        QCOMPARE(live.currentDesck(), QString("armop"));
        QCOMPARE(live.mode(), None);
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.desckView()->editTriggers(), QAbstractItemView::NoEditTriggers);
        QVERIFY(live->element("shema").isValid());
        QCOMPARE(live.written(), QString());
    }

    void aCancelledLastDesktopLeavesTheNewLastCurrent() {
        Editing live(NewDesck,
                     [](TestStore& store) { addDesck(store, "armb", "ceh", "Б стол", false); });
        QCOMPARE(live.desckView()->currentIndex().row(), 3);
        live.cancel();
        QCOMPARE(live.currentDesck(), QString("armb"));
        QCOMPARE(live.desckView()->currentIndex().column(), 0);
    }

    void aCancelledOnlyDesktopLeavesItsFolderCurrent() {
        Editing live;
        live.openDesck("sklad");
        live->on_actAddDescktop_triggered();
        live.cancel();
        QCOMPARE(live.currentDesck(), QString("sklad"));
        QCOMPARE(live.below(live->desck("sklad")), QString());
        QCOMPARE(live.mode(), None);
    }

    void aCancelledElementFolderLeavesTheNewLastCurrent() {
        Editing live(NewElement);
        const QModelIndex folder = live->element("grafiki");
        live.cancel();
        QCOMPARE(live.below(folder), QString("trend calc glubzhe"));
        QCOMPARE(live.currentElement(), QString("glubzhe"));
        QCOMPARE(live.mode(), None);
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.passport("name"), QVariant("Глубже"));
        QVERIFY(live.editor.action("actNewElemFolder")->isEnabled());
    }

    void aCancelledOnlyElementFolderLeavesItsParentCurrent() {
        Editing live;
        live.store.remove("Menu", "form");
        live.deliver();
        live.makeCurrent("glubzhe");
        live->on_actNewElemFolder_triggered();
        live.cancel();
        QCOMPARE(live.currentElement(), QString("glubzhe"));
        QCOMPARE(live->m_menuModel->rowCount(live->element("glubzhe")), 0);
    }

    void aCancelledNameComesBackFromTheTable() {
        Editing live(Rename);
        live.typeName("Бюро");
        QCOMPARE(live->desck("armop").data(), QVariant("Бюро"));
        // A change of the menu that no notification of this window has told yet.
        addElement(live.store, "armop", "neu", "", "Новый", 9000, "rform");
        live.cancel();
        QCOMPARE(live->desck("armop").data(), QVariant("АРМ оператора"));
        QCOMPARE(live.mode(), None);
        QVERIFY(!live.buttonsEnabled());
        QVERIFY(!live->m_editDesckIndex.isValid());
        QCOMPARE(live.currentDesck(), QString("armop"));
        QCOMPARE(live.desckView()->editTriggers(), QAbstractItemView::NoEditTriggers);
        QVERIFY(!live.nameEditor());
        // The menu is shown anew.
        QVERIFY(live->element("neu").isValid());
        QCOMPARE(live.written(), QString());
    }

    void aNameWithoutARecordStaysAsTyped() {
        Editing live(Rename);
        live.typeName("Бюро");
        live->m_tabFolder.RecDel(orvo::seekKey(live->m_tabFolder, "armop"));
        live.cancel();
        QCOMPARE(live.mode(), None);
        QCOMPARE(live->desck("armop").data(), QVariant("Бюро"));
    }

    void aCancelledElementComesBackFromTheTable() {
        Editing live(None, [](TestStore& store) {
            store.update("Menu", {{"KeyLink", QString("calc")}, {"ico", QString("tank.png")}});
        });
        live.makeCurrent("calc");
        const QString before = live.menuText({1, 2, 3, 4, 6, 7, 8, 9, 10, 11, 12});
        live.type("name", "Иное");
        live->on_editor_valueChanged("icon", "pump.png");
        live->on_editor_valueChanged("onecopy", true);
        live.cancel();
        QCOMPARE(live.menuText({1, 2, 3, 4, 6, 7, 8, 9, 10, 11, 12}), before);
        QCOMPARE(live.cell("calc", MenuColumn::Icon), QVariant("tank.png"));
        QCOMPARE(live.currentElement(), QString("calc"));
        QCOMPARE(live.passport("name"), QVariant("Расчёт"));
        QCOMPARE(live.passport("icon"), QVariant("tank.png"));
        QCOMPARE(live.mode(), None);
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.written(), QString());
    }

    void theNameOfAnIconThatIsNeverReadStaysAsItIs() {
        static const QString hostile = "../../../../../../../dev/ptmx";
        Editing live(None, [](TestStore& store) {
            store.update("Menu", {{"KeyLink", QString("calc")}, {"ico", hostile}});
        });
        live.makeCurrent("calc");
        QCOMPARE(live.cell("calc", MenuColumn::Icon), QVariant(hostile));
        QCOMPARE(live.passport("icon"), QVariant(hostile));
        live.type("name", "Иное");
        live.save();
        const QString written = live.written();
        QVERIFY2(written.contains("ico='" + hostile + '\''), qPrintable(written));
        live.deliver();
        QCOMPARE(live.cell("calc", MenuColumn::Icon), QVariant(hostile));
    }

    void anElementWithoutARecordStaysAsTyped() {
        Editing live(Element);
        live->m_tabMenu.RecDel(orvo::seekKey(live->m_tabMenu, "calc"));
        live.cancel();
        QCOMPARE(live.mode(), None);
        QCOMPARE(live.cell("calc", MenuColumn::Caption), QVariant("Иное"));
    }

    void withoutItsRowACancelChangesNothing_data() { withoutAStructureTheEditStaysOpen_data(); }

    void withoutItsRowACancelChangesNothing() {
        QFETCH(int, state);
        Editing live(state);
        live.removeEditedRow();
        const QString before = live.menuText() + live.desckText();
        live.cancel();
        QCOMPARE(live.mode(), state);
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.menuText() + live.desckText(), before);
    }

    // Moving on
    // Moving on

    void aNewRowTakesTheEditOfDesktopsOver() {
        Editing live(NewDesck);
        const QModelIndex folder = live->desck("ceh");
        QVERIFY(live->m_desckModel->insertRows(0, 1, folder));
        const QModelIndex row = live->m_desckModel->index(0, 0, folder);
        live->m_desckModel->setData(row.siblingAtColumn(DesckColumn::KeyLink), "neu",
                                    Qt::DisplayRole);
        live->m_desckModel->setData(row.siblingAtColumn(DesckColumn::IsNew), true, Qt::DisplayRole);
        live.desckView()->setCurrentIndex(row);
        QCOMPARE(live.mode(), NewDesck);
        QCOMPARE(QModelIndex(live->m_editDesckIndex), row);
        QVERIFY(!live.editor.action("actAddDescktop")->isEnabled());
        QCOMPARE(live.written(), QString());
    }

    void leavingANewDesktopSavesIt() {
        Editing live(NewDesck);
        clickRow(live.desckView(), live->desck("armpech"));
        QCOMPARE(live.mode(), None);
        QVERIFY(!live.buttonsEnabled());
        QVERIFY(live.written().startsWith("MenuFolder\n  +#1 ParentKey='ceh'"));
    }

    void leavingANewElementFolderSavesIt() {
        Editing live(NewElement);
        clickRow(live.menuView(), live->element("shema"));
        QCOMPARE(live.mode(), None);
        QVERIFY(!live.buttonsEnabled());
        QVERIFY(live.written().startsWith("Menu\n  +#1"));
        QCOMPARE(live.currentElement(), QString("shema"));
    }

    void leavingARenamedDesktopSavesTheOldRow() {
        Editing live(Rename);
        live.typeName("Бюро");
        clickRow(live.desckView(), live->desck("armpech"));
        QCOMPARE(live.mode(), None);
        QCOMPARE(live.written(), QString("MenuFolder\n  ~armop caption='Бюро'\n"));
        QCOMPARE(live->desck("armpech").data(), QVariant("АРМ печи"));
        QCOMPARE(live.currentDesck(), QString("armpech"));
        QVERIFY(!live.buttonsEnabled());
    }

    void leavingAnElementSavesTheOldRow() {
        Editing live(Element);
        clickRow(live.menuView(), live->element("trend"));
        QCOMPARE(live.mode(), None);
        const QString written = live.written();
        QVERIFY2(written.startsWith("Menu\n  ~calc ") && written.contains("caption='Иное'"),
                 qPrintable(written));
        QVERIFY(!live.buttonsEnabled());
        QVERIFY(!live->m_editMenuIndex.isValid());
        // The echo refreshes the row that is current now.
        live.deliver();
        QCOMPARE(live.currentElement(), QString("trend"));
        QCOMPARE(live.passport("name"), QVariant("Тренд"));
    }

    void leavingTheDesktopOfAnElementSavesIt() {
        Editing live(Element);
        clickRow(live.desckView(), live->desck("armpech"));
        QCOMPARE(live.mode(), None);
        const QString written = live.written();
        QVERIFY2(written.startsWith("Menu\n  ~calc ") && written.contains("caption='Иное'"),
                 qPrintable(written));
        QCOMPARE(written.count('\n'), 2);
        QCOMPARE(live.menuText(), QString("Меню #MenuRootNode\n"));
        live.openDesck("armop");
        QCOMPARE(live.cell("calc", MenuColumn::Caption), QVariant("Иное"));
    }

    void elementsMoveBesideAnEditOfDesktops_data() {
        QTest::addColumn<int>("state");
        dataRow("new desktop", NewDesck);
        dataRow("name", Rename);
    }

    void elementsMoveBesideAnEditOfDesktops() {
        QFETCH(int, state);
        Editing live(state);
        live.menuView()->setCurrentIndex(live->element("shema"));
        QCOMPARE(live.mode(), state);
        QCOMPARE(live->m_currentMenuKey, QString("shema"));
        QCOMPARE(live->m_propModel->rowCount(), 0);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live.written(), QString());
    }

    void desktopsMoveBesideANewElementFolder() {
        Editing live(NewElement);
        const QString before = live.menuText();
        live.desckView()->setCurrentIndex(live->desck("armpech"));
        QCOMPARE(live.mode(), NewElement);
        QCOMPARE(live->m_currentDesckKey, QString("armpech"));
        QCOMPARE(live.menuText(), before);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live.written(), QString());
        // The folder is saved into the desktop that it was made in.
        live.save();
        QVERIFY(live.written().contains("FolderKey='armop'"));
    }

    void anEditThatCouldNotBeSavedIsSavedByTheNextMove() {
        Editing live(NewElement);
        {
            const StructureOutage outage;
            live.makeCurrent("shema");
            QCOMPARE(live.mode(), NewElement);
        }
        live.makeCurrent("calc");
        QCOMPARE(live.mode(), None);
        QVERIFY(live.written().startsWith("Menu\n  +#1"));
    }

    // The name editor
    // The name editor

    void eachKeystrokeEntersTheTree() {
        Editing live(Rename);
        QLineEdit* line = live.nameEditor();
        line->clear();
        const QString text = "Бюро";
        for (int i = 0; i < text.size(); ++i) {
            typeText(line, text.mid(i, 1));
            QCOMPARE(live->desck("armop").data(), QVariant(text.left(i + 1)));
            QCOMPARE(live.nameEditor(), line);
        }
        QCOMPARE(live.mode(), Rename);
        QCOMPARE(live.written(), QString());
    }

    void aNameWithoutACurrentRowIsDropped() {
        Editing live;
        const QString before = live.desckText();
        live.desckView()->setCurrentIndex(QModelIndex());
        live->on_Desck_NameChanged("Бюро");
        QCOMPARE(live.desckText(), before);
    }

    void closingTheEditorKeepsTheEditOpen_data() {
        QTest::addColumn<int>("state");
        QTest::addColumn<int>("key");
        for (const int state : {NewDesck, Rename}) {
            QTest::addRow("%d, Return", state) << state << int(Qt::Key_Return);
            QTest::addRow("%d, Escape", state) << state << int(Qt::Key_Escape);
        }
    }

    void closingTheEditorKeepsTheEditOpen() {
        QFETCH(int, state);
        QFETCH(int, key);
        Editing live(state);
        if (!live.nameEditor())
            live.desckView()->edit(live.desckView()->currentIndex());
        live.typeName("Бюро");
        QTest::keyClick(live.nameEditor(), Qt::Key(key));
        QTRY_VERIFY(!live.nameEditor());
        QCOMPARE(live.desckView()->editTriggers(), QAbstractItemView::NoEditTriggers);
        QCOMPARE(live.mode(), state);
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live.written(), QString());
        live.save();
        const QString written = live.written();
        QVERIFY2(written.contains("caption='Бюро'"), qPrintable(written));
    }

    void cancellingWithTheEditorOpenKeepsTheOldName() {
        Editing live(NewDesck,
                     [](TestStore& store) { addDesck(store, "armb", "ceh", "Б стол", false); });
        if (!live.nameEditor())
            live.desckView()->edit(live.desckView()->currentIndex());
        live.typeName("Бюро");
        live.cancel();
        QCOMPARE(live->desck("armb").data(), QVariant("Б стол"));
        QVERIFY(!live.desckText().contains("Бюро"));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!live.nameEditor());
    }
};

QTEST_MAIN(TestMenuEditing)
#include "tst_menu_editing.moc"
