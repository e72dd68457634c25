// Structure.h: the field description shared by arrays, stand-alone types and field handles.
#ifndef ORVO_PLATFORM_MDX_STRUCTURE_H
#define ORVO_PLATFORM_MDX_STRUCTURE_H

#include "frame/OrvoMdx.h"

#include <atomic>
#include <span>
#include <string_view>
#include <utility>

/// What a field handle points to. It tells where the field lies in a record body (Body.h), so that
/// a read needs nothing else than the handle and the record.
struct MDRFieldDef {
    const char* name;  ///< NUL-terminated, in the block of the structure
    uint32_t slot;     ///< offset of the slot in the body
    uint16_t userByte; ///< offset of the byte with the user bit; the value bit is in number / 8
    uint8_t number;
    uint8_t type; ///< MdxType
};

namespace orvo::mdx {

constexpr unsigned maxFields = 255;
constexpr size_t maxFieldName = 255;

struct FieldSpec {
    std::string_view name;
    uint8_t type;
};

/// True for the types a field may have.
bool isFieldType(uint8_t type) noexcept;
/// Width of a field's slot in the body.
unsigned slotWidth(uint8_t type) noexcept;
inline bool holdsBytes(uint8_t type) noexcept {
    return type == MDX_TEXT || type == MDX_BLOCK;
}

/// An immutable, counted description in one block: this head, the definitions, a hash over the
/// folded names, and the names. `MDRType::fields` points at the definitions, from which the head
/// is found again.
class Structure {
public:
    /// Why a list of fields was refused: MDX_E_LIMIT (too many fields, a name too long) or
    /// MDX_E_ARG (a type that does not exist, an empty or repeated name); MDX_OK otherwise.
    /// The result owns one reference. Throws std::bad_alloc.
    static int make(std::span<const FieldSpec> fields, Structure*& result);

    static const Structure* of(const MDRFieldDef* fields) noexcept {
        return reinterpret_cast<const Structure*>(fields) - 1;
    }
    void ref() const noexcept { m_refs.fetch_add(1, std::memory_order_relaxed); }
    void unref() const noexcept;

    unsigned count() const noexcept { return m_count; }
    uint32_t bitmapSize() const noexcept { return (m_count + 7u) / 8u; }
    /// Bitmaps and slots: the size of a body without texts.
    uint32_t fixedSize() const noexcept { return m_fixedSize; }
    const MDRFieldDef* fields() const noexcept {
        return reinterpret_cast<const MDRFieldDef*>(this + 1);
    }
    std::span<const MDRFieldDef> list() const noexcept { return {fields(), m_count}; }
    /// The field of that name, which has no zeros in it; null if there is none.
    const MDRFieldDef* find(std::string_view name) const noexcept;

private:
    Structure() = default;

    mutable std::atomic<uint32_t> m_refs{1};
    uint32_t m_fixedSize = 0;
    uint32_t m_hashMask = 0;
    uint32_t m_count = 0;
    const uint8_t* m_hash = nullptr; ///< field number + 1, 0 for an empty place
};
static_assert(sizeof(Structure) % alignof(MDRFieldDef) == 0);

/// A counted reference; null is an empty description.
class StructureRef {
public:
    StructureRef() = default;
    /// Takes over one reference.
    explicit StructureRef(const Structure* owned) noexcept : m_structure(owned) {}
    StructureRef(const StructureRef& other) noexcept : m_structure(other.m_structure) {
        if (m_structure)
            m_structure->ref();
    }
    StructureRef(StructureRef&& other) noexcept
        : m_structure(std::exchange(other.m_structure, nullptr)) {}
    StructureRef& operator=(StructureRef other) noexcept {
        std::swap(m_structure, other.m_structure);
        return *this;
    }
    ~StructureRef() {
        if (m_structure)
            m_structure->unref();
    }
    const Structure* get() const noexcept { return m_structure; }
    const Structure* operator->() const noexcept { return m_structure; }
    explicit operator bool() const noexcept { return m_structure != nullptr; }
    const Structure* release() noexcept { return std::exchange(m_structure, nullptr); }

private:
    const Structure* m_structure = nullptr;
};

} // namespace orvo::mdx

#endif
