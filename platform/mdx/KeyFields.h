// KeyFields.h: the fields of a key, and the key image of a record.
//
// A key image is a string of bytes that compares like the record in the key:
//
//     image   = part for each field of the key, then the part of field 0 unless it is among them
//     part    = 00                                NULL
//             | 01                                false
//             | 02                                true
//             | 01 four bytes                     integer, sign bit turned, big-endian
//             | 01 eight bytes                    date, ordered bits, big-endian
//             | weights 01                        text; weights are 02 .. FE
//             | bytes 01                          block; bytes 00 .. 02 are written as 02, byte
//             | FF                                (in seeks only) a value of another type
//
// Each part tells where it ends, so that an image is never the beginning of another one, and the
// image of the leading values of a key is the beginning of just the images that have those values.
#ifndef ORVO_PLATFORM_MDX_KEYFIELDS_H
#define ORVO_PLATFORM_MDX_KEYFIELDS_H

#include "platform/mdx/Body.h"

#include <string_view>
#include <vector>

namespace orvo::mdx {

/// A key image in memory: after `size` bytes stand eight zero bytes, so that words can be loaded.
class ImageBuffer {
public:
    void clear() noexcept { m_size = 0; }
    size_t size() const noexcept { return m_size; }
    const uint8_t* data() const noexcept { return m_bytes.data(); }
    /// Room for `more` bytes at the end (and the zero bytes); throws std::bad_alloc.
    uint8_t* grow(size_t more) {
        if (m_bytes.size() < m_size + more + 8)
            m_bytes.resize((m_size + more + 8) * 2);
        return m_bytes.data() + m_size;
    }
    void advance(size_t more) noexcept { m_size += more; }
    void finish() { std::memset(grow(0), 0, 8); }

private:
    std::vector<uint8_t> m_bytes;
    size_t m_size = 0;
};

struct KeyPart {
    uint32_t slot;
    uint8_t number;
    uint8_t type;
    bool operator==(const KeyPart&) const = default;
};

class KeyFields {
public:
    /// Reads "a;b;c". MDX_E_FORMAT for an empty description or field name, MDX_E_NOFIELD for a
    /// field the structure (which may be null) lacks.
    static int parse(std::string_view description, const Structure* structure, KeyFields& result);

    bool operator==(const KeyFields& other) const {
        return m_count == other.m_count && m_parts == other.m_parts;
    }
    /// Number of fields the description names.
    unsigned count() const noexcept { return m_count; }

    /// The whole image of a record; gives the size of the key's own part. Throws std::bad_alloc.
    size_t image(const uint8_t* body, ImageBuffer& out) const;
    /// The image of seek values, `count()` of them laid end to end. False if one is of another type
    /// than its field: no record equals the values then.
    bool image(const MDRVar* values, ImageBuffer& out) const;
    /// Up to `size` bytes of the image from offset `from` on; the rest of `out` becomes zero. Gives
    /// their number.
    size_t bytes(const uint8_t* body, size_t from, uint8_t* out, size_t size) const noexcept;
    /// Compares `size` bytes, known to agree with the record up to `from`, with its image: below 0,
    /// 0 (they are the image or begin it), above 0.
    int compare(const uint8_t* image, size_t size, const uint8_t* body, size_t from) const noexcept;

private:
    std::vector<KeyPart> m_parts; ///< with field 0 at the end, unless it is among the others
    unsigned m_count = 0;
};

} // namespace orvo::mdx

#endif
