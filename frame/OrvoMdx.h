// OrvoMdx.h: the contract of the record library libOrvoMdx.
//
// Conventions, numbered so that the functions below can refer to them.
//
//  1. Status. A function that returns `int` as a status returns MDX_OK (0) on success and one of
//     the negative MDX_E... values otherwise. On failure nothing has changed unless the function
//     says so. No function lets a C++ exception through.
//  2. Handles. MDArray and MDRData pointers are handles owned by the library. A record handle stays
//     valid, at the same address, until the record is deleted or its array is destroyed, cleared by
//     an unpacking, or overwritten by MDACopy. A field handle (MDRField) is valid for every record
//     of the structure it was taken from, and for records of any other array with the same
//     structure; it costs nothing to take and is never freed.
//  3. Null handles. Every function accepts null for any handle and any result address: it then
//     returns MDX_E_ARG, a null handle, or does nothing.
//  4. NULL values. Each field of a record is NULL or has a value. A new record is NULL in all
//     fields. A NULL field reads as type 0 with `null` set (MDRGetVal), as 0 (MDRGetAsInt32), as a
//     pointer to an empty string (MDRGetTextPtr) and as a refusal (MDRGetTextRef).
//  5. Text. All text is Windows-1251, NUL-terminated in the record; lengths leave the terminator
//     out. A text value ends at its first zero byte. Byte blocks may hold any byte and are followed
//     by a zero byte that is not counted.
//  6. References. A text or block that a function hands out points into the record and is valid
//     until the next write to the same record, its deletion, or the end of its array.
//  7. Order. Key order: NULL before every value; empty text before any other text; texts without
//     regard to case, blanks and punctuation first by their code, then digits, then Latin, then
//     Cyrillic letters in alphabetical order (Ё after Е); numbers and dates by value; false before
//     true. Records with equal keys follow each other by the text of field 0, then by their entry
//     into the array. Seek, position and scan use this one order.
//  8. Threads. One thread at a time per array, and per record of it. Different arrays are
//     independent.
#ifndef ORVO_FRAME_ORVOMDX_H
#define ORVO_FRAME_ORVOMDX_H

#include <cstdint>
#include <string>

#ifdef ORVOMDX_LIBRARY
#define ORVOMDX_EXPORT __attribute__((visibility("default")))
#else
#define ORVOMDX_EXPORT
#endif

// ---------------------------------------------------------------------------------------------
// Statuses

enum MdxStatus : int {
    MDX_OK = 0,
    MDX_E_ARG = -2,       ///< a null or unusable argument
    MDX_E_SELF = -3,      ///< CMDArray::Attach of null or of the present array
    MDX_E_FORMAT = -4,    ///< a packed image, raw record or key description that does not hold
    MDX_E_OWNER = -5,     ///< a record of another array
    MDX_E_MEMORY = -1,    ///< out of memory
    MDX_E_NOFIELD = -6,   ///< a key names a field that the array does not have
    MDX_E_DUPLICATE = -7, ///< a second record with the same value in a unique key
    MDX_E_TYPE = -8,      ///< the value does not fit the field's type
    MDX_E_LIMIT = -9,     ///< more fields, keys or records than the library carries
};

/// Value and field types. Other numbers do not occur.
enum MdxType : uint8_t {
    MDX_NONE = 0,
    MDX_BOOLEAN = 1,
    MDX_INTEGER = 5, ///< signed 32 bit
    MDX_DATE = 7,    ///< IEEE double: seconds since 1970-01-01 UTC
    MDX_TEXT = 9,
    MDX_BLOCK = 10,
};

/// Operation flag of a record (MDRSetFlags).
enum MdxRecordFlag : uint8_t { MDX_INSERT = 1, MDX_UPDATE = 2, MDX_DELETE = 4 };

/// Key flags (MDAKeyAdd).
enum MdxKeyFlag : uint32_t { MDX_KEY_UNIQUE = 0, MDX_KEY_MULTI = 8 };

// ---------------------------------------------------------------------------------------------
// Data

