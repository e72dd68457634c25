// Pages.h: large blocks of memory for records and key nodes.
#ifndef ORVO_PLATFORM_MDX_PAGES_H
#define ORVO_PLATFORM_MDX_PAGES_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace orvo::mdx {

constexpr size_t hugePage = size_t(2) << 20;

/// Blocks that live until the owner ends. Blocks of whole huge pages ask the kernel for them: most
/// of the cost of a seek in a large table is address translation.
class Pages {
public:
    /// A new block, aligned to 64 bytes; throws std::bad_alloc.
    uint8_t* add(size_t size);
    size_t count() const noexcept { return m_blocks.size(); }
    /// Bytes in all blocks.
    size_t bytes() const noexcept { return m_bytes; }

private:
    struct Free {
        void operator()(uint8_t* block) const noexcept;
    };
    std::vector<std::unique_ptr<uint8_t, Free>> m_blocks;
    size_t m_bytes = 0;
};

} // namespace orvo::mdx

#endif
