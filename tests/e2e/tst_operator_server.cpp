// An operator's desktop on a server of its own: who may only read, a server that goes and comes
// back, and a standby.
#include "tests/e2e/Hands.h"
#include "tests/e2e/Scene.h"
#include "tests/store/PostgresCluster.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QtTest>

using namespace orvo::test;
using orvo::store::test::PostgresCluster;

#define DO(act) QVERIFY2(act, m_scene->why())

namespace {

const char* const menu = "deskTree";
const QString station = QStringLiteral("КС-1 «Верхнеозёрск»");

void take(const char* name) {
    const QString folder = qEnvironmentVariable("ORVO_E2E_PICTURES");
    if (!folder.isEmpty())
        QProcess::execute("import", {"-window", "root", folder + '/' + name + ".png"});
}

} // namespace

class TestOperatorServer : public QObject {
    Q_OBJECT
    std::unique_ptr<PostgresCluster> m_cluster;
    std::unique_ptr<Scene> m_scene;
    std::unique_ptr<ClientProcess> m_desk;
    QTemporaryDir m_directory;

    QJsonValue state(const char* name) { return m_desk->ask("state")[QLatin1String(name)]; }
    bool shows(const QString& caption) { return m_desk->tree(menu).find(caption) >= 0; }
    int opened() { return state("opened").toInt(); }
    bool soon(const std::function<bool()>& condition, int ms = 20000) {
        return QTest::qWaitFor(condition, ms);
    }
    bool clickOn(const QString& caption) {
        QTest::qWait(600); // no double click
        return m_scene->clickRow(*m_desk, menu, caption);
    }
    bool isAway() {
        static const QRegularExpression line("^Нет связи с .* с \\d\\d:\\d\\d:\\d\\d$");
        return line.match(state("connection").toString()).hasMatch();
    }
    bool rename(const QString& from, const QString& to) {
        return m_scene->store().foreignWrite("update Menu set caption = " + quoted(to) +
                                             " where caption = " + quoted(from) +
                                             " and FolderKey = (select KeyLink from MenuFolder "
                                             "where caption = " +
                                             quoted(station) + ")");
    }
    /// The desktop of whoever that is on the server, at a port of it.
    bool open(const std::string& user, const QStringList& more = {},
              const char* server = "port=5432", const QRect& place = {5, 5, 1385, 900}) {
        m_desk.reset();
        const QString url = QString::fromStdString(m_cluster->url("orvo", user)) + "&" + server;
        m_desk = std::make_unique<ClientProcess>(
            m_directory.path(), url, QString::fromStdString(user), place, QStringList(),
            QStringList{"--desktop", station, "--modules",
                        qEnvironmentVariable("ORVO_BIN_DIR") + "/../examples/modules"} +
                more);
        return m_desk->waitUp();
    }

private slots:
    void initTestCase() {
        m_cluster = PostgresCluster::start();
        QVERIFY(m_cluster);
        m_scene = std::make_unique<Scene>(
            orvo::store::test::kindOn(*m_cluster, "orvo", m_cluster->url("orvo")));
        QCOMPARE(m_scene->admin({"user", "add", "operator", "--last", "Орлов", "--viewer"}), 0);
    }
    void cleanup() {
        const QString picture = qEnvironmentVariable("ORVO_E2E_PICTURE");
        if (QTest::currentTestFailed() && !picture.isEmpty())
            QProcess::execute("import", {"-window", "root", picture});
    }

    void whoMayOnlyReadWorksWithAMenu() {
        QVERIFY(open("operator"));
        QVERIFY2(m_desk->failure().isEmpty(), qPrintable(m_desk->failure()));
        DO(clickOn("Журнал событий станции"));
        QVERIFY(soon([&] { return !m_desk->tree("journalRows").rows.empty(); }));
        DO(clickOn("Общая схема КС-1"));
        QVERIFY(soon([&] { return opened() == 2; }));
        DO(clickOn("Вызов диспетчера"));
        QVERIFY(soon([] { return hands::isOnScreen("^Вызов диспетчера$"); }));
        QTest::qWait(1000);
        take("viewer");
        QVERIFY(rename("Крановая обвязка", "Valves"));
        QVERIFY(soon([&] { return shows("Valves"); }));
        QVERIFY2(m_desk->failure().isEmpty(), qPrintable(m_desk->failure()));
    }

