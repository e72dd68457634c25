// The record idioms over the real record library, and the table wrapper as the editors use it.
#include "Tables.h"

#include "frame/Records.h"

#include <QTextCodec>
#include <QtTest>

using namespace orvo;
using namespace tables;

class Records : public QObject {
    Q_OBJECT
private slots:
    // The wrapper
    void postingNothingOrAStrangerIsRefusedSilently() {
        CMDArray table;
        CMDArray other;
        define(table);
        define(other);
        table.status = 77;
        QCOMPARE(table.RecPost(nullptr), 0u);
        QCOMPARE(table.RecPost(MDARecNew(other.array)), 0u);
        QCOMPARE(table.status, 77);
        QCOMPARE(table.RecPost(MDARecNew(table.array)), 1u);
        QCOMPARE(table.status, int(MDX_OK));
    }

    void aMissingFieldReadsAsTypeZeroAndIsDroppedOnWriting() {
        CMDArray table;
        define(table);
        setKeys(table);
        MDRData* record = add(table, "a", "p", "text", 1);
        table.status = 77;
        MDRVar value = integerVar(5);
        table.GetVal(record, "nothing", value);
        QCOMPARE(int(value.type), 0);
        QCOMPARE(int32_t(value.value.integer), 5);
        table.SetValF(record, "nothing", integerVar(6));
        table.SetValF(record, 200, integerVar(6));
        QCOMPARE(table.status, 77);
        QCOMPARE(integerOf(record, "order_"), 1);
    }

    void settingAValueMarksTheField() {
        CMDArray table;
        define(table);
        MDRData* record = MDARecNew(table.array);
        table.SetValF(record, "order_", integerVar(6));
        table.SetValF(record, 2, nullVar());
        for (int i = 0; i < 6; ++i) {
            uint8_t marked = 9;
            QCOMPARE(MDRIsUser(MDRFldByNum(table.array, i), record, &marked), int(MDX_OK));
            QCOMPARE(int(marked), i == 2 || i == 3 ? 1 : 0);
        }
    }

    void attachingNothingOrItselfIsRefused() {
        CMDArray table;
        define(table);
        MDArray* before = table.array;
        table.Attach(nullptr);
        QCOMPARE(table.status, -3);
        QCOMPARE(table.array, before);
        table.status = 0;
        table.Attach(before);
        QCOMPARE(table.status, -3);
        QCOMPARE(table.array, before);
    }

    void attachingTakesTheNewArrayOver() {
        CMDArray table;
        table.status = 77;
        MDArray* other = nullptr;
        QCOMPARE(MDACreate(&other, 0), int(MDX_OK));
        table.Attach(other);
        QCOMPARE(table.status, 0);
        QCOMPARE(table.array, other);
    }

    void aStrangersRecordIsNeitherDeletedNorEdited() {
        CMDArray table;
        CMDArray other;
        define(table);
        define(other);
        setKeys(other);
        MDRData* record = add(other, "a", "", "", 1);
        table.RecDel(record);
        QCOMPARE(table.status, -5);
        QVERIFY(!table.RecEdit(record));
        QVERIFY(!table.RecEdit(nullptr));
        QCOMPARE(recordCount(other), 1);
        QCOMPARE(other.RecEdit(record), record);
        other.RecDel(record);
        QCOMPARE(other.status, 0);
        QCOMPARE(recordCount(other), 0);
    }

    void fieldNamesCompareWithoutRegardToCase() {
        CMDArray table;
        define(table, {{"KeyLink", MDX_TEXT}, {"isFolder", MDX_BOOLEAN}});
        MDRData* record = MDARecNew(table.array);
        table.SetValF(record, "IsFolder", booleanVar(true));
        QVERIFY(flagOf(record, "isFolder"));
        QVERIFY(flagOf(record, "ISFOLDER"));
    }

    void valuesLieEndToEnd() {
        const MDRVar values[2] = {integerVar(1), integerVar(2)};
        QCOMPARE(reinterpret_cast<const char*>(&values[1]) -
                     reinterpret_cast<const char*>(&values[0]),
                 ptrdiff_t(14));
    }

    // Text
    // ---------------------------------------------------------------------------------------------
    // Text

    void theCodecIsWindows1251() {
        QVERIFY(recordCodec());
        QCOMPARE(recordCodec()->name(), QByteArray("windows-1251"));
        QCOMPARE(toRecord("Ёж"), QByteArray("\xa8\xe6"));
        QCOMPARE(fromRecord("\xa8\xe6"), QString("Ёж"));
    }

