// What notifications of deletions and inserts do.
#include "tests/menu/MenuNotificationsTest.h"

class TestMenuNotificationsMore : public QObject {
    Q_OBJECT
private slots:
    // Records may stand in the table without a row: a place counted over them is not in the tree.
    void aPlaceBehindRowsThatAreNotShownIsRefused() {
        Live live;
        addElement(live.store, "armop", "verborgen", "nosuch", "Без места", 500, "rform");
        live.deliver();
        live.store.update("Menu",
                          {{"KeyLink", QString("verborgen")}, {"parent", QString("grafiki")}});
        live.deliver();
        QCOMPARE(inTable(live->m_tabMenu, "verborgen", "parent"), QString("grafiki"));
        QVERIFY(!live->element("verborgen").isValid());
        live.makeCurrent("calc");
        QSignalSpy moves(live.menuView()->selectionModel(), &QItemSelectionModel::currentChanged);
        live.store.update("Menu", {{"KeyLink", QString("trend")}, {"order_", 9000}});
        live.deliver();
        // The row is written, and nothing else happens.
        QCOMPARE(live.below(live->element("grafiki")), QString("trend calc glubzhe"));
        QCOMPARE(live.cell("trend", MenuColumn::Order), QVariant(9000));
        QCOMPARE(moves.count(), 0);
        // A new row finds no place behind the last one either.
        addElement(live.store, "armop", "neu", "grafiki", "Новый", 20000, "rform");
        live.deliver();
        QVERIFY(!live->element("neu").isValid());
        QCOMPARE(inTable(live->m_tabMenu, "neu", "caption"), QString("Новый"));
        QCOMPARE(live.currentElement(), QString("calc"));
    }

    // What depends on the current row hears of a change twice: of the parent, and of the row again.
    void theRowIsMadeCurrentByWayOfItsParent() {
        Live live;
        const auto told = [](QTreeView* view, const std::function<void()>& change) {
            QStringList keys;
            const auto connection =
                QObject::connect(view->selectionModel(), &QItemSelectionModel::currentChanged,
                                 [&](const QModelIndex& current) {
                                     keys << current.data(orvo::KeyRole).toString();
                                 });
            change();
            QObject::disconnect(connection);
            return keys.join(' ');
        };
        live.makeCurrent("calc");
        // Another element in its place, and the own one.
        for (const char* key : {"shema", "calc"})
            QCOMPARE(told(live.menuView(),
                          [&] {
                              live.store.update("Menu", {{"KeyLink", QString(key)},
                                                         {"caption", QString("Иная")}});
                              live.deliver();
                          }),
                     QString("grafiki calc"));
        QCOMPARE(
            told(live.menuView(),
                 [&] {
                     live.store.update("Menu", {{"KeyLink", QString("shema")}, {"order_", 1500}});
                     live.deliver();
                 }),
            QString("grafiki calc"));
        // A desktop, whichever is current.
        for (const char* current : {"armop", "obshiy"}) {
            live.openDesck(current);
            QCOMPARE(told(live.desckView(),
                          [&] {
                              live.store.update("MenuFolder", {{"KeyLink", QString("armop")},
                                                               {"caption", QString("Иной")}});
                              live.deliver();
                          }),
                     QString("ceh armop"));
        }
        QCOMPARE(told(live.desckView(),
                      [&] {
                          addDesck(live.store, "neu", "pech", "Новый", false);
                          live.deliver();
                      }),
                 QString("pech neu"));
    }

    void deletingAFolderTakesItsRowsAndNotTheirRecords() {
        Live live;
        live.store.remove("MenuFolder", "pech");
        live.deliver();
        QVERIFY(!live->desck("armpech").isValid());
        QCOMPARE(inTable(live->m_tabFolder, "pech", "caption"), QString("no record"));
        QCOMPARE(inTable(live->m_tabFolder, "armpech", "caption"), QString("АРМ печи"));
        live.store.remove("Menu", "grafiki");
        live.deliver();
        QVERIFY(!live->element("form").isValid());
        QCOMPARE(inTable(live->m_tabMenu, "form", "caption"), QString("Котёл"));
        live.store.remove("Menu", "form");
        live.deliver();
        QCOMPARE(inTable(live->m_tabMenu, "form", "caption"), QString("no record"));
    }

