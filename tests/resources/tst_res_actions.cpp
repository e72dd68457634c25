// What the resource editor offers for a row, and what a move of the current row or the selection
// does.
#include "frame/Kinds.h"
#include "tests/resources/ResProbe.h"

#include <QApplication>
#include <QClipboard>
#include <QItemSelectionModel>
#include <QMenu>
#include <QMimeData>
#include <QRegularExpression>
#include <QSet>
#include <QTimer>

using namespace orvo::test;

namespace {

void putOnClipboard(const QByteArray& payload) {
    auto* data = new QMimeData; // the clipboard takes it
    data->setData("OrvoResources/resources", payload);
    QApplication::clipboard()->setMimeData(data);
}

} // namespace

namespace {

QString enabledActions(const ResProbe& editor) {
    QStringList names;
    for (const QAction* action : editor.findChildren<QAction*>(QRegularExpression("^act")))
        if (action->isEnabled())
            names << action->objectName();
    names.sort();
    return names.join(' ');
}

} // namespace

class TestResActions : public QObject {
    Q_OBJECT
private slots:
    void init() { QApplication::clipboard()->clear(); }

    void whoMayOnlyReadLooksAndTakesOut() {
        CatalogueEditor editor;
        editor.host.m_mayWrite = false;
        QVERIFY(editor.start());
        editor.view("tvRes")->setCurrentIndex(editor->row("trends"));
        QCOMPARE(enabledActions(*editor.module), QString());
        editor.view("tvRes")->setCurrentIndex(editor->row("rboiler"));
        QCOMPARE(enabledActions(*editor.module), QString("actExtractFiles actOpenScheme"));
        QVERIFY(!editor.view("tvRes")->acceptDrops());
        QVERIFY(editor.view("tvProp")->editTriggers() == QAbstractItemView::NoEditTriggers);
    }

    void everyKindWithoutContentsIsMadeByAnActionOfItsOwn() {
        CatalogueEditor editor;
        QVERIFY(editor.start());
        QSet<QString> names;
        for (const QAction* action : editor->m_menuCreate->actions())
            names << action->objectName();
        int expected = 1; // the folder
        for (const orvo::ResourceKind& kind : orvo::resourceKinds)
            expected += kind.hasContents ? 0 : 1;
        QCOMPARE(names.size(), expected);
        QVERIFY(!names.contains("actLoadFiles"));
    }

    void rowsOfferTheirActions_data() {
        QTest::addColumn<QString>("actions");
        const auto add = [](const char* key, const char* actions) {
            dataRow(key, QString(actions));
        };
        add("MenuResources", "");
        add("mod", "actAddFolder actAddModule");
        add("fun", "actAddFolder actAddFunction");
        add("frm", "actAddFolder actLoadFiles");
        add("WrongFolder", "");
        add("trends", "actAddFolder actAddModule actCut");
        add("alarms", "actAddFolder actAddModule actCut actDelete");
        add("rtrend", "actAddFolder actAddModule actCut actDelete");
        add("rlog", "actAddFolder actAddModule actCut actDelete");
        add("calc", "actAddFolder actAddFunction actCut");
        add("rcalc", "actAddFolder actAddFunction actCut actDelete");
        add("boilers", "actAddFolder actCut actLoadFiles");
        add("old", "actAddFolder actCut actDelete actLoadFiles");
        add("rboiler", "actAddFolder actCut actDelete actExtractFiles actLoadFiles actOpenScheme");
        add("rlost", "actAddFolder actCut actDelete actExtractFiles actLoadFiles actOpenScheme");
        add("FileResources", "actAddFolder actLoadFiles");
        add("docs", "actAddFolder actCut actLoadFiles");
        add("deep", "actAddFolder actCut actDelete actLoadFiles");
        add("rmanual", "actAddFolder actCut actDelete actExtractFiles actLoadFiles");
        add("rreadme", "actAddFolder actCut actDelete actExtractFiles actLoadFiles");
    }

    void rowsOfferTheirActions() {
        StartedCatalogue editor;
        const bool isLog = qstrcmp(QTest::currentDataTag(), "rlog") == 0;
        editor.view("tvRes")->setCurrentIndex(editor->row(isLog ? "rtable" : "rlog"));
        for (QAction* action : editor->findChildren<QAction*>(QRegularExpression("^act")))
            action->setEnabled(true);
        editor.view("tvRes")->setCurrentIndex(editor->row(QTest::currentDataTag()));
        QTEST(enabledActions(*editor.module), "actions");
        QCOMPARE(editor->m_currentKey, QString(QTest::currentDataTag()));
    }

