// Editors at work while their server goes away and comes back: afterwards every table and tree
// shows what the database holds, what was reported saved is there, and what was reported not saved
// is not.
#include "platform/client/ModuleRegistry.h"
#include "platform/client/NotificationPump.h"
#include "platform/client/Session.h"
#include "platform/mdx/MdxBuild.h"
#include "tests/menu/MenuProbe.h"
#include "tests/models/TreeText.h"
#include "tests/store/PostgresCluster.h"

#include <QElapsedTimer>
#include <QSet>
#include <QtTest>

#include <algorithm>
#include <atomic>
#include <thread>

using namespace orvo::test;
using orvo::menu::DesckColumn;
using orvo::menu::MenuColumn;
using orvo::store::test::kindOn;
using orvo::store::test::PostgresCluster;

namespace {

QString trees(const MenuProbe& editor) {
    return treetext::print(*editor.m_desckModel, DesckColumn::KeyLink,
                           {DesckColumn::Order, DesckColumn::IsFolder}) +
           "\n--\n" +
           treetext::print(*editor.m_menuModel, MenuColumn::KeyLink,
                           {MenuColumn::Order, MenuColumn::Icon, MenuColumn::Type});
}

/// An engineer's client: session, notifications and the menu editor, as the program puts them
/// together.
class LiveClient {
public:
    LiveClient(TestStore& store, const QString& name)
        : m_store(store)
        , m_host(store)
        , m_name(name) {
        m_registry.add(m_module, "Menu");
        m_watch = std::make_unique<ViewWatch>(*m_module);
        m_module->resize(1146, 825);
        if (!m_registry.start(m_module))
            qFatal("the editor does not start: %s", qUtf8Printable(m_host.failures.join('\n')));
        m_module->show();
        m_pump = std::make_unique<orvo::client::NotificationPump>(*m_host.m_session, m_registry,
                                                                  store.connect("reader"));
        using orvo::client::NotificationPump;
        QObject::connect(m_pump.get(), &NotificationPump::logLost, [this] { ++gaps; });
        QObject::connect(m_pump.get(), &NotificationPump::connectionChanged,
                         [this](bool isUp, const QString&) {
                             up = isUp;
                             losses += isUp ? 0 : 1;
                         });
        m_pump->start();
        m_module->findChild<QTreeView*>("tvDesck")->setCurrentIndex(m_module->desck("armop"));
    }
    ~LiveClient() {
        m_pump.reset();
        m_watch.reset();
        m_registry.stopAll();
    }

    /// One write: a new element, a new caption for one of its own, or a move by the editor.
    void act(int number) {
        const size_t failures = size_t(m_host.failures.size());
        if (number % 3 == 2) {
            const QAbstractItemModel& model = *m_module->m_menuModel;
            const QModelIndex top = model.index(0, 0);
            const int rows = model.rowCount(top);
            m_module->findChild<QTreeView*>("tvMenu")->setCurrentIndex(
                model.index(number % std::max(1, rows - 1), 0, top));
            QMetaObject::invokeMethod(m_module, "on_actMoveDown_triggered");
            return;
        }
        const bool insert = number % 3 == 0 || m_captions.isEmpty();
        const QString key = insert ? QString("%1-%2").arg(m_name).arg(number) : m_lastKey;
        const QString caption = QString("%1 %2").arg(m_name).arg(number);
        CMDArray records;
        orvo::store::makeStructure(*orvo::store::findTable("Menu"), records.array);
        records.KeyAdd("KeyLink", MDX_KEY_MULTI);
        MDRData* record = MDARecNew(records.array);
        MDRSetFlags(record, insert ? MDX_INSERT : MDX_UPDATE);
        if (insert)
            setFields(records, record,
                      {{"KeyLink", key},
                       {"FolderKey", QString("armop")},
                       {"caption", caption},
                       {"order_", 10000 + number}});
        else
            setFields(records, record, {{"KeyLink", key}, {"caption", caption}});
        records.RecPost(record);
        const bool done = m_host.m_session->SqlUpdate("Menu", records.array, true, nullptr) != 0;
        const QString said = m_host.failures.mid(int(failures)).join('\n');
        if (done) {
            ++saved;
            m_captions[key] = {caption};
            m_lastKey = key;
        } else if (said.contains(QStringLiteral("неизвестно, сохранено ли"))) {
            ++unknown;
            if (insert)
                m_unsure.insert(key);
            else
                m_captions[key].insert(caption);
        } else if (said.contains(QStringLiteral("не сохранены"))) {
            ++notSaved;
            if (insert)
                m_absent.insert(key);
        } else {
            problem = QString("neither saved nor reported: %1 '%2'").arg(key, said);
        }
    }

