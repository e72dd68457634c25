// An operator's desktop on a server of its own: who may only read, a server that goes and comes
// back, and a standby.
#include "tests/e2e/OperatorTest.h"
#include "tests/store/PostgresCluster.h"

#include <QElapsedTimer>

using namespace orvo::test;
using orvo::store::test::PostgresCluster;

class TestOperatorServer : public OperatorTest {
    Q_OBJECT
    std::unique_ptr<PostgresCluster> m_cluster;
    QTemporaryDir m_directory;

    bool isAway() {
        static const QRegularExpression line("^Нет связи с .* с \\d\\d:\\d\\d:\\d\\d$");
        return line.match(connection()).hasMatch();
    }
    bool rename(const QString& from, const QString& to) {
        return another("update Menu set caption = " + quoted(to) + " where caption = " +
                       quoted(from) + " and FolderKey = " + quoted(desktop(station)));
    }
    /// The desktop of whoever that is on the server, at a port of it.
    bool open(const std::string& user, const QStringList& more = {},
              const char* server = "port=5432", const QRect& place = {5, 5, 1385, 900}) {
        return m_scene->startOperatorOn(
            QString::fromStdString(m_cluster->url("orvo", user)) + "&" + server,
            QString::fromStdString(user), station, sample() + more, place);
    }

private slots:
    void initTestCase() {
        m_cluster = PostgresCluster::start();
        QVERIFY(m_cluster);
        m_scene = std::make_unique<Scene>(
            orvo::store::test::kindOn(*m_cluster, "orvo", m_cluster->url("orvo")));
        QCOMPARE(m_scene->admin({"user", "add", "operator", "--last", "Орлов", "--viewer"}), 0);
    }
    void whoMayOnlyReadWorksWithAMenu() {
        QVERIFY(open("operator"));
        QVERIFY2(desk().failure().isEmpty(), qPrintable(desk().failure()));
        DO(clickOn("Журнал событий станции"));
        SOON(!desk().tree("journalRows").rows.empty());
        DO(clickOn("Общая схема КС-1"));
        SOON(opened() == 2);
        DO(clickOn("Вызов диспетчера"));
        SOON(hands::isOnScreen("^Вызов диспетчера$"));
        take("viewer");
        QVERIFY(rename("Крановая обвязка", "Valves"));
        SOON(shows("Valves"));
        QVERIFY2(desk().failure().isEmpty(), qPrintable(desk().failure()));
    }

    void whoMayOnlyReadEndsAKioskByHisLogin() {
        QVERIFY(open("operator", {"--kiosk"}, "port=5432", {}));
        take("viewer-kiosk");
        QVERIFY(hands::key("ctrl+alt+q"));
        SOON(isActive(desk(), "kioskEnd"));
        take("viewer-kiosk-end");
        QVERIFY(hands::type("operator") && hands::key("Return"));
        DO(m_scene->waitFor(
            "the kiosk ends", [&] { return !desk().isRunning(); }, 60000));
    }

    void aStoppedServerLeavesTheMenuAndSaysSinceWhen() {
        QVERIFY(open("operator"));
        DO(clickOn("Общая схема КС-1"));
        SOON(opened() == 1);
        QVERIFY(
            m_cluster->run("pg_ctl", {"stop", "-s", "-m", "immediate", "-D", m_cluster->data()}));
        SOON(isAway());
        DO(clickOn("Управление"));
        SOON(isOpen("Управление"));
        QVERIFY(shows("Общая схема КС-1"));
        take("server-away");
        QVERIFY(m_cluster->run("pg_ctl", {"start", "-s", "-w", "-D", m_cluster->data(), "-l",
                                          m_cluster->data() + "/server.log"}));
        QVERIFY(rename("Агрегаты", "Back again"));
        DO(m_scene->waitFor(
            "the connection is back", [&] { return connection() == "Подключено"; }, 60000));
        SOON(shows("Back again"));
        take("server-back");
    }

    /// A standby announces nothing: the log is looked at each second.
    void aStandbyIsFollowedByLookingAtIt() {
        QVERIFY(m_cluster->startStandby(PostgresCluster::Shipping::Asynchronous));
        for (const char* user : {"operator", "postgres"}) {
            QVERIFY(open(user, {}, "port=5433&target_session_attrs=any"));
            QVERIFY2(desk().failure().isEmpty(), qPrintable(desk().failure()));
            DO(clickOn("Журнал событий станции"));
            SOON(!desk().tree("journalRows").rows.empty());
            const QString was = user == QLatin1String("operator") ? "Back again" : "On a standby 0";
            QElapsedTimer timer;
            timer.start();
            QVERIFY(rename(was, user == QLatin1String("operator") ? "On a standby 0" : "Last"));
            SOON(!shows(was));
            qInfo("on a standby after %lld ms", timer.elapsed());
            QCOMPARE(connection(), QString("Подключено"));
            QVERIFY2(desk().failure().isEmpty(), qPrintable(desk().failure()));
            take("standby");
        }
    }

    /// An engineer who only could look there goes on with writing, without connecting anew.
    void aStandbyThatTakesOverIsWrittenTo() {
        const QString standby = "port=5433&target_session_attrs=any";
        QVERIFY(open("operator", {}, qPrintable(standby), {1405, 5, 1385, 900}));
        ClientProcess editor(m_directory.path(),
                             QString::fromStdString(m_cluster->url("orvo")) + "&" + standby,
                             "postgres", {5, 5, 1385, 900});
        QVERIFY(editor.waitUp());
        const auto isReadOnly = [&] {
            const auto labels = editor.controls("readOnlyLabel");
            return labels.size() == 1 && labels[0].visible;
        };
        QVERIFY(isReadOnly());
        DO(m_scene->press(editor, "ОК"));
        DO(m_scene->clickRow(editor, "tvDesck", station));
        DO(m_scene->clickRow(editor, "tvMenu", "Last"));
        QVERIFY(!editor.isEnabled("actDeleteElem"));
        take("standby-editor");
        QVERIFY(m_cluster->failOver());
        QElapsedTimer timer;
        timer.start();
        SOON(!isReadOnly() && editor.settled());
        qInfo("promoted, and may be written after %lld ms", timer.elapsed());
        DO(m_scene->clickRow(editor, "tvDesck", station));
        DO(m_scene->clickRow(editor, "tvMenu", "Last"));
        SOON(editor.isEnabled("actDeleteElem"));
        DO(m_scene->fill(editor, "Наименование", "After all"));
        DO(m_scene->press(editor, "Сохранить"));
        SOON(shows("After all"));
        QVERIFY2(editor.failure().isEmpty(), qPrintable(editor.failure()));
        take("standby-promoted");
        QByteArray stored;
        QVERIFY(m_cluster->shell("orvo", "SELECT caption FROM \"Menu\" WHERE caption LIKE 'After%'",
                                 &stored, "postgres", "5433"));
        QVERIFY2(stored.contains("After all"), stored.constData());
    }
};

QTEST_MAIN(TestOperatorServer)
#include "tst_operator_server.moc"