    void everyByteReadsAsTheCodecReadsIt() {
        for (int code = 0; code < 256; ++code) {
            const char byte = static_cast<char>(code);
            QCOMPARE(fromCodePage(&byte, 1), recordCodec()->toUnicode(&byte, 1));
        }
    }

    void everyLetterIsWrittenAsTheCodecWritesIt() {
        const auto compare = [](const QString& text) {
            const QByteArray bytes = recordCodec()->fromUnicode(text);
            QVERIFY2(toRecord(text) == bytes, qPrintable(QString::number(text[0].unicode(), 16)));
            // Between others as well: a half of a letter is no whole one.
            const QString inside = 'a' + text + QString::fromUtf8("я");
            QCOMPARE(toRecord(inside), recordCodec()->fromUnicode(inside));
            QCOMPARE(toRecordExactly(text).has_value(),
                     !text.contains(QChar(0)) && fromRecord(bytes) == text);
        };
        for (char32_t code = 0; code <= 0x10FFFF; code += code < 0x20000 ? 1 : 0x35) {
            if (code < 0x10000)
                compare(QString(QChar(static_cast<ushort>(code))));
            else
                compare(QString::fromUcs4(&code, 1));
            if (QTest::currentTestFailed())
                return;
        }
    }

    void emptyAndNullTextsReadAsTheNullString() {
        QVERIFY(fromRecord(nullptr).isNull());
        QVERIFY(fromRecord("").isNull());
        QVERIFY(toRecord(QString()).isEmpty());
        const QByteArray empty;
        const MDRVar value = textVar(empty);
        QCOMPARE(int(value.type), int(MDX_TEXT));
        QCOMPARE(uint32_t(value.value.text.length), 0u);
        QVERIFY(value.value.text.pointer && *value.value.text.pointer == '\0');
    }

    void textsCompareWithoutRegardToCase() {
        QVERIFY(sameText("ПАПКА ё", "папка Ё"));
        QVERIFY(sameText("MenuFolder", "menufolder"));
        QVERIFY(sameText(QString(), ""));
        QVERIFY(!sameText("папка", " папка"));
        QVERIFY(!sameText("е", "ё"));
    }

    // Reading
    // ---------------------------------------------------------------------------------------------
    // Reading

    void fieldsReadByNameNumberAndHandle() {
        CMDArray table;
        define(table);
        setKeys(table);
        MDRData* record = add(table, "k", "p", "Насос", -7);
        table.SetValF(record, "flag", booleanVar(true));
        const MDRField caption = MDRFldByName(table.array, "caption");
        QCOMPARE(textOf(record, "caption"), QString("Насос"));
        QCOMPARE(textOf(record, 2), QString("Насос"));
        QCOMPARE(textOf(record, caption), QString("Насос"));
        QCOMPARE(bytesOf(record, "caption"), toRecord("Насос"));
        QCOMPARE(integerOf(record, "order_"), -7);
        QVERIFY(flagOf(record, "flag"));
        QVERIFY(holdsText(record, "caption", "НАСОС"));
        QVERIFY(holdsText(record, "caption", "Насос"));
        for (const char* other : {"нос", "Насо", "Насосы", "насосы", ""})
            QVERIFY(!holdsText(record, "caption", other));
        QVERIFY(!holdsText(record, "caption", QString("Насос") + QChar(0)));
        QVERIFY(holdsText(record, "nothing", QString()));
        QVERIFY(!holdsText(record, "nothing", "Насос"));
    }

    void whatIsNotThereReadsAsEmpty() {
        CMDArray table;
        define(table);
        MDRData* record = MDARecNew(table.array);
        for (const char* field : {"caption", "order_", "flag", "nothing"}) {
            QVERIFY(textOf(record, field).isNull());
            QVERIFY(bytesOf(record, field).isEmpty());
            QCOMPARE(integerOf(record, field), 0);
            QVERIFY(!flagOf(record, field));
            QVERIFY(isNull(record, field));
            QVERIFY(isEmptyText(record, field));
            QVERIFY(textOf(static_cast<const MDRData*>(nullptr), field).isNull());
            QVERIFY(isNull(static_cast<const MDRData*>(nullptr), field));
        }
        // A number has no text, a text may have a number.
        table.SetValF(record, "order_", integerVar(5));
        QVERIFY(textOf(record, "order_").isNull());
    }

    void emptyTextIsNotNullButEmpty() {
        CMDArray table;
        define(table);
        MDRData* record = MDARecNew(table.array);
        const QByteArray empty = toRecord(QString());
        table.SetValF(record, "parent", textVar(empty));
        QVERIFY(!isNull(record, "parent"));
        QVERIFY(isEmptyText(record, "parent"));
        table.SetValF(record, "parent", nullVar());
        QVERIFY(isNull(record, "parent"));
    }