/// A tagged value of 14 bytes, without padding: the value list of a seek is several of them laid
/// end to end.
#pragma pack(push, 1)
struct MDRVar {
    uint8_t type; ///< MdxType
    uint8_t null; ///< non-zero: NULL; `type` is then 0
    union {
        uint8_t boolean;
        int32_t integer;
        double date;
        struct {
            uint32_t length;     ///< bytes, without the terminator
            const char* pointer; ///< not owned
        } text;                  ///< text and byte block
        uint8_t bytes[12];
    } value;
};
#pragma pack(pop)
static_assert(sizeof(MDRVar) == 14, "value lists are laid end to end");

struct MDRFieldDef;

/// A field description, not tied to an array. Initialise with MDRTypInit, fill with MDRTypGen, free
/// with MDRTypFree; copying the struct copies no ownership.
struct MDRType {
    uint8_t fieldCount;        ///< number of fields; 0: no description
    const MDRFieldDef* fields; ///< private to the library
};

/// Handle of a field (convention 2).
using MDRField = const MDRFieldDef*;

/// An array of records. Only the three counts are read from outside, and never written.
struct MDArray : MDRType {
    uint32_t keyCount;    ///< number of keys now
    uint32_t recordCount; ///< number of records in key 0; 0 while there is no key

protected:
    MDArray() = default;
    ~MDArray() = default;
};

/// A record. Only `owner` is read from outside. A stand-alone record (MDRRecInit, MDRRecSet) has no
/// owner.
struct MDRData {
    MDArray* owner;
    const uint8_t* body; ///< private to the library
    uint32_t bodySize;   ///< private to the library
    uint32_t number;     ///< private to the library
};

/// A reply or notification block: one record with its own field description, read with
/// MDRFldByNum(prm->array, n) and prm->record. `array->fieldCount` is the block's field count.
struct MDXCliParam {
    MDArray* array;
    MDRData* record;
};

/// Description of a key: field names joined by ";", NUL-terminated unless all 384 bytes are used.
struct MDAKeyDescription {
    char name[384];
    uint32_t reserved; ///< always 0
    uint32_t flags;    ///< MdxKeyFlag
};

