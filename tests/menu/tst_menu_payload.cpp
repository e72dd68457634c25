// Menu elements on the clipboard that no editor has put there: bytes cut short, changed and made
// up, tables of other structures, circles, depths. Nothing is written but what holds, and no bytes
// stop the editor.
#include "tests/menu/OperationsProbe.h"

#include "frame/Records.h"
#include "menu/MenuPayload.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/Schema.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QMimeData>
#include <QRandomGenerator>

using namespace orvo::test;
using orvo::menu::menuMime;
using orvo::menu::MenuPayload;

namespace {

void putOnClipboard(const QByteArray& bytes) {
    auto* mime = new QMimeData; // the clipboard's
    mime->setData(menuMime, bytes);
    QGuiApplication::clipboard()->setMimeData(mime);
}

/// A table as a payload holds it, to be filled and packed.
class Packed {
public:
    Packed() { orvo::store::makeStructure(*orvo::store::findTable("Menu"), table.array); }
    /// A table of that structure only: names, all of them texts.
    explicit Packed(std::initializer_list<const char*> fields) {
        for (const char* field : fields)
            orvo::mdx::addField(table.array, field, MDX_TEXT);
    }

    /// An element; without a resource it is a folder.
    Packed& add(const QByteArray& key, const QByteArray& parent, const char* resource = nullptr) {
        MDRData* record = MDARecNew(table.array);
        table.SetValF(record, "KeyLink", orvo::textVar(key));
        if (!parent.isNull())
            table.SetValF(record, "parent", orvo::textVar(parent));
        table.SetValF(record, "caption", orvo::textVar("c" + key));
        if (resource)
            table.SetValF(record, "MenuResourceKey", orvo::textVar(resource));
        table.RecPost(record);
        return *this;
    }
    /// The payload with the keys that a copy has, unless others are given.
    QByteArray bytes(const QByteArray& mode, const QByteArray& keys,
                     std::initializer_list<const char*> keyFields = {"KeyLink", "parent;order_"}) {
        uint32_t flag = MDX_KEY_UNIQUE;
        for (const char* fields : keyFields) {
            table.KeyAdd(fields, flag);
            flag = MDX_KEY_MULTI;
        }
        return pack(mode, keys);
    }
    QByteArray pack(const QByteArray& mode, const QByteArray& keys) const {
        void* image = nullptr;
        const uint32_t length = MDAPack(table.array, &image);
        const QByteArray packed(static_cast<const char*>(image), static_cast<int>(length));
        MDMemFree(image);
        return mode + '\n' + keys + '\n' + packed;
    }

    CMDArray table;
};

/// An editor whose current row is the folder "grafiki".
class Target {
public:
    Target() : host((fillPlant(store), store)), editor(host) {
        editor.openDesck("armop");
        editor.makeCurrent("grafiki");
    }
    void paste(const QByteArray& bytes) {
        putOnClipboard(bytes);
        editor->on_actPasteMenuElement_triggered();
    }
    /// As paste, before the editor is told of the cut and takes it off the clipboard.
    void pasteCut(const QByteArray& bytes) {
        const QSignalBlocker untold(QGuiApplication::clipboard());
        paste(bytes);
    }
    int recordsWritten() const {
        int count = 0;
        for (const WriteCall& call : const_cast<Target*>(this)->host.writes().calls)
            count += call.records.size();
        return count;
    }

    TestStore store;
    TestHost host;
    OperationsEditor editor;
};

} // namespace

class TestMenuPayload : public QObject {
    Q_OBJECT
private slots:
    void init() { QGuiApplication::clipboard()->clear(); }

    void whatIsWrittenIsRead() {
        Packed packed;
        packed.add("a", {}).add("b", "a", "r");
        packed.bytes("0", ""); // gives it its keys
        const QByteArray bytes =
            MenuPayload::write(MenuPayload::Cut, {"a", QString::fromUtf8("ключ")}, packed.table);
        QVERIFY(bytes.startsWith(QByteArray("1\na;") + QString::fromUtf8("ключ").toUtf8() + ";\n"));
        MenuPayload read;
        QVERIFY(read.read(bytes));
        QVERIFY(read.cut);
        QCOMPARE(read.keys, QStringList({"a", QString::fromUtf8("ключ")}));
        QCOMPARE(orvo::recordCount(read.table), 2);
        // Bytes behind the table are none of ours.
        QCOMPARE(MenuPayload::write(MenuPayload::Copy, {}, CMDArray()).left(2), QByteArray("0\n"));
    }

