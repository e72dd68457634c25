// The functions of the record library as a program in C style uses them: handles, statuses, values
// laid end to end by hand. Exits 0 if all went as it should.
#include "frame/OrvoMdx.h"
#include "platform/mdx/MdxBuild.h"

#include <cstdio>
#include <cstring>

#define CHECK(condition)                                                                           \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "line %d: %s\n", __LINE__, #condition);                           \
            return 1;                                                                              \
        }                                                                                          \
    } while (0)

int main() {
    MDArray* array = nullptr;
    CHECK(MDACreate(&array, 0) == MDX_OK);
    CHECK(orvo::mdx::addField(array, "KeyLink", MDX_TEXT) == MDX_OK);
    CHECK(orvo::mdx::addField(array, "order_", MDX_INTEGER) == MDX_OK);

    MDAKeyDescription key;
    std::memset(&key, 0, sizeof key);
    std::strcpy(key.name, "order_;keylink");
    key.flags = MDX_KEY_MULTI;
    CHECK(MDAKeyAdd(array, 1, &key) == MDX_OK);
    CHECK(array->keyCount == 1);

    for (int i = 0; i < 300; ++i) {
        char text[16];
        std::snprintf(text, sizeof text, "key%03d", i);
        MDRData* record = MDARecNew(array);
        CHECK(record != nullptr && record->owner == array);
        MDRVar value;
        std::memset(&value, 0, sizeof value);
        value.type = MDX_TEXT;
        value.value.text.pointer = text;
        value.value.text.length = static_cast<uint32_t>(std::strlen(text));
        CHECK(MDRSetVal(MDRFldByName(array, "keylink"), record, &value) == MDX_OK);
        std::memset(&value, 0, sizeof value);
        value.type = MDX_INTEGER;
        value.value.integer = i / 10;
        CHECK(MDRSetVal(MDRFldByNum(array, 1), record, &value) == MDX_OK);
        CHECK(MDRSetFlags(record, MDX_INSERT) == MDX_OK);
        uint32_t posted = 0;
        CHECK(MDARecPost(record, &posted) == MDX_OK && posted == 1);
    }
    CHECK(array->recordCount == 300);

    // A value list laid end to end at an odd address.
    unsigned char list[1 + 2 * sizeof(MDRVar)];
    std::memset(list, 0, sizeof list);
    list[1] = MDX_INTEGER;
    list[1 + 2] = 7;
    list[1 + sizeof(MDRVar) + 1] = 1; // NULL
    int32_t position = -7;
    MDRData* found = MDARecSeekV(array, 0, reinterpret_cast<const MDRVar*>(list + 1), &position);
    CHECK(found == nullptr);
    CHECK(position == 70);
    int rows = 0;
    for (; position < static_cast<int32_t>(array->recordCount); ++position, ++rows) {
        MDRData* record = MDARec(array, 0, position);
        int32_t number = 0;
        CHECK(record != nullptr);
        CHECK(MDRGetAsInt32(MDRFldByNum(array, 1), record, &number) == MDX_OK);
        if (number != 7)
            break;
    }
    CHECK(rows == 10);

    void* image = nullptr;
    const uint32_t length = MDAPack(array, &image);
    CHECK(length > 0 && image != nullptr);
    MDArray* other = nullptr;
    CHECK(MDACreate(&other, 0) == MDX_OK);
    CHECK(MDAUnpackN(other, image, length) == MDX_OK);
    CHECK(other->recordCount == 300 && other->fieldCount == 2);
    CHECK(MDAUnpackN(other, image, length - 1) == MDX_E_FORMAT);
    CHECK(other->recordCount == 0 && other->fieldCount == 0);
    MDMemFree(image);
    MDMemFree(nullptr);
    MDADestroy(other);
    MDADestroy(array);
    return 0;
}
