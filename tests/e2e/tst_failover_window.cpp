// An engineer whose server fails over to a standby that lacks his last changes: the window says so,
// shows what the new server has, and keeps what was lost for him to repeat.
#include "tests/e2e/SceneTest.h"
#include "tests/store/PostgresCluster.h"

using namespace orvo::test;
using orvo::store::test::PostgresCluster;

class TestFailoverWindow : public SceneTest {
    Q_OBJECT
    std::unique_ptr<PostgresCluster> m_cluster;

    /// Whether the loss is told, with these words at the end.
    bool told(const QString& end) {
        return m_scene->waitFor(
            "the loss is told",
            [&] {
                const QString failure = left().failure();
                return failure.contains("последние изменения потеряны: ") && failure.endsWith(end);
            },
            90000);
    }
    bool shows(const QString& caption) { return left().tree("tvMenu").find(caption) >= 0; }

private slots:
    void initTestCase() {
        m_cluster = PostgresCluster::start();
        QVERIFY(m_cluster);
        m_scene = std::make_unique<Scene>(
            orvo::store::test::kindOn(*m_cluster, "orvo", m_cluster->urlOfBoth("orvo")));
        QVERIFY(m_cluster->startStandby(PostgresCluster::Shipping::Asynchronous));
        DO(m_scene->startLeft());
        QVERIFY(insertElement("fo1", "Pump", {}, 90000));
        DO(m_scene->openDesktop(station));
        DONE(shows("Pump"));
    }

    void whatTheNewServerLacksIsToldTakenAwayAndRepeated() {
        QVERIFY(m_cluster->stopShipping());
        DO(m_scene->clickRow(left(), "tvMenu", "Pump"));
        DO(m_scene->fill(left(), nameRow, "Ghost"));
        DO(m_scene->press(left(), save));
        DONE(!element("Ghost").isNull());
        DO(m_scene->clickRow(left(), "tvMenu", menuTop));
        DO(m_scene->pressAll(left(), {newElement, "actNewElemFolder"}));
        DO(m_scene->fill(left(), nameRow, "Lost folder"));
        DO(m_scene->press(left(), save));
        DONE(!element("Lost folder").isNull());
        const std::optional<QRect> cell = m_scene->reveal(left(), "tvProp", nameRow, 1);
        QVERIFY(cell);
        DO(hands::click(cell->center()));
        SOON(left().ask("windows")["focus"].toObject()["class"].toString() == "QLineEdit");

        // Somebody writes first there: the log then looks as if nothing were missing.
        QVERIFY(m_cluster->failOver());
        for (int i = 0; i < 10; ++i)
            QVERIFY(insertElement(QString("first%1").arg(i), QString("First %1").arg(i), {},
                                  91000 + i));
        // A cell is open: he is told at once, and nothing is taken from under his hands.
        QVERIFY2(
            told("показанное устарело, модули откроются заново, когда вы закончите правку, ваши "
                 "потерянные записи — в «Не записано»."),
            qPrintable(left().failure()));
        QVERIFY(shows("Lost folder"));
        take("told");
        hands::key("Escape");
        QVERIFY2(told("модули открыты заново, ваши потерянные записи — в «Не записано»."),
                 qPrintable(left().failure()));
        SOON(unwritten().size() == 2);
        QCOMPARE(unwritten(), QStringList({"Переименован элемент меню «Ghost»: было «Pump»",
                                           "Создан элемент меню «Lost folder»"}));
        take("lost");
        SOON(shows("Pump") && shows("First 9"));
        QVERIFY(!shows("Ghost") && !shows("Lost folder"));
        DO(acknowledge());
        DO(m_scene->agree());

        DO(m_scene->press(left(), "unwrittenRepeatAll"));
        SOON(unwritten().isEmpty());
        DONE(element("Ghost") == "fo1" && !element("Lost folder").isNull());
        SOON(shows("Ghost") && shows("Lost folder"));
        take("repeated");
    }
};

QTEST_MAIN(TestFailoverWindow)
#include "tst_failover_window.moc"
