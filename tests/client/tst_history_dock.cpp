// The pane "История": who changed what, live and by the page; and what takes it back.
#include "apps/client/HostApp.h"
#include "tests/client/HistoryFixture.h"

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QDockWidget>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QToolButton>
#include <QTreeWidget>

#include <functional>

using namespace orvo;
using namespace orvo::test;
using app::HistoryModel;

namespace {

using Fixture = HistoryFixture;

} // namespace

class TestHistoryDock : public QObject {
    Q_OBJECT
private slots:
    void theNewestActionIsFirstWithNameTimeAndValues() {
        Fixture fixture;
        QVERIFY(!fixture.dock()->isVisible());
        fixture.renames("b", "Котельная");
        fixture.open();
        QTRY_VERIFY(fixture.dock()->isVisible());
        QTRY_COMPARE(fixture.what(0), QString("Переименован элемент меню «Котельная»: было «б»"));
        QCOMPARE(fixture.cell(0, HistoryModel::Who), QString("engineer"));
        QCOMPARE(fixture.cell(0, HistoryModel::Before), QString("«б»"));
        QCOMPARE(fixture.cell(0, HistoryModel::After), QString("«Котельная»"));
        QCOMPARE(fixture.cell(0, HistoryModel::Where), QString("КС-1 / а"));
        QVERIFY(!fixture.cell(0, HistoryModel::When).isEmpty());
        // 4 elements, a desktop and a user were made before.
        QCOMPARE(fixture.model()->rowCount(), 7);
        QCOMPARE(fixture.cell(1, HistoryModel::Who), QString("Петров П."));
        fixture.open();
        QTRY_VERIFY(!fixture.dock()->isVisible());
    }

