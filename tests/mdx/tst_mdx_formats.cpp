// The packed image and the raw record: byte by byte, and there and back.
#include "MdxTest.h"

#include <QtTest>

using namespace mdxtest;

// An array is a description to look fields up in, and never one to make anew or free.
template <class Type>
constexpr bool isFreeable = requires(Type* type) {
    MDRTypFree(type);
};
template <class Type>
constexpr bool isInitialisable = requires(Type* type) {
    MDRTypInit(type);
};
static_assert(isFreeable<MDRType> && isInitialisable<MDRType>);
static_assert(!isFreeable<MDArray> && !isInitialisable<MDArray>);

namespace {

QByteArray hex(const Bytes& bytes) {
    return QByteArray(static_cast<const char*>(bytes.block.get()), int(bytes.length)).toHex(' ');
}

// Two fields, two keys, two records: one with a text and user bit and flag, one all NULL.
ArrayPtr smallTable() {
    ArrayPtr a = makeArray({{"Id", MDX_TEXT}, {"n", MDX_INTEGER}});
    addKey(a.get(), "Id", MDX_KEY_UNIQUE);
    addKey(a.get(), "n;id", MDX_KEY_MULTI);
    MDRData* record = MDARecNew(a.get());
    setText(record, 0, "Ab");
    set(record, 1, integerValue(-2));
    MDRSetUser(MDRFldByNum(a.get(), 1), record, 1);
    MDRSetFlags(record, MDX_UPDATE);
    MDARecPost(record, nullptr);
    MDARecPost(MDARecNew(a.get()), nullptr);
    return a;
}

} // namespace

class TestMdxFormats : public QObject {
    Q_OBJECT

private slots:
    void theImageOfASmallTable() {
        const QByteArray expected =
            // "ORVOMDX" 1, length, records, fields, keys, 0 0
            "4f 52 56 4f 4d 44 58 01 4a 00 00 00 02 00 00 00 02 02 00 00 "
            // fields: text "Id", integer "n"
            "09 02 49 64 05 01 6e "
            // keys: unique "Id", multi "n;id"
            "00 02 00 49 64 08 04 00 6e 3b 69 64 "
            // record: 17 bytes, flag 2; values, users, slots, text
            "8a 00 00 00 03 02 0e 00 00 00 fe ff ff ff 02 00 00 00 41 62 00 "
            // record: 10 bytes, no flag, all NULL
            "50 00 00 00 00 00 00 00 00 00 00 00 00 00";
        const ArrayPtr a = smallTable();
        QCOMPARE(hex(packed(a.get())), expected);
    }

    void theRawRecordOfANotification() {
        const QByteArray expected =
            // "ORVOREC" 1, length, offset of the body, fields, flag, 0 0
            "4f 52 56 4f 52 45 43 01 2c 00 00 00 1b 00 00 00 02 02 00 00 "
            "09 02 49 64 05 01 6e "
            "03 02 0e 00 00 00 fe ff ff ff 02 00 00 00 41 62 00";
        const ArrayPtr a = smallTable();
        QCOMPARE(hex(raw(orvo::mdx::postedRecord(a.get(), 0))), expected);
    }

    void anEmptyArrayHasAnImage() {
        const ArrayPtr a = makeArray({});
        QCOMPARE(hex(packed(a.get())),
                 QByteArray("4f 52 56 4f 4d 44 58 01 14 00 00 00 00 00 00 00 00 00 00 00"));
        const ArrayPtr b = makeArray({{"k", MDX_TEXT}});
        QCOMPARE(MDAUnpack(b.get(), packed(a.get()).block.get()), 0);
        QCOMPARE(int(b->fieldCount), 0);
    }

