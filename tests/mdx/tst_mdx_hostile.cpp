// Images and raw records that lie. Run with the address sanitizer, every copy is exactly as long as
// it claims to be.
#include "MdxTest.h"

#include <QtTest>

#include <cstring>

using namespace mdxtest;

namespace {

ArrayPtr victim() {
    ArrayPtr a = makeArray(allTypes());
    addKey(a.get(), "name", MDX_KEY_UNIQUE);
    addKey(a.get(), "type_;name", MDX_KEY_MULTI);
    for (int i = 0; i < 4; ++i) {
        MDRData* record = MDARecNew(a.get());
        setText(record, 0, "name " + std::to_string(i));
        if (i != 2)
            set(record, 1, integerValue(i));
        set(record, 2, booleanValue(i & 1));
        set(record, 3, dateValue(i));
        if (i != 1)
            set(record, 4, blockValue(std::string(size_t(i), '\0') + "x"));
        MDRSetUser(MDRFldByNum(a.get(), i), record, 1);
        MDARecPost(record, nullptr);
    }
    return a;
}

int unpack(MDArray* array, const std::string& bytes) {
    // A block of its own, so that reading past it is seen.
    const std::unique_ptr<char[]> copy(new char[bytes.size()]);
    std::memcpy(copy.get(), bytes.data(), bytes.size());
    return MDAUnpackN(array, copy.get(), uint32_t(bytes.size()));
}

// Uses everything there is in an array; what it was made of may have been corrupt.
void exercise(MDArray* array) {
    const std::string all = dump(array);
    for (uint32_t key = 0; key < array->keyCount; ++key) {
        std::vector<MDRVar> values(400, nullValue());
        MDARecSeekV(array, int(key), values.data(), nullptr);
    }
    if (MDRData* record = MDARecNew(array))
        MDARecPost(record, nullptr);
    while (orvo::mdx::postedCount(array) > 0)
        MDARecDel(orvo::mdx::postedRecord(array, 0));
}

void useRaw(const std::string& bytes) {
    const std::unique_ptr<char[]> copy(new char[bytes.size()]);
    std::memcpy(copy.get(), bytes.data(), bytes.size());
    if (MDRRecCheck(copy.get(), uint32_t(bytes.size())) != 0)
        return;
    MDRData record;
    MDRType type;
    MDRTypInit(&type);
    QCOMPARE(MDRRecSet(&record, copy.get()), 0);
    QCOMPARE(MDRTypGen(&type, "NCI", &record), 0);
    for (int i = 0; i < type.fieldCount; ++i) {
        MDRVar value;
        QCOMPARE(MDRGetVal(MDRFldByNum(&type, i), &record, &value), 0);
        const char* pointer = nullptr;
        if (MDRGetTextPtr(MDRFldByNum(&type, i), &record, &pointer) == 0)
            QVERIFY(std::strlen(pointer) <= bytes.size());
    }
    MDRTypFree(&type);
}

void put32(std::string& bytes, size_t at, uint32_t value) {
    std::memcpy(&bytes[at], &value, 4);
}

} // namespace

class TestMdxHostile : public QObject {
    Q_OBJECT

private slots:
    void everyTruncationOfAnImageIsRefused() {
        const std::string image = packed(victim().get()).text();
        for (size_t size = 0; size < image.size(); ++size) {
            const ArrayPtr a = victim();
            std::string cut = image.substr(0, size);
            QCOMPARE(unpack(a.get(), cut), int(MDX_E_FORMAT));
            QCOMPARE(int(a->fieldCount), 0);
            QCOMPARE(orvo::mdx::postedCount(a.get()), 0u);
            if (size >= 12) { // and with the length made to agree
                put32(cut, 8, uint32_t(size));
                QCOMPARE(unpack(a.get(), cut), int(MDX_E_FORMAT));
            }
        }
    }

    void everyCorruptByteOfAnImageIsSurvived() {
        const std::string image = packed(victim().get()).text();
        for (size_t at = 0; at < image.size(); ++at)
            for (const unsigned change : {0x01u, 0x02u, 0x08u, 0x20u, 0x80u, 0xFFu, 0x7Fu}) {
                std::string bytes = image;
                bytes[at] = char(uint8_t(bytes[at]) ^ change);
                const ArrayPtr a = makeArray({});
                if (unpack(a.get(), bytes) == 0)
                    exercise(a.get());
                else
                    QCOMPARE(int(a->fieldCount), 0);
                if (QTest::currentTestFailed())
                    return;
            }
    }

    // In a table with the name's place in the hash such a name led past the end of the last
    // field's.
    void zerosInAKeyDescriptionAreRefused() {
        const ArrayPtr a = makeArray({{"KeyLink", MDX_TEXT},
                                      {"type_", MDX_INTEGER},
                                      {"flag", MDX_BOOLEAN},
                                      {"stamp", MDX_DATE},
                                      {"data", MDX_BLOCK}});
        QCOMPARE(addKey(a.get(), "data;stamp", MDX_KEY_MULTI), 0);
        const std::string image = packed(a.get()).text();
        const size_t at = image.find("data;stamp");
        QVERIFY(at != std::string::npos);
        for (const std::string_view name :
             {std::string_view("data\0\0\0\5\0\0", 10), std::string_view("data\0stamp", 10),
              std::string_view("\0data;stam", 10), std::string_view("data;stam\0", 10)}) {
            std::string bytes = image;
            bytes.replace(at, name.size(), name);
            const ArrayPtr b = victim();
            QCOMPARE(unpack(b.get(), bytes), int(MDX_E_FORMAT));
            QCOMPARE(int(b->fieldCount), 0);
        }
    }

