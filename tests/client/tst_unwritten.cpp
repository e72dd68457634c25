// Writes that did not reach the store: kept in words, in order, over the end of the process; and
// saves of several editors that change what was typed and nothing else.
#include "platform/client/Blocks.h"
#include "platform/client/ModuleRegistry.h"
#include "platform/client/UnwrittenFiles.h"
#include "platform/client/UnwrittenList.h"
#include "platform/mdx/MdxBuild.h"
#include "tests/client/HostFixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QtTest>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace orvo;
using namespace orvo::test;
using client::UnwrittenEntry;
using client::UnwrittenList;

namespace {

/// A host with the list, and with modules that follow the log when told to.
struct Desk {
    Host host;
    UnwrittenList list{host.store()};
    client::ModuleRegistry registry;
    client::NotificationMaker maker;
    std::unique_ptr<store::Store> other = host.connectAgain();

    Desk() { client::setUnwritten(*host.session, &list); }
    ~Desk() { client::setUnwritten(*host.session, nullptr); }

    Module& open(const char* name = "Menu") {
        auto* module = new Module(&host.app); // the registry's
        registry.add(module, name);
        registry.start(module);
        return *module;
    }
    void deliver(Module& module) {
        std::vector<store::Change> changes;
        QVERIFY(host.store().readLog(module.messagesSeen(), 10000, &changes).ok());
        for (const store::Change& change : changes)
            module.messagePut(maker.make(change));
        module.MessageOn();
    }
    static int write(const Module& module, const char* table, uint32_t flag, const Fields& fields) {
        CMDArray array;
        store::makeStructure(*store::findTable(table), array.array);
        addRecord(array, flag, fields);
        return module.m_app->m_session->SqlUpdate(table, array.array, true, nullptr);
    }
    void elsewhere(const char* table, uint32_t flag, const Fields& fields) const {
        CMDArray array;
        store::makeStructure(*store::findTable(table), array.array);
        addRecord(array, flag, fields);
        const store::Status status = other->update(table, array.array);
        QVERIFY2(status.ok(), status.text.c_str());
    }
    QString value(const char* table, const char* key, const char* field) {
        CMDArray rows;
        const store::Status read = host.store().fetchLinked(table, "KeyLink", key, rows.array);
        if (!read.ok())
            return QString::fromStdString(read.text);
        return mdx::postedCount(rows.array) == 0
                   ? QStringLiteral("no record")
                   : textOf(rows.array, mdx::postedRecord(rows.array, 0), field);
    }
    const UnwrittenEntry& only() const { return list.entries().front(); }
};

} // namespace

class TestUnwritten : public QObject {
    Q_OBJECT
private slots:
    void refusedWriteStaysInWordsUntilItIsRepeated() {
        Desk desk;
        Module& module = desk.open();
        desk.elsewhere("MenuFolder", 1, {{"KeyLink", "hall"}, {"caption", "Цех"}});
        desk.elsewhere("MenuFolder", 1, {{"KeyLink", "k"}, {"caption", "Чужой"}});
        QVERIFY(!Desk::write(module, "MenuFolder", 1,
                             {{"KeyLink", "k"}, {"caption", "КС-3"}, {"ParentKey", "hall"}}));
        QCOMPARE(desk.list.entries().size(), size_t(1));
        QCOMPARE(desk.only().state, UnwrittenEntry::Refused);
        QCOMPARE(desk.only().words.what, QString("Создан рабочий стол «КС-3»"));
        QCOMPARE(desk.only().words.place, QString("Цех"));
        QCOMPARE(desk.only().module, QString("Menu"));
        QVERIFY(!desk.only().why.isEmpty());
        QVERIFY2(desk.host.failures.join('\n').contains("КС-3"),
                 qPrintable(desk.host.failures.join('\n')));
        QVERIFY(!desk.list.repeat(desk.only().id)); // still taken
        desk.elsewhere("MenuFolder", 4, {{"KeyLink", "k"}});
        QVERIFY(desk.list.repeat(desk.only().id));
        QVERIFY(desk.list.isEmpty());
        QCOMPARE(desk.value("MenuFolder", "k", "caption"), QString("КС-3"));
    }