extern "C" {

// ---------------------------------------------------------------------------------------------
// Arrays

/// Creates an empty array with no fields and no keys. `reserved` is 0.
ORVOMDX_EXPORT int MDACreate(MDArray** array, int reserved);
/// Frees the array, its records and keys. All handles into it end here.
ORVOMDX_EXPORT void MDADestroy(MDArray* array);
/// Makes `destination` a copy of `source`: structure and records with their user bits and flags.
/// What `destination` held is gone. The copy has no keys; the caller sets them up again.
/// `reserved` is 1.
ORVOMDX_EXPORT int MDACopy(MDArray* destination, const MDArray* source, int reserved);
/// Adds a key at the end of the key list and builds it over the records present. `one` is 1.
/// MDX_E_NOFIELD if a named field does not exist, MDX_E_DUPLICATE if the key is unique and two
/// records have the same value, MDX_E_FORMAT if the description is empty or `reserved` is not 0.
ORVOMDX_EXPORT int MDAKeyAdd(MDArray* array, int one, const MDAKeyDescription* description);
/// Removes that key; later keys move down by one. The records stay.
ORVOMDX_EXPORT int MDAKeyDel(MDArray* array, int key);
/// The record at that position (0 .. recordCount - 1) in the key's order; null past the end, for a
/// negative position and for an unknown key.
ORVOMDX_EXPORT MDRData* MDARec(const MDArray* array, int key, int32_t position);
/// Exact seek and position of the first record not less than the values.
/// `values`: one MDRVar for each field of the key, end to end. A value whose type differs from the
/// field's is compared as NULL if `null` is set or `type` is 0, and otherwise never equals.
/// Returns the first record (convention 7) whose key equals all the values, or null. If `position`
/// is not null it receives the position of the first record that is not less than the values, or
/// -1 if there is none (also for an empty array and an unknown key).
ORVOMDX_EXPORT MDRData* MDARecSeekV(const MDArray* array, int key, const MDRVar* values,
                                    int32_t* position);
/// A new record of the array's structure, all fields NULL, no user bits, no flag, in no key until
/// it is posted. Null if the array has no structure. An unposted record belongs to the array and
/// is freed with it.
ORVOMDX_EXPORT MDRData* MDARecNew(MDArray* array);
/// The record to write to before the next MDARecPost: the same handle. Reads see the new values at
/// once; the keys, and with them seeks and positions, follow at MDARecPost, and until then keep the
/// record where it was. Copying and packing take the values that were posted.
ORVOMDX_EXPORT MDRData* MDARecEdit(MDRData* record);
/// Enters a new or edited record into all keys. `*result`, if given, receives 1 if the record is in
/// the keys afterwards, else 0. MDX_E_DUPLICATE: another record has the value of a unique key; the
/// record is then in no key, and is kept until it is posted with another value or deleted.
ORVOMDX_EXPORT int MDARecPost(MDRData* record, uint32_t* result);
/// Removes the record from all keys and from the array at once. The handle ends here: until a new
/// record takes its place, reads and writes through it are refused with MDX_E_ARG.
ORVOMDX_EXPORT int MDARecDel(MDRData* record);

// ---------------------------------------------------------------------------------------------
// Packed images

/// Length in bytes of a self-contained image of the array with its keys, stored at `*image`; 0 on
/// failure (and `*image` null). Free it with MDMemFree. Only posted records are packed.
ORVOMDX_EXPORT uint32_t MDAPack(const MDArray* array, void** image);
/// Fills the array from an image of MDAPack: structure, records and keys. The image carries its
/// length; `length` is what is at hand, and every byte is checked before it is used. On failure the
/// array is left empty: no fields, no records, no keys.
ORVOMDX_EXPORT int MDAUnpackN(MDArray* array, const void* image, uint32_t length);
/// The same for an image inside this process, of trusted length. Bytes from outside go through
/// MDAUnpackN.
ORVOMDX_EXPORT int MDAUnpack(MDArray* array, const void* image);
/// Fills the array from the block of a server reply (`one` is 1), as MDRGetTextPtr gives it: it has
/// its length before it, which an image of MDAPack has not (MDX_E_FORMAT). A reply of this process
/// hands over its table itself, to the first who asks; to another its block is no image.
ORVOMDX_EXPORT int MDXArrayUnPack(MDArray* array, const void* block, int one);
/// Frees a block that the library allocated. Null is allowed.
ORVOMDX_EXPORT void MDMemFree(void* block);

// ---------------------------------------------------------------------------------------------
// Fields and values

/// The field of that name, without regard to case, or null. An MDArray is an MDRType.
ORVOMDX_EXPORT MDRField MDRFldByName(const MDRType* type, const char* name);
/// The field of that number, or null.
ORVOMDX_EXPORT MDRField MDRFldByNum(const MDRType* type, int number);
/// Copies the value into `value`, all 14 bytes; text and block by reference (convention 6). NULL:
/// `type` 0, `null` 1, and a text field's pointer is an empty string.
ORVOMDX_EXPORT int MDRGetVal(MDRField field, const MDRData* record, MDRVar* value);
/// Stores the value, copying text and block. NULL is `null` set, or `type` 0. Numbers convert among
/// boolean, integer and date; anything else of another type is MDX_E_TYPE.
ORVOMDX_EXPORT int MDRSetVal(MDRField field, MDRData* record, const MDRVar* value);
/// The value as an integer: NULL gives 0, a boolean 0 or 1, a date its whole seconds clamped to the
/// range, a text the decimal number it begins with (0 if none).
ORVOMDX_EXPORT int MDRGetAsInt32(MDRField field, const MDRData* record, int32_t* value);
/// Pointer to the text or block in the record; an empty string for NULL. MDX_E_TYPE for others.
ORVOMDX_EXPORT int MDRGetTextPtr(MDRField field, const MDRData* record, const char** pointer);
/// Length and pointer of a text or block. Non-zero, with nothing set, if the field holds none.
ORVOMDX_EXPORT int MDRGetTextRef(MDRField field, const MDRData* record, uint32_t* length,
                                 const char** pointer);
/// Stores 1 if the field's user bit is set, else 0.
ORVOMDX_EXPORT int MDRIsUser(MDRField field, const MDRData* record, uint8_t* user);
/// Sets (1) or clears (0) the field's user bit, at once: it needs no MDARecPost.
ORVOMDX_EXPORT int MDRSetUser(MDRField field, MDRData* record, int user);
/// Sets the operation flag: 1 insert, 2 update, 4 delete.
ORVOMDX_EXPORT int MDRSetFlags(MDRData* record, uint32_t flags);

// ---------------------------------------------------------------------------------------------
// Stand-alone records: the raw record of a notification

/// Makes the record empty: every read from it is refused.
ORVOMDX_EXPORT void MDRRecInit(MDRData* record);
/// Whether the `length` bytes at `raw` are one well-formed raw record: MDX_OK or MDX_E_FORMAT. To
/// be asked before MDRRecSet for bytes that came from outside.
ORVOMDX_EXPORT int MDRRecCheck(const void* raw, uint32_t length);
/// Makes the record refer to those bytes, which must outlive it. MDX_E_FORMAT, and an empty record,
/// if they do not begin as a raw record.
ORVOMDX_EXPORT int MDRRecSet(MDRData* record, const void* raw);
/// Makes the description empty.
ORVOMDX_EXPORT void MDRTypInit(MDRType* type);
/// Builds the field description that the raw record carries, in place of what the description held.
/// `source` is "NCI"; another source, or an empty record, is MDX_E_ARG. The description, which has
/// been initialised, is empty on failure.
ORVOMDX_EXPORT int MDRTypGen(MDRType* type, const char* source, const MDRData* record);
/// Frees what MDRTypGen allocated and makes the description empty. Safe on an empty one.
ORVOMDX_EXPORT void MDRTypFree(MDRType* type);

} // extern "C"

