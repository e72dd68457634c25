// "Где используется": who opens a resource or bears an icon is listed where one asks, told in the
// passport, and named before something is deleted.
#include "apps/client/find/FindModel.h"
#include "tests/client/ContextMenus.h"
#include "tests/client/FindFixture.h"

#include "platform/mdx/MdxBuild.h"

#include <QAbstractItemModelTester>
#include <QDockWidget>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using namespace orvo;
using namespace orvo::test;
using app::FindModel;

namespace {

struct Fixture : FindFixture {
    Fixture() {
        beforeTheStart([this] {
            addModules(2);
            uses("e1", "Насос", "r1");
            // The tree ends at the first kind without its top folder.
            otherWrites(MDX_INSERT, {{"KeyLink", "rg"}, {"caption", "функции"}, {"type_", "2"}},
                        "MenuResourceFolder");
            otherWrites(MDX_INSERT,
                        {{"KeyLink", "rh"}, {"caption", "формы отображения"}, {"type_", "3"}},
                        "MenuResourceFolder");
            otherWrites(MDX_INSERT, {{"KeyLink", "gi"}, {"caption", "icons"}, {"type_", "4"}},
                        "MenuResourceFolder");
            const store::Status put = host.store().filePut({{"icons", "pump.png", "x", 1000.0}});
            if (!put.ok())
                qFatal("%s", put.text.c_str());
            otherWrites(MDX_UPDATE, {{"KeyLink", "a"}, {"ico", "pump.png"}});
        });
    }
    void uses(const char* key, const char* caption, const char* resource) {
        otherWrites(MDX_INSERT, {{"KeyLink", key},
                                 {"FolderKey", "desk"},
                                 {"parent", "a"},
                                 {"caption", caption},
                                 {"order_", "5000"},
                                 {"MenuResourceKey", resource}});
    }
    QTreeView* list() const { return child<QTreeView>("usesList"); }
    QString note() const { return child<QLabel>("usesNote")->text(); }
    bool isListed() const { return child<QDockWidget>("usesDock")->isVisible(); }
    /// Names and paths, a line a row.
    QStringList rows() const {
        QStringList all;
        for (int row = 0; row < list()->model()->rowCount(); ++row)
            all << list()->model()->index(row, FindModel::Name).data().toString() + '|' +
                       list()->model()->index(row, FindModel::Path).data().toString();
        return all;
    }
    /// As from the context menu of a row.
    void ask(const QString& table, const QString& key) const {
        QMenu menu;
        module("Menu")->m_app->addRecordActions(&menu, table, key);
        for (QAction* action : menu.actions())
            if (action->text().startsWith("Где используется"))
                action->trigger();
        QTRY_VERIFY(isListed());
    }
    QTreeView* resources() const { return view("tvRes"); }
    void choose(const QString& key) const {
        client->openFurther({"Resources"});
        QVERIFY(module("Resources")->ModShowRecord("MenuResource", key, {}));
        resources()->setFocus();
    }
    /// What a row of the passport says; null if there is no such row.
    QString passport(const QString& name) const {
        const auto* grid = module("Resources")->findChild<QTreeView*>("tvProp");
        const QModelIndexList found = grid->model()->match(
            grid->model()->index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchRecursive);
        return found.isEmpty() ? QString() : found.first().siblingAtColumn(1).data().toString();
    }
    /// All texts of the box that stands.
    QString box() const {
        const CPopMessageBox* box = module("Resources")->m_popMessageBox;
        QStringList all;
        if (box && !box->isHidden())
            for (const QLabel* label : box->findChildren<QLabel*>())
                all << label->text().remove(QChar(0x200B));
        return all.join('\n');
    }
    void press(const char* text) const {
        for (auto* button : module("Resources")->m_popMessageBox->findChildren<QPushButton*>())
            if (button->text() == text && !button->isHidden())
                button->click();
    }
    void addMoreModules(int last) {
        for (int i = 3; i <= last; ++i)
            otherWrites(MDX_INSERT,
                        {{"KeyLink", "r" + std::to_string(i)},
                         {"caption", "Тренд " + std::to_string(i)},
                         {"name_", "Trends" + std::to_string(i)},
                         {"type_", "1"},
                         {"MenuResourceFolderKey", "rf"}},
                        "MenuResource");
    }
    QString icon() {
        CMDArray rows;
        if (!host.store().fetchWhere("MenuResource", "name_", "pump.png", rows.array).ok())
            qFatal("not fetched");
        return textOf(rows.array, mdx::postedRecord(rows.array, 0), "KeyLink");
    }
};

} // namespace

