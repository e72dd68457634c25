// A server that goes away: what was said to be saved is there, what was said not to be is not, and
// readers go on where they were.
#include "PostgresTest.h"

#include "platform/store/PostgresApi.h"

#include <QSet>

#include <atomic>
#include <poll.h>
#include <thread>

using namespace orvo::store;
using namespace orvo::store::test;

namespace {

/// Writes one record after the other, and remembers what it was told about each.
class Stream {
public:
    explicit Stream(std::string url) : m_url(std::move(url)) {
        m_writer = std::thread([this] { write(); });
        m_reader = std::thread([this] { read(); });
    }
    ~Stream() { end(); }

    /// Stops writing, and reads to the end of the log.
    void end() {
        m_stop = true;
        if (m_writer.joinable())
            m_writer.join();
        m_written = true;
        if (m_reader.joinable())
            m_reader.join();
    }

    size_t savedCount() const { return m_savedCount; }
    QSet<QString> saved, notSaved, unknown;
    QStringList read_;
    QString problem;

private:
    static std::unique_ptr<Store> openPatiently(const std::string& url, Status* status) {
        for (int i = 0; i < 300; ++i) {
            if (auto store = open(url, {}, status))
                return store;
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return nullptr;
    }

    void write() {
        Status status;
        const auto store = openPatiently(m_url, &status);
        for (int i = 0; store && !m_stop; ++i) {
            const QString key = QString("k%1").arg(i, 6, 10, QChar('0'));
            status = Batch("MenuFileExt").insert(key.toUtf8().constData()).send(*store);
            const QString text = QString::fromStdString(status.text);
            if (status.ok()) {
                saved += key;
                ++m_savedCount;
            } else if (text.contains("неизвестно")) {
                unknown += key;
            } else {
                notSaved += key;
                if (status.code != ConnectionBroken && status.code != CannotConnect)
                    problem = text;
                if (text.contains('\n') || text.isEmpty())
                    problem = "no single line";
            }
        }
    }

    void read() {
        Status status;
        const auto store = openPatiently(m_url, &status);
        int64_t cursor = 0;
        for (bool last = false; store;) {
            std::vector<Change> changes;
            last = m_written;
            status = store->readLog(cursor, 100, &changes);
            if (!status.ok()) {
                if (status.code == LogPruned) {
                    problem = QString::fromStdString(status.text);
                    return;
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
                continue;
            }
            for (const Change& change : changes) {
                cursor = change.id;
                read_ += QString::fromStdString(change.key);
            }
            if (changes.empty() && last)
                return;
            if (changes.empty()) {
                pollfd wait = {store->wakeFd(), POLLIN, 0};
                ::poll(&wait, 1, 200);
                store->takeWake();
                store->changed();
            }
        }
    }

    const std::string m_url;
    std::atomic<bool> m_stop = false, m_written = false;
    std::atomic<size_t> m_savedCount = 0;
    std::thread m_writer, m_reader;
};

} // namespace

#define ORVO_STREAM_HOLDS(stream, store)                                                           \
    do {                                                                                           \
        (stream).end();                                                                            \
        QCOMPARE((stream).problem, QString());                                                     \
        QStringList present = dump(store, "MenuFileExt", {"KeyLink"}).split("\n");                 \
        const QSet<QString> there(present.begin(), present.end());                                 \
        QVERIFY((stream).saved.size() > 10);                                                       \
        QVERIFY(there.contains((stream).saved));                                                   \
        QVERIFY(!there.intersects((stream).notSaved));                                             \
        QVERIFY((QSet<QString>(there) - (stream).saved - (stream).unknown).isEmpty());             \
        QCOMPARE((stream).read_, present); /* each once, in order */                               \
        qInfo("%d saved, %d not saved, %d unknown", int((stream).saved.size()),                    \
              int((stream).notSaved.size()), int((stream).unknown.size()));                        \
    } while (false)

class TestBreaks : public PostgresTest {
    Q_OBJECT
private slots:
    void idleLossIsMendedByTheNextCall() {
        ORVO_OK(Batch("MenuFileExt").insert("a").send(*m_store));
        QVERIFY(terminateAll());
        QCOMPARE(dump(*m_store, "MenuFileExt"), "a|-");
        QVERIFY(terminateAll());
        ORVO_OK(Batch("MenuFileExt").update("a", {{"fileExt", "b"}}).send(*m_store));
        QVERIFY(m_cluster->restart());
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(0, 10, &changes));
        QCOMPARE(changes.size(), size_t(2));
        QVERIFY(m_cluster->restart("fast"));
        ORVO_OK(m_store->filePut({{"", "x", "bytes", {}}}));
    }

