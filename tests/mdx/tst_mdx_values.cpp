// Fields and values of a record.
#include "MdxTest.h"

#include <QtTest>

#include <cmath>
#include <cstring>
#include <limits>

using namespace mdxtest;

class TestMdxValues : public QObject {
    Q_OBJECT

private slots:
    void init() {
        m_array = makeArray(allTypes());
        QVERIFY(m_array);
        m_record = MDARecNew(m_array.get());
        QVERIFY(m_record);
    }

    void fieldsAreFoundByNameWithoutRegardToCase() {
        const MDArray* a = m_array.get();
        QCOMPARE(MDRFldByName(a, "name"), MDRFldByNum(a, 0));
        QCOMPARE(MDRFldByName(a, "TYPE_"), MDRFldByNum(a, 1));
        QCOMPARE(MDRFldByName(a, "dAtA"), MDRFldByNum(a, 4));
        for (const char* missing : {"", "nam", "name_", "x", "type"})
            QVERIFY(!MDRFldByName(a, missing));
        QVERIFY(!MDRFldByNum(a, 5) && !MDRFldByNum(a, -1) && !MDRFldByNum(a, 255) &&
                !MDRFldByNum(a, 256));
        QVERIFY(!MDRFldByName(nullptr, "x") && !MDRFldByName(a, nullptr));
        QVERIFY(!MDRFldByNum(nullptr, 0));
    }

    void cyrillicNamesFoldToo() {
        const ArrayPtr a = makeArray({{"Поле", MDX_TEXT}});
        const ArrayPtr b = makeArray({{cp("Имя").c_str(), MDX_TEXT}});
        QVERIFY(MDRFldByName(b.get(), cp("имЯ").c_str()));
    }

    void aFullStructureFindsEveryField() {
        std::vector<std::string> names;
        std::vector<Field> fields;
        for (int i = 0; i < 255; ++i)
            names.push_back("Field" + std::to_string(i));
        for (const auto& name : names)
            fields.push_back({name.c_str(), MDX_TEXT});
        const ArrayPtr a = makeArray(fields);
        QVERIFY(a);
        QCOMPARE(int(a->fieldCount), 255);
        for (int i = 0; i < 255; ++i)
            QCOMPARE(MDRFldByName(a.get(), ("fIELD" + std::to_string(i)).c_str()),
                     MDRFldByNum(a.get(), i));
        QCOMPARE(orvo::mdx::addField(a.get(), "one more", MDX_TEXT), int(MDX_E_LIMIT));
        MDRData* record = MDARecNew(a.get());
        QCOMPARE(setText(record, 254, "last"), 0);
        QCOMPARE(textOf(record, 254), std::string("last"));
        QVERIFY(isNull(record, 253));
    }

    void aNewRecordIsNullInAllFields() {
        for (int i = 0; i < 5; ++i) {
            const MDRField field = MDRFldByNum(m_array.get(), i);
            MDRVar value;
            std::memset(&value, 0xAA, sizeof value);
            QCOMPARE(MDRGetVal(field, m_record, &value), 0);
            QCOMPARE(int(value.type), 0);
            QVERIFY(value.null != 0);
            uint8_t user = 9;
            QCOMPARE(MDRIsUser(field, m_record, &user), 0);
            QCOMPARE(int(user), 0);
            const char* pointer = nullptr;
            uint32_t length = 77;
            if (i == 0 || i == 4) {
                QVERIFY(value.value.text.pointer && *value.value.text.pointer == '\0');
                QCOMPARE(uint32_t(value.value.text.length), 0u);
                QCOMPARE(MDRGetTextPtr(field, m_record, &pointer), 0);
                QVERIFY(pointer && *pointer == '\0');
            } else {
                QCOMPARE(MDRGetTextPtr(field, m_record, &pointer), int(MDX_E_TYPE));
            }
            QVERIFY(MDRGetTextRef(field, m_record, &length, &pointer) != 0);
            QCOMPARE(length, 77u);
            int32_t number = 5;
            QCOMPARE(MDRGetAsInt32(field, m_record, &number), i == 4 ? int(MDX_E_TYPE) : 0);
            QCOMPARE(number, i == 4 ? 5 : 0);
        }
        QCOMPARE(orvo::mdx::recordFlags(m_record), 0u);
        QCOMPARE(m_record->owner, m_array.get());
    }

