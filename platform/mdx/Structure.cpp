#include "platform/mdx/Structure.h"

#include "platform/mdx/Bytes.h"
#include "platform/mdx/Collation.h"
#include "platform/mdx/MdxBuild.h"

#include <bit>

namespace orvo::mdx {
namespace {

uint32_t hashName(std::string_view name) noexcept {
    uint32_t hash = 0x811C9DC5u;
    for (const char c : name)
        hash = (hash ^ lowerCase[static_cast<uint8_t>(c)]) * 0x01000193u;
    return hash ^ hash >> 15;
}

bool sameName(const char* stored, std::string_view name) noexcept {
    for (size_t i = 0; i < name.size(); ++i)
        if (lowerCase[static_cast<uint8_t>(stored[i])] != lowerCase[static_cast<uint8_t>(name[i])])
            return false; // also where the stored name ends
    return stored[name.size()] == '\0';
}

} // namespace

bool isFieldType(uint8_t type) noexcept {
    return type == MDX_BOOLEAN || type == MDX_INTEGER || type == MDX_DATE || holdsBytes(type);
}

unsigned slotWidth(uint8_t type) noexcept {
    return type == MDX_BOOLEAN ? 1 : type == MDX_DATE ? 8 : 4;
}

int Structure::make(std::span<const FieldSpec> fields, Structure*& result) {
    result = nullptr;
    if (fields.size() > maxFields)
        return MDX_E_LIMIT;
    size_t nameBytes = 0;
    for (const FieldSpec& field : fields) {
        if (field.name.empty() || !isFieldType(field.type) ||
            field.name.find('\0') != std::string_view::npos)
            return MDX_E_ARG;
        if (field.name.size() > maxFieldName)
            return MDX_E_LIMIT;
        nameBytes += field.name.size() + 1;
    }
    const auto count = static_cast<uint32_t>(fields.size());
    const uint32_t places = std::bit_ceil(count * 2u + 1u);
    const size_t size = sizeof(Structure) + count * sizeof(MDRFieldDef) + places + nameBytes;
    auto* block = static_cast<uint8_t*>(::operator new(size));
    auto* structure = new (block) Structure;
    StructureRef holder(structure);
    auto* defs = reinterpret_cast<MDRFieldDef*>(structure + 1);
    uint8_t* hash = block + sizeof(Structure) + count * sizeof(MDRFieldDef);
    char* names = reinterpret_cast<char*>(hash + places);
    std::memset(hash, 0, places);

    structure->m_count = count;
    structure->m_hashMask = places - 1;
    structure->m_hash = hash;
    uint32_t slot = 2 * structure->bitmapSize();
    for (uint32_t i = 0; i < count; ++i) {
        const FieldSpec& field = fields[i];
        if (structure->find(field.name))
            return MDX_E_ARG;
        std::memcpy(names, field.name.data(), field.name.size());
        names[field.name.size()] = '\0';
        new (defs + i)
            MDRFieldDef{names, slot, static_cast<uint16_t>(structure->bitmapSize() + i / 8),
                        static_cast<uint8_t>(i), field.type};
        uint32_t place = hashName(field.name) & structure->m_hashMask;
        while (hash[place] != 0)
            place = (place + 1) & structure->m_hashMask;
        hash[place] = static_cast<uint8_t>(i + 1);
        slot += slotWidth(field.type);
        names += field.name.size() + 1;
    }
    structure->m_fixedSize = slot;
    structure->ref();
    result = structure;
    return MDX_OK;
}

void Structure::unref() const noexcept {
    if (m_refs.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        this->~Structure();
        ::operator delete(const_cast<Structure*>(this));
    }
}

const MDRFieldDef* Structure::find(std::string_view name) const noexcept {
    uint32_t place = hashName(name) & m_hashMask;
    while (const unsigned entry = m_hash[place]) {
        const MDRFieldDef* def = fields() + (entry - 1);
        if (sameName(def->name, name))
            return def;
        place = (place + 1) & m_hashMask;
    }
    return nullptr;
}

const char* fieldName(MDRField field) {
    return field ? field->name : nullptr;
}

MdxType fieldType(MDRField field) {
    return field ? static_cast<MdxType>(field->type) : MDX_NONE;
}

int fieldNumber(MDRField field) {
    return field ? field->number : -1;
}

} // namespace orvo::mdx

using namespace orvo::mdx;

extern "C" {

MDRField MDRFldByName(const MDRType* type, const char* name) {
    if (!type || !name || !type->fields)
        return nullptr;
    return Structure::of(type->fields)->find(name);
}

MDRField MDRFldByNum(const MDRType* type, int number) {
    if (!type || number < 0 || number >= type->fieldCount)
        return nullptr;
    return type->fields + number;
}

void MDRTypInit(MDRType* type) {
    if (type)
        *type = MDRType{0, nullptr};
}

void MDRTypFree(MDRType* type) {
    if (!type)
        return;
    if (type->fields)
        Structure::of(type->fields)->unref();
    MDRTypInit(type);
}

} // extern "C"
