// A server that no longer answers, but has not gone: every call ends all the same, when the
// wait policy of its thread or the time that the address allows does, and what is said about a
// write is true.
#include "PostgresTest.h"

#include "platform/store/PostgresApi.h"
#include "platform/store/WaitPolicy.h"

#include <QElapsedTimer>

#include <thread>

using namespace orvo::store;
using namespace orvo::store::test;

namespace {

/// Gives up after some time, and counts.
class ShortWait : public WaitPolicy {
public:
    explicit ShortWait(int milliseconds) : m_limit(milliseconds) {}
    bool keepWaiting() override {
        ++asked;
        if (!m_clock.isValid())
            m_clock.start();
        return m_clock.elapsed() < m_limit;
    }
    void waitEnded() override {
        ++ends;
        m_clock.invalidate();
    }
    int asked = 0, ends = 0;

private:
    const int m_limit;
    QElapsedTimer m_clock;
};

QString text(const Status& status) {
    return QString::fromStdString(status.text);
}

} // namespace

class TestFrozen : public PostgresTest {
    Q_OBJECT
    std::unique_ptr<Store> silentAfter(int milliseconds) {
        Status status;
        auto store = open(m_cluster->url(m_database.toStdString()) + "&tcp_user_timeout=" +
                              std::to_string(milliseconds) + "&connect_timeout=2",
                          {}, &status);
        if (!store)
            qWarning("%s", status.text.c_str());
        return store;
    }
private slots:
    void cleanup() {
        m_cluster->thaw();
        PostgresTest::cleanup();
    }

