// New elements of a menu, and the rows of the passport that are picked.
#include "tests/menu/LiveProbe.h"
#include "tests/menu/Outage.h"

#include "models/MyButtonEdit.h"

#include <limits>

using namespace orvo::test;
using orvo::menu::MenuColumn;

namespace {

void put(TestStore& store, const char* key, int type, const char* folder, const char* name,
         const char* caption, const char* icon = nullptr) {
    store.insert("MenuResource", {{"KeyLink", QString(key)},
                                  {"type_", type},
                                  {"MenuResourceFolderKey", QString(folder)},
                                  {"name_", QString(name)},
                                  {"caption", QString(caption)},
                                  {"ico", icon ? QString(icon) : QString()}});
}

/// Two entries of each kind in the folder of its kind.
void catalogue(TestStore& store) {
    const auto folder = [&](const char* key, int type, const char* caption) {
        store.insert("MenuResourceFolder",
                     {{"KeyLink", QString(key)}, {"type_", type}, {"caption", QString(caption)}});
    };
    folder("fmod", 1, "модули");
    folder("ffun", 2, "функции");
    folder("ffrm", 3, "формы отображения");
    folder("fico", 4, "icons");
    store.insert("MenuResourceFolder", {{"KeyLink", QString("fsub")},
                                        {"type_", 1},
                                        {"ParentKey", QString("fmod")},
                                        {"caption", QString("Подпапка")}});
    put(store, "m1", 1, "fmod", "Archive", "Архив", "arch.png");
    put(store, "m2", 1, "fmod", "Events", "События");
    put(store, "m3", 1, "fsub", "Inner", "Внутри");
    put(store, "f1", 2, "ffun", "Sum", "Сумма");
    put(store, "f2", 2, "ffun", "Zero", "Ноль");
    put(store, "r1", 3, "ffrm", "Kotel", "Котёл 1");
    put(store, "r2", 3, "ffrm", "Valve", "Клапан");
    put(store, "i1", 4, "fico", "pump.png", "");
    put(store, "i2", 4, "fico", "tank.png", "");
}

struct Creating : Live {
    Creating() : Live(catalogue) {}

    CPopObjectList* list() { return editor->m_popList; }
    QTreeView* tree() { return list()->tvObj(); }
    QString listed() {
        return treetext::print(*list()->treeModel, 4).remove(QRegularExpression(" #\\w+"));
    }
    void choose(std::initializer_list<const char*> names) {
        tree()->expandAll();
        Qt::KeyboardModifiers modifiers = Qt::NoModifier;
        for (const char* name : names) {
            clickRow(tree(), findRow(*list()->treeModel, QString(name)), modifiers);
            modifiers = Qt::ControlModifier;
        }
    }
    void ok() { QTest::mouseClick(list()->findChild<QPushButton*>("btnOK"), Qt::LeftButton); }
    QString written() { return host.writes().take(); }
    /// Presses the "..." of a passport row.
    void pressDots(const char* row) {
        auto* edit = qobject_cast<MyButtonEdit*>(lineOf(row));
        QVERIFY(edit);
        QTest::mouseClick(edit->button(), Qt::LeftButton);
    }
};

} // namespace

class TestMenuCreating : public QObject {
    Q_OBJECT
private slots:
    // Elements that are picked
    // Elements that are picked

    void eachActionListsItsKind_data() {
        QTest::addColumn<QString>("action");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("tree");
        dataRow("module", "actNewElemModul", 1, "Подпапка\n  Inner\nArchive\nEvents\n");
        dataRow("function", "actNewElemFunction", 2, "Sum\nZero\n");
        dataRow("form", "actNewElemFile", 3, "Kotel\nValve\n");
    }

