// Value.cpp: reading and writing fields.
#include "platform/mdx/MdxBuild.h"
#include "platform/mdx/Table.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace orvo::mdx {
namespace {

// A read trusts neither the handle to be of the record's structure nor, for a stand-alone record,
// its bytes: nothing outside the body is touched.
bool fits(MDRField field, const MDRData* record) noexcept {
    return field && record && record->body &&
           field->slot + slotWidth(field->type) <= record->bodySize;
}

bool readText(MDRField field, const MDRData* record, TextRef& text) noexcept {
    const auto offset = load<uint32_t>(record->body + field->slot);
    if (offset == 0) {
        text = {emptyText(), 0};
        return true;
    }
    if (offset < 4 || offset >= record->bodySize)
        return false;
    const auto length = load<uint32_t>(record->body + offset - 4);
    if (length >= record->bodySize - offset || record->body[offset + length] != 0)
        return false;
    text = {reinterpret_cast<const char*>(record->body + offset), length};
    return true;
}

int32_t wholeNumber(double value) noexcept {
    if (std::isnan(value))
        return 0;
    return static_cast<int32_t>(
        std::clamp(std::trunc(value), double(INT32_MIN), double(INT32_MAX)));
}

// The decimal number a text begins with, clamped to the range.
int32_t numberIn(TextRef text) noexcept {
    const char* begin = text.pointer;
    const char* const end = begin + text.length;
    if (begin < end && *begin == '+' && begin + 1 < end && begin[1] != '-')
        ++begin;
    int32_t value = 0;
    const auto result = std::from_chars(begin, end, value);
    if (result.ec == std::errc::result_out_of_range)
        return *begin == '-' ? INT32_MIN : INT32_MAX;
    return result.ec == std::errc() ? value : 0;
}

double numberOf(const MDRVar& value) noexcept {
    if (value.type == MDX_BOOLEAN)
        return value.value.boolean != 0 ? 1 : 0;
    return value.type == MDX_INTEGER ? value.value.integer : value.value.date;
}

// The record to write to, if the handle is of its structure.
Record* writable(MDRField field, MDRData* record) noexcept {
    if (!field || !record || !record->owner)
        return nullptr;
    const MDArray* owner = record->owner;
    if (field->number >= owner->fieldCount)
        return nullptr;
    const MDRFieldDef& own = owner->fields[field->number];
    const bool same =
        own.slot == field->slot && own.type == field->type && own.userByte == field->userByte;
    return same ? recordOf(record) : nullptr;
}

void beginWrite(Table& table, Record* record) {
    if (record->is(Record::Posted) && !record->is(Record::Edited))
        table.pool().keepPosted(record);
}

int writeText(Table& table, MDRField field, Record* record, const char* text, uint32_t length) {
    RecordPool& pool = table.pool();
    const Structure& structure = *table.structure();
    const auto offset = load<uint32_t>(record->body + field->slot);
    if (length == 0) {
        if (offset != 0)
            record->set(Record::Canonical, false);
        beginWrite(table, record);
        store<uint32_t>(record->bytes() + field->slot, 0);
    } else if (const uint32_t old = offset ? load<uint32_t>(record->body + offset - 4) : 0;
               length <= old) {
        beginWrite(table, record);
        uint8_t* at = record->bytes() + offset;
        std::memmove(at, text, length); // the text may come from this very record
        at[length] = 0;
        store(at - 4, length);
        if (length < old)
            record->set(Record::Canonical, false);
    } else {
        const uint64_t need = uint64_t(record->bodySize) + 4 + length + 1;
        uint8_t* left = nullptr;
        if (need > std::min(pool.capacity(record), maxBody)) {
            // A new body leaves the gaps behind.
            const uint8_t* present = record->body;
            const uint64_t packed = uint64_t(canonicalSize(present, structure)) + 4 + length + 1;
            if (packed > maxBody)
                return MDX_E_LIMIT;
            beginWrite(table, record);
            left = pool.moveOutside(record, static_cast<uint32_t>(packed + packed / 2));
            record->bodySize = writeCanonical(present, structure, record->bytes(), field->number);
        } else {
            beginWrite(table, record);
        }
        uint8_t* body = record->bytes();
        store(body + record->bodySize, length);
        std::memcpy(body + record->bodySize + 4, text, length);
        store(body + field->slot, record->bodySize + 4);
        record->bodySize += 4 + length + 1;
        body[record->bodySize - 1] = 0;
        record->set(Record::Canonical, false);
        pool.freeOutside(left);
    }
    setBit(record->bytes() + field->number / 8, field->number, true);
    return MDX_OK;
}

void writeNull(Table& table, MDRField field, Record* record) {
    beginWrite(table, record);
    uint8_t* body = record->bytes();
    if (holdsBytes(field->type) && load<uint32_t>(body + field->slot) != 0)
        record->set(Record::Canonical, false);
    std::memset(body + field->slot, 0, slotWidth(field->type));
    setBit(body + field->number / 8, field->number, false);
}

void writeNumber(Table& table, MDRField field, Record* record, const MDRVar& value) {
    beginWrite(table, record);
    uint8_t* slot = record->bytes() + field->slot;
    switch (field->type) {
    case MDX_BOOLEAN:
        *slot = numberOf(value) != 0 ? 1 : 0;
        break;
    case MDX_INTEGER:
        store(slot, wholeNumber(numberOf(value)));
        break;
    default:
        store(slot, numberOf(value));
    }
    setBit(record->bytes() + field->number / 8, field->number, true);
}

} // namespace