class TestUses : public QObject {
    Q_OBJECT
private slots:
    void thePlacesAreListedAndEnterGoesThere() {
        Fixture fixture;
        const QAbstractItemModelTester tester(
            fixture.list()->model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
        fixture.ask("MenuResource", "r1");
        QTRY_COMPARE(fixture.rows(), QStringList{"Насос|КС-1 / а"});
        QCOMPARE(fixture.note(), QString("Модуль «Тренд 1»: 1 элемент меню на 1 рабочем столе."));
        QCOMPARE(QApplication::focusWidget(), fixture.list());
        QTest::keyClick(fixture.list(), Qt::Key_Return);
        QTRY_COMPARE(fixture.currentElement(), QString("Насос"));
        QStringList offered;
        QVERIFY(openContextMenu(*fixture.list(), [&](QMenu& menu) {
            for (const QAction* action : entriesOf(menu))
                offered << action->text();
        }));
        QCOMPARE(offered, QStringList("Показать"));
        fixture.ask("MenuResource", "r2");
        QTRY_COMPARE(fixture.note(), QString("Модуль «Тренд 2»: нигде не используется."));
        QCOMPARE(fixture.rows(), QStringList());
    }

    void theListFollowsWhatOthersDo() {
        Fixture fixture;
        fixture.ask("Menu", "e1"); // of an element: its resource
        QTRY_COMPARE(fixture.rows().size(), 1);
        fixture.uses("e0", "Агрегат", "r1");
        QTRY_COMPARE(fixture.rows(), QStringList({"Агрегат|КС-1 / а", "Насос|КС-1 / а"}));
        QCOMPARE(fixture.list()->currentIndex().data().toString(), QString("Насос"));
        fixture.otherWrites(MDX_DELETE, {{"KeyLink", "e1"}});
        QTRY_COMPARE(fixture.rows(), QStringList{"Агрегат|КС-1 / а"});
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "e0"}, {"MenuResourceKey", "r2"}});
        QTRY_COMPARE(fixture.rows(), QStringList());
    }

    void aPlaceThatHasGoneSaysSo() {
        Fixture fixture;
        fixture.ask("MenuResource", "r1");
        QTRY_COMPARE(fixture.rows().size(), 1);
        QVERIFY(fixture.host.write("Menu", MDX_DELETE, {{"KeyLink", "e1"}}) != 0);
        QTest::keyClick(fixture.list(), Qt::Key_Return); // no event has told of it
        QTRY_COMPARE(fixture.failure(), QString("Показать нечего: строки больше нет."));
    }

    void theKeyAsksInBothEditors() {
        Fixture fixture;
        fixture.choose("r1");
        QTest::keyClick(fixture.resources(), Qt::Key_F9);
        QTRY_COMPARE(fixture.rows().size(), 1);
        fixture.child<QDockWidget>("usesDock")->hide();
        fixture.client->openFurther({"Menu"});
        QVERIFY(fixture.module("Menu")->ModShowRecord("Menu", "e1", "desk"));
        fixture.view("tvMenu")->setFocus();
        QTest::keyClick(fixture.view("tvMenu"), Qt::Key_F9);
        QTRY_VERIFY(fixture.isListed());
        QTRY_COMPARE(fixture.rows(), QStringList{"Насос|КС-1 / а"});
    }

    void thePassportCountsThem() {
        Fixture fixture;
        fixture.choose("r1");
        QTRY_COMPARE(fixture.passport("в меню"), QString("1 элемент"));
        fixture.uses("e2", "Агрегат", "r1");
        QTRY_COMPARE(fixture.passport("в меню"), QString("2 элемента"));
        QCOMPARE(fixture.passport("рабочих столов"), QString("1"));
        fixture.choose("r2");
        QTRY_COMPARE(fixture.passport("в меню"), QString("не используется"));
        QVERIFY(fixture.module("Resources")->ModEditText().isEmpty());
    }

    void whoBearsAnIconIsNamedBeforeItIsDeleted() {
        Fixture fixture;
        fixture.choose(fixture.icon());
        QTRY_COMPARE(fixture.passport("в меню"), QString("1 элемент"));
        QTest::keyClick(fixture.resources(), Qt::Key_Delete);
        QTRY_VERIFY(fixture.box().contains("Используется: 1 элемент меню на 1 рабочем столе\n"
                                           "элемент меню «а» (КС-1)"));
        // What is said follows what others do while the question stands.
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "a"}, {"ico", ""}});
        QTRY_VERIFY(fixture.box().contains("В меню не используется."));
        fixture.press("Нет");
        QVERIFY(fixture.box().isEmpty());
    }

    void theRefusalNamesThePlacesAndListsThem() {
        Fixture fixture;
        fixture.choose("r1");
        QTest::keyClick(fixture.resources(), Qt::Key_Delete);
        QTRY_VERIFY(fixture.box().contains("элемент меню «Насос» (КС-1 / а)"));
        fixture.press("Да");
        QVERIFY(fixture.box().contains(
            "Выполнение операции невозможно, так как на ресурс есть ссылки из меню."));
        QTRY_VERIFY(fixture.box().contains("элемент меню «Насос» (КС-1 / а)"));
        QTRY_COMPARE(fixture.rows(), QStringList{"Насос|КС-1 / а"});
        QVERIFY(fixture.isListed());
        fixture.press("ОК");
        fixture.list()->setFocus();
        QTest::keyClick(fixture.list(), Qt::Key_Return);
        QTRY_COMPARE(fixture.currentElement(), QString("Насос"));
    }

    void aPersonsLocksAreListed() {
        Fixture fixture;
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "r1"}, {"UsersKey", "u1"}}, "MenuResource");
        QTest::keyClick(fixture.client->window(), Qt::Key_K, Qt::ControlModifier);
        auto* line = fixture.child<QLineEdit>("findText");
        keyClicks(line, "петров");
        QTRY_COMPARE(fixture.child<QTreeView>("findList")->model()->rowCount(), 1);
        QTest::keyClick(line, Qt::Key_F9);
        QTRY_COMPARE(fixture.rows(), QStringList{"Тренд 1|модули"});
        QVERIFY2(fixture.note().endsWith("1 ресурс."), qPrintable(fixture.note()));
    }

    void whatAPersonLocksIsAskedInTheMenuThatAKeyOpens() {
        Fixture fixture;
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "r1"}, {"UsersKey", "u1"}}, "MenuResource");
        QTest::keyClick(fixture.client->window(), Qt::Key_K, Qt::ControlModifier);
        auto* line = fixture.child<QLineEdit>("findText");
        keyClicks(line, "петров");
        QTRY_COMPARE(fixture.child<QTreeView>("findList")->model()->rowCount(), 1);
        QVERIFY(chooseInContextMenu(*line, "Что заблокировано"));
        QTRY_COMPARE(fixture.rows(), QStringList{"Тренд 1|модули"});
        QCOMPARE(fixture.note(), QString("Петров Пётр (petrov): заблокирован 1 ресурс."));
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "r1"}, {"UsersKey", ""}}, "MenuResource");
        QTRY_COMPARE(fixture.note(), QString("Петров Пётр (petrov): ничего не заблокировано."));
    }

    void theLogIsSearchedByTheKeyUntilEsc() {
        Fixture fixture;
        app::LogPane* log = fixture.client->window()->logPane();
        log->clear();
        log->add(app::LogInformation, "Учёт", "Насос");
        log->add(app::LogError, "Запись", "Кран");
        log->setFocus();
        QTest::keyClick(log, Qt::Key_F, Qt::ControlModifier);
        QTRY_COMPARE(QApplication::focusWidget()->objectName(), QString("logText"));
        keyClicks(QApplication::focusWidget(), "насос учет");
        QVERIFY(!log->topLevelItem(0)->isHidden());
        QVERIFY(log->topLevelItem(1)->isHidden());
        log->add(app::LogError, "Запись", "Кран");
        QVERIFY(log->topLevelItem(2)->isHidden());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QCOMPARE(QApplication::focusWidget(), log);
        QVERIFY(!log->topLevelItem(1)->isHidden());
        QVERIFY(!fixture.child<QWidget>("logText")->isVisible());
    }

    void theKeyAsksFromThePassportToo() {
        Fixture fixture;
        fixture.choose("r1");
        auto* grid = fixture.module("Resources")->findChild<QTreeView*>("tvProp");
        grid->setFocus();
        QTest::keyClick(grid, Qt::Key_F9);
        QTRY_VERIFY(fixture.isListed());
        QTRY_COMPARE(fixture.rows(), QStringList{"Насос|КС-1 / а"});
    }

    void theRowThatIsAskedAboutStaysInSight() {
        Fixture fixture;
        fixture.beforeTheStart([&] { fixture.addMoreModules(60); });
        fixture.choose("r60");
        QTreeView* tree = fixture.resources();
        const auto isSeen = [&] {
            return tree->viewport()->rect().contains(tree->visualRect(tree->currentIndex()));
        };
        tree->scrollTo(tree->currentIndex(), QAbstractItemView::PositionAtBottom);
        QVERIFY(isSeen());
        QTest::keyClick(tree, Qt::Key_F9);
        QTRY_VERIFY(fixture.isListed());
        QTRY_VERIFY(isSeen());
    }

    void whereNothingIsUsedNothingIsOffered() {
        Fixture fixture;
        QMenu menu;
        fixture.module("Menu")->m_app->addRecordActions(&menu, "MenuFolder", "desk");
        for (const QAction* action : menu.actions())
            QVERIFY(!action->text().startsWith("Где"));
    }
};

QTEST_MAIN(TestUses)

#include "tst_uses.moc"
