// Keys: descriptions, uniqueness, seeks by every kind of value.
#include "MdxTest.h"

#include <QtTest>

#include <algorithm>
#include <limits>

using namespace mdxtest;

Q_DECLARE_METATYPE(std::string)

class TestMdxKeys : public QObject {
    Q_OBJECT

private slots:
    void descriptionsAreChecked() {
        const ArrayPtr a = makeArray(allTypes());
        QCOMPARE(addKey(a.get(), "", MDX_KEY_MULTI), int(MDX_E_FORMAT));
        QCOMPARE(addKey(a.get(), ";", MDX_KEY_MULTI), int(MDX_E_FORMAT));
        QCOMPARE(addKey(a.get(), "name;", MDX_KEY_MULTI), int(MDX_E_FORMAT));
        QCOMPARE(addKey(a.get(), "name;;flag", MDX_KEY_MULTI), int(MDX_E_FORMAT));
        QCOMPARE(addKey(a.get(), "missing", MDX_KEY_MULTI), int(MDX_E_NOFIELD));
        QCOMPARE(addKey(a.get(), "name;missing", MDX_KEY_MULTI), int(MDX_E_NOFIELD));
        QCOMPARE(addKey(a.get(), "name", 3), int(MDX_E_FORMAT));
        MDAKeyDescription description{};
        description.name[0] = 'n';
        description.reserved = 1;
        QCOMPARE(MDAKeyAdd(a.get(), 1, &description), int(MDX_E_FORMAT));
        QCOMPARE(a->keyCount, 0u);
        QCOMPARE(addKey(a.get(), "NAME;Flag;stamp;data;type_", MDX_KEY_MULTI), 0);
        QCOMPARE(a->keyCount, 1u);
        const ArrayPtr empty = makeArray({});
        QCOMPARE(addKey(empty.get(), "name", MDX_KEY_MULTI), int(MDX_E_NOFIELD));
    }

    void aDescriptionMayFillAllItsBytes() {
        const std::string name(192, 'f');
        const std::string other(191, 'g');
        const ArrayPtr a = makeArray({{name.c_str(), MDX_TEXT}, {other.c_str(), MDX_TEXT}});
        const std::string all = name + ";" + other;
        QCOMPARE(all.size(), sizeof MDAKeyDescription::name);
        QCOMPARE(addKey(a.get(), all, MDX_KEY_MULTI), 0);
    }

