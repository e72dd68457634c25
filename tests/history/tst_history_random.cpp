// Four users act at random and take their actions back at random.
#include "HistoryTest.h"

#include "checks/Problems.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <QRandomGenerator>

#include <algorithm>
#include <map>
#include <set>

using namespace orvo::store;
using namespace orvo::history;
using namespace orvo::history::test;

namespace {

using Rows = std::map<std::string, std::vector<Value>>;

/// All values of the tables that the test changes.
struct State {
    std::map<std::string, Rows> tables;
    bool operator==(const State& other) const { return tables == other.tables; }
    const Rows& of(const std::string& table) const {
        static const Rows none;
        const auto found = tables.find(table);
        return found == tables.end() ? none : found->second;
    }
};

class StateReceiver : public Receiver {
public:
    explicit StateReceiver(State& state) : m_state(state) {}
    Status expect(uint64_t, uint64_t, uint64_t) override { return {}; }
    Status record(const TableDef& table, const std::vector<Value>& values,
                  const std::string&) override {
        m_state.tables[table.name][foldedKey(textOf(values.front()))] = values;
        return {};
    }
    Status content(const std::vector<Value>&, const std::string&) override { return {}; }
    Status bytes(std::string_view) override { return {}; }

private:
    State& m_state;
};

} // namespace

class TestHistoryRandom : public HistoryTest {
    Q_OBJECT
public:
    using HistoryTest::HistoryTest;

private slots:
    void ofEachOnlyHisOwnIsTakenBack_data() { seeds(); }
    void ofEachOnlyHisOwnIsTakenBack();
    void everythingTakenBackIsTheBeginning_data() { seeds(); }
    void everythingTakenBackIsTheBeginning();

private:
    static void seeds() {
        QTest::addColumn<int>("seed");
        const int runs = qEnvironmentVariable("ORVO_HISTORY_RUNS", "4").toInt();
        for (int seed = 1; seed <= runs; ++seed)
            QTest::newRow(qPrintable(QString("seed %1").arg(seed))) << seed;
    }
    struct Action {
        size_t who = 0;
        int64_t group = 0;
    };
    State state() const {
        State all;
        StateReceiver values(all);
        const Status status = m_anna->writeOut(values);
        if (!status.ok())
            qWarning("%s", status.text.c_str());
        return all;
    }
    int number(int below) { return int(m_random.bounded(below)); }
    std::string anyKey(const State& state, const char* table) {
        const auto rows = state.tables.find(table);
        if (rows == state.tables.end() || rows->second.empty())
            return {};
        return std::next(rows->second.begin(), number(int(rows->second.size())))->first;
    }
    static std::set<size_t> placeFields() {
        const TableDef& table = *findTable("Menu");
        return {size_t(table.find("parent")), size_t(table.find("FolderKey"))};
    }
    /// Whether the element stood in a branch that has gone back where it was cut, and stands there.
    static bool wentAlong(const State& acted, const State& now, const std::string& element) {
        const size_t parent = size_t(findTable("Menu")->find("parent"));
        const std::string place = foldedKey(textOf(now.of("Menu").at(element)[parent]));
        std::set<std::string> seen;
        std::string key = element;
        while (acted.of("Menu").count(key) != 0 && seen.insert(key).second) {
            key = foldedKey(textOf(acted.of("Menu").at(key)[parent]));
            if (acted.of("Menu").count(key) != 0 && now.of("Menu").count(key) == 0)
                return now.of("Menu").count(place) != 0;
        }
        return false;
    }
    void plant();
    void act(size_t who);
    std::set<QString> errors() const;
    void lookForNewErrors(const Inverse& done, int64_t group);
    /// Takes back what of these actions can be, and leaves the rest.
    void undoAll(std::vector<Action>& actions);
    /// Takes back what that one has done since `begin`, and looks at what became of the rest.
    void takeBackOf(size_t who, const State& before, int64_t begin);

