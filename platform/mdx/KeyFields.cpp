#include "platform/mdx/KeyFields.h"

#include "platform/mdx/Collation.h"

#include <algorithm>
#include <cmath>

namespace orvo::mdx {
namespace {

constexpr uint8_t markNull = 0x00;
constexpr uint8_t markValue = 0x01; // before a number, after a text
constexpr uint8_t markEscape = 0x02;
constexpr uint8_t markAlien = 0xFF;

unsigned putInteger(int32_t value, uint8_t* out) noexcept {
    out[0] = markValue;
    store(out + 1, __builtin_bswap32(static_cast<uint32_t>(value) ^ 0x80000000u));
    return 5;
}

unsigned putDate(double value, uint8_t* out) noexcept {
    if (value == 0)
        value = 0; // -0 is 0
    auto bits = std::isnan(value) ? 0x7FF8000000000000u : std::bit_cast<uint64_t>(value);
    bits ^= (bits >> 63) != 0 ? ~uint64_t(0) : uint64_t(1) << 63;
    out[0] = markValue;
    store(out + 1, __builtin_bswap64(bits));
    return 9;
}

// The part of a field that is no text or block: up to 9 bytes.
unsigned putNumber(const KeyPart& part, const uint8_t* body, uint8_t* out) noexcept {
    const uint8_t* slot = body + part.slot;
    switch (part.type) {
    case MDX_BOOLEAN:
        out[0] = *slot != 0 ? 0x02 : 0x01;
        return 1;
    case MDX_INTEGER:
        return putInteger(load<int32_t>(slot), out);
    default:
        return putDate(load<double>(slot), out);
    }
}

inline uint64_t weight(uint64_t characters, unsigned byte) noexcept {
    return uint64_t(textWeights[characters >> (8 * byte) & 0xFF]) << (8 * byte);
}

inline void putWeights(const char* text, size_t length, uint8_t* out) noexcept {
    // Eight table look-ups a store; left to itself the compiler gathers them in vectors, slowly.
    for (; length >= 8; length -= 8, text += 8, out += 8) {
        const auto c = load<uint64_t>(text);
        store(out, weight(c, 0) | weight(c, 1) | weight(c, 2) | weight(c, 3) | weight(c, 4) |
                       weight(c, 5) | weight(c, 6) | weight(c, 7));
    }
    while (length-- > 0)
        *out++ = textWeights[static_cast<uint8_t>(*text++)];
}

// Both need room for twice the length and one byte.
size_t putText(const KeyPart& part, const char* text, size_t length, uint8_t* out) noexcept {
    if (part.type == MDX_TEXT) {
        putWeights(text, length, out);
        out[length] = markValue;
        return length + 1;
    }
    uint8_t* at = out;
    for (size_t i = 0; i < length; ++i) {
        const auto byte = static_cast<uint8_t>(text[i]);
        if (byte <= markEscape)
            *at++ = markEscape;
        *at++ = byte;
    }
    *at++ = markValue;
    return static_cast<size_t>(at - out);
}

// Hands the image from `from` on, piece by piece, to `take(bytes, size)` or, for texts, to
// `takeText(text, size)`, until one of them gives false.
template <class Take, class TakeText>
void walk(const std::vector<KeyPart>& parts, const uint8_t* body, size_t from, Take&& take,
          TakeText&& takeText) noexcept {
    for (const KeyPart& part : parts) {
        if (!hasValue(body, part.number)) {
            if (from > 0)
                --from;
            else if (!take(&markNull, 1u))
                return;
            continue;
        }
        if (part.type == MDX_TEXT) {
            const TextRef text = textAt(body, part.slot);
            if (from > text.length) {
                from -= text.length + size_t(1);
                continue;
            }
            if (from < text.length && !takeText(text.pointer + from, text.length - from))
                return;
            from = 0;
            if (!take(&markValue, 1u))
                return;
            continue;
        }
        if (part.type == MDX_BLOCK) {
            const TextRef text = textAt(body, part.slot);
            for (uint32_t i = 0; i < text.length; ++i) {
                const uint8_t pair[2] = {markEscape, static_cast<uint8_t>(text.pointer[i])};
                const size_t size = pair[1] <= markEscape ? 2 : 1;
                if (from >= size)
                    from -= size;
                else {
                    if (!take(pair + 2 - size + from, size - from))
                        return;
                    from = 0;
                }
            }
            if (from > 0)
                --from;
            else if (!take(&markValue, 1u))
                return;
            continue;
        }
        uint8_t number[9];
        const size_t size = putNumber(part, body, number);
        if (from >= size) {
            from -= size;
            continue;
        }
        if (!take(number + from, size - from))
            return;
        from = 0;
    }
}

} // namespace

int KeyFields::parse(std::string_view description, const Structure* structure, KeyFields& result) {
    result = {};
    // An image may bring zeros, which no field's name has.
    if (description.empty() || description.find('\0') != std::string_view::npos)
        return MDX_E_FORMAT;
    bool hasFirst = false;
    for (size_t at = 0; at <= description.size();) {
        const size_t end = std::min(description.find(';', at), description.size());
        const std::string_view name = description.substr(at, end - at);
        if (name.empty())
            return MDX_E_FORMAT;
        const MDRFieldDef* def = structure ? structure->find(name) : nullptr;
        if (!def)
            return MDX_E_NOFIELD;
        result.m_parts.push_back({def->slot, def->number, def->type});
        hasFirst |= def->number == 0;
        at = end + 1;
    }
    result.m_count = static_cast<unsigned>(result.m_parts.size());
    if (!hasFirst) {
        const MDRFieldDef& first = *structure->fields();
        result.m_parts.push_back({first.slot, first.number, first.type});
    }
    return MDX_OK;
}

size_t KeyFields::image(const uint8_t* body, ImageBuffer& out) const {
    out.clear();
    size_t keySize = 0;
    for (size_t i = 0; i < m_parts.size(); ++i) {
        const KeyPart& part = m_parts[i];
        if (i == m_count)
            keySize = out.size();
        if (!hasValue(body, part.number)) {
            *out.grow(1) = markNull;
            out.advance(1);
        } else if (holdsBytes(part.type)) {
            const TextRef text = textAt(body, part.slot);
            out.advance(
                putText(part, text.pointer, text.length, out.grow(size_t(text.length) * 2 + 1)));
        } else {
            out.advance(putNumber(part, body, out.grow(9)));
        }
    }
    out.finish();
    return m_parts.size() == m_count ? out.size() : keySize;
}

bool KeyFields::image(const MDRVar* values, ImageBuffer& out) const {
    out.clear();
    bool fits = true;
    for (unsigned i = 0; i < m_count; ++i) {
        const KeyPart& part = m_parts[i];
        MDRVar value; // the caller's list is packed, and may lie anywhere
        std::memcpy(&value, reinterpret_cast<const char*>(values) + i * sizeof value, sizeof value);
        if (value.null != 0 || value.type == MDX_NONE) {
            *out.grow(1) = markNull;
            out.advance(1);
        } else if (value.type != part.type) {
            *out.grow(1) = markAlien;
            out.advance(1);
            fits = false;
        } else if (holdsBytes(part.type)) {
            const char* text = value.value.text.pointer;
            size_t length = text ? value.value.text.length : 0;
            if (part.type == MDX_TEXT && length > 0)
                length = strnlen(text, length);
            out.advance(putText(part, text, length, out.grow(length * 2 + 1)));
        } else if (part.type == MDX_BOOLEAN) {
            *out.grow(1) = value.value.boolean != 0 ? 0x02 : 0x01;
            out.advance(1);
        } else if (part.type == MDX_INTEGER) {
            out.advance(putInteger(value.value.integer, out.grow(5)));
        } else {
            out.advance(putDate(value.value.date, out.grow(9)));
        }
    }
    out.finish();
    return fits;
}

size_t KeyFields::bytes(const uint8_t* body, size_t from, uint8_t* out,
                        size_t size) const noexcept {
    const size_t wanted = size;
    walk(
        m_parts, body, from,
        [&](const uint8_t* at, size_t n) {
            n = std::min(n, size);
            std::memcpy(out, at, n);
            out += n;
            size -= n;
            return size > 0;
        },
        [&](const char* text, size_t n) {
            n = std::min(n, size);
            putWeights(text, n, out);
            out += n;
            size -= n;
            return size > 0;
        });
    std::memset(out, 0, size);
    return wanted - size;
}

int KeyFields::compare(const uint8_t* image, size_t size, const uint8_t* body,
                       size_t from) const noexcept {
    const uint8_t* at = image + from;
    const uint8_t* const end = image + size;
    int result = 0;
    if (from >= size)
        return 0;
    walk(
        m_parts, body, from,
        [&](const uint8_t* piece, size_t n) {
            n = std::min(n, static_cast<size_t>(end - at));
            result = std::memcmp(at, piece, n);
            at += n;
            return result == 0 && at < end;
        },
        [&](const char* text, size_t n) {
            n = std::min(n, static_cast<size_t>(end - at));
            for (; n >= 8; n -= 8, text += 8, at += 8) {
                uint8_t weights[8];
                putWeights(text, 8, weights);
                if (load<uint64_t>(weights) != load<uint64_t>(at)) {
                    result = loadOrdered(at) < loadOrdered(weights) ? -1 : 1;
                    return false;
                }
            }
            for (size_t i = 0; i < n; ++i) {
                const uint8_t weight = textWeights[static_cast<uint8_t>(text[i])];
                if (at[i] != weight) {
                    result = at[i] < weight ? -1 : 1;
                    return false;
                }
            }
            at += n;
            return at < end;
        });
    return result;
}

} // namespace orvo::mdx