    /// What was said against what is there; empty if all is true.
    QString lies() const {
        if (!problem.isEmpty())
            return problem;
        QMap<QString, QString> present;
        CMDArray rows;
        if (!m_store.connect()->fetch("Menu", rows.array).ok())
            return "no table";
        for (uint32_t i = 0; i < rows.array->recordCount; ++i) {
            const MDRData* record = orvo::mdx::postedRecord(rows.array, i);
            present[fieldText(rows.array, record, "KeyLink")] =
                fieldText(rows.array, record, "caption");
        }
        for (auto known = m_captions.begin(); known != m_captions.end(); ++known) {
            if (!present.contains(known.key()))
                return "saved, but not there: " + known.key();
            if (!known->contains(present[known.key()]))
                return QString("%1 is %2").arg(known.key(), present[known.key()]);
        }
        for (const QString& key : m_absent)
            if (present.contains(key))
                return "not saved, but there: " + key;
        return {};
    }

    /// How the window differs from one opened now; empty if it does not.
    QString difference() {
        if (!m_pump->isIdle() || !up)
            return QString("not at rest: %1 up, %2 idle").arg(up).arg(m_pump->isIdle());
        TestHost host(m_store);
        MenuEditor fresh(host, "Menu");
        if (!fresh.start())
            return "a fresh editor does not start";
        fresh.view("tvDesck")->setCurrentIndex(fresh->desck("armop"));
        for (const char* table : {"MenuFolder", "MenuResource", "Menu"})
            if (m_module->tableText(table) != fresh->tableText(table))
                return QString("%1:\n%2\nfresh:\n%3")
                    .arg(table, m_module->tableText(table), fresh->tableText(table));
        if (trees(*m_module) != trees(*fresh.module))
            return trees(*m_module) + "\nfresh:\n" + trees(*fresh.module);
        return {};
    }

    bool isIdle() const { return m_pump->isIdle(); }

    bool up = true;
    int losses = 0, gaps = 0;
    int saved = 0, notSaved = 0, unknown = 0;
    QString problem;

private:
    static QString fieldText(const MDArray* array, const MDRData* record, const char* field) {
        uint32_t length = 0;
        const char* text = nullptr;
        if (MDRGetTextRef(MDRFldByName(array, field), record, &length, &text) != MDX_OK)
            return {};
        return QString::fromStdString(orvo::mdx::toUtf8({text, length}));
    }

    TestStore& m_store;
    TestHost m_host;
    const QString m_name;
    orvo::client::ModuleRegistry m_registry;
    MenuProbe* m_module = new MenuProbe(&m_host); ///< the registry's
    std::unique_ptr<ViewWatch> m_watch;
    std::unique_ptr<orvo::client::NotificationPump> m_pump;
    QMap<QString, QSet<QString>> m_captions; ///< what each saved element may be called
    QString m_lastKey;
    QSet<QString> m_absent, m_unsure;
};

} // namespace

class TestMenuBreaks : public QObject {
    Q_OBJECT
    std::unique_ptr<PostgresCluster> m_cluster;
    /// A guard against waiting for ever; on a busy machine all takes its time.
    static constexpr int longestMs = 300000;