    void eachActionListsItsKind() {
        QFETCH(QString, action);
        QFETCH(int, kind);
        QFETCH(QString, tree);
        Creating live;
        live.makeCurrent("grafiki");
        live.editor.action(action.toLatin1())->trigger();
        QVERIFY(live.list()->isVisible());
        QCOMPARE(live.list()->objectType, kind);
        QVERIFY(live.list()->multipleChoice);
        QVERIFY(live.list()->chosenName.isNull());
        QCOMPARE(live.listed(), tree);
        QCOMPARE(live.tree()->selectionMode(), QAbstractItemView::ExtendedSelection);
        QVERIFY(!live.tree()->selectionModel()->hasSelection());
        QCOMPARE(live.list()->windowTitle(), QString("Выбор ресурса"));
    }

    void showingThePickerIsNoEdit() {
        Creating live;
        live.makeCurrent("grafiki");
        live->on_actNewElemModul_triggered();
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QVERIFY(!live.buttonsEnabled());
        QCOMPARE(live.written(), QString());
        QTest::mouseClick(live.list()->findChild<QPushButton*>("btnCancel"), Qt::LeftButton);
        QVERIFY(!live.list()->isVisible());
        QCOMPARE(live.written(), QString());
    }

    void thePickerIsMadeOnce() {
        Creating live;
        QVERIFY(!live.list());
        live.makeCurrent("calc");
        live->on_passp_buttonpressed("icon");
        CPopObjectList* first = live.list();
        QVERIFY(first->m_popup);
        QCOMPARE(first->parent(), static_cast<QObject*>(live.editor.module.get()));
        live->on_actNewElemModul_triggered();
        live->on_passp_buttonpressed("object");
        QCOMPARE(live.list(), first);
        // One connection: one OK is one call.
        live.makeCurrent("grafiki");
        live->on_actNewElemFunction_triggered();
        live.choose({"Sum"});
        live.ok();
        QCOMPARE(live.host.writes().calls.size(), 1);
    }

