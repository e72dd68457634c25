// The change log under many writers at once: complete, in commit order, and read exactly once.
// ORVO_ORDER_CHANGES sets how many changes the writers make together.
#include "PostgresTest.h"

#include "platform/store/PostgresApi.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <atomic>
#include <poll.h>
#include <random>
#include <thread>

using namespace orvo::store;
using namespace orvo::store::test;

class TestOrder : public PostgresTest {
    Q_OBJECT
private slots:
    void overlappingTransactionsAreReadInCommitOrderExactlyOnce();
    void lateCommitOfAnEarlyNumberIsNotSkipped();
    void transactionsThatTouchTheSameRowsDoNotDeadlock();
    void writerWaitsForAnotherOnlySoLong();
};

namespace {

constexpr int writers = 8;
constexpr int readers = 4;

int changesEach() {
    static const int each =
        std::max(500, qEnvironmentVariableIntValue("ORVO_ORDER_CHANGES") / writers);
    return each;
}

/// Half of the writers go through the store, the others through hand-made transactions that draw
/// their numbers early, linger and commit late. Every transaction adds records of its writer,
/// numbered, and raises the common counter.
class Writers {
public:
    explicit Writers(std::string url) : m_url(std::move(url)) {}

    bool throughStore(int writer) const {
        Status status;
        const auto store = open(m_url, {}, &status);
        std::minstd_rand random(unsigned(writer + 1));
        for (int i = 0; store && status.ok() && i < changesEach();) {
            Batch batch("Menu");
            for (int left = 1 + int(random() % 9); left > 0 && i < changesEach(); --left, ++i)
                batch.insert(key(writer, i).c_str(), {{"order_", i}, {"caption", caption(writer)}});
            status = batch.send(*store);
        }
        return report(status);
    }

    bool byHand(int writer) const {
        postgres::Url url;
        Status status = url.parse(m_url);
        postgres::Connection connection;
        if (status.ok())
            status = connection.open(url);
        std::minstd_rand random(unsigned(writer + 1));
        for (int i = 0; status.ok() && i < changesEach();) {
            std::vector<std::string> steps = {"BEGIN; SET LOCAL search_path = public"};
            for (int left = 1 + int(random() % 9); left > 0 && i < changesEach(); --left, ++i) {
                // Below one of another writer, if that is there already: it came before then.
                const int other = int(random() % writers);
                steps.push_back("INSERT INTO \"Menu\" (\"KeyLink\", \"order_\", \"caption\", "
                                "\"parent\") VALUES ('" +
                                key(writer, i) + "', " + std::to_string(i) + ", '" +
                                std::to_string(writer) +
                                "', (SELECT \"KeyLink\" FROM \"Menu\" WHERE \"KeyLink\" = '" +
                                key(other, std::max(0, i - int(random() % 20))) + "'))");
            }
            steps.emplace_back("UPDATE \"Menu\" SET \"order_\" = \"order_\" + 1 WHERE \"KeyLink\" "
                               "= 'counter'");
            steps.emplace_back("COMMIT");
            for (const std::string& step : steps) {
                const postgres::Result result = connection.execute(step);
                if (!postgres::succeeded(result.get()))
                    status = connection.failure(step, result.get());
                if (random() % 16 == 0)
                    std::this_thread::sleep_for(std::chrono::microseconds(random() % 2000));
            }
        }
        return report(status);
    }

private:
    static std::string key(int writer, int number) {
        return "w" + std::to_string(writer) + "-" + std::to_string(number);
    }
    static QString caption(int writer) { return QString::number(writer); }
    static bool report(const Status& status) {
        if (!status.ok())
            qWarning("%s", status.text.c_str());
        return status.ok();
    }
    const std::string m_url;
};

/// Follows the log as a client does, and checks every row against what must have come before. What
/// the table must hold according to the log goes into `lines`.
QString follow(const std::string& url, int64_t cursor, unsigned seed, const std::atomic<bool>& stop,
               QStringList* lines) {
    Status status;
    const auto store = open(url, {}, &status);
    if (!store)
        return QString::fromStdString(status.text);
    std::minstd_rand random(seed);
    std::vector<int> next(writers, 0);
    int counter = 0;
    int total = 0;
    while (total < writers * changesEach()) {
        std::vector<Change> changes;
        const bool ended = stop; // asked first: what is committed later is still to be read
        status = store->readLog(cursor, 1 + int(random() % 300), &changes);
        if (!status.ok())
            return QString::fromStdString(status.text);
        for (const Change& change : changes) {
            if (change.id <= cursor)
                return "ids do not rise";
            cursor = change.id;
            const QByteArray key = QByteArray::fromStdString(change.key);
            const QJsonObject after =
                QJsonDocument::fromJson(QByteArray::fromStdString(change.after)).object();
            if (key == "counter") {
                const QJsonObject before =
                    QJsonDocument::fromJson(QByteArray::fromStdString(change.before)).object();
                if (change.code != 602 || before.value("order_").toInt(-1) != counter ||
                    after.value("order_").toInt(-1) != counter + 1)
                    return QString("counter %1: %2").arg(counter).arg(change.after.c_str());
                ++counter;
                continue;
            }
            const QStringList parent = after.value("parent").toString().mid(1).split('-');
            if (parent.size() == 2 && next[size_t(parent[0].toInt())] <= parent[1].toInt())
                return "before its parent: " + QString::fromUtf8(key);
            const int writer = after.value("caption").toString().toInt();
            const int number = after.value("order_").toInt(-1);
            if (change.code != 601 || key != QString("w%1-%2").arg(writer).arg(number).toUtf8() ||
                next[size_t(writer)] != number)
                return QString("%1 after %2").arg(QString(key)).arg(next[size_t(writer)] - 1);
            ++next[size_t(writer)];
            ++total;
            *lines << QString("%1|%2|%3|%4")
                          .arg(QString(key))
                          .arg(number)
                          .arg(writer)
                          .arg(after.value("parent").toString("-"));
        }
        if (changes.empty()) {
            if (ended)
                return QString("%1 changes only").arg(total);
            pollfd wait = {store->wakeFd(), POLLIN, 0};
            ::poll(&wait, 1, 1000);
            store->takeWake();
        }
    }
    return {};
}

} // namespace

