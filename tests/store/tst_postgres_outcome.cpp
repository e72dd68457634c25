// A connection that breaks around a commit: what the writer is told is true.
#include "PostgresProxy.h"
#include "PostgresTest.h"

#include "platform/store/PostgresApi.h"

#include <QElapsedTimer>

#include <thread>

using namespace orvo::store;
using namespace orvo::store::test;

class TestOutcome : public PostgresTest {
    Q_OBJECT
private slots:
    void init() {
        PostgresTest::init();
        QVERIFY(m_store);
        m_proxy = std::make_unique<PostgresProxy>(m_cluster->directory());
        Status status;
        m_through = open("postgresql://postgres@/" + m_database.toStdString() +
                             "?host=" + m_proxy->directory(),
                         {}, &status);
        QVERIFY2(m_through, status.text.c_str());
    }

    void cleanup() {
        m_through.reset();
        m_proxy.reset();
        PostgresTest::cleanup();
    }

    void savedWriteWithoutAnAnswerIsSaved() {
        for (const char* key : {"a", "b", "c"}) { // with and without prepared statements
            m_proxy->next(PostgresProxy::LoseAnswers);
            ORVO_OK(Batch("MenuFileExt").insert(key).send(*m_through));
            QVERIFY(m_proxy->happened());
        }
        ORVO_OK(Batch("MenuFileExt").insert("d").send(*m_through));
        QCOMPARE(dump(*m_store, "MenuFileExt"), "a|-\nb|-\nc|-\nd|-");
    }

    void savedFileWithoutAnAnswerIsSaved() {
        ORVO_OK(m_through->filePut({{"", "x", "1", {}}}));
        // Wherever in the course of a put the connection breaks, what is said is true.
        int saved = 0;
        for (int step = 0; step < 12; ++step) {
            const std::string bytes = "content " + std::to_string(step);
            std::atomic<bool> done = false;
            std::thread breaker([&] {
                std::this_thread::sleep_for(std::chrono::microseconds(step * 300));
                if (!done)
                    m_proxy->next(step % 2 == 0 ? PostgresProxy::LoseAnswers
                                                : PostgresProxy::LoseRequest);
            });
            const Status status = m_through->filePut({{"", "x", bytes, {}}});
            done = true;
            breaker.join();
            m_proxy->next(PostgresProxy::Pass);
            std::vector<StoredFile> files;
            ORVO_OK(m_store->fileGet("", "x", true, &files));
            QVERIFY2(status.ok() || text(status).contains("не сохранены"), status.text.c_str());
            QCOMPARE(files.at(0).bytes == bytes, status.ok());
            saved += status.ok();
        }
        qInfo("%d of 12 saved", saved);
    }

    void writeThatNeverArrivedIsNotSaved() {
        m_proxy->next(PostgresProxy::LoseRequest);
        const Status status = Batch("MenuFileExt").insert("k").send(*m_through);
        ORVO_FAILS(status, ConnectionBroken);
        QVERIFY2(text(status).contains("изменения не сохранены"), status.text.c_str());
        QCOMPARE(dump(*m_store, "MenuFileExt"), "");
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*m_through));
    }

    void writeOfASessionThatHasNotNoticedIsEnded() {
        // The server has the whole write, commit included, and waits for another transaction. The
        // client is gone, and asks over a new connection.
        postgres::Url url;
        ORVO_OK(url.parse(m_cluster->url(m_database.toStdString())));
        postgres::Connection other;
        ORVO_OK(other.open(url));
        QVERIFY(postgres::succeeded(
            other.execute("BEGIN; INSERT INTO public.\"MenuFileExt\" VALUES ('o', 'x')").get()));
        m_proxy->next(PostgresProxy::HalfOpen);
        const Status status = Batch("MenuFileExt").insert("k").send(*m_through);
        ORVO_FAILS(status, ConnectionBroken);
        QVERIFY2(text(status).contains("изменения не сохранены"), status.text.c_str());
        QVERIFY(postgres::succeeded(other.execute("COMMIT").get()));
        ORVO_OK(Batch("MenuFileExt").insert("l").send(*m_store)); // comes after whatever waits
        QCOMPARE(dump(*m_store, "MenuFileExt"), "l|-\no|x");
    }

    void outcomeOfAnUnreachableServerIsUnknown() {
        m_proxy->setOpen(false);
        m_proxy->next(PostgresProxy::LoseAnswers);
        QElapsedTimer clock;
        clock.start();
        const Status status = Batch("MenuFileExt").insert("k").send(*m_through);
        ORVO_FAILS(status, ConnectionBroken);
        QVERIFY2(text(status).contains("неизвестно, сохранено ли"), status.text.c_str());
        QVERIFY(clock.elapsed() < 20000);
        ORVO_FAILS(Batch("MenuFileExt").insert("n").send(*m_through), CannotConnect);
        m_proxy->setOpen(true);
        QCOMPARE(dump(*m_through, "MenuFileExt"), "k|-");
    }

    void outcomeWithAPrunedLogIsUnknown() {
        // Someone prunes the log between the commit and the question.
        m_proxy->setOpen(false);
        m_proxy->next(PostgresProxy::LoseAnswers);
        Status pruned;
        std::thread pruner([&] {
            while (!m_proxy->happened() || dump(*m_store, "MenuFileExt").isEmpty())
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            pruned = m_store->pruneLog(1000);
            m_proxy->setOpen(true);
        });
        const Status status = Batch("MenuFileExt").insert("k").send(*m_through);
        pruner.join();
        ORVO_OK(pruned);
        ORVO_FAILS(status, ConnectionBroken);
        QVERIFY2(text(status).contains("неизвестно, сохранено ли"), status.text.c_str());
    }

    void readWithoutAnAnswerFailsAndWorksAgain() {
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*m_store));
        for (const auto mode : {PostgresProxy::LoseAnswers, PostgresProxy::LoseRequest}) {
            CMDArray array;
            m_proxy->next(mode);
            ORVO_FAILS(m_through->fetch("MenuFileExt", array.array), ConnectionBroken);
            QCOMPARE(int(array.array->fieldCount), 0);
            QCOMPARE(dump(*m_through, "MenuFileExt"), "k|-");
            std::vector<Change> changes;
            m_proxy->next(mode);
            ORVO_FAILS(m_through->readLog(0, 10, &changes), ConnectionBroken);
            ORVO_OK(m_through->readLog(0, 10, &changes));
            QCOMPARE(changes.size(), size_t(1));
            m_proxy->next(mode);
            ORVO_FAILS(m_through->fetchWhere("MenuFileExt", "KeyLink", "k", array.array),
                       ConnectionBroken);
            QCOMPARE(dump(*m_through, "MenuFileExt"), "k|-");
            std::vector<StoredFile> files;
            m_proxy->next(mode);
            ORVO_FAILS(m_through->formGet("f", true, &files), ConnectionBroken);
            ORVO_OK(m_through->formGet("f", true, &files));
        }
    }

private:
    static QString text(const Status& status) { return QString::fromStdString(status.text); }
    std::unique_ptr<PostgresProxy> m_proxy;
    std::unique_ptr<Store> m_through; ///< the store through the proxy
};

QTEST_GUILESS_MAIN(TestOutcome)

#include "tst_postgres_outcome.moc"
