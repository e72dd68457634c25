#include "platform/mdx/Cp1251.h"

#include "frame/CodePage.h"
#include "platform/mdx/Bytes.h"
#include "platform/mdx/MdxBuild.h"

#include <array>

namespace orvo::mdx {
namespace {

// UTF-8 of 0x80 .. 0xFF: up to three bytes and their number.
struct Sequence {
    char bytes[3];
    uint8_t length;
};
constexpr auto sequences = [] {
    std::array<Sequence, 128> table{};
    for (unsigned i = 0; i < 128; ++i) {
        const unsigned point = codepage::upperHalf[i];
        if (point < 0x800)
            table[i] = {
                {static_cast<char>(0xC0 | point >> 6), static_cast<char>(0x80 | (point & 63)), 0},
                2};
        else
            table[i] = {{static_cast<char>(0xE0 | point >> 12),
                         static_cast<char>(0x80 | (point >> 6 & 63)),
                         static_cast<char>(0x80 | (point & 63))},
                        3};
    }
    return table;
}();

constexpr uint64_t highBits = 0x8080808080808080u;

bool continues(const uint8_t* at, const uint8_t* end) {
    return at < end && (*at & 0xC0) == 0x80;
}

// One character that is not ASCII, from `at`: its code in the code page, and how far it reaches.
char decode(const uint8_t*& at, const uint8_t* end) {
    const unsigned lead = *at++;
    if (lead >= 0xC2 && lead < 0xE0 && continues(at, end)) {
        const unsigned point = (lead & 31u) << 6 | (*at++ & 63u);
        return codepage::byteOf(point);
    }
    if (lead >= 0xE0 && lead < 0xF0 && continues(at, end) && continues(at + 1, end)) {
        const unsigned point = (lead & 15u) << 12 | (at[0] & 63u) << 6 | (at[1] & 63u);
        if (point >= 0x800 && (point < 0xD800 || point >= 0xE000)) {
            at += 2;
            return codepage::byteOf(point);
        }
    } else if (lead >= 0xF0 && lead < 0xF5 && continues(at, end) && continues(at + 1, end) &&
               continues(at + 2, end)) {
        const unsigned point =
            (lead & 7u) << 18 | (at[0] & 63u) << 12 | (at[1] & 63u) << 6 | (at[2] & 63u);
        if (point >= 0x10000 && point < 0x110000)
            at += 3;
    }
    return codepage::substitute;
}

} // namespace

size_t convertToCp1251(const char* utf8, size_t length, char* out) noexcept {
    const auto* at = reinterpret_cast<const uint8_t*>(utf8);
    const uint8_t* end = at + length;
    char* const start = out;
    while (at < end) {
        if (end - at >= 8) {
            const auto word = load<uint64_t>(at);
            // No high bit and no zero byte: eight characters at once.
            if (((word | (word - 0x0101010101010101u)) & highBits) == 0) {
                store(out, word);
                at += 8;
                out += 8;
                continue;
            }
        }
        if (*at == 0)
            break;
        if (*at < 0x80) {
            *out++ = static_cast<char>(*at++);
        } else if ((*at == 0xD0 || *at == 0xD1) && continues(at + 1, end)) {
            // Nearly all of Russian.
            *out++ = codepage::byteOf((at[0] & 31u) << 6 | (at[1] & 63u));
            at += 2;
        } else {
            *out++ = decode(at, end);
        }
    }
    return static_cast<size_t>(out - start);
}

std::string toCp1251(std::string_view utf8) {
    std::string result(utf8.size(), '\0');
    result.resize(convertToCp1251(utf8.data(), utf8.size(), result.data()));
    return result;
}

std::string toUtf8(std::string_view cp1251) {
    std::string result(cp1251.size() * 3, '\0');
    char* out = result.data();
    const char* at = cp1251.data();
    const char* const end = at + cp1251.size();
    while (at < end) {
        if (end - at >= 8) {
            const auto word = load<uint64_t>(at);
            if ((word & highBits) == 0) {
                store(out, word);
                at += 8;
                out += 8;
                continue;
            }
        }
        const auto c = static_cast<uint8_t>(*at++);
        if (c < 0x80) {
            *out++ = static_cast<char>(c);
        } else {
            const Sequence& s = sequences[c - 0x80u];
            std::memcpy(out, s.bytes, 3); // the buffer has three bytes for each character
            out += s.length;
        }
    }
    result.resize(static_cast<size_t>(out - result.data()));
    return result;
}

} // namespace orvo::mdx
