// Where the keyboard goes in the client's window, that one sees where it is, and what small things
// the window does with room.
#include "apps/client/FocusMark.h"
#include "apps/client/PageDocks.h"
#include "apps/client/history/HistoryModel.h"
#include "tests/client/RunningClient.h"

#include <QDockWidget>
#include <QHeaderView>
#include <QImage>
#include <QLineEdit>
#include <QPointer>
#include <QScrollBar>
#include <QTabWidget>
#include <QToolButton>

#include <algorithm>
#include <utility>

using namespace orvo;
using namespace orvo::test;

namespace {

struct Fixture : RunningClient {
    bool show(const char* editor) {
        client->window()->activateWindow();
        if (!QTest::qWaitForWindowActive(client->window()))
            return false;
        client->window()->showPage(module(editor));
        return true;
    }
    QTreeView* tree(const char* editor, const char* name) const {
        return module(editor)->findChild<QTreeView*>(QString::fromLatin1(name));
    }
    /// A part by its name, a button by its text, a value of a passport by its row.
    static QString nameOf(const QWidget* focus) {
        for (const QWidget* up = focus; up; up = up->parentWidget())
            if (const auto* passport = qobject_cast<const QTreeView*>(up);
                passport && passport->objectName() == "tvProp")
                return "tvProp:" + passport->currentIndex().siblingAtColumn(4).data().toString();
        if (const auto* button = qobject_cast<const QToolButton*>(focus);
            button && !button->text().isEmpty())
            return button->text();
        if (!focus->accessibleName().isEmpty() && !qobject_cast<const QTreeView*>(focus))
            return focus->accessibleName();
        return focus->objectName().isEmpty() ? focus->metaObject()->className()
                                             : focus->objectName();
    }
    /// What Tab comes to, until it is back at the first.
    static QString walk(QWidget* first, Qt::Key key) {
        first->setFocus(Qt::TabFocusReason);
        QStringList names;
        for (int i = 0; i < 40; ++i) {
            QWidget* focus = QApplication::focusWidget();
            names << nameOf(focus);
            QTest::keyClick(focus, key);
            if (QApplication::focusWidget() == first)
                break;
        }
        return names.join(", ");
    }
};

/// How many pixels along the edges of a part have the colour of the frame.
int framePixels(QWidget* part) {
    const QImage image = part->grab().toImage();
    int count = 0;
    for (int x = 0; x < image.width(); ++x)
        for (int y : {0, image.height() - 1})
            count += image.pixelColor(x, y) == QColor(0x2f, 0x6f, 0xb0) ? 1 : 0;
    return count;
}

} // namespace

