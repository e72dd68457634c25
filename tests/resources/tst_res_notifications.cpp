// How the resource editor follows the server.
#include "tests/resources/ResProbe.h"

#include "frame/Records.h"

#include "platform/client/Blocks.h"

#include <QScrollBar>
#include <QSignalSpy>

using namespace orvo::test;

class TestResNotifications : public QObject {
    Q_OBJECT
private slots:
    void init() {
        store = std::make_unique<TestStore>();
        fillCatalogue(*store);
        host = std::make_unique<TestHost>(*store);
        editor = std::make_unique<ResEditor>(*host, "Resources");
        QVERIFY(editor->start());
    }

    void cleanup() {
        editor.reset();
        host.reset();
        store.reset();
    }

    void aChangedResourceIsRewrittenAndSorted() {
        store->update("MenuResource", {{"KeyLink", QString("rtable")},
                                       {"name_", QString("Archive")},
                                       {"caption", QString("Хранилище")}});
        deliver();
        QCOMPARE(children("mod"), QStringList({"alarms", "trends", "rtable", "rlog"}));
        QCOMPARE(probe().text("rtable", ResColumn::Caption), QString("Хранилище"));
        QCOMPARE(probe().text("rtable", ResColumn::Name), QString("Archive"));
    }

    void aChangedFolderIsRewrittenAndSorted() {
        store->update("MenuResourceFolder",
                      {{"KeyLink", QString("trends")}, {"caption", QString("Азбука")}});
        deliver();
        QCOMPARE(children("mod"), QStringList({"alarms", "trends", "rlog", "rtable"}));
        store->update("MenuResourceFolder",
                      {{"KeyLink", QString("alarms")}, {"caption", QString("Ямы")}});
        deliver();
        QCOMPARE(children("mod"), QStringList({"trends", "alarms", "rlog", "rtable"}));
        QCOMPARE(children("trends"), QStringList("rtrend"));
    }

    void aChangeOfTheCurrentRowRefreshesIt() {
        for (const char* key : {"rlog", "rtable"}) {
            makeCurrent(key);
            store->update("MenuResource",
                          {{"KeyLink", QString(key)}, {"caption", QString("Новое")}});
            deliver();
            QCOMPARE(probe().m_currentKey, QString(key));
            QCOMPARE(probe().passport("caption"), QVariant("Новое"));
            QCOMPARE(view()->currentIndex(), probe().row(key));
            QVERIFY(view()->selectionModel()->isRowSelected(probe().row(key).row(),
                                                            probe().row(key).parent()));
        }
        makeCurrent("trends");
        store->update("MenuResourceFolder",
                      {{"KeyLink", QString("trends")}, {"caption", QString("Азот")}});
        deliver();
        QCOMPARE(probe().m_currentKey, QString("trends"));
        QCOMPARE(probe().passport("caption"), QVariant("Азот"));
    }

    void aRowWhoseRecordGoesWithoutItStaysAsItWas() {
        // The key of a fixed row: its record has a row of its own, which no notification reaches.
        addItem(*store, "WrongFolder", 1, "mod", "Zzz", "Последний");
        editor = std::make_unique<ResEditor>(*host, "Resources");
        QVERIFY(editor->start());
        const QModelIndex mod = probe().row("mod");
        const QModelIndex row =
            probe().m_resModel->index(probe().m_resModel->rowCount(mod) - 1, 0, mod);
        QCOMPARE(row.data(), QVariant("Последний"));
        store->update("MenuResource",
                      {{"KeyLink", QString("WrongFolder")}, {"caption", QString("Другой")}});
        deliver();
        QCOMPARE(row.data(), QVariant("Последний"));
        store->remove("MenuResource", "WrongFolder");
        deliver();
        addItem(*store, "rnext", 1, "trends", "Next", "Следующий"); // may take the record's place
        deliver();
        QCOMPARE(row.data(), QVariant("Последний"));
        QCOMPARE(row.siblingAtColumn(ResColumn::Name).data(), QVariant("Zzz"));
        QVERIFY2(!probe().m_resModel->check(), probe().m_resModel->check());
    }

