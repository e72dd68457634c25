// Array.cpp: the array functions of OrvoMdx.h.
#include "platform/mdx/MdxBuild.h"
#include "platform/mdx/Table.h"

#include <algorithm>

namespace orvo::mdx {

void Array::publish() noexcept {
    const Structure* structure = table->structure();
    fieldCount = structure ? static_cast<uint8_t>(structure->count()) : 0;
    fields = structure ? structure->fields() : nullptr;
    keyCount = static_cast<uint32_t>(table->keys().size());
    recordCount = keyCount == 0 ? 0 : table->postedCount();
}

void Array::take(std::unique_ptr<Table> other) noexcept {
    table = std::move(other);
    publish();
}

std::unique_ptr<Array> makeArray() {
    auto array = std::make_unique<Array>();
    array->take(std::make_unique<Table>(array.get()));
    return array;
}

int addField(MDArray* array, const char* name, MdxType type) {
    if (!array || !name)
        return MDX_E_ARG;
    return guarded([&]() -> int {
        Array* self = arrayOf(array);
        if (!self->table->isBlank())
            return MDX_E_ARG;
        std::vector<FieldSpec> specs;
        if (const Structure* present = self->table->structure())
            for (const MDRFieldDef& def : present->list())
                specs.push_back({def.name, def.type});
        specs.push_back({name, type});
        Structure* made = nullptr;
        if (const int status = Structure::make(specs, made); status != MDX_OK)
            return status;
        self->table->setStructure(StructureRef(made));
        self->publish();
        return MDX_OK;
    });
}

uint32_t postedCount(const MDArray* array) {
    return array ? arrayOf(array)->table->postedCount() : 0;
}

MDRData* postedRecord(const MDArray* array, uint32_t entry) {
    if (!array)
        return nullptr;
    Table& table = *arrayOf(array)->table;
    const auto entries = table.entries();
    return entry < entries.size() ? table.record(entries[entry]) : nullptr;
}

size_t keyMemory(const MDArray* array) {
    return array ? arrayOf(array)->table->keyMemory() : 0;
}

} // namespace orvo::mdx

using namespace orvo::mdx;

extern "C" {

int MDACreate(MDArray** array, int reserved) {
    if (!array || reserved != 0)
        return MDX_E_ARG;
    return guarded([&] {
        *array = makeArray().release();
        return MDX_OK;
    });
}

void MDADestroy(MDArray* array) {
    delete arrayOf(array);
}

int MDACopy(MDArray* destination, const MDArray* source, int reserved) {
    if (!destination || !source || destination == source || reserved != 1)
        return MDX_E_ARG;
    return guarded([&]() -> int {
        Table& from = *arrayOf(source)->table;
        auto copy = std::make_unique<Table>(destination);
        if (from.structure()) {
            from.structure()->ref();
            copy->setStructure(StructureRef(from.structure()));
        }
        std::vector<uint32_t> numbers;
        numbers.reserve(from.postedCount());
        for (const uint32_t number : from.entries()) {
            const Record* old = from.record(number);
            const uint8_t* body = from.pool().postedBody(old);
            const uint32_t size = from.pool().postedSize(old);
            Record* record = copy->create(size);
            std::memcpy(record->bytes(), body, size);
            record->flag = old->flag;
            record->set(Record::Canonical, old->is(Record::Canonical) && !old->is(Record::Edited));
            numbers.push_back(record->number);
        }
        const int status = copy->postAll(numbers);
        if (status == MDX_OK)
            arrayOf(destination)->take(std::move(copy));
        return status;
    });
}

int MDAKeyAdd(MDArray* array, int one, const MDAKeyDescription* description) {
    if (!array || one != 1 || !description)
        return MDX_E_ARG;
    return guarded([&]() -> int {
        if (description->reserved != 0)
            return MDX_E_FORMAT;
        const std::string_view name(description->name,
                                    strnlen(description->name, sizeof description->name));
        const int status = arrayOf(array)->table->addKey(name, description->flags, false);
        arrayOf(array)->publish();
        return status;
    });
}

int MDAKeyDel(MDArray* array, int key) {
    if (!array || key < 0 || static_cast<uint32_t>(key) >= array->keyCount)
        return MDX_E_ARG;
    arrayOf(array)->table->deleteKey(static_cast<size_t>(key));
    arrayOf(array)->publish();
    return MDX_OK;
}

MDRData* MDARec(const MDArray* array, int key, int32_t position) {
    if (!array || position < 0)
        return nullptr;
    MDRData* result = nullptr;
    guarded([&] {
        if (const KeyTree* tree = arrayOf(array)->table->tree(key))
            result = tree->at(static_cast<uint32_t>(position));
        return MDX_OK;
    });
    return result;
}

MDRData* MDARecSeekV(const MDArray* array, int key, const MDRVar* values, int32_t* position) {
    if (position)
        *position = -1;
    if (!array || !values)
        return nullptr;
    MDRData* result = nullptr;
    guarded([&] {
        if (const KeyTree* tree = arrayOf(array)->table->tree(key))
            result = tree->seek(values, position);
        return MDX_OK;
    });
    return result;
}

MDRData* MDARecNew(MDArray* array) {
    if (!array || array->fieldCount == 0)
        return nullptr;
    MDRData* result = nullptr;
    guarded([&] {
        result = arrayOf(array)->table->createEmpty();
        return MDX_OK;
    });
    return result;
}

MDRData* MDARecEdit(MDRData* record) {
    return record && record->owner ? record : nullptr;
}

int MDARecPost(MDRData* record, uint32_t* result) {
    if (result)
        *result = 0;
    if (!record || !record->owner)
        return MDX_E_ARG;
    Array* array = arrayOf(record->owner);
    const int status = guarded([&] { return array->table->post(recordOf(record)); });
    array->publish();
    if (result)
        *result = recordOf(record)->is(Record::Posted) ? 1 : 0;
    return status;
}

int MDARecDel(MDRData* record) {
    if (!record || !record->owner)
        return MDX_E_ARG;
    Array* array = arrayOf(record->owner);
    return guarded([&] {
        array->table->remove(recordOf(record));
        array->publish();
        return MDX_OK;
    });
}

} // extern "C"