    void modes_data() {
        QTest::addColumn<QByteArray>("mode");
        QTest::addColumn<bool>("cut");
        dataRow("0", QByteArray("0"), false);
        dataRow("1", QByteArray("1"), true);
        dataRow("001", QByteArray("001"), true);
        dataRow("empty", QByteArray(""), false);
        dataRow("2", QByteArray("2"), false);
        dataRow("-1", QByteArray("-1"), false);
        dataRow("huge", QByteArray("4294967297"), false);
        dataRow("very huge", QByteArray(100000, '1'), false);
        dataRow("a word", QByteArray("cut"), false);
    }

    void modes() {
        QFETCH(QByteArray, mode);
        QFETCH(bool, cut);
        MenuPayload read;
        QVERIFY(read.read(Packed().add("a", {}).bytes(mode, "a;")));
        QCOMPARE(read.cut, cut);
    }

    void bytesThatAreNone_data() {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray image = Packed().add("a", {}).bytes("", "").mid(2);
        dataRow("nothing", QByteArray());
        dataRow("a mode alone", QByteArray("0"));
        dataRow("one line feed", QByteArray("0\n"));
        dataRow("no table", QByteArray("0\na;\n"));
        dataRow("line feeds", QByteArray(1000, '\n'));
        dataRow("zero bytes", QByteArray(1000, '\0'));
        dataRow("the table alone", image);
        dataRow("no key list", "0\n" + image);
        dataRow("a text for a table", QByteArray("0\na;\nhello"));
        dataRow("no record", Packed().bytes("0", "a;"));
        dataRow("carriage returns", "0\r" + QByteArray("a;\r") + image);
    }

    void bytesThatAreNone() {
        QFETCH(QByteArray, bytes);
        Target target;
        target.paste(bytes);
        target.pasteCut(bytes);
        QCOMPARE(target.host.writes().take(), QString());
        QCOMPARE(target.host.failures.join("; "), QString());
    }

    void aTableCutShortIsNone() {
        Packed packed;
        packed.add("a", {}).add("b", "a", "rtrend").add("c", "a", "rcalc");
        const QByteArray whole = packed.bytes("1", "a;");
        for (int length = 0; length < whole.size(); ++length) {
            MenuPayload read;
            QVERIFY2(!read.read(whole.left(length)), qPrintable(QString::number(length)));
        }
        MenuPayload read;
        QVERIFY(read.read(whole));
        // And into an editor, at some lengths.
        Target target;
        for (int length = 0; length < whole.size(); length += 7)
            target.pasteCut(whole.left(length));
        QCOMPARE(target.host.writes().take(), QString());
    }

    void aTableWithALieIsNoneOrHolds() {
        Packed packed;
        packed.add("a", {}).add("b", "a", "rtrend");
        const QByteArray whole = packed.bytes("0", "a;");
        const int image = whole.indexOf('\n', 2) + 1;
        // Every byte of the table in turn says the least, the most, and something near.
        for (int i = image; i < whole.size(); ++i)
            for (const int value : {0x00, 0xff, 0x7f, 0x80, whole[i] + 1, whole[i] - 1}) {
                QByteArray bytes = whole;
                bytes[i] = static_cast<char>(value);
                MenuPayload read;
                if (!read.read(bytes))
                    continue;
                QVERIFY(orvo::recordCount(read.table) > 0);
                QCOMPARE(read.table.array->keyCount, 2u);
            }
    }

    void changedBytesWriteNothingUnsound() {
        Packed packed;
        packed.add("a", {}).add("b", "a", "rtrend").add("c", "b").add("d", "c", "rcalc");
        const QByteArray whole = packed.bytes("1", "a;");
        QRandomGenerator random(20261121);
        Target target;
        int accepted = 0;
        for (int turn = 0; turn < 5000; ++turn) {
            QByteArray bytes = whole;
            for (int change = 1 + random.bounded(4); change > 0; --change) {
                const int at = random.bounded(bytes.size());
                switch (random.bounded(4)) {
                case 0:
                    bytes[at] = static_cast<char>(random.bounded(256));
                    break;
                case 1:
                    bytes.insert(at, static_cast<char>(random.bounded(256)));
                    break;
                case 2:
                    bytes.remove(at, 1 + random.bounded(8));
                    break;
                default:
                    bytes.replace(at, 4, whole.mid(random.bounded(whole.size()), 4));
                    break;
                }
                if (bytes.isEmpty())
                    bytes = "0";
            }
            MenuPayload read;
            if (!read.read(bytes))
                continue;
            // A few of those that hold go the whole way.
            if (++accepted % 20 == 0)
                target.pasteCut(bytes);
        }
        QVERIFY(accepted > 0);
        // Whatever was pasted was sound enough for the server.
        QCOMPARE(target.host.failures.join("; "), QString());
    }

