// The log and the status line of the window.
#include "apps/client/LogPane.h"
#include "apps/client/MainWindow.h"
#include "apps/client/ModuleTabs.h"
#include "apps/client/StatusLine.h"
#include "tests/client/HostFixture.h"

#include <QAbstractItemModelTester>
#include <QDockWidget>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QTextDocument>
#include <QToolButton>
#include <QTreeView>
#include <QtTest>

using namespace orvo::app;

class TestPanes : public QObject {
    Q_OBJECT
private slots:
    void theLogKeepsItsLinesInOrder() {
        LogPane log;
        QAbstractItemModelTester tester(log.model(),
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
        log.add(LogError, "OrvoMenu::loadTables->Menu", "Ошибка\nв две строки");
        log.add(LogInformation, "a", "b");
        QCOMPARE(log.topLevelItemCount(), 2);
        QCOMPARE(log.topLevelItem(0)->text(1), QString("OrvoMenu::loadTables->Menu"));
        QCOMPARE(log.topLevelItem(0)->text(2), QString("Ошибка в две строки"));
        QVERIFY(!log.topLevelItem(0)->text(0).isEmpty());
        for (int i = 0; i < LogPane::mostLines + 10; ++i)
            log.add(LogInformation, "i", QString::number(i));
        QCOMPARE(log.topLevelItemCount(), int(LogPane::mostLines));
        QCOMPARE(log.topLevelItem(log.topLevelItemCount() - 1)->text(2),
                 QString::number(LogPane::mostLines + 9));
    }

    void aFailureStaysUntilItIsSeen() {
        StatusLine line("/tmp/orvo.db", "ivanov");
        line.resize(1400, line.sizeHint().height());
        line.show();
        auto* button = line.findChild<QToolButton*>("failureButton");
        QVERIFY(!button->isVisible());
        line.setFailure("Запись: диск полон");
        QVERIFY(button->isVisible());
        QVERIFY(button->text().contains("диск полон"));
        line.setFailure("Запись: <b>нет прав</b>");
        QVERIFY(button->text().contains("нет прав"));
        QVERIFY(button->text().contains("2"));
        QVERIFY(button->toolTip().contains("&lt;b&gt;"));
        line.setConnected(true, {});
        QVERIFY(button->isVisible());
        button->click();
        QVERIFY(!button->isVisible());
        QVERIFY(line.failure().isEmpty());
    }

    void aCopyShowsHowFarItIsUntilItEnds() {
        StatusLine line("/tmp/orvo.db", "ivanov");
        line.resize(1400, line.sizeHint().height());
        line.show();
        auto* label = line.findChild<QLabel*>("copyingLabel");
        QVERIFY(!label->isVisible());
        line.setCopying(12, 150);
        QVERIFY(label->isVisible());
        QVERIFY(label->text().contains("12 из 150"));
        line.setCopying(0, 0);
        QVERIFY(!label->isVisible());
    }

    void aLongFailureTakesTheRoomThereIsAndMakesNoWindowWider() {
        MainWindow window("store", "user");
        window.resize(900, 500);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        auto* button = window.findChild<QToolButton*>("failureButton");
        window.statusLine()->setFailure(QString("long ").repeated(200));
        QTRY_VERIFY(!button->text().isEmpty());
        QCOMPARE(window.width(), 900);
        const int length = button->text().size();
        window.resize(1300, 500);
        QTRY_VERIFY(button->text().size() > length + 20);
        QCOMPARE(window.width(), 1300);
        QTRY_VERIFY(button->width() >= button->sizeHint().width());
        window.resize(900, 500);
        QTRY_COMPARE(button->text().size(), length);
        QCOMPARE(window.width(), 900);
    }

    void aFailureThatDoesNotFitIsShownWholeByAClick() {
        MainWindow window("store", "user");
        window.resize(900, 500);
        window.show();
        auto* button = window.findChild<QToolButton*>("failureButton");
        const auto whole = [&] { return window.findChild<QLabel*>("wholeFailure"); };
        window.statusLine()->setFailure("short");
        button->click();
        QVERIFY(!whole() || !whole()->isVisible());

        const QString text = QString("<b>long</b> ").repeated(60) + "end";
        window.statusLine()->setFailure(text);
        QVERIFY(button->text().size() < text.size());
        button->click();
        QVERIFY(!button->isVisible());
        QVERIFY(whole() && whole()->isVisible());
        QCOMPARE(whole()->text(), text);
        QCOMPARE(whole()->textFormat(), Qt::PlainText);
        QVERIFY(window.rect().contains(whole()->geometry()));
        QVERIFY(whole()->height() >= whole()->heightForWidth(whole()->width()));
        QTest::mouseClick(whole(), Qt::LeftButton);
        QVERIFY(!whole()->isVisible());
    }

    void aNarrowStatusLineShortensNamesAndTellsWhatHappened() {
        MainWindow window("/srv/dispatcher/installations/compressor-stations/orvo.db", "ivanov");
        StatusLine& line = *window.statusLine();
        window.resize(1100, 600);
        window.show();
        const auto part = [&](const char* name) { return window.findChild<QWidget*>(name); };
        const int storeAlone = 400;
        QTRY_VERIFY(part("storeLabel")->width() > storeAlone);
        line.setOthers("Ковалёва Мария Петровна, Сидоров Иван Никодимович", "Ковалёва: правит");
        line.setProblems(2, 14);
        line.setFailure("Не записано: " + QString("нет места ").repeated(30));
        line.setDone("Исправлено: 12. Отменить исправления можно Ctrl+Z.");
        QTRY_VERIFY(part("storeLabel")->width() < storeAlone);
        QTRY_VERIFY(part("doneLabel")->width() >= 200);
        QCOMPARE(window.width(), 1100);
        QVERIFY(window.minimumSizeHint().width() < 1000);
        for (const char* name : {"problemsButton", "failureButton"})
            QTRY_VERIFY2(part(name)->width() >= part(name)->sizeHint().width(), name);
        QTRY_VERIFY(part("failureButton")->width() >= 200);
        int right = 0;
        for (const char* name : {"storeLabel", "userLabel", "othersLabel", "problemsButton",
                                 "doneLabel", "failureButton"}) {
            QTRY_VERIFY2(part(name)->width() >= 40, name);
            QVERIFY2(part(name)->x() >= right, name);
            right = part(name)->geometry().right();
            QVERIFY2(right < line.width(), name);
        }
        // The whole of it can be read.
        QVERIFY(part("storeLabel")->toolTip().contains("compressor-stations"));
        QVERIFY(window.findChild<QLabel*>("storeLabel")->text().contains("compressor-stations"));
        // Room comes back with what is seen.
        window.findChild<QToolButton*>("failureButton")->click();
        line.setOthers({}, {});
        window.resize(2400, 600);
        QTRY_VERIFY(part("storeLabel")->width() > storeAlone);
    }

    void theReasonAtTheEndOfALongFailureIsRead() {
        MainWindow window("store", "user");
        window.resize(900, 500);
        window.show();
        window.statusLine()->setFailure("Вернуть эту правку: Переименован рабочий стол «КС-3 "
                                        "новая» и ещё 12 записей: сначала ответьте на вопрос");
        const QString shown = window.findChild<QToolButton*>("failureButton")->text();
        QVERIFY2(shown.startsWith("Вернуть") && shown.endsWith("на вопрос"), qPrintable(shown));
    }

    void failuresAreReadAndPutAwayByKeys() {
        MainWindow window("store", "user");
        window.resize(900, 500);
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        window.tabs()->addPage(new QTreeView, "page");
        window.logPane()->setFocus();
        const auto whole = [&] { return window.findChild<QLabel*>("wholeFailure"); };
        const auto press = [&](Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); };
        press(Qt::Key_F12);
        QVERIFY(!whole() || !whole()->isVisible()); // there is none

        for (const char* text : {"the first", "the second", "the third"})
            window.statusLine()->setFailure(text);
        press(Qt::Key_F12);
        QVERIFY(whole() && whole()->isVisible());
        QVERIFY(window.statusLine()->failure().isEmpty());
        for (const char* text : {"the first", "the second", "the third"})
            QVERIFY2(whole()->text().contains(text), qPrintable(whole()->text()));
        window.resize(700, 400);
        QTRY_VERIFY(window.rect().contains(whole()->geometry()));
        press(Qt::Key_Escape);
        QVERIFY(!whole()->isVisible());
        QCOMPARE(QApplication::focusWidget(), window.logPane());

        window.statusLine()->setFailure("the fourth");
        press(Qt::Key_F12);
        QVERIFY(whole()->isVisible());
        QCOMPARE(whole()->text(), QString("the fourth"));
        press(Qt::Key_F12);
        QVERIFY(!whole()->isVisible());
        // It is in nobody's way: who goes on elsewhere has read it.
        window.statusLine()->setFailure(QString("long ").repeated(200));
        press(Qt::Key_F12);
        QVERIFY(whole()->isVisible());
        window.focusPage();
        QVERIFY(!whole()->isVisible());
    }