    // Keys
    // ---------------------------------------------------------------------------------------------
    // Keys

    void aTableWithoutKeysCountsAsEmpty() {
        CMDArray table;
        define(table);
        add(table, "a", "", "", 1);
        QCOMPARE(recordCount(table), 0);
        setKeys(table);
        QCOMPARE(recordCount(table), 1);
        QCOMPARE(recordCount(nullptr), 0);
    }

    void settingKeysLeavesExactlyOne_data() {
        QTest::addColumn<QStringList>("before");
        QTest::newRow("none") << QStringList();
        QTest::newRow("one") << QStringList{"caption"};
        QTest::newRow("several") << QStringList{"caption", "parent;order_", "KeyLink", "order_"};
    }

    void settingKeysLeavesExactlyOne() {
        QFETCH(QStringList, before);
        CMDArray table;
        define(table);
        add(table, "b", "", "1", 1);
        add(table, "a", "", "2", 2);
        for (const QString& key : before)
            table.KeyAdd(key.toLatin1().constData(), MDX_KEY_MULTI);
        setKeys(table);
        QCOMPARE(table.array->keyCount, 1u);
        QCOMPARE(order(table, 0), QString("a b"));
        // The key that is left is the unique one.
        CMDArray& again = table;
        MDRData* twin = MDARecNew(again.array);
        const QByteArray bytes("a");
        again.SetValF(twin, "KeyLink", textVar(bytes));
        QCOMPARE(again.RecPost(twin), 0u);
        QCOMPARE(again.status, int(MDX_E_DUPLICATE));
    }

    void furtherKeysFollowInOrder() {
        CMDArray table;
        define(table);
        add(table, "a", "p", "z", 3);
        add(table, "b", "o", "y", 2);
        add(table, "c", "p", "x", 1);
        setKeys(table, {"caption", "parent;order_"});
        QCOMPARE(table.array->keyCount, 3u);
        QCOMPARE(order(table, 0), QString("a b c"));
        QCOMPARE(order(table, 1), QString("c b a"));
        QCOMPARE(order(table, 2), QString("b c a"));
        // They take several records of one value.
        QVERIFY(add(table, "d", "p", "x", 1));
        QCOMPARE(table.status, int(MDX_OK));
        QCOMPARE(order(table, 1), QString("c d b a"));
        QCOMPARE(order(table, 2), QString("b c d a"));
        table.RecDel(seekKey(table, "d"));
        setKeys(table, {"order_"});
        QCOMPARE(table.array->keyCount, 2u);
        QCOMPARE(order(table, 1), QString("c b a"));
    }

    void anExactSeekFindsByIdentifier() {
        CMDArray table;
        define(table);
        setKeys(table, {"parent;order_"});
        MDRData* a = add(table, "Ключ-a", "p", "", 5);
        add(table, "b", "p", "", 6);
        QCOMPARE(seekKey(table, "ключ-A"), a);
        QVERIFY(!seekKey(table, "ключ"));
        QVERIFY(!seekKey(table, QString()));
        QCOMPARE(seek(table, 1, KeyValues().text("p").integer(5)), a);
        QVERIFY(!seek(table, 1, KeyValues().text("p").integer(7)));
        QVERIFY(!seek(table, 9, KeyValues().text("p")));
    }

    // The codec writes '?' for what the code page lacks, and a text ends at its first zero.
    void anIdentifierThatNoRecordCanHoldFindsNone() {
        CMDArray table;
        define(table);
        setKeys(table, {"parent;order_"});
        add(table, "k?", "p", "", 5);
        QVERIFY(seekKey(table, "k?"));
        QVERIFY(!seekKey(table, QString("k") + QChar(0x2192)));
        QVERIFY(!seekKey(table, QString("k") + QChar(0xFFFD)));
        QVERIFY(!seekKey(table, QString("k?") + QChar(0) + "rest"));
    }

    void aPositionInAnEmptyTableIsMinusOne() {
        CMDArray table;
        QCOMPARE(seekPosition(table, 0, KeyValues()), -1);
        define(table);
        QCOMPARE(seekPosition(table, 0, KeyValues().text("a")), -1);
        setKeys(table, {"parent;order_"});
        QCOMPARE(seekPosition(table, 1, KeyValues().text("a")), -1);
        QCOMPARE(seekPosition(table, 1, KeyValues()), -1);
    }

