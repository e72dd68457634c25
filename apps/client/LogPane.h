// LogPane.h: the list of messages at the foot of the window, and the field by which it is searched.
#ifndef ORVO_APPS_CLIENT_LOGPANE_H
#define ORVO_APPS_CLIENT_LOGPANE_H

#include <QTreeWidget>

class QLineEdit;

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
    /// Hides the lines, also those that are added later, that lack one of the words; none: shows
    /// all.
    void showOnlyThoseWith(const QString& words);

private:
    bool hasWords(const QTreeWidgetItem& line) const;
    void copySelected() const;

    QStringList m_words;
};

/// The log with a field below it, hidden until the key of the search (addPaneKeys()).
class LogSearch : public QWidget {
    Q_OBJECT
public:
    explicit LogSearch(LogPane* log); // becomes the parent
};

} // namespace orvo::app

#endif
