// FindCommands.h: "Найти всё" in the menu "Переход" and by its key, and what happens to what is
// chosen.
#ifndef ORVO_APPS_CLIENT_FIND_FINDCOMMANDS_H
#define ORVO_APPS_CLIENT_FIND_FINDCOMMANDS_H

#include "catalogue/LiveCatalogue.h"
#include "catalogue/Search.h"
#include "frame/Keys.h"

namespace orvo::app {

class FindPane;
class HistoryCommands;
class MainWindow;

class FindCommands : public QObject {
    Q_OBJECT
public:
    /// The catalogue is not started yet. All of these outlive the commands.
    FindCommands(catalogue::LiveCatalogue& live, MainWindow& window, HistoryCommands& history,
                 const QString& iconsPath);
    ~FindCommands() override;

    /// A change of the store.
    void changed() const;
    FindPane& pane() const { return *m_pane; }

signals:
    void usesRequested(const orvo::catalogue::Found& found);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void show(const catalogue::Found& found);

    HistoryCommands& m_history;
    const keys::Command* const m_key;
    FindPane* m_pane; ///< child of the window
};

} // namespace orvo::app

#endif
