// OperatorTest.h: the ground of the stories of an operator, at the right.
#ifndef ORVO_TESTS_E2E_OPERATORTEST_H
#define ORVO_TESTS_E2E_OPERATORTEST_H

#include "tests/e2e/SceneTest.h"

#include <QRegularExpression>

namespace orvo::test {

class OperatorTest : public SceneTest {
    Q_OBJECT
protected:
    static constexpr const char* menu = "deskTree";

    ClientProcess& desk() { return right(); }
    bool shows(const QString& caption) { return desk().tree(menu).find(caption) >= 0; }
    int opened() { return desk().ask("state")["opened"].toInt(); }
    QString connection() { return desk().ask("state")["connection"].toString(); }
    bool clickOn(const QString& caption) { return m_scene->clickRow(desk(), menu, caption); }
    bool isOpen(const QString& folder) {
        const Tree tree = desk().tree(menu);
        const int row = tree.find(folder);
        return row >= 0 && tree.rows[static_cast<size_t>(row)].expanded;
    }
    /// The operator's folder of that name, open.
    bool openFolder(const QString& caption) { return isOpen(caption) || clickOn(caption); }
    static QString sampleDirectory() {
        return qEnvironmentVariable("ORVO_BIN_DIR") + "/../examples/modules";
    }
    static QStringList sample() { return {"--modules", sampleDirectory()}; }
    /// Closes a window as its user does: by the key, once it has the focus, and waiting for its
    /// end.
    static bool closeWindow(const QString& name) {
        QProcess::execute("xdotool",
                          {"search", "--onlyvisible", "--name", name, "windowactivate", "--sync"});
        const auto isActive = [&] {
            return hands::activeWindow().contains(QRegularExpression(name));
        };
        return QTest::qWaitFor(isActive) && hands::key("alt+F4") &&
               QTest::qWaitFor([&] { return !hands::isOnScreen(name); }, 15000);
    }
    /// Key of the element of that name in the menu of the first station.
    QString ofStation(const QString& caption) const {
        return value("select KeyLink from Menu where caption = " + quoted(caption) +
                     " and FolderKey = " + quoted(desktop(station)));
    }
    /// What is shown in a label of that name; null if it is hidden.
    QString label(const char* name) {
        for (const Control& control : desk().controls(name))
            if (control.visible)
                return control.text;
        return {};
    }
    /// Whether a line of the operator's log has that text.
    bool logHas(const QString& text) { return logged(desk(), text) > 0; }
    /// Waits until the operator's client has handled what was done to it before: a change that
    /// is made now is shown. What has not happened by then does not happen.
    bool handlesAll() {
        const QString caption = QString("Marker %1").arg(++m_markers);
        if (!(m_markers == 1 ? insertElement("marker", caption, {}, 999999)
                             : another("update Menu set caption = " + quoted(caption) +
                                       " where KeyLink = 'marker'")))
            return false;
        return m_scene->waitFor("the marker is shown", [&] { return shows(caption); });
    }
    int m_markers = 0;
    /// The class of what has the keyboard in the operator's client.
    QString focus() { return desk().ask("windows")["focus"].toObject()["class"].toString(); }
};

} // namespace orvo::test

#endif
