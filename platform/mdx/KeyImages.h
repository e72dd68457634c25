// KeyImages.h: where the images of many records lie while a key is built from them.
#ifndef ORVO_PLATFORM_MDX_KEYIMAGES_H
#define ORVO_PLATFORM_MDX_KEYIMAGES_H

#include "platform/mdx/Bytes.h"
#include "platform/mdx/Pages.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace orvo::mdx {

/// The images of all records: a head and the image's first bytes, with eight zero bytes after them.
/// Owns them, in blocks that never move. For one thread at a time; std::length_error if there are
/// too many, std::bad_alloc.
///
///  1. A place counts units of eight bytes: the block's number, shifted by blockShift, and the
///     offset in the block. An image with its head and zero bytes is whole in one block.
///  2. m_used <= m_end, both in bytes; they are multiples of eight.
///  3. append is called once at most, with images to which none were appended.
class KeyImages {
public:
    static constexpr size_t maxSize = 248; ///< longer ones go on in the record
    static constexpr size_t room = sizeof(uint16_t) * 2 + maxSize + 8 + 8;

    struct Head {
        uint16_t size;
        uint16_t keySize; ///< of the key's own part, or cut if that goes on in the record
    };
    static constexpr uint16_t cut = UINT16_MAX;

    /// Copies `size` bytes of an image, of which `keySize` are the key's own part; gives its place.
    uint32_t add(const uint8_t* image, size_t size, size_t keySize) {
        if (m_end - m_used < room)
            addBlock();
        uint8_t* at = m_blocks.back() + m_used;
        const size_t kept = std::min(size, maxSize);
        store(at, Head{static_cast<uint16_t>(size > maxSize ? cut : size),
                       keySize > maxSize ? cut : static_cast<uint16_t>(keySize)});
        std::memcpy(at + sizeof(Head), image, kept);
        std::memset(at + sizeof(Head) + kept, 0, 8);
        const size_t place = ((m_blocks.size() - 1) << blockShift) + m_used / 8;
        m_used += (sizeof(Head) + kept + 8 + 7) & ~size_t(7);
        return static_cast<uint32_t>(place);
    }
    /// Takes over the images of another; their places rise by what this gives.
    uint32_t append(KeyImages&& other) {
        const size_t blocks = m_blocks.size();
        if (blocks + other.m_blocks.size() > UINT32_MAX >> blockShift)
            throw std::length_error("records");
        m_blocks.insert(m_blocks.end(), other.m_blocks.begin(), other.m_blocks.end());
        m_appended = std::move(other.m_pages);
        m_used = other.m_used;
        m_end = other.m_end;
        return static_cast<uint32_t>(blocks << blockShift);
    }
    Head head(uint32_t place) const noexcept { return load<Head>(at(place)); }
    const uint8_t* image(uint32_t place) const noexcept { return at(place) + sizeof(Head); }
    const uint8_t* at(uint32_t place) const noexcept {
        return m_blocks[place >> blockShift] + size_t(place & blockMask) * 8;
    }

private:
    static constexpr unsigned blockShift = 18; // of huge pages, in units of eight bytes
    static constexpr uint32_t blockMask = (1u << blockShift) - 1;

    void addBlock() {
        if (m_blocks.size() > UINT32_MAX >> blockShift)
            throw std::length_error("records");
        m_end = m_blocks.empty() ? 16384 : hugePage;
        m_blocks.push_back(nullptr);
        m_blocks.back() = m_pages.add(m_end);
        m_used = 0;
    }

    Pages m_pages, m_appended;
    std::vector<uint8_t*> m_blocks;
    size_t m_used = 0, m_end = 0; ///< of the last block
};

} // namespace orvo::mdx

#endif
