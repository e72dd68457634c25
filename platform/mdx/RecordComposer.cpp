#include "platform/mdx/RecordComposer.h"

#include "platform/mdx/Cp1251.h"
#include "platform/mdx/Table.h"

#include <algorithm>

namespace orvo::mdx {

RecordComposer::RecordComposer(Array* array)
    : m_array(array)
    , m_structure(array ? array->table->structure() : nullptr) {
    if (m_structure)
        m_body.resize(m_structure->fixedSize() + size_t(1024));
    else
        m_status = MDX_E_ARG;
}

void RecordComposer::begin() noexcept {
    if (m_status != MDX_OK)
        return;
    m_size = m_structure->fixedSize();
    std::memset(m_body.data(), 0, m_size);
    m_last = -1;
    m_open = true;
}

// Whether the field can be written now; converts nothing: the caller's type must be the field's.
bool RecordComposer::begins(int field, uint8_t type) noexcept {
    if (!m_open || m_status != MDX_OK)
        return false;
    if (field <= m_last || static_cast<unsigned>(field) >= m_structure->count()) {
        fail(MDX_E_ARG);
        return false;
    }
    const uint8_t own = m_structure->fields()[field].type;
    if (own != type && (type == MDX_TEXT || type == MDX_BLOCK || holdsBytes(own))) {
        fail(MDX_E_TYPE);
        return false;
    }
    m_last = field;
    return true;
}

template <class T>
void RecordComposer::number(int field, T value) noexcept {
    const MDRFieldDef& def = m_structure->fields()[field];
    uint8_t* slot = m_body.data() + def.slot;
    if (def.type == MDX_BOOLEAN)
        *slot = value != 0 ? 1 : 0;
    else if (def.type == MDX_INTEGER)
        store(slot, static_cast<int32_t>(value));
    else
        store(slot, static_cast<double>(value));
    setBit(m_body.data() + def.number / 8, def.number, true);
}

// `fill` writes at most `room` bytes and gives their number.
template <class Fill>
void RecordComposer::text(int field, size_t room, Fill&& fill) noexcept {
    if (room > maxText || m_size + room + 5 > maxBody) {
        fail(MDX_E_LIMIT);
        return;
    }
    if (const size_t needed = m_size + room + 5; m_body.size() < needed) {
        // Ahead of records of any usual size; a stored file should not be in memory once more.
        constexpr size_t usual = 1 << 20;
        if (guarded([&] {
                m_body.resize(needed < usual ? needed * 2 : needed);
                return MDX_OK;
            }) != MDX_OK) {
            fail(MDX_E_MEMORY);
            return;
        }
    }
    const MDRFieldDef& def = m_structure->fields()[field];
    setBit(m_body.data() + def.number / 8, def.number, true);
    const auto length =
        static_cast<uint32_t>(fill(reinterpret_cast<char*>(m_body.data() + m_size + 4)));
    if (length == 0)
        return; // the slot is zero already
    store(m_body.data() + m_size, length);
    store(m_body.data() + def.slot, m_size + 4);
    m_size += 4 + length + 1;
    m_body[m_size - 1] = 0;
}

void RecordComposer::boolean(int field, bool value) noexcept {
    if (begins(field, MDX_BOOLEAN))
        number(field, int32_t(value));
}

void RecordComposer::integer(int field, int32_t value) noexcept {
    if (begins(field, MDX_INTEGER))
        number(field, value);
}

void RecordComposer::date(int field, double value) noexcept {
    if (!begins(field, MDX_DATE))
        return;
    if (m_structure->fields()[field].type == MDX_INTEGER) {
        const bool isNumber = value == value;
        number(field, isNumber
                          ? static_cast<int32_t>(std::clamp(value, -2147483648.0, 2147483647.0))
                          : int32_t(0));
    } else {
        number(field, value);
    }
}

void RecordComposer::textUtf8(int field, const char* utf8, size_t length) noexcept {
    if (begins(field, MDX_TEXT))
        text(field, length, [&](char* out) { return convertToCp1251(utf8, length, out); });
}

void RecordComposer::text1251(int field, const char* cp1251, size_t length) noexcept {
    if (!begins(field, MDX_TEXT))
        return;
    if (length > 0)
        length = strnlen(cp1251, length);
    text(field, length, [&](char* out) {
        if (length > 0)
            std::memcpy(out, cp1251, length);
        return length;
    });
}

void RecordComposer::block(int field, const void* bytes, size_t length) noexcept {
    if (begins(field, MDX_BLOCK))
        text(field, length, [&](char* out) {
            if (length > 0)
                std::memcpy(out, bytes, length);
            return length;
        });
}

void RecordComposer::end() noexcept {
    if (!m_open)
        return;
    m_open = false;
    if (m_status != MDX_OK)
        return;
    const int status = guarded([&] {
        Table& table = *m_array->table;
        m_numbers.push_back(0);
        Record* record = nullptr;
        try {
            record = table.create(m_size);
        } catch (...) {
            m_numbers.pop_back();
            throw;
        }
        m_numbers.back() = record->number;
        std::memcpy(record->bytes(), m_body.data(), m_size);
        record->set(Record::Canonical, true);
        return MDX_OK;
    });
    if (status != MDX_OK)
        fail(status);
}

int RecordComposer::finish() noexcept {
    m_open = false;
    if (!m_numbers.empty()) {
        const int status = guarded([&] { return m_array->table->postAll(m_numbers); });
        m_numbers.clear();
        m_array->publish();
        if (status != MDX_OK)
            fail(status);
    }
    return m_status;
}

} // namespace orvo::mdx