    QRandomGenerator m_random;
    std::vector<std::unique_ptr<MaintainedStore>> m_users;
    std::vector<Action> m_actions;
    size_t m_takenBack = 0; ///< of all actions of a run
    int m_made = 0;
    std::set<QString> m_errors; ///< that `check` has found at any time before
};

/// What `check` calls errors, but for the top folders, which the test does not plant.
std::set<QString> TestHistoryRandom::errors() const {
    orvo::catalogue::Catalogue records;
    orvo::checks::Problems problems(records);
    const Status status = records.load(*m_anna);
    if (!status.ok())
        qWarning("%s", status.text.c_str());
    problems.lookAtAll();
    std::set<QString> found;
    for (const orvo::checks::Finding& finding : problems.all())
        if (severityOf(finding.problem) == orvo::checks::Severity::Error)
            found.insert(QString("%1 %2 %3")
                             .arg(finding.table->name, QString::fromStdString(finding.key),
                                  identifierOf(finding.problem)));
    return found;
}

/// No undo makes an error that the actions did not.
void TestHistoryRandom::lookForNewErrors(const Inverse& done, int64_t group) {
    const std::set<QString> before = m_errors, now = errors();
    m_errors.insert(now.begin(), now.end());
    for (const QString& error : now)
        if (before.count(error) == 0)
            QVERIFY2(false, qPrintable(QString("%1, by undoing %2 (%3)\n%4")
                                           .arg(error, QString::number(group), words(group),
                                                remarks(done).join('\n'))));
}

void TestHistoryRandom::plant() {
    QFETCH(int, seed);
    m_random.seed(quint32(seed));
    m_made = 0;
    m_actions.clear();
    m_users.clear();
    for (const char* name : {"u1", "u2", "u3", "u4"})
        m_users.push_back(login(name));
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("forms", {{"type_", 3}})
                .insert("files", {{"type_", 4}, {"caption", "Документы"}})
                .insert("rf", {{"type_", 2}, {"caption", "Функции"}})
                .send(*m_anna));
    ORVO_OK(Batch("MenuResource")
                .insert("r1", {{"caption", "Ф 1"}, {"type_", 2}, {"MenuResourceFolderKey", "rf"}})
                .insert("r2", {{"caption", "Ф 2"}, {"type_", 2}})
                .send(*m_anna));
    ORVO_OK(Batch("MenuFileExt").insert("x", {{"ext", ".ui"}}).send(*m_anna));
    ORVO_OK(m_anna->formPut("", {{"", "form0_", "at first", 1.5}}));
    ORVO_OK(Batch("MenuFolder")
                .insert("f", {{"caption", "Папка"}, {"isFolder", true}})
                .insert("d1", {{"caption", "Стол 1"}, {"ParentKey", "f"}})
                .insert("d2", {{"caption", "Стол 2"}})
                .send(*m_anna));
    Batch elements("Menu");
    for (int i = 0; i < 12; ++i)
        elements.insert(qPrintable(QString("e%1").arg(i)),
                        {{"caption", QString("Э %1").arg(i)},
                         {"FolderKey", i % 2 ? "d1" : "d2"},
                         {"parent", i < 4 ? QVariant() : QString("e%1").arg(i % 4)},
                         {"order_", i * 1000}});
    ORVO_OK(elements.send(*m_anna));
    m_errors = errors();
}

