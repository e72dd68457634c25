// Whoever wants to stay where he is stays, in either editor, whatever others write; his own changes
// take him along all the same. COrvoCliMod::setFollowsOthers.
#include "tests/menu/LiveProbe.h"
#include "tests/resources/WritingProbe.h"

using namespace orvo::test;

namespace {

void addFollowing() {
    QTest::addColumn<bool>("follows");
    dataRow("as usual", true);
    dataRow("stays", false);
}

/// At the element "calc" of the desktop "armop".
struct MenuAt : Live {
    explicit MenuAt(bool follows) {
        makeCurrent("calc");
        editor->setFollowsOthers(follows);
    }
    QString place() { return currentDesck() + ' ' + currentElement(); }
};

/// At the resource "rtrend".
struct ResourcesAt : Writing {
    explicit ResourcesAt(bool follows) {
        makeCurrent("rtrend");
        editor->setFollowsOthers(follows);
    }
};

} // namespace

class TestStay : public QObject {
    Q_OBJECT
private slots:
    void anothersNewDesktopIsGoneToOrNot_data() { addFollowing(); }
    void anothersNewDesktopIsGoneToOrNot() {
        QFETCH(bool, follows);
        MenuAt live(follows);
        addDesck(live.store, "theirs", "ceh", "АРМ новый", false);
        live.deliver();
        QVERIFY(live->desck("theirs").isValid());
        QCOMPARE(live.currentDesck(), QString(follows ? "theirs" : "armop"));
        if (!follows)
            QCOMPARE(live.place(), QString("armop calc"));
    }

    void anothersNewNameOfADesktopIsGoneToOrNot_data() { addFollowing(); }
    void anothersNewNameOfADesktopIsGoneToOrNot() {
        QFETCH(bool, follows);
        MenuAt live(follows);
        live.store.update("MenuFolder",
                          {{"KeyLink", QString("obshiy")}, {"caption", QString("Я")}});
        live.deliver();
        QCOMPARE(live.currentDesck(), QString(follows ? "obshiy" : "armop"));
    }

    void anothersNewElementIsGoneToOrNot_data() { addFollowing(); }
    void anothersNewElementIsGoneToOrNot() {
        QFETCH(bool, follows);
        MenuAt live(follows);
        addElement(live.store, "armop", "theirs", "grafiki", "Их", 5000, "rtrend");
        live.deliver();
        QVERIFY(live->element("theirs").isValid());
        QCOMPARE(live.place(), QString(follows ? "armop theirs" : "armop calc"));
        QCOMPARE(live.passport("name").toString(), QString(follows ? "Их" : "Расчёт"));
    }

    void anothersNewResourceIsGoneToOrNot_data() { addFollowing(); }
    void anothersNewResourceIsGoneToOrNot() {
        QFETCH(bool, follows);
        ResourcesAt live(follows);
        addItem(live.store, "theirs", 1, "alarms", "Their", "Их");
        live.deliver();
        QVERIFY(live->row("theirs").isValid());
        // This editor shows what is new and stays where it is in any case.
        QCOMPARE(live.currentKey(), QString("rtrend"));
        QCOMPARE(live.view()->isExpanded(live->row("alarms")), follows);
    }

    void onesOwnRowsStayCurrentWhereverOthersPutThem() {
        MenuAt live(false);
        live.store.update("MenuFolder",
                          {{"KeyLink", QString("armop")}, {"caption", QString("Я последний")}});
        live.store.update("Menu", {{"KeyLink", QString("calc")}, {"parent", QString("glubzhe")}});
        live.store.update("Menu", {{"KeyLink", QString("trend")}, {"order_", 9000}});
        live.deliver();
        QCOMPARE(live.place(), QString("armop calc"));
        QCOMPARE(live->element("calc").parent(), live->element("glubzhe"));
    }

    void onesOwnNewRowIsGoneTo() {
        MenuAt live(false);
        live->on_actNewElemFolder_triggered();
        live.press(live->m_btnSave);
        const QString key = live.currentElement();
        live.makeCurrent("trend");
        live.deliver();
        QVERIFY(live->element(qPrintable(key)).isValid());
        live->on_actAddDescktop_triggered();
        live.press(live->m_btnSave);
        live.openDesck("obshiy");
        live.deliver();
        QVERIFY(live.currentDesck() != QString("obshiy"));
    }
};

QTEST_MAIN(TestStay)
#include "tst_stay.moc"