    void aChangeOfAnotherRowLeavesTheCurrentOne() {
        makeCurrent("rlog");
        const QSignalSpy moves(view()->selectionModel(), &QItemSelectionModel::currentChanged);
        store->update("MenuResource", {{"KeyLink", QString("rtable")}, {"name_", QString("Aa")}});
        deliver();
        QCOMPARE(moves.count(), 0);
        QCOMPARE(view()->currentIndex(), probe().row("rlog"));
    }

    void aChangeUnknownToTheTableChangesNothing() {
        probe().forgetRecord("rlog");
        probe().forgetRecord("alarms");
        store->update("MenuResource",
                      {{"KeyLink", QString("rlog")}, {"caption", QString("Новое")}});
        store->update("MenuResourceFolder",
                      {{"KeyLink", QString("alarms")}, {"caption", QString("Новое")}});
        deliver();
        QCOMPARE(probe().text("rlog", ResColumn::Caption), QString("Журнал"));
        QCOMPARE(probe().text("alarms", ResColumn::Caption), QString("Аварии"));
        QVERIFY(!orvo::seekKey(probe().m_tabResource, "rlog"));
        QVERIFY(!orvo::seekKey(probe().m_tabResFolder, "alarms"));
    }

    void aMovedResourceStandsBehindTheFolders() {
        store->update("MenuResource",
                      {{"KeyLink", QString("rtrend")}, {"MenuResourceFolderKey", QString("mod")}});
        deliver();
        QCOMPARE(children("mod"), QStringList({"alarms", "trends", "rlog", "rtable", "rtrend"}));
        QCOMPARE(children("trends"), QStringList());
        QCOMPARE(probe().text("rtrend", ResColumn::FolderKey), QString("mod"));
    }

    void aMovedCurrentRowIsNotSelectedAgain() {
        makeCurrent("rtrend");
        store->update("MenuResource",
                      {{"KeyLink", QString("rtrend")}, {"MenuResourceFolderKey", QString("mod")}});
        deliver();
        QVERIFY(probe().row("rtrend").isValid());
        QVERIFY(view()->currentIndex() != probe().row("rtrend"));
        makeCurrent("old");
        store->update("MenuResourceFolder",
                      {{"KeyLink", QString("old")}, {"ParentKey", QString("frm")}});
        deliver();
        QCOMPARE(children("frm"), QStringList({"boilers", "old", "rdrum"}));
        QVERIFY(view()->currentIndex() != probe().row("old"));
    }

    void anOrphanIsRewrittenInItsPlace() {
        const QString orphans = QString::number(orvo::recordCount(probe().m_tabOrphans));
        store->update("MenuResource",
                      {{"KeyLink", QString("rlost")}, {"caption", QString("Нашлась")}});
        deliver();
        QCOMPARE(children("WrongFolder"), QStringList("rlost"));
        QCOMPARE(probe().text("rlost", ResColumn::Caption), QString("Нашлась"));
        // The copy of the record stays as it was at the start.
        QCOMPARE(QString::number(orvo::recordCount(probe().m_tabOrphans)), orphans);
        QCOMPARE(orvo::textOf(orvo::seekKey(probe().m_tabOrphans, "rlost"), "caption"),
                 QString("Потерянная"));
    }

    void anOrphanMovesIntoAFolder() {
        store->update("MenuResource", {{"KeyLink", QString("rlost")},
                                       {"MenuResourceFolderKey", QString("boilers")}});
        deliver();
        QCOMPARE(children("WrongFolder"), QStringList());
        QCOMPARE(children("boilers"), QStringList({"old", "rboiler", "rburner", "rlost"}));
    }

    void aMovedFileGoesToTheTopOfTheFileArea() {
        store->update("MenuResource",
                      {{"KeyLink", QString("rmanual")}, {"MenuResourceFolderKey", QString()}});
        deliver();
        QCOMPARE(children("FileResources"), QStringList({"docs", "icons", "rmanual", "rreadme"}));
    }

    void aMovedFolderTakesItsRowsAlong() {
        store->update("MenuResourceFolder",
                      {{"KeyLink", QString("docs")}, {"ParentKey", QString("icons")}});
        deliver();
        QCOMPARE(children("icons"), QStringList({"docs", "rpump"}));
        QCOMPARE(children("docs"), QStringList({"deep", "rmanual"}));
        QCOMPARE(probe().m_resModel->getItemLevel(probe().row("rmanual")), 3);
    }

