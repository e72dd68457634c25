// Structures, bulk writing, blocks.
#include "MdxTest.h"

#include <QtTest>

#include <cstring>

using namespace mdxtest;
using orvo::mdx::addField;
using orvo::mdx::RecordWriter;

class TestMdxBuilder : public QObject {
    Q_OBJECT

private slots:
    void fieldsAreChecked() {
        const ArrayPtr a = makeArray({});
        QCOMPARE(addField(a.get(), "a", MDX_TEXT), 0);
        QCOMPARE(addField(a.get(), "A", MDX_TEXT), int(MDX_E_ARG));
        QCOMPARE(addField(a.get(), "", MDX_TEXT), int(MDX_E_ARG));
        QCOMPARE(addField(a.get(), "b", MDX_NONE), int(MDX_E_ARG));
        QCOMPARE(addField(a.get(), "b", MdxType(6)), int(MDX_E_ARG));
        QCOMPARE(addField(a.get(), std::string(256, 'x').c_str(), MDX_TEXT), int(MDX_E_LIMIT));
        QCOMPARE(addField(nullptr, "b", MDX_TEXT), int(MDX_E_ARG));
        QCOMPARE(addField(a.get(), nullptr, MDX_TEXT), int(MDX_E_ARG));
        QCOMPARE(int(a->fieldCount), 1);
        QCOMPARE(std::string(orvo::mdx::fieldName(MDRFldByNum(a.get(), 0))), std::string("a"));
        QCOMPARE(orvo::mdx::fieldNumber(MDRFldByNum(a.get(), 0)), 0);
    }

    void theStructureIsFixedOnceThereIsContent() {
        const ArrayPtr a = makeArray({{"a", MDX_TEXT}});
        MDARecNew(a.get());
        QCOMPARE(addField(a.get(), "b", MDX_TEXT), int(MDX_E_ARG));
        const ArrayPtr b = makeArray({{"a", MDX_TEXT}});
        addKey(b.get(), "a", MDX_KEY_MULTI);
        QCOMPARE(addField(b.get(), "b", MDX_TEXT), int(MDX_E_ARG));
    }

    void bulkWrittenRecordsEqualPostedOnes() {
        const ArrayPtr a = makeArray(allTypes());
        const ArrayPtr b = makeArray(allTypes());
        for (MDArray* array : {a.get(), b.get()})
            QCOMPARE(addKey(array, "type_;name", MDX_KEY_MULTI), 0);
        RecordWriter writer(b.get());
        constexpr int count = 12000; // the later ones go through the second thread
        for (int i = 0; i < count; ++i) {
            const std::string text = i % 7 == 0 ? "" : "Имя " + std::to_string(i * 7919 % 3000);
            const int size = i % 1000 == 999 ? 100000 : i % 50 == 0 ? 20000 : i % 5;
            const std::string block(size_t(size), static_cast<char>(i));
            MDRData* record = MDARecNew(a.get());
            setText(record, 0, cp(text.c_str()));
            writer.begin();
            writer.textUtf8(0, text.data(), text.size());
            if (i % 3 != 0) {
                set(record, 1, integerValue(i % 5));
                writer.integer(1, i % 5);
            }
            set(record, 2, booleanValue(i % 2));
            writer.boolean(2, i % 2);
            set(record, 3, dateValue(i * 0.5));
            writer.date(3, i * 0.5);
            set(record, 4, blockValue(block));
            writer.block(4, block.data(), block.size());
            writer.end();
            MDARecPost(record, nullptr);
        }
        QCOMPARE(b->recordCount, 0u); // nothing before the end
        QCOMPARE(writer.finish(), 0);
        QCOMPARE(b->recordCount, uint32_t(count));
        QVERIFY(dump(a.get()) == dump(b.get()));
        QVERIFY(packed(a.get()).text() == packed(b.get()).text());
    }

