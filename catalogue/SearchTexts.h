// SearchTexts.h: the texts of records as the search keeps them, and their parts.
#ifndef ORVO_CATALOGUE_SEARCHTEXTS_H
#define ORVO_CATALOGUE_SEARCHTEXTS_H

#include "catalogue/Catalogue.h"

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::catalogue {

/// A text is the name of the record, endOfName, what else it is found by, endOfRecord.
constexpr char endOfName = '\n';
constexpr char endOfRecord = '\0';

/// Letters made equal, Windows-1251: as keys are compared, and ё is е.
void append(std::string& text, std::string_view cp1251);

/// Parts are three and four letters in a row, as numbers below 2^partBits.
constexpr uint32_t partBits = 17;

inline uint32_t letters(const char* four) {
    uint32_t value = 0;
    std::memcpy(&value, four, sizeof value);
    return value;
}
inline uint32_t partOfThree(uint32_t four) {
    return (four & 0xFFFFFF) * 0x9E3779B1U >> (32 - partBits);
}
inline uint32_t partOfFour(uint32_t four) {
    return four * 0x85EBCA6BU >> (32 - partBits);
}
/// The parts of a word that a block must have; none of a word of one or two letters.
std::vector<uint32_t> partsOf(const std::string& word);

/// Whether a record is found by its text; and that text, without endOfRecord.
bool isSearched(const Record& record);
void appendTexts(const Catalogue& catalogue, const Record& record, std::string& text);
/// What of a resource is in the texts of the elements that name it.
int resourceNameField();
/// Tables in the order in which equally good records are shown.
uint8_t placeOfTable(const Record& record);

} // namespace orvo::catalogue

#endif
