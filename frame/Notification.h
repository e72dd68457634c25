// Notification.h: a notification of the server, parsed, and its way into a local table.
//
// A block of exactly 10 fields tells of one changed record: field 1 the event code, 4 the record's
// `KeyLink`, 5 the source text that names the table, 7 the raw record with the changed fields
// marked.
#ifndef ORVO_FRAME_NOTIFICATION_H
#define ORVO_FRAME_NOTIFICATION_H

#include "frame/OrvoMdx.h"
#include "frame/Vocabulary.h"

#include <QString>

#include <cstdint>

/// A parsed notification. Lives no longer than the block: `key` and `source` point into it. Plain
/// data; orvo::Notification fills and frees one.
struct TEventNciParse {
    MDXCliParam* param = nullptr;
    int32_t action = 0;
    const char* key = "";    ///< Windows-1251, never null
    const char* source = ""; ///< Windows-1251, never null
    QString tableName;       ///< empty if `source` names none
    MDRType recordType{};    ///< no fields if the record came empty, cut or not at all
    MDRData record{};
};

/// Merges an insert: enters a new record with the key and the marked fields. True if the record was
/// new and is now found; false, and nothing changed, if the table has the key already.
bool insertToBaseTable(const TEventNciParse& event, CMDArray* table);
/// Merges an update: the marked fields enter the record of the key, the others stay. True if the
/// record is found afterwards; no record is ever created.
bool updateBaseTable(const TEventNciParse& event, CMDArray* table);

namespace orvo {

/// Parses one block and frees what the parsing allocated. The block stays the host's and must
/// outlive this object.
class Notification {
public:
    explicit Notification(MDXCliParam* param);
    ~Notification();
    Notification(const Notification&) = delete;
    Notification& operator=(const Notification&) = delete;

    /// False for a block that is no table notification: nothing else then has a meaning.
    bool isTableEvent() const { return m_isTableEvent; }
    const TEventNciParse& event() const { return m_event; }
    int32_t action() const { return m_event.action; }
    /// Whether it is about that table, without regard to case.
    bool isFor(const char* tableName) const;
    /// The record's identifier as the trees know it.
    QString key() const { return QString::fromUtf8(m_event.key); }
    /// Whether it has a value for that field.
    bool hasValueFor(const char* field) const;

private:
    TEventNciParse m_event;
    bool m_isTableEvent = false;
};

// The steps of the two merges, for a caller that looks at the record in between. Seeks are on
// key 0. All of them accept null for the table and then give null.

/// The record of the notification's key in the table, or null.
MDRData* findRecord(const TEventNciParse& event, const CMDArray* table);
/// Creates a record with that key (flag 1), merges the marked fields and posts it. Gives the record
/// as found by its key afterwards; null, and nothing changed, if the table had the key already.
MDRData* createAndMerge(const TEventNciParse& event, CMDArray* table);
/// Merges the marked fields into the record of that key and posts it. Gives the record as found by
/// its key afterwards; null if there is none.
MDRData* editAndMerge(const TEventNciParse& event, CMDArray* table);

} // namespace orvo

#endif