    void theWriterAddsToWhatIsThere() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        addKey(a.get(), "k", MDX_KEY_UNIQUE);
        for (int i = 0; i < 1000; ++i)
            post(a.get(), {"a" + std::to_string(i)});
        for (const int count : {5, 2000}) { // one by one, and by building the keys anew
            RecordWriter writer(a.get());
            for (int i = 0; i < count; ++i) {
                const std::string key = std::to_string(count) + "_" + std::to_string(i);
                writer.begin();
                writer.text1251(0, key.data(), key.size());
                writer.end();
            }
        } // the destructor finishes
        QCOMPARE(a->recordCount, 3005u);
        const std::string key = "5_3";
        const MDRVar value = textValue(key);
        QVERIFY(MDARecSeekV(a.get(), 0, &value, nullptr));
    }

    void duplicatesAreReportedAndLeftOut() {
        for (const int present : {0, 1000}) {
            const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
            addKey(a.get(), "k", MDX_KEY_UNIQUE);
            for (int i = 0; i < present; ++i)
                post(a.get(), {"old" + std::to_string(i)});
            RecordWriter writer(a.get());
            for (const char* key : {"x", "y", "X"}) {
                writer.begin();
                writer.text1251(0, key, 1);
                writer.end();
            }
            QCOMPARE(writer.finish(), int(MDX_E_DUPLICATE));
            QCOMPARE(a->recordCount, uint32_t(present + 2));
            QCOMPARE(orvo::mdx::postedCount(a.get()), uint32_t(present + 2));
        }
    }

    void writerMistakesAreReported() {
        const ArrayPtr a = makeArray(allTypes());
        {
            RecordWriter writer(a.get());
            writer.begin();
            writer.integer(1, 1);
            writer.text1251(0, "late", 4); // numbers must rise
            writer.end();
            QCOMPARE(writer.finish(), int(MDX_E_ARG));
        }
        {
            RecordWriter writer(a.get());
            writer.begin();
            writer.integer(0, 1);
            writer.end();
            QCOMPARE(writer.finish(), int(MDX_E_TYPE));
        }
        {
            RecordWriter writer(a.get());
            writer.begin();
            writer.integer(9, 1);
            QCOMPARE(writer.finish(), int(MDX_E_ARG));
        }
        RecordWriter nowhere(nullptr);
        nowhere.begin();
        nowhere.integer(0, 1);
        nowhere.end();
        QCOMPARE(nowhere.finish(), int(MDX_E_ARG));
        QCOMPARE(orvo::mdx::postedCount(a.get()), 0u);
    }

    void mistakesInManyRecordsAreReported() {
        for (const bool wrongType : {true, false}) {
            const ArrayPtr a = makeArray(allTypes());
            addKey(a.get(), "name", MDX_KEY_MULTI);
            RecordWriter writer(a.get());
            for (int i = 0; i < 20000; ++i) {
                writer.begin();
                if (i == 10000)
                    writer.integer(wrongType ? 0 : 1000, i);
                else
                    writer.text1251(0, "name", 4);
                writer.end();
            }
            QCOMPARE(writer.finish(), int(wrongType ? MDX_E_TYPE : MDX_E_ARG));
            QCOMPARE(a->recordCount, 10000u); // those before
        }
    }

    void aWriterOfManyRecordsCanBeLeftOrUsedAgain() {
        const ArrayPtr a = makeArray(allTypes());
        addKey(a.get(), "name", MDX_KEY_MULTI);
        const std::string large(200000, 'x');
        const auto write = [&](RecordWriter& writer, int count) {
            for (int i = 0; i < count; ++i) {
                writer.begin();
                writer.textUtf8(0, "Имя", 6);
                if (i + 1 == count)
                    writer.block(4, large.data(), large.size());
                writer.end();
            }
        };
        {
            RecordWriter writer(a.get());
            write(writer, 9000);
            QCOMPARE(writer.finish(), 0);
            QCOMPARE(a->recordCount, 9000u);
            write(writer, 9001);
            writer.begin(); // never ended: no record
            writer.textUtf8(0, "Имя", 6);
        } // the destructor finishes
        QCOMPARE(a->recordCount, 18001u);
        const MDRData* last = orvo::mdx::postedRecord(a.get(), 18000);
        uint32_t length = 0;
        const char* bytes = nullptr;
        QCOMPARE(MDRGetTextRef(MDRFldByNum(a.get(), 0), last, &length, &bytes), int(MDX_OK));
        QCOMPARE(std::string(bytes, length), cp("Имя"));
        QCOMPARE(MDRGetTextRef(MDRFldByNum(a.get(), 4), last, &length, &bytes), int(MDX_OK));
        QVERIFY(std::string(bytes, length) == large);
    }

    void aBlockHoldsItsFields() {
        const MdxType types[] = {MDX_INTEGER, MDX_TEXT, MDX_BLOCK, MDX_DATE};
        MDXCliParam* param = orvo::mdx::paramCreate(types, 4);
        QVERIFY(param);
        QCOMPARE(int(param->array->fieldCount), 4);
        for (int i = 0; i < 4; ++i)
            QVERIFY(isNull(param->record, i));
        QCOMPARE(orvo::mdx::paramSetInt(param, 0, -3), 0);
        QCOMPARE(orvo::mdx::paramSetText(param, 1, "text"), 0);
        QCOMPARE(orvo::mdx::paramSetBlock(param, 2, "\0\1", 2), 0);
        QCOMPARE(orvo::mdx::paramSetDate(param, 3, 2.5), 0);
        QCOMPARE(orvo::mdx::paramSetText(param, 0, "text"), int(MDX_E_TYPE));
        QCOMPARE(orvo::mdx::paramSetInt(param, 4, 1), int(MDX_E_ARG));
        QCOMPARE(orvo::mdx::paramSetInt(nullptr, 0, 1), int(MDX_E_ARG));
        QCOMPARE(integerOf(param->record, 0), -3);
        QCOMPARE(textOf(param->record, 1), std::string("text"));
        QCOMPARE(textOf(param->record, 2), std::string("\0\1", 2));
        orvo::mdx::paramFree(param);
        orvo::mdx::paramFree(nullptr);
        QVERIFY(!orvo::mdx::paramCreate(types, -1));
        QVERIFY(!orvo::mdx::paramCreate(nullptr, 1));
        const MdxType none[] = {MDX_NONE};
        QVERIFY(!orvo::mdx::paramCreate(none, 1));
        MDXCliParam* empty = orvo::mdx::paramCreate(nullptr, 0);
        QVERIFY(empty && empty->array->fieldCount == 0);
        orvo::mdx::paramFree(empty);
    }

    void aReplyTravelsThroughABlock() {
        const ArrayPtr a = makeArray(allTypes());
        addKey(a.get(), "name", MDX_KEY_UNIQUE);
        post(a.get(), {"b"});
        post(a.get(), {"a"});
        for (const bool withRecords : {true, false}) {
            void* block = nullptr;
            const uint32_t length = orvo::mdx::packReply(a.get(), withRecords, &block);
            const MdxType types[] = {MDX_INTEGER, MDX_TEXT, MDX_BLOCK};
            MDXCliParam* param = orvo::mdx::paramCreate(types, 3);
            QCOMPARE(orvo::mdx::paramSetBlock(param, 2, block, length), 0);
            MDMemFree(block);
            const char* pointer = nullptr;
            QCOMPARE(MDRGetTextPtr(MDRFldByNum(param->array, 2), param->record, &pointer), 0);
            const ArrayPtr b = makeArray({});
            QCOMPARE(MDXArrayUnPack(b.get(), pointer, 1), 0);
            orvo::mdx::paramFree(param);
            QCOMPARE(int(b->fieldCount), 5);
            QCOMPARE(b->keyCount, 1u);
            QCOMPARE(b->recordCount, withRecords ? 2u : 0u);
            if (withRecords)
                QCOMPARE(order(b.get(), 0), std::string("a b"));
            else
                QVERIFY(post(b.get(), {"new"}));
        }
    }

    void aReplyHandsItsTableOverOnce() {
        const ArrayPtr a = makeArray(allTypes());
        addKey(a.get(), "name", MDX_KEY_UNIQUE);
        post(a.get(), {"b"});
        MDRData* record = post(a.get(), {"a"});
        MDRSetFlags(record, MDX_UPDATE);
        const MdxType types[] = {MDX_INTEGER, MDX_TEXT, MDX_BLOCK};
        MDXCliParam* param = orvo::mdx::paramCreate(types, 3);
        QCOMPARE(orvo::mdx::paramSetContent(param, 2, a.get()), 0);
        QCOMPARE(int(a->fieldCount), 0);
        QCOMPARE(orvo::mdx::postedCount(a.get()), 0u);

        const char* block = nullptr;
        QCOMPARE(MDRGetTextPtr(MDRFldByNum(param->array, 2), param->record, &block), 0);
        uint32_t length = 0;
        QCOMPARE(MDRGetTextRef(MDRFldByNum(param->array, 2), param->record, &length, &block), 0);
        // Not by its bytes, wherever they may stand.
        const ArrayPtr b = makeArray({{"k", MDX_TEXT}});
        QCOMPARE(MDAUnpackN(b.get(), block, length), int(MDX_E_FORMAT));
        MDXCliParam* copy = orvo::mdx::paramCreate(types, 3);
        QCOMPARE(orvo::mdx::paramSetBlock(copy, 2, block, length), 0);
        const char* elsewhere = nullptr;
        MDRGetTextPtr(MDRFldByNum(copy->array, 2), copy->record, &elsewhere);
        QCOMPARE(MDXArrayUnPack(b.get(), elsewhere, 1), int(MDX_E_FORMAT));
        orvo::mdx::paramFree(copy);

        QCOMPARE(MDXArrayUnPack(b.get(), block, 1), 0);
        const ArrayPtr c = makeArray({{"k", MDX_TEXT}});
        QCOMPARE(MDXArrayUnPack(c.get(), block, 1), int(MDX_E_FORMAT));
        QCOMPARE(int(c->fieldCount), 0);
        orvo::mdx::paramFree(param);

        QCOMPARE(int(b->fieldCount), 5);
        QCOMPARE(b->keyCount, 1u);
        QCOMPARE(b->recordCount, 2u);
        QCOMPARE(order(b.get(), 0), std::string("a b"));
        QCOMPARE(MDARec(b.get(), 0, 0)->owner, b.get());
        QCOMPARE(orvo::mdx::recordFlags(MDARec(b.get(), 0, 0)), uint32_t(MDX_UPDATE));
        QVERIFY(post(b.get(), {"c"}));
        QCOMPARE(MDARecDel(MDARec(b.get(), 0, 0)), 0);
        QCOMPARE(order(b.get(), 0), std::string("b c"));
        QCOMPARE(orvo::mdx::check(b.get()), std::string());
        // The emptied one is as good as new.
        QCOMPARE(orvo::mdx::addField(a.get(), "k", MDX_TEXT), 0);
        QVERIFY(post(a.get(), {"again"}));
        QCOMPARE(orvo::mdx::check(a.get()), std::string());
    }

    void aTableThatNobodyTakesEndsWithItsReply() {
        const MdxType types[] = {MDX_INTEGER, MDX_TEXT, MDX_BLOCK};
        MDXCliParam* param = orvo::mdx::paramCreate(types, 3);
        for (int i = 0; i < 2; ++i) {
            const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
            post(a.get(), {"x"});
            QCOMPARE(orvo::mdx::paramSetContent(param, 2, a.get()), 0);
        }
        orvo::mdx::paramFree(param);
        QCOMPARE(orvo::mdx::paramSetContent(nullptr, 2, nullptr), int(MDX_E_ARG));
    }

    void anEmptyReplyFieldIsRefused() {
        const MdxType types[] = {MDX_INTEGER, MDX_TEXT, MDX_BLOCK};
        MDXCliParam* param = orvo::mdx::paramCreate(types, 3);
        const char* pointer = nullptr;
        MDRGetTextPtr(MDRFldByNum(param->array, 2), param->record, &pointer);
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        QCOMPARE(MDXArrayUnPack(a.get(), pointer, 1), int(MDX_E_FORMAT));
        QCOMPARE(int(a->fieldCount), 0);
        orvo::mdx::paramFree(param);
    }

    void anArrayCanBeUnpackedFromItsOwnRecord() {
        const ArrayPtr inner = makeArray({{"k", MDX_TEXT}});
        post(inner.get(), {"inside"});
        const Bytes image = packed(inner.get());
        const ArrayPtr a = makeArray({{"image", MDX_BLOCK}});
        MDRData* record = MDARecNew(a.get());
        set(record, 0, blockValue(image.text()));
        const char* pointer = nullptr;
        MDRGetTextPtr(MDRFldByNum(a.get(), 0), record, &pointer);
        QCOMPARE(MDXArrayUnPack(a.get(), pointer, 1), 0);
        QCOMPARE(textOf(orvo::mdx::postedRecord(a.get(), 0), 0), std::string("inside"));
    }
};

QTEST_APPLESS_MAIN(TestMdxBuilder)
#include "tst_mdx_builder.moc"