    void lossDuringACallIsReportedAndTheNextCallWorks() {
        // The call waits for this transaction's lock when its session is ended.
        postgres::Url url;
        ORVO_OK(url.parse(m_cluster->url(m_database.toStdString())));
        postgres::Connection other;
        ORVO_OK(other.open(url));
        QVERIFY(postgres::succeeded(
            other.execute("BEGIN; INSERT INTO public.\"MenuFileExt\" VALUES ('o', 'x')").get()));
        std::thread ender([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            m_cluster->shell("postgres",
                             "SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE "
                             "wait_event_type = 'Lock';");
        });
        const Status status = Batch("MenuFileExt").insert("k").send(*m_store);
        ender.join();
        ORVO_FAILS(status, ConnectionBroken);
        QVERIFY2(QString::fromStdString(status.text).contains("изменения не сохранены"),
                 status.text.c_str());
        QVERIFY(postgres::succeeded(other.execute("COMMIT").get()));
        ORVO_OK(Batch("MenuFileExt").insert("k").send(*m_store));
        QCOMPARE(dump(*m_store, "MenuFileExt"), "k|-\no|x");
    }

    void wakeComesBackAfterALoss() {
        const int fd = m_store->wakeFd();
        std::vector<Change> changes;
        for (const char* key : {"a", "b", "c"}) {
            QVERIFY(terminateAll());
            pollfd wait = {fd, POLLIN, 0};
            QCOMPARE(::poll(&wait, 1, 5000), 1); // the loss shows
            m_store->takeWake();
            QCOMPARE(::poll(&wait, 1, 0), 0); // once
            ORVO_OK(m_store->readLog(0, 10, &changes));
            QCOMPARE(m_store->wakeFd(), fd);
            QVERIFY(byHand("INSERT INTO public.\"MenuFileExt\" VALUES ('" + QByteArray(key) +
                           "', 'x');"));
            QCOMPARE(::poll(&wait, 1, 5000), 1);
            m_store->takeWake();
            const size_t before = changes.size();
            ORVO_OK(m_store->readLog(0, 10, &changes));
            QCOMPARE(changes.size(), before + 1);
        }
    }

    void changedTellsOfALoss() {
        m_store->changed();
        QVERIFY(!m_store->changed());
        QVERIFY(terminateAll());
        QVERIFY(m_store->changed());
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(0, 10, &changes));
        QVERIFY(!m_store->changed());
    }

    void endOfEverySessionDuringAStreamLosesNothing() {
        Stream stream(m_cluster->url(m_database.toStdString()));
        for (int i = 0; i < 30; ++i) {
            QTest::qWait(37 + i);
            QVERIFY(terminateAll());
        }
        QTRY_VERIFY_WITH_TIMEOUT(stream.savedCount() > 50, 30000);
        ORVO_STREAM_HOLDS(stream, *m_store);
    }

    void crashOfTheServerDuringAStreamLosesNothing() {
        Stream stream(m_cluster->url(m_database.toStdString()));
        for (int i = 0; i < 3; ++i) {
            const size_t before = stream.savedCount();
            QTRY_VERIFY_WITH_TIMEOUT(stream.savedCount() > before + 20, 30000);
            QVERIFY(m_cluster->restart());
        }
        const size_t before = stream.savedCount();
        QTRY_VERIFY_WITH_TIMEOUT(stream.savedCount() > before + 20, 30000);
        ORVO_STREAM_HOLDS(stream, *m_store);
    }

    void standbyTakesOverDuringAStream() {
        // Last: the first server stays down.
        QVERIFY(m_cluster->startStandby());
        const std::string directory = m_cluster->directory().toStdString();
        const std::string url = m_cluster->urlOfBoth(m_database.toStdString());
        // The standby may come first: it takes no writes, so it is passed over.
        const std::string turned = "postgresql://postgres@/" + m_database.toStdString() +
                                   "?host=" + directory + "," + directory + "&port=5433,5432";
        Status status;
        auto store = open(turned, {}, &status);
        QVERIFY2(store, status.text.c_str());
        ORVO_OK(Batch("MenuFileExt").insert("_first").remove("_first").send(*store));
        int64_t cursor = 0;
        ORVO_OK(store->logPosition(&cursor));
        ORVO_OK(store->pruneLog(0));

        {
            Stream stream(url);
            QTRY_VERIFY_WITH_TIMEOUT(stream.savedCount() > 30, 60000);
            QVERIFY(m_cluster->failOver());
            const size_t before = stream.savedCount();
            QTRY_VERIFY_WITH_TIMEOUT(stream.savedCount() > before + 30, 60000);
            stream.end();
            QCOMPARE(stream.read_.mid(0, 2), QStringList({"_first", "_first"}));
            stream.read_ = stream.read_.mid(2);
            ORVO_STREAM_HOLDS(stream, *store);
        }
        std::vector<Change> changes;
        ORVO_OK(store->readLog(cursor, 10, &changes));
        QCOMPARE(changes.size(), size_t(10));
    }
};

QTEST_GUILESS_MAIN(TestBreaks)

#include "tst_postgres_breaks.moc"