    void deletingAnAncestorOfTheCurrentRowSelectsTheNeighbour() {
        Live live;
        live.makeCurrent("form");
        live.store.remove("Menu", "grafiki");
        live.deliver();
        QCOMPARE(live.currentElement(), QString("propal"));
        QCOMPARE(live->m_currentMenuKey, QString("propal"));
        live.openDesck("armpech");
        live.store.remove("MenuFolder", "ceh");
        live.deliver();
        QCOMPARE(live.currentDesck(), QString("obshiy"));
        QCOMPARE(live->m_currentDesckKey, QString("obshiy"));
    }

    void deletedElementsLeaveLikeDesktops() {
        Live live;
        live.makeCurrent("trend");
        live.store.remove("Menu", "trend");
        live.deliver();
        QCOMPARE(live.currentElement(), QString("calc"));
        QCOMPARE(live.passport("keylink"), QVariant("rcalc"));
        live.makeCurrent("glubzhe");
        live.store.remove("Menu", "glubzhe");
        live.deliver();
        QCOMPARE(live.currentElement(), QString("calc"));
        live.store.remove("Menu", "shema");
        live.deliver();
        QCOMPARE(live.currentElement(), QString("calc"));
        live.store.remove("Menu", "calc");
        live.deliver();
        QCOMPARE(live.currentElement(), QString("grafiki"));
        live.store.remove("Menu", "propal");
        live.store.remove("Menu", "grafiki");
        live.deliver();
        QCOMPARE(live.currentElement(), QString("MenuRootNode"));
        QCOMPARE(live.menuText(), QString("Меню #MenuRootNode\n"));
        QCOMPARE(inTable(live->m_tabMenu, "trend", "caption"), QString("no record"));
    }

    void anUnknownKeyDeletesNothing() {
        Live live([](TestStore& store) { addElement(store, "armpech", "fremd", "", "Чужой", 0); });
        const QString before = live.menuText() + live.desckText();
        for (const char* key : {"nosuch", "fremd", "MenuRootNode", "mainnode", ""}) {
            notify(*live.editor.module, {603, "Menu", key, {}});
            notify(*live.editor.module, {603, "MenuFolder", key, {}});
        }
        QCOMPARE(live.menuText() + live.desckText(), before);
        QCOMPARE(orvo::recordCount(live->m_tabMenu), 7);
    }

    // Insertions

    void anInsertedDesktopTakesItsPlaceAndTheSelection() {
        Live live(moreDesktops);
        addDesck(live.store, "neu", "ceh", "Бюро", false);
        live.deliver();
        QCOMPARE(live.below(live->desck("ceh")), QString("pech armop armb neu armv"));
        QCOMPARE(live.currentDesck(), QString("neu"));
        QCOMPARE(live->desck("neu").siblingAtColumn(DesckColumn::IsNew).data(), QVariant(false));
        QCOMPARE(live.menuText(), QString("Меню #MenuRootNode\n"));
        addDesck(live.store, "neuf", "ceh", "Ящик", true);
        live.deliver();
        QCOMPARE(live.below(live->desck("ceh")), QString("pech neuf armop armb neu armv"));
        QCOMPARE(live.currentDesck(), QString("neuf"));
    }

    void anInsertedTopRowWaitsForTheNextStart() {
        Live live;
        const QString before = live.desckText();
        addDesck(live.store, "neu", "", "Бюро", true);
        live.deliver();
        QCOMPARE(live.desckText(), before);
        QCOMPARE(live.currentDesck(), QString("armop"));
        QCOMPARE(inTable(live->m_tabFolder, "neu", "caption"), QString("Бюро"));
    }

    void anInsertedDesktopOfAnUnknownFolderEntersTheTableOnly() {
        Live live;
        const QString before = live.desckText();
        addDesck(live.store, "neu", "nosuch", "Бюро", false);
        live.deliver();
        QCOMPARE(live.desckText(), before);
        QCOMPARE(inTable(live->m_tabFolder, "neu", "caption"), QString("Бюро"));
    }