    void everyTruncationOfARawRecordIsRefused() {
        const ArrayPtr a = victim();
        const std::string bytes = raw(orvo::mdx::postedRecord(a.get(), 3)).text();
        for (size_t size = 0; size < bytes.size(); ++size) {
            std::string cut = bytes.substr(0, size);
            QCOMPARE(MDRRecCheck(cut.data(), uint32_t(size)), int(MDX_E_FORMAT));
            if (size >= 12) {
                put32(cut, 8, uint32_t(size));
                const std::unique_ptr<char[]> copy(new char[size]);
                std::memcpy(copy.get(), cut.data(), size);
                QCOMPARE(MDRRecCheck(copy.get(), uint32_t(size)), int(MDX_E_FORMAT));
            }
        }
        QCOMPARE(MDRRecCheck((bytes + "x").data(), uint32_t(bytes.size() + 1)), int(MDX_E_FORMAT));
    }

    void everyCorruptByteOfARawRecordIsSurvived() {
        const ArrayPtr a = victim();
        const std::string bytes = raw(orvo::mdx::postedRecord(a.get(), 3)).text();
        for (size_t at = 0; at < bytes.size(); ++at)
            for (int change = 1; change < 256; ++change) {
                std::string corrupt = bytes;
                corrupt[at] = char(uint8_t(corrupt[at]) ^ unsigned(change));
                useRaw(corrupt);
                if (QTest::currentTestFailed())
                    return;
            }
    }

    void aCountWithoutRecordsIsRefused() {
        // 255 fields, and a billion records that are not there.
        std::vector<std::string> names;
        std::vector<Field> fields;
        for (int i = 0; i < 255; ++i)
            names.push_back(std::to_string(i));
        for (const auto& name : names)
            fields.push_back({name.c_str(), MDX_BOOLEAN});
        const ArrayPtr a = makeArray(fields);
        std::string image = packed(a.get()).text();
        for (const uint32_t count : {1u, 1000000000u, 0xFFFFFFFFu}) {
            put32(image, 12, count);
            QCOMPARE(unpack(a.get(), image), int(MDX_E_FORMAT));
        }
        // Records of an array without fields.
        std::string empty = packed(makeArray({}).get()).text();
        put32(empty, 12, 1000000000u);
        empty += std::string(4000, '\0');
        put32(empty, 8, uint32_t(empty.size()));
        QCOMPARE(unpack(a.get(), empty), int(MDX_E_FORMAT));
    }

    void duplicatesInAUniqueKeyAreRefused() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        addKey(a.get(), "k", MDX_KEY_MULTI);
        post(a.get(), {"x"});
        post(a.get(), {"X"});
        std::string image = packed(a.get()).text();
        image[23] = MDX_KEY_UNIQUE; // the flags of the key, behind the only field
        const ArrayPtr b = makeArray({});
        QCOMPARE(unpack(b.get(), image), int(MDX_E_DUPLICATE));
        QCOMPARE(int(b->fieldCount), 0);
    }

    void aKeyOverAFieldThatIsNotThereIsRefused() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        addKey(a.get(), "k", MDX_KEY_MULTI);
        std::string image = packed(a.get()).text();
        QCOMPARE(image.back(), 'k');
        image.back() = 'z';
        const ArrayPtr b = makeArray({});
        QCOMPARE(unpack(b.get(), image), int(MDX_E_FORMAT));
    }

    void aTextWithAZeroByteInsideIsRefused() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        post(a.get(), {"abc"});
        std::string image = packed(a.get()).text();
        image[image.size() - 3] = '\0';
        const ArrayPtr b = makeArray({});
        QCOMPARE(unpack(b.get(), image), int(MDX_E_FORMAT));
    }

    void setOnGarbageWithTheRightBeginning() {
        const ArrayPtr a = victim();
        std::string bytes = raw(orvo::mdx::postedRecord(a.get(), 0)).text();
        MDRData record;
        for (const uint32_t offset : {0u, 19u, uint32_t(bytes.size()), 0xFFFFFFFFu}) {
            std::string bad = bytes;
            put32(bad, 12, offset);
            QCOMPARE(MDRRecSet(&record, bad.data()), int(MDX_E_FORMAT));
            QVERIFY(!record.body);
        }
        // A body that does not hold is found by MDRTypGen, and reads stay inside it.
        std::string bad = bytes;
        put32(bad, bad.size() - 7, 0x7FFFFFFFu);
        for (size_t at = 20; at + 4 < bad.size(); ++at) {
            std::string worse = bytes;
            put32(worse, at, 0x00FFFFFFu);
            const std::unique_ptr<char[]> copy(new char[worse.size()]);
            std::memcpy(copy.get(), worse.data(), worse.size());
            QCOMPARE(MDRRecSet(&record, copy.get()), 0);
            for (int i = 0; i < a->fieldCount; ++i) {
                MDRVar value;
                int32_t number = 0;
                const char* pointer = nullptr;
                MDRGetVal(MDRFldByNum(a.get(), i), &record, &value);
                MDRGetAsInt32(MDRFldByNum(a.get(), i), &record, &number);
                MDRGetTextPtr(MDRFldByNum(a.get(), i), &record, &pointer);
            }
        }
    }
};

QTEST_APPLESS_MAIN(TestMdxHostile)
#include "tst_mdx_hostile.moc"