    void everyCallIsGivenUpAndWorksAgainAfterwards_data() {
        QTest::addColumn<int>("call");
        const char* names[] = {"fetch",   "fetchWhere", "readLog", "logPosition",
                               "fileGet", "fileArea",   "changed"};
        for (int i = 0; i < 7; ++i)
            QTest::newRow(names[i]) << i;
    }
    void everyCallIsGivenUpAndWorksAgainAfterwards() {
        QFETCH(int, call);
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*m_store));
        const auto run = [&]() -> Status {
            CMDArray array;
            std::vector<Change> changes;
            std::vector<StoredFile> files;
            int64_t id = 0;
            switch (call) {
            case 0:
                return m_store->fetch("MenuFileExt", array.array);
            case 1:
                return m_store->fetchWhere("MenuFileExt", "fileExt", "x", array.array);
            case 2:
                return m_store->readLog(0, 10, &changes);
            case 3:
                return m_store->logPosition(&id);
            case 4:
                return m_store->fileGet("", "x", true, &files);
            case 5:
                return m_store->fileArea([](const std::string&, const StoredFile&) {});
            default:
                m_store->changed();
                return m_store->logPosition(&id);
            }
        };
        ORVO_OK(run());
        ShortWait policy(300);
        {
            const WaitPolicyScope scope(&policy);
            QVERIFY(m_cluster->freeze());
            QElapsedTimer clock;
            clock.start();
            const Status status = run();
            QVERIFY2(clock.elapsed() < 2500, qPrintable(QString::number(clock.elapsed())));
            ORVO_FAILS(status, Timeout);
            QVERIFY2(text(status).contains("ожидание прервано"), status.text.c_str());
            QVERIFY(policy.asked >= 3);
            QCOMPARE(policy.ends, call == 6 ? 2 : 1);
            // The lost connection is made anew by the next call, which is given up as well.
            ORVO_FAILS(run(), Timeout);
            QVERIFY(m_cluster->thaw());
        }
        ORVO_OK(run());
    }

    void aLongTableIsGivenUpInTheMiddleAndComesWholeAfterwards() {
        constexpr int count = 200000;
        QVERIFY(byHand("SET session_replication_role = replica;" // no log
                       "INSERT INTO \"MenuFileExt\" SELECT 'key' || i, repeat('я', i % 50) || i "
                       "FROM generate_series(1, " +
                       QByteArray::number(count) + ") i;"));
        const auto isWhole = [&] {
            CMDArray array;
            ORVO_OK(m_store->fetch("MenuFileExt", array.array));
            QCOMPARE(array.array->recordCount, uint32_t(count));
            for (const int i : {1, 4097, 77777, count}) {
                const std::string key = "KEY" + std::to_string(i);
                MDRVar value{};
                value.type = MDX_TEXT;
                value.value.text.length = static_cast<uint32_t>(key.size());
                value.value.text.pointer = key.c_str();
                const MDRData* record = MDARecSeekV(array.array, 0, &value, nullptr);
                uint32_t length = 0;
                const char* bytes = nullptr;
                QCOMPARE(MDRGetTextRef(MDRFldByNum(array.array, 1), record, &length, &bytes),
                         int(MDX_OK));
                QCOMPARE(std::string(bytes, length),
                         std::string(size_t(i % 50), '\xFF') + std::to_string(i));
            }
        };
        isWhole();
        int givenUp = 0;
        for (const int milliseconds : {5, 20, 40, 80}) {
            std::thread freezing([&] {
                std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
                m_cluster->freeze();
            });
            ShortWait policy(200);
            CMDArray array;
            Status status;
            {
                const WaitPolicyScope scope(&policy);
                status = m_store->fetch("MenuFileExt", array.array);
            }
            freezing.join();
            QVERIFY(m_cluster->thaw());
            if (status.ok()) {
                QCOMPARE(array.array->recordCount, uint32_t(count));
                continue;
            }
            ++givenUp;
            ORVO_FAILS(status, Timeout);
            QCOMPARE(int(array.array->fieldCount), 0);
        }
        QVERIFY(givenUp > 0);
        isWhole();
    }

    void aWriteThatWasGivenUpIsUnknown() {
        ORVO_OK(Batch("MenuFileExt").insert("before").send(*m_store));
        ShortWait policy(300);
        const WaitPolicyScope scope(&policy);
        QVERIFY(m_cluster->freeze());
        QElapsedTimer clock;
        clock.start();
        const Status status = Batch("MenuFileExt").insert("k").send(*m_store);
        QVERIFY2(clock.elapsed() < 1500, qPrintable(QString::number(clock.elapsed())));
        ORVO_FAILS(status, Timeout);
        QVERIFY2(text(status).contains("неизвестно, сохранено ли"), status.text.c_str());
        // This one has not even begun.
        const Status next = Batch("MenuFileExt").insert("l").send(*m_store);
        ORVO_FAILS(next, Timeout);
        QVERIFY2(text(next).contains("изменения не сохранены"), next.text.c_str());
        QVERIFY(m_cluster->thaw());
        ORVO_OK(Batch("MenuFileExt").insert("m").send(*m_store));
        const QStringList there = dump(*m_store, "MenuFileExt", {"KeyLink"}).split("\n");
        QVERIFY(there.contains("before") && there.contains("m") && !there.contains("l"));
    }

    void withoutAPolicyTheAddressSaysHowLong() {
        const auto store = silentAfter(700);
        QVERIFY(store);
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*store));
        QVERIFY(m_cluster->freeze());
        QElapsedTimer clock;
        clock.start();
        CMDArray array;
        const Status read = store->fetch("MenuFileExt", array.array);
        ORVO_FAILS(read, ConnectionBroken);
        QVERIFY2(text(read).contains("сервер не отвечает"), read.text.c_str());
        QVERIFY2(clock.elapsed() >= 700 && clock.elapsed() < 4000,
                 qPrintable(QString::number(clock.elapsed())));
        ORVO_FAILS(store->fetch("MenuFileExt", array.array), CannotConnect);
        QVERIFY(m_cluster->thaw());
        QCOMPARE(dump(*store, "MenuFileExt"), "k|-");
    }

    void aSilentServerLeavesTheOutcomeOfAWriteUnknown() {
        const auto store = silentAfter(500);
        QVERIFY(store);
        ORVO_OK(Batch("MenuFileExt").insert("before").send(*store));
        QVERIFY(m_cluster->freeze());
        const Status status = Batch("MenuFileExt").insert("k").send(*store);
        ORVO_FAILS(status, ConnectionBroken);
        QVERIFY2(text(status).contains("неизвестно, сохранено ли"), status.text.c_str());
        QVERIFY(m_cluster->thaw());
    }

    void aBigFileIsGivenUpInTheMiddle() {
        const std::string bytes(64 << 20, 'x');
        ORVO_OK(m_store->filePut({{"", "small", "1", {}}}));
        class Freezing : public ShortWait {
        public:
            explicit Freezing(const PostgresCluster& cluster)
                : ShortWait(1500)
                , m_cluster(cluster) {}
            bool keepWaiting() override {
                if (asked == 0) // while the server swallows what has come so far
                    m_cluster.freeze();
                return ShortWait::keepWaiting();
            }

        private:
            const PostgresCluster& m_cluster;
        };
        Freezing policy(*m_cluster);
        Status status;
        {
            const WaitPolicyScope scope(&policy);
            status = m_store->filePut({{"", "big", bytes, {}}});
        }
        QVERIFY(m_cluster->thaw());
        std::vector<StoredFile> files;
        ORVO_OK(m_store->fileGet("", "big", false, &files));
        if (policy.asked == 0)
            QSKIP("the server was never waited for");
        QVERIFY(!status.ok());
        QVERIFY2(text(status).contains("не сохранены") || text(status).contains("неизвестно"),
                 status.text.c_str());
        if (text(status).contains("не сохранены"))
            QVERIFY(files.empty());
        ORVO_OK(m_store->filePut({{"", "big", bytes, {}}}));
    }

    void aLongAnswerIsNotMistakenForSilence() {
        const auto store = silentAfter(400);
        QVERIFY(store);
        ShortWait policy(60000);
        const WaitPolicyScope scope(&policy);
        // Of one that works, the database's own check may take as long as it likes.
        QVERIFY(byHand("ALTER TABLE \"Menu\" RENAME TO \"menu_table\"; CREATE VIEW \"Menu\" AS "
                       "SELECT *, pg_sleep(0)::text AS s FROM \"menu_table\";"
                       "INSERT INTO \"menu_table\" (\"KeyLink\") VALUES ('k');"
                       "CREATE OR REPLACE VIEW \"Menu\" AS SELECT *, pg_sleep(1.2)::text AS s FROM "
                       "\"menu_table\";"));
        std::vector<std::string> damages;
        QElapsedTimer clock;
        clock.start();
        ORVO_OK(store->integrity(&damages));
        QVERIFY(clock.elapsed() > 1000);
        QVERIFY(policy.asked > 10);
    }
};

QTEST_GUILESS_MAIN(TestFrozen)

#include "tst_postgres_frozen.moc"