    void whoMayOnlyReadEndsAKioskByHisLogin() {
        QVERIFY(open("operator", {"--kiosk"}, "port=5432", {}));
        QTest::qWait(1000);
        take("viewer-kiosk");
        QVERIFY(hands::key("ctrl+alt+q"));
        QVERIFY(soon([] { return hands::isOnScreen("^Закрыть рабочий стол$"); }));
        QTest::qWait(500);
        take("viewer-kiosk-end");
        QVERIFY(hands::type("operator") && hands::key("Return"));
        QVERIFY(soon([&] { return !m_desk->isRunning(); }, 60000));
    }

    void aStoppedServerLeavesTheMenuAndSaysSinceWhen() {
        QVERIFY(open("operator"));
        DO(clickOn("Общая схема КС-1"));
        QVERIFY(soon([&] { return opened() == 1; }));
        QVERIFY(
            m_cluster->run("pg_ctl", {"stop", "-s", "-m", "immediate", "-D", m_cluster->data()}));
        QVERIFY(soon([&] { return isAway(); }));
        DO(clickOn("Управление"));
        QVERIFY(soon([&] {
            const Tree tree = m_desk->tree(menu);
            return tree.rows[static_cast<size_t>(tree.find("Управление"))].expanded;
        }));
        QVERIFY(shows("Общая схема КС-1"));
        take("server-away");
        QVERIFY(m_cluster->run("pg_ctl", {"start", "-s", "-w", "-D", m_cluster->data(), "-l",
                                          m_cluster->data() + "/server.log"}));
        QVERIFY(rename("Агрегаты", "Back again"));
        QVERIFY(soon([&] { return state("connection").toString() == "Подключено"; }, 60000));
        QVERIFY(soon([&] { return shows("Back again"); }));
        take("server-back");
    }

    /// A standby announces nothing: the log is looked at each second.
    void aStandbyIsFollowedByLookingAtIt() {
        QVERIFY(m_cluster->startStandby(PostgresCluster::Shipping::Asynchronous));
        for (const char* user : {"operator", "postgres"}) {
            QVERIFY(open(user, {}, "port=5433&target_session_attrs=any"));
            QVERIFY2(m_desk->failure().isEmpty(), qPrintable(m_desk->failure()));
            DO(clickOn("Журнал событий станции"));
            QVERIFY(soon([&] { return !m_desk->tree("journalRows").rows.empty(); }));
            const QString was = user == QLatin1String("operator") ? "Back again" : "On a standby 0";
            QElapsedTimer timer;
            timer.start();
            QVERIFY(rename(was, user == QLatin1String("operator") ? "On a standby 0" : "Last"));
            QVERIFY(soon([&] { return !shows(was); }));
            qInfo("on a standby after %lld ms", timer.elapsed());
            QCOMPARE(state("connection").toString(), QString("Подключено"));
            QVERIFY2(m_desk->failure().isEmpty(), qPrintable(m_desk->failure()));
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
        QVERIFY(soon([&] { return !isReadOnly() && editor.settled(); }));
        qInfo("promoted, and may be written after %lld ms", timer.elapsed());
        DO(m_scene->clickRow(editor, "tvDesck", station));
        DO(m_scene->clickRow(editor, "tvMenu", "Last"));
        QVERIFY(soon([&] { return editor.isEnabled("actDeleteElem"); }));
        DO(m_scene->fill(editor, "Наименование", "After all"));
        DO(m_scene->press(editor, "Сохранить"));
        QVERIFY(soon([&] { return shows("After all"); }));
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
