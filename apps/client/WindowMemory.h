// WindowMemory.h: how a user left the window on a store, for the next time: place and docks of the
// window, column widths of its panes, the tab, and of each module its splitters, column widths,
// also of its pop-ups, open rows and current row.
//
// Kept in the user's settings, a group for each store and login. What comes from there is only ever
// a wish: sizes are clamped, unknown names and keys passed over, numbers bounded; a damaged file
// means an arrangement as on the first day.
#ifndef ORVO_APPS_CLIENT_WINDOWMEMORY_H
#define ORVO_APPS_CLIENT_WINDOWMEMORY_H

#include <QString>
#include <QStringList>

class QMainWindow;
class QSettings;
class QWidget;

namespace orvo::app {

/// The user's settings of the client. Written atomically; several clients may have them open.
QSettings clientSettings();

/// The columns of a module's trees as on the first day, where nothing is to be remembered. To be
/// called when its trees stand.
void arrangeAsAtFirst(QWidget& module);

class WindowMemory {
public:
    /// `store` is its display name.
    WindowMemory(const QString& store, const QString& login);

    /// `editorsOut`: those that are not in the tabs.
    void saveWindow(const QMainWindow& window, int tab, const QStringList& editorsOut = {}) const;
    /// Leaves the window as it is where nothing is known; gives the tab, 0 if none is known.
    int restoreWindow(QMainWindow& window) const;
    QStringList editorsOut() const;
    /// The column widths of a pane, known by its object name. Those of docks are saved with the
    /// window, and restored for those that it has then.
    void savePane(const QWidget& pane) const;
    void restorePane(const QWidget& pane) const;

    /// The desktop that the user has chosen to see beside the editors: its key; empty: none.
    void saveDesktop(const QString& key) const;
    QString desktop() const;
    /// Of a pane that the window does not have all the time, and so does not remember itself; 0:
    /// not known.
    void savePaneWidth(const QString& pane, int width) const;
    int paneWidth(const QString& pane) const;

    /// A module is known by its name; its views and splitters by their object names.
    void saveModule(const QString& name, const QWidget& module) const;
    /// To be called when its trees stand. A row that is gone is passed over, with what is below it;
    /// of a current row that is gone the nearest row above it becomes current. The columns of a
    /// pop-up get their widths when it is first shown.
    void restoreModule(const QString& name, QWidget& module) const;

private:
    QString m_group;
};

} // namespace orvo::app

#endif
