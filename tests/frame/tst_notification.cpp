// Notifications: parsing, and the two ways into a local table.
#include "Tables.h"

#include "frame/CommonFunctions.h"

#include <QtTest>

#include <cstddef>
#include <random>

using namespace orvo;
using namespace tables;

namespace {

/// A notification as the server sends it.
struct Message {
    CMDArray source; ///< a record of it gives field 7
    MDRData* record = nullptr;
    int32_t action = 601;
    std::string key = "k1";
    std::string from = "NCI:Menu,1";
    int fieldCount = 10;
    std::string rawBytes; ///< in place of the record, if not empty
    bool withRecord = true;

    Message() {
        define(source);
        record = MDARecNew(source.array);
    }
    void setText(const char* field, const QString& text) {
        const QByteArray bytes = toRecord(text);
        source.SetValF(record, field, textVar(bytes));
    }
    std::string raw() const {
        void* bytes = nullptr;
        const uint32_t length = orvo::mdx::rawRecord(record, &bytes);
        std::string copy(static_cast<const char*>(bytes), length);
        MDMemFree(bytes);
        return copy;
    }
    ParamPtr block() const {
        std::vector<MdxType> types{MDX_INTEGER, MDX_INTEGER, MDX_INTEGER, MDX_INTEGER, MDX_TEXT,
                                   MDX_TEXT,    MDX_INTEGER, MDX_BLOCK,   MDX_INTEGER, MDX_INTEGER};
        types.resize(static_cast<size_t>(fieldCount), MDX_INTEGER);
        ParamPtr param = makeParam(types);
        orvo::mdx::paramSetInt(param.get(), 1, action);
        orvo::mdx::paramSetText(param.get(), 4, key);
        orvo::mdx::paramSetText(param.get(), 5, from);
        if (withRecord) {
            const std::string bytes = rawBytes.empty() ? raw() : rawBytes;
            orvo::mdx::paramSetBlock(param.get(), 7, bytes.data(), bytes.size());
        }
        return param;
    }
};

struct Local {
    CMDArray table;
    Local() {
        define(table);
        setKeys(table, {"parent;order_"});
    }
    QString text(const QString& key) const {
        const MDRData* r = seekKey(table, key);
        return r ? QString("%1 %2 %3")
                       .arg(textOf(r, "parent"), textOf(r, "caption"))
                       .arg(integerOf(r, "order_"))
                 : QString("none");
    }
};

} // namespace

class NotificationTest : public QObject {
    Q_OBJECT
private slots:
    // Parsing
    void aBlockOfTenFieldsIsATableEvent() {
        using E = TEventNciParse;
        static_assert(offsetof(E, param) == 0 && offsetof(E, param) < offsetof(E, action) &&
                      offsetof(E, action) < offsetof(E, key) &&
                      offsetof(E, key) < offsetof(E, source) &&
                      offsetof(E, source) < offsetof(E, tableName) &&
                      offsetof(E, tableName) < offsetof(E, recordType) &&
                      offsetof(E, recordType) < offsetof(E, record));
        Message m;
        m.key = "k1";
        m.setText("caption", "x");
        const ParamPtr block = m.block();
        const Notification n(block.get());
        QVERIFY(n.isTableEvent());
        QCOMPARE(n.action(), 601);
        QCOMPARE(n.key(), QString("k1"));
        QCOMPARE(QByteArray(n.event().key), QByteArray("k1"));
        QCOMPARE(QByteArray(n.event().source), QByteArray("NCI:Menu,1"));
        QCOMPARE(n.event().tableName, QString("Menu"));
        QCOMPARE(n.event().param, block.get());
        QVERIFY(n.isFor("MENU"));
        QVERIFY(!n.isFor("MenuFolder"));
        QCOMPARE(int(n.event().recordType.fieldCount), 6);
    }

    void aBlockOfAnotherWidthIsNone_data() {
        QTest::addColumn<int>("width");
        QTest::newRow("nine") << 9;
        QTest::newRow("eleven") << 11;
        QTest::newRow("eight") << 8;
    }

    void aBlockOfAnotherWidthIsNone() {
        QFETCH(int, width);
        Message m;
        m.fieldCount = width;
        const ParamPtr block = m.block();
        const Notification n(block.get());
        QVERIFY(!n.isTableEvent());
        QVERIFY(!Notification(nullptr).isTableEvent());
    }

