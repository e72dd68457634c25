// Pages.h: large blocks of memory for records and key nodes.
#ifndef ORVO_PLATFORM_MDX_PAGES_H
#define ORVO_PLATFORM_MDX_PAGES_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace orvo::mdx {

constexpr size_t hugePage = size_t(2) << 20;

/// Blocks that live until the owner ends. Blocks of whole huge pages are mapped by themselves, and
/// ask the kernel for such pages: much of the cost of a seek in a large table is address
/// translation. They go back to the system as soon as they are free.
class Pages {
public:
    /// A new block, aligned to 64 bytes; throws std::bad_alloc.
    uint8_t* add(size_t size);
    size_t count() const noexcept { return m_blocks.size(); }
    /// Bytes in all blocks.
    size_t bytes() const noexcept { return m_bytes; }

private:
    struct Free {
        size_t mapped = 0; ///< bytes of a mapping; 0: from the heap
        void operator()(uint8_t* block) const noexcept;
    };
    using Block = std::unique_ptr<uint8_t, Free>;
    static Block take(size_t size);

    std::vector<Block> m_blocks;
    size_t m_bytes = 0;
};

} // namespace orvo::mdx

#endif
