// Collation.h: the order of Windows-1251 texts, and the folding of names.
#ifndef ORVO_PLATFORM_MDX_COLLATION_H
#define ORVO_PLATFORM_MDX_COLLATION_H

#include <array>
#include <cstdint>

namespace orvo::mdx {

/// Weight of each character. Upper and lower case weigh the same. Characters that are neither
/// digits nor letters come first by their code, then digits, Latin and Cyrillic letters; letters
/// of the neighbouring alphabets stand beside their Russian relatives. Weights lie between
/// firstWeight and lastWeight, which leaves room for the marks of key images.
extern const std::array<uint8_t, 256> textWeights;
constexpr uint8_t firstWeight = 2;
constexpr uint8_t lastWeight = 0xFE;

/// Lower case of each character; all others map to themselves.
extern const std::array<uint8_t, 256> lowerCase;

} // namespace orvo::mdx

#endif
