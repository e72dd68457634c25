// The context menus of all lists, opened by their key: the history of a row is in each of those of
// the editors, and whatever they offer has a key and an entry in the menus of the window.
#include "apps/client/history/HistoryPane.h"
#include "apps/client/history/VersionsDialog.h"
#include "frame/Keys.h"
#include "tests/client/ContextMenus.h"
#include "tests/client/RunningClient.h"

#include <QComboBox>
#include <QDockWidget>
#include <QMenuBar>
#include <QToolButton>
#include <QTreeWidget>

#include <functional>

using namespace orvo;
using namespace orvo::test;

namespace {

/// A desktop with elements, and resources: a module, a form and a file, each in a folder.
struct Fixture : RunningClient {
    Fixture() {
        stop();
        const char* const folders[] = {"модули", "функции", "формы отображения", "docs"};
        for (int kind = 1; kind <= 4; ++kind)
            otherWrites(MDX_INSERT,
                        {{"KeyLink", "f" + std::to_string(kind)},
                         {"type_", std::to_string(kind)},
                         {"caption", folders[kind - 1]}},
                        "MenuResourceFolder");
        otherWrites(MDX_INSERT,
                    {{"KeyLink", "m1"},
                     {"type_", "1"},
                     {"name_", "One"},
                     {"caption", "Первый"},
                     {"MenuResourceFolderKey", "f1"}},
                    "MenuResource");
        for (const std::string_view bytes : {"старое", "новое"})
            if (!host.store().filePut({{"docs", "план.txt", bytes, 1000.0}}).ok())
                qFatal("no file");
        start();
    }
    void showModule(const char* name) const {
        auto* tabs = client->window()->findChild<QTabWidget*>();
        tabs->setCurrentWidget(module(name));
    }
    QDockWidget* dock() const { return child<QDockWidget>("historyDock"); }
    QString scope() const { return child<QToolButton>("historyScope")->text(); }
    static QModelIndex find(const QTreeView& view, const QString& caption) {
        const QAbstractItemModel& model = *view.model();
        return model
            .match(model.index(0, 0), Qt::DisplayRole, caption, 1,
                   Qt::MatchExactly | Qt::MatchRecursive)
            .value(0);
    }
    QTreeView* at(const char* name, const QString& caption) const {
        QTreeView* tree = view(name);
        if (!QTest::qWaitFor([&] { return find(*tree, caption).isValid(); }))
            qFatal("no such row");
        tree->setCurrentIndex(find(*tree, caption));
        return tree;
    }
    /// The passport of a module, where there are two of that name.
    QTreeView* passport(const char* name) const {
        return module(name)->findChild<QTreeView*>("tvProp");
    }
    /// What the menus of the window show with a key: the keys.
    QStringList keysInMenus() const {
        QStringList all;
        for (QAction* menu : client->window()->menuBar()->actions()) {
            emit menu->menu()->aboutToShow();
            for (const QAction* entry : menu->menu()->actions())
                for (const QKeySequence& key : entry->shortcuts())
                    all << key.toString();
        }
        return all;
    }
};

} // namespace

class TestContextMenus : public QObject {
    Q_OBJECT
private slots:
    void everyTreeOffersWhatHasAKeyAndTheHistoryOfItsRow_data() {
        QTest::addColumn<QString>("module");
        QTest::addColumn<QString>("tree");
        QTest::addColumn<QString>("row");
        QTest::addColumn<bool>("byPassport");
        QTest::addColumn<QString>("named");
        QTest::newRow("desktops") << "Menu"
                                  << "tvDesck"
                                  << "КС-1" << false << "«КС-1»";
        QTest::newRow("elements") << "Menu"
                                  << "tvMenu"
                                  << "в" << false << "«в»";
        QTest::newRow("passport of an element") << "Menu"
                                                << "tvMenu"
                                                << "в" << true << "«в»";
        QTest::newRow("resources") << "Resources"
                                   << "tvRes"
                                   << "Первый" << false << "«Первый»";
        QTest::newRow("folders of resources") << "Resources"
                                              << "tvRes"
                                              << "модули" << false << "«модули»";
        QTest::newRow("passport of a resource") << "Resources"
                                                << "tvRes"
                                                << "Первый" << true << "«Первый»";
    }
    void everyTreeOffersWhatHasAKeyAndTheHistoryOfItsRow() {
        QFETCH(QString, module);
        QFETCH(QString, tree);
        QFETCH(QString, row);
        QFETCH(bool, byPassport);
        QFETCH(QString, named);
        Fixture fixture;
        fixture.showModule(qPrintable(module));
        QTreeView* view = fixture.at(qPrintable(tree), row);
        if (byPassport) {
            view = fixture.passport(qPrintable(module));
            QTRY_VERIFY(view->model()->rowCount() > 0);
            view->setCurrentIndex(view->model()->index(0, 0));
        }
        const QStringList inMenus = fixture.keysInMenus();
        QStringList bare;
        QVERIFY(openContextMenu(*view, [&](QMenu& menu) {
            for (const QAction* action : entriesOf(menu))
                if (action->shortcut().isEmpty() ||
                    !inMenus.contains(action->shortcut().toString()))
                    bare << action->text();
        }));
        QCOMPARE(bare, QStringList());
        QVERIFY(chooseInContextMenu(*view, "История строки"));
        QTRY_VERIFY(fixture.dock()->isVisible());
        QTRY_VERIFY2(fixture.scope().contains(named), qPrintable(fixture.scope()));
        QVERIFY(fixture.scope().startsWith("Строка"));
        // The keys do the same, in the tree and from the menu.
        fixture.child<app::HistoryPane>("historyPane")->clearFilters();
        fixture.dock()->close();
        view->setFocus(Qt::ShortcutFocusReason);
        QTest::keyClick(view, Qt::Key_F4, Qt::ShiftModifier);
        QTRY_VERIFY(fixture.dock()->isVisible());
        QTRY_VERIFY2(fixture.scope().contains(named), qPrintable(fixture.scope()));
    }