// An array is a description only for looking up its fields: these three would take away its own.
template <class Array>
void MDRTypInit(Array* array) = delete;
template <class Array>
int MDRTypGen(Array* array, const char* source, const MDRData* record) = delete;
template <class Array>
void MDRTypFree(Array* array) = delete;

// ---------------------------------------------------------------------------------------------

/// The table object of the editors: owns one MDArray. Created, filled and destroyed in place.
class ORVOMDX_EXPORT CMDArray {
public:
    MDArray* array = nullptr; ///< owned; null only if memory ran out
    int32_t status = MDX_OK;  ///< result of the last operation that says so

    CMDArray();
    ~CMDArray();
    CMDArray(const CMDArray&) = delete;
    CMDArray& operator=(const CMDArray&) = delete;

    /// Reads a field. Without such a field only `type` of the value becomes 0; nothing is reported.
    void GetVal(MDRData* record, const char* field, MDRVar& value) const;
    /// Stores a value and marks the field as set. Without such a field nothing happens.
    void SetValF(MDRData* record, const char* field, const MDRVar& value);
    void SetValF(MDRData* record, int field, const MDRVar& value);
    /// 0 if the record is null or not of this array. Otherwise `status` becomes the result of
    /// MDARecPost, and the result is the word it wrote.
    uint32_t RecPost(MDRData* record);
    /// Adds a key over the fields joined by ";" (at most 384 characters are used).
    void KeyAdd(const char* fields, uint32_t flags);
    /// Takes over `other` and destroys the present array. Null or the present one: status
    /// MDX_E_SELF and nothing else.
    void Attach(MDArray* other);
    /// Deletes a record of this array; a record of another one (or null) gives MDX_E_OWNER.
    void RecDel(MDRData* record);
    /// MDARecEdit for a record of this array, else null.
    MDRData* RecEdit(MDRData* record) const;
};

#endif