    void aTableComesBackWhole() {
        const ArrayPtr a = makeArray(allTypes());
        addKey(a.get(), "name", MDX_KEY_MULTI);
        addKey(a.get(), "type_;stamp;data", MDX_KEY_MULTI);
        addKey(a.get(), "NAME", MDX_KEY_MULTI);
        for (int i = 0; i < 700; ++i) {
            MDRData* record = MDARecNew(a.get());
            // Fields in falling order, and twice: the body is not canonical in memory.
            if (i % 3)
                set(record, 4, blockValue(std::string(size_t(i % 20), '\0')));
            set(record, 3, dateValue(i % 11));
            set(record, 1, integerValue(i % 13));
            if (i % 5)
                setText(record, 0, "first, longer text");
            setText(record, 0, i % 7 ? std::to_string(i % 50) : "");
            MDRSetUser(MDRFldByNum(a.get(), i % 5), record, 1);
            MDRSetFlags(record, i % 2 ? MDX_INSERT : MDX_DELETE);
            MDARecPost(record, nullptr);
        }
        for (uint32_t i = 0; i < 100; ++i)
            MDARecDel(orvo::mdx::postedRecord(a.get(), i * 3));
        MDARecNew(a.get()); // unposted: not packed
        const Bytes image = packed(a.get());
        const ArrayPtr b = makeArray({});
        QCOMPARE(MDAUnpackN(b.get(), image.block.get(), image.length), 0);
        QCOMPARE(b->recordCount, 600u);
        QVERIFY(dump(b.get()) == dump(a.get()));
        QVERIFY(packed(b.get()).text() == image.text()); // one form only
        // The unpacked table lives on by itself.
        QVERIFY(post(b.get(), {"zzz"}));
        QCOMPARE(b->recordCount, 601u);
        MDARecDel(MDARec(b.get(), 1, 5));
        QCOMPARE(b->recordCount, 600u);
        QCOMPARE(textOf(MDARec(b.get(), 2, 599), 0), std::string("zzz"));
    }

    // As a paste seeks in what the clipboard brought.
    void anUnpackedTableIsSoughtByItsOwnKeys() {
        const ArrayPtr a =
            makeArray({{"KeyLink", MDX_TEXT}, {"parent", MDX_TEXT}, {"order_", MDX_INTEGER}});
        addKey(a.get(), "KeyLink", MDX_KEY_UNIQUE);
        addKey(a.get(), "parent;order_", MDX_KEY_MULTI);
        const auto element = [&](const char* key, const char* parent, int place) {
            MDRData* record = MDARecNew(a.get());
            setText(record, 0, key);
            if (*parent != '\0')
                setText(record, 1, parent);
            set(record, 2, integerValue(place));
            MDARecPost(record, nullptr);
        };
        element("c", "a", 2000);
        element("b", "a", 1000);
        element("a", "", 1000);
        const Bytes image = packed(a.get());
        const ArrayPtr b = makeArray({});
        QCOMPARE(MDAUnpackN(b.get(), image.block.get(), image.length), 0);
        const std::string key = "A";
        const MDRVar exact = textValue(key);
        QCOMPARE(textOf(MDARecSeekV(b.get(), 0, &exact, nullptr), 0), std::string("a"));
        const MDRVar group[2] = {exact, nullValue()};
        int32_t position = -1;
        MDARecSeekV(b.get(), 1, group, &position);
        QCOMPARE(position, 1);
        QCOMPARE(textOf(MDARec(b.get(), 1, position), 0), std::string("b"));
        QCOMPARE(textOf(MDARec(b.get(), 1, position + 1), 0), std::string("c"));
    }

    void anEditedRecordIsPackedAsItWasPosted() {
        const ArrayPtr a = makeArray({{"k", MDX_TEXT}});
        addKey(a.get(), "k", MDX_KEY_UNIQUE);
        MDRData* record = post(a.get(), {"posted"});
        setText(record, 0, "edited");
        const Bytes image = packed(a.get());
        const ArrayPtr b = makeArray({});
        QCOMPARE(MDAUnpack(b.get(), image.block.get()), 0);
        QCOMPARE(order(b.get(), 0), std::string("posted"));
    }

    void trailingBytesAreNotTheImages() {
        const Bytes image = packed(smallTable().get());
        const std::string longer = image.text() + "envelope";
        const ArrayPtr b = makeArray({});
        QCOMPARE(MDAUnpackN(b.get(), longer.data(), uint32_t(longer.size())), 0);
        QCOMPARE(b->recordCount, 2u);
    }