    void aFolderWithoutParentBecomesATopRow() {
        store->update("MenuResourceFolder",
                      {{"KeyLink", QString("deep")}, {"ParentKey", QString()}});
        deliver();
        QVERIFY(!probe().row("deep").parent().isValid());
        QCOMPARE(probe().m_resModel->getItemLevel(probe().row("deep")), 0);
        QCOMPARE(probe().row("deep").row(), probe().getResFolderPosition("deep", "", 4));
        QCOMPARE(probe().m_resModel->rowCount(), 3);
    }

    void aMoveIntoAnUnknownFolderHurtsNothing() {
        store->update("MenuResource",
                      {{"KeyLink", QString("rlog")}, {"MenuResourceFolderKey", QString("nosuch")}});
        deliver();
        // The first of an unknown folder is placed behind the top rows.
        QVERIFY(!probe().row("rlog").parent().isValid());
        QCOMPARE(probe().row("rlog").row(), 2);
        QCOMPARE(children("mod"), QStringList({"alarms", "trends", "rtable"}));
    }

    void anOwnNewResourceFindsItsPlace() {
        addPlaceholder("mod", "new", 1, false);
        makeCurrent("new");
        addItem(*store, "new", 1, "mod", "Alpha", "Альфа");
        deliver();
        QCOMPARE(children("mod"), QStringList({"alarms", "trends", "new", "rlog", "rtable"}));
        QCOMPARE(view()->currentIndex(), probe().row("new"));
        QCOMPARE(probe().passport("caption"), QVariant("Альфа"));
        QCOMPARE(probe().text("new", ResColumn::Name), QString("Alpha"));
    }

    void anOwnNewResourceStaysNew() {
        addPlaceholder("mod", "new", 1, false);
        addItem(*store, "new", 1, "mod", "Alpha", "Альфа");
        deliver();
        QCOMPARE(probe().row("new", ResColumn::IsNew).data(), QVariant(true));
    }

    void anOwnNewFolderLosesItsMark() {
        addPlaceholder("mod", "new", 1, true);
        makeCurrent("new");
        addFolder(*store, "new", 1, "mod", "Прочее");
        deliver();
        QCOMPARE(children("mod"), QStringList({"alarms", "new", "trends", "rlog", "rtable"}));
        QCOMPARE(probe().row("new", ResColumn::IsNew).data(), QVariant(false));
        QCOMPARE(view()->currentIndex(), probe().row("new"));
    }

    void anotherClientsResourceGetsARow() {
        makeCurrent("rlog");
        addItem(*store, "foreign", 1, "mod", "Melody", "Мелодия");
        deliver();
        QCOMPARE(children("mod"), QStringList({"alarms", "trends", "rlog", "foreign", "rtable"}));
        QVERIFY(!probe().row("foreign", ResColumn::IsNew).data().isValid());
        QCOMPARE(view()->currentIndex(), probe().row("rlog"));
        QVERIFY(view()->isExpanded(probe().row("mod"))); // scrolled to
    }

    void anotherClientsFolderGetsNone() {
        addFolder(*store, "foreign", 1, "mod", "Чужая");
        deliver();
        QVERIFY(!probe().row("foreign").isValid());
        QVERIFY(orvo::seekKey(probe().m_tabResFolder, "foreign"));
    }

    void aResourceInAnUnknownFolderGetsNoRow() {
        addFolder(*store, "foreign", 1, "mod", "Чужая");
        addItem(*store, "inside", 1, "foreign", "Inside", "Внутри");
        deliver();
        QVERIFY(!probe().row("inside").isValid());
        QVERIFY(orvo::seekKey(probe().m_tabResource, "inside"));
    }

    void aFileAtTheTopGetsNoRow() {
        addItem(*store, "top", 4, "", "top.txt", "Верх");
        deliver();
        QVERIFY(!probe().row("top").isValid());
        QVERIFY(orvo::seekKey(probe().m_tabResource, "top"));
    }

