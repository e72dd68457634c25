// Hands.h: mouse and keyboard of the display, through xdotool.
#ifndef ORVO_TESTS_E2E_HANDS_H
#define ORVO_TESTS_E2E_HANDS_H

#include <QPoint>
#include <QString>
#include <QStringList>

namespace orvo::test::hands {

/// False if the commands failed.
bool xdotool(const QStringList& commands);

bool click(const QPoint& at, int button = 1, const QString& modifier = {});
bool moveTo(const QPoint& at);
bool doubleClick(const QPoint& at);
/// Presses of a mouse button since the start; two for a double click, one for a drag.
int clicks();
/// Presses at `from`, moves in steps as a hand does, and lets go at `to`.
bool drag(const QPoint& from, const QPoint& to);
/// Key names of X, as "ctrl+a" or "Return".
bool key(const QString& name);
/// ASCII, and what else the keyboard of the display has.
bool type(const QString& text);

/// How many windows of that name (a regular expression) are on the screen, whoever shows them.
int windowCount(const QString& name);
inline bool isOnScreen(const QString& name) {
    return windowCount(name) > 0;
}
/// Name of the window that has the keyboard.
QString activeWindow();

} // namespace orvo::test::hands

#endif
