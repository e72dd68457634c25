// One engineer is in the middle of something while others write: what he answers, chooses, types
// and closes falls on what he had before him. The functions are one story, in this order.
#include "tests/e2e/SceneTest.h"

#include <QJsonArray>

using namespace orvo::test;

class TestAttentionClients : public SceneTest {
    Q_OBJECT
    int elementsOf(const QString& desktopKey) const {
        return number("select count(*) from Menu where FolderKey = " + quoted(desktopKey));
    }
    bool rightShows(const char* tree, const QString& text) {
        return m_scene->waitFor("the right client shows it",
                                [&] { return right().tree(tree).find(text) >= 0; });
    }
    /// The left client has read of it too, and holds it.
    bool comesToTheRight(const char* tree, const QString& text) {
        return rightShows(tree, text) &&
               m_scene->waitFor("the left client holds it", [&] { return held(); });
    }

private slots:
    void initTestCase() {
        DO(begin());
        // Rows of the test's own, deep enough for a folder with something in it.
        QVERIFY(insertElement("att1", "First", {}, 90000));
        QVERIFY(insertElement("att2", "Second", {}, 91000));
        QVERIFY(insertElement("att2a", "Inner", "att2", 0));
        QVERIFY(insertElement("att3", "Third", {}, 92000));
        DO(m_scene->agree());
        DO(m_scene->openDesktop(station));
    }

    void aDeletionOfADesktopHitsTheOneThatWasAskedAbout() {
        const QString asked = desktop(secondStation);
        const QString other = desktop(station);
        const int untouched = elementsOf(other);
        QVERIFY(untouched > 3);
        DO(m_scene->clickRow(left(), "tvDesck", secondStation));
        DO(m_scene->press(left(), "actDeleteFromtvDesck"));
        SOON(isUp(yes));
        QVERIFY(
            another("update MenuFolder set caption = 'Renamed' where KeyLink = " + quoted(other)));
        DO(comesToTheRight("tvDesck", "Renamed"));
        hands::key("Return");
        SOON(desktop(secondStation).isNull());
        SOON(!held());
        QCOMPARE(desktop("Renamed"), other);
        QCOMPARE(elementsOf(other), untouched);
        QCOMPARE(elementsOf(asked), 0);
        QVERIFY(another("update MenuFolder set caption = " + quoted(station) +
                        " where KeyLink = " + quoted(other)));
        DONE(desktop(station) == other);
        QVERIFY(!held());
    }

    void aDeletionOfAnElementHitsTheOneThatWasAskedAbout() {
        DO(m_scene->openDesktop(station));
        DO(m_scene->clickRow(left(), "tvMenu", "First"));
        DO(m_scene->press(left(), "actDeleteElem"));
        SOON(isUp(yes));
        // The new row would become the current one.
        QVERIFY(insertElement("att4", "Fourth", {}, 93000));
        DO(comesToTheRight("tvMenu", "Fourth"));
        hands::key("Return");
        DONE(element("First").isNull());
        QVERIFY(!element("Fourth").isNull());
    }

    void aQuestionAboutARowThatIsGoneSaysSoAndHitsNoOther() {
        const int all = number("select count(*) from Menu");
        DO(m_scene->clickRow(left(), "tvMenu", "Second"));
        DO(m_scene->press(left(), "actDeleteElem"));
        SOON(isUp(yes));
        QVERIFY(another("begin; delete from Menu where KeyLink = 'att2a'; delete from Menu where "
                        "KeyLink = 'att2'; commit"));
        SOON(right().tree("tvMenu").find("Second") < 0);
        SOON(!isUp(yes) && isUp(ok));
        hands::key("Return"); // the only button of the notice
        DONE(number("select count(*) from Menu") == all - 2);
        QVERIFY(!isUp(yes));
        QVERIFY(!isUp(ok));
        QVERIFY(!element("Third").isNull());
    }

