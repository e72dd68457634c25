// Bytes.h: unaligned little-endian loads and stores, and the guard of the C boundary.
#ifndef ORVO_PLATFORM_MDX_BYTES_H
#define ORVO_PLATFORM_MDX_BYTES_H

#include "frame/OrvoMdx.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>

namespace orvo::mdx {

static_assert(std::endian::native == std::endian::little,
              "records lie in memory as they lie in images, which are little-endian");

template <class T>
inline T load(const void* at) noexcept {
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

template <class T>
inline void store(void* at, T value) noexcept {
    std::memcpy(at, &value, sizeof value);
}

/// The first eight bytes as a number that compares like memcmp.
inline uint64_t loadOrdered(const uint8_t* at) noexcept {
    return __builtin_bswap64(load<uint64_t>(at));
}

/// Runs `work` and turns what it throws into a status: nothing leaves a C function.
template <class Work>
int guarded(Work&& work) noexcept {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return MDX_E_MEMORY;
    } catch (const std::length_error&) {
        return MDX_E_LIMIT;
    }
}

} // namespace orvo::mdx

#endif
