#include "platform/mdx/Cp1251.h"

#include "platform/mdx/Bytes.h"
#include "platform/mdx/MdxBuild.h"

#include <array>

namespace orvo::mdx {
namespace {

// Code points of 0x80 .. 0xFF. The one unassigned code, 0x98, stands for itself.
constexpr std::array<uint16_t, 128> codePoints = {
    0x0402, 0x0403, 0x201A, 0x0453, 0x201E, 0x2026, 0x2020, 0x2021, 0x20AC, 0x2030, 0x0409, 0x2039,
    0x040A, 0x040C, 0x040B, 0x040F, 0x0452, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x0098, 0x2122, 0x0459, 0x203A, 0x045A, 0x045C, 0x045B, 0x045F, 0x00A0, 0x040E, 0x045E, 0x0408,
    0x00A4, 0x0490, 0x00A6, 0x00A7, 0x0401, 0x00A9, 0x0404, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x0407,
    0x00B0, 0x00B1, 0x0406, 0x0456, 0x0491, 0x00B5, 0x00B6, 0x00B7, 0x0451, 0x2116, 0x0454, 0x00BB,
    0x0458, 0x0405, 0x0455, 0x0457, 0x0410, 0x0411, 0x0412, 0x0413, 0x0414, 0x0415, 0x0416, 0x0417,
    0x0418, 0x0419, 0x041A, 0x041B, 0x041C, 0x041D, 0x041E, 0x041F, 0x0420, 0x0421, 0x0422, 0x0423,
    0x0424, 0x0425, 0x0426, 0x0427, 0x0428, 0x0429, 0x042A, 0x042B, 0x042C, 0x042D, 0x042E, 0x042F,
    0x0430, 0x0431, 0x0432, 0x0433, 0x0434, 0x0435, 0x0436, 0x0437, 0x0438, 0x0439, 0x043A, 0x043B,
    0x043C, 0x043D, 0x043E, 0x043F, 0x0440, 0x0441, 0x0442, 0x0443, 0x0444, 0x0445, 0x0446, 0x0447,
    0x0448, 0x0449, 0x044A, 0x044B, 0x044C, 0x044D, 0x044E, 0x044F};

constexpr unsigned lowEnd = 0x0500;    // two-byte sequences that matter lie below
constexpr unsigned highStart = 0x2000; // three-byte sequences that matter lie from here ...
constexpr unsigned highEnd = 0x2200;   // ... to here

// Windows-1251 codes of both ranges; '?' where the code page has none.
constexpr auto fromUnicode = [] {
    std::array<char, lowEnd + highEnd - highStart> table{};
    for (char& c : table)
        c = '?';
    for (unsigned i = 0; i < 128; ++i) {
        const unsigned point = codePoints[i];
        const unsigned at = point < lowEnd ? point : point - highStart + lowEnd;
        table[at] = static_cast<char>(0x80 + i);
    }
    return table;
}();

// UTF-8 of 0x80 .. 0xFF: up to three bytes and their number.
struct Sequence {
    char bytes[3];
    uint8_t length;
};
constexpr auto sequences = [] {
    std::array<Sequence, 128> table{};
    for (unsigned i = 0; i < 128; ++i) {
        const unsigned point = codePoints[i];
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
        return point < lowEnd ? fromUnicode[point] : '?';
    }
    if (lead >= 0xE0 && lead < 0xF0 && continues(at, end) && continues(at + 1, end)) {
        const unsigned point = (lead & 15u) << 12 | (at[0] & 63u) << 6 | (at[1] & 63u);
        if (point >= 0x800 && (point < 0xD800 || point >= 0xE000)) {
            at += 2;
            return point >= highStart && point < highEnd ? fromUnicode[point - highStart + lowEnd]
                                                         : '?';
        }
    } else if (lead >= 0xF0 && lead < 0xF5 && continues(at, end) && continues(at + 1, end) &&
               continues(at + 2, end)) {
        const unsigned point =
            (lead & 7u) << 18 | (at[0] & 63u) << 12 | (at[1] & 63u) << 6 | (at[2] & 63u);
        if (point >= 0x10000 && point < 0x110000)
            at += 3;
    }
    return '?';
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
            *out++ = fromUnicode[(at[0] & 31u) << 6 | (at[1] & 63u)];
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