    void renamingTellsTheOldName() {
        Desk desk;
        Module& module = desk.open();
        desk.elsewhere("MenuFolder", 1, {{"KeyLink", "k"}, {"caption", "КС-2"}});
        QVERIFY(desk.host.byHand(
            desk.host.kind->name() == "sqlite"
                ? "CREATE TRIGGER stop BEFORE UPDATE ON \"MenuFolder\" BEGIN SELECT "
                  "RAISE(ABORT, 'нельзя'); END"
                : "CREATE FUNCTION stop() RETURNS trigger LANGUAGE plpgsql AS $$BEGIN RAISE "
                  "EXCEPTION 'нельзя'; END$$; CREATE TRIGGER stop BEFORE UPDATE ON "
                  "\"MenuFolder\" FOR EACH ROW EXECUTE FUNCTION stop()"));
        QVERIFY(!Desk::write(module, "MenuFolder", 2, {{"KeyLink", "k"}, {"caption", "КС-3"}}));
        QVERIFY(desk.host.byHand(desk.host.kind->name() == "sqlite"
                                     ? "DROP TRIGGER stop"
                                     : "DROP FUNCTION stop() CASCADE"));
        QCOMPARE(desk.only().words.what, QString("Переименован рабочий стол «КС-3»: было «КС-2»"));
        QVERIFY(desk.only().why.contains("нельзя"));
        desk.list.giveUp(desk.only().id);
        QVERIFY(desk.list.isEmpty());
        QCOMPARE(desk.value("MenuFolder", "k", "caption"), QString("КС-2"));
    }

    void whatHangsOnARefusedInsertWaitsAndFollowsInOrder() {
        Desk desk;
        Module& module = desk.open();
        desk.elsewhere("MenuFolder", 1, {{"KeyLink", "dir"}, {"caption", "Чужой"}});
        Desk::write(module, "MenuFolder", 1, {{"KeyLink", "dir"}, {"caption", "Моя"}});
        QVERIFY(!Desk::write(module, "MenuFolder", 1,
                             {{"KeyLink", "in"}, {"ParentKey", "DIR"}, {"caption", "Стол"}}));
        QVERIFY(!Desk::write(module, "MenuFolder", 2, {{"KeyLink", "in"}, {"caption", "Стол 2"}}));
        QCOMPARE(desk.list.entries().size(), size_t(3));
        QCOMPARE(desk.list.entries()[1].state, UnwrittenEntry::Waiting);
        QCOMPARE(desk.list.entries()[2].state, UnwrittenEntry::Waiting);
        QVERIFY(!desk.list.repeat(desk.list.entries()[1].id)); // not before its folder
        desk.elsewhere("MenuFolder", 4, {{"KeyLink", "dir"}});
        QVERIFY(desk.list.repeat(desk.only().id));
        QVERIFY2(desk.list.isEmpty(), qPrintable(desk.list.summary()));
        QCOMPARE(desk.value("MenuFolder", "dir", "caption"), QString("Моя"));
        QCOMPARE(desk.value("MenuFolder", "in", "caption"), QString("Стол 2"));
    }

    void secondSaveOfARefusedInsertWritesBoth() {
        Desk desk;
        Module& module = desk.open();
        desk.elsewhere("Menu", 1, {{"KeyLink", "k"}, {"caption", "Чужой"}});
        Desk::write(module, "Menu", 1, {{"KeyLink", "k"}, {"caption", "Раз"}});
        desk.elsewhere("Menu", 4, {{"KeyLink", "k"}}); // what refused it is gone
        QVERIFY(Desk::write(module, "Menu", 2, {{"KeyLink", "k"}, {"caption", "Два"}}));
        QVERIFY(desk.list.isEmpty());
        QCOMPARE(desk.value("Menu", "k", "caption"), QString("Два"));
    }

    void deletionOfWhatWasNeverWrittenTakesItFromTheList() {
        Desk desk;
        Module& module = desk.open();
        desk.elsewhere("Menu", 1, {{"KeyLink", "k"}, {"caption", "Чужой"}});
        Desk::write(module, "Menu", 1, {{"KeyLink", "k"}, {"caption", "Мой"}});
        QVERIFY(Desk::write(module, "Menu", 4, {{"KeyLink", "k"}}));
        QVERIFY(desk.list.isEmpty());
        QCOMPARE(desk.value("Menu", "k", "caption"), QString("Чужой"));
    }

    void givingUpTakesWhatWaitsAlong() {
        Desk desk;
        Module& module = desk.open();
        desk.elsewhere("Menu", 1, {{"KeyLink", "k"}});
        Desk::write(module, "Menu", 1, {{"KeyLink", "k"}, {"caption", "Папка"}});
        Desk::write(module, "Menu", 1, {{"KeyLink", "in"}, {"parent", "k"}});
        Desk::write(module, "Menu", 1, {{"KeyLink", "deeper"}, {"parent", "in"}});
        QCOMPARE(desk.list.entries().size(), size_t(3));
        desk.list.giveUp(desk.only().id);
        QVERIFY(desk.list.isEmpty());
    }