    void anOperatorReadsAFailureByKeyAndIsNotSentToALog() {
        MainWindow window("store", "user");
        window.becomeWorkplace();
        auto* page = new QTreeView;
        window.tabs()->addPage(page, "page");
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        page->setFocus();
        window.statusLine()->setFailure("the module is missing");
        const QString tip = window.findChild<QToolButton*>("failureButton")->toolTip();
        QVERIFY2(tip.contains("F12") && !tip.contains("журнал"), qPrintable(tip));
        QTest::keyClick(page, Qt::Key_F12);
        QVERIFY(window.statusLine()->failure().isEmpty());
    }

    void theStatusLineShowsStoreUserAndConnection() {
        StatusLine line("/tmp/<x>.db", "ivanov");
        QVERIFY(line.findChild<QLabel*>("storeLabel")->text().contains("/tmp/<x>.db"));
        QVERIFY(line.findChild<QLabel*>("userLabel")->text().contains("ivanov"));
        auto* connection = line.findChild<QLabel*>("connectionLabel");
        const QString up = connection->text();
        line.setConnected(false, "нет сети");
        QVERIFY(connection->text() != up);
        QVERIFY(connection->toolTip().contains("нет сети"));
        line.setConnected(true, {});
        QVERIFY(connection->toolTip().isEmpty());
    }

