// What the menu editor does so that nothing typed is lost and nothing is hit that nobody meant.
#include "tests/menu/LiveProbe.h"
#include "tests/menu/Outage.h"

#include <QClipboard>
#include <QMimeData>

using namespace orvo::test;
using orvo::menu::DesckColumn;
using orvo::menu::MenuColumn;

namespace {

struct Guarded : Live {
    using Live::Live;

    QString written() { return host.writes().take(); }
    void save() { press(editor->m_btnSave); }
    /// Of the desktop that gets a new name.
    void typeName(const QString& text) {
        auto* line =
            qobject_cast<QLineEdit*>(desckView()->indexWidget(desckView()->currentIndex()));
        if (!line)
            qFatal("no editor on the desktop");
        line->selectAll();
        typeText(line, text);
    }
    void select(const char* element) {
        menuView()->selectionModel()->setCurrentIndex(editor->element(element),
                                                      QItemSelectionModel::ClearAndSelect |
                                                          QItemSelectionModel::Rows);
    }
    QString selected() {
        QStringList keys;
        for (const QModelIndex& row : menuView()->selectionModel()->selectedRows())
            keys << editor->m_menuModel->getItemKeyLink(row);
        return keys.join(' ');
    }
    QString box() const { return boxStands(*editor.module) ? boxText(*editor.module) : QString(); }
    QString parentOf(const char* element) {
        return editor->m_menuModel->getItemKeyLink(editor->element(element).parent());
    }
    CPopObjectList* openPicker() {
        editor->on_actNewElemModul_triggered();
        return editor->m_popList;
    }
    void pressOk() {
        QTest::mouseClick(editor->m_popList->findChild<QPushButton*>("btnOK"), Qt::LeftButton);
    }
};

/// Modules in a folder below the top one.
void addModules(TestStore& store) {
    store.insert("MenuResourceFolder",
                 {{"KeyLink", QString("mod")}, {"type_", 1}, {"caption", QString("модули")}});
    store.insert("MenuResourceFolder", {{"KeyLink", QString("inner")},
                                        {"ParentKey", QString("mod")},
                                        {"type_", 1},
                                        {"caption", QString("Насосы")}});
}

void addEqualOrders(TestStore& store) {
    addElement(store, "armpech", "a", "", "А", 0, "rtrend");
    addElement(store, "armpech", "b", "", "Б", 0, "rtrend");
    addElement(store, "armpech", "c", "", "В", 0, "rtrend");
}

} // namespace

class TestMenuGuards : public QObject {
    Q_OBJECT
private slots:
    void init() { QGuiApplication::clipboard()->clear(); }

    // Typed values
    // Typed values

    void anElementIsEditedWhileADesktopIsNew_data() {
        QTest::addColumn<bool>("isNew");
        dataRow("new", true);
        dataRow("renamed", false);
    }

    void anElementIsEditedWhileADesktopIsNew() {
        QFETCH(bool, isNew);
        Guarded live;
        live.makeCurrent("calc");
        if (isNew)
            live->on_actAddDescktop_triggered();
        else
            live->on_actChangeDescktopOrFolder_triggered();
        if (!isNew)
            live.typeName("Бюро");
        live.type("name", "Иное");
        QCOMPARE(live.mode(), int32_t(MenuProbe::EditElement));
        const QString desck = live.written();
        QVERIFY2(isNew
                     ? desck.startsWith("MenuFolder\n  +#1") && desck.contains("новый рабочий стол")
                     : desck == "MenuFolder\n  ~armop caption='Бюро'\n",
                 qPrintable(desck));
        QVERIFY(live.buttonsEnabled());
        live.save();
        QVERIFY(live.written().contains("caption='Иное'"));
    }

    void whatCannotBeKeptIsNotTaken() {
        Guarded live;
        live.makeCurrent("calc");
        live.type("name", "Иное");
        {
            const StructureOutage outage;
            live.makeCurrent("shema");
            QCOMPARE(live.mode(), int32_t(MenuProbe::EditElement));
            QCOMPARE(live.passport("name"), QVariant());
            live->on_editor_valueChanged("name", "Ещё");
            QCOMPARE(live.cell("shema", MenuColumn::Caption), QVariant("Схема"));
            QCOMPARE(live.passport("name"), QVariant("Схема"));
        }
        // As soon as the first edit can be saved, the next one opens.
        live->on_editor_valueChanged("name", "Ещё");
        QVERIFY(live.written().contains("~calc"));
        live.save();
        const QString written = live.written();
        QVERIFY2(written.contains("~shema") && written.contains("caption='Ещё'"),
                 qPrintable(written));
    }