    void pasteFollowsTheClipboard_data() {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<int>("kind"); // 0: never
        dataRow("folder of modules", QByteArray("trends"), 1);
        dataRow("folder of functions", QByteArray("calc"), 2);
        dataRow("folder of forms", QByteArray("boilers"), 3);
        dataRow("file area", QByteArray("FileResources"), 4);
        dataRow("folder of files", QByteArray("docs"), 4);
        dataRow("top folder of modules", QByteArray("mod"), 0);
        dataRow("menu area", QByteArray("MenuResources"), 0);
        dataRow("module", QByteArray("rtrend"), 0);
        dataRow("form", QByteArray("rboiler"), 0);
        dataRow("file", QByteArray("rmanual"), 0);
    }

    void pasteFollowsTheClipboard() {
        QFETCH(QByteArray, key);
        QFETCH(int, kind);
        StartedCatalogue editor;
        for (int held = 0; held <= 5; ++held) {
            putOnClipboard(QByteArray::number(held) + "\nkey;\n");
            editor.view("tvRes")->setCurrentIndex(editor->row("rlog"));
            editor.view("tvRes")->setCurrentIndex(editor->row(key));
            QCOMPARE(editor.action("actPaste")->isEnabled(), kind != 0 && held == kind);
        }
    }

    void aRenamedFolderOfAKindOffersNothing() {
        TestStore store;
        fillCatalogue(store);
        store.update("MenuResourceFolder",
                     {{"KeyLink", QString("mod")}, {"caption", QString("программы")}});
        store.update("MenuResourceFolder",
                     {{"KeyLink", QString("fun")}, {"caption", QString("ФУНКЦИИ")}});
        ResourcesOn editor(store);
        editor.view("tvRes")->setCurrentIndex(editor->row("mod"));
        QCOMPARE(enabledActions(*editor.module), QString());
        editor.view("tvRes")->setCurrentIndex(editor->row("fun"));
        QCOMPARE(enabledActions(*editor.module), QString("actAddFolder actAddFunction"));
    }

    void aRowOfAnUnknownKindOffersNothing() {
        StartedCatalogue editor;
        editor->m_resModel->setData(editor->row("rlog", ResColumn::Type), 5);
        editor.view("tvRes")->setCurrentIndex(editor->row("rlog"));
        QCOMPARE(enabledActions(*editor.module), QString());
    }

    void aTopRowOfFilesOffersWhatTheFileAreaDoes() {
        StartedCatalogue editor;
        editor.store.update("MenuResource", {{"KeyLink", QString("rmanual")},
                                             {"MenuResourceFolderKey", QString("nosuch")}});
        editor.host.deliver(*editor.module);
        QCOMPARE(editor->m_resModel->getItemLevel(editor->row("rmanual")), 0);
        editor.view("tvRes")->setCurrentIndex(editor->row("rmanual"));
        QCOMPARE(enabledActions(*editor.module), QString("actAddFolder actLoadFiles"));
    }

    void aLockedFormCanBeUnlocked() {
        TestStore store;
        fillCatalogue(store);
        store.update("MenuResource",
                     {{"KeyLink", QString("rboiler")}, {"UsersKey", QString("ueng")}});
        store.update("MenuResource",
                     {{"KeyLink", QString("rburner")}, {"UsersKey", QString("uother")}});
        ResourcesOn editor(store);
        for (const auto& [key, on] :
             {std::pair{"rboiler", true}, std::pair{"rburner", true}, std::pair{"rdrum", false}}) {
            editor.view("tvRes")->setCurrentIndex(editor->row(key));
            QCOMPARE(editor.action("actUnBlock")->isEnabled(), on);
        }
    }

    void theClipboardIsReadWithCare_data() {
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<bool>("isForm");
        dataRow("forms", QByteArray("3\na;\n"), true);
        dataRow("modules", QByteArray("1\na;\n"), false);
        dataRow("no line feed", QByteArray("3"), false);
        dataRow("nothing", QByteArray(""), false);
        dataRow("no number", QByteArray("three\n"), false);
        dataRow("too big", QByteArray("4294967299\n"), false);
        dataRow("line feeds", QByteArray("\n\n3\n"), false);
    }

    void theClipboardIsReadWithCare() {
        QFETCH(QByteArray, payload);
        TestStore store;
        TestHost host(store);
        ResProbe window(&host);
        putOnClipboard(payload);
        QTEST(window.checkClipBoardType(3), "isForm");
        QApplication::clipboard()->setText("3\n");
        QVERIFY(!window.checkClipBoardType(3));
    }

    void muteActionsDoNothing() {
        TestStore store;
        fillCatalogue(store);
        store.update("MenuResource",
                     {{"KeyLink", QString("rboiler")}, {"UsersKey", QString("ueng")}});
        ResourcesOn editor(store);
        QApplication::clipboard()->setText("before");
        editor.view("tvRes")->setCurrentIndex(editor->row("rboiler"));
        for (const char* name : {"actCopy", "actUnBlock"}) {
            editor.action(name)->setEnabled(true);
            editor.action(name)->trigger();
        }
        editor.host.deliver(*editor.module);
        QCOMPARE(editor->row("rboiler", ResColumn::Blocked).data(), QVariant(1));
        QCOMPARE(QApplication::clipboard()->text(), QString("before"));
    }

