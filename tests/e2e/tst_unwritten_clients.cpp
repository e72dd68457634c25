// What one engineer saves meets the writes of another, a locked store, a lost right, a deletion:
// what he typed and nothing else is changed, and what is not stored stays on his screen, in words,
// until he has decided. The functions are one story, in this order.
#include "tests/e2e/SceneTest.h"
#include "tests/menu/EngineersStore.h"

using namespace orvo::test;

class TestUnwrittenClients : public SceneTest {
    Q_OBJECT
    EngineersKind* m_faults = nullptr; ///< the scene's

    QString captionOf(const char* key) const {
        return value("select caption from Menu where KeyLink = " + quoted(key));
    }
    /// The fields of the only request in the list, a line each: name, stored, typed, another's.
    QString fieldsOfTheFirst() {
        QStringList lines;
        for (const TreeRow& row : left().tree("unwrittenTree").rows)
            if (row.depth == 1)
                lines << row.cells.join(" | ");
        return lines.join('\n');
    }
    /// Types a name for an element and leaves the edit open.
    bool rename(const QString& from, const QString& to) {
        return m_scene->clickRow(left(), "tvMenu", from) && m_scene->fill(left(), nameRow, to);
    }

private slots:
    void initTestCase() {
        auto kind = std::make_unique<EngineersKind>(orvo::store::test::storeKind());
        m_faults = kind.get();
        m_scene = std::make_unique<Scene>(std::move(kind));
        m_faults->admitEngineers();
        DO(m_scene->startLeft());
        DO(m_scene->startRight());
        QVERIFY(insertElement("un1", "Pump", {}, 90000));
        QVERIFY(insertElement("un2", "Valve", {}, 91000));
        DO(m_scene->agree());
        DO(m_scene->openDesktop(station));
    }

    void editsOfDifferentFieldsBothLast() {
        DO(rename("Pump", "Pump 2"));
        QVERIFY(another("update Menu set params = 'of another' where KeyLink = 'un1'"));
        SOON(held());
        DO(m_scene->press(left(), save));
        DONE(value("select caption || params from Menu where KeyLink = 'un1'") ==
             "Pump 2of another");
        QCOMPARE(unwritten(), QStringList());
    }

    void aFieldThatBothChangedIsChosen_data() {
        QTest::addColumn<QString>("choice");
        QTest::addColumn<QString>("end");
        QTest::newRow("mine") << "Взять моё"
                              << "Mine";
        QTest::newRow("theirs") << "Взять чужое"
                                << "Theirs";
        QTest::newRow("another text") << "edit"
                                      << "Third";
    }
    void aFieldThatBothChangedIsChosen() {
        QFETCH(QString, choice);
        QFETCH(QString, end);
        const QString before = captionOf("un1");
        DO(rename(before, "Mine"));
        QVERIFY(another("update Menu set caption = 'Theirs' where KeyLink = 'un1'"));
        SOON(held());
        DO(m_scene->press(left(), save));
        SOON(unwritten().size() == 1);
        QCOMPARE(captionOf("un1"), QString("Theirs"));
        const QString fields = fieldsOfTheFirst();
        QVERIFY2(fields.contains("Mine") && fields.contains("Theirs"), qPrintable(fields));
        take(qPrintable("conflict-" + end));
        if (choice == "edit") {
            const auto mine =
                m_scene->reveal(left(), "unwrittenTree", QStringLiteral("Название"), 2);
            QVERIFY(mine);
            hands::xdotool({"mousemove", QString::number(mine->left() + 20),
                            QString::number(mine->center().y()), "click", "--repeat", "2",
                            "--delay", "60", "1"});
            SOON(left().ask("windows")["focus"].toObject()["class"].toString().contains("Edit"));
            hands::key("ctrl+a");
            hands::type("Third");
            hands::key("Return");
            SOON(fieldsOfTheFirst().contains("Third"));
            DO(m_scene->press(left(), QStringLiteral("Взять моё")));
        } else {
            DO(m_scene->press(left(), choice));
        }
        SOON(unwritten().isEmpty());
        DO(acknowledge());
        DONE(captionOf("un1") == end);
        QVERIFY(another("update Menu set caption = 'Pump' where KeyLink = 'un1'"));
        DONE(captionOf("un1") == "Pump");
    }

    void savingAtTheEndDecidesNoConflict() {
        DO(rename("Pump", "Mine at the end"));
        QVERIFY(another("update Menu set caption = 'Theirs at the end' where KeyLink = 'un1'"));
        SOON(held());
        DO(m_scene->press(left(), save));
        SOON(unwritten().size() == 1);
        DO(acknowledge());
        DO(closeBy("ctrl+q", "closeSave"));
        SOON(!isUp("closeSave"));
        QVERIFY(another("update Menu set params = 'later' where KeyLink = 'un2'"));
        SOON(left().table("Menu").join('\n').contains("later")); // it goes on, without a question
        QVERIFY(!isUp("closeSave"));
        QCOMPARE(unwritten().size(), 1);
        DO(m_scene->press(left(), QStringLiteral("Взять чужое")));
        SOON(unwritten().isEmpty());
        QVERIFY(another("update Menu set caption = 'Pump' where KeyLink = 'un1'"));
        DONE(captionOf("un1") == "Pump");
    }