uint32_t recordFlags(const MDRData* record) {
    return record && record->owner ? recordOf(record)->flag : 0;
}

} // namespace orvo::mdx

using namespace orvo::mdx;

extern "C" {

int MDRGetVal(MDRField field, const MDRData* record, MDRVar* value) {
    if (!value || !fits(field, record))
        return MDX_E_ARG;
    MDRVar result{};
    const uint8_t* slot = record->body + field->slot;
    const bool valued = hasValue(record->body, field->number);
    result.type = valued ? field->type : uint8_t(MDX_NONE);
    result.null = valued ? 0 : 1;
    if (holdsBytes(field->type)) {
        TextRef text{emptyText(), 0};
        if (valued && !readText(field, record, text))
            return MDX_E_ARG;
        result.value.text.length = text.length;
        result.value.text.pointer = text.pointer;
    } else if (valued) {
        std::memcpy(result.value.bytes, slot, slotWidth(field->type));
    }
    *value = result;
    return MDX_OK;
}

int MDRSetVal(MDRField field, MDRData* data, const MDRVar* value) {
    Record* record = writable(field, data);
    if (!record || !value)
        return MDX_E_ARG;
    return guarded([&]() -> int {
        Table& table = tableOf(record);
        if (value->null != 0 || value->type == MDX_NONE) {
            writeNull(table, field, record);
            return MDX_OK;
        }
        if (!isFieldType(value->type) || holdsBytes(value->type) != holdsBytes(field->type))
            return MDX_E_TYPE;
        if (!holdsBytes(field->type)) {
            writeNumber(table, field, record, *value);
            return MDX_OK;
        }
        if (value->type != field->type)
            return MDX_E_TYPE;
        const char* text = value->value.text.pointer;
        size_t length = value->value.text.length;
        if (!text && length > 0)
            return MDX_E_ARG;
        if (field->type == MDX_TEXT && length > 0)
            length = strnlen(text, length);
        if (length > maxText)
            return MDX_E_LIMIT;
        return writeText(table, field, record, text, static_cast<uint32_t>(length));
    });
}

int MDRGetAsInt32(MDRField field, const MDRData* record, int32_t* value) {
    if (!value || !fits(field, record))
        return MDX_E_ARG;
    if (field->type == MDX_BLOCK)
        return MDX_E_TYPE;
    const uint8_t* slot = record->body + field->slot;
    TextRef text{};
    if (!hasValue(record->body, field->number))
        *value = 0;
    else if (field->type == MDX_BOOLEAN)
        *value = *slot != 0 ? 1 : 0;
    else if (field->type == MDX_INTEGER)
        *value = load<int32_t>(slot);
    else if (field->type == MDX_DATE)
        *value = wholeNumber(load<double>(slot));
    else if (readText(field, record, text))
        *value = numberIn(text);
    else
        return MDX_E_ARG;
    return MDX_OK;
}

int MDRGetTextPtr(MDRField field, const MDRData* record, const char** pointer) {
    if (!pointer || !fits(field, record))
        return MDX_E_ARG;
    if (!holdsBytes(field->type))
        return MDX_E_TYPE;
    TextRef text{emptyText(), 0};
    if (hasValue(record->body, field->number) && !readText(field, record, text))
        return MDX_E_ARG;
    *pointer = text.pointer;
    return MDX_OK;
}

int MDRGetTextRef(MDRField field, const MDRData* record, uint32_t* length, const char** pointer) {
    if (!length || !pointer || !fits(field, record))
        return MDX_E_ARG;
    TextRef text{};
    if (!holdsBytes(field->type) || !hasValue(record->body, field->number))
        return MDX_E_TYPE;
    if (!readText(field, record, text))
        return MDX_E_ARG;
    *length = text.length;
    *pointer = text.pointer;
    return MDX_OK;
}

int MDRIsUser(MDRField field, const MDRData* record, uint8_t* user) {
    if (!user || !fits(field, record))
        return MDX_E_ARG;
    *user = record->body[field->userByte] >> (field->number & 7) & 1;
    return MDX_OK;
}

int MDRSetUser(MDRField field, MDRData* data, int user) {
    Record* record = writable(field, data);
    if (!record)
        return MDX_E_ARG;
    setBit(record->bytes() + field->userByte, field->number, user != 0);
    // No key knows of user bits: they are set at once, like the flag.
    if (uint8_t* posted = tableOf(record).pool().keptBytes(record))
        setBit(posted + field->userByte, field->number, user != 0);
    return MDX_OK;
}

int MDRSetFlags(MDRData* record, uint32_t flags) {
    if (!record || !record->owner ||
        (flags != 0 && flags != MDX_INSERT && flags != MDX_UPDATE && flags != MDX_DELETE))
        return MDX_E_ARG;
    recordOf(record)->flag = static_cast<uint8_t>(flags);
    return MDX_OK;
}

} // extern "C"
