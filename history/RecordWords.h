// RecordWords.h: records, fields and values in the words of the user interface: the one vocabulary
// for what was written, what could not be written, and what would be.
#ifndef ORVO_HISTORY_RECORDWORDS_H
#define ORVO_HISTORY_RECORDWORDS_H

#include "history/RecordSource.h"

#include <QString>

#include <string>
#include <vector>

namespace orvo::history {

struct Noun {
    enum Gender { Masculine, Feminine, Neuter };
    QString one, few, many; ///< 1 "элемент меню", 2 "элемента меню", 5 "элементов меню"
    Gender gender;
};
/// What a record of the table is called, as far as its values tell.
Noun nounOf(const store::TableDef& table, const Values& values);
/// "4 элемента меню".
QString counted(size_t count, const Noun& noun);
/// " и ещё 4 записи"; empty for none.
QString andMore(size_t count);
/// What something is done to: "папку ресурсов".
Noun accusative(Noun noun);
/// Which of the three forms goes with a number.
QString numeralForm(size_t count, const QString& one, const QString& few, const QString& many);

/// The table whose records a link field names; null if the field is no such link.
const store::TableDef* targetOf(const store::TableDef& table, const store::FieldDef& def);

/// The caption or name of a record; empty if it has none.
QString nameOf(const store::TableDef& table, const Values& values);
/// The values as they are told: the one content of a file is called by its name, which may have
/// changed since.
Values toldValues(const store::TableDef& table, Values values, RecordSource& source);
/// In quotation marks, on one line and not too long.
QString quoted(const QString& text);
/// "рабочий стол «КС-3»"; the key if the record has no name.
QString recordWords(const store::TableDef& table, const Values& values, const std::string& key);
/// A field as people know it, and a value of it. Links show the name of their record; without a
/// source their key.
QString fieldWord(const store::TableDef& table, int field);
QString valueWords(const store::TableDef& table, int field, const store::Value& value,
                   RecordSource* source);
/// Whether the editors show the same for both: they read NULL as an empty text, as 0 and as "no",
/// and write a record whole, so that a field nobody has touched turns from the one into the other.
bool readAlike(const store::Value& one, const store::Value& other);
/// A folder, desktop or element that a record stands below.
struct Above {
    const store::TableDef* table = nullptr;
    std::string key;
    QString name;
};
/// What a record stands right below, by its values; no table: nothing.
Above directlyAbove(const store::TableDef& table, const Values& values);
/// All of these as far as the source knows them, from the top; of a content those of its form or
/// file.
std::vector<Above> allAbove(const store::TableDef& table, Values values, RecordSource* source);
/// Their names with " / " between.
QString joined(const std::vector<Above>& above);
/// The place of a record in these words.
QString placeOf(const store::TableDef& table, Values values, RecordSource* source);

/// What was done, in the past.
enum class Deed { Created, Deleted, Renamed, Moved, Changed, Occupied, Released, Ordered };
/// To so many records: "Создана" (1 or 21 папка), "Созданы" (2), "Создано" (5).
QString deedWord(Deed deed, const Noun& noun, size_t count = 1);
/// That it was taken back: "Отменено удаление:".
QString takenBackWords(Deed deed);
/// "переместить".
QString infinitive(Deed deed);

} // namespace orvo::history

#endif
