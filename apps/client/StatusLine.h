// StatusLine.h: the status bar: connection, store, user, and the last failure until it is seen.
//
// It holds no window wide. Where the room ends, names become shorter (the store's path first); how
// much is wrong, what failed and what was done are told in any case.
#ifndef ORVO_APPS_CLIENT_STATUSLINE_H
#define ORVO_APPS_CLIENT_STATUSLINE_H

#include <QPointer>
#include <QStatusBar>
#include <QStringList>
#include <QTimer>

class QLabel;
class QToolButton;

namespace orvo::app {

class ElidedLabel;

class StatusLine : public QStatusBar {
    Q_OBJECT
public:
    StatusLine(const QString& store, const QString& login, QWidget* parent = nullptr);

    /// Shows the state of the connection; a lost one with the time at which that was first told.
    void setConnected(bool up, const QString& reason);
    /// Shows what keeps the window from answering; empty: nothing does.
    void setBusy(const QString& text);
    /// Shows that so many of so many files are copied; 0 of 0: nothing of the kind.
    void setCopying(int done, int all);
    /// Shows that so many changes of others wait, and in the tool tip for what; 0: none do.
    void setHeld(int changes, const QString& why);
    /// What is shown about them; empty if none wait.
    QString held() const;
    /// Shows who else is here, and in the tool tip more about them; empty: nobody.
    void setOthers(const QString& names, const QString& details);
    QString others() const;
    /// Shows how much is wrong with the installation; nothing: not shown.
    void setProblems(size_t errors, size_t warnings);
    /// What is shown about it.
    QString problems() const;
    /// Shows that this user may not change anything, and in the tool tip why; empty: he may.
    void setReadOnly(const QString& why);
    /// Shows for a while what was done.
    void setDone(const QString& text);
    /// Takes back that text, if it is still on show.
    void dropDone(const QString& text);
    /// Shows a failure, which stays until the user clicks it or asks for it by key; later ones are
    /// counted with it. A text that did not fit is shown whole then, and several are listed.
    void setFailure(const QString& text);
    /// Nobody is sent to the log from here on: the window has none.
    void leaveOutLog() { m_hasLog = false; }
    /// The failure on show, without the count; empty if none.
    QString failure() const { return m_text; }
    /// What is shown about the connection.
    QString connection() const;

public slots:
    /// The key for it: reads the failures on show whole, or puts away what is read.
    void readFailure();

signals:
    /// The user wants to see what is wrong.
    void problemsRequested();

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    /// Divides the room among the texts; after each change of one.
    void share();
    /// The failure on show and how many there are, as much of it as `room` has; below 0: all of it.
    QString failureText(int room) const;
    /// Sets the colours that have a meaning, as suits the palette.
    void colour();
    bool isCut() const;
    /// The failures on show, the newest first.
    QString allFailures() const;
    void acknowledge();
    /// They are seen now; shows that text, if it is one.
    void take(const QString& whole);
    /// Shows a text above the line, until it is clicked, or put away by key, or the focus goes to
    /// another part of the window. It takes no focus.
    void showWhole(const QString& text);
    void placeWhole();

    QLabel* m_light; // these: children of the bar
    ElidedLabel* m_connection;
    ElidedLabel* m_storeLabel;
    ElidedLabel* m_userLabel;
    ElidedLabel* m_busy;
    ElidedLabel* m_copying;
    ElidedLabel* m_held;
    ElidedLabel* m_others;
    ElidedLabel* m_readOnly;
    QToolButton* m_problems;
    ElidedLabel* m_done;
    QToolButton* m_failure;
    QPointer<QLabel> m_whole; ///< child of the window, made when first needed
    QString m_doneText;       ///< what m_done was told, whole
    QTimer m_doneTime;
    const QString m_store;
    bool m_isUp = true;
    bool m_hasLog = true;
    bool m_hasErrors = false; ///< among the problems
    QString m_since;          ///< time of the loss; empty: connected
    QString m_text;
    QStringList m_failures; ///< those on show, whole, the newest first; the oldest may be left out
    int m_count = 0;
};

} // namespace orvo::app

#endif
