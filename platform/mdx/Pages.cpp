#include "platform/mdx/Pages.h"

#include <new>
#include <sys/mman.h>

namespace orvo::mdx {

namespace {

constexpr std::align_val_t alignment{64};

}

void Pages::Free::operator()(uint8_t* block) const noexcept {
    if (mapped > 0)
        munmap(block, mapped);
    else
        ::operator delete(block, alignment);
}

Pages::Block Pages::take(size_t size) {
    if (size < hugePage || size % hugePage != 0) {
        return Block(static_cast<uint8_t*>(::operator new(size, alignment)));
    }
    // Mapped with room to align, and what is too much unmapped again.
    void* mapping =
        mmap(nullptr, size + hugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED)
        throw std::bad_alloc();
    auto* start = static_cast<uint8_t*>(mapping);
    const size_t before = (hugePage - reinterpret_cast<uintptr_t>(start) % hugePage) % hugePage;
    if (before > 0)
        munmap(start, before);
    if (before < hugePage)
        munmap(start + before + size, hugePage - before);
    madvise(start + before, size, MADV_HUGEPAGE); // a wish; without it all is only slower
    return Block(start + before, Free{size});
}

uint8_t* Pages::add(size_t size) {
    size = (size + 63) & ~size_t(63);
    m_blocks.emplace_back();
    try {
        m_blocks.back() = take(size);
    } catch (...) {
        m_blocks.pop_back();
        throw;
    }
    m_bytes += size;
    return m_blocks.back().get();
}

} // namespace orvo::mdx
