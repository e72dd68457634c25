// "Найти всё": what is typed is found while it is typed, and chosen takes one there.
#include "apps/client/find/FindPane.h"
#include "apps/client/history/HistoryPane.h"
#include "frame/Keys.h"
#include "tests/client/FindFixture.h"

#include <QAbstractItemModelTester>
#include <QBuffer>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDockWidget>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QScrollBar>
#include <QSet>

using namespace orvo;
using namespace orvo::test;
using app::FindModel;

namespace {

struct Fixture : FindFixture {
    app::FindPane* pane() const { return child<app::FindPane>("findPane"); }
    QTreeView* list() const { return child<QTreeView>("findList"); }
    QLineEdit* line() const { return child<QLineEdit>("findText"); }
    QString note() const { return child<QLabel>("findNote")->text(); }
    void open() const {
        QTest::keyClick(client->window(), Qt::Key_K, Qt::ControlModifier);
        QVERIFY(pane()->isVisible());
    }
    void type(const QString& text) const {
        line()->selectAll();
        keyClicks(line(), text);
    }
    /// Names and paths, a line a row.
    QStringList rows() const {
        QStringList all;
        for (int row = 0; row < list()->model()->rowCount(); ++row)
            all << list()->model()->index(row, FindModel::Name).data().toString() + '|' +
                       list()->model()->index(row, FindModel::Path).data().toString();
        return all;
    }
};

} // namespace

