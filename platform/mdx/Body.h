// Body.h: how the values of a record lie in memory, in images and in raw records.
//
//     body    = values users slots texts
//     values  = (fieldCount + 7) / 8 bytes; bit i % 8 of byte i / 8: field i has a value (not NULL)
//     users   = as many bytes; the user bits
//     slots   = one slot for each field, in their order, without padding:
//               boolean 1 byte (0 or 1), integer 4, date 8 (IEEE double),
//               text and block 4: offset in the body of the first character, 0 for an empty one
//     texts   = for each text or block: length (4 bytes), the bytes, one zero byte
//
// Numbers are little-endian; the slot of a NULL field is zero. In memory the texts may stand in any
// order and leave gaps. A canonical body, the only form outside, has the non-empty texts in the
// order of their fields, without gaps, and ends with the last of them; spare bits are zero; a
// boolean is 0 or 1; a text (not a block) holds no zero byte.
#ifndef ORVO_PLATFORM_MDX_BODY_H
#define ORVO_PLATFORM_MDX_BODY_H

#include "platform/mdx/Bytes.h"
#include "platform/mdx/Structure.h"

namespace orvo::mdx {

/// Longest text or block, and largest body.
constexpr uint32_t maxText = 0x0FFFFFFFu;
constexpr uint32_t maxBody = 0x1FFFFFFFu;

struct TextRef {
    const char* pointer;
    uint32_t length;
};

/// The empty text every NULL or empty field shares. As with every other text its length stands in
/// the four bytes before it.
const char* emptyText() noexcept;

inline bool hasValue(const uint8_t* body, unsigned number) noexcept {
    return (body[number >> 3] >> (number & 7) & 1) != 0;
}

inline void setBit(uint8_t* byte, unsigned number, bool on) noexcept {
    const auto mask = static_cast<uint8_t>(1u << (number & 7));
    *byte = static_cast<uint8_t>(on ? *byte | mask : *byte & ~mask);
}

/// The text of a field that has a value, in a body known to be sound.
inline TextRef textAt(const uint8_t* body, uint32_t slot) noexcept {
    const auto offset = load<uint32_t>(body + slot);
    if (offset == 0)
        return {emptyText(), 0};
    return {reinterpret_cast<const char*>(body + offset), load<uint32_t>(body + offset - 4)};
}

/// Whether these bytes are a canonical body; trusts nothing. `checkZeros` false leaves out the
/// search for zero bytes inside texts, for bodies of this library's own making.
bool isCanonical(const uint8_t* body, uint32_t size, const Structure& structure,
                 bool checkZeros = true) noexcept;

/// Size of the canonical form of a sound body.
uint32_t canonicalSize(const uint8_t* body, const Structure& structure) noexcept;
/// Writes the canonical form to `out`, leaving out the text of field `except` (-1 for none).
/// Gives its size.
uint32_t writeCanonical(const uint8_t* body, const Structure& structure, uint8_t* out,
                        int except = -1) noexcept;

} // namespace orvo::mdx

#endif
