// RandomRun.h: thousands of changes in random order, by two clients and a foreign hand on one
// store. Notifications come late, and to each client at its own pace. At every quiet point each
// editor at rest shows what an editor opened at that moment would show, but for what is required to
// differ (TreeDifferences.h).
//
//     RandomRun<RandomClient<MenuPart>> run;
//     run.open(store);
//     const QString found = run.work(foreignAct, ownAct);
//     QVERIFY2(found.isEmpty(), qPrintable(found));
//     QVERIFY(run.comparedEnough());
//
// The seed is printed; ORVO_SEED sets it, ORVO_STEPS the number of steps. A seed repeats a run
// exactly: what is chosen, the keys of new records, the order of hashes. The digest of the change
// log that is printed at the end tells.
#ifndef ORVO_TESTS_MENU_RANDOMRUN_H
#define ORVO_TESTS_MENU_RANDOMRUN_H

#include "platform/client/Blocks.h"
#include "platform/client/Session.h"
#include "tests/menu/ModuleFixture.h"
#include "tests/menu/SeededKeys.h"
#include "tests/menu/TreeDifferences.h"

#include <QCryptographicHash>
#include <QHash>

#include <algorithm>
#include <deque>
#include <functional>
#include <iterator>
#include <random>
#include <tuple>

namespace orvo::test {

/// Chances drawn from a seed, and what was last done with them.
class Chances {
public:
    Chances() : Chances(givenSeed()) {
        if (qEnvironmentVariableIsSet("ORVO_STEPS"))
            steps = qEnvironmentVariableIntValue("ORVO_STEPS");
        qInfo("ORVO_SEED=%d ORVO_STEPS=%d", seed, steps);
    }
    explicit Chances(int from)
        : seed(from)
        , m_random(static_cast<unsigned>(from))
        , m_keys(static_cast<unsigned>(from)) {
        qSetGlobalQHashSeed(0);
    }

    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    bool chance(int percent) { return below(100) < percent; }
    QString oneOf(const QStringList& texts) {
        return texts.isEmpty() ? QString() : texts[below(texts.size())];
    }
    /// A caption; with a number behind it, below `numbers`, in that percentage of all.
    QString word(int percent, int numbers) {
        static const QStringList words{"Насос", "арматура", "Ёлка", "1 насос",
                                       "Z",     "Печь",     "котёл"};
        return oneOf(words) + (chance(percent) ? QString::number(below(numbers)) : QString());
    }
    /// A random row of a model; invalid in an empty one.
    QModelIndex anyRow(const QAbstractItemModel& model) {
        QModelIndexList all;
        const std::function<void(const QModelIndex&)> walk = [&](const QModelIndex& parent) {
            for (int i = 0; i < model.rowCount(parent); ++i) {
                all << model.index(i, 0, parent);
                walk(all.last());
            }
        };
        walk({});
        return all.isEmpty() ? QModelIndex() : all[below(all.size())];
    }
    /// A key that no record has yet.
    QString newKey(char letter) { return QLatin1Char(letter) + QString::number(++m_made); }

    /// Whose acts are told of next.
    void setActor(const QString& actor) { m_actor = actor; }
    void say(const QString& act) {
        m_done << m_actor + ": " + act;
        if (m_done.size() > 60)
            m_done.removeFirst();
    }
    QString lastAct() const { return m_done.isEmpty() ? QString() : m_done.last(); }
    /// Tells what was done last, an act in a line: all at once would be too long for one message.
    void tellLastActs() const {
        for (const QString& act : m_done)
            qInfo("%s", qPrintable(act));
    }

    const int seed;
    int steps = 1200;

private:
    static int givenSeed() {
        bool given = false;
        const int named = qEnvironmentVariableIntValue("ORVO_SEED", &given);
        return given ? named : static_cast<int>(std::random_device{}());
    }

