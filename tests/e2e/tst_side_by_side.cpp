// What two engineers see of each other: who is here, and what he edits. The functions are one
// story, in this order.
#include "tests/e2e/Hands.h"
#include "tests/e2e/Scene.h"

#include <QTemporaryDir>
#include <QtTest>

#include <optional>

using namespace orvo::test;

#define DO(act) QVERIFY2(act, m_scene->why())
#define SOON(condition)                                                                            \
    QVERIFY2(m_scene->waitFor(#condition, [&] { return condition; }), m_scene->why())

namespace {

const QString station = QStringLiteral("КС-1 «Верхнеозёрск»");
const QString nameRow = QStringLiteral("Наименование");

} // namespace

class TestSideBySide : public QObject {
    Q_OBJECT
    std::unique_ptr<Scene> m_scene;

    ClientProcess& left() { return m_scene->left(); }
    ClientProcess& right() { return m_scene->right(); }
    QString value(const QString& sql) const { return m_scene->store().value(sql); }
    QString others(ClientProcess& client) { return client.ask("state")["others"].toString(); }
    QString marks(ClientProcess& client) { return client.ask("state")["marks"].toString(); }
    /// Begins an edit of that element; nothing is saved.
    bool beginEdit(ClientProcess& client, const QString& element) {
        return m_scene->clickRow(client, "tvMenu", element) &&
               m_scene->fill(client, nameRow, "Typed");
    }
    /// A picture of the display, for a look, where ORVO_E2E_PICTURES names a folder.
    void picture(const char* name) const {
        const QString folder = qEnvironmentVariable("ORVO_E2E_PICTURES");
        if (!folder.isEmpty())
            QProcess::execute("import", {"-window", "root", folder + '/' + name + ".png"});
    }

private slots:
    void initTestCase() {
        m_scene = std::make_unique<Scene>();
        QVERIFY(m_scene->store().foreignWrite(
            "insert into Users (KeyLink, login_, lastName, firstName, midlName) values ('u-right', "
            "'right', 'Петров', 'Пётр', 'Ильич')"));
        for (const char* key : {"side1", "side2"})
            QVERIFY(m_scene->store().foreignWrite(
                QString("insert into Menu (KeyLink, FolderKey, caption, order_) values (%1, %2, "
                        "%1, 90000)")
                    .arg(quoted(key),
                         quoted(value("select KeyLink from MenuFolder where caption = " +
                                      quoted(station))))));
        DO(m_scene->startLeft());
        DO(m_scene->startRight());
        DO(m_scene->openDesktop(station));
    }

    void cleanup() {
        if (QTest::currentTestFailed())
            picture("failed");
    }

    void eachSeesWhoElseIsHere() {
        SOON(others(left()) == QString("Ещё здесь: Петров П.И."));
        SOON(others(right()) == QString("Ещё здесь: left"));
        picture("here");
    }

    void theRowThatAnotherEditsIsMarkedUntilHeDropsTheEdit() {
        DO(beginEdit(right(), "side1"));
        SOON(marks(left()) == QString("Menu/side1: Петров П.И."));
        QVERIFY(marks(right()).isEmpty());
        picture("marked");
        DO(m_scene->press(right(), "Не сохранять"));
        QElapsedTimer clock;
        clock.start();
        SOON(marks(left()).isEmpty());
        qInfo("The mark is gone after %lld ms.", clock.elapsed());
        QVERIFY(clock.elapsed() < 2000);
    }

    void theMarkGoesWithTheSaveAndTheRowIsOpenToAll() {
        DO(beginEdit(right(), "side1"));
        SOON(!marks(left()).isEmpty());
        DO(m_scene->press(right(), "Сохранить"));
        SOON(marks(left()).isEmpty());
        SOON(value("select caption from Menu where KeyLink = 'side1'") == QString("Typed"));
        DO(m_scene->agree());
    }

    void marksOfAClientThatIsKilledGoWithinSeconds() {
        DO(beginEdit(right(), "side2"));
        SOON(marks(left()) == QString("Menu/side2: Петров П.И."));
        right().killHard();
        QElapsedTimer clock;
        clock.start();
        SOON(others(left()).isEmpty());
        QVERIFY(marks(left()).isEmpty());
        qInfo("A killed client is gone after %lld ms.", clock.elapsed());
        QVERIFY(clock.elapsed() < 6000);
        DO(m_scene->startRight());
        SOON(others(left()) == QString("Ещё здесь: Петров П.И."));
        DO(m_scene->openDesktop(station));
    }

    void whoMayOnlyLookIsToldOnceAndChangesNothing() {
        if (qgetenv("ORVO_STORE_KIND") != "postgresql")
            QSKIP("a server's logins");
        QCOMPARE(m_scene->admin({"user", "add", "looker", "--last", "Смотров", "--viewer"}), 0);
        QString url = m_scene->store().url();
        url.replace("postgres@", "looker@");
        m_scene->stopRight();
        QTemporaryDir directory;
        ClientProcess looker(directory.path(), url, "looker", QRect(1405, 5, 1385, 960), {"Menu"});
        QVERIFY(looker.waitUp());
        SOON(others(left()) == QString("Ещё здесь: Смотров"));
        SOON(others(looker) == QString("Ещё здесь: left"));
        picture("looker-told");
        DO(m_scene->press(looker, "ОК"));
        DO(m_scene->clickRow(looker, "tvDesck", station));
        SOON(looker.tree("tvMenu").find("side2") >= 0);
        DO(m_scene->clickRow(looker, "tvMenu", "side2"));
        SOON(looker.isEnabled("actCopyMenuElement"));
        for (const char* writes :
             {"actDeleteElem", "actMoveUp", "actMoveDown", "actCutMenuElement", "actNewElemFolder",
              "actDeleteFromtvDesck", "actAddDescktop", "actChangeDescktopOrFolder"})
            QVERIFY2(!looker.isEnabled(writes), writes);
        const std::optional<QRect> cell = m_scene->reveal(looker, "tvProp", nameRow, 1);
        QVERIFY(cell);
        QVERIFY(hands::click(cell->center()));
        QTest::qWait(300);
        QVERIFY(looker.ask("windows")["focus"].toObject()["class"].toString() != "QLineEdit");
        QVERIFY(looker.failure().isEmpty());
        picture("looker-works");
    }
};

QTEST_MAIN(TestSideBySide)

#include "tst_side_by_side.moc"
