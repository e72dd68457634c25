// A server fails over to its standby, with the last changes or without them.
#include "tests/client/FollowingClient.h"
#include "tests/store/PostgresCluster.h"

#include <QtTest>

using namespace orvo;
using namespace orvo::test;
using store::test::PostgresCluster;

class TestFailover : public QObject {
    Q_OBJECT
private:
    std::unique_ptr<PostgresCluster> m_cluster;
    std::string m_url;

    void start(PostgresCluster::Shipping shipping) {
        m_cluster = PostgresCluster::start();
        QVERIFY(m_cluster);
        store::Status status;
        QVERIFY2(store::open(m_cluster->url("orvo"), {{}, true}, &status), status.text.c_str());
        QVERIFY(m_cluster->startStandby(shipping));
        m_url = m_cluster->urlOfBoth("orvo");
    }
    static void writeRecords(store::Store& store, const QStringList& keys) {
        CMDArray array;
        store::makeStructure(*store::findTable("Menu"), array.array);
        for (const QString& key : keys)
            addRecord(array, MDX_INSERT, {{"KeyLink", key.toStdString()}});
        const store::Status done = store.update("Menu", array.array);
        QVERIFY2(done.ok(), done.text.c_str());
    }

private slots:
    void cleanup() { m_cluster.reset(); }

    /// Somebody else writes first there: the ids of the log then look as if nothing were missing.
    void lostChangesAreNoticedListedAndRepeated() {
        start(PostgresCluster::Shipping::Asynchronous);
        FollowingClient one(m_url);
        FollowingClient reader(m_url);
        QVERIFY(one.write("Menu", MDX_INSERT, {{"KeyLink", "kept"}, {"caption", "Есть"}}));
        QTRY_VERIFY_WITH_TIMEOUT(one.module->keys().contains("kept"), 30000);
        QVERIFY(m_cluster->stopShipping());
        QVERIFY(one.write("Menu", MDX_INSERT, {{"KeyLink", "new"}, {"caption", "Новый"}}));
        QVERIFY(one.write("Menu", MDX_UPDATE, {{"KeyLink", "kept"}, {"caption", "Переименован"}}));
        QTRY_VERIFY_WITH_TIMEOUT(one.module->messages.size() == 3, 30000);
        QTRY_VERIFY_WITH_TIMEOUT(reader.module->messages.size() == 3, 30000);

        QVERIFY(m_cluster->failOver());
        writeRecords(*one.connect(), {"t1", "t2", "t3", "t4"});
        for (FollowingClient* each : {&one, &reader}) {
            QTRY_COMPARE_WITH_TIMEOUT(each->lost, QVector<bool>{true}, 90000);
            // No change of the new server has been shown over the ghosts of the old one.
            QVERIFY(!each->module->keys().contains("t1"));
        }

        QCOMPARE(client::listLostWrites(*reader.session), 0); // another's are the other's to repeat
        QCOMPARE(client::listLostWrites(*one.session), 2);
        QCOMPARE(one.list.entries()[0].words.what, QString("Создан элемент меню «Новый»"));
        QCOMPARE(one.list.entries()[1].words.what,
                 QString("Переименован элемент меню «Переименован»: было «Есть»"));
        QVERIFY(one.pump.restart());
        QVERIFY(reader.pump.restart());
        QCOMPARE(one.list.repeatAll(), 0);
        QTRY_VERIFY_WITH_TIMEOUT(one.module->keys().count("new") == 2, 30000);
        QTRY_VERIFY_WITH_TIMEOUT(reader.module->keys().count("new") == 2, 30000);
        CMDArray rows;
        const store::Status read =
            client::sessionStore(*one.session).fetchLinked("Menu", "KeyLink", "kept", rows.array);
        QVERIFY2(read.ok(), read.text.c_str());
        QCOMPARE(textOf(rows.array, MDARec(rows.array, 0, 0), "caption"), QString("Переименован"));
    }

    /// Nobody writes there: the log ends before the cursor.
    void lostChangesAreNoticedOnAServerWhereNobodyWrites() {
        start(PostgresCluster::Shipping::Asynchronous);
        FollowingClient one(m_url);
        QVERIFY(m_cluster->stopShipping());
        QVERIFY(one.write("Menu", MDX_INSERT, {{"KeyLink", "new"}, {"caption", "Новый"}}));
        QTRY_VERIFY_WITH_TIMEOUT(one.module->messages.size() == 1, 30000);
        QVERIFY(m_cluster->failOver());
        QTRY_COMPARE_WITH_TIMEOUT(one.lost, QVector<bool>{true}, 90000);
        QCOMPARE(client::listLostWrites(*one.session), 1);
        QVERIFY(one.pump.restart());
        QCOMPARE(one.list.repeatAll(), 0);
        QTRY_VERIFY_WITH_TIMEOUT(one.module->keys().count("new") == 2, 30000);
    }

    /// A log without changes has none that proves where a client began.
    void lossIsNoticedByAClientThatBeganOnAPrunedLog() {
        start(PostgresCluster::Shipping::Asynchronous);
        FollowingClient one(m_url);
        QVERIFY(one.write("Menu", MDX_INSERT, {{"KeyLink", "kept"}, {"caption", "Есть"}}));
        QVERIFY(m_cluster->stopShipping());
        QVERIFY(one.write("Menu", MDX_INSERT, {{"KeyLink", "new"}, {"caption", "Новый"}}));
        const auto pruner = one.connect();
        int64_t end = 0;
        QVERIFY(pruner->logPosition(&end).ok());
        QVERIFY(pruner->pruneLog(end).ok());
        FollowingClient late(m_url);
        QVERIFY(m_cluster->failOver());
        writeRecords(*one.connect(), {"t1", "t2", "t3", "t4"});
        QTRY_COMPARE_WITH_TIMEOUT(late.lost, QVector<bool>{true}, 90000);
        QVERIFY(!late.module->keys().contains("t1"));
    }

    void failOverWithTheLastChangesGoesOn() {
        start(PostgresCluster::Shipping::Synchronous);
        FollowingClient one(m_url);
        QVERIFY(one.write("Menu", MDX_INSERT, {{"KeyLink", "kept"}, {"caption", "Есть"}}));
        QVERIFY(one.write("Menu", MDX_UPDATE, {{"KeyLink", "kept"}, {"caption", "Другое"}}));
        QTRY_VERIFY_WITH_TIMEOUT(one.module->messages.size() == 2, 30000);
        QVERIFY(m_cluster->failOver());
        writeRecords(*one.connect(), {"t1"});
        QTRY_COMPARE_WITH_TIMEOUT(one.module->keys(), QStringList({"kept", "kept", "t1"}), 90000);
        QCOMPARE(one.turns, QVector<bool>({false, true}));
        QCOMPARE(one.module->reconnects, 1);
        QCOMPARE(client::listLostWrites(*one.session), 0);
        QVERIFY(one.write("Menu", MDX_INSERT, {{"KeyLink", "later"}}));
        QTRY_COMPARE_WITH_TIMEOUT(one.module->keys().last(), QString("later"), 30000);
        QCOMPARE(one.lost, QVector<bool>());
        QVERIFY(one.list.isEmpty());
    }
};

QTEST_MAIN(TestFailover)
#include "tst_failover.moc"
