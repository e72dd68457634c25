// A server fails over to a standby that lacks the last changes, and somebody else writes there
// first: the ids of the log then look as if nothing were missing.
#include "platform/client/ModuleRegistry.h"
#include "platform/client/NotificationPump.h"
#include "platform/client/UnwrittenList.h"
#include "tests/client/HostFixture.h"
#include "tests/store/PostgresCluster.h"

#include <QElapsedTimer>
#include <QtTest>

using namespace orvo;
using namespace orvo::test;
using store::test::PostgresCluster;

class TestFailover : public QObject {
    Q_OBJECT
private:
    static bool write(COrvoCliSes& session, uint32_t flag, const Fields& fields) {
        CMDArray array;
        store::makeStructure(*store::findTable("Menu"), array.array);
        addRecord(array, flag, fields);
        return session.SqlUpdate("Menu", array.array, true, nullptr) != 0;
    }

private slots:
    void lostChangesAreNoticedListedAndRepeated() {
        const auto cluster = PostgresCluster::start();
        QVERIFY(cluster);
        store::Status status;
        store::OpenOptions create;
        create.create = true;
        QVERIFY(store::open(cluster->url("orvo"), create, &status));
        QVERIFY(cluster->startStandby(PostgresCluster::Shipping::Asynchronous));
        const std::string url = cluster->urlOfBoth("orvo");

        const auto connect = [&] {
            auto opened = store::open(url, {}, &status);
            if (!opened)
                qFatal("%s", status.text.c_str());
            return opened;
        };
        const auto session = client::makeSession(connect(), &status);
        QVERIFY(session);
        client::UnwrittenList list(client::sessionStore(*session));
        client::setUnwritten(*session, &list);
        App app;
        app.m_session = session.get();
        client::ModuleRegistry registry;
        auto* module = new Module(&app); // the registry's
        registry.add(module, "Menu");
        registry.start(module);
        client::NotificationPump pump(*session, registry, connect());
        QVector<bool> lost;
        QObject::connect(&pump, &client::NotificationPump::logLost,
                         [&](bool replaced) { lost << replaced; });
        pump.start();

        COrvoCliSes& own = *module->m_app->m_session;
        QVERIFY(write(own, MDX_INSERT, {{"KeyLink", "kept"}, {"caption", "Есть"}}));
        QTRY_VERIFY_WITH_TIMEOUT(module->keys().contains("kept"), 30000);
        QVERIFY(cluster->stopShipping());
        QVERIFY(write(own, MDX_INSERT, {{"KeyLink", "new"}, {"caption", "Новый"}}));
        QVERIFY(write(own, MDX_UPDATE, {{"KeyLink", "kept"}, {"caption", "Переименован"}}));
        QTRY_VERIFY_WITH_TIMEOUT(module->messages.size() == 3, 30000);

        QVERIFY(cluster->failOver());
        {
            auto another = connect();
            CMDArray array;
            store::makeStructure(*store::findTable("Menu"), array.array);
            for (const char* key : {"t1", "t2", "t3", "t4"})
                addRecord(array, MDX_INSERT, {{"KeyLink", key}});
            const store::Status done = another->update("Menu", array.array);
            QVERIFY2(done.ok(), done.text.c_str());
        }
        QTRY_COMPARE_WITH_TIMEOUT(lost, QVector<bool>{true}, 90000);
        // No change of the new server has been shown over the ghosts of the old one.
        QVERIFY(!module->keys().contains("t1"));

        QCOMPARE(client::listLostWrites(*session), 2);
        QCOMPARE(list.entries()[0].words.what, QString("Создан элемент меню «Новый»"));
        QCOMPARE(list.entries()[1].words.what,
                 QString("Переименован элемент меню «Переименован»: было «Есть»"));
        QVERIFY(pump.restart());
        QCOMPARE(list.repeatAll(), 0);
        QTRY_VERIFY_WITH_TIMEOUT(module->keys().count("new") == 2, 30000);
        CMDArray rows;
        const store::Status read =
            client::sessionStore(*session).fetchLinked("Menu", "KeyLink", "kept", rows.array);
        QVERIFY2(read.ok(), read.text.c_str());
        QCOMPARE(textOf(rows.array, MDARec(rows.array, 0, 0), "caption"), QString("Переименован"));
        client::setUnwritten(*session, nullptr);
    }
};

QTEST_MAIN(TestFailover)
#include "tst_failover.moc"