    void theTableNameStandsBetweenTheFifthCharacterAndTheComma_data() {
        QTest::addColumn<QByteArray>("source");
        QTest::addColumn<QString>("table");
        QTest::newRow("plain") << QByteArray("NCI:Menu,1") << "Menu";
        QTest::newRow("any four characters") << QByteArray("....MenuFolder,") << "MenuFolder";
        QTest::newRow("the first comma counts") << QByteArray("NCI:a,b,c") << "a";
        QTest::newRow("no comma") << QByteArray("NCI:Menu") << "";
        QTest::newRow("comma at once") << QByteArray("NCI:,Menu") << "";
        QTest::newRow("comma too early") << QByteArray("NCI,Menu") << "Menu";
        QTest::newRow("comma first") << QByteArray(",abcMenu,1") << "Menu,1";
        QTest::newRow("empty") << QByteArray("") << "";
    }

    void theTableNameStandsBetweenTheFifthCharacterAndTheComma() {
        QFETCH(QByteArray, source);
        QFETCH(QString, table);
        Message m;
        m.from = source.toStdString();
        const ParamPtr block = m.block();
        QCOMPARE(Notification(block.get()).event().tableName, table);
    }

    void aDeletionDoesNotReadTheRecord() {
        Message m;
        m.action = 603;
        m.setText("caption", "x");
        const ParamPtr block = m.block();
        const Notification n(block.get());
        QVERIFY(n.isFor("Menu"));
        QCOMPARE(int(n.event().recordType.fieldCount), 0);
    }

    void theIgnoredCodeIsParsedLikeTheOthers() {
        Message m;
        m.action = 631;
        m.setText("caption", "x");
        const ParamPtr block = m.block();
        const Notification n(block.get());
        QVERIFY(n.isFor("Menu"));
        QCOMPARE(int(n.event().recordType.fieldCount), 6);
    }

    void anUnknownCodeIsNotParsedFurther() {
        Message m;
        m.action = 604;
        const ParamPtr block = m.block();
        const Notification n(block.get());
        QVERIFY(n.isTableEvent());
        QCOMPARE(n.action(), 604);
        QVERIFY(n.event().tableName.isEmpty());
        QCOMPARE(int(n.event().recordType.fieldCount), 0);
    }

    void anEmptyRecordHasNoFields() {
        Message m;
        m.withRecord = false;
        const ParamPtr block = m.block();
        const Notification n(block.get());
        QVERIFY(n.isTableEvent());
        QCOMPARE(int(n.event().recordType.fieldCount), 0);
    }

    void aDamagedRecordHasNoFields() {
        Message m;
        m.setText("caption", "text");
        const std::string whole = m.raw();
        for (size_t length = 1; length < whole.size(); ++length) {
            m.rawBytes = whole.substr(0, length);
            const ParamPtr block = m.block();
            QCOMPARE(int(Notification(block.get()).event().recordType.fieldCount), 0);
        }
        m.rawBytes = std::string(64, '\xff');
        const ParamPtr block = m.block();
        QCOMPARE(int(Notification(block.get()).event().recordType.fieldCount), 0);
    }

    void anUnknownTableIsNoOnes() {
        Message m;
        m.from = "NCI:MenuResourceFile,1";
        const ParamPtr block = m.block();
        const Notification n(block.get());
        QCOMPARE(n.event().tableName, QString("MenuResourceFile"));
        QVERIFY(!n.isFor("MenuResource"));
    }

    // Inserts
    // ---------------------------------------------------------------------------------------------
    // Inserts

    void anInsertEntersTheMarkedFields() {
        Message m;
        m.setText("KeyLink", "k1");
        m.setText("caption", "Насос");
        m.source.SetValF(m.record, "order_", integerVar(1000));
        Local local;
        const ParamPtr block = m.block();
        QVERIFY(insertToBaseTable(Notification(block.get()).event(), &local.table));
        QCOMPARE(local.text("k1"), QString(" Насос 1000"));
        QVERIFY(isNull(seekKey(local.table, "k1"), "parent"));
        QCOMPARE(recordCount(local.table), 1);
        QCOMPARE(orvo::mdx::recordFlags(seekKey(local.table, "k1")), 1u);
    }

