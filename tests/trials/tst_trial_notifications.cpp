// A listener that never reads, and somebody who fills the server's queue of notifications behind
// him, as anybody who may connect can: others write on, and readers follow all the same. Takes up
// to 10 GB of the disk and some minutes.
#include "Trial.h"

#include "tests/client/FollowingClient.h"
#include "tests/store/PostgresCluster.h"

#include "platform/store/PostgresApi.h"

#include <QElapsedTimer>

using namespace orvo;
using namespace orvo::test;
using store::test::PostgresCluster;

class TestTrialNotifications : public QObject {
    Q_OBJECT
private slots:
    void aFullQueueStopsNobody() {
        if (rounds(0) == 0)
            QSKIP("Fills 8 GB of the disk: only with ORVO_TRIAL_ROUNDS.");
        const auto cluster = PostgresCluster::start();
        QVERIFY(cluster);
        store::Status status;
        auto store = store::open(cluster->url("orvo"), {{}, true}, &status);
        QVERIFY2(store, status.text.c_str());
        QVERIFY(cluster->shell("orvo", "CREATE ROLE mallory LOGIN; GRANT orvo_viewer TO mallory;"));
        FollowingClient reader(cluster->url("orvo"));

        store::postgres::Url url;
        QVERIFY(url.parse(cluster->url("orvo", "mallory")).ok());
        store::postgres::Connection unread;
        store::postgres::Connection loud;
        QVERIFY(unread.open(url).ok() && loud.open(url).ok());
        // The transaction is a call of its own: it would take in what stands before it, and nobody
        // would be listening yet.
        for (const char* words :
             {"SET idle_in_transaction_session_timeout = 0; LISTEN x", "BEGIN; SELECT 1"})
            QVERIFY(store::postgres::succeeded(unread.execute(words).get()));
        QVERIFY(store::postgres::succeeded(loud.execute("SET statement_timeout = 0").get()));
        const store::postgres::Connection::NoTimeoutScope noTimeout(loud);
        int sent = 0;
        bool full = false;
        while (!full && sent < 400) {
            const store::postgres::Result result = loud.execute(
                "SELECT count(pg_notify('x', repeat('y', 7900) || i)) FROM generate_series(1, "
                "5000) i");
            full = !store::postgres::succeeded(result.get());
            ++sent;
        }
        QVERIFY(full);
        QByteArray usage;
        QVERIFY(cluster->shell("orvo", "SELECT pg_notification_queue_usage() > 0.9;", &usage));
        QCOMPARE(usage, QByteArray("t"));
        QElapsedTimer clock;
        clock.start();
        for (int i = 0; i < 100; ++i) {
            CMDArray array;
            store::makeStructure(*store::findTable("MenuFileExt"), array.array);
            addRecord(array, MDX_INSERT, {{"KeyLink", "k" + std::to_string(i)}});
            const store::Status done = store->update("MenuFileExt", array.array);
            QVERIFY2(done.ok(), done.text.c_str());
        }
        QTRY_VERIFY_WITH_TIMEOUT(reader.module->keys().contains("k99"), 10000);
        qInfo(
            "the queue was full after %d notifications; 100 writes and their reading took %lld ms",
            sent * 5000, clock.elapsed());
    }
};

QTEST_MAIN(TestTrialNotifications)
#include "tst_trial_notifications.moc"