    void aTypedDesktopNameOutlivesAWriteOfItsRecord() {
        Guarded live;
        live->on_actChangeDescktopOrFolder_triggered();
        live.typeName("Бюро");
        live.store.update("MenuFolder",
                          {{"KeyLink", QString("armop")}, {"order_", QString("2000")}});
        live.deliver();
        QCOMPARE(live->desck("armop").data(), QVariant("Бюро"));
        if (live.mode() != MenuProbe::NoEdit)
            live.save();
        QCOMPARE(live.written(), QString("MenuFolder\n  ~armop caption='Бюро'\n"));
    }

    void aTypedDesktopNameGivesWayToAnotherWithAWord() {
        Guarded live;
        live->on_actChangeDescktopOrFolder_triggered();
        live.typeName("Бюро");
        live.store.update("MenuFolder",
                          {{"KeyLink", QString("armop")}, {"caption", QString("Чужое")}});
        live.deliver();
        QCOMPARE(live->desck("armop").data(), QVariant("Чужое"));
        QCOMPARE(live.host.logLines.size(), 1);
        QCOMPARE(live.host.logLines.first().text,
                 QString("рабочий стол «Чужое»: «Имя» изменено другим, набранное «Бюро» не "
                         "сохранено"));
    }

    void whatIsTypedAfterTheSaveOfAFolderOutlivesItsEcho() {
        Guarded live;
        live.makeCurrent("grafiki");
        live->on_actNewElemFolder_triggered();
        live.save();
        live.written();
        live.type("name", "Насосы");
        live.deliver();
        const QModelIndex row = live.menuView()->currentIndex().siblingAtColumn(0);
        QCOMPARE(row.data(), QVariant("Насосы"));
        QCOMPARE(live.passport("name"), QVariant("Насосы"));
        QCOMPARE(live.mode(), int32_t(MenuProbe::EditElement));
        live.save();
        const QString written = live.written();
        QVERIFY2(written.startsWith("Menu\n  ~") && written.contains("caption='Насосы'"),
                 qPrintable(written));
    }

