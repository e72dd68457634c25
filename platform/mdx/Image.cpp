#include "platform/mdx/Image.h"

#include "platform/mdx/MdxBuild.h"
#include "platform/mdx/Table.h"

#include <cstdlib>

namespace orvo::mdx {

namespace {

constexpr size_t blockHead = 16; ///< zeros; keeps the alignment of the heap

}

void FreeBlock::operator()(uint8_t* block) const noexcept {
    if (block)
        std::free(block - blockHead);
}

Block allocateBlock(size_t size) noexcept {
    auto* head = static_cast<uint8_t*>(std::malloc(blockHead + size));
    if (!head)
        return nullptr;
    std::memset(head, 0, blockHead);
    return Block(head + blockHead);
}

void shrinkBlock(Block& block, size_t size) noexcept {
    if (void* fitted = std::realloc(block.get() - blockHead, blockHead + size)) {
        static_cast<void>(block.release());
        block.reset(static_cast<uint8_t*>(fitted) + blockHead);
    }
}

size_t fieldsSize(const Structure* structure) noexcept {
    size_t size = 0;
    if (structure)
        for (const MDRFieldDef& field : structure->list())
            size += 2 + std::strlen(field.name);
    return size;
}

uint8_t* writeFields(const Structure* structure, uint8_t* out) noexcept {
    if (!structure)
        return out;
    for (const MDRFieldDef& field : structure->list()) {
        const size_t size = std::strlen(field.name);
        *out++ = field.type;
        *out++ = static_cast<uint8_t>(size);
        std::memcpy(out, field.name, size);
        out += size;
    }
    return out;
}

int readFields(Reader& reader, unsigned count, StructureRef& structure) {
    FieldSpec specs[maxFields];
    for (unsigned i = 0; i < count; ++i) {
        const auto type = reader.number<uint8_t>();
        specs[i] = {reader.text(reader.number<uint8_t>()), type};
    }
    Structure* made = nullptr;
    if (reader.bad() || Structure::make({specs, count}, made) != MDX_OK)
        return MDX_E_FORMAT;
    structure = StructureRef(made);
    return MDX_OK;
}

namespace {

constexpr size_t ahead = 8; // records to prefetch

// Writes the records to `out`; gives the byte after them.
uint8_t* writeRecords(Table& table, uint8_t* out) {
    const RecordPool& pool = table.pool();
    const Structure& structure = *table.structure();
    const auto entries = table.entries();
    for (size_t i = 0; i < entries.size(); ++i) {
        if (i + ahead < entries.size()) {
            const auto* next = reinterpret_cast<const char*>(pool.at(entries[i + ahead]));
            __builtin_prefetch(next);
            __builtin_prefetch(next + 64);
            __builtin_prefetch(next + 128);
        }
        const Record* record = pool.at(entries[i]);
        const uint8_t* body = pool.postedBody(record);
        uint32_t size = pool.postedSize(record);
        if (record->is(Record::Canonical) && !record->is(Record::Edited))
            std::memcpy(out + 4, body, size);
        else
            size = writeCanonical(body, structure, out + 4);
        store(out, size << 3 | record->flag);
        out += 4 + size;
    }
    return out;
}

uint32_t pack(Table& table, bool withRecords, Block& image) {
    const Structure* structure = table.structure();
    size_t room = headSize + fieldsSize(structure);
    for (const Table::Key& key : table.keys())
        room += 3 + key.description.size();
    const uint32_t count = withRecords ? table.postedCount() : 0;
    // At most; what is not written is given back.
    if (count > 0)
        room += table.pool().memory() + size_t(count) * 4;
    image = allocateBlock(room);
    if (!image)
        return 0;
    uint8_t* head = image.get();
    uint8_t* out = writeFields(structure, head + headSize);
    for (const Table::Key& key : table.keys()) {
        *out++ = static_cast<uint8_t>(key.flags);
        store(out, static_cast<uint16_t>(key.description.size()));
        std::memcpy(out + 2, key.description.data(), key.description.size());
        out += 2 + key.description.size();
    }
    if (count > 0)
        out = writeRecords(table, out);
    const auto length = static_cast<size_t>(out - head);
    if (length > UINT32_MAX)
        return 0;
    std::memcpy(head, imageMagic.data(), imageMagic.size());
    store(head + 8, static_cast<uint32_t>(length));
    store(head + 12, count);
    head[16] = static_cast<uint8_t>(structure ? structure->count() : 0);
    head[17] = static_cast<uint8_t>(table.keys().size());
    head[18] = head[19] = 0;
    shrinkBlock(image, length);
    return static_cast<uint32_t>(length);
}

int readRecords(Reader& reader, uint32_t count, Table& table) {
    if (count == 0)
        return MDX_OK;
    const Structure* structure = table.structure();
    // Every record takes some bytes, which bounds what is allocated for their number.
    if (!structure || reader.left() / (4 + structure->fixedSize()) < count || count > INT32_MAX)
        return MDX_E_FORMAT;
    std::vector<uint32_t> order;
    order.reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        const auto head = reader.number<uint32_t>();
        const uint32_t size = head >> 3;
        const uint8_t* body = reader.take(size);
        if (!body || !isRecordFlag(head & 7) || !isCanonical(body, size, *structure))
            return MDX_E_FORMAT;
        Record* record = table.create(size);
        std::memcpy(record->bytes(), body, size);
        record->flag = static_cast<uint8_t>(head & 7);
        order.push_back(record->number);
        table.enter(record, i);
    }
    table.adoptOrder(std::move(order));
    return MDX_OK;
}

int unpack(Table& table, const void* image, uint32_t length) {
    Reader head(image, length);
    if (head.text(imageMagic.size()) != imageMagic)
        return MDX_E_FORMAT;
    const auto total = head.number<uint32_t>();
    const auto count = head.number<uint32_t>();
    const auto fieldCount = head.number<uint8_t>();
    const auto keyCount = head.number<uint8_t>();
    if (head.number<uint16_t>() != 0 || head.bad() || total < headSize || total > length ||
        keyCount > maxKeys)
        return MDX_E_FORMAT;
    Reader reader(static_cast<const uint8_t*>(image) + headSize, total - headSize);
    if (fieldCount > 0) {
        StructureRef structure;
        if (const int status = readFields(reader, fieldCount, structure); status != MDX_OK)
            return status;
        table.setStructure(std::move(structure));
    }
    struct Key {
        uint8_t flags;
        std::string_view name;
    } keys[maxKeys];
    for (unsigned i = 0; i < keyCount; ++i) {
        keys[i].flags = reader.number<uint8_t>();
        keys[i].name = reader.text(reader.number<uint16_t>());
        if (keys[i].name.size() > sizeof MDAKeyDescription::name)
            return MDX_E_FORMAT;
    }
    if (const int status = readRecords(reader, count, table); status != MDX_OK)
        return status;
    if (reader.bad() || reader.left() > 0)
        return MDX_E_FORMAT;
    for (unsigned i = 0; i < keyCount; ++i)
        if (const int status = table.addKey(keys[i].name, keys[i].flags, true); status != MDX_OK)
            return status == MDX_E_NOFIELD ? int(MDX_E_FORMAT) : status;
    return MDX_OK;
}

} // namespace

