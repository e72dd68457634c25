// The change log under many writers at once, of all sorts: complete, in commit order, read exactly
// once, and telling of what the tables hold. ORVO_TRIAL_ROUNDS is the number of changes that the
// writers make together.
#include "DirectWriter.h"
#include "Trial.h"

#include "tests/store/LogReplay.h"
#include "tests/store/StoreTest.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>

#include <atomic>
#include <poll.h>
#include <random>
#include <thread>

using namespace orvo::store;
using namespace orvo::store::test;
using orvo::test::DirectWriter;

namespace {

constexpr int writers = 8;
constexpr int readers = 4;

int changesEach() {
    static const int each = std::max(1, orvo::test::rounds(200 * writers) / writers);
    return each;
}

/// What a program writes; the records as those of DirectWriter, without the counter.
bool writeThroughStore(const std::string& url, int writer) {
    Status status;
    const auto store = open(url, {}, &status);
    std::minstd_rand random(unsigned(writer + 1));
    for (int i = 0; store && status.ok() && i < changesEach();) {
        Batch batch("Menu");
        const int end = std::min(changesEach(), i + 1 + int(random() % 9));
        for (int number = i; number < end; ++number)
            batch.insert(qPrintable(QString("w%1-%2").arg(writer).arg(number)),
                         {{"order_", number}, {"caption", QString::number(writer)}});
        status = batch.send(*store);
        if (status.ok())
            i = end;
        else if (status.code == Timeout)
            status = {}; // another was in the way; nothing was written
    }
    if (!status.ok())
        qWarning("%s", status.text.c_str());
    return store && status.ok();
}

/// Follows the log as a client does, and checks every row against what must have come before.
class Follower {
public:
    Follower(std::string url, int64_t cursor, unsigned seed)
        : m_url(std::move(url))
        , m_cursor(cursor)
        , m_random(seed) {}

    QString follow(const std::atomic<bool>& stop) {
        Status status;
        const auto store = open(m_url, {}, &status);
        if (!store)
            return QString::fromStdString(status.text);
        for (;;) {
            std::vector<Change> changes;
            const bool ended = stop; // asked first: what is committed later is still to be read
            status = store->readLog(m_cursor, 1 + int(m_random() % 300), &changes);
            if (!status.ok())
                return QString::fromStdString(status.text);
            for (const Change& change : changes) {
                m_cursor = change.id;
                QString misfit = replay.apply(change);
                if (misfit.isEmpty() && change.table == "Menu")
                    misfit = judge(change);
                if (!misfit.isEmpty())
                    return misfit;
            }
            if (!changes.empty())
                continue;
            if (ended)
                return m_records == writers * changesEach()
                           ? QString()
                           : QString("%1 records only").arg(m_records);
            pollfd wait = {store->wakeFd(), POLLIN, 0};
            ::poll(&wait, 1, 1000);
            store->takeWake();
        }
    }

    LogReplay replay;

private:
    static QJsonObject object(const std::string& json) {
        return QJsonDocument::fromJson(QByteArray::fromStdString(json)).object();
    }
    QString judge(const Change& change) {
        const QJsonObject after = object(change.after);
        const QString key = QString::fromStdString(change.key);
        if (key == "counter") {
            const int before = object(change.before).value("order_").toInt(-1);
            if (change.code != 602 || before != m_counter ||
                after.value("order_").toInt(-1) != m_counter + 1)
                return QString("counter %1: %2").arg(m_counter).arg(change.after.c_str());
            ++m_counter;
            return {};
        }
        const QStringList parent = after.value("parent").toString().mid(1).split('-');
        if (parent.size() == 2 && m_next[size_t(parent[0].toInt())] <= parent[1].toInt())
            return "before its parent: " + key;
        const int writer = after.value("caption").toString().toInt();
        const int number = after.value("order_").toInt(-1);
        if (change.code != 601 || key != QString("w%1-%2").arg(writer).arg(number) ||
            m_next[size_t(writer)] != number)
            return QString("%1 after %2").arg(key).arg(m_next[size_t(writer)] - 1);
        ++m_next[size_t(writer)];
        ++m_records;
        return {};
    }

    const std::string m_url;
    int64_t m_cursor;
    std::minstd_rand m_random;
    std::vector<int> m_next = std::vector<int>(writers, 0);
    int m_counter = 0;
    int m_records = 0;
};

} // namespace

class TestTrialOrder : public StoreTest {
    Q_OBJECT
public:
    using StoreTest::StoreTest;
private slots:
    void init() { StoreTest::init(); }
    void cleanup() { StoreTest::cleanup(); }

    void overlappingTransactionsAreReadInCommitOrderExactlyOnce() {
        ORVO_OK(Batch("Menu").insert("counter", {{"order_", 0}}).send(*m_store));
        LogReplay beginning;
        QCOMPARE(beginning.follow(*m_store), QStringList());
        const std::string url = m_kind.url();
        QElapsedTimer clock;
        clock.start();
        std::atomic<bool> stop = false;
        std::vector<Follower> followers;
        for (unsigned i = 0; i < readers; ++i) {
            followers.emplace_back(url, beginning.position(), i + 1);
            followers.back().replay = beginning;
        }
        std::vector<QString> problems(readers);
        std::vector<std::thread> following;
        for (size_t i = 0; i < readers; ++i)
            following.emplace_back([&, i] { problems[i] = followers[i].follow(stop); });
        std::atomic<int> failed = 0;
        std::vector<std::thread> writing;
        for (int i = 0; i < writers; ++i)
            writing.emplace_back([&, i] {
                const bool done =
                    i < DirectWriter::ways
                        ? DirectWriter(url, i, writers, DirectWriter::Way(i)).write(changesEach())
                        : writeThroughStore(url, i);
                failed += done ? 0 : 1;
            });
        for (std::thread& thread : writing)
            thread.join();
        stop = true;
        for (std::thread& thread : following)
            thread.join();
        QCOMPARE(failed.load(), 0);
        for (const QString& problem : problems)
            QCOMPARE(problem, QString());
        Status status;
        const auto store = openMaintained(url, {"looker", false}, &status);
        QVERIFY2(store, status.text.c_str());
        for (const Follower& follower : followers)
            QCOMPARE(follower.replay.compare(*store), QStringList());
        std::vector<std::string> damages;
        ORVO_OK(store->integrity(&damages));
        QCOMPARE(damages, std::vector<std::string>());
        qInfo("%zu changes by %d writers, read by %d, in %lld s", followers[0].replay.changes(),
              writers, readers, clock.elapsed() / 1000);
    }
};

int main(int argc, char** argv) {
    return runOnAllKinds<TestTrialOrder>(argc, argv);
}

#include "tst_trial_order.moc"
