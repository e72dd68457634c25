// LoggedChange.h: a change of the log with its values read, and the sentence that tells of it. For
// what puts groups into words.
#ifndef ORVO_HISTORY_LOGGEDCHANGE_H
#define ORVO_HISTORY_LOGGEDCHANGE_H

#include "history/RecordWords.h"

#include <QString>

#include <string>
#include <utility>
#include <vector>

namespace orvo::history {

struct LoggedChange {
    const store::Change* change = nullptr;  ///< not owned
    const store::TableDef* table = nullptr; ///< null: none of the dictionary
    Values after, before;                   ///< as the log tells
    Deed deed = Deed::Changed;
    std::string from, to;                   ///< Moved: keys of the parents
    const store::TableDef* above = nullptr; ///< Moved: their table
    std::string topFrom, topTo;             ///< Moved: keys of the desktops, if they differ
    bool isTakenBack = false;               ///< what is told is that it was
};

/// The change outlives what is made of it.
LoggedChange logged(const store::Change& change);
/// The other way round: from a change that an undo wrote, the one that it takes back.
store::Change reversed(const store::Change& change);

/// The value of a field by its name; null if there is none.
const store::Value* valueIn(const store::TableDef& table, const Values& values, const char* name);
/// All that is known of the record: as it was right after the change, or before a deletion.
Values known(const LoggedChange& read, RecordSource& source);
/// Whether a change that made or deleted a record placed it right below that of the other change.
bool isPlacedBelow(const LoggedChange& read, const LoggedChange& above);
/// The records right below which it did: their tables and keys.
std::vector<std::pair<const store::TableDef*, std::string>> placesOf(const LoggedChange& read);
/// Whether a cut can have written the one in place of the other: with the same name, under another
/// key, in another place.
bool isCutOf(const LoggedChange& made, const LoggedChange& gone, RecordSource& source);
/// A cut writes anew what it takes away: both changes as the move that was meant.
LoggedChange movedBy(const LoggedChange& made, const LoggedChange& gone);
/// " из «Агрегаты» в «Крановая обвязка»"; what has no name is the top, of the desktop that it
/// names if that is another one.
QString fromTo(const LoggedChange& read, RecordSource& source);
/// "Удалены", or "Отменено удаление:".
QString deedWords(const LoggedChange& read, const Noun& noun, size_t count = 1);
/// "Переименован рабочий стол «КС-3»: было «КС-2»"; "Отменено переименование: рабочий стол «КС-3»,
/// снова «КС-2»".
QString sentence(const LoggedChange& read, RecordSource& source);
/// What a command does something to: "«Котельная»", "папку ресурсов k22".
QString objectWords(const LoggedChange& read, RecordSource& source);

} // namespace orvo::history

#endif