    void anInsertOfAKnownKeyChangesNothing() {
        Message m;
        m.key = "K1";
        m.setText("caption", "new");
        Local local;
        add(local.table, "k1", "p", "old", 1);
        const ParamPtr block = m.block();
        QVERIFY(!insertToBaseTable(Notification(block.get()).event(), &local.table));
        QCOMPARE(local.text("k1"), QString("p old 1"));
        QCOMPARE(recordCount(local.table), 1);
    }

    void anInsertWithoutFieldsCreatesTheKeyAlone() {
        Message m;
        m.withRecord = false;
        Local local;
        const ParamPtr block = m.block();
        QVERIFY(insertToBaseTable(Notification(block.get()).event(), &local.table));
        QCOMPARE(local.text("k1"), QString("  0"));
        for (const char* field : {"parent", "caption", "order_", "flag"})
            QVERIFY(isNull(seekKey(local.table, "k1"), field));
    }

    void anInsertMarksWhatItSets() {
        Message m;
        m.setText("caption", "x");
        Local local;
        const ParamPtr block = m.block();
        QVERIFY(insertToBaseTable(Notification(block.get()).event(), &local.table));
        const MDRData* record = seekKey(local.table, "k1");
        for (int i = 0; i < 6; ++i) {
            uint8_t marked = 9;
            MDRIsUser(MDRFldByNum(local.table.array, i), record, &marked);
            QCOMPARE(int(marked), i == 0 || i == 2 ? 1 : 0);
        }
    }

    void anInsertIsFoundByItsOtherKeys() {
        Message m;
        m.setText("parent", "p");
        m.source.SetValF(m.record, "order_", integerVar(2));
        Local local;
        add(local.table, "k0", "p", "", 1);
        add(local.table, "k2", "p", "", 3);
        const ParamPtr block = m.block();
        QVERIFY(insertToBaseTable(Notification(block.get()).event(), &local.table));
        QCOMPARE(order(local.table, 1), QString("k0 k1 k2"));
    }

    // Updates
    // ---------------------------------------------------------------------------------------------
    // Updates

    void anUpdateChangesOnlyMarkedFields() {
        Message m;
        m.action = 602;
        m.setText("caption", "new");
        Local local;
        add(local.table, "k1", "p", "old", 7);
        const ParamPtr block = m.block();
        QVERIFY(updateBaseTable(Notification(block.get()).event(), &local.table));
        QCOMPARE(local.text("k1"), QString("p new 7"));
    }

    void anUpdateOfAnUnknownKeyCreatesNothing() {
        Message m;
        m.setText("caption", "new");
        Local local;
        const ParamPtr block = m.block();
        QVERIFY(!updateBaseTable(Notification(block.get()).event(), &local.table));
        QCOMPARE(recordCount(local.table), 0);
    }

    void anUpdateMovesTheRecordInItsKeys() {
        Message m;
        m.source.SetValF(m.record, "order_", integerVar(9));
        Local local;
        add(local.table, "k1", "p", "", 1);
        add(local.table, "k2", "p", "", 2);
        QCOMPARE(order(local.table, 1), QString("k1 k2"));
        const ParamPtr block = m.block();
        QVERIFY(updateBaseTable(Notification(block.get()).event(), &local.table));
        QCOMPARE(order(local.table, 1), QString("k2 k1"));
    }

    void anUpdateToNullIsNull() {
        Message m;
        m.source.SetValF(m.record, "parent", nullVar());
        m.source.SetValF(m.record, "order_", nullVar());
        Local local;
        add(local.table, "k1", "p", "old", 7);
        const ParamPtr block = m.block();
        QVERIFY(updateBaseTable(Notification(block.get()).event(), &local.table));
        QVERIFY(isNull(seekKey(local.table, "k1"), "parent"));
        QVERIFY(isNull(seekKey(local.table, "k1"), "order_"));
        QCOMPARE(textOf(seekKey(local.table, "k1"), "caption"), QString("old"));
    }

    void anUpdateThatTakesTheKeyAwayIsNotFoundAfterwards() {
        Message m;
        m.setText("KeyLink", "k9");
        Local local;
        add(local.table, "k1", "p", "old", 7);
        const ParamPtr block = m.block();
        QVERIFY(!updateBaseTable(Notification(block.get()).event(), &local.table));
        QCOMPARE(local.text("k9"), QString("p old 7"));
    }