    void theOwnNewDesktopMovesToItsPlace() {
        Live live(moreDesktops);
        live->on_actAddDescktop_triggered();
        const QString key = live.currentDesck();
        live->m_desckModel->setData(live.desckView()->currentIndex(), "Бюро", Qt::EditRole);
        live.press(live->m_btnSave);
        QCOMPARE(live.below(live->desck("ceh")), "pech armop armb armv " + key);
        QCOMPARE(live->m_desckModel->findIndexByKey(key).siblingAtColumn(DesckColumn::IsNew).data(),
                 QVariant(true));
        live.deliver();
        QCOMPARE(live.below(live->desck("ceh")), "pech armop armb " + key + " armv");
        QCOMPARE(live->m_desckModel->findIndexByKey(key).siblingAtColumn(DesckColumn::IsNew).data(),
                 QVariant(false));
        QCOMPARE(live.currentDesck(), key);
    }

    void aSecondInsertionChangesNothing() {
        Live live;
        live.makeCurrent("calc");
        const QString before = live.menuText() + live.desckText();
        notify(*live.editor.module, {601, "Menu", "shema",
                                     rawRecordOf("Menu", {{"caption", QString("Иная")},
                                                          {"FolderKey", QString("armpech")}})});
        notify(*live.editor.module, {601, "MenuFolder", "armpech",
                                     rawRecordOf("MenuFolder", {{"caption", QString("Иная")}})});
        notify(*live.editor.module, {601, "MenuResource", "rcalc",
                                     rawRecordOf("MenuResource", {{"caption", QString("Иная")}})});
        QCOMPARE(live.menuText() + live.desckText(), before);
        QCOMPARE(inTable(live->m_tabMenu, "shema", "caption"), QString("Схема"));
        QCOMPARE(inTable(live->m_tabFolder, "armpech", "caption"), QString("АРМ печи"));
        QCOMPARE(inTable(live->m_tabResource, "rcalc", "caption"), QString("Calc"));
        QCOMPARE(live.currentElement(), QString("calc"));
        QCOMPARE(live.currentDesck(), QString("armop"));
    }

    void anInsertedElementTakesItsPlaceAndTheSelection() {
        Live live;
        live.menuView()->collapseAll();
        addElement(live.store, "armop", "neu", "grafiki", "Новый", 500, "rtrend");
        live.deliver();
        QCOMPARE(live.below(live->element("grafiki")), QString("trend neu calc glubzhe"));
        QCOMPARE(live.currentElement(), QString("neu"));
        QCOMPARE(live.cell("neu", MenuColumn::Command), QVariant("Trend"));
        QCOMPARE(live.cell("neu", MenuColumn::IsNew), QVariant(false));
        QCOMPARE(live.passport("name"), QVariant("Новый"));
        QVERIFY(live.menuView()->isExpanded(live->element("grafiki")));
    }

    void anInsertedElementWithoutAParentStandsAtTheTop() {
        Live live;
        addElement(live.store, "armop", "neu", "", "Новый", 1500);
        live.deliver();
        QCOMPARE(live.below(live->element("MenuRootNode")), QString("shema grafiki neu propal"));
        // Empty text in place of NULL stands there too.
        notify(*live.editor.module, {601, "Menu", "leer",
                                     rawRecordOf("Menu", {{"caption", QString("Пустой")},
                                                          {"FolderKey", QString("armop")},
                                                          {"parent", QString("")},
                                                          {"order_", 1700}})});
        QCOMPARE(live->element("leer").parent(), live->element("MenuRootNode"));
        QCOMPARE(live.currentElement(), QString("leer"));
    }

    void anInsertedElementOfAnUnknownParentEntersTheTableOnly() {
        Live live;
        live.makeCurrent("calc");
        const QString before = live.menuText();
        addElement(live.store, "armop", "neu", "nosuch", "Новый", 500, "rtrend");
        live.deliver();
        QCOMPARE(live.menuText(), before);
        QCOMPARE(inTable(live->m_tabMenu, "neu", "caption"), QString("Новый"));
        QCOMPARE(live.currentElement(), QString("calc"));
    }

