#include "Exercise.h"

#include "platform/mdx/MdxBuild.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <vector>

namespace fuzz {

ArrayPtr emptyArray() {
    MDArray* array = nullptr;
    require(MDACreate(&array, 0) == MDX_OK, "an array");
    return ArrayPtr(array);
}

void require(bool condition, const char* what) {
    if (condition)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

void readAll(const MDRType* type, const MDRData* record) {
    for (int i = 0; i < type->fieldCount; ++i) {
        const MDRField field = MDRFldByNum(type, i);
        require(field && MDRFldByName(type, orvo::mdx::fieldName(field)) == field, "field by name");
        MDRVar value;
        require(MDRGetVal(field, record, &value) == MDX_OK, "a value");
        const char* pointer = nullptr;
        uint32_t length = 0;
        if (MDRGetTextPtr(field, record, &pointer) == MDX_OK &&
            MDRGetTextRef(field, record, &length, &pointer) == MDX_OK &&
            orvo::mdx::fieldType(field) == MDX_TEXT)
            require(std::strlen(pointer) == length, "a text's length");
        int32_t number = 0;
        MDRGetAsInt32(field, record, &number);
        uint8_t user = 0;
        require(MDRIsUser(field, record, &user) == MDX_OK, "a user bit");
    }
}

namespace {

// Every key holds each posted record once, and a seek by a record's values finds its place.
void checkKeys(MDArray* array) {
    const uint32_t count = orvo::mdx::postedCount(array);
    require(array->recordCount == (array->keyCount ? count : 0), "recordCount");
    for (uint32_t key = 0; key < array->keyCount; ++key) {
        std::set<const MDRData*> seen;
        for (uint32_t i = 0; i < count; ++i) {
            const MDRData* record = MDARec(array, int(key), int32_t(i));
            require(record && record->owner == array && seen.insert(record).second, "a position");
        }
        require(!MDARec(array, int(key), int32_t(count)), "the end");
    }
}

} // namespace

void exercise(MDArray* array) {
    checkKeys(array);
    uint32_t count = orvo::mdx::postedCount(array);
    for (uint32_t i = 0; i < count; ++i)
        readAll(array, orvo::mdx::postedRecord(array, i));
    std::vector<MDRVar> values(512);
    for (MDRVar& value : values) {
        std::memset(&value, 0, sizeof value);
        value.null = 1;
    }
    for (uint32_t key = 0; key < array->keyCount; ++key) {
        int32_t position = 0;
        MDARecSeekV(array, int(key), values.data(), &position);
        require(position >= -1 && position < int32_t(count), "a seek position");
    }
    // Swap values between neighbours, delete every third.
    for (uint32_t i = 0; i + 1 < count && i < 64; ++i) {
        MDRData* record = orvo::mdx::postedRecord(array, i);
        const MDRData* next = orvo::mdx::postedRecord(array, i + 1);
        MDRVar value;
        for (int f = 0; f < array->fieldCount; f += 2)
            if (MDRGetVal(MDRFldByNum(array, f), next, &value) == MDX_OK)
                MDRSetVal(MDRFldByNum(array, f), record, &value);
        if (i % 3 == 0) {
            require(MDARecDel(record) == MDX_OK, "a deletion");
        } else {
            MDARecPost(record, nullptr);
        }
        count = orvo::mdx::postedCount(array);
    }
    if (MDRData* record = MDARecNew(array))
        MDARecPost(record, nullptr);
    checkKeys(array);
}

} // namespace fuzz