    void whatOthersDoShowsWhileItIsOpen() {
        Fixture fixture;
        const QAbstractItemModelTester tester(
            &fixture.pane()->feed().model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
        fixture.open();
        QTRY_COMPARE(fixture.model()->rowCount(), 6);
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "г1"}});
        QTRY_COMPARE(fixture.model()->rowCount(), 7);
        QCOMPARE(fixture.what(0), QString("Переименован элемент меню «г1»: было «г»"));
        QCOMPARE(fixture.cell(0, HistoryModel::Who), QString("Петров П."));
        // What is done while it is closed shows when it is opened.
        fixture.open();
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "г2"}});
        QTRY_VERIFY(fixture.menu().contains("г2"));
        fixture.open();
        QTRY_COMPARE(fixture.what(0), QString("Переименован элемент меню «г2»: было «г1»"));
    }

    void valuesUnfoldBelowAnAction() {
        Fixture fixture;
        fixture.writes(MDX_UPDATE, {{{"KeyLink", "a"}, {"caption", "а1"}, {"params", "x=1"}},
                                    {{"KeyLink", "d"}, {"caption", "г1"}}});
        const QAbstractItemModelTester tester(
            &fixture.pane()->feed().model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
        fixture.open();
        QTRY_COMPARE(fixture.model()->rowCount(), 7);
        const QModelIndex action = fixture.model()->index(0, 0);
        QVERIFY(fixture.model()->hasChildren(action));
        fixture.tree()->expand(action);
        QTRY_COMPARE(fixture.model()->rowCount(action), 2);
        const QModelIndex first = fixture.model()->index(0, 0, action);
        QCOMPARE(fixture.cell(0, HistoryModel::What, action),
                 QString("Переименован элемент меню «а1»: было «а»"));
        QCOMPARE(fixture.model()->rowCount(first), 2);
        QStringList fields;
        for (int row = 0; row < 2; ++row)
            fields << fixture.cell(row, HistoryModel::What, first) + '|' +
                          fixture.cell(row, HistoryModel::Before, first) + '|' +
                          fixture.cell(row, HistoryModel::After, first);
        QVERIFY2(fields.filter("«а»|«а1»").size() == 1, qPrintable(fields.join('\n')));
        QVERIFY2(fields.filter("«x=1»").size() == 1, qPrintable(fields.join('\n')));
    }

    void aLargeActionIsToldWithAllThatItDid() {
        Fixture fixture;
        constexpr int below = 2500; // more than is read of an action
        std::vector<Fields> records = {
            {{"KeyLink", "top"}, {"caption", "Агрегаты"}, {"FolderKey", "desk"}}};
        for (int i = 0; i < below; ++i)
            records.push_back({{"KeyLink", "k" + std::to_string(i)},
                               {"caption", std::to_string(i)},
                               {"parent", "top"},
                               {"FolderKey", "desk"}});
        fixture.writes(MDX_INSERT, records);
        QTRY_COMPARE_WITH_TIMEOUT(fixture.undoText(),
                                  QString("Отменить: создать «Агрегаты» и ещё 2500 записей"),
                                  60'000); // its rows go into the tree first
        fixture.open();
        QTRY_COMPARE(fixture.what(0), QString("Создан элемент меню «Агрегаты» и ещё 2500 записей"));
    }

    void aLongHistoryComesInByThePage() {
        Fixture fixture;
        constexpr int count = 300;
        for (int i = 0; i < count; ++i)
            fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", std::to_string(i)}});
        fixture.open();
        // What was read before the pane opened may stand there for a moment.
        QTRY_VERIFY(fixture.what(0).contains(QString("«%1»").arg(count - 1)));
        QVERIFY(fixture.model()->rowCount() <= 2 * int(app::HistoryFeed::pageSize));
        // The tester asks for more each time that it is told of new rows.
        const QAbstractItemModelTester tester(
            &fixture.pane()->feed().model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
        while (!fixture.pane()->feed().model().isAtEnd()) {
            const int before = fixture.model()->rowCount();
            fixture.pane()->feed().model().wantMore();
            QTRY_VERIFY(fixture.model()->rowCount() > before);
        }
        QCOMPARE(fixture.model()->rowCount(), count + 6);
        for (int i = 0; i < count; ++i)
            QVERIFY2(fixture.what(i).contains(QString("«%1»").arg(count - 1 - i)),
                     qPrintable(fixture.what(i)));
    }

    void filtersNarrowItByRowDesktopPersonTimeAndText() {
        Fixture fixture;
        fixture.otherWrites(MDX_INSERT,
                            {{"KeyLink", "desk2"}, {"caption", "КС-2"}, {"order_", "2000"}},
                            "MenuFolder");
        fixture.renames("b", "Котельная");
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "г1"}});
        fixture.open();
        QTRY_COMPARE(fixture.model()->rowCount(), 9);

        fixture.pane()->showRecord("Menu", "B", false);
        QTRY_COMPARE(fixture.all(), QStringList({"Переименован элемент меню «Котельная»: было «б»",
                                                 "Создан элемент меню «б»"}));
        auto* scope = fixture.child<QToolButton>("historyScope");
        QTRY_VERIFY2(scope->text().contains("«Котельная»"), qPrintable(scope->text()));
        QTest::mouseClick(scope, Qt::LeftButton);
        QTRY_COMPARE(fixture.model()->rowCount(), 9);
        QVERIFY(!scope->isVisible());

        fixture.pane()->showRecord("MenuFolder", "desk", true);
        QTRY_COMPARE(fixture.model()->rowCount(), 7); // not the user, nor the other desktop
        fixture.pane()->showRecord("Menu", "a", true);
        QTRY_COMPARE(fixture.model()->rowCount(), 4);
        fixture.pane()->clearFilters();
        QTRY_COMPARE(fixture.model()->rowCount(), 9);

        auto* who = fixture.child<QComboBox>("historyWho");
        QVERIFY(who->findText("Петров П. (petrov)") > 0);
        who->setCurrentIndex(1);
        emit who->activated(1);
        QTRY_COMPARE(fixture.model()->rowCount(), 1);
        fixture.pane()->clearFilters();
        QTRY_COMPARE(fixture.model()->rowCount(), 9);

        auto* text = fixture.child<QLineEdit>("historyText");
        QTest::keyClicks(text, "2000");
        QTRY_COMPARE(fixture.model()->rowCount(), 2);
        text->setText("такого нет");
        QTRY_COMPARE(fixture.model()->rowCount(), 0);
        QTRY_COMPARE(fixture.note(), QString("Таких действий нет."));
        fixture.pane()->clearFilters();

        auto* since = fixture.child<QComboBox>("historySince");
        since->setCurrentIndex(1);
        emit since->activated(1);
        QTRY_COMPARE(fixture.model()->rowCount(), 9);
    }

    void changesByHandAreAPersonsToo() {
        Fixture fixture;
        QVERIFY(fixture.host.kind->byHand(
            "UPDATE \"Menu\" SET \"caption\" = 'руками' WHERE \"KeyLink\" = 'd';"));
        const QString login = QString::fromUtf8(fixture.host.kind->handLogin());
        fixture.open();
        QTRY_VERIFY(fixture.what(0).contains("«руками»"));
        fixture.tree()->setCurrentIndex(fixture.model()->index(0, HistoryModel::What));
        QVERIFY(chooseInContextMenu(*fixture.tree(), "Только этот человек"));
        QTRY_COMPARE(fixture.model()->rowCount(), 1);
        const QString shown = login.isEmpty() ? QString("(вручную)") : login;
        auto* who = fixture.child<QComboBox>("historyWho");
        QCOMPARE(who->currentText(), shown);
        // Another user's name makes the list anew.
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "u1"}, {"lastName", "Сидоров"}}, "Users");
        QTRY_VERIFY(who->findText("Сидоров П. (petrov)") > 0);
        QCOMPARE(who->currentText(), shown);
        QCOMPARE(fixture.model()->rowCount(), 1);
    }

    void aSearchRestsWhileThePaneIsClosed() {
        Fixture fixture;
        fixture.stop();
        QVERIFY(fixture.host.kind->byHand(
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 60000) "
            "INSERT INTO \"MenuFileExt\" (\"KeyLink\", \"fileExt\") SELECT 'x' || i, 'y' FROM n;"));
        fixture.start();
        fixture.open();
        fixture.child<QLineEdit>("historyText")->setText("такого нет");
        QTRY_COMPARE(fixture.note(), QString("Ищется дальше…"));
        fixture.dock()->close();
        const HistoryModel& model = fixture.pane()->feed().model();
        QTRY_VERIFY(!model.isAsking());
        QVERIFY(!model.isAtEnd());
        fixture.open();
        QTRY_COMPARE_WITH_TIMEOUT(fixture.note(), QString("Таких действий нет."), 60'000);
    }

    void aMomentOfOnesOwnIsTypedByKeys() {
        Fixture fixture;
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "a"}, {"caption", "а0"}});
        QVERIFY(fixture.host.kind->byHand("UPDATE \"NciEvent\" SET \"time\" = \"time\" - 864000;"));
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "a"}, {"caption", "а1"}});
        fixture.open();
        QTRY_COMPARE(fixture.model()->rowCount(), 8);
        auto* since = fixture.child<QComboBox>("historySince");
        auto* from = fixture.child<QDateTimeEdit>("historyFrom");
        QVERIFY(!from->isVisible());
        since->setFocus();
        QTest::keyClick(since, Qt::Key_End);
        QCOMPARE(since->currentText(), QString("с…"));
        QTRY_VERIFY(from->isVisible());
        QTRY_COMPARE(fixture.model()->rowCount(), 1); // of today
        QTRY_VERIFY(from->hasFocus());
        const QString wanted =
            QDateTime::currentDateTime().addDays(-11).toString("dd.MM.yyyy HH:mm");
        from->setSelectedSection(QDateTimeEdit::DaySection); // the next ones follow by themselves
        QTest::keyClicks(from, QString(wanted).remove(QRegularExpression("[. :]")));
        QCOMPARE(from->text(), wanted);
        QTRY_COMPARE(fixture.model()->rowCount(), 8);
        for (int i = 0; i < 5 && from->hasFocus(); ++i) // the sections are walked through as well
            QTest::keyClick(from, Qt::Key_Backtab);
        QTRY_VERIFY(since->hasFocus());
        QTest::keyClick(since, Qt::Key_Home);
        QTRY_VERIFY(!from->isVisible());
    }

    void rowsFarAwayLetGoOfTheirTextsAndGetThemAgain() {
        Fixture fixture;
        constexpr int count = 300;
        for (int i = 0; i < count; ++i)
            fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", std::to_string(i)}});
        HistoryModel& rows = fixture.pane()->feed().model(); // a tester would unfold all
        rows.setLimits({60, 10'000});
        fixture.open();
        QTRY_VERIFY(fixture.what(0).contains(QString("«%1»").arg(count - 1)));
        const QModelIndex first = fixture.model()->index(0, HistoryModel::When);
        fixture.tree()->expand(first);
        QTRY_COMPARE(fixture.model()->rowCount(first), 1);
        while (!rows.isAtEnd()) {
            QTRY_VERIFY(!rows.isAsking());
            fixture.tree()->scrollToBottom();
            QTRY_VERIFY(!rows.isAsking());
        }
        QCOMPARE(rows.rowCount({}), count + 6);
        QVERIFY2(rows.fullCount() <= 75, qPrintable(QString::number(rows.fullCount())));
        // A row that was unfolded still is, and in the middle the texts come again.
        QVERIFY(fixture.tree()->isExpanded(first));
        QCOMPARE(fixture.model()->rowCount(first), 1);
        const QModelIndex middle = fixture.model()->index(150, HistoryModel::What);
        fixture.tree()->scrollTo(middle, QAbstractItemView::PositionAtTop);
        QTRY_VERIFY2(middle.data().toString().contains(QString("«%1»").arg(count - 151)),
                     qPrintable(middle.data().toString()));
        QCOMPARE(fixture.tree()->indexAt({1, 1}).row(), 150);
        fixture.tree()->setCurrentIndex(middle);
        QVERIFY(fixture.child<QPushButton>("historyRevert")->isEnabled());
    }

    void theOldestRowsGoWhileItIsLiveAndAreReadAgain() {
        Fixture fixture;
        constexpr int count = 150;
        for (int i = 0; i < count; ++i)
            fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", std::to_string(i)}});
        const QAbstractItemModelTester tester(
            &fixture.pane()->feed().model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
        HistoryModel& rows = fixture.pane()->feed().model();
        rows.setLimits({20, 100});
        fixture.open();
        QTRY_VERIFY(fixture.what(0).contains(QString("«%1»").arg(count - 1)));
        const auto readAll = [&] {
            while (!rows.isAtEnd()) {
                rows.wantMore();
                QTRY_VERIFY(!rows.isAsking());
            }
        };
        readAll();
        QCOMPARE(rows.rowCount({}), count + 6);
        fixture.tree()->scrollToTop();
        fixture.tree()->viewport()->repaint();
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", std::to_string(count)}});
        QTRY_COMPARE(rows.rowCount({}), 75);
        QVERIFY(!rows.isAtEnd());
        readAll();
        QCOMPARE(rows.rowCount({}), count + 7);
        for (int i = 0; i <= count; ++i)
            QTRY_VERIFY2(fixture.what(i).contains(QString("«%1»").arg(count - i)),
                         qPrintable(fixture.what(i)));
    }

    void whatIsReadStaysInPlaceWhileNewerComeIn() {
        Fixture fixture;
        for (int i = 0; i < 60; ++i)
            fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", std::to_string(i)}});
        fixture.open();
        QTRY_VERIFY(fixture.what(0).contains("«59»"));
        fixture.tree()->scrollTo(fixture.model()->index(20, 0), QAbstractItemView::PositionAtTop);
        const auto top = [&] { return fixture.what(fixture.tree()->indexAt({1, 1}).row()); };
        const QString before = top();
        QVERIFY(before.contains("«39»"));
        for (int i = 60; i < 65; ++i)
            fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", std::to_string(i)}});
        QTRY_VERIFY(fixture.what(0).contains("«64»"));
        QCOMPARE(top(), before);
        // At the top the newest is what one sees.
        fixture.tree()->scrollToTop();
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "65"}});
        QTRY_VERIFY(top().contains("«65»"));
    }

    void anActionOfAnotherIsTakenBackAfterAPreview() {
        Fixture fixture;
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "чужое"}});
        fixture.renames("a", "а1");
        fixture.open();
        QTRY_VERIFY(fixture.find("«чужое»") == 1);
        fixture.choose("«чужое»");
        fixture.press("historyRevert");
        QTRY_VERIFY(fixture.isReady());
        auto* writes = fixture.dialog()->findChild<QTreeWidget*>("revertWrites");
        QCOMPARE(writes->topLevelItemCount(), 1);
        QCOMPARE(writes->topLevelItem(0)->text(0),
                 QString("Переименован элемент меню «г»: было «чужое»  (КС-1)"));
        QTest::mouseClick(fixture.dialog()->findChild<QPushButton*>("revertOk"), Qt::LeftButton);
        QTRY_COMPARE(fixture.menu(), QString("а1(б(в)) г"));
        QTRY_VERIFY(fixture.what(0).startsWith("Отменено переименование: "));
        // It shows as taken back, and is not offered again.
        const int row = fixture.all().indexOf("Переименован элемент меню «чужое»: было «г»");
        QTRY_VERIFY(fixture.model()->index(row, 0).data(Qt::FontRole).value<QFont>().strikeOut());
        fixture.tree()->setCurrentIndex(fixture.model()->index(row, 0));
        QVERIFY(!fixture.child<QPushButton>("historyRevert")->isEnabled());
        // What the history did is an action: the key takes that back.
        QTRY_VERIFY2(fixture.undoText().startsWith("Отменить: вернуть"),
                     qPrintable(fixture.undoText()));
        fixture.action("actUndo")->trigger();
        QTRY_COMPARE(fixture.menu(), QString("а1(б(в)) чужое"));
    }

    void whereTheResourceIsUsedIsShownByItsKey() {
        Fixture fixture;
        fixture.renames("b", "Котельная");
        fixture.open();
        QTRY_VERIFY(fixture.find("«Котельная»") >= 0);
        fixture.choose("«Котельная»");
        fixture.tree()->setFocus();
        QVERIFY(!fixture.child<QDockWidget>("usesDock")->isVisible());
        QTest::keyClick(fixture.tree(), Qt::Key_F9);
        QTRY_VERIFY(fixture.child<QDockWidget>("usesDock")->isVisible());
    }

    void whatIsWrittenIsWhatWasShown() {
        Fixture fixture;
        fixture.otherWrites(MDX_INSERT,
                            {{"KeyLink", "n"}, {"caption", "н"}, {"FolderKey", "desk"}});
        fixture.open();
        QTRY_VERIFY(fixture.find("«н»") >= 0);
        fixture.choose("«н»");
        fixture.press("historyRevert");
        QTRY_VERIFY(fixture.isReady());
        // Behind the dialog somebody else builds on what is about to go.
        fixture.otherWrites(
            MDX_INSERT,
            {{"KeyLink", "o"}, {"caption", "о"}, {"FolderKey", "desk"}, {"parent", "n"}});
        const QPointer<QDialog> first = fixture.dialog();
        QTest::mouseClick(fixture.dialog()->findChild<QPushButton*>("revertOk"), Qt::LeftButton);
        QTRY_VERIFY(!first);
        // He is asked again, with that in the plan, and both stand until he has agreed.
        QTRY_VERIFY(fixture.dialog());
        QTRY_VERIFY(fixture.dialog()->findChild<QCheckBox*>("revertOthers")->isVisible());
        const auto* note = fixture.dialog()->findChild<QLabel*>("revertNote");
        QVERIFY(note->isVisible());
        QVERIFY2(note->text().startsWith("Пока вы решали, записано другое: элемент меню «о»: тем "
                                         "временем создано (Петров П., "),
                 qPrintable(note->text()));
        QTest::keyClick(fixture.dialog(), Qt::Key_Escape);
        QTRY_COMPARE(fixture.menu(), QString("н(о) а(б(в)) г"));
    }

    void everythingBackToAPlaceGoesInOneAction() {
        Fixture fixture;
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "г1"}});
        fixture.renames("d", "г2");
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "a"}, {"caption", "а1"}});
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "г3"}});
        fixture.open();
        QTRY_VERIFY(fixture.find("«г1»: было «г»") >= 0);
        fixture.choose("«г1»: было «г»");
        fixture.revertBack("этой строки");
        QTRY_VERIFY(fixture.isReady());
        QTest::mouseClick(fixture.dialog()->findChild<QPushButton*>("revertOk"), Qt::LeftButton);
        QTRY_COMPARE(fixture.menu(), QString("а1(б(в)) г"));
        // One action, which the key takes back as a whole.
        QTRY_VERIFY(fixture.action("actUndo")->isEnabled());
        QTRY_VERIFY(fixture.undoText().contains("вернуть"));
        fixture.action("actUndo")->trigger();
        QTRY_COMPARE(fixture.menu(), QString("а1(б(в)) г3"));
        QTRY_VERIFY(fixture.redoText().contains("вернуть"));
        // Back to the same place once more: what was undone and done again counts once.
        QTRY_VERIFY(fixture.find("«г1»: было «г»") >= 0);
        fixture.choose("«г1»: было «г»");
        fixture.revertBack("всего рабочего стола");
        QTRY_VERIFY(fixture.isReady());
        QTest::mouseClick(fixture.dialog()->findChild<QPushButton*>("revertOk"), Qt::LeftButton);
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
    }

    void aPersonsWorkSinceAPlaceIsTakenBackAndThatOfOthersStays() {
        Fixture fixture;
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "a"}, {"caption", "а1"}});
        fixture.renames("c", "в1");
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "г1"}});
        fixture.open();
        QTRY_VERIFY(fixture.find("«а1»") >= 0);
        fixture.choose("«а1»");
        fixture.revertBack("того же человека");
        QTRY_VERIFY(fixture.isReady());
        QTest::mouseClick(fixture.dialog()->findChild<QPushButton*>("revertOk"), Qt::LeftButton);
        QTRY_COMPARE(fixture.menu(), QString("а(б(в1)) г"));
    }

    void aBranchGoesBackAndWhatIsOutsideStays() {
        Fixture fixture;
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "a"}, {"caption", "а1"}});
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "г1"}});
        fixture.renames("c", "в1");
        fixture.open();
        QTRY_VERIFY(fixture.find("«а1»") >= 0);
        fixture.choose("«а1»");
        fixture.revertBack("и всего внутри неё");
        QTRY_VERIFY(fixture.isReady());
        QTest::mouseClick(fixture.dialog()->findChild<QPushButton*>("revertOk"), Qt::LeftButton);
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г1"));
    }

    void aPersonsLastHourGoesBackByTheFilter() {
        Fixture fixture;
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "a"}, {"caption", "а0"}});
        QVERIFY(fixture.host.kind->byHand("UPDATE \"NciEvent\" SET \"time\" = \"time\" - 4000;"));
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "a"}, {"caption", "а1"}});
        fixture.renames("d", "г1");
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "c"}, {"caption", "в1"}});
        fixture.open();
        QTRY_VERIFY(fixture.find("«а1»") >= 0);
        for (const char* name : {"historyWho", "historySince"}) {
            auto* box = fixture.child<QComboBox>(name);
            const int item = qMax(box->findText("за час"), box->findText("Петров П. (petrov)"));
            QVERIFY2(item > 0, name);
            box->setCurrentIndex(item);
            emit box->activated(item);
        }
        QTRY_COMPARE(fixture.model()->rowCount(), 2);
        fixture.choose("«а1»");
        fixture.revertBack("по нынешнему отбору");
        QTRY_VERIFY(fixture.isReady());
        QTest::mouseClick(fixture.dialog()->findChild<QPushButton*>("revertOk"), Qt::LeftButton);
        QTRY_COMPARE(fixture.menu(), QString("а0(б(в)) г1"));
    }

    void aClockThatWasSetBackKeepsNothingFromGoingBack() {
        Fixture fixture;
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "a"}, {"caption", "а1"}});
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "г1"}});
        QVERIFY(fixture.host.kind->byHand("UPDATE \"NciEvent\" SET \"time\" = \"time\" - 1800 "
                                          "WHERE \"after\" LIKE '%г1%';"));
        fixture.open();
        QTRY_VERIFY(fixture.find("«а1»") >= 0);
        fixture.choose("«а1»");
        fixture.revertBack("по нынешнему отбору");
        QTRY_VERIFY(fixture.isReady());
        QTest::mouseClick(fixture.dialog()->findChild<QPushButton*>("revertOk"), Qt::LeftButton);
        QTRY_COMPARE(fixture.menu(), QString("а(б(в)) г"));
    }

    void showGoesToTheDesktopAndTheRow() {
        Fixture fixture;
        fixture.stop();
        fixture.otherWrites(MDX_INSERT,
                            {{"KeyLink", "desk2"}, {"caption", "КС-2"}, {"order_", "2000"}},
                            "MenuFolder");
        fixture.start();
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "c"}, {"caption", "в1"}});
        fixture.otherWrites(MDX_DELETE, {{"KeyLink", "d"}});
        fixture.open();
        QTRY_VERIFY(fixture.find("«в1»") >= 0);
        QTRY_COMPARE(fixture.menu(), QString("а(б(в1))"));
        fixture.openDesktop("КС-2");
        QTRY_COMPARE(fixture.menu(), QString());
        fixture.choose("«в1»");
        fixture.press("historyShow");
        QTRY_COMPARE(fixture.view("tvMenu")->currentIndex().data().toString(), QString("в1"));
        QCOMPARE(fixture.view("tvDesck")->currentIndex().data().toString(), QString("КС-1"));
        QTRY_VERIFY(fixture.find("Удалён элемент меню «г»") >= 0);
        fixture.choose("Удалён элемент меню «г»");
        fixture.view("historyTree")->setFocus();
        QTest::keyClick(fixture.view("historyTree"), Qt::Key_Return);
        QTRY_VERIFY(fixture.failure().contains("строки больше нет"));
    }

    void showGoesToTheRowThatTheLineNames() {
        Fixture fixture;
        // Moved to the top by an engineer: its new neighbour, written first, gives way.
        fixture.writes(MDX_UPDATE, {{{"KeyLink", "d"}, {"order_", "3000"}},
                                    {{"KeyLink", "c"}, {"parent", ""}, {"order_", "2000"}}});
        fixture.open();
        QTRY_VERIFY(fixture.find("Перемещён элемент меню «в»") >= 0);
        fixture.choose("Перемещён элемент меню «в»");
        fixture.press("historyShow");
        QTRY_COMPARE(fixture.view("tvMenu")->currentIndex().data().toString(), QString("в"));
    }

    /// The pane stands beside the editors and takes input while one of them asks.
    void showLeavesTheRowOfAQuestionCurrent_data() {
        QTest::addColumn<bool>("askedMeanwhile");
        QTest::newRow("the question stands") << false;
        QTest::newRow("it comes while the record is looked up") << true;
    }
    void showLeavesTheRowOfAQuestionCurrent() {
        QFETCH(bool, askedMeanwhile);
        Fixture fixture;
        fixture.stop();
        fixture.otherWrites(MDX_INSERT,
                            {{"KeyLink", "desk2"}, {"caption", "КС-2"}, {"order_", "2000"}},
                            "MenuFolder");
        fixture.start();
        fixture.openDesktop("КС-1");
        fixture.open();
        QTRY_VERIFY(fixture.find("«КС-2»") >= 0);
        fixture.choose("«КС-2»");
        const COrvoCliMod& menu = *fixture.module("Menu");
        const auto ask = [&] { emit fixture.action("actDeleteFromtvDesck")->triggered(); };
        if (!askedMeanwhile)
            ask();
        fixture.press("historyShow");
        if (askedMeanwhile)
            ask();
        QTRY_VERIFY2(fixture.failure().contains("сначала ответьте на вопрос: Редактор меню"),
                     qPrintable(fixture.failure()));
        // What was asked before is done when this shows.
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "later"}});
        QTRY_VERIFY(fixture.find("later") >= 0);
        QCOMPARE(fixture.view("tvDesck")->currentIndex().data().toString(), QString("КС-1"));
        answerBox(menu, YesRole);
        QTRY_VERIFY(fixture.find("Удалён рабочий стол «КС-1»") >= 0);
        QCOMPARE(fixture.find("Удалён рабочий стол «КС-2»"), -1);
        // Answered, the row is shown.
        fixture.choose("Создан рабочий стол «КС-2»");
        fixture.press("historyShow");
        QTRY_COMPARE(fixture.view("tvDesck")->currentIndex().data().toString(), QString("КС-2"));
    }

    /// An action may begin with another record than the one whose history is shown.
    void showInTheHistoryOfARowGoesToThatRow() {
        Fixture fixture;
        fixture.writes(MDX_UPDATE, {{{"KeyLink", "a"}, {"caption", "а1"}},
                                    {{"KeyLink", "c"}, {"caption", "в1"}}});
        fixture.writes(MDX_UPDATE, {{{"KeyLink", "a"}, {"caption", "а2"}},
                                    {{"KeyLink", "d"}, {"caption", "г2"}}});
        QTRY_COMPARE(fixture.menu(), QString("а2(б(в1)) г2"));
        auto* host = fixture.module("Menu")->m_app;
        for (const bool withContent : {false, true}) {
            QMenu menu;
            host->addRecordActions(&menu, "Menu", withContent ? "b" : "c");
            for (QAction* action : menu.actions())
                if (action->text() ==
                    (withContent ? "История со всем, что внутри" : "История строки"))
                    action->trigger();
            QTRY_VERIFY(fixture.dock()->isVisible());
            QTRY_COMPARE(fixture.find("Переименованы 2 элемента меню"), 0);
            QTRY_COMPARE(fixture.model()->rowCount(), withContent ? 3 : 2);
            fixture.openDesktop("КС-1");
            fixture.tree()->setCurrentIndex(fixture.model()->index(0, HistoryModel::What));
            fixture.press("historyShow");
            QTRY_COMPARE(fixture.view("tvMenu")->currentIndex().data().toString(), QString("в1"));
            fixture.openDesktop("КС-1");
        }
        fixture.revertBack("этой строки");
        QTRY_VERIFY(fixture.dialog());
        QTRY_VERIFY(fixture.isReady());
        QVERIFY(RunningClient::below(*fixture.dialog()->findChild<QTreeView*>()->model(), {})
                    .contains("«в»"));
        // What was given up is not told as if it were being done.
        const auto* done = fixture.child<QLabel>("doneLabel");
        QVERIFY2(done->toolTip().contains("…"), qPrintable(done->toolTip()));
        fixture.dialog()->reject();
        QCoreApplication::processEvents();
        QVERIFY(done->isHidden());
    }

    void everyRowOfATreeOffersItsHistory() {
        Fixture fixture;
        QMenu menu;
        auto* host = fixture.module("Menu")->m_app;
        host->addRecordActions(&menu, "Menu", "MenuRootNode");
        QVERIFY(menu.actions().isEmpty());
        host->addRecordActions(&menu, "Menu", "c");
        QCOMPARE(menu.actions().size(), 4);
        menu.actions()[1]->trigger();
        QTRY_VERIFY(fixture.dock()->isVisible());
        QTRY_COMPARE(fixture.all(), QStringList("Создан элемент меню «в»"));
    }

    void keptVersionsAreListedExtractedAndPutBack() {
        Fixture fixture;
        store::Store& store = fixture.host.store();
        fixture.stop(); // the editor shows a new top folder when it starts
        for (const char* kind : {"1", "2", "3", "4"})
            fixture.otherWrites(
                MDX_INSERT,
                {{"KeyLink", kind}, {"type_", kind}, {"caption", *kind == '4' ? "docs" : "top"}},
                "MenuResourceFolder");
        for (const std::string_view bytes : {"старое", "новое и длиннее"}) {
            const store::Status put = store.filePut({{"docs", "план.txt", bytes, 1000.0}});
            QVERIFY2(put.ok(), put.text.c_str());
        }
        const QString key = fixture.keyOfResource("план.txt");
        fixture.start();
        QTreeView* resources = fixture.view("tvRes");
        const std::function<QModelIndex(const QModelIndex&)> rowOfFile =
            [&](const QModelIndex& parent) {
                const QAbstractItemModel& model = *resources->model();
                QModelIndex found;
                for (int row = 0; row < model.rowCount(parent) && !found.isValid(); ++row) {
                    for (int column = 0; column < model.columnCount(parent); ++column)
                        if (model.index(row, column, parent).data().toString() == key)
                            return model.index(row, 0, parent);
                    found = rowOfFile(model.index(row, 0, parent));
                }
                return found;
            };
        QTRY_VERIFY(rowOfFile({}).isValid());
        resources->setCurrentIndex(rowOfFile({}));
        QTRY_VERIFY(RunningClient::below(*fixture.view("tvProp")->model(), {}).contains("размер"));
        const auto size = [&] {
            const QAbstractItemModel* passport = fixture.view("tvProp")->model();
            const QModelIndexList found = passport->match(passport->index(0, 0), Qt::DisplayRole,
                                                          "размер", 1, Qt::MatchRecursive);
            return found.value(0).siblingAtColumn(1).data().toInt();
        };
        QCOMPARE(size(), 28);
        auto* dialog = fixture.openVersions(key);
        QVERIFY(dialog);
        auto* list = dialog->findChild<QTreeWidget*>("versionsList");
        QTRY_COMPARE(list->topLevelItemCount(), 1);
        QCOMPARE(list->topLevelItem(0)->text(0), QString("план.txt"));
        QCOMPARE(list->topLevelItem(0)->text(4), QString("Петров П."));
        QCOMPARE(dialog->windowTitle(), QString("Прежние версии: файл «план.txt»"));
        const QString itsTime = list->topLevelItem(0)->text(1);
        QVERIFY(!itsTime.isEmpty());
        const QString file = fixture.host.dir.filePath("план.txt");
        dialog->extractInto(fixture.host.dir.path());
        QTRY_VERIFY(QFile::exists(file));
        QFile extracted(file);
        QVERIFY(extracted.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(extracted.readAll()), QString("старое"));
        QTest::mouseClick(dialog->findChild<QPushButton*>("versionReturn"), Qt::LeftButton);
        QTRY_COMPARE(list->topLevelItemCount(), 2);
        QCOMPARE(list->currentItem(), list->topLevelItem(1)); // the one that was chosen
        QCOMPARE(fixture.logged("Версия файла «план.txt» от " + itsTime + " возвращена."), 1);
        std::vector<store::StoredFile> files;
        QVERIFY(store.fileGet("docs", "план.txt", true, &files).ok());
        QCOMPARE(QString::fromStdString(files.at(0).bytes), QString("старое"));
        dialog->close();
        // The passport shows what is stored now, and so after the return is taken back.
        QTRY_COMPARE(size(), 12);
        fixture.open();
        QTRY_VERIFY(fixture.what(0).contains("план.txt"));
        fixture.action("actUndo")->trigger();
        QTRY_COMPARE(size(), 28);
    }

    void aVersionIsExtractedNowhereButIntoTheFolder() {
        Fixture fixture;
        store::Store& store = fixture.host.store();
        for (const std::string_view bytes : {"старое", "новое"})
            QVERIFY(store.filePut({{"", "план.txt", bytes, 1000.0}}).ok());
        QVERIFY(fixture.host.kind->byHand("UPDATE \"NciVersion\" SET \"name_\" = '../план.txt';"));
        auto* dialog = fixture.openVersions(fixture.keyOfResource("план.txt"));
        QVERIFY(dialog);
        auto* list = dialog->findChild<QTreeWidget*>("versionsList");
        QTRY_COMPARE(list->topLevelItemCount(), 1);
        QVERIFY(QDir(fixture.host.dir.path()).mkdir("below"));
        dialog->extractInto(fixture.host.dir.filePath("below"));
        const auto* note = dialog->findChild<QLabel*>();
        QTRY_VERIFY(note->text().contains("не может быть именем файла"));
        QVERIFY(!QFile::exists(fixture.host.dir.filePath("план.txt")));
    }

    /// Its bytes, its form and its present content may be others than when the list was read.
    void aVersionThatCannotComeBackIsNamed_data() {
        QTest::addColumn<QString>("what");
        QTest::addColumn<QString>("says");
        QTest::newRow("damaged") << "damaged"
                                 << "Не возвращено: содержимое файла «план»: прежнее содержимое "
                                    "повреждено";
        QTest::newRow("held")
            << "held"
            << "Оставлено как есть: содержимое формы «план»: она занята (Петров П.)";
        QTest::newRow("replaced") << "replaced"
                                  << "Не возвращено: содержимое файла «план»: тем временем "
                                     "изменено (Петров П., ";
    }
    void aVersionThatCannotComeBackIsNamed() {
        QFETCH(QString, what);
        QFETCH(QString, says);
        Fixture fixture;
        store::Store& store = fixture.host.store();
        const auto put = [&](std::string_view bytes) {
            const store::Status status = store.formPut("", {{"", "план", bytes, 1000.0}});
            QVERIFY2(status.ok(), status.text.c_str());
        };
        const auto stored = [&] {
            std::vector<store::StoredFile> files;
            return store.formGet("план", true, &files).ok() && !files.empty()
                       ? QString::fromStdString(files.front().bytes)
                       : QString();
        };
        fixture.otherWrites(MDX_INSERT, {{"KeyLink", "forms"}, {"type_", "3"}, {"caption", "f"}},
                            "MenuResourceFolder");
        put("старое");
        put("новое");
        auto* dialog = fixture.openVersions(fixture.keyOfResource("план"));
        QVERIFY(dialog);
        auto* list = dialog->findChild<QTreeWidget*>("versionsList");
        QTRY_COMPARE(list->topLevelItemCount(), 1);
        if (what == "damaged")
            QVERIFY(fixture.host.kind->byHand(
                fixture.host.kind->name() == "sqlite"
                    ? "UPDATE \"NciVersion\" SET \"data\" = x'414141414141414141414141';"
                    : "UPDATE \"NciVersionData\" SET \"data\" = 'AAAAAAAAAAAA';"));
        else if (what == "held")
            fixture.otherWrites(
                MDX_UPDATE,
                {{"KeyLink", fixture.keyOfResource("план").toStdString()}, {"UsersKey", "u1"}},
                "MenuResource");
        else
            put("чужое");
        const QString before = stored();
        auto* button = dialog->findChild<QPushButton*>("versionReturn");
        QTest::mouseClick(button, Qt::LeftButton);
        const auto* note = dialog->findChild<QLabel*>();
        QTRY_VERIFY2(note->text().startsWith(says), qPrintable(note->text()));
        QCOMPARE(stored(), before);
        if (what != "replaced")
            return;
        QTRY_COMPARE(list->topLevelItemCount(), 2); // the list has the other one now
        list->setCurrentItem(list->topLevelItem(1));
        QTest::mouseClick(button, Qt::LeftButton);
        QTRY_COMPARE(stored(), QString("старое"));
    }

    void aLogThatIsPrunedUnderItSaysSo() {
        Fixture fixture;
        fixture.renames("a", "а1");
        fixture.open();
        QTRY_COMPARE(fixture.model()->rowCount(), 7);
        int64_t position = 0;
        QVERIFY(fixture.host.store().logPosition(&position).ok());
        QVERIFY(fixture.host.store().pruneLog(position - 1).ok());
        const QModelIndex gone = fixture.model()->index(3, 0);
        fixture.tree()->expand(gone);
        QTRY_COMPARE(fixture.model()->rowCount(gone), 1);
        QVERIFY2(fixture.cell(0, HistoryModel::What, gone).contains("уже не помнит"),
                 qPrintable(fixture.cell(0, HistoryModel::What, gone)));
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "d"}, {"caption", "г1"}});
        QTRY_COMPARE(fixture.model()->rowCount(), 8);
        QTRY_VERIFY2(fixture.note().contains("начинается"), qPrintable(fixture.note()));
        fixture.tree()->setCurrentIndex(fixture.model()->index(4, 0));
        QVERIFY(!fixture.child<QPushButton>("historyRevert")->isEnabled());
    }
};

QTEST_MAIN(TestHistoryDock)
#include "tst_history_dock.moc"