    void aKnownKeyIsNotInsertedAgain() {
        addItem(*store, "foreign", 1, "mod", "Melody", "Мелодия");
        deliver();
        const int rows = probe().m_resModel->rowCount(probe().row("mod"));
        store->remove("MenuResource", "foreign");
        addItem(*store, "foreign", 1, "mod", "Melody", "Снова");
        deliver();
        QCOMPARE(probe().m_resModel->rowCount(probe().row("mod")), rows);
        QCOMPARE(probe().text("foreign", ResColumn::Caption), QString("Снова"));
    }

    void theOnlyRowLeavesItsFolderCurrent() {
        makeCurrent("rtrend");
        store->remove("MenuResource", "rtrend");
        deliver();
        QCOMPARE(probe().m_currentKey, QString("trends"));
        QVERIFY(!orvo::seekKey(probe().m_tabResource, "rtrend"));
        QVERIFY(editor->action("actDelete")->isEnabled());
    }

    void theLastRowLeavesThePreviousCurrent() {
        makeCurrent("rtable");
        store->remove("MenuResource", "rtable");
        deliver();
        QCOMPARE(probe().m_currentKey, QString("rlog"));
    }

    void anyOtherRowLeavesTheNextCurrent() {
        makeCurrent("rlog");
        store->remove("MenuResource", "rlog");
        deliver();
        QCOMPARE(probe().m_currentKey, QString("rtable"));
    }

    void anotherRowLeavesTheCurrentOne() {
        makeCurrent("rlog");
        const QSignalSpy moves(view()->selectionModel(), &QItemSelectionModel::currentChanged);
        store->remove("MenuResource", "rtable");
        deliver();
        QCOMPARE(moves.count(), 0);
        QCOMPARE(children("mod"), QStringList({"alarms", "trends", "rlog"}));
    }

    void aDeletedFolderGoesWithItsTable() {
        store->remove("MenuResourceFolder", "alarms");
        deliver();
        QVERIFY(!probe().row("alarms").isValid());
        QVERIFY(!orvo::seekKey(probe().m_tabResFolder, "alarms"));
    }

    void aFolderTakesTheCurrentRowWithIt() {
        makeCurrent("rtrend");
        store->sql("DELETE FROM \"MenuResourceFolder\" WHERE \"KeyLink\" = 'trends'");
        deliver();
        QVERIFY(!probe().row("rtrend").isValid());
        QCOMPARE(probe().m_currentKey, QString("rlog")); // the row that stands there now
        QCOMPARE(view()->currentIndex(), probe().row("rlog"));
    }

    void theFormsOfADeletedFolderAreNoOrphansYet() {
        store->sql("DELETE FROM \"MenuResourceFolder\" WHERE \"KeyLink\" = 'boilers'");
        deliver();
        QVERIFY(!probe().row("rboiler").isValid());
        QVERIFY(orvo::seekKey(probe().m_tabResource, "rboiler"));
        QCOMPARE(children("WrongFolder"), QStringList("rlost"));
        QCOMPARE(orvo::recordCount(probe().m_tabOrphans), 1);
    }

    void aKeyUnknownToTheTableRemovesNothing() {
        probe().forgetRecord("rlog");
        store->remove("MenuResource", "rlog");
        deliver();
        QVERIFY(probe().row("rlog").isValid());
    }

    void aRecordWithTheKeyOfAFixedRowLeavesThatRowAlone_data() {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<bool>("folder");
        for (const char* key : {"MenuResources", "fileresources", "WrongFolder"})
            for (const bool folder : {true, false})
                dataRow(QByteArray(key) + (folder ? ", a folder" : ", a resource"), QByteArray(key),
                        folder);
    }

    void aRecordWithTheKeyOfAFixedRowLeavesThatRowAlone() {
        QFETCH(QByteArray, key);
        QFETCH(bool, folder);
        makeCurrent("rlog");
        const char* table = folder ? "MenuResourceFolder" : "MenuResource";
        const CMDArray& records = folder ? probe().m_tabResFolder : probe().m_tabResource;
        const auto shown = [&] {
            QStringList rows = children(key);
            for (int column = 0; column <= ResColumn::IsFolder; ++column)
                rows << probe().text(key, column);
            return rows << children("mod") << children("docs");
        };
        const QStringList before = shown();
        if (folder)
            addFolder(*store, key, 1, "mod", "Чужая");
        else
            addItem(*store, key, 1, "mod", "Foreign", "Чужой");
        deliver();
        QCOMPARE(shown(), before);
        QVERIFY(orvo::seekKey(records, key));
        store->update(table, {{"KeyLink", QString(key)}, {"caption", QString("Другое")}});
        deliver();
        QCOMPARE(shown(), before);
        QCOMPARE(orvo::textOf(orvo::seekKey(records, key), "caption"), QString("Другое"));
        store->remove(table, key);
        deliver();
        QCOMPARE(shown(), before);
        QVERIFY(!orvo::seekKey(records, key));
        QCOMPARE(view()->currentIndex(), probe().row("rlog"));
    }