    void anElementOfAnotherDesktopLeavesNoTrace() {
        Live live;
        const QString before = live.menuText();
        addElement(live.store, "armpech", "neu", "", "Новый", 500, "rtrend");
        addElement(live.store, "armpech", "neu2", "grafiki", "Новый", 500, "rtrend");
        live.deliver();
        QCOMPARE(live.menuText(), before);
        QCOMPARE(orvo::recordCount(live->m_tabMenu), 7);
        QCOMPARE(inTable(live->m_tabMenu, "neu", "caption"), QString("no record"));
        // Without a desktop in the window none belongs to it.
        live.openDesck("ceh");
        addElement(live.store, "armop", "neu3", "", "Новый", 500, "rtrend");
        live.deliver();
        QCOMPARE(inTable(live->m_tabMenu, "neu3", "caption"), QString("no record"));
    }

    void theOwnNewElementKeepsItsPlace() {
        Live live;
        live.makeCurrent("grafiki");
        live->on_actNewElemFolder_triggered();
        const QString key = live.currentElement();
        live.press(live->m_btnSave);
        // Somebody gave it another order meanwhile: the row does not move.
        live.store.update("Menu", {{"KeyLink", key}, {"order_", -5}, {"caption", QString("Иная")}});
        live.deliver();
        QCOMPARE(live->m_menuModel->findIndexByKey(key).siblingAtColumn(MenuColumn::IsNew).data(),
                 QVariant(false));
        QCOMPARE(live->m_menuModel->findIndexByKey(key).data(), QVariant("Иная"));
        // The insertion left it last; the update after it moved it.
        QCOMPARE(live.below(live->element("grafiki")), key + " trend calc glubzhe");

        live.makeCurrent("glubzhe");
        live->on_actNewElemFolder_triggered();
        const QString second = live.currentElement();
        live.press(live->m_btnSave);
        addElement(live.store, "armop", "spaet", "glubzhe", "Поздний", 5000);
        live.deliver();
        QCOMPARE(live.below(live->element("glubzhe")), "form " + second + " spaet");
    }

    void theOwnNewElementLeavesTheSelectionAlone() {
        Live live;
        live.makeCurrent("grafiki");
        live->on_actNewElemFolder_triggered();
        const QString key = live.currentElement();
        live.press(live->m_btnSave);
        live.makeCurrent("shema");
        live.deliver();
        QCOMPARE(live->m_menuModel->findIndexByKey(key).siblingAtColumn(MenuColumn::IsNew).data(),
                 QVariant(false));
        QCOMPARE(live.currentElement(), QString("shema"));
    }

    void anInsertedResourceNamesNewElements() {
        Live live;
        addResource(live.store, "rneu", 1, "Neu");
        addElement(live.store, "armop", "neu", "", "Новый", 500, "rneu");
        live.deliver();
        QCOMPARE(live.cell("neu", MenuColumn::Type), QVariant("модуль"));
        QCOMPARE(live.cell("neu", MenuColumn::Command), QVariant("Neu"));
        // Later changes of the catalogue are not followed.
        live.store.update("MenuResource",
                          {{"KeyLink", QString("rneu")}, {"name_", QString("Alt")}});
        live.store.remove("MenuResource", "rcalc");
        live.deliver();
        QCOMPARE(inTable(live->m_tabResource, "rneu", "name_"), QString("Neu"));
        QCOMPARE(inTable(live->m_tabResource, "rcalc", "name_"), QString("Calc"));
    }

    // Input that is not what it should be