    void moduleIsToldOfWhatWillNotBeWritten_data() {
        QTest::addColumn<QString>("act");
        QTest::addColumn<QStringList>("told");
        QTest::newRow("update given up") << "update" << QStringList{"Menu 602 k"};
        QTest::newRow("insert given up") << "insert" << QStringList{"Menu 601 n", "Menu 603 n"};
        QTest::newRow("insert deleted") << "delete" << QStringList{"Menu 601 n", "Menu 603 n"};
        QTest::newRow("key of another") << "taken" << QStringList{"Menu 602 k"};
    }
    void moduleIsToldOfWhatWillNotBeWritten() {
        QFETCH(QString, act);
        Desk desk;
        desk.elsewhere("Menu", 1, {{"KeyLink", "k"}, {"caption", "Был"}});
        Module& module = desk.open();
        if (act == "taken") {
            Desk::write(module, "Menu", 1, {{"KeyLink", "k"}, {"caption", "Мой"}});
        } else if (act == "update") {
            desk.elsewhere("Menu", 2, {{"KeyLink", "k"}, {"caption", "Чужой"}});
            Desk::write(module, "Menu", 2, {{"KeyLink", "k"}, {"caption", "Мой"}});
        } else {
            desk.elsewhere("MenuFolder", 1, {{"KeyLink", "d"}});
            desk.deliver(module);
            desk.elsewhere("MenuFolder", 4, {{"KeyLink", "d"}});
            Desk::write(module, "Menu", 1,
                        {{"KeyLink", "n"}, {"FolderKey", "d"}, {"caption", "Мой"}});
        }
        QCOMPARE(desk.list.entries().size(), size_t(1));
        QStringList told;
        std::string values;
        QObject::connect(&desk.list, &UnwrittenList::dropped,
                         [&](const QString& name, const std::vector<store::Change>& changes) {
                             for (const store::Change& change : changes) {
                                 told << QString("%1 %2 %3")
                                             .arg(name)
                                             .arg(change.code)
                                             .arg(QString::fromStdString(change.key));
                                 if (change.code == 601)
                                     values = change.after;
                             }
                         });
        if (act == "delete")
            QVERIFY(Desk::write(module, "Menu", 4, {{"KeyLink", "n"}}));
        else
            desk.list.giveUp(QString(desk.only().id));
        QTEST(told, "told");
        if (told.size() == 2)
            QVERIFY2(values.find("\"FolderKey\":\"d\"") != std::string::npos, values.c_str());
    }

    void updateOfADeletedRecordIsToldAndCanBeMadeAgain() {
        Desk desk;
        desk.elsewhere("Menu", 1, {{"KeyLink", "k"}, {"caption", "Насос"}, {"ico", "pump.png"}});
        Module& module = desk.open();
        desk.elsewhere("Menu", 4, {{"KeyLink", "k"}});
        QVERIFY(Desk::write(module, "Menu", 2, {{"KeyLink", "k"}, {"caption", "Насос 2"}}));
        QCOMPARE(desk.list.entries().size(), size_t(1));
        QCOMPARE(desk.only().state, UnwrittenEntry::Gone);
        QVERIFY(desk.only().why.contains(QString::fromStdString(desk.other->login())));
        QVERIFY(desk.host.failures.join(' ').contains("удалена"));
        QVERIFY(Desk::write(module, "Menu", 2, {{"KeyLink", "k"}, {"params", "x"}}));
        QCOMPARE(desk.list.entries().size(), size_t(1)); // one entry for one record
        QVERIFY(desk.list.repeat(desk.only().id));
        QCOMPARE(desk.value("Menu", "k", "caption"), QString("Насос 2"));
        QCOMPARE(desk.value("Menu", "k", "ico"), QString("pump.png"));
        QCOMPARE(desk.value("Menu", "k", "params"), QString("x"));
    }

    void elementOfAResourceThatAnotherDeletedIsRefusedByItsName() {
        Desk desk;
        desk.elsewhere("MenuResource", 1,
                       {{"KeyLink", "mod"}, {"caption", "Тренды"}, {"name_", "Trends"}});
        Module& module = desk.open();
        desk.elsewhere("MenuResource", 4, {{"KeyLink", "mod"}});
        QVERIFY(!Desk::write(
            module, "Menu", 1,
            {{"KeyLink", "new"}, {"caption", "Тренды АВО"}, {"MenuResourceKey", "mod"}}));
        QVERIFY2(desk.only().why.contains("\"Тренды\" тем временем удалён"),
                 qPrintable(desk.only().why));
        QVERIFY(desk.only().words.what.contains("Тренды АВО"));
        QCOMPARE(desk.value("Menu", "new", "caption"), QString("no record"));
    }

