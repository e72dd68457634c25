// Nobody stops others for ever: transactions left open, waits for locks and a full queue of
// notifications have limits, and who waited in vain is told why and for whom.
#include "PostgresTest.h"

#include "platform/store/Maintenance.h"
#include "platform/store/PostgresApi.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <thread>

using namespace orvo::store;
using namespace orvo::store::test;

namespace {

const char inserted[] = "INSERT INTO public.\"MenuFileExt\" VALUES ('o', 'x')";
const char noLimits[] = "SET idle_in_transaction_session_timeout = 0; SET statement_timeout = 0; "
                        "SET lock_timeout = 0; SET search_path = public;";

} // namespace

class TestLimits : public PostgresTest {
    Q_OBJECT
private slots:
    void init() {
        PostgresTest::init();
        QVERIFY(
            byHand("DO $$ BEGIN CREATE ROLE slow LOGIN; EXCEPTION WHEN duplicate_object THEN NULL; "
                   "END $$; GRANT orvo_engineer TO slow;"));
    }

    void openTransactionThatWroteIsHeldToLimits() {
        auto other = session(noLimits);
        QCOMPARE(ask(other, "SHOW idle_in_transaction_session_timeout"), QByteArray("0"));
        QVERIFY(postgres::succeeded(other.execute("BEGIN").get()));
        QVERIFY(postgres::succeeded(other.execute(inserted).get()));
        QCOMPARE(ask(other, "SHOW idle_in_transaction_session_timeout"), QByteArray("1min"));
        QCOMPARE(ask(other, "SHOW statement_timeout"), QByteArray("10min"));
        QVERIFY(postgres::succeeded(other.execute("COMMIT").get()));
        QCOMPARE(ask(other, "SHOW idle_in_transaction_session_timeout"), QByteArray("0"));
        QCOMPARE(ask(other, "SHOW statement_timeout"), QByteArray("0"));
        // A reader keeps nobody from writing, and is left alone.
        QVERIFY(postgres::succeeded(other.execute("BEGIN; SELECT * FROM \"Menu\"").get()));
        QCOMPARE(ask(other, "SHOW idle_in_transaction_session_timeout"), QByteArray("0"));
    }

    void stricterLimitsOfASessionStay() {
        auto other =
            session("SET idle_in_transaction_session_timeout = '7s'; SET statement_timeout = "
                    "'900ms'; SET search_path = public;");
        QVERIFY(postgres::succeeded(other.execute("BEGIN").get()));
        QVERIFY(postgres::succeeded(other.execute(inserted).get()));
        QCOMPARE(ask(other, "SHOW idle_in_transaction_session_timeout"), QByteArray("7s"));
        QCOMPARE(ask(other, "SHOW statement_timeout"), QByteArray("900ms"));
    }

