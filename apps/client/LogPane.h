// LogPane.h: the list of messages at the foot of the window.
#ifndef ORVO_APPS_CLIENT_LOGPANE_H
#define ORVO_APPS_CLIENT_LOGPANE_H

#include <QTreeWidget>

namespace orvo::app {

/// How a line looks; the numbers are those of COrvoCliMod::LogFile.
enum LogLevel { LogInformation = 0, LogWarning = 3, LogError = 5 };

/// Time, place, text; the newest line last and in view. Keeps the last `mostLines`.
class LogPane : public QTreeWidget {
    Q_OBJECT
public:
    static constexpr int mostLines = 2000;

    explicit LogPane(QWidget* parent = nullptr);
    /// Adds a line. A text of several lines is shown as one.
    void add(int level, const QString& place, const QString& text);

private:
    void copySelected() const;
};

} // namespace orvo::app

#endif
