// ScratchTable.h: the one way of writing. A scratch table takes the structure of a server table,
// collects flagged records and goes out in one call; the local tables and the trees follow when the
// server's notifications come.
//
//     ScratchTable out(*m_app->m_session, "MenuFolder");
//     if (!out.fetch())
//         return;
//     out.add(MDX_INSERT).text("KeyLink", key).null("ParentKey").flag("isFolder", true);
//     out.send();
#ifndef ORVO_FRAME_SCRATCHTABLE_H
#define ORVO_FRAME_SCRATCHTABLE_H

#include "frame/OrvoClient.h"
#include "frame/Records.h"

#include <string>

namespace orvo {

/// Sets fields of one record; a field that the table lacks is silently dropped. Every field set is
/// marked as set. The record is posted when the row object ends, at the latest at the end of the
/// full expression that made it, or by post().
class RowWriter {
public:
    /// `table` must outlive this object; `record` is a record of it, or null, and then all is
    /// ignored.
    RowWriter(CMDArray& table, MDRData* record);
    ~RowWriter();
    RowWriter(RowWriter&& other) noexcept;
    RowWriter& operator=(RowWriter&&) = delete;

    RowWriter& text(const char* field, const QString& text);       ///< empty stays empty text
    RowWriter& textOrNull(const char* field, const QString& text); ///< empty becomes NULL
    RowWriter& null(const char* field);
    RowWriter& integer(const char* field, int32_t value);
    RowWriter& flag(const char* field, bool value);
    /// The value of the field of the same name in a record of any table of this structure or
    /// another; NULL if that table lacks it. NULL stays NULL.
    RowWriter& copy(const char* field, const MDRData* source);
    /// Every field of `source`, a record of a table of the same structure, by number, marked as
    /// set.
    RowWriter& copyAll(const MDRData* source);

    /// Posts the record once; later calls do nothing. Gives CMDArray::RecPost's word.
    uint32_t post();
    MDRData* record() const { return m_record; }

private:
    CMDArray* m_table;
    MDRData* m_record;
    uint32_t m_posted = 0;
    bool m_open;
};

/// A scratch table; lives on the stack of one operation and is released on every way out.
class ScratchTable {
public:
    /// Nothing is fetched yet. The session must outlive this object.
    ScratchTable(COrvoCliSes& session, std::string tableName);

    /// Fetches the table's structure; false if the server gave none. `error`, if given, receives
    /// the text.
    bool fetch(QString* error = nullptr);

    /// A new record with that operation flag; nothing happens if the structure is missing.
    RowWriter add(MdxRecordFlag flag);
    /// A new record without a flag (copies for the clipboard).
    RowWriter add();

    /// Whether no record was added.
    bool isEmpty() const { return m_added == 0; }
    /// Sends all records in one call if there are any and if none was sent before; the outcome
    /// comes as notifications. `reply`, if given, may receive a block, the caller's to free.
    void send(MDXCliParam** reply = nullptr);

    /// The array itself: keys, packing, seeks.
    CMDArray& table() { return m_table; }
    const CMDArray& table() const { return m_table; }

private:
    COrvoCliSes& m_session;
    std::string m_name;
    CMDArray m_table;
    int m_added = 0;
    bool m_sent = false;
};

} // namespace orvo

#endif