    void anInsertionWithoutFieldsMakesARecordOfTheKeyAlone() {
        Live live;
        const QString before = live.menuText() + live.desckText();
        for (const char* table : {"MenuFolder", "Menu", "MenuResource"}) {
            notify(*live.editor.module, {601, table, "bare", {}});
            notify(*live.editor.module, {601, table, "bare", {}});
        }
        QCOMPARE(inTable(live->m_tabFolder, "bare", "KeyLink"), QString("bare"));
        QCOMPARE(inTable(live->m_tabFolder, "bare", "caption"), QString());
        QCOMPARE(inTable(live->m_tabResource, "bare", "KeyLink"), QString("bare"));
        // It names no desktop, so it is none of the open one.
        QCOMPARE(inTable(live->m_tabMenu, "bare", "KeyLink"), QString("no record"));
        QCOMPARE(live.menuText() + live.desckText(), before);
    }

    void anUpdateWithoutFieldsChangesNothing() {
        Live live;
        live.makeCurrent("calc");
        const QString before = live.menuText() + live.desckText();
        notify(*live.editor.module, {602, "Menu", "shema", {}});
        notify(*live.editor.module, {602, "Menu", "shema", rawRecordOf("Menu", {})});
        notify(*live.editor.module, {602, "MenuFolder", "armop", {}});
        QCOMPARE(live.menuText() + live.desckText(), before);
        QCOMPARE(inTable(live->m_tabMenu, "shema", "caption"), QString("Схема"));
    }

    void aRecordCutShortChangesNothingElse_data() {
        QTest::addColumn<QByteArray>("table");
        for (const char* table : {"MenuFolder", "Menu", "MenuResource"})
            QTest::addRow("%s", table) << QByteArray(table);
    }

    void aRecordCutShortChangesNothingElse() {
        QFETCH(QByteArray, table);
        Live live;
        const QByteArray raw = rawRecordOf(table.constData(), {{"caption", QString("Новое имя")}});
        const QString before = live.menuText() + live.desckText();
        for (int length = 0; length < raw.size(); ++length) {
            notify(*live.editor.module,
                   {602, table, table == "Menu" ? "shema" : "armop", raw.left(length)});
            QCOMPARE(live.menuText() + live.desckText(), before);
            const QByteArray key = "cut" + QByteArray::number(length);
            notify(*live.editor.module, {601, table, key, raw.left(length)});
            QCOMPARE(live.menuText() + live.desckText(), before);
        }
    }

    void damagedRecordsNeverBreakTheWindow() {
        Live live;
        live.makeCurrent("calc");
        std::mt19937 random(20251);
        const auto below = [&random](int limit) {
            return static_cast<int>(random() % unsigned(limit));
        };
        const QList<QByteArray> tables{"MenuFolder", "Menu", "MenuResource"};
        const QList<QByteArray> keys{"calc", "grafiki", "armop", "ceh", "rcalc", "neu", "neu2"};
        for (int turn = 0; turn < 1500; ++turn) {
            const QByteArray& table = tables[below(tables.size())];
            QByteArray raw = rawRecordOf(table.constData(), {{"caption", QString("Имя")}});
            for (int i = below(6); i >= 0; --i)
                raw[below(raw.size())] = static_cast<char>(random());
            notify(*live.editor.module, {601 + below(2), table, keys[below(keys.size())], raw});
        }
        // The tables still hold together, and the window still works.
        for (const CMDArray* records :
             {&live->m_tabFolder, &live->m_tabMenu, &live->m_tabResource}) {
            int seen = 0;
            orvo::walkAll(*records, 0, [&](const MDRData* record) {
                ++seen;
                return orvo::isNull(record, "KeyLink") ||
                       orvo::seekKey(*records, orvo::textOf(record, "KeyLink")) != nullptr;
            });
            QCOMPARE(seen, orvo::recordCount(*records));
        }
        addDesck(live.store, "heil", "sklad", "Целый", false);
        addElement(live.store, "heil", "ganz", "", "Целый", 0, "rform");
        live.deliver();
        QCOMPARE(live.currentDesck(), QString("heil"));
        QCOMPARE(live.menuText(), QString("Меню #MenuRootNode\n  Целый #ganz\n"));
    }

