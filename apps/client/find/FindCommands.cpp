#include "apps/client/find/FindCommands.h"

#include "apps/client/MainWindow.h"
#include "apps/client/find/FindPane.h"
#include "apps/client/history/HistoryCommands.h"
#include "frame/Keys.h"
#include "frame/Vocabulary.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>

namespace orvo::app {

FindCommands::FindCommands(catalogue::LiveCatalogue& live, MainWindow& window,
                           HistoryCommands& history, const QString& iconsPath)
    : m_history(history)
    , m_key(keys::command(QLatin1String(keys::findAll))) {
    const auto search = std::make_shared<catalogue::Search>();
    live.addListener(search);
    m_pane = new FindPane(live, search, iconsPath, &window);
    connect(m_pane, &FindPane::chosen, this, &FindCommands::show);
    connect(m_pane, &FindPane::usesRequested, this, &FindCommands::usesRequested);
    connect(window.addCommand(keys::findAll, window.goMenu()), &QAction::triggered, m_pane,
            &FindPane::open);
    qApp->installEventFilter(this);
}

FindCommands::~FindCommands() {
    delete m_pane; // it works with the catalogue
}

void FindCommands::changed() const {
    m_pane->outdate();
}

/// A text field would take Ctrl+K for "delete to the end of the line", which nobody asks for here.
bool FindCommands::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride &&
        keys::matches(*static_cast<QKeyEvent*>(event), *m_key)) {
        event->ignore();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void FindCommands::show(const catalogue::Found& found) {
    if (found.table == QLatin1String(table::Users)) // no editor has people
        m_history.jump().whenStored(found.table, found.key, [this, login = found.login] {
            m_history.showActionsOf(login);
        });
    else
        m_history.jump().show(found.table, found.key);
}

} // namespace orvo::app
