// Screenshot.h: takes the picture of the window when everything in it is loaded.
#ifndef ORVO_APPS_CLIENT_SCREENSHOT_H
#define ORVO_APPS_CLIENT_SCREENSHOT_H

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <functional>

namespace orvo::client {
class ModuleRegistry;
}

namespace orvo::app {

class MainWindow;

class Screenshot : public QObject {
    Q_OBJECT
public:
    /// What it works with; all of it outlives this object.
    struct Context {
        MainWindow& window;
        const client::ModuleRegistry& modules;
        int expected; ///< number of modules that are to run
        QString file;
        std::function<bool()> settled; ///< whether everything is at rest
    };
    /// Ends the event loop when the picture is written: exit code 0, or 1 after a line on standard
    /// error.
    explicit Screenshot(Context context, QObject* parent = nullptr);

private:
    void look();
    void save();

    const Context m_context;
    QTimer m_timer;
    QElapsedTimer m_total;
    bool m_isArranged = false;
    int m_rest = 0; ///< how long everything has been at rest, in milliseconds
};

} // namespace orvo::app

#endif