    void markupInWhatAServerSaysIsShownAsItStands() {
        const QString text = "<b>нет</b> <img src='x'> & нет\nещё";
        const auto shown = [](const QString& tip) {
            QTextDocument document;
            document.setHtml(tip);
            return Qt::mightBeRichText(tip) ? document.toPlainText() : tip;
        };
        StatusLine line("/tmp/orvo.db", "ivanov");
        line.setConnected(false, text);
        auto* connection = line.findChild<QLabel*>("connectionLabel");
        QCOMPARE(shown(connection->toolTip()), text);
        // Without a tag it is not read as markup in one place and as text in the other.
        line.setConnected(false, "a & b");
        QCOMPARE(shown(connection->toolTip()), QString("a & b"));
        LogPane log;
        log.add(LogError, "place", text);
        QCOMPARE(shown(log.topLevelItem(0)->toolTip(2)), text);
    }

    void modulesAreTabsWithTheirTitles() {
        orvo::test::App app;
        MainWindow window("store", "user");
        auto* module = new orvo::test::Module(&app);
        window.tabs()->addModule(module, "Menu");
        auto* tabs = window.findChild<QTabWidget*>("modules");
        QCOMPARE(tabs->count(), 1);
        QCOMPARE(tabs->tabText(0), QString("Menu"));
        window.setTitle(module, "Редактор & меню");
        QCOMPARE(tabs->tabText(0), QString("Редактор && меню"));
        delete module;
        QCOMPARE(tabs->count(), 0);
    }

    void aClosedPaneGivesTheEditorsTheirHeightBack() {
        MainWindow window("/tmp/orvo.db", "ivanov");
        window.resize(760, 700); // the screen of tests without a display is 800 high
        const auto* log = window.findChild<QDockWidget*>("logDock");
        QDockWidget* first = window.addPane(new QTreeView, "Проблемы", "problems", Qt::Key_F8);
        QDockWidget* second = window.addPane(new QTreeView, "История", "history", Qt::Key_F4);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        const int editors = window.centralWidget()->height();
        const int logHeight = log->height();
        QTest::keyClick(&window, Qt::Key_F8);
        QTest::keyClick(&window, Qt::Key_F4);
        QTRY_VERIFY(second->height() > 250 && window.centralWidget()->height() < editors);
        second->close();
        first->close();
        QTRY_COMPARE(log->height(), logHeight);
        QTRY_COMPARE(window.centralWidget()->height(), editors);
    }

    void anErrorIsABoxOverTheWindow() {
        MainWindow window("store", "user");
        window.show();
        window.showError("Форма не найдена.");
        auto* box = window.findChild<CPopMessageBox*>();
        QVERIFY(box && box->isVisible());
        for (QPushButton* button : box->findChildren<QPushButton*>())
            if (button->isVisible())
                button->click();
        QVERIFY(box->isHidden());
    }
};

QTEST_MAIN(TestPanes)
#include "tst_panes.moc"