    void failedUnpackingLeavesTheArrayEmpty() {
        const ArrayPtr a = smallTable();
        QCOMPARE(MDAUnpackN(a.get(), "garbage", 7), int(MDX_E_FORMAT));
        QCOMPARE(int(a->fieldCount), 0);
        QCOMPARE(a->keyCount, 0u);
        QCOMPARE(a->recordCount, 0u);
        QCOMPARE(MDAUnpackN(a.get(), nullptr, 0), int(MDX_E_ARG));
        QCOMPARE(MDAUnpack(a.get(), nullptr), int(MDX_E_ARG));
        QCOMPARE(MDXArrayUnPack(a.get(), nullptr, 1), int(MDX_E_ARG));
        QCOMPARE(MDAUnpackN(nullptr, "x", 1), int(MDX_E_ARG));
        void* image = this;
        QCOMPARE(MDAPack(nullptr, &image), 0u);
        QVERIFY(!image);
        QCOMPARE(MDAPack(a.get(), nullptr), 0u);
    }

    void onlyTheBlockOfAReplyUnpacksAsOne() {
        const ArrayPtr a = smallTable();
        const ArrayPtr b = makeArray({});
        const Bytes image = packed(a.get()); // the caller's own, with no length before it
        QCOMPARE(MDXArrayUnPack(b.get(), image.block.get(), 1), int(MDX_E_FORMAT));
        const Bytes record = raw(orvo::mdx::postedRecord(a.get(), 0));
        QCOMPARE(MDXArrayUnPack(b.get(), record.block.get(), 1), int(MDX_E_FORMAT));
        QCOMPARE(int(b->fieldCount), 0);
    }

    void aDescriptionIsMadeAgainInPlaceOfTheOld() {
        const ArrayPtr a = smallTable();
        const Bytes bytes = raw(orvo::mdx::postedRecord(a.get(), 0));
        MDRData alone;
        QCOMPARE(MDRRecSet(&alone, bytes.block.get()), 0);
        MDRType type;
        MDRTypInit(&type);
        QCOMPARE(MDRTypGen(&type, "NCI", &alone), 0);
        QCOMPARE(MDRTypGen(&type, "NCI", &alone), 0); // the leak checker looks after the first
        QCOMPARE(type.fieldCount, a->fieldCount);
        QCOMPARE(MDRTypGen(&type, "XYZ", &alone), int(MDX_E_ARG));
        QCOMPARE(int(type.fieldCount), 0);
        QVERIFY(!type.fields);
    }