    void theContextMenuShowsAllButCopying() {
        StartedCatalogue editor;
        editor.view("tvRes")->setCurrentIndex(editor->row("rtrend"));
        QStringList shown;
        QStringList made;
        QTimer::singleShot(0, [&] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu)
                return;
            for (const QAction* action : menu->actions()) {
                shown << (action->isSeparator() ? "|"
                          : action->menu()      ? action->text()
                                                : action->objectName());
                if (action->menu())
                    for (const QAction* sub : action->menu()->actions())
                        made << sub->objectName();
            }
            menu->close();
        });
        emit editor.view("tvRes")->customContextMenuRequested(QPoint(5, 5));
        QCOMPARE(shown,
                 QStringList({"Создать", "actLoadFiles", "actCut", "actPaste", "|", "actDelete",
                              "|", "actExtractFiles", "|", "actUnBlock", "|", "actOpenScheme"}));
        QCOMPARE(made, QStringList({"actAddModule", "actAddFunction", "actAddFolder"}));
    }

    void aSelectionHoldsRowsThatAreAlike_data() {
        QTest::addColumn<QStringList>("select"); // one after the other, as by Ctrl and a click
        QTest::addColumn<QStringList>("remain");
        dataRow("siblings", QStringList({"rlog", "rtable"}), QStringList({"rlog", "rtable"}));
        dataRow("folder siblings", QStringList({"trends", "alarms"}),
                QStringList({"trends", "alarms"}));
        dataRow("another parent", QStringList({"rlog", "rtrend"}), QStringList("rlog"));
        dataRow("a folder beside", QStringList({"rlog", "trends"}), QStringList("rlog"));
        dataRow("another kind", QStringList({"mod", "fun"}), QStringList("mod"));
        dataRow("another area", QStringList({"MenuResources", "FileResources"}),
                QStringList("MenuResources"));
        dataRow("file areas", QStringList({"rmanual", "rpump"}), QStringList("rmanual"));
    }

    void aSelectionHoldsRowsThatAreAlike() {
        QFETCH(QStringList, select);
        QFETCH(QStringList, remain);
        StartedCatalogue editor;
        QItemSelectionModel* selection = editor.view("tvRes")->selectionModel();
        for (const QString& key : select)
            selection->select(editor->row(qPrintable(key)),
                              QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QStringList keys;
        for (const QModelIndex& row : selection->selectedRows())
            keys << editor->m_resModel->getItemKeyLink(row);
        keys.sort();
        remain.sort();
        QCOMPARE(keys, remain);
    }

    void ofRowsSelectedAtOnceThoseLikeTheFirstRemain() {
        StartedCatalogue editor;
        QItemSelectionModel* selection = editor.view("tvRes")->selectionModel();
        const auto keys = [&] {
            QStringList list;
            for (const QModelIndex& row : selection->selectedRows())
                list << editor->m_resModel->getItemKeyLink(row);
            list.sort();
            return list;
        };
        const auto rows = [&](std::initializer_list<const char*> list) {
            QItemSelection range;
            for (const char* key : list)
                range.select(editor->row(key), editor->row(key, ResColumn::IsNew));
            return range;
        };
        selection->select(rows({"rlog", "trends", "rtrend", "rtable", "rmanual"}),
                          QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        QCOMPARE(keys(), QStringList({"rlog", "rtable"}));
        // What is selected already counts more than what comes.
        selection->select(rows({"alarms", "trends", "rtrend"}),
                          QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QCOMPARE(keys(), QStringList({"rlog", "rtable"}));
    }

    void actionsFollowTheCurrentRowOnly() {
        StartedCatalogue editor;
        QTreeView* view = editor.view("tvRes");
        view->setCurrentIndex(editor->row("trends"));
        view->selectionModel()->setCurrentIndex(
            editor->row("alarms"), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QCOMPARE(view->selectionModel()->selectedRows().size(), 2);
        QVERIFY(editor.action("actDelete")->isEnabled());
    }

    void inAnEditTheActionsStay() {
        StartedCatalogue editor;
        editor.view("tvRes")->setCurrentIndex(editor->row("rcalc"));
        editor->on_editor_valueChanged("caption", QString("Иное"));
        editor.view("tvRes")->setCurrentIndex(editor->row("rlog"));
        QVERIFY(editor.action("actAddFunction")->isEnabled());
        QVERIFY(!editor.action("actAddModule")->isEnabled());
    }
};

QTEST_MAIN(TestResActions)
#include "tst_res_actions.moc"