    void iconThatAnotherDeletedIsRefusedByItsName() {
        Desk desk;
        desk.elsewhere("MenuResourceFolder", 1,
                       {{"KeyLink", "icons"}, {"caption", "icons"}, {"type_", "4"}});
        desk.elsewhere("MenuResource", 1,
                       {{"KeyLink", "file"},
                        {"name_", "pump.png"},
                        {"type_", "4"},
                        {"MenuResourceFolderKey", "icons"}});
        desk.elsewhere("Menu", 1, {{"KeyLink", "k"}, {"caption", "Насос"}});
        Module& module = desk.open();
        desk.elsewhere("MenuResource", 4, {{"KeyLink", "file"}});
        QVERIFY(!Desk::write(module, "Menu", 2, {{"KeyLink", "k"}, {"ico", "pump.png"}}));
        QVERIFY2(desk.only().why.contains("\"pump.png\" больше нет"), qPrintable(desk.only().why));
        QVERIFY(desk.only().words.what.contains("Насос"));
        QCOMPARE(desk.value("Menu", "k", "ico"), QString());
    }

    void updateOfADeletedRecordNamesItAsItWas() {
        Desk desk;
        desk.elsewhere("Menu", 1, {{"KeyLink", "k"}, {"caption", "Насос"}});
        Module& module = desk.open();
        desk.elsewhere("Menu", 4, {{"KeyLink", "k"}});
        QVERIFY(Desk::write(module, "Menu", 2, {{"KeyLink", "k"}, {"params", "x"}}));
        QVERIFY2(desk.only().words.what.contains("«Насос»"), qPrintable(desk.only().words.what));
        QVERIFY(desk.host.failures.join(' ').contains("«Насос»"));
    }

    void childOfADeletedFolderCanBeMadeAgainWithTheFolder() {
        Desk desk;
        desk.elsewhere("MenuFolder", 1, {{"KeyLink", "top"}, {"caption", "Верх"}});
        desk.elsewhere("MenuFolder", 1,
                       {{"KeyLink", "dir"}, {"ParentKey", "top"}, {"caption", "Цех"}});
        Module& module = desk.open();
        desk.elsewhere("MenuFolder", 4, {{"KeyLink", "dir"}});
        desk.elsewhere("MenuFolder", 4, {{"KeyLink", "top"}});
        QVERIFY(!Desk::write(module, "MenuFolder", 1,
                             {{"KeyLink", "new"}, {"ParentKey", "dir"}, {"caption", "Стол"}}));
        QVERIFY(desk.only().why.contains("Цех"));
        QVERIFY(desk.list.repeat(desk.only().id));
        QCOMPARE(desk.value("MenuFolder", "top", "caption"), QString("Верх"));
        QCOMPARE(desk.value("MenuFolder", "dir", "ParentKey"), QString("top"));
        QCOMPARE(desk.value("MenuFolder", "new", "caption"), QString("Стол"));
    }

    void sameFieldOfBothStaysWithBothSidesToChoose_data() {
        QTest::addColumn<QString>("choice");
        QTest::addColumn<QString>("end");
        QTest::newRow("mine") << "mine"
                              << "Мой";
        QTest::newRow("theirs") << "theirs"
                                << "Чужой";
        QTest::newRow("edited") << "edited"
                                << "Третий";
    }
    void sameFieldOfBothStaysWithBothSidesToChoose() {
        QFETCH(QString, choice);
        Desk desk;
        desk.elsewhere("Menu", 1, {{"KeyLink", "k"}, {"caption", "Был"}, {"params", "a"}});
        Module& module = desk.open();
        desk.elsewhere("Menu", 2, {{"KeyLink", "k"}, {"caption", "Чужой"}});
        QVERIFY(Desk::write(module, "Menu", 2,
                            {{"KeyLink", "k"}, {"caption", "Мой"}, {"params", "b"}}));
        QCOMPARE(desk.value("Menu", "k", "caption"), QString("Чужой"));
        QCOMPARE(desk.value("Menu", "k", "params"), QString("b"));
        QCOMPARE(desk.list.entries().size(), size_t(1));
        const UnwrittenEntry& entry = desk.only();
        QCOMPARE(entry.state, UnwrittenEntry::Conflict);
        QCOMPARE(entry.words.fields.size(), size_t(1));
        QCOMPARE(entry.words.fields[0].name, QString("Название"));
        QCOMPARE(entry.words.fields[0].mine, QString("«Мой»"));
        QCOMPARE(entry.theirs.size(), size_t(1));
        QCOMPARE(entry.theirs[0].value, QString("«Чужой»"));
        QCOMPARE(entry.theirs[0].login, QString::fromStdString(desk.other->login()));
        QVERIFY(entry.theirs[0].time.secsTo(QDateTime::currentDateTime()) < 60);
        const QString id = entry.id;
        QCOMPARE(desk.list.repeatAll(), 0); // never decides a conflict
        QCOMPARE(desk.list.entries().size(), size_t(1));
        if (choice == "theirs")
            desk.list.giveUp(id);
        if (choice == "edited")
            desk.list.setMine(id, "k", store::findTable("Menu")->find("caption"), "Третий");
        if (choice != "theirs")
            QVERIFY(desk.list.repeat(id));
        QVERIFY(desk.list.isEmpty());
        QTEST(desk.value("Menu", "k", "caption"), "end");
    }

