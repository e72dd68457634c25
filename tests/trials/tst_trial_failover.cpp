// A server fails over to its standby again and again, at any moment, with the last changes or
// without them. Each client is told if it shows or wrote what the new server lacks, and of nothing
// otherwise; what it wrote there can be repeated; the log tells of all that the tables hold.
// ORVO_TRIAL_ROUNDS is the number of fail-overs.
#include "Trial.h"

#include "platform/store/Maintenance.h"
#include "tests/client/FollowingClient.h"
#include "tests/store/LogReplay.h"
#include "tests/store/PostgresCluster.h"

#include <memory>
#include <random>
#include <set>

using namespace orvo;
using namespace orvo::test;
using store::test::PostgresCluster;

namespace {

constexpr int patienceMs = 90'000;

} // namespace

class TestTrialFailover : public QObject {
    Q_OBJECT
private slots:
    void everyLossIsToldAndRepeated() {
        const int wanted = rounds(2);
        for (int round = 0; round < wanted; ++round) {
            failOver(round);
            if (QTest::currentTestFailed())
                return;
        }
        qInfo("%d fail-overs, %d of them with a loss; %d writes lost, listed and repeated", wanted,
              m_losses, m_lost);
    }

private:
    int below(int most) { return int(m_random() % unsigned(std::max(1, most))); }
    void failOver(int round);
    void writeSome(int count);

    std::mt19937 m_random{seed()};
    std::vector<std::unique_ptr<FollowingClient>> m_clients;
    std::map<std::string, QString> m_captions; ///< what was said to be saved, by key
    std::vector<int> m_writes;                 ///< of each client
    int m_losses = 0;
    int m_lost = 0;
    int m_keys = 0;
};

/// Every client writes to records of its own, so that no two change the same field.
void TestTrialFailover::writeSome(int count) {
    for (int i = 0; i < count; ++i) {
        const int who = below(int(m_clients.size()));
        FollowingClient& client = *m_clients[size_t(who)];
        const QString caption = QString("Имя %1").arg(++m_keys);
        std::string key = std::to_string(who) + "-" + std::to_string(below(5));
        const bool isNew = m_captions.count(key) == 0;
        QVERIFY(client.write("Menu", isNew ? MDX_INSERT : MDX_UPDATE,
                             {{"KeyLink", key}, {"caption", caption.toStdString()}}));
        m_captions[key] = caption;
        ++m_writes[size_t(who)];
    }
}

void TestTrialFailover::failOver(int round) {
    const auto cluster = PostgresCluster::start();
    QVERIFY(cluster);
    store::Status status;
    QVERIFY2(store::open(cluster->url("orvo"), {{}, true}, &status), status.text.c_str());
    const bool loses = round % 3 != 2;
    QVERIFY(cluster->startStandby(loses ? PostgresCluster::Shipping::Asynchronous
                                        : PostgresCluster::Shipping::Synchronous));
    const std::string url = cluster->urlOfBoth("orvo");
    m_captions.clear();
    m_clients.clear();
    for (int i = 0; i < 3; ++i)
        m_clients.push_back(std::make_unique<FollowingClient>(url));
    m_writes.assign(m_clients.size(), 0);

    writeSome(below(20));
    if (loses) {
        QVERIFY(cluster->stopShipping());
        m_writes.assign(m_clients.size(), 0);
        writeSome(1 + below(20));
        for (const auto& client : m_clients) // all of them show what will be lost
            QTRY_VERIFY_WITH_TIMEOUT(client->module->keys().size() >= int(m_captions.size()) &&
                                         client->pump.isIdle(),
                                     patienceMs);
    }
    QVERIFY(cluster->failOver());
    const int others = below(40); // the ids of the new server may pass those of the old one
    if (others > 0) {
        const auto another = m_clients.front()->connect();
        CMDArray array;
        store::makeStructure(*store::findTable("Menu"), array.array);
        for (int i = 0; i < others; ++i)
            addRecord(array, MDX_INSERT, {{"KeyLink", "other" + std::to_string(i)}});
        const store::Status done = another->update("Menu", array.array);
        QVERIFY2(done.ok(), done.text.c_str());
    }
    for (size_t i = 0; i < m_clients.size(); ++i) {
        FollowingClient& client = *m_clients[i];
        if (loses) {
            QTRY_COMPARE_WITH_TIMEOUT(client.lost, QVector<bool>{true}, patienceMs);
            QCOMPARE(client::listLostWrites(*client.session), m_writes[i]);
            QCOMPARE(int(client.list.entries().size()), m_writes[i]);
            m_lost += m_writes[i];
            QVERIFY(client.pump.restart());
        } else {
            QTRY_VERIFY_WITH_TIMEOUT(client.turns.endsWith(true), patienceMs);
        }
    }
    m_losses += loses ? 1 : 0;
    for (const auto& client : m_clients)
        QCOMPARE(client->list.repeatAll(), 0);
    // All that any client was told to be saved is there now.
    CMDArray rows;
    const auto last = m_clients.front()->connect();
    QVERIFY(last->fetch("Menu", rows.array).ok());
    std::map<std::string, QString> captions;
    for (int32_t i = 0; const MDRData* record = MDARec(rows.array, 0, i); ++i)
        captions[textOf(rows.array, record, "KeyLink").toStdString()] =
            textOf(rows.array, record, "caption");
    for (const auto& [key, caption] : m_captions)
        QCOMPARE(captions[key], caption);
    QCOMPARE(int(captions.size()), int(m_captions.size()) + others);
    QCOMPARE(store::test::replayDifferences(url), QStringList());
    const auto owner = store::openMaintained(url, {{}, false}, &status);
    QVERIFY2(owner, status.text.c_str());
    std::vector<std::string> damages;
    status = owner->integrity(&damages);
    QVERIFY2(status.ok(), status.text.c_str());
    QCOMPARE(damages, std::vector<std::string>());
    for (const auto& client : m_clients)
        if (!loses)
            QCOMPARE(client->lost, QVector<bool>());
    m_clients.clear();
}

QTEST_MAIN(TestTrialFailover)
#include "tst_trial_failover.moc"
