#include "tests/e2e/Hands.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QThread>

namespace orvo::test::hands {

namespace {

QStringList move(const QPoint& to) {
    return {"mousemove", QString::number(to.x()), QString::number(to.y())};
}

int clickCount = 0;

} // namespace

int clicks() {
    return clickCount;
}

bool xdotool(const QStringList& commands) {
    return QProcess::execute("xdotool", commands) == 0;
}

bool click(const QPoint& at, int button, const QString& modifier) {
    // Two clicks at one place are to be two, and no double click.
    constexpr int doubleClickMs = 450;
    static QElapsedTimer sinceLast;
    static QPoint last;
    if (button == 1 && sinceLast.isValid() && (at - last).manhattanLength() < 16 &&
        sinceLast.elapsed() < doubleClickMs)
        QThread::msleep(static_cast<unsigned long>(doubleClickMs - sinceLast.elapsed()));
    last = at;
    clickCount += button == 1 || button == 3 ? 1 : 0; // and no turn of the wheel
    QStringList commands = move(at);
    if (!modifier.isEmpty())
        commands << "keydown" << modifier;
    commands << "click" << QString::number(button);
    if (!modifier.isEmpty())
        commands << "keyup" << modifier;
    const bool done = xdotool(commands);
    sinceLast.start();
    return done;
}

bool moveTo(const QPoint& at) {
    return xdotool(move(at));
}

bool doubleClick(const QPoint& at) {
    clickCount += 2;
    return xdotool(move(at) + QStringList{"click", "--repeat", "2", "--delay", "60", "1"});
}

bool drag(const QPoint& from, const QPoint& to) {
    ++clickCount;
    QStringList commands = move(from);
    commands << "mousedown"
             << "1";
    constexpr int steps = 12;
    for (int i = 1; i <= steps; ++i)
        commands << move(from + (to - from) * i / steps) << "sleep"
                 << "0.04";
    // Over the target itself once more: it answers the source before the button is let go.
    commands << move(to + QPoint(1, 0)) << "sleep"
             << "0.1" << move(to) << "sleep"
             << "0.2";
    commands << "mouseup"
             << "1";
    return xdotool(commands);
}

bool key(const QString& name) {
    return xdotool({"key", name});
}

bool type(const QString& text) {
    return xdotool({"type", "--delay", "2", text});
}

int windowCount(const QString& name) {
    QProcess search;
    search.start("xdotool", {"search", "--onlyvisible", "--name", name});
    search.waitForFinished();
    return search.readAllStandardOutput().count('\n');
}

QString activeWindow() {
    QProcess active;
    active.start("xdotool", {"getactivewindow", "getwindowname"});
    active.waitForFinished();
    return QString::fromUtf8(active.readAllStandardOutput()).trimmed();
}

} // namespace orvo::test::hands
