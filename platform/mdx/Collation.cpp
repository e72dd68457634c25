#include "platform/mdx/Collation.h"

#include "platform/mdx/MdxBuild.h"

#include <algorithm>

namespace orvo::mdx {
namespace {

struct Letter {
    uint8_t upper, lower;
};

// Windows-1251 codes in alphabetical order.
constexpr Letter cyrillic[] = {
    {0xC0, 0xE0},                             // А
    {0xC1, 0xE1}, {0xC2, 0xE2}, {0xC3, 0xE3}, // Б В Г
    {0xA5, 0xB4}, {0x81, 0x83},               // Ґ Ѓ
    {0xC4, 0xE4}, {0x80, 0x90},               // Д Ђ
    {0xC5, 0xE5}, {0xA8, 0xB8}, {0xAA, 0xBA}, // Е Ё Є
    {0xC6, 0xE6}, {0xC7, 0xE7}, {0xBD, 0xBE}, // Ж З Ѕ
    {0xC8, 0xE8}, {0xB2, 0xB3}, {0xAF, 0xBF}, // И І Ї
    {0xC9, 0xE9}, {0xA3, 0xBC},               // Й Ј
    {0xCA, 0xEA}, {0x8D, 0x9D},               // К Ќ
    {0xCB, 0xEB}, {0x8A, 0x9A},               // Л Љ
    {0xCC, 0xEC}, {0xCD, 0xED}, {0x8C, 0x9C}, // М Н Њ
    {0xCE, 0xEE}, {0xCF, 0xEF}, {0xD0, 0xF0}, // О П Р
    {0xD1, 0xF1}, {0xD2, 0xF2}, {0x8E, 0x9E}, // С Т Ћ
    {0xD3, 0xF3}, {0xA1, 0xA2},               // У Ў
    {0xD4, 0xF4}, {0xD5, 0xF5}, {0xD6, 0xF6}, // Ф Х Ц
    {0xD7, 0xF7}, {0x8F, 0x9F},               // Ч Џ
    {0xD8, 0xF8}, {0xD9, 0xF9}, {0xDA, 0xFA}, // Ш Щ Ъ
    {0xDB, 0xFB}, {0xDC, 0xFC}, {0xDD, 0xFD}, // Ы Ь Э
    {0xDE, 0xFE}, {0xDF, 0xFF},               // Ю Я
};

constexpr std::array<uint8_t, 256> makeLower() {
    std::array<uint8_t, 256> lower{};
    for (unsigned c = 0; c < 256; ++c)
        lower[c] = static_cast<uint8_t>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    for (const Letter& letter : cyrillic)
        lower[letter.upper] = letter.lower;
    return lower;
}

constexpr std::array<uint8_t, 256> makeWeights() {
    std::array<uint8_t, 256> weights{};
    std::array<bool, 256> isAlnum{};
    for (unsigned c = '0'; c <= '9'; ++c)
        isAlnum[c] = true;
    for (unsigned c = 'a'; c <= 'z'; ++c)
        isAlnum[c] = isAlnum[c - 32] = true;
    for (const Letter& letter : cyrillic)
        isAlnum[letter.upper] = isAlnum[letter.lower] = true;

    uint8_t next = firstWeight;
    for (unsigned c = 0; c < 256; ++c)
        if (!isAlnum[c])
            weights[c] = next++;
    for (unsigned c = '0'; c <= '9'; ++c)
        weights[c] = next++;
    for (unsigned c = 'a'; c <= 'z'; ++c)
        weights[c] = weights[c - 32] = next++;
    for (const Letter& letter : cyrillic)
        weights[letter.upper] = weights[letter.lower] = next++;
    return weights;
}

} // namespace

constexpr std::array<uint8_t, 256> weightTable = makeWeights();
static_assert(weightTable[0xDF] <= lastWeight && weightTable[0xDF] > weightTable['z']);

const std::array<uint8_t, 256> textWeights = weightTable;
const std::array<uint8_t, 256> lowerCase = makeLower();

int compareText(std::string_view a, std::string_view b) {
    const size_t common = std::min(a.size(), b.size());
    for (size_t i = 0; i < common; ++i) {
        const uint8_t x = weightTable[static_cast<uint8_t>(a[i])];
        const uint8_t y = weightTable[static_cast<uint8_t>(b[i])];
        if (x != y)
            return x < y ? -1 : 1;
    }
    return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}

} // namespace orvo::mdx