    void valuesComeBackAsTheyWereStored() {
        QCOMPARE(setText(m_record, 0, "text"), 0);
        QCOMPARE(set(m_record, 1, integerValue(-7)), 0);
        QCOMPARE(set(m_record, 2, booleanValue(true)), 0);
        QCOMPARE(set(m_record, 3, dateValue(1.5e9)), 0);
        QCOMPARE(set(m_record, 4, blockValue(std::string("\0a\0b\0", 5))), 0);
        MDRVar value;
        MDRGetVal(MDRFldByNum(m_array.get(), 0), m_record, &value);
        QCOMPARE(int(value.type), int(MDX_TEXT));
        QCOMPARE(uint32_t(value.value.text.length), 4u);
        QCOMPARE(value.value.text.pointer[4], '\0');
        MDRGetVal(MDRFldByNum(m_array.get(), 1), m_record, &value);
        QCOMPARE(int(value.type), int(MDX_INTEGER));
        QCOMPARE(int32_t(value.value.integer), -7);
        for (int i = 4; i < 12; ++i)
            QCOMPARE(int(value.value.bytes[i]), 0); // all 14 bytes are written
        MDRGetVal(MDRFldByNum(m_array.get(), 2), m_record, &value);
        QCOMPARE(int(value.value.boolean), 1);
        MDRGetVal(MDRFldByNum(m_array.get(), 3), m_record, &value);
        QCOMPARE(double(value.value.date), 1.5e9);
        QCOMPARE(textOf(m_record, 4), std::string("\0a\0b\0", 5));
    }

    // Callers lay values out byte by byte, and hand several of them on end to end.
    void aValueIsLaidOutByteByByte() {
        const auto bytes = [](uint8_t type, uint8_t null, auto at2) {
            std::string all(14, '\0');
            all[0] = static_cast<char>(type);
            all[1] = static_cast<char>(null);
            std::memcpy(all.data() + 2, &at2, sizeof at2);
            return all;
        };
        const auto read = [&](int field) {
            MDRVar value;
            std::memset(&value, 0xAA, sizeof value);
            MDRGetVal(MDRFldByNum(m_array.get(), field), m_record, &value);
            return std::string(reinterpret_cast<const char*>(&value), sizeof value);
        };
        const std::string written[] = {bytes(5, 0, int32_t(-2)), bytes(1, 0, uint8_t(1)),
                                       bytes(7, 0, -1.5e9)};
        for (int i = 0; i < 3; ++i) {
            MDRVar value;
            std::memcpy(&value, written[i].data(), sizeof value);
            QCOMPARE(set(m_record, i + 1, value), 0);
            QCOMPARE(read(i + 1), written[i]);
        }
        for (const int field : {0, 4}) {
            const char text[] = "abc";
            std::string raw = bytes(field == 0 ? 9 : 10, 0, uint32_t(3));
            const char* pointer = text;
            std::memcpy(raw.data() + 6, &pointer, sizeof pointer);
            MDRVar value;
            std::memcpy(&value, raw.data(), sizeof value);
            QCOMPARE(set(m_record, field, value), 0);
            const std::string back = read(field);
            QCOMPARE(back.substr(0, 6), raw.substr(0, 6));
            std::memcpy(&pointer, back.data() + 6, sizeof pointer);
            QVERIFY(pointer != text);
            QCOMPARE(std::string(pointer), std::string("abc"));
        }
        // NULL is type 0 with a null byte, whatever stands behind.
        MDRVar null;
        std::memset(&null, 0xAA, sizeof null);
        null.type = 0;
        null.null = 1;
        QCOMPARE(set(m_record, 1, null), 0);
        QCOMPARE(read(1), bytes(0, 1, int32_t(0)));
    }