class TestFind : public QObject {
    Q_OBJECT
private slots:
    void whatIsTypedIsFoundWithItsPath() {
        Fixture fixture;
        const QAbstractItemModelTester tester(
            fixture.list()->model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
        fixture.open();
        QCOMPARE(QApplication::focusWidget(), fixture.line());
        fixture.type("кс-1 В");
        QTRY_COMPARE(fixture.rows(), QStringList{"в|КС-1 / а / б"});
        QTRY_COMPARE(fixture.note(), QString("Найдено 1."));
        fixture.type("кс-1");
        QTRY_COMPARE(fixture.rows(), QStringList{"КС-1|"});
        fixture.type("нет такого");
        QTRY_COMPARE(fixture.note(), QString("Ничего не найдено."));
        QCOMPARE(fixture.rows(), QStringList());
        fixture.type("[a-z]*(");
        QTRY_COMPARE(fixture.note(), QString("Ничего не найдено."));
    }

    void enterGoesToTheRowAndEscToWhatOneDid() {
        Fixture fixture;
        fixture.view("tvMenu")->setFocus();
        fixture.open();
        QTest::keyClick(fixture.line(), Qt::Key_Escape);
        QVERIFY(!fixture.pane()->isVisible());
        QCOMPARE(QApplication::focusWidget(), fixture.view("tvMenu"));
        fixture.open();
        fixture.type("кс-1 в");
        QTRY_COMPARE(fixture.rows().size(), 1);
        QTest::keyClick(fixture.line(), Qt::Key_Return);
        QVERIFY(!fixture.pane()->isVisible());
        QTRY_COMPARE(fixture.currentElement(), QString("в"));
    }

    void theMenuKeyIsThatOfTheRowAlsoWhileOneTypes() {
        Fixture fixture;
        fixture.open();
        fixture.type("кс-1 в");
        QTRY_COMPARE(fixture.rows().size(), 1);
        QStringList entries;
        QTimer poll; // a menu runs a loop of its own, in which this is called
        connect(&poll, &QTimer::timeout, this, [&] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu)
                return;
            for (const QAction* action : menu->actions())
                entries << action->text();
            menu->close();
        });
        poll.start(0);
        // As the platform asks for it.
        QContextMenuEvent asked(QContextMenuEvent::Keyboard, fixture.line()->rect().center());
        QApplication::sendEvent(fixture.line(), &asked);
        QTRY_VERIFY(!entries.isEmpty());
        QCOMPARE(entries.first(), QString("Открыть"));
    }

    void theColumnsStayAsTheyWereDrawnAlsoAfterARestart() {
        Fixture fixture;
        fixture.client->window()->resize(1200, 800);
        fixture.open();
        fixture.list()->header()->resizeSection(FindModel::Name, 411);
        fixture.list()->header()->resizeSection(FindModel::Object, 97);
        fixture.client->window()->resize(1100, 800);
        QTRY_VERIFY(fixture.pane()->width() < 1100);
        QCOMPARE(fixture.list()->columnWidth(FindModel::Name), 411);
        fixture.stop();
        fixture.start();
        fixture.activate();
        fixture.open();
        QCOMPARE(fixture.list()->columnWidth(FindModel::Name), 411);
        QCOMPARE(fixture.list()->columnWidth(FindModel::Object), 97);
    }

    void drawnColumnsGiveWayToThePathInASmallWindow() {
        Fixture fixture;
        QMainWindow* window = fixture.client->window();
        window->resize(1400, 800);
        fixture.open();
        fixture.list()->header()->resizeSection(FindModel::Name, 700);
        window->resize(window->minimumSizeHint().expandedTo({1000, 700}));
        QTRY_VERIFY(fixture.list()->columnWidth(FindModel::Path) >= 100);
        QVERIFY(fixture.list()->header()->length() <= fixture.list()->width());
        window->resize(1400, 800);
        QTRY_COMPARE(fixture.list()->columnWidth(FindModel::Name), 700);
    }

    void aDoubleClickGoesToTheRowAndMeetsNothingBelow() {
        Fixture fixture;
        fixture.open();
        fixture.type("кс-1 в");
        QTRY_COMPARE(fixture.rows().size(), 1);
        const QPoint at = fixture.list()->visualRect(fixture.list()->model()->index(0, 0)).center();
        QTest::mouseClick(fixture.list()->viewport(), Qt::LeftButton, {}, at);
        QVERIFY(fixture.pane()->isVisible());
        QTest::mouseDClick(fixture.list()->viewport(), Qt::LeftButton, {}, at);
        QVERIFY(!fixture.pane()->isVisible());
        QTRY_COMPARE(fixture.currentElement(), QString("в"));
    }

    void escGoesBackToTheRowsInWhichAFieldWasOpen() {
        Fixture fixture;
        auto* passport = fixture.module("Menu")->findChild<QTreeView*>("tvProp");
        QTreeView* menu = fixture.view("tvMenu");
        menu->setCurrentIndex(menu->model()->index(0, 0, menu->model()->index(0, 0)));
        menu->setFocus();
        QTest::keyClick(menu, Qt::Key_F2);
        QTRY_VERIFY(passport->isAncestorOf(QApplication::focusWidget()));
        fixture.open();
        QTest::keyClick(fixture.line(), Qt::Key_Escape);
        QCOMPARE(QApplication::focusWidget(), passport);
    }

    void anElementOfAnotherDesktopOpensThatDesktop() {
        Fixture fixture;
        fixture.beforeTheStart([&] {
            fixture.otherWrites(MDX_INSERT,
                                {{"KeyLink", "far"}, {"caption", "КС-2"}, {"order_", "2000"}},
                                "MenuFolder");
            fixture.otherWrites(MDX_INSERT, {{"KeyLink", "e"},
                                             {"FolderKey", "far"},
                                             {"caption", "дальний"},
                                             {"order_", "1000"}});
        });
        fixture.open();
        fixture.type("дальн");
        QTRY_COMPARE(fixture.rows(), QStringList{"дальний|КС-2"});
        QTest::keyClick(fixture.line(), Qt::Key_Return);
        QTRY_COMPARE(fixture.currentElement() + fixture.failure(), QString("дальний"));
        QCOMPARE(fixture.menu(), QString("дальний"));
    }

    void aResourceOpensTheOtherEditor() {
        Fixture fixture;
        fixture.beforeTheStart([&] { fixture.addModules(1); });
        fixture.open();
        fixture.type("trends");
        QTRY_COMPARE(fixture.rows(), QStringList{"Тренд 1|модули"});
        QTest::keyClick(fixture.line(), Qt::Key_Return);
        QTRY_VERIFY(fixture.view("tvRes")->isVisible());
        QTRY_COMPARE(fixture.view("tvRes")->currentIndex().siblingAtColumn(0).data().toString(),
                     QString("Тренд 1"));
    }

    void aPersonOpensWhatHeDid() {
        Fixture fixture;
        fixture.open();
        fixture.type("петров");
        QTRY_COMPARE(fixture.rows(), QStringList{"Петров Пётр|"});
        QTest::keyClick(fixture.line(), Qt::Key_Return);
        QTRY_VERIFY(fixture.child<QDockWidget>("historyDock")->isVisible());
        QCOMPARE(fixture.child<QComboBox>("historyWho")->currentData().toString(),
                 QString("petrov"));
    }

    void theArrowsChooseWhileOneTypes() {
        Fixture fixture;
        fixture.open();
        fixture.type("кс-1");
        fixture.type("а");
        QTRY_VERIFY(fixture.rows().size() >= 1);
        fixture.type("кс-1 ");
        for (const char* number : {"1", "2", "3"})
            fixture.add(number, qPrintable(QString("насос %1").arg(number)), "a");
        fixture.type("насос");
        QTRY_COMPARE(fixture.rows().size(), 3);
        QTest::keyClick(fixture.line(), Qt::Key_Down);
        QTest::keyClick(fixture.line(), Qt::Key_Down);
        QTest::keyClick(fixture.line(), Qt::Key_Up);
        QCOMPARE(fixture.list()->currentIndex().row(), 1);
        QCOMPARE(QApplication::focusWidget(), fixture.line());
        QTest::keyClick(fixture.line(), Qt::Key_Return);
        QTRY_COMPARE(fixture.currentElement(), QString("насос 2"));
    }

    void whatOthersDoShowsWhileItIsOpen() {
        Fixture fixture;
        fixture.open();
        fixture.type("кран");
        QTRY_COMPARE(fixture.note(), QString("Ничего не найдено."));
        fixture.add("k", "Кран шаровой", nullptr);
        QTRY_COMPARE(fixture.rows(), QStringList{"Кран шаровой|КС-1"});
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "k"}, {"caption", "Кран пробковый"}});
        QTRY_COMPARE(fixture.rows(), QStringList{"Кран пробковый|КС-1"});
    }

    void anElementIsShownWithItsIcon() {
        Fixture fixture;
        fixture.beforeTheStart([&] {
            QImage red(16, 16, QImage::Format_RGB32);
            red.fill(Qt::red);
            QBuffer png;
            QVERIFY(red.save(&png, "PNG"));
            fixture.otherWrites(MDX_INSERT,
                                {{"KeyLink", "gi"}, {"caption", "icons"}, {"type_", "4"}},
                                "MenuResourceFolder");
            const std::string_view bytes(png.data().constData(), size_t(png.data().size()));
            const store::Status put =
                fixture.host.store().filePut({{"icons", "red.png", bytes, 1000.0}});
            QVERIFY2(put.ok(), put.text.c_str());
            fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "c"}, {"ico", "red.png"}});
        });
        const auto colour = [&] {
            const QVariant icon =
                fixture.list()->model()->index(0, FindModel::Name).data(Qt::DecorationRole);
            const QImage image = icon.value<QIcon>().pixmap(16, 16).toImage();
            return image.isNull() ? QColor() : image.pixelColor(8, 8);
        };
        fixture.open();
        fixture.type("кс-1 в");
        QTRY_COMPARE(fixture.rows(), QStringList{"в|КС-1 / а / б"});
        QTRY_COMPARE(colour(), QColor(Qt::red));
        fixture.type("кс-1 г"); // a folder without an icon of its own
        QTRY_COMPARE(fixture.rows(), QStringList{"г|КС-1"});
        QVERIFY(colour().isValid() && colour() != QColor(Qt::red));
    }

    void anIconThatIsNotThereLeavesThePictureOfTheKind() {
        Fixture fixture;
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "c"}, {"ico", "nope.png"}});
        const auto picture = [&] {
            const QVariant icon =
                fixture.list()->model()->index(0, FindModel::Name).data(Qt::DecorationRole);
            return icon.value<QIcon>().pixmap(16, 16).toImage();
        };
        fixture.open();
        fixture.type("кс-1 г");
        QTRY_COMPARE(fixture.rows(), QStringList{"г|КС-1"});
        const QImage kind = picture();
        QVERIFY(!kind.isNull());
        fixture.type("кс-1 в");
        QTRY_COMPARE(fixture.rows(), QStringList{"в|КС-1 / а / б"});
        QTRY_COMPARE(picture(), kind);
    }

    void wordsThatAreNotLookedForAreTold() {
        Fixture fixture;
        fixture.open();
        const QString fifteen = "г" + QString(" к").repeated(14);
        fixture.type(fifteen);
        QTRY_COMPARE(fixture.note(), QString("Найдено 1."));
        fixture.type(fifteen + " нетакого");
        QTRY_COMPARE(fixture.note(), QString("Найдено 1. Искались первые 15 слов."));
    }

    void enterMeansTheAnswerToWhatWasTyped() {
        Fixture fixture;
        fixture.open();
        fixture.type("кс-1 г");
        QTRY_COMPARE(fixture.rows(), QStringList{"г|КС-1"});
        fixture.type("кс-1 в");
        QTest::keyClick(fixture.line(), Qt::Key_Return); // "г" is still listed
        QTRY_COMPARE(fixture.currentElement(), QString("в"));
    }

    void whatOthersDoMovesNoOneToAnotherResult() {
        Fixture fixture;
        for (const char* number : {"1", "2", "3"})
            fixture.add(number, qPrintable(QString("насос %1").arg(number)), "a");
        fixture.open();
        fixture.type("насос");
        QTRY_COMPARE(fixture.rows().size(), 3);
        QTRY_COMPARE(fixture.list()->currentIndex().row(), 0);
        fixture.add("0", "насос", "a"); // better than all of them
        QTRY_COMPARE(fixture.rows().size(), 4);
        QCOMPARE(fixture.rows().first(), QString("насос|КС-1 / а"));
        QCOMPARE(fixture.list()->currentIndex().data().toString(), QString("насос 1"));
        QVERIFY(fixture.host.write("Menu", MDX_DELETE, {{"KeyLink", "1"}}) != 0);
        QTRY_VERIFY(fixture.note().startsWith("Выбранной строки среди найденного больше нет."));
        QTest::keyClick(fixture.line(), Qt::Key_Return);
        QVERIFY(fixture.pane()->isVisible());
        QTest::keyClick(fixture.line(), Qt::Key_Down);
        QTest::keyClick(fixture.line(), Qt::Key_Return);
        QVERIFY(!fixture.pane()->isVisible());
    }

    void whatHasVanishedIsTold() {
        Fixture fixture;
        fixture.open();
        fixture.type("кс-1 в");
        QTRY_COMPARE(fixture.rows().size(), 1);
        QVERIFY(fixture.host.write("Menu", MDX_DELETE, {{"KeyLink", "c"}}) != 0);
        QTest::keyClick(fixture.line(), Qt::Key_Return); // no event has told of it
        QTRY_COMPARE(fixture.failure(), QString("Показать нечего: строки больше нет."));
    }

    void aPersonWhoHasVanishedIsTold() {
        Fixture fixture;
        fixture.open();
        fixture.type("петров");
        QTRY_COMPARE(fixture.rows().size(), 1);
        QVERIFY(fixture.host.write("Users", MDX_DELETE, {{"KeyLink", "u1"}}) != 0);
        QTest::keyClick(fixture.line(), Qt::Key_Return); // no event has told of it
        QTRY_COMPARE(fixture.failure(), QString("Показать нечего: строки больше нет."));
        QVERIFY(!fixture.child<QDockWidget>("historyDock")->isVisible());
    }

    void anotherPartOfTheWindowTakesItAway() {
        Fixture fixture;
        fixture.open();
        fixture.view("tvDesck")->setFocus();
        QVERIFY(!fixture.pane()->isVisible());
        QCOMPARE(QApplication::focusWidget(), fixture.view("tvDesck"));
    }

    void theMenuOpensItToo() {
        Fixture fixture;
        QAction* action = fixture.action("client_findAll");
        QVERIFY(action);
        QCOMPARE(action->shortcut(), QKeySequence("Ctrl+K"));
        action->trigger();
        QVERIFY(fixture.pane()->isVisible());
        QVERIFY(!fixture.line()->accessibleName().isEmpty());
        QVERIFY(!fixture.list()->accessibleName().isEmpty());
    }

    void afterTheModulesAreOpenedAnewAllIsFoundAsItIsThen() {
        Fixture fixture;
        fixture.open();
        fixture.type("кс-1 г");
        QTRY_COMPARE(fixture.rows(), QStringList{"г|КС-1"});
        QTest::keyClick(fixture.line(), Qt::Key_Escape);
        emit fixture.client->window()->reopenRequested();
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "г2"}});
        QTRY_VERIFY(fixture.client->settled());
        fixture.open();
        QTRY_COMPARE(fixture.rows(), QStringList{"г2|КС-1"});
    }

    void theTreeWithTheFocusIsSearchedInItsCorner() {
        Fixture fixture;
        for (const char* number : {"1", "2", "3"})
            fixture.add(number, qPrintable(QString("нас%1").arg(number)), "a");
        QTRY_VERIFY(fixture.menu().contains("нас3"));
        QTreeView* menu = fixture.view("tvMenu");
        menu->setFocus();
        QTest::keyClick(menu, Qt::Key_F, Qt::ControlModifier);
        auto* bar = menu->findChild<QWidget*>("treeSearch");
        auto* text = menu->findChild<QLineEdit*>("treeSearchText");
        QVERIFY(bar && bar->isVisible());
        QCOMPARE(QApplication::focusWidget(), text);
        keyClicks(text, "НАС");
        QCOMPARE(fixture.currentElement(), QString("нас1"));
        QTest::keyClick(text, Qt::Key_F3);
        QCOMPARE(fixture.currentElement(), QString("нас2"));
        QTest::keyClick(text, Qt::Key_Return);
        QCOMPARE(fixture.currentElement(), QString("нас3"));
        QTest::keyClick(text, Qt::Key_F3);
        QCOMPARE(fixture.currentElement(), QString("нас3")); // no way around
        QTest::keyClick(text, Qt::Key_F3, Qt::ShiftModifier);
        QCOMPARE(fixture.currentElement(), QString("нас2"));
        keyClicks(text, ".*");
        QCOMPARE(text->palette().color(QPalette::Text), QColor("#DC143C"));
        QTest::keyClick(text, Qt::Key_Escape);
        QVERIFY(!bar->isVisible());
        QCOMPARE(QApplication::focusWidget(), menu);
        QCOMPARE(fixture.currentElement(), QString("нас2"));
    }

    void theSearchLeavesWhatItFindsInSight() {
        Fixture fixture;
        fixture.beforeTheStart([&] {
            for (int i = 0; i < 60; ++i)
                fixture.add(QString("s%1").arg(i, 2, 10, QChar('0')).toUtf8(), "участок", nullptr);
        });
        fixture.client->openFurther({"Menu"});
        QTreeView* menu = fixture.view("tvMenu");
        QTRY_VERIFY(menu->isVisible() && menu->verticalScrollBar()->isVisible());
        menu->setFocus();
        QTest::keyClick(menu, Qt::Key_F, Qt::ControlModifier);
        auto* bar = menu->findChild<QWidget*>("treeSearch");
        auto* text = menu->findChild<QLineEdit*>("treeSearchText");
        const auto isInSight = [&] {
            const QRect row =
                menu->visualRect(menu->currentIndex()).translated(menu->viewport()->pos());
            return menu->viewport()->geometry().contains(row.center()) &&
                   (row.top() > bar->geometry().bottom() || row.bottom() < bar->y());
        };
        keyClicks(text, "меню"); // the row at the top, which cannot be scrolled
        QTRY_VERIFY(isInSight());
        QTest::keyClick(text, Qt::Key_A, Qt::ControlModifier);
        keyClicks(text, "участок");
        for (const auto shift : {Qt::NoModifier, Qt::ShiftModifier})
            for (int i = 0; i < 59; ++i) {
                QVERIFY2(isInSight(), qPrintable(QString("%1 %2").arg(shift).arg(i)));
                QTest::keyClick(text, Qt::Key_F3, shift);
            }
        QVERIFY(isInSight());
        QVERIFY(menu->viewport()->geometry().contains(bar->geometry()));
    }

    void theNextColumnIsSearchedByItsKey() {
        Fixture fixture;
        fixture.beforeTheStart([&] { fixture.addModules(1); });
        fixture.otherWrites(MDX_INSERT, {{"KeyLink", "t"},
                                         {"FolderKey", "desk"},
                                         {"caption", "Кривые"},
                                         {"order_", "7000"},
                                         {"MenuResourceKey", "r1"}});
        QTRY_VERIFY(fixture.menu().contains("Кривые"));
        QTreeView* menu = fixture.view("tvMenu");
        menu->setFocus();
        QTest::keyClick(menu, Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
        auto* text = menu->findChild<QLineEdit*>("treeSearchText");
        QCOMPARE(QApplication::focusWidget(), text);
        keyClicks(text, "trends1");
        QCOMPARE(fixture.currentElement(), QString("Кривые"));
        QTest::keyClick(text, Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(text->palette().color(QPalette::Text), QColor("#DC143C")); // no caption has it
    }

    void everyCommandStandsInAMenu() {
        Fixture fixture;
        QSet<QString> shown;
        for (const char* name : {"Menu", "Resources"}) {
            fixture.client->openFurther({name});
            for (QMenu* menu : fixture.client->window()->findChildren<QMenu*>()) {
                emit menu->aboutToShow();
                for (const QAction* action : menu->actions())
                    for (const QKeySequence& keys : action->shortcuts())
                        shown << keys.toString(QKeySequence::PortableText);
            }
        }
        for (const keys::Command& command : keys::commands) {
            const QString keys = keys::sequences(command).first().toString();
            QVERIFY2(shown.contains(keys), command.id);
        }
    }

    void whatIsNotWrittenGetsTheKeyboardByItsKey() {
        Fixture fixture;
        QTest::keyClick(fixture.client->window(), Qt::Key_F8, Qt::ShiftModifier);
        QTRY_VERIFY(fixture.child<QDockWidget>("unwrittenDock")->isVisible());
        QCOMPARE(QApplication::focusWidget()->objectName(), QString("unwrittenTree"));
        QTest::keyClick(fixture.client->window(), Qt::Key_F8, Qt::ShiftModifier);
        QTRY_VERIFY(!fixture.child<QDockWidget>("unwrittenDock")->isVisible());
    }

    void desktopsHaveASearchOfTheirOwn() {
        Fixture fixture;
        fixture.client->openFurther({"Menu"}); // on a server the last case's tab is remembered
        QTreeView* desktops = fixture.view("tvDesck");
        QTRY_VERIFY(desktops->isVisible());
        desktops->setCurrentIndex(desktops->model()->index(0, 0));
        desktops->setFocus();
        QTest::keyClick(desktops, Qt::Key_F, Qt::ControlModifier);
        auto* text = desktops->findChild<QLineEdit*>("treeSearchText");
        QCOMPARE(QApplication::focusWidget(), text);
        keyClicks(text, "кс-1");
        QCOMPARE(desktops->currentIndex().data().toString(), QString("КС-1"));
        QVERIFY(!fixture.view("tvMenu")->findChild<QWidget*>("treeSearch")->isVisible());
    }

    void theResourceEditorsFieldIsCalledByTheSameKeys_data() {
        QTest::addColumn<int>("width");
        QTest::newRow("room in the tool bar") << 1600;
        QTest::newRow("no room there") << 700;
    }
    void theResourceEditorsFieldIsCalledByTheSameKeys() {
        QFETCH(int, width);
        Fixture fixture;
        fixture.beforeTheStart([&] { fixture.addModules(2); });
        fixture.client->openFurther({"Resources"});
        QTreeView* resources = fixture.view("tvRes");
        QTRY_VERIFY(resources->isVisible());
        fixture.client->window()->setMinimumWidth(0);
        fixture.client->window()->resize(width, 600);
        const bool isCorner = width < 1000;
        auto* bar = resources->findChild<QWidget*>("treeSearch");
        resources->setFocus();
        QTest::keyClick(resources, Qt::Key_F, Qt::ControlModifier);
        auto* field = qobject_cast<QLineEdit*>(QApplication::focusWidget());
        QVERIFY(field);
        QCOMPARE(bar->isVisible(), isCorner);
        QCOMPARE(bar->isAncestorOf(field), isCorner);
        keyClicks(field, "тренд");
        QTRY_COMPARE(resources->currentIndex().siblingAtColumn(0).data().toString(),
                     QString("Тренд 1"));
        QTest::keyClick(field, Qt::Key_F3);
        QCOMPARE(resources->currentIndex().siblingAtColumn(0).data().toString(),
                 QString("Тренд 2"));
        QTest::keyClick(field, Qt::Key_F3);
        resources->setFocus();
        QTest::keyClick(resources, Qt::Key_F3, Qt::ShiftModifier);
        QCOMPARE(resources->currentIndex().siblingAtColumn(0).data().toString(),
                 QString("Тренд 1"));
    }
};

QTEST_MAIN(TestFind)

#include "tst_find.moc"
