// MdxTest.h: small tools for the tests of the record library.
#ifndef ORVO_TESTS_MDX_MDXTEST_H
#define ORVO_TESTS_MDX_MDXTEST_H

#include "frame/OrvoMdx.h"
#include "platform/mdx/MdxBuild.h"

#include <memory>
#include <string>
#include <vector>

namespace mdxtest {

MDRVar nullValue();
MDRVar booleanValue(bool value);
MDRVar integerValue(int32_t value);
MDRVar dateValue(double value);
/// Refers to `text`, which must live as long.
MDRVar textValue(const std::string& text);
MDRVar blockValue(const std::string& bytes);

struct Field {
    const char* name;
    MdxType type;
};

struct ArrayDeleter {
    void operator()(MDArray* array) const { MDADestroy(array); }
};
using ArrayPtr = std::unique_ptr<MDArray, ArrayDeleter>;

struct BlockDeleter {
    void operator()(void* block) const { MDMemFree(block); }
};

/// An image or raw record, and its length.
struct Bytes {
    std::unique_ptr<void, BlockDeleter> block;
    uint32_t length = 0;
    std::string text() const { return {static_cast<const char*>(block.get()), length}; }
};

ArrayPtr makeArray(const std::vector<Field>& fields);
/// Name, text; type_, integer; flag, boolean; stamp, date; data, block.
std::vector<Field> allTypes();

int addKey(MDArray* array, const std::string& fields, uint32_t flags);
int set(MDRData* record, int field, const MDRVar& value);
int setText(MDRData* record, int field, const std::string& text);
/// A posted record with these texts in fields 0, 1, 2, ...
MDRData* post(MDArray* array, const std::vector<std::string>& texts);
std::string textOf(const MDRData* record, int field);
int32_t integerOf(const MDRData* record, int field);
bool isNull(const MDRData* record, int field);
/// Field 0 of all records in key order, joined by blanks.
std::string order(const MDArray* array, int key);
Bytes packed(const MDArray* array);
Bytes raw(const MDRData* record);
/// Records, flags, user bits, keys, one line each: equal for equal arrays.
std::string dump(const MDArray* array);

/// UTF-8 to Windows-1251.
std::string cp(const char* utf8);

} // namespace mdxtest

#endif