    void changeBetweenConflictAndChoiceIsAConflictAgain() {
        Desk desk;
        desk.elsewhere("Menu", 1, {{"KeyLink", "k"}, {"caption", "Был"}});
        Module& module = desk.open();
        desk.elsewhere("Menu", 2, {{"KeyLink", "k"}, {"caption", "Чужой"}});
        Desk::write(module, "Menu", 2, {{"KeyLink", "k"}, {"caption", "Мой"}});
        desk.elsewhere("Menu", 2, {{"KeyLink", "k"}, {"caption", "Ещё чужой"}});
        desk.list.repeat(desk.only().id);
        QCOMPARE(desk.list.entries().size(), size_t(1));
        QCOMPARE(desk.only().theirs[0].value, QString("«Ещё чужой»"));
        QCOMPARE(desk.value("Menu", "k", "caption"), QString("Ещё чужой"));
    }

    void whatWasTypedLaterOutlivesTheRepetitionOfWhatWasTypedBefore() {
        Desk desk;
        desk.elsewhere("Menu", 1, {{"KeyLink", "k"}, {"caption", "Был"}, {"params", "a"}});
        Module& module = desk.open();
        QVERIFY(desk.host.byHand(
            desk.host.kind->name() == "sqlite"
                ? "CREATE TRIGGER stop BEFORE UPDATE ON \"Menu\" BEGIN SELECT "
                  "RAISE(ABORT, 'нельзя'); END"
                : "CREATE FUNCTION stop() RETURNS trigger LANGUAGE plpgsql AS $$BEGIN RAISE "
                  "EXCEPTION 'нельзя'; END$$; CREATE TRIGGER stop BEFORE UPDATE ON "
                  "\"Menu\" FOR EACH ROW EXECUTE FUNCTION stop()"));
        Desk::write(module, "Menu", 2, {{"KeyLink", "k"}, {"caption", "Раз"}, {"params", "b"}});
        QVERIFY(desk.host.byHand(desk.host.kind->name() == "sqlite"
                                     ? "DROP TRIGGER stop"
                                     : "DROP FUNCTION stop() CASCADE"));
        desk.elsewhere("Menu", 4, {{"KeyLink", "k"}});
        QTRY_VERIFY(QDateTime::currentDateTime() > desk.only().when);
        Desk::write(module, "Menu", 2, {{"KeyLink", "k"}, {"caption", "Два"}});
        QCOMPARE(desk.list.entries().size(), size_t(2));
        QVERIFY(desk.list.repeat(QString(desk.only().id))); // finds no record, either
        QCOMPARE(desk.list.entries().size(), size_t(1));
        QCOMPARE(desk.only().state, UnwrittenEntry::Gone);
        QCOMPARE(desk.only().module, QString("Menu"));
        QVERIFY(desk.list.repeat(QString(desk.only().id)));
        QCOMPARE(desk.value("Menu", "k", "caption"), QString("Два"));
        QCOMPARE(desk.value("Menu", "k", "params"), QString("b"));
    }

    void whatALaterSaveWritesLeavesTheList_data() {
        QTest::addColumn<QString>("later");
        QTest::addColumn<bool>("leaves");
        QTest::newRow("the same word") << "Мой" << true;
        QTest::newRow("another word") << "Иной" << false;
        QTest::newRow("the deletion of the record") << "" << true;
    }
    void whatALaterSaveWritesLeavesTheList() {
        QFETCH(QString, later);
        QFETCH(bool, leaves);
        Desk desk;
        desk.elsewhere("Menu", 1, {{"KeyLink", "k"}, {"caption", "Был"}});
        Module& module = desk.open();
        desk.elsewhere("Menu", 2, {{"KeyLink", "k"}, {"caption", "Чужой"}});
        Desk::write(module, "Menu", 2, {{"KeyLink", "k"}, {"caption", "Мой"}});
        QCOMPARE(desk.list.entries().size(), size_t(1));
        desk.deliver(module); // he sees theirs, and decides in the editor
        if (later.isEmpty())
            QVERIFY(Desk::write(module, "Menu", 4, {{"KeyLink", "k"}}));
        else
            QVERIFY(
                Desk::write(module, "Menu", 2, {{"KeyLink", "k"}, {"caption", qPrintable(later)}}));
        QCOMPARE(desk.list.isEmpty(), leaves);
    }

