// GroupWords.h: what an action did, in words.
#ifndef ORVO_HISTORY_GROUPWORDS_H
#define ORVO_HISTORY_GROUPWORDS_H

#include "history/Reading.h"
#include "history/RecordWords.h"

#include <QString>

#include <vector>

namespace orvo::history {

struct FieldWords {
    QString name;          ///< "Название"
    QString before, after; ///< empty: the record did not exist then
};

/// One change of a group.
struct ChangeWords {
    QString what; ///< "Переименован рабочий стол «КС-3»: было «КС-2»"
    std::vector<FieldWords> fields;
};

struct GroupWords {
    QString what; ///< "Перемещены 4 элемента меню из «Агрегаты» в «Крановая обвязка»"
    QString place; ///< where the records stand that it is about (SharedPlace.h)
    /// Table and key of the first of these; empty where the group was counted.
    std::pair<std::string, std::string> first;
};

/// The group in one line; of one that takes others back what was taken back: "Отменено удаление:
/// элемент меню «Котельная»". Names that a change does not tell are asked of the source.
GroupWords describe(const Group& group, RecordSource& source);
/// What the user did, as a command names it: "переместить «Котельная»".
QString commandWords(const Group& group, RecordSource& source);
/// One of its changes, with old and new values.
ChangeWords describe(const store::Change& change, RecordSource& source);
/// Where the record of a change stands: "Документы / Инструкции".
QString placeOf(const store::Change& change, RecordSource& source);

} // namespace orvo::history

#endif