    /// Three engineers and a foreign hand write while `breakIt` runs, in another thread, and until
    /// each has saved something after it.
    void work(const char* database, const std::string& url, const std::function<bool()>& breakIt) {
        auto kind = kindOn(*m_cluster, database, url);
        QVERIFY(kind->renew());
        TestStore store(std::move(kind));
        fillPlant(store);
        std::vector<std::unique_ptr<LiveClient>> clients;
        for (const char* name : {"a", "b", "c"})
            clients.push_back(std::make_unique<LiveClient>(store, name));

        std::atomic<bool> stop = false;
        std::atomic<int> state = 0; // 1: breaking, 2: done, 3: failed
        std::thread hand([&] {
            for (int i = 0; !stop; ++i) {
                kindOn(*m_cluster, database, url)
                    ->byHand("INSERT INTO \"Menu\" (\"KeyLink\", \"FolderKey\", \"caption\", "
                             "\"order_\") VALUES ('hand" +
                                 QByteArray::number(i) + "', 'armop', 'рукой', " +
                                 QByteArray::number(50000 + i) + ");",
                             nullptr);
                std::this_thread::sleep_for(std::chrono::milliseconds(300));
            }
        });
        std::thread breaker;
        QElapsedTimer clock;
        clock.start();
        int after = 0;
        std::vector<int> savedBefore(clients.size(), 0);
        for (int i = 0; clock.elapsed() < longestMs; ++i) {
            for (size_t c = 0; c < clients.size(); ++c)
                clients[c]->act(i);
            QTest::qWait(15);
            // The testers go over whole trees at every change: no more of those than they manage.
            (void)QTest::qWaitFor(
                [&] {
                    return std::all_of(clients.begin(), clients.end(),
                                       [](const auto& client) { return client->isIdle(); });
                },
                400);
            if (i == 10) {
                state = 1;
                breaker = std::thread([&] { state = breakIt() ? 2 : 3; });
            }
            if (state == 2 && after == 0) {
                after = i;
                for (size_t c = 0; c < clients.size(); ++c)
                    savedBefore[c] = clients[c]->saved;
            }
            bool all = after != 0;
            for (size_t c = 0; c < clients.size(); ++c)
                all = all && clients[c]->saved >= savedBefore[c] + 5;
            if (all || state == 3)
                break;
        }
        stop = true;
        hand.join();
        if (breaker.joinable())
            breaker.join();
        QCOMPARE(state.load(), 2);
        for (const auto& client : clients) {
            QString found;
            const bool same = QTest::qWaitFor(
                [&] {
                    found = client->difference();
                    return found.isEmpty();
                },
                longestMs);
            QVERIFY2(same, qPrintable(found));
            const QString lie = client->lies();
            QVERIFY2(lie.isEmpty(), qPrintable(lie));
            QCOMPARE(client->gaps, 0);
            QVERIFY(client->saved > 10);
            qInfo("%d saved, %d not saved, %d unknown, %d losses seen", client->saved,
                  client->notSaved, client->unknown, client->losses);
        }
    }

private slots:
    void initTestCase() {
        m_cluster = PostgresCluster::start();
        QVERIFY(m_cluster);
    }

    void everySessionIsEndedAgainAndAgain() {
        work("sessions", m_cluster->url("sessions"), [this] {
            bool done = true;
            for (int i = 0; i < 12; ++i) {
                std::this_thread::sleep_for(std::chrono::milliseconds(130 + 37 * i));
                done = done && m_cluster->terminateAll();
            }
            return done;
        });
    }

    void theServerCrashesTwice() {
        work("crashes", m_cluster->url("crashes"), [this] {
            bool done = m_cluster->restart("immediate");
            std::this_thread::sleep_for(std::chrono::milliseconds(1500));
            return m_cluster->restart("immediate") && done;
        });
    }

    void theServerFreezesForAWhile() {
        // A server that is merely busy answers sooner than what counts as silence here.
        work("freeze", m_cluster->url("freeze") + "&tcp_user_timeout=4000&connect_timeout=4",
             [this] {
                 const bool frozen = m_cluster->freeze();
                 std::this_thread::sleep_for(std::chrono::seconds(9));
                 return m_cluster->thaw() && frozen;
             });
    }

    void theStandbyTakesOver() { // last: the first server stays down
        QVERIFY(m_cluster->startStandby());
        work("standby", m_cluster->urlOfBoth("standby"), [this] { return m_cluster->failOver(); });
    }
};

QTEST_MAIN(TestMenuBreaks)
#include "tst_menu_breaks.moc"
