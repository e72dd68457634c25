// Editors and forms that were taken out of the tabs of the client's window.
#include "apps/client/ModuleTabs.h"
#include "apps/client/PageDocks.h"
#include "tests/client/RunningClient.h"
#include "tests/menu/WindowHands.h"

#include <QComboBox>
#include <QDockWidget>
#include <QLineEdit>
#include <QMenuBar>

using namespace orvo;
using namespace orvo::test;
using app::PageDocks;

namespace {

struct Fixture : RunningClient {
    Fixture() { activate(); }
    void activate() const {
        client->window()->resize(1300, 800);
        client->window()->activateWindow();
        if (!QTest::qWaitForWindowActive(client->window()))
            qFatal("not active");
    }
    app::ModuleTabs& tabs() const { return *client->window()->tabs(); }
    PageDocks& docks() const { return client->window()->pageDocks(); }
    QDockWidget* dock(const char* editor) const {
        return child<QDockWidget>(QByteArray("page ") + editor);
    }
    QAction* beside() const { return child<QAction>("client_beside"); }
    QAction* ownWindow() const { return child<QAction>("client_ownWindow"); }
    void takeOut(const char* editor, PageDocks::Place place) const {
        docks().takeOut(module(editor), place);
        QTRY_VERIFY(module(editor)->isVisible());
    }
    template <class T>
    T* child(const QByteArray& name) const {
        return client->window()->findChild<T*>(QString::fromLatin1(name));
    }
    /// An open edit in both editors: another name for the current row.
    void editInBoth() const {
        for (const char* editor : {"Menu", "Resources"}) {
            QTreeView* tree = view(editor == QByteArray("Menu") ? "tvMenu" : "tvRes");
            tree->setCurrentIndex(rowOf(tree, editor == QByteArray("Menu") ? "г" : "Узлы"));
            focus(tree);
            QTest::keyClick(tree, Qt::Key_F2);
            auto* line = qobject_cast<QLineEdit*>(QApplication::focusWidget());
            if (!line)
                qFatal("no line to type into");
            line->selectAll();
            typeText(line, "новое");
            QTest::keyClick(line, Qt::Key_Return);
            if (!isEdited(editor))
                qFatal("no open edit");
        }
    }
    /// A form with one file, which anybody has stored.
    void putForm(const char* name) {
        int kind = 0;
        for (const char* top : {"модули", "функции", "формы отображения"})
            otherWrites(MDX_INSERT,
                        {{"KeyLink", "top" + std::to_string(++kind)},
                         {"type_", std::to_string(kind)},
                         {"caption", top}},
                        "MenuResourceFolder");
        Module uploader(&host.app);
        CToolFormPut tool(&uploader);
        tool.AddFile(name, "text", 4, 1);
        tool.Perform(false);
    }
    static void focus(QWidget* part) {
        part->window()->activateWindow();
        part->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), part);
    }
    bool isEdited(const char* editor) const { return !module(editor)->ModEditText().isEmpty(); }
    static QModelIndex rowOf(const QTreeView* tree, const QString& text) {
        const QModelIndexList found =
            tree->model()->match(tree->model()->index(0, 0), Qt::DisplayRole, text, 1,
                                 Qt::MatchExactly | Qt::MatchRecursive);
        return found.value(0);
    }
    QString tabNames() const {
        QStringList names;
        for (int i = 0; i < tabs().count(); ++i)
            names << tabs().tabText(i);
        return names.join(", ");
    }
};

} // namespace

