// MdxBuild.h: how the platform makes what OrvoMdx.h only reads: structures, records in bulk, reply
// and notification blocks, raw records. The editors do not include it.
#ifndef ORVO_PLATFORM_MDX_MDXBUILD_H
#define ORVO_PLATFORM_MDX_MDXBUILD_H

#include "frame/OrvoMdx.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace orvo::mdx {

// ---------------------------------------------------------------------------------------------
// Windows-1251 and UTF-8

/// UTF-8 to Windows-1251. What the code page lacks, and bytes that are no UTF-8, become '?'. Ends
/// at the first zero byte.
ORVOMDX_EXPORT std::string toCp1251(std::string_view utf8);
/// Windows-1251 to UTF-8. The one unassigned code, 0x98, becomes U+0098 and comes back from it.
ORVOMDX_EXPORT std::string toUtf8(std::string_view cp1251);
/// -1, 0 or 1: the order of texts in keys (both Windows-1251).
ORVOMDX_EXPORT int compareText(std::string_view a, std::string_view b);

// ---------------------------------------------------------------------------------------------
// Structure and records

/// Appends a field to the structure of an array that has no records and no keys yet.
/// MDX_E_LIMIT past 255 fields, MDX_E_ARG for an unknown type or an empty or repeated name.
ORVOMDX_EXPORT int addField(MDArray* array, const char* name, MdxType type);
/// Name (NUL-terminated) and type of a field; null and MDX_NONE for a null handle.
ORVOMDX_EXPORT const char* fieldName(MDRField field);
ORVOMDX_EXPORT MdxType fieldType(MDRField field);
/// Number of a field in its structure; -1 for a null handle.
ORVOMDX_EXPORT int fieldNumber(MDRField field);

/// Posted records in the order of their entry, whatever keys there are. The count includes none of
/// the unposted ones. Valid until a record is posted or deleted.
ORVOMDX_EXPORT uint32_t postedCount(const MDArray* array);
ORVOMDX_EXPORT MDRData* postedRecord(const MDArray* array, uint32_t entry);
/// Bytes that the keys of the array take, beside its records.
ORVOMDX_EXPORT size_t keyMemory(const MDArray* array);
/// The first invariant of the array, its keys and records (Table.h, KeyTree.h, Record.h) that does
/// not hold; empty if all do. For tests: it looks at every record.
ORVOMDX_EXPORT std::string check(const MDArray* array);
/// The operation flag of a record: 0, 1, 2 or 4.
ORVOMDX_EXPORT uint32_t recordFlags(const MDRData* record);

/// Fills an array record by record, each written once and straight into its place: the fast way in
/// for fetched tables. The array has its structure; it may have keys (they are built when the
/// writer is finished or destroyed). Field numbers must rise within a record; fields not written
/// are NULL.
///
/// Values are copied before a call returns. Of many records a second thread writes the later ones,
/// so until the writer is finished nothing else may use the array, and what failed shows there.
///
///     RecordWriter w(array);
///     while (row) { w.begin(); w.text1251(0, ...); w.integer(3, ...); w.end(); }
///     status = w.finish();
class ORVOMDX_EXPORT RecordWriter {
public:
    explicit RecordWriter(MDArray* array);
    ~RecordWriter();
    RecordWriter(const RecordWriter&) = delete;
    RecordWriter& operator=(const RecordWriter&) = delete;

    void begin();
    void boolean(int field, bool value);
    void integer(int field, int32_t value);
    void date(int field, double value);
    void textUtf8(int field, const char* text, size_t length); ///< converts while copying
    void text1251(int field, const char* text, size_t length);
    void block(int field, const void* bytes, size_t length);
    void end();
    /// Builds the keys; MDX_OK or the first failure (memory, limit, duplicate in a unique key).
    int finish();

private:
    struct Private;
    Private* d; ///< owned
};

// ---------------------------------------------------------------------------------------------
// Blocks

/// A block whose fields, numbered from 0, have these types and are NULL. Null if memory ran out.
ORVOMDX_EXPORT MDXCliParam* paramCreate(const MdxType* types, int count);
ORVOMDX_EXPORT void paramFree(MDXCliParam* param);
ORVOMDX_EXPORT int paramSetInt(MDXCliParam* param, int field, int32_t value);
ORVOMDX_EXPORT int paramSetDate(MDXCliParam* param, int field, double value);
ORVOMDX_EXPORT int paramSetText(MDXCliParam* param, int field, std::string_view text1251);
ORVOMDX_EXPORT int paramSetBlock(MDXCliParam* param, int field, const void* bytes, size_t length);

/// Puts the content of an array, structure, records and keys, into a block field of a reply, and
/// leaves the array empty. The array has no records that are not posted. Nothing is copied: whoever
/// unpacks the block by MDXArrayUnPack, in this process and while the reply lives, gets the content
/// itself, once. To everything else the block is no image.
ORVOMDX_EXPORT int paramSetContent(MDXCliParam* param, int field, MDArray* array);

/// The packed block of a reply: the structure and, if asked for, the records and keys. The same
/// bytes as MDAPack gives. Free with MDMemFree.
ORVOMDX_EXPORT uint32_t packReply(const MDArray* array, bool withRecords, void** block);

/// The raw record of a notification: field descriptions, values and user bits of `record`, as
/// MDRRecSet and MDRTypGen read them. Null and 0 on failure; free with MDMemFree.
ORVOMDX_EXPORT uint32_t rawRecord(const MDRData* record, void** raw);

} // namespace orvo::mdx

#endif