    void anEditedRowIsOverwritten() {
        makeCurrent("rlog");
        probe().m_resModel->setData(probe().row("rlog"), QString("Правка"));
        store->update("MenuResource", {{"KeyLink", QString("rlog")}, {"params", QString("x")}});
        deliver();
        QCOMPARE(probe().text("rlog", ResColumn::Caption), QString("Журнал"));
        QCOMPARE(probe().text("rlog", ResColumn::Params), QString("x"));
    }

    void aBurstOpensEachFolderAndEndsAtTheLastRow() {
        makeCurrent("rlog");
        for (int i = 0; i < 100; ++i)
            addItem(*store, qPrintable(QString("many%1").arg(i)), 1, "alarms",
                    qPrintable(QString("Many%1").arg(i)), "Один из многих");
        addItem(*store, "low", 4, "deep", "low.txt", "Глубоко");
        addItem(*store, "last", 3, "old", "Last", "Последняя");
        deliver();
        for (const char* key : {"alarms", "docs", "deep", "boilers", "old"})
            QVERIFY2(view()->isExpanded(probe().row(key)), key);
        const QRect seen = view()->viewport()->rect();
        QVERIFY(seen.contains(view()->visualRect(probe().row("last"))));
        QVERIFY(!seen.intersects(view()->visualRect(probe().row("rlog"))) ||
                !seen.intersects(view()->visualRect(probe().row("low"))));
        QCOMPARE(view()->currentIndex(), probe().row("rlog"));
        QVERIFY(view()->updatesEnabled());
        QVERIFY(view()->hasAutoScroll());
    }

    void aRowThatWentAgainInABurstIsNoAim() {
        makeCurrent("rlog");
        const int before = view()->verticalScrollBar()->value();
        addItem(*store, "brief", 3, "old", "Brief", "Ненадолго");
        store->remove("MenuResource", "brief");
        deliver();
        QVERIFY(!probe().row("brief").isValid());
        QCOMPARE(view()->verticalScrollBar()->value(), before);
    }

    void outOfSightABurstShowsItsRowsToo() {
        editor->module->hide();
        addItem(*store, "first", 4, "docs", "first.txt", "Раньше");
        addItem(*store, "low", 4, "deep", "low.txt", "Глубоко");
        deliver();
        editor->module->show();
        QVERIFY(QTest::qWaitForWindowExposed(editor->module.get()));
        QVERIFY(view()->isExpanded(probe().row("docs")));
        QVERIFY(view()->isExpanded(probe().row("deep")));
        QVERIFY(view()->viewport()->rect().contains(view()->visualRect(probe().row("low"))));
    }

    void aNotificationThatComesAloneIsShown() {
        addItem(*store, "low", 4, "deep", "low.txt", "Глубоко");
        std::vector<orvo::store::Change> changes;
        QVERIFY(store->connect()->readLog(0, 1000, &changes).ok());
        orvo::client::NotificationMaker maker;
        MDXCliParam* block = maker.make(changes.back());
        probe().MessageData(block); // past MessageOn
        host->m_session->PrmFree(block);
        QVERIFY(view()->viewport()->rect().contains(view()->visualRect(probe().row("low"))));
    }

    void otherTablesAreIgnored() {
        const int records = orvo::recordCount(probe().m_tabUsers);
        addUser(*store, "unew", "sidorov", "Сидоров", "Олег");
        store->insert("MenuFolder", {{"KeyLink", QString("rlog")}, {"caption", QString("Стол")}});
        deliver();
        QCOMPARE(orvo::recordCount(probe().m_tabUsers), records);
        QCOMPARE(probe().text("rlog", ResColumn::Caption), QString("Журнал"));
    }