    void whatTheModuleWasToldIsNoConflict() {
        Desk desk;
        desk.elsewhere("Menu", 1, {{"KeyLink", "k"}, {"caption", "Был"}});
        Module& module = desk.open();
        desk.elsewhere("Menu", 2, {{"KeyLink", "k"}, {"caption", "Чужой"}});
        desk.deliver(module);
        QVERIFY(Desk::write(module, "Menu", 2, {{"KeyLink", "k"}, {"caption", "Мой"}}));
        QVERIFY(Desk::write(module, "Menu", 2, {{"KeyLink", "k"}, {"caption", "Мой 2"}}));
        QVERIFY(desk.list.isEmpty());
        QCOMPARE(desk.value("Menu", "k", "caption"), QString("Мой 2"));
    }

    void modulesOfOneClientHaveEachTheirOwnPlaceInTheLog() {
        Desk desk;
        desk.elsewhere("Menu", 1, {{"KeyLink", "k"}, {"caption", "Был"}, {"params", "a"}});
        Module& one = desk.open("Menu");
        Module& two = desk.open("Resources");
        QVERIFY(Desk::write(one, "Menu", 2,
                            {{"KeyLink", "k"}, {"caption", "Первый"}, {"params", "a"}}));
        QVERIFY(
            Desk::write(two, "Menu", 2, {{"KeyLink", "k"}, {"caption", "Был"}, {"params", "b"}}));
        QCOMPARE(desk.value("Menu", "k", "caption"), QString("Первый"));
        QCOMPARE(desk.value("Menu", "k", "params"), QString("b"));
        QVERIFY(desk.list.isEmpty());
    }

    /// Two clients of two modules each save whole rows of the same records, of which each changes
    /// fields of its own; each is told of the others' changes now and then only.
    void editsOfDifferentFieldsByTwoSessionsAllLast() {
        Desk desk;
        store::Status status;
        std::unique_ptr<COrvoCliSes> second =
            client::makeSession(desk.host.connectAgain("second"), &status);
        QVERIFY(second);
        UnwrittenList secondList(client::sessionStore(*second));
        client::setUnwritten(*second, &secondList);
        App secondApp;
        secondApp.m_session = second.get();
        client::ModuleRegistry secondRegistry;
        const QStringList fields{"caption", "ico", "params", "FolderKey"};
        const QStringList keys{"a", "b", "c"};
        for (const QString& key : keys)
            desk.elsewhere("Menu", 1, {{"KeyLink", key.toStdString()}});
        std::vector<Module*> modules{&desk.open("Menu"), &desk.open("Resources")};
        for (const char* name : {"Menu", "Resources"}) {
            modules.push_back(new Module(&secondApp));
            secondRegistry.add(modules.back(), name);
            secondRegistry.start(modules.back());
        }
        QMap<QString, QString> truth; // "key field"
        std::vector<QMap<QString, QString>> shown(modules.size());
        QRandomGenerator random(7);
        for (int step = 0; step < 400; ++step) {
            const auto who = static_cast<size_t>(random.bounded(int(modules.size())));
            Module& module = *modules[who];
            if (random.bounded(3) == 0) {
                desk.deliver(module);
                shown[who] = truth;
            }
            const QString key = keys[random.bounded(keys.size())];
            const QString cell = key + ' ' + fields[int(who)];
            shown[who][cell] = truth[cell] = QString::number(step);
            Fields row{{"KeyLink", key.toStdString()}};
            for (const QString& field : fields)
                if (shown[who].contains(key + ' ' + field))
                    row.emplace_back(field.toStdString(),
                                     shown[who][key + ' ' + field].toStdString());
            QVERIFY(Desk::write(module, "Menu", 2, row));
        }
        QVERIFY2(desk.list.isEmpty(), qPrintable(desk.list.summary()));
        QVERIFY2(secondList.isEmpty(), qPrintable(secondList.summary()));
        for (auto cell = truth.begin(); cell != truth.end(); ++cell)
            QCOMPARE(desk.value("Menu", qPrintable(cell.key().section(' ', 0, 0)),
                                qPrintable(cell.key().section(' ', 1, 1))),
                     cell.value());
        client::setUnwritten(*second, nullptr);
    }

