#include "MdxTest.h"

#include <cstring>

namespace mdxtest {

MDRVar nullValue() {
    MDRVar value{};
    value.null = 1;
    return value;
}

MDRVar booleanValue(bool boolean) {
    MDRVar value{};
    value.type = MDX_BOOLEAN;
    value.value.boolean = boolean;
    return value;
}

MDRVar integerValue(int32_t integer) {
    MDRVar value{};
    value.type = MDX_INTEGER;
    value.value.integer = integer;
    return value;
}

MDRVar dateValue(double date) {
    MDRVar value{};
    value.type = MDX_DATE;
    value.value.date = date;
    return value;
}

MDRVar textValue(const std::string& text) {
    MDRVar value{};
    value.type = MDX_TEXT;
    value.value.text.length = static_cast<uint32_t>(text.size());
    value.value.text.pointer = text.c_str();
    return value;
}

MDRVar blockValue(const std::string& bytes) {
    MDRVar value = textValue(bytes);
    value.type = MDX_BLOCK;
    return value;
}

ArrayPtr makeArray(const std::vector<Field>& fields) {
    MDArray* array = nullptr;
    if (MDACreate(&array, 0) != MDX_OK)
        return {};
    ArrayPtr result(array);
    for (const Field& field : fields)
        if (orvo::mdx::addField(array, field.name, field.type) != MDX_OK)
            return {};
    return result;
}

std::vector<Field> allTypes() {
    return {{"Name", MDX_TEXT},
            {"type_", MDX_INTEGER},
            {"flag", MDX_BOOLEAN},
            {"stamp", MDX_DATE},
            {"data", MDX_BLOCK}};
}

int addKey(MDArray* array, const std::string& fields, uint32_t flags) {
    MDAKeyDescription description{};
    std::memcpy(description.name, fields.data(), std::min(fields.size(), sizeof description.name));
    description.flags = flags;
    return MDAKeyAdd(array, 1, &description);
}

int set(MDRData* record, int field, const MDRVar& value) {
    return MDRSetVal(MDRFldByNum(record->owner, field), record, &value);
}

int setText(MDRData* record, int field, const std::string& text) {
    return set(record, field, textValue(text));
}

MDRData* post(MDArray* array, const std::vector<std::string>& texts) {
    MDRData* record = MDARecNew(array);
    for (size_t i = 0; i < texts.size(); ++i)
        setText(record, static_cast<int>(i), texts[i]);
    return MDARecPost(record, nullptr) == MDX_OK ? record : nullptr;
}

std::string textOf(const MDRData* record, int field) {
    uint32_t length = 0;
    const char* pointer = nullptr;
    if (MDRGetTextRef(MDRFldByNum(record->owner, field), record, &length, &pointer) != MDX_OK)
        return "<none>";
    return {pointer, length};
}

int32_t integerOf(const MDRData* record, int field) {
    int32_t value = -12345;
    MDRGetAsInt32(MDRFldByNum(record->owner, field), record, &value);
    return value;
}

bool isNull(const MDRData* record, int field) {
    MDRVar value{};
    MDRGetVal(MDRFldByNum(record->owner, field), record, &value);
    return value.null != 0 && value.type == 0;
}

std::string order(const MDArray* array, int key) {
    std::string result;
    for (uint32_t i = 0; i < array->recordCount; ++i) {
        const MDRData* record = MDARec(array, key, static_cast<int32_t>(i));
        result += (i ? " " : "") + (record ? textOf(record, 0) : std::string("<null>"));
    }
    return result;
}

Bytes packed(const MDArray* array) {
    void* block = nullptr;
    Bytes result;
    result.length = MDAPack(array, &block);
    result.block.reset(block);
    return result;
}

Bytes raw(const MDRData* record) {
    void* block = nullptr;
    Bytes result;
    result.length = orvo::mdx::rawRecord(record, &block);
    result.block.reset(block);
    return result;
}

std::string dump(const MDArray* array) {
    std::string result;
    for (int i = 0; i < array->fieldCount; ++i) {
        const MDRField field = MDRFldByNum(array, i);
        result += std::string(orvo::mdx::fieldName(field)) + ":" +
                  std::to_string(orvo::mdx::fieldType(field)) + " ";
    }
    result += "keys " + std::to_string(array->keyCount) + "\n";
    for (uint32_t i = 0; i < orvo::mdx::postedCount(array); ++i) {
        const MDRData* record = orvo::mdx::postedRecord(array, i);
        result += std::to_string(orvo::mdx::recordFlags(record)) + " ";
        for (int f = 0; f < array->fieldCount; ++f) {
            const MDRField field = MDRFldByNum(array, f);
            MDRVar value{};
            uint8_t user = 0;
            MDRGetVal(field, record, &value);
            MDRIsUser(field, record, &user);
            result += user ? "|*" : "|";
            if (value.null)
                result += "NULL";
            else if (value.type == MDX_TEXT || value.type == MDX_BLOCK)
                result +=
                    "'" + std::string(value.value.text.pointer, value.value.text.length) + "'";
            else if (value.type == MDX_INTEGER)
                result += std::to_string(value.value.integer);
            else if (value.type == MDX_BOOLEAN)
                result += value.value.boolean ? "true" : "false";
            else
                result += std::to_string(value.value.date);
        }
        result += "\n";
    }
    for (uint32_t k = 0; k < array->keyCount; ++k)
        result += order(array, static_cast<int>(k)) + "\n";
    return result;
}

std::string cp(const char* utf8) {
    return orvo::mdx::toCp1251(utf8);
}

} // namespace mdxtest