    void aSavedFolderIsNotSavedInPlaceOfTheNext() {
        Guarded live;
        live.makeCurrent("grafiki");
        live->on_actNewElemFolder_triggered();
        const QPersistentModelIndex first = live.menuView()->currentIndex();
        live.save();
        live.makeCurrent("grafiki");
        live->on_actNewElemFolder_triggered();
        const QString second = live.currentElement();
        live.written();
        clickRow(live.menuView(), first);
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QCOMPARE(live.written().count("\n  "), 1);
        live.makeCurrent("shema");
        live.deliver();
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.host.failures, QStringList());
        QVERIFY(orvo::seekKey(live->m_tabMenu, second));
    }

    void aSavedDesktopIsNotSavedInPlaceOfTheNext() {
        Guarded live;
        live->on_actAddDescktop_triggered();
        const QPersistentModelIndex first = live.desckView()->currentIndex();
        live.save();
        live->on_actAddDescktop_triggered();
        const QString second = live.currentDesck();
        live.written();
        clickRow(live.desckView(), first);
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QCOMPARE(live.written().count("\n  "), 1);
        live.deliver();
        QCOMPARE(live.host.failures, QStringList());
        QVERIFY(orvo::seekKey(live->m_tabFolder, second));
    }

    void theTopRowTakesNoValues() {
        Guarded live;
        live.makeCurrent("MenuRootNode");
        QVERIFY(live.lineOf("name")->isReadOnly());
        live->on_editor_valueChanged("name", "Иное");
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.passport("name"), QVariant("Меню"));
        QCOMPARE(live.cell("MenuRootNode", MenuColumn::Caption), QVariant("Меню"));
    }

    void nothingIsChosenForTheTopRow() {
        Guarded live;
        live.makeCurrent("MenuRootNode");
        live->on_passp_buttonpressed("icon");
        QVERIFY(!live->m_popList || !live->m_popList->isVisible());
        QVERIFY(boxStands(*live.editor.module));
        QVERIFY2(boxText(*live.editor.module).contains("не элемент меню"),
                 qPrintable(boxText(*live.editor.module)));
    }

    void arrowKeysPassTheFlagsOfAPassport() {
        Guarded live;
        live.makeCurrent("calc");
        QTreeView* view = live.propView();
        view->setFocus();
        const auto cell = [&](const char* row) {
            return live->m_propModel->findIndexByKey(row).siblingAtColumn(1);
        };
        view->setCurrentIndex(cell("params"));
        for (int i = 0; i < 3; ++i)
            QTest::keyClick(view, Qt::Key_Down);
        QCOMPARE(view->currentIndex(), cell("separator"));
        for (int i = 0; i < 3; ++i)
            QTest::keyClick(view, Qt::Key_Up);
        QCOMPARE(view->currentIndex(), cell("params"));
        QVERIFY(view->indexWidget(cell("params")));
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QCOMPARE(live.passport("onecopy"), QVariant(false));
        QCOMPARE(live.passport("separator"), QVariant(false));
    }

    // Where things go
    // Where things go

    void aFullFolderOfDesktopsStaysWhateverIsShown() {
        Guarded live;
        live.desckView()->setCurrentIndex(live->desck("sklad"));
        // Not delivered yet.
        addDesck(live.store, "novy", "sklad", "Новый", false);
        live->on_actDeleteFromtvDesck_triggered();
        QCOMPARE(live.written(), QString());
        QVERIFY2(live.box().contains("Склад"), qPrintable(live.box()));
        live.store.remove("MenuFolder", "novy");
        live->on_actDeleteFromtvDesck_triggered();
        QCOMPARE(live.written(), QString("MenuFolder\n  -sklad\n"));
    }

    void aPasteOnAnElementGoesIntoItsFolder() {
        Guarded live;
        live.select("shema");
        live->on_actCutMenuElement_triggered();
        live.makeCurrent("calc");
        live->on_actPasteMenuElement_triggered();
        const QString written = live.written();
        QVERIFY2(written.contains("parent='grafiki'"), qPrintable(written));
        live.deliver();
        QVERIFY(!live->element("shema").isValid());
        QCOMPARE(live->m_menuModel->rowCount(live->element("grafiki")), 4);
    }

    void aPasteGoesIntoTheMenuThatIsShown() {
        Guarded live;
        live.select("shema");
        live->on_actCutMenuElement_triggered();
        live.makeCurrent("grafiki");
        live->on_actNewElemFolder_triggered();
        // The menu stays as it is while the new folder is open.
        live.desckView()->setCurrentIndex(live->desck("armpech"));
        live.save();
        live.written();
        live->on_actPasteMenuElement_triggered();
        const QString written = live.written();
        QVERIFY2(written.contains("FolderKey='armop'") && !written.contains("armpech"),
                 qPrintable(written));
    }

    void aCutIsRefusedInsideItself() {
        Guarded live;
        live.select("grafiki");
        live->on_actCutMenuElement_triggered();
        live.makeCurrent("form");
        live->on_actPasteMenuElement_triggered();
        QCOMPARE(live.written(), QString());
        QVERIFY2(live.box().contains("Графики"), qPrintable(live.box()));
        QVERIFY(live->element("grafiki").isValid());
    }

    void aCutIsRefusedBelowAFolderMadeSince() {
        Guarded live;
        live.select("grafiki");
        live->on_actCutMenuElement_triggered();
        addElement(live.store, "armop", "pozzhe", "glubzhe", "Позже", 5000);
        live.deliver();
        live.makeCurrent("pozzhe");
        live->on_actPasteMenuElement_triggered();
        QCOMPARE(live.written(), QString());
        QVERIFY(!live.box().isEmpty());
    }

    void aCutOutlivesAnotherEditor() {
        Guarded live;
        EditorUnderTest<LiveProbe> other(live.host, "Menu");
        QVERIFY(other.start());
        live.select("shema");
        live->on_actCutMenuElement_triggered();
        QCoreApplication::processEvents();
        // The other one has taken it off the clipboard.
        const QMimeData* offered = QGuiApplication::clipboard()->mimeData();
        QVERIFY(!offered || offered->formats().isEmpty());
        live.makeCurrent("grafiki");
        QVERIFY(live.editor.action("actPasteMenuElement")->isEnabled());
        live->on_actPasteMenuElement_triggered();
        QVERIFY(live.written().contains("-shema"));
        other->on_actPasteMenuElement_triggered();
        QCOMPARE(live.written(), QString());
    }

    void aCutEndsWithTheNextThingOffered() {
        Guarded live;
        live.select("shema");
        live->on_actCutMenuElement_triggered();
        QGuiApplication::clipboard()->setText("слово");
        QCoreApplication::processEvents();
        QGuiApplication::clipboard()->clear();
        QCoreApplication::processEvents();
        live.makeCurrent("grafiki");
        live->on_actPasteMenuElement_triggered();
        QCOMPARE(live.written(), QString());
    }

    void aFolderOfThePickerIsNoElement() {
        Guarded live(addModules);
        live.makeCurrent("grafiki");
        CPopObjectList* list = live.openPicker();
        list->tvObj()->setCurrentIndex(list->treeModel->findIndexByKey("inner"));
        live.pressOk();
        QCOMPARE(live.written(), QString());
        QVERIFY2(live.box().contains("Насосы"), qPrintable(live.box()));
    }

    void aNewFolderOfResourcesIsInThePicker() {
        Guarded live(addModules);
        live.store.insert("MenuResourceFolder", {{"KeyLink", QString("krany")},
                                                 {"ParentKey", QString("mod")},
                                                 {"type_", 1},
                                                 {"caption", QString("Краны")}});
        live.store.insert("MenuResource", {{"KeyLink", QString("rkran")},
                                           {"MenuResourceFolderKey", QString("krany")},
                                           {"type_", 1},
                                           {"name_", QString("Kran")}});
        live.deliver();
        CPopObjectList* list = live.openPicker();
        QVERIFY(list->treeModel->findIndexByKey("rkran").isValid());
        list->hide();
        live.store.update("MenuResourceFolder",
                          {{"KeyLink", QString("krany")}, {"caption", QString("Задвижки")}});
        live.store.remove("MenuResourceFolder", "inner");
        live.deliver();
        list = live.openPicker();
        QCOMPARE(list->treeModel->findIndexByKey("krany").data(), QVariant("Задвижки"));
        QVERIFY(!list->treeModel->findIndexByKey("inner").isValid());
    }

    void theQuestionNamesTheHighlightedRow() {
        Guarded live;
        live.select("trend");
        clickRow(live.menuView(), live->element("shema"), Qt::ControlModifier);
        QCOMPARE(live.selected(), QString("trend"));
        QCOMPARE(live.currentElement(), QString("trend"));
        QCOMPARE(live.passport("name"), QVariant("Тренд"));
        clickRow(live.menuView(), live->element("calc"), Qt::ControlModifier);
        QCOMPARE(live.selected(), QString("trend calc"));
        live->on_actDeleteElem_triggered();
        QVERIFY2(live.box().contains("Расчёт"), qPrintable(live.box()));
        QCOMPARE(live.selected(), QString("calc"));
        answerBox(*live.editor.module, YesRole);
        QCOMPARE(live.written(), QString("Menu\n  -calc\n"));
    }

    // Rows follow their records
    // Rows follow their records

    void aRenamedFolderOfDesktopsKeepsItsContents() {
        Guarded live;
        QCOMPARE(live.below(live->desck("mainnode")), QString("sklad ceh obshiy"));
        live.store.update("MenuFolder",
                          {{"KeyLink", QString("ceh")}, {"caption", QString("Архив")}});
        live.deliver();
        QCOMPARE(live.below(live->desck("mainnode")), QString("ceh sklad obshiy"));
        QCOMPARE(live.below(live->desck("ceh")), QString("pech armop"));
        QCOMPARE(live.below(live->desck("pech")), QString("armpech"));
        QVERIFY(live.desckView()->isExpanded(live->desck("ceh")));
    }

    void elementsThatWaitedForAFolderComeToIt() {
        Guarded live;
        live.store.update("Menu", {{"KeyLink", QString("calc")}, {"parent", QString("novaya")}});
        live.store.update("Menu", {{"KeyLink", QString("glubzhe")}, {"parent", QString("novaya")}});
        addElement(live.store, "armop", "rano", "novaya", "Рано", 5000, "rtrend");
        live.deliver();
        QCOMPARE(live.parentOf("calc"), QString("grafiki"));
        addElement(live.store, "armop", "novaya", "", "Новая", 5000);
        live.deliver();
        QCOMPARE(live.below(live->element("novaya")), QString("calc glubzhe rano"));
        QCOMPARE(live.below(live->element("glubzhe")), QString("form"));
        QCOMPARE(live.below(live->element("grafiki")), QString("trend"));
    }

    void anElementThatWaitsForItsFolderIsSavedThere() {
        Guarded live;
        live.store.update("Menu", {{"KeyLink", QString("shema")}, {"parent", QString("novaya")}});
        live.deliver();
        live.makeCurrent("shema");
        live.type("name", "Иное");
        live.save();
        const QString written = live.written();
        QVERIFY2(written.contains("parent='novaya'"), qPrintable(written));
    }

    void theCurrentElementStaysCurrentWhenOthersMoveIt() {
        Guarded live;
        for (const char* element : {"calc", "form"}) {
            live.select(element);
            live.store.update(
                "Menu", {{"KeyLink", QString(element == QString("calc") ? "calc" : "glubzhe")},
                         {"parent", QString()}});
            live.deliver();
            QCOMPARE(live.currentElement(), QString(element));
            QCOMPARE(live.selected(), QString(element));
            QCOMPARE(live->m_currentMenuKey, QString(element));
        }
        QCOMPARE(live.parentOf("calc"), QString("MenuRootNode"));
        QCOMPARE(live.passport("name"), QVariant("Котёл"));
    }

    void anEditStaysOpenWhenOthersMoveItsElement() {
        Guarded live;
        live.makeCurrent("calc");
        live.type("name", "Иное");
        live.store.update("Menu", {{"KeyLink", QString("calc")}, {"parent", QString()}});
        live.deliver();
        QCOMPARE(live.mode(), int32_t(MenuProbe::EditElement));
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.passport("name"), QVariant("Иное"));
        QCOMPARE(live.currentElement(), QString("calc"));
        live.save();
        const QString written = live.written();
        QVERIFY2(written.contains("caption='Иное'") && written.contains("parent=NULL"),
                 qPrintable(written));
    }

    void rowsOfEqualOrderMove() {
        Guarded live(addEqualOrders);
        live.openDesck("armpech");
        live.makeCurrent("c");
        live->on_actMoveUp_triggered();
        live.deliver();
        QCOMPARE(live.below(live->element("MenuRootNode")), QString("a c b"));
        live->on_actMoveUp_triggered();
        live.deliver();
        QCOMPARE(live.below(live->element("MenuRootNode")), QString("c a b"));
        live->on_actMoveDown_triggered();
        live.deliver();
        QCOMPARE(live.below(live->element("MenuRootNode")), QString("a c b"));
        QCOMPARE(live.currentElement(), QString("c"));
    }

    void rowsOfEqualOrderAreDropped() {
        Guarded live(addEqualOrders);
        live.openDesck("armpech");
        live->on_menu_dragdrop(live->element("MenuRootNode"), {"c"}, 1);
        live.deliver();
        QCOMPARE(live.below(live->element("MenuRootNode")), QString("a c b"));
        live->on_menu_dragdrop(live->element("MenuRootNode"), {"a"}, 3);
        live.deliver();
        QCOMPARE(live.below(live->element("MenuRootNode")), QString("c b a"));
    }

    void aRefusedDropDoesNotEndALaterEdit() {
        Guarded live;
        live.host.writes().refusedTable = "Menu";
        live->on_menu_dragdrop(live->element("grafiki"), {"shema"}, -1);
        live.host.writes().refusedTable.clear();
        live.makeCurrent("calc");
        live.type("name", "Иное");
        addDesck(live.store, "novy", "sklad", "Новый", false, "3000");
        live.store.update("Menu", {{"KeyLink", QString("propal")}, {"order_", 3000}});
        live.written();
        live->MessageOn();
        QCOMPARE(live.currentElement(), QString("calc"));
        QCOMPARE(live.mode(), int32_t(MenuProbe::EditElement));
        QCOMPARE(live.written(), QString());
    }
};

QTEST_MAIN(TestMenuGuards)
#include "tst_menu_guards.moc"