    void aRawRecordReadsLikeARecord() {
        const ArrayPtr a = makeArray(allTypes());
        MDRData* record = MDARecNew(a.get());
        setText(record, 0, "name");
        set(record, 1, integerValue(5));
        set(record, 4, blockValue(std::string("\0x", 2)));
        MDRSetUser(MDRFldByNum(a.get(), 0), record, 1);
        MDRSetUser(MDRFldByNum(a.get(), 2), record, 1);
        const Bytes bytes = raw(record); // also before it is posted
        QCOMPARE(MDRRecCheck(bytes.block.get(), bytes.length), 0);

        MDRData alone;
        MDRType type;
        MDRRecInit(&alone);
        MDRTypInit(&type);
        QCOMPARE(int(type.fieldCount), 0);
        QCOMPARE(MDRRecSet(&alone, bytes.block.get()), 0);
        QCOMPARE(MDRTypGen(&type, "NCI", &alone), 0);
        QCOMPARE(int(type.fieldCount), 5);
        QVERIFY(!alone.owner);
        // As a notification is merged: fields that are marked, by number.
        const ArrayPtr b = makeArray(allTypes());
        MDRData* target = MDARecNew(b.get());
        for (int i = 0; i < type.fieldCount; ++i) {
            const MDRField field = MDRFldByNum(&type, i);
            uint8_t user = 0;
            QCOMPARE(MDRIsUser(field, &alone, &user), 0);
            QCOMPARE(int(user), i == 0 || i == 2 ? 1 : 0);
            MDRVar value;
            QCOMPARE(MDRGetVal(field, &alone, &value), 0);
            QCOMPARE(set(target, i, value), 0);
        }
        QCOMPARE(textOf(target, 0), std::string("name"));
        QCOMPARE(integerOf(target, 1), 5);
        QVERIFY(isNull(target, 2) && isNull(target, 3));
        QCOMPARE(textOf(target, 4), std::string("\0x", 2));
        QCOMPARE(MDRFldByName(&type, "NAME"), MDRFldByNum(&type, 0));
        // Nothing writes to it.
        const MDRVar one = integerValue(1);
        QCOMPARE(MDRSetVal(MDRFldByNum(&type, 1), &alone, &one), int(MDX_E_ARG));
        QCOMPARE(MDRSetUser(MDRFldByNum(&type, 1), &alone, 1), int(MDX_E_ARG));
        QCOMPARE(MDRSetFlags(&alone, 1), int(MDX_E_ARG));
        QCOMPARE(MDARecPost(&alone, nullptr), int(MDX_E_ARG));
        QCOMPARE(MDARecDel(&alone), int(MDX_E_ARG));
        QVERIFY(!MDARecEdit(&alone));
        void* none = this;
        QCOMPARE(orvo::mdx::rawRecord(&alone, &none), 0u);
        QVERIFY(!none);
        // The handles of the raw description and of the array are the same thing.
        MDRVar value;
        QCOMPARE(MDRGetVal(MDRFldByNum(a.get(), 1), &alone, &value), 0);
        QCOMPARE(int32_t(value.value.integer), 5);
        MDRTypFree(&type);
        QCOMPARE(int(type.fieldCount), 0);
        MDRTypFree(&type); // safe on an empty one
        MDRTypFree(nullptr);
    }

    void rawRecordRefusals() {
        MDRData alone;
        MDRRecInit(&alone);
        MDRType type;
        MDRTypInit(&type);
        QCOMPARE(MDRTypGen(&type, "NCI", &alone), int(MDX_E_ARG)); // an empty record
        const ArrayPtr a = smallTable();
        const MDRField field = MDRFldByNum(a.get(), 1);
        int32_t number = 3;
        uint8_t user = 3;
        QCOMPARE(MDRGetAsInt32(field, &alone, &number), int(MDX_E_ARG));
        QCOMPARE(MDRIsUser(field, &alone, &user), int(MDX_E_ARG));
        const Bytes bytes = raw(orvo::mdx::postedRecord(a.get(), 0));
        QCOMPARE(MDRRecSet(&alone, bytes.block.get()), 0);
        QCOMPARE(MDRTypGen(&type, "XYZ", &alone), int(MDX_E_ARG));
        QCOMPARE(MDRTypGen(&type, nullptr, &alone), int(MDX_E_ARG));
        QCOMPARE(MDRTypGen(nullptr, "NCI", &alone), int(MDX_E_ARG));
        QCOMPARE(MDRTypGen(&type, "NCI", nullptr), int(MDX_E_ARG));
        QCOMPARE(MDRTypGen(&type, "NCI", orvo::mdx::postedRecord(a.get(), 0)), int(MDX_E_ARG));
        QCOMPARE(int(type.fieldCount), 0);
        const std::string garbage(64, 'x');
        QCOMPARE(MDRRecSet(&alone, garbage.data()), int(MDX_E_FORMAT));
        QCOMPARE(MDRGetAsInt32(field, &alone, &number), int(MDX_E_ARG)); // empty now
        QCOMPARE(MDRRecSet(&alone, nullptr), int(MDX_E_ARG));
        QCOMPARE(MDRRecSet(nullptr, garbage.data()), int(MDX_E_ARG));
        QCOMPARE(MDRRecCheck(nullptr, 0), int(MDX_E_ARG));
        MDRRecInit(nullptr);
        MDRTypInit(nullptr);
    }
};

QTEST_APPLESS_MAIN(TestMdxFormats)
#include "tst_mdx_formats.moc"
