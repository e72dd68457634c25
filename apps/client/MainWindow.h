// MainWindow.h: the client's window: modules as tabs, the log below, the status line.
#ifndef ORVO_APPS_CLIENT_MAINWINDOW_H
#define ORVO_APPS_CLIENT_MAINWINDOW_H

#include <QMainWindow>

class COrvoCliMod;
class CPopMessageBox;
class QTabWidget;

namespace orvo::app {

class LogPane;
class StatusLine;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    MainWindow(const QString& store, const QString& login);

    LogPane* logPane() const { return m_log; }
    StatusLine* statusLine() const { return m_status; }

    /// Places a module in a tab of its own. It stays the caller's to delete; the tab goes with it.
    void addModule(COrvoCliMod* module, const QString& name);
    void setTitle(COrvoCliMod* module, const QString& title);
    int currentModule() const;
    void setCurrentModule(int index);
    /// A message over the whole window; returns at once.
    void showError(const QString& text);

signals:
    void reopenRequested();
    /// The window is about to close: the modules are to be stopped now.
    void closing();

protected:
    void closeEvent(QCloseEvent* event) override;

private slots:
    void errorSeen();

private:
    void makeMenus();

    QTabWidget* m_tabs; // these: children of the window
    LogPane* m_log;
    StatusLine* m_status;
    CPopMessageBox* m_box = nullptr;
};

} // namespace orvo::app

#endif
