// What would be lost with the window is asked about first.
#include "apps/client/CloseGuard.h"

#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

using namespace orvo::app;

namespace {

struct Bench {
    QWidget window;
    CloseGuard guard;
    QStringList open; ///< what would be lost
    QStringList saved;
    bool refuses = false;
    int gone = 0;
    int stayed = 0;

    Bench() {
        guard.addSource([this] {
            std::vector<CloseGuard::Unsaved> all;
            for (const QString& one : open)
                all.push_back({one, [this, one] {
                                   if (refuses)
                                       return false;
                                   saved << one;
                                   open.removeAll(one);
                                   return true;
                               }});
            return all;
        });
        window.show();
    }
    bool mayGo() {
        return guard.mayGo(&window, "Выход", {[this] { ++gone; }, [this] { ++stayed; }});
    }
    QMessageBox* question() const { return window.findChild<QMessageBox*>(); }
    void answer(const char* name) const {
        QTest::mouseClick(question()->findChild<QPushButton*>(name), Qt::LeftButton);
    }
};

} // namespace

class TestCloseGuard : public QObject {
    Q_OBJECT
private slots:
    void nothingOpenAsksNothing() {
        Bench bench;
        QVERIFY(bench.guard.isClean());
        QVERIFY(bench.mayGo());
        QVERIFY(!bench.question());
    }

    void oneQuestionNamesAllAsPlainText() {
        Bench bench;
        bench.open =
            QStringList({"Редактор меню: элемент «<b>Архив</b>»", "Редактор ресурсов: строка «Б»"});
        QVERIFY(!bench.mayGo());
        QVERIFY(bench.question());
        for (const QString& one : bench.open)
            QVERIFY(bench.question()->text().contains(one));
        QCOMPARE(bench.question()->textFormat(), Qt::PlainText);
        QVERIFY(!bench.mayGo()); // asked already
        QCOMPARE(bench.window.findChildren<QMessageBox*>().size(), 1);
    }

    void savingSavesAllAndGoes() {
        Bench bench;
        bench.open = QStringList({"а", "б"});
        QVERIFY(!bench.mayGo());
        bench.answer("closeSave");
        QTRY_COMPARE(bench.gone, 1);
        QCOMPARE(bench.saved, QStringList({"а", "б"}));
        QCOMPARE(bench.stayed, 0);
    }

    void aRefusedSaveStays() {
        Bench bench;
        bench.open = QStringList("а");
        bench.refuses = true;
        QVERIFY(!bench.mayGo());
        bench.answer("closeSave");
        QTRY_COMPARE(bench.stayed, 1);
        QCOMPARE(bench.gone, 0);
    }

    void droppingGoesAndStayingStays() {
        Bench bench;
        bench.open = QStringList("а");
        QVERIFY(!bench.mayGo());
        bench.answer("closeStay");
        QTRY_COMPARE(bench.stayed, 1);
        QVERIFY(!bench.mayGo());
        QTest::keyClick(bench.question(), Qt::Key_Escape);
        QTRY_COMPARE(bench.stayed, 2);
        QCOMPARE(bench.gone, 0);
        QVERIFY(!bench.mayGo());
        bench.answer("closeDrop");
        QTRY_COMPARE(bench.gone, 1);
        QVERIFY(bench.saved.isEmpty());
    }

    void whatASaveLeavesElsewhereIsAskedAboutNext() {
        Bench bench;
        bench.guard.addSource([&bench] {
            std::vector<CloseGuard::Unsaved> all;
            for (const QString& one : bench.saved)
                all.push_back({"не записано: " + one, [] { return false; }});
            return all;
        });
        bench.open = QStringList("а");
        QVERIFY(!bench.mayGo());
        bench.answer("closeSave");
        QTRY_VERIFY(bench.question() && bench.question()->text().contains("не записано: а"));
        QCOMPARE(bench.gone, 0);
        bench.answer("closeDrop");
        QTRY_COMPARE(bench.gone, 1);
    }
};

QTEST_MAIN(TestCloseGuard)
#include "tst_close_guard.moc"