    std::mt19937 m_random;
    SeededKeys m_keys;
    QString m_actor;
    QStringList m_done;
    int m_made = 0;
};

/// The lines of a module's table as text, without the names of the fields, each split up.
template <class Module>
QVector<QStringList> recordLines(const Module& module, const char* table) {
    QVector<QStringList> records;
    const QStringList lines = module.tableText(table).split('\n', Qt::SkipEmptyParts);
    for (const QString& line : lines.mid(1))
        records << line.split('\t');
    return records;
}

/// A field of such a line; empty for NULL.
inline QString fieldText(const QString& field) {
    return field == "\\N" ? QStringLiteral("") : field;
}

/// One engineer's client: a session, and an editor of each part. It takes its notifications in
/// blocks, each put to all of its editors before the next, as the client does.
///
/// A part has: open(host), close(), module(), seen(change) just before the editor gets a
/// notification, watch() after all that may have changed its trees, fault with what was then wrong
/// at any time, isAtRest(), cancel(), check(store) for the first difference that is not required,
/// and the figures comparedRows() and comparedFamilies().
template <class... Parts>
class RandomClient {
public:
    explicit RandomClient(TestStore& store) : m_store(store), m_reader(store.connect("reader")) {
        open();
    }
    ~RandomClient() { close(); }

    /// Opens all editors anew.
    void open() {
        close();
        m_host = std::make_unique<TestHost>(m_store);
        m_cursor = client::sessionCursor(*m_host->m_session).id;
        m_waiting.clear();
        (part<Parts>().open(*m_host), ...);
        (part<Parts>().watch(), ...);
    }

    template <class Part>
    Part& part() {
        return std::get<Part>(m_parts);
    }
    /// Calls `act` for each part, which may have any type.
    template <class Act>
    void each(Act&& act) {
        (act(part<Parts>()), ...);
    }

    /// Delivers the next notifications, at most `most`; false if none waits.
    bool step(int most = 1) {
        if (m_waiting.empty())
            readLog();
        if (m_waiting.empty())
            return false;
        const auto count = std::min<std::ptrdiff_t>(most, std::ssize(m_waiting));
        const auto end = m_waiting.begin() + count;
        const std::vector<store::Change> block(std::make_move_iterator(m_waiting.begin()),
                                               std::make_move_iterator(end));
        m_waiting.erase(m_waiting.begin(), end);
        each([&](auto& part) {
            for (const store::Change& change : block) {
                part.seen(change);
                part.module().messagePut(m_maker.make(change));
            }
            part.module().MessageOn();
            part.watch();
        });
        return true;
    }

    /// The first difference of an editor at rest to one opened now; an open edit shows what is not
    /// stored.
    QString check() {
        QString found;
        each([&](auto& part) {
            if (found.isEmpty() && part.isAtRest())
                found = part.check(m_store);
        });
        return found;
    }
    /// What must not be at any time, and is now; empty if there is no such thing.
    QString fault() {
        QString found;
        each([&](auto& part) {
            if (found.isEmpty())
                found = part.fault;
        });
        return found;
    }
    TestHost& host() { return *m_host; }
    void watch() {
        each([](auto& part) { part.watch(); });
    }

private:
    void close() { (part<Parts>().close(), ...); }
    void readLog() {
        std::vector<store::Change> changes;
        if (!m_reader->readLog(m_cursor, 1000, &changes).ok())
            qFatal("no change log");
        for (store::Change& change : changes) {
            m_cursor = change.id;
            m_waiting.push_back(std::move(change));
        }
    }

    TestStore& m_store;
    std::unique_ptr<store::Store> m_reader;
    client::NotificationMaker m_maker;
    std::deque<store::Change> m_waiting;
    int64_t m_cursor = 0;
    std::unique_ptr<TestHost> m_host; ///< outlives the editors
    std::tuple<Parts...> m_parts;
};

/// All changes of a store but for their times, a line each.
inline QStringList changeLines(const TestStore& store) {
    std::vector<store::Change> changes;
    if (!store.connect("reader")->readLog(0, 1 << 30, &changes).ok())
        qFatal("no change log");
    QStringList lines;
    for (const store::Change& change : changes)
        lines << QString("%1 %2 %3 %4 %5 %6 %7")
                     .arg(change.id)
                     .arg(change.code)
                     .arg(QString::fromStdString(change.table), QString::fromStdString(change.key),
                          QString::fromStdString(change.login),
                          QString::fromStdString(change.after),
                          QString::fromStdString(change.before));
    return lines;
}

/// Says which history the store has seen: the same after runs of the same seed.
inline void tellHistory(const TestStore& store) {
    const QStringList lines = changeLines(store);
    const QByteArray digest =
        QCryptographicHash::hash(lines.join('\n').toUtf8(), QCryptographicHash::Sha256);
    qInfo("%d changes, digest %s", int(lines.size()), digest.toHex().left(16).constData());
}

template <class Client>
class RandomRun : public Chances {
public:
    using Chances::Chances;