class TestPageDocks : public QObject {
    Q_OBJECT
private slots:
    void aKeyPutsAnEditorBesideTheOtherAndBack() {
        Fixture fixture;
        fixture.view("tvMenu")->setFocus();
        QTest::keyClick(fixture.view("tvMenu"), Qt::Key_F11);
        QTRY_VERIFY(fixture.dock("Menu") && fixture.dock("Menu")->isVisible());
        QCOMPARE(fixture.tabNames(), QString("Редактор ресурсов"));
        QVERIFY(fixture.module("Menu")->isVisible() && fixture.module("Resources")->isVisible());
        QVERIFY(!fixture.dock("Menu")->isFloating());
        QCOMPARE(fixture.dock("Menu")->windowTitle(), QString("Редактор меню"));
        QVERIFY(fixture.module("Menu")->isAncestorOf(QApplication::focusWidget()));
        QVERIFY(fixture.beside()->isChecked());
        QVERIFY(!fixture.ownWindow()->isChecked());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F11);
        QTRY_COMPARE(fixture.tabNames(), QString("Редактор меню, Редактор ресурсов"));
        QTRY_VERIFY(!fixture.dock("Menu"));
        QVERIFY(fixture.module("Menu")->isVisible());
        QVERIFY(fixture.module("Menu")->isAncestorOf(QApplication::focusWidget()));
        QVERIFY(!fixture.beside()->isChecked());
    }

    void namesCanBeReadInANarrowEditorTheFirstTime() {
        Fixture fixture;
        fixture.takeOut("Menu", PageDocks::Place::Beside);
        QTRY_VERIFY(fixture.view("tvRes")->viewport()->width() < 600);
        QTRY_COMPARE(fixture.view("tvRes")->columnWidth(0), 220);
    }

    void theCrossOfItsWindowPutsAnEditorBackIntoTheTabs() {
        Fixture fixture;
        fixture.takeOut("Resources", PageDocks::Place::OwnWindow);
        QVERIFY(fixture.dock("Resources")->isWindow());
        QVERIFY(fixture.ownWindow()->isChecked());
        fixture.takeOut("Resources", PageDocks::Place::Beside);
        QVERIFY(!fixture.dock("Resources")->isWindow());
        fixture.takeOut("Resources", PageDocks::Place::OwnWindow);
        fixture.dock("Resources")->close();
        QTRY_COMPARE(fixture.tabNames(), QString("Редактор меню, Редактор ресурсов"));
        QCOMPARE(fixture.client->modules().modules(client::ModuleState::Running).size(), size_t(2));
    }

    void theKeysOfTheWindowWorkInAWindowOfItsOwn() {
        Fixture fixture;
        fixture.renames("d", "д");
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) д"));
        QTreeView* menu = fixture.view("tvMenu");
        menu->setFocus();
        menu->setCurrentIndex(menu->model()->index(1, 0, menu->model()->index(0, 0)));
        QAction* remove = fixture.module("Menu")->findChild<QAction*>("actDeleteElem");
        QTRY_VERIFY(remove->isEnabled());
        QTest::keyClick(menu, Qt::Key_F11, Qt::ShiftModifier);
        QTRY_VERIFY(fixture.dock("Menu") && fixture.dock("Menu")->isActiveWindow());
        QCOMPARE(QApplication::focusWidget(), menu);
        QCOMPARE(fixture.dock("Menu")->windowType(), Qt::Window);
        QTRY_VERIFY(remove->isEnabled());
        QTest::keyClick(menu, Qt::Key_Z, Qt::ControlModifier);
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
        QTest::keyClick(menu, Qt::Key_F11, Qt::ShiftModifier);
        QTRY_COMPARE(fixture.tabNames(), QString("Редактор меню, Редактор ресурсов"));
        QTRY_COMPARE(QApplication::focusWidget(), menu);
    }

    void theKeysOfAnEditorWorkWhereverItIs_data() {
        QTest::addColumn<bool>("inItsWindow");
        QTest::newRow("beside the other") << false;
        QTest::newRow("in its own window") << true;
    }
    void theKeysOfAnEditorWorkWhereverItIs() {
        QFETCH(bool, inItsWindow);
        Fixture fixture;
        fixture.stop();
        for (const char* kind : {"1", "2", "3", "4"})
            fixture.otherWrites(
                MDX_INSERT,
                {{"KeyLink", kind}, {"type_", kind}, {"caption", *kind == '1' ? "Узлы" : kind}},
                "MenuResourceFolder");
        fixture.add("e", "новая", {});
        fixture.start();
        fixture.activate();
        // With the other one in front the menus have its entries while the pane is made.
        fixture.takeOut("Menu",
                        inItsWindow ? PageDocks::Place::OwnWindow : PageDocks::Place::Beside);
        fixture.editInBoth();
        QTreeView* menu = fixture.view("tvMenu");
        QTreeView* resources = fixture.view("tvRes");
        Fixture::focus(menu);
        QTest::keyClick(menu, Qt::Key_S, Qt::ControlModifier);
        QTRY_VERIFY(!fixture.isEdited("Menu"));
        QVERIFY(fixture.isEdited("Resources"));
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) новое новая"));

        QTest::keyClick(menu, Qt::Key_F, Qt::ControlModifier);
        auto* text = menu->findChild<QLineEdit*>("treeSearchText");
        QVERIFY(text && text->isVisible());
        QTRY_COMPARE(QApplication::focusWidget(), text);
        auto* column = text->parentWidget()->findChild<QComboBox*>();
        const int before = column->currentIndex();
        QTest::keyClick(text, Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(column->currentIndex() != before);
        column->setCurrentIndex(before);
        typeText(text, "нов");
        const QModelIndex found = menu->currentIndex();
        QTest::keyClick(text, Qt::Key_F3);
        QVERIFY(menu->currentIndex() != found);

        Fixture::focus(resources);
        QTest::keyClick(resources, Qt::Key_S, Qt::ControlModifier);
        QTRY_VERIFY(!fixture.isEdited("Resources"));
        Fixture::focus(resources);
        QTest::keyClick(resources, Qt::Key_F, Qt::ControlModifier);
        auto* search = qobject_cast<QLineEdit*>(QApplication::focusWidget());
        QVERIFY(search && fixture.module("Resources")->isAncestorOf(search));
    }

    void aFormThatIsOpenedHasTheKeysOfTheWindow() {
        Fixture fixture;
        fixture.stop();
        fixture.putForm("form");
        fixture.start();
        fixture.activate();
        QTreeView* tree = fixture.view("tvRes");
        fixture.client->window()->showEditor("Resources");
        const QModelIndex folder = fixture.rowOf(tree, "формы отображения");
        QVERIFY(folder.isValid());
        tree->setCurrentIndex(tree->model()->index(0, 0, folder));
        fixture.focus(tree);
        QTest::keyClick(tree, Qt::Key_Return, Qt::ControlModifier);
        QTRY_COMPARE(fixture.tabNames(), QString("Редактор меню, Редактор ресурсов, Форма — form"));
        QWidget* page = fixture.tabs().currentWidget();
        QTRY_VERIFY(page->isAncestorOf(QApplication::focusWidget()));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_W, Qt::ControlModifier);
        QTRY_COMPARE(fixture.tabNames(), QString("Редактор меню, Редактор ресурсов"));
        QTRY_COMPARE(QApplication::focusWidget(), tree);
    }

    void whoClosesAFormComesBackToTheEditorThatOpenedIt_data() {
        QTest::addColumn<bool>("inAWindow");
        QTest::newRow("in a tab") << false;
        QTest::newRow("in a window of its own") << true;
    }
    void whoClosesAFormComesBackToTheEditorThatOpenedIt() {
        QFETCH(bool, inAWindow);
        Fixture fixture;
        fixture.putForm("form");
        fixture.client->window()->showEditor("Menu");
        fixture.focus(fixture.view("tvMenu"));
        const void* block[3] = {nullptr, "RUN_FILE", "form"};
        constexpr int runFile = 64;
        fixture.module("Menu")->doCall(runFile, block);
        QPointer<QWidget> form = fixture.tabs().currentWidget();
        QTRY_VERIFY(form->isAncestorOf(QApplication::focusWidget()));
        if (inAWindow) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_F11, Qt::ShiftModifier);
            QTRY_VERIFY(form->window() != fixture.client->window());
            QTRY_VERIFY(form->isAncestorOf(QApplication::focusWidget()));
        }
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_W, Qt::ControlModifier);
        QTRY_VERIFY(!form);
        QTRY_COMPARE(QApplication::focusWidget(), fixture.view("tvMenu"));
    }

    void theTabsHideWhileAllPagesAreOut() {
        Fixture fixture;
        fixture.takeOut("Menu", PageDocks::Place::Beside);
        fixture.takeOut("Resources", PageDocks::Place::Beside);
        QVERIFY(fixture.tabs().isHidden());
        fixture.tabs().addPage(new QTreeView, "Схема");
        QTRY_VERIFY(fixture.tabs().isVisible());
        QWidget* page = fixture.tabs().currentWidget();
        fixture.docks().takeOut(page, PageDocks::Place::OwnWindow);
        QVERIFY(fixture.tabs().isHidden());
        // A page that is no editor is asked to close.
        QSignalSpy asked(&fixture.tabs(), &app::ModuleTabs::pageCloseRequested);
        page->window()->close();
        QCOMPARE(asked.count(), 1);
        delete page;
        QTRY_COMPARE(fixture.client->window()->findChildren<QDockWidget*>("page #1").size(), 0);
        fixture.docks().putBack(fixture.module("Menu"));
        QVERIFY(fixture.tabs().isVisible());
    }

    void theMenusShowWhatTheEditorWithTheKeyboardOffers() {
        Fixture fixture;
        fixture.takeOut("Resources", PageDocks::Place::Beside);
        const auto offers = [&](const char* editor) {
            const QList<QAction*> entries = fixture.client->window()->editMenu()->actions();
            const QList<QAction*> own = fixture.module(editor)->findChildren<QAction*>();
            return std::any_of(entries.begin(), entries.end(),
                               [&](QAction* entry) { return own.contains(entry); });
        };
        QVERIFY(offers("Resources") && !offers("Menu"));
        fixture.view("tvMenu")->setFocus();
        QTRY_VERIFY(offers("Menu"));
        QVERIFY(!offers("Resources"));
        // In a pane that belongs to both the keyboard leaves the menus as they are.
        QTest::keyClick(fixture.client->window(), Qt::Key_F4);
        QTRY_VERIFY(fixture.child<QTreeView>("historyTree")->isVisible());
        QVERIFY(offers("Menu"));
        fixture.view("tvRes")->setFocus();
        QTRY_VERIFY(offers("Resources"));
    }

    void f6GoesThroughAllThatIsShown() {
        Fixture fixture;
        fixture.takeOut("Resources", PageDocks::Place::OwnWindow);
        fixture.client->window()->showPage(fixture.module("Menu"));
        fixture.view("tvDesck")->setFocus();
        QStringList passed;
        for (int i = 0; i < 6; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_F6);
            QTest::qWait(1);
            passed << QApplication::focusWidget()->objectName();
        }
        QCOMPARE(passed.mid(0, 4).join(' '), QString("tvMenu tvProp tvRes tvProp"));
        QVERIFY2(passed.contains("tvDesck"), qPrintable(passed.join(' ')));
    }

    void whatIsToBeShownComesToTheFrontWhereItIs() {
        Fixture fixture;
        fixture.takeOut("Resources", PageDocks::Place::OwnWindow);
        fixture.view("tvMenu")->setFocus();
        fixture.client->window()->showEditor("Resources");
        QTRY_VERIFY(fixture.module("Resources")->isAncestorOf(QApplication::focusWidget()));
        QCOMPARE(fixture.tabNames(), QString("Редактор меню"));
        fixture.client->window()->showEditor("Menu");
        QTRY_VERIFY(fixture.module("Menu")->isAncestorOf(QApplication::focusWidget()));
    }

    void modulesThatAreOpenedAnewStandWhereTheyStood() {
        Fixture fixture;
        fixture.takeOut("Menu", PageDocks::Place::Beside);
        fixture.takeOut("Resources", PageDocks::Place::OwnWindow);
        const QPointer<COrvoCliMod> before = fixture.module("Menu");
        QTRY_COMPARE(before->width(), fixture.client->window()->width()); // nothing is beside it
        fixture.child<QAction>("client_reopen")->trigger();
        QTRY_VERIFY(!before);
        QTRY_VERIFY(fixture.dock("Menu")->widget() == fixture.module("Menu"));
        QTRY_VERIFY(fixture.module("Menu")->isVisible());
        QTRY_COMPARE(fixture.module("Menu")->width(), fixture.client->window()->width());
        QVERIFY(fixture.dock("Resources")->isFloating());
        QCOMPARE(fixture.dock("Resources")->widget(), fixture.module("Resources"));
        QVERIFY(fixture.tabs().isHidden());
        QCOMPARE(fixture.dock("Menu")->windowTitle(), QString("Редактор меню"));
    }

    void theNextStartFindsThemWhereTheyWere() {
        Fixture fixture;
        fixture.takeOut("Resources", PageDocks::Place::Beside);
        fixture.stop();
        fixture.start();
        QTRY_VERIFY(fixture.dock("Resources") && fixture.dock("Resources")->isVisible());
        QVERIFY(!fixture.dock("Resources")->isFloating());
        fixture.takeOut("Resources", PageDocks::Place::OwnWindow);
        fixture.stop();
        fixture.start();
        QTRY_VERIFY(fixture.dock("Resources") && fixture.dock("Resources")->isVisible());
        QVERIFY(fixture.dock("Resources")->isFloating());
        QCOMPARE(fixture.tabNames(), QString("Редактор меню"));
        fixture.docks().putBack(fixture.module("Resources"));
        fixture.stop();
        fixture.start();
        QCOMPARE(fixture.tabNames(), QString("Редактор меню, Редактор ресурсов"));
    }
};

QTEST_MAIN(TestPageDocks)
#include "tst_page_docks.moc"
