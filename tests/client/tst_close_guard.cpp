// What would be lost with the window is asked about first.
#include "apps/client/CloseGuard.h"

#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

using namespace orvo::app;

namespace {

struct Fixture {
    QWidget window;
    CloseGuard guard;
    QStringList open; ///< what would be lost
    QStringList saved;
    bool refuses = false;
    int gone = 0;
    int stayed = 0;

    Fixture() {
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
        Fixture fixture;
        QVERIFY(fixture.guard.isClean());
        QVERIFY(fixture.mayGo());
        QVERIFY(!fixture.question());
    }

    void oneQuestionNamesAllAsPlainText() {
        Fixture fixture;
        fixture.open =
            QStringList({"Редактор меню: элемент «<b>Архив</b>»", "Редактор ресурсов: строка «Б»"});
        QVERIFY(!fixture.mayGo());
        QVERIFY(fixture.question());
        for (const QString& one : fixture.open)
            QVERIFY(fixture.question()->text().contains(one));
        QCOMPARE(fixture.question()->textFormat(), Qt::PlainText);
        QVERIFY(!fixture.mayGo()); // asked already
        QCOMPARE(fixture.window.findChildren<QMessageBox*>().size(), 1);
    }

    void savingSavesAllAndGoes() {
        Fixture fixture;
        fixture.open = QStringList({"а", "б"});
        QVERIFY(!fixture.mayGo());
        fixture.answer("closeSave");
        QTRY_COMPARE(fixture.gone, 1);
        QCOMPARE(fixture.saved, QStringList({"а", "б"}));
        QCOMPARE(fixture.stayed, 0);
    }

    void aRefusedSaveStays() {
        Fixture fixture;
        fixture.open = QStringList("а");
        fixture.refuses = true;
        QVERIFY(!fixture.mayGo());
        fixture.answer("closeSave");
        QTRY_COMPARE(fixture.stayed, 1);
        QCOMPARE(fixture.gone, 0);
    }

    void droppingGoesAndStayingStays() {
        Fixture fixture;
        fixture.open = QStringList("а");
        QVERIFY(!fixture.mayGo());
        fixture.answer("closeStay");
        QTRY_COMPARE(fixture.stayed, 1);
        QVERIFY(!fixture.mayGo());
        QTest::keyClick(fixture.question(), Qt::Key_Escape);
        QTRY_COMPARE(fixture.stayed, 2);
        QCOMPARE(fixture.gone, 0);
        QVERIFY(!fixture.mayGo());
        fixture.answer("closeDrop");
        QTRY_COMPARE(fixture.gone, 1);
        QVERIFY(fixture.saved.isEmpty());
    }

    void whatASaveLeavesElsewhereIsAskedAboutNext() {
        Fixture fixture;
        fixture.guard.addSource([&fixture] {
            std::vector<CloseGuard::Unsaved> all;
            for (const QString& one : fixture.saved)
                all.push_back({"не записано: " + one, [] { return false; }});
            return all;
        });
        fixture.open = QStringList("а");
        QVERIFY(!fixture.mayGo());
        fixture.answer("closeSave");
        QTRY_VERIFY(fixture.question() && fixture.question()->text().contains("не записано: а"));
        QCOMPARE(fixture.gone, 0);
        fixture.answer("closeDrop");
        QTRY_COMPARE(fixture.gone, 1);
    }
};

QTEST_MAIN(TestCloseGuard)
#include "tst_close_guard.moc"
