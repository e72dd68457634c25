// SceneTest.h: the ground of the stories that two clients act on one Scene, step by step.
#ifndef ORVO_TESTS_E2E_SCENETEST_H
#define ORVO_TESTS_E2E_SCENETEST_H

#include "tests/e2e/Hands.h"
#include "tests/e2e/Scene.h"

#include <QJsonArray>
#include <QProcess>
#include <QtTest>

#define DO(act) QVERIFY2(act, m_scene->why())
#define SOON(condition)                                                                            \
    QVERIFY2(m_scene->waitFor(#condition, [&] { return condition; }), m_scene->why())
/// A step is done when the store holds it and both clients show it.
#define DONE(condition)                                                                            \
    SOON(condition);                                                                               \
    DO(m_scene->agree())

namespace orvo::test {

// Of the demonstration installation and of the windows.
inline const QString station = QStringLiteral("КС-1 «Верхнеозёрск»");
inline const QString secondStation = QStringLiteral("КС-2 «Кедровый Лог»");
inline const QString menuTop = QStringLiteral("Меню");
inline const QString save = QStringLiteral("Сохранить");
inline const QString cancel = QStringLiteral("Не сохранять");
inline const QString yes = QStringLiteral("Да");
inline const QString ok = QStringLiteral("ОК");
inline const QString nameRow = QStringLiteral("Наименование");
inline const QString newElement = QStringLiteral("Новый элемент");

class SceneTest : public QObject {
    Q_OBJECT
protected:
    ClientProcess& left() { return m_scene->left(); }
    ClientProcess& right() { return m_scene->right(); }
    QString value(const QString& sql) const { return m_scene->store().value(sql); }
    int number(const QString& sql) const { return value(sql).toInt(); }
    /// Key of the desktop or folder of that name; null without one.
    QString desktop(const QString& caption) const {
        return value("select KeyLink from MenuFolder where caption = " + quoted(caption));
    }
    /// Key of the menu element of that name; null without one.
    QString element(const QString& caption) const {
        return value("select KeyLink from Menu where caption = " + quoted(caption));
    }
    /// Another engineer, whose hands do not take the keyboard of this display.
    bool another(const QString& sql) const { return m_scene->store().foreignWrite(sql); }
    bool insertElement(const QString& key, const QString& caption, const QString& parent,
                       int order) const {
        return another(QString("insert into Menu (KeyLink, parent, FolderKey, caption, order_) "
                               "values (%1, %2, %3, %4, %5)")
                           .arg(quoted(key), parent.isNull() ? "null" : quoted(parent),
                                quoted(desktop(station)), quoted(caption))
                           .arg(order));
    }
    /// The caption of the current row of a tree.
    static QString current(ClientProcess& client, const char* name) {
        const Tree tree = client.tree(name);
        const int row = tree.current();
        return row < 0 ? QString() : tree.rows[static_cast<size_t>(row)].cells[0];
    }
    /// Whether a button of that name or text is on the left screen.
    bool isUp(const QString& button) {
        for (const Control& control : left().controls(button))
            if (control.visible)
                return true;
        return false;
    }
    /// Whether a window of that object name has the keyboard.
    static bool isActive(ClientProcess& client, const char* name) {
        for (const QJsonValue& window : client.ask("windows")["windows"].toArray())
            if (window["name"].toString() == QLatin1String(name) && window["active"].toBool())
                return true;
        return false;
    }
    /// Answers the question that comes before something is closed.
    bool answerClosing(const char* button) {
        return m_scene->waitFor("the question is asked", [&] {
            return isActive(left(), "closeQuestion");
        }) && m_scene->press(left(), button);
    }
    /// Closes something by a key and answers the question. The key is pressed again if nothing is
    /// asked: just after a wait for the server a window drops what was pressed.
    bool closeBy(const char* key, const char* button) {
        constexpr int soonMs = 5000;
        const auto isAsked = [&] { return isActive(left(), "closeQuestion"); };
        hands::key(key);
        if (!m_scene->waitFor("the question is asked", isAsked, soonMs))
            hands::key(key);
        return answerClosing(button);
    }
    /// How many lines of a client's log have that text.
    static int logged(ClientProcess& client, const QString& text) {
        int count = 0;
        for (const TreeRow& line : client.tree("logPane").rows)
            count += line.cells.join('\t').contains(text) ? 1 : 0;
        return count;
    }
    /// Waits for the end of the left process; the leak checker may take its time.
    bool leftEnds() {
        return m_scene->waitFor(
            "the left client ends", [&] { return !left().isRunning(); }, 90000);
    }
    bool held() { return !left().ask("state")["held"].toString().isEmpty(); }
    /// The requests of the left client that are not written: what each is, a line each.
    QStringList unwritten() {
        QStringList lines;
        for (const TreeRow& row : left().tree("unwrittenTree").rows)
            if (row.depth == 0)
                lines << row.cells.value(0);
        return lines;
    }
    /// A failure that has been looked at goes.
    bool acknowledge() {
        return m_scene->waitFor("the failure is acknowledged", [&] {
            if (!left().failure().isEmpty())
                m_scene->press(left(), "failureButton");
            return left().failure().isEmpty();
        });
    }
    /// The screen as it is, for a look: into the folder that ORVO_E2E_PICTURES names.
    static void take(const char* name) {
        const QString folder = qEnvironmentVariable("ORVO_E2E_PICTURES");
        if (folder.isEmpty())
            return;
        QTest::qWait(1000); // everything is painted by then
        QProcess::execute("import", {"-window", "root", folder + '/' + name + ".png"});
    }
    /// Starts both clients with the first station open.
    bool begin() {
        m_scene = std::make_unique<Scene>();
        return m_scene->startLeft() && m_scene->startRight() && m_scene->agree() &&
               m_scene->openDesktop(station);
    }
    /// What a client has written to its standard error, without the note of this surrounding.
    static QString complaints(ClientProcess& client) {
        QStringList said;
        for (const QString& line : client.errors().split('\n', Qt::SkipEmptyParts))
            // A window of the other client may go while the display is asked about it.
            if (!line.contains("XDG_RUNTIME_DIR") && !line.contains("XCB error: 3 (BadWindow)"))
                said << line;
        return said.join('\n');
    }

    std::unique_ptr<Scene> m_scene;

protected slots:
    void cleanup() {
        // The screen as it stood, for who looks into a failure.
        const QString picture = qEnvironmentVariable("ORVO_E2E_PICTURE");
        if (QTest::currentTestFailed() && !picture.isEmpty())
            QProcess::execute("import", {"-window", "root", picture});
    }
    void cleanupTestCase() { m_scene.reset(); }
};

} // namespace orvo::test

#endif
