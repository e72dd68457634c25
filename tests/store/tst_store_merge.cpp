// Guarded updates: what another wrote since the writer last looked stays, field by field.
#include "StoreTest.h"

#include "platform/store/Merge.h"

#include <QRandomGenerator>

#include <chrono>
#include <thread>

using namespace orvo::store;
using namespace orvo::store::test;

class TestMerge : public StoreTest {
    Q_OBJECT
public:
    using StoreTest::StoreTest;

private slots:
    void init() {
        StoreTest::init();
        QVERIFY(m_store);
        m_other = another("other");
        ORVO_OK(Batch("MenuFolder")
                    .insert("hall", {{"caption", "Цех"}, {"order_", "1000"}, {"isFolder", true}})
                    .insert("desk", {{"caption", "КС-3"}, {"order_", "2000"}, {"isFolder", false}})
                    .send(*m_store));
        ORVO_OK(Batch("Menu")
                    .insert("pump", {{"caption", "Насос"},
                                     {"ico", "pump.png"},
                                     {"order_", 1000},
                                     {"oneCopy", false},
                                     {"FolderKey", "desk"}})
                    .send(*m_store));
        m_seen = position();
    }

    void unchangedFieldsKeepWhatAnotherWrote() {
        ORVO_OK(Batch("Menu").update("pump", {{"ico", "new.png"}}).send(*m_other));
        UpdateGuard mine = guard();
        ORVO_OK(Batch("Menu")
                    .update("PUMP", {{"caption", "Насос 2"}, {"ico", "pump.png"}, {"order_", 1000}})
                    .send(*m_store, &mine));
        QCOMPARE(record("pump"), QString("Насос 2|new.png|1000|false|-"));
        QVERIFY(mine.conflicts.empty());
    }

    void sameFieldOfBothIsAConflictAndNotWritten() {
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Помпа"}}).send(*m_other));
        UpdateGuard mine = guard();
        ORVO_OK(Batch("Menu")
                    .update("pump", {{"caption", "Насос 2"}, {"ico", "mine.png"}})
                    .send(*m_store, &mine));
        QCOMPARE(record("pump"), QString("Помпа|mine.png|1000|false|-"));
        QCOMPARE(mine.conflicts.size(), size_t(1));
        const Conflict& conflict = mine.conflicts.front();
        QCOMPARE(conflict.key, std::string("pump"));
        QCOMPARE(conflict.field, findTable("Menu")->find("caption"));
        QCOMPARE(textOf(conflict.mine), std::string("Насос 2"));
        QCOMPARE(textOf(conflict.theirs), std::string("Помпа"));
        QCOMPARE(textOf(conflict.before), std::string("Насос"));
        QCOMPARE(QByteArray(conflict.login.c_str()), QByteArray(m_other->login().c_str()));
        QVERIFY(conflict.time > 1.6e9);
        QCOMPARE(conflict.id, m_seen + 1);
    }

    void sameValueOfBothIsNoConflict() {
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Помпа"}}).send(*m_other));
        UpdateGuard mine = guard();
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Помпа"}}).send(*m_store, &mine));
        QVERIFY(mine.conflicts.empty());
    }

    void valueThatAnotherPutBackIsFree() {
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Помпа"}}).send(*m_other));
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Насос"}}).send(*m_other));
        UpdateGuard mine = guard();
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Насос 2"}}).send(*m_store, &mine));
        QVERIFY(mine.conflicts.empty());
        QCOMPARE(record("pump"), QString("Насос 2|pump.png|1000|false|-"));
    }

    void ownWritesAreNoConflict() {
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Раз"}}).send(*m_store));
        const int64_t own = position();
        ORVO_OK(Batch("Menu").update("pump", {{"ico", "other.png"}}).send(*m_other));
        UpdateGuard mine = guard();
        mine.own = {{own, own}};
        ORVO_OK(Batch("Menu")
                    .update("pump", {{"caption", "Два"}, {"ico", "pump.png"}})
                    .send(*m_store, &mine));
        QVERIFY(mine.conflicts.empty());
        QCOMPARE(record("pump"), QString("Два|other.png|1000|false|-"));
    }