    void emptyTextIsNotNull() {
        QCOMPARE(setText(m_record, 0, ""), 0);
        QVERIFY(!isNull(m_record, 0));
        QCOMPARE(textOf(m_record, 0), std::string());
        QCOMPARE(set(m_record, 0, nullValue()), 0);
        QVERIFY(isNull(m_record, 0));
        MDRVar untyped{};
        setText(m_record, 0, "x");
        QCOMPARE(set(m_record, 0, untyped), 0); // type 0 is NULL as well
        QVERIFY(isNull(m_record, 0));
        MDRVar noPointer{};
        noPointer.type = MDX_TEXT;
        QCOMPARE(set(m_record, 0, noPointer), 0);
        QVERIFY(!isNull(m_record, 0));
        noPointer.value.text.length = 3;
        QCOMPARE(set(m_record, 0, noPointer), int(MDX_E_ARG));
    }

    void aTextEndsAtItsFirstZeroByte() {
        MDRVar value = textValue(std::string("ab\0cd", 5));
        const std::string bytes("ab\0cd", 5);
        value.value.text.pointer = bytes.data();
        QCOMPARE(set(m_record, 0, value), 0);
        QCOMPARE(textOf(m_record, 0), std::string("ab"));
    }

    void numbersConvertAmongThemselves() {
        set(m_record, 1, booleanValue(true));
        QCOMPARE(integerOf(m_record, 1), 1);
        set(m_record, 1, dateValue(-2.9));
        QCOMPARE(integerOf(m_record, 1), -2);
        set(m_record, 1, dateValue(1e300));
        QCOMPARE(integerOf(m_record, 1), INT32_MAX);
        set(m_record, 1, dateValue(std::numeric_limits<double>::quiet_NaN()));
        QCOMPARE(integerOf(m_record, 1), 0);
        set(m_record, 2, integerValue(42));
        QCOMPARE(integerOf(m_record, 2), 1);
        set(m_record, 2, dateValue(0));
        QCOMPARE(integerOf(m_record, 2), 0);
        set(m_record, 3, integerValue(-5));
        QCOMPARE(integerOf(m_record, 3), -5);
        set(m_record, 3, dateValue(-1e300));
        QCOMPARE(integerOf(m_record, 3), INT32_MIN);
    }

    void otherTypesAreRefusedAndNothingChanges() {
        set(m_record, 1, integerValue(3));
        QCOMPARE(set(m_record, 1, textValue("4")), int(MDX_E_TYPE));
        QCOMPARE(set(m_record, 1, blockValue("4")), int(MDX_E_TYPE));
        QCOMPARE(integerOf(m_record, 1), 3);
        QCOMPARE(set(m_record, 0, integerValue(3)), int(MDX_E_TYPE));
        QCOMPARE(set(m_record, 0, blockValue("x")), int(MDX_E_TYPE));
        QCOMPARE(set(m_record, 4, textValue("x")), int(MDX_E_TYPE));
        MDRVar odd = integerValue(1);
        odd.type = 77;
        QCOMPARE(set(m_record, 1, odd), int(MDX_E_TYPE));
        QVERIFY(isNull(m_record, 0) && isNull(m_record, 4));
    }

