// PaneRoom.h: the height of the panes below the editors. A pane that is called gets room to work
// in; when the last of those is closed, the log is as high again as it was.
#ifndef ORVO_APPS_CLIENT_PANEROOM_H
#define ORVO_APPS_CLIENT_PANEROOM_H

#include <QObject>
#include <QVector>

class QDockWidget;
class QMainWindow;

namespace orvo::app {

/// Invariant: (1) with no pane open, nothing is to be given back.
class PaneRoom : public QObject {
    Q_OBJECT
public:
    /// `log`: the pane that is always there, beside which the others are. Both outlive this.
    PaneRoom(QMainWindow& window, QDockWidget& log);

    /// From now on the pane takes room and gives it back. It lives as long as the window.
    void add(QDockWidget* pane);
    /// Opens the pane in front of those beside it, high enough to work in.
    void open(QDockWidget* pane);

private:
    bool isAnyOpen() const;
    void giveBack();

    QMainWindow& m_window;
    QDockWidget& m_log;
    QVector<QDockWidget*> m_panes;
    int m_before =
        0; ///< the log's height before the first pane was opened; 0: nothing to give back
};

} // namespace orvo::app

#endif
