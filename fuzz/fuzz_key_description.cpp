// Key descriptions: flags, then the 384 characters, over a small table; then seeks by bytes.
#include "Exercise.h"

#include "platform/mdx/MdxBuild.h"

#include <algorithm>
#include <cstring>

namespace {

fuzz::ArrayPtr table() {
    fuzz::ArrayPtr array = fuzz::emptyArray();
    const MdxType types[] = {MDX_TEXT, MDX_INTEGER, MDX_BOOLEAN, MDX_DATE, MDX_BLOCK};
    const char* const names[] = {"a", "b", "c", "d", "e"};
    for (int i = 0; i < 5; ++i)
        orvo::mdx::addField(array.get(), names[i], types[i]);
    orvo::mdx::RecordWriter writer(array.get());
    for (int i = 0; i < 200; ++i) {
        const char text[] = {char('a' + i % 7), char('A' + i % 3), char(i)};
        writer.begin();
        if (i % 11)
            writer.text1251(0, text, sizeof text);
        writer.integer(1, i % 5 - 2);
        if (i % 3)
            writer.boolean(2, i % 2 != 0);
        writer.date(3, i % 13 - 6);
        writer.block(4, text, size_t(i % 4));
        writer.end();
    }
    writer.finish();
    return array;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1)
        return 0;
    const fuzz::ArrayPtr array = table();
    MDAKeyDescription description{};
    description.flags = data[0];
    const size_t taken = std::min(size - 1, sizeof description.name);
    std::memcpy(description.name, data + 1, taken);
    if (MDAKeyAdd(array.get(), 1, &description) != MDX_OK) {
        fuzz::require(array->keyCount == 0, "no key after a failure");
        return 0;
    }
    // What follows the description is a value list of one text after the other.
    MDRVar values[sizeof description.name];
    const char* rest = reinterpret_cast<const char*>(data) + 1;
    for (size_t i = 0; i < sizeof description.name; ++i) {
        std::memset(&values[i], 0, sizeof values[i]);
        values[i].type = taken > 0 ? uint8_t(rest[i % taken] & 15) : uint8_t(MDX_TEXT);
        if (values[i].type == MDX_TEXT || values[i].type == MDX_BLOCK) {
            values[i].value.text.pointer = rest;
            values[i].value.text.length = uint32_t(std::min<size_t>(taken, i % 5));
        } else {
            values[i].value.integer = int32_t(i % 5) - 2;
        }
    }
    int32_t position = -2;
    const MDRData* found = MDARecSeekV(array.get(), 0, values, &position);
    fuzz::require(position >= -1 && position < 200, "a position");
    fuzz::require(!found || MDARec(array.get(), 0, position) == found, "the record there");
    fuzz::exercise(array.get());
    return 0;
}