    void otherStructuresPasteNothing_data() {
        QTest::addColumn<QByteArray>("bytes");
        dataRow("no fields", Packed(std::initializer_list<const char*>{}).pack("1", "a;"));
        dataRow("other fields", Packed({"one", "two"}).add("a", {}).bytes("1", "a;", {"one"}));
        dataRow("no parent",
                Packed({"KeyLink", "order_"}).add("a", {}).bytes("1", "a;", {"KeyLink"}));
        dataRow("no order",
                Packed({"KeyLink", "parent"}).add("a", {}).bytes("1", "a;", {"KeyLink"}));
    }

    void otherStructuresPasteNothing() {
        QFETCH(QByteArray, bytes);
        Target target;
        target.pasteCut(bytes);
        QCOMPARE(target.host.writes().take(), QString());
        QCOMPARE(target.host.failures.join("; "), QString());
    }

    void otherTypesPasteNothingUnsound() {
        // The fields have the right names, and each in turn is of every type there is.
        const std::initializer_list<const char*> fields{
            "KeyLink", "parent", "order_", "caption", "MenuResourceKey", "ico", "oneCopy"};
        for (const char* odd : fields)
            for (const MdxType type : {MDX_BOOLEAN, MDX_INTEGER, MDX_DATE, MDX_TEXT, MDX_BLOCK}) {
                Packed packed(std::initializer_list<const char*>{});
                for (const char* field : fields)
                    orvo::mdx::addField(packed.table.array, field,
                                        field == odd                     ? type
                                        : qstrcmp(field, "order_") == 0  ? MDX_INTEGER
                                        : qstrcmp(field, "oneCopy") == 0 ? MDX_BOOLEAN
                                                                         : MDX_TEXT);
                packed.add("a", {}).add("b", "a", "rtrend").add("c", "b");
                Target target;
                target.pasteCut(packed.bytes("1", "a;b;"));
                QVERIFY2(target.host.failures.isEmpty(),
                         qPrintable(QString("%1 of type %2: %3")
                                        .arg(odd)
                                        .arg(int(type))
                                        .arg(target.host.failures.join(' '))));
                QVERIFY(target.recordsWritten() <= 6);
            }
    }

    void otherKeysMakeNoDifference() {
        for (const auto keys : {std::initializer_list<const char*>{},
                                {"caption"},
                                {"parent", "KeyLink"},
                                {"KeyLink"},
                                {"KeyLink", "caption", "order_"},
                                {"KeyLink;caption;parent;order_;ico;params", "parent;order_"}}) {
            Target target;
            Packed packed;
            packed.add("a", {}).add("b", "a", "rtrend");
            target.paste(packed.bytes("0", "a;", keys));
            QCOMPARE(target.recordsWritten(), 2);
            QCOMPARE(target.host.failures.join("; "), QString());
        }
    }

    void anEmptyResourceIsNoFolder() {
        // Only NULL makes a folder; a resource of no name is one that is gone.
        Packed packed;
        packed.add("a", {}, "").add("b", "a", "rtrend");
        Target target;
        target.pasteCut(packed.bytes("1", "a;"));
        QCOMPARE(target.host.writes().take(), QString("Menu\n  -a\n"));
    }

    void twoRecordsOfOneKeyPasteNothing() {
        Packed packed;
        packed.add("a", {}).add("b", "a", "rtrend").add("A", "b");
        Target target;
        target.pasteCut(packed.bytes("1", "a;", {"caption"}));
        QCOMPARE(target.host.writes().take(), QString());
    }

    void circlesArePastedOnce() {
        Packed packed;
        packed.add("a", "c").add("b", "A").add("c", "b").add("x", "b", "rtrend");
        const QByteArray bytes = packed.bytes("1", "a;");
        Target target;
        target.pasteCut(bytes);
        QCOMPARE(target.host.writes().calls.size(), 2);
        QCOMPARE(target.host.writes().calls[0].records.size(), 4);
        QCOMPARE(target.host.writes().calls[1].records, QStringList({"-a", "-b", "-c", "-x"}));
        QCOMPARE(target.host.failures.join("; "), QString());
    }

    void aRecordUnderItselfIsPastedOnce() {
        Target target;
        target.pasteCut(Packed().add("a", "a").bytes("1", "a;"));
        QCOMPARE(target.host.writes().calls.size(), 2);
        QCOMPARE(target.recordsWritten(), 2);
    }

    void listedTwiceIsPastedOnce() {
        Packed packed;
        packed.add("a", {}).add("b", "a", "rtrend");
        const QByteArray bytes = packed.bytes("1", "a;b;A;a;;b;");
        Target target;
        target.pasteCut(bytes);
        QCOMPARE(target.host.writes().calls.size(), 2);
        QCOMPARE(target.host.writes().calls[0].records.size(), 2);
        QCOMPARE(target.host.writes().calls[1].records, QStringList({"-a", "-b"}));
        QCOMPARE(target.host.failures.join("; "), QString());
    }