uint32_t packReply(const MDArray* array, bool withRecords, void** block) {
    if (!block)
        return 0;
    *block = nullptr;
    if (!array)
        return 0;
    uint32_t length = 0;
    guarded([&] {
        Block image;
        length = pack(*arrayOf(array)->table, withRecords, image);
        if (length > 0)
            *block = image.release();
        return MDX_OK;
    });
    return length;
}

} // namespace orvo::mdx

using namespace orvo::mdx;

extern "C" {

uint32_t MDAPack(const MDArray* array, void** image) {
    return packReply(array, true, image);
}

int MDAUnpackN(MDArray* array, const void* image, uint32_t length) {
    if (!array)
        return MDX_E_ARG;
    int status = MDX_E_ARG;
    // The image may lie in the array itself, so that its present content ends last.
    std::unique_ptr<Table> fresh;
    if (image) {
        status = guarded([&]() -> int {
            fresh = std::make_unique<Table>(array);
            return unpack(*fresh, image, length);
        });
    }
    if (status != MDX_OK && guarded([&] {
                                fresh = std::make_unique<Table>(array);
                                return MDX_OK;
                            }) != MDX_OK)
        return status; // no memory even for an empty table: the old content stays
    arrayOf(array)->take(std::move(fresh));
    return status;
}

int MDAUnpack(MDArray* array, const void* image) {
    return MDAUnpackN(array, image,
                      image ? load<uint32_t>(static_cast<const uint8_t*>(image) + 8) : 0);
}

int MDXArrayUnPack(MDArray* array, const void* block, int one) {
    if (!array || one != 1)
        return MDX_E_ARG;
    // Every text and block of a record has its length before it, the shared empty one too.
    const uint32_t length = block ? load<uint32_t>(static_cast<const uint8_t*>(block) - 4) : 0;
    if (auto content = block ? Handover::take(block, length) : nullptr) {
        content->setOwner(array);
        arrayOf(array)->take(std::move(content));
        return MDX_OK;
    }
    return MDAUnpackN(array, block, length);
}

void MDMemFree(void* block) {
    FreeBlock()(static_cast<uint8_t*>(block));
}

} // extern "C"