void TestHistoryRandom::act(size_t who) {
    const State now = state();
    MaintainedStore& store = *m_users[who];
    const std::string element = anyKey(now, "Menu"), other = anyKey(now, "Menu"),
                      desktop = anyKey(now, "MenuFolder");
    Status status;
    int64_t group = 0; // of two calls
    const int64_t writtenBefore = store.lastWritten().first;
    const QString text = QString("т%1").arg(number(1000));
    const auto withAllBelow = [&](const char* table, const std::string& top, size_t parent) {
        std::set<std::string> all = {top};
        for (size_t size = 0; size != all.size();) {
            size = all.size();
            for (const auto& [key, row] : now.of(table))
                if (all.count(foldedKey(textOf(row[parent]))) != 0)
                    all.insert(key);
        }
        return all;
    };
    switch (number(18)) {
    case 0:
    case 1: {
        Batch batch("Menu");
        for (int i = number(3); i >= 0 && !element.empty(); --i)
            batch.update(anyKey(now, "Menu").c_str(), {{"caption", text}, {"order_", number(5)}});
        status = batch.send(store);
        break;
    }
    case 2:
        if (!element.empty())
            status = Batch("Menu").update(element.c_str(), {{"params", text}}).send(store);
        break;
    case 3: {
        const QString top = QString("n%1").arg(++m_made);
        status = Batch("Menu")
                     .insert(qPrintable(top), {{"caption", text},
                                               {"parent", QString::fromStdString(element)},
                                               {"FolderKey", QString::fromStdString(desktop)}})
                     .insert(qPrintable(top + "x"), {{"parent", top}, {"caption", text}})
                     .send(store);
        break;
    }
    case 4: // may be refused: below itself
        if (!element.empty() && element != other)
            status = Batch("Menu")
                         .update(element.c_str(), {{"parent", QString::fromStdString(other)}})
                         .send(store);
        break;
    case 5: { // with all below it, as editors do
        if (element.empty())
            break;
        Batch batch("Menu");
        for (const std::string& key : withAllBelow("Menu", element, 1))
            batch.remove(key.c_str());
        status = batch.send(store);
        break;
    }
    case 7:
    case 8: {
        const std::string name = "form" + std::to_string(number(3));
        const std::string bytes = text.toStdString();
        std::vector<FileToPut> files = {{"", name + "_", bytes, number(2) ? 5.5 : 7.0}};
        if (number(2))
            files.push_back({"", name + ".png", bytes, {}});
        status = store.formPut("", files);
        break;
    }
    case 9:
        status = store.formDelete({"form" + std::to_string(number(3)) + "_"});
        break;
    case 10: { // a desktop with its elements
        if (desktop.empty())
            break;
        Batch elements("Menu");
        bool isEmpty = true;
        const auto folder = size_t(findTable("Menu")->find("FolderKey"));
        for (const auto& [key, row] : now.of("Menu"))
            if (foldedKey(textOf(row[folder])) == desktop) {
                elements.remove(key.c_str());
                isEmpty = false;
            }
        Batch folders("MenuFolder");
        for (const std::string& key : withAllBelow(
                 "MenuFolder", desktop, size_t(findTable("MenuFolder")->find("ParentKey"))))
            folders.remove(key.c_str());
        if (!isEmpty) {
            status = elements.send(store);
            store.joinGroup(group = store.lastWritten().first);
        }
        if (status.ok())
            status = folders.send(store);
        store.joinGroup(0);
        break;
    }
    case 11: // may be refused: below itself
        if (!desktop.empty())
            status = Batch("MenuFolder")
                         .update(desktop.c_str(), {{"ParentKey", number(2) ? "f" : ""}})
                         .send(store);
        break;
    case 12: { // a cut: what was there is written anew, with all below it
        if (element.empty())
            break;
        const TableDef& table = *findTable("Menu");
        const std::set<std::string> branch = withAllBelow("Menu", element, 1);
        std::map<std::string, QString> copies;
        for (const std::string& key : branch)
            copies[key] = QString("c%1").arg(++m_made);
        Batch pasted("Menu"), gone("Menu");
        for (const std::string& key : branch) {
            const std::vector<Value>& row = now.of("Menu").at(key);
            const auto value = [&](const char* field) {
                return textOf(row[size_t(table.find(field))]);
            };
            pasted.insert(
                qPrintable(copies[key]),
                {{"caption", QString::fromStdString(value("caption"))},
                 {"params", QString::fromStdString(value("params"))},
                 {"parent", key == element ? QString() : copies[foldedKey(value("parent"))]},
                 {"FolderKey", QString::fromStdString(desktop)}});
            gone.remove(key.c_str());
        }
        status = pasted.send(store);
        store.joinGroup(group = store.lastWritten().first);
        if (status.ok())
            status = gone.send(store);
        store.joinGroup(0);
        break;
    }
    case 13: {
        const std::string resource = anyKey(now, "MenuResource");
        if (!resource.empty())
            status = Batch("MenuResource")
                         .update(resource.c_str(), {{"caption", text}, {"ico", text}})
                         .send(store);
        break;
    }
    case 14: {
        const std::string path = number(2) ? "Документы" : "";
        const std::string name = "file" + std::to_string(number(3));
        if (number(3) != 0)
            status = store.filePut({{path, name, text.toStdString(), {}}});
        else
            status = store.fileDelete({{path, name}});
        break;
    }
    case 15:
        status = number(2)
                     ? Batch("MenuFileExt").update("x", {{"ext", text}}).send(store)
                     : Batch("MenuResourceFolder").update("rf", {{"caption", text}}).send(store);
        break;
    case 16: // an element that opens something, or is a folder again
        if (!element.empty())
            status = Batch("Menu")
                         .update(element.c_str(), {{"MenuResourceKey", number(2) ? "r1" : ""}})
                         .send(store);
        break;
    default:
        status = Batch("MenuFolder")
                     .insert(qPrintable(QString("g%1").arg(++m_made)),
                             {{"caption", text}, {"isFolder", number(2) == 0}})
                     .update("d1", {{"caption", text}})
                     .send(store);
    }
    const std::set<QString> found = errors();
    m_errors.insert(found.begin(), found.end());
    if (status.ok() && store.lastWritten().first > writtenBefore)
        m_actions.push_back({who, group > 0 ? group : store.lastWritten().first});
}

