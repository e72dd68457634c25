// Writers that meet on a server: who comes first, who waits, and for how long.
#include "PostgresTest.h"

#include "platform/store/PostgresApi.h"

#include <QElapsedTimer>

#include <atomic>
#include <thread>

using namespace orvo::store;
using namespace orvo::store::test;

class TestOrder : public PostgresTest {
    Q_OBJECT
private slots:
    void lateCommitOfAnEarlyNumberIsNotSkipped() {
        postgres::Url url;
        ORVO_OK(url.parse(m_cluster->url(m_database.toStdString())));
        postgres::Connection early;
        ORVO_OK(early.open(url));
        QVERIFY(postgres::succeeded(
            early.execute("BEGIN; INSERT INTO public.\"MenuFileExt\" VALUES ('early', 'x')")
                .get()));
        Status lateStatus;
        std::thread late([&] {
            const auto store = open(m_cluster->url(m_database.toStdString()), {}, &lateStatus);
            if (store)
                lateStatus = Batch("MenuFileExt").insert("late").send(*store);
        });
        const auto isHeldUp = [&] {
            const postgres::Result waiting = early.execute(
                "SELECT count(*) FROM pg_locks l JOIN pg_database d ON d.oid = l.database "
                "WHERE NOT granted AND d.datname = current_database()");
            return postgres::integerAt(waiting.get(), 0, 0) > 0;
        };
        QTRY_VERIFY(isHeldUp());
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(0, 10, &changes));
        QCOMPARE(changes.size(), size_t(0));
        QVERIFY(postgres::succeeded(early.execute("COMMIT").get()));
        late.join();
        ORVO_OK(lateStatus);
        ORVO_OK(m_store->readLog(0, 10, &changes));
        QCOMPARE(changes.size(), size_t(2));
        QCOMPARE(changes[0].key, std::string("early"));
        QCOMPARE(changes[1].key, std::string("late"));
    }

    void transactionsThatTouchTheSameRowsDoNotDeadlock() {
        ORVO_OK(Batch("MenuFileExt").insert("a").insert("b").send(*m_store));
        std::atomic<int> failed = 0;
        std::vector<std::thread> threads;
        for (const bool forward : {true, false}) {
            threads.emplace_back([&, forward] {
                Status status;
                const auto store = open(m_cluster->url(m_database.toStdString()), {}, &status);
                for (int i = 0; i < 200; ++i) {
                    Batch batch("MenuFileExt");
                    batch.update(forward ? "a" : "b").update(forward ? "b" : "a");
                    failed += !batch.send(*store).ok();
                }
            });
            threads.emplace_back([&, forward] {
                QByteArray sql;
                const QByteArray first = forward ? "a" : "b";
                const QByteArray second = forward ? "b" : "a";
                for (int i = 0; i < 200; ++i) {
                    sql += "BEGIN;";
                    for (const QByteArray& key : {first, second})
                        sql +=
                            "UPDATE \"MenuFileExt\" SET \"fileExt\" = 'x' WHERE \"KeyLink\" = '" +
                            key + "';";
                    sql += "COMMIT;\n";
                }
                failed += !byHand(sql);
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        QCOMPARE(failed.load(), 0);
    }

    void writerWaitsForAnotherOnlySoLong() {
        postgres::Url url;
        ORVO_OK(url.parse(m_cluster->url(m_database.toStdString())));
        postgres::Connection other;
        ORVO_OK(other.open(url));
        QVERIFY(postgres::succeeded(
            other.execute("BEGIN; INSERT INTO public.\"MenuFileExt\" VALUES ('k', 'x')").get()));
        QElapsedTimer clock;
        clock.start();
        ORVO_FAILS(Batch("MenuFileExt").insert("n").send(*m_store), Timeout);
        QVERIFY(clock.elapsed() < 15000);
        QCOMPARE(dump(*m_store, "MenuFileExt"), ""); // reading waits for nobody
        QVERIFY(postgres::succeeded(other.execute("ROLLBACK").get()));
        ORVO_OK(Batch("MenuFileExt").insert("n").send(*m_store));
        QCOMPARE(dump(*m_store, "MenuFileExt"), "n|-");
    }
};

QTEST_GUILESS_MAIN(TestOrder)

#include "tst_postgres_order.moc"