    void thePickersListOffersItToo() {
        Fixture fixture;
        fixture.showModule("Menu");
        QTreeView* menu = fixture.at("tvMenu", "г");
        menu->window()->activateWindow();
        menu->setFocus(Qt::ShortcutFocusReason);
        QTRY_VERIFY(menu->hasFocus());
        QTest::keyClick(menu, Qt::Key_F7);
        auto* picker = fixture.module("Menu")->findChild<CPopTemplate*>();
        QTRY_VERIFY(picker && picker->isVisible());
        auto* list = picker->findChild<QTreeView*>("tvObj");
        QTRY_VERIFY(Fixture::find(*list, "One").isValid());
        list->setCurrentIndex(Fixture::find(*list, "One"));
        QVERIFY(chooseInContextMenu(*list, "Где используется"));
        QTRY_VERIFY(fixture.child<QDockWidget>("usesDock")->isVisible());
        QVERIFY(chooseInContextMenu(*list, "История строки"));
        QTRY_VERIFY2(fixture.scope().contains("«Первый»"), qPrintable(fixture.scope()));
        fixture.dock()->close();
        list->setFocus();
        QTest::keyClick(list, Qt::Key_F4, Qt::ShiftModifier);
        QTRY_VERIFY(fixture.dock()->isVisible());
    }

    void theHistoryOfABranchHasAKey() {
        Fixture fixture;
        fixture.showModule("Menu");
        QTreeView* menu = fixture.at("tvMenu", "а");
        menu->window()->activateWindow();
        menu->setFocus(Qt::ShortcutFocusReason);
        QTRY_VERIFY(menu->hasFocus());
        QTest::keyClick(menu, Qt::Key_F4, Qt::ControlModifier | Qt::ShiftModifier);
        QTRY_VERIFY2(fixture.scope().startsWith("Внутри"), qPrintable(fixture.scope()));
        QTRY_COMPARE(fixture.child<app::HistoryPane>("historyPane")->view()->model()->rowCount(),
                     3);
    }

    void theVersionsOfAFileHaveAKey() {
        Fixture fixture;
        fixture.showModule("Resources");
        QTreeView* tree = fixture.view("tvRes");
        QTRY_VERIFY(Fixture::find(*tree, "docs").isValid());
        const QModelIndex folder = Fixture::find(*tree, "docs");
        QTRY_VERIFY(tree->model()->rowCount(folder) > 0);
        tree->setCurrentIndex(tree->model()->index(0, 0, folder));
        tree->window()->activateWindow();
        tree->setFocus(Qt::ShortcutFocusReason);
        QTRY_VERIFY(tree->hasFocus());
        QTest::keyClick(tree, Qt::Key_H, Qt::ControlModifier);
        QTRY_VERIFY(fixture.child<app::VersionsDialog>("versionsDialog"));
        auto* list = fixture.child<QTreeWidget>("versionsList");
        QTRY_COMPARE(list->topLevelItemCount(), 1);
    }

    void whatHasNoContentsHasNoVersions() {
        Fixture fixture;
        fixture.showModule("Resources");
        const auto isOffered = [&](QTreeView* view) {
            bool on = false;
            if (!openContextMenu(*view, [&](QMenu& menu) {
                    for (const QAction* action : entriesOf(menu))
                        on = on || (action->text() == "Прежние версии…" && action->isEnabled());
                }))
                qFatal("no menu");
            return on;
        };
        QTreeView* tree = fixture.at("tvRes", "Первый"); // a module
        QVERIFY(!isOffered(tree));
        QTest::keyClick(tree, Qt::Key_H, Qt::ControlModifier);
        QVERIFY(!fixture.child<app::VersionsDialog>("versionsDialog"));
        const QModelIndex folder = Fixture::find(*tree, "docs");
        QTRY_VERIFY(tree->model()->rowCount(folder) > 0);
        tree->setCurrentIndex(tree->model()->index(0, 0, folder));
        QVERIFY(isOffered(tree));
    }

    void thePanesOpenTheirsByTheKeyToo() {
        Fixture fixture;
        const auto open = [&](const char* dock, const char* tree) {
            auto* view = fixture.child<QTreeView>(tree);
            fixture.client->window()->bringUp(fixture.child<QDockWidget>(dock));
            const auto isUp = [&] { return view->isVisible() && view->model()->rowCount() > 0; };
            if (!QTest::qWaitFor(isUp, 30000))
                qFatal("no rows");
            view->setCurrentIndex(view->model()->index(0, 0));
            return view;
        };
        QTreeView* problems = open("problemsDock", "problemsTree");
        QStringList offered;
        QVERIFY(openContextMenu(*problems, [&](QMenu& menu) {
            for (const QAction* action : entriesOf(menu))
                offered << action->text();
        }));
        QVERIFY2(offered.contains("Показать") && offered.contains("Исправить"),
                 qPrintable(offered.join(", ")));
        QVERIFY(chooseInContextMenu(*open("historyDock", "historyTree"), "История этой строки"));
        QTRY_VERIFY2(fixture.scope().startsWith("Строка"), qPrintable(fixture.scope()));
    }
};

QTEST_MAIN(TestContextMenus)
#include "tst_context_menus.moc"
