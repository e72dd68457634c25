// CodePage.h: Windows-1251, the code page of all record texts, as one table both ways. Needs
// neither Qt nor the library; frame/RecordText.h has the conversions of texts.
//
// The one code without a letter, 0x98, stands for the control character U+0098, so that every byte
// comes back from its letter.
#ifndef ORVO_FRAME_CODEPAGE_H
#define ORVO_FRAME_CODEPAGE_H

#include <array>
#include <cstddef>

namespace orvo::codepage {

/// The letters of 0x80 .. 0xFF.
inline constexpr std::array<char16_t, 128> upperHalf = {
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

constexpr char16_t letterOf(char byte) {
    const auto code = static_cast<unsigned char>(byte);
    return code < 0x80 ? code : upperHalf[code - 0x80u];
}

// All letters of the code page lie below lowEnd, or from highStart on below highEnd.
inline constexpr unsigned lowEnd = 0x0500;
inline constexpr unsigned highStart = 0x2000;
inline constexpr unsigned highEnd = 0x2200;

/// What stands for a letter that the code page lacks.
inline constexpr char substitute = '?';

namespace detail {
inline constexpr auto bytes = [] {
    std::array<char, lowEnd + highEnd - highStart> table{};
    for (char& byte : table)
        byte = substitute;
    for (size_t code = 0; code < 0x100; ++code) {
        const char byte = static_cast<char>(code);
        const unsigned letter = letterOf(byte);
        table[letter < lowEnd ? letter : letter - highStart + lowEnd] = byte;
    }
    return table;
}();
} // namespace detail

/// The byte of a letter, `substitute` if there is none.
constexpr char byteOf(unsigned letter) {
    if (letter < lowEnd)
        return detail::bytes[letter];
    return letter >= highStart && letter < highEnd ? detail::bytes[letter - highStart + lowEnd]
                                                   : substitute;
}

constexpr bool isIn(unsigned letter) {
    return letter == static_cast<unsigned char>(substitute) || byteOf(letter) != substitute;
}

/// Letters without a picture of their own (joiners, marks of direction, the mark of byte order),
/// for which an editor puts nothing in place of a substitute. None of them is in the code page.
constexpr bool isInvisible(unsigned letter) {
    struct Range {
        unsigned first, last;
    };
    constexpr Range ranges[] = {
        {0x034F, 0x034F}, {0x061C, 0x061C},   {0x115F, 0x1160},   {0x17B4, 0x17B5},
        {0x180B, 0x180F}, {0x200B, 0x200F},   {0x202A, 0x202E},   {0x2060, 0x206F},
        {0x3164, 0x3164}, {0xFE00, 0xFE0F},   {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0},
        {0xFFF0, 0xFFF8}, {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF}};
    for (const Range& range : ranges)
        if (letter >= range.first && letter <= range.last)
            return true;
    return false;
}

} // namespace orvo::codepage

#endif
