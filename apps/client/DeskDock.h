// DeskDock.h: the pane in which the menu of a desktop is, beside the tabs of the window.
#ifndef ORVO_APPS_CLIENT_DESKDOCK_H
#define ORVO_APPS_CLIENT_DESKDOCK_H

#include <QDockWidget>

#include <functional>
#include <initializer_list>
#include <vector>

namespace orvo::keys {
struct Command;
}

namespace orvo::app {

class DeskDock : public QDockWidget {
public:
    /// Takes the menu; goes when somebody deletes that. The pane's first width is `width`.
    /// `closed` is called when the user closes the pane.
    DeskDock(QWidget* desk, int width, std::function<void()> closed, QWidget* parent);

    /// For an operator: it has no title and cannot be closed or moved.
    void fix();
    /// The keys of these commands of the list close it while it has the focus, whatever they do in
    /// the rest of the window.
    void closeBy(std::initializer_list<const char*> commands);
    /// The pane in which a menu is; null if it is in none.
    static QDockWidget* of(const QWidget* desk);

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    std::function<void()> m_closed;
    std::vector<const keys::Command*> m_closing;
};

} // namespace orvo::app

#endif
