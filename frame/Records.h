// Records.h: the recurring moves on record tables, written once: reading fields, comparing texts,
// seeking by key, walking a group, setting up keys. How records are written is in ScratchTable.h,
// how notifications enter a table in Notification.h.
//
// Conventions: a null record, a field that the table lacks, and NULL all read as the empty value of
// the type asked for. Texts come out as QStrings and go in as QStrings; the code page is met here
// and nowhere else. References to record bytes never leave these functions.
#ifndef ORVO_FRAME_RECORDS_H
#define ORVO_FRAME_RECORDS_H

#include "frame/OrvoMdx.h"
#include "frame/RecordText.h"
#include "frame/Vocabulary.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <array>
#include <initializer_list>
#include <utility>

class QTextCodec;

namespace orvo {

// ---------------------------------------------------------------------------------------------
// Text

/// Windows-1251 for the members of the published interface; texts are converted by
/// frame/RecordText.h. Never null, not owned.
QTextCodec* recordCodec();
/// The one comparison without regard to case: keys, row names, table names, words. Null and empty
/// are the same text.
bool sameText(const QString& a, const QString& b);

/// A text value that refers to `bytes`, which must outlive it.
MDRVar textVar(const QByteArray& bytes);
MDRVar nullVar();
MDRVar integerVar(int32_t value);
MDRVar booleanVar(bool value);

// ---------------------------------------------------------------------------------------------
// Reading a field, by name, number or handle. With a handle taken once before a loop
// (MDRFldByName) reads cost no look-up; a handle also reads stand-alone records.

MDRField fieldOf(const MDRData* record, const char* name);
MDRField fieldOf(const MDRData* record, int number);
inline MDRField fieldOf(const MDRData*, MDRField field) {
    return field;
}

/// The value, `type` 0 and `null` 1 if there is none. Text refers to the record's bytes.
MDRVar valueOf(const MDRData* record, MDRField field);
QString textOf(const MDRData* record, MDRField field);
/// The bytes of a text, as they stand in the record.
QByteArray bytesOf(const MDRData* record, MDRField field);
int32_t integerOf(const MDRData* record, MDRField field);
bool flagOf(const MDRData* record, MDRField field);
bool isNull(const MDRData* record, MDRField field);
/// Whether the field's text, decoded, is `text` without regard to case.
bool holdsText(const MDRData* record, MDRField field, const QString& text);
/// NULL or empty text: the two forms of "no parent".
bool isEmptyText(const MDRData* record, MDRField field);

// The same, with a name ("KeyLink") or a number for the field.
template <class F>
MDRVar valueOf(const MDRData* record, F field) {
    return valueOf(record, fieldOf(record, field));
}
template <class F>
QString textOf(const MDRData* record, F field) {
    return textOf(record, fieldOf(record, field));
}
template <class F>
QByteArray bytesOf(const MDRData* record, F field) {
    return bytesOf(record, fieldOf(record, field));
}
template <class F>
int32_t integerOf(const MDRData* record, F field) {
    return integerOf(record, fieldOf(record, field));
}
template <class F>
bool flagOf(const MDRData* record, F field) {
    return flagOf(record, fieldOf(record, field));
}
template <class F>
bool isNull(const MDRData* record, F field) {
    return isNull(record, fieldOf(record, field));
}
template <class F>
bool holdsText(const MDRData* record, F field, const QString& text) {
    return holdsText(record, fieldOf(record, field), text);
}
template <class F>
bool isEmptyText(const MDRData* record, F field) {
    return isEmptyText(record, fieldOf(record, field));
}

// ---------------------------------------------------------------------------------------------
// Keys

/// The values of a seek, in the order of the key's fields; owns the bytes of its texts. Values not
/// given are NULL, so a list of the leading values finds the start of their group:
///
///     seekPosition(table, 3, KeyValues().text(parent))
///
/// Room is for eight, twice what the widest key takes; any further one stays NULL.
class KeyValues {
public:
    KeyValues();
    KeyValues& text(const QString& text);       ///< null and empty give empty text, not NULL
    KeyValues& textOrNull(const QString& text); ///< null and empty give NULL
    KeyValues& bytes(const QByteArray& bytes);  ///< text in the code page of records
    KeyValues& integer(int32_t value);
    KeyValues& null();
    /// Valid while this object lives; moved and copied objects have their own.
    const MDRVar* data() const { return m_values.data(); }

private:
    KeyValues& add(const MDRVar& value);

    // A seek reads as many values as its key has fields. The widest key of the tables has four;
    // one that came with an image from outside may have as many as a description holds names.
    static constexpr size_t Capacity = 192;
    std::array<MDRVar, Capacity> m_values;
    std::array<QByteArray, 8> m_bytes; ///< shared, not copied: the pointers survive a copy
    size_t m_count = 0;
};

/// The number of records reachable by key 0; a table without keys counts as empty. Read it again on
/// every turn of a loop that may change the table.
int recordCount(const MDArray* array);
int recordCount(const CMDArray& table);

/// The record whose key equals the values, or null.
MDRData* seek(const CMDArray& table, int key, const KeyValues& values);
/// The record of that identifier (key 0 is `KeyLink`), or null; an identifier with letters that the
/// code page lacks is no record's.
MDRData* seekKey(const CMDArray& table, const QString& keyLink);
/// The position of the first record not less than the values, -1 if there is none.
int32_t seekPosition(const CMDArray& table, int key, const KeyValues& values);

/// Walks the key's order from a position (a negative one ends at once): calls `visit(record)` until
/// it answers false or the records end. `visit` may change the table only if it then answers false.
template <class Visit>
void walkFrom(const CMDArray& table, int key, int32_t position, Visit&& visit) {
    if (position < 0)
        return;
    for (; position < recordCount(table); ++position) {
        MDRData* record = MDARec(table.array, key, position);
        if (!record || !visit(record))
            return;
    }
}
/// Seeks the values' position and walks from there; `visit` tells by its answer when the group is
/// left.
template <class Visit>
void walkGroup(const CMDArray& table, int key, const KeyValues& values, Visit&& visit) {
    walkFrom(table, key, seekPosition(table, key, values), std::forward<Visit>(visit));
}
/// All records in the order of a key.
template <class Visit>
void walkAll(const CMDArray& table, int key, Visit&& visit) {
    walkFrom(table, key, 0, std::forward<Visit>(visit));
}

/// Gives a fetched table its keys: unique `KeyLink` as key 0, in place of whatever keys it came
/// with, then `further` as keys 1, 2, 3, each a list of fields joined by ";".
void setKeys(CMDArray& table, std::initializer_list<const char*> further = {});

} // namespace orvo

#endif
