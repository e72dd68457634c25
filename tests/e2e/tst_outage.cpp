// Two clients whose server freezes, stops and comes back: a window answers, stays painted, says
// since when there is no connection, and lets the engineer give up a call that waits, and what was
// not saved is told.
#include "tests/e2e/Hands.h"
#include "tests/e2e/Scene.h"
#include "tests/store/PostgresCluster.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPixmap>
#include <QRegularExpression>
#include <QScreen>
#include <QtTest>

#include <algorithm>

using namespace orvo::test;
using orvo::store::test::PostgresCluster;

#define DO(act) QVERIFY2(act, m_scene->why())

namespace {

const QString station = QStringLiteral("КС-1 «Верхнеозёрск»");
const QString secondStation = QStringLiteral("КС-2 «Кедровый Лог»");

const QString element = QStringLiteral("Агрегаты");
const QString nameRow = QStringLiteral("Наименование");
const QString save = QStringLiteral("Сохранить");
const QString keptMenu = QStringLiteral("ожидание прервано; на экране прежнее меню");
const QString notSaved = QStringLiteral("Отказано: изменения не сохранены");
const QString reopen = QStringLiteral("Открыть модули заново");

/// The window of the pane; empty if it is not on the screen.
QString pane() {
    QProcess search;
    search.start("xdotool", {"search", "--onlyvisible", "--name", "ожидание сервера"});
    search.waitForFinished();
    return QString::fromLatin1(search.readAllStandardOutput()).section('\n', 0, 0);
}

QRect geometryOf(const QString& window) {
    QProcess question;
    question.start("xdotool", {"getwindowgeometry", "--shell", window});
    question.waitForFinished();
    const QString text = QString::fromLatin1(question.readAllStandardOutput());
    const auto number = [&](const char* name) {
        return QRegularExpression(QString("^%1=(-?\\d+)").arg(name),
                                  QRegularExpression::MultilineOption)
            .match(text)
            .captured(1)
            .toInt();
    };
    return {number("X"), number("Y"), number("WIDTH"), number("HEIGHT")};
}

QImage screen() {
    return QGuiApplication::primaryScreen()->grabWindow(0).toImage();
}

/// For a look at it: into the folder that ORVO_E2E_PICTURES names.
void take(const char* name) {
    const QString folder = qEnvironmentVariable("ORVO_E2E_PICTURES");
    if (!folder.isEmpty())
        QProcess::execute("import", {"-window", "root", folder + '/' + name + ".png"});
}

/// Of the points in `area` and not in `without`, the share that is alike.
double alike(const QImage& a, const QImage& b, const QRect& area, const QRect& without) {
    int same = 0;
    int all = 0;
    for (int y = area.top(); y <= area.bottom(); y += 3)
        for (int x = area.left(); x <= area.right(); x += 3)
            if (!without.contains(x, y)) {
                ++all;
                same += a.pixel(x, y) == b.pixel(x, y);
            }
    return double(same) / std::max(1, all);
}

} // namespace

class TestOutage : public QObject {
    Q_OBJECT
    std::unique_ptr<PostgresCluster> m_cluster;
    std::unique_ptr<Scene> m_scene;
    QString m_element;