void TestHistoryRandom::undoAll(std::vector<Action>& actions) {
    for (bool progress = true; progress && !actions.empty();) {
        progress = false;
        std::shuffle(actions.begin(), actions.end(), m_random);
        for (auto action = actions.begin(); action != actions.end();) {
            Inverse done;
            const Status status = undo(*m_users[action->who], {action->group}, {}, &done);
            if (done.written)
                lookForNewErrors(done, action->group);
            // A circle of parents ends when others are taken back.
            if (!status.ok() && status.code != Refused) {
                qWarning("%s", status.text.c_str());
                return;
            }
            if (done.written || (done.count == 0 && !done.remarks.empty() &&
                                 done.remarks.front().why == Remark::AlreadyDone)) {
                progress = true;
                action = actions.erase(action);
            } else {
                ++action;
            }
        }
    }
}

/// A field that nobody else has changed is as it was, and what he has not changed is as it is.
void TestHistoryRandom::ofEachOnlyHisOwnIsTakenBack() {
    plant();
    const State before = state();
    const int64_t begin = [&] {
        int64_t id = 0;
        return m_anna->logPosition(&id).ok() ? id : -1;
    }();
    for (int i = 0; i < 40; ++i)
        act(size_t(number(4)));
    std::vector<size_t> logins = {0, 1, 2, 3};
    std::shuffle(logins.begin(), logins.end(), m_random);
    m_takenBack = 0;
    for (const size_t who : logins)
        if (!QTest::currentTestFailed())
            takeBackOf(who, before, begin);
    // All that one has done may have become part of what others did.
    QVERIFY(m_takenBack >= m_actions.size() / 4);
}