    void textReadsAsTheNumberItBeginsWith_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("number");
        QTest::newRow("plain") << "123" << 123;
        QTest::newRow("negative") << "-45 m" << -45;
        QTest::newRow("plus") << "+9" << 9;
        QTest::newRow("plus minus") << "+-9" << 0;
        QTest::newRow("none") << "abc" << 0;
        QTest::newRow("empty") << "" << 0;
        QTest::newRow("sign only") << "-" << 0;
        QTest::newRow("too large") << "99999999999" << INT32_MAX;
        QTest::newRow("too small") << "-99999999999x" << INT32_MIN;
        QTest::newRow("largest") << "2147483647" << INT32_MAX;
    }
    void textReadsAsTheNumberItBeginsWith() {
        QFETCH(QString, text);
        QFETCH(int, number);
        setText(m_record, 0, text.toStdString());
        QCOMPARE(integerOf(m_record, 0), number);
    }

    void storedTextIsACopy() {
        std::string text = "first";
        setText(m_record, 0, text);
        text = "SECOND, much longer than the first one was";
        QCOMPARE(textOf(m_record, 0), std::string("first"));
    }

    void aTextMayComeFromTheSameRecord() {
        const ArrayPtr a = makeArray({{"a", MDX_TEXT}, {"b", MDX_TEXT}});
        MDRData* record = MDARecNew(a.get());
        setText(record, 0, std::string(100, 'a'));
        setText(record, 1, std::string(3000, 'b'));
        // Each step moves the body: the source lies in the old one.
        for (int i = 0; i < 8; ++i) {
            MDRVar value;
            MDRGetVal(MDRFldByNum(a.get(), 1), record, &value);
            QCOMPARE(set(record, 0, value), 0);
            QCOMPARE(textOf(record, 0), std::string(size_t(3000) << i, 'b'));
            setText(record, 1, std::string(size_t(3000) << (i + 1), 'b'));
        }
        MDRVar tail;
        MDRGetVal(MDRFldByNum(a.get(), 1), record, &tail);
        tail.value.text.pointer += 10;
        tail.value.text.length -= 10;
        const std::string expected(tail.value.text.pointer, tail.value.text.length);
        QCOMPARE(set(record, 1, tail), 0);
        QCOMPARE(textOf(record, 1), expected);
    }

    void textsGrowAndShrinkAtWill() {
        const ArrayPtr a = makeArray({{"a", MDX_TEXT}, {"b", MDX_BLOCK}, {"c", MDX_TEXT}});
        MDRData* record = MDARecNew(a.get());
        std::string expected[3];
        uint32_t state = 1;
        for (int i = 0; i < 3000; ++i) {
            state = state * 1664525 + 1013904223;
            const int field = int(state >> 20) % 3;
            std::string text((state >> 8) % (i % 50 == 0 ? 40000 : 60), char('a' + i % 26));
            expected[field] = text;
            QCOMPARE(set(record, field, field == 1 ? blockValue(text) : textValue(text)), 0);
            if (i % 97 == 0)
                QCOMPARE(MDARecPost(record, nullptr), 0);
            for (int f = 0; f < 3; ++f)
                if (i > 10 && textOf(record, f) != (expected[f].empty() && isNull(record, f)
                                                        ? std::string("<none>")
                                                        : expected[f]))
                    QFAIL(qPrintable(QString("step %1 field %2").arg(i).arg(f)));
        }
    }

    void userBitsAreSeparateFromValues() {
        const MDRField field = MDRFldByNum(m_array.get(), 3);
        uint8_t user = 0;
        QCOMPARE(MDRSetUser(field, m_record, 1), 0);
        MDRIsUser(field, m_record, &user);
        QCOMPARE(int(user), 1);
        QVERIFY(isNull(m_record, 3));
        MDRIsUser(MDRFldByNum(m_array.get(), 2), m_record, &user);
        QCOMPARE(int(user), 0);
        QCOMPARE(MDRSetUser(field, m_record, 0), 0);
        MDRIsUser(field, m_record, &user);
        QCOMPARE(int(user), 0);
    }

    void flagsAreOneTwoOrFour() {
        for (const uint32_t flag : {1u, 2u, 4u, 0u}) {
            QCOMPARE(MDRSetFlags(m_record, flag), 0);
            QCOMPARE(orvo::mdx::recordFlags(m_record), flag);
        }
        QCOMPARE(MDRSetFlags(m_record, 3), int(MDX_E_ARG));
        QCOMPARE(MDRSetFlags(m_record, 8), int(MDX_E_ARG));
        QCOMPARE(orvo::mdx::recordFlags(m_record), 0u);
    }

    void handlesServeEveryArrayOfTheSameStructure() {
        const ArrayPtr other = makeArray(allTypes());
        MDRData* record = MDARecNew(other.get());
        const MDRField field = MDRFldByName(m_array.get(), "name");
        const std::string text = "over there";
        const MDRVar value = textValue(text);
        QCOMPARE(MDRSetVal(field, record, &value), 0);
        QCOMPARE(MDRSetUser(field, record, 1), 0);
        QCOMPARE(textOf(record, 0), text);
    }

    void aHandleOfAnotherStructureWritesNothing() {
        const ArrayPtr other = makeArray({{"n", MDX_INTEGER}});
        MDRData* record = MDARecNew(other.get());
        const MDRVar value = integerValue(1);
        for (int i = 0; i < 5; ++i) {
            QCOMPARE(MDRSetVal(MDRFldByNum(m_array.get(), i), record, &value), int(MDX_E_ARG));
            QCOMPARE(MDRSetUser(MDRFldByNum(m_array.get(), i), record, 1), int(MDX_E_ARG));
            MDRVar out;
            MDRGetVal(MDRFldByNum(m_array.get(), i), record, &out); // must not leave the record
        }
        QVERIFY(isNull(record, 0));
    }

    void nullHandlesAreRefused() {
        const MDRField field = MDRFldByNum(m_array.get(), 0);
        MDRVar value{};
        int32_t number;
        const char* pointer;
        uint32_t length;
        uint8_t user;
        QCOMPARE(MDRGetVal(nullptr, m_record, &value), int(MDX_E_ARG));
        QCOMPARE(MDRGetVal(field, nullptr, &value), int(MDX_E_ARG));
        QCOMPARE(MDRGetVal(field, m_record, nullptr), int(MDX_E_ARG));
        QCOMPARE(MDRSetVal(nullptr, m_record, &value), int(MDX_E_ARG));
        QCOMPARE(MDRSetVal(field, nullptr, &value), int(MDX_E_ARG));
        QCOMPARE(MDRSetVal(field, m_record, nullptr), int(MDX_E_ARG));
        QCOMPARE(MDRGetAsInt32(nullptr, m_record, &number), int(MDX_E_ARG));
        QCOMPARE(MDRGetAsInt32(field, nullptr, &number), int(MDX_E_ARG));
        QCOMPARE(MDRGetAsInt32(field, m_record, nullptr), int(MDX_E_ARG));
        QCOMPARE(MDRGetTextPtr(nullptr, m_record, &pointer), int(MDX_E_ARG));
        QCOMPARE(MDRGetTextPtr(field, nullptr, &pointer), int(MDX_E_ARG));
        QCOMPARE(MDRGetTextPtr(field, m_record, nullptr), int(MDX_E_ARG));
        QCOMPARE(MDRGetTextRef(nullptr, m_record, &length, &pointer), int(MDX_E_ARG));
        QCOMPARE(MDRGetTextRef(field, m_record, nullptr, &pointer), int(MDX_E_ARG));
        QCOMPARE(MDRGetTextRef(field, m_record, &length, nullptr), int(MDX_E_ARG));
        QCOMPARE(MDRIsUser(nullptr, m_record, &user), int(MDX_E_ARG));
        QCOMPARE(MDRIsUser(field, nullptr, &user), int(MDX_E_ARG));
        QCOMPARE(MDRIsUser(field, m_record, nullptr), int(MDX_E_ARG));
        QCOMPARE(MDRSetUser(nullptr, m_record, 1), int(MDX_E_ARG));
        QCOMPARE(MDRSetUser(field, nullptr, 1), int(MDX_E_ARG));
        QCOMPARE(MDRSetFlags(nullptr, 1), int(MDX_E_ARG));
        QCOMPARE(orvo::mdx::recordFlags(nullptr), 0u);
        QVERIFY(!orvo::mdx::fieldName(nullptr));
        QCOMPARE(int(orvo::mdx::fieldType(nullptr)), 0);
        QCOMPARE(orvo::mdx::fieldNumber(nullptr), -1);
    }

    void aTextPointerKnowsItsLength() {
        // What MDXArrayUnPack relies on: four bytes of length before every text, also the empty
        // one.
        const char* pointer = nullptr;
        uint32_t length = 99;
        MDRGetTextPtr(MDRFldByNum(m_array.get(), 4), m_record, &pointer);
        std::memcpy(&length, pointer - 4, 4);
        QCOMPARE(length, 0u);
        set(m_record, 4, blockValue(std::string("12\0", 3)));
        MDRGetTextPtr(MDRFldByNum(m_array.get(), 4), m_record, &pointer);
        std::memcpy(&length, pointer - 4, 4);
        QCOMPARE(length, 3u);
    }

private:
    ArrayPtr m_array;
    MDRData* m_record = nullptr;
};

QTEST_APPLESS_MAIN(TestMdxValues)
#include "tst_mdx_values.moc"
