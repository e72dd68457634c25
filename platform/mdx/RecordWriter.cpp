#include "platform/mdx/Cp1251.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/mdx/Table.h"

#include <algorithm>
#include <vector>

namespace orvo::mdx {

/// The record under way is composed in one buffer, which stays in the cache, and copied to its
/// place when its size is known.
struct RecordWriter::Private {
    Array* array;
    const Structure* structure; ///< null: nothing can be written
    std::vector<uint8_t> body;
    uint32_t size = 0;
    std::vector<uint32_t> numbers;
    int status = MDX_OK;
    bool open = false;
    int last = -1; ///< field written last

    bool begins(int field, uint8_t type);
    template <class T>
    void number(int field, T value);
    template <class Fill>
    void text(int field, size_t room, Fill&& fill);
    void fail(int what) {
        if (status == MDX_OK)
            status = what;
    }
};

// Whether the field can be written now; converts nothing: the caller's type must be the field's.
bool RecordWriter::Private::begins(int field, uint8_t type) {
    if (!open || status != MDX_OK)
        return false;
    if (field <= last || static_cast<unsigned>(field) >= structure->count()) {
        fail(MDX_E_ARG);
        return false;
    }
    const uint8_t own = structure->fields()[field].type;
    if (own != type && (type == MDX_TEXT || type == MDX_BLOCK || holdsBytes(own))) {
        fail(MDX_E_TYPE);
        return false;
    }
    last = field;
    return true;
}

template <class T>
void RecordWriter::Private::number(int field, T value) {
    const MDRFieldDef& def = structure->fields()[field];
    uint8_t* slot = body.data() + def.slot;
    if (def.type == MDX_BOOLEAN)
        *slot = value != 0 ? 1 : 0;
    else if (def.type == MDX_INTEGER)
        store(slot, static_cast<int32_t>(value));
    else
        store(slot, static_cast<double>(value));
    setBit(body.data() + def.number / 8, def.number, true);
}

// `fill` writes at most `room` bytes and gives their number.
template <class Fill>
void RecordWriter::Private::text(int field, size_t room, Fill&& fill) {
    if (room > maxText || size + room + 5 > maxBody) {
        fail(MDX_E_LIMIT);
        return;
    }
    if (const size_t needed = size + room + 5; body.size() < needed) {
        // Ahead of records of any usual size; a stored file should not be in memory once more.
        constexpr size_t usual = 1 << 20;
        if (guarded([&] {
                body.resize(needed < usual ? needed * 2 : needed);
                return MDX_OK;
            }) != MDX_OK) {
            fail(MDX_E_MEMORY);
            return;
        }
    }
    const MDRFieldDef& def = structure->fields()[field];
    setBit(body.data() + def.number / 8, def.number, true);
    const auto length =
        static_cast<uint32_t>(fill(reinterpret_cast<char*>(body.data() + size + 4)));
    if (length == 0)
        return; // the slot is zero already
    store(body.data() + size, length);
    store(body.data() + def.slot, size + 4);
    size += 4 + length + 1;
    body[size - 1] = 0;
}

RecordWriter::RecordWriter(MDArray* array) : d(nullptr) {
    guarded([&] {
        auto made = std::make_unique<Private>();
        made->array = array ? arrayOf(array) : nullptr;
        made->structure = array ? made->array->table->structure() : nullptr;
        if (made->structure)
            made->body.resize(made->structure->fixedSize() + size_t(1024));
        else
            made->status = MDX_E_ARG;
        d = made.release();
        return MDX_OK;
    });
}

RecordWriter::~RecordWriter() {
    finish();
    delete d;
}

void RecordWriter::begin() {
    if (!d || d->status != MDX_OK)
        return;
    d->size = d->structure->fixedSize();
    std::memset(d->body.data(), 0, d->size);
    d->last = -1;
    d->open = true;
}

void RecordWriter::boolean(int field, bool value) {
    if (d && d->begins(field, MDX_BOOLEAN))
        d->number(field, int32_t(value));
}

void RecordWriter::integer(int field, int32_t value) {
    if (d && d->begins(field, MDX_INTEGER))
        d->number(field, value);
}

void RecordWriter::date(int field, double value) {
    if (!d || !d->begins(field, MDX_DATE))
        return;
    if (d->structure->fields()[field].type == MDX_INTEGER) {
        const bool isNumber = value == value;
        d->number(field, isNumber
                             ? static_cast<int32_t>(std::clamp(value, -2147483648.0, 2147483647.0))
                             : int32_t(0));
    } else {
        d->number(field, value);
    }
}

void RecordWriter::textUtf8(int field, const char* text, size_t length) {
    if (d && d->begins(field, MDX_TEXT))
        d->text(field, length, [&](char* out) { return convertToCp1251(text, length, out); });
}

void RecordWriter::text1251(int field, const char* text, size_t length) {
    if (!d || !d->begins(field, MDX_TEXT))
        return;
    if (length > 0)
        length = strnlen(text, length);
    d->text(field, length, [&](char* out) {
        if (length > 0)
            std::memcpy(out, text, length);
        return length;
    });
}

void RecordWriter::block(int field, const void* bytes, size_t length) {
    if (d && d->begins(field, MDX_BLOCK))
        d->text(field, length, [&](char* out) {
            if (length > 0)
                std::memcpy(out, bytes, length);
            return length;
        });
}

void RecordWriter::end() {
    if (!d || !d->open)
        return;
    d->open = false;
    if (d->status != MDX_OK)
        return;
    const int status = guarded([&] {
        Table& table = *d->array->table;
        d->numbers.push_back(0);
        Record* record = nullptr;
        try {
            record = table.create(d->size);
        } catch (...) {
            d->numbers.pop_back();
            throw;
        }
        d->numbers.back() = record->number;
        std::memcpy(record->bytes(), d->body.data(), d->size);
        record->set(Record::Canonical, true);
        return MDX_OK;
    });
    if (status != MDX_OK)
        d->fail(status);
}

int RecordWriter::finish() {
    if (!d)
        return MDX_E_MEMORY;
    d->open = false;
    if (!d->numbers.empty()) {
        const int status = guarded([&] { return d->array->table->postAll(d->numbers); });
        d->numbers.clear();
        d->array->publish();
        if (status != MDX_OK)
            d->fail(status);
    }
    return d->status;
}

} // namespace orvo::mdx