    ClientProcess& client() { return m_scene->left(); }
    QString connection() { return client().ask("state")["connection"].toString(); }
    bool waitFor(const std::function<bool()>& condition, int ms = 15000) {
        return QTest::qWaitFor(condition, ms);
    }
    bool isAway() {
        static const QRegularExpression line(
            "^Нет связи с postgresql://.* с \\d\\d:\\d\\d:\\d\\d$");
        return line.match(connection()).hasMatch();
    }
    /// Takes the line on a failure away where there is one. Right after a wait the client drops
    /// clicks, so one may not be enough.
    bool acknowledge() {
        for (ClientProcess* one : {&m_scene->left(), &m_scene->right()})
            if (!waitFor([&] {
                    if (!one->failure().isEmpty())
                        m_scene->press(*one, "failureButton");
                    return one->failure().isEmpty();
                }))
                return false;
        return true;
    }
    /// Waits until both clients know that the server is back.
    bool back() {
        return waitFor(
            [this] {
                for (ClientProcess* one : {&m_scene->left(), &m_scene->right()})
                    if (one->ask("state")["connection"].toString() != QStringLiteral("Подключено"))
                        return false;
                return true;
            },
            40000);
    }
    /// How many lines of the log contain the text. The status bar may have a later failure already.
    int logged(const QString& text) {
        const Tree log = client().tree("logPane");
        return static_cast<int>(
            std::count_if(log.rows.begin(), log.rows.end(),
                          [&](const TreeRow& row) { return row.cells.value(2).contains(text); }));
    }
    /// The requests in the list of those not written: for each the reason, up to its colon.
    QStringList unwritten() {
        QStringList reasons;
        for (const TreeRow& row : client().tree("unwrittenTree").rows)
            if (row.depth == 0)
                reasons << row.cells.value(2).section(": ", 0, 1);
        return reasons;
    }
    /// What the store has as the caption of the element that is renamed.
    QString caption() {
        return m_scene->store().value("select caption from Menu where KeyLink = " +
                                      quoted(m_element));
    }
    /// Clicks on a row that is on the screen. The client may be unable to say anything.
    static void clickAt(const QRect& cell) {
        hands::click(QPoint(cell.left() + std::min(40, cell.width() / 2), cell.center().y()));
    }
    void giveUp(bool byMouse) {
        hands::xdotool({"windowactivate", "--sync", pane()});
        if (byMouse)
            hands::click(geometryOf(pane()).bottomRight() - QPoint(50, 28));
        else
            hands::key("Escape");
        QVERIFY(waitFor([] { return pane().isEmpty(); }, 8000));
        QVERIFY(client().isRunning());
    }

private slots:
    void initTestCase() {
        m_cluster = PostgresCluster::start();
        QVERIFY(m_cluster);
        m_scene = std::make_unique<Scene>(
            orvo::store::test::kindOn(*m_cluster, "orvo", m_cluster->url("orvo")));
        DO(m_scene->startLeft());
        DO(m_scene->startRight());
        DO(m_scene->agree());
        DO(m_scene->openDesktop(station));
        m_element = m_scene->store().value(
            "select m.KeyLink from Menu m join MenuFolder f on f.KeyLink = m.FolderKey where "
            "f.caption = " +
            quoted(station) + " and m.caption = " + quoted(element));
        QVERIFY(!m_element.isEmpty());
    }
    void cleanup() {
        m_cluster->thaw();
        const QString picture = qEnvironmentVariable("ORVO_E2E_PICTURE");
        if (QTest::currentTestFailed() && !picture.isEmpty())
            screen().save(picture);
    }

    void anIdleWindowAnswersWhileTheServerIsFrozenAndSaysSinceWhen() {
        QVERIFY(m_cluster->freeze());
        QElapsedTimer frozen;
        frozen.start();
        qint64 longest = 0;
        bool told = false;
        while (frozen.elapsed() < 9000) {
            QElapsedTimer answer;
            answer.start();
            told = isAway() || told;
            longest = std::max(longest, answer.elapsed());
            QTest::qWait(20);
        }
        QVERIFY2(told, qUtf8Printable(connection()));
        QVERIFY2(longest < 1500, qPrintable(QString::number(longest)));
        take("idle");
        QVERIFY(m_cluster->thaw());
        QVERIFY(back());
        DO(acknowledge());
        DO(m_scene->agree());
    }

    void aSelectionThatWaitsIsGivenUp_data() {
        QTest::addColumn<bool>("byMouse");
        QTest::newRow("Esc") << false;
        QTest::newRow("button") << true;
    }
    void aSelectionThatWaitsIsGivenUp() {
        QFETCH(bool, byMouse);
        const std::optional<QRect> there = m_scene->reveal(client(), "tvDesck", secondStation);
        QVERIFY(there);
        DO(m_scene->openDesktop(station));
        const QRect area = client().tree("tvMenu").rect;
        const QImage look = screen();
        const int before = logged(keptMenu);
        QVERIFY(m_cluster->freeze());
        clickAt(*there);
        QVERIFY(waitFor([] { return !pane().isEmpty(); }));
        QTest::qWait(500);
        take("pane");
        const QRect place = geometryOf(pane()).adjusted(-4, -4, 4, 4);
        {
            // Something covers the window and goes away: nothing of it stays.
            QWidget cover(nullptr, Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint);
            cover.setStyleSheet("background:#ff00ff");
            cover.setGeometry(area);
            cover.show();
            QVERIFY(QTest::qWaitForWindowExposed(&cover));
            QTest::qWait(200);
            QVERIFY(alike(screen(), look, area, place) < 0.1);
        }
        QTest::qWait(700);
        const double painted = alike(screen(), look, area, place);
        QVERIFY2(painted > 0.95, qPrintable(QString::number(painted)));
        // Impatient clicks hit nothing afterwards.
        hands::click(area.center());
        giveUp(byMouse);
        if (QTest::currentTestFailed())
            return;
        QVERIFY(waitFor([&] { return logged(keptMenu) > before; }));
        QVERIFY(!client().failure().isEmpty());
        take("given-up");
        QVERIFY(m_cluster->thaw());
        QVERIFY(back());
        DO(acknowledge());
        DO(m_scene->openDesktop(station));
        DO(m_scene->openDesktop(secondStation));
    }