    void anotherAfterMyOwnWriteIsAConflict() {
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Раз"}}).send(*m_store));
        const int64_t own = position();
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Помпа"}}).send(*m_other));
        UpdateGuard mine = guard();
        mine.own = {{own, own}};
        UpdateGuard again = mine;
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Раз"}}).send(*m_store, &mine));
        QVERIFY(mine.conflicts.empty()); // nothing was typed since
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Два"}}).send(*m_store, &again));
        QCOMPARE(again.conflicts.size(), size_t(1));
        QCOMPARE(textOf(again.conflicts.front().before), std::string("Раз"));
        QCOMPARE(record("pump"), QString("Помпа|pump.png|1000|false|-"));
    }

    void questionMarksReadFromTheStoreAreNoChange() {
        QVERIFY(m_kind.byHand("UPDATE \"Menu\" SET \"caption\" = 'β' WHERE \"KeyLink\" = 'pump';"));
        m_seen = position();
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Помпа"}}).send(*m_other));
        UpdateGuard mine = guard();
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "?"}}).send(*m_store, &mine));
        QVERIFY(mine.conflicts.empty());
        QCOMPARE(record("pump"), QString("Помпа|pump.png|1000|false|-"));
    }

    void nullAndEmptyLinksAreAlike() {
        ORVO_OK(Batch("Menu").insert("box", {{"caption", "Папка"}}).send(*m_other));
        ORVO_OK(Batch("Menu").update("pump", {{"parent", "box"}}).send(*m_other));
        UpdateGuard mine = guard();
        ORVO_OK(Batch("Menu")
                    .update("pump", {{"parent", ""}, {"caption", "Мой"}})
                    .send(*m_store, &mine));
        QVERIFY(mine.conflicts.empty());
        QCOMPARE(record("pump"), QString("Мой|pump.png|1000|false|box"));
    }

    void anEmptyTextOverNullIsNoChange() {
        UpdateGuard first = guard();
        ORVO_OK(Batch("Menu")
                    .update("pump", {{"caption", "Насос 2"}, {"params", ""}})
                    .send(*m_store, &first));
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(m_seen, 10, &changes));
        QCOMPARE(changes.size(), size_t(1));
        QVERIFY2(changes[0].after.find("params") == std::string::npos, changes[0].after.c_str());
        const int64_t own = position();
        ORVO_OK(Batch("Menu").update("pump", {{"params", "важно"}}).send(*m_other));
        UpdateGuard mine = guard();
        mine.own = {{own, own}};
        ORVO_OK(Batch("Menu")
                    .update("pump", {{"caption", "Насос 3"}, {"params", ""}})
                    .send(*m_store, &mine));
        QVERIFY(mine.conflicts.empty());
        ORVO_OK(m_store->readLog(own + 1, 10, &changes));
        QVERIFY2(changes.back().after.find("params") == std::string::npos,
                 changes.back().after.c_str());
    }

    void everyTypeIsCompared() {
        ORVO_OK(Batch("MenuResource")
                    .insert("form", {{"name_", "Pump_"}, {"type_", 3}, {"dateTimeEdit", 1.1e9 / 3}})
                    .send(*m_store));
        m_seen = position();
        ORVO_OK(Batch("Menu").update("pump", {{"order_", 5}, {"oneCopy", true}}).send(*m_other));
        ORVO_OK(Batch("MenuResource")
                    .update("form", {{"dateTimeEdit", 1.7e9 / 7}, {"UsersKey", "u"}})
                    .send(*m_other));
        UpdateGuard mine = guard();
        ORVO_OK(Batch("Menu")
                    .update("pump", {{"order_", 1000}, {"oneCopy", false}})
                    .send(*m_store, &mine));
        QVERIFY(mine.conflicts.empty());
        QCOMPARE(record("pump"), QString("Насос|pump.png|5|true|-"));
        UpdateGuard form = guard();
        ORVO_OK(Batch("MenuResource")
                    .update("form", {{"dateTimeEdit", 1.1e9 / 3}, {"UsersKey", QVariant()}})
                    .send(*m_store, &form));
        QVERIFY(form.conflicts.empty());
        QVERIFY(dump(*m_store, "MenuResource", {"UsersKey"}).startsWith("u"));
        UpdateGuard lock = guard();
        ORVO_OK(Batch("MenuResource").update("form", {{"UsersKey", "me"}}).send(*m_store, &lock));
        QCOMPARE(lock.conflicts.size(), size_t(1));
    }

    void withoutAPlaceInTheLogEverythingIsWritten() {
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Помпа"}}).send(*m_other));
        UpdateGuard mine;
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Насос"}}).send(*m_store, &mine));
        QCOMPARE(record("pump"), QString("Насос|pump.png|1000|false|-"));
    }

    void whatIsLeftOutEntirelyStillEchoes() {
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Помпа"}}).send(*m_other));
        UpdateGuard mine = guard();
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Насос 2"}}).send(*m_store, &mine));
        QCOMPARE(position(), m_seen + 2);
    }

    void updateOfADeletedRecordTellsWhoDeletedIt() {
        ORVO_OK(Batch("Menu").remove("pump").send(*m_other));
        UpdateGuard mine = guard();
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Насос 2"}}).send(*m_store, &mine));
        QCOMPARE(mine.missing.size(), size_t(1));
        QVERIFY(mine.missing.front().deletion);
        QCOMPARE(mine.missing.front().deletion->login, m_other->login());
        QVERIFY(mine.missing.front().deletion->before.find("Насос") != std::string::npos);
        QCOMPARE(position(), m_seen + 1);
    }

    void updateOfAnUnknownRecordIsReportedOnce() {
        UpdateGuard mine = guard();
        ORVO_OK(Batch("Menu")
                    .update("never", {{"caption", "Раз"}})
                    .update("NEVER", {{"caption", "Два"}})
                    .update("", {{"caption", "Три"}}) // no key: nothing is asked for
                    .send(*m_store, &mine));
        QCOMPARE(mine.missing.size(), size_t(1));
        QCOMPARE(mine.missing.front().key, std::string("never"));
        QVERIFY(!mine.missing.front().deletion);
    }

    void recordInsertedInTheSameCallIsNotMissing() {
        UpdateGuard mine = guard();
        ORVO_OK(Batch("Menu")
                    .insert("new", {{"caption", "Раз"}})
                    .update("new", {{"caption", "Два"}})
                    .send(*m_store, &mine));
        QVERIFY(mine.missing.empty());
        QCOMPARE(record("new"), QString("Два|-|-|-|-"));
    }

    void childOfADeletedFolderIsRefusedAndNothingChanges() {
        ORVO_OK(Batch("MenuFolder").remove("hall").send(*m_other));
        const int64_t before = position();
        UpdateGuard mine = guard();
        const Status status = Batch("MenuFolder")
                                  .update("desk", {{"caption", "КС-4"}})
                                  .insert("new", {{"caption", "Пульт"}, {"ParentKey", "HALL"}})
                                  .send(*m_store, &mine);
        ORVO_FAILS(status, ParentDeleted);
        QVERIFY(status.text.find("Цех") != std::string::npos);
        QVERIFY(status.text.find(m_other->login()) != std::string::npos);
        QCOMPARE(position(), before);
    }

    void elementOfAResourceThatIsDeletedMeanwhileIsRefused() {
        ORVO_OK(Batch("MenuResource")
                    .insert("mod", {{"caption", "Тренды"}, {"name_", "Trends"}})
                    .insert("old", {{"caption", "Старый"}})
                    .send(*m_store));
        ORVO_OK(Batch("Menu")
                    .insert("has", {{"MenuResourceKey", "mod"}})
                    .insert("other", {{"MenuResourceKey", "old"}})
                    .send(*m_store));
        ORVO_OK(Batch("MenuResource").remove("old").send(*m_store));
        m_seen = position();
        ORVO_OK(Batch("MenuResource").remove("mod").send(*m_other));
        const int64_t before = position();
        UpdateGuard mine = guard();
        const Status status =
            Batch("Menu").insert("new", {{"MenuResourceKey", "MOD"}}).send(*m_store, &mine);
        ORVO_FAILS(status, Refused);
        QVERIFY2(status.text.find("Тренды") != std::string::npos, status.text.c_str());
        QVERIFY(status.text.find(m_other->login()) != std::string::npos);
        QCOMPARE(position(), before);
        mine = guard();
        ORVO_FAILS(
            Batch("Menu").update("other", {{"MenuResourceKey", "mod"}}).send(*m_store, &mine),
            Refused);
        // An element that named it before stays its writer's, as does what he knew to be gone and
        // what is there again.
        mine = guard();
        ORVO_OK(Batch("Menu")
                    .update("has", {{"MenuResourceKey", "mod"}, {"params", "x"}})
                    .send(*m_store, &mine));
        mine = guard();
        ORVO_OK(Batch("Menu").insert("known", {{"MenuResourceKey", "old"}}).send(*m_store, &mine));
        ORVO_OK(Batch("MenuResource").insert("mod", {{"caption", "Тренды"}}).send(*m_other));
        mine = guard();
        ORVO_OK(Batch("Menu").insert("new", {{"MenuResourceKey", "mod"}}).send(*m_store, &mine));
    }

    void anIconThatIsDeletedOrRenamedMeanwhileIsRefused() {
        const auto file = [](Store& store, const char* key, const char* name, const char* folder) {
            return Batch("MenuResource")
                .insert(key, {{"name_", name}, {"type_", 4}, {"MenuResourceFolderKey", folder}})
                .send(store);
        };
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("icons", {{"caption", "Icons"}, {"type_", 4}})
                    .insert("docs", {{"caption", "docs"}, {"type_", 4}})
                    .send(*m_store));
        for (const char* name : {"pump.png", "fan.png", "tank.png", "old.png"})
            ORVO_OK(file(*m_store, name, name, "icons"));
        ORVO_OK(file(*m_store, "other", "fan.png", "docs"));
        ORVO_OK(Batch("MenuResource").remove("old.png").send(*m_store));
        m_seen = position();
        ORVO_OK(Batch("MenuResource")
                    .remove("pump.png")
                    .remove("fan.png")
                    .update("tank.png", {{"name_", "tank2.png"}})
                    .send(*m_other));
        const auto puts = [&](const char* table, const char* icon) {
            UpdateGuard mine = guard();
            return Batch(table).insert(icon, {{"ico", icon}}).send(*m_store, &mine);
        };
        for (const char* table : {"Menu", "MenuResource"}) {
            const int64_t before = position();
            const Status status = puts(table, "fan.png");
            ORVO_FAILS(status, Refused);
            QVERIFY2(status.text.find("fan.png") != std::string::npos, status.text.c_str());
            QVERIFY(status.text.find("удалён") != std::string::npos);
            QVERIFY(status.text.find(m_other->login()) != std::string::npos);
            const Status renamed = puts(table, "tank.png");
            ORVO_FAILS(renamed, Refused);
            QVERIFY(renamed.text.find("переименован") != std::string::npos);
            QCOMPARE(position(), before);
        }
        // What had it before stays its writer's, as does a name that he knew to be none; and an
        // icon that is there again is one.
        UpdateGuard mine = guard();
        ORVO_OK(Batch("Menu")
                    .update("pump", {{"ico", "pump.png"}, {"params", "x"}})
                    .send(*m_store, &mine));
        ORVO_OK(puts("Menu", "old.png"));
        ORVO_OK(puts("Menu", "tank2.png"));
        ORVO_OK(file(*m_other, "fan2", "fan.png", "icons"));
        ORVO_OK(puts("Menu", "fan.png"));
    }

    void movingBelowADeletedFolderIsRefused() {
        ORVO_OK(Batch("MenuFolder").remove("hall").send(*m_other));
        UpdateGuard mine = guard();
        ORVO_FAILS(
            Batch("MenuFolder").update("desk", {{"ParentKey", "hall"}}).send(*m_store, &mine),
            ParentDeleted);
    }

    void orphanThatStaysWhereItIsMayBeChanged() {
        ORVO_OK(Batch("MenuFolder").update("desk", {{"ParentKey", "hall"}}).send(*m_store));
        m_seen = position();
        ORVO_OK(Batch("MenuFolder").remove("hall").send(*m_other));
        UpdateGuard mine = guard();
        ORVO_OK(Batch("MenuFolder")
                    .update("desk", {{"ParentKey", "hall"}, {"caption", "КС-4"}})
                    .send(*m_store, &mine));
    }

    void folderIntoWhichAnotherPutSomethingIsNotDeleted_data() {
        QTest::addColumn<int>("others"); ///< deleted in the same call
        QTest::addColumn<bool>("moved");
        QTest::newRow("made there") << 0 << false;
        QTest::newRow("moved there") << 0 << true;
        QTest::newRow("many deleted at once") << 80 << false;
    }

    void folderIntoWhichAnotherPutSomethingIsNotDeleted() {
        QFETCH(int, others);
        QFETCH(bool, moved);
        Batch many("MenuFolder");
        Batch deletion("MenuFolder");
        for (int i = 0; i < others; ++i) {
            many.insert(qPrintable(QString("many%1").arg(i)));
            deletion.remove(qPrintable(QString("many%1").arg(i)));
        }
        ORVO_OK(many.send(*m_other));
        m_seen = position();
        ORVO_OK(moved ? Batch("MenuFolder").update("desk", {{"ParentKey", "hall"}}).send(*m_other)
                      : Batch("MenuFolder")
                            .insert("new", {{"caption", "Пульт"}, {"ParentKey", "hall"}})
                            .send(*m_other));
        const int64_t before = position();
        UpdateGuard mine = guard();
        const Status status = deletion.remove("hall").send(*m_store, &mine);
        ORVO_FAILS(status, Refused);
        QVERIFY2(status.text.find(m_other->login()) != std::string::npos, status.text.c_str());
        QVERIFY2(moved || status.text.find("Пульт") != std::string::npos, status.text.c_str());
        QCOMPARE(position(), before);
        m_seen = position(); // he has seen it by now
        mine = guard();
        ORVO_OK(Batch("MenuFolder").remove("hall").send(*m_store, &mine));
    }

    void folderGoesWithWhatItsWriterHasSeenOrMade() {
        ORVO_OK(Batch("MenuFolder").insert("one", {{"ParentKey", "hall"}}).send(*m_store));
        UpdateGuard mine = guard();
        mine.own = {{m_store->lastWritten().first, m_store->lastWritten().last.id}};
        ORVO_OK(Batch("MenuFolder")
                    .insert("two", {{"ParentKey", "hall"}})
                    .insert("far", {{"ParentKey", "desk"}})
                    .send(*m_other));
        // What another put there goes if the call deletes it as well.
        ORVO_OK(Batch("MenuFolder").remove("hall").remove("two").send(*m_store, &mine));
    }

    /// Whichever comes first, the other is refused.
    void deletionAndInsertionAtTheSameTimeLeaveNoOrphan() {
        constexpr int rounds = 60;
        int deleted = 0, inserted = 0;
        for (int round = 0; round < rounds; ++round) {
            const QByteArray folder = "folder" + QByteArray::number(round);
            const QByteArray child = "child" + QByteArray::number(round);
            ORVO_OK(Batch("MenuFolder").insert(folder.constData()).send(*m_store));
            m_seen = position();
            Status inserts;
            std::thread other([&] {
                UpdateGuard theirs = guard();
                inserts = Batch("MenuFolder")
                              .insert(child.constData(), {{"ParentKey", QString(folder)}})
                              .send(*m_other, &theirs);
            });
            if (round % 2 == 1) // it takes a thread a moment to begin
                std::this_thread::sleep_for(std::chrono::microseconds(round * 20));
            UpdateGuard mine = guard();
            const Status deletes =
                Batch("MenuFolder").remove(folder.constData()).send(*m_store, &mine);
            other.join();
            QVERIFY2(deletes.ok() != inserts.ok(),
                     qPrintable(QString::fromStdString(deletes.text + " / " + inserts.text)));
            (deletes.ok() ? deleted : inserted)++;
        }
        qInfo("%d times the deletion came first, %d times the insertion.", deleted, inserted);
    }

    void captionsInThePlaceOfAParentAreTaken() {
        UpdateGuard mine = guard();
        ORVO_OK(Batch("Menu")
                    .insert("a", {{"parent", "Насосная"}, {"FolderKey", "desk"}})
                    .insert("b", {{"parent", "Pumps"}, {"FolderKey", "desk"}})
                    .send(*m_store, &mine));
    }

    void nameThatAnotherTookIsRefused_data() {
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("place"); // of the other's
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<bool>("refused");
        const QByteArray items = "MenuResource", folders = "MenuResourceFolder";
        QTest::newRow("module in another folder")
            << items << 1 << QByteArray("far") << QByteArray("MID") << true;
        QTest::newRow("form of that name")
            << items << 3 << QByteArray("near") << QByteArray("Mid") << false;
        QTest::newRow("file beside")
            << items << 4 << QByteArray("near") << QByteArray("Mid") << true;
        QTest::newRow("file in another folder")
            << items << 4 << QByteArray("far") << QByteArray("Mid") << false;
        QTest::newRow("file in other letters")
            << items << 4 << QByteArray("near") << QByteArray("MID") << false;
        QTest::newRow("sibling folder")
            << folders << 1 << QByteArray("near") << QByteArray("MID") << true;
        QTest::newRow("folder elsewhere")
            << folders << 1 << QByteArray("far") << QByteArray("Mid") << false;
        QTest::newRow("folder at the other top")
            << folders << 4 << QByteArray() << QByteArray("Mid") << false;
        QTest::newRow("file folder at the top")
            << folders << 4 << QByteArray("FileResources") << QByteArray("Mid") << true;
    }

    void nameThatAnotherTookIsRefused() {
        QFETCH(QByteArray, table);
        QFETCH(int, type);
        QFETCH(QByteArray, place);
        QFETCH(QByteArray, name);
        const bool folders = table == "MenuResourceFolder";
        const char* const caption = folders ? "caption" : "name_";
        const char* const link = folders ? "ParentKey" : "MenuResourceFolderKey";
        // One's own is a module, but where the other's is a file or lies at a top.
        const bool atTop = folders && (place == "FileResources" || place.isEmpty());
        const int mine = place.isEmpty() ? 1 : type == 3 ? 1 : type;
        const QVariant folder = atTop ? QVariant() : QVariant("near");
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("near", {{"type_", type}})
                    .insert("far", {{"type_", type}})
                    .send(*m_store));
        ORVO_OK(Batch(table.constData())
                    .insert("old", {{caption, "Old"}, {link, folder}, {"type_", mine}})
                    .send(*m_store));
        m_seen = position();
        ORVO_OK(Batch(table.constData())
                    .insert("theirs",
                            {{caption, QString(name)}, {link, QString(place)}, {"type_", type}})
                    .send(*m_other));
        UpdateGuard inserts = guard();
        const Status inserted =
            Batch(table.constData())
                .insert("new", {{caption, "Mid"}, {link, folder}, {"type_", mine}})
                .send(*m_store, &inserts);
        QTEST(inserted.code == Refused, "refused");
        if (!inserted.ok()) {
            const QString why = QString::fromStdString(inserted.text);
            QVERIFY2(why.contains("\"Mid\"") &&
                         why.contains(QString::fromStdString(m_other->login())),
                     qPrintable(why));
        }
        ORVO_OK(Batch(table.constData()).remove("new").send(*m_store));
        UpdateGuard renames = guard();
        const Status renamed = Batch(table.constData())
                                   .update("old", {{caption, "Mid"}, {link, folder}})
                                   .send(*m_store, &renames);
        QTEST(renamed.code == Refused, "refused");
    }

    void nameIsFreeIfNobodyElseTookIt() {
        const auto add = [](Store& store, const char* key, const char* name,
                            UpdateGuard* by = nullptr) {
            return Batch("MenuResource")
                .insert(key, {{"name_", name}, {"type_", 1}})
                .send(store, by);
        };
        ORVO_OK(add(*m_store, "known", "Known"));
        m_seen = position();
        // What one has seen one may do, and so with one's own.
        UpdateGuard mine = guard();
        ORVO_OK(add(*m_store, "again", "Known", &mine));
        mine = guard();
        mine.own.push_back({m_seen + 1, position()});
        ORVO_OK(add(*m_store, "third", "Known", &mine));
        // Taken and given up.
        ORVO_OK(add(*m_other, "theirs", "Mid"));
        ORVO_OK(Batch("MenuResource").update("theirs", {{"name_", "Other"}}).send(*m_other));
        mine = guard();
        ORVO_OK(add(*m_store, "mine", "Mid", &mine));
        // Taken, but given up by what one writes oneself.
        const char* const folder = "MenuResourceFolderKey";
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("near", {{"type_", 4}})
                    .insert("far", {{"type_", 4}})
                    .send(*m_store));
        ORVO_OK(Batch("MenuResource")
                    .insert("moves", {{"name_", "Moved"}, {"type_", 4}, {folder, "far"}})
                    .send(*m_store));
        m_seen = position();
        ORVO_OK(add(*m_other, "goes", "Gone"));
        ORVO_OK(Batch("MenuResource").update("moves", {{folder, "near"}}).send(*m_other));
        mine = guard();
        ORVO_OK(Batch("MenuResource")
                    .remove("goes")
                    .update("moves", {{"name_", "Elsewhere"}})
                    .insert("after1", {{"name_", "Gone"}, {"type_", 1}})
                    .insert("after2", {{"name_", "Moved"}, {"type_", 4}, {folder, "near"}})
                    .send(*m_store, &mine));
        // A record keeps its name beside a namesake.
        ORVO_OK(add(*m_other, "late", "Known"));
        mine = guard();
        ORVO_OK(Batch("MenuResource")
                    .update("known", {{"name_", "Known"}, {"caption", "Известный"}})
                    .send(*m_store, &mine));
    }

    void whatAPrunedLogCannotTellIsNotWritten() {
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Помпа"}}).send(*m_other));
        ORVO_OK(Batch("MenuFolder").remove("hall").send(*m_other));
        ORVO_OK(m_store->pruneLog(position()));
        UpdateGuard mine = guard();
        const Status status = Batch("Menu")
                                  .update("pump", {{"caption", "Насос"}, {"order_", 5}})
                                  .send(*m_store, &mine);
        QCOMPARE(status.code, int(Outdated));
        QVERIFY2(QString::fromStdString(status.text).contains("сокращён"), status.text.c_str());
        QCOMPARE(record("pump"), QString("Помпа|pump.png|1000|false|-"));
        mine = guard();
        QCOMPARE(
            Batch("MenuFolder").insert("part", {{"ParentKey", "hall"}}).send(*m_store, &mine).code,
            int(Outdated));
        // Nor what happened in the log that was read, if there is another one: a restored one has
        // rows that all readers are told are gone.
        m_seen = position() + 100;
        mine = guard();
        const Status replaced =
            Batch("Menu").update("pump", {{"caption", "Насос"}}).send(*m_store, &mine);
        QCOMPARE(replaced.code, int(Outdated));
        QVERIFY2(QString::fromStdString(replaced.text).contains("заменён"), replaced.text.c_str());
        // Who has seen everything up to there is not concerned.
        m_seen = position();
        mine = guard();
        ORVO_OK(Batch("Menu").update("pump", {{"caption", "Насос"}}).send(*m_store, &mine));
    }

    /// Two writers, each of whole rows as it last saw them with one of its own two fields changed.
    /// Each looks at the log now and then only.
    void editsOfDifferentFieldsAtRandomPaceAllLast() {
        struct Writer {
            Store* store;
            QStringList fields;
            QMap<QString, QVariant> row;
            UpdateGuard guard;
        };
        const QMap<QString, QVariant> first = {
            {"caption", "Насос"}, {"ico", "pump.png"}, {"order_", 1000}, {"params", QVariant()}};
        ORVO_OK(Batch("Menu").update("pump", {{"params", QVariant()}}).send(*m_store));
        m_seen = position();
        Writer writers[] = {{m_store.get(), {"caption", "order_"}, first, guard()},
                            {m_other.get(), {"ico", "params"}, first, guard()}};
        QMap<QString, QVariant> expected = first;
        QRandomGenerator random(20260);
        for (int round = 0; round < 400; ++round) {
            Writer& writer = writers[random.bounded(2)];
            if (random.bounded(4) == 0) { // looks
                writer.row = expected;
                writer.guard = {};
                writer.guard.seen = position();
            }
            const QString field = writer.fields[random.bounded(2)];
            writer.row[field] =
                field == "order_" ? QVariant(round) : QVariant(QString::number(round));
            expected[field] = writer.row[field];
            Batch batch("Menu");
            batch.update("pump", {{"caption", writer.row["caption"]},
                                  {"ico", writer.row["ico"]},
                                  {"order_", writer.row["order_"]},
                                  {"params", writer.row["params"]}});
            ORVO_OK(batch.send(*writer.store, &writer.guard));
            QVERIFY(writer.guard.conflicts.empty());
            const int64_t own = position();
            writer.guard.own.push_back({own, own});
        }
        CMDArray rows;
        ORVO_OK(m_store->fetchLinked("Menu", "KeyLink", "pump", rows.array));
        const auto shown = [&](const char* field) {
            return expected[field].isValid() ? expected[field].toString() : QString("-");
        };
        QCOMPARE(dump(rows.array, {"caption", "ico", "order_", "params"}),
                 QStringList({shown("caption"), shown("ico"), shown("order_"), shown("params")})
                     .join('|'));
    }

private:
    int64_t m_seen = 0;
    std::unique_ptr<Store> m_other;
    UpdateGuard guard() const {
        UpdateGuard made;
        made.seen = m_seen;
        return made;
    }

    QString record(const char* key) {
        CMDArray rows;
        const Status status = m_store->fetchLinked("Menu", "KeyLink", key, rows.array);
        return status.ok() ? dump(rows.array, {"caption", "ico", "order_", "oneCopy", "parent"})
                           : QString::fromStdString(status.text);
    }
};

int main(int argc, char** argv) {
    return runOnAllKinds<TestMerge>(argc, argv);
}

#include "tst_store_merge.moc"