    void whatALockedStoreDidNotTakeIsMadeAgainInOrder() {
        DO(m_scene->clickRow(left(), "tvMenu", menuTop));
        DO(m_scene->pressAll(left(), {newElement, "actNewElemFolder"}));
        DO(m_scene->fill(left(), nameRow, "Of the lock"));
        QVERIFY(m_faults->begin(EngineersKind::Locked));
        DO(m_scene->press(left(), save));
        SOON(unwritten().size() == 1);
        take("locked");
        DO(acknowledge());
        QVERIFY(element("Of the lock").isNull());
        // What is put into that folder waits with it.
        DO(m_scene->clickRow(left(), "tvMenu", "Of the lock"));
        DO(m_scene->pressAll(left(), {newElement, "actNewElemModul"}));
        DO(m_scene->clickRow(left(), "tvObj", "Trends"));
        DO(m_scene->press(left(), "btnOK"));
        SOON(unwritten().size() == 2);
        take("waiting");
        m_faults->end();
        DO(closeBy("ctrl+q", "closeStay"));
        SOON(!isUp("closeStay"));
        DO(acknowledge());
        DO(m_scene->press(left(), "unwrittenRepeatAll"));
        SOON(unwritten().isEmpty());
        DONE(number("select count(*) from Menu where parent = " + quoted(element("Of the lock"))) ==
             1);
    }

    void whatIsGivenUpIsShownAsItIsStored() {
        DO(rename("Pump", "Without right"));
        QVERIFY(m_faults->begin(EngineersKind::NoRight));
        DO(m_scene->press(left(), save));
        SOON(unwritten().size() == 1);
        m_faults->end();
        DO(acknowledge());
        take("no-right");
        DO(m_scene->press(left(), QStringLiteral("Отказаться")));
        SOON(unwritten().isEmpty());
        DONE(captionOf("un1") == "Pump");
    }

    void aSaveThatIsRefusedKeepsTheEditorsOpen() {
        DO(rename("Pump", "Refused at the end"));
        QVERIFY(m_faults->begin(EngineersKind::NoRight));
        DO(closeBy("ctrl+r", "closeSave"));
        SOON(unwritten().size() == 1);
        m_faults->end();
        DO(acknowledge());
        QTest::qWait(1000); // editors that open anew have done so by then
        QCOMPARE(current(left(), "tvMenu"), QString("Refused at the end"));
        DO(m_scene->press(left(), QStringLiteral("Отказаться")));
        SOON(unwritten().isEmpty());
        DONE(captionOf("un1") == "Pump");
    }

    void anElementThatIsGoneIsMadeAgainFromWhatWasTyped() {
        DO(rename("Valve", "Valve 2"));
        QVERIFY(another("delete from Menu where KeyLink = 'un2'"));
        SOON(held());
        DO(m_scene->press(left(), save));
        SOON(unwritten().size() == 1);
        const Tree list = left().tree("unwrittenTree");
        QVERIFY2(list.rows[0].cells[2].contains(QStringLiteral("удалена")),
                 qPrintable(list.text()));
        take("gone");
        DO(m_scene->press(left(), QStringLiteral("Создать заново")));
        SOON(unwritten().isEmpty());
        DO(acknowledge());
        DONE(captionOf("un2") == "Valve 2");
    }

    void whatIsNotWrittenOutlivesTheClient() {
        DO(rename("Pump", "Kept over the end"));
        QVERIFY(m_faults->begin(EngineersKind::NoRight));
        DO(m_scene->press(left(), save));
        SOON(unwritten().size() == 1);
        m_faults->end();
        DO(closeBy("alt+F4", "closeDrop"));
        DO(leftEnds());
        QCOMPARE(captionOf("un1"), QString("Pump"));
        DO(m_scene->startLeft());
        SOON(unwritten().size() == 1);
        take("next-time");
        DO(acknowledge());
        DO(m_scene->press(left(), "unwrittenRepeatAll"));
        SOON(unwritten().isEmpty());
        DO(m_scene->openDesktop(station));
        QCOMPARE(captionOf("un1"), QString("Kept over the end"));
    }

    void theStoreIsSoundAndTheClientsSaidNothing() {
        QCOMPARE(m_scene->admin({"check"}), 0);
        for (ClientProcess* client : {&left(), &right()}) {
            QVERIFY(client->isRunning());
            QCOMPARE(complaints(*client), QString());
        }
        m_scene.reset();
    }
};

QTEST_MAIN(TestUnwrittenClients)
#include "tst_unwritten_clients.moc"