    void storedContentIsIgnored() {
        const QString resources = probe().tableText("MenuResource");
        const QString folders = probe().tableText("MenuResourceFolder");
        QVERIFY(host->ownStore().formPut("Котлы", {{"", "Boiler", "1", {}}}).ok());
        // Under a key that a resource has as well.
        store->sql(
            "UPDATE \"MenuResourceFile\" SET \"KeyLink\" = 'rlog' WHERE \"name_\" = 'Boiler'");
        store->sql(
            "UPDATE \"MenuResourceFile\" SET \"name_\" = 'Other' WHERE \"KeyLink\" = 'rlog'");
        store->sql("DELETE FROM \"MenuResourceFile\" WHERE \"KeyLink\" = 'rlog'");
        deliver();
        QCOMPARE(probe().tableText("MenuResource"), resources);
        QCOMPARE(probe().tableText("MenuResourceFolder"), folders);
        QVERIFY(probe().row("rlog").isValid());
    }

    void otherEventsAreIgnored() {
        const QString before = probe().tableText("MenuResource");
        addItem(*store, "foreign", 1, "mod", "Melody", "Мелодия");
        std::vector<orvo::store::Change> changes;
        QVERIFY(store->connect()->readLog(0, 1000, &changes).ok());
        orvo::client::NotificationMaker maker;
        MDXCliParam* block = maker.make(changes.back());
        for (const int32_t action : {631, 600, 0}) {
            const MDRVar code = orvo::integerVar(action);
            QCOMPARE(MDRSetVal(orvo::fieldOf(block->record, 1), block->record, &code), MDX_OK);
            QVERIFY(probe().MessageData(block));
            QCOMPARE(probe().tableText("MenuResource"), before);
            QVERIFY(!probe().row("foreign").isValid());
        }
        host->m_session->PrmFree(block);
    }

    void aStrangeBlockIsIgnored() { QVERIFY(probe().MessageData(nullptr)); }

    void theTablesAreTold() {
        const QString resources = probe().tableText("menuresource");
        QVERIFY(resources.startsWith("KeyLink\tMenuResourceFolderKey\ttype_\tname_\tcaption\t"
                                     "params\tico\tUsersKey\n"));
        QVERIFY(resources.contains("\nrlog\tmod\t1\tLog\tЖурнал\t\\N\t\\N\t\\N\n"));
        QVERIFY(probe().tableText("MenuResourceFolder").contains("\ntrends\tmod\t1\tТренды\n"));
        QVERIFY(probe().tableText("Users").isNull());
    }

private:
    void deliver() { host->deliver(*editor->module); }
    void makeCurrent(const char* key) { view()->setCurrentIndex((*editor)->row(key)); }
    QTreeView* view() const { return editor->view("tvRes"); }
    ResProbe& probe() const { return *editor->module; }
    QStringList children(const char* key) const {
        QStringList keys;
        const QModelIndex parent = probe().row(key);
        for (int row = 0; row < probe().m_resModel->rowCount(parent); ++row)
            keys << probe().m_resModel->getItemKeyLink(probe().m_resModel->index(row, 0, parent));
        return keys;
    }
    /// A row as the add actions make it.
    void addPlaceholder(const char* parent, const char* key, int type, bool folder) {
        const QModelIndex under = probe().row(parent);
        const int row = folder ? 0 : probe().m_resModel->rowCount(under);
        QVERIFY(probe().m_resModel->insertRows(row, 1, under));
        const auto set = [&](int column, const QVariant& value) {
            probe().m_resModel->setData(probe().m_resModel->index(row, column, under), value);
        };
        set(ResColumn::KeyLink, QString(key));
        set(ResColumn::FolderKey, QString(parent));
        set(ResColumn::Type, type);
        set(ResColumn::IsFolder, folder);
        set(ResColumn::IsNew, true);
    }

    std::unique_ptr<TestStore> store;
    std::unique_ptr<TestHost> host;
    std::unique_ptr<ResEditor> editor;
};

QTEST_MAIN(TestResNotifications)
#include "tst_res_notifications.moc"