    void anUpdateWithoutFieldsIsTrue() {
        Message m;
        m.withRecord = false;
        Local local;
        add(local.table, "k1", "p", "old", 7);
        const ParamPtr block = m.block();
        QVERIFY(updateBaseTable(Notification(block.get()).event(), &local.table));
        QCOMPARE(local.text("k1"), QString("p old 7"));
    }

    void fieldsAreMatchedByNumber() {
        Message m;
        CMDArray other;
        define(other, {{"x0", MDX_TEXT}, {"x1", MDX_TEXT}, {"x2", MDX_TEXT}});
        m.record = MDARecNew(other.array);
        const QByteArray bytes("by number");
        other.SetValF(m.record, 2, textVar(bytes));
        Local local;
        add(local.table, "k1", "p", "old", 7);
        const ParamPtr block = m.block();
        QVERIFY(updateBaseTable(Notification(block.get()).event(), &local.table));
        QCOMPARE(local.text("k1"), QString("p by number 7"));
    }

    void surplusFieldsAreDropped() {
        Message m;
        m.setText("caption", "new");
        m.source.SetValF(m.record, "order_", integerVar(9));
        CMDArray narrow;
        define(narrow, {{"KeyLink", MDX_TEXT}, {"parent", MDX_TEXT}, {"caption", MDX_TEXT}});
        setKeys(narrow);
        const ParamPtr block = m.block();
        QVERIFY(insertToBaseTable(Notification(block.get()).event(), &narrow));
        QCOMPARE(textOf(seekKey(narrow, "k1"), "caption"), QString("new"));
    }

    // Both
    // ---------------------------------------------------------------------------------------------

    void theStepsGiveTheRecord() {
        Message m;
        m.setText("caption", "x");
        Local local;
        const ParamPtr block = m.block();
        const Notification n(block.get());
        QVERIFY(!findRecord(n.event(), &local.table));
        QVERIFY(!editAndMerge(n.event(), &local.table));
        const MDRData* made = createAndMerge(n.event(), &local.table);
        QVERIFY(made);
        QCOMPARE(findRecord(n.event(), &local.table), made);
        QVERIFY(!createAndMerge(n.event(), &local.table));
        QCOMPARE(editAndMerge(n.event(), &local.table), made);
    }

    void theKeyIsSoughtByTheBytesItCameIn() {
        Message m;
        m.key = toRecord("ключ").toStdString(); // no UTF-8
        m.setText("caption", "new");
        Local local;
        add(local.table, "ключ", "p", "old", 7);
        const ParamPtr block = m.block();
        const Notification n(block.get());
        QVERIFY(!insertToBaseTable(n.event(), &local.table));
        QVERIFY(updateBaseTable(n.event(), &local.table));
        QCOMPARE(local.text("ключ"), QString("p new 7"));
        local.table.RecDel(seekKey(local.table, "ключ"));
        QVERIFY(insertToBaseTable(n.event(), &local.table));
        QCOMPARE(local.text("ключ"), QString(" new 0"));
    }

    void aTableThatIsNullIsRefused() {
        Message m;
        const ParamPtr block = m.block();
        const Notification n(block.get());
        QVERIFY(!insertToBaseTable(n.event(), nullptr));
        QVERIFY(!updateBaseTable(n.event(), nullptr));
        QVERIFY(!findRecord(n.event(), nullptr));
        // A table that was never fetched has no structure.
        CMDArray bare;
        QVERIFY(!insertToBaseTable(n.event(), &bare));
        QVERIFY(!updateBaseTable(n.event(), &bare));
    }

    void randomDamageNeverBreaksAnything() {
        Message m;
        m.setText("caption", "Насос");
        m.setText("parent", "p");
        m.source.SetValF(m.record, "order_", integerVar(9));
        const std::string whole = m.raw();
        std::mt19937 random(1);
        Local local;
        for (int turn = 0; turn < 5000; ++turn) {
            m.rawBytes = whole;
            for (unsigned hits = random() % 4 + 1; hits > 0; --hits)
                m.rawBytes[random() % whole.size()] = static_cast<char>(random());
            m.key = "k" + std::to_string(random() % 20);
            const ParamPtr block = m.block();
            const Notification n(block.get());
            insertToBaseTable(n.event(), &local.table);
            updateBaseTable(n.event(), &local.table);
            QCOMPARE(recordCount(local.table), order(local.table, 0).split(' ').size());
        }
    }
};

QTEST_GUILESS_MAIN(NotificationTest)
#include "tst_notification.moc"