    void aQuestionTellsWhatOthersDoToItsSubject() {
        DO(m_scene->clickRow(left(), "tvMenu", "Third"));
        DO(m_scene->press(left(), "actDeleteElem"));
        SOON(isUp(yes));
        QVERIFY(another("update Menu set caption = 'Third, renamed' where KeyLink = 'att3'"));
        DO(comesToTheRight("tvMenu", "Third, renamed"));
        QVERIFY(isUp(yes)); // still a question
        take("attention-note");
        QVERIFY(insertElement("att3a", "Put inside", "att3", 0));
        SOON(!isUp(yes) && isUp(ok)); // what it asked is not what would be done
        take("attention-withdrawn");
        DO(m_scene->press(left(), ok));
        DONE(!element("Put inside").isNull());
    }

    void theWindowBelowAQuestionTakesNeitherMouseNorKeys() {
        DO(m_scene->clickRow(left(), "tvMenu", "Fourth"));
        const auto other = m_scene->reveal(left(), "tvMenu", "Third, renamed");
        const auto desktops = m_scene->reveal(left(), "tvDesck", station);
        QVERIFY(other && desktops);
        DO(m_scene->press(left(), "actDeleteElem"));
        SOON(isUp(yes));
        hands::click(other->center());
        hands::click(desktops->center());
        hands::click(other->center(), 3);
        hands::key("Down");
        // What comes after these events has been handled.
        QVERIFY(another("update Menu set params = 'marker' where KeyLink = 'att3'"));
        SOON(held());
        QCOMPARE(current(left(), "tvMenu"), QString("Fourth"));
        QVERIFY(isUp(yes));
        hands::key("Escape");
        SOON(!isUp(yes));
        DO(m_scene->agree());
        QVERIFY(!element("Fourth").isNull());
    }

    void aChoiceGoesWhereThePickerWasOpenedFor() {
        QVERIFY(insertElement("attx", "Folder X", {}, 94000));
        DO(m_scene->agree());
        DO(m_scene->clickRow(left(), "tvMenu", "Folder X"));
        DO(m_scene->pressAll(left(), {newElement, "actNewElemModul"}));
        DO(m_scene->clickRow(left(), "tvObj", "Trends"));
        QVERIFY(insertElement("atty", "Folder Y", {}, 95000));
        DO(comesToTheRight("tvMenu", "Folder Y"));
        QVERIFY(left().tree("tvMenu").find("Folder Y") < 0);
        take("attention-picker");
        DO(m_scene->press(left(), "btnOK"));
        DONE(number("select count(*) from Menu where parent = 'attx'") == 1);
        QCOMPARE(number("select count(*) from Menu where parent = 'atty'"), 0);
    }

    void anIconGoesToTheElementThatThePickerWasOpenedFor() {
        DO(m_scene->clickRow(left(), "tvMenu", "Folder X"));
        const auto cell = m_scene->reveal(left(), "tvProp", QStringLiteral("Иконка"), 1);
        QVERIFY(cell);
        hands::click(cell->center());
        DO(m_scene->press(left(), "..."));
        DO(m_scene->clickRow(left(), "tvObj", "gauge.png"));
        QVERIFY(insertElement("attw", "Folder W", {}, 95500));
        DO(comesToTheRight("tvMenu", "Folder W"));
        DO(m_scene->press(left(), "btnOK"));
        DO(m_scene->press(left(), save));
        DONE(value("select ico from Menu where KeyLink = 'attx'") == "gauge.png");
        QVERIFY(value("select ico from Menu where KeyLink = 'attw'").isEmpty());
    }

    void whatIsBeingTypedStaysInItsCellUntilItIsSaved() {
        DO(m_scene->clickRow(left(), "tvMenu", "Fourth"));
        DO(m_scene->fill(left(), nameRow, "Half of a na"));
        QVERIFY(insertElement("attz", "Of another", {}, 96000));
        QVERIFY(another("update Menu set params = 'x' where KeyLink = 'attx'"));
        DO(comesToTheRight("tvMenu", "Of another"));
        SOON(held());
        QCOMPARE(left().ask("windows")["focus"].toObject()["class"].toString(),
                 QString("QLineEdit"));
        QCOMPARE(element("Half of a na"), QString()); // not stored by anybody's doing
        take("attention-cell");
        hands::type("me");
        SOON(left().tree("tvProp").find("Half of a name", 1) >= 0);
        DO(m_scene->press(left(), save));
        DONE(element("Half of a name") == "att4");
        QVERIFY(!held());
        QVERIFY(left().tree("tvMenu").find("Of another") >= 0);
    }

