// Handbook.h: the handbook in a window of its own, opened at the chapter about what has the focus.
// No browser is needed: a machine of a control room may have none.
#ifndef ORVO_APPS_CLIENT_HANDBOOK_H
#define ORVO_APPS_CLIENT_HANDBOOK_H

#include <QWidget>

#include <vector>

class QTextBrowser;

namespace orvo::app {

/// A pane of the client and the chapter of the engineer's guide about it.
struct PaneChapter {
    const char* module;  ///< object name of a widget around the pane; empty: any
    const char* pane;    ///< object name of the pane
    const char* chapter; ///< name of a heading
};

/// The first that fits counts: panes come before what is around them.
const std::vector<PaneChapter>& paneChapters();
/// The chapter about a widget; the first one of the guide for null and for an unknown widget.
QString chapterOf(const QWidget* widget);

class Handbook : public QWidget {
    Q_OBJECT
public:
    explicit Handbook(QWidget* parent);

    /// Shows the engineer's guide from that heading on. False, with one line in `error` and nothing
    /// shown, if the handbook is not installed.
    bool open(const QString& chapter, QString* error);
    const QTextBrowser* browser() const { return m_browser; }

private:
    QTextBrowser* m_browser; ///< child
};

} // namespace orvo::app

#endif
