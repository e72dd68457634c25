// HistoryAction.h: an action of the history as it is shown.
#ifndef ORVO_APPS_CLIENT_HISTORY_HISTORYACTION_H
#define ORVO_APPS_CLIENT_HISTORY_HISTORYACTION_H

#include <QString>

#include <cstdint>
#include <string>
#include <vector>

namespace orvo::app {

/// A record that an action is about; for an element of a menu with its desktop.
struct HistoryRecord {
    std::string table, key, desktop;
};

struct HistoryAction {
    int64_t group = 0;
    int64_t newest = 0; ///< its last change
    double time = 0;
    std::string login;
    QString who, machine; ///< machine: with the program
    QString what, place;
    QString before, after;  ///< if only one value was changed
    HistoryRecord record;   ///< the first that it is about
    bool isCounted = true;  ///< what holds for all its changes
    bool undone = false;    ///< it has been taken back
    bool forgotten = false; ///< the log does not tell of it any more

    /// One line below an action: a change, or a field of it.
    struct Detail {
        QString what, before, after;
        HistoryRecord record;
        std::vector<Detail> fields;
    };
};

} // namespace orvo::app

#endif