    void severalChosenResourcesGoOutInOneCall() {
        Creating live;
        const QString tree = live.menuText();
        live.makeCurrent("grafiki");
        live->on_actNewElemModul_triggered();
        live.choose({"Archive", "Events", "Inner"});
        live.ok();
        QVERIFY(!live.list()->isVisible());
        QStringList lines = live.written().split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.takeFirst(), QString("Menu"));
        QCOMPARE(lines.size(), 3);
        for (int i = 0; i < lines.size(); ++i) {
            QVERIFY2(lines[i].startsWith("  +#"), qPrintable(lines[i]));
            QVERIFY2(lines[i].contains(QString("order_=%1").arg(3000 + 1000 * i)),
                     qPrintable(lines[i]));
            for (const char* same :
                 {"parent='grafiki'", "FolderKey='armop'", "separator=false", "oneCopy=false"})
                QVERIFY2(lines[i].contains(same), qPrintable(lines[i]));
            QVERIFY(!lines[i].contains("params="));
        }
        const QString all = lines.join('\n');
        // The caption of the resource and not its name; the icon only where there is one.
        QCOMPARE(lines.filter("MenuResourceKey='m1'")
                     .filter("caption='Архив'")
                     .filter("ico='arch.png'")
                     .size(),
                 1);
        QCOMPARE(lines.filter("MenuResourceKey='m2'").filter("caption='События'").size(), 1);
        QCOMPARE(lines.filter("MenuResourceKey='m3'").filter("caption='Внутри'").size(), 1);
        QCOMPARE(all.count("ico="), 1);
        QCOMPARE(live.menuText(), tree);
        // What the change log of the store tells every client.
        live.deliver();
        const QModelIndex folder = live->element("grafiki");
        QCOMPARE(live->m_menuModel->rowCount(folder), 6);
        QList<QVariant> orders;
        for (int row = 0; row < 6; ++row)
            orders << live->m_menuModel->index(row, MenuColumn::Order, folder).data();
        QCOMPARE(orders, (QList<QVariant>{0, 1000, 2000, 3000, 4000, 5000}));
    }

    void theLastElementToArriveIsSelected() {
        Creating live;
        live.makeCurrent("grafiki");
        live->on_actNewElemFunction_triggered();
        live.choose({"Sum", "Zero"});
        live.ok();
        live.deliver();
        const QModelIndex folder = live->element("grafiki");
        const QModelIndex last =
            live->m_menuModel->index(live->m_menuModel->rowCount(folder) - 1, 0, folder);
        QCOMPARE(live.menuView()->currentIndex(), last);
        QCOMPARE(last.siblingAtColumn(MenuColumn::Type).data(), QVariant("функция"));
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
    }

    void theFirstElementOfAFolderHasOrderZero() {
        Creating live;
        live.store.remove("Menu", "form");
        live.deliver();
        live.makeCurrent("glubzhe");
        live->on_actNewElemFile_triggered();
        live.choose({"Kotel", "Valve"});
        live.ok();
        const QString written = live.written();
        QVERIFY2(written.contains("order_=0 ") || written.contains("order_=0\n"),
                 qPrintable(written));
        QVERIFY2(written.contains("order_=1000"), qPrintable(written));
    }

    void ordersEndAtTheLastNumber() {
        constexpr int last = std::numeric_limits<int>::max();
        Creating live;
        live.store.update("Menu", {{"KeyLink", QString("form")}, {"order_", last - 1500}});
        live.deliver();
        live.makeCurrent("glubzhe");
        live->on_actNewElemModul_triggered();
        live.choose({"Archive", "Events", "Inner"});
        live.ok();
        const QString written = live.written();
        QCOMPARE(written.count(QString("order_=%1 ").arg(last - 500)), 1);
        QCOMPARE(written.count(QString("order_=%1 ").arg(last)), 2);
        live.deliver();
        live.makeCurrent("glubzhe");
        live->on_actNewElemFolder_triggered();
        QCOMPARE(live.menuView()->currentIndex().siblingAtColumn(MenuColumn::Order).data(),
                 QVariant(last));
    }

    void anElementAtTheTopHasEmptyTextAsParent() {
        Creating live;
        live.makeCurrent("MenuRootNode");
        live->on_actNewElemFunction_triggered();
        live.choose({"Sum"});
        live.ok();
        const QString written = live.written();
        QVERIFY2(written.contains("parent=''"), qPrintable(written));
        QVERIFY2(written.contains("FolderKey='armop'"), qPrintable(written));
        QVERIFY2(written.contains("order_=3000"), qPrintable(written));
        live.deliver();
        QCOMPARE(live->m_menuModel->rowCount(live->element("MenuRootNode")), 4);
        QCOMPARE(live.menuView()->currentIndex().data(), QVariant("Сумма"));
    }

    void aResourceThatIsGoneStillMakesAnElement() {
        Creating live;
        live.makeCurrent("grafiki");
        live->on_actNewElemModul_triggered();
        live->m_tabResource.RecDel(orvo::seekKey(live->m_tabResource, "m1"));
        live.choose({"Archive"});
        live.ok();
        const QString written = live.written();
        QVERIFY2(written.contains("MenuResourceKey='m1'"), qPrintable(written));
        QVERIFY2(!written.contains("ico="), qPrintable(written));
    }

    // Only where there is none the field is left out.
    void aResourceWithAnEmptyIconGivesAnEmptyIcon() {
        Creating live;
        live.makeCurrent("grafiki");
        MDRData* record = live->m_tabResource.RecEdit(orvo::seekKey(live->m_tabResource, "m1"));
        live->m_tabResource.SetValF(record, "ico", orvo::textVar(QByteArray("")));
        live->m_tabResource.RecPost(record);
        live->on_actNewElemModul_triggered();
        live.choose({"Archive", "Events"});
        live.ok();
        const QString written = live.written();
        QCOMPARE(written.count("ico="), 1);
        QVERIFY2(written.contains("ico=''"), qPrintable(written));
    }

    void aFolderOfTheCatalogueIsNoElement() {
        Creating live;
        live.makeCurrent("grafiki");
        live->on_actNewElemModul_triggered();
        live.choose({"Подпапка", "Archive"});
        live.ok();
        const QString written = live.written();
        QVERIFY2(written.count("\n  ") == 1 && written.contains("MenuResourceKey='m1'"),
                 qPrintable(written));
    }

    void withoutASelectionNothingIsSent() {
        Creating live;
        live.makeCurrent("grafiki");
        live->on_actNewElemModul_triggered();
        live.ok();
        QVERIFY(!live.list()->isVisible());
        live->on_poplist_OK_Pressed();
        QCOMPARE(live.written(), QString());
    }

    void withoutATargetNothingIsSent() {
        Creating live;
        live.makeCurrent("grafiki");
        live->on_actNewElemModul_triggered();
        live.choose({"Archive"});
        live->m_currentMenuKey = "gone";
        live.ok();
        QCOMPARE(live.written(), QString());
        // Without any menu in the window there is no row either.
        live.openDesck("ceh");
        live->on_actNewElemModul_triggered();
        live.choose({"Archive"});
        live.ok();
        QCOMPARE(live.written(), QString());
    }

    void withoutAStructureNothingIsSent() {
        Creating live;
        live.makeCurrent("grafiki");
        live->on_actNewElemModul_triggered();
        live.choose({"Archive"});
        {
            const StructureOutage outage;
            live.ok();
        }
        QVERIFY(!live.list()->isVisible());
        QCOMPARE(live.written(), QString());
    }

    void aRefusedWriteShowsNothing() {
        Creating live;
        const QString tree = live.menuText();
        live.makeCurrent("grafiki");
        live.host.writes().refusedTable = "Menu";
        live->on_actNewElemModul_triggered();
        live.choose({"Archive"});
        live.ok();
        live.deliver();
        QCOMPARE(live.menuText(), tree);
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QCOMPARE(live.host.failures.size(), 1);
    }

    void onlyModulesFunctionsAndFormsBecomeElements() {
        Creating live;
        live.makeCurrent("grafiki");
        live->on_actNewElemModul_triggered();
        live.choose({"Archive"});
        for (const int kind : {0, 4, 5, -1}) {
            live.list()->objectType = kind;
            live->on_poplist_OK_Pressed();
        }
        QCOMPARE(live.written(), QString());
    }

    void theTitleStaysWhatTheLastRowSet() {
        Creating live;
        live.makeCurrent("calc");
        live->on_passp_buttonpressed("object");
        QCOMPARE(live.list()->windowTitle(), QString("Выбор функций АРМ"));
        live.makeCurrent("grafiki");
        live->on_actNewElemModul_triggered();
        QCOMPARE(live.list()->windowTitle(), QString("Выбор функций АРМ"));
        QCOMPARE(live.listed(), QString("Подпапка\n  Inner\nArchive\nEvents\n"));
    }

    // New folders
    // New folders

    void aNewFolderStandsInTheTreeAtOnce() {
        Creating live;
        live.makeCurrent("grafiki");
        QVERIFY(live.editor.action("actNewElemFolder")->isEnabled());
        live.editor.action("actNewElemFolder")->trigger();
        const QModelIndex row = live.menuView()->currentIndex();
        QCOMPARE(row, live->m_menuModel->index(3, 0, live->element("grafiki")));
        QVariantList values;
        for (int column = 0; column < MenuColumn::Count; ++column)
            values << row.siblingAtColumn(column).data();
        const QString key = values[MenuColumn::KeyLink].toString();
        QVERIFY(QRegularExpression("^[0-9A-Fa-f]{32}$").match(key).hasMatch());
        QCOMPARE(values,
                 QVariantList({"Новая папка", "папка", QVariant(), "armop", QVariant(), key,
                               QVariant(), false, 3000, QVariant(), "grafiki", false, true}));
        QCOMPARE(live.mode(), int32_t(MenuProbe::NewElement));
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(QModelIndex(live->m_editMenuIndex), row);
        QVERIFY(live.menuView()->selectionModel()->isSelected(row));
        QCOMPARE(live.passport("name"), QVariant("Новая папка"));
        QVERIFY(!live.passport("keylink").isValid());
        QVERIFY(!live.editor.action("actNewElemFolder")->isEnabled());
        QVERIFY(!live.editor.action("actAddDescktop")->isEnabled());
        QCOMPARE(live.written(), QString());
        QVERIFY(live->m_menuModel->itemIsFolder(row));
        QCOMPARE(live.menuView()->selectionModel()->selectedRows(), QModelIndexList{row});
        QVERIFY(live.menuView()->viewport()->rect().intersects(live.menuView()->visualRect(row)));
    }

    void theFirstFolderOfAFolderHasOrderZero() {
        Creating live;
        live.store.remove("Menu", "form");
        live.deliver();
        live.makeCurrent("glubzhe");
        live->on_actNewElemFolder_triggered();
        QCOMPARE(live.menuView()->currentIndex().siblingAtColumn(MenuColumn::Order).data(),
                 QVariant(0));
        QVERIFY(live.menuView()->isExpanded(live->element("glubzhe")));
    }

    void aNewFolderAtTheTopBelongsToTheRoot() {
        Creating live;
        live.makeCurrent("MenuRootNode");
        live->on_actNewElemFolder_triggered();
        const QModelIndex row = live.menuView()->currentIndex();
        QCOMPARE(row.siblingAtColumn(MenuColumn::ParentKey).data(), QVariant("MenuRootNode"));
        QCOMPARE(row.siblingAtColumn(MenuColumn::Order).data(), QVariant(3000));
        live.press(live->m_btnSave);
        QVERIFY(!live.written().contains("MenuRootNode"));
    }

    void withoutACurrentRowNoFolderIsMade() {
        Creating live;
        live.openDesck("armpech");
        QVERIFY(!live.menuView()->currentIndex().isValid());
        live->on_actNewElemFolder_triggered();
        QCOMPARE(live.menuText(), QString("Меню #MenuRootNode\n"));
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QVERIFY(!live.buttonsEnabled());
    }

    void aNewFolderSavesAPendingEdit() {
        Creating live;
        live.makeCurrent("grafiki");
        live.type("name", "Иные");
        live->on_actNewElemFolder_triggered();
        QCOMPARE(live.mode(), int32_t(MenuProbe::NewElement));
        const QString written = live.written();
        QVERIFY2(written.startsWith("Menu\n  ~grafiki") && written.contains("caption='Иные'"),
                 qPrintable(written));
        QCOMPARE(live->m_menuModel->rowCount(live->element("grafiki")), 4);
        QVERIFY(live.buttonsEnabled());
    }

    void anEditThatCannotBeSavedIsNotLostToANewFolder() {
        Creating live;
        live.makeCurrent("grafiki");
        live.type("name", "Иные");
        {
            const StructureOutage outage;
            live->on_actNewElemFolder_triggered();
        }
        QCOMPARE(live.mode(), int32_t(MenuProbe::EditElement));
        QCOMPARE(live->m_menuModel->rowCount(live->element("grafiki")), 3);
        live.makeCurrent("shema");
        QVERIFY(live.written().contains("caption='Иные'"));
    }

    void aSavedFolderIsRewrittenInPlace() {
        Creating live;
        live.makeCurrent("grafiki");
        live->on_actNewElemFolder_triggered();
        const QString key = live.currentElement();
        live.type("name", "Своя");
        live.press(live->m_btnSave);
        live.deliver();
        const QModelIndex row = live->m_menuModel->findIndexByKey(key);
        QCOMPARE(row, live->m_menuModel->index(3, 0, live->element("grafiki")));
        QCOMPARE(row.data(), QVariant("Своя"));
        QCOMPARE(row.siblingAtColumn(MenuColumn::IsNew).data(), QVariant(false));
        QCOMPARE(live.currentElement(), key);
    }

    // Rows of the passport
    // Rows of the passport

    void theIconIsPicked() {
        Creating live;
        live.makeCurrent("calc");
        live.pressDots("icon");
        QCOMPARE(live->m_popTarget, QString("icon"));
        QCOMPARE(live.list()->windowTitle(), QString("Выбор иконок АРМ"));
        QCOMPARE(live.list()->objectType, 4);
        QCOMPARE(live.list()->sourceName, QString("icons"));
        QVERIFY(!live.list()->multipleChoice);
        QCOMPARE(live.listed(), QString("pump.png\ntank.png\n"));
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        live.choose({"tank.png"});
        live.ok();
        QCOMPARE(live.passport("icon"), QVariant("tank.png"));
        QCOMPARE(live.cell("calc", MenuColumn::Icon), QVariant("tank.png"));
        QCOMPARE(live.mode(), int32_t(MenuProbe::EditElement));
        QVERIFY(live.buttonsEnabled());
        QCOMPARE(live.written(), QString());
        // Shown again, it stands on the icon that was picked.
        live.pressDots("icon");
        const QModelIndexList chosen = live.tree()->selectionModel()->selectedRows();
        QCOMPARE(chosen.size(), 1);
        QCOMPARE(chosen.first().data(), QVariant("tank.png"));
        live.ok();
        live.press(live->m_btnSave);
        const QString written = live.written();
        QVERIFY2(written.contains("ico='tank.png'") && written.contains("MenuResourceKey='rcalc'"),
                 qPrintable(written));
        // What is looked for next is not looked for among the icons.
        live.pressDots("object");
        QVERIFY(live.list()->sourceName.isNull());
    }

    void aPickedIconOfAFolderGoesToItsPlaceholder() {
        Creating live;
        live.makeCurrent("grafiki");
        live->on_actNewElemFolder_triggered();
        live.pressDots("icon");
        live.choose({"pump.png"});
        live.ok();
        QCOMPARE(live.mode(), int32_t(MenuProbe::NewElement));
        QCOMPARE(live.menuView()->currentIndex().siblingAtColumn(MenuColumn::Icon).data(),
                 QVariant("pump.png"));
    }

    void theObjectIsPickedByItsType_data() {
        QTest::addColumn<QString>("element");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("other");
        QTest::addColumn<QString>("key");
        dataRow("module", "trend", 1, "Выбор модулей АРМ", "Archive", "m1");
        dataRow("function", "calc", 2, "Выбор функций АРМ", "Zero", "f2");
        dataRow("form", "shema", 3, "Выбор форм отображения АРМ", "Valve", "r2");
    }

    void theObjectIsPickedByItsType() {
        QFETCH(QString, element);
        QFETCH(int, kind);
        QFETCH(QString, title);
        QFETCH(QString, other);
        QFETCH(QString, key);
        Creating live;
        live.makeCurrent(element.toLatin1());
        live.pressDots("object");
        QVERIFY(live.list()->isVisible());
        QCOMPARE(live->m_popTarget, QString("object"));
        QCOMPARE(live.list()->objectType, kind);
        QCOMPARE(live.list()->windowTitle(), title);
        QCOMPARE(live.list()->chosenName, live.passport("object").toString());
        QVERIFY(live.list()->sourceName.isNull());
        QVERIFY(!live.list()->multipleChoice);
        QCOMPARE(live.tree()->selectionMode(), QAbstractItemView::SingleSelection);
        live.choose({other.toUtf8().constData()});
        live.ok();
        QCOMPARE(live.passport("object"), QVariant(other));
        QCOMPARE(live.passport("keylink"), QVariant(key));
        QCOMPARE(live.mode(), int32_t(MenuProbe::EditElement));
        QVERIFY(live.buttonsEnabled());
    }

    void anotherObjectLeavesTheKeyOfTheRecord() {
        Creating live;
        live.makeCurrent("calc");
        live.pressDots("object");
        live.choose({"Zero"});
        live.ok();
        QCOMPARE(live.cell("calc", MenuColumn::MenuResKey), QVariant("rcalc"));
        live.press(live->m_btnSave);
        const QString written = live.written();
        QVERIFY2(written.contains("MenuResourceKey='rcalc'"), qPrintable(written));
        live.deliver();
        QCOMPARE(live.passport("keylink"), QVariant("rcalc"));
        QCOMPARE(live.passport("object"), QVariant("Calc"));
    }

    void anObjectOfNoTypeShowsNothing() {
        Creating live;
        live.makeCurrent("propal");
        live.pressDots("object");
        QCOMPARE(live->m_popTarget, QString("object"));
        QVERIFY(!live.list() || !live.list()->isVisible());
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
    }

    void theSameValueIsNoEdit() {
        Creating live;
        put(live.store, "f3", 2, "ffun", "Calc", "Расчёт");
        live.deliver();
        live.makeCurrent("calc");
        live->m_propModel->setRowValue("keylink", "f3");
        live.pressDots("object");
        live.choose({"Calc"});
        live.ok();
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QVERIFY(!live.buttonsEnabled());
    }

    void otherRowsOnlyNameTheTarget() {
        Creating live;
        live.makeCurrent("calc");
        live->on_passp_buttonpressed("params");
        QCOMPARE(live->m_popTarget, QString("params"));
        QVERIFY(!live.list());
        live->on_passp_buttonpressed("icon");
        live->m_popTarget = "params";
        live.choose({"pump.png"});
        live.ok();
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QVERIFY(live.passport("icon").toString().isEmpty());
    }

    void rowNamesCompareWithoutCase() {
        Creating live;
        live.makeCurrent("calc");
        live->on_passp_buttonpressed("ICON");
        QCOMPARE(live->m_popTarget, QString("ICON"));
        live.choose({"pump.png"});
        live.ok();
        QCOMPARE(live.cell("calc", MenuColumn::Icon), QVariant("pump.png"));
        live->on_passp_buttonpressed("Object");
        live.choose({"Zero"});
        live.ok();
        QCOMPARE(live.passport("object"), QVariant("Zero"));
        live->on_passp_returnPressed("Icon");
        QVERIFY(live.cell("calc", MenuColumn::Icon).toString().isEmpty());
    }

    void returnClearsTheIcon() {
        Creating live;
        live.store.update("Menu", {{"KeyLink", QString("grafiki")}, {"ico", QString("pump.png")}});
        live.deliver();
        live.makeCurrent("grafiki");
        QCOMPARE(live.passport("icon"), QVariant("pump.png"));
        QTest::keyClick(live.lineOf("icon"), Qt::Key_Return);
        QCOMPARE(live.passport("icon"), QVariant(QString()));
        QCOMPARE(live.cell("grafiki", MenuColumn::Icon), QVariant(QString()));
        QCOMPARE(live.mode(), int32_t(MenuProbe::EditElement));
        QVERIFY(live.buttonsEnabled());
        live.press(live->m_btnSave);
        const QString written = live.written();
        QVERIFY2(written.contains("ico=''"), qPrintable(written));
    }

    void returnElsewhereClearsNothing() {
        Creating live;
        live.makeCurrent("calc");
        QTest::keyClick(live.lineOf("object"), Qt::Key_Return);
        live->on_passp_returnPressed("name");
        QCOMPARE(live.passport("object"), QVariant("Calc"));
        QCOMPARE(live.passport("name"), QVariant("Расчёт"));
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
    }

    void okWithoutAPickerDoesNothing() {
        Creating live;
        live.makeCurrent("calc");
        live->on_poplist_OK_Pressed();
        QVERIFY(!live.list());
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QCOMPARE(live.written(), QString());
    }
};

QTEST_MAIN(TestMenuCreating)
#include "tst_menu_creating.moc"