    void keysHaveALimit() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        int status = 0;
        for (int i = 0; i < 1000 && status == 0; ++i)
            status = addKey(a.get(), "k", MDX_KEY_MULTI);
        QCOMPARE(status, int(MDX_E_LIMIT));
        QCOMPARE(a->keyCount, 64u);
    }

    void deletingAKeyMovesTheLaterOnesDown() {
        const ArrayPtr a = makeArray({{"a", MDX_TEXT}, {"b", MDX_TEXT}});
        post(a.get(), {"1", "y"});
        post(a.get(), {"2", "x"});
        for (const char* key : {"a", "b", "a", "b;a"})
            QCOMPARE(addKey(a.get(), key, MDX_KEY_MULTI), 0);
        QCOMPARE(MDAKeyDel(a.get(), 4), int(MDX_E_ARG));
        QCOMPARE(MDAKeyDel(a.get(), -1), int(MDX_E_ARG));
        QCOMPARE(MDAKeyDel(a.get(), 0), 0);
        QCOMPARE(order(a.get(), 0), std::string("2 1"));
        QCOMPARE(order(a.get(), 1), std::string("1 2"));
        QCOMPARE(order(a.get(), 2), std::string("2 1"));
        post(a.get(), {"0", "z"});
        QCOMPARE(order(a.get(), 1), std::string("0 1 2"));
        QCOMPARE(MDAKeyDel(a.get(), 1), 0);
        QCOMPARE(order(a.get(), 1), std::string("2 1 0"));
    }

    void aUniqueKeyRefusesTheSecondRecord() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}, {"n", MDX_TEXT}});
        addKey(a.get(), "k", MDX_KEY_UNIQUE);
        addKey(a.get(), "n", MDX_KEY_MULTI);
        post(a.get(), {"Key", "1"});
        MDRData* second = MDARecNew(a.get());
        setText(second, 0, "KEY"); // the same without regard to case
        uint32_t word = 5;
        QCOMPARE(MDARecPost(second, &word), int(MDX_E_DUPLICATE));
        QCOMPARE(word, 0u);
        QCOMPARE(a->recordCount, 1u);
        setText(second, 0, "Key2");
        QCOMPARE(MDARecPost(second, &word), 0);
        QCOMPARE(word, 1u);
        QCOMPARE(order(a.get(), 0), std::string("Key Key2"));
        QCOMPARE(MDARecPost(second, &word), 0); // does not collide with itself
        setText(second, 0, "KEY2");
        QCOMPARE(MDARecPost(second, &word), 0);
    }

    void aUniqueKeyOverALaterFieldRefusesWhateverTheFirstFieldIs() {
        for (const char* head : {"", "a head longer than a word "}) {
            const ArrayPtr a = makeArray({{"k", MDX_TEXT}, {"n", MDX_TEXT}});
            addKey(a.get(), "n", MDX_KEY_UNIQUE);
            const std::string taken = std::string(head) + "x";
            QVERIFY(post(a.get(), {"m", taken}));
            QVERIFY(post(a.get(), {"m", std::string(head) + "z"}));
            for (const char* first : {"", "a", "m", "z"})
                QVERIFY(!post(a.get(), {first, taken}));
            MDRData* other = post(a.get(), {"q", std::string(head) + "y"});
            QVERIFY(other);
            setText(other, 1, taken);
            QCOMPARE(MDARecPost(other, nullptr), int(MDX_E_DUPLICATE));
            QCOMPARE(order(a.get(), 0), std::string("m m"));
        }
    }

    void anEditIntoADuplicateLeavesAllKeys() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}, {"n", MDX_TEXT}});
        addKey(a.get(), "n", MDX_KEY_MULTI);
        addKey(a.get(), "k", MDX_KEY_UNIQUE);
        post(a.get(), {"a", "1"});
        MDRData* b = post(a.get(), {"b", "2"});
        setText(b, 0, "a");
        uint32_t word = 5;
        QCOMPARE(MDARecPost(b, &word), int(MDX_E_DUPLICATE));
        QCOMPARE(word, 0u);
        QCOMPARE(order(a.get(), 0), std::string("a"));
        QCOMPARE(order(a.get(), 1), std::string("a"));
        QCOMPARE(textOf(b, 0), std::string("a")); // kept
        QCOMPARE(MDARecPost(b, &word), int(MDX_E_DUPLICATE));
        setText(b, 0, "c");
        QCOMPARE(MDARecPost(b, &word), 0);
        QCOMPARE(order(a.get(), 1), std::string("a c"));
        setText(b, 0, "a");
        MDARecPost(b, &word);
        QCOMPARE(MDARecDel(b), 0);
        QCOMPARE(a->recordCount, 1u);
    }

    void aUniqueKeyIsNotBuiltOverDuplicates() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}, {"n", MDX_TEXT}});
        post(a.get(), {"x", "1"});
        post(a.get(), {"X", "2"});
        QCOMPARE(addKey(a.get(), "k", MDX_KEY_UNIQUE), int(MDX_E_DUPLICATE));
        QCOMPARE(a->keyCount, 0u);
        QCOMPARE(addKey(a.get(), "k", MDX_KEY_MULTI), 0);
        QCOMPARE(addKey(a.get(), "k", MDX_KEY_UNIQUE), int(MDX_E_DUPLICATE));
        QCOMPARE(a->keyCount, 1u);
        QCOMPARE(addKey(a.get(), "n;k", MDX_KEY_UNIQUE), 0);
        // Long keys that differ only beyond what the build lays out.
        const ArrayPtr b = makeArray({{"n", MDX_INTEGER}, {"k", MDX_TEXT}});
        for (int i = 0; i < 40; ++i) {
            MDRData* record = MDARecNew(b.get());
            set(record, 0, integerValue(i));
            setText(record, 1, std::string(400, 'x') + std::to_string(39 - i));
            MDARecPost(record, nullptr);
        }
        QCOMPARE(addKey(b.get(), "k", MDX_KEY_UNIQUE), 0);
        QCOMPARE(integerOf(MDARec(b.get(), 0, 0), 0), 39);
        setText(MDARec(b.get(), 0, 0), 1, std::string(400, 'x') + "7");
        MDARecPost(MDARec(b.get(), 0, 0), nullptr);
        QCOMPARE(b->recordCount, 39u);
    }

    void uniquenessEndsWithTheLastUniqueKey() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        addKey(a.get(), "k", MDX_KEY_UNIQUE);
        addKey(a.get(), "k", MDX_KEY_MULTI);
        addKey(a.get(), "k", MDX_KEY_UNIQUE);
        post(a.get(), {"x"});
        MDAKeyDel(a.get(), 0);
        QVERIFY(!post(a.get(), {"x"}));
        MDAKeyDel(a.get(), 1);
        QVERIFY(post(a.get(), {"x"}));
    }

    void nullIsAValueOfItsOwnInAUniqueKey() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        addKey(a.get(), "k", MDX_KEY_UNIQUE);
        QCOMPARE(MDARecPost(MDARecNew(a.get()), nullptr), 0);
        QVERIFY(post(a.get(), {""}));
        QCOMPARE(MDARecPost(MDARecNew(a.get()), nullptr), int(MDX_E_DUPLICATE));
    }

    void nullPrecedesEmptyPrecedesText() {
        const ArrayPtr a = makeArray({{"id", MDX_TEXT}, {"v", MDX_TEXT}});
        addKey(a.get(), "v", MDX_KEY_MULTI);
        post(a.get(), {"text", " "});
        post(a.get(), {"empty", ""});
        post(a.get(), {"null"});
        QCOMPARE(order(a.get(), 0), std::string("null empty text"));
    }

    void equalKeysFollowFieldZeroThenEntry() {
        const ArrayPtr a = makeArray({{"id", MDX_TEXT}, {"v", MDX_TEXT}, {"n", MDX_INTEGER}});
        addKey(a.get(), "v", MDX_KEY_MULTI);
        for (const char* id : {"c", "a", "B", "a", "A"})
            post(a.get(), {id, "same"});
        QCOMPARE(order(a.get(), 0), std::string("a a A B c"));
    }

    void numbersOrderByValue() {
        const ArrayPtr a = makeArray({{"id", MDX_TEXT},
                                      {"n", MDX_INTEGER},
                                      {"d", MDX_DATE},
                                      {"b", MDX_BOOLEAN},
                                      {"x", MDX_BLOCK}});
        const double inf = std::numeric_limits<double>::infinity();
        const struct {
            const char* id;
            int32_t n;
            double d;
            bool b;
            std::string x;
        } rows[] = {{"p", 5, -1.5, true, std::string("\0", 1)},
                    {"q", INT32_MIN, inf, false, std::string("\1", 1)},
                    {"r", -1, -inf, true, ""},
                    {"s", INT32_MAX, 0.0, false, "\xFF"},
                    {"t", 0, 1e-300, true, std::string("\0\0", 2)}};
        for (const auto& row : rows) {
            MDRData* record = MDARecNew(a.get());
            setText(record, 0, row.id);
            set(record, 1, integerValue(row.n));
            set(record, 2, dateValue(row.d));
            set(record, 3, booleanValue(row.b));
            set(record, 4, blockValue(row.x));
            MDARecPost(record, nullptr);
        }
        MDRData* nothing = MDARecNew(a.get());
        setText(nothing, 0, "0");
        MDARecPost(nothing, nullptr);
        for (const char* key : {"n", "d", "b", "x"})
            addKey(a.get(), key, MDX_KEY_MULTI);
        QCOMPARE(order(a.get(), 0), std::string("0 q r t p s"));
        QCOMPARE(order(a.get(), 1), std::string("0 r p s t q"));
        QCOMPARE(order(a.get(), 2), std::string("0 q s p r t"));
        QCOMPARE(order(a.get(), 3), std::string("0 r p t q s"));
        const MDRVar minusZero = dateValue(-0.0);
        QCOMPARE(textOf(MDARecSeekV(a.get(), 1, &minusZero, nullptr), 0), std::string("s"));
        const std::string bytes("\0\0", 2);
        const MDRVar block = blockValue(bytes);
        QCOMPARE(textOf(MDARecSeekV(a.get(), 3, &block, nullptr), 0), std::string("t"));
    }

    void aScanWalksOneGroup() {
        const ArrayPtr a =
            makeArray({{"KeyLink", MDX_TEXT}, {"parent", MDX_TEXT}, {"name", MDX_TEXT}});
        addKey(a.get(), "parent;name", MDX_KEY_MULTI);
        post(a.get(), {"1", "p1", "b"});
        post(a.get(), {"2", "P1", "a"});
        post(a.get(), {"3", "p2", "c"});
        post(a.get(), {"4", "", "root"});
        MDRData* orphan = post(a.get(), {"5"});
        QVERIFY(orphan);
        const std::string parent = "p1";
        const MDRVar group[2] = {textValue(parent), nullValue()};
        int32_t position = -5;
        QVERIFY(!MDARecSeekV(a.get(), 0, group, &position)); // no record has a NULL name there
        QCOMPARE(position, 2);
        QCOMPARE(textOf(MDARec(a.get(), 0, position), 0), std::string("2"));
        QCOMPARE(textOf(MDARec(a.get(), 0, position + 1), 0), std::string("1"));
        const std::string beyond = "q";
        const MDRVar none[2] = {textValue(beyond), nullValue()};
        QVERIFY(!MDARecSeekV(a.get(), 0, none, &position));
        QCOMPARE(position, -1);
        const MDRVar nulls[2] = {nullValue(), nullValue()};
        QCOMPARE(MDARecSeekV(a.get(), 0, nulls, &position), orphan);
        QCOMPARE(position, 0);
    }

    void aValueOfAnotherTypeNeverEquals() {
        const ArrayPtr a = makeArray(allTypes());
        for (const char* key : {"name", "type_", "data", "flag"})
            addKey(a.get(), key, MDX_KEY_MULTI);
        MDRData* record = MDARecNew(a.get());
        setText(record, 0, "1");
        set(record, 1, integerValue(1));
        set(record, 2, booleanValue(true));
        set(record, 4, blockValue("\xFF\xFF"));
        MDARecPost(record, nullptr);
        const MDRVar number = integerValue(1);
        const std::string one = "1";
        const MDRVar text = textValue(one);
        const MDRVar boolean = booleanValue(true);
        QVERIFY(!MDARecSeekV(a.get(), 0, &number, nullptr));
        QVERIFY(!MDARecSeekV(a.get(), 1, &text, nullptr));
        QVERIFY(!MDARecSeekV(a.get(), 1, &boolean, nullptr));
        QVERIFY(!MDARecSeekV(a.get(), 2, &text, nullptr));
        QVERIFY(!MDARecSeekV(a.get(), 3, &number, nullptr));
        QVERIFY(MDARecSeekV(a.get(), 1, &number, nullptr));
        // NULL of any type is NULL.
        MDRVar null = number;
        null.null = 1;
        QVERIFY(!MDARecSeekV(a.get(), 0, &null, nullptr));
        set(record, 0, nullValue());
        MDARecPost(record, nullptr);
        QCOMPARE(MDARecSeekV(a.get(), 0, &null, nullptr), record);
        null = MDRVar{};
        QCOMPARE(MDARecSeekV(a.get(), 0, &null, nullptr), record);
    }

    void aSeekTextEndsAtItsFirstZeroByte() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        addKey(a.get(), "k", MDX_KEY_UNIQUE);
        MDRData* record = post(a.get(), {"ab"});
        const std::string bytes("ab\0cd", 5);
        const MDRVar value = textValue(bytes);
        QCOMPARE(MDARecSeekV(a.get(), 0, &value, nullptr), record);
    }

    void positionsOutsideGiveNull() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        addKey(a.get(), "k", MDX_KEY_MULTI);
        MDRData* record = post(a.get(), {"x"});
        QCOMPARE(MDARec(a.get(), 0, 0), record);
        for (const int position : {-1, 1, INT32_MAX, INT32_MIN})
            QVERIFY(!MDARec(a.get(), 0, position));
        QVERIFY(!MDARec(a.get(), 1, 0));
        QVERIFY(!MDARec(a.get(), -1, 0));
        int32_t position = 9;
        const MDRVar value = nullValue();
        for (const int key : {7, 1, -1, INT32_MIN}) {
            position = 9;
            QVERIFY(!MDARecSeekV(a.get(), key, &value, &position));
            QCOMPARE(position, -1);
        }
    }

    // So many records that two threads share the work.
    void aKeyOverManyRecordsIsSortedLikeAnyOther_data() {
        QTest::addColumn<int>("values");
        QTest::addColumn<std::string>("head");
        QTest::newRow("all different") << 1 << std::string();
        QTest::newRow("all the same") << 0 << std::string();
        QTest::newRow("three values") << 3 << std::string();
        QTest::newRow("behind a head longer than a word") << 1 << std::string(60, 'h');
        QTest::newRow("behind a head longer than what is laid out") << 1 << std::string(300, 'h');
    }

    void aKeyOverManyRecordsIsSortedLikeAnyOther() {
        QFETCH(int, values);
        QFETCH(std::string, head);
        const uint32_t count = 70'000;
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}, {"v", MDX_TEXT}});
        std::vector<std::pair<std::string, std::string>> expected; // value, key
        orvo::mdx::RecordWriter writer(a.get());
        for (uint32_t i = 0; i < count; ++i) {
            // A permutation of all numbers of 32 bits.
            const uint32_t mixed = i * 2654435761u;
            const std::string key = std::to_string(mixed);
            const std::string value =
                head + std::to_string(values == 0   ? 7
                                      : values == 1 ? mixed
                                                    : mixed % static_cast<uint32_t>(values));
            writer.begin();
            writer.text1251(0, key.data(), key.size());
            writer.text1251(1, value.data(), value.size());
            writer.end();
            expected.emplace_back(value, key);
        }
        QCOMPARE(writer.finish(), int(MDX_OK));
        QCOMPARE(addKey(a.get(), "v", MDX_KEY_MULTI), int(MDX_OK));
        std::sort(expected.begin(), expected.end());
        for (uint32_t i = 0; i < count; ++i) {
            const MDRData* record = MDARec(a.get(), 0, static_cast<int32_t>(i));
            QVERIFY(record);
            if (textOf(record, 0) != expected[i].second)
                QCOMPARE(textOf(record, 0), expected[i].second);
        }
        QCOMPARE(addKey(a.get(), "k", MDX_KEY_UNIQUE), int(MDX_OK));
        QCOMPARE(addKey(a.get(), "v", MDX_KEY_UNIQUE), int(values == 1 ? MDX_OK : MDX_E_DUPLICATE));
    }

    void aRepeatedFieldIsAllowed() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        QCOMPARE(addKey(a.get(), "k;k", MDX_KEY_MULTI), 0);
        MDRData* record = post(a.get(), {"x"});
        const std::string x = "x";
        const MDRVar values[2] = {textValue(x), textValue(x)};
        QCOMPARE(MDARecSeekV(a.get(), 0, values, nullptr), record);
    }

    void positionsAreRightWhileScanningAndChanging() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        addKey(a.get(), "k", MDX_KEY_MULTI);
        for (int i = 0; i < 1000; ++i)
            post(a.get(), {std::to_string(1000 + i * 2)});
        for (int i = 0; i < 1000; ++i) {
            QCOMPARE(textOf(MDARec(a.get(), 0, i * 2), 0), std::to_string(1000 + i * 2));
            post(a.get(), {std::to_string(1001 + i * 2)});
            QCOMPARE(textOf(MDARec(a.get(), 0, i * 2 + 1), 0), std::to_string(1001 + i * 2));
        }
        for (int i = 1999; i >= 0; --i)
            QCOMPARE(textOf(MDARec(a.get(), 0, i), 0), std::to_string(1000 + i));
    }
};

QTEST_APPLESS_MAIN(TestMdxKeys)
#include "tst_mdx_keys.moc"