    void entriesOutliveAKilledProcess() {
        Desk desk;
        Module& module = desk.open();
        const QString directory = desk.host.dir.path() + "/unwritten";
        desk.elsewhere("Menu", 1, {{"KeyLink", "k"}});
        const pid_t child = ::fork();
        if (child == 0) {
            QString error;
            client::UnwrittenFiles files(QString::fromStdString(desk.host.store().displayName() +
                                                                ' ' + desk.host.store().login()));
            UnwrittenEntry entry;
            entry.id = QStringLiteral("6a1ef5e2-55a5-4a12-8a3c-0d2d2f1f3a10");
            entry.when = QDateTime::currentDateTime();
            CMDArray array;
            store::makeStructure(*store::findTable("Menu"), array.array);
            addRecord(array, 1, {{"KeyLink", "new"}, {"caption", "Набранное"}});
            entry.request = client::WriteRequest::ofRecords("Menu", array.array);
            entry.request.keep();
            if (!files.open(directory, &error) || !files.save(entry, &error))
                ::_exit(1);
            ::raise(SIGKILL);
        }
        int how = 0;
        QCOMPARE(::waitpid(child, &how, 0), child);
        QVERIFY(WIFSIGNALED(how));
        QString error;
        QVERIFY2(desk.list.keepIn(directory, &error), qPrintable(error));
        QCOMPARE(desk.list.entries().size(), size_t(1));
        QCOMPARE(desk.only().words.what, QString("Создан элемент меню «Набранное»"));
        QVERIFY(desk.list.repeat(desk.only().id));
        QCOMPARE(desk.value("Menu", "new", "caption"), QString("Набранное"));
        Q_UNUSED(module)
    }

    void entriesOfALivingProcessAreLeftToIt() {
        Desk desk;
        const QString directory = desk.host.dir.path() + "/unwritten";
        QString error;
        QVERIFY(desk.list.keepIn(directory, &error));
        Module& module = desk.open();
        desk.elsewhere("Menu", 1, {{"KeyLink", "k"}});
        Desk::write(module, "Menu", 1, {{"KeyLink", "k"}, {"caption", "Мой"}});
        UnwrittenList another(desk.host.store());
        QVERIFY(another.keepIn(directory, &error));
        QVERIFY(another.isEmpty());
        QCOMPARE(desk.list.entries().size(), size_t(1));
    }

    void filesAreTheOwnersAloneAndHoldEverything() {
        Desk desk;
        const QString directory = desk.host.dir.path() + "/unwritten";
        QString error;
        const QByteArray bytes(100000, 'x');
        {
            UnwrittenList list(desk.host.store());
            QVERIFY(list.keepIn(directory, &error));
            UnwrittenEntry entry;
            entry.request.kind = client::WriteRequest::FilePut;
            entry.request.files.push_back({"Папка", "план.csv", bytes, 1.5e9});
            entry.why = "диск полон";
            list.add(std::move(entry), true);
            QStringList files;
            for (const QString& sub :
                 QDir(directory).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
                const QFileInfo dir(directory + '/' + sub);
                QVERIFY(!(dir.permissions() & (QFile::ReadGroup | QFile::ReadOther)));
                for (const QFileInfo& file : QDir(dir.filePath()).entryInfoList({"*.entry"})) {
                    files << file.fileName();
                    QVERIFY(!(file.permissions() &
                              (QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup |
                               QFile::WriteOther | QFile::ExeOwner)));
                }
            }
            QCOMPARE(files.size(), 1);
        }
        QVERIFY(desk.list.keepIn(directory, &error));
        QCOMPARE(desk.list.entries().size(), size_t(1));
        QCOMPARE(desk.only().request.files[0].bytes, bytes);
        QCOMPARE(desk.only().why, QString("диск полон"));
        QVERIFY(desk.only().words.what.contains("план.csv"));
    }

