// Handbook.h: the handbook in a window of its own, opened at the chapter about what has the focus.
// No browser is needed: a machine of a control room may have none.
#ifndef ORVO_APPS_CLIENT_HANDBOOK_H
#define ORVO_APPS_CLIENT_HANDBOOK_H

#include <QWidget>

#include <vector>

class QTextBrowser;

namespace orvo::app {

/// The pages of the handbook.
namespace handbookpage {
inline constexpr char operators[] = "operator-guide";
inline constexpr char engineers[] = "user-guide";
inline constexpr char administrators[] = "administrator";
inline constexpr char authors[] = "module-guide";
} // namespace handbookpage

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

    /// Shows a page (handbookpage; empty: the operator's) from that heading on, an empty
    /// one from its beginning. False, with one line in `error` and nothing shown, if there is no
    /// such page, or the handbook is not installed.
    /// Esc and Ctrl+W close it.
    bool open(const QString& page, const QString& chapter, QString* error);
    const QTextBrowser* browser() const { return m_browser; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QTextBrowser* m_browser; ///< child
};

} // namespace orvo::app

#endif