    void idleTransactionIsEndedAndOthersWriteOn() {
        auto other = session("SET idle_in_transaction_session_timeout = '2s'");
        QVERIFY(postgres::succeeded(other.execute("BEGIN").get()));
        QVERIFY(postgres::succeeded(other.execute(inserted).get()));
        // Waits no longer than the limit of that session.
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*m_store));
        QCOMPARE(dump(*m_store, "MenuFileExt"), "k|-");
        const postgres::Result result = other.execute("SELECT 1");
        const Status status = other.failure("Запись", result.get());
        QCOMPARE(status.code, int(ConnectionBroken));
        QVERIFY2(status.text.find("соединение с базой потеряно") != std::string::npos,
                 status.text.c_str());
    }

    void longStatementIsEndedAndOthersWriteOn() {
        auto other = session("SET statement_timeout = '2s'");
        QVERIFY(postgres::succeeded(other.execute("BEGIN").get()));
        QVERIFY(postgres::succeeded(other.execute(inserted).get()));
        Status status;
        std::thread busy([&] {
            const postgres::Result result = other.execute("SELECT pg_sleep(30)");
            status = other.failure("Чтение", result.get());
            other.execute("ROLLBACK");
        });
        const Status written = Batch("MenuFileExt").insert("k").send(*m_store);
        busy.join();
        ORVO_OK(written);
        QCOMPARE(status.code, int(Timeout));
        QVERIFY2(status.text.find("вышло отведённое ей время") != std::string::npos,
                 status.text.c_str());
    }

    void writerIsToldWhoHoldsWhat_data() {
        QTest::addColumn<QByteArray>("hold");
        QTest::newRow("the log") << QByteArray(inserted);
        QTest::newRow("a table") << QByteArray(
            "LOCK TABLE public.\"Menu\" IN ACCESS EXCLUSIVE MODE");
        QTest::newRow("a row") << QByteArray("SELECT * FROM public.\"Menu\" FOR UPDATE");
    }

    void writerIsToldWhoHoldsWhat() {
        QFETCH(QByteArray, hold);
        ORVO_OK(Batch("Menu").insert("m").send(*m_store));
        auto other = session("BEGIN");
        QVERIFY(postgres::succeeded(other.execute(hold.toStdString()).get()));
        QElapsedTimer clock;
        clock.start();
        const Status status = Batch("Menu").update("m", {{"caption", "x"}}).send(*m_store);
        ORVO_FAILS(status, Timeout);
        QVERIFY(clock.elapsed() < 15000);
        QVERIFY2(
            status.text.find("держит незаконченная транзакция входа \"slow\" (процесс сервера " +
                             std::to_string(PQbackendPID(other.get())) + ")") != std::string::npos,
            status.text.c_str());
        QVERIFY(postgres::succeeded(other.execute("ROLLBACK").get()));
        ORVO_OK(Batch("Menu").update("m", {{"caption", "x"}}).send(*m_store));
    }

    void readerIsToldWhoHoldsATable() {
        auto other = session("BEGIN; LOCK TABLE public.\"Menu\" IN ACCESS EXCLUSIVE MODE");
        CMDArray whole;
        CMDArray some;
        const Status status = m_store->fetch("Menu", whole.array);
        ORVO_FAILS(status, Timeout);
        QVERIFY2(status.text.find("незаконченная транзакция входа \"slow\"") != std::string::npos,
                 status.text.c_str());
        QCOMPARE(whole.array->recordCount, 0u);
        QVERIFY(postgres::succeeded(other.execute("ROLLBACK").get()));
        ORVO_OK(m_store->fetch("Menu", some.array));
    }

    void ownerIsToldWhoHoldsATable_data() {
        QTest::addColumn<QByteArray>("hold");
        const QByteArray reads = "SELECT * FROM public.\"Menu\"";
        QTest::newRow("restore") << reads;
        QTest::newRow("triggers") << reads;
        QTest::newRow("update") << reads;
        QTest::newRow("backup") << QByteArray(
            "LOCK TABLE public.\"Menu\" IN ACCESS EXCLUSIVE MODE");
    }

    void ownerIsToldWhoHoldsATable() {
        QFETCH(QByteArray, hold);
        const QByteArray what = QTest::currentDataTag();
        Status status;
        const std::string url = m_cluster->url(m_database.toStdString());
        const auto owner = openMaintained(url, {"boss", false}, &status);
        QVERIFY2(owner, status.text.c_str());
        const QTemporaryDir directory;
        const std::string file = directory.filePath("backup").toStdString();
        std::vector<std::string> made;
        ORVO_OK(owner->backup(file, {}));
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*m_store));
        if (what == "triggers")
            QVERIFY(byHand("DROP TRIGGER \"updated\" ON \"Menu\";"));
        if (what == "update")
            QVERIFY(byHand("UPDATE \"NciStore\" SET \"version\" = \"version\" - 1;"));
        auto other = session(noLimits);
        QVERIFY(postgres::succeeded(other.execute("BEGIN").get()));
        QVERIFY(postgres::succeeded(other.execute(hold.toStdString()).get()));
        const auto act = [&]() -> Status {
            if (what == "restore")
                return owner->restore(file, {});
            if (what == "triggers")
                return owner->remakeTriggers(&made);
            if (what == "backup")
                return owner->backup(directory.filePath("second").toStdString(), {});
            Status opening;
            open(url, {}, &opening);
            return opening;
        };
        const Status refused = act();
        ORVO_FAILS(refused, Timeout);
        QVERIFY2(
            refused.text.find("база занята другой программой: её держит незаконченная транзакция "
                              "входа \"slow\" (процесс сервера " +
                              std::to_string(PQbackendPID(other.get())) + ")") != std::string::npos,
            refused.text.c_str());
        QVERIFY(postgres::succeeded(other.execute("ROLLBACK").get()));
        QByteArray left;
        QVERIFY(byHand("SELECT \"KeyLink\" FROM \"MenuFileExt\";", &left));
        QCOMPARE(left, QByteArray("k"));
        ORVO_OK(act());
    }

    void cancelledAndTerminatedCallsSaySo() {
        auto other = session("BEGIN");
        QVERIFY(postgres::succeeded(other.execute(inserted).get()));
        const char waiting[] =
            "SELECT %1(pid) FROM pg_stat_activity WHERE wait_event_type = 'Lock';";
        const struct {
            const char* function;
            int code;
            const char* words;
        } ends[] = {{"pg_cancel_backend", Timeout, "отменил администратор"},
                    {"pg_terminate_backend", ConnectionBroken, "оединение с базой потеряно"}};
        for (const auto& end : ends) {
            std::thread administrator([&] {
                for (int i = 0; i < 60; ++i) {
                    QByteArray ended;
                    byHand(QByteArray(waiting).replace("%1", end.function), &ended);
                    if (ended.contains('t'))
                        return;
                    std::this_thread::sleep_for(std::chrono::milliseconds(50));
                }
            });
            const Status status = Batch("MenuFileExt").insert("k").send(*m_store);
            administrator.join();
            ORVO_FAILS(status, end.code);
            QVERIFY2(status.text.find(end.words) != std::string::npos, status.text.c_str());
        }
        QVERIFY(postgres::succeeded(other.execute("ROLLBACK").get()));
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*m_store));
    }

    void sessionsAndDatabaseHaveLimits() {
        QByteArray words;
        QVERIFY(
            byHand("SHOW lock_timeout; SHOW idle_in_transaction_session_timeout;", &words, "slow"));
        QCOMPARE(words, QByteArray("30s\n5min"));
        auto own = session("");
        QCOMPARE(ask(own, "SHOW lock_timeout"), QByteArray("5s"));
        QCOMPARE(ask(own, "SHOW idle_in_transaction_session_timeout"), QByteArray("1min"));
        QCOMPARE(ask(own, "SHOW statement_timeout"), QByteArray("2h"));
        QCOMPARE(ask(own, "SHOW client_connection_check_interval"), QByteArray("10s"));
    }

    void listenerThatNeverReadsStopsNobody() {
        QVERIFY(byHand("GRANT orvo_viewer TO slow; REVOKE orvo_engineer FROM slow;"));
        auto listener =
            session("SET idle_in_transaction_session_timeout = 0; LISTEN orvo; BEGIN; SELECT 1");
        for (int i = 0; i < 500; ++i)
            ORVO_OK(Batch("MenuFileExt").insert(qPrintable(QString::number(i))).send(*m_store));
        QByteArray usage;
        QVERIFY(byHand("SELECT pg_notification_queue_usage() < 0.001;", &usage));
        QCOMPARE(usage,
                 QByteArray("t")); // some bytes for a commit: the queue holds hundreds of millions
        QCOMPARE(ask(listener, "SELECT 1"), QByteArray("1"));
    }

private:
    /// A session of an engineer, as psql gives him one.
    postgres::Connection session(const char* sql) const {
        postgres::Url url;
        postgres::Connection connection;
        if (!url.parse(m_cluster->url(m_database.toStdString(), "slow")).ok() ||
            !connection.open(url).ok() || !postgres::succeeded(connection.execute(sql).get()))
            qFatal("no session");
        return connection;
    }
    static QByteArray ask(postgres::Connection& connection, const char* sql) {
        const postgres::Result result = connection.execute(sql);
        if (!postgres::succeeded(result.get()) || PQntuples(result.get()) != 1)
            return "failed";
        return PQgetvalue(result.get(), 0, 0);
    }
};

QTEST_GUILESS_MAIN(TestLimits)

#include "tst_postgres_limits.moc"