    void tamperedFilesAreNotRead_data() {
        QTest::addColumn<int>("kind");
        QTest::newRow("bit") << 0;
        QTest::newRow("cut") << 1;
        QTest::newRow("others may write") << 2;
        QTest::newRow("link") << 3;
    }
    void tamperedFilesAreNotRead() {
        QFETCH(int, kind);
        Desk desk;
        const QString directory = desk.host.dir.path() + "/unwritten";
        QString error;
        {
            UnwrittenList list(desk.host.store());
            QVERIFY(list.keepIn(directory, &error));
            UnwrittenEntry entry;
            CMDArray array;
            store::makeStructure(*store::findTable("Menu"), array.array);
            addRecord(array, 1, {{"KeyLink", "new"}, {"caption", "Набранное"}});
            entry.request = client::WriteRequest::ofRecords("Menu", array.array);
            list.add(std::move(entry), true);
        }
        const QString sub = QDir(directory).entryList(QDir::Dirs | QDir::NoDotAndDotDot).value(0);
        const QString name = QDir(directory + '/' + sub).entryList({"*.entry"}).value(0);
        QVERIFY(!name.isEmpty());
        QFile file(directory + '/' + sub + '/' + name);
        QVERIFY(file.open(QIODevice::ReadWrite));
        if (kind == 0) {
            file.seek(file.size() - 5);
            char byte = 0;
            file.getChar(&byte);
            file.seek(file.size() - 5);
            file.putChar(static_cast<char>(byte ^ 1));
        }
        if (kind == 1)
            file.resize(file.size() / 2);
        file.close();
        if (kind == 2)
            QVERIFY(file.setPermissions(file.permissions() | QFile::WriteOther));
        if (kind == 3) {
            const QString target = desk.host.dir.path() + "/elsewhere";
            QVERIFY(QFile::rename(file.fileName(), target));
            QVERIFY(QFile::link(target, file.fileName()));
        }
        QStringList told;
        connect(&desk.list, &UnwrittenList::told, this, [&](const QString& text) { told << text; });
        QVERIFY(desk.list.keepIn(directory, &error));
        QVERIFY(desk.list.isEmpty());
        QVERIFY(told.join(' ').contains(name));
        QVERIFY(QFileInfo(file.fileName()).exists() || QFileInfo(file.fileName()).isSymLink());
    }

    void lostWritesAreListedAndCanBeRepeated() {
        Desk desk;
        Module& module = desk.open();
        QVERIFY(Desk::write(module, "Menu", 1, {{"KeyLink", "kept"}, {"caption", "Есть"}}));
        QVERIFY(Desk::write(module, "Menu", 1, {{"KeyLink", "one"}, {"caption", "Первый"}}));
        QVERIFY(Desk::write(module, "Menu", 2, {{"KeyLink", "kept"}, {"caption", "Новое имя"}}));
        QCOMPARE(client::listLostWrites(*desk.host.session), 0);
        // The state of a server that lacks the last two, on which another has written since.
        QVERIFY(desk.host.kind->name() != "sqlite" || desk.host.byHand("PRAGMA user_version"));
        QVERIFY(replaceLastChanges(desk.host, 2));
        QCOMPARE(client::listLostWrites(*desk.host.session), 2);
        QCOMPARE(desk.list.entries().size(), size_t(2));
        QCOMPARE(desk.only().state, UnwrittenEntry::Lost);
        QCOMPARE(desk.only().words.what, QString("Создан элемент меню «Первый»"));
        QVERIFY(desk.list.entries()[1].words.what.contains("«Новое имя»: было «Есть»"));
        QCOMPARE(desk.list.repeatAll(), 0);
        QCOMPARE(desk.value("Menu", "one", "caption"), QString("Первый"));
        QCOMPARE(desk.value("Menu", "kept", "caption"), QString("Новое имя"));
        QCOMPARE(client::listLostWrites(*desk.host.session), 0);
    }

private:
    /// Takes the last changes and their effect away and puts those of another in their place.
    static bool replaceLastChanges(Host& host, int count) {
        int64_t end = 0;
        if (!host.store().logPosition(&end).ok())
            return false;
        const bool lite = host.kind->name() == "sqlite";
        const QString schema = lite ? "" : "public.";
        const QString first = QString::number(end - count + 1);
        QString sql;
        if (lite) { // as a file put back would: without the triggers' knowledge
            sql = "UPDATE \"Menu\" SET \"caption\" = 'Есть' WHERE \"KeyLink\" = 'kept'; DELETE "
                  "FROM \"Menu\" WHERE \"KeyLink\" = 'one'; ";
        } else {
            sql = "SET session_replication_role = replica; UPDATE public.\"Menu\" SET \"caption\" "
                  "= 'Есть' WHERE \"KeyLink\" = 'kept'; DELETE FROM public.\"Menu\" WHERE "
                  "\"KeyLink\" = 'one'; ";
        }
        sql += "UPDATE " + schema +
               "\"NciEvent\" SET \"key\" = 'x' || \"id\", \"code\" = 601, "
               "\"time\" = \"time\" + 1, \"login\" = 'another' WHERE \"id\" >= " +
               first;
        return host.byHand(sql);
    }
};

QTEST_MAIN(TestUnwritten)
#include "tst_unwritten.moc"