void TestHistoryRandom::takeBackOf(size_t who, const State& before, int64_t begin) {
    std::vector<Change> log;
    ORVO_OK(m_anna->readLog(begin, 100000, &log));
    const std::string name = m_users[who]->login();
    using Field = std::tuple<std::string, std::string, int>;
    std::set<Field> his, others;
    std::set<std::pair<std::string, std::string>> hisRecords, othersRecords;
    for (const Change& change : log) {
        const bool own = change.login == name;
        const std::pair<std::string, std::string> record{change.table, foldedKey(change.key)};
        (own ? hisRecords : othersRecords).insert(record);
        for (const std::string* json : {&change.after, &change.before})
            for (const auto& [field, value] : valuesFromJson(*tableOf(change.table), *json))
                (own ? his : others).insert({record.first, record.second, field});
    }
    const State acted = state();
    std::vector<Action> actions;
    for (const Action& action : m_actions)
        if (action.who == who)
            actions.push_back(action);
    const size_t made = actions.size();
    undoAll(actions);
    m_takenBack += made - actions.size();
    for (const Action& action : actions) { // left only for a reason
        Inverse plan;
        const Status status = undo(*m_users[who], {action.group}, {}, &plan);
        QVERIFY2(status.code == Refused || plan.asks() || plan.count == 0,
                 qPrintable(remarks(plan).join('\n')));
    }
    // What waits for a choice is left as a whole.
    for (const Change& change : log)
        for (const Action& action : actions)
            if (change.group == action.group)
                for (const std::string* json : {&change.after, &change.before})
                    for (const auto& [field, value] :
                         valuesFromJson(*tableOf(change.table), *json)) {
                        others.insert({change.table, foldedKey(change.key), field});
                        othersRecords.insert({change.table, foldedKey(change.key)});
                    }
    const State now = state();
    for (const auto& [table, rows] : now.tables) // what he alone has made is gone
        for (const auto& [key, row] : rows)
            QVERIFY2(before.of(table).count(key) != 0 || hisRecords.count({table, key}) == 0 ||
                         othersRecords.count({table, key}) != 0,
                     key.c_str());
    for (const auto& [table, rows] : acted.tables)
        for (const auto& [key, row] : rows)
            if (hisRecords.count({table, key}) == 0) {
                QVERIFY(now.of(table).count(key) == 1);
                std::vector<Value> expected = row;
                if (table == "Menu" && wentAlong(acted, now, key))
                    for (const size_t link : placeFields())
                        expected[link] = now.of(table).at(key)[link];
                QVERIFY(now.of(table).at(key) == expected);
            }
    for (const auto& [table, rows] : before.tables)
        for (const auto& [key, row] : rows) {
            if (othersRecords.count({table, key}) == 0 && hisRecords.count({table, key}) != 0) {
                const auto found = now.of(table).find(key);
                QVERIFY2(found != now.of(table).end(), key.c_str());
                std::vector<Value> expected = row;
                if (table == "Menu" && wentAlong(before, now, key)) // what it was in is elsewhere
                    for (const size_t link : placeFields())
                        expected[link] = found->second[link];
                QVERIFY2(found->second == expected, key.c_str());
            }
            if (now.of(table).count(key) == 0 || acted.of(table).count(key) == 0)
                continue;
            for (size_t i = 0; i < row.size(); ++i) {
                const Field field{table, key, int(i)};
                const Value& value = now.of(table).at(key)[i];
                if (his.count(field) != 0 && others.count(field) == 0)
                    QVERIFY2(value == row[i],
                             qPrintable(QString::fromStdString(key) + " " + QString::number(i)));
                const std::set<size_t> links = placeFields();
                const bool isMoved =
                    table == "Menu" && links.count(i) != 0 && wentAlong(acted, now, key);
                if (his.count(field) == 0 && !isMoved)
                    QVERIFY(value == acted.of(table).at(key)[i]);
            }
        }
}

void TestHistoryRandom::everythingTakenBackIsTheBeginning() {
    plant();
    const QStringList before = snapshot();
    for (int i = 0; i < 40; ++i)
        act(size_t(number(4)));
    const QStringList after = snapshot();
    QVERIFY(after != before);
    undoAll(m_actions);
    // What is left has nothing to write, or waits for a place that another of them took away: that
    // comes back together with it.
    std::vector<int64_t> left;
    for (const Action& action : m_actions)
        left.push_back(action.group);
    Inverse done;
    ORVO_OK(undo(*m_anna, left, {}, &done));
    for (const Remark& remark : done.remarks)
        QVERIFY2(remark.why >= Remark::NothingDone && remark.why <= Remark::SameBefore,
                 qPrintable(remarks(done).join('\n')));
    QCOMPARE(snapshot().join('\n'), before.join('\n'));
}

int main(int argc, char** argv) {
    return orvo::store::test::runOnAllKinds<TestHistoryRandom>(argc, argv);
}

#include "tst_history_random.moc"