    int mostAtOnce = 1;    ///< notifications in one block
    int cancelPercent = 0; ///< of the edits that are open at a quiet point
    int quietPercent = 8;  ///< of the steps that end in a quiet point
    int reopenPercent = 15;
    std::function<void(Client&)> settle; ///< ends what stands open, before a quiet point

    void open(TestStore& store) {
        for (auto& client : m_clients)
            client = std::make_unique<Client>(store);
    }
    void eachClient(const std::function<void(Client&)>& act) {
        for (auto& client : m_clients)
            act(*client);
    }
    Client& anyClient() { return *m_clients[below(2)]; }

    /// Does all steps, or as many as go well: the first difference, or an empty text. Tells what
    /// led to it.
    QString work(const std::function<void()>& foreignAct,
                 const std::function<void(Client&)>& ownAct) {
        for (int step = 0; step < steps; ++step) {
            if (chance(35)) {
                setActor("hand");
                foreignAct();
            } else {
                const int number = below(2);
                setActor(QString::number(number));
                ownAct(*m_clients[number]);
                m_clients[number]->watch();
            }
            for (int i = below(4); i > 0; --i) {
                const int number = below(2);
                const int most = 1 + below(mostAtOnce);
                if (m_clients[number]->step(most)) {
                    setActor(QString::number(number));
                    say(QString("hears of at most %1").arg(most));
                }
            }
            const bool quiet = chance(quietPercent);
            QString found = fault();
            if (found.isEmpty() && quiet)
                found = quietPoint();
            if (!found.isEmpty()) {
                tellLastActs();
                return QString("ORVO_SEED=%1, step %2: %3").arg(seed).arg(step).arg(found);
            }
            // What a tree has lost comes back when the editor is opened again.
            if (quiet && chance(reopenPercent))
                anyClient().open();
        }
        return {};
    }

    /// Whether each kind of editor was compared often enough for the run to mean something.
    bool comparedEnough() {
        QVector<int> rows;
        QVector<int> families;
        for (auto& client : m_clients) {
            int at = 0;
            client->each([&](auto& part) {
                rows.resize(std::max(int(rows.size()), at + 1));
                families.resize(rows.size());
                rows[at] += part.comparedRows();
                families[at++] += part.comparedFamilies();
            });
        }
        bool enough = m_quietPoints > 0;
        for (int i = 0; i < rows.size(); ++i) {
            qInfo("%d quiet points, %d rows and the order of %d families compared", m_quietPoints,
                  rows[i], families[i]);
            enough = enough && rows[i] > steps / 2 && families[i] > steps / 20;
        }
        return enough;
    }

protected:
    /// Delivers everything and compares: the first difference, or an empty text.
    QString quietPoint() {
        ++m_quietPoints;
        for (int i = 0; i < 2; ++i) {
            setActor(QString::number(i));
            if (settle)
                settle(*m_clients[i]);
            m_clients[i]->each([&](auto& part) {
                if (part.isAtRest() || !chance(cancelPercent))
                    return;
                say("cancel");
                part.cancel();
                part.watch();
            });
        }
        const QString cancelled = fault();
        if (!cancelled.isEmpty())
            return cancelled;
        for (bool any = true; any;) {
            any = false;
            for (auto& client : m_clients)
                any = client->step() || any;
        }
        for (auto& client : m_clients) {
            const QString found = client->check();
            if (!found.isEmpty())
                return found;
        }
        return {};
    }

private:
    QString fault() {
        QString found = m_clients[0]->fault();
        return found.isEmpty() ? m_clients[1]->fault() : found;
    }

    std::unique_ptr<Client> m_clients[2];
    int m_quietPoints = 0;
};

} // namespace orvo::test

#endif