void TestOrder::overlappingTransactionsAreReadInCommitOrderExactlyOnce() {
    ORVO_OK(Batch("Menu").insert("counter", {{"order_", 0}}).send(*m_store));
    int64_t cursor = 0;
    ORVO_OK(m_store->logPosition(&cursor));
    const std::string url = m_cluster->url(m_database.toStdString());
    std::atomic<bool> stop = false;
    std::vector<QString> problems(readers);
    std::vector<QStringList> seen(readers);
    std::vector<std::thread> following;
    for (unsigned i = 0; i < readers; ++i)
        following.emplace_back(
            [&, i] { problems[i] = follow(url, cursor, i + 1, stop, &seen[i]); });
    const Writers work(url);
    std::atomic<int> failed = 0;
    std::vector<std::thread> writing;
    for (int i = 0; i < writers; ++i)
        writing.emplace_back(
            [&, i] { failed += i % 2 == 0 ? !work.throughStore(i) : !work.byHand(i); });
    for (std::thread& thread : writing)
        thread.join();
    stop = true;
    for (std::thread& thread : following)
        thread.join();
    QCOMPARE(failed.load(), 0);
    for (const QString& problem : problems)
        QCOMPARE(problem, QString());
    QStringList present =
        dump(*m_store, "Menu", {"KeyLink", "order_", "caption", "parent"}).split("\n");
    present.removeAt(present.indexOf(QRegularExpression("^counter\\|.*")));
    present.sort();
    QCOMPARE(present.size(), writers * changesEach());
    for (QStringList& lines : seen) {
        lines.sort();
        QCOMPARE(lines, present);
    }
}

void TestOrder::lateCommitOfAnEarlyNumberIsNotSkipped() {
    postgres::Url url;
    ORVO_OK(url.parse(m_cluster->url(m_database.toStdString())));
    postgres::Connection early;
    ORVO_OK(early.open(url));
    QVERIFY(postgres::succeeded(
        early.execute("BEGIN; INSERT INTO public.\"MenuFileExt\" VALUES ('early', 'x')").get()));
    Status lateStatus;
    std::thread late([&] {
        const auto store = open(m_cluster->url(m_database.toStdString()), {}, &lateStatus);
        if (store)
            lateStatus = Batch("MenuFileExt").insert("late").send(*store);
    });
    QTest::qWait(300); // time enough to overtake, if that were possible
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

void TestOrder::transactionsThatTouchTheSameRowsDoNotDeadlock() {
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
                    sql += "UPDATE \"MenuFileExt\" SET \"fileExt\" = 'x' WHERE \"KeyLink\" = '" +
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

void TestOrder::writerWaitsForAnotherOnlySoLong() {
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

QTEST_GUILESS_MAIN(TestOrder)

#include "tst_postgres_order.moc"
