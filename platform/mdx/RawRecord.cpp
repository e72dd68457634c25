// RawRecord.cpp: stand-alone records, whose bytes carry their own field description.
#include "platform/mdx/Image.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/mdx/Table.h"

#include <string_view>

namespace orvo::mdx {
namespace {

// Checks a whole raw record and reads its description.
int readRaw(const void* raw, uint32_t length, StructureRef& structure) {
    Reader head(raw, length);
    if (head.text(rawMagic.size()) != rawMagic)
        return MDX_E_FORMAT;
    const auto total = head.number<uint32_t>();
    const auto bodyOffset = head.number<uint32_t>();
    const auto fieldCount = head.number<uint8_t>();
    const auto flag = head.number<uint8_t>();
    if (head.number<uint16_t>() != 0 || head.bad() || total != length || fieldCount == 0 ||
        !isRecordFlag(flag))
        return MDX_E_FORMAT;
    Reader reader(static_cast<const uint8_t*>(raw) + headSize, length - headSize);
    if (const int status = readFields(reader, fieldCount, structure); status != MDX_OK)
        return status;
    const auto size = static_cast<uint32_t>(reader.left());
    if (bodyOffset != length - size || !isCanonical(reader.take(size), size, *structure.get()))
        return MDX_E_FORMAT;
    return MDX_OK;
}

} // namespace

uint32_t rawRecord(const MDRData* data, void** raw) {
    if (!raw)
        return 0;
    *raw = nullptr;
    if (!data || !data->owner)
        return 0;
    const Record* record = recordOf(data);
    const Structure& structure = *tableOf(record).structure();
    const size_t bodyOffset = headSize + fieldsSize(&structure);
    const size_t length = bodyOffset + canonicalSize(record->body, structure);
    Block block = allocateBlock(length);
    if (!block)
        return 0;
    uint8_t* bytes = block.get();
    std::memcpy(bytes, rawMagic.data(), rawMagic.size());
    store(bytes + 8, static_cast<uint32_t>(length));
    store(bytes + 12, static_cast<uint32_t>(bodyOffset));
    bytes[16] = static_cast<uint8_t>(structure.count());
    bytes[17] = record->flag;
    bytes[18] = bytes[19] = 0;
    writeFields(&structure, bytes + headSize);
    writeCanonical(record->body, structure, bytes + bodyOffset);
    *raw = block.release();
    return static_cast<uint32_t>(length);
}

} // namespace orvo::mdx

using namespace orvo::mdx;

extern "C" {

void MDRRecInit(MDRData* record) {
    if (record)
        *record = MDRData{nullptr, nullptr, 0, 0};
}

int MDRRecCheck(const void* raw, uint32_t length) {
    if (!raw)
        return MDX_E_ARG;
    return guarded([&] {
        StructureRef structure;
        return readRaw(raw, length, structure);
    });
}

int MDRRecSet(MDRData* record, const void* raw) {
    if (!record)
        return MDX_E_ARG;
    MDRRecInit(record);
    if (!raw)
        return MDX_E_ARG;
    const auto* bytes = static_cast<const uint8_t*>(raw);
    if (std::memcmp(bytes, rawMagic.data(), rawMagic.size()) != 0)
        return MDX_E_FORMAT;
    const auto length = load<uint32_t>(bytes + 8);
    const auto bodyOffset = load<uint32_t>(bytes + 12);
    if (bodyOffset < headSize || bodyOffset >= length)
        return MDX_E_FORMAT;
    // `number` leads back from the body to the start, for MDRTypGen.
    *record = MDRData{nullptr, bytes + bodyOffset, length - bodyOffset, bodyOffset};
    return MDX_OK;
}

int MDRTypGen(MDRType* type, const char* source, const MDRData* record) {
    MDRTypFree(type);
    if (!type || !source || std::string_view(source) != "NCI" || !record || record->owner ||
        !record->body)
        return MDX_E_ARG;
    return guarded([&]() -> int {
        StructureRef structure;
        const int status =
            readRaw(record->body - record->number, record->number + record->bodySize, structure);
        if (status == MDX_OK) {
            type->fieldCount = static_cast<uint8_t>(structure->count());
            type->fields = structure.release()->fields();
        }
        return status;
    });
}

} // extern "C"