    void aWaitThatEndsByItselfTakesThePaneAway() {
        const std::optional<QRect> there = m_scene->reveal(client(), "tvDesck", station);
        QVERIFY(there);
        QVERIFY(m_cluster->freeze());
        clickAt(*there);
        QVERIFY(waitFor([] { return !pane().isEmpty(); }));
        QVERIFY(m_cluster->thaw());
        QVERIFY(waitFor([] { return pane().isEmpty(); }));
        QVERIFY(back());
        QTest::qWait(300);
        DO(acknowledge());
        DO(m_scene->openDesktop(station));
    }

    void aWriteThatIsGivenUpIsKeptAndMadeAgain() {
        DO(m_scene->clickRow(client(), "tvMenu", element));
        DO(m_scene->fill(client(), nameRow, "Of the freeze"));
        const std::vector<Control> buttons = client().controls(save);
        const auto button = std::find_if(buttons.begin(), buttons.end(), [](const Control& one) {
            return one.visible && one.enabled;
        });
        QVERIFY(button != buttons.end());
        QVERIFY(m_cluster->freeze());
        hands::click(button->rect.center());
        QVERIFY(waitFor([] { return !pane().isEmpty(); }));
        giveUp(false);
        if (QTest::currentTestFailed())
            return;
        // The server was still to be asked what others had done: nothing was committed.
        QVERIFY(waitFor([&] { return unwritten() == QStringList(notSaved); }));
        take("given-up-write");
        QVERIFY(m_cluster->thaw());
        QVERIFY(back());
        DO(acknowledge());
        QCOMPARE(caption(), element);
        DO(m_scene->press(client(), "unwrittenRepeatAll"));
        QVERIFY(waitFor([&] { return caption() == "Of the freeze" && unwritten().isEmpty(); }));
        DO(m_scene->agree());
    }

    void aStoppedServerIsToldAndSoIsWhatCouldNotBeSaved() {
        DO(m_scene->clickRow(client(), "tvMenu", "Of the freeze"));
        QVERIFY(
            m_cluster->run("pg_ctl", {"stop", "-s", "-m", "immediate", "-D", m_cluster->data()}));
        QVERIFY(waitFor([&] { return isAway(); }));
        QVERIFY(waitFor([&] { return !client().failure().isEmpty(); }));
        DO(acknowledge());
        DO(m_scene->fill(client(), nameRow, "Typed meanwhile"));
        DO(m_scene->press(client(), save));
        QVERIFY(waitFor([&] { return unwritten() == QStringList(notSaved); }));
        take("not-saved");
        QVERIFY(m_cluster->run("pg_ctl", {"start", "-s", "-w", "-D", m_cluster->data(), "-l",
                                          m_cluster->data() + "/server.log"}));
        QVERIFY(m_scene->store().foreignWrite("update MenuFolder set caption = 'After all' where "
                                              "caption = " +
                                              quoted(secondStation)));
        QVERIFY(back());
        QCOMPARE(caption(), QString("Of the freeze"));
        // The cell that was typed into holds the changes of others until it is left.
        hands::key("Escape");
        QVERIFY(waitFor([&] { return client().tree("tvDesck").find("After all") >= 0; }));
        take("back");
        QVERIFY(client().failure().contains(reopen));
        DO(acknowledge());
        DO(m_scene->press(client(), "unwrittenRepeatAll"));
        QVERIFY(waitFor([&] { return caption() == "Typed meanwhile"; }));
        DO(m_scene->pressAll(client(), {QStringLiteral("Клиент"), reopen}));
        DO(m_scene->openDesktop(station));
        QVERIFY(client().tree("tvMenu").find("Typed meanwhile") >= 0);
        take("after-all");
    }
};

QTEST_MAIN(TestOutage)
#include "tst_outage.moc"