class TestFocus : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { app::FocusMark::follow(); }

    void tabGoesThroughTheMenuEditorFromLeftToRight() {
        Fixture fixture;
        QVERIFY(fixture.show("Menu"));
        fixture.client->window()->resize(1600, 900);
        QTreeView* menu = fixture.tree("Menu", "tvMenu");
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
        menu->setCurrentIndex(menu->model()->index(0, 0, menu->model()->index(0, 0)));
        QTreeView* first = fixture.tree("Menu", "tvDesck");
        QCOMPARE(Fixture::walk(first, Qt::Key_Tab),
                 QString("tvDesck, tvMenu, tvProp:name, tvProp:icon, tvProp:separator, Создать, "
                         "Новый элемент, qt_tabwidget_tabbar, logPane, QTabBar"));
        QCOMPARE(Fixture::walk(first, Qt::Key_Backtab),
                 QString("tvDesck, QTabBar, logPane, qt_tabwidget_tabbar, Новый элемент, Создать, "
                         "tvProp:separator, tvProp:icon, tvProp:name, tvProp:name, tvMenu"));
    }

    void tabGoesThroughTheResourceEditorFromLeftToRight() {
        Fixture fixture;
        QVERIFY(fixture.show("Resources"));
        fixture.client->window()->resize(1600, 900);
        QTreeView* first = fixture.tree("Resources", "tvRes");
        QCOMPARE(Fixture::walk(first, Qt::Key_Tab),
                 QString("tvRes, tvProp:caption, Создать, Поиск в каталоге, Следующее найденное, "
                         "Предыдущее найденное, qt_tabwidget_tabbar, logPane, QTabBar"));
        QCOMPARE(Fixture::walk(first, Qt::Key_Backtab),
                 QString("tvRes, QTabBar, logPane, qt_tabwidget_tabbar, Предыдущее найденное, "
                         "Следующее найденное, Поиск в каталоге, Создать, tvProp:caption"));
    }

    void tabPassesThePanesThatAreBehindOthers() {
        Fixture fixture;
        QVERIFY(fixture.show("Menu"));
        fixture.client->window()->resize(1600, 900);
        const auto isInFront = [&](const char* tree) {
            return !fixture.child<QTreeView>(tree)->viewport()->visibleRegion().isEmpty();
        };
        QTest::keyClick(fixture.client->window(), Qt::Key_F4);
        QTRY_VERIFY(isInFront("historyTree"));
        QTest::keyClick(fixture.client->window(), Qt::Key_F8);
        QTRY_VERIFY(isInFront("problemsTree"));
        QVERIFY(!isInFront("historyTree"));
        for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Backtab}) {
            fixture.tree("Menu", "tvDesck")->setFocus();
            bool inFront = false;
            for (int i = 0; i < 40; ++i) {
                QTest::keyClick(QApplication::focusWidget(), key);
                const QWidget* focus = QApplication::focusWidget();
                const QPoint at = focus->mapTo(focus->window(), focus->rect().center());
                QVERIFY2(focus->window()->rect().contains(at), qPrintable(Fixture::nameOf(focus)));
                inFront = inFront || focus->objectName() == "problemsTree";
            }
            QVERIFY(inFront);
        }
    }

    void theTreeThatOneLeftHasTheFocusAtTheStart() {
        Fixture fixture;
        const auto focused = [&] {
            fixture.client->window()->activateWindow();
            return QTest::qWaitForWindowActive(fixture.client->window())
                       ? Fixture::nameOf(QApplication::focusWidget())
                       : QString("no window");
        };
        QCOMPARE(focused(), QString("tvDesck"));
        fixture.tree("Menu", "tvMenu")->setFocus();
        fixture.stop();
        fixture.start();
        QCOMPARE(focused(), QString("tvMenu"));
        fixture.client->window()->showPage(fixture.module("Resources"));
        fixture.stop();
        fixture.start();
        QCOMPARE(focused(), QString("tvRes"));
    }

    void whatHadTheFocusHasItAfterTheModulesAreReopened_data() {
        QTest::addColumn<QString>("editor");
        QTest::addColumn<QString>("part");
        QTest::newRow("desktops") << "Menu"
                                  << "tvDesck";
        QTest::newRow("elements") << "Menu"
                                  << "tvMenu";
        QTest::newRow("passport") << "Menu"
                                  << "tvProp";
        QTest::newRow("resources") << "Resources"
                                   << "tvRes";
        QTest::newRow("history") << "Menu"
                                 << "historyTree";
        QTest::newRow("elements beside the resources") << "Menu"
                                                       << "tvMenu";
    }
    void whatHadTheFocusHasItAfterTheModulesAreReopened() {
        QFETCH(QString, editor);
        QFETCH(QString, part);
        Fixture fixture;
        QVERIFY(fixture.show(qPrintable(editor)));
        QTreeView* menu = fixture.tree("Menu", "tvMenu");
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
        menu->setCurrentIndex(menu->model()->index(1, 0, menu->model()->index(0, 0)));
        if (QByteArray(QTest::currentDataTag()).contains("beside"))
            fixture.client->window()->pageDocks().takeOut(fixture.module("Menu"),
                                                          app::PageDocks::Place::Beside);
        if (part == "historyTree")
            QTest::keyClick(fixture.client->window(), Qt::Key_F4);
        else
            fixture.tree(qPrintable(editor), qPrintable(part))->setFocus();
        const auto focused = [] {
            const QWidget* focus = QApplication::focusWidget();
            return focus ? focus->objectName() : QString("none");
        };
        QTRY_COMPARE(focused(), part);
        const QPointer<COrvoCliMod> before(fixture.module("Menu"));
        QTest::keyClick(fixture.client->window(), Qt::Key_R, Qt::ControlModifier);
        QTRY_VERIFY(!before);
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
        QTRY_COMPARE(focused(), part);
        QCOMPARE(fixture.view("tvMenu")->currentIndex().data().toString(), QString("г"));
    }

    void theCommandsOfTheRowAreOnAgainAfterADialog() {
        Fixture fixture;
        fixture.writes(
            MDX_INSERT,
            {{{"KeyLink", "n"}, {"FolderKey", "desk"}, {"caption", "н"}, {"order_", "5000"}}});
        fixture.add("m", "м", "n"); // so the undo asks
        QVERIFY(fixture.show("Menu"));
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г н(м)"));
        QTreeView* menu = fixture.view("tvMenu");
        menu->setFocus();
        menu->setCurrentIndex(menu->model()->index(1, 0, menu->model()->index(0, 0)));
        QAction* remove = fixture.module("Menu")->findChild<QAction*>("actDeleteElem");
        QVERIFY(remove->isEnabled());
        QTest::keyClick(menu, Qt::Key_Z, Qt::ControlModifier);
        const auto dialog = [&] { return fixture.child<QWidget>("revertDialog"); };
        QTRY_VERIFY(dialog() && dialog()->isVisible());
        QTRY_VERIFY(!remove->isEnabled());
        QTest::keyClick(dialog(), Qt::Key_Escape);
        QTRY_VERIFY(!dialog() || !dialog()->isVisible());
        fixture.client->window()->activateWindow();
        QTRY_COMPARE(QApplication::focusWidget(), menu);
        QTRY_VERIFY(remove->isEnabled());
    }

    void keysGoBetweenTheEditorAndThePaletteBesideIt() {
        Fixture fixture;
        QVERIFY(fixture.show("Menu"));
        QTreeView* menu = fixture.view("tvMenu");
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
        menu->setFocus();
        QTest::keyClick(menu, Qt::Key_F7);
        auto* palette = fixture.module("Menu")->findChild<QWidget*>("CPopObjectList");
        QVERIFY(palette);
        palette->activateWindow();
        QTRY_COMPARE(QApplication::activeWindow(), palette);
        const auto press = [](Qt::Key key, Qt::KeyboardModifiers with = Qt::NoModifier) {
            QTest::keyClick(QApplication::focusWidget(), key, with);
        };
        const auto isAt = [](const QWidget* part) {
            return QTest::qWaitFor([&] { return QApplication::focusWidget() == part; });
        };
        auto* list = palette->findChild<QTreeView*>("tvObj");
        QTreeView* passport = fixture.tree("Menu", "tvProp");
        for (const bool covers : {false, true}) { // the passport
            palette->move(covers ? passport->mapToGlobal(QPoint())
                                 : menu->window()->frameGeometry().topRight());
            palette->resize(passport->size().expandedTo(palette->minimumSize()));
            press(Qt::Key_F6, Qt::ShiftModifier);
            QVERIFY(isAt(menu));
            press(Qt::Key_F6); // the other window becomes the active one
            QVERIFY(isAt(list));
            press(Qt::Key_F6);
            QVERIFY(isAt(covers ? fixture.child<QWidget>("logPane") : passport));
            press(Qt::Key_F6, Qt::ShiftModifier);
            QVERIFY(isAt(list));
        }
        QVERIFY(palette->isVisible());
        // What finds in the whole store is at hand there too, and leads back.
        press(Qt::Key_K, Qt::ControlModifier);
        QVERIFY(isAt(fixture.child<QWidget>("findText")));
        QVERIFY(!palette->isVisible()); // what is found can be seen
        press(Qt::Key_Escape);
        QVERIFY(isAt(list));
        press(Qt::Key_F7);
        QVERIFY(!palette->isVisible());
        fixture.client->window()->activateWindow();       // as a window manager does
        QVERIFY(isAt(fixture.child<QWidget>("logPane"))); // from where one went to the palette
    }

    void aTreeWithoutACurrentRowTakesItsFirst() {
        Fixture fixture;
        QVERIFY(fixture.show("Menu"));
        QTreeView* desktops = fixture.tree("Menu", "tvDesck");
        QTreeView* menu = fixture.tree("Menu", "tvMenu");
        const auto isAtFirst = [](const QTreeView* tree) {
            const QModelIndex first = tree->model()->index(0, 0);
            return QApplication::focusWidget() == tree && first.isValid() &&
                   tree->currentIndex() == first && tree->selectionModel()->isSelected(first);
        };
        for (int round = 0; round < 2; ++round) { // Qt's view looks for a row once only
            desktops->setFocus();
            desktops->setCurrentIndex(desktops->model()->index(0, 0));
            fixture.openDesktop("КС-1");
            QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
            QVERIFY(!menu->currentIndex().isValid());
            QTest::keyClick(desktops, Qt::Key_F6);
            QVERIFY(isAtFirst(menu));
        }
        QTest::keyClick(menu, Qt::Key_Insert, Qt::ShiftModifier);
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г Новая папка"));
    }

    void aPaneThatIsClosedByItsKeyLeadsBackToWhereOneWas() {
        Fixture fixture;
        QVERIFY(fixture.show("Menu"));
        app::PageDocks& docks = fixture.client->window()->pageDocks();
        docks.takeOut(fixture.module("Menu"), app::PageDocks::Place::OwnWindow);
        QTreeView* menu = fixture.tree("Menu", "tvMenu");
        menu->window()->activateWindow();
        menu->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), menu);
        QTest::keyClick(menu, Qt::Key_F4);
        auto* history = fixture.child<QTreeView>("historyTree");
        QTRY_COMPARE(QApplication::focusWidget(), history);
        QTest::keyClick(history, Qt::Key_F4);
        QTRY_COMPARE(QApplication::focusWidget(), menu);
    }

    void theMenuBarLeavesTheFocusWhereItIs() {
        Fixture fixture;
        QVERIFY(fixture.show("Menu"));
        QTreeView* menu = fixture.tree("Menu", "tvMenu");
        menu->setFocus();
        QTest::keyClick(menu, Qt::Key_F10);
        auto* open = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        QVERIFY(open);
        QCOMPARE(fixture.client->window()->focusWidget(), menu);
        auto* stay = fixture.child<QAction>("actStay");
        while (open && !open->actions().contains(stay)) {
            QTest::keyClick(open, Qt::Key_Right);
            open = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        }
        QVERIFY(open);
        const bool wasOn = stay->isChecked();
        open->setActiveAction(stay);
        QTest::keyClick(open, Qt::Key_Return);
        QVERIFY(stay->isChecked() != wasOn);
        stay->setChecked(wasOn);
        QVERIFY(!QApplication::activePopupWidget());
        QCOMPARE(fixture.client->window()->focusWidget(), menu);
    }

    void theMenuTellsWhichPanesAreOpen() {
        Fixture fixture;
        QVERIFY(fixture.show("Menu"));
        app::MainWindow* window = fixture.client->window();
        const auto isChecked = [&](Qt::Key key) {
            for (const QAction* entry : window->viewMenu()->actions())
                if (entry->shortcut() == QKeySequence(key))
                    return entry->isCheckable() && entry->isChecked();
            return false;
        };
        for (const Qt::Key key : {Qt::Key_F4, Qt::Key_F8}) {
            QVERIFY(!isChecked(key));
            QTest::keyClick(window, key);
            QTRY_VERIFY(isChecked(key));
        }
        // Behind the other: the key brings it to the front.
        const QWidget* history = fixture.child<QTreeView>("historyTree")->viewport();
        QTRY_VERIFY(history->visibleRegion().isEmpty());
        QTest::keyClick(window, Qt::Key_F4);
        QTRY_VERIFY(!history->visibleRegion().isEmpty());
        QVERIFY(isChecked(Qt::Key_F4));
        QTest::keyClick(window, Qt::Key_F4);
        QTRY_VERIFY(!isChecked(Qt::Key_F4));
    }

    void thePreviewOpensAndClosesByKeys() {
        Fixture fixture;
        QVERIFY(fixture.show("Menu"));
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
        QTreeView* menu = fixture.tree("Menu", "tvMenu");
        menu->setFocus();
        const auto pane = [&] { return fixture.child<QDockWidget>("previewDock"); };
        const auto open = [&] {
            QTest::keyClick(menu, Qt::Key_F5);
            return QTest::qWaitFor([&] { return pane() && pane()->isVisible(); });
        };
        QVERIFY(open());
        const auto isInView = [&] {
            const QList<QAction*> entries = fixture.client->window()->viewMenu()->actions();
            return std::any_of(entries.begin(), entries.end(), [](const QAction* entry) {
                return entry->text().startsWith("Как у оператора") && entry->isChecked();
            });
        };
        QVERIFY(isInView());
        QTest::keyClick(menu, Qt::Key_F5);
        QTRY_VERIFY(!pane());
        QVERIFY(!isInView());
        QCOMPARE(QApplication::focusWidget(), menu);
        for (const auto& [key, with] :
             {std::pair(Qt::Key_F5, Qt::KeyboardModifiers()),
              std::pair(Qt::Key_W, Qt::KeyboardModifiers(Qt::ControlModifier))}) {
            QVERIFY(open());
            auto* list = pane()->findChild<QAbstractItemView*>("deskTree");
            QVERIFY(list);
            list->setFocus();
            QTRY_COMPARE(QApplication::focusWidget(), list);
            QTest::keyClick(list, key, with);
            QTRY_VERIFY(!pane());
            QTRY_COMPARE(QApplication::focusWidget(), menu);
        }
    }

    void escLeavesTheFieldByWhichAListIsSearched_data() {
        QTest::addColumn<QString>("list");
        QTest::addColumn<int>("opens");
        QTest::addColumn<bool>("hidesRows");
        QTest::newRow("desktops") << "tvDesck" << 0 << false;
        QTest::newRow("elements") << "tvMenu" << 0 << false;
        QTest::newRow("resources") << "tvRes" << 0 << false;
        QTest::newRow("palette") << "tvObj" << int(Qt::Key_F7) << false;
        QTest::newRow("log") << "logPane" << 0 << true;
        QTest::newRow("history") << "historyTree" << int(Qt::Key_F4) << true;
        QTest::newRow("problems") << "problemsTree" << int(Qt::Key_F8) << true;
    }
    /// One press, whatever was typed: rows that were hidden are shown again, and what was searched
    /// is still there for F3. The window of the list goes by the next press only.
    void escLeavesTheFieldByWhichAListIsSearched() {
        QFETCH(QString, list);
        QFETCH(int, opens);
        QFETCH(bool, hidesRows);
        Fixture fixture;
        QVERIFY(fixture.show(list == "tvRes" ? "Resources" : "Menu"));
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
        if (opens != 0) {
            fixture.view("tvMenu")->setFocus();
            QTest::keyClick(fixture.view("tvMenu"), Qt::Key(opens));
        }
        auto* view = fixture.child<QAbstractItemView>(qPrintable(list));
        QVERIFY(view);
        QTRY_VERIFY(view->isVisible());
        view->activateWindow();
        QTRY_COMPARE(QApplication::activeWindow(), view->window());
        view->setFocus(Qt::ShortcutFocusReason);
        QTest::keyClick(view, Qt::Key_F, Qt::ControlModifier);
        const QPointer<QLineEdit> field = qobject_cast<QLineEdit*>(QApplication::focusWidget());
        QVERIFY(field);
        QTest::keyClicks(field, "zz");
        QTest::keyClick(field, Qt::Key_Escape);
        QCOMPARE(QApplication::focusWidget(), view);
        QVERIFY(view->isVisible());
        QCOMPARE(field->text(), hidesRows ? QString() : QString("zz"));
        QTest::keyClick(view, Qt::Key_Escape);
        QCOMPARE(view->isVisible(), list != "tvObj");
    }

    void aFrameShowsWhichTreeHasTheFocus() {
        Fixture fixture;
        QVERIFY(fixture.show("Menu"));
        const QStringList names{"tvDesck", "tvMenu", "tvProp"};
        for (const QString& focused : names) {
            fixture.tree("Menu", qPrintable(focused))->setFocus();
            for (const QString& name : names) {
                QTreeView* tree = fixture.tree("Menu", qPrintable(name));
                QVERIFY2((framePixels(tree) > tree->width()) == (name == focused),
                         qPrintable(focused + ' ' + name));
            }
        }
    }

    void theColumnsOfTheLockAreSeenAtFirst() {
        Fixture fixture;
        fixture.client->window()->becomePicture(); // as wide as is said, whatever the screen
        fixture.client->window()->resize(1366, 900);
        QVERIFY(fixture.show("Resources"));
        const QTreeView* tree = fixture.tree("Resources", "tvRes");
        // With the bar for scrolling beside them, which comes with the first folders that are open,
        // and the last no wider than it is wanted.
        const int bar = tree->verticalScrollBar()->sizeHint().width();
        QVERIFY(!tree->verticalScrollBar()->isVisible());
        QHeaderView* header = tree->header();
        const auto wanted = [header] {
            header->setStretchLastSection(false);
            const int length = header->length();
            header->setStretchLastSection(true);
            return length;
        };
        QTRY_VERIFY(wanted() <= tree->viewport()->width() - bar);
        for (int column = 0; column < header->count(); ++column)
            if (!header->isSectionHidden(column))
                QVERIFY2(header->sectionSize(column) >= header->sectionSizeHint(column),
                         qPrintable(QString::number(column)));
    }

    void aNarrowPassportLeavesRoomForItsValues() {
        Fixture fixture;
        fixture.client->window()->resize(1024, 700);
        for (const char* editor : {"Menu", "Resources"}) {
            QVERIFY(fixture.show(editor));
            const QTreeView* passport = fixture.tree(editor, "tvProp");
            QTRY_VERIFY(passport->header()->sectionSize(1) >= passport->viewport()->width() / 3);
            QTRY_VERIFY(!passport->horizontalScrollBar()->isVisible());
        }
    }

    void thePassportsOfEditorsBesideEachOtherShowTheirValues() {
        Fixture fixture;
        fixture.client->window()->becomePicture();
        fixture.client->window()->resize(1600, 768);
        const auto fits = [](const QTreeView* passport) {
            return passport->header()->length() == passport->viewport()->width();
        };
        std::vector<QTreeView*> passports;
        for (const char* editor : {"Resources", "Menu"}) {
            QVERIFY(fixture.show(editor));
            passports.push_back(fixture.tree(editor, "tvProp"));
            QTRY_VERIFY(fits(passports.back()));
        }
        fixture.client->window()->resize(1366, 768);
        app::PageDocks& docks = fixture.client->window()->pageDocks();
        docks.takeOut(fixture.module("Menu"), app::PageDocks::Place::Beside);
        for (const QTreeView* passport : passports) {
            QTRY_VERIFY(passport->viewport()->width() < 300);
            QTRY_VERIFY(fits(passport));
            QVERIFY(passport->columnWidth(1) >= passport->viewport()->width() / 2);
        }
        docks.putBack(fixture.module("Menu"));
        fixture.client->window()->resize(1600, 768);
        QTRY_VERIFY(passports[1]->columnWidth(0) > 165); // the longest caption is whole again
    }

    void placesThatDifferAtTheirEndsLookDifferent() {
        Fixture fixture;
        fixture.add("p", "Линейные управления Белого Мыса", nullptr);
        fixture.add("p1", "первая", "p");
        fixture.add("p2", "вторая", "p");
        fixture.add("x1", "узел", "p1");
        fixture.add("x2", "узел", "p2");
        QVERIFY(fixture.show("Menu"));
        QTest::keyClick(fixture.client->window(), Qt::Key_F4);
        auto* history = fixture.child<QTreeView>("historyTree");
        const auto place = [&](int row) {
            return history->model()->index(row, app::HistoryModel::Where);
        };
        QTRY_COMPARE(place(0).data().toString(),
                     QString("КС-1 / Линейные управления Белого Мыса / вторая"));
        history->setAlternatingRowColors(false);
        history->setColumnWidth(app::HistoryModel::Where, 150);
        const auto picture = [&](int row) {
            history->scrollTo(place(row));
            return history->viewport()->grab(history->visualRect(place(row))).toImage();
        };
        QVERIFY(picture(0).width() > 50);
        QVERIFY(picture(0) != picture(1));
    }
};

QTEST_MAIN(TestFocus)
#include "tst_focus.moc"
