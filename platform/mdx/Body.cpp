#include "platform/mdx/Body.h"

namespace orvo::mdx {
namespace {

struct EmptyText {
    uint32_t length = 0;
    char text[4] = {};
};
const EmptyText sharedEmpty;

} // namespace

const char* emptyText() noexcept {
    return sharedEmpty.text;
}

bool isCanonical(const uint8_t* body, uint32_t size, const Structure& structure,
                 bool checkZeros) noexcept {
    if (size < structure.fixedSize())
        return false;
    const uint32_t bitmap = structure.bitmapSize();
    if (const unsigned used = structure.count() & 7u) {
        const auto spare = static_cast<uint8_t>(0xFFu << used);
        if (((body[bitmap - 1] | body[2 * bitmap - 1]) & spare) != 0)
            return false;
    }
    uint64_t next = structure.fixedSize(); // where the next text must begin
    for (const MDRFieldDef& field : structure.list()) {
        const uint8_t* slot = body + field.slot;
        const bool valued = hasValue(body, field.number);
        switch (field.type) {
        case MDX_BOOLEAN:
            if (*slot > (valued ? 1 : 0))
                return false;
            break;
        case MDX_INTEGER:
            if (!valued && load<uint32_t>(slot) != 0)
                return false;
            break;
        case MDX_DATE:
            if (!valued && load<uint64_t>(slot) != 0)
                return false;
            break;
        default: {
            const auto offset = load<uint32_t>(slot);
            if (offset == 0)
                break;
            if (!valued || offset != next + 4 || offset > size)
                return false;
            const auto length = load<uint32_t>(body + offset - 4);
            next = uint64_t(offset) + length + 1;
            if (length == 0 || length > maxText || next > size || body[next - 1] != 0)
                return false;
            if (checkZeros && field.type == MDX_TEXT && std::memchr(body + offset, 0, length))
                return false;
        }
        }
    }
    return next == size;
}

uint32_t canonicalSize(const uint8_t* body, const Structure& structure) noexcept {
    uint32_t size = structure.fixedSize();
    for (const MDRFieldDef& field : structure.list())
        if (holdsBytes(field.type))
            if (const uint32_t length = textAt(body, field.slot).length)
                size += 4 + length + 1;
    return size;
}

uint32_t writeCanonical(const uint8_t* body, const Structure& structure, uint8_t* out,
                        int except) noexcept {
    std::memcpy(out, body, structure.fixedSize());
    uint32_t size = structure.fixedSize();
    for (const MDRFieldDef& field : structure.list()) {
        if (!holdsBytes(field.type))
            continue;
        const TextRef text = textAt(body, field.slot);
        if (text.length == 0 || field.number == except) {
            store<uint32_t>(out + field.slot, 0);
            continue;
        }
        store(out + size, text.length);
        store(out + field.slot, size + 4);
        std::memcpy(out + size + 4, text.pointer, text.length);
        out[size + 4 + text.length] = 0;
        size += 4 + text.length + 1;
    }
    return size;
}

} // namespace orvo::mdx
