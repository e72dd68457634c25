// RevertPlan.h: what taking actions back would do, in the words of a question.
#ifndef ORVO_APPS_CLIENT_HISTORY_REVERTPLAN_H
#define ORVO_APPS_CLIENT_HISTORY_REVERTPLAN_H

#include "history/GroupWords.h"
#include "history/Inverse.h"

#include <QString>
#include <QStringList>

#include <string>
#include <utility>
#include <vector>

namespace orvo::app {

struct RevertPlan {
    history::Inverse inverse;

    struct Write {
        history::ChangeWords words;
        QString place; ///< where its record stands
    };
    std::vector<Write> writes; ///< the first of those in the inverse
    QStringList left;          ///< what stays as it is, and why
    /// A record whose folder is gone, and where it could go instead.
    struct Place {
        std::string missing; ///< folded key of the folder
        QString what;
        bool top = false;                                    ///< it may go to the top level
        std::vector<std::pair<QString, std::string>> others; ///< caption and key
    };
    std::vector<Place> places;
    bool namesTaken = false;   ///< some of what is left bears a name that another has by now
    bool asksToDelete = false; ///< of what others have built on, and
    bool asksToMove = false;   ///< to take a cut back with what others have changed in it
    QStringList builtOn;       ///< what would be deleted, but others have built on it
};

/// Puts the inverse of the plan into words; the writes only if asked for. In any thread.
void describePlan(store::MaintainedStore& store, bool withWrites, RevertPlan* plan);

} // namespace orvo::app

#endif