    void anEmptyKeyTouchesNoRow() {
        Live live;
        const QString before = live.menuText() + live.desckText();
        const QByteArray raw = rawRecordOf(
            "Menu", {{"caption", QString("Без ключа")}, {"FolderKey", QString("armpech")}});
        for (const int code : {601, 602, 603}) {
            notify(*live.editor.module, {code, "Menu", "", raw});
            notify(*live.editor.module, {code, "MenuFolder", "", {}});
            QCOMPARE(live.menuText() + live.desckText(), before);
        }
    }

    // Edits that are open

    void aRefreshOfTheCurrentRowSavesAnOpenEdit() {
        Live live;
        live.makeCurrent("calc");
        live.type("name", "Своё");
        QCOMPARE(live.mode(), int32_t(MenuProbe::EditElement));
        live.host.writes().take();
        // Notifications that refresh nothing leave the edit open.
        addResource(live.store, "rneu", 1, "Neu");
        live.store.remove("Menu", "propal");
        live.deliver();
        QCOMPARE(live.mode(), int32_t(MenuProbe::EditElement));
        live.store.update("Menu", {{"KeyLink", QString("shema")}, {"caption", QString("Чужая")}});
        live.deliver();
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QCOMPARE(live.currentElement(), QString("calc"));
        QVERIFY(live.host.writes().take().contains("~calc "));
        live.deliver();
        QCOMPARE(inTable(live->m_tabMenu, "calc", "caption"), QString("Своё"));
    }

    void aDeletedFolderEndsTheEditOfTheNewRowBelowIt() {
        Live live;
        live.openDesck("pech");
        live->on_actAddDescktop_triggered();
        QCOMPARE(live.mode(), int32_t(MenuProbe::NewDesck));
        live.store.remove("MenuFolder", "pech");
        live.deliver();
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QVERIFY(!live.buttonsEnabled());
        live.openDesck("obshiy");
        live.openDesck("armop");
        QVERIFY(live->element("shema").isValid());

        live.makeCurrent("glubzhe");
        live->on_actNewElemFolder_triggered();
        QCOMPARE(live.mode(), int32_t(MenuProbe::NewElement));
        live.store.remove("Menu", "grafiki");
        live.deliver();
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QVERIFY(!live.buttonsEnabled());
        live.makeCurrent("shema");
        QCOMPARE(live.passport("name"), QVariant("Схема"));
    }

    void aDeletedRowEndsItsRenaming() {
        Live live(moreDesktops);
        live->on_actChangeDescktopOrFolder_triggered();
        QVERIFY(live.desckView()->indexWidget(live->desck("armop")));
        live.store.remove("MenuFolder", "armop");
        live.deliver();
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QCOMPARE(live.currentDesck(), QString("armb"));
        QVERIFY(!live.buttonsEnabled());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void aDesktopOfAnotherClientSavesTheOpenPlaceholder() {
        Live live;
        live->on_actAddDescktop_triggered();
        const QString own = live.currentDesck();
        addDesck(live.store, "neu", "ceh", "Бюро", false);
        live.deliver();
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QCOMPARE(live.currentDesck(), QString("neu"));
        live.deliver();
        QCOMPARE(inTable(live->m_tabFolder, own.toLatin1(), "caption"),
                 QString("новый рабочий стол"));
        QCOMPARE(live.currentDesck(), own);
    }

    void aBurstIsTakenInOrder() {
        Live live;
        live.makeCurrent("calc");
        for (int i = 0; i < 50; ++i) {
            addElement(live.store, "armop", qPrintable(QString("n%1").arg(i)), "grafiki",
                       qPrintable(QString::number(i)), 5000 - i);
            live.store.update("Menu", {{"KeyLink", QString("n%1").arg(i)}, {"order_", 6000 + i}});
            if (i % 5 == 0)
                live.store.remove("Menu", qPrintable(QString("n%1").arg(i)));
        }
        live.deliver();
        QStringList expected{"trend", "calc", "glubzhe"};
        for (int i = 0; i < 50; ++i)
            if (i % 5 != 0)
                expected << QString("n%1").arg(i);
        QCOMPARE(live.below(live->element("grafiki")), expected.join(' '));
    }
};

QTEST_MAIN(TestMenuNotificationsMore)
#include "tst_menu_notifications_more.moc"
