// FindBytes.h: looking for a few bytes in very many. Nothing of Qt or of the library is needed.
#ifndef ORVO_FRAME_FINDBYTES_H
#define ORVO_FRAME_FINDBYTES_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace orvo {

/// The first place of `part`, which is not empty, from `at` on; `end` if there is none. Sixteen
/// places, or eight, are looked at in one step, by the first and the last byte of the part: a
/// search that every second row answers must not be set up anew for each.
inline const char* findBytes(const char* at, const char* end, std::string_view part) {
    static_assert(std::endian::native == std::endian::little);
    constexpr uint64_t ones = 0x0101010101010101;
    const auto all = [](char letter) { return ones * static_cast<uint8_t>(letter); };
    const auto load = [](const char* from) {
        uint64_t word = 0;
        std::memcpy(&word, from, sizeof word);
        return word;
    };
    const size_t size = part.size();
    const uint64_t first = all(part.front());
    const uint64_t last = all(part.back());
    const auto left = [&] { return static_cast<size_t>(end - at); };
#ifdef __SSE2__
    const __m128i firsts = _mm_set1_epi8(part.front()), lasts = _mm_set1_epi8(part.back());
    const auto load16 = [](const char* from) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    };
    for (; left() >= size + 15; at += 16) {
        const __m128i alike = _mm_and_si128(_mm_cmpeq_epi8(load16(at), firsts),
                                            _mm_cmpeq_epi8(load16(at + size - 1), lasts));
        for (auto bits = static_cast<uint32_t>(_mm_movemask_epi8(alike)); bits; bits &= bits - 1) {
            const char* place = at + std::countr_zero(bits);
            if (std::memcmp(place, part.data(), size) == 0)
                return place;
        }
    }
#endif
    for (; left() >= size + 7; at += 8) {
        // A byte is zero where both letters are right; above the first such there may be others.
        const uint64_t unlike = (load(at) ^ first) | (load(at + size - 1) ^ last);
        for (uint64_t zeros = (unlike - ones) & ~unlike & (ones << 7); zeros; zeros &= zeros - 1) {
            const char* place = at + std::countr_zero(zeros) / 8;
            if (std::memcmp(place, part.data(), size) == 0)
                return place;
        }
    }
    for (; left() >= size; ++at)
        if (std::memcmp(at, part.data(), size) == 0)
            return at;
    return end;
}

} // namespace orvo

#endif
