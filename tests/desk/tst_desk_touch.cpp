// The operator's menu under a finger, and with very many elements.
#include "tests/desk/DeskFixture.h"

#include <QLineEdit>
#include <QScrollBar>
#include <QScroller>
#include <QSettings>
#include <QToolButton>

using namespace orvo::test;

namespace {

constexpr int fingertip = 44;

auto* touchScreen() {
    static auto* const screen = QTest::createTouchDevice();
    return screen;
}

void tap(QWidget* widget, const QPoint& at) {
    QTest::touchEvent(widget, touchScreen()).press(0, at, widget);
    QTest::touchEvent(widget, touchScreen()).release(0, at, widget);
}

void tapRow(QAbstractItemView& view, const QModelIndex& row) {
    tap(view.viewport(), view.visualRect(row).center());
}

bool startNarrow(Desk& desk) {
    if (!desk.start())
        return false;
    desk.module->module->resize(340, 560);
    desk.module->module->show();
    return QTest::qWaitForWindowExposed(desk.module->module.get());
}

void swipeUp(QAbstractItemView& view) {
    QWidget* viewport = view.viewport();
    QPoint at(100, viewport->height() - 30);
    QTest::touchEvent(viewport, touchScreen()).press(0, at, viewport);
    for (int step = 0; step < 12; ++step) {
        at -= QPoint(0, 20);
        QTest::qWait(10);
        QTest::touchEvent(viewport, touchScreen()).move(0, at, viewport);
    }
    QTest::touchEvent(viewport, touchScreen()).release(0, at, viewport);
    QTRY_VERIFY2(view.verticalScrollBar()->value() > 100, qPrintable(view.objectName()));
    QTRY_COMPARE(QScroller::scroller(viewport)->state(), QScroller::Inactive);
}

} // namespace

class TestDeskTouch : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settings.path());
    }

    void aFingerHitsWhatItIsToHit() {
        Desk desk;
        QVERIFY(startNarrow(desk));
        desk.view().expandAll();
        (*desk.module)->launch("e5");
        auto* search = desk.module->child<QLineEdit>("deskSearch");
        search->setText(QString::fromUtf8("агрегаты"));
        auto* clear = desk.module->child<QToolButton>("deskSearchClear");
        QTRY_VERIFY(clear->isVisible());
        const auto isLarge = [](const QSize& size) {
            return size.width() >= fingertip && size.height() >= fingertip;
        };
        QVERIFY(isLarge(clear->size()) && isLarge(search->size()));
        for (const char* name : {"deskHits", "deskRecent"}) {
            auto* list = desk.module->child<ElementList>(name);
            QVERIFY(list->count() > 0);
            for (int row = 0; row < list->count(); ++row)
                QVERIFY(isLarge(list->visualRect(list->model()->index(row, 0)).size()));
        }
        tap(clear, clear->rect().center());
        QVERIFY(search->text().isEmpty());
        QTRY_VERIFY(desk.view().isVisible());
        for (const char* key : {"e1", "e2", "e3", "e4", "e5", "e6"})
            QVERIFY(isLarge(desk.view().visualRect(desk.row(key)).size()));
        const QRect separated = desk.view().visualRect(desk.row("e2"));
        QVERIFY(separated.height() - orvo::desk::DeskDelegate::separatorHeight >= fingertip);
    }

    void aTapOpensWhatItHits() {
        Desk desk;
        QVERIFY(startNarrow(desk));
        tapRow(desk.view(), desk.row("e1"));
        QTRY_VERIFY(desk.view().isExpanded(desk.row("e1")));
        tapRow(desk.view(), desk.row("e3"));
        QTRY_COMPARE(desk.host->launched.size(), size_t(1));
        QCOMPARE(desk.host->launched[0].key, QString("e3"));
        auto* recent = desk.module->child<ElementList>("deskRecent");
        QTRY_VERIFY(recent->isVisible());
        tapRow(*recent, recent->model()->index(0, 0));
        QTRY_COMPARE(desk.host->launched.size(), size_t(2));
        desk.module->child<QLineEdit>("deskSearch")->setText(QString::fromUtf8("тренды"));
        auto* hits = desk.module->child<ElementList>("deskHits");
        QTRY_VERIFY(hits->isVisible());
        tapRow(*hits, hits->model()->index(0, 0));
        QTRY_COMPARE(desk.host->launched.size(), size_t(3));
        QCOMPARE(desk.host->launched[2].key, QString("e2"));
    }

    void aSwipeScrollsAndOpensNothing() {
        Desk desk([](TestStore& store) {
            fillPlant(store);
            addMany(store, nullptr, 200);
        });
        QVERIFY(startNarrow(desk));
        swipeUp(desk.view());
        auto* hits = desk.module->child<ElementList>("deskHits");
        desk.module->child<QLineEdit>("deskSearch")->setText(QString::fromUtf8("элемент"));
        QTRY_VERIFY(hits->isVisible());
        swipeUp(*hits);
        // What a tap opens is the first that is opened at all.
        const QModelIndex hit = hits->indexAt({100, 200});
        tapRow(*hits, hit);
        QTRY_VERIFY(!desk.host->launched.empty());
        QCOMPARE(desk.host->launched.size(), size_t(1));
        QCOMPARE(desk.host->launched[0].caption, hit.data().toString());
    }

    void thousandsOfElementsAreShownAndScrolledWithoutLosingThePlace() {
        Desk desk([](TestStore& store) {
            fillPlant(store);
            addMany(store, "e1", 10000);
        });
        QVERIFY(desk.start());
        const QModelIndex folder = desk.row("e1");
        clickRow(&desk.view(), folder);
        QCOMPARE(desk.model().rowCount(folder), 10002);
        desk.view().scrollTo(desk.row("k5000"), QAbstractItemView::PositionAtTop);
        const int y = desk.view().visualRect(desk.row("k5000")).top();
        for (int i = 0; i < 20; ++i)
            addElement(desk.store, qPrintable(QString("new%1").arg(i)), "e1", "Новый", 10 + i,
                       "rm");
        desk.deliver();
        QCOMPARE(desk.model().rowCount(desk.row("e1")), 10022);
        QCOMPARE(desk.view().visualRect(desk.row("k5000")).top(), y);
        QTest::keyClick(&desk.view(), Qt::Key_End);
        desk.view().setCurrentIndex(desk.row("k10000"));
        QTest::keyClick(&desk.view(), Qt::Key_Return);
        QCOMPARE(desk.host->launched.size(), size_t(1));
        QCOMPARE(desk.host->launched[0].caption, QString("Элемент 10000"));
        desk.module->child<QLineEdit>("deskSearch")->setText("9999");
        auto* hits = desk.module->child<ElementList>("deskHits");
        QCOMPARE(hits->count(), 1);
        desk.store.sql("DELETE FROM \"Menu\" WHERE \"KeyLink\" LIKE 'k%'");
        desk.deliver();
        QCOMPARE(desk.model().rowCount(desk.row("e1")), 22);
    }

private:
    QTemporaryDir m_settings;
};

QTEST_MAIN(TestDeskTouch)
#include "tst_desk_touch.moc"
