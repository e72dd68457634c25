#include "platform/mdx/Pages.h"

#include <cstdlib>
#include <new>
#include <sys/mman.h>

namespace orvo::mdx {

void Pages::Free::operator()(uint8_t* block) const noexcept {
    std::free(block);
}

uint8_t* Pages::add(size_t size) {
    const bool huge = size >= hugePage && size % hugePage == 0;
    size = (size + 63) & ~size_t(63);
    m_blocks.emplace_back();
    void* block = std::aligned_alloc(huge ? hugePage : 64, size);
    if (!block) {
        m_blocks.pop_back();
        throw std::bad_alloc();
    }
    m_blocks.back().reset(static_cast<uint8_t*>(block));
    if (huge)
        madvise(block, size, MADV_HUGEPAGE); // a wish; without it all is only slower
    m_bytes += size;
    return static_cast<uint8_t*>(block);
}

} // namespace orvo::mdx