    void aListOfAllLevelsIsPastedOnce() {
        // Every level of a deep chain as a chosen row: nothing is walked again and again.
        constexpr int depth = 5000;
        Packed packed;
        QByteArray keys;
        for (int i = 0; i < depth; ++i) {
            packed.add("k" + QByteArray::number(i),
                       i == 0 ? QByteArray() : "k" + QByteArray::number(i - 1));
            keys += "k" + QByteArray::number(i) + ';';
        }
        Target target;
        target.pasteCut(packed.bytes("1", keys + keys));
        QCOMPARE(target.host.writes().calls.size(), 2);
        QCOMPARE(target.recordsWritten(), 2 * depth);
        QCOMPARE(target.host.failures.join("; "), QString());
    }

    void aVeryDeepChainIsPasted() {
        constexpr int depth = 100000;
        Packed packed;
        for (int i = 0; i < depth; ++i)
            packed.add("k" + QByteArray::number(i),
                       i == 0 ? QByteArray() : "k" + QByteArray::number(i - 1));
        Target target;
        target.pasteCut(packed.bytes("1", "k0;"));
        QCOMPARE(target.host.writes().calls.size(), 2);
        QCOMPARE(target.recordsWritten(), 2 * depth);
        QCOMPARE(target.host.failures.join("; "), QString());
    }

    void aVeryWideFolderIsPasted() {
        constexpr int width = 5000;
        Packed packed;
        packed.add("top", {});
        for (int i = 0; i < width; ++i)
            packed.add("k" + QByteArray::number(i), "top", "rtrend");
        Target target;
        target.paste(packed.bytes("0", "top;"));
        QCOMPARE(target.recordsWritten(), width + 1);
        QCOMPARE(target.host.failures.join("; "), QString());
    }

    void oddModesNeverDelete() {
        for (const char* mode : {"2", "-1", "", "x", "4294967297"}) {
            Target target;
            target.pasteCut(Packed().add("trend", {}, "rtrend").bytes(mode, "trend;"));
            QCOMPARE(target.host.writes().calls.size(), 1);
            QVERIFY(!target.host.writes().take().contains("-trend"));
        }
    }

    void valuesOfOtherTypesBecomeNothing() {
        // All fields are texts here; those that are not in `Menu` go out as NULL.
        Packed packed({"KeyLink", "parent", "order_", "caption", "separator", "MenuResourceKey"});
        packed.add("a", {}).add("b", "a", "rtrend");
        MDRData* record = MDARecNew(packed.table.array);
        packed.table.SetValF(record, "KeyLink", orvo::textVar("d"));
        packed.table.SetValF(record, "parent", orvo::textVar("a"));
        packed.table.SetValF(record, "order_", orvo::textVar("many"));
        packed.table.SetValF(record, "separator", orvo::textVar("yes"));
        packed.table.SetValF(record, "MenuResourceKey", orvo::textVar("rtrend"));
        packed.table.RecPost(record);
        Target target;
        target.paste(packed.bytes("0", "a;"));
        QCOMPARE(target.host.failures.join("; "), QString());
        QCOMPARE(target.recordsWritten(), 3);
        const QString written = target.host.writes().take();
        QVERIFY2(written.contains("order_=NULL ico=NULL separator=NULL oneCopy=NULL "
                                  "MenuResourceKey='rtrend' params=NULL"),
                 qPrintable(written));
    }

    void recordsWithoutAKeyAreSkipped() {
        Packed packed;
        MDRData* record = MDARecNew(packed.table.array);
        packed.table.SetValF(record, "caption", orvo::textVar("nameless"));
        packed.table.RecPost(record);
        packed.add("a", {}, "rtrend");
        Target target;
        target.pasteCut(packed.bytes("1", ";a;;"));
        QCOMPARE(target.host.failures.join("; "), QString());
        QCOMPARE(target.host.writes().calls.size(), 2);
        QCOMPARE(target.host.writes().calls[0].records.size(), 1);
        QCOMPARE(target.host.writes().calls[1].records, QStringList("-a"));
    }

    void veryLongTextsArePasted() {
        Packed packed;
        packed.add(QByteArray(100000, 'k'), QByteArray(100000, 'p'), "rtrend");
        Target target;
        target.paste(
            packed.bytes("0", QByteArray(100000, 'k') + ";" + QByteArray(100000, 'z') + ";"));
        QCOMPARE(target.recordsWritten(), 1);
        QCOMPARE(target.host.failures.join("; "), QString());
    }
};

QTEST_MAIN(TestMenuPayload)
#include "tst_menu_payload.moc"
