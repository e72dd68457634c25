// Image.h: the packed image of an array and the raw record, as they travel and lie on clipboards.
//
//     image   = "ORVOMDX" 01  length(4)  recordCount(4)  fieldCount(1)  keyCount(1)  00 00
//               field{fieldCount}  key{keyCount}  record{recordCount}
//     field   = type(1)  nameSize(1)  name            type: MdxType; name: Windows-1251, not empty
//     key     = flags(1)  nameSize(2)  name           flags: 0 or 8; name: "a;b;c"
//     record  = head(4)  body                         head: size of the body * 8 + operation flag
//
//     raw     = "ORVOREC" 01  length(4)  bodyOffset(4)  fieldCount(1)  flag(1)  00 00
//               field{fieldCount}  body               bodyOffset: of the body from the start of raw
//
// body is the canonical body of Body.h. Numbers are unsigned and little-endian. `length` counts all
// bytes from the first to the last of image or raw. The eighth byte is the version of the format.
// Records stand in the order of their entry; the order of the keys is not in the image: it follows
// from the records, and is found anew by whoever unpacks.
#ifndef ORVO_PLATFORM_MDX_IMAGE_H
#define ORVO_PLATFORM_MDX_IMAGE_H

#include "platform/mdx/Bytes.h"
#include "platform/mdx/Structure.h"

#include <cstddef>
#include <memory>
#include <string_view>

namespace orvo::mdx {

constexpr std::string_view imageMagic("ORVOMDX\x01", 8);
constexpr std::string_view rawMagic("ORVOREC\x01", 8);
constexpr size_t headSize = 20; ///< of both

/// Images and raw records that a caller frees with MDMemFree. A text or block of a record has its
/// length in the four bytes before it; these have zeros there, so that MDXArrayUnPack, which goes
/// by that length, refuses them.
struct FreeBlock {
    void operator()(uint8_t* block) const noexcept;
};
using Block = std::unique_ptr<uint8_t, FreeBlock>;
Block allocateBlock(size_t size) noexcept; ///< null if memory ran out
/// Gives back what the block has beyond `size` bytes.
void shrinkBlock(Block& block, size_t size) noexcept;

/// A cursor over bytes that are not trusted: what does not fit makes it bad, and reads of a bad
/// cursor give zeros.
class Reader {
public:
    Reader(const void* bytes, size_t size) noexcept
        : m_at(static_cast<const uint8_t*>(bytes))
        , m_left(size) {}

    bool bad() const noexcept { return m_bad; }
    size_t left() const noexcept { return m_left; }
    /// The next `size` bytes, or null.
    const uint8_t* take(size_t size) noexcept {
        if (m_bad || size > m_left) {
            m_bad = true;
            return nullptr;
        }
        const uint8_t* at = m_at;
        m_at += size;
        m_left -= size;
        return at;
    }
    template <class T>
    T number() noexcept {
        const uint8_t* at = take(sizeof(T));
        return at ? load<T>(at) : T{};
    }
    std::string_view text(size_t size) noexcept {
        const uint8_t* at = take(size);
        return at ? std::string_view(reinterpret_cast<const char*>(at), size) : std::string_view();
    }

private:
    const uint8_t* m_at;
    size_t m_left;
    bool m_bad = false;
};

/// Bytes the field descriptions take.
size_t fieldsSize(const Structure* structure) noexcept;
/// Writes them; gives the byte after them.
uint8_t* writeFields(const Structure* structure, uint8_t* out) noexcept;
/// Reads `count` of them; MDX_E_FORMAT if they do not hold. Throws std::bad_alloc.
int readFields(Reader& reader, unsigned count, StructureRef& structure);
/// Whether that is an operation flag a record may have.
inline bool isRecordFlag(unsigned flag) noexcept {
    return flag == 0 || flag == MDX_INSERT || flag == MDX_UPDATE || flag == MDX_DELETE;
}

} // namespace orvo::mdx

#endif
