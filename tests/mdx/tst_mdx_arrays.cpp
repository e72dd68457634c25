// Arrays, their records from new to deleted, copies, and the table object CMDArray.
#include "MdxTest.h"

#include <QtTest>

#include <cstddef>

using namespace mdxtest;
using orvo::mdx::postedCount;
using orvo::mdx::postedRecord;

class TestMdxArrays : public QObject {
    Q_OBJECT

private slots:
    void aNewArrayHasNothing() {
        MDArray* array = nullptr;
        QCOMPARE(MDACreate(&array, 0), 0);
        QCOMPARE(int(array->fieldCount), 0);
        QCOMPARE(array->keyCount, 0u);
        QCOMPARE(array->recordCount, 0u);
        QVERIFY(!MDARecNew(array)); // no structure
        QVERIFY(!MDARec(array, 0, 0));
        int32_t position = 5;
        const MDRVar value = nullValue();
        QVERIFY(!MDARecSeekV(array, 0, &value, &position));
        QCOMPARE(position, -1);
        MDADestroy(array);
    }

    void recordsCountOnlyThroughAKey() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        QVERIFY(post(a.get(), {"x"}));
        QCOMPARE(a->recordCount, 0u);
        QCOMPARE(postedCount(a.get()), 1u);
        QCOMPARE(addKey(a.get(), "k", MDX_KEY_UNIQUE), 0);
        QCOMPARE(a->recordCount, 1u);
        QVERIFY(post(a.get(), {"y"}));
        QCOMPARE(a->recordCount, 2u);
        QCOMPARE(MDAKeyDel(a.get(), 0), 0);
        QCOMPARE(a->recordCount, 0u);
        QCOMPARE(postedCount(a.get()), 2u);
    }

    void anUnpostedRecordIsInNoKey() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        addKey(a.get(), "k", MDX_KEY_MULTI);
        MDRData* record = MDARecNew(a.get());
        setText(record, 0, "x");
        QCOMPARE(a->recordCount, 0u);
        QVERIFY(!MDARec(a.get(), 0, 0));
        uint32_t word = 9;
        QCOMPARE(MDARecPost(record, &word), 0);
        QCOMPARE(word, 1u);
        QCOMPARE(MDARec(a.get(), 0, 0), record);
        QCOMPARE(MDARecPost(record, &word), 0); // once more, with nothing changed
        QCOMPARE(a->recordCount, 1u);
    }

    void editingKeepsTheHandleAndMovesTheRecordAtThePost() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        addKey(a.get(), "k", MDX_KEY_UNIQUE);
        MDRData* b = post(a.get(), {"b"});
        post(a.get(), {"c"});
        QCOMPARE(MDARecEdit(b), b);
        setText(b, 0, "z");
        QCOMPARE(textOf(b, 0), std::string("z"));
        QCOMPARE(MDARec(a.get(), 0, 0), b); // where it was
        MDRVar value = textValue("b");
        const std::string old = "b";
        value.value.text.pointer = old.c_str();
        QCOMPARE(MDARecSeekV(a.get(), 0, &value, nullptr), b);
        QCOMPARE(MDARecPost(b, nullptr), 0);
        QCOMPARE(order(a.get(), 0), std::string("c z"));
        QVERIFY(!MDARecSeekV(a.get(), 0, &value, nullptr));
    }

    void insertingAndEditingAtOnceAsANotificationDoes() {
        const ArrayPtr a = makeArray({{"KeyLink", MDX_TEXT}, {"name", MDX_TEXT}});
        addKey(a.get(), "KeyLink", MDX_KEY_UNIQUE);
        addKey(a.get(), "name", MDX_KEY_MULTI);
        post(a.get(), {"1", "m"});
        MDRData* record = MDARecNew(a.get());
        MDRSetFlags(record, MDX_INSERT);
        setText(record, 0, "2");
        QCOMPARE(MDARecPost(record, nullptr), 0);
        QCOMPARE(order(a.get(), 1), std::string("2 1")); // NULL name first
        record = MDARecEdit(record);
        setText(record, 1, "z");
        QCOMPARE(MDARecPost(record, nullptr), 0);
        QCOMPARE(order(a.get(), 1), std::string("1 2"));
    }

    void deletingWorksInEveryState() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        addKey(a.get(), "k", MDX_KEY_MULTI);
        QCOMPARE(MDARecDel(MDARecNew(a.get())), 0); // never posted
        MDRData* posted = post(a.get(), {"a"});
        post(a.get(), {"b"});
        QCOMPARE(MDARecDel(posted), 0);
        QCOMPARE(order(a.get(), 0), std::string("b"));
        MDRData* edited = post(a.get(), {"c"});
        setText(edited, 0, std::string(50000, 'x'));
        QCOMPARE(MDARecDel(edited), 0);
        QCOMPARE(order(a.get(), 0), std::string("b"));
        QCOMPARE(MDARecDel(nullptr), int(MDX_E_ARG));
    }

    void aDeletedRecordIsRefusedByReadersAndWriters_data() {
        QTest::addColumn<int>("length");
        QTest::newRow("text beside the head") << 40;
        QTest::newRow("text in a block of its own") << 40000;
    }
    void aDeletedRecordIsRefusedByReadersAndWriters() {
        QFETCH(int, length);
        const ArrayPtr a = makeArray(allTypes());
        addKey(a.get(), "name", MDX_KEY_MULTI);
        MDRData* record = MDARecNew(a.get());
        setText(record, 0, std::string(size_t(length), 'x'));
        set(record, 1, integerValue(5));
        QCOMPARE(MDARecPost(record, nullptr), 0);
        QCOMPARE(MDARecDel(record), 0);

        const MDRField name = MDRFldByNum(a.get(), 0);
        MDRVar value = integerValue(7);
        int32_t number = 7;
        const char* text = "untouched";
        uint32_t size = 7;
        uint8_t user = 7;
        QCOMPARE(MDRGetVal(name, record, &value), int(MDX_E_ARG));
        QCOMPARE(MDRGetAsInt32(MDRFldByNum(a.get(), 1), record, &number), int(MDX_E_ARG));
        QCOMPARE(MDRGetTextPtr(name, record, &text), int(MDX_E_ARG));
        QCOMPARE(MDRGetTextRef(name, record, &size, &text), int(MDX_E_ARG));
        QCOMPARE(MDRIsUser(name, record, &user), int(MDX_E_ARG));
        QCOMPARE(int32_t(value.value.integer), 7);
        QCOMPARE(number, 7);
        QCOMPARE(text, "untouched");
        QCOMPARE(size, 7u);
        QCOMPARE(int(user), 7);
        void* bytes = nullptr;
        QCOMPARE(orvo::mdx::rawRecord(record, &bytes), 0u);
        QCOMPARE(setText(record, 0, "y"), int(MDX_E_ARG));
        QCOMPARE(MDARecPost(record, nullptr), int(MDX_E_ARG));
        QCOMPARE(MDARecDel(record), int(MDX_E_ARG));
        QVERIFY(!MDARecEdit(record));
    }

    void recordsStayWhereTheyAre() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        addKey(a.get(), "k", MDX_KEY_MULTI);
        std::vector<MDRData*> records;
        for (int i = 0; i < 5000; ++i)
            records.push_back(post(a.get(), {std::to_string(i)}));
        for (int i = 0; i < 5000; ++i)
            QCOMPARE(textOf(records[size_t(i)], 0), std::to_string(i));
        for (int i = 0; i < 5000; i += 2)
            MDARecDel(records[size_t(i)]);
        for (int i = 1; i < 5000; i += 2) {
            QCOMPARE(textOf(records[size_t(i)], 0), std::to_string(i));
            QCOMPARE(postedRecord(a.get(), uint32_t(i / 2)), records[size_t(i)]);
        }
        QVERIFY(!postedRecord(a.get(), 2500));
        QVERIFY(!postedRecord(nullptr, 0));
        QCOMPARE(postedCount(nullptr), 0u);
    }

    void entryOrderSurvivesDeletionsAndEdits() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        MDRData* first = post(a.get(), {"same"});
        MDRData* second = post(a.get(), {"SAME"});
        MDRData* third = post(a.get(), {"Same"});
        addKey(a.get(), "k", MDX_KEY_MULTI);
        QCOMPARE(order(a.get(), 0), std::string("same SAME Same"));
        setText(first, 0, "zzz");
        MDARecPost(first, nullptr);
        QCOMPARE(order(a.get(), 0), std::string("SAME Same zzz"));
        setText(first, 0, "same");
        MDARecPost(first, nullptr);
        QCOMPARE(order(a.get(), 0), std::string("same SAME Same"));
        MDARecDel(second);
        MDRData* again = post(a.get(), {"sAME"});
        QCOMPARE(order(a.get(), 0), std::string("same Same sAME"));
        QCOMPARE(postedRecord(a.get(), 1), third);
        QCOMPARE(postedRecord(a.get(), 2), again);
    }

    void longChurnKeepsMemoryAndOrder() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        addKey(a.get(), "k", MDX_KEY_MULTI);
        std::vector<MDRData*> window;
        for (int i = 0; i < 20000; ++i) {
            window.push_back(post(a.get(), {"same"}));
            if (window.size() > 100) {
                MDARecDel(window.front());
                window.erase(window.begin());
            }
        }
        QCOMPARE(a->recordCount, 100u);
        for (int i = 0; i < 100; ++i)
            QCOMPARE(MDARec(a.get(), 0, i), window[size_t(i)]);
        QVERIFY(orvo::mdx::keyMemory(a.get()) < 20000);
    }

    void aCopyHasRecordsButNoKeys() {
        const ArrayPtr a = makeArray(allTypes());
        addKey(a.get(), "name", MDX_KEY_UNIQUE);
        MDRData* record = post(a.get(), {"one"});
        MDRSetFlags(record, MDX_UPDATE);
        MDRSetUser(MDRFldByNum(a.get(), 0), record, 1);
        post(a.get(), {"two"});
        MDARecNew(a.get()); // unposted: stays behind
        const ArrayPtr b = makeArray({{"other", MDX_INTEGER}});
        addKey(b.get(), "other", MDX_KEY_MULTI);
        QCOMPARE(MDACopy(b.get(), a.get(), 1), 0);
        QCOMPARE(b->keyCount, 0u);
        QCOMPARE(b->recordCount, 0u);
        QCOMPARE(addKey(b.get(), "NAME", MDX_KEY_UNIQUE), 0);
        QCOMPARE(dump(b.get()), dump(a.get()));
        setText(MDARec(b.get(), 0, 0), 0, "changed");
        QCOMPARE(textOf(record, 0), std::string("one"));
        QCOMPARE(MDARec(b.get(), 0, 0)->owner, b.get());
    }

    void aCopyHoldsEditedRecordsAsTheyWerePosted() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        MDRData* record = post(a.get(), {"posted"});
        setText(record, 0, "edited");
        const ArrayPtr b = makeArray({});
        QCOMPARE(MDACopy(b.get(), a.get(), 1), 0);
        QCOMPARE(textOf(postedRecord(b.get(), 0), 0), std::string("posted"));
    }

    void copyRefusals() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        post(a.get(), {"x"});
        QCOMPARE(MDACopy(a.get(), a.get(), 1), int(MDX_E_ARG));
        QCOMPARE(MDACopy(nullptr, a.get(), 1), int(MDX_E_ARG));
        QCOMPARE(MDACopy(a.get(), nullptr, 1), int(MDX_E_ARG));
        QCOMPARE(postedCount(a.get()), 1u);
    }

    void nullHandlesAreRefused() {
        QCOMPARE(MDACreate(nullptr, 0), int(MDX_E_ARG));
        MDADestroy(nullptr);
        MDAKeyDescription description{};
        QCOMPARE(MDAKeyAdd(nullptr, 1, &description), int(MDX_E_ARG));
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        QCOMPARE(MDAKeyAdd(a.get(), 1, nullptr), int(MDX_E_ARG));
        QCOMPARE(MDAKeyDel(nullptr, 0), int(MDX_E_ARG));
        QVERIFY(!MDARec(nullptr, 0, 0));
        int32_t position = 3;
        QVERIFY(!MDARecSeekV(nullptr, 0, nullptr, &position));
        QCOMPARE(position, -1);
        QVERIFY(!MDARecSeekV(a.get(), 0, nullptr, nullptr));
        QVERIFY(!MDARecNew(nullptr));
        QVERIFY(!MDARecEdit(nullptr));
        uint32_t word = 4;
        QCOMPARE(MDARecPost(nullptr, &word), int(MDX_E_ARG));
        QCOMPARE(word, 0u);
    }

    // -----------------------------------------------------------------------------------------
    // CMDArray

    void theTableObjectOwnsAnEmptyArray() {
        static_assert(offsetof(CMDArray, array) == 0);
        static_assert(offsetof(CMDArray, status) == sizeof(void*));
        CMDArray table;
        QVERIFY(table.array);
        QCOMPARE(table.status, 0);
        QCOMPARE(int(table.array->fieldCount), 0);
    }

    void postingANullOrForeignRecordIsSilent() {
        CMDArray table;
        orvo::mdx::addField(table.array, "k", MDX_TEXT);
        CMDArray other;
        orvo::mdx::addField(other.array, "k", MDX_TEXT);
        table.status = 42;
        QCOMPARE(table.RecPost(nullptr), 0u);
        QCOMPARE(table.RecPost(MDARecNew(other.array)), 0u);
        QCOMPARE(table.status, 42);
        QCOMPARE(table.RecPost(MDARecNew(table.array)), 1u);
        QCOMPARE(table.status, 0);
    }

    void aRefusedPostShowsInStatusAndWord() {
        CMDArray table;
        orvo::mdx::addField(table.array, "k", MDX_TEXT);
        table.KeyAdd("k", MDX_KEY_UNIQUE);
        QCOMPARE(table.status, 0);
        const std::string text = "x";
        for (const uint32_t expected : {1u, 0u}) {
            MDRData* record = MDARecNew(table.array);
            table.SetValF(record, "k", textValue(text));
            QCOMPARE(table.RecPost(record), expected);
        }
        QCOMPARE(table.status, int(MDX_E_DUPLICATE));
    }

    void aFieldListIsReadUpToItsThreeHundredAndEightyFourthCharacter() {
        CMDArray table;
        std::string list;
        for (int i = 0; i < 48; ++i) {
            const std::string name = "fld" + std::to_string(i < 47 ? 1000 + i : 10000);
            orvo::mdx::addField(table.array, name.c_str(), MDX_INTEGER);
            list += (i > 0 ? ";" : "") + name;
        }
        QCOMPARE(list.size(), size_t(384));
        table.KeyAdd((list + "0;nothing").c_str(), MDX_KEY_MULTI);
        QCOMPARE(table.status, int(MDX_OK));
        QCOMPARE(table.array->keyCount, 1u);
        table.KeyAdd((list.substr(0, 383) + "x").c_str(), MDX_KEY_MULTI);
        QCOMPARE(table.status, int(MDX_E_NOFIELD));
    }

    void aRefusedValueMarksItsFieldAllTheSame() {
        CMDArray table;
        orvo::mdx::addField(table.array, "n", MDX_INTEGER);
        MDRData* record = MDARecNew(table.array);
        const std::string text = "no number";
        table.SetValF(record, "n", textValue(text));
        uint8_t marked = 0;
        MDRIsUser(MDRFldByNum(table.array, 0), record, &marked);
        QCOMPARE(int(marked), 1);
        QVERIFY(isNull(record, 0));
    }

    void unknownFieldsReadAsNoneAndWriteNothing() {
        CMDArray table;
        orvo::mdx::addField(table.array, "k", MDX_TEXT);
        MDRData* record = MDARecNew(table.array);
        MDRVar value = integerValue(77);
        value.null = 0;
        table.status = 42;
        table.GetVal(record, "missing", value);
        QCOMPARE(int(value.type), 0);
        QCOMPARE(int32_t(value.value.integer), 77); // the rest keeps its bytes
        table.SetValF(record, "missing", integerValue(1));
        table.SetValF(record, 9, integerValue(1));
        QCOMPARE(table.status, 42);
        QVERIFY(isNull(record, 0));
    }

    void aValueSetThroughTheTableIsMarked() {
        CMDArray table;
        orvo::mdx::addField(table.array, "a", MDX_TEXT);
        orvo::mdx::addField(table.array, "b", MDX_INTEGER);
        MDRData* record = MDARecNew(table.array);
        const std::string text = "x";
        table.SetValF(record, "A", textValue(text));
        table.SetValF(record, 1, nullValue());
        for (int i = 0; i < 2; ++i) {
            uint8_t user = 0;
            MDRIsUser(MDRFldByNum(table.array, i), record, &user);
            QCOMPARE(int(user), 1);
        }
        MDRVar value{};
        table.GetVal(record, "a", value);
        QCOMPARE(std::string(value.value.text.pointer), text);
    }

    void attachingTakesTheArrayOver() {
        CMDArray table;
        table.Attach(nullptr);
        QCOMPARE(table.status, int(MDX_E_SELF));
        MDArray* same = table.array;
        table.status = 0;
        table.Attach(same);
        QCOMPARE(table.status, int(MDX_E_SELF));
        QCOMPARE(table.array, same);
        MDArray* other = makeArray({{"k", MDX_TEXT}}).release();
        table.Attach(other);
        QCOMPARE(table.status, 0);
        QCOMPARE(table.array, other);
    }

    void deletingThroughTheTableAsksForTheOwner() {
        CMDArray table;
        orvo::mdx::addField(table.array, "k", MDX_TEXT);
        CMDArray other;
        orvo::mdx::addField(other.array, "k", MDX_TEXT);
        MDRData* record = post(other.array, {"x"});
        table.RecDel(record);
        QCOMPARE(table.status, int(MDX_E_OWNER));
        QVERIFY(!table.RecEdit(record));
        QVERIFY(!table.RecEdit(nullptr));
        table.RecDel(nullptr);
        QCOMPARE(table.status, int(MDX_E_OWNER));
        QCOMPARE(other.RecEdit(record), record);
        other.RecDel(record);
        QCOMPARE(other.status, 0);
        QCOMPARE(postedCount(other.array), 0u);
    }

    void keySetupLeavesExactlyTheKeyLink_data() {
        QTest::addColumn<int>("arriving");
        QTest::newRow("none") << 0;
        QTest::newRow("one") << 1;
        QTest::newRow("several") << 3;
    }
    void keySetupLeavesExactlyTheKeyLink() {
        QFETCH(int, arriving);
        CMDArray table;
        orvo::mdx::addField(table.array, "name", MDX_TEXT);
        orvo::mdx::addField(table.array, "KeyLink", MDX_TEXT);
        for (int i = 0; i < 500; ++i)
            post(table.array, {std::to_string(i), std::to_string(999 - i)});
        const char* const keys[] = {"KeyLink", "name", "name;KeyLink"};
        for (int i = 0; i < arriving; ++i)
            table.KeyAdd(keys[i], i == 0 ? 0 : 8);
        table.KeyAdd("KeyLink", 0);
        QCOMPARE(table.status, 0);
        while (table.array->keyCount >= 2)
            MDAKeyDel(table.array, 0);
        QCOMPARE(table.array->keyCount, 1u);
        QCOMPARE(table.array->recordCount, 500u);
        QCOMPARE(textOf(MDARec(table.array, 0, 0), 1), std::string("500"));
        const std::string key = "777";
        const MDRVar value = textValue(key);
        QCOMPARE(textOf(MDARecSeekV(table.array, 0, &value, nullptr), 0), std::string("222"));
    }
};

QTEST_APPLESS_MAIN(TestMdxArrays)
#include "tst_mdx_arrays.moc"
