// WaitDialogController.h: what becomes of the window while a call on its thread waits for the
// server.
//
// Such a call stands in the middle of a slot of a module, so no event may be handled before it has
// returned: not a notification, not a click, not a timer. What can be done without events is done:
// the window's pixels are shown again from its own memory, so that it stays painted, and after a
// second a pane with a button opens, which is a window of another process (WaitPane.h) and needs
// no event here.
#ifndef ORVO_APPS_CLIENT_WAITDIALOGCONTROLLER_H
#define ORVO_APPS_CLIENT_WAITDIALOGCONTROLLER_H

#include "platform/store/WaitPolicy.h"

#include <QElapsedTimer>
#include <QObject>
#include <QProcess>
#include <QString>

#include <memory>

namespace orvo::app {

class WaitDialogController : public QObject, public store::WaitPolicy {
    Q_OBJECT
public:
    /// So long the cursor alone tells that something is going on.
    static constexpr int paneAfterMs = 800;

    /// `store`: how the pane names what is waited for. `program`: what shows the pane.
    WaitDialogController(QString store, QString program);
    ~WaitDialogController() override;

    bool keepWaiting() override;
    void waitEnded() override;

protected:
    /// Drops the clicks and keys made at a window that did not answer: nobody
    /// knows what they would hit now.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void openPane();
    void closePane();
    static void showPixels();

    const QString m_store, m_program;
    std::unique_ptr<QProcess> m_pane;
    QElapsedTimer m_call; ///< since the first wait of the present call
    QElapsedTimer m_shown;
    bool m_givenUp = false;
};

} // namespace orvo::app

#endif
