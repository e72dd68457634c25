// Layout.h: how the fields of a table lie in the block of a record. For Catalogue's own sources.
//
//     block   = head slot* nodes* date* text*
//     head    = table(1)  0(1)  present(2)        present: bit n is set if field n is not NULL
//     slot    = 4 bytes for each present field, by rising number:
//               a number itself; of a text or date where it lies in the block; of the key and an
//               indexed field the number of its text
//     nodes   = before(4)  behind(4) for each present indexed field, by rising number
//     date    = 8 bytes
//     text    = bytes 0(1)
#ifndef ORVO_CATALOGUE_LAYOUT_H
#define ORVO_CATALOGUE_LAYOUT_H

#include "catalogue/Catalogue.h"

#include <bit>
#include <cstring>

namespace orvo::catalogue {

struct Head {
    uint8_t table;
    uint8_t unused;
    uint16_t present;
};
static_assert(sizeof(Head) == 4);

struct Catalogue::Layout {
    enum Kind : uint8_t { Number, Date, Plain, Indexed };
    static constexpr uint8_t noTarget = 255;

    const store::TableDef* table = nullptr;
    uint8_t number = 0; ///< of the table, and the domain of its keys
    uint16_t indexed = 0;
    std::vector<Kind> kinds;      ///< by field
    std::vector<uint8_t> domains; ///< of indexed fields
    std::vector<uint8_t> targets; ///< tables that links name
    std::vector<int> above;       ///< fields that name what a record stands in, the nearest first

    static const Head& head(const char* block) { return *reinterpret_cast<const Head*>(block); }
    static bool has(const char* block, int field) { return head(block).present >> field & 1; }
    static int rank(uint32_t bits, int field) { return std::popcount(bits & ((1U << field) - 1)); }
    static uint32_t* slotsOf(char* block) { return reinterpret_cast<uint32_t*>(block) + 1; }
    static const uint32_t* slotsOf(const char* block) {
        return reinterpret_cast<const uint32_t*>(block) + 1;
    }
    static uint32_t slot(const char* block, int field) {
        return slotsOf(block)[rank(head(block).present, field)];
    }
    /// The values of indexed fields that a block has, as bits.
    uint32_t links(const char* block) const { return head(block).present & indexed; }
};

/// Hash of a text without regard to case, and whether two are alike; Windows-1251.
uint32_t hashOf(std::string_view text, uint8_t domain);
bool isAlike(const char* held, std::string_view text);

} // namespace orvo::catalogue

#endif