    void aPositionBehindTheLastIsMinusOne() {
        CMDArray table;
        define(table);
        setKeys(table, {"parent;order_"});
        add(table, "a", "p", "", 1);
        QCOMPARE(seekPosition(table, 1, KeyValues().text("q")), -1);
        QCOMPARE(seekPosition(table, 1, KeyValues().text("o")), 0);
    }

    void leadingValuesFindTheStartOfAGroup() {
        CMDArray table;
        define(table);
        setKeys(table, {"parent;order_;caption"});
        add(table, "a", "o", "x", 1);
        add(table, "b", "p", "x", 1);
        add(table, "c", "p", "y", 1);
        add(table, "d", "p", "y", 2);
        QCOMPARE(seekPosition(table, 1, KeyValues().text("p")), 1);
        QCOMPARE(seekPosition(table, 1, KeyValues().text("p").null().null()), 1);
        QCOMPARE(seekPosition(table, 1, KeyValues().text("p").integer(2)), 3);
        QCOMPARE(seekPosition(table, 1, KeyValues().text("p").integer(1).text("y")), 2);
        QCOMPARE(seekPosition(table, 1, KeyValues().textOrNull("").null()), 0);
    }

    void nullAndEmptyParentsComeFirst() {
        CMDArray table;
        define(table);
        setKeys(table, {"parent;order_"});
        add(table, "a", "-", "", 1);
        add(table, "b", "", "", 9);
        add(table, "c", QString(), "", 10);
        QCOMPARE(order(table, 1), QString("c b a"));
        QCOMPARE(seekPosition(table, 1, KeyValues().null().null()), 0);
        QCOMPARE(seekPosition(table, 1, KeyValues().text("")), 1);
    }

    void aGroupIsWalkedUntilTheVisitorStops() {
        CMDArray table;
        define(table);
        setKeys(table, {"parent;order_"});
        for (int i = 0; i < 5; ++i) {
            add(table, QString("p%1").arg(i), "P", "", 5 - i);
            add(table, QString("q%1").arg(i), "Q", "", i);
        }
        const auto group = [&](const QString& parent) {
            QString keys;
            walkGroup(table, 1, KeyValues().text(parent), [&](MDRData* record) {
                if (!holdsText(record, "parent", parent))
                    return false;
                keys += textOf(record, "KeyLink") + ' ';
                return true;
            });
            return keys;
        };
        QCOMPARE(group("p"), QString("p4 p3 p2 p1 p0 "));
        QCOMPARE(group("q"), QString("q0 q1 q2 q3 q4 "));
        QCOMPARE(group("none"), QString());
        QCOMPARE(group("zzz"), QString());
    }

    void aWalkSeesRecordsThatWentMeanwhile() {
        CMDArray table;
        define(table);
        setKeys(table);
        for (const char* key : {"a", "b", "c", "d"})
            add(table, key, "", "", 1);
        QString seen;
        walkAll(table, 0, [&](MDRData* record) {
            seen += textOf(record, "KeyLink");
            if (seen == "a") {
                table.RecDel(seekKey(table, "c"));
                table.RecDel(seekKey(table, "d"));
            }
            return true;
        });
        QCOMPARE(seen, QString("ab"));
    }

    void keyValuesSurviveACopy() {
        CMDArray table;
        define(table);
        setKeys(table);
        MDRData* a = add(table, "key", "", "", 1);
        auto first = std::make_unique<KeyValues>();
        first->text("key");
        const KeyValues second = *first;
        first.reset();
        QCOMPARE(seek(table, 0, second), a);
    }

    void keyValuesOfAWideKeyAreAllThere() {
        // As wide as a key description can say: 192 names of one character.
        CMDArray table;
        std::vector<std::string> names;
        std::string key;
        for (int i = 0; i < 192; ++i)
            names.push_back(std::string(1, static_cast<char>(64 + i)));
        int fields = 0;
        for (const std::string& name : names) {
            if (name == ";" || orvo::mdx::addField(table.array, name.c_str(), MDX_TEXT) != MDX_OK)
                continue;
            key += (key.empty() ? "" : ";") + name;
            ++fields;
        }
        QVERIFY(fields > 90);
        table.KeyAdd(key.c_str(), MDX_KEY_MULTI);
        QCOMPARE(table.status, int(MDX_OK));
        table.RecPost(MDARecNew(table.array));
        // Values not given are NULL, to the last.
        QVERIFY(seek(table, 0, KeyValues()));
        QCOMPARE(seekPosition(table, 0, KeyValues().text("a")), -1);
    }
};

QTEST_GUILESS_MAIN(Records)
#include "tst_records.moc"