    void anEditWaitsAlthoughItsCellWasLeft() {
        DO(m_scene->clickRow(left(), "tvMenu", "Half of a name"));
        DO(m_scene->fill(left(), nameRow, "Not finished"));
        DO(m_scene->clickRow(right(), "tvMenu", menuTop)); // another window has the keyboard
        QVERIFY(another("update Menu set params = 'y' where KeyLink = 'attx'"));
        SOON(held());
        QCOMPARE(element("Not finished"), QString());
        DO(m_scene->press(left(), QStringLiteral("Не сохранять")));
        DO(m_scene->agree());
        QCOMPARE(element("Not finished"), QString());
    }

    void closingAndOpeningAgainAskAboutAnOpenEdit() {
        DO(m_scene->clickRow(left(), "tvMenu", "Half of a name"));
        DO(m_scene->fill(left(), nameRow, "Typed before closing"));
        for (const char* shortcut : {"ctrl+q", "ctrl+r", "alt+F4"}) { // as the X does
            hands::key(shortcut);
            SOON(isUp("closeStay"));
            take("attention-closing");
            DO(answerClosing("closeStay"));
            SOON(!isUp("closeStay"));
            QVERIFY(left().isRunning());
            QVERIFY(left().tree("tvProp").find("Typed before closing", 1) >= 0);
        }
        QCOMPARE(element("Typed before closing"), QString());
        DO(closeBy("ctrl+r", "closeSave"));
        SOON(element("Typed before closing") == "att4");
        DO(m_scene->openDesktop(station));

        DO(m_scene->clickRow(left(), "tvMenu", "Typed before closing"));
        DO(m_scene->fill(left(), nameRow, "Typed and dropped"));
        DO(closeBy("ctrl+q", "closeDrop"));
        DO(leftEnds());
        QCOMPARE(element("Typed and dropped"), QString());
        DO(m_scene->startLeft());
        DO(m_scene->openDesktop(station));
        DO(m_scene->clickRow(left(), "tvMenu", menuTop)); // the keyboard is the left one's
        hands::key("ctrl+q");                             // nothing is open: nothing is asked
        DO(leftEnds());
        DO(m_scene->startLeft());
        DO(m_scene->openDesktop(station));
    }

    void whoWantsToStayIsNotTakenToTheChangesOfOthers() {
        DO(m_scene->clickRow(left(), "tvMenu", "Third, renamed"));
        DO(m_scene->pressAll(left(), {QStringLiteral("Вид"), "actStay"}));
        QVERIFY(insertElement("atts", "Far from here", {}, 97000));
        QVERIFY(another("update MenuFolder set caption = caption || ' 2' where order_ = '2000' and "
                        "KeyLink <> " +
                        quoted(desktop(station))));
        DONE(!element("Far from here").isNull());
        QCOMPARE(current(left(), "tvMenu"), QString("Third, renamed"));
        QCOMPARE(current(left(), "tvDesck"), station);
        QVERIFY(current(right(), "tvDesck") != station); // as is usual
        // One's own new row is shown all the same.
        DO(m_scene->clickRow(left(), "tvMenu", menuTop));
        DO(m_scene->pressAll(left(), {newElement, "actNewElemFolder"}));
        DO(m_scene->press(left(), save));
        SOON(current(left(), "tvMenu") == QStringLiteral("Новая папка"));

        hands::key("ctrl+q");
        DO(leftEnds());
        DO(m_scene->startLeft());
        DO(m_scene->press(left(), QStringLiteral("Вид")));
        SOON(left().ask("control actStay")["controls"].toArray()[0].toObject()["checked"].toBool());
        hands::key("Escape");
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

QTEST_MAIN(TestAttentionClients)
#include "tst_attention_clients.moc"
